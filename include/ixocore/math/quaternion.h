#pragma once
// Rotation quaternions ixo_quaternion<T> (T = float or double), stored as the four elements
// w, x, y, z: element 0 is the scalar part, elements 1..3 the vector part.

#include <ixocore/core/api.h>
#include <ixocore/math/matrix.h>
#include <ixocore/math/vector.h>

template <typename T> class IXO_API ixo_quaternion
{
public:
    // The identity rotation (1, 0, 0, 0).
    ixo_quaternion() : elements_{T(1), T(0), T(0), T(0)} {}
    ixo_quaternion(T w, T x, T y, T z) : elements_{w, x, y, z} {}
    // Rotation by angle (radians) about axis: w = cos(angle/2), (x, y, z) = axis·sin(angle/2).
    // The axis is used as given, not normalised.
    ixo_quaternion(T angle, const ixo_vector3<T>& axis);
    // The rotation of a rotation matrix (column-vector convention). Normalised unless the
    // trace branch applies, whose result is unit length for a proper rotation anyway.
    explicit ixo_quaternion(const ixo_matrix33<T>& m);

    // Element i in the order w, x, y, z; i must lie in 0..3 (unchecked).
    T& operator[](int i) { return elements_[i]; }
    const T& operator[](int i) const { return elements_[i]; }

    // Element-wise over all four elements.
    ixo_quaternion operator+(const ixo_quaternion& other) const;
    ixo_quaternion operator-(const ixo_quaternion& other) const;
    ixo_quaternion operator-() const;
    ixo_quaternion& operator+=(const ixo_quaternion& other);
    ixo_quaternion& operator-=(const ixo_quaternion& other);
    ixo_quaternion operator*(T s) const;
    ixo_quaternion& operator*=(T s);
    // Every element divided by s; every element becomes 1e30 when |s| < 1e-6.
    ixo_quaternion operator/(T s) const;
    ixo_quaternion& operator/=(T s);
    // Four-element dot product.
    T operator*(const ixo_quaternion& other) const;
    // Hamilton product this ⊗ other: the rotation other followed by this.
    ixo_quaternion operator^(const ixo_quaternion& other) const;

    T length_squared() const;
    T length() const;
    // Divides by the length unless it is below 1e-6; returns the length before the call.
    T normalize();
    ixo_quaternion normalized() const;

    // The rotation matrix for column vectors; a quaternion whose squared length is more
    // than 1e-6 away from 1 is normalised first (on a copy).
    ixo_matrix33<T> matrix() const;
    // The rotation angle in (-pi, pi]: 2·atan2(|v|, w) folded into that range, with v the
    // vector part. 0 for the identity, negative when w < 0.
    T angle() const;
    // The vector part normalised, or as it is when shorter than 1e-6 (the identity gives
    // the zero vector).
    ixo_vector3<T> axis() const;

    // Tolerant equality: every element pair differs by less than 1e-6.
    bool operator==(const ixo_quaternion& other) const;
    bool operator!=(const ixo_quaternion& other) const;

private:
    T elements_[4];
};

// The library holds the only instantiations.
extern template class ixo_quaternion<float>;
extern template class ixo_quaternion<double>;
