// The D3DX entry points over the shape builders' reordering (checked in d3dx_shapes_test):
// both index widths reach it unchanged, and bad arguments are refused.

#include "platform/d3d9/d3dx_shapes.h"

#include <ixocore/platform/d3dx9.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

TEST(d3dx_optimize, both_index_widths_give_the_builders_remaps)
{
    // A strip of quads whose triangles come in a scrambled order.
    unsigned const n = 30;
    std::vector<std::uint32_t> indices;
    for (unsigned k = 0; k < n; ++k)
    {
        std::uint32_t a = 2 * ((k * 7) % n), b = a + 1, c = a + 2, d = a + 3;
        indices.insert(indices.end(), {a, c, b, b, c, d});
    }
    std::vector<std::uint16_t> const small(indices.begin(), indices.end());
    UINT const faces = UINT(indices.size() / 3), verts = 2 * (n + 1);
    std::vector<std::uint32_t> want_v(verts), want_f(faces);
    ASSERT_TRUE(ixo_d3dx_optimize_vertices(indices.data(), faces, verts, want_v.data()));
    ASSERT_TRUE(ixo_d3dx_optimize_faces(indices.data(), faces, verts, want_f.data()));
    for (bool wide : {true, false})
    {
        void const* data = wide ? static_cast<void const*>(indices.data()) : small.data();
        std::vector<DWORD> v(verts), f(faces);
        ASSERT_EQ(D3DXOptimizeVertices(data, faces, verts, wide, v.data()), D3D_OK);
        ASSERT_EQ(D3DXOptimizeFaces(data, faces, verts, wide, f.data()), D3D_OK);
        EXPECT_EQ(std::vector<std::uint32_t>(v.begin(), v.end()), want_v) << wide;
        EXPECT_EQ(std::vector<std::uint32_t>(f.begin(), f.end()), want_f) << wide;
    }
    std::vector<DWORD> remap(verts);
    EXPECT_EQ(D3DXOptimizeFaces(nullptr, faces, verts, TRUE, remap.data()), D3DERR_INVALIDCALL);
    EXPECT_EQ(D3DXOptimizeFaces(indices.data(), faces, verts, TRUE, nullptr), D3DERR_INVALIDCALL);
    EXPECT_EQ(D3DXOptimizeVertices(indices.data(), faces, verts, TRUE, nullptr),
              D3DERR_INVALIDCALL);
    // An index beyond the vertex count.
    EXPECT_EQ(D3DXOptimizeVertices(indices.data(), faces, verts - 5, TRUE, remap.data()),
              D3DERR_INVALIDCALL);
    EXPECT_EQ(D3DXOptimizeFaces(indices.data(), faces, 0, TRUE, remap.data()), D3DERR_INVALIDCALL);
}
