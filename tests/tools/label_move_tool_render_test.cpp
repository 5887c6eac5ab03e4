#include "tools/tool_view.h"

namespace
{
// One pickable label in a view looking down -z at the origin from (0, 0, 10).
class label_move_test : public ixo_test::tool_view_test
{
protected:
    void SetUp() override
    {
        tool_view_test::SetUp();
        label = ixo_scene_label::create(IXO_TEXT("Bearing"), ixo_vector3<float>(-2, 1, 0));
        label->set_label(0, IXO_TEXT("load 12 kN"));
        label->set_property(ixo_scene_object::pickable, true);
        scene->get_root()->add_child(label);
        camera->set_near(1.0f);
        camera->set_far(20.0f);
        tool = ixo_label_move_tool::create();
    }

    // The box's top-left corner as drawn now, in pixels from the top-left.
    ixo_vector2<float> corner() { return camera->pixel_from_point(label->get_world_position()); }

    // A gesture grabbing the title bar 6 pixels right of and 4 below the corner (given as
    // pixels from the top; the tool gets y from the bottom), moving by (dx, dy) on the
    // screen.
    void drag_title(int dx, int dy)
    {
        view->paint();
        ixo_vector2<float> const c = corner();
        int const x = int(c[0]) + 6, y = int(c[1]) + 4;
        EXPECT_TRUE(ixo_test::gesture(*tool, view, x, h - y, x + dx, h - (y + dy)));
    }

    ixo_object_ptr<ixo_scene_label> label;
    ixo_object_ptr<ixo_label_move_tool> tool;
};
} // namespace

TEST_F(label_move_test, moving_keeps_the_grab_offset_and_the_depth)
{
    for (bool perspective : {false, true})
    {
        camera->use_perspective(perspective);
        label->set_world_position({-2, 1, perspective ? 2.0f : 0.0f});
        ixo_vector2<float> const before = corner();
        drag_title(30, 20);
        ixo_vector2<float> const after = corner();
        EXPECT_NEAR(after[0] - before[0], 30.0f, 1.0f) << perspective;
        EXPECT_NEAR(after[1] - before[1], 20.0f, 1.0f) << perspective;
        EXPECT_NEAR(label->get_world_position()[2], perspective ? 2.0f : 0.0f, 1e-4f);
    }
}

TEST_F(label_move_test, resizing_follows_the_pointer_down_to_the_minimum)
{
    tool->set_mode(1);
    ixo_vector3<float> const at = label->get_world_position();
    view->paint();
    ixo_vector2<int> const fitted = label->get_dimensions();
    ASSERT_GT(fitted[0], 20);
    drag_title(15, 10);
    EXPECT_EQ(label->get_dimensions(), ixo_vector2<int>(fitted[0] + 15, fitted[1] + 10));
    EXPECT_FALSE(label->get_auto_size());
    EXPECT_EQ(label->get_world_position(), at);
    // Far up and to the left: 20 pixels each way remain.
    drag_title(-1000, -1000);
    EXPECT_EQ(label->get_dimensions(), ixo_vector2<int>(20, 20));
}

TEST_F(label_move_test, nothing_is_grabbed_off_the_title_bar)
{
    view->paint();
    ixo_vector2<float> const c = corner();
    EXPECT_EQ(ixo_label_move_tool::get_object_in_point(view, int(c[0]) + 3, h - int(c[1]) - 3),
              label);
    EXPECT_EQ(ixo_label_move_tool::get_object_in_point(view, w + 5, 50), nullptr);
    // Empty space: the drag does nothing, the up still ends the gesture.
    ixo_vector3<float> const at = label->get_world_position();
    EXPECT_FALSE(tool->on_mouse_down(view, w - 2, 2, false, false));
    EXPECT_FALSE(tool->on_mouse_drag(view, w - 40, 20, false, false));
    EXPECT_TRUE(tool->on_mouse_up(view, w - 40, 20, false, false));
    EXPECT_EQ(label->get_world_position(), at);
    EXPECT_FALSE(tool->on_mouse_up(view, w - 40, 20, false, false));
}
