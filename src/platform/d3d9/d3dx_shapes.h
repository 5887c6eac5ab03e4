#pragma once
// Geometry of the D3DX mesh builders and the index reorderings behind D3DXOptimizeFaces and
// D3DXOptimizeVertices, free of any device so that they can be checked on their own.

#include <ixocore/core/api.h>

#include <cstdint>
#include <vector>

// A triangle list of position + normal vertices (six floats each) with 16-bit indices.
// Every triangle (p0, p1, p2) faces outwards: (p1 - p0) x (p2 - p0) points away from the
// solid, as in D3DX's meshes.
struct ixo_d3dx_shape
{
    std::vector<float> vertices;
    std::vector<std::uint16_t> indices;

    std::size_t vertex_count() const { return vertices.size() / 6; }
    std::size_t face_count() const { return indices.size() / 3; }
};

// An axis-aligned box centred on the origin: 24 vertices (4 per side, each with the side's
// normal), 12 faces. False for a negative or non-finite size.
IXO_API bool ixo_d3dx_build_box(float width, float height, float depth, ixo_d3dx_shape& out);

// A cylinder (or cone) along z from radius1 at z = -length/2 to radius2 at z = +length/2,
// closed by two fans: 2 + slices (stacks + 3) vertices, 2 slices (stacks + 1) faces. Side
// normals lean along z by the slope of the side. False for negative sizes, fewer than 2
// slices, no stack, or more vertices than 16-bit indices reach.
IXO_API bool ixo_d3dx_build_cylinder(float radius1, float radius2, float length, unsigned slices,
                                     unsigned stacks, ixo_d3dx_shape& out);

// A sphere centred on the origin with its poles on the z axis: 2 + slices (stacks - 1)
// vertices, 2 slices (stacks - 1) faces, normals pointing outwards. False for a negative
// radius, fewer than 2 slices or stacks, or more vertices than 16-bit indices reach.
IXO_API bool ixo_d3dx_build_sphere(float radius, unsigned slices, unsigned stacks,
                                   ixo_d3dx_shape& out);

// A triangle order for the post-transform vertex cache: remap[new face] = old face.
// indices holds 3 * face_count entries, each below vertex_count. False when an index is out
// of range or the input is empty of indices while faces are claimed. Degenerate and repeated
// triangles come last in their old order; time stays near linear in face_count whatever the
// vertex valences.
IXO_API bool ixo_d3dx_optimize_faces(std::uint32_t const* indices, std::size_t face_count,
                                     std::size_t vertex_count, std::uint32_t* remap);

// A vertex order for the pre-transform cache: remap[old vertex] = new vertex, a permutation
// of 0..vertex_count-1 in which vertices are numbered in order of first use by the triangles
// and unused vertices come last in their old order. False when an index is out of range.
IXO_API bool ixo_d3dx_optimize_vertices(std::uint32_t const* indices, std::size_t face_count,
                                        std::size_t vertex_count, std::uint32_t* remap);
