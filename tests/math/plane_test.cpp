#include <ixocore/math/plane.h>

#include <gtest/gtest.h>

namespace
{
using v3 = ixo_vector3<float>;
using v2 = ixo_vector2<float>;
} // namespace

TEST(plane, frames)
{
    const ixo_plane<float> xy;
    EXPECT_EQ(xy.root(), v3(0, 0, 0));
    EXPECT_EQ(xy.normal(), v3(0, 0, 1));
    EXPECT_EQ(xy.u_direction(), v3(1, 0, 0));
    EXPECT_EQ(xy.v_direction(), v3(0, 1, 0));

    // From root and normal: u = y × normal, or z when the normal is parallel to y.
    const ixo_plane<float> y_normal(v3(0, 0, 0), v3(0, 1, 0));
    EXPECT_EQ(y_normal.u_direction(), v3(0, 0, 1));
    EXPECT_EQ(y_normal.v_direction(), v3(1, 0, 0));
    const ixo_plane<float> x_normal(v3(1, 2, 3), v3(1, 0, 0));
    EXPECT_EQ(x_normal.root(), v3(1, 2, 3));
    EXPECT_EQ(x_normal.u_direction(), v3(0, 0, -1));
    EXPECT_EQ(x_normal.v_direction(), v3(0, 1, 0));
    EXPECT_EQ(x_normal.u_direction() ^ x_normal.v_direction(), x_normal.normal());
    // The normal is kept as given, so v carries its length.
    const ixo_plane<double> long_normal(ixo_vector3<double>(0, 0, 0), ixo_vector3<double>(0, 0, 2));
    EXPECT_EQ(long_normal.normal(), ixo_vector3<double>(0, 0, 2));
    EXPECT_EQ(long_normal.u_direction(), ixo_vector3<double>(1, 0, 0));
    EXPECT_EQ(long_normal.v_direction(), ixo_vector3<double>(0, 2, 0));
    const ixo_plane<float> down(v3(0, 0, 0), v3(0, -3, 0));
    EXPECT_EQ(down.u_direction(), v3(0, 0, 1));
    EXPECT_EQ(down.v_direction(), v3(-3, 0, 0));

    // Through three points: p1 on the positive u axis, p2 on the positive v side.
    const ixo_plane<float> p(v3(1, 1, 1), v3(3, 1, 1), v3(2, 1, 5));
    EXPECT_EQ(p.root(), v3(1, 1, 1));
    EXPECT_EQ(p.u_direction(), v3(1, 0, 0));
    EXPECT_EQ(p.normal(), v3(0, -1, 0));
    EXPECT_EQ(p.v_direction(), v3(0, 0, 1));
    EXPECT_EQ(p.project_point(v3(3, 1, 1)), v2(2, 0));
    EXPECT_EQ(p.project_point(v3(2, 1, 5)), v2(1, 4));

    ixo_plane<float> s = p;
    s.set_normal(v3(0, 0, 7));
    EXPECT_EQ(s.normal(), v3(0, 0, 7));
    EXPECT_EQ(s.u_direction(), v3(1, 0, 0)); // not recomputed
}

TEST(plane, project_ray)
{
    const ixo_plane<float> xy;
    EXPECT_EQ(xy.project_ray(v3(0, 0, 5), v3(0, 0, -1)), v3(0, 0, 0));
    EXPECT_EQ(xy.project_ray(v3(0, 0, 5), v3(1, 0, 0)), v3(0, 0, 5)); // parallel
    // Oblique: distance 4, cosine 0.8, so 5 along the unit direction (0.6, 0, -0.8).
    EXPECT_EQ(xy.project_ray(v3(1, 1, 4), v3(3, 0, -4)), v3(4, 1, 0));
    EXPECT_EQ(xy.project_ray(v3(0, 0, 4), v3(30, 0, -40)), v3(3, 0, 0));
    // From the side the normal points away from, the ray runs backwards.
    EXPECT_EQ(xy.project_ray(v3(0, 0, -2), v3(0, 0, 1)), v3(0, 0, -4));

    const ixo_plane<double> tilted(ixo_vector3<double>(0, 0, 0), ixo_vector3<double>(1, 0, 0));
    EXPECT_EQ(tilted.project_ray(ixo_vector3<double>(2, 5, -1), ixo_vector3<double>(-1, 1, 0)),
              ixo_vector3<double>(0, 7, -1));
}

TEST(plane, transform)
{
    const ixo_plane<float> p(v3(1, 2, 3), v3(1, 0, 0)); // u = -z, v = y
    const ixo_matrix44<float> m = p.get_transform();
    const ixo_matrix44<float> expected(
        ixo_vector4<float>(0, 0, -1, 0), ixo_vector4<float>(0, 1, 0, 0),
        ixo_vector4<float>(1, 0, 0, 0), ixo_vector4<float>(-1, -2, -3, 1));
    EXPECT_EQ(m, expected);
    float out[16];
    p.get_transform(out);
    const float values[16] = {0, 0, -1, 0, 0, 1, 0, 0, 1, 0, 0, 0, -1, -2, -3, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(out[i], values[i]) << i;
    p.get_transform(nullptr);
}
