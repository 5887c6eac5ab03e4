#include "platform/d3d9/d3dx_shapes.h"

#include <meshoptimizer.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace
{

constexpr double pi = 3.14159265358979323846;

struct vec3
{
    float x, y, z;
};

vec3 operator+(vec3 a, vec3 b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
vec3 operator-(vec3 a, vec3 b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
vec3 operator*(vec3 a, float s)
{
    return {a.x * s, a.y * s, a.z * s};
}

bool usable_size(float v)
{
    return std::isfinite(v) && v >= 0.0f;
}

void push_vertex(ixo_d3dx_shape& s, vec3 p, vec3 n)
{
    s.vertices.insert(s.vertices.end(), {p.x, p.y, p.z, n.x, n.y, n.z});
}

void push_face(ixo_d3dx_shape& s, std::size_t a, std::size_t b, std::size_t c)
{
    s.indices.insert(s.indices.end(), {std::uint16_t(a), std::uint16_t(b), std::uint16_t(c)});
}

} // namespace

bool ixo_d3dx_build_box(float width, float height, float depth, ixo_d3dx_shape& out)
{
    if (!usable_size(width) || !usable_size(height) || !usable_size(depth))
        return false;
    out = {};
    float const hx = width / 2, hy = height / 2, hz = depth / 2;
    vec3 const x{hx, 0, 0}, y{0, hy, 0}, z{0, 0, hz};
    // Each side: its normal and two half-edges u, v with u x v along the normal, so the
    // corners -u-v, u-v, u+v, -u+v run counter-clockwise seen from outside.
    struct side
    {
        vec3 normal, centre, u, v;
    };
    std::array<side, 6> const sides{{{{-1, 0, 0}, x * -1, z, y},
                                     {{1, 0, 0}, x, y, z},
                                     {{0, -1, 0}, y * -1, x, z},
                                     {{0, 1, 0}, y, z, x},
                                     {{0, 0, -1}, z * -1, y, x},
                                     {{0, 0, 1}, z, x, y}}};
    for (side const& s : sides)
    {
        std::size_t const base = out.vertex_count();
        push_vertex(out, s.centre - s.u - s.v, s.normal);
        push_vertex(out, s.centre + s.u - s.v, s.normal);
        push_vertex(out, s.centre + s.u + s.v, s.normal);
        push_vertex(out, s.centre - s.u + s.v, s.normal);
        push_face(out, base, base + 1, base + 2);
        push_face(out, base, base + 2, base + 3);
    }
    return true;
}

bool ixo_d3dx_build_cylinder(float radius1, float radius2, float length, unsigned slices,
                             unsigned stacks, ixo_d3dx_shape& out)
{
    if (!usable_size(radius1) || !usable_size(radius2) || !usable_size(length) || slices < 2 ||
        stacks < 1)
        return false;
    if (std::uint64_t(slices) * (std::uint64_t(stacks) + 3) + 2 > 65536)
        return false;
    out = {};
    std::vector<float> cosines(slices), sines(slices);
    for (unsigned i = 0; i < slices; ++i)
    {
        double const theta = 2.0 * pi * i / slices;
        cosines[i] = float(std::cos(theta));
        sines[i] = float(std::sin(theta));
    }
    float const z0 = -length / 2;
    // The side's normal leans towards the narrow end by the slope of the side.
    float const lean = length > 0.0f ? (radius1 - radius2) / length : 0.0f;
    float const scale = 1.0f / std::sqrt(1.0f + lean * lean);

    // Bottom cap: centre, then its ring.
    push_vertex(out, {0, 0, z0}, {0, 0, -1});
    for (unsigned i = 0; i < slices; ++i)
        push_vertex(out, {radius1 * cosines[i], radius1 * sines[i], z0}, {0, 0, -1});
    std::size_t const side_base = out.vertex_count();
    for (unsigned s = 0; s <= stacks; ++s)
    {
        float const t = float(s) / float(stacks);
        float const r = radius1 + (radius2 - radius1) * t;
        float const z = z0 + length * t;
        for (unsigned i = 0; i < slices; ++i)
            push_vertex(out, {r * cosines[i], r * sines[i], z},
                        {cosines[i] * scale, sines[i] * scale, lean * scale});
    }
    std::size_t const top_base = out.vertex_count();
    for (unsigned i = 0; i < slices; ++i)
        push_vertex(out, {radius2 * cosines[i], radius2 * sines[i], -z0}, {0, 0, 1});
    std::size_t const top_centre = out.vertex_count();
    push_vertex(out, {0, 0, -z0}, {0, 0, 1});

    for (unsigned i = 0; i < slices; ++i)
        push_face(out, 0, 1 + (i + 1) % slices, 1 + i);
    for (unsigned s = 0; s < stacks; ++s)
        for (unsigned i = 0; i < slices; ++i)
        {
            unsigned const j = (i + 1) % slices;
            std::size_t const a = side_base + s * slices + i, b = side_base + s * slices + j;
            std::size_t const c = a + slices, d = b + slices;
            push_face(out, a, b, d);
            push_face(out, a, d, c);
        }
    for (unsigned i = 0; i < slices; ++i)
        push_face(out, top_centre, top_base + i, top_base + (i + 1) % slices);
    return true;
}

bool ixo_d3dx_build_sphere(float radius, unsigned slices, unsigned stacks, ixo_d3dx_shape& out)
{
    if (!usable_size(radius) || slices < 2 || stacks < 2)
        return false;
    if (std::uint64_t(slices) * (std::uint64_t(stacks) - 1) + 2 > 65536)
        return false;
    out = {};
    push_vertex(out, {0, 0, radius}, {0, 0, 1});
    for (unsigned k = 1; k < stacks; ++k)
    {
        double const phi = pi * k / stacks;
        float const rho = float(std::sin(phi)), z = float(std::cos(phi));
        for (unsigned i = 0; i < slices; ++i)
        {
            double const theta = 2.0 * pi * i / slices;
            vec3 const n{rho * float(std::cos(theta)), rho * float(std::sin(theta)), z};
            push_vertex(out, n * radius, n);
        }
    }
    std::size_t const bottom = out.vertex_count();
    push_vertex(out, {0, 0, -radius}, {0, 0, -1});

    auto ring = [&](unsigned k, unsigned i)
    { return 1 + std::size_t(k - 1) * slices + i % slices; };
    for (unsigned i = 0; i < slices; ++i)
        push_face(out, 0, ring(1, i), ring(1, i + 1));
    for (unsigned k = 1; k + 1 < stacks; ++k)
        for (unsigned i = 0; i < slices; ++i)
        {
            // Ring k lies above ring k + 1.
            std::size_t const a = ring(k + 1, i), b = ring(k + 1, i + 1);
            std::size_t const c = ring(k, i), d = ring(k, i + 1);
            push_face(out, a, b, d);
            push_face(out, a, d, c);
        }
    for (unsigned i = 0; i < slices; ++i)
        push_face(out, bottom, ring(stacks - 1, i + 1), ring(stacks - 1, i));
    return true;
}

namespace
{

bool indices_in_range(std::uint32_t const* indices, std::size_t count, std::size_t vertex_count)
{
    return std::all_of(indices, indices + count,
                       [&](std::uint32_t i) { return std::size_t(i) < vertex_count; });
}

// A triangle's corners rotated so that the smallest comes first: the same face whatever
// corner a reordering starts it from.
std::array<std::uint32_t, 3> canonical(std::uint32_t const* t)
{
    std::size_t first = 0;
    if (t[1] < t[first])
        first = 1;
    if (t[2] < t[first])
        first = 2;
    return {t[first], t[(first + 1) % 3], t[(first + 2) % 3]};
}

} // namespace

bool ixo_d3dx_optimize_faces(std::uint32_t const* indices, std::size_t face_count,
                             std::size_t vertex_count, std::uint32_t* remap)
{
    if (face_count == 0)
        return true;
    if (indices == nullptr || remap == nullptr ||
        !indices_in_range(indices, face_count * 3, vertex_count))
        return false;
    // After each triangle it emits, the optimiser walks the live triangles of every cached
    // vertex, so its time grows with vertex valence: quadratic for a fan around one vertex
    // or one triangle repeated. It therefore sees each distinct, non-degenerate triangle
    // once, with every vertex used more than max_valence times split into copies of at
    // most max_valence uses; degenerate and repeated triangles follow in their old order.
    constexpr std::uint32_t max_valence = 16;
    using face_key = std::pair<std::array<std::uint32_t, 3>, std::uint32_t>;
    std::vector<face_key> faces;
    faces.reserve(face_count);
    for (std::size_t f = 0; f < face_count; ++f)
    {
        std::uint32_t const* t = indices + 3 * f;
        if (t[0] != t[1] && t[1] != t[2] && t[0] != t[2])
            faces.emplace_back(canonical(t), std::uint32_t(f));
    }
    std::sort(faces.begin(), faces.end());
    std::vector<char> kept(face_count, 0);
    for (std::size_t i = 0; i < faces.size(); ++i)
        if (i == 0 || faces[i].first != faces[i - 1].first)
            kept[faces[i].second] = 1;

    std::size_t const kept_count = std::size_t(std::count(kept.begin(), kept.end(), 1));
    // copy[v] is the vertex number v's next uses go to, used[v] how often it has been used.
    std::vector<std::uint32_t> copy(vertex_count), used(vertex_count, 0);
    for (std::size_t v = 0; v < vertex_count; ++v)
        copy[v] = std::uint32_t(v);
    std::size_t split_count = vertex_count;
    std::vector<std::uint32_t> split(kept_count * 3), kept_faces(kept_count);
    std::size_t n = 0;
    for (std::size_t f = 0; f < face_count; ++f)
    {
        if (!kept[f])
            continue;
        kept_faces[n] = std::uint32_t(f);
        for (int k = 0; k < 3; ++k)
        {
            std::uint32_t v = indices[3 * f + k];
            if (used[v]++ == max_valence)
            {
                used[v] = 1;
                copy[v] = std::uint32_t(split_count++);
            }
            split[3 * n + k] = copy[v];
        }
        ++n;
    }
    if (split_count > 0xffffffffu)
        return false;

    std::vector<std::uint32_t> ordered(kept_count * 3);
    meshopt_optimizeVertexCache(ordered.data(), split.data(), kept_count * 3, split_count);
    // The optimiser hands back triangles, not their numbers: find each one's old position.
    // The split triangles are distinct, so each names exactly one.
    faces.clear();
    for (std::size_t i = 0; i < kept_count; ++i)
        faces.emplace_back(canonical(split.data() + 3 * i), std::uint32_t(i));
    std::sort(faces.begin(), faces.end());
    std::size_t out = 0;
    for (std::size_t i = 0; i < kept_count; ++i)
    {
        face_key key{canonical(ordered.data() + 3 * i), 0};
        auto it = std::lower_bound(faces.begin(), faces.end(), key);
        if (it == faces.end() || it->first != key.first)
            return false;
        remap[out++] = kept_faces[it->second];
    }
    for (std::size_t f = 0; f < face_count; ++f)
        if (!kept[f])
            remap[out++] = std::uint32_t(f);
    return true;
}

bool ixo_d3dx_optimize_vertices(std::uint32_t const* indices, std::size_t face_count,
                                std::size_t vertex_count, std::uint32_t* remap)
{
    if (vertex_count == 0)
        return true;
    if (remap == nullptr || (face_count > 0 && indices == nullptr) ||
        !indices_in_range(indices, face_count * 3, vertex_count))
        return false;
    std::size_t used =
        meshopt_optimizeVertexFetchRemap(remap, indices, face_count * 3, vertex_count);
    // Unused vertices are left unnumbered by the optimiser; they keep their order at the end.
    for (std::size_t v = 0; v < vertex_count; ++v)
        if (remap[v] == ~0u)
            remap[v] = std::uint32_t(used++);
    return true;
}
