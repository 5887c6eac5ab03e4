// Poly-cylinder geometry without a device: steps, profile, gap records, bounds, refusals.

#include <ixocore/scene/scene_poly_cylinder.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
using color = ixo_vector4<unsigned char>;

struct sample
{
    float angle;
    float radius;
};

ixo_object_ptr<ixo_scene_poly_cylinder> tube(const std::vector<sample>& s, float height = 2,
                                             float thickness = 0.5f)
{
    auto p = ixo_scene_poly_cylinder::create(height, thickness);
    std::vector<float> a, r;
    std::vector<color> c(s.size(), color(255, 0, 0, 255));
    for (auto const& x : s)
    {
        a.push_back(x.angle);
        r.push_back(x.radius);
    }
    EXPECT_TRUE(p->set_data(int(s.size()), a.data(), r.data(), c.data()));
    return p;
}

// Radius and angle [0, 360) of profile point i; angles run clockwise from +x seen from +z.
double radius_at(const ixo_scene_poly_cylinder& p, int i)
{
    auto v = p.get_smooth_id_array()[i];
    return std::hypot(v[0], v[1]);
}
double angle_at(const ixo_scene_poly_cylinder& p, int i)
{
    auto v = p.get_smooth_id_array()[i];
    double a = std::atan2(-v[1], v[0]) * 180 / 3.14159265358979;
    return a < -1e-3 ? a + 360 : a;
}
} // namespace

TEST(poly_cylinder, one_sample_is_a_circle_and_two_blend_over_50_steps_each)
{
    auto p = tube({{0, 2}});
    EXPECT_EQ(p->get_vertex_count(), 200);
    EXPECT_EQ(p->get_smooth_primitive_count(), 200);
    EXPECT_EQ(p->get_polygon_primitive_count(), 2);
    ASSERT_EQ(p->get_smooth_id_array_size(), 101);
    for (int i = 0; i < 101; ++i)
    {
        EXPECT_NEAR(radius_at(*p, i), 2, 1e-5);
        EXPECT_FLOAT_EQ(p->get_smooth_id_array()[i][2], 1); // top of a tube of height 2
    }
    EXPECT_NEAR(angle_at(*p, 25), 90, 1e-3); // steps of 3.6 degrees
    // Outer wall at 2.5, centred on z = 0; steps hit 0, 90, 180 and 270 degrees.
    auto b = p->get_object_bounds();
    for (int axis = 0; axis < 2; ++axis)
    {
        EXPECT_NEAR(b.minimum()[axis], -2.5, 1e-5);
        EXPECT_NEAR(b.maximum()[axis], 2.5, 1e-5);
    }
    EXPECT_FLOAT_EQ(b.minimum()[2], -1);
    EXPECT_FLOAT_EQ(b.maximum()[2], 1);

    // 0 deg r 1, 90 deg r 3, 50 steps each: half-way along either segment the blend gives 2.
    p = tube({{90, 3}, {0, 1}});
    EXPECT_EQ(p->get_vertex_count(), 200);
    EXPECT_EQ(p->get_polygon_primitive_count(), 4);
    EXPECT_NEAR(radius_at(*p, 0), 1, 1e-5);
    EXPECT_NEAR(radius_at(*p, 25), 2, 1e-5);
    EXPECT_NEAR(angle_at(*p, 25), 45, 1e-3);
    EXPECT_NEAR(radius_at(*p, 50), 3, 1e-5);
    EXPECT_NEAR(radius_at(*p, 75), 2, 1e-5);
    EXPECT_NEAR(angle_at(*p, 75), 225, 1e-3);
}

TEST(poly_cylinder, wide_gaps_get_records_and_the_profile_meets_every_record)
{
    // 0, 10 and 200 deg: the 190 and 160 deg gaps get 4 records each, 11 in all, at
    // 48, 86, 124, 162 and 232, 264, 296, 328 deg; 25 steps per record.
    auto p = tube({{0, 1}, {10, 1}, {200, 2}});
    EXPECT_EQ(p->get_vertex_count(), 2 * 11 * 25);
    EXPECT_EQ(p->get_polygon_primitive_count(), 22);
    ASSERT_EQ(p->get_smooth_id_array_size(), 276);
    struct
    {
        int record;
        double angle, radius;
    } const expected[] = {
        {0, 0, 1},        {1, 10, 1},      {2, 48, 1.104}, // blend(1, 2, 1/5) = 0.896 + 2 * 0.104
        {4, 124, 1.648},                                   // blend(1, 2, 3/5) = 0.352 + 2 * 0.648
        {6, 200, 2},      {7, 232, 1.896},                 // blend(2, 1, 1/5)
        {10, 328, 1.104},
    };
    for (auto const& e : expected)
    {
        EXPECT_NEAR(angle_at(*p, 25 * e.record), e.angle, 1e-3) << "record " << e.record;
        EXPECT_NEAR(radius_at(*p, 25 * e.record), e.radius, 1e-4) << "record " << e.record;
    }
    // Given out of order, at angles a turn away, the same tube.
    auto q = tube({{560, 2}, {-360, 1}, {10, 1}});
    ASSERT_EQ(q->get_smooth_id_array_size(), 276);
    for (int i = 0; i < 276; ++i)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(q->get_smooth_id_array()[i][c], p->get_smooth_id_array()[i][c], 1e-4);
}

TEST(poly_cylinder, bad_samples_are_left_out_or_refused)
{
    // Two samples at one angle keep the first: a two-sample tube; a NaN radius is dropped.
    auto p = tube({{0, 1}, {0, 5}, {180, 1}, {90, std::nanf("")}});
    EXPECT_EQ(p->get_vertex_count(), 200);
    EXPECT_NEAR(radius_at(*p, 50), 1, 1e-5);

    float a = 0, r = 1;
    color c(1, 2, 3, 4);
    EXPECT_FALSE(p->set_data(ixo_scene_poly_cylinder::max_data_count + 1, &a, &r, &c));
    EXPECT_FALSE(p->set_data(1, nullptr, &r, &c));
    EXPECT_FALSE(p->set_data_count(ixo_scene_poly_cylinder::max_data_count + 1));
    EXPECT_EQ(p->get_data_count(), 4);

    // Out-of-range indices read as zero and change nothing.
    p->set_radius(4, 9);
    p->set_color(-1, c);
    EXPECT_EQ(p->get_radius(4), 0);
    EXPECT_EQ(p->get_angle(-1), 0);
    EXPECT_EQ(p->get_color(7)[3], 0);

    // No samples: nothing built.
    EXPECT_TRUE(p->set_data(0, nullptr, nullptr, nullptr));
    EXPECT_EQ(p->get_smooth_id_array(), nullptr);
    EXPECT_EQ(p->get_vertex_count(), 0);
    EXPECT_TRUE(p->get_object_bounds().empty());

    EXPECT_TRUE(p->set_data_count(3));
    EXPECT_EQ(p->get_radius(2), 0);
    EXPECT_EQ(p->get_color(2), color(0, 0, 0, 0));
    p->set_color(2, c);
    EXPECT_EQ(p->get_color(2), c);
}
