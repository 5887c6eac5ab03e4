// The shape builders and the mesh reordering, directly and through the D3DX entry points.

#include "d3d9_fixture.h"
#include "platform/d3d9/d3dx_shapes.h"

#include <ixocore/platform/d3dx9.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{

struct v3
{
    float x, y, z;
};

v3 position(ixo_d3dx_shape const& s, std::size_t i)
{
    return {s.vertices[6 * i], s.vertices[6 * i + 1], s.vertices[6 * i + 2]};
}

v3 normal(ixo_d3dx_shape const& s, std::size_t i)
{
    return {s.vertices[6 * i + 3], s.vertices[6 * i + 4], s.vertices[6 * i + 5]};
}

void expect_bounds(ixo_d3dx_shape const& s, v3 lo, v3 hi)
{
    for (std::size_t k = 0; k < 3; ++k)
    {
        float mn = 1e30f, mx = -1e30f;
        for (std::size_t i = 0; i < s.vertex_count(); ++i)
        {
            mn = std::min(mn, s.vertices[6 * i + k]);
            mx = std::max(mx, s.vertices[6 * i + k]);
        }
        EXPECT_NEAR(mn, (&lo.x)[k], 1e-5f) << "axis " << k;
        EXPECT_NEAR(mx, (&hi.x)[k], 1e-5f) << "axis " << k;
    }
}

// Every non-degenerate face of a convex solid centred on the origin must face away from
// the origin, and its vertex normals must lie on the same side as the face.
void expect_outward(ixo_d3dx_shape const& s)
{
    ASSERT_EQ(s.indices.size() % 3, 0u);
    for (std::size_t f = 0; f < s.face_count(); ++f)
    {
        std::uint16_t const* t = &s.indices[3 * f];
        ASSERT_LT(t[0], s.vertex_count());
        ASSERT_LT(t[1], s.vertex_count());
        ASSERT_LT(t[2], s.vertex_count());
        v3 a = position(s, t[0]), b = position(s, t[1]), c = position(s, t[2]);
        v3 u{b.x - a.x, b.y - a.y, b.z - a.z}, w{c.x - a.x, c.y - a.y, c.z - a.z};
        v3 n{u.y * w.z - u.z * w.y, u.z * w.x - u.x * w.z, u.x * w.y - u.y * w.x};
        float len = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
        if (len < 1e-9f)
            continue;
        v3 m{(a.x + b.x + c.x) / 3, (a.y + b.y + c.y) / 3, (a.z + b.z + c.z) / 3};
        EXPECT_GT(n.x * m.x + n.y * m.y + n.z * m.z, 0.0f) << "face " << f;
        for (int k = 0; k < 3; ++k)
        {
            v3 vn = normal(s, t[k]);
            EXPECT_GT(vn.x * n.x + vn.y * n.y + vn.z * n.z, 0.0f) << "face " << f;
            EXPECT_NEAR(vn.x * vn.x + vn.y * vn.y + vn.z * vn.z, 1.0f, 1e-5f);
        }
    }
}

} // namespace

TEST(d3dx_shapes, solids_are_closed_outward_and_refuse_bad_sizes)
{
    ixo_d3dx_shape all[4];
    bool const built[4] = {ixo_d3dx_build_box(2, 4, 6, all[0]),
                           ixo_d3dx_build_cylinder(0.5f, 0.5f, 3, 72, 1, all[1]),
                           ixo_d3dx_build_cylinder(1, 0, 1, 72, 1, all[2]), // the cone
                           ixo_d3dx_build_sphere(1, 72, 36, all[3])};
    std::size_t const counts[4][2] = {
        {24, 12}, {2 + 72 * 4, 2 * 72 * 2}, {2 + 72 * 4, 2 * 72 * 2}, {2 + 72 * 35, 2 * 72 * 35}};
    v3 const bounds[4][2] = {{{-1, -2, -3}, {1, 2, 3}},
                             {{-0.5f, -0.5f, -1.5f}, {0.5f, 0.5f, 1.5f}},
                             {{-1, -1, -0.5f}, {1, 1, 0.5f}},
                             {{-1, -1, -1}, {1, 1, 1}}};
    for (int k = 0; k < 4; ++k)
    {
        SCOPED_TRACE(k);
        ASSERT_TRUE(built[k]);
        EXPECT_EQ(all[k].vertex_count(), counts[k][0]);
        EXPECT_EQ(all[k].face_count(), counts[k][1]);
        expect_bounds(all[k], bounds[k][0], bounds[k][1]);
        expect_outward(all[k]);
    }
    ixo_d3dx_shape s;
    EXPECT_FALSE(ixo_d3dx_build_box(-1, 1, 1, s));
    EXPECT_FALSE(ixo_d3dx_build_box(1, NAN, 1, s));
    EXPECT_FALSE(ixo_d3dx_build_cylinder(1, 1, 1, 1, 1, s));
    EXPECT_FALSE(ixo_d3dx_build_cylinder(1, 1, 1, 3, 0, s));
    EXPECT_FALSE(ixo_d3dx_build_cylinder(-1, 1, 1, 3, 1, s));
    EXPECT_FALSE(ixo_d3dx_build_cylinder(1, 1, 1, 100000, 100000, s));
    EXPECT_FALSE(ixo_d3dx_build_sphere(1, 1, 5, s));
    EXPECT_FALSE(ixo_d3dx_build_sphere(1, 1000, 1000, s));
}

// Worst cases for the optimiser: a fan around one vertex (valence far above the split
// limit) mixed with degenerate and repeated triangles. The result is a permutation, the fan
// triangles stay in front and the degenerate and repeated ones follow in their old order.
TEST(d3dx_shapes, fans_repeats_and_degenerate_triangles_keep_a_permutation)
{
    unsigned const fan = 100;
    std::vector<std::uint32_t> indices;
    for (std::uint32_t k = 0; k < fan; ++k)
        indices.insert(indices.end(), {0, k + 1, k + 2});
    // Face 100: degenerate; 101: face 4 rotated; 102: degenerate; 103: face 7 rotated.
    indices.insert(indices.end(), {3, 3, 4, 5, 6, 0, 1, 7, 7, 9, 0, 8});
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
    // 16-bit indices give the same order; unusable arguments and indices past the vertex
    // count are refused.
    std::vector<std::uint16_t> const narrow(indices.begin(), indices.end());
    std::vector<DWORD> again(faces);
    ASSERT_EQ(D3DXOptimizeFaces(narrow.data(), faces, verts, FALSE, again.data()), D3D_OK);
    EXPECT_EQ(again, remap);
    ixo_expect_refused(
        "optimize", {D3DXOptimizeFaces(nullptr, faces, verts, TRUE, remap.data()),
                     D3DXOptimizeFaces(indices.data(), faces, verts, TRUE, nullptr),
                     D3DXOptimizeVertices(indices.data(), faces, verts, TRUE, nullptr),
                     D3DXOptimizeVertices(indices.data(), faces, verts - 5, TRUE, remap.data())});
}
