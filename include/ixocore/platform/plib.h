#pragma once
// The part of the NURBS++ interface (namespace PLib) that the poly-cylinder needs: points
// in homogeneous coordinates, a plain vector, and a NURBS curve that interpolates a closed
// sequence of points with a periodic degree-2 B-spline and evaluates it.
//
// The templates are compiled into the library for T = float and double with N = 3 only.
// A closed curve is stored unwrapped: n distinct control points followed by the first
// `degree` of them again, over a knot vector of n + 2 degree + 1 knots whose spans repeat
// with period 1, so the curve and all its derivatives join up at u = 0 and u = 1.

#include <ixocore/core/api.h>

#include <cstddef>
#include <vector>

namespace PLib
{
// A point of N dimensions.
template <typename T, int N> struct IXO_API Point_nD
{
    T data[N]{};

    Point_nD() = default;
    Point_nD(T x, T y, T z) requires(N == 3) : data{x, y, z} {}
    T x() const { return data[0]; }
    T y() const { return data[1]; }
    T z() const { return data[2]; }
};

// A point in homogeneous coordinates (x w, y w, z w, w), as NURBS++ keeps weighted control
// points. Constructed from the Cartesian point and its weight.
template <typename T, int N> struct IXO_API HPoint_nD
{
    T data[N + 1]{};

    HPoint_nD() = default;
    // The point (x, y, z) with weight w, stored premultiplied.
    HPoint_nD(T x, T y, T z, T w) requires(N == 3) : data{x * w, y * w, z * w, w} {}
    T x() const { return data[0]; }
    T y() const { return data[1]; }
    T z() const { return data[2]; }
    T w() const { return data[N]; }
    // The Cartesian point: the coordinates divided by the weight (unchanged at weight 0).
    Point_nD<T, N> project() const;
};

// A resizable array with NURBS++'s element access. Indices are unchecked, as for a plain
// array.
template <typename T> class Vector
{
public:
    Vector() = default;
    explicit Vector(int n) : v_(n > 0 ? std::size_t(n) : 0) {}
    int n() const { return int(v_.size()); }
    int size() const { return int(v_.size()); }
    void resize(int n) { v_.resize(n > 0 ? std::size_t(n) : 0); }
    T& operator[](int i) { return v_[std::size_t(i)]; }
    const T& operator[](int i) const { return v_[std::size_t(i)]; }

private:
    std::vector<T> v_;
};

// The knot vector of the periodic degree-2 curve through parameters uk[0] = 0 < uk[1] <
// ... < uk[n] = 1 (uk[n] closes the sequence): one knot halfway between each pair of
// neighbouring parameters, repeated with period 1, n + 5 knots in all, so every parameter
// sits inside a span of its own. Only degree 2 is offered; false (and U empty) for any
// other degree, fewer than 3 distinct parameters, or parameters that do not rise strictly
// from 0 to 1. Cost O(n).
template <typename T> IXO_API bool knotAveragingClosed(const Vector<T>& uk, int deg, Vector<T>& U);

template <typename T, int N> class IXO_API NurbsCurve
{
public:
    NurbsCurve() = default;

    // Makes this the closed curve of degree `d` through the points Qw[0..n-1] at the
    // parameters ub[0..n-1]; Qw[n] and ub[n] = 1 close the sequence (Qw[n] repeats Qw[0]
    // and is not used). U is the knot vector from knotAveragingClosed. Solves the cyclic
    // tridiagonal system of the periodic basis in O(n). Returns false, leaving the curve
    // empty, for mismatched sizes, degree other than 2, fewer than 3 distinct points, or a
    // singular system (points whose parameters coincide).
    bool globalInterpClosedH(const Vector<HPoint_nD<T, N>>& Qw, const Vector<T>& ub,
                             const Vector<T>& U, int d);

    // The curve at u in homogeneous coordinates. u is taken modulo 1, so any real u is
    // valid. The zero point for an empty curve. Cost O(degree^2).
    HPoint_nD<T, N> operator()(T u) const;
    // The Cartesian point at u (the homogeneous point projected).
    Point_nD<T, N> pointAt(T u) const { return (*this)(u).project(); }

    int degree() const { return deg_; }
    // Control points of the unwrapped form: the distinct ones, then the first `degree`
    // of them again.
    const Vector<HPoint_nD<T, N>>& ctrlPnts() const { return P_; }
    const Vector<T>& knot() const { return U_; }

private:
    int deg_ = 0;
    Vector<HPoint_nD<T, N>> P_;
    Vector<T> U_;
};
} // namespace PLib
