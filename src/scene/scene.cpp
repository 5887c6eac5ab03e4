#include <ixocore/scene/scene.h>

#include <ixocore/app/application.h>
#include <ixocore/core/identifiable_object.h>
#include <ixocore/math/vector.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/platform/win32.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/light.h>
#include <ixocore/render/scene_draw_data.h>
#include <ixocore/scene/scene_object.h>

#include "render/view_link.h"

#include <algorithm>

namespace
{
IDirect3DDevice9* current_device()
{
    return ixo_application::instance() ? ixo_direct3d::get_device() : nullptr;
}

ID3DXEffect* current_effect()
{
    return ixo_application::instance() ? ixo_direct3d::get_effect() : nullptr;
}

// Lets the camera of the record's view put viewport, view, projection and head light on
// the device. A record without a view draws with what the caller put there.
bool initiate_view([[maybe_unused]] const ixo_scene_draw_data& d)
{
#if IXO_HAS_RENDER_VIEW
    ixo_object_ptr<ixo_render_view> const view = d.get_render_view();
    if (view)
    {
        auto const camera = view->get_camera();
        if (!camera)
            return false;
        return camera->initiate_draw();
    }
#endif
    return true;
}

// Each component times 255, truncated; alpha in the top byte, then red, green, blue.
D3DCOLOR pack_color(const ixo_vector4<float>& c)
{
    auto const byte = [](float v)
    { return static_cast<D3DCOLOR>(static_cast<int>(v * 255.0f)) & 0xFF; };
    return (byte(c[3]) << 24) | (byte(c[0]) << 16) | (byte(c[1]) << 8) | byte(c[2]);
}

D3DXMATRIX identity_matrix()
{
    D3DXMATRIX m;
    for (int i = 0; i < 4; ++i)
        m.m[i][i] = 1.0f;
    return m;
}

// The camera's head light writes the scene-light parameters too as it draws; it reaches
// the effect only through "g_headlightDiffuse", so every pass starts them at zero and a
// scene without lights is lit once, by the head light alone.
void clear_scene_light_parameters(ID3DXEffect* effect)
{
    if (!effect)
        return;
    D3DXVECTOR4 const zero(0.0f, 0.0f, 0.0f, 0.0f);
    effect->SetVector("g_lightPos", &zero);
    effect->SetVector("g_lightDiffuse", &zero);
    effect->SetVector("g_lightAmbient", &zero);
}
} // namespace

ixo_object_ptr<ixo_scene> ixo_scene::create()
{
    return new ixo_scene;
}

ixo_scene::ixo_scene() : root_(ixo_scene_object::create())
{
    root_->set_property(ixo_scene_object::in_foreground, true);
    root_->set_property(ixo_scene_object::in_background, true);
    root_->set_property(ixo_scene_object::inherit_color, true);
    root_->set_scene(this);
    cached_bounds_.clear();
}

ixo_scene::ixo_scene(const ixo_scene& other) : ixo_object(other)
{
    *this = other;
}

ixo_scene& ixo_scene::operator=(const ixo_scene& other)
{
    if (this == &other)
        return *this;
    root_ = other.root_;
    lights_ = other.lights_;
    full_update_ = other.full_update_;
    cached_bounds_ = other.cached_bounds_;
    last_render_time_ = other.last_render_time_;
    touch();
    return *this;
}

ixo_scene::~ixo_scene()
{
    // Only the scene the root belongs to takes the tree down; a copy sharing the root
    // leaves it. The link goes first so that no event names a scene being destroyed.
    if (root_ && root_->scene_ == this)
    {
        root_->set_scene(nullptr);
        root_->remove_all_children();
    }
}

ixo_object_ptr<ixo_scene_object> ixo_scene::get_root()
{
    return root_;
}

void ixo_scene::set_full_update(bool full)
{
    full_update_ = full;
}

bool ixo_scene::do_full_update() const
{
    return full_update_;
}

void ixo_scene::add_light(ixo_object_ptr<ixo_light> light)
{
    if (!light)
        return;
    lights_.push_back(std::move(light));
    touch();
}

void ixo_scene::remove_light(ixo_object_ptr<ixo_light> light)
{
    auto const it = std::find(lights_.begin(), lights_.end(), light);
    if (it == lights_.end())
        return;
    lights_.erase(it);
    touch();
}

void ixo_scene::remove_all_lights()
{
    lights_.clear();
    touch();
}

int ixo_scene::get_num_lights() const
{
    return static_cast<int>(lights_.size());
}

ixo_object_ptr<ixo_light> ixo_scene::get_light(int index) const
{
    if (index < 0 || index >= get_num_lights())
        return nullptr;
    return lights_[static_cast<std::size_t>(index)];
}

std::uint64_t ixo_scene::get_revision() const
{
    return revision_;
}

void ixo_scene::touch()
{
    ++revision_;
}

bool ixo_scene::pre_reset()
{
    return root_->pre_reset();
}

bool ixo_scene::post_reset()
{
    return root_->post_reset();
}

void ixo_scene::reset_cached_bounds()
{
    cached_bounds_.clear();
}

long ixo_scene::get_last_render_time()
{
    return last_render_time_;
}

ixo_box3<float> ixo_scene::get_bounds()
{
    if (!cached_bounds_.empty())
        return cached_bounds_;
    ixo_box3<float> const bounds = root_->get_bounds();
    if (bounds.empty())
        return ixo_box3<float>(ixo_vector3<float>(-10.0f, -10.0f, -10.0f),
                               ixo_vector3<float>(10.0f, 10.0f, 10.0f));
    cached_bounds_ = bounds;
    return cached_bounds_;
}

bool ixo_scene::draw(ixo_scene_draw_data& d)
{
    last_render_time_ = static_cast<long>(GetTickCount());
    if (d.do_mapping())
        return draw_mapping(d);
    if (d.do_mapping_shadows())
        return map_shadows(d);
    return draw_normal(d);
}

bool ixo_scene::draw_normal(ixo_scene_draw_data& d)
{
    IDirect3DDevice9* const device = current_device();
    if (!device || !initiate_view(d))
        return false;
    ID3DXEffect* const effect = current_effect();

    if (d.do_background() &&
        FAILED(device->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER | D3DCLEAR_STENCIL,
                             0xFFFFFFFF, 1.0f, 0)))
        return false;

    if (FAILED(device->BeginScene()))
        return false;
    device->SetRenderState(D3DRS_LIGHTING, TRUE);
    device->SetRenderState(D3DRS_AMBIENT, 0xFF202020);
    device->SetRenderState(D3DRS_ZENABLE, TRUE);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_CW);
    device->SetRenderState(D3DRS_NORMALIZENORMALS, TRUE);
    device->SetRenderState(D3DRS_ALPHABLENDENABLE, TRUE);
    device->SetRenderState(D3DRS_SPECULARENABLE, TRUE);
    device->SetRenderState(D3DRS_SPECULARMATERIALSOURCE, D3DMCS_MATERIAL);
    device->SetRenderState(D3DRS_SRCBLEND, D3DBLEND_SRCALPHA);
    device->SetRenderState(D3DRS_DESTBLEND, D3DBLEND_INVSRCALPHA);

    if (d.do_draw_mapped_shadows() && effect)
        effect->SetTechnique("MainTechnique");

    D3DXMATRIX const identity = identity_matrix();
    device->SetTransform(D3DTS_WORLD, &identity);

    // A failed pass ends the device scene all the same, so the device is never left inside
    // one.
    bool const ok = draw_passes(d, true);
    bool const ended = SUCCEEDED(device->EndScene());
    return ok && ended;
}

bool ixo_scene::draw_mapping(ixo_scene_draw_data& d)
{
    IDirect3DDevice9* const device = current_device();
    if (!device || !initiate_view(d))
        return false;
    ID3DXEffect* const effect = current_effect();

    if (FAILED(device->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER | D3DCLEAR_STENCIL,
                             pack_color(ixo_id_to_color(ixo_invalid_object_id)), 1.0f, 0)))
        return false;

    if (FAILED(device->BeginScene()))
        return false;
    // With only the emissive term lit, every pixel of an object is exactly its identifier's
    // colour.
    device->SetRenderState(D3DRS_LIGHTING, TRUE);
    device->SetRenderState(D3DRS_ALPHABLENDENABLE, FALSE);
    device->SetRenderState(D3DRS_COLORVERTEX, TRUE);
    device->SetRenderState(D3DRS_EMISSIVEMATERIALSOURCE, D3DMCS_MATERIAL);
    device->SetRenderState(D3DRS_AMBIENT, 0);
    device->SetRenderState(D3DRS_ZENABLE, TRUE);
    // The faces of the visible frame, whatever pass set the culling before.
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_CW);
    if (effect)
        effect->SetTechnique("MainTechnique");

    // No transparent pass: transparent objects cannot be picked.
    bool const ok = draw_passes(d, false);
    bool const ended = SUCCEEDED(device->EndScene());
    return ok && ended;
}

bool ixo_scene::draw_passes(ixo_scene_draw_data& d, bool transparent_pass)
{
    clear_scene_light_parameters(current_effect());
    bool ok = true;
    for (const auto& light : lights_)
        if (!light->draw(&d))
        {
            ok = false;
            break;
        }
    // Every light sets the shadow lookup matrix as it draws, but the map was drawn from the
    // first one: its matrix must be the one the objects look the map up with.
    if (ok && lights_.size() > 1 && lights_.front()->get_direct_light_enabled())
        lights_.front()->initiate_draw_shadows(&d);
    if (ok)
    {
        d.set_background(true);
        d.set_transparent(false);
        ok = root_->draw(d);
    }
    if (ok)
    {
        IDirect3DDevice9* const device = current_device();
        ok = device && SUCCEEDED(device->Clear(0, nullptr, D3DCLEAR_ZBUFFER, 0, 1.0f, 0));
    }
    if (ok)
    {
        d.set_background(false);
        d.set_foreground(true);
        d.set_transparent(false);
        ok = root_->draw(d);
    }
    if (ok && transparent_pass)
    {
        d.set_transparent(true);
        ok = root_->draw(d);
    }
    d.set_foreground(false);
    return ok;
}

bool ixo_scene::map_shadows(ixo_scene_draw_data& d)
{
    // Only the first light casts shadows.
    if (lights_.empty() || !lights_.front()->initiate_create_shadows(&d))
        return true;
    IDirect3DDevice9* const device = current_device();
    if (!device)
        return false;
    ID3DXEffect* const effect = current_effect();

    if (FAILED(device->BeginScene()))
        return false;
    device->SetRenderState(D3DRS_LIGHTING, TRUE);
    device->SetRenderState(D3DRS_ALPHABLENDENABLE, FALSE);
    device->SetRenderState(D3DRS_COLORVERTEX, TRUE);
    device->SetRenderState(D3DRS_EMISSIVEMATERIALSOURCE, D3DMCS_MATERIAL);
    device->SetRenderState(D3DRS_AMBIENT, 0);
    device->SetRenderState(D3DRS_ZENABLE, TRUE);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_CW);
    if (effect)
        effect->SetTechnique("ShadowTechnique");
    clear_scene_light_parameters(effect);
    // Whatever world matrix the last pass or host drawing left must not move the map.
    D3DXMATRIX const identity = identity_matrix();
    device->SetTransform(D3DTS_WORLD, &identity);

    // Every object draws inside the shadow technique's pass, those that otherwise draw on
    // the fixed function too: the map then holds light-space depth only, and nothing of
    // the lights and eye that the previous frame left on the device.
    UINT passes = 0;
    bool const in_pass = effect && SUCCEEDED(effect->Begin(&passes, 0));
    bool const in_technique = in_pass && SUCCEEDED(effect->BeginPass(0));

    // Objects without cast_shadow skip themselves in this pass.
    d.set_transparent(false);
    bool const ok = root_->draw(d);
    if (in_technique)
        effect->EndPass();
    if (in_pass)
        effect->End();
    bool const ended = SUCCEEDED(device->EndScene());
    return ok && ended;
}
