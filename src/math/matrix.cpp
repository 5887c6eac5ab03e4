#include <ixocore/math/matrix.h>

#include <cmath>
#include <utility>

namespace
{

bool ixo_is_tiny_divisor(double s)
{
    return std::abs(s) < ixo_tolerance;
}

bool ixo_nearly_equal(double a, double b)
{
    return std::abs(a - b) < ixo_tolerance;
}

// Inverts the N×N matrix m into a by Gauss-Jordan elimination with full pivoting. Column
// exchanges permute the unknowns, so they are applied to the working copy only and undone
// on the rows of the result at the end. A zero pivot stops the elimination and leaves a as
// it stands.
template <typename T, int N> void ixo_gauss_jordan(const T (&m)[N][N], T (&a)[N][N])
{
    T w[N][N];
    int swapped_column[N];
    for (int i = 0; i < N; ++i)
    {
        swapped_column[i] = i;
        for (int j = 0; j < N; ++j)
        {
            w[i][j] = m[i][j];
            a[i][j] = i == j ? T(1) : T(0);
        }
    }

    for (int k = 0; k < N; ++k)
    {
        // The first element of largest magnitude, row by row.
        int pivot_row = k;
        int pivot_column = k;
        T p = std::abs(w[k][k]);
        for (int r = k; r < N; ++r)
            for (int c = k; c < N; ++c)
                if (std::abs(w[r][c]) > p)
                {
                    p = std::abs(w[r][c]);
                    pivot_row = r;
                    pivot_column = c;
                }

        if (pivot_row != k)
            for (int j = 0; j < N; ++j)
            {
                std::swap(w[pivot_row][j], w[k][j]);
                std::swap(a[pivot_row][j], a[k][j]);
            }
        if (pivot_column != k)
        {
            for (int i = 0; i < N; ++i)
                std::swap(w[i][pivot_column], w[i][k]);
            swapped_column[k] = pivot_column;
        }

        if (p == T(0))
            return;

        // Column k of w is not updated: it is never read again.
        const T pivot = w[k][k];
        for (int j = k + 1; j < N; ++j)
            w[k][j] /= pivot;
        for (int j = 0; j < N; ++j)
            a[k][j] /= pivot;

        const T threshold = T(ixo_tolerance_single) * p;
        for (int r = 0; r < N; ++r)
        {
            const T f = w[r][k];
            if (r == k || !(std::abs(f) > threshold))
                continue;
            for (int j = k + 1; j < N; ++j)
                w[r][j] -= f * w[k][j];
            for (int j = 0; j < N; ++j)
                a[r][j] -= f * a[k][j];
        }
    }

    for (int k = N - 1; k >= 0; --k)
        if (swapped_column[k] != k)
            for (int j = 0; j < N; ++j)
                std::swap(a[swapped_column[k]][j], a[k][j]);
}

} // namespace

// ---------------------------------------------------------------------------------------
// ixo_matrix33

template <typename T> ixo_matrix33<T> ixo_matrix33<T>::operator+(const ixo_matrix33& other) const
{
    ixo_matrix33 r = *this;
    return r += other;
}

template <typename T> ixo_matrix33<T> ixo_matrix33<T>::operator-(const ixo_matrix33& other) const
{
    ixo_matrix33 r = *this;
    return r -= other;
}

template <typename T> ixo_matrix33<T> ixo_matrix33<T>::operator-() const
{
    return ixo_matrix33(-rows_[0], -rows_[1], -rows_[2]);
}

template <typename T> ixo_matrix33<T>& ixo_matrix33<T>::operator+=(const ixo_matrix33& other)
{
    for (int i = 0; i < 3; ++i)
        rows_[i] += other.rows_[i];
    return *this;
}

template <typename T> ixo_matrix33<T>& ixo_matrix33<T>::operator-=(const ixo_matrix33& other)
{
    for (int i = 0; i < 3; ++i)
        rows_[i] -= other.rows_[i];
    return *this;
}

template <typename T> ixo_matrix33<T> ixo_matrix33<T>::operator*(T s) const
{
    ixo_matrix33 r = *this;
    return r *= s;
}

template <typename T> ixo_matrix33<T>& ixo_matrix33<T>::operator*=(T s)
{
    for (int i = 0; i < 3; ++i)
        rows_[i] *= s;
    return *this;
}

template <typename T> ixo_matrix33<T> ixo_matrix33<T>::operator/(T s) const
{
    ixo_matrix33 r = *this;
    return r /= s;
}

template <typename T> ixo_matrix33<T>& ixo_matrix33<T>::operator/=(T s)
{
    const bool tiny = ixo_is_tiny_divisor(s);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            rows_[i][j] = tiny ? T(ixo_huge) : rows_[i][j] / s;
    return *this;
}

template <typename T> ixo_matrix33<T> ixo_matrix33<T>::operator*(const ixo_matrix33& other) const
{
    ixo_matrix33 r;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
        {
            T sum = T(0);
            for (int k = 0; k < 3; ++k)
                sum += rows_[i][k] * other.rows_[k][j];
            r.rows_[i][j] = sum;
        }
    return r;
}

template <typename T> ixo_matrix33<T>& ixo_matrix33<T>::operator*=(const ixo_matrix33& other)
{
    return *this = *this * other;
}

template <typename T> ixo_vector3<T> ixo_matrix33<T>::operator*(const ixo_vector3<T>& v) const
{
    return ixo_vector3<T>(rows_[0] * v, rows_[1] * v, rows_[2] * v);
}

template <typename T> ixo_matrix33<T> ixo_matrix33<T>::transpose() const
{
    ixo_matrix33 r;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            r.rows_[i][j] = rows_[j][i];
    return r;
}

template <typename T> T ixo_matrix33<T>::determinant() const
{
    const ixo_matrix33& m = *this;
    return m[0][0] * m[1][1] * m[2][2] + m[0][1] * m[1][2] * m[2][0] + m[0][2] * m[1][0] * m[2][1] -
           m[0][2] * m[1][1] * m[2][0] - m[0][0] * m[1][2] * m[2][1] - m[0][1] * m[1][0] * m[2][2];
}

template <typename T> ixo_matrix33<T> ixo_matrix33<T>::inverse() const
{
    const T d = determinant();
    if (!(std::abs(double(d)) >= ixo_tolerance))
        return ixo_matrix33(ixo_vector3<T>(1, 0, 0), ixo_vector3<T>(0, 1, 0),
                            ixo_vector3<T>(0, 0, 1));
    const ixo_matrix33& m = *this;
    ixo_matrix33 r;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
        {
            // inv[i][j] = C[j][i] / d
            const int i1 = (j + 1) % 3, i2 = (j + 2) % 3;
            const int j1 = (i + 1) % 3, j2 = (i + 2) % 3;
            r.rows_[i][j] = (m[i1][j1] * m[i2][j2] - m[i1][j2] * m[i2][j1]) / d;
        }
    return r;
}

template <typename T> ixo_matrix33<T> ixo_matrix33<T>::inverse_matrix_jordan_gauss() const
{
    if (!(std::abs(double(determinant())) >= ixo_tolerance))
        return ixo_matrix33(ixo_vector3<T>(1, 0, 0), ixo_vector3<T>(0, 1, 0),
                            ixo_vector3<T>(0, 0, 1));
    T m[3][3], a[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            m[i][j] = rows_[i][j];
    ixo_gauss_jordan<T, 3>(m, a);
    return ixo_matrix33(ixo_vector3<T>(a[0][0], a[0][1], a[0][2]),
                        ixo_vector3<T>(a[1][0], a[1][1], a[1][2]),
                        ixo_vector3<T>(a[2][0], a[2][1], a[2][2]));
}

template <typename T> bool ixo_matrix33<T>::operator==(const ixo_matrix33& other) const
{
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            if (!ixo_nearly_equal(rows_[i][j], other.rows_[i][j]))
                return false;
    return true;
}

template <typename T> bool ixo_matrix33<T>::operator!=(const ixo_matrix33& other) const
{
    return !(*this == other);
}

template <typename T> void ixo_matrix33<T>::array(T* out) const
{
    if (!out)
        return;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            out[4 * i + j] = i < 3 && j < 3 ? rows_[i][j] : (i == 3 && j == 3 ? T(1) : T(0));
}

// ---------------------------------------------------------------------------------------
// ixo_matrix44

template <typename T> ixo_matrix44<T> ixo_matrix44<T>::operator+(const ixo_matrix44& other) const
{
    ixo_matrix44 r = *this;
    return r += other;
}

template <typename T> ixo_matrix44<T> ixo_matrix44<T>::operator-(const ixo_matrix44& other) const
{
    ixo_matrix44 r = *this;
    return r -= other;
}

template <typename T> ixo_matrix44<T> ixo_matrix44<T>::operator-() const
{
    return ixo_matrix44(-rows_[0], -rows_[1], -rows_[2], -rows_[3]);
}

template <typename T> ixo_matrix44<T>& ixo_matrix44<T>::operator+=(const ixo_matrix44& other)
{
    for (int i = 0; i < 4; ++i)
        rows_[i] += other.rows_[i];
    return *this;
}

template <typename T> ixo_matrix44<T>& ixo_matrix44<T>::operator-=(const ixo_matrix44& other)
{
    for (int i = 0; i < 4; ++i)
        rows_[i] -= other.rows_[i];
    return *this;
}

template <typename T> ixo_matrix44<T> ixo_matrix44<T>::operator*(T s) const
{
    ixo_matrix44 r = *this;
    return r *= s;
}

template <typename T> ixo_matrix44<T>& ixo_matrix44<T>::operator*=(T s)
{
    for (int i = 0; i < 4; ++i)
        rows_[i] *= s;
    return *this;
}

template <typename T> ixo_matrix44<T> ixo_matrix44<T>::operator/(T s) const
{
    ixo_matrix44 r = *this;
    return r /= s;
}

template <typename T> ixo_matrix44<T>& ixo_matrix44<T>::operator/=(T s)
{
    const bool tiny = ixo_is_tiny_divisor(s);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            rows_[i][j] = tiny ? T(ixo_huge) : rows_[i][j] / s;
    return *this;
}

template <typename T> ixo_matrix44<T> ixo_matrix44<T>::operator*(const ixo_matrix44& other) const
{
    ixo_matrix44 r;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
        {
            T sum = T(0);
            for (int k = 0; k < 4; ++k)
                sum += rows_[i][k] * other.rows_[k][j];
            r.rows_[i][j] = sum;
        }
    return r;
}

template <typename T> ixo_matrix44<T>& ixo_matrix44<T>::operator*=(const ixo_matrix44& other)
{
    return *this = *this * other;
}

template <typename T> ixo_vector4<T> ixo_matrix44<T>::operator*(const ixo_vector4<T>& v) const
{
    return ixo_vector4<T>(rows_[0] * v, rows_[1] * v, rows_[2] * v, rows_[3] * v);
}

template <typename T> ixo_vector3<T> ixo_matrix44<T>::operator*(const ixo_vector3<T>& p) const
{
    const ixo_vector4<T> h = *this * ixo_vector4<T>(p[0], p[1], p[2], T(1));
    if (!(std::abs(h[3]) > T(ixo_tolerance_single)))
        return ixo_vector3<T>(0, 0, 0);
    return ixo_vector3<T>(h[0] / h[3], h[1] / h[3], h[2] / h[3]);
}

template <typename T> ixo_box3<T> ixo_matrix44<T>::operator*(const ixo_box3<T>& box) const
{
    if (box.empty())
        return box;
    ixo_box3<T> r;
    for (int x = 0; x < 2; ++x)
        for (int y = 0; y < 2; ++y)
            for (int z = 0; z < 2; ++z)
                r += *this * box.corner(x != 0, y != 0, z != 0);
    return r;
}

template <typename T> ixo_matrix44<T> ixo_matrix44<T>::transpose() const
{
    ixo_matrix44 r;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            r.rows_[i][j] = rows_[j][i];
    return r;
}

template <typename T> T ixo_matrix44<T>::determinant() const
{
    // Laplace expansion along the first two rows: their 2×2 minors times the
    // complementary minors of the last two rows.
    const ixo_matrix44& m = *this;
    const T s0 = m[0][0] * m[1][1] - m[1][0] * m[0][1];
    const T s1 = m[0][0] * m[1][2] - m[1][0] * m[0][2];
    const T s2 = m[0][0] * m[1][3] - m[1][0] * m[0][3];
    const T s3 = m[0][1] * m[1][2] - m[1][1] * m[0][2];
    const T s4 = m[0][1] * m[1][3] - m[1][1] * m[0][3];
    const T s5 = m[0][2] * m[1][3] - m[1][2] * m[0][3];
    const T c5 = m[2][2] * m[3][3] - m[3][2] * m[2][3];
    const T c4 = m[2][1] * m[3][3] - m[3][1] * m[2][3];
    const T c3 = m[2][1] * m[3][2] - m[3][1] * m[2][2];
    const T c2 = m[2][0] * m[3][3] - m[3][0] * m[2][3];
    const T c1 = m[2][0] * m[3][2] - m[3][0] * m[2][2];
    const T c0 = m[2][0] * m[3][1] - m[3][0] * m[2][1];
    return s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
}

template <typename T> bool ixo_matrix44<T>::is_identity() const
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            if (!ixo_nearly_equal(rows_[i][j], i == j ? 1.0 : 0.0))
                return false;
    return true;
}

template <typename T> ixo_matrix44<T> ixo_matrix44<T>::inverse() const
{
    T m[4][4], a[4][4];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            m[i][j] = rows_[i][j];
    ixo_gauss_jordan<T, 4>(m, a);
    ixo_matrix44 r;
    for (int i = 0; i < 4; ++i)
        r.rows_[i] = ixo_vector4<T>(a[i][0], a[i][1], a[i][2], a[i][3]);
    return r;
}

template <typename T> bool ixo_matrix44<T>::operator==(const ixo_matrix44& other) const
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            if (!ixo_nearly_equal(rows_[i][j], other.rows_[i][j]))
                return false;
    return true;
}

template <typename T> bool ixo_matrix44<T>::operator!=(const ixo_matrix44& other) const
{
    return !(*this == other);
}

template <typename T> void ixo_matrix44<T>::array(T* out) const
{
    if (!out)
        return;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            out[4 * i + j] = rows_[i][j];
}

namespace
{
bool ixo_valid_index(int i)
{
    return i >= 0 && i < 4;
}
} // namespace

template <typename T> void ixo_matrix44<T>::swap_row(int i, int j)
{
    if (ixo_valid_index(i) && ixo_valid_index(j))
        std::swap(rows_[i], rows_[j]);
}

template <typename T> void ixo_matrix44<T>::swap_column(int i, int j)
{
    if (!ixo_valid_index(i) || !ixo_valid_index(j))
        return;
    for (int r = 0; r < 4; ++r)
        std::swap(rows_[r][i], rows_[r][j]);
}

template <typename T> void ixo_matrix44<T>::scale_row(T f, int r)
{
    if (ixo_valid_index(r))
        rows_[r] *= f;
}

template <typename T> void ixo_matrix44<T>::add_scaled_row(T f, int from, int to)
{
    if (ixo_valid_index(from) && ixo_valid_index(to))
        rows_[to] += rows_[from] * f;
}

// ---------------------------------------------------------------------------------------
// Builders

template <typename T> ixo_matrix44<T> ixo_identity_transform()
{
    return ixo_matrix44<T>(ixo_vector4<T>(1, 0, 0, 0), ixo_vector4<T>(0, 1, 0, 0),
                           ixo_vector4<T>(0, 0, 1, 0), ixo_vector4<T>(0, 0, 0, 1));
}

template <typename T> ixo_matrix44<T> ixo_zero_matrix()
{
    const ixo_vector4<T> zero(0, 0, 0, 0);
    return ixo_matrix44<T>(zero, zero, zero, zero);
}

template <typename T> ixo_matrix44<T> ixo_translation_transform(const ixo_vector3<T>& t)
{
    ixo_matrix44<T> m = ixo_identity_transform<T>();
    for (int i = 0; i < 3; ++i)
        m[i][3] = t[i];
    return m;
}

template <typename T> ixo_matrix44<T> ixo_scale_transform(T s)
{
    ixo_matrix44<T> m = ixo_identity_transform<T>();
    for (int i = 0; i < 3; ++i)
        m[i][i] = s;
    return m;
}

template <typename T> ixo_matrix44<T> ixo_anisotropic_transform(const ixo_vector3<T>& v)
{
    ixo_matrix44<T> m = ixo_identity_transform<T>();
    for (int i = 0; i < 3; ++i)
        m[i][i] = v[i];
    return m;
}

template <typename T>
ixo_matrix44<T> ixo_rotation_transform(std::type_identity_t<T> angle, const ixo_vector3<T>& axis)
{
    const T c = std::cos(angle);
    const T s = std::sin(angle);
    const T t = T(1) - c;
    const T x = axis[0], y = axis[1], z = axis[2];
    ixo_matrix44<T> m = ixo_identity_transform<T>();
    m[0][0] = t * x * x + c;
    m[0][1] = t * x * y + s * z;
    m[0][2] = t * x * z - s * y;
    m[1][0] = t * x * y - s * z;
    m[1][1] = t * y * y + c;
    m[1][2] = t * y * z + s * x;
    m[2][0] = t * x * z + s * y;
    m[2][1] = t * y * z - s * x;
    m[2][2] = t * z * z + c;
    return m;
}

template class ixo_matrix33<float>;
template class ixo_matrix33<double>;
template class ixo_matrix44<float>;
template class ixo_matrix44<double>;
template ixo_matrix44<float> ixo_identity_transform<float>();
template ixo_matrix44<double> ixo_identity_transform<double>();
template ixo_matrix44<float> ixo_zero_matrix<float>();
template ixo_matrix44<double> ixo_zero_matrix<double>();
template ixo_matrix44<float> ixo_translation_transform<float>(const ixo_vector3<float>&);
template ixo_matrix44<double> ixo_translation_transform<double>(const ixo_vector3<double>&);
template ixo_matrix44<float> ixo_scale_transform<float>(float);
template ixo_matrix44<double> ixo_scale_transform<double>(double);
template ixo_matrix44<float> ixo_anisotropic_transform<float>(const ixo_vector3<float>&);
template ixo_matrix44<double> ixo_anisotropic_transform<double>(const ixo_vector3<double>&);
template ixo_matrix44<float> ixo_rotation_transform<float>(float, const ixo_vector3<float>&);
template ixo_matrix44<double> ixo_rotation_transform<double>(double, const ixo_vector3<double>&);
