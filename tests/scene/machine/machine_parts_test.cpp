// Shaft, rotor and stator geometry without a device: counts, positions, bounds, refusals.

#include "scene/scene_probe.h"

#include <ixocore/scene/machine/scene_rotor2d.h>
#include <ixocore/scene/machine/scene_shaft.h>
#include <ixocore/scene/machine/scene_stator2d.h>
#include <ixocore/scene/scene_poly_cylinder.h>

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using v3 = ixo_vector3<float>;
constexpr double deg = 3.14159265358979 / 180;

using ixo_test::box_is;
using ixo_test::near;
} // namespace

TEST(shaft, three_rings_straight_twisted_and_deflected)
{
    auto s = ixo_scene_shaft::create(8, 4, 3);
    ASSERT_TRUE(s);
    EXPECT_EQ(s->get_vertex_count(), 120u);
    EXPECT_EQ(s->get_triangle_count(), 128u);
    auto v = s->get_vertices();
    ASSERT_EQ(v.size(), 120u);
    // A cylinder of radius 1 from z = 0 to 1; each sector has its own seam vertex, so
    // vertex 5 (sector 1, facet 0) repeats vertex 4 (sector 0, facet 4) in the next colour.
    EXPECT_TRUE(box_is(s->get_object_bounds(), v3(-1, -1, 0), v3(1, 1, 1)));
    EXPECT_TRUE(near(v[0].position, v3(0, 1, 0))) << "first vertex";
    EXPECT_TRUE(near(v[4].position, v[5].position)) << "seam";
    EXPECT_EQ(v[4].color, ixo_vector4<unsigned char>(0, 0, 0, 255));
    EXPECT_EQ(v[5].color, ixo_vector4<unsigned char>(255, 255, 255, 255));
    // Five vertices per sector, 11.25 degrees apart: sector 2 starts at 90 degrees, on +x.
    EXPECT_TRUE(near(v[10].position, v3(1, 0, 0))) << "sector 2";
    EXPECT_TRUE(near(v[13].position, v3(std::sin(123.75 * deg), std::cos(123.75 * deg), 0)))
        << "sector 2, facet 3";
    EXPECT_TRUE(near(v[40].position, v3(0, 1, 0.5f))) << "ring 1";
    EXPECT_TRUE(near(v[10].normal, v3(1, 0, 0))) << "normal";

    // Torsion and deflection are exaggerated by their scales.
    ASSERT_TRUE(s->set_ring_info(1, 10, 0, 0));
    s->set_torsion_scale(2);
    // Ring 1 is turned by 20 degrees.
    EXPECT_TRUE(
        near(s->get_vertices()[40].position, v3(std::sin(20 * deg), std::cos(20 * deg), 0.5f)))
        << "twisted ring";
    // Deflection (0.5, -0.25) radii at radius 2, scale 3: ring 2 moves by (3, -1.5), at z = 4.
    ASSERT_TRUE(s->set_ring_info(2, 0, 0.5f, -0.25f));
    s->set_radius(2);
    s->set_length(4);
    s->set_xy_scale(3);
    EXPECT_TRUE(near(s->get_vertices()[80].position, v3(3, 2 - 1.5f, 4))) << "deflected ring";
    EXPECT_TRUE(box_is(s->get_object_bounds(), v3(-2, -3.5f, 0), v3(5, 2, 4)));
    // The rotation angle turns every ring: 90 degrees puts vertex 0 on +x.
    s->set_rotation_angle(90);
    EXPECT_TRUE(near(s->get_vertices()[0].position, v3(2, 0, 0))) << "rotated";
    EXPECT_FALSE(s->set_ring_info(3, 1, 1, 1));
    EXPECT_TRUE(near(s->get_ring_info(2), v3(0, 0.5f, -0.25f))) << "stored info";
}

TEST(shaft, degenerate_and_absurd_shapes)
{
    // One ring: a circle at z = 0 and no triangles, whatever the length.
    auto one = ixo_scene_shaft::create(8, 4, 1);
    one->set_length(5);
    EXPECT_EQ(one->get_vertex_count(), 40u);
    EXPECT_EQ(one->get_triangle_count(), 0u);
    EXPECT_TRUE(box_is(one->get_object_bounds(), v3(-1, -1, 0), v3(1, 1, 0)));
    EXPECT_TRUE(ixo_scene_shaft::create(0, 4, 3)->get_object_bounds().empty());
    EXPECT_TRUE(ixo_scene_shaft::create(8, 4, 0)->get_object_bounds().empty());
    EXPECT_FALSE(ixo_scene_shaft::create(1u << 20, 1u << 20, 10));
}

TEST(rotor2d, four_blades_span_81_degrees_each)
{
    auto r = ixo_scene_rotor2d::create();
    EXPECT_EQ(r->get_object_bounds().minimum(), v3(0, 0, 0));
    ASSERT_TRUE(r->set_num_blades(4));
    for (unsigned int i = 0; i < 4; ++i)
        r->set_blade_radius(i, 2);
    r->set_base_radius(1);
    // Blade 1 is centred at 90 degrees, which lies at -y; its sides at 49.5 and 130.5.
    auto o = r->get_blade_outline(1);
    ASSERT_EQ(o.size(), 5u);
    EXPECT_TRUE(near(o[0], v3(std::cos(49.5 * deg), -std::sin(49.5 * deg), 0))) << "base, leading";
    EXPECT_TRUE(near(o[2], v3(0, -2, 0))) << "tip centre";
    EXPECT_TRUE(near(o[3], v3(2 * std::cos(130.5 * deg), -2 * std::sin(130.5 * deg), 0))) << "tip";
    EXPECT_TRUE(near(o[4], v3(std::cos(130.5 * deg), -std::sin(130.5 * deg), 0)))
        << "base, trailing";
    EXPECT_TRUE(box_is(r->get_object_bounds(), v3(-2, -2, 0), v3(2, 2, 0)));
    r->set_blade_radius(3, 3);
    EXPECT_TRUE(box_is(r->get_object_bounds(), v3(-3, -3, 0), v3(3, 3, 0)));

    r->set_blade_radius(4, 9); // no such blade
    EXPECT_EQ(r->get_blade_radius(4), 0);
    EXPECT_TRUE(r->get_blade_outline(4).empty());
    EXPECT_FALSE(r->set_num_blades(ixo_scene_rotor2d::max_blades + 1));
    EXPECT_EQ(r->get_num_blades(), 4u);
    EXPECT_EQ(ixo_scene_rotor2d::get_blade_color(), ixo_vector4<unsigned char>(0, 0, 255, 200));
}
