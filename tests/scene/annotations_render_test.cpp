// Text, legend, label and overlay drawn through a render view, read back and picked.

#include "render/scene_render.h"

#include <algorithm>
#include <cstdlib>

namespace
{
constexpr int view_w = 320;
constexpr int view_h = 240;

using v2i = ixo_vector2<int>;
using v3 = ixo_vector3<float>;
using color = ixo_vector4<unsigned char>;
using image = std::vector<color>;
using ids = std::vector<unsigned long>;
constexpr unsigned long none = ixo_invalid_object_id;

struct rgb
{
    int r, g, b;
};

bool close(rgb a, rgb b, int tolerance = 2)
{
    return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance &&
           std::abs(a.b - b.b) <= tolerance;
}

v2i measure(const ixo_string& text)
{
    RECT r{0, 0, 0, 0};
    ixo_direct3d::get_font()->DrawTextW(nullptr, text.c_str(), -1, &r, DT_CALCRECT, 0);
    return v2i(int(r.right), int(r.bottom));
}

// The shared scene fixture with a render view of its scene.
class annotations_render : public ixo_test::scene_render<view_w, view_h>
{
protected:
    void SetUp() override
    {
        scene_render::SetUp();
        // A document's scene, which device resets reach; the fixture's target would block one.
        document = ixo_application::instance()->create_document();
        scene = document->get_scene();
        target.reset();
        view = ixo_render_view_manager::get_app_render_view_manager()->create();
        ASSERT_TRUE(view->initialize(nullptr, view_w, view_h, scene));
        place_camera();
    }
    void TearDown() override
    {
        view = nullptr;
        document = nullptr;
        scene_render::TearDown();
    }

    // Initialising and resetting the view refit its camera: put it back.
    void place_camera()
    {
        auto camera = view->get_camera();
        camera->set_eye(v3(0, 0, 10));
        camera->set_focus(v3(0, 0, 0));
        camera->set_up(v3(0, 1, 0));
        camera->set_near(0.5f);
        camera->set_far(200.0f);
    }

    void add(ixo_object_ptr<ixo_scene_object> o) { scene->get_root()->add_child(o); }

    image paint()
    {
        image frame;
        EXPECT_TRUE(view->paint());
        EXPECT_TRUE(view->capture(frame));
        return frame;
    }

    static rgb at(const image& frame, int x, int y)
    {
        if (frame.size() != std::size_t(view_w) * view_h || x < 0 || y < 0 || x >= view_w ||
            y >= view_h)
            return {-1, -1, -1};
        const color& c = frame[std::size_t(y) * view_w + x];
        return {c[0], c[1], c[2]};
    }

    // The ids picked at pixels counted from the top-left (a tool's y counts from the bottom).
    std::vector<unsigned long> picks(std::vector<v2i> const& pixels)
    {
        std::vector<unsigned long> ids;
        EXPECT_TRUE(view->map());
        view->pick_lock();
        for (v2i p : pixels)
            ids.push_back(view->pick(v2i(view_w - p[0], p[1])));
        view->pick_unlock();
        return ids;
    }

    v2i screen(v3 p) const
    {
        ixo_vector2<float> const q = view->get_camera()->pixel_from_point(p);
        return v2i(int(q[0]), int(q[1]));
    }

    ixo_object_ptr<ixo_document> document;
    ixo_object_ptr<ixo_render_view> view;
};

rgb const red{255, 0, 0};
rgb const white{255, 255, 255};

// The box holding every pixel of `c`, and how many there are.
struct ink
{
    int count = 0;
    int x0 = view_w, y0 = view_h, x1 = -1, y1 = -1;
};

ink find(const image& frame, rgb c)
{
    ink k;
    if (frame.size() != std::size_t(view_w) * view_h)
        return k;
    for (int y = 0; y < view_h; ++y)
        for (int x = 0; x < view_w; ++x)
        {
            const color& p = frame[std::size_t(y) * view_w + x];
            if (p[0] == c.r && p[1] == c.g && p[2] == c.b)
            {
                ++k.count;
                k.x0 = std::min(k.x0, x);
                k.y0 = std::min(k.y0, y);
                k.x1 = std::max(k.x1, x);
                k.y1 = std::max(k.y1, y);
            }
        }
    return k;
}
} // namespace

TEST_F(annotations_render, text_is_centred_on_its_projected_point)
{
    ixo_string const words(IXO_TEXT("MWM"));
    auto text = ixo_scene_text::create(words, 1.0f, 0.5f, 0.0f);
    text->set_color(color(255, 0, 0, 255));
    add(text);
    image const frame = paint();
    ixo_vector2<float> const p = view->get_camera()->pixel_from_point(v3(1.0f, 0.5f, 0.0f));
    v2i const size = measure(words);
    int const left = int(p[0] - float(size[0] / 2));
    int const top = int(p[1] - float(size[1] / 2));

    // The red ink lies in the measured rectangle, centred across the point, straddling it.
    ink const k = find(frame, red);
    ASSERT_GT(k.count, 30);
    EXPECT_GE(k.x0, left);
    EXPECT_LT(k.x1, left + size[0]);
    EXPECT_GE(k.y0, top);
    EXPECT_LT(k.y1, top + size[1]);
    EXPECT_NEAR((k.x0 + k.x1) / 2.0, p[0], 3.0);
    EXPECT_LT(k.y0, p[1]);
    EXPECT_GT(k.y1, p[1]);

    // Picked only with the pickable property, then over its whole rectangle.
    EXPECT_EQ(picks({v2i(int(p[0]), int(p[1]))}), ids{none});
    text->set_property(ixo_scene_object::pickable, true);
    EXPECT_EQ(picks({v2i(left + 1, top + 1), v2i(left + size[0] + 2, top + 1)}),
              (ids{text->id(), none}));
}

TEST_F(annotations_render, legend_swatches_lie_where_the_layout_puts_them)
{
    auto legend = ixo_scene_legend::create(IXO_TEXT("Load"), 20, 10);
    legend->set_color(color(0, 0, 0, 255));
    rgb const colors[3] = {{255, 0, 0}, {0, 200, 0}, {0, 0, 255}};
    for (int i = 0; i < 3; ++i)
        legend->set_segment(i, IXO_TEXT("segment"), colors[i].r, colors[i].g, colors[i].b);
    // Boxes 30 + 2 by 12 pixels at a pitch of 16, below the 40-pixel title band.
    legend->update_legend(0, IXO_TEXT("Load"), 3, 30, 12, 4);
    add(legend);

    for (int layout : {0, 1})
    {
        SCOPED_TRACE(layout);
        legend->update_legend(layout, IXO_TEXT("Load"), -1, -1, -1, -1);
        int const offset = layout == 1 ? 8 : 0;
        image const frame = paint();
        for (int i = 0; i < 3; ++i)
        {
            int const top = 10 + 40 + offset + 16 * i;
            EXPECT_TRUE(close(at(frame, 20, top), colors[i]));
            EXPECT_TRUE(close(at(frame, 51, top + 11), colors[i]));
            EXPECT_FALSE(close(at(frame, 36, top - 1), colors[i], 60));
            EXPECT_FALSE(close(at(frame, 36, top + 12), colors[i], 60));
            EXPECT_TRUE(close(at(frame, 52, top + 5), white));
        }
        EXPECT_EQ(picks({v2i(36, 50 + offset + 16 * 2 + 6), v2i(36, 50 + offset + 16 * 2 + 14)}),
                  (ids{legend->id(), none}));
    }
}

TEST_F(annotations_render, label_box_is_measured_drawn_and_picked_by_its_title_bar)
{
    auto label = ixo_scene_label::create(IXO_TEXT("Bearing"), v3(-1, 1, 0));
    label->set_label(0, IXO_TEXT("load 12 kN"));
    label->set_label(1, IXO_TEXT("temperature 61"));
    label->update_arrow_position(v3(1, -1, 0));
    label->set_color(color(0, 90, 200, 255));
    label->set_property(ixo_scene_object::pickable, true);
    add(label);
    image const frame = paint();

    // Title and lines measured, plus the margins.
    v2i const t = measure(IXO_TEXT("Bearing"));
    v2i const l0 = measure(IXO_TEXT("load 12 kN"));
    v2i const l1 = measure(IXO_TEXT("temperature 61"));
    int const w = std::max({t[0], l0[0], l1[0]}) + 6;
    int const h = t[1] + l0[1] + 2 + l1[1] + 2 + 15;
    EXPECT_EQ(label->get_dimensions(), v2i(w, h));
    EXPECT_EQ(ixo_scene_label::get_line_height(1), l1[1]);

    v2i const corner = screen(v3(-1, 1, 0));
    int const bar = t[1] + 6;
    int const x0 = corner[0], y0 = corner[1];
    EXPECT_EQ(label->get_body_box().minimum(), corner);
    EXPECT_EQ(label->get_body_box().maximum(), v2i(x0 + w - 1, y0 + h - 1));

    EXPECT_TRUE(close(at(frame, x0 + w - 3, y0 + 2), rgb{0, 90, 200}));
    EXPECT_TRUE(close(at(frame, x0 + w - 3, y0 + h - 3), rgb{250, 250, 241}, 3));
    // The leader ends in the arrow's pixel.
    v2i const tip = screen(v3(1, -1, 0));
    bool dark = false;
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            dark = dark || close(at(frame, tip[0] + dx, tip[1] + dy), rgb{40, 40, 40}, 10);
    EXPECT_TRUE(dark);

    // Picked by the title bar and the button, not by the body.
    EXPECT_EQ(picks({v2i(x0 + 2, y0 + 2), v2i(x0 + w + 2, y0 + 2), v2i(x0 + 2, y0 + h - 3)}),
              (ids{label->id(), label->id(), none}));
    EXPECT_TRUE(label->pick_title(x0 + 2, y0 + 2));
    EXPECT_FALSE(label->pick_title(x0 + w + 2, y0 + 2));
    EXPECT_TRUE(label->pick_button(x0 + w + 2, y0 + 2));
    EXPECT_FALSE(label->pick_title(x0 + 2, y0 + bar + 1));

    // Without the pickable property the title bar picks nothing.
    label->set_property(ixo_scene_object::pickable, false);
    EXPECT_EQ(picks({v2i(x0 + 2, y0 + 2)}), ids{none});

    // Borders grab only with auto size off; a size set by hand stays.
    EXPECT_EQ(label->need_resize(x0, y0), 0);
    label->auto_size(false);
    label->set_dimensions(v2i(100, 60));
    paint();
    EXPECT_EQ(label->get_body_box().maximum(), v2i(x0 + 99, y0 + 59));
    struct
    {
        int x, y, grab;
    } const borders[] = {{x0, y0 + 30, 1},      {x0 + 99, y0 + 30, 2},  {x0 + 50, y0 + 1, 4},
                         {x0 + 50, y0 + 59, 8}, {x0 + 98, y0 + 58, 10}, {x0 + 1, y0, 5},
                         {x0 + 50, y0 + 30, 0}, {x0 + 100, y0 + 30, 0}};
    for (const auto& b : borders)
        EXPECT_EQ(label->need_resize(b.x, b.y), b.grab) << b.x - x0 << ", " << b.y - y0;
}

TEST_F(annotations_render, translucent_overlay_blends_with_what_is_behind)
{
    auto box = ixo_scene_box::create(2, 2, 2);
    box->set_color(color(220, 30, 30, 255));
    add(box);
    image const before = paint();
    rgb const under = at(before, view_w / 2, view_h / 2);
    ASSERT_TRUE(close(at(before, 30, 200), white));

    auto overlay = ixo_scene_overlay_rectangle::create();
    overlay->set_start(v3(20, 60, 0));
    overlay->set_end(v3(220, 230, 0));
    add(overlay);
    image const after = paint();
    // Black at alpha 128: what is behind keeps 127/255 of itself.
    auto dimmed = [](rgb c) { return rgb{c.r * 127 / 255, c.g * 127 / 255, c.b * 127 / 255}; };
    EXPECT_TRUE(close(at(after, view_w / 2, view_h / 2), dimmed(under)));
    EXPECT_TRUE(close(at(after, 30, 200), dimmed(white)));
    EXPECT_TRUE(close(at(after, 260, 200), white));
    // The outline, white over black, on the left edge.
    bool outline = false;
    for (int x = 19; x <= 21; ++x)
        outline = outline || close(at(after, x, 200), white);
    EXPECT_TRUE(outline);
    EXPECT_TRUE(close(at(after, 23, 200), dimmed(white)));

    // Over the box, without depth test, the overlay is what picks.
    EXPECT_EQ(picks({v2i(view_w / 2, view_h / 2), v2i(30, 200), v2i(260, 200)}),
              (ids{overlay->id(), overlay->id(), none}));
}

TEST_F(annotations_render, all_four_draw_again_after_a_device_reset)
{
    auto text = ixo_scene_text::create(IXO_TEXT("MWM"), -1.5f, -1.5f, 0.0f);
    text->set_color(color(255, 0, 0, 255));
    auto legend = ixo_scene_legend::create(IXO_TEXT("Key"), 10, 0);
    legend->set_segment(0, IXO_TEXT("a"), 0, 0, 255);
    legend->update_legend(0, IXO_TEXT("Key"), 1, -1, -1, -1);
    auto label = ixo_scene_label::create(IXO_TEXT("Title"), v3(0.5f, 0.5f, 0));
    label->set_color(color(0, 160, 0, 255));
    auto overlay = ixo_scene_overlay_rectangle::create();
    overlay->set_start(v3(200, 180, 0));
    overlay->set_end(v3(300, 230, 0));
    for (ixo_object_ptr<ixo_scene_object> o :
         {ixo_object_ptr<ixo_scene_object>(text), ixo_object_ptr<ixo_scene_object>(legend),
          ixo_object_ptr<ixo_scene_object>(label), ixo_object_ptr<ixo_scene_object>(overlay)})
        add(o);

    auto check = [&](const image& frame)
    {
        v2i const p = screen(v3(-1.5f, -1.5f, 0));
        ink const k = find(frame, red);
        EXPECT_GT(k.count, 30);
        EXPECT_NEAR((k.x0 + k.x1) / 2.0, p[0], 3.0);
        EXPECT_TRUE(close(at(frame, 20, 50), rgb{0, 0, 255}));
        v2i const corner = screen(v3(0.5f, 0.5f, 0));
        EXPECT_TRUE(close(at(frame, corner[0] + 2, corner[1] + 2), rgb{0, 160, 0}));
        EXPECT_TRUE(close(at(frame, 250, 200), rgb{127, 127, 127}));
    };
    check(paint());

    ixo_d3d9_test_lose_device(ixo_direct3d::get_device(), 0);
    EXPECT_TRUE(view->paint());
    EXPECT_NE(overlay->get_vertex_buffer(), nullptr);
    place_camera();
    check(paint());
}
