#include "scene_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace ixo_scene_file
{
namespace
{
// A rotation by `degrees` counter-clockwise about `axis` seen from its tip (right-hand
// rule), for column vectors.
ixo_matrix44<float> rotation(ixo_vector3<float> axis, float degrees, const std::string& where)
{
    double const n = std::sqrt(double(axis[0]) * axis[0] + double(axis[1]) * axis[1] +
                               double(axis[2]) * axis[2]);
    if (n < 1e-6)
        fail(child(where, "axis"), "the rotation axis has no length");
    double const x = axis[0] / n, y = axis[1] / n, z = axis[2] / n;
    double const a = degrees * 3.14159265358979323846 / 180.0;
    double const c = std::cos(a), s = std::sin(a), t = 1 - c;
    auto f = [](double v) { return static_cast<float>(v); };
    return ixo_matrix44<float>(
        ixo_vector4<float>(f(t * x * x + c), f(t * x * y - s * z), f(t * x * z + s * y), 0),
        ixo_vector4<float>(f(t * x * y + s * z), f(t * y * y + c), f(t * y * z - s * x), 0),
        ixo_vector4<float>(f(t * x * z - s * y), f(t * y * z + s * x), f(t * z * z + c), 0),
        ixo_vector4<float>(0, 0, 0, 1));
}

ixo_matrix44<float> read_rotation(const json& j, const std::string& where)
{
    expect_object(j, where);
    check_keys(j, where, {"axis", "degrees"});
    if (!j.contains("axis") || !j.contains("degrees"))
        fail(where, "a rotation needs \"axis\" and \"degrees\"");
    return rotation(read_vec3(j["axis"], child(where, "axis")),
                    read_number(j["degrees"], child(where, "degrees"), -1e6, 1e6), where);
}

// translate · rotations (applied in the order listed) · scale, or a whole matrix.
ixo_matrix44<float> read_transform(const json& j, const std::string& where)
{
    expect_object(j, where);
    check_keys(j, where, {"translate", "rotate", "scale", "matrix"});
    if (j.contains("matrix"))
    {
        if (j.size() - j.count("comment") != 1)
            fail(where, "\"matrix\" cannot be combined with translate, rotate or scale");
        const json& m = j["matrix"];
        std::string const w = child(where, "matrix");
        if (!m.is_array() || m.size() != 16)
            wrong_type(m, w, "an array of 16 numbers, row by row");
        ixo_matrix44<float> out;
        for (std::size_t i = 0; i < 16; ++i)
            out[int(i / 4)][int(i % 4)] =
                read_number(m[i], child(w, i), -coordinate_limit, coordinate_limit);
        return out;
    }
    ixo_matrix44<float> out = ixo_identity_transform();
    if (j.contains("translate"))
        out = ixo_translation_transform(read_vec3(j["translate"], child(where, "translate")));
    if (j.contains("rotate"))
    {
        const json& r = j["rotate"];
        std::string const w = child(where, "rotate");
        if (r.is_array())
        {
            ixo_matrix44<float> turn = ixo_identity_transform();
            for (std::size_t i = 0; i < r.size(); ++i)
                turn = read_rotation(r[i], child(w, i)) * turn;
            out = out * turn;
        }
        else if (r.is_object())
            out = out * read_rotation(r, w);
        else
            wrong_type(r, w,
                       "a rotation {\"axis\": [x, y, z], \"degrees\": a} or an array of them");
    }
    if (j.contains("scale"))
    {
        const json& s = j["scale"];
        std::string const w = child(where, "scale");
        if (s.is_number())
            out = out * ixo_scale_transform(read_number(s, w, -1e6, 1e6));
        else if (s.is_array())
            out = out * ixo_anisotropic_transform(read_vec3(s, w));
        else
            wrong_type(s, w, "a number or an array of 3 numbers");
    }
    return out;
}

object_desc read_object(const json& j, const std::string& where, int depth,
                        const read_context& context)
{
    if (depth > max_depth)
        fail(where, "objects nest deeper than " + std::to_string(max_depth) + " levels");
    expect_object(j, where);
    object_desc o;
    o.where = where;
    if (!j.contains("type"))
        fail(where, "missing \"type\"");
    o.type = read_string(j["type"], child(where, "type"));
    const object_type* type = find_object_type(o.type);
    if (!type)
    {
        std::string list;
        auto const& types = object_types();
        for (std::size_t i = 0; i < types.size(); ++i)
            list += (i == 0 ? "" : i + 1 == types.size() ? " or " : ", ") + types[i].name;
        fail(child(where, "type"),
             "unknown object type \"" + o.type + "\" (expected " + list + ")");
    }
    std::vector<const char*> keys = {"type", "color", "transform", "properties", "children"};
    keys.insert(keys.end(), type->keys.begin(), type->keys.end());
    check_keys(j, where, keys, "a " + o.type);
    o.make = type->read(j, where, context);
    o.casts_shadow = type->casts_shadow;

    if (j.contains("color"))
        o.color = read_color(j["color"], child(where, "color"));
    if (j.contains("transform"))
        o.transform = read_transform(j["transform"], child(where, "transform"));
    if (j.contains("properties"))
    {
        std::string const w = child(where, "properties");
        const json& p = expect_object(j["properties"], w);
        for (auto it = p.begin(); it != p.end(); ++it)
        {
            bool known = false;
            for (const auto& name : property_names())
                known = known || name == it.key();
            if (!known)
            {
                std::string list;
                for (const auto& name : property_names())
                    list += (list.empty() ? "" : ", ") + name;
                fail(child(w, it.key()), "unknown property (expected one of: " + list + ")");
            }
            o.properties[it.key()] = read_bool(it.value(), child(w, it.key()));
        }
    }
    if (j.contains("children"))
    {
        std::string const w = child(where, "children");
        const json& c = expect_array(j["children"], w);
        for (std::size_t i = 0; i < c.size(); ++i)
            o.children.push_back(read_object(c[i], child(w, i), depth + 1, context));
    }
    return o;
}

camera_desc read_camera(const json& j, const std::string& where)
{
    expect_object(j, where);
    check_keys(j, where, {"projection", "view", "eye", "focus", "up", "fov", "view_all"});
    camera_desc c;
    if (j.contains("projection"))
    {
        std::string const p = read_string(j["projection"], child(where, "projection"));
        if (p != "perspective" && p != "orthographic")
            fail(child(where, "projection"),
                 "expected \"perspective\" or \"orthographic\", found \"" + p + "\"");
        c.perspective = p == "perspective";
    }
    if (j.contains("view"))
    {
        c.view = read_string(j["view"], child(where, "view"));
        static char const* const views[] = {"front", "right",  "top",      "back",
                                            "left",  "bottom", "isometric"};
        bool known = false;
        for (const char* v : views)
            known = known || c.view == v;
        if (!known)
            fail(child(where, "view"),
                 "unknown view \"" + c.view +
                     "\" (expected front, right, top, back, left, bottom or isometric)");
    }
    if (j.contains("eye"))
        c.eye = read_vec3(j["eye"], child(where, "eye"));
    if (j.contains("focus"))
        c.focus = read_vec3(j["focus"], child(where, "focus"));
    if (j.contains("up"))
        c.up = read_vec3(j["up"], child(where, "up"));
    if (j.contains("fov"))
        c.fov = read_number(j["fov"], child(where, "fov"), 1, 179);
    if (j.contains("view_all"))
        c.view_all = read_bool(j["view_all"], child(where, "view_all"));
    if (!c.view.empty() && (c.eye || c.focus || c.up))
        fail(where, "\"view\" cannot be combined with eye, focus or up");
    return c;
}

view_desc read_view(const json& j, const std::string& where, const std::filesystem::path& folder)
{
    expect_object(j, where);
    check_keys(j, where,
               {"width", "height", "background", "background_picture", "shadows", "camera"});
    view_desc v;
    if (j.contains("width"))
        v.width = read_int(j["width"], child(where, "width"), 1, max_view_size);
    if (j.contains("height"))
        v.height = read_int(j["height"], child(where, "height"), 1, max_view_size);
    if (j.contains("background"))
    {
        ixo_vector4<unsigned char> const c =
            read_color(j["background"], child(where, "background"));
        v.background =
            ixo_vector4<float>(c[0] / 255.0f, c[1] / 255.0f, c[2] / 255.0f, c[3] / 255.0f);
    }
    if (j.contains("background_picture"))
        v.picture =
            read_file_path(j["background_picture"], child(where, "background_picture"), folder);
    if (j.contains("shadows"))
        v.shadows = read_bool(j["shadows"], child(where, "shadows"));
    if (j.contains("camera"))
        v.camera = read_camera(j["camera"], child(where, "camera"));
    return v;
}

light_desc read_light(const json& j, const std::string& where)
{
    expect_object(j, where);
    check_keys(j, where, {"position", "diffuse", "ambient", "specular"});
    light_desc l;
    if (!j.contains("position"))
        fail(where, "missing \"position\"");
    l.position = read_vec3(j["position"], child(where, "position"));
    if (j.contains("diffuse"))
        l.diffuse = color_to_float3(read_color(j["diffuse"], child(where, "diffuse")));
    if (j.contains("ambient"))
        l.ambient = color_to_float3(read_color(j["ambient"], child(where, "ambient")));
    if (j.contains("specular"))
        l.specular = color_to_float3(read_color(j["specular"], child(where, "specular")));
    return l;
}
scene_desc read_scene(const json& doc, const std::filesystem::path& folder)
{
    read_context const context{folder};
    expect_object(doc, "");
    check_keys(doc, "", {"view", "views", "lights", "objects"});
    scene_desc s;
    if (doc.contains("view") && doc.contains("views"))
        fail("", "give either \"view\" or \"views\", not both");
    if (doc.contains("view"))
        s.views.push_back(read_view(doc["view"], "/view", folder));
    if (doc.contains("views"))
    {
        const json& v = expect_array(doc["views"], "/views");
        if (v.empty())
            fail("/views", "expected at least one view");
        if (v.size() > max_views)
            fail("/views", "more than " + std::to_string(max_views) + " views");
        for (std::size_t i = 0; i < v.size(); ++i)
            s.views.push_back(read_view(v[i], child("/views", i), folder));
    }
    if (s.views.empty())
        s.views.emplace_back();
    if (doc.contains("lights"))
    {
        const json& l = expect_array(doc["lights"], "/lights");
        if (l.size() > max_lights)
            fail("/lights", "more than " + std::to_string(max_lights) + " lights");
        for (std::size_t i = 0; i < l.size(); ++i)
            s.lights.push_back(read_light(l[i], child("/lights", i)));
    }
    if (doc.contains("objects"))
    {
        const json& o = expect_array(doc["objects"], "/objects");
        for (std::size_t i = 0; i < o.size(); ++i)
            s.objects.push_back(read_object(o[i], child("/objects", i), 1, context));
    }
    return s;
}
} // namespace

const std::vector<std::string>& property_names()
{
    static const std::vector<std::string> names = {"visible",
                                                   "in_background",
                                                   "in_foreground",
                                                   "transparent",
                                                   "pickable",
                                                   "depth_test",
                                                   "depth_write",
                                                   "cast_shadow",
                                                   "inherit_visible",
                                                   "inherit_transparent",
                                                   "inherit_color",
                                                   "inherit_alpha",
                                                   "inherit_depth_test",
                                                   "inherit_depth_write"};
    return names;
}

namespace
{
// "line L, column C" of byte `offset` of `text`.
std::string line_and_column(const std::string& text, std::size_t offset)
{
    offset = std::min(offset, text.size());
    std::size_t const line = std::size_t(std::count(text.begin(), text.begin() + offset, '\n')) + 1;
    std::size_t const start = text.rfind('\n', offset == 0 ? 0 : offset - 1);
    std::size_t const column =
        offset - (start == std::string::npos || offset == 0 ? 0 : start + 1) + 1;
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}
} // namespace

scene_desc read_scene_text(const std::string& text, const std::filesystem::path& folder)
{
    // Whatever the JSON library or the standard library throws while a scene is read
    // becomes a scene_error with a place: the parser's position, or the value being read.
    json doc;
    try
    {
        doc = json::parse(text);
    }
    catch (const json::parse_error& e)
    {
        // The library's message carries line and column.
        std::string what = e.what();
        auto const colon = what.find("parse error");
        fail("", "not valid JSON: " + (colon == std::string::npos ? what : what.substr(colon)));
    }
    catch (const json::out_of_range& e)
    {
        // A number beyond double range ("1e400"): the message quotes it, so find it.
        std::string const what = e.what();
        std::size_t const open = what.find('\'');
        std::size_t const close = what.find('\'', open + 1);
        std::string place;
        if (open != std::string::npos && close != std::string::npos)
        {
            std::size_t const at = text.find(what.substr(open + 1, close - open - 1));
            if (at != std::string::npos)
                place = " at " + line_and_column(text, at);
        }
        fail("", "not valid JSON: a number out of range" + place + " (" +
                     what.substr(what.find(']') == std::string::npos ? 0 : what.find(']') + 2) +
                     ")");
    }
    catch (const std::bad_alloc&)
    {
        fail("", "not enough memory to read the file");
    }
    catch (const std::exception& e)
    {
        fail("", std::string("not valid JSON: ") + e.what());
    }
    reset_place();
    try
    {
        return read_scene(doc, folder);
    }
    catch (const scene_error&)
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        fail(last_place(), "not enough memory to read the scene");
    }
    catch (const std::exception& e)
    {
        fail(last_place(), std::string("cannot read this value: ") + e.what());
    }
}

scene_desc read_scene_file(const std::filesystem::path& path)
{
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec))
        fail("", "file not found");
    std::ifstream in(path, std::ios::binary);
    if (!in)
        fail("", "cannot open the file");
    std::string text;
    try
    {
        std::ostringstream read;
        read << in.rdbuf();
        text = read.str();
    }
    catch (const std::exception&)
    {
        fail("", "cannot read the file into memory");
    }
    return read_scene_text(text, std::filesystem::absolute(path, ec).parent_path());
}

std::optional<scene_desc> read_scene_file_or_report(const std::string& path)
{
    try
    {
        return read_scene_file(path);
    }
    catch (const scene_error& e)
    {
        if (e.where().empty())
            std::fprintf(stderr, "%s: %s\n", path.c_str(), e.what());
        else
            std::fprintf(stderr, "%s: %s: %s\n", path.c_str(), e.where().c_str(), e.what());
    }
    catch (const std::exception& e)
    {
        // The reader turns everything into scene_error; this is the last line of defence.
        std::fprintf(stderr, "%s: %s\n", path.c_str(), printable(e.what()).c_str());
    }
    return std::nullopt;
}

std::string format_help()
{
    std::string help =
        R"(Scene file format (JSON). Every object may carry a "comment" string; any other
key not listed here is an error. Colours are arrays of 3 or 4 integers 0-255 (red,
green, blue, alpha; alpha defaults to 255). Vectors are arrays of 3 numbers. Relative
file paths are taken from the scene file's folder.

{
  "view": VIEW,              one view, or
  "views": [VIEW, ...],      several (1-64); one PNG each. Default: one 640 x 480 view.
  "lights": [LIGHT, ...],    up to 7 point lights; the first one casts the shadows
  "objects": [OBJECT, ...]   the top level of the scene tree
}

VIEW:
  "width", "height"          pixels, 1-4096 (640 x 480). Views are drawn, written and
                             released one at a time: the largest, 4096 x 4096, costs
                             about 1 GB of memory and 4 s of processor time with
                             shadows, whatever the number of views
  "background"               clear colour (white)
  "background_picture"       image file (PNG, JPEG, BMP) drawn centred at its own size
  "shadows"                  true: shadow map of the first light (false)
  "camera": {
    "projection"             "perspective" (default) or "orthographic"
    "view"                   "front" (looks along -z), "right" (-x), "top" (-y),
                             "back" (+z), "left" (+x), "bottom" (+y) or "isometric"
                             (along (-1, -1, -1), y up)
    "eye", "focus", "up"     explicit camera placement (instead of "view")
    "fov"                    vertical field of view in degrees, 1-179
    "view_all"               true (default): keep the viewing direction and frame the
                             whole scene; false: keep eye, focus and fov as given
  }

LIGHT:
  "position"                 required
  "diffuse", "ambient", "specular"   colours (white, 20 % grey, 50 % grey)

OBJECT:
  "type"                     one of the types below
  "color"                    (196, 196, 196, 255); axis and coordinate-system parts
                             take their parent's colour
  "transform": {             translate * rotate * scale, or a whole matrix
    "translate"              vector
    "rotate"                 {"axis": vector, "degrees": number} or an array of them
                             (right-hand rule, applied in the order listed)
    "scale"                  number or vector
    "matrix"                 16 numbers, row by row, translation in the last column
  }
  "properties"               {"name": true/false, ...} with the names visible,
                             in_background, in_foreground, transparent, pickable,
                             depth_test, depth_write, cast_shadow, inherit_visible,
                             inherit_transparent, inherit_color, inherit_alpha,
                             inherit_depth_test, inherit_depth_write. Every object but
                             planes, rectangles, stators, rotors, text, labels, legends
                             and overlay rectangles casts shadows unless told otherwise.
  "children"                 [OBJECT, ...], drawn in the parent's frame (64 levels deep
                             at most)
  By type (all sizes positive):
)";
    for (const object_type& t : object_types())
        help += "  " + t.help;
    help += R"(
Example:
  {"view": {"width": 320, "height": 240, "camera": {"view": "isometric"}},
   "lights": [{"position": [5, 8, 6]}],
   "objects": [{"type": "box", "size": [2, 1, 1], "color": [200, 30, 30]}]}
)";
    return help;
}
} // namespace ixo_scene_file
