#include <ixocore/scene/machine/scene_shaft.h>

#include "scene/primitive_device.h"

#include <ixocore/core/string.h>
#include <ixocore/scene/scene.h>

#include <cmath>
#include <cstring>

IXO_TYPIFIED_DEFINE(ixo_scene_shaft, IXO_TEXT("Shaft"))

namespace
{
using ixo_primitive::drop;
using ixo_primitive::share;

constexpr DWORD vertex_fvf = D3DFVF_XYZ | D3DFVF_NORMAL | D3DFVF_DIFFUSE;
constexpr float pi = 3.14159274f;
} // namespace

ixo_object_ptr<ixo_scene_shaft>
ixo_scene_shaft::create(unsigned int sectors, unsigned int subdivisions, unsigned int rings)
{
    unsigned long long const vertices =
        (unsigned long long)rings * sectors * ((unsigned long long)subdivisions + 1);
    if (vertices > max_vertices)
        return nullptr;
    return new ixo_scene_shaft(sectors, subdivisions, rings);
}

ixo_scene_shaft::ixo_scene_shaft(unsigned int sectors, unsigned int subdivisions,
                                 unsigned int rings)
    : ring_infos_(rings, ixo_vector3<float>(0, 0, 0)), sectors_(sectors),
      subdivisions_(subdivisions)
{
    recreate_buffers();
}

ixo_scene_shaft::ixo_scene_shaft(const ixo_scene_shaft& other)
    : ixo_scene_object(other), ring_infos_(other.ring_infos_), radius_(other.radius_),
      length_(other.length_), rotation_angle_(other.rotation_angle_), sectors_(other.sectors_),
      subdivisions_(other.subdivisions_), valid_(other.valid_), bounds_valid_(other.bounds_valid_),
      bounds_(other.bounds_), xy_scale_(other.xy_scale_), torsion_scale_(other.torsion_scale_)
{
    share(vertex_buffer_, other.vertex_buffer_);
    share(index_buffer_, other.index_buffer_);
}

ixo_scene_shaft& ixo_scene_shaft::operator=(const ixo_scene_shaft& other)
{
    if (this == &other)
        return *this;
    ixo_scene_object::operator=(other);
    ring_infos_ = other.ring_infos_;
    radius_ = other.radius_;
    length_ = other.length_;
    rotation_angle_ = other.rotation_angle_;
    sectors_ = other.sectors_;
    subdivisions_ = other.subdivisions_;
    valid_ = other.valid_;
    bounds_valid_ = other.bounds_valid_;
    bounds_ = other.bounds_;
    xy_scale_ = other.xy_scale_;
    torsion_scale_ = other.torsion_scale_;
    share(vertex_buffer_, other.vertex_buffer_);
    share(index_buffer_, other.index_buffer_);
    return *this;
}

ixo_scene_shaft::~ixo_scene_shaft()
{
    release_buffers();
}

void ixo_scene_shaft::changed()
{
    valid_ = false;
    bounds_valid_ = false;
    // A shadow map drawn from the old shape no longer holds.
    if (ixo_object_ptr<ixo_scene> scene = get_scene())
        scene->touch();
}

bool ixo_scene_shaft::set_ring_info(unsigned int ring, float torsion, float dx, float dy)
{
    if (ring >= ring_infos_.size())
        return false;
    ring_infos_[ring] = ixo_vector3<float>(torsion, dx, dy);
    changed();
    return true;
}

ixo_vector3<float> ixo_scene_shaft::get_ring_info(unsigned int ring) const
{
    return ring < ring_infos_.size() ? ring_infos_[ring] : ixo_vector3<float>(0, 0, 0);
}

void ixo_scene_shaft::set_radius(float radius)
{
    radius_ = radius;
    changed();
}

void ixo_scene_shaft::set_length(float length)
{
    length_ = length;
    changed();
}

void ixo_scene_shaft::set_rotation_angle(float degrees)
{
    rotation_angle_ = degrees;
    changed();
}

void ixo_scene_shaft::set_xy_scale(float scale)
{
    xy_scale_ = scale;
    changed();
}

void ixo_scene_shaft::set_torsion_scale(float scale)
{
    torsion_scale_ = scale;
    changed();
}

unsigned int ixo_scene_shaft::get_vertex_count() const
{
    return get_ring_count() * sectors_ * (subdivisions_ + 1);
}

unsigned int ixo_scene_shaft::get_triangle_count() const
{
    unsigned int const rings = get_ring_count();
    return rings < 2 ? 0 : 2 * (rings - 1) * sectors_ * subdivisions_;
}

std::vector<ixo_poly_cylinder_vertex> ixo_scene_shaft::get_vertices() const
{
    std::vector<ixo_poly_cylinder_vertex> v;
    unsigned int const rings = get_ring_count();
    unsigned int const a = sectors_;
    unsigned int const b = subdivisions_;
    if (a == 0 || b == 0)
        return v;
    v.reserve(get_vertex_count());
    // A single ring stays at z = 0 rather than dividing the length by zero.
    float const dz = rings > 1 ? length_ / float(rings - 1) : 0.0f;
    float const dtheta = 2 * pi / float(a * b);
    for (unsigned int r = 0; r < rings; ++r)
    {
        ixo_vector3<float> const& info = ring_infos_[r];
        ixo_vector3<float> const offset(info[1] * radius_ * xy_scale_,
                                        info[2] * radius_ * xy_scale_, 0);
        float const turn = (info[0] * torsion_scale_ + rotation_angle_) * pi / 180;
        for (unsigned int s = 0; s < a; ++s)
        {
            unsigned char const c = (s % 2) ? 255 : 0;
            for (unsigned int k = 0; k <= b; ++k)
            {
                float const theta = turn + float(k) * dtheta + float(s * b) * dtheta;
                float const sn = std::sin(theta);
                float const cs = std::cos(theta);
                v.emplace_back(
                    ixo_vector3<float>(radius_ * sn, radius_ * cs, float(r) * dz) + offset,
                    ixo_vector3<float>(sn, cs, 0), ixo_vector4<unsigned char>(c, c, c, 255));
            }
        }
    }
    return v;
}

ixo_box3<float> ixo_scene_shaft::get_object_bounds() const
{
    if (!bounds_valid_)
    {
        bounds_.clear();
        for (auto const& v : get_vertices())
            bounds_ += v.position;
        bounds_valid_ = true;
    }
    return bounds_;
}

void ixo_scene_shaft::release_buffers()
{
    drop(vertex_buffer_);
    drop(index_buffer_);
}

void ixo_scene_shaft::recreate_buffers()
{
    if (vertex_buffer_ && index_buffer_)
        return;
    release_buffers();
    valid_ = false;
    IDirect3DDevice9* device = ixo_primitive::device();
    unsigned int const vertices = get_vertex_count();
    unsigned int const triangles = get_triangle_count();
    if (!device || vertices == 0 || triangles == 0)
        return;
    if (FAILED(device->CreateVertexBuffer(UINT(vertices * sizeof(ixo_poly_cylinder_vertex)), 0,
                                          vertex_fvf, D3DPOOL_DEFAULT, &vertex_buffer_, nullptr)))
    {
        vertex_buffer_ = nullptr;
        return;
    }
    if (FAILED(device->CreateIndexBuffer(UINT(triangles * 3 * sizeof(UINT)), 0, D3DFMT_INDEX32,
                                         D3DPOOL_DEFAULT, &index_buffer_, nullptr)))
    {
        index_buffer_ = nullptr;
        release_buffers();
        return;
    }
    void* data = nullptr;
    if (FAILED(index_buffer_->Lock(0, 0, &data, 0)))
    {
        release_buffers();
        return;
    }
    UINT* idx = static_cast<UINT*>(data);
    unsigned int const a = sectors_;
    unsigned int const b = subdivisions_;
    auto vertex = [a, b](unsigned int r, unsigned int s, unsigned int k)
    { return UINT(r * a * (b + 1) + s * (b + 1) + k); };
    for (unsigned int r = 0; r + 1 < get_ring_count(); ++r)
        for (unsigned int s = 0; s < a; ++s)
            for (unsigned int k = 0; k < b; ++k)
            {
                UINT const t[6] = {vertex(r, s, k),     vertex(r + 1, s, k),
                                   vertex(r, s, k + 1), vertex(r, s, k + 1),
                                   vertex(r + 1, s, k), vertex(r + 1, s, k + 1)};
                std::memcpy(idx, t, sizeof t);
                idx += 6;
            }
    index_buffer_->Unlock();
}

void ixo_scene_shaft::update_vertex_buffer()
{
    if (valid_ || !vertex_buffer_)
        return;
    valid_ = true;
    std::vector<ixo_poly_cylinder_vertex> const v = get_vertices();
    bounds_.clear();
    for (auto const& x : v)
        bounds_ += x.position;
    bounds_valid_ = true;
    void* data = nullptr;
    if (FAILED(vertex_buffer_->Lock(0, 0, &data, 0)))
        return;
    std::memcpy(data, v.data(), v.size() * sizeof(ixo_poly_cylinder_vertex));
    vertex_buffer_->Unlock();
}

bool ixo_scene_shaft::draw_object(const ixo_scene_draw_data& d)
{
    IDirect3DDevice9* device = ixo_primitive::device();
    if (!device)
        return true;
    recreate_buffers();
    update_vertex_buffer();
    if (!vertex_buffer_ || !index_buffer_)
        return true;
    device->SetFVF(vertex_fvf);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
    device->SetStreamSource(0, vertex_buffer_, 0, sizeof(ixo_poly_cylinder_vertex));
    device->SetIndices(index_buffer_);
    ixo_primitive::draw_vertex_colored(device, d,
                                       [&]
                                       {
                                           device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 0,
                                                                        get_vertex_count(), 0,
                                                                        get_triangle_count());
                                       });
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_CW);
    return true;
}

bool ixo_scene_shaft::pre_reset_object()
{
    release_buffers();
    return true;
}

bool ixo_scene_shaft::post_reset_object()
{
    recreate_buffers();
    return true;
}
