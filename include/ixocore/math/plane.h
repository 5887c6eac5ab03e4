#pragma once
// A plane with its own 2-D coordinate frame, ixo_plane<T> (T = float or double).
//
// The plane is a root point, the origin of its frame, a normal and two in-plane axes
// u_direction and v_direction. The frame (u, v, normal) is right-handed: u × v points along
// the normal. The default plane is the x-y plane through the origin.

#include <ixocore/core/api.h>
#include <ixocore/math/matrix.h>
#include <ixocore/math/vector.h>

template <typename T> class IXO_API ixo_plane
{
public:
    // The x-y plane: root (0, 0, 0), normal (0, 0, 1), u (1, 0, 0), v (0, 1, 0).
    ixo_plane();
    // The plane through root with the given normal, stored as given (not normalised).
    // u_direction is (0, 1, 0) × normal normalised, or (0, 0, 1) when the normal is
    // parallel to y; v_direction is normal × u_direction.
    ixo_plane(const ixo_vector3<T>& root, const ixo_vector3<T>& normal);
    // The plane through three points with an orthonormal frame: root p0, p1 on the
    // positive u axis, p2 on the positive v side.
    ixo_plane(const ixo_vector3<T>& p0, const ixo_vector3<T>& p1, const ixo_vector3<T>& p2);

    const ixo_vector3<T>& root() const { return root_; }
    const ixo_vector3<T>& normal() const { return normal_; }
    const ixo_vector3<T>& u_direction() const { return u_direction_; }
    const ixo_vector3<T>& v_direction() const { return v_direction_; }
    // Each setter stores its value as given; the other fields are not recomputed.
    void set_root(const ixo_vector3<T>& v) { root_ = v; }
    void set_normal(const ixo_vector3<T>& v) { normal_ = v; }
    void set_u_direction(const ixo_vector3<T>& v) { u_direction_ = v; }
    void set_v_direction(const ixo_vector3<T>& v) { v_direction_ = v; }

    // The point root + u·uv[0] + v·uv[1].
    ixo_vector3<T> evaluate(const ixo_vector2<T>& uv) const;
    // The direction u·uv[0] + v·uv[1].
    ixo_vector3<T> evaluate_vector(const ixo_vector2<T>& uv) const;
    // The plane coordinates ((p - root)·u, (p - root)·v) of p.
    ixo_vector2<T> project_point(const ixo_vector3<T>& p) const;
    // Where the ray from origin along direction meets the plane. Takes the normal as a unit
    // vector and the origin on the side the normal points to (from the other side the
    // ray runs backwards); a ray parallel to the plane returns the origin.
    ixo_vector3<T> project_ray(const ixo_vector3<T>& origin, const ixo_vector3<T>& direction) const;

    // The frame as a 4×4 matrix: rows 0..2 are u, v and normal with 0 in column 3, row 3
    // is (-root, 1).
    ixo_matrix44<T> get_transform() const;
    // The same 16 values written row-major into out; a null out writes nothing.
    void get_transform(T* out) const;

private:
    ixo_vector3<T> root_;
    ixo_vector3<T> normal_;
    ixo_vector3<T> u_direction_;
    ixo_vector3<T> v_direction_;
};

// The library holds the only instantiations.
extern template class ixo_plane<float>;
extern template class ixo_plane<double>;
