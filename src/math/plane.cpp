#include <ixocore/math/plane.h>

#include <cmath>

template <typename T>
ixo_plane<T>::ixo_plane()
    : root_(0, 0, 0), normal_(0, 0, 1), u_direction_(1, 0, 0), v_direction_(0, 1, 0)
{
}

template <typename T>
ixo_plane<T>::ixo_plane(const ixo_vector3<T>& root, const ixo_vector3<T>& normal)
    : root_(root), normal_(normal)
{
    u_direction_ = ixo_vector3<T>(0, 1, 0) ^ normal_;
    if (u_direction_.length() < T(ixo_tolerance_single))
        u_direction_ = ixo_vector3<T>(0, 0, 1);
    u_direction_.normalize();
    v_direction_ = normal_ ^ u_direction_;
}

template <typename T>
ixo_plane<T>::ixo_plane(const ixo_vector3<T>& p0, const ixo_vector3<T>& p1,
                        const ixo_vector3<T>& p2)
    : root_(p0)
{
    u_direction_ = (p1 - p0).normalized();
    normal_ = (u_direction_ ^ (p2 - p0)).normalized();
    v_direction_ = normal_ ^ u_direction_;
}

template <typename T> ixo_vector3<T> ixo_plane<T>::evaluate(const ixo_vector2<T>& uv) const
{
    return root_ + evaluate_vector(uv);
}

template <typename T> ixo_vector3<T> ixo_plane<T>::evaluate_vector(const ixo_vector2<T>& uv) const
{
    return u_direction_ * uv[0] + v_direction_ * uv[1];
}

template <typename T> ixo_vector2<T> ixo_plane<T>::project_point(const ixo_vector3<T>& p) const
{
    const ixo_vector3<T> d = p - root_;
    return ixo_vector2<T>(d * u_direction_, d * v_direction_);
}

template <typename T>
ixo_vector3<T> ixo_plane<T>::project_ray(const ixo_vector3<T>& origin,
                                         const ixo_vector3<T>& direction) const
{
    const ixo_vector3<T> foot = evaluate(project_point(origin));
    const T distance = (foot - origin).length();
    const ixo_vector3<T> n = direction.normalized();
    const T c = -n * normal_;
    const T t = std::abs(c) > T(ixo_tolerance_single) ? distance / c : T(0);
    return origin + n * t;
}

template <typename T> ixo_matrix44<T> ixo_plane<T>::get_transform() const
{
    return ixo_matrix44<T>(ixo_vector4<T>(u_direction_[0], u_direction_[1], u_direction_[2], 0),
                           ixo_vector4<T>(v_direction_[0], v_direction_[1], v_direction_[2], 0),
                           ixo_vector4<T>(normal_[0], normal_[1], normal_[2], 0),
                           ixo_vector4<T>(-root_[0], -root_[1], -root_[2], 1));
}

template <typename T> void ixo_plane<T>::get_transform(T* out) const
{
    get_transform().array(out);
}

template class ixo_plane<float>;
template class ixo_plane<double>;
