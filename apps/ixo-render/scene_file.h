#pragma once
// The scene-file format of ixo-render: a JSON document read into plain descriptions of
// views, lights and a tree of scene objects. Reading checks everything (keys, types,
// ranges, referenced files) before anything is built, and reports the first problem with
// its place in the file as a JSON pointer ("/objects/2/color").

#include <ixocore/core/object_ptr.h>
#include <ixocore/math/box.h>
#include <ixocore/math/matrix.h>
#include <ixocore/math/vector.h>

#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

class ixo_indexed_mesh;

namespace ixo_render_app
{
// A problem in a scene file: where (a JSON pointer, empty for the whole file) and what.
class scene_error : public std::runtime_error
{
public:
    scene_error(std::string where, const std::string& what)
        : std::runtime_error(what), where_(std::move(where))
    {
    }
    const std::string& where() const { return where_; }

private:
    std::string where_;
};

struct camera_desc
{
    bool perspective = true;
    // One of the six axis views or "isometric"; empty keeps the camera's own direction.
    std::string view;
    std::optional<ixo_vector3<float>> eye, focus, up;
    std::optional<float> fov;
    bool view_all = true;
};

struct view_desc
{
    int width = 640;
    int height = 480;
    ixo_vector4<float> background{1, 1, 1, 1};
    // Absolute path of the background picture, empty for none.
    std::string picture;
    bool shadows = false;
    camera_desc camera;
};

struct light_desc
{
    ixo_vector3<float> position{0, 0, 0};
    std::optional<ixo_vector3<float>> diffuse, ambient, specular;
};

struct object_desc
{
    std::string where; // the object's JSON pointer, for messages while building
    std::string type;
    // Sizes: box (x, y, z in size); cylinder (radius, length); plane (width, height).
    ixo_vector3<float> size{1, 1, 1};
    float radius = 1, length = 1, width = 1, height = 1;
    // Plane: root, normal and whether it counts in the bounds.
    ixo_vector3<float> root{0, 0, 0};
    ixo_vector3<float> normal{0, 0, 1};
    bool occupy_space = false;
    // Mesh: read (and optimised when asked) while the file is checked, so a mesh file
    // that cannot be read is reported like any other problem in the scene.
    ixo_object_ptr<ixo_indexed_mesh> mesh;
    // Rectangle in view pixels.
    ixo_box2<float> rectangle;
    ixo_matrix44<float> transform = ixo_identity_transform();
    std::optional<ixo_vector4<unsigned char>> color;
    // Property name (as in the scene-object property list) and value.
    std::map<std::string, bool> properties;
    std::vector<object_desc> children;
};

struct scene_desc
{
    std::vector<view_desc> views;
    std::vector<light_desc> lights;
    std::vector<object_desc> objects;
};

// Reads and checks the scene file at `path`. Relative paths inside it are resolved
// against its folder. Throws scene_error.
scene_desc read_scene_file(const std::filesystem::path& path);

// The property names accepted in "properties", in the order of the property values.
const std::vector<std::string>& property_names();

// The format, as printed by --help.
const char* format_help();
} // namespace ixo_render_app
