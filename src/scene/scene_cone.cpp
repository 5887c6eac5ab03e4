#include <ixocore/scene/scene_cone.h>

#include "primitive_device.h"

#include <ixocore/core/string.h>

IXO_TYPIFIED_DEFINE(ixo_scene_cone, IXO_TEXT("Cone"))

ID3DXMesh* ixo_scene_cone::m_mesh = nullptr;

ixo_object_ptr<ixo_scene_cone> ixo_scene_cone::create()
{
    return new ixo_scene_cone;
}

ixo_scene_cone::ixo_scene_cone()
{
    acquire_mesh();
}

ixo_scene_cone::ixo_scene_cone(const ixo_scene_cone& other) : ixo_scene_object(other)
{
    acquire_mesh();
}

ixo_scene_cone& ixo_scene_cone::operator=(const ixo_scene_cone& other)
{
    ixo_scene_object::operator=(other);
    return *this;
}

ixo_scene_cone::~ixo_scene_cone()
{
    release_mesh();
}

void ixo_scene_cone::acquire_mesh()
{
    ixo_primitive::acquire_shared_mesh(
        m_mesh, holds_mesh_,
        [](IDirect3DDevice9* device, ID3DXMesh** out)
        { return D3DXCreateCylinder(device, 1.0f, 0.0f, 1.0f, 72, 1, out, nullptr); });
}

void ixo_scene_cone::release_mesh()
{
    ixo_primitive::release_shared_mesh(m_mesh, holds_mesh_);
}

ixo_box3<float> ixo_scene_cone::get_object_bounds() const
{
    return ixo_box3<float>(ixo_vector3<float>(-1.0f, -1.0f, -0.5f),
                           ixo_vector3<float>(1.0f, 1.0f, 0.5f));
}

bool ixo_scene_cone::draw_object(const ixo_scene_draw_data&)
{
    if (m_mesh)
        m_mesh->DrawSubset(0);
    return true;
}

bool ixo_scene_cone::pre_reset_object()
{
    release_mesh();
    return true;
}

bool ixo_scene_cone::post_reset_object()
{
    acquire_mesh();
    return true;
}
