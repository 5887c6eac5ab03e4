// Poly-cylinders drawn headless and read back: colours, picked ring, polygons, resets.

#include "scene/scene_render_fixture.h"

#include <ixocore/scene/scene_poly_cylinder.h>

#include <gtest/gtest.h>

#include <vector>

namespace
{
using color = ixo_vector4<unsigned char>;
using ixo_test::about;

// Inner radius 1, wall 0.5: a ring from 20 to 30 pixels round the centre.
constexpr double ring_pixels = 3.14159265 * (30 * 30 - 20 * 20);

class poly_cylinder_render : public ixo_test::part_render
{
protected:
    ixo_object_ptr<ixo_scene_poly_cylinder> ring(std::vector<float> angles,
                                                 std::vector<color> colors)
    {
        auto p = ixo_scene_poly_cylinder::create(1, 0.5f);
        std::vector<float> radii(angles.size(), 1.0f);
        p->set_data(int(angles.size()), angles.data(), radii.data(), colors.data());
        scene->get_root()->add_child(p);
        return p;
    }
};
} // namespace

TEST_F(poly_cylinder_render, two_colours_show_on_opposite_sides)
{
    add_light();
    // 90 deg lies at -y (angles turn clockwise seen from +z): red below, blue above.
    ring({90, 270}, {color(255, 0, 0, 255), color(0, 0, 255, 255)});
    auto img = draw(false);
    auto below = at(img, col(0), row(-1.25f));
    auto above = at(img, col(0), row(1.25f));
    EXPECT_GT(int(below.r) - int(below.b), 80);
    EXPECT_GT(int(above.b) - int(above.r), 80);
    // Half-way round both blend to purple; the hole shows the background.
    auto side = at(img, col(1.25f), row(0));
    EXPECT_NEAR(int(side.r), int(side.b), 20);
    EXPECT_EQ(at(img, col(0), row(0)).g, 20);
}

TEST_F(poly_cylinder_render, picked_over_its_ring_and_polygonal_when_not_smooth)
{
    std::vector<float> angles;
    for (int i = 0; i < 8; ++i)
        angles.push_back(45.0f * float(i));
    auto p = ring(angles, std::vector<color>(8, color(0, 200, 0, 255)));
    auto img = draw(true);
    EXPECT_TRUE(about(count_id(img, p->id()), ring_pixels));
    EXPECT_EQ(id_at(img, col(-1.25f), row(0)), p->id());
    EXPECT_EQ(id_at(img, col(0), row(0)), ixo_invalid_object_id);

    // The octagons through the samples: 2 sqrt 2 (1.5^2 - 1^2) square units, no rebuild.
    auto* buffer = p->get_vertex_buffer(1);
    p->set_smooth(false);
    EXPECT_TRUE(about(coverage(p), 2 * 1.41421356 * 1.25 * 400));
    EXPECT_EQ(p->get_vertex_buffer(1), buffer);
    p->set_smooth(true);
    EXPECT_TRUE(about(coverage(p), ring_pixels));

    // Shape changes tell the scene, so shadow maps of the old shape are not reused.
    auto const revision = scene->get_revision();
    p->set_radius(0, 1.1f);
    EXPECT_GT(scene->get_revision(), revision);
}

TEST_F(poly_cylinder_render, rebuilt_at_the_first_draw_after_a_device_reset)
{
    auto p = ring({0, 120, 240}, std::vector<color>(3, color(0, 0, 200, 255)));
    int const before = count_id(draw(true), p->id());
    EXPECT_TRUE(about(before, ring_pixels));
    ASSERT_TRUE(reset_device());
    EXPECT_EQ(p->get_vertex_buffer(0), nullptr);
    EXPECT_EQ(count_id(draw(true), p->id()), before);
    EXPECT_NE(p->get_vertex_buffer(0), nullptr);
}
