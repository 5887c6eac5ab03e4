// The primitives without a device: types, geometry, composites, harmless draws and resets.

#include "scene/scene_probe.h"

#include <set>

namespace
{
using v3 = ixo_vector3<float>;
using color = ixo_vector4<unsigned char>;

using ixo_test::box_is;
} // namespace

TEST(primitives, each_class_has_its_own_type_and_name)
{
    ixo_object_ptr<ixo_scene_object> objects[] = {ixo_scene_box::create(1, 1, 1),
                                                  ixo_scene_cylinder::create(1, 1),
                                                  ixo_scene_cone::create(),
                                                  ixo_scene_sphere::create(),
                                                  ixo_scene_plane::create(ixo_plane<float>(), 1, 1),
                                                  ixo_scene_rectangle::create(),
                                                  ixo_scene_axis::create(),
                                                  ixo_scene_coordinate_system::create()};
    char const* names[] = {"Box",   "Cylinder",  "Cone", "Sphere",
                           "Plane", "Rectangle", "Axis", "Coordinate System"};
    std::set<unsigned long> types{ixo_scene_object::static_type()};
    for (int i = 0; i < 8; ++i)
    {
        EXPECT_EQ(objects[i]->type_name().to_utf8(), names[i]);
        EXPECT_NE(objects[i]->type(), ixo_scene_object::static_type()) << names[i];
        types.insert(objects[i]->type());
    }
    EXPECT_EQ(types.size(), 9u);
    EXPECT_EQ(objects[0]->type(), ixo_scene_box::static_type());
    EXPECT_EQ(ixo_scene_coordinate_system::static_type_name().to_utf8(), "Coordinate System");
    // The typed pointer finds the class back.
    EXPECT_TRUE(ixo_object_ptr<ixo_scene_cone>(objects[2]));
    EXPECT_FALSE(ixo_object_ptr<ixo_scene_cone>(objects[3]));
}

TEST(primitives, plane_takes_space_only_when_asked_and_a_rectangle_never)
{
    // Normal along x: u = (0, 1, 0) x n = (0, 0, -1), v = n x u = (0, 1, 0).
    ixo_plane<float> const plane(v3(5, 0, 0), v3(1, 0, 0));
    auto patch = ixo_scene_plane::create(plane, 4, 2);
    auto parent = ixo_scene_object::create();
    parent->add_child(patch);
    auto ball = ixo_scene_sphere::create();
    parent->add_child(ball);

    EXPECT_FALSE(patch->get_occupy_space());
    EXPECT_TRUE(patch->get_object_bounds().empty());
    EXPECT_TRUE(box_is(parent->get_bounds(), v3(-1, -1, -1), v3(1, 1, 1)));

    patch->set_occupy_space(true);
    EXPECT_TRUE(box_is(patch->get_object_bounds(), v3(5, -1, -2), v3(5, 1, 2)));
    EXPECT_TRUE(box_is(parent->get_bounds(), v3(-1, -1, -2), v3(5, 1, 2)));

    // A plane in x-y through (1, 2, 3): u = x, v = y.
    auto flat = ixo_scene_plane::create(ixo_plane<float>(v3(1, 2, 3), v3(0, 0, 1)), 4, 2);
    flat->set_occupy_space(true);
    EXPECT_TRUE(box_is(flat->get_object_bounds(), v3(-1, 1, 3), v3(3, 3, 3)));

    // The screen rectangle lives in the foreground only and never takes space.
    auto r = ixo_scene_rectangle::create();
    EXPECT_TRUE(r->get_property(ixo_scene_object::in_foreground));
    EXPECT_FALSE(r->get_property(ixo_scene_object::in_background));
    EXPECT_TRUE(r->get_rectangle().empty());
    r->set_rectangle(ixo_box2<float>(ixo_vector2<float>(10, 20), ixo_vector2<float>(30, 40)));
    EXPECT_FLOAT_EQ(r->get_rectangle().corner(true, false)[0], 30);
    EXPECT_FLOAT_EQ(r->get_rectangle().corner(true, false)[1], 20);
    EXPECT_TRUE(r->get_object_bounds().empty());
    EXPECT_TRUE(r->get_bounds().empty());
}

TEST(primitives, coordinate_system_has_a_ball_and_three_coloured_arrows)
{
    auto cs = ixo_scene_coordinate_system::create();
    ASSERT_EQ(cs->get_num_children(), 4);
    auto ball = ixo_object_ptr<ixo_scene_sphere>(cs->get_child(0));
    ASSERT_TRUE(ball);
    EXPECT_TRUE(ball->get_color() == color(128, 128, 128, 255));
    EXPECT_TRUE(box_is(ball->get_bounds(), v3(-0.2f, -0.2f, -0.2f), v3(0.2f, 0.2f, 0.2f)));

    color const colours[] = {color(128, 0, 0, 255), color(0, 128, 0, 255), color(0, 0, 128, 255)};
    v3 const tips[] = {v3(1, 0, 0), v3(0, 1, 0), v3(0, 0, 1)};
    for (int i = 0; i < 3; ++i)
    {
        auto axis = ixo_object_ptr<ixo_scene_axis>(cs->get_child(i + 1));
        ASSERT_TRUE(axis) << i;
        EXPECT_TRUE(axis->get_color() == colours[i]) << i;
        // The arrow's tip (0, 0, 1) in its own frame lands on the unit vector of its axis.
        ixo_vector4<float> const tip = axis->get_transform() * ixo_vector4<float>(0, 0, 1, 1);
        EXPECT_TRUE(v3(tip[0], tip[1], tip[2]) == tips[i]) << i;
        // Its shaft and head draw in the arrow's colour, whatever their own.
        auto head = axis->get_child(1);
        head->set_color(color(1, 2, 3, 255));
        v3 const want(colours[i][0] / 255.0f, colours[i][1] / 255.0f, colours[i][2] / 255.0f);
        EXPECT_TRUE(head->get_actual_color() == want) << i;
        EXPECT_TRUE(axis->get_child(0)->get_actual_color() == want) << i;
    }
    // The x arrow spans x from 0 to 1 with the head's radius 2 across y and z.
    EXPECT_TRUE(box_is(cs->get_child(1)->get_bounds(), v3(0, -2, -2), v3(1, 2, 2)));
    EXPECT_TRUE(box_is(cs->get_child(2)->get_bounds(), v3(-2, 0, -2), v3(2, 1, 2)));
    EXPECT_TRUE(box_is(cs->get_bounds(), v3(-2, -2, -2), v3(2, 2, 2)));
}

TEST(primitives, without_a_device_nothing_is_built_and_everything_succeeds)
{
    auto box = ixo_scene_box::create(1, 2, 3);
    auto cylinder = ixo_scene_cylinder::create(1, 2);
    auto cone = ixo_scene_cone::create();
    auto sphere = ixo_scene_sphere::create();
    auto plane = ixo_scene_plane::create(ixo_plane<float>(), 1, 1);
    auto rect = ixo_scene_rectangle::create();
    EXPECT_EQ(box->get_mesh(), nullptr);
    EXPECT_EQ(cylinder->get_mesh(), nullptr);
    EXPECT_EQ(ixo_scene_cone::get_shared_mesh(), nullptr);
    EXPECT_EQ(ixo_scene_sphere::get_shared_mesh(), nullptr);
    EXPECT_EQ(plane->get_vertex_buffer(), nullptr);

    ixo_scene_draw_data d;
    d.set_foreground(true);
    d.set_draw_mapped_shadows(true);
    ixo_object_ptr<ixo_scene_object> all[] = {box, cylinder, cone, sphere, plane, rect};
    for (auto& o : all)
    {
        EXPECT_TRUE(o->draw_object(d));
        EXPECT_TRUE(o->pre_reset());
        EXPECT_TRUE(o->post_reset());
        EXPECT_TRUE(o->draw(d));
    }
    EXPECT_EQ(box->get_mesh(), nullptr);
    EXPECT_EQ(ixo_scene_sphere::get_shared_mesh(), nullptr);
}
