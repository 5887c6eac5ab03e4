#include "tools/tool_view.h"

#include <ixocore/platform/win32_testing.h>

#include <cmath>

namespace
{
constexpr double pi = 3.14159265358979;
constexpr LONGLONG ticks_per_second = 1000000000;

// The box spins about z in front of a camera looking down -z at the origin; time stands
// still unless a test moves it.
class spin_tool_test : public ixo_test::tool_view_test
{
protected:
    void SetUp() override
    {
        ixo_win32_test_set_performance_counter(TRUE, 0);
        tool_view_test::SetUp();
        box = ixo_scene_box::create(2.0f, 1.0f, 1.0f);
        scene->get_root()->add_child(box);
        tool = ixo_spin_object_tool::create(box);
    }

    ~spin_tool_test() override { ixo_win32_test_set_performance_counter(FALSE, 0); }

    void at(double seconds)
    {
        ixo_win32_test_set_performance_counter(TRUE, LONGLONG(seconds * ticks_per_second));
    }
    // An idle event at `seconds`.
    void idle(double seconds)
    {
        at(seconds);
        ixo_event_manager::get_app_event_manager()->report(ixo_event_application_idle::create());
    }
    // The box's turn about z: where its transform takes the x axis.
    double angle() const
    {
        const auto& m = box->get_transform();
        return std::atan2(m[1][0], m[0][0]);
    }
    // A quarter turn counter-clockwise on the screen, from the right of the centre to
    // above it, taking `seconds`.
    void quarter_turn(double start, double seconds)
    {
        at(start);
        EXPECT_FALSE(tool->on_mouse_down(view, 140, 50, false, false));
        at(start + seconds);
        EXPECT_TRUE(tool->on_mouse_drag(view, 100, 90, false, false));
        EXPECT_TRUE(tool->on_mouse_up(view, 100, 90, false, false));
    }

    ixo_object_ptr<ixo_scene_box> box;
    ixo_object_ptr<ixo_spin_object_tool> tool;
};
} // namespace

TEST_F(spin_tool_test, released_spin_decays_and_stops_on_idle_events)
{
    // A quarter turn in π/2 seconds leaves the box turning at 1 rad/s.
    quarter_turn(0.0, pi / 2);
    EXPECT_NEAR(angle(), pi / 2, 1e-4);
    EXPECT_TRUE(ixo_spin_object_tool::is_spinning());

    // One second of idle events 10 ms apart: the sum of 0.01 · e^(-0.01 k), close to
    // 1 - e^(-1).
    double const expected = 0.01 * (1 - std::exp(-1.0)) / (1 - std::exp(-0.01));
    for (int k = 1; k <= 100; ++k)
        idle(pi / 2 + 0.01 * k);
    EXPECT_NEAR(angle() - pi / 2, expected, 1e-3);
    EXPECT_NEAR(expected, 1 - std::exp(-1.0), 4e-3);

    // Five more seconds bring the speed to e^-6 < 0.01 rad/s: the spin is over.
    for (int s = 1; s <= 5; ++s)
        idle(pi / 2 + 1 + s);
    EXPECT_FALSE(ixo_spin_object_tool::is_spinning());
    double const stopped = angle();
    idle(100.0);
    EXPECT_EQ(angle(), stopped);
}

TEST_F(spin_tool_test, next_down_stops_a_spin_and_slow_releases_start_none)
{
    quarter_turn(0.0, 0.5);
    ASSERT_TRUE(ixo_spin_object_tool::is_spinning());
    at(1.0);
    EXPECT_FALSE(tool->on_mouse_down(view, 140, 50, false, false));
    EXPECT_FALSE(ixo_spin_object_tool::is_spinning());
    double const held = angle();
    idle(2.0);
    EXPECT_EQ(angle(), held);
    EXPECT_TRUE(tool->on_mouse_up(view, 140, 50, false, false));

    // A quarter turn taking 200 s is 0.0079 rad/s: released, nothing keeps turning.
    quarter_turn(10.0, 200.0);
    EXPECT_FALSE(ixo_spin_object_tool::is_spinning());
    double const after = angle();
    idle(300.0);
    EXPECT_EQ(angle(), after);

    // Without a down, drags and ups do nothing.
    auto fresh = ixo_spin_object_tool::create(box);
    EXPECT_FALSE(fresh->on_mouse_drag(view, 10, 10, false, false));
    EXPECT_FALSE(fresh->on_mouse_up(view, 10, 10, false, false));
}
