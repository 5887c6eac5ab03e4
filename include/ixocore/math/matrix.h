#pragma once
// 3×3 and 4×4 matrices (T = float or double) and the builders of 4×4 transforms.
//
// Conventions:
// - m[i][j] is row i, column j; rows are stored one after the other.
// - Matrices act on column vectors: (m * v)[i] is row i dotted with v.
// - A 4×4 transform carries its translation in column 3; row 3 of an affine transform is
//   (0, 0, 0, 1).
// - A * B is the ordinary product; applied to a vector, B acts first.
// - array() writes row-major. The Direct3D device takes row-vector matrices with the
//   translation in row 3, so it receives the transpose.
// Default constructors leave the elements uninitialised; a defined matrix comes from a
// builder (ixo_identity_transform, ixo_zero_matrix, ...) or the row constructor.

#include <ixocore/core/api.h>
#include <ixocore/math/box.h>
#include <ixocore/math/vector.h>

#include <type_traits>

template <typename T> class ixo_matrix44;

// Builders of 4×4 transforms. T defaults to float where no argument fixes it, so
// ixo_identity_transform() is the float identity and ixo_identity_transform<double>() the
// double one.

// 1 on the diagonal, 0 elsewhere.
template <typename T = float> IXO_API ixo_matrix44<T> ixo_identity_transform();
// All sixteen elements 0.
template <typename T = float> IXO_API ixo_matrix44<T> ixo_zero_matrix();
// The identity with column 3 holding t.
template <typename T> IXO_API ixo_matrix44<T> ixo_translation_transform(const ixo_vector3<T>& t);
// The identity with s in m[0][0], m[1][1] and m[2][2] (m[3][3] stays 1).
template <typename T> IXO_API ixo_matrix44<T> ixo_scale_transform(T s);
// The identity with v[i] in m[i][i] for i = 0, 1, 2.
template <typename T> IXO_API ixo_matrix44<T> ixo_anisotropic_transform(const ixo_vector3<T>& v);
// Rotation by angle (radians) about axis, used as given (not normalised). With
// c = cos(angle), s = sin(angle), t = 1 - c the upper-left block is
//   | t·x·x + c     t·x·y + s·z   t·x·z - s·y |
//   | t·x·y - s·z   t·y·y + c     t·y·z + s·x |
//   | t·x·z + s·y   t·y·z - s·x   t·z·z + c   |
// Applied to column vectors it turns a point about the axis by -angle (clockwise seen from
// the tip of the axis); for a unit axis it is the transpose of
// ixo_quaternion(angle, axis).matrix().
template <typename T>
IXO_API ixo_matrix44<T> ixo_rotation_transform(std::type_identity_t<T> angle,
                                               const ixo_vector3<T>& axis);

template <typename T> class IXO_API ixo_matrix33
{
public:
    // Leaves the elements uninitialised.
    ixo_matrix33() = default;
    ixo_matrix33(const ixo_vector3<T>& row0, const ixo_vector3<T>& row1, const ixo_vector3<T>& row2)
        : rows_{row0, row1, row2}
    {
    }

    // Row i (0..2, unchecked), so m[i][j] is row i, column j.
    ixo_vector3<T>& operator[](int i) { return rows_[i]; }
    const ixo_vector3<T>& operator[](int i) const { return rows_[i]; }

    ixo_matrix33 operator+(const ixo_matrix33& other) const;
    ixo_matrix33 operator-(const ixo_matrix33& other) const;
    ixo_matrix33 operator-() const;
    ixo_matrix33& operator+=(const ixo_matrix33& other);
    ixo_matrix33& operator-=(const ixo_matrix33& other);
    ixo_matrix33 operator*(T s) const;
    ixo_matrix33& operator*=(T s);
    // Every element divided by s; every element becomes 1e30 when |s| < 1e-6.
    ixo_matrix33 operator/(T s) const;
    ixo_matrix33& operator/=(T s);
    // Matrix product, this on the left.
    ixo_matrix33 operator*(const ixo_matrix33& other) const;
    ixo_matrix33& operator*=(const ixo_matrix33& other);
    // Column-vector product.
    ixo_vector3<T> operator*(const ixo_vector3<T>& v) const;

    ixo_matrix33 transpose() const;
    // Rule of Sarrus.
    T determinant() const;
    // Adjugate over determinant. When |determinant| < 1e-6 there is no inverse and the
    // result is the identity.
    ixo_matrix33 inverse() const;
    // Gauss-Jordan elimination with full pivoting, numerically steadier than inverse().
    // Same determinant test and the identity for a (nearly) singular matrix.
    ixo_matrix33 inverse_matrix_jordan_gauss() const;

    // Tolerant equality: every element pair differs by less than 1e-6.
    bool operator==(const ixo_matrix33& other) const;
    bool operator!=(const ixo_matrix33& other) const;

    // Writes the matrix as a 4×4 block of 16 values, row-major: rows 0..2 hold the matrix
    // rows followed by 0, row 3 is (0, 0, 0, 1). A null out writes nothing.
    void array(T* out) const;

private:
    ixo_vector3<T> rows_[3];
};

template <typename T> class IXO_API ixo_matrix44
{
public:
    // Leaves the elements uninitialised.
    ixo_matrix44() = default;
    ixo_matrix44(const ixo_vector4<T>& row0, const ixo_vector4<T>& row1, const ixo_vector4<T>& row2,
                 const ixo_vector4<T>& row3)
        : rows_{row0, row1, row2, row3}
    {
    }

    // The builders, also reachable as members: ixo_matrix44<float>::ixo_identity_transform().
    static ixo_matrix44 ixo_identity_transform() { return ::ixo_identity_transform<T>(); }
    static ixo_matrix44 ixo_zero_matrix() { return ::ixo_zero_matrix<T>(); }
    static ixo_matrix44 ixo_translation_transform(const ixo_vector3<T>& t)
    {
        return ::ixo_translation_transform<T>(t);
    }
    static ixo_matrix44 ixo_scale_transform(T s) { return ::ixo_scale_transform<T>(s); }
    static ixo_matrix44 ixo_anisotropic_transform(const ixo_vector3<T>& v)
    {
        return ::ixo_anisotropic_transform<T>(v);
    }
    static ixo_matrix44 ixo_rotation_transform(T angle, const ixo_vector3<T>& axis)
    {
        return ::ixo_rotation_transform<T>(angle, axis);
    }

    // Row i (0..3, unchecked), so m[i][j] is row i, column j.
    ixo_vector4<T>& operator[](int i) { return rows_[i]; }
    const ixo_vector4<T>& operator[](int i) const { return rows_[i]; }

    ixo_matrix44 operator+(const ixo_matrix44& other) const;
    ixo_matrix44 operator-(const ixo_matrix44& other) const;
    ixo_matrix44 operator-() const;
    ixo_matrix44& operator+=(const ixo_matrix44& other);
    ixo_matrix44& operator-=(const ixo_matrix44& other);
    ixo_matrix44 operator*(T s) const;
    ixo_matrix44& operator*=(T s);
    // Every element divided by s; every element becomes 1e30 when |s| < 1e-6.
    ixo_matrix44 operator/(T s) const;
    ixo_matrix44& operator/=(T s);
    // Matrix product, this on the left.
    ixo_matrix44 operator*(const ixo_matrix44& other) const;
    ixo_matrix44& operator*=(const ixo_matrix44& other);
    // Column-vector product.
    ixo_vector4<T> operator*(const ixo_vector4<T>& v) const;
    // Transforms the point (x, y, z, 1) to (X, Y, Z, W) and returns (X, Y, Z) / W; the
    // origin when |W| <= 1e-6 (single precision).
    ixo_vector3<T> operator*(const ixo_vector3<T>& p) const;
    // The axis-aligned box around the eight transformed corners (points as above). An
    // empty box is returned unchanged.
    ixo_box3<T> operator*(const ixo_box3<T>& box) const;

    ixo_matrix44 transpose() const;
    // Cofactor expansion.
    T determinant() const;
    // Within 1e-6 of the identity in every element.
    bool is_identity() const;
    // Gauss-Jordan elimination with full pivoting. Reports no error: for a singular
    // matrix the result is the partial inverse at the step where no pivot was left.
    ixo_matrix44 inverse() const;

    // Tolerant equality: every element pair differs by less than 1e-6.
    bool operator==(const ixo_matrix44& other) const;
    bool operator!=(const ixo_matrix44& other) const;

    // Writes the 16 values row-major (out[4*i + j] = m[i][j]). A null out writes nothing.
    void array(T* out) const;

    // Elementary row and column operations; indices outside 0..3 leave the matrix as it is.
    void swap_row(int i, int j);
    void swap_column(int i, int j);
    // Row r times f.
    void scale_row(T f, int r);
    // Row `to` += f · row `from`.
    void add_scaled_row(T f, int from, int to);

private:
    ixo_vector4<T> rows_[4];
};

// The library holds the only instantiations.
extern template class ixo_matrix33<float>;
extern template class ixo_matrix33<double>;
extern template class ixo_matrix44<float>;
extern template class ixo_matrix44<double>;
extern template ixo_matrix44<float> ixo_identity_transform<float>();
extern template ixo_matrix44<double> ixo_identity_transform<double>();
extern template ixo_matrix44<float> ixo_zero_matrix<float>();
extern template ixo_matrix44<double> ixo_zero_matrix<double>();
extern template ixo_matrix44<float> ixo_translation_transform<float>(const ixo_vector3<float>&);
extern template ixo_matrix44<double> ixo_translation_transform<double>(const ixo_vector3<double>&);
extern template ixo_matrix44<float> ixo_scale_transform<float>(float);
extern template ixo_matrix44<double> ixo_scale_transform<double>(double);
extern template ixo_matrix44<float> ixo_anisotropic_transform<float>(const ixo_vector3<float>&);
extern template ixo_matrix44<double> ixo_anisotropic_transform<double>(const ixo_vector3<double>&);
extern template ixo_matrix44<float> ixo_rotation_transform<float>(float, const ixo_vector3<float>&);
extern template ixo_matrix44<double> ixo_rotation_transform<double>(double,
                                                                    const ixo_vector3<double>&);
