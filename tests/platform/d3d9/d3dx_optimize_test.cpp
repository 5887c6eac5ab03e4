#include <ixocore/platform/d3dx9.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace
{

using triangle = std::array<std::array<float, 2>, 3>;

// Triangles as triples of positions, each rotated to start at its smallest corner.
std::vector<triangle> triangles(std::vector<std::array<float, 2>> const& vertices,
                                std::vector<std::uint32_t> const& indices)
{
    std::vector<triangle> out;
    for (std::size_t t = 0; t < indices.size(); t += 3)
    {
        triangle tri{vertices[indices[t]], vertices[indices[t + 1]], vertices[indices[t + 2]]};
        auto first = std::min_element(tri.begin(), tri.end()) - tri.begin();
        std::rotate(tri.begin(), tri.begin() + first, tri.end());
        out.push_back(tri);
    }
    std::sort(out.begin(), out.end());
    return out;
}

} // namespace

TEST(d3dx_optimize, mesh_reordering_keeps_the_triangle_set)
{
    // A strip of quads whose triangles and vertices come in a scrambled order.
    unsigned const n = 30;
    std::vector<std::array<float, 2>> vertices;
    for (unsigned i = 0; i <= n; ++i)
    {
        vertices.push_back({float(i), 0});
        vertices.push_back({float(i), 1});
    }
    std::vector<std::uint32_t> indices;
    for (unsigned k = 0; k < n; ++k)
    {
        unsigned i = (k * 7) % n;
        std::uint32_t a = 2 * i, b = a + 1, c = a + 2, d = a + 3;
        indices.insert(indices.end(), {a, c, b, b, c, d});
    }
    auto const before = triangles(vertices, indices);
    UINT const faces = UINT(indices.size() / 3), verts = UINT(vertices.size());

    // Vertices: remap[old] = new.
    std::vector<DWORD> vremap(verts);
    ASSERT_EQ(D3DXOptimizeVertices(indices.data(), faces, verts, TRUE, vremap.data()), D3D_OK);
    std::vector<std::array<float, 2>> moved(verts);
    for (UINT i = 0; i < verts; ++i)
        moved[vremap[i]] = vertices[i];
    for (auto& k : indices)
        k = vremap[k];
    vertices = moved;
    EXPECT_EQ(triangles(vertices, indices), before);
    // The first triangle's corners are now the first vertices.
    EXPECT_EQ(indices[0], 0u);
    EXPECT_EQ(indices[1], 1u);
    EXPECT_EQ(indices[2], 2u);

    // Faces, from 16-bit indices: new face i = old face remap[i].
    std::vector<std::uint16_t> small(indices.begin(), indices.end());
    std::vector<DWORD> fremap(faces);
    ASSERT_EQ(D3DXOptimizeFaces(small.data(), faces, verts, FALSE, fremap.data()), D3D_OK);
    std::vector<std::uint32_t> reordered;
    for (DWORD old : fremap)
        reordered.insert(reordered.end(), indices.begin() + 3 * old, indices.begin() + 3 * old + 3);
    EXPECT_EQ(triangles(vertices, reordered), before);

    EXPECT_EQ(D3DXOptimizeFaces(nullptr, faces, verts, TRUE, fremap.data()), D3DERR_INVALIDCALL);
    EXPECT_EQ(D3DXOptimizeFaces(indices.data(), faces, verts, TRUE, nullptr), D3DERR_INVALIDCALL);
    EXPECT_EQ(D3DXOptimizeVertices(indices.data(), faces, verts, TRUE, nullptr),
              D3DERR_INVALIDCALL);
    // An index beyond the vertex count.
    EXPECT_EQ(D3DXOptimizeVertices(indices.data(), faces, verts - 5, TRUE, vremap.data()),
              D3DERR_INVALIDCALL);
    EXPECT_EQ(D3DXOptimizeFaces(indices.data(), faces, 0, TRUE, fremap.data()), D3DERR_INVALIDCALL);
}

// Worst cases for the optimiser: a fan around one vertex (valence far above the split
// limit) mixed with degenerate and repeated triangles. The result is a permutation, the fan
// triangles stay in front and the degenerate and repeated ones follow in their old order.
TEST(d3dx_optimize, fans_repeats_and_degenerate_triangles_keep_a_permutation)
{
    unsigned const fan = 100;
    std::vector<std::uint32_t> indices;
    for (std::uint32_t k = 0; k < fan; ++k)
        indices.insert(indices.end(), {0, k + 1, k + 2});
    std::vector<std::uint32_t> const tail = {3, 3, 4, 5, 6, 0, 1, 7, 7, 9, 0, 8};
    // Face 100: degenerate; 101: face 4 rotated; 102: degenerate; 103: face 7 rotated.
    indices.insert(indices.end(), tail.begin(), tail.end());
    UINT const faces = UINT(indices.size() / 3), verts = fan + 2;
    std::vector<DWORD> remap(faces, ~0u);
    ASSERT_EQ(D3DXOptimizeFaces(indices.data(), faces, verts, TRUE, remap.data()), D3D_OK);
    std::vector<DWORD> sorted(remap.begin(), remap.end());
    std::sort(sorted.begin(), sorted.end());
    for (UINT f = 0; f < faces; ++f)
        ASSERT_EQ(sorted[f], f);
    EXPECT_TRUE(std::all_of(remap.begin(), remap.begin() + fan, [](DWORD f) { return f < 100; }));
    EXPECT_EQ(std::vector<DWORD>(remap.begin() + fan, remap.end()),
              (std::vector<DWORD>{100, 101, 102, 103}));
}
