#pragma once
// Small fixed-size vectors: ixo_vector2<T>, ixo_vector3<T>, ixo_vector4<T>.
//
// The elements are stored consecutively in index order (x, y, z, w) with nothing else, so
// arrays of vectors can be handed to interfaces that expect plain arrays of T. The
// templates are compiled into the library for these element types only:
//   ixo_vector2, ixo_vector3: int, float, double
//   ixo_vector4:              unsigned char (RGBA colours), int, long, float, double
// Integer elements wrap around on overflow (an ixo_vector4<unsigned char> wraps modulo 256).

#include <ixocore/core/api.h>

#include <type_traits>

// The one tolerance of the geometry code; a few comparisons use its single-precision value.
inline constexpr double ixo_tolerance = 1e-6;
inline constexpr float ixo_tolerance_single = 1e-6f;
// The value that stands for "infinitely far": results of a guarded division by (nearly)
// zero and the corners of an empty box.
inline constexpr double ixo_huge = 1e30;

// Storage and the operations common to all three vector sizes. V is the concrete vector
// class, N its dimension. Not used on its own.
template <typename V, typename T, int N> class IXO_API ixo_vector_base
{
public:
    // Element i; i must lie in 0..N-1 (unchecked, as for a plain array).
    constexpr T& operator[](int i) { return elements_[i]; }
    constexpr const T& operator[](int i) const { return elements_[i]; }
    // The address of element 0, for interfaces that take a plain array of N values.
    constexpr operator T*() { return elements_; }
    constexpr operator const T*() const { return elements_; }

    V operator+(const V& other) const
    {
        V r;
        for (int i = 0; i < N; ++i)
            r[i] = add(elements_[i], other[i]);
        return r;
    }
    V operator-(const V& other) const
    {
        V r;
        for (int i = 0; i < N; ++i)
            r[i] = sub(elements_[i], other[i]);
        return r;
    }
    V operator-() const
    {
        V r;
        for (int i = 0; i < N; ++i)
            r[i] = sub(T(0), elements_[i]);
        return r;
    }
    V& operator+=(const V& other)
    {
        for (int i = 0; i < N; ++i)
            elements_[i] = add(elements_[i], other[i]);
        return self();
    }
    V& operator-=(const V& other)
    {
        for (int i = 0; i < N; ++i)
            elements_[i] = sub(elements_[i], other[i]);
        return self();
    }
    // Every element times s.
    V operator*(T s) const
    {
        V r;
        for (int i = 0; i < N; ++i)
            r[i] = mul(elements_[i], s);
        return r;
    }
    V& operator*=(T s)
    {
        for (int i = 0; i < N; ++i)
            elements_[i] = mul(elements_[i], s);
        return self();
    }
    // Dot product over all N elements.
    T operator*(const V& other) const
    {
        T sum = T(0);
        for (int i = 0; i < N; ++i)
            sum = add(sum, mul(elements_[i], other[i]));
        return sum;
    }

    // Every element divided by s. When |s| < 1e-6 every element becomes 1e30 instead
    // (integer vectors: the largest value of T); integer division truncates toward zero.
    V operator/(T s) const;
    V& operator/=(T s);

    // Sum of the squared elements.
    T length_squared() const { return *this * self(); }
    // Square root of length_squared(), converted to T (integers truncate toward zero).
    T length() const;
    // Divides the vector by its length unless that is below 1e-6, in which case the vector
    // stays as it is. Returns the length before the call in both cases.
    T normalize();
    // A copy normalised with normalize().
    V normalized() const;

    // Tolerant equality: every element pair differs by less than 1e-6 (exact for integers).
    bool operator==(const V& other) const;
    bool operator!=(const V& other) const;
    // Exact lexicographic order: the first unequal element decides, else the last one.
    bool operator<(const V& other) const;
    bool operator<=(const V& other) const;
    bool operator>(const V& other) const;
    bool operator>=(const V& other) const;

protected:
    // Integer arithmetic goes through the unsigned type so that overflow wraps.
    using wrap_type = typename std::conditional_t<std::is_integral_v<T>, std::make_unsigned<T>,
                                                  std::type_identity<T>>::type;
    static constexpr T add(T a, T b) { return T(wrap_type(a) + wrap_type(b)); }
    static constexpr T sub(T a, T b) { return T(wrap_type(a) - wrap_type(b)); }
    static constexpr T mul(T a, T b) { return T(wrap_type(a) * wrap_type(b)); }

    V& self() { return static_cast<V&>(*this); }
    const V& self() const { return static_cast<const V&>(*this); }

    T elements_[N];
};

template <typename T> class IXO_API ixo_vector2 : public ixo_vector_base<ixo_vector2<T>, T, 2>
{
public:
    // Leaves the elements uninitialised.
    ixo_vector2() = default;
    constexpr ixo_vector2(T x, T y)
    {
        this->elements_[0] = x;
        this->elements_[1] = y;
    }
    // Element-wise conversion from another element type.
    template <typename U>
    constexpr explicit ixo_vector2(const ixo_vector2<U>& v) : ixo_vector2(T(v[0]), T(v[1]))
    {
    }
};

template <typename T> class IXO_API ixo_vector3 : public ixo_vector_base<ixo_vector3<T>, T, 3>
{
public:
    // Leaves the elements uninitialised.
    ixo_vector3() = default;
    constexpr ixo_vector3(T x, T y, T z)
    {
        this->elements_[0] = x;
        this->elements_[1] = y;
        this->elements_[2] = z;
    }
    // Element-wise conversion from another element type.
    template <typename U>
    constexpr explicit ixo_vector3(const ixo_vector3<U>& v) : ixo_vector3(T(v[0]), T(v[1]), T(v[2]))
    {
    }

    // Cross product this × other.
    ixo_vector3 operator^(const ixo_vector3& b) const
    {
        const ixo_vector3& a = *this;
        return ixo_vector3(this->sub(this->mul(a[1], b[2]), this->mul(a[2], b[1])),
                           this->sub(this->mul(a[2], b[0]), this->mul(a[0], b[2])),
                           this->sub(this->mul(a[0], b[1]), this->mul(a[1], b[0])));
    }
};

template <typename T> class IXO_API ixo_vector4 : public ixo_vector_base<ixo_vector4<T>, T, 4>
{
public:
    // Leaves the elements uninitialised.
    ixo_vector4() = default;
    constexpr ixo_vector4(T x, T y, T z, T w)
    {
        this->elements_[0] = x;
        this->elements_[1] = y;
        this->elements_[2] = z;
        this->elements_[3] = w;
    }
    // Element-wise conversion from another element type.
    template <typename U>
    constexpr explicit ixo_vector4(const ixo_vector4<U>& v)
        : ixo_vector4(T(v[0]), T(v[1]), T(v[2]), T(v[3]))
    {
    }
};

// Scalar times vector.
inline ixo_vector3<float> operator*(float s, const ixo_vector3<float>& v)
{
    return v * s;
}
inline ixo_vector3<double> operator*(double s, const ixo_vector3<double>& v)
{
    return v * s;
}

// The library holds the only instantiations.
extern template class ixo_vector_base<ixo_vector2<int>, int, 2>;
extern template class ixo_vector_base<ixo_vector2<float>, float, 2>;
extern template class ixo_vector_base<ixo_vector2<double>, double, 2>;
extern template class ixo_vector_base<ixo_vector3<int>, int, 3>;
extern template class ixo_vector_base<ixo_vector3<float>, float, 3>;
extern template class ixo_vector_base<ixo_vector3<double>, double, 3>;
extern template class ixo_vector_base<ixo_vector4<unsigned char>, unsigned char, 4>;
extern template class ixo_vector_base<ixo_vector4<int>, int, 4>;
extern template class ixo_vector_base<ixo_vector4<long>, long, 4>;
extern template class ixo_vector_base<ixo_vector4<float>, float, 4>;
extern template class ixo_vector_base<ixo_vector4<double>, double, 4>;
extern template class ixo_vector2<int>;
extern template class ixo_vector2<float>;
extern template class ixo_vector2<double>;
extern template class ixo_vector3<int>;
extern template class ixo_vector3<float>;
extern template class ixo_vector3<double>;
extern template class ixo_vector4<unsigned char>;
extern template class ixo_vector4<int>;
extern template class ixo_vector4<long>;
extern template class ixo_vector4<float>;
extern template class ixo_vector4<double>;

// The unit axes (1, 0, 0), (0, 1, 0), (0, 0, 1).
extern IXO_API const ixo_vector3<float> ixo_x_axisf;
extern IXO_API const ixo_vector3<float> ixo_y_axisf;
extern IXO_API const ixo_vector3<float> ixo_z_axisf;
extern IXO_API const ixo_vector3<double> ixo_x_axisd;
extern IXO_API const ixo_vector3<double> ixo_y_axisd;
extern IXO_API const ixo_vector3<double> ixo_z_axisd;
