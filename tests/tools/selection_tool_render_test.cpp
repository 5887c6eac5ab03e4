#include "events/event_probe.h"
#include "tools/tool_view.h"

#include <memory>

namespace
{
// Two unit boxes seen from (0, 0, 10), orthographic: 200 pixels span 2 · tan(15°) · 10 ·
// 2 ≈ 10.72 units, so a box at x = ∓3 covers about columns 35..53 (a) and 147..165 (b),
// rows 41..59, and the centre column 100 is empty.
class selection_tool_test : public ixo_test::tool_view_test
{
protected:
    void SetUp() override
    {
        tool_view_test::SetUp();
        selection = doc->get_selection();
        a = ixo_scene_box::create(1.0f, 1.0f, 1.0f);
        b = ixo_scene_box::create(1.0f, 1.0f, 1.0f);
        a->set_transform(ixo_translation_transform(ixo_vector3<float>(-3, 0, 0)));
        b->set_transform(ixo_translation_transform(ixo_vector3<float>(3, 0, 0)));
        for (auto& box : {a, b})
        {
            box->set_property(ixo_scene_object::pickable, true);
            scene->get_root()->add_child(box);
        }
        camera->near_far_to_box(scene->get_bounds());
        tool = ixo_selection_tool::create(selection);
    }

    bool click(int x, int y, bool m1 = false, bool m2 = false)
    {
        EXPECT_FALSE(tool->on_mouse_down(view, x, y, m1, m2));
        return tool->on_mouse_up(view, x, y, m1, m2);
    }

    ixo_object_ptr<ixo_selection> selection;
    ixo_object_ptr<ixo_scene_box> a, b;
    ixo_object_ptr<ixo_selection_tool> tool;
};
} // namespace

TEST_F(selection_tool_test, clicks_select_toggle_and_clear)
{
    EXPECT_TRUE(click(44, 50));
    EXPECT_TRUE(a->is_selected());
    EXPECT_EQ(selection->get_count(), 1);
    // A plain click replaces the selection, a modifier2 click toggles.
    EXPECT_TRUE(click(156, 50));
    EXPECT_FALSE(a->is_selected());
    EXPECT_TRUE(b->is_selected());
    EXPECT_TRUE(click(44, 50, false, true));
    EXPECT_EQ(selection->get_count(), 2);
    EXPECT_TRUE(click(156, 50, false, true));
    EXPECT_FALSE(b->is_selected());
    EXPECT_TRUE(a->is_selected());
    // modifier1 abandons the gesture.
    EXPECT_FALSE(click(100, 50, true, false));
    EXPECT_TRUE(a->is_selected());
    // Empty space without modifier2 clears.
    EXPECT_TRUE(click(100, 50));
    EXPECT_TRUE(selection->is_empty());
}

TEST_F(selection_tool_test, rubber_band_adds_each_object_once_and_toggles)
{
    auto events = ixo_event_manager::get_app_event_manager();
    auto changes = std::make_shared<int>(0); // outlives the test if it stops early
    ixo_event_key key =
        events->subscribe(ixo_event_selection_changed::create(selection),
                          ixo_test::event_function::create([changes](auto) { ++*changes; }));

    // Through both boxes and the space between: emptied once, each box added once.
    EXPECT_FALSE(tool->on_mouse_down(view, 30, 48, false, false));
    auto rectangle = tool->get_rectangle();
    ASSERT_NE(rectangle, nullptr);
    EXPECT_EQ(rectangle->get_parent(), scene->get_root());
    EXPECT_TRUE(tool->on_mouse_drag(view, 170, 52, false, false));
    EXPECT_EQ(rectangle->get_rectangle().minimum(), ixo_vector2<float>(30, 48));
    EXPECT_EQ(rectangle->get_rectangle().maximum(), ixo_vector2<float>(170, 52));
    EXPECT_TRUE(tool->on_mouse_up(view, 170, 52, false, false));
    EXPECT_TRUE(a->is_selected() && b->is_selected());
    EXPECT_EQ(*changes, 3);
    EXPECT_EQ(rectangle->get_parent(), nullptr);
    EXPECT_EQ(tool->get_rectangle(), nullptr);
    EXPECT_EQ(scene->get_root()->get_num_children(), 2);

    // Toggling a selected and an unselected object swaps them.
    EXPECT_TRUE(click(156, 50, false, true));
    ASSERT_TRUE(a->is_selected() && !b->is_selected());
    EXPECT_TRUE(ixo_test::gesture(*tool, view, 170, 40, 30, 60, false, true));
    EXPECT_FALSE(a->is_selected());
    EXPECT_TRUE(b->is_selected());

    // A band reaching far outside the view reads only the view, and still finds both.
    EXPECT_TRUE(ixo_test::gesture(*tool, view, -1000000, -1000000, 1000000, 1000000));
    EXPECT_EQ(selection->get_count(), 2);
    events->unsubscribe(key);
}
