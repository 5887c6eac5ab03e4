// Annotation object types: text, label, legend and overlay_rectangle. They are drawn in view
// pixels over the model and cast no shadows.

#include "object_types.h"

#include <ixocore/core/string.h>
#include <ixocore/scene/scene_label.h>
#include <ixocore/scene/scene_legend.h>
#include <ixocore/scene/scene_overlay_rectangle.h>
#include <ixocore/scene/scene_text.h>

namespace ixo_scene_file
{
namespace
{
// Longer texts are mistakes, not captions.
constexpr std::size_t max_text = 1000;
constexpr double pixel_limit = 1e6;

ixo_string read_text(const json& j, const std::string& where)
{
    std::string const s = read_string(j, where);
    if (s.size() > max_text)
        fail(where, "a text of at most " + std::to_string(max_text) + " bytes expected");
    return ixo_string::from_utf8(s);
}

// A required text member.
ixo_string required_text(const json& j, const std::string& where, const char* key,
                         const char* owner)
{
    if (!j.contains(key))
        fail(where, std::string(owner) + " needs \"" + key + "\"");
    return read_text(j[key], child(where, key));
}

ixo_vector2<float> read_pixel(const json& j, const std::string& where)
{
    if (!j.is_array() || j.size() != 2)
        wrong_type(j, where, "an array of 2 numbers [x, y] in pixels");
    return ixo_vector2<float>(
        read_number(j[0], child(where, std::size_t(0)), -pixel_limit, pixel_limit),
        read_number(j[1], child(where, std::size_t(1)), -pixel_limit, pixel_limit));
}

template <typename T>
T optional(const json& j, const std::string& where, const char* key, T value,
           T (*read)(const json&, const std::string&))
{
    return j.contains(key) ? read(j[key], child(where, key)) : value;
}

object_maker read_text_object(const json& j, const std::string& where, const read_context&)
{
    ixo_string const text = required_text(j, where, "text", "a text");
    ixo_vector3<float> const p =
        optional(j, where, "position", ixo_vector3<float>(0, 0, 0), read_vec3);
    return [=]
    { return ixo_object_ptr<ixo_scene_object>(ixo_scene_text::create(text, p[0], p[1], p[2])); };
}

object_maker read_label(const json& j, const std::string& where, const read_context&)
{
    ixo_string const title = required_text(j, where, "title", "a label");
    std::vector<ixo_string> lines;
    if (j.contains("lines"))
    {
        std::string const w = child(where, "lines");
        const json& a = expect_array(j["lines"], w);
        if (a.size() > std::size_t(ixo_scene_label::max_lines))
            fail(w, "a label has at most " + std::to_string(ixo_scene_label::max_lines) + " lines");
        for (std::size_t i = 0; i < a.size(); ++i)
            lines.push_back(read_text(a[i], child(w, i)));
    }
    ixo_vector3<float> const position =
        optional(j, where, "position", ixo_vector3<float>(0, 0, 0), read_vec3);
    ixo_vector3<float> const arrow = optional(j, where, "arrow", position, read_vec3);
    bool const show_arrow = optional(j, where, "show_arrow", true, read_bool);
    ixo_vector2<int> size(-1, -1);
    if (j.contains("size"))
    {
        std::string const w = child(where, "size");
        const json& s = j["size"];
        if (!s.is_array() || s.size() != 2)
            wrong_type(s, w, "an array of 2 integers [width, height] in pixels");
        for (std::size_t i = 0; i < 2; ++i)
            size[int(i)] = read_int(s[i], child(w, i), 20, 4096);
    }
    return [=]
    {
        auto label = ixo_scene_label::create(title, position);
        for (std::size_t i = 0; i < lines.size(); ++i)
            label->set_label(int(i), lines[i]);
        // The file gives world coordinates, whatever the label's parents do.
        label->set_space(true);
        label->override_needs_converting(false);
        label->update_arrow_position(arrow);
        label->show_arrow(show_arrow);
        if (size[0] > 0)
        {
            label->auto_size(false);
            label->set_dimensions(size);
        }
        label->set_property(ixo_scene_object::pickable, true);
        return ixo_object_ptr<ixo_scene_object>(label);
    };
}

struct legend_entry
{
    ixo_string caption;
    ixo_vector4<unsigned char> color;
};

object_maker read_legend(const json& j, const std::string& where, const read_context&)
{
    ixo_string const title = optional(j, where, "title", ixo_string(), read_text);
    ixo_vector2<float> const position =
        optional(j, where, "position", ixo_vector2<float>(0, 0), read_pixel);
    std::vector<legend_entry> entries;
    if (j.contains("entries"))
    {
        std::string const w = child(where, "entries");
        const json& a = expect_array(j["entries"], w);
        if (a.size() > std::size_t(ixo_scene_legend::max_segments))
            fail(w, "a legend has at most " + std::to_string(ixo_scene_legend::max_segments) +
                        " entries");
        for (std::size_t i = 0; i < a.size(); ++i)
        {
            std::string const we = child(w, i);
            const json& e = expect_object(a[i], we);
            check_keys(e, we, {"caption", "color"}, "a legend entry");
            if (!e.contains("color"))
                fail(we, "a legend entry needs \"color\"");
            entries.push_back({optional(e, we, "caption", ixo_string(), read_text),
                               read_color(e["color"], child(we, "color"))});
        }
    }
    auto size = [&](const char* key, float value)
    {
        return j.contains(key)
                   ? read_number(j[key], child(where, key), 1, 1000, "a number of pixels 1-1000")
                   : value;
    };
    float const box_width = size("box_width", 32);
    float const box_height = size("box_height", 16);
    float const spacing = j.contains("spacing") ? read_number(j["spacing"], child(where, "spacing"),
                                                              0, 1000, "a number of pixels 0-1000")
                                                : 5.0f;
    int const layout =
        j.contains("layout") ? read_int(j["layout"], child(where, "layout"), 0, 1) : 0;
    return [=]
    {
        auto legend = ixo_scene_legend::create(title, position[0], position[1]);
        for (std::size_t i = 0; i < entries.size(); ++i)
        {
            const auto& c = entries[i].color;
            legend->set_segment(int(i), entries[i].caption, c[0], c[1], c[2]);
        }
        legend->update_legend(layout, title, int(entries.size()), box_width, box_height, spacing);
        return ixo_object_ptr<ixo_scene_object>(legend);
    };
}

object_maker read_overlay(const json& j, const std::string& where, const read_context&)
{
    ixo_vector2<float> const start =
        optional(j, where, "start", ixo_vector2<float>(0, 0), read_pixel);
    ixo_vector2<float> const end = optional(j, where, "end", ixo_vector2<float>(0, 0), read_pixel);
    return [=]
    {
        auto overlay = ixo_scene_overlay_rectangle::create();
        overlay->set_start(ixo_vector3<float>(start[0], start[1], 0));
        overlay->set_end(ixo_vector3<float>(end[0], end[1], 0));
        return ixo_object_ptr<ixo_scene_object>(overlay);
    };
}
} // namespace

void add_annotation_types(std::vector<object_type>& types)
{
    types.push_back(
        {"text",
         {"text", "position"},
         read_text_object,
         false,
         R"(text                       "text": the string, required; "position": the model point
                             it is centred on ((0, 0, 0)); written in "color"
)"});
    types.push_back(
        {"label",
         {"title", "lines", "position", "arrow", "show_arrow", "size"},
         read_label,
         false,
         R"(label                      a call-out box: "title", required, on a bar in "color";
                             "lines": up to 32 strings below it; "position": the
                             model point of the box's top-left corner ((0, 0, 0));
                             "arrow": the model point its leader points at
                             ("position"); "show_arrow" (true); "size": [width,
                             height] in pixels, 20-4096 (fitted to the text).
                             Pickable unless "properties" say otherwise
)"});
    types.push_back(
        {"legend",
         {"title", "position", "entries", "box_width", "box_height", "spacing", "layout"},
         read_legend,
         false,
         R"(legend                     a colour key: "title" (none) and the captions in "color";
                             "position": [x, y] top-left in view pixels ([0, 0]);
                             "entries": up to 32 {"caption": string, "color":
                             COLOR (required)}; "box_width" (32), "box_height" (16),
                             "spacing" (5) in pixels; "layout": 0, or 1 to move the
                             boxes down by half a box and space (0)
)"});
    types.push_back(
        {"overlay_rectangle",
         {"start", "end"},
         read_overlay,
         false,
         R"(overlay_rectangle          a translucent rectangle between the corners "start" and
                             "end", [x, y] in view pixels ([0, 0]), in "color"
                             ([0, 0, 0, 128]) with an outline. Its corners count in
                             the scene's bounds as they stand, in pixels: place the
                             camera with "view_all": false
)"});
}
} // namespace ixo_scene_file
