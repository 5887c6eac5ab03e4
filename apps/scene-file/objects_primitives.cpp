// Primitive object types: box, cylinder, cone, sphere, plane, rectangle, axis,
// coordinate_system and group.

#include "object_types.h"

#include <ixocore/math/box.h>
#include <ixocore/math/plane.h>
#include <ixocore/scene/scene_axis.h>
#include <ixocore/scene/scene_box.h>
#include <ixocore/scene/scene_cone.h>
#include <ixocore/scene/scene_coordinate_system.h>
#include <ixocore/scene/scene_cylinder.h>
#include <ixocore/scene/scene_object.h>
#include <ixocore/scene/scene_plane.h>
#include <ixocore/scene/scene_rectangle.h>
#include <ixocore/scene/scene_sphere.h>

namespace ixo_scene_file
{
namespace
{
object_maker read_box(const json& j, const std::string& where, const read_context&)
{
    ixo_vector3<float> size(1, 1, 1);
    if (j.contains("size"))
    {
        std::string const w = child(where, "size");
        size = read_vec3(j["size"], w);
        for (int i = 0; i < 3; ++i)
            if (!(size[i] > 0))
                fail(child(w, std::size_t(i)), "expected a positive number");
    }
    return [size] { return ixo_scene_box::create(size[0], size[1], size[2]); };
}

object_maker read_cylinder(const json& j, const std::string& where, const read_context&)
{
    float radius = 1, length = 1;
    if (j.contains("radius"))
        radius = read_size(j["radius"], child(where, "radius"));
    if (j.contains("length"))
        length = read_size(j["length"], child(where, "length"));
    return [=] { return ixo_scene_cylinder::create(radius, length); };
}

object_maker read_plane(const json& j, const std::string& where, const read_context&)
{
    ixo_vector3<float> root(0, 0, 0), normal(0, 0, 1);
    float width = 1, height = 1;
    bool occupy_space = false;
    if (j.contains("root"))
        root = read_vec3(j["root"], child(where, "root"));
    if (j.contains("normal"))
    {
        normal = read_vec3(j["normal"], child(where, "normal"));
        if (normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2] < 1e-12f)
            fail(child(where, "normal"), "the normal has no length");
    }
    if (j.contains("width"))
        width = read_size(j["width"], child(where, "width"));
    if (j.contains("height"))
        height = read_size(j["height"], child(where, "height"));
    if (j.contains("occupy_space"))
        occupy_space = read_bool(j["occupy_space"], child(where, "occupy_space"));
    return [=]
    {
        auto plane = ixo_scene_plane::create(ixo_plane<float>(root, normal), width, height);
        plane->set_occupy_space(occupy_space);
        return ixo_object_ptr<ixo_scene_object>(plane);
    };
}

object_maker read_rectangle(const json& j, const std::string& where, const read_context&)
{
    ixo_box2<float> rectangle;
    if (j.contains("rectangle"))
    {
        const json& r = j["rectangle"];
        std::string const w = child(where, "rectangle");
        if (!r.is_array() || r.size() != 4)
            wrong_type(r, w, "an array of 4 numbers [left, top, right, bottom] in pixels");
        float v[4];
        for (std::size_t i = 0; i < 4; ++i)
            v[i] = read_number(r[i], child(w, i), -1e6, 1e6);
        rectangle = ixo_box2<float>(ixo_vector2<float>(v[0], v[1]), ixo_vector2<float>(v[2], v[3]));
    }
    return [rectangle]
    {
        auto rect = ixo_scene_rectangle::create();
        rect->set_rectangle(rectangle);
        return ixo_object_ptr<ixo_scene_object>(rect);
    };
}

// A type with no keys of its own.
template <class T> object_type plain(const char* name, const char* help)
{
    return {name,
            {},
            [](const json&, const std::string&, const read_context&) -> object_maker
            { return [] { return ixo_object_ptr<ixo_scene_object>(T::create()); }; },
            true,
            help};
}
} // namespace

void add_primitive_types(std::vector<object_type>& types)
{
    types.push_back({"box",
                     {"size"},
                     read_box,
                     true,
                     R"(box                        "size": [x, y, z] edge lengths (1, 1, 1), centred
)"});
    types.push_back({"cylinder",
                     {"radius", "length"},
                     read_cylinder,
                     true,
                     R"(cylinder                   "radius" (1), "length" (1): along z, centred
)"});
    types.push_back(plain<ixo_scene_cone>(
        "cone",
        R"(cone                       radius 1 at z = -0.5, point at z = +0.5 (size by transform)
)"));
    types.push_back(
        plain<ixo_scene_sphere>("sphere",
                                R"(sphere                     radius 1 (size by transform)
)"));
    types.push_back(
        {"plane",
         {"root", "normal", "width", "height", "occupy_space"},
         read_plane,
         false,
         R"(plane                      "root" (origin), "normal" ((0, 0, 1)), "width" (1),
                             "height" (1), "occupy_space" (false: the patch is left out
                             of the scene's bounds, so view all ignores it)
)"});
    types.push_back(
        {"rectangle",
         {"rectangle"},
         read_rectangle,
         false,
         R"(rectangle                  "rectangle": [left, top, right, bottom] outline in view
                             pixels
)"});
    types.push_back(
        plain<ixo_scene_axis>("axis",
                              R"(axis                       an arrow from the origin to (0, 0, 1)
)"));
    types.push_back(plain<ixo_scene_coordinate_system>(
        "coordinate_system",
        R"(coordinate_system          red x, green y and blue z arrows around a grey ball
)"));
    types.push_back(
        plain<ixo_scene_object>("group", R"(group                      an empty node for children
)"));
}
} // namespace ixo_scene_file
