#include <ixocore/math/quaternion.h>

#include <cmath>

template <typename T> ixo_quaternion<T>::ixo_quaternion(T angle, const ixo_vector3<T>& axis)
{
    const T s = std::sin(angle / T(2));
    elements_[0] = std::cos(angle / T(2));
    elements_[1] = axis[0] * s;
    elements_[2] = axis[1] * s;
    elements_[3] = axis[2] * s;
}

template <typename T> ixo_quaternion<T>::ixo_quaternion(const ixo_matrix33<T>& m)
{
    T& w = elements_[0];
    T& x = elements_[1];
    T& y = elements_[2];
    T& z = elements_[3];
    const T t = m[0][0] + m[1][1] + m[2][2] + T(1);
    if (t > T(ixo_tolerance_single))
    {
        const T r = std::sqrt(t);
        const T f = T(0.5) / r;
        w = T(0.25) / f;
        x = (m[2][1] - m[1][2]) * f;
        y = (m[0][2] - m[2][0]) * f;
        z = (m[1][0] - m[0][1]) * f;
        return;
    }
    // Near a half turn the trace says nothing: start from the largest diagonal element.
    if (m[0][0] > m[1][1] && m[0][0] > m[2][2])
    {
        const T s = T(2) * std::sqrt(T(1) + m[0][0] - m[1][1] - m[2][2]);
        x = s / T(4);
        y = (m[0][1] + m[1][0]) / s;
        z = (m[0][2] + m[2][0]) / s;
        w = (m[2][1] - m[1][2]) / s;
    }
    else if (m[1][1] > m[2][2])
    {
        const T s = T(2) * std::sqrt(T(1) + m[1][1] - m[0][0] - m[2][2]);
        w = (m[0][2] - m[2][0]) / s;
        x = (m[0][1] + m[1][0]) / s;
        y = s / T(4);
        z = (m[1][2] + m[2][1]) / s;
    }
    else
    {
        const T s = T(2) * std::sqrt(T(1) + m[2][2] - m[0][0] - m[1][1]);
        w = (m[1][0] - m[0][1]) / s;
        x = (m[0][2] + m[2][0]) / s;
        y = (m[1][2] + m[2][1]) / s;
        z = s / T(4);
    }
    normalize();
}

template <typename T>
ixo_quaternion<T> ixo_quaternion<T>::operator+(const ixo_quaternion& other) const
{
    ixo_quaternion r = *this;
    return r += other;
}

template <typename T>
ixo_quaternion<T> ixo_quaternion<T>::operator-(const ixo_quaternion& other) const
{
    ixo_quaternion r = *this;
    return r -= other;
}

template <typename T> ixo_quaternion<T> ixo_quaternion<T>::operator-() const
{
    return ixo_quaternion(-elements_[0], -elements_[1], -elements_[2], -elements_[3]);
}

template <typename T> ixo_quaternion<T>& ixo_quaternion<T>::operator+=(const ixo_quaternion& other)
{
    for (int i = 0; i < 4; ++i)
        elements_[i] += other.elements_[i];
    return *this;
}

template <typename T> ixo_quaternion<T>& ixo_quaternion<T>::operator-=(const ixo_quaternion& other)
{
    for (int i = 0; i < 4; ++i)
        elements_[i] -= other.elements_[i];
    return *this;
}

template <typename T> ixo_quaternion<T> ixo_quaternion<T>::operator*(T s) const
{
    ixo_quaternion r = *this;
    return r *= s;
}

template <typename T> ixo_quaternion<T>& ixo_quaternion<T>::operator*=(T s)
{
    for (int i = 0; i < 4; ++i)
        elements_[i] *= s;
    return *this;
}

template <typename T> ixo_quaternion<T> ixo_quaternion<T>::operator/(T s) const
{
    ixo_quaternion r = *this;
    return r /= s;
}

template <typename T> ixo_quaternion<T>& ixo_quaternion<T>::operator/=(T s)
{
    const bool tiny = std::abs(double(s)) < ixo_tolerance;
    for (int i = 0; i < 4; ++i)
        elements_[i] = tiny ? T(ixo_huge) : elements_[i] / s;
    return *this;
}

template <typename T> T ixo_quaternion<T>::operator*(const ixo_quaternion& other) const
{
    T sum = T(0);
    for (int i = 0; i < 4; ++i)
        sum += elements_[i] * other.elements_[i];
    return sum;
}

template <typename T>
ixo_quaternion<T> ixo_quaternion<T>::operator^(const ixo_quaternion& other) const
{
    const T* a = elements_;
    const T* b = other.elements_;
    return ixo_quaternion(a[0] * b[0] - a[1] * b[1] - a[2] * b[2] - a[3] * b[3],
                          a[0] * b[1] + a[1] * b[0] + a[2] * b[3] - a[3] * b[2],
                          a[0] * b[2] - a[1] * b[3] + a[2] * b[0] + a[3] * b[1],
                          a[0] * b[3] + a[1] * b[2] - a[2] * b[1] + a[3] * b[0]);
}

template <typename T> T ixo_quaternion<T>::length_squared() const
{
    return *this * *this;
}

template <typename T> T ixo_quaternion<T>::length() const
{
    return std::sqrt(length_squared());
}

template <typename T> T ixo_quaternion<T>::normalize()
{
    const T len = length();
    if (double(len) >= ixo_tolerance)
        *this /= len;
    return len;
}

template <typename T> ixo_quaternion<T> ixo_quaternion<T>::normalized() const
{
    ixo_quaternion r = *this;
    r.normalize();
    return r;
}

template <typename T> ixo_matrix33<T> ixo_quaternion<T>::matrix() const
{
    ixo_quaternion q = *this;
    if (std::abs(double(q * q) - 1.0) > ixo_tolerance)
        q.normalize();
    const T w = q[0], x = q[1], y = q[2], z = q[3];
    return ixo_matrix33<T>(
        ixo_vector3<T>(w * w + x * x - y * y - z * z, 2 * (x * y - w * z), 2 * (x * z + w * y)),
        ixo_vector3<T>(2 * (x * y + w * z), w * w - x * x + y * y - z * z, 2 * (y * z - w * x)),
        ixo_vector3<T>(2 * (x * z - w * y), 2 * (y * z + w * x), w * w - x * x - y * y + z * z));
}

template <typename T> T ixo_quaternion<T>::angle() const
{
    const T w = elements_[0];
    const T s = std::sqrt(elements_[1] * elements_[1] + elements_[2] * elements_[2] +
                          elements_[3] * elements_[3]);
    return std::atan2(2 * w * s, w * w - s * s);
}

template <typename T> ixo_vector3<T> ixo_quaternion<T>::axis() const
{
    ixo_vector3<T> v(elements_[1], elements_[2], elements_[3]);
    const T len = v.length();
    if (double(len) >= ixo_tolerance)
        v /= len;
    return v;
}

template <typename T> bool ixo_quaternion<T>::operator==(const ixo_quaternion& other) const
{
    for (int i = 0; i < 4; ++i)
        if (!(std::abs(double(elements_[i]) - double(other.elements_[i])) < ixo_tolerance))
            return false;
    return true;
}

template <typename T> bool ixo_quaternion<T>::operator!=(const ixo_quaternion& other) const
{
    return !(*this == other);
}

template class ixo_quaternion<float>;
template class ixo_quaternion<double>;
