// Text, legend, label and overlay without a device: defaults, tables, rules, frames.

#include "scene/scene_probe.h"

namespace
{
using v2i = ixo_vector2<int>;
using v3 = ixo_vector3<float>;
using v3i = ixo_vector3<int>;
using color = ixo_vector4<unsigned char>;

::testing::AssertionResult near(v3 a, v3 b)
{
    return ixo_test::near(a, b, 1e-4f);
}

bool is_point_at_origin(const ixo_box3<float>& b)
{
    return !b.empty() && ixo_test::box_is(b, v3(0, 0, 0), v3(0, 0, 0), 0);
}
} // namespace

TEST(annotations, types_defaults_bounds_and_overlay_outline)
{
    auto text = ixo_scene_text::create(IXO_TEXT("shaft"));
    auto legend = ixo_scene_legend::create(IXO_TEXT("stress"));
    auto label = ixo_scene_label::create(IXO_TEXT("bearing"));
    auto overlay = ixo_scene_overlay_rectangle::create();
    EXPECT_EQ(text->type_name(), ixo_string(IXO_TEXT("Text")));
    EXPECT_EQ(legend->type_name(), ixo_string(IXO_TEXT("Legend")));
    EXPECT_EQ(label->type_name(), ixo_string(IXO_TEXT("Label")));
    EXPECT_EQ(overlay->type_name(), ixo_string(IXO_TEXT("Overlay Rectangle")));

    EXPECT_EQ(text->get_position(), v3(0, 0, 0));
    EXPECT_EQ(ixo_scene_text::create(IXO_TEXT("a"), 1, 2, 3)->get_position(), v3(1, 2, 3));
    text->update_position(4, 5, 6);
    text->update_text(IXO_TEXT("rotor"));
    EXPECT_EQ(text->get_position(), v3(4, 5, 6));
    EXPECT_EQ(text->get_text(), ixo_string(IXO_TEXT("rotor")));

    EXPECT_EQ(legend->get_position(), ixo_vector2<float>(0, 0));
    EXPECT_EQ(ixo_scene_legend::create(IXO_TEXT("t"), 7, 8)->get_position(),
              ixo_vector2<float>(7, 8));
    EXPECT_EQ(legend->get_segment_count(), 0);
    EXPECT_EQ(legend->get_box_width(), 32.0f);
    EXPECT_EQ(legend->get_box_height(), 16.0f);
    EXPECT_EQ(legend->get_spacing(), 5.0f);
    EXPECT_EQ(legend->get_layout(), 0);
    EXPECT_EQ(legend->get_segment_color(31), v3i(0, 0, 0));

    EXPECT_EQ(label->get_dimensions(), v2i(-1, -1));
    EXPECT_TRUE(label->get_auto_size());
    EXPECT_TRUE(label->is_arrow_shown());
    EXPECT_FALSE(label->get_space() || label->get_plane_fixed() || label->get_update_z() ||
                 label->get_needs_converting());
    EXPECT_TRUE(label->get_title_box().empty());
    EXPECT_EQ(ixo_scene_label::create(IXO_TEXT("b"), v3(1, 2, 3))->get_arrow_position(),
              v3(1, 2, 3));

    EXPECT_FALSE(overlay->get_property(ixo_scene_object::depth_test));
    EXPECT_TRUE(overlay->get_property(ixo_scene_object::pickable));
    EXPECT_TRUE(overlay->get_property(ixo_scene_object::inherit_visible));
    EXPECT_EQ(overlay->get_color(), color(0, 0, 0, 128));

    // Screen-space annotations take no room; the overlay spans its corners either way round.
    EXPECT_TRUE(is_point_at_origin(text->get_object_bounds()));
    EXPECT_TRUE(is_point_at_origin(legend->get_object_bounds()));
    EXPECT_TRUE(is_point_at_origin(label->get_object_bounds()));
    overlay->set_start(v3(50, 10, 0));
    overlay->set_end(v3(20, 40, 1));
    ixo_box3<float> const b = overlay->get_object_bounds();
    EXPECT_EQ(b.minimum(), v3(20, 10, 0));
    EXPECT_EQ(b.maximum(), v3(50, 40, 1));

    // Without a device nothing is drawn, and nothing fails.
    ixo_scene_draw_data d;
    d.set_foreground(true);
    ixo_object_ptr<ixo_scene_object> const all[] = {text, legend, label, overlay};
    for (const auto& o : all)
    {
        EXPECT_TRUE(o->draw(d));
        EXPECT_TRUE(o->pre_reset());
        EXPECT_TRUE(o->post_reset());
    }
    EXPECT_EQ(overlay->get_vertex_buffer(), nullptr);
    EXPECT_TRUE(label->get_title_box().empty());

    // The overlay's outline takes the opposite luminance: blue is dark (29), green light (150).
    EXPECT_EQ(overlay->get_outline_color(), color(255, 255, 255, 255));
    overlay->set_color(color(255, 255, 0, 60));
    EXPECT_EQ(overlay->get_outline_color(), color(0, 0, 0, 255));
    overlay->set_color(color(0, 0, 255, 255));
    EXPECT_EQ(overlay->get_outline_color(), color(255, 255, 255, 255));
    overlay->set_color(color(0, 255, 0, 255));
    EXPECT_EQ(overlay->get_outline_color(), color(0, 0, 0, 255));
}

TEST(annotations, legend_update_rules_and_segment_table)
{
    auto legend = ixo_scene_legend::create(IXO_TEXT("old"));
    legend->update_legend(2, IXO_TEXT("a"), 4, 20, 10, 3);
    // -1 keeps count and sizes: only layout and title change.
    legend->update_legend(0, IXO_TEXT("new"), -1, -1, -1, -1);
    EXPECT_EQ(legend->get_layout(), 0);
    EXPECT_EQ(legend->get_title(), ixo_string(IXO_TEXT("new")));
    EXPECT_EQ(legend->get_segment_count(), 4);
    EXPECT_EQ(legend->get_box_width(), 20.0f);
    EXPECT_EQ(legend->get_box_height(), 10.0f);
    EXPECT_EQ(legend->get_spacing(), 3.0f);

    // Counts beyond the table are held to it.
    legend->update_legend(0, IXO_TEXT("new"), 40, -1, -1, -1);
    EXPECT_EQ(legend->get_segment_count(), 32);
    legend->update_legend(0, IXO_TEXT("new"), -7, -1, -1, -1);
    EXPECT_EQ(legend->get_segment_count(), 0);

    // Layout 1 moves the column by half a pitch, truncated: (10 + 3) / 2 -> 6.
    EXPECT_EQ(legend->get_column_offset(), 0);
    legend->update_legend(1, IXO_TEXT("new"), -1, -1, -1, -1);
    EXPECT_EQ(legend->get_column_offset(), 6);
    legend->update_legend(1, IXO_TEXT("new"), -1, -1, 16, 5);
    EXPECT_EQ(legend->get_column_offset(), 10);

    legend->set_segment(0, IXO_TEXT("low"), 0, 0, 255);
    legend->set_segment(31, IXO_TEXT("high"), 255, 0, 0);
    for (int outside : {-1, 32, 1000})
        legend->set_segment(outside, IXO_TEXT("x"), 9, 9, 9);
    EXPECT_EQ(legend->get_segment_caption(0), ixo_string(IXO_TEXT("low")));
    EXPECT_EQ(legend->get_segment_color(0), v3i(0, 0, 255));
    EXPECT_EQ(legend->get_segment_caption(31), ixo_string(IXO_TEXT("high")));
    EXPECT_EQ(legend->get_segment_color(31), v3i(255, 0, 0));
    EXPECT_EQ(legend->get_segment_caption(30).length(), 0);
    EXPECT_EQ(legend->get_segment_caption(32).length(), 0);
    EXPECT_EQ(legend->get_segment_color(-1), v3i(0, 0, 0));
    EXPECT_EQ(legend->get_title(), ixo_string(IXO_TEXT("new")));
}

TEST(annotations, label_lines_flags_and_frames)
{
    auto label = ixo_scene_label::create(IXO_TEXT("t"));
    label->set_label(0, IXO_TEXT("first"));
    label->set_label(31, IXO_TEXT("last"));
    for (int outside : {-1, 32, 99})
    {
        label->set_label(outside, IXO_TEXT("x"));
        label->remove_label(outside);
        EXPECT_FALSE(label->is_label_used(outside));
        EXPECT_EQ(label->get_label(outside).length(), 0);
    }
    EXPECT_TRUE(label->is_label_used(31));
    EXPECT_FALSE(label->is_label_used(30));
    label->remove_label(0);
    EXPECT_FALSE(label->is_label_used(0));
    EXPECT_EQ(label->get_label(0), ixo_string(IXO_TEXT("first")));
    EXPECT_EQ(ixo_scene_label::get_line_height(32), 0);

    // Only a change sets needs converting; the override sets it either way.
    label->set_space(false);
    label->set_plane_fixed(false);
    EXPECT_FALSE(label->get_needs_converting());
    label->set_plane_fixed(true);
    EXPECT_TRUE(label->get_needs_converting());
    label->override_needs_converting(false);
    label->set_space(true);
    EXPECT_TRUE(label->get_needs_converting());
    label->override_needs_converting(false);
    label->set_space(false);

    // Under a parent moved by (10, 0, 0) and scaled by 2.
    auto parent = ixo_scene_object::create();
    parent->set_transform(ixo_translation_transform(v3(10, 0, 0)) * ixo_scale_transform(2.0f));
    parent->add_child(label);
    label->set_position(v3(1, 2, 3));
    EXPECT_TRUE(near(label->get_world_position(), v3(12, 4, 6)));
    label->update_arrow_position(v3(0, 1, 0));
    EXPECT_TRUE(near(label->get_world_arrow_position(), v3(10, 2, 0)));
    label->set_world_position(v3(14, 0, 2));
    EXPECT_TRUE(near(label->get_position(), v3(2, 0, 1)));
    EXPECT_TRUE(near(label->get_world_position(), v3(14, 0, 2)));
    // With space set the stored value is taken as world coordinates; the setter converts.
    label->set_space(true);
    label->set_world_position(v3(14, 0, 2));
    EXPECT_TRUE(near(label->get_world_position(), v3(2, 0, 1)));

    // Without a font only the margins remain, and 2 pixels for the one line in use (31).
    label->fit_to_contents();
    EXPECT_EQ(label->get_dimensions(), v2i(6, 17));
    // No resize border before the first draw, nor with auto size on.
    label->auto_size(false);
    EXPECT_EQ(label->need_resize(0, 0), 0);
}
