// Mesh objects: triangle meshes read from STL, PLY or VRML files while the scene file is
// checked, so a mesh that cannot be read is reported like any other problem in the file.

#include "object_types.h"

#include <ixocore/core/string.h>
#include <ixocore/mesh/indexed_mesh.h>
#include <ixocore/mesh/scene_indexed_mesh.h>

#include <cctype>

namespace ixo_scene_file
{
namespace
{
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

object_maker read_mesh_object(const json& j, const std::string& where, const read_context& c)
{
    ixo_object_ptr<ixo_indexed_mesh> mesh = read_mesh(j, where, c.folder);
    return [mesh]
    { return ixo_object_ptr<ixo_scene_object>(ixo_scene_indexed_mesh::create(mesh)); };
}
} // namespace

void add_mesh_types(std::vector<object_type>& types)
{
    types.push_back(
        {"mesh",
         {"file", "section", "flip_normals", "optimize"},
         read_mesh_object,
         true,
         R"(mesh                       "file": a .stl (ASCII or binary), .ply (ASCII or binary),
                             .wrl or .vrml (VRML 1.0) triangle mesh, required;
                             "section": the VRML section to show, from 0 (all of
                             them); "flip_normals": turn VRML normals that point away
                             from their face (false); "optimize": reorder vertices
                             and triangles for the vertex cache (false)
)"});
}
} // namespace ixo_scene_file
