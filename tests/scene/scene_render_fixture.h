#pragma once
// A fixture that draws a scene headless on the application's device into a 160 x 120
// target through an orthographic camera looking down -z at 20 pixels per unit (the world
// origin at the centre, +y up), in the picking pass or the normal passes, and hands the
// scene and the target through device resets as a host does.

#include "render/render_target.h"

#include <ixocore/app/application.h>
#include <ixocore/events/event.h>
#include <ixocore/events/event_manager.h>
#include <ixocore/platform/d3d9_testing.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/light.h>
#include <ixocore/render/scene_draw_data.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace ixo_test
{
class scene_render : public ::testing::Test
{
public:
    static constexpr UINT W = 160;
    static constexpr UINT H = 120;
    static constexpr float px_per_unit = 20;
    static constexpr D3DCOLOR background = D3DCOLOR_XRGB(10, 20, 30);

    // Column and row of the world point (x, y).
    static UINT col(float x) { return UINT(float(W) / 2 + x * px_per_unit); }
    static UINT row(float y) { return UINT(float(H) / 2 - y * px_per_unit); }

    static pixel at(const std::vector<pixel>& img, UINT x, UINT y)
    {
        return img.size() == std::size_t(W) * H && x < W && y < H ? img[std::size_t(y) * W + x]
                                                                  : pixel{};
    }
    static unsigned long id_at(const std::vector<pixel>& img, UINT x, UINT y)
    {
        return img.size() == std::size_t(W) * H && x < W && y < H ? id_of(at(img, x, y))
                                                                  : ixo_invalid_object_id;
    }
    static int count_id(const std::vector<pixel>& img, unsigned long id)
    {
        int n = 0;
        for (UINT y = 0; y < H; ++y)
            for (UINT x = 0; x < W; ++x)
                n += id_at(img, x, y) == id;
        return n;
    }

protected:
    void SetUp() override
    {
        ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
        device = ixo_direct3d::get_device();
        ASSERT_NE(device, nullptr);
        target = std::make_unique<render_target>(device, W, H);
        ASSERT_TRUE(target->ok());
        scene = ixo_scene::create();
    }

    void TearDown() override
    {
        scene = nullptr;
        target.reset();
        ixo_application::end();
    }

    // Draws the scene as a render view would and reads the frame back (rows top-down).
    std::vector<pixel> draw(bool mapping)
    {
        if (!target || !target->bind(background))
            return {};
        look_along_minus_z(device, W / px_per_unit, H / px_per_unit);
        ixo_scene_draw_data d;
        d.set_mapping(mapping);
        EXPECT_TRUE(scene->draw(d));
        return target->read();
    }

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

    // Loses the device and resets it, releasing and rebuilding the scene's device objects
    // and the target around the reset.
    bool reset_device()
    {
        class handler : public ixo_event_handler
        {
        public:
            explicit handler(scene_render* t) : t_(t) {}
            void on_event(ixo_object_ptr<ixo_event> e) override
            {
                if (ixo_object_ptr<ixo_event_direct3d_resetting>(e))
                {
                    t_->scene->pre_reset();
                    t_->target.reset();
                }
                else if (ixo_object_ptr<ixo_event_direct3d_reset>(e))
                {
                    t_->scene->post_reset();
                    t_->target = std::make_unique<render_target>(t_->device, W, H);
                }
            }

        private:
            scene_render* t_;
        };
        ixo_object_ptr<handler> h(new handler(this));
        auto events = ixo_event_manager::get_app_event_manager();
        ixo_event_key const k1 = events->subscribe(ixo_event_direct3d_resetting::create(), h);
        ixo_event_key const k2 = events->subscribe(ixo_event_direct3d_reset::create(), h);
        ixo_d3d9_test_lose_device(device, 1);
        bool const ok = ixo_application::instance()->get_direct3d()->reset();
        events->unsubscribe(k1);
        events->unsubscribe(k2);
        return ok && target && target->ok();
    }

    IDirect3DDevice9* device = nullptr;
    std::unique_ptr<render_target> target;
    ixo_object_ptr<ixo_scene> scene;
};

// Within 3 % (and 3 pixels) of the expected pixel count, for curved outlines.
inline ::testing::AssertionResult about(int n, double expected)
{
    if (std::abs(n - expected) <= 0.03 * expected + 3)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << n << " pixels, expected about " << expected;
}
} // namespace ixo_test
