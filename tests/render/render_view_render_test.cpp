#include <ixocore/ixocore.h>
#include <ixocore/platform/d3d9_testing.h>

#include "render/exe_copy.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

namespace
{
using rgba_image = std::vector<ixo_vector4<unsigned char>>;

constexpr unsigned view_w = 320;
constexpr unsigned view_h = 240;
// Background (0, 0.5, 1) packs to (0, 127, 255): 0.5 · 255 truncates to 127.
const ixo_vector4<float> background(0.0f, 0.5f, 1.0f, 1.0f);

struct rgb
{
    int r, g, b;
    bool operator==(const rgb&) const = default;
};

rgb at(const rgba_image& image, unsigned x, unsigned y)
{
    const auto& p = image[std::size_t(y) * view_w + x];
    return {p[0], p[1], p[2]};
}

bool is_background(rgb c)
{
    return c == rgb{0, 127, 255};
}

bool is_reddish(rgb c)
{
    return c.r > 100 && c.g < 40 && c.b < 40;
}

// The library's box, counting its normal-pass and shadow-map-pass draws and able to fail in
// the shadow-map pass.
class view_test_box : public ixo_scene_box
{
public:
    static ixo_object_ptr<view_test_box> create(float width, float height, float depth)
    {
        return ixo_object_ptr<view_test_box>(new view_test_box(width, height, depth));
    }

    bool draw_object(const ixo_scene_draw_data& d) override
    {
        if (d.do_mapping_shadows() && fail_in_shadow_pass)
            return false;
        shadow_draws += d.do_mapping_shadows();
        normal_draws += !d.do_mapping() && !d.do_mapping_shadows();
        return ixo_scene_box::draw_object(d);
    }

    int normal_draws = 0;
    int shadow_draws = 0;
    bool fail_in_shadow_pass = false;

private:
    view_test_box(float width, float height, float depth) : ixo_scene_box(width, height, depth) {}
};

class render_view_test : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
        manager = ixo_render_view_manager::get_app_render_view_manager();
        ASSERT_NE(manager, nullptr);
        scene = ixo_scene::create();
    }
    // A destructor rather than TearDown, so what a derived fixture holds is gone first.
    ~render_view_test() override
    {
        box = nullptr;
        view = nullptr;
        scene = nullptr;
        manager = nullptr;
        while (ixo_application::instance())
            ixo_application::end();
    }

    // A headless view of the scene on the background colour; with a red 2 × 2 × 2 box at the
    // origin (and `extra`) unless `with_box` is false.
    void make_view(bool with_box = true, ixo_object_ptr<ixo_scene_object> extra = nullptr)
    {
        if (with_box)
        {
            box = view_test_box::create(2.0f, 2.0f, 2.0f);
            box->set_color(ixo_vector4<unsigned char>(255, 0, 0, 255));
            scene->get_root()->add_child(box);
        }
        if (extra)
            scene->get_root()->add_child(extra);
        view = manager->create();
        view->set_background_color(background);
        ASSERT_TRUE(view->initialize(nullptr, view_w, view_h, scene));
    }

    // A PNG file of w × h pixels in one colour, painted and saved by a view of that size.
    std::string picture(const char* name, unsigned w, unsigned h, ixo_vector4<float> colour)
    {
        std::string const path = (folder.path / name).string();
        ixo_object_ptr<ixo_render_view> painter = manager->create();
        painter->set_background_color(colour);
        EXPECT_TRUE(painter->initialize(nullptr, w, h, ixo_scene::create()));
        EXPECT_TRUE(painter->paint() && painter->save_png(ixo_string::from_utf8(path)));
        manager->remove(painter);
        return path;
    }

    // The box's normal-pass draws caused by one redraw request.
    int redraw()
    {
        box->normal_draws = 0;
        ixo_request_redraw();
        return box->normal_draws;
    }

    // The view's frame, painted first unless `paint` is false.
    rgba_image frame(bool paint = true)
    {
        rgba_image image;
        EXPECT_TRUE(!paint || view->paint());
        EXPECT_TRUE(view->capture(image));
        return image;
    }

    // What a tool passes to pick for the pixel (px, py) counted from the top-left: the
    // pointer has y counted from the bottom, and the tool hands over (w - x, h - y).
    unsigned long pick_pixel(int px, int py)
    {
        return view->pick(ixo_vector2<int>(view_w - px, py));
    }

    ixo_test::temp_folder folder;
    ixo_object_ptr<ixo_render_view_manager> manager;
    ixo_object_ptr<ixo_scene> scene;
    ixo_object_ptr<ixo_render_view> view;
    ixo_object_ptr<view_test_box> box;
};

TEST_F(render_view_test, picking_finds_the_object_under_the_pointer)
{
    // A small box up and to the left, so that a flipped row or column misses it.
    auto small = view_test_box::create(0.4f, 0.4f, 0.4f);
    small->set_transform(ixo_translation_transform(ixo_vector3<float>(-1.6f, 1.4f, 0.0f)));
    make_view(true, small);
    ixo_object_ptr<ixo_camera_view> camera = view->get_camera();

    // Nothing is locked yet.
    EXPECT_EQ(view->pick(ixo_vector2<int>(160, 120)), ixo_invalid_object_id);

    ASSERT_TRUE(view->map());
    view->pick_lock();
    EXPECT_EQ(pick_pixel(view_w / 2, view_h / 2), box->id());
    EXPECT_EQ(pick_pixel(0, 0), ixo_invalid_object_id);
    EXPECT_EQ(pick_pixel(view_w - 1, view_h - 1), ixo_invalid_object_id);
    ixo_vector2<float> const p = camera->pixel_from_point(ixo_vector3<float>(-1.6f, 1.4f, 0.2f));
    EXPECT_EQ(pick_pixel(int(p[0]), int(p[1])), small->id());
    // Mirrored places hold other things.
    EXPECT_NE(pick_pixel(int(view_w - p[0]), int(p[1])), small->id());
    EXPECT_NE(pick_pixel(int(p[0]), int(view_h - p[1])), small->id());
    // Points off the image are clamped into it, never read outside.
    EXPECT_EQ(view->pick(ixo_vector2<int>(-5000, 5000)), ixo_invalid_object_id);
    EXPECT_EQ(view->pick(ixo_vector2<int>(5000, -5000)), ixo_invalid_object_id);
    view->pick_unlock();
    EXPECT_EQ(view->pick(ixo_vector2<int>(160, 120)), ixo_invalid_object_id);

    // A transparent box is drawn but cannot be picked.
    box->set_property(ixo_scene_object::transparent, true);
    ASSERT_TRUE(view->map());
    view->pick_lock();
    EXPECT_EQ(pick_pixel(view_w / 2, view_h / 2), ixo_invalid_object_id);
    EXPECT_EQ(pick_pixel(int(p[0]), int(p[1])), small->id());
    view->pick_unlock();
    EXPECT_FALSE(is_background(at(frame(), view_w / 2, view_h / 2)));
}

TEST_F(render_view_test, background_picture_is_centred_with_the_odd_column_on_the_right)
{
    std::string const small = picture("small.png", 3, 2, {0, 1, 0, 1});
    std::string const large = picture("large.png", 400, 300, {1, 1, 0, 1});
    make_view(false);
    EXPECT_FALSE(view->load_background_image(ixo_string()));
    EXPECT_FALSE(view->load_background_image(IXO_TEXT("/nonexistent-folder/none.png")));

    ASSERT_TRUE(view->load_background_image(ixo_string::from_utf8(small)));
    rgba_image const image = frame();
    // 3 × 2 around (160, 120): columns 159..161 (one left of the centre, two right), rows
    // 119..120.
    for (unsigned y = 118; y <= 121; ++y)
        for (unsigned x = 157; x <= 163; ++x)
        {
            bool const inside = x >= 159 && x <= 161 && y >= 119 && y <= 120;
            EXPECT_TRUE(inside ? at(image, x, y) == (rgb{0, 255, 0})
                               : is_background(at(image, x, y)))
                << x << "," << y;
        }

    // A picture larger than the view is squeezed into it.
    ASSERT_TRUE(view->load_background_image(ixo_string::from_utf8(large)));
    rgba_image const squeezed = frame();
    for (auto [x, y] : {std::pair{0u, 0u}, {view_w - 1, view_h - 1}, {view_w / 2, view_h / 2}})
        EXPECT_TRUE(at(squeezed, x, y) == (rgb{255, 255, 0})) << x << "," << y;

    view->remove_background_image();
    EXPECT_TRUE(is_background(at(frame(), view_w / 2, view_h / 2)));
}

TEST_F(render_view_test, overlay_is_drawn_in_the_top_right_corner)
{
    make_view(false);
    view->set_shadow_mapping(false);
    // Grown by 2 % of its diagonal on every side, 1.915 × 0.92 × 0.1 becomes about
    // 2.0 × 1.005: a viewport 200 wide and trunc(1.005 · 200 / 2.0 + 1) = 101 high.
    auto wide = view_test_box::create(1.915f, 0.92f, 0.1f);
    wide->set_color(ixo_vector4<unsigned char>(0, 255, 0, 255));
    wide->set_transform(ixo_translation_transform(ixo_vector3<float>(0.0f, 0.0f, -0.5f)));
    view->get_overlay()->add_child(wide);

    IDirect3DDevice9* device = ixo_direct3d::get_device();
    ASSERT_TRUE(view->paint());
    D3DVIEWPORT9 vp{};
    ASSERT_EQ(device->GetViewport(&vp), D3D_OK);
    EXPECT_EQ(std::tuple(vp.X, vp.Y, vp.Width, vp.Height),
              std::tuple(view_w - 200, 0u, 200u, 101u));
    rgba_image const image = frame(false);
    // The box fills the viewport less the 2 % margin (about 4 pixels).
    EXPECT_FALSE(is_background(at(image, view_w - 100, 50)));
    EXPECT_FALSE(is_background(at(image, view_w - 190, 10)));
    EXPECT_FALSE(is_background(at(image, view_w - 10, 90)));
    EXPECT_TRUE(is_background(at(image, view_w - 100, 110)));
    EXPECT_TRUE(is_background(at(image, view_w - 210, 50)));
    EXPECT_TRUE(is_background(at(image, view_w - 1, 50)));

    // The overlay is pickable.
    ASSERT_TRUE(view->map());
    view->pick_lock();
    EXPECT_EQ(pick_pixel(view_w - 100, 50), wide->id());
    view->pick_unlock();

    // A tall overlay: height 200, width trunc(0.563 · 200 / 1.563 + 1) = 73.
    view->get_overlay()->remove_all_children();
    view->get_overlay()->add_child(view_test_box::create(0.5f, 1.5f, 0.1f));
    ASSERT_TRUE(view->paint());
    ASSERT_EQ(device->GetViewport(&vp), D3D_OK);
    EXPECT_EQ(std::tuple(vp.X, vp.Width, vp.Height), std::tuple(view_w - 73, 73u, 200u));
}

TEST_F(render_view_test, redraw_requests_repaint_every_initialised_view)
{
    make_view();
    ixo_object_ptr<ixo_render_view> second = manager->create();
    ASSERT_TRUE(second->initialize(nullptr, 160, 120, scene));
    // Made but never initialised: not subscribed, so not painted.
    ixo_object_ptr<ixo_render_view> idle = manager->create();
    EXPECT_FALSE(idle->paint());
    rgba_image none;
    EXPECT_FALSE(idle->capture(none));

    EXPECT_EQ(redraw(), 2);

    // Initialising again does not subscribe again.
    ASSERT_TRUE(second->initialize(nullptr, 160, 120, scene));
    EXPECT_EQ(redraw(), 2);

    // The manager paints every view it made (the idle one fails).
    box->normal_draws = 0;
    EXPECT_FALSE(manager->paint());
    EXPECT_EQ(box->normal_draws, 2);
    EXPECT_EQ(manager->get_num_views(), 3);
    EXPECT_EQ(manager->get_view(1).get(), second.get());
    EXPECT_EQ(manager->get_view(3), nullptr);
    EXPECT_EQ(manager->get_view(-1), nullptr);

    // A view dropped by its manager stops listening and painting, though the test still
    // holds it (as an undo history or a tool may).
    EXPECT_TRUE(manager->remove(second));
    EXPECT_FALSE(manager->remove(second));
    EXPECT_EQ(redraw(), 1);
    EXPECT_FALSE(second->paint());
    EXPECT_EQ(box->normal_draws, 1);
    second = nullptr;
}

TEST_F(render_view_test, device_reset_rebuilds_the_view_and_keeps_one_subscription)
{
    make_view();
    ASSERT_TRUE(view->load_background_image(
        ixo_string::from_utf8(picture("reset.png", view_w, view_h, {0, 1, 0, 1}))));
    IDirect3DDevice9* device = ixo_direct3d::get_device();

    ixo_d3d9_test_lose_device(device, 0);
    ASSERT_TRUE(view->paint());
    EXPECT_EQ(device->TestCooperativeLevel(), D3D_OK);
    EXPECT_NE(view->get_render_target(), nullptr);
    rgba_image const image = frame(false);
    EXPECT_TRUE(is_reddish(at(image, view_w / 2, view_h / 2)));
    EXPECT_TRUE(at(image, 0, 0) == (rgb{0, 255, 0})) << "the background picture is reloaded";

    EXPECT_EQ(redraw(), 1);

    // While the device stays lost, frames and picking give up.
    ixo_d3d9_test_lose_device(device, 1000);
    EXPECT_FALSE(view->paint());
    EXPECT_FALSE(view->map());
    bool recovered = false;
    for (int i = 0; i < 2000 && !recovered; ++i)
        recovered = view->paint();
    EXPECT_TRUE(recovered);
    EXPECT_EQ(redraw(), 1);
}

TEST_F(render_view_test, failed_shadow_pass_still_presents_the_frame)
{
    make_view();
    ixo_object_ptr<ixo_light> light = ixo_light::create(0);
    light->set_position(0.0f, 10.0f, 10.0f);
    light->compute_shadow_matrices(scene->get_bounds());
    scene->add_light(light);
    box->set_property(ixo_scene_object::cast_shadow, true);
    ASSERT_TRUE(view->paint());

    box->fail_in_shadow_pass = true;
    // The map is drawn again only for a changed scene.
    scene->touch();
    box->normal_draws = 0;
    EXPECT_FALSE(view->paint());
    EXPECT_EQ(box->normal_draws, 1);
    rgba_image const image = frame(false);
    EXPECT_TRUE(is_reddish(at(image, view_w / 2, view_h / 2)));
    EXPECT_TRUE(is_background(at(image, 0, 0)));

    // Without shadow mapping the failing pass is not run at all.
    view->set_shadow_mapping(false);
    EXPECT_TRUE(view->paint());
}

TEST_F(render_view_test, sizes_and_resize)
{
    view = manager->create();
    EXPECT_FALSE(view->resize(100, 100)) << "nothing to resize before initialize";
    EXPECT_FALSE(view->initialize(nullptr, 0, 240, scene));
    EXPECT_FALSE(view->initialize(nullptr, 100000, 100000, scene));
    ASSERT_TRUE(view->initialize(nullptr, view_w, view_h, scene));
    EXPECT_FALSE(view->resize(0, 10));
    EXPECT_TRUE(view->resize(160, 100));
    EXPECT_EQ(view->get_camera()->get_width(), 160);
    EXPECT_EQ(view->get_camera()->get_height(), 100);
    rgba_image none;
    EXPECT_FALSE(view->capture(none)) << "nothing presented since the resize";
    EXPECT_EQ(frame().size(), std::size_t(160) * 100);
}

TEST_F(render_view_test, head_light_lights_a_lightless_scene_once_and_off_leaves_it_dark)
{
    // A grey face turned to the eye: the head light alone gives it its own colour, 200.
    make_view();
    box->set_color(ixo_vector4<unsigned char>(200, 200, 200, 255));
    struct case_
    {
        bool shadow_mapping, head_light;
        int low, high;
    } const cases[] = {
        {true, true, 197, 203}, // through the effect: exactly once
        {true, false, 0, 8},    // no scene light, no ambient: black
        {false, true, 150, 255},
        {false, false, 0, 20}, // the fixed function keeps the device's small ambient
    };
    for (case_ const& c : cases)
    {
        view->set_shadow_mapping(c.shadow_mapping);
        view->get_camera()->use_light(c.head_light);
        rgb const centre = at(frame(), view_w / 2, view_h / 2);
        EXPECT_GE(centre.r, c.low) << c.shadow_mapping << c.head_light;
        EXPECT_LE(centre.r, c.high) << c.shadow_mapping << c.head_light;
        EXPECT_EQ(centre.r, centre.b);
    }
}

// A box lit from above and to the left over a floor, seen from straight above: its shadow
// falls on the floor to its right.
class shadowed_view_test : public render_view_test
{
protected:
    void SetUp() override
    {
        render_view_test::SetUp();
        auto floor = ixo_scene_plane::create(
            ixo_plane<float>(ixo_vector3<float>(0, 0, 0), ixo_vector3<float>(0, 1, 0)), 10, 10);
        floor->set_occupy_space(true);
        scene->get_root()->add_child(floor);
        box = view_test_box::create(1.0f, 1.0f, 1.0f);
        box->set_transform(ixo_translation_transform(ixo_vector3<float>(0, 1.5f, 0)));
        box->set_property(ixo_scene_object::cast_shadow, true);
        scene->get_root()->add_child(box);
        light = ixo_light::create(1);
        light->set_position(-6, 10, 0);
        ASSERT_TRUE(light->compute_shadow_matrices(scene->get_bounds()));
        scene->add_light(light);
        make_view(false);
        camera = view->get_camera();
        camera->use_perspective(true);
        camera->set_eye(ixo_vector3<float>(0, 12, 0));
        camera->set_focus(ixo_vector3<float>(0, 0, 0));
        camera->set_up(ixo_vector3<float>(0, 0, -1));
        camera->near_far_to_box(scene->get_bounds());
        // The scene light alone, so that its shadow stands out.
        camera->use_light(false);
    }
    rgb floor_at(const rgba_image& image, float x, float z)
    {
        ixo_vector2<float> const p = camera->pixel_from_point(ixo_vector3<float>(x, 0, z));
        return at(image, unsigned(p[0]), unsigned(p[1]));
    }

    ixo_object_ptr<ixo_light> light;
    ixo_object_ptr<ixo_camera_view> camera;
};

TEST_F(shadowed_view_test, painting_twice_gives_the_same_picture_with_the_shadow_in_both)
{
    std::vector<rgba_image> frames;
    for (int i = 0; i < 4; ++i)
    {
        // Frames that draw the shadow map again and frames that reuse it.
        if (i % 2 == 1)
            scene->touch();
        frames.push_back(frame());
        // The floor from (0.1, 0, ±0.6) to (2.1, 0, ±0.6) lies in the shadow; its mirror image
        // left of the box is lit, and so is the floor beyond the shadow, at x = 3.
        rgb const shadowed = floor_at(frames.back(), 1.4f, 0);
        rgb const lit = floor_at(frames.back(), 3.0f, 0);
        EXPECT_LT(shadowed.r + 60, lit.r) << "frame " << i;
        EXPECT_LT(shadowed.r + 60, floor_at(frames.back(), -1.4f, 0).r) << "frame " << i;
    }
    for (std::size_t i = 1; i < frames.size(); ++i)
        EXPECT_TRUE(frames[i] == frames[0]) << "frame " << i;

    // A pick in between changes no state that the next frame depends on.
    ASSERT_TRUE(view->map());
    EXPECT_TRUE(frame() == frames[0]);
}

TEST_F(shadowed_view_test, shadow_map_is_drawn_again_only_when_what_it_shows_changed)
{
    ASSERT_TRUE(view->paint());
    ASSERT_EQ(box->shadow_draws, 1);
    auto const other = view_test_box::create(0.5f, 0.5f, 0.5f);
    struct case_
    {
        const char* change;
        std::function<void()> apply;
        bool redrawn;
    } const cases[] = {
        {"nothing", [] {}, false},
        {"the camera orbits", [&] { camera->rotate_horizontally(0.3f); }, false},
        {"a colour", [&] { box->set_color(ixo_vector4<unsigned char>(9, 9, 9, 255)); }, false},
        {"a transform",
         [&] { box->set_transform(ixo_translation_transform(ixo_vector3<float>(0, 2, 0))); }, true},
        {"a child added", [&] { scene->get_root()->add_child(other); }, true},
        {"a property", [&] { other->set_property(ixo_scene_object::cast_shadow, true); }, true},
        {"the light's matrices",
         [&]
         {
             light->set_position(-5, 10, 1);
             light->compute_shadow_matrices(scene->get_bounds());
         },
         true},
        // Switched off, the light casts nothing: the map is cleared and nothing drawn in it.
        {"the direct term off", [&] { light->set_direct_light_enabled(false); }, false},
        {"the direct term on", [&] { light->set_direct_light_enabled(true); }, true},
        {"the view's size", [&] { view->resize(view_w / 2, view_h / 2); }, true},
        {"a touch", [&] { scene->touch(); }, true},
    };
    for (case_ const& c : cases)
    {
        box->shadow_draws = 0;
        c.apply();
        ASSERT_TRUE(view->paint()) << c.change;
        EXPECT_EQ(box->shadow_draws, c.redrawn ? 1 : 0) << c.change;
    }

    // A second view of the scene keeps its own map; neither redraws the other's.
    auto second = manager->create();
    ASSERT_TRUE(second->initialize(nullptr, view_w, view_h, scene));
    ASSERT_TRUE(view->paint());
    ASSERT_TRUE(second->paint());
    box->shadow_draws = 0;
    ASSERT_TRUE(view->paint());
    ASSERT_TRUE(second->paint());
    EXPECT_EQ(box->shadow_draws, 0);
}
} // namespace
