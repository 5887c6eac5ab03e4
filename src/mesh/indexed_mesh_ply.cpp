// PLY meshes through RPly: positions of element "vertex", faces of element "face" as fans.

#include "indexed_mesh_files.h"

#include <ixocore/platform/rply.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

using namespace ixo_mesh_files;

namespace
{

struct ply_context
{
    ixo_indexed_mesh* mesh = nullptr;
    std::size_t vertex_count = 0;
    std::size_t next_vertex[3] = {0, 0, 0};
    // The current face: its first and previous corner, and how many corners were seen.
    unsigned int first = 0;
    unsigned int previous = 0;
    long corners = 0;
};

void ignore_ply_message(p_ply, const char*) {}

int on_ply_vertex(p_ply_argument argument)
{
    void* data = nullptr;
    long axis = 0;
    ply_get_argument_user_data(argument, &data, &axis);
    auto* context = static_cast<ply_context*>(data);
    std::size_t& next = context->next_vertex[axis];
    if (next < context->vertex_count)
        ixo_mesh_builder::vertices(*context->mesh)[next].position[int(axis)] =
            static_cast<float>(ply_get_argument_value(argument));
    ++next;
    return 1;
}

// Faces arrive one list entry at a time; triangles are emitted as a fan.
int on_ply_face(p_ply_argument argument)
{
    void* data = nullptr;
    ply_get_argument_user_data(argument, &data, nullptr);
    auto* context = static_cast<ply_context*>(data);
    long length = 0, value_index = 0;
    ply_get_argument_property(argument, nullptr, &length, &value_index);
    if (value_index < 0)
    {
        context->corners = 0;
        return 1;
    }
    double value = ply_get_argument_value(argument);
    if (!(value >= 0) || value >= double(context->vertex_count) || value != std::floor(value))
        return 0; // an index outside the vertex array: the file is refused
    unsigned int index = static_cast<unsigned int>(value);
    if (context->corners == 0)
        context->first = index;
    else if (context->corners >= 2)
    {
        auto& indices = ixo_mesh_builder::indices(*context->mesh);
        indices.push_back(context->first);
        indices.push_back(context->previous);
        indices.push_back(index);
    }
    context->previous = index;
    ++context->corners;
    return 1;
}

} // namespace

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_ply_file(ixo_string const& name)
{
    std::string path = name.to_utf8();
    struct stat st;
    if (path.empty() || stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
        return nullptr;
    // Closed on every way out, exceptions included.
    std::unique_ptr<t_ply_, int (*)(p_ply)> ply(
        ply_open(path.c_str(), ignore_ply_message, 0, nullptr), ply_close);
    if (!ply || !ply_read_header(ply.get()))
        return nullptr;
    ixo_object_ptr<ixo_indexed_mesh> mesh = create_empty();
    ply_context context;
    context.mesh = mesh.get();
    long const vertices = ply_set_read_cb(ply.get(), "vertex", "x", on_ply_vertex, &context, 0);
    long const ys = ply_set_read_cb(ply.get(), "vertex", "y", on_ply_vertex, &context, 1);
    long const zs = ply_set_read_cb(ply.get(), "vertex", "z", on_ply_vertex, &context, 2);
    // Without all three coordinates there is no mesh; with them every vertex holds at least
    // three bytes of the file, so the vertex array stays within 8 times the file's size.
    if (vertices == 0 || ys == 0 || zs == 0)
        return nullptr;
    long faces = ply_set_read_cb(ply.get(), "face", "vertex_indices", on_ply_face, &context, 0);
    if (faces == 0)
        faces = ply_set_read_cb(ply.get(), "face", "vertex_index", on_ply_face, &context, 0);
    try
    {
        // The header has checked that the file holds data for these counts.
        context.vertex_count = std::size_t(vertices);
        mesh->vertices_.assign(context.vertex_count, ixo_mesh_vertex(vec3(0, 0, 0), vec3(0, 0, 0)));
        // A face of zero corners takes one byte: reserve only what triangles of at least
        // four bytes each could fill; anything beyond grows as it is read.
        std::size_t const triangles = std::min(std::size_t(faces), std::size_t(st.st_size) / 4);
        mesh->indices_.reserve(triangles * 3);
        if (!ply_read(ply.get()))
            return nullptr;
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
    mesh->indices_.shrink_to_fit();
    mesh->make_normals_from_positions();
    return mesh;
}
