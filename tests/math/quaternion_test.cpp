#include <ixocore/math/quaternion.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace
{

using quat = ixo_quaternion<double>;
using d3 = ixo_vector3<double>;
using m33 = ixo_matrix33<double>;
constexpr double pi = std::numbers::pi;
const double r = std::sqrt(0.5);

} // namespace

TEST(quaternion, to_matrix)
{
    const quat q(pi / 2, ixo_z_axisd);
    EXPECT_EQ(q.matrix() * d3(1, 0, 0), d3(0, 1, 0));
    EXPECT_EQ(q.matrix() * d3(0, 1, 0), d3(-1, 0, 0));
    // The transform builder turns the other way: its block is the transpose.
    const ixo_matrix44<double> t = ixo_rotation_transform<double>(pi / 2, ixo_z_axisd);
    EXPECT_EQ(t * ixo_vector4<double>(1, 0, 0, 1), ixo_vector4<double>(0, -1, 0, 1));
    const d3 axis = d3(2, -1, 2) / 3.0;
    const m33 m = quat(0.9, axis).matrix();
    const ixo_matrix44<double> b = ixo_rotation_transform<double>(0.9, axis);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            EXPECT_NEAR(m[i][j], b[j][i], 1e-12);

    // A quaternion off unit length is normalised first.
    const m33 identity(d3(1, 0, 0), d3(0, 1, 0), d3(0, 0, 1));
    EXPECT_EQ(quat(2, 0, 0, 0).matrix(), identity);
    EXPECT_EQ(quat(0, 0, 0, 3).matrix(), m33(d3(-1, 0, 0), d3(0, -1, 0), d3(0, 0, 1)));
}

TEST(quaternion, from_matrix_branches)
{
    // Trace branch: a quarter turn about z.
    const m33 rz(d3(0, -1, 0), d3(1, 0, 0), d3(0, 0, 1));
    EXPECT_EQ(quat(rz), quat(r, 0, 0, r));

    // Half turns have trace -1: the branch of the largest diagonal element.
    const quat x_half(pi, ixo_x_axisd);
    EXPECT_EQ(quat(x_half.matrix()), quat(0, 1, 0, 0));
    EXPECT_EQ(quat(m33(d3(-1, 0, 0), d3(0, 1, 0), d3(0, 0, -1))), quat(0, 0, 1, 0));
    EXPECT_EQ(quat(m33(d3(-1, 0, 0), d3(0, -1, 0), d3(0, 0, 1))), quat(0, 0, 0, 1));
    // Ties in the strict comparisons fall to the later branch.
    EXPECT_EQ(quat(m33(d3(0.5, 0, 0), d3(0, 0.5, 0), d3(0, 0, -2))), quat(0, 0, 1, 0));
    EXPECT_EQ(quat(m33(d3(-1, 0, 0), d3(0, -1, 0), d3(0, 0, -1))), quat(0, 0, 0, 1));

    // Round trips through the matrix, on both sides of the half turn.
    const d3 axis = d3(1, 2, 3).normalized();
    for (double angle : {0.3, 2.0, 3.1})
    {
        const quat q(angle, axis);
        EXPECT_EQ(quat(q.matrix()), q) << angle;
        EXPECT_NEAR(quat(q.matrix()).angle(), angle, 1e-9);
    }
    const ixo_quaternion<float> f(1.2f, ixo_vector3<float>(0, 0.6f, 0.8f));
    const ixo_quaternion<float> back(f.matrix());
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(back[i], f[i], 1e-6f);
}

TEST(quaternion, hamilton_product)
{
    const quat i(0, 1, 0, 0), j(0, 0, 1, 0), k(0, 0, 0, 1);
    EXPECT_EQ(i ^ j, k);
    EXPECT_EQ(j ^ i, -k);
    EXPECT_EQ(j ^ k, i);
    EXPECT_EQ(i ^ i, quat(-1, 0, 0, 0));
    EXPECT_EQ(quat(1, 2, 3, 4) ^ quat(5, 6, 7, 8), quat(-60, 12, 30, 24));

    // Two quarter turns make a half turn; the right operand acts first.
    const quat qz(pi / 2, ixo_z_axisd);
    EXPECT_EQ((qz ^ qz).matrix() * d3(1, 0, 0), d3(-1, 0, 0));
    const quat qx(pi / 2, ixo_x_axisd);
    EXPECT_EQ((qz ^ qx).matrix() * d3(0, 1, 0), qz.matrix() * (qx.matrix() * d3(0, 1, 0)));
    EXPECT_EQ((qz ^ qx).matrix() * d3(0, 1, 0), d3(0, 0, 1));
}

TEST(quaternion, angle_and_axis)
{
    const quat q(pi / 2, ixo_z_axisd);
    EXPECT_DOUBLE_EQ(q.angle(), pi / 2);
    EXPECT_EQ(q.axis(), d3(0, 0, 1));
    const quat identity;
    EXPECT_EQ(identity.angle(), 0.0);
    EXPECT_EQ(identity.axis(), d3(0, 0, 0));
    // w < 0 gives a negative angle.
    EXPECT_DOUBLE_EQ(quat(-r, 0, 0, r).angle(), -pi / 2);
    // The vector part's own length enters, not the unit axis: (2, 0, 0, 2) is still a
    // quarter turn.
    EXPECT_DOUBLE_EQ(quat(2, 0, 2, 0).angle(), pi / 2);
    EXPECT_EQ(quat(2, 0, 2, 0).axis(), d3(0, 1, 0));
    EXPECT_NEAR(quat(2.5, d3(0, 0.6, -0.8)).angle(), 2.5, 1e-12);
    EXPECT_EQ(quat(2.5, d3(0, 0.6, -0.8)).axis(), d3(0, 0.6, -0.8));
    EXPECT_EQ(quat(1, 5e-7, 0, 0).axis(), d3(5e-7, 0, 0));
}

TEST(quaternion, arithmetic_guard_and_normalize)
{
    const quat a(1, 2, 3, 4), b(0.5, -1, 0, 2);
    EXPECT_EQ(a + b, quat(1.5, 1, 3, 6));
    EXPECT_EQ(a - b, quat(0.5, 3, 3, 2));
    EXPECT_EQ(a * 2.0, quat(2, 4, 6, 8));
    EXPECT_DOUBLE_EQ(a * b, 0.5 - 2 + 0 + 8);
    EXPECT_DOUBLE_EQ(a.length_squared(), 30);
    EXPECT_EQ(a / -2.0, quat(-0.5, -1, -1.5, -2));
    EXPECT_EQ(a / 5e-7, quat(1e30, 1e30, 1e30, 1e30));
    quat c = a;
    c += b;
    c -= b;
    c *= 3;
    c /= 3;
    EXPECT_EQ(c, a);
    EXPECT_TRUE(a != quat(1, 2, 3, 4.00001));
    EXPECT_TRUE(a == quat(1, 2, 3, 4.0000005));

    quat n(0, 3, 0, 4);
    EXPECT_DOUBLE_EQ(n.normalize(), 5);
    EXPECT_EQ(n, quat(0, 0.6, 0, 0.8));
    quat zero(0, 0, 0, 0);
    EXPECT_EQ(zero.normalize(), 0.0);
    EXPECT_EQ(zero, quat(0, 0, 0, 0));
    EXPECT_EQ(quat(0, 0, 2, 0).normalized(), quat(0, 0, 1, 0));
}
