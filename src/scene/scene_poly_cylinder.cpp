#include <ixocore/scene/scene_poly_cylinder.h>

#include "scene/primitive_device.h"

#include <ixocore/core/string.h>
#include <ixocore/platform/plib.h>
#include <ixocore/scene/scene.h>

#include <algorithm>
#include <cmath>
#include <cstring>

IXO_TYPIFIED_DEFINE(ixo_scene_poly_cylinder, IXO_TEXT("Polycylinder Scene Object"))

namespace
{
using ixo_primitive::drop;
using ixo_primitive::share;

using color = ixo_vector4<unsigned char>;
using v3 = ixo_vector3<float>;

constexpr DWORD vertex_fvf = D3DFVF_XYZ | D3DFVF_NORMAL | D3DFVF_DIFFUSE;
constexpr float pi = 3.14159274f;
constexpr unsigned char wall_alpha = 200;
constexpr float widest_gap = 45;

struct record
{
    float radius;
    float angle;
    color c;
};

// Radius between two records: a cubic Bernstein blend with the end values doubled, so the
// profile leaves and reaches each record flat.
float blend(float ri, float rj, float t)
{
    float const s = 1 - t;
    return ri * s * s * s + 3 * ri * s * s * t + 3 * rj * s * t * t + rj * t * t * t;
}

color mix(const color& a, const color& b, float t, unsigned char alpha)
{
    color c(0, 0, 0, alpha);
    for (int i = 0; i < 3; ++i)
        c[i] = (unsigned char)(float(a[i]) + (float(b[i]) - float(a[i])) * t);
    return c;
}

// The device reads a vertex colour as one D3DCOLOR: blue, green, red, alpha in memory.
color device_order(const color& c)
{
    return color(c[2], c[1], c[0], c[3]);
}

// The samples as records sorted by angle in [0, 360). Samples with a non-finite angle or
// radius are left out; of samples at the same angle the first given is kept, since a
// profile cannot take two radii at one angle.
std::vector<record> sorted_records(const std::vector<float>& angles,
                                   const std::vector<float>& radii,
                                   const std::vector<color>& colors)
{
    std::vector<record> r;
    r.reserve(angles.size());
    for (std::size_t i = 0; i < angles.size(); ++i)
    {
        if (!std::isfinite(angles[i]) || !std::isfinite(radii[i]))
            continue;
        float a = std::fmod(angles[i], 360.0f);
        if (a < 0)
            a += 360;
        if (a >= 360)
            a = 0;
        r.push_back({radii[i], a, colors[i]});
    }
    auto by_angle = [](const record& x, const record& y) { return x.angle < y.angle; };
    std::stable_sort(r.begin(), r.end(), by_angle);
    r.erase(std::unique(r.begin(), r.end(),
                        [](const record& x, const record& y) { return x.angle == y.angle; }),
            r.end());
    return r;
}

// Gaps wider than 45 degrees get evenly spaced records so the interpolated profile cannot
// swing far from the samples across them.
std::vector<record> fill_gaps(const std::vector<record>& r)
{
    std::vector<record> out(r);
    std::size_t const n = r.size();
    for (std::size_t i = 0; i < n; ++i)
    {
        record const& a = r[i];
        record const& b = r[(i + 1) % n];
        float aj = b.angle;
        if (aj < a.angle)
            aj += 360;
        float const gap = std::abs(aj - a.angle);
        if (!(gap > widest_gap))
            continue;
        int const k = std::max(1, int(gap / widest_gap + 0.5f));
        for (int m = 1; m <= k; ++m)
        {
            float const t = float(m) / float(k + 1);
            float angle = a.angle + float(m) * (aj - a.angle) / float(k + 1);
            if (angle > 360)
                angle -= 360;
            out.push_back({blend(a.radius, b.radius, t), angle, mix(a.c, b.c, t, a.c[3])});
        }
    }
    std::stable_sort(out.begin(), out.end(),
                     [](const record& x, const record& y) { return x.angle < y.angle; });
    return out;
}

// The closed quadratic profile of radius against angle through all records; false when it
// cannot be made (records too close for the interpolation to separate them).
bool profile_curve(const std::vector<record>& r, PLib::NurbsCurve<float, 3>& curve)
{
    int const m = int(r.size());
    PLib::Vector<PLib::HPoint_nD<float, 3>> points(m + 1);
    PLib::Vector<float> params(m + 1);
    for (int k = 0; k < m; ++k)
    {
        points[k] = PLib::HPoint_nD<float, 3>(r[std::size_t(k)].radius, 0, 0, 1);
        params[k] = (r[std::size_t(k)].angle - r[0].angle) / 360;
    }
    points[m] = points[0];
    params[m] = 1;
    PLib::Vector<float> knots;
    return PLib::knotAveragingClosed(params, 2, knots) &&
           curve.globalInterpClosedH(points, params, knots, 2);
}

IDirect3DVertexBuffer9* make_vertex_buffer(IDirect3DDevice9* device,
                                           const std::vector<ixo_poly_cylinder_vertex>& v)
{
    IDirect3DVertexBuffer9* vb = nullptr;
    UINT const bytes = UINT(v.size() * sizeof(ixo_poly_cylinder_vertex));
    if (FAILED(device->CreateVertexBuffer(bytes, 0, vertex_fvf, D3DPOOL_DEFAULT, &vb, nullptr)))
        return nullptr;
    void* data = nullptr;
    if (FAILED(vb->Lock(0, 0, &data, 0)))
    {
        vb->Release();
        return nullptr;
    }
    std::memcpy(data, v.data(), bytes);
    vb->Unlock();
    return vb;
}

IDirect3DIndexBuffer9* make_index_buffer(IDirect3DDevice9* device, const std::vector<UINT>& idx)
{
    IDirect3DIndexBuffer9* ib = nullptr;
    UINT const bytes = UINT(idx.size() * sizeof(UINT));
    if (FAILED(device->CreateIndexBuffer(bytes, 0, D3DFMT_INDEX32, D3DPOOL_DEFAULT, &ib, nullptr)))
        return nullptr;
    void* data = nullptr;
    if (FAILED(ib->Lock(0, 0, &data, 0)))
    {
        ib->Release();
        return nullptr;
    }
    std::memcpy(data, idx.data(), bytes);
    ib->Unlock();
    return ib;
}
} // namespace

static_assert(sizeof(ixo_poly_cylinder_vertex) == 28, "the device reads 28-byte vertices");

ixo_poly_cylinder_vertex::ixo_poly_cylinder_vertex()
    : position(0, 0, 0), normal(0, 0, 0), color(0, 0, 0, 0)
{
}
ixo_poly_cylinder_vertex::ixo_poly_cylinder_vertex(const ixo_vector3<float>& p,
                                                   const ixo_vector3<float>& n,
                                                   const ixo_vector4<unsigned char>& c)
    : position(p), normal(n), color(c)
{
}
ixo_poly_cylinder_vertex::ixo_poly_cylinder_vertex(const ixo_poly_cylinder_vertex& other) = default;
ixo_poly_cylinder_vertex&
ixo_poly_cylinder_vertex::operator=(const ixo_poly_cylinder_vertex& other) = default;
ixo_poly_cylinder_vertex::~ixo_poly_cylinder_vertex() = default;

ixo_object_ptr<ixo_scene_poly_cylinder> ixo_scene_poly_cylinder::create(float height,
                                                                        float thickness)
{
    return new ixo_scene_poly_cylinder(height, thickness);
}

ixo_scene_poly_cylinder::ixo_scene_poly_cylinder(float height, float thickness)
    : height_(height), thickness_(thickness)
{
}

ixo_scene_poly_cylinder::ixo_scene_poly_cylinder(const ixo_scene_poly_cylinder& other)
    : ixo_scene_object(other), bounds_(other.bounds_), height_(other.height_),
      thickness_(other.thickness_), angles_(other.angles_), radii_(other.radii_),
      colors_(other.colors_), smooth_ids_(other.smooth_ids_), smooth_(other.smooth_),
      vertex_count_(other.vertex_count_), smooth_primitives_(other.smooth_primitives_),
      polygon_primitives_(other.polygon_primitives_)
{
    share_buffers(other);
}

ixo_scene_poly_cylinder& ixo_scene_poly_cylinder::operator=(const ixo_scene_poly_cylinder& other)
{
    if (this == &other)
        return *this;
    ixo_scene_object::operator=(other);
    bounds_ = other.bounds_;
    height_ = other.height_;
    thickness_ = other.thickness_;
    angles_ = other.angles_;
    radii_ = other.radii_;
    colors_ = other.colors_;
    smooth_ids_ = other.smooth_ids_;
    smooth_ = other.smooth_;
    vertex_count_ = other.vertex_count_;
    smooth_primitives_ = other.smooth_primitives_;
    polygon_primitives_ = other.polygon_primitives_;
    share_buffers(other);
    return *this;
}

ixo_scene_poly_cylinder::~ixo_scene_poly_cylinder()
{
    release_buffers();
}

void ixo_scene_poly_cylinder::share_buffers(const ixo_scene_poly_cylinder& other)
{
    share(smooth_indices_, other.smooth_indices_);
    share(polygon_indices_, other.polygon_indices_);
    for (int w = 0; w < 4; ++w)
        share(walls_[w], other.walls_[w]);
}

void ixo_scene_poly_cylinder::release_buffers()
{
    drop(smooth_indices_);
    drop(polygon_indices_);
    for (auto*& w : walls_)
        drop(w);
}

bool ixo_scene_poly_cylinder::need_buffers() const
{
    if (!smooth_indices_ || !polygon_indices_)
        return true;
    for (auto* w : walls_)
        if (!w)
            return true;
    return false;
}

void ixo_scene_poly_cylinder::discard_geometry()
{
    release_buffers();
    // A shadow map drawn from the old shape no longer holds.
    if (ixo_object_ptr<ixo_scene> scene = get_scene())
        scene->touch();
}

void ixo_scene_poly_cylinder::set_height(float height)
{
    height_ = height;
    discard_geometry();
}

void ixo_scene_poly_cylinder::set_thickness(float thickness)
{
    thickness_ = thickness;
    discard_geometry();
}

bool ixo_scene_poly_cylinder::set_data_count(int n)
{
    if (n > max_data_count)
        return false;
    std::size_t const size = n > 0 ? std::size_t(n) : 0;
    angles_.resize(size, 0.0f);
    radii_.resize(size, 0.0f);
    colors_.resize(size, color(0, 0, 0, 0));
    discard_geometry();
    return true;
}

bool ixo_scene_poly_cylinder::set_data(int n, const float* angles, const float* radii,
                                       const ixo_vector4<unsigned char>* colors)
{
    if (n > max_data_count || (n > 0 && (!angles || !radii || !colors)))
        return false;
    set_data_count(n);
    for (int i = 0; i < n; ++i)
    {
        angles_[std::size_t(i)] = angles[i];
        radii_[std::size_t(i)] = radii[i];
        colors_[std::size_t(i)] = colors[i];
    }
    update_buffers();
    return true;
}

float ixo_scene_poly_cylinder::get_angle(int i) const
{
    return i >= 0 && i < get_data_count() ? angles_[std::size_t(i)] : 0.0f;
}

void ixo_scene_poly_cylinder::set_angle(int i, float degrees)
{
    if (i < 0 || i >= get_data_count())
        return;
    angles_[std::size_t(i)] = degrees;
    discard_geometry();
}

float ixo_scene_poly_cylinder::get_radius(int i) const
{
    return i >= 0 && i < get_data_count() ? radii_[std::size_t(i)] : 0.0f;
}

void ixo_scene_poly_cylinder::set_radius(int i, float radius)
{
    if (i < 0 || i >= get_data_count())
        return;
    radii_[std::size_t(i)] = radius;
    discard_geometry();
}

ixo_vector4<unsigned char> ixo_scene_poly_cylinder::get_color(int i) const
{
    return i >= 0 && i < get_data_count() ? colors_[std::size_t(i)] : color(0, 0, 0, 0);
}

void ixo_scene_poly_cylinder::set_color(int i, const ixo_vector4<unsigned char>& c)
{
    if (i < 0 || i >= get_data_count())
        return;
    colors_[std::size_t(i)] = c;
    discard_geometry();
}

void ixo_scene_poly_cylinder::set_smooth(bool smooth)
{
    if (smooth_ == smooth)
        return;
    smooth_ = smooth;
    if (ixo_object_ptr<ixo_scene> scene = get_scene())
        scene->touch();
}

const ixo_vector3<float>* ixo_scene_poly_cylinder::get_smooth_id_array() const
{
    return smooth_ids_.empty() ? nullptr : smooth_ids_.data();
}

int ixo_scene_poly_cylinder::get_smooth_id_array_size() const
{
    return int(smooth_ids_.size());
}

IDirect3DVertexBuffer9* ixo_scene_poly_cylinder::get_vertex_buffer(int wall) const
{
    return wall >= 0 && wall < 4 ? walls_[wall] : nullptr;
}

ixo_box3<float> ixo_scene_poly_cylinder::get_object_bounds() const
{
    return bounds_;
}

void ixo_scene_poly_cylinder::update_buffers()
{
    release_buffers();
    bounds_.clear();
    smooth_ids_.clear();
    vertex_count_ = smooth_primitives_ = polygon_primitives_ = 0;

    std::vector<record> r = sorted_records(angles_, radii_, colors_);
    std::size_t const n = r.size();
    if (n == 0)
        return;
    int const S = n == 1 ? 100 : n == 2 ? 50 : 25;
    if (n > 2)
        r = fill_gaps(r);
    std::size_t const m = r.size();
    PLib::NurbsCurve<float, 3> curve;
    // Should the interpolation fail, the blend of the one- and two-sample tubes still
    // gives a closed profile through every record.
    bool const nurbs = n > 2 && profile_curve(r, curve);

    std::size_t const steps = m * std::size_t(S);
    std::vector<ixo_poly_cylinder_vertex> walls[4];
    for (auto& w : walls)
        w.reserve(2 * steps);
    smooth_ids_.reserve(steps + 1);
    float const z0 = -height_ / 2;
    float const z1 = height_ / 2;
    for (std::size_t k = 0; k < m; ++k)
    {
        record const& a = r[k];
        record const& b = r[(k + 1) % m];
        float const a_next = (k + 1 == m) ? b.angle + 360 : b.angle;
        for (int j = 0; j < S; ++j)
        {
            float const t = float(j) / float(S);
            float const angle = a.angle + (a_next - a.angle) * t;
            float const radius = nurbs ? curve.pointAt((angle - r[0].angle) / 360).x()
                                       : blend(a.radius, b.radius, t);
            float const theta = angle * pi / 180;
            float const c = std::cos(theta);
            float const s = std::sin(theta);
            v3 const radial(c, -s, 0);
            v3 const in0(radius * c, -radius * s, z0), in1(radius * c, -radius * s, z1);
            float const outer = radius + thickness_;
            v3 const out0(outer * c, -outer * s, z0), out1(outer * c, -outer * s, z1);
            color const col = device_order(mix(a.c, b.c, t, wall_alpha));
            walls[0].emplace_back(in0, -radial, col);
            walls[0].emplace_back(in1, -radial, col);
            walls[1].emplace_back(out0, radial, col);
            walls[1].emplace_back(out1, radial, col);
            walls[2].emplace_back(in0, -ixo_z_axisf, col);
            walls[2].emplace_back(out0, -ixo_z_axisf, col);
            walls[3].emplace_back(in1, ixo_z_axisf, col);
            walls[3].emplace_back(out1, ixo_z_axisf, col);
            for (v3 const& p : {in0, in1, out0, out1})
                bounds_ += p;
            smooth_ids_.push_back(in1);
        }
    }
    smooth_ids_.push_back(smooth_ids_.front());

    // Strips closed by a final pair (0, 1) so each runs once round and meets itself.
    std::vector<UINT> smooth_idx, polygon_idx;
    smooth_idx.reserve(2 * steps + 2);
    for (std::size_t i = 0; i < steps; ++i)
    {
        smooth_idx.push_back(UINT(2 * i));
        smooth_idx.push_back(UINT(2 * i + 1));
    }
    for (std::size_t k = 0; k < m; ++k)
    {
        polygon_idx.push_back(UINT(2 * S * k));
        polygon_idx.push_back(UINT(2 * S * k + 1));
    }
    for (auto* idx : {&smooth_idx, &polygon_idx})
    {
        idx->push_back(0);
        idx->push_back(1);
    }
    vertex_count_ = int(2 * steps);
    smooth_primitives_ = int(smooth_idx.size()) - 2;
    polygon_primitives_ = int(polygon_idx.size()) - 2;

    IDirect3DDevice9* device = ixo_primitive::device();
    if (!device)
        return;
    for (int w = 0; w < 4; ++w)
        walls_[w] = make_vertex_buffer(device, walls[w]);
    smooth_indices_ = make_index_buffer(device, smooth_idx);
    polygon_indices_ = make_index_buffer(device, polygon_idx);
}

bool ixo_scene_poly_cylinder::draw_object(const ixo_scene_draw_data& d)
{
    IDirect3DDevice9* device = ixo_primitive::device();
    if (!device || angles_.empty())
        return true;
    if (need_buffers())
        update_buffers();
    if (need_buffers())
        return true;
    device->SetFVF(vertex_fvf);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
    device->SetIndices(smooth_ ? smooth_indices_ : polygon_indices_);
    int const primitives = smooth_ ? smooth_primitives_ : polygon_primitives_;
    ixo_primitive::draw_vertex_colored(
        device, d,
        [&]
        {
            for (auto* wall : walls_)
            {
                device->SetStreamSource(0, wall, 0, sizeof(ixo_poly_cylinder_vertex));
                device->DrawIndexedPrimitive(D3DPT_TRIANGLESTRIP, 0, 0, UINT(vertex_count_), 0,
                                             UINT(primitives));
            }
        });
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_CW);
    return true;
}

bool ixo_scene_poly_cylinder::pre_reset_object()
{
    release_buffers();
    return true;
}
