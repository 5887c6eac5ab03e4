#pragma once
// What the primitive scene objects share about the device: reaching it only while an
// application holds one, and drawing inside the shared effect for passes that read the
// shadow map.

#include <ixocore/app/application.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/scene_draw_data.h>

namespace ixo_primitive
{
// The application's device, or null while there is no application or no device.
inline IDirect3DDevice9* device()
{
    return ixo_application::instance() ? ixo_direct3d::get_device() : nullptr;
}

inline ID3DXEffect* effect()
{
    return ixo_application::instance() ? ixo_direct3d::get_effect() : nullptr;
}

// Runs `draw` inside pass 0 of the effect's current technique when an effect exists and
// the pass reads the shadow map, else on the device's fixed function (or inside the pass
// that the caller has begun: the shadow-map pass draws everything through its technique).
template <typename F> void draw_with_shadows(const ixo_scene_draw_data& d, F&& draw)
{
    ID3DXEffect* fx = d.do_draw_mapped_shadows() ? effect() : nullptr;
    if (!fx)
    {
        draw();
        return;
    }
    UINT passes = 0;
    fx->Begin(&passes, 0);
    fx->BeginPass(0);
    draw();
    fx->EndPass();
    fx->End();
}

// Draws geometry whose vertices carry their own colours: those feed the diffuse term,
// except in the picking pass, where only the material's identifier colour may show.
template <typename F>
void draw_vertex_colored(IDirect3DDevice9* device, const ixo_scene_draw_data& d, F&& draw)
{
    if (d.do_mapping())
        device->SetRenderState(D3DRS_DIFFUSEMATERIALSOURCE, D3DMCS_MATERIAL);
    draw_with_shadows(d, draw);
    if (d.do_mapping())
        device->SetRenderState(D3DRS_DIFFUSEMATERIALSOURCE, D3DMCS_COLOR1);
}

// A class-wide mesh whose own reference count is the number of objects holding it: the
// first holder creates it with `make(device, &mesh)`, every later one adds a reference.
// An object holds at most one reference (`holds`), so one made while there was no device
// never gives back a reference it did not take.
template <typename Make> void acquire_shared_mesh(ID3DXMesh*& mesh, bool& holds, Make&& make)
{
    if (holds)
        return;
    if (mesh)
    {
        mesh->AddRef();
        holds = true;
        return;
    }
    IDirect3DDevice9* dev = device();
    if (!dev)
        return;
    if (FAILED(make(dev, &mesh)))
    {
        mesh = nullptr;
        return;
    }
    holds = true;
}

// Gives back the holder's reference; the mesh goes with the last one.
inline void release_shared_mesh(ID3DXMesh*& mesh, bool& holds)
{
    if (!holds)
        return;
    holds = false;
    if (mesh && mesh->Release() == 0)
        mesh = nullptr;
}

// Releases a device resource and forgets it.
template <typename B> void drop(B*& buffer)
{
    if (buffer)
        buffer->Release();
    buffer = nullptr;
}

// Holds another owner's resource too (drawing data shared between objects of one shape).
template <typename B> void share(B*& mine, B* theirs)
{
    if (theirs)
        theirs->AddRef();
    drop(mine);
    mine = theirs;
}
} // namespace ixo_primitive
