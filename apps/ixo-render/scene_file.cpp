#include "scene_file.h"

#include <ixocore/core/string.h>
#include <ixocore/mesh/indexed_mesh.h>

#include <nlohmann/json.hpp>

#include <cctype>
#include <cmath>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <vector>

namespace ixo_render_app
{
namespace
{
using json = nlohmann::json;

// Objects nest at most this deep, so a hostile file cannot exhaust the stack.
constexpr int max_depth = 64;
constexpr int max_view_size = 8192;
constexpr int max_views = 64;
// Slot 0 is the camera's head light.
constexpr std::size_t max_lights = 7;

std::string child(const std::string& where, const std::string& key)
{
    std::string escaped;
    for (char c : key)
    {
        if (c == '~')
            escaped += "~0";
        else if (c == '/')
            escaped += "~1";
        else
            escaped += c;
    }
    return where + "/" + escaped;
}

std::string child(const std::string& where, std::size_t index)
{
    return where + "/" + std::to_string(index);
}

const char* kind(const json& j)
{
    switch (j.type())
    {
    case json::value_t::null:
        return "null";
    case json::value_t::boolean:
        return "a boolean";
    case json::value_t::string:
        return "a string";
    case json::value_t::array:
        return "an array";
    case json::value_t::object:
        return "an object";
    case json::value_t::discarded:
        return "nothing";
    default:
        return "a number";
    }
}

[[noreturn]] void fail(const std::string& where, const std::string& what)
{
    throw scene_error(where, what);
}

[[noreturn]] void wrong_type(const json& j, const std::string& where, const std::string& expected)
{
    fail(where, "expected " + expected + ", found " + kind(j));
}

// Every key of `j` must be one of `allowed` ("comment", a string, is allowed everywhere).
// `owner` names what the keys belong to in the message ("a box").
void check_keys(const json& j, const std::string& where, const std::vector<const char*>& allowed,
                const std::string& owner = "")
{
    for (auto it = j.begin(); it != j.end(); ++it)
    {
        if (it.key() == "comment")
        {
            if (!it.value().is_string())
                wrong_type(it.value(), child(where, it.key()), "a string");
            continue;
        }
        bool known = false;
        for (const char* a : allowed)
            known = known || it.key() == a;
        if (!known)
        {
            std::string list;
            for (const char* a : allowed)
                list += std::string(list.empty() ? "" : ", ") + a;
            fail(child(where, it.key()), "unknown key" + (owner.empty() ? "" : " for " + owner) +
                                             " (expected one of: " + list + ")");
        }
    }
}

const json& expect_object(const json& j, const std::string& where)
{
    if (!j.is_object())
        wrong_type(j, where, "an object");
    return j;
}

const json& expect_array(const json& j, const std::string& where)
{
    if (!j.is_array())
        wrong_type(j, where, "an array");
    return j;
}

bool read_bool(const json& j, const std::string& where)
{
    if (!j.is_boolean())
        wrong_type(j, where, "true or false");
    return j.get<bool>();
}

std::string read_string(const json& j, const std::string& where)
{
    if (!j.is_string())
        wrong_type(j, where, "a string");
    return j.get<std::string>();
}

float read_number(const json& j, const std::string& where, double lo, double hi,
                  const char* expected = "a number")
{
    if (!j.is_number())
        wrong_type(j, where, expected);
    double const v = j.get<double>();
    if (!std::isfinite(v) || v < lo || v > hi)
    {
        std::ostringstream s;
        s << "value " << v << " out of range " << lo << " to " << hi;
        fail(where, s.str());
    }
    return static_cast<float>(v);
}

int read_int(const json& j, const std::string& where, int lo, int hi)
{
    if (!j.is_number_integer() && !j.is_number_unsigned())
        wrong_type(j, where, "an integer " + std::to_string(lo) + "-" + std::to_string(hi));
    long long const v = j.get<long long>();
    if (v < lo || v > hi)
        fail(where, "value " + std::to_string(v) + " out of range " + std::to_string(lo) + "-" +
                        std::to_string(hi));
    return static_cast<int>(v);
}

// Coordinates are finite and kept well inside float range.
constexpr double coordinate_limit = 1e15;

ixo_vector3<float> read_vec3(const json& j, const std::string& where)
{
    if (!j.is_array() || j.size() != 3)
        fail(where, std::string("expected an array of 3 numbers, found ") + kind(j) +
                        (j.is_array() ? " of " + std::to_string(j.size()) : ""));
    ixo_vector3<float> v;
    for (std::size_t i = 0; i < 3; ++i)
        v[int(i)] = read_number(j[i], child(where, i), -coordinate_limit, coordinate_limit);
    return v;
}

ixo_vector4<unsigned char> read_color(const json& j, const std::string& where)
{
    const char* expected = "an array of 3 or 4 integers 0-255";
    if (!j.is_array() || (j.size() != 3 && j.size() != 4))
        wrong_type(j, where, expected);
    ixo_vector4<unsigned char> c(0, 0, 0, 255);
    for (std::size_t i = 0; i < j.size(); ++i)
    {
        if (!j[i].is_number_integer() && !j[i].is_number_unsigned())
            fail(where, "expected " + std::string(expected) + ", element " + std::to_string(i) +
                            " is " + kind(j[i]) + (j[i].is_number() ? " with a fraction" : ""));
        long long const v = j[i].get<long long>();
        if (v < 0 || v > 255)
            fail(where, "expected " + std::string(expected) + ", element " + std::to_string(i) +
                            " is " + std::to_string(v));
        c[int(i)] = static_cast<unsigned char>(v);
    }
    return c;
}

ixo_vector3<float> color_to_float3(const ixo_vector4<unsigned char>& c)
{
    return ixo_vector3<float>(c[0] / 255.0f, c[1] / 255.0f, c[2] / 255.0f);
}

// A path in the file, resolved against the file's folder; the file must exist.
std::string read_file_path(const json& j, const std::string& where,
                           const std::filesystem::path& folder)
{
    std::filesystem::path p(read_string(j, where));
    if (p.empty())
        fail(where, "empty path");
    if (p.is_relative())
        p = folder / p;
    std::error_code ec;
    if (!std::filesystem::is_regular_file(p, ec))
        fail(where, "file not found: " + p.string());
    return p.string();
}

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

float read_size(const json& j, const std::string& where)
{
    float const v = read_number(j, where, 0, coordinate_limit, "a positive number");
    if (!(v > 0))
        fail(where, "expected a positive number, found 0");
    return v;
}

std::string lower_extension(const std::string& path)
{
    std::string ext = std::filesystem::path(path).extension().string();
    for (char& c : ext)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

// The mesh of a "mesh" object: STL or PLY whole, VRML one section or all of them.
ixo_object_ptr<ixo_indexed_mesh> read_mesh(const json& j, const std::string& where,
                                           const std::filesystem::path& folder)
{
    if (!j.contains("file"))
        fail(where, "a mesh needs \"file\"");
    std::string const w = child(where, "file");
    std::string const path = read_file_path(j["file"], w, folder);
    std::string const ext = lower_extension(path);
    bool const vrml = ext == ".wrl" || ext == ".vrml";
    if (!vrml && ext != ".stl" && ext != ".ply")
        fail(w, "expected a .stl, .ply, .wrl or .vrml file: " + path);
    if (!vrml && (j.contains("section") || j.contains("flip_normals")))
        fail(where, "\"section\" and \"flip_normals\" are for VRML files only");
    ixo_string const name(path.c_str());
    ixo_object_ptr<ixo_indexed_mesh> mesh;
    if (!vrml)
        mesh = ixo_indexed_mesh::read_from_file(name);
    else if (j.contains("section"))
    {
        std::string const ws = child(where, "section");
        int const sections = ixo_indexed_mesh::calculate_meshes_in_vrml_file(name);
        int const section = read_int(j["section"], ws, 0, 1 << 20);
        if (section >= sections)
            fail(ws, "the file has " + std::to_string(sections) + " section" +
                         (sections == 1 ? "" : "s") + " (numbered from 0): " + path);
        mesh = ixo_indexed_mesh::read_from_vrml_file(name, section);
    }
    else
    {
        bool const flip = j.contains("flip_normals") &&
                          read_bool(j["flip_normals"], child(where, "flip_normals"));
        mesh = ixo_indexed_mesh::read_all_meshes_from_vrml_file(name, flip);
    }
    if (!mesh || mesh->get_num_indices() == 0)
        fail(w, "cannot read a mesh from " + path);
    if (j.contains("optimize") && read_bool(j["optimize"], child(where, "optimize")))
        mesh->optimize_buffers();
    return mesh;
}

object_desc read_object(const json& j, const std::string& where, int depth,
                        const std::filesystem::path& folder)
{
    if (depth > max_depth)
        fail(where, "objects nest deeper than " + std::to_string(max_depth) + " levels");
    expect_object(j, where);
    object_desc o;
    o.where = where;
    if (!j.contains("type"))
        fail(where, "missing \"type\"");
    o.type = read_string(j["type"], child(where, "type"));

    auto allow = [&](std::initializer_list<const char*> own)
    {
        std::vector<const char*> all = {"type", "color", "transform", "properties", "children"};
        all.insert(all.end(), own.begin(), own.end());
        check_keys(j, where, all, "a " + o.type);
    };

    if (o.type == "box")
    {
        allow({"size"});
        if (j.contains("size"))
        {
            std::string const w = child(where, "size");
            o.size = read_vec3(j["size"], w);
            for (int i = 0; i < 3; ++i)
                if (!(o.size[i] > 0))
                    fail(child(w, std::size_t(i)), "expected a positive number");
        }
    }
    else if (o.type == "cylinder")
    {
        allow({"radius", "length"});
        if (j.contains("radius"))
            o.radius = read_size(j["radius"], child(where, "radius"));
        if (j.contains("length"))
            o.length = read_size(j["length"], child(where, "length"));
    }
    else if (o.type == "plane")
    {
        allow({"root", "normal", "width", "height", "occupy_space"});
        if (j.contains("root"))
            o.root = read_vec3(j["root"], child(where, "root"));
        if (j.contains("normal"))
        {
            o.normal = read_vec3(j["normal"], child(where, "normal"));
            if (o.normal[0] * o.normal[0] + o.normal[1] * o.normal[1] + o.normal[2] * o.normal[2] <
                1e-12f)
                fail(child(where, "normal"), "the normal has no length");
        }
        if (j.contains("width"))
            o.width = read_size(j["width"], child(where, "width"));
        if (j.contains("height"))
            o.height = read_size(j["height"], child(where, "height"));
        if (j.contains("occupy_space"))
            o.occupy_space = read_bool(j["occupy_space"], child(where, "occupy_space"));
    }
    else if (o.type == "rectangle")
    {
        allow({"rectangle"});
        if (j.contains("rectangle"))
        {
            const json& r = j["rectangle"];
            std::string const w = child(where, "rectangle");
            if (!r.is_array() || r.size() != 4)
                wrong_type(r, w, "an array of 4 numbers [left, top, right, bottom] in pixels");
            float v[4];
            for (std::size_t i = 0; i < 4; ++i)
                v[i] = read_number(r[i], child(w, i), -1e6, 1e6);
            o.rectangle =
                ixo_box2<float>(ixo_vector2<float>(v[0], v[1]), ixo_vector2<float>(v[2], v[3]));
        }
    }
    else if (o.type == "mesh")
    {
        allow({"file", "section", "flip_normals", "optimize"});
        o.mesh = read_mesh(j, where, folder);
    }
    else if (o.type == "cone" || o.type == "sphere" || o.type == "axis" ||
             o.type == "coordinate_system" || o.type == "group")
    {
        allow({});
    }
    else
    {
        fail(child(where, "type"),
             "unknown object type \"" + o.type +
                 "\" (expected box, cylinder, cone, sphere, plane, rectangle, axis, "
                 "coordinate_system, mesh or group)");
    }

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
            o.children.push_back(read_object(c[i], child(w, i), depth + 1, folder));
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

scene_desc read_scene_file(const std::filesystem::path& path)
{
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec))
        fail("", "file not found");
    std::ifstream in(path, std::ios::binary);
    if (!in)
        fail("", "cannot open the file");
    json doc;
    try
    {
        doc = json::parse(in);
    }
    catch (const json::parse_error& e)
    {
        // The library's message carries line and column.
        std::string what = e.what();
        auto const colon = what.find("parse error");
        fail("", "not valid JSON: " + (colon == std::string::npos ? what : what.substr(colon)));
    }

    std::filesystem::path const folder = std::filesystem::absolute(path, ec).parent_path();
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
            s.objects.push_back(read_object(o[i], child("/objects", i), 1, folder));
    }
    return s;
}
} // namespace ixo_render_app

namespace ixo_render_app
{
const char* format_help()
{
    return R"(Scene file format (JSON). Every object may carry a "comment" string; any other
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
  "width", "height"          pixels, 1-8192 (640 x 480)
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
  "type"                     box, cylinder, cone, sphere, plane, rectangle, axis,
                             coordinate_system, mesh or group (an empty node for
                             children)
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
                             planes and rectangles casts shadows unless told otherwise.
  "children"                 [OBJECT, ...], drawn in the parent's frame (64 levels deep
                             at most)
  By type (all sizes positive):
  box                        "size": [x, y, z] edge lengths (1, 1, 1), centred
  cylinder                   "radius" (1), "length" (1): along z, centred
  cone                       radius 1 at z = -0.5, point at z = +0.5 (size by transform)
  sphere                     radius 1 (size by transform)
  plane                      "root" (origin), "normal" ((0, 0, 1)), "width" (1),
                             "height" (1), "occupy_space" (false: the patch is left out
                             of the scene's bounds, so view all ignores it)
  rectangle                  "rectangle": [left, top, right, bottom] outline in view
                             pixels
  axis                       an arrow from the origin to (0, 0, 1)
  coordinate_system          red x, green y and blue z arrows around a grey ball
  mesh                       "file": a .stl (ASCII or binary), .ply (ASCII or binary),
                             .wrl or .vrml (VRML 1.0) triangle mesh, required;
                             "section": the VRML section to show, from 0 (all of
                             them); "flip_normals": turn VRML normals that point away
                             from their face (false); "optimize": reorder vertices
                             and triangles for the vertex cache (false)

Example:
  {"view": {"width": 320, "height": 240, "camera": {"view": "isometric"}},
   "lights": [{"position": [5, 8, 6]}],
   "objects": [{"type": "box", "size": [2, 1, 1], "color": [200, 30, 30]}]}
)";
}
} // namespace ixo_render_app
