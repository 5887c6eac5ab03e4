#pragma once
// The object types a scene file may hold. Each type checks its own JSON keys while the file
// is read and returns a maker that builds the scene object later, once the library has
// started; so a file is checked whole before anything is built. Types come in families,
// one source each (primitives, meshes, ...), registered in object_types.cpp.

#include "json_read.h"

#include <ixocore/core/object_ptr.h>

#include <functional>

class ixo_scene_object;

namespace ixo_scene_file
{
// Builds one scene object (without transform, colour, properties or children, which the
// builder applies to every type alike). Called only after the library has started.
using object_maker = std::function<ixo_object_ptr<ixo_scene_object>()>;

// What a type's reader needs besides its JSON.
struct read_context
{
    // The scene file's folder: relative file names are taken from it.
    std::filesystem::path folder;
};

struct object_type
{
    std::string name;
    // The type's own keys, besides type, color, transform, properties and children.
    std::vector<const char*> keys;
    // Reads the type's own keys of `j` (only known keys are present by then; `where` is the
    // object's pointer) and returns its maker. Throws scene_error.
    std::function<object_maker(const json& j, const std::string& where, const read_context& c)>
        read;
    // Whether the object and the parts made for it cast shadows unless the file says
    // otherwise.
    bool casts_shadow = true;
    // Its lines under "By type" in --help: the name in a 27-column field, then the text,
    // continuation lines indented by 29 spaces.
    std::string help;
};

// All object types, in the order --help lists them. Built once, on first use.
const std::vector<object_type>& object_types();

// The type called `name`, or null.
const object_type* find_object_type(const std::string& name);

// The families.
void add_primitive_types(std::vector<object_type>& types);
void add_mesh_types(std::vector<object_type>& types);
void add_annotation_types(std::vector<object_type>& types);
} // namespace ixo_scene_file
