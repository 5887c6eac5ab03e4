#include "tools/tool_view.h"

#include <cmath>
#include <limits>

namespace
{
using ixo_test::gesture;
constexpr float pi = 3.14159265f;
// tan(15°) · 10: half the visible height at the focus distance of the reset camera.
const float half_height = std::tan(pi / 12.0f) * 10.0f;

using vec3 = ixo_vector3<float>;

void expect_near(vec3 a, vec3 b, float tolerance)
{
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(a[i], b[i], tolerance) << "component " << i;
}

class view_tools_test : public ixo_test::tool_view_test
{
protected:
    void SetUp() override
    {
        tool_view_test::SetUp();
        scene->get_root()->add_child(ixo_scene_box::create(2.0f, 2.0f, 2.0f));
    }

    ~view_tools_test() override { ixo_rotate_view_tool::set_speed(1.0f); }
};
} // namespace

TEST_F(view_tools_test, nothing_happens_before_a_down_or_on_a_null_view)
{
    std::vector<ixo_object_ptr<ixo_tool>> tools = {
        ixo_rotate_view_tool::create(),        ixo_constrained_rotate_view_tool::create(),
        ixo_pan_view_tool::create(),           ixo_zoom_view_tool::create(),
        ixo_zoom_view_to_mouse_tool::create(), ixo_zoom_window_tool::create()};
    for (auto& tool : tools)
    {
        EXPECT_FALSE(tool->on_mouse_drag(view, 150, 90, false, false));
        EXPECT_FALSE(tool->on_mouse_up(view, 150, 90, false, false));
        EXPECT_FALSE(tool->on_mouse_down(nullptr, 10, 10, false, false));
        EXPECT_FALSE(tool->on_mouse_drag(view, 150, 90, false, false));
        EXPECT_FALSE(tool->on_mouse_move(view, 150, 90, false, false));
        EXPECT_FALSE(tool->on_mouse_dbl_click(view, 150, 90, false, false));
    }
    expect_near(camera->get_eye(), vec3(0, 0, 10), 0.0f);
    expect_near(camera->get_focus(), vec3(0, 0, 0), 0.0f);
    EXPECT_EQ(camera->get_fov(), 30.0f);
    EXPECT_EQ(scene->get_root()->get_num_children(), 1);
}

TEST_F(view_tools_test, trackball_turns_by_the_lifted_points_and_its_modifiers_orbit_tilt_and_roll)
{
    auto tool = ixo_rotate_view_tool::create();
    // A pointer that does not move leaves the camera where it was.
    EXPECT_TRUE(gesture(*tool, view, w / 2, h / 2, w / 2, h / 2));
    expect_near(camera->get_eye(), vec3(0, 0, 10), 1e-5f);

    // Across the full width at mid height: from (-1, 0, √0.96) to (1, 0, √0.96) on the ball
    // of radius 1.4, about the up vector.
    float const expected = std::acos((-1.0f + 0.96f) / 1.96f);
    EXPECT_TRUE(gesture(*tool, view, 0, h / 2, w, h / 2));
    EXPECT_NEAR(std::acos(camera->get_eye().normalized()[2]), expected, 1e-4f);
    EXPECT_NEAR(camera->get_eye()[1], 0.0f, 1e-4f);
    EXPECT_NEAR((camera->get_eye() - camera->get_focus()).length(), 10.0f, 1e-4f);
    expect_near(camera->get_up(), vec3(0, 1, 0), 1e-5f);
    // Dragging right turns the scene right: the eye goes round to the left.
    EXPECT_LT(camera->get_eye()[0], 0.0f);
    EXPECT_FALSE(camera->is_dynamic());

    // modifier1: a quarter width is Δnx = 0.5, an orbit by -π/2 about up.
    reset_camera();
    EXPECT_TRUE(gesture(*tool, view, w / 2, h / 2, 3 * w / 4, h / 2, true, false));
    expect_near(camera->get_eye(), vec3(-10, 0, 0), 1e-4f);

    // Not positive speeds are refused; speed 2 doubles the angle.
    EXPECT_FALSE(ixo_rotate_view_tool::set_speed(0.0f));
    EXPECT_FALSE(ixo_rotate_view_tool::set_speed(-1.0f));
    EXPECT_FALSE(ixo_rotate_view_tool::set_speed(std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(ixo_rotate_view_tool::get_speed(), 1.0f);
    EXPECT_TRUE(ixo_rotate_view_tool::set_speed(2.0f));
    EXPECT_TRUE(gesture(*tool, view, w / 2, h / 2, 3 * w / 4, h / 2, true, false));
    expect_near(camera->get_eye(), vec3(10, 0, 0), 1e-4f);
    ixo_rotate_view_tool::set_speed(1.0f);

    // modifier2: a quarter height is Δny = 0.5, a tilt by -π/2 about the right axis: the
    // eye lands on the up axis and up turns with it.
    reset_camera();
    EXPECT_TRUE(gesture(*tool, view, w / 2, h / 2, w / 2, 3 * h / 4, false, true));
    EXPECT_NEAR(std::fabs(camera->get_eye()[1]), 10.0f, 1e-4f);
    EXPECT_NEAR(camera->get_up() * camera->get_eye(), 0.0f, 1e-3f);

    // Both: the pointer's angle about the centre goes from 0 (straight up) to π/2 (right),
    // a roll by π/2: eye and focus stay, up turns into the horizontal.
    reset_camera();
    EXPECT_TRUE(gesture(*tool, view, w / 2, 3 * h / 4, 3 * w / 4, h / 2, true, true));
    expect_near(camera->get_eye(), vec3(0, 0, 10), 1e-5f);
    EXPECT_NEAR(std::fabs(camera->get_up()[0]), 1.0f, 1e-5f);
}

TEST_F(view_tools_test, constrained_trackball_keeps_the_axis_upright_and_stops_on_it)
{
    EXPECT_FALSE(ixo_constrained_rotate_view_tool::set_speed(0.0f));
    auto tool = ixo_constrained_rotate_view_tool::create();
    int const path[][2] = {{130, 60}, {170, 30}, {20, 80}, {90, 10}};
    ASSERT_FALSE(tool->on_mouse_down(view, w / 2, h / 2, false, false));
    for (auto const& p : path)
    {
        ASSERT_TRUE(tool->on_mouse_drag(view, p[0], p[1], true, true));
        vec3 const back = (camera->get_eye() - camera->get_focus()).normalized();
        vec3 const right = (camera->get_up() ^ back).normalized();
        EXPECT_NEAR(right[1], 0.0f, 1e-4f) << p[0] << "," << p[1];
        EXPECT_NEAR((camera->get_eye() - camera->get_focus()).length(), 10.0f, 1e-3f);
    }
    EXPECT_TRUE(tool->on_mouse_up(view, 90, 10, false, false));

    // From the horizon, Δny = 1 would tilt by π past the axis: the eye stops on it.
    reset_camera();
    EXPECT_TRUE(gesture(*tool, view, w / 2, h / 2, w / 2, h));
    expect_near(camera->get_eye(), vec3(0, 10, 0), 1e-4f);
}

TEST_F(view_tools_test, pan_keeps_the_world_point_under_the_pointer)
{
    for (bool perspective : {false, true})
    {
        camera->use_perspective(perspective);
        camera->set_eye({1, 2, 10});
        camera->set_focus({1, 2, 0});
        auto tool = ixo_pan_view_tool::create();
        // Pixel positions given to tools count y from the bottom.
        vec3 const grabbed = camera->point_from_pixel(50, h - 30);
        EXPECT_FALSE(tool->on_mouse_down(view, 50, 30, false, false));
        EXPECT_TRUE(tool->on_mouse_drag(view, 80, 60, false, false));
        expect_near(camera->point_from_pixel(80, h - 60), grabbed, 1e-4f);
        EXPECT_TRUE(tool->on_mouse_drag(view, 20, 90, false, false));
        expect_near(camera->point_from_pixel(20, h - 90), grabbed, 1e-4f);
        EXPECT_TRUE(tool->on_mouse_up(view, 20, 90, false, false));
        // The view is kept: a later drag without a down still pans.
        EXPECT_TRUE(tool->on_mouse_drag(view, 30, 90, false, false));
    }
}

TEST_F(view_tools_test, zoom_moves_the_eye_by_the_vertical_fraction)
{
    auto tool = ixo_zoom_view_tool::create();
    // Half the height upward: eye + 0.5 · (eye - focus).
    EXPECT_TRUE(gesture(*tool, view, 100, 20, 100, 20 + h / 2));
    expect_near(camera->get_eye(), vec3(0, 0, 15), 1e-4f);
    expect_near(camera->get_focus(), vec3(0, 0, 0), 0.0f);
    // The up forgot the view.
    EXPECT_FALSE(tool->on_mouse_drag(view, 100, 0, false, false));

    // f = -1.5 carries the eye 5 past the focus, which is pushed one unit ahead of it.
    reset_camera();
    EXPECT_TRUE(gesture(*tool, view, 100, 150, 100, 0));
    expect_near(camera->get_eye(), vec3(0, 0, -5), 1e-4f);
    expect_near(camera->get_focus(), vec3(0, 0, -6), 1e-4f);
}

TEST_F(view_tools_test, zoom_to_mouse_keeps_the_point_under_the_pointer)
{
    auto tool = ixo_zoom_view_to_mouse_tool::create();
    vec3 const target = camera->point_from_pixel(150, h - 75);
    // f = 0.5: half the distance toward the focus.
    EXPECT_TRUE(gesture(*tool, view, 150, 75, 150, 125));
    EXPECT_NEAR((camera->get_eye() - camera->get_focus()).length(), 5.0f, 1e-4f);
    ixo_vector2<float> const seen = camera->pixel_from_point(target);
    EXPECT_NEAR(seen[0], 150.0f, 1e-2f);
    EXPECT_NEAR(seen[1], float(h - 75), 1e-2f);

    // Downward it backs away like the zoom tool.
    reset_camera();
    EXPECT_TRUE(gesture(*tool, view, 100, 50, 100, 0));
    expect_near(camera->get_eye(), vec3(0, 0, 15), 1e-4f);
}

TEST_F(view_tools_test, zoom_window_frames_the_rectangle)
{
    auto tool = ixo_zoom_window_tool::create();
    auto band = tool->get_rectangle();
    EXPECT_FALSE(band->get_property(ixo_scene_object::visible));

    EXPECT_FALSE(tool->on_mouse_down(view, 120, 60, false, false));
    EXPECT_EQ(band->get_parent(), scene->get_root());
    EXPECT_TRUE(band->get_property(ixo_scene_object::visible));
    EXPECT_TRUE(tool->on_mouse_drag(view, 160, 80, false, false));
    // Pixels of the band count y from the top.
    EXPECT_EQ(band->get_rectangle().minimum(), ixo_vector2<float>(120, 20));
    EXPECT_EQ(band->get_rectangle().maximum(), ixo_vector2<float>(160, 40));
    expect_near(camera->get_eye(), vec3(0, 0, 10), 0.0f);

    EXPECT_TRUE(tool->on_mouse_up(view, 160, 80, false, false));
    // Centre (140, 70) is (40, 20) pixels from the view centre, plus half a pixel each way.
    float const half_width = half_height * w / h;
    vec3 const shift(40.5f / w * 2.0f * half_width, 20.5f / h * 2.0f * half_height, 0.0f);
    expect_near(camera->get_eye(), vec3(0, 0, 10) + shift, 1e-4f);
    expect_near(camera->get_focus(), shift, 1e-4f);
    // 20 of 100 pixels high: the new half height is a fifth of the old one.
    EXPECT_NEAR(camera->frustum_height(), 0.2f * half_height, 1e-4f);
    EXPECT_NEAR(camera->get_fov(), 2.0f * std::atan(0.2f * half_height / 10.0f) * 180.0f / pi,
                1e-3f);
    EXPECT_EQ(band->get_parent(), nullptr);
    EXPECT_FALSE(band->get_property(ixo_scene_object::visible));

    // A band without height is ignored.
    reset_camera();
    EXPECT_TRUE(gesture(*tool, view, 50, 50, 90, 50));
    expect_near(camera->get_eye(), vec3(0, 0, 10), 0.0f);
    EXPECT_EQ(camera->get_fov(), 30.0f);
    EXPECT_EQ(band->get_parent(), nullptr);
}
