#pragma once
// The scene-file format shared by ixo-render and ixo-viewer: a JSON document read into plain
// descriptions of views, lights and a tree of scene objects. Reading checks everything
// (keys, types, ranges, referenced files) before anything is built, and reports the first
// problem with its place in the file as a JSON pointer ("/objects/2/color").

#include "json_read.h"
#include "object_types.h"

#include <ixocore/math/matrix.h>

#include <map>
#include <optional>

namespace ixo_scene_file
{
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
    // Builds the object itself; its type's reader made it.
    object_maker make;
    bool casts_shadow = true;
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

// Limits of the format.
constexpr int max_depth = 64; // objects nest at most this deep
// A 4096 x 4096 view renders in about 4 s of processor time and 1 GB (software
// rasteriser); 8192 x 8192 took over a minute and 4 GB.
constexpr int max_view_size = 4096;
constexpr int max_views = 64;
constexpr std::size_t max_lights = 7; // slot 0 is the camera's head light

// Reads and checks the scene file at `path`. Relative paths inside it are resolved
// against its folder. Throws scene_error and nothing else: the JSON library's and the
// standard library's exceptions (numbers out of range, failed allocations) become one
// with the place being read.
scene_desc read_scene_file(const std::filesystem::path& path);

// The same for programs: the scene, or nothing after writing "FILE: WHERE: WHAT" (one line)
// to standard error. Never throws.
std::optional<scene_desc> read_scene_file_or_report(const std::string& path);

// Reads and checks a scene from JSON text; relative paths are taken from `folder`.
// Throws scene_error and nothing else.
scene_desc read_scene_text(const std::string& text, const std::filesystem::path& folder);

// The property names accepted in "properties", in the order of the property values.
const std::vector<std::string>& property_names();

// The format, as printed by --help.
std::string format_help();
} // namespace ixo_scene_file
