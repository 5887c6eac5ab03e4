#include <ixocore/scene/scene_box.h>

#include "primitive_device.h"

#include <ixocore/core/string.h>

IXO_TYPIFIED_DEFINE(ixo_scene_box, IXO_TEXT("Box"))

ixo_object_ptr<ixo_scene_box> ixo_scene_box::create(float width, float height, float depth)
{
    return new ixo_scene_box(width, height, depth);
}

ixo_scene_box::ixo_scene_box(float width, float height, float depth)
    : width_(width), height_(height), depth_(depth)
{
    post_reset_object();
}

ixo_scene_box::ixo_scene_box(const ixo_scene_box& other)
    : ixo_scene_object(other), width_(other.width_), height_(other.height_), depth_(other.depth_),
      mesh_(other.mesh_)
{
    if (mesh_)
        mesh_->AddRef();
}

ixo_scene_box& ixo_scene_box::operator=(const ixo_scene_box& other)
{
    if (this == &other)
        return *this;
    ixo_scene_object::operator=(other);
    width_ = other.width_;
    height_ = other.height_;
    depth_ = other.depth_;
    if (other.mesh_)
        other.mesh_->AddRef();
    release_mesh();
    mesh_ = other.mesh_;
    return *this;
}

ixo_scene_box::~ixo_scene_box()
{
    release_mesh();
}

void ixo_scene_box::release_mesh()
{
    if (mesh_)
        mesh_->Release();
    mesh_ = nullptr;
}

ixo_box3<float> ixo_scene_box::get_object_bounds() const
{
    ixo_vector3<float> const half(width_ / 2, height_ / 2, depth_ / 2);
    return ixo_box3<float>(-half, half);
}

bool ixo_scene_box::draw_object(const ixo_scene_draw_data& d)
{
    if (!mesh_)
        return true;
    ixo_primitive::draw_with_shadows(d, [this] { mesh_->DrawSubset(0); });
    return true;
}

bool ixo_scene_box::pre_reset_object()
{
    release_mesh();
    return true;
}

bool ixo_scene_box::post_reset_object()
{
    release_mesh();
    if (IDirect3DDevice9* device = ixo_primitive::device())
        if (FAILED(D3DXCreateBox(device, width_, height_, depth_, &mesh_, nullptr)))
            mesh_ = nullptr;
    return true;
}
