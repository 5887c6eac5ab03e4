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

// The mesh's own count is the number of holders: the first one creates it, every later
// one adds a reference. A sphere holds at most one reference, so that one made while there
// was no device never gives back a reference it did not take.
void ixo_scene_sphere::acquire_mesh()
{
    if (holds_mesh_)
        return;
    if (m_mesh)
    {
        m_mesh->AddRef();
        holds_mesh_ = true;
        return;
    }
    IDirect3DDevice9* device = ixo_primitive::device();
    if (!device)
        return;
    if (FAILED(D3DXCreateSphere(device, 1.0f, 72, 36, &m_mesh, nullptr)))
    {
        m_mesh = nullptr;
        return;
    }
    holds_mesh_ = true;
}

void ixo_scene_sphere::release_mesh()
{
    if (!holds_mesh_)
        return;
    holds_mesh_ = false;
    if (m_mesh && m_mesh->Release() == 0)
        m_mesh = nullptr;
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
