#include <ixocore/scene/scene_cylinder.h>

#include "primitive_device.h"

#include <ixocore/core/string.h>

IXO_TYPIFIED_DEFINE(ixo_scene_cylinder, IXO_TEXT("Cylinder"))

namespace
{
constexpr UINT slices = 72;
constexpr UINT stacks = 1;
} // namespace

ixo_object_ptr<ixo_scene_cylinder> ixo_scene_cylinder::create(float radius, float length)
{
    return new ixo_scene_cylinder(radius, length);
}

ixo_scene_cylinder::ixo_scene_cylinder(float radius, float length)
    : radius_(radius), length_(length)
{
    post_reset_object();
}

ixo_scene_cylinder::ixo_scene_cylinder(const ixo_scene_cylinder& other)
    : ixo_scene_object(other), radius_(other.radius_), length_(other.length_), mesh_(other.mesh_)
{
    if (mesh_)
        mesh_->AddRef();
}

ixo_scene_cylinder& ixo_scene_cylinder::operator=(const ixo_scene_cylinder& other)
{
    if (this == &other)
        return *this;
    ixo_scene_object::operator=(other);
    radius_ = other.radius_;
    length_ = other.length_;
    if (other.mesh_)
        other.mesh_->AddRef();
    release_mesh();
    mesh_ = other.mesh_;
    return *this;
}

ixo_scene_cylinder::~ixo_scene_cylinder()
{
    release_mesh();
}

void ixo_scene_cylinder::release_mesh()
{
    if (mesh_)
        mesh_->Release();
    mesh_ = nullptr;
}

ixo_box3<float> ixo_scene_cylinder::get_object_bounds() const
{
    ixo_vector3<float> const half(radius_, radius_, length_ / 2);
    return ixo_box3<float>(-half, half);
}

bool ixo_scene_cylinder::draw_object(const ixo_scene_draw_data& d)
{
    if (!mesh_)
        return true;
    ixo_primitive::draw_with_shadows(d, [this] { mesh_->DrawSubset(0); });
    return true;
}

bool ixo_scene_cylinder::pre_reset_object()
{
    release_mesh();
    return true;
}

bool ixo_scene_cylinder::post_reset_object()
{
    release_mesh();
    if (IDirect3DDevice9* device = ixo_primitive::device())
        if (FAILED(D3DXCreateCylinder(device, radius_, radius_, length_, slices, stacks, &mesh_,
                                      nullptr)))
            mesh_ = nullptr;
    return true;
}
