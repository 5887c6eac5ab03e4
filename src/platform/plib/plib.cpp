// Closed quadratic interpolation: a periodic B-spline whose n basis functions wrap round,
// so the interpolation matrix is cyclic tridiagonal and is solved in linear time by the
// Thomas algorithm with the Sherman-Morrison correction for the two corner entries.

#include <ixocore/platform/plib.h>

#include <array>
#include <cmath>

namespace PLib
{
namespace
{
constexpr int supported_degree = 2;
constexpr double singular = 1e-12;

// Knot j of the infinite periodic sequence whose period holds base[0..n-1].
template <typename T> double periodic_knot(const std::vector<double>& base, long j)
{
    long const n = long(base.size());
    long q = j / n;
    long r = j % n;
    if (r < 0)
    {
        r += n;
        --q;
    }
    return base[std::size_t(r)] + double(q);
}

// The span s with U[s] <= u < U[s+1] among the spans of one period, [deg, n + deg).
template <typename T> int find_span(const Vector<T>& U, int n, int deg, double u)
{
    int lo = deg;
    int hi = n + deg - 1;
    while (lo < hi)
    {
        int mid = (lo + hi + 1) / 2;
        if (double(U[mid]) <= u)
            lo = mid;
        else
            hi = mid - 1;
    }
    return lo;
}

// The deg + 1 basis functions that are non-zero on span s at u (Cox-de Boor).
template <typename T>
std::array<double, supported_degree + 1> basis(const Vector<T>& U, int s, double u)
{
    constexpr int p = supported_degree;
    std::array<double, p + 1> N{};
    std::array<double, p + 1> left{}, right{};
    N[0] = 1.0;
    for (int j = 1; j <= p; ++j)
    {
        left[j] = u - double(U[s + 1 - j]);
        right[j] = double(U[s + j]) - u;
        double saved = 0.0;
        for (int r = 0; r < j; ++r)
        {
            double const denom = right[r + 1] + left[j - r];
            double const t = denom != 0.0 ? N[r] / denom : 0.0;
            N[r] = saved + right[r + 1] * t;
            saved = left[j - r] * t;
        }
        N[j] = saved;
    }
    return N;
}

// u taken into the curve's period [U[deg], U[deg] + 1).
template <typename T> double wrap(const Vector<T>& U, int deg, double u)
{
    double w = u - std::floor(u);
    double const start = double(U[deg]);
    if (w < start)
        w += 1.0;
    if (w >= start + 1.0)
        w -= 1.0;
    return w;
}
} // namespace

template <typename T, int N> Point_nD<T, N> HPoint_nD<T, N>::project() const
{
    Point_nD<T, N> p;
    T const w = data[N];
    for (int i = 0; i < N; ++i)
        p.data[i] = w != T(0) ? data[i] / w : data[i];
    return p;
}

template <typename T> bool knotAveragingClosed(const Vector<T>& uk, int deg, Vector<T>& U)
{
    U.resize(0);
    int const n = uk.n() - 1;
    if (deg != supported_degree || n < 3 || uk[0] != T(0) || uk[n] != T(1))
        return false;
    for (int i = 0; i < n; ++i)
        if (!(uk[i] < uk[i + 1]))
            return false;
    std::vector<double> base(static_cast<std::size_t>(n));
    for (int j = 0; j < n; ++j)
        base[std::size_t(j)] = (double(uk[j]) + double(uk[j + 1])) / 2;
    U.resize(n + 2 * deg + 1);
    for (int i = 0; i < U.n(); ++i)
        U[i] = T(periodic_knot<T>(base, long(i) - deg));
    return true;
}

template <typename T, int N>
bool NurbsCurve<T, N>::globalInterpClosedH(const Vector<HPoint_nD<T, N>>& Qw, const Vector<T>& ub,
                                           const Vector<T>& U, int d)
{
    using point = std::array<double, N + 1>;
    deg_ = 0;
    P_.resize(0);
    U_.resize(0);
    int const n = Qw.n() - 1;
    if (d != supported_degree || n < 3 || ub.n() != n + 1 || U.n() != n + 2 * d + 1)
        return false;

    // Row k: a[k] x[k-1] + b[k] x[k] + c[k] x[k+1] = q[k], indices modulo n.
    std::vector<double> a(static_cast<std::size_t>(n)), b(static_cast<std::size_t>(n)),
        c(static_cast<std::size_t>(n));
    std::vector<point> q(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k)
    {
        double const u = wrap(U, d, double(ub[k]));
        int const s = find_span(U, n, d, u);
        auto const Nb = basis(U, s, u);
        // Each parameter lies between the knots averaged from it and its neighbours, so its
        // span's functions are those of control points k-1, k and k+1.
        if ((s - d) % n != (k - 1 + n) % n)
            return false;
        a[std::size_t(k)] = Nb[0];
        b[std::size_t(k)] = Nb[1];
        c[std::size_t(k)] = Nb[2];
        for (int i = 0; i <= N; ++i)
            q[std::size_t(k)][std::size_t(i)] = double(Qw[k].data[i]);
    }

    // Sherman-Morrison: A = T + u v^T with T tridiagonal.
    double const gamma = -b[0];
    double const alpha = c[std::size_t(n - 1)]; // row n-1, column 0
    double const beta = a[0];                   // row 0, column n-1
    if (std::abs(gamma) < singular)
        return false;
    std::vector<double> bb(b);
    bb[0] = b[0] - gamma;
    bb[std::size_t(n - 1)] = b[std::size_t(n - 1)] - alpha * beta / gamma;

    // Thomas algorithm on T for the right-hand sides q (points) and the column u.
    std::vector<double> cp(static_cast<std::size_t>(n));
    std::vector<point> y(static_cast<std::size_t>(n));
    std::vector<double> z(static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k)
    {
        std::size_t const i = std::size_t(k);
        double const uk = k == 0 ? gamma : (k == n - 1 ? alpha : 0.0);
        double denom = bb[i];
        if (k > 0)
            denom -= a[i] * cp[i - 1];
        if (std::abs(denom) < singular)
            return false;
        cp[i] = c[i] / denom;
        for (int j = 0; j <= N; ++j)
            y[i][std::size_t(j)] =
                (q[i][std::size_t(j)] - (k > 0 ? a[i] * y[i - 1][std::size_t(j)] : 0.0)) / denom;
        z[i] = (uk - (k > 0 ? a[i] * z[i - 1] : 0.0)) / denom;
    }
    for (int k = n - 2; k >= 0; --k)
    {
        std::size_t const i = std::size_t(k);
        for (int j = 0; j <= N; ++j)
            y[i][std::size_t(j)] -= cp[i] * y[i + 1][std::size_t(j)];
        z[i] -= cp[i] * z[i + 1];
    }
    double const vz = z[0] + beta / gamma * z[std::size_t(n - 1)];
    if (std::abs(1.0 + vz) < singular)
        return false;

    Vector<HPoint_nD<T, N>> P(n + d);
    for (int k = 0; k < n; ++k)
        for (int j = 0; j <= N; ++j)
        {
            double const vy =
                y[0][std::size_t(j)] + beta / gamma * y[std::size_t(n - 1)][std::size_t(j)];
            double const x =
                y[std::size_t(k)][std::size_t(j)] - z[std::size_t(k)] * vy / (1.0 + vz);
            if (!std::isfinite(x))
                return false;
            P[k].data[j] = T(x);
        }
    for (int r = 0; r < d; ++r)
        P[n + r] = P[r];
    deg_ = d;
    P_ = P;
    U_ = U;
    return true;
}

template <typename T, int N> HPoint_nD<T, N> NurbsCurve<T, N>::operator()(T u) const
{
    HPoint_nD<T, N> result;
    int const n = P_.n() - deg_;
    if (deg_ != supported_degree || n < 1)
        return result;
    double const w = wrap(U_, deg_, double(u));
    int const s = find_span(U_, n, deg_, w);
    auto const Nb = basis(U_, s, w);
    for (int j = 0; j <= N; ++j)
    {
        double sum = 0.0;
        for (int r = 0; r <= deg_; ++r)
            sum += Nb[std::size_t(r)] * double(P_[s - deg_ + r].data[j]);
        result.data[j] = T(sum);
    }
    return result;
}

template struct Point_nD<float, 3>;
template struct Point_nD<double, 3>;
template struct HPoint_nD<float, 3>;
template struct HPoint_nD<double, 3>;
template class NurbsCurve<float, 3>;
template class NurbsCurve<double, 3>;
template IXO_API bool knotAveragingClosed<float>(const Vector<float>&, int, Vector<float>&);
template IXO_API bool knotAveragingClosed<double>(const Vector<double>&, int, Vector<double>&);
} // namespace PLib
