#include <ixocore/scene/scene_plane.h>

#include "primitive_device.h"

#include <ixocore/core/string.h>

#include <cstring>

IXO_TYPIFIED_DEFINE(ixo_scene_plane, IXO_TEXT("Plane"))

namespace
{
// Position and normal, 24 bytes.
constexpr DWORD plane_fvf = D3DFVF_XYZ | D3DFVF_NORMAL;
constexpr UINT vertex_size = 24;
constexpr UINT vertex_count = 4;

// The patch's corners in strip order: (-u, -v), (+u, -v), (-u, +v), (+u, +v).
void corners(const ixo_plane<float>& plane, float width, float height, ixo_vector3<float> out[4])
{
    float const w = width / 2;
    float const h = height / 2;
    out[0] = plane.evaluate(ixo_vector2<float>(-w, -h));
    out[1] = plane.evaluate(ixo_vector2<float>(w, -h));
    out[2] = plane.evaluate(ixo_vector2<float>(-w, h));
    out[3] = plane.evaluate(ixo_vector2<float>(w, h));
}
} // namespace

ixo_object_ptr<ixo_scene_plane> ixo_scene_plane::create(const ixo_plane<float>& plane, float width,
                                                        float height)
{
    return new ixo_scene_plane(plane, width, height);
}

ixo_scene_plane::ixo_scene_plane(const ixo_plane<float>& plane, float width, float height)
    : plane_(plane), width_(width), height_(height)
{
    build_buffer();
}

ixo_scene_plane::ixo_scene_plane(const ixo_scene_plane& other)
    : ixo_scene_object(other), plane_(other.plane_), width_(other.width_), height_(other.height_),
      occupy_space_(other.occupy_space_), buffer_(other.buffer_)
{
    if (buffer_)
        buffer_->AddRef();
}

ixo_scene_plane& ixo_scene_plane::operator=(const ixo_scene_plane& other)
{
    if (this == &other)
        return *this;
    ixo_scene_object::operator=(other);
    plane_ = other.plane_;
    width_ = other.width_;
    height_ = other.height_;
    occupy_space_ = other.occupy_space_;
    if (other.buffer_)
        other.buffer_->AddRef();
    release_buffer();
    buffer_ = other.buffer_;
    return *this;
}

ixo_scene_plane::~ixo_scene_plane()
{
    release_buffer();
}

void ixo_scene_plane::set_occupy_space(bool occupy)
{
    occupy_space_ = occupy;
}

void ixo_scene_plane::release_buffer()
{
    if (buffer_)
        buffer_->Release();
    buffer_ = nullptr;
}

void ixo_scene_plane::build_buffer()
{
    release_buffer();
    IDirect3DDevice9* device = ixo_primitive::device();
    if (!device || FAILED(device->CreateVertexBuffer(vertex_count * vertex_size, 0, plane_fvf,
                                                     D3DPOOL_DEFAULT, &buffer_, nullptr)))
    {
        buffer_ = nullptr;
        return;
    }
    ixo_vector3<float> p[vertex_count];
    corners(plane_, width_, height_, p);
    ixo_vector3<float> const n = plane_.normal();
    float vertices[vertex_count][6];
    for (UINT i = 0; i < vertex_count; ++i)
    {
        vertices[i][0] = p[i][0];
        vertices[i][1] = p[i][1];
        vertices[i][2] = p[i][2];
        vertices[i][3] = n[0];
        vertices[i][4] = n[1];
        vertices[i][5] = n[2];
    }
    void* data = nullptr;
    if (FAILED(buffer_->Lock(0, 0, &data, 0)))
    {
        release_buffer();
        return;
    }
    std::memcpy(data, vertices, sizeof vertices);
    buffer_->Unlock();
}

ixo_box3<float> ixo_scene_plane::get_object_bounds() const
{
    ixo_box3<float> box;
    if (!occupy_space_)
        return box;
    ixo_vector3<float> p[vertex_count];
    corners(plane_, width_, height_, p);
    for (auto const& corner : p)
        box += corner;
    return box;
}

bool ixo_scene_plane::draw_object(const ixo_scene_draw_data& d)
{
    IDirect3DDevice9* device = ixo_primitive::device();
    if (!buffer_ || !device)
        return true;
    device->SetFVF(plane_fvf);
    device->SetStreamSource(0, buffer_, 0, vertex_size);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_CW);
    ixo_primitive::draw_with_shadows(
        d, [device] { device->DrawPrimitive(D3DPT_TRIANGLESTRIP, 0, vertex_count - 2); });
    return true;
}

bool ixo_scene_plane::pre_reset_object()
{
    release_buffer();
    return true;
}

bool ixo_scene_plane::post_reset_object()
{
    build_buffer();
    return true;
}
