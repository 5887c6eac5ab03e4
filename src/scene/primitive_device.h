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
// the pass reads the shadow map, else on the device's fixed function.
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
} // namespace ixo_primitive
