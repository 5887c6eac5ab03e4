// Scene object that draws an indexed mesh.

#include <ixocore/mesh/scene_indexed_mesh.h>

#include <ixocore/app/application.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/scene_draw_data.h>

IXO_TYPIFIED_DEFINE(ixo_scene_indexed_mesh, IXO_TEXT("Indexed Mesh Scene Object"))

ixo_scene_indexed_mesh::ixo_scene_indexed_mesh(ixo_object_ptr<ixo_indexed_mesh> mesh)
    : mesh_(std::move(mesh))
{
}

ixo_scene_indexed_mesh::ixo_scene_indexed_mesh(const ixo_scene_indexed_mesh& other)
    : ixo_scene_object(other), mesh_(other.mesh_), bounds_(other.bounds_)
{
}

ixo_scene_indexed_mesh& ixo_scene_indexed_mesh::operator=(const ixo_scene_indexed_mesh& other)
{
    if (this != &other)
    {
        ixo_scene_object::operator=(other);
        release_buffers();
        mesh_ = other.mesh_;
        bounds_ = other.bounds_;
    }
    return *this;
}

ixo_scene_indexed_mesh::~ixo_scene_indexed_mesh() = default;

ixo_object_ptr<ixo_scene_indexed_mesh>
ixo_scene_indexed_mesh::create(ixo_object_ptr<ixo_indexed_mesh> mesh)
{
    return ixo_object_ptr<ixo_scene_indexed_mesh>(new ixo_scene_indexed_mesh(std::move(mesh)));
}

ixo_object_ptr<ixo_indexed_mesh> ixo_scene_indexed_mesh::get_mesh() const
{
    return mesh_;
}

ixo_box3<float> ixo_scene_indexed_mesh::get_object_bounds() const
{
    if (bounds_.empty() && mesh_)
    {
        unsigned int n = mesh_->get_num_vertices();
        ixo_mesh_vertex const* v = mesh_->get_vertex_data();
        for (unsigned int i = 0; i < n; ++i)
            bounds_ += v[i].position;
    }
    return bounds_;
}

bool ixo_scene_indexed_mesh::draw_object(const ixo_scene_draw_data& d)
{
    if (!mesh_ || !ixo_application::instance())
        return true;
    IDirect3DDevice9* device = ixo_direct3d::get_device();
    if (!device)
        return true;
    // No index buffer for a mesh naming vertices it does not have (one read from an
    // archive may): it draws nothing.
    vertex_buffer_ = mesh_->get_vertex_buffer(device);
    index_buffer_ = mesh_->get_index_buffer(device);
    if (!vertex_buffer_ || !index_buffer_)
        return true;

    // Bound every time: planes, lines and sprites draw from streams of their own without
    // touching the index buffer, so a current index buffer says nothing about the stream.
    device->SetStreamSource(0, vertex_buffer_, 0, sizeof(ixo_mesh_vertex));
    device->SetFVF(D3DFVF_XYZ | D3DFVF_NORMAL);
    device->SetIndices(index_buffer_);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);

    ID3DXEffect* effect = ixo_direct3d::get_effect();
    bool in_pass = false;
    if (effect && d.do_draw_mapped_shadows())
    {
        UINT passes = 0;
        if (SUCCEEDED(effect->Begin(&passes, 0)))
        {
            if (SUCCEEDED(effect->BeginPass(0)))
                in_pass = true;
            else
                effect->End();
        }
    }
    device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 0, mesh_->get_num_vertices(), 0,
                                 mesh_->get_num_triangles());
    if (in_pass)
    {
        effect->EndPass();
        effect->End();
    }
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_CW);
    return true;
}

void ixo_scene_indexed_mesh::release_buffers()
{
    vertex_buffer_ = nullptr;
    index_buffer_ = nullptr;
}

bool ixo_scene_indexed_mesh::pre_reset_object()
{
    release_buffers();
    if (mesh_)
        mesh_->release_buffers();
    return true;
}
