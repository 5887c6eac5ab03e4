#pragma once
// The scene fixture at 160 x 120 with one object's coverage, a light and a device reset.

#include "events/event_probe.h"
#include "render/scene_render.h"

#include <ixocore/platform/d3d9_testing.h>

#include <cmath>

namespace ixo_test
{
class part_render : public scene_render<160, 120>
{
protected:
    // Only `o` in the scene; the number of pixels the picking pass gives its identifier.
    int coverage(ixo_object_ptr<ixo_scene_object> o)
    {
        scene->get_root()->remove_all_children();
        scene->get_root()->add_child(o);
        return count_id(draw(true), o->id());
    }

    void add_light()
    {
        auto light = ixo_light::create(1);
        light->set_position(0, 0, 10);
        scene->add_light(light);
    }

    // Loses and resets the device, handing the scene and the target through as a host does.
    bool reset_device()
    {
        auto h = event_function::create(
            [this](ixo_object_ptr<ixo_event> e)
            {
                if (ixo_object_ptr<ixo_event_direct3d_resetting>(e))
                {
                    scene->pre_reset();
                    target.reset();
                }
                else if (ixo_object_ptr<ixo_event_direct3d_reset>(e))
                {
                    scene->post_reset();
                    target = std::make_unique<render_target>(device, W, H);
                }
            });
        auto events = ixo_event_manager::get_app_event_manager();
        ixo_event_key const k1 = events->subscribe(ixo_event_direct3d_resetting::create(), h);
        ixo_event_key const k2 = events->subscribe(ixo_event_direct3d_reset::create(), h);
        ixo_d3d9_test_lose_device(device, 1);
        bool const ok = ixo_application::instance()->get_direct3d()->reset();
        events->unsubscribe(k1);
        events->unsubscribe(k2);
        return ok && target && target->ok();
    }
};

// Within 3 % (and 3 pixels) of the expected pixel count, for curved outlines.
inline ::testing::AssertionResult about(int n, double expected)
{
    if (std::abs(n - expected) <= 0.03 * expected + 3)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << n << " pixels, expected about " << expected;
}
} // namespace ixo_test
