// Shaft, rotor and stator drawn headless and read back as pixels and identifiers.

#include "scene/scene_render_fixture.h"

#include <ixocore/scene/machine/scene_rotor2d.h>
#include <ixocore/scene/machine/scene_shaft.h>
#include <ixocore/scene/machine/scene_stator2d.h>
#include <ixocore/scene/scene_poly_cylinder.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
using ixo_test::pixel;
using v3 = ixo_vector3<float>;

// Turns the object's +z onto screen +y (x stays).
ixo_matrix44<float> z_to_y()
{
    return ixo_matrix44<float>(ixo_vector4<float>(1, 0, 0, 0), ixo_vector4<float>(0, 0, 1, 0),
                               ixo_vector4<float>(0, -1, 0, 0), ixo_vector4<float>(0, 0, 0, 1));
}

class machine_render : public ixo_test::part_render
{
protected:
    // Runs of pixels carrying `id` on the circle of `radius`, sampled every half degree.
    static int runs_on_circle(const std::vector<pixel>& img, unsigned long id, float radius)
    {
        int runs = 0;
        bool prev = false, first = false;
        for (int i = 0; i < 720; ++i)
        {
            double const a = i * 3.14159265358979 / 360;
            bool const on = id_at(img, col(radius * float(std::cos(a))),
                                  row(radius * float(std::sin(a)))) == id;
            if (i == 0)
                first = on;
            runs += on && !prev;
            prev = on;
        }
        return runs - (prev && first && runs > 1); // a run across angle 0 counted once
    }

    // Pixels whose colour is dominated by channel c (0 red, 1 green).
    static int dominated(const std::vector<pixel>& img, int c)
    {
        int n = 0;
        for (auto const& p : img)
        {
            int const main = c == 0 ? p.r : p.g;
            int const other = c == 0 ? std::max(p.g, p.b) : std::max(p.r, p.b);
            n += main > 150 && other < 70;
        }
        return n;
    }
};
} // namespace

TEST_F(machine_render, rotor_blades_cross_a_circle_twice_each)
{
    auto rotor = ixo_scene_rotor2d::create();
    rotor->set_base_radius(1);
    scene->get_root()->add_child(rotor);
    // Two pixels wide: one-pixel diagonal lines can miss single samples.
    float const width = ixo_scene_rotor2d::get_blade_width();
    ixo_scene_rotor2d::set_blade_width(2);
    for (unsigned int n : {3u, 4u, 5u})
    {
        rotor->set_num_blades(n);
        for (unsigned int i = 0; i < n; ++i)
            rotor->set_blade_radius(i, 2);
        // Between hub and tips the circle meets both sides of every blade.
        EXPECT_EQ(runs_on_circle(draw(true), rotor->id(), 1.6f), int(2 * n)) << n << " blades";
    }
    ixo_scene_rotor2d::set_blade_width(width);
    rotor->set_num_blades(6);
    for (unsigned int i = 0; i < 6; ++i)
        rotor->set_blade_radius(i, 2);
    // Beyond the tips nothing is drawn; the normal pass draws in the blade colour.
    auto img = draw(true);
    EXPECT_EQ(runs_on_circle(img, rotor->id(), 2.3f), 0);
    img = draw(false);
    int blue = 0;
    for (auto const& p : img)
        blue += p.b > 150 && p.r < 60;
    EXPECT_GT(blue, 6 * 2 * 20); // six blades, two sides of 20 pixels at least
}

TEST_F(machine_render, deflected_shaft_moves_the_way_its_deflection_points)
{
    // Radius 0.5 and length 2, laid along screen y from y = 0 to y = 2.
    auto shaft = ixo_scene_shaft::create(8, 4, 2);
    shaft->set_radius(0.5f);
    shaft->set_length(2);
    shaft->set_transform(z_to_y());
    scene->get_root()->add_child(shaft);
    auto straight = draw(true);
    EXPECT_EQ(id_at(straight, col(0), row(1.9f)), shaft->id());
    EXPECT_EQ(id_at(straight, col(-0.4f), row(1.9f)), shaft->id());
    EXPECT_EQ(id_at(straight, col(0.7f), row(1.9f)), ixo_invalid_object_id);

    // The far ring deflected by one radius, exaggerated twice: its centre moves to x = 1.
    auto const revision = scene->get_revision();
    shaft->set_ring_info(1, 0, 1, 0);
    EXPECT_GT(scene->get_revision(), revision); // shadow maps of the old shape go
    shaft->set_xy_scale(2);
    auto bent = draw(true);
    EXPECT_EQ(id_at(bent, col(0.95f), row(1.9f)), shaft->id());
    EXPECT_EQ(id_at(bent, col(-0.4f), row(1.9f)), ixo_invalid_object_id);
    EXPECT_EQ(id_at(bent, col(0), row(0.1f)), shaft->id()); // the near end stays
    // The other way, and back through the scale alone.
    shaft->set_xy_scale(-2);
    EXPECT_EQ(id_at(draw(true), col(-0.95f), row(1.9f)), shaft->id());
    shaft->set_xy_scale(0);
    EXPECT_EQ(id_at(draw(true), col(0.7f), row(1.9f)), ixo_invalid_object_id);
}

TEST_F(machine_render, shaft_sectors_alternate_and_survive_a_device_reset)
{
    add_light();
    auto shaft = ixo_scene_shaft::create(2, 8, 2);
    shaft->set_transform(z_to_y());
    shaft->set_length(2);
    scene->get_root()->add_child(shaft);
    // Two sectors: object x > 0 (angles 0..180 from +y) is sector 0, black; x < 0 white.
    auto img = draw(false);
    EXPECT_LT(at(img, col(0.3f), row(1)).r, 60);
    EXPECT_GT(at(img, col(-0.3f), row(1)).r, 120);
    int const before = count_id(draw(true), shaft->id());
    EXPECT_TRUE(ixo_test::about(before, 40 * 40));
    ASSERT_TRUE(reset_device());
    EXPECT_NE(shaft->get_vertex_buffer(), nullptr);
    EXPECT_EQ(count_id(draw(true), shaft->id()), before);
}

TEST_F(machine_render, stator_marks_need_its_poly_cylinder)
{
    auto stator = ixo_scene_stator2d::create();
    scene->get_root()->add_child(stator);
    auto img = draw(true);
    // Circles of radius 1 and 2: about 2 pi (20 + 40) pixels of outline.
    int const circles = count_id(img, stator->id());
    EXPECT_GT(circles, 300);
    EXPECT_LT(circles, 450);
    EXPECT_EQ(runs_on_circle(img, stator->id(), 1.5f), 0);
    EXPECT_EQ(stator->get_start_points().size(), 37u);
    img = draw(false);
    EXPECT_EQ(dominated(img, 0), 0);
    EXPECT_EQ(dominated(img, 1), 0);

    // One sample at 0 deg, radius 1.2: a red case circle, a green probe mark from 1.2 to
    // 1.2 + 10 h = 2.07, and a grey blade scale with ticks in eight directions.
    auto p = ixo_scene_poly_cylinder::create(0.2f, 0.1f);
    float a = 0, r = 1.2f;
    ixo_vector4<unsigned char> c(0, 0, 0, 255);
    p->set_data(1, &a, &r, &c);
    stator->set_poly_cylinder(p);
    img = draw(false);
    EXPECT_GT(dominated(img, 0), 100); // 2 pi 24 pixels of case
    EXPECT_GT(dominated(img, 1), 30);  // two long sides of 17 pixels
    EXPECT_GT(count_id(draw(true), stator->id()), circles + 100);

    stator->set_start_radius(0.5f);
    EXPECT_TRUE(stator->get_start_points().empty());
    EXPECT_TRUE(stator->get_stop_points().empty());
    draw(true);
    EXPECT_NEAR(stator->get_start_points()[9][1], 0.5f, 1e-6);
}
