#include <ixocore/math/box.h>

#include <cmath>
#include <limits>
#include <type_traits>

namespace
{
// The empty box's corner magnitude: 1e30, or the type's limit where 1e30 does not fit.
template <typename T> T huge_value()
{
    if constexpr (std::is_integral_v<T>)
        return std::numeric_limits<T>::max();
    else
        return T(ixo_huge);
}
} // namespace

template <typename B, typename V, typename T, int N> void ixo_box_base<B, V, T, N>::clear()
{
    for (int i = 0; i < N; ++i)
    {
        minimum_[i] = huge_value<T>();
        maximum_[i] = -huge_value<T>();
    }
}

template <typename B, typename V, typename T, int N> bool ixo_box_base<B, V, T, N>::empty() const
{
    for (int i = 0; i < N; ++i)
        if (minimum_[i] > maximum_[i])
            return true;
    return false;
}

template <typename B, typename V, typename T, int N>
B& ixo_box_base<B, V, T, N>::operator+=(const V& point)
{
    for (int i = 0; i < N; ++i)
    {
        if (maximum_[i] < point[i])
            maximum_[i] = point[i];
        if (minimum_[i] > point[i])
            minimum_[i] = point[i];
    }
    return static_cast<B&>(*this);
}

template <typename B, typename V, typename T, int N>
B& ixo_box_base<B, V, T, N>::operator+=(const B& other)
{
    if (!other.empty())
    {
        *this += other.minimum_;
        *this += other.maximum_;
    }
    return static_cast<B&>(*this);
}

template <typename B, typename V, typename T, int N> V ixo_box_base<B, V, T, N>::middle() const
{
    V m;
    const bool is_empty = empty();
    for (int i = 0; i < N; ++i)
        m[i] = is_empty ? huge_value<T>() : T((minimum_[i] + maximum_[i]) / T(2));
    return m;
}

template <typename B, typename V, typename T, int N> V ixo_box_base<B, V, T, N>::extents() const
{
    V e;
    const bool is_empty = empty();
    for (int i = 0; i < N; ++i)
        e[i] = is_empty ? T(0) : maximum_[i] - minimum_[i];
    return e;
}

template <typename B, typename V, typename T, int N>
T ixo_box_base<B, V, T, N>::length(int axis) const
{
    if (axis < 0 || axis >= N || empty())
        return T(0);
    return maximum_[axis] - minimum_[axis];
}

template <typename B, typename V, typename T, int N> void ixo_box_base<B, V, T, N>::grow(T amount)
{
    for (int i = 0; i < N; ++i)
    {
        minimum_[i] -= amount;
        maximum_[i] += amount;
    }
}

template <typename T> ixo_vector2<T> ixo_box2<T>::corner(bool x, bool y) const
{
    return ixo_vector2<T>(x ? this->maximum_[0] : this->minimum_[0],
                          y ? this->maximum_[1] : this->minimum_[1]);
}

template <typename T> bool ixo_box2<T>::contains(const ixo_vector2<T>& p) const
{
    for (int i = 0; i < 2; ++i)
        if (!(this->minimum_[i] <= p[i] && p[i] <= this->maximum_[i]))
            return false;
    return true;
}

template <typename T> ixo_vector3<T> ixo_box3<T>::corner(bool x, bool y, bool z) const
{
    return ixo_vector3<T>(x ? this->maximum_[0] : this->minimum_[0],
                          y ? this->maximum_[1] : this->minimum_[1],
                          z ? this->maximum_[2] : this->minimum_[2]);
}

namespace
{

// Ray parameter of the box's middle and half the box's extent along the ray.
template <typename T>
void ixo_box_on_ray(const ixo_vector3<T>& origin, const ixo_vector3<T>& direction,
                    const ixo_box3<T>& box, T& centre, T& half)
{
    const ixo_vector3<T> m = box.middle();
    const ixo_vector3<T> e = box.extents();
    centre = (m - origin) * direction;
    half = T(0.5) * (std::abs(e[0] * direction[0]) + std::abs(e[1] * direction[1]) +
                     std::abs(e[2] * direction[2]));
}

} // namespace

template <typename T>
T ixo_min_dist_box_on_ray(const ixo_vector3<T>& origin, const ixo_vector3<T>& direction,
                          const ixo_box3<T>& box)
{
    T centre, half;
    ixo_box_on_ray(origin, direction, box, centre, half);
    return centre - half;
}

template <typename T>
T ixo_max_dist_box_on_ray(const ixo_vector3<T>& origin, const ixo_vector3<T>& direction,
                          const ixo_box3<T>& box)
{
    T centre, half;
    ixo_box_on_ray(origin, direction, box, centre, half);
    return centre + half;
}

template class ixo_box_base<ixo_box2<float>, ixo_vector2<float>, float, 2>;
template class ixo_box_base<ixo_box2<double>, ixo_vector2<double>, double, 2>;
template class ixo_box_base<ixo_box3<float>, ixo_vector3<float>, float, 3>;
template class ixo_box_base<ixo_box3<double>, ixo_vector3<double>, double, 3>;
template class ixo_box_base<ixo_box2<int>, ixo_vector2<int>, int, 2>;
template class ixo_box2<float>;
template class ixo_box2<double>;
template class ixo_box2<int>;
template class ixo_box3<float>;
template class ixo_box3<double>;
template float ixo_min_dist_box_on_ray<float>(const ixo_vector3<float>&, const ixo_vector3<float>&,
                                              const ixo_box3<float>&);
template double ixo_min_dist_box_on_ray<double>(const ixo_vector3<double>&,
                                                const ixo_vector3<double>&,
                                                const ixo_box3<double>&);
template float ixo_max_dist_box_on_ray<float>(const ixo_vector3<float>&, const ixo_vector3<float>&,
                                              const ixo_box3<float>&);
template double ixo_max_dist_box_on_ray<double>(const ixo_vector3<double>&,
                                                const ixo_vector3<double>&,
                                                const ixo_box3<double>&);
