#include <ixocore/scene/scene_sphere.h>

#include "primitive_device.h"

#include <ixocore/core/string.h>

IXO_TYPIFIED_DEFINE(ixo_scene_sphere, IXO_TEXT("Sphere"))

ID3DXMesh* ixo_scene_sphere::m_mesh = nullptr;

ixo_object_ptr<ixo_scene_sphere> ixo_scene_sphere::create()
{
    return new ixo_scene_sphere;
}

ixo_scene_sphere::ixo_scene_sphere()
{
    acquire_mesh();
}

ixo_scene_sphere::ixo_scene_sphere(const ixo_scene_sphere& other) : ixo_scene_object(other)
{
    acquire_mesh();
}

ixo_scene_sphere& ixo_scene_sphere::operator=(const ixo_scene_sphere& other)
{
    ixo_scene_object::operator=(other);
    return *this;
}

ixo_scene_sphere::~ixo_scene_sphere()
{
    release_mesh();
}

void ixo_scene_sphere::acquire_mesh()
{
    ixo_primitive::acquire_shared_mesh(
        m_mesh, holds_mesh_,
        [](IDirect3DDevice9* device, ID3DXMesh** out)
        { return D3DXCreateSphere(device, 1.0f, 72, 36, out, nullptr); });
}

void ixo_scene_sphere::release_mesh()
{
    ixo_primitive::release_shared_mesh(m_mesh, holds_mesh_);
}

ixo_box3<float> ixo_scene_sphere::get_object_bounds() const
{
    return ixo_box3<float>(ixo_vector3<float>(-1.0f, -1.0f, -1.0f),
                           ixo_vector3<float>(1.0f, 1.0f, 1.0f));
}

bool ixo_scene_sphere::draw_object(const ixo_scene_draw_data&)
{
    if (m_mesh)
        m_mesh->DrawSubset(0);
    return true;
}

bool ixo_scene_sphere::pre_reset_object()
{
    release_mesh();
    return true;
}

bool ixo_scene_sphere::post_reset_object()
{
    acquire_mesh();
    return true;
}
