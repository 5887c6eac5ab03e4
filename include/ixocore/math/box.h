#pragma once
// Axis-aligned boxes ixo_box2<T> (T = float, double or int, the last for pixel rectangles)
// and ixo_box3<T> (T = float or double), and the extent of a box along a viewing ray.
//
// A box is its two corners, minimum and maximum. The empty box has minimum 1e30 and
// maximum -1e30 on every axis (the largest and the negated largest value for int), so
// growing it by a point yields that point. A box is empty
// when minimum[i] > maximum[i] on some axis; a single point is not empty.

#include <ixocore/core/api.h>
#include <ixocore/math/vector.h>

// What ixo_box2 and ixo_box3 share. B is the concrete box class, V its corner type and N
// its dimension. Not used on its own.
template <typename B, typename V, typename T, int N> class IXO_API ixo_box_base
{
public:
    // Back to the empty state.
    void clear();
    // True when minimum[i] > maximum[i] on some axis.
    bool empty() const;

    V minimum() const { return minimum_; }
    V maximum() const { return maximum_; }
    // Store the corner as given; nothing is reordered.
    void set_minimum(const V& v) { minimum_ = v; }
    void set_maximum(const V& v) { maximum_ = v; }

    // Grows the box to hold the point: per axis the maximum rises to p[i] if it is below,
    // and independently the minimum falls to p[i] if it is above.
    B& operator+=(const V& point);
    // Grows the box to hold another one; an empty box adds nothing.
    B& operator+=(const B& other);

    // The centre (minimum + maximum) / 2 (truncated for int); 1e30 on every axis for an
    // empty box.
    V middle() const;
    // maximum - minimum per axis; zero for an empty box.
    V extents() const;
    // maximum[axis] - minimum[axis]; 0 for an empty box or an axis outside 0..N-1.
    T length(int axis) const;
    // Moves every face outward by amount (inward for a negative one), also on an empty box.
    void grow(T amount);

protected:
    ixo_box_base() { clear(); }
    ixo_box_base(const V& minimum, const V& maximum) : minimum_(minimum), maximum_(maximum) {}

    V minimum_;
    V maximum_;
};

template <typename T>
class IXO_API ixo_box2 : public ixo_box_base<ixo_box2<T>, ixo_vector2<T>, T, 2>
{
public:
    // The empty box.
    ixo_box2() = default;
    // Takes both corners as given, without ordering them.
    ixo_box2(const ixo_vector2<T>& minimum, const ixo_vector2<T>& maximum)
        : ixo_box_base<ixo_box2<T>, ixo_vector2<T>, T, 2>(minimum, maximum)
    {
    }

    // The corner whose component i comes from the maximum where flag i is set, else from
    // the minimum.
    ixo_vector2<T> corner(bool x, bool y) const;
    // True when minimum[i] <= p[i] <= maximum[i] on both axes (bounds inclusive).
    bool contains(const ixo_vector2<T>& p) const;
};

template <typename T>
class IXO_API ixo_box3 : public ixo_box_base<ixo_box3<T>, ixo_vector3<T>, T, 3>
{
public:
    // The empty box.
    ixo_box3() = default;
    // Takes both corners as given, without ordering them.
    ixo_box3(const ixo_vector3<T>& minimum, const ixo_vector3<T>& maximum)
        : ixo_box_base<ixo_box3<T>, ixo_vector3<T>, T, 3>(minimum, maximum)
    {
    }

    // The corner whose component i comes from the maximum where flag i is set, else from
    // the minimum.
    ixo_vector3<T> corner(bool x, bool y, bool z) const;
};

// The box projected onto a ray: with m the box's middle and e its extents, the ray
// parameter of the middle is tc = (m - origin) · direction and the half extent along the
// ray is h = (|e.x·d.x| + |e.y·d.y| + |e.z·d.z|) / 2. The minimum distance is tc - h, the
// maximum tc + h. For a unit direction these are the distances of the nearest and
// farthest planes perpendicular to the ray that touch the box. The direction is used as
// given, and an empty box enters the formula as it is (middle 1e30, extents 0).
template <typename T>
IXO_API T ixo_min_dist_box_on_ray(const ixo_vector3<T>& origin, const ixo_vector3<T>& direction,
                                  const ixo_box3<T>& box);
template <typename T>
IXO_API T ixo_max_dist_box_on_ray(const ixo_vector3<T>& origin, const ixo_vector3<T>& direction,
                                  const ixo_box3<T>& box);

// The library holds the only instantiations.
extern template class ixo_box_base<ixo_box2<float>, ixo_vector2<float>, float, 2>;
extern template class ixo_box_base<ixo_box2<double>, ixo_vector2<double>, double, 2>;
extern template class ixo_box_base<ixo_box3<float>, ixo_vector3<float>, float, 3>;
extern template class ixo_box_base<ixo_box3<double>, ixo_vector3<double>, double, 3>;
extern template class ixo_box_base<ixo_box2<int>, ixo_vector2<int>, int, 2>;
extern template class ixo_box2<float>;
extern template class ixo_box2<double>;
extern template class ixo_box2<int>;
extern template class ixo_box3<float>;
extern template class ixo_box3<double>;
extern template float ixo_min_dist_box_on_ray<float>(const ixo_vector3<float>&,
                                                     const ixo_vector3<float>&,
                                                     const ixo_box3<float>&);
extern template double ixo_min_dist_box_on_ray<double>(const ixo_vector3<double>&,
                                                       const ixo_vector3<double>&,
                                                       const ixo_box3<double>&);
extern template float ixo_max_dist_box_on_ray<float>(const ixo_vector3<float>&,
                                                     const ixo_vector3<float>&,
                                                     const ixo_box3<float>&);
extern template double ixo_max_dist_box_on_ray<double>(const ixo_vector3<double>&,
                                                       const ixo_vector3<double>&,
                                                       const ixo_box3<double>&);
