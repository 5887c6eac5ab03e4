// The shape builders and the mesh reordering, directly and through the D3DX entry points.

#include "d3d9_fixture.h"
#include "platform/d3d9/d3dx_shapes.h"

#include <ixocore/platform/d3dx9.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <random>

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

// Average cache miss ratio of a 16-entry FIFO post-transform cache: misses per triangle.
float fifo_acmr(std::vector<std::uint32_t> const& indices)
{
    std::vector<std::uint32_t> cache;
    std::size_t misses = 0;
    for (std::uint32_t i : indices)
        if (std::find(cache.begin(), cache.end(), i) == cache.end())
        {
            ++misses;
            cache.push_back(i);
            if (cache.size() > 16)
                cache.erase(cache.begin());
        }
    return float(misses) / float(indices.size() / 3);
}

} // namespace

TEST(d3dx_shapes, box_counts_bounds_and_faces)
{
    ixo_d3dx_shape box;
    ASSERT_TRUE(ixo_d3dx_build_box(2, 4, 6, box));
    EXPECT_EQ(box.vertex_count(), 24u);
    EXPECT_EQ(box.face_count(), 12u);
    expect_bounds(box, {-1, -2, -3}, {1, 2, 3});
    expect_outward(box);
    // Each side's four vertices share an axis normal and lie on that side's plane.
    for (std::size_t i = 0; i < 24; ++i)
    {
        v3 n = normal(box, i), p = position(box, i);
        EXPECT_FLOAT_EQ(std::abs(n.x) + std::abs(n.y) + std::abs(n.z), 1.0f);
        EXPECT_FLOAT_EQ(n.x * p.x + n.y * p.y + n.z * p.z,
                        std::abs(n.x) * 1 + std::abs(n.y) * 2 + std::abs(n.z) * 3);
    }
    EXPECT_FALSE(ixo_d3dx_build_box(-1, 1, 1, box));
    EXPECT_FALSE(ixo_d3dx_build_box(1, NAN, 1, box));
}

TEST(d3dx_shapes, cylinder_and_cone)
{
    ixo_d3dx_shape cyl;
    ASSERT_TRUE(ixo_d3dx_build_cylinder(0.5f, 0.5f, 3, 72, 1, cyl));
    EXPECT_EQ(cyl.vertex_count(), 2u + 72u * 4u);
    EXPECT_EQ(cyl.face_count(), 2u * 72u * 2u);
    expect_bounds(cyl, {-0.5f, -0.5f, -1.5f}, {0.5f, 0.5f, 1.5f});
    expect_outward(cyl);

    ixo_d3dx_shape stacked;
    ASSERT_TRUE(ixo_d3dx_build_cylinder(1, 2, 1, 5, 3, stacked));
    EXPECT_EQ(stacked.vertex_count(), 2u + 5u * 6u);
    EXPECT_EQ(stacked.face_count(), 2u * 5u * 4u);

    // The cone: radius 1 at z = -0.5, a point at z = +0.5.
    ixo_d3dx_shape cone;
    ASSERT_TRUE(ixo_d3dx_build_cylinder(1, 0, 1, 72, 1, cone));
    expect_bounds(cone, {-1, -1, -0.5f}, {1, 1, 0.5f});
    expect_outward(cone);
    bool found_side = false;
    for (std::size_t i = 0; i < cone.vertex_count(); ++i)
    {
        v3 p = position(cone, i), n = normal(cone, i);
        float r = std::sqrt(p.x * p.x + p.y * p.y);
        if (p.z > 0.49f)
            EXPECT_NEAR(r, 0.0f, 1e-6f);
        else
            EXPECT_NEAR(p.z, -0.5f, 1e-6f);
        // The side normal at angle 0 of a 45-degree cone leans half-way up.
        if (std::abs(p.x - 1) < 1e-6f && std::abs(n.z) < 0.9f)
        {
            found_side = true;
            EXPECT_NEAR(n.x, std::sqrt(0.5f), 1e-5f);
            EXPECT_NEAR(n.y, 0.0f, 1e-5f);
            EXPECT_NEAR(n.z, std::sqrt(0.5f), 1e-5f);
        }
    }
    EXPECT_TRUE(found_side);

    EXPECT_FALSE(ixo_d3dx_build_cylinder(1, 1, 1, 1, 1, cyl));
    EXPECT_FALSE(ixo_d3dx_build_cylinder(1, 1, 1, 3, 0, cyl));
    EXPECT_FALSE(ixo_d3dx_build_cylinder(-1, 1, 1, 3, 1, cyl));
    EXPECT_FALSE(ixo_d3dx_build_cylinder(1, 1, 1, 100000, 100000, cyl));
}

TEST(d3dx_shapes, sphere)
{
    ixo_d3dx_shape sphere;
    ASSERT_TRUE(ixo_d3dx_build_sphere(1, 72, 36, sphere));
    EXPECT_EQ(sphere.vertex_count(), 2u + 72u * 35u);
    EXPECT_EQ(sphere.face_count(), 2u * 72u * 35u);
    expect_bounds(sphere, {-1, -1, -1}, {1, 1, 1});
    expect_outward(sphere);
    for (std::size_t i = 0; i < sphere.vertex_count(); ++i)
    {
        v3 p = position(sphere, i), n = normal(sphere, i);
        EXPECT_NEAR(p.x * p.x + p.y * p.y + p.z * p.z, 1.0f, 1e-5f);
        EXPECT_NEAR(p.x, n.x, 1e-6f);
        EXPECT_NEAR(p.z, n.z, 1e-6f);
    }
    ixo_d3dx_shape big;
    ASSERT_TRUE(ixo_d3dx_build_sphere(3, 4, 2, big));
    EXPECT_EQ(big.vertex_count(), 6u);
    EXPECT_EQ(big.face_count(), 8u);
    expect_bounds(big, {-3, -3, -3}, {3, 3, 3});
    EXPECT_FALSE(ixo_d3dx_build_sphere(1, 1, 5, sphere));
    EXPECT_FALSE(ixo_d3dx_build_sphere(1, 5, 1, sphere));
    EXPECT_FALSE(ixo_d3dx_build_sphere(1, 1000, 1000, sphere));
}

TEST(d3dx_shapes, vertex_order_follows_first_use)
{
    // Vertex 4 is unused and keeps the last place.
    std::uint32_t const indices[] = {2, 0, 1, 2, 1, 3};
    std::uint32_t remap[5];
    ASSERT_TRUE(ixo_d3dx_optimize_vertices(indices, 2, 5, remap));
    std::uint32_t const expected[] = {1, 2, 0, 3, 4};
    EXPECT_TRUE(std::equal(remap, remap + 5, expected));

    std::uint32_t const bad[] = {0, 1, 5};
    EXPECT_FALSE(ixo_d3dx_optimize_vertices(bad, 1, 5, remap));
    EXPECT_FALSE(ixo_d3dx_optimize_faces(bad, 1, 5, remap));
}

TEST(d3dx_shapes, optimised_orders_keep_the_triangles_and_help_the_cache)
{
    // A grid of triangles in shuffled order.
    unsigned const n = 40;
    std::vector<std::uint32_t> indices;
    for (unsigned y = 0; y < n; ++y)
        for (unsigned x = 0; x < n; ++x)
        {
            std::uint32_t a = y * (n + 1) + x, b = a + 1, c = a + n + 1, d = c + 1;
            indices.insert(indices.end(), {a, b, d, a, d, c});
        }
    std::size_t const faces = indices.size() / 3, verts = (n + 1) * (n + 1);
    std::vector<std::uint32_t> order(faces);
    std::iota(order.begin(), order.end(), 0u);
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    std::vector<std::uint32_t> shuffled;
    for (std::uint32_t f : order)
        shuffled.insert(shuffled.end(), indices.begin() + 3 * f, indices.begin() + 3 * f + 3);
    // Two identical triangles must both survive.
    shuffled.insert(shuffled.end(), {0, 1, n + 2});
    std::size_t const total = faces + 1;

    std::vector<std::uint32_t> face_remap(total);
    ASSERT_TRUE(ixo_d3dx_optimize_faces(shuffled.data(), total, verts, face_remap.data()));
    std::vector<std::uint32_t> sorted = face_remap;
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t i = 0; i < total; ++i)
        ASSERT_EQ(sorted[i], i);
    // New face i is old face remap[i].
    std::vector<std::uint32_t> reordered;
    for (std::uint32_t old : face_remap)
        reordered.insert(reordered.end(), shuffled.begin() + 3 * old,
                         shuffled.begin() + 3 * old + 3);
    EXPECT_LT(fifo_acmr(reordered), fifo_acmr(shuffled) * 0.75f);

    // Vertex order: a permutation; applying it old -> new keeps every triangle.
    std::vector<std::uint32_t> vertex_remap(verts);
    ASSERT_TRUE(ixo_d3dx_optimize_vertices(reordered.data(), total, verts, vertex_remap.data()));
    std::vector<std::uint32_t> inverse(verts, ~0u);
    for (std::size_t v = 0; v < verts; ++v)
    {
        ASSERT_LT(vertex_remap[v], verts);
        ASSERT_EQ(inverse[vertex_remap[v]], ~0u);
        inverse[vertex_remap[v]] = std::uint32_t(v);
    }
    for (std::size_t i = 0; i < reordered.size(); ++i)
        EXPECT_EQ(inverse[vertex_remap[reordered[i]]], reordered[i]);
    // First use order: the first triangle's vertices become 0, 1, 2.
    EXPECT_EQ(vertex_remap[reordered[0]], 0u);
    EXPECT_EQ(vertex_remap[reordered[1]], 1u);
    EXPECT_EQ(vertex_remap[reordered[2]], 2u);

    // The D3DX entry points give the same remaps from either index width.
    std::vector<std::uint16_t> const small(shuffled.begin(), shuffled.end());
    UINT const f = UINT(total), nv = UINT(verts);
    for (bool wide : {true, false})
    {
        void const* data = wide ? static_cast<void const*>(shuffled.data()) : small.data();
        std::vector<DWORD> v(verts), fr(total);
        ASSERT_EQ(D3DXOptimizeFaces(data, f, nv, wide, fr.data()), D3D_OK);
        ASSERT_EQ(D3DXOptimizeVertices(data, f, nv, wide, v.data()), D3D_OK);
        EXPECT_EQ(std::vector<std::uint32_t>(fr.begin(), fr.end()), face_remap) << wide;
        std::vector<std::uint32_t> want_v(verts);
        ixo_d3dx_optimize_vertices(shuffled.data(), total, verts, want_v.data());
        EXPECT_EQ(std::vector<std::uint32_t>(v.begin(), v.end()), want_v) << wide;
    }
    std::vector<DWORD> remap(verts);
    // The last: an index beyond the vertex count.
    ixo_expect_refused("optimize",
                       {D3DXOptimizeFaces(nullptr, f, nv, TRUE, remap.data()),
                        D3DXOptimizeFaces(shuffled.data(), f, nv, TRUE, nullptr),
                        D3DXOptimizeVertices(shuffled.data(), f, nv, TRUE, nullptr),
                        D3DXOptimizeFaces(shuffled.data(), f, 0, TRUE, remap.data()),
                        D3DXOptimizeVertices(shuffled.data(), f, nv - 5, TRUE, remap.data())});
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
}
