#include <ixocore/math/vector.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <type_traits>

static_assert(sizeof(ixo_vector2<int>) == 2 * sizeof(int));
static_assert(sizeof(ixo_vector3<float>) == 3 * sizeof(float));
static_assert(sizeof(ixo_vector4<unsigned char>) == 4);
static_assert(sizeof(ixo_vector4<double>) == 4 * sizeof(double));
static_assert(std::is_trivially_copyable_v<ixo_vector3<float>>);
static_assert(std::is_standard_layout_v<ixo_vector3<float>>);

TEST(vector, arithmetic)
{
    const ixo_vector3<float> a(1, 2, 3);
    const ixo_vector3<float> b(4, -5, 6);
    EXPECT_EQ(a + b, ixo_vector3<float>(5, -3, 9));
    EXPECT_EQ(a - b, ixo_vector3<float>(-3, 7, -3));
    EXPECT_EQ(-a, ixo_vector3<float>(-1, -2, -3));
    EXPECT_EQ(a * 2.0f, ixo_vector3<float>(2, 4, 6));
    EXPECT_EQ(2.0f * a, ixo_vector3<float>(2, 4, 6));
    EXPECT_FLOAT_EQ(a * b, 4.0f - 10.0f + 18.0f);
    // (2*6 - 3*(-5), 3*4 - 1*6, 1*(-5) - 2*4)
    EXPECT_EQ(a ^ b, ixo_vector3<float>(27, 6, -13));
    EXPECT_EQ(ixo_x_axisf ^ ixo_y_axisf, ixo_z_axisf);
    EXPECT_EQ(ixo_y_axisd ^ ixo_x_axisd, -ixo_z_axisd);

    ixo_vector3<float> c = a;
    c += b;
    c -= ixo_vector3<float>(1, 1, 1);
    c *= 0.5f;
    EXPECT_EQ(c, ixo_vector3<float>(2, -2, 4));
    EXPECT_FLOAT_EQ(ixo_vector4<float>(1, 2, 3, 4).length_squared(), 30.0f);
    EXPECT_EQ(ixo_vector2<int>(3, 4) * ixo_vector2<int>(2, -1), 2);
    EXPECT_EQ(ixo_vector2<int>(3, 4).length(), 5);
    EXPECT_EQ(ixo_vector2<int>(2, 2).length(), 2); // sqrt(8) truncated
}

TEST(vector, division_guard)
{
    const ixo_vector3<float> v(1, -2, 3);
    EXPECT_EQ(v / -2.0f, ixo_vector3<float>(-0.5f, 1.0f, -1.5f));
    const ixo_vector3<float> huge(1e30f, 1e30f, 1e30f);
    EXPECT_EQ(v / 0.0f, huge);
    EXPECT_EQ(v / 1e-7f, huge);
    EXPECT_EQ(v / -1e-7f, huge);
    ixo_vector3<double> d(2, 4, 6);
    d /= 2e-6; // just above the guard
    EXPECT_NEAR(d[0], 1e6, 1e-3);
    d /= 0.0;
    EXPECT_EQ(d[2], 1e30);

    EXPECT_EQ(ixo_vector2<int>(7, -7) / 2, ixo_vector2<int>(3, -3));
    EXPECT_EQ(ixo_vector2<int>(7, -7) / 0, ixo_vector2<int>(INT_MAX, INT_MAX));
    EXPECT_EQ(ixo_vector2<int>(INT_MIN, 4) / -1, ixo_vector2<int>(INT_MIN, -4));
    EXPECT_EQ(ixo_vector4<unsigned char>(200, 10, 0, 255) / 0,
              ixo_vector4<unsigned char>(255, 255, 255, 255));
    EXPECT_EQ(ixo_vector4<long>(10, 20, 30, 40) / 3L, ixo_vector4<long>(3, 6, 10, 13));
}

TEST(vector, normalize)
{
    ixo_vector3<float> v(3, 4, 0);
    EXPECT_FLOAT_EQ(v.normalize(), 5.0f);
    EXPECT_FLOAT_EQ(v[0], 0.6f);
    EXPECT_FLOAT_EQ(v[1], 0.8f);
    EXPECT_EQ(v[2], 0.0f);

    ixo_vector3<float> zero(0, 0, 0);
    EXPECT_EQ(zero.normalize(), 0.0f);
    EXPECT_EQ(zero, ixo_vector3<float>(0, 0, 0));
    ixo_vector3<double> tiny(5e-7, 0, 0);
    EXPECT_DOUBLE_EQ(tiny.normalize(), 5e-7);
    EXPECT_DOUBLE_EQ(tiny[0], 5e-7); // below the tolerance: unchanged

    const ixo_vector4<double> q(0, 0, 0, -2);
    EXPECT_EQ(q.normalized(), ixo_vector4<double>(0, 0, 0, -1));
    EXPECT_EQ(q[3], -2.0); // normalized() leaves the original alone

    ixo_vector2<int> p(0, 7);
    EXPECT_EQ(p.normalize(), 7);
    EXPECT_EQ(p, ixo_vector2<int>(0, 1));
}

TEST(vector, tolerant_equality)
{
    const ixo_vector3<float> a(1, 2, 3);
    EXPECT_TRUE(a == ixo_vector3<float>(1.0000005f, 2, 3));
    EXPECT_FALSE(a == ixo_vector3<float>(1.000002f, 2, 3));
    EXPECT_TRUE(a != ixo_vector3<float>(1, 2, 3.000002f));
    EXPECT_FALSE(a != ixo_vector3<float>(1, 2.0000005f, 3));
    EXPECT_TRUE(ixo_vector3<double>(0, 0, 0) == ixo_vector3<double>(0, 0, 9.9e-7));
    EXPECT_FALSE(ixo_vector3<double>(0, 0, 0) == ixo_vector3<double>(0, 0, 1e-6)); // strict
    EXPECT_FALSE(ixo_vector2<int>(1, 2) == ixo_vector2<int>(1, 3));
}

TEST(vector, lexicographic_order)
{
    using v3 = ixo_vector3<int>;
    EXPECT_TRUE(v3(1, 9, 9) < v3(2, 0, 0));
    EXPECT_FALSE(v3(2, 0, 0) < v3(1, 9, 9));
    EXPECT_TRUE(v3(1, 2, 3) < v3(1, 2, 4));
    EXPECT_FALSE(v3(1, 2, 3) < v3(1, 2, 3));
    EXPECT_TRUE(v3(1, 2, 3) <= v3(1, 2, 3));
    EXPECT_TRUE(v3(1, 3, 0) > v3(1, 2, 5));
    EXPECT_TRUE(v3(1, 2, 3) >= v3(1, 2, 3));
    EXPECT_FALSE(v3(1, 2, 2) >= v3(1, 2, 3));
    // The order is exact, unlike ==.
    const ixo_vector2<float> a(1.0f, 0.0f);
    const ixo_vector2<float> b(1.0000005f, 0.0f);
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(a < b);
}
