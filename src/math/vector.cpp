#include <ixocore/math/vector.h>

#include <cmath>
#include <limits>

namespace
{

// The guard shared by every division by a scalar: divisors this small give "infinitely far".
template <typename T> bool ixo_is_tiny_divisor(T s)
{
    return std::abs(static_cast<double>(s)) < ixo_tolerance;
}

// The value a guarded division yields; integers saturate since they cannot hold 1e30.
template <typename T> T ixo_huge_value()
{
    if constexpr (std::is_integral_v<T>)
        return std::numeric_limits<T>::max();
    else
        return T(ixo_huge);
}

// a / s for an s that passed the guard. Integer division truncates toward zero; the one
// overflowing case (the most negative value divided by -1) wraps like the other operations.
template <typename T> T ixo_divide(T a, T s)
{
    if constexpr (std::is_integral_v<T> && std::is_signed_v<T>)
    {
        if (s == T(-1))
            return T(std::make_unsigned_t<T>(0) - std::make_unsigned_t<T>(a));
    }
    return T(a / s);
}

} // namespace

template <typename V, typename T, int N> V ixo_vector_base<V, T, N>::operator/(T s) const
{
    V r = self();
    r /= s;
    return r;
}

template <typename V, typename T, int N> V& ixo_vector_base<V, T, N>::operator/=(T s)
{
    const bool tiny = ixo_is_tiny_divisor(s);
    for (int i = 0; i < N; ++i)
        elements_[i] = tiny ? ixo_huge_value<T>() : ixo_divide(elements_[i], s);
    return self();
}

template <typename V, typename T, int N> T ixo_vector_base<V, T, N>::length() const
{
    // A wrapped integer sum may come out negative; its root is taken as 0.
    const double squared = static_cast<double>(length_squared());
    return squared > 0.0 ? T(std::sqrt(squared)) : T(0);
}

template <typename V, typename T, int N> T ixo_vector_base<V, T, N>::normalize()
{
    const T len = length();
    if (static_cast<double>(len) >= ixo_tolerance)
        *this /= len;
    return len;
}

template <typename V, typename T, int N> V ixo_vector_base<V, T, N>::normalized() const
{
    V r = self();
    r.normalize();
    return r;
}

template <typename V, typename T, int N>
bool ixo_vector_base<V, T, N>::operator==(const V& other) const
{
    for (int i = 0; i < N; ++i)
    {
        const double d = static_cast<double>(elements_[i]) - static_cast<double>(other[i]);
        if (!(std::abs(d) < ixo_tolerance))
            return false;
    }
    return true;
}

template <typename V, typename T, int N>
bool ixo_vector_base<V, T, N>::operator!=(const V& other) const
{
    return !(*this == other);
}

template <typename V, typename T, int N>
bool ixo_vector_base<V, T, N>::operator<(const V& other) const
{
    for (int i = 0; i < N - 1; ++i)
        if (elements_[i] != other[i])
            return elements_[i] < other[i];
    return elements_[N - 1] < other[N - 1];
}

template <typename V, typename T, int N>
bool ixo_vector_base<V, T, N>::operator<=(const V& other) const
{
    for (int i = 0; i < N - 1; ++i)
        if (elements_[i] != other[i])
            return elements_[i] <= other[i];
    return elements_[N - 1] <= other[N - 1];
}

template <typename V, typename T, int N>
bool ixo_vector_base<V, T, N>::operator>(const V& other) const
{
    for (int i = 0; i < N - 1; ++i)
        if (elements_[i] != other[i])
            return elements_[i] > other[i];
    return elements_[N - 1] > other[N - 1];
}

template <typename V, typename T, int N>
bool ixo_vector_base<V, T, N>::operator>=(const V& other) const
{
    for (int i = 0; i < N - 1; ++i)
        if (elements_[i] != other[i])
            return elements_[i] >= other[i];
    return elements_[N - 1] >= other[N - 1];
}

template class ixo_vector_base<ixo_vector2<int>, int, 2>;
template class ixo_vector_base<ixo_vector2<float>, float, 2>;
template class ixo_vector_base<ixo_vector2<double>, double, 2>;
template class ixo_vector_base<ixo_vector3<int>, int, 3>;
template class ixo_vector_base<ixo_vector3<float>, float, 3>;
template class ixo_vector_base<ixo_vector3<double>, double, 3>;
template class ixo_vector_base<ixo_vector4<unsigned char>, unsigned char, 4>;
template class ixo_vector_base<ixo_vector4<int>, int, 4>;
template class ixo_vector_base<ixo_vector4<long>, long, 4>;
template class ixo_vector_base<ixo_vector4<float>, float, 4>;
template class ixo_vector_base<ixo_vector4<double>, double, 4>;
template class ixo_vector2<int>;
template class ixo_vector2<float>;
template class ixo_vector2<double>;
template class ixo_vector3<int>;
template class ixo_vector3<float>;
template class ixo_vector3<double>;
template class ixo_vector4<unsigned char>;
template class ixo_vector4<int>;
template class ixo_vector4<long>;
template class ixo_vector4<float>;
template class ixo_vector4<double>;

// Defined after the instantiations: constant-evaluating the constructors earlier in this
// file would keep gcc from emitting them for the hosts.
const ixo_vector3<float> ixo_x_axisf(1.0f, 0.0f, 0.0f);
const ixo_vector3<float> ixo_y_axisf(0.0f, 1.0f, 0.0f);
const ixo_vector3<float> ixo_z_axisf(0.0f, 0.0f, 1.0f);
const ixo_vector3<double> ixo_x_axisd(1.0, 0.0, 0.0);
const ixo_vector3<double> ixo_y_axisd(0.0, 1.0, 0.0);
const ixo_vector3<double> ixo_z_axisd(0.0, 0.0, 1.0);
