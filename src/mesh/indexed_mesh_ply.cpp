// PLY meshes through RPly: positions of element "vertex", faces of element "face" as fans.

#include "indexed_mesh_files.h"

#include <ixocore/platform/rply.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <new>
#include <string>

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
    // Set when a callback refused the file and said why.
    bool refused = false;
};

// RPly's reasons become the reader's, unless a callback has given its own.
void keep_ply_message(p_ply ply, const char* message)
{
    void* data = nullptr;
    if (ply && ply_get_ply_user_data(ply, &data, nullptr) && data &&
        static_cast<ply_context*>(data)->refused)
        return;
    fail(std::string("PLY ") + message);
}

int on_ply_vertex(p_ply_argument argument)
{
    void* data = nullptr;
    long axis = 0;
    ply_get_argument_user_data(argument, &data, &axis);
    auto* context = static_cast<ply_context*>(data);
    std::size_t& next = context->next_vertex[axis];
    if (next < context->vertex_count)
    {
        // The array grows with the vertices read, not with the count the header claims.
        auto& vertices = ixo_mesh_builder::vertices(*context->mesh);
        if (next >= vertices.size())
            vertices.resize(next + 1, ixo_mesh_vertex(vec3(0, 0, 0), vec3(0, 0, 0)));
        vertices[next].position[int(axis)] = static_cast<float>(ply_get_argument_value(argument));
    }
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
    {
        long face = 0;
        p_ply_element element = nullptr;
        ply_get_argument_element(argument, &element, &face);
        context->refused = true;
        char number[32];
        std::snprintf(number, sizeof number, "%.17g", value);
        fail("PLY face " + std::to_string(face + 1) + " names vertex " + number + " of " +
             std::to_string(context->vertex_count));
        return 0;
    }
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
    return guarded(
        [&]() -> ixo_object_ptr<ixo_indexed_mesh>
        {
            std::string path;
            long long size = 0;
            {
                file_handle file(name, "rb");
                if (!file.fp)
                    return fail(file.why);
                path = file.path;
                size = file.size;
            }
            ply_context context;
            // Closed on every way out, exceptions included.
            std::unique_ptr<t_ply_, int (*)(p_ply)> ply(
                ply_open(path.c_str(), keep_ply_message, 0, &context), ply_close);
            if (!ply || !ply_read_header(ply.get()))
                return nullptr;
            ixo_object_ptr<ixo_indexed_mesh> mesh = create_empty();
            context.mesh = mesh.get();
            long const vertices =
                ply_set_read_cb(ply.get(), "vertex", "x", on_ply_vertex, &context, 0);
            long const ys = ply_set_read_cb(ply.get(), "vertex", "y", on_ply_vertex, &context, 1);
            long const zs = ply_set_read_cb(ply.get(), "vertex", "z", on_ply_vertex, &context, 2);
            if (vertices == 0 || ys == 0 || zs == 0)
                return fail("PLY file without element \"vertex\" and its properties x, y and z");
            long faces =
                ply_set_read_cb(ply.get(), "face", "vertex_indices", on_ply_face, &context, 0);
            if (faces == 0)
                faces =
                    ply_set_read_cb(ply.get(), "face", "vertex_index", on_ply_face, &context, 0);
            context.vertex_count = std::size_t(vertices);
            // The header has checked the counts against the file's size, but a sparse file
            // is large on almost no disk: reserve at most a million of each, and let the
            // arrays grow with what is read. A face of zero corners takes one byte, so
            // triangles of at least four bytes each bound the faces.
            mesh->vertices_.reserve(std::min<std::size_t>(context.vertex_count, 1 << 20));
            std::size_t const triangles =
                std::min({std::size_t(faces), std::size_t(size) / 4, std::size_t(1) << 20});
            mesh->indices_.reserve(triangles * 3);
            if (!ply_read(ply.get()))
                return nullptr;
            mesh->vertices_.resize(context.vertex_count,
                                   ixo_mesh_vertex(vec3(0, 0, 0), vec3(0, 0, 0)));
            mesh->indices_.shrink_to_fit();
            mesh->make_normals_from_positions();
            return mesh;
        });
}
