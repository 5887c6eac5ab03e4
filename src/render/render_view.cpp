#include <ixocore/render/render_view.h>

#include <ixocore/app/application.h>
#include <ixocore/core/identifiable_object.h>
#include <ixocore/events/event.h>
#include <ixocore/math/box.h>
#include <ixocore/platform/d3dx9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/light.h>
#include <ixocore/render/scene_draw_data.h>
#include <ixocore/render/view_commands.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>

#include <stb_image_write.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace
{
// Larger views are refused: the device cannot make surfaces that size (and the shadow map
// is twice as large again).
constexpr unsigned max_view_size = 8192;

// Turns redraw requests into paints of one view. The view owns the subscription and
// unsubscribes before it goes, so the plain pointer never dangles.
class ixo_render_view_request_redraw_handler : public ixo_event_handler
{
public:
    static ixo_object_ptr<ixo_event_handler> create(ixo_render_view* view)
    {
        return ixo_object_ptr<ixo_event_handler>(new ixo_render_view_request_redraw_handler(view));
    }

    void on_event(ixo_object_ptr<ixo_event>) override { view_->paint(); }

private:
    explicit ixo_render_view_request_redraw_handler(ixo_render_view* view) : view_(view) {}

    ixo_render_view* view_;
};

// Each component times 255, truncated toward zero; alpha in the top byte, then red, green,
// blue.
D3DCOLOR pack_color(const ixo_vector4<float>& c)
{
    auto const byte = [](float v)
    { return static_cast<D3DCOLOR>(static_cast<int>(v * 255.0f)) & 0xFFu; };
    return (byte(c[3]) << 24) | (byte(c[0]) << 16) | (byte(c[1]) << 8) | byte(c[2]);
}

template <typename T> void release_device_object(T*& p)
{
    if (p)
        p->Release();
    p = nullptr;
}

ixo_direct3d* app_direct3d()
{
    ixo_application* app = ixo_application::instance();
    // The application holds the device, so the plain pointer outlives the temporary.
    return app ? app->get_direct3d().get() : nullptr;
}

IDirect3DDevice9* device()
{
    return ixo_application::instance() ? ixo_direct3d::get_device() : nullptr;
}

ID3DXEffect* effect()
{
    return ixo_application::instance() ? ixo_direct3d::get_effect() : nullptr;
}

// The light-space view and projection of a light, one after the other, row-major.
std::array<float, 32> light_matrices(const ixo_light& light)
{
    std::array<float, 32> m{};
    light.get_shadow_view().array(m.data());
    light.get_shadow_projection().array(m.data() + 16);
    return m;
}
} // namespace

ixo_render_view::ixo_render_view()
    : camera_(ixo_camera_view::create()), overlay_(ixo_scene_object::create())
{
}

ixo_render_view::~ixo_render_view()
{
    detach();
    camera_ = nullptr;
    overlay_ = nullptr;
    remove_background_image();
}

void ixo_render_view::detach()
{
    if (!redraw_key_.is_empty())
    {
        if (ixo_object_ptr<ixo_event_manager> events = ixo_event_manager::get_app_event_manager())
            events->unsubscribe(redraw_key_);
        redraw_key_ = ixo_event_key();
    }
    d3d_release();
    scene_ = nullptr;
}

bool ixo_render_view::create_resources(unsigned width, unsigned height)
{
    d3d_release();
    IDirect3DDevice9* dev = device();
    if (!dev || width == 0 || height == 0 || width > max_view_size || height > max_view_size)
        return false;

    D3DPRESENT_PARAMETERS pp{};
    pp.BackBufferWidth = width;
    pp.BackBufferHeight = height;
    pp.BackBufferFormat = D3DFMT_A8R8G8B8;
    pp.BackBufferCount = 1;
    pp.MultiSampleType = D3DMULTISAMPLE_NONE;
    pp.MultiSampleQuality = 0;
    pp.SwapEffect = D3DSWAPEFFECT_DISCARD;
    pp.hDeviceWindow = window_;
    pp.Windowed = TRUE;
    pp.EnableAutoDepthStencil = FALSE;
    pp.AutoDepthStencilFormat = D3DFMT_D24S8;
    pp.Flags = 0;
    pp.FullScreen_RefreshRateInHz = 0;
    pp.PresentationInterval = D3DPRESENT_INTERVAL_DEFAULT;
    if (FAILED(dev->CreateAdditionalSwapChain(&pp, &swap_chain_)) || !swap_chain_)
        return false;
    if (FAILED(swap_chain_->GetBackBuffer(0, D3DBACKBUFFER_TYPE_MONO, &render_target_)) ||
        !render_target_)
        return false;
    if (FAILED(dev->CreateRenderTarget(width, height, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0,
                                       FALSE, &pick_target_, nullptr)) ||
        !pick_target_)
        return false;
    if (FAILED(dev->CreateOffscreenPlainSurface(width, height, D3DFMT_A8R8G8B8, D3DPOOL_SYSTEMMEM,
                                                &pick_surface_, nullptr)) ||
        !pick_surface_)
        return false;
    if (FAILED(dev->CreateDepthStencilSurface(width, height, D3DFMT_D24S8, D3DMULTISAMPLE_NONE, 0,
                                              TRUE, &depth_stencil_, nullptr)) ||
        !depth_stencil_)
        return false;

    viewport_.X = 0;
    viewport_.Y = 0;
    viewport_.Width = width;
    viewport_.Height = height;
    viewport_.MinZ = 0.0f;
    viewport_.MaxZ = 1.0f;

    // Without a shadow map the frames still draw; map_shadows then reports the failure.
    dev->CreateTexture(2 * width, 2 * height, 1, D3DUSAGE_RENDERTARGET, D3DFMT_R32F,
                       D3DPOOL_DEFAULT, &shadow_texture_, nullptr);
    dev->CreateDepthStencilSurface(2 * width, 2 * height, D3DFMT_D24S8, D3DMULTISAMPLE_NONE, 0,
                                   TRUE, &shadow_depth_, nullptr);

    camera_->resize(static_cast<int>(width), static_cast<int>(height));
    return true;
}

bool ixo_render_view::initialize(HWND window, unsigned width, unsigned height,
                                 ixo_object_ptr<ixo_scene> scene)
{
    window_ = window;
    scene_ = std::move(scene);
    if (!create_resources(width, height))
        return false;

    // Fitted at once, outside any undo history.
    ixo_view_all_command::create(ixo_object_ptr<ixo_render_view>(this), scene_)->execute();

    if (redraw_key_.is_empty())
    {
        if (ixo_object_ptr<ixo_event_manager> events = ixo_event_manager::get_app_event_manager())
            redraw_key_ = events->subscribe(ixo_event_request_redraw::create(),
                                            ixo_render_view_request_redraw_handler::create(this));
    }
    return true;
}

bool ixo_render_view::resize(unsigned width, unsigned height)
{
    if (!depth_stencil_ || !render_target_ || !swap_chain_ || !pick_target_ || !pick_surface_ ||
        !shadow_texture_ || !shadow_depth_)
        return false;
    if (width == 0 || height == 0 || width > max_view_size || height > max_view_size)
        return false;
    pick_unlock();
    create_resources(width, height);
    return true;
}

bool ixo_render_view::check_device()
{
    IDirect3DDevice9* dev = device();
    if (!dev)
        return false;
    if (dev->TestCooperativeLevel() == D3D_OK)
        return true;
    ixo_direct3d* d3d = app_direct3d();
    if (!d3d || !d3d->reset())
        return false;
    return dev->TestCooperativeLevel() != D3DERR_DEVICELOST;
}

bool ixo_render_view::paint()
{
    // Without its own surfaces the frame would land in whatever target another view left
    // current.
    if (!check_device() || !render_target_)
        return false;
    // The view must outlive the frame even if a handler drops the last reference.
    ixo_object_ptr<ixo_render_view> keep(this);

    bool const shadows = !shadow_mapping_ || map_shadows();
    bool const begun = begin_paint();

    bool drawn = false;
    if (scene_)
    {
        ixo_scene_draw_data d;
        d.set_render_view(keep);
        d.set_draw_mapped_shadows(shadow_mapping_);
        drawn = scene_->draw(d);
    }
    paint_overlay(false);
    bool const ended = end_paint();
    return shadows && begun && drawn && ended;
}

bool ixo_render_view::begin_paint()
{
    IDirect3DDevice9* dev = device();
    if (!dev || !render_target_)
        return false;
    dev->SetRenderTarget(0, render_target_);
    dev->SetDepthStencilSurface(depth_stencil_);
    dev->SetViewport(&viewport_);
    bool const cleared =
        SUCCEEDED(dev->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER | D3DCLEAR_STENCIL,
                             pack_color(background_color_), 1.0f, 0));

    if (background_texture_)
    {
        D3DSURFACE_DESC desc{};
        IDirect3DSurface9* picture = nullptr;
        if (SUCCEEDED(background_texture_->GetLevelDesc(0, &desc)) &&
            SUCCEEDED(background_texture_->GetSurfaceLevel(0, &picture)) && picture)
        {
            // Centred at its own size; an odd size puts the extra pixel right of (below)
            // the centre, and a picture larger than the view is squeezed into it.
            long const w = camera_->get_width();
            long const h = camera_->get_height();
            long const tw = static_cast<long>(desc.Width);
            long const th = static_cast<long>(desc.Height);
            RECT dest;
            dest.left = std::max(0L, w / 2 - tw / 2);
            dest.right = std::min(w, w / 2 + tw / 2 + tw % 2);
            dest.top = std::max(0L, h / 2 - th / 2);
            dest.bottom = std::min(h, h / 2 + th / 2 + th % 2);
            dev->StretchRect(picture, nullptr, render_target_, &dest, D3DTEXF_NONE);
            picture->Release();
        }
    }
    return cleared;
}

bool ixo_render_view::end_paint()
{
    if (!swap_chain_)
        return true;
    HRESULT const hr = swap_chain_->Present(nullptr, nullptr, nullptr, nullptr, 0);
    if (hr == D3DERR_DEVICELOST)
    {
        // The frame counts as shown; the reset rebuilds the resources for the next one.
        if (ixo_direct3d* d3d = app_direct3d())
            d3d->reset();
        return true;
    }
    if (FAILED(hr))
        return false;
    presented_ = true;
    return true;
}

bool ixo_render_view::paint_overlay(bool mapping)
{
    IDirect3DDevice9* dev = device();
    if (!dev || !overlay_)
        return false;
    ixo_box3<float> b = overlay_->get_bounds();
    // An empty overlay has nothing to frame.
    if (b.empty())
        return true;
    b.grow(0.02f * b.extents().length());
    ixo_vector3<float> const e = b.extents();
    ixo_vector3<float> const m = b.middle();
    if (!(e[0] > 0.0f) || !(e[1] > 0.0f))
        return true;

    D3DVIEWPORT9 corner{};
    if (e[1] < e[0])
    {
        corner.Width = 200;
        corner.Height = static_cast<DWORD>(e[1] * 200.0f / e[0] + 1.0f);
    }
    else
    {
        corner.Height = 200;
        corner.Width = static_cast<DWORD>(e[0] * 200.0f / e[1] + 1.0f);
    }
    int const view_width = camera_->get_width();
    corner.X = view_width > static_cast<int>(corner.Width)
                   ? static_cast<DWORD>(view_width) - corner.Width
                   : 0;
    corner.Y = 0;
    corner.MinZ = 0.0f;
    corner.MaxZ = 1.0f;
    dev->SetViewport(&corner);

    D3DXMATRIX projection;
    D3DXMatrixOrthoRH(&projection, e[0], e[1], 0.0f, 1.0f);
    D3DXMATRIX view;
    D3DXMatrixTranslation(&view, -m[0], -m[1], 0.0f);
    dev->SetTransform(D3DTS_PROJECTION, &projection);
    dev->SetTransform(D3DTS_VIEW, &view);
    if (ID3DXEffect* fx = effect())
    {
        fx->SetMatrix("g_mProj", &projection);
        fx->SetMatrix("g_mView", &view);
    }

    dev->BeginScene();
    ixo_scene_draw_data d;
    d.set_mapping(mapping);
    d.set_render_view(ixo_object_ptr<ixo_render_view>(this));
    bool const drawn = overlay_->draw(d);
    dev->EndScene();
    return drawn;
}

bool ixo_render_view::map()
{
    if (!check_device())
        return false;
    IDirect3DDevice9* dev = device();
    if (!pick_target_ || !pick_surface_)
        return false;
    ixo_object_ptr<ixo_render_view> keep(this);
    // A locked image cannot be written.
    pick_unlock();

    bool ok = SUCCEEDED(dev->SetRenderTarget(0, pick_target_));
    ok = SUCCEEDED(dev->SetDepthStencilSurface(depth_stencil_)) && ok;
    ok = SUCCEEDED(dev->SetViewport(&viewport_)) && ok;
    ok = SUCCEEDED(dev->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER | D3DCLEAR_STENCIL,
                              pack_color(ixo_id_to_color(ixo_invalid_object_id)), 1.0f, 0)) &&
         ok;
    if (scene_)
    {
        ixo_scene_draw_data d;
        d.set_render_view(keep);
        d.set_mapping(true);
        ok = scene_->draw(d) && ok;
    }
    else
        ok = false;
    // The overlay can be picked too.
    ok = paint_overlay(true) && ok;
    ok = SUCCEEDED(dev->GetRenderTargetData(pick_target_, pick_surface_)) && ok;
    return ok;
}

void ixo_render_view::pick_lock()
{
    pick_unlock();
    D3DSURFACE_DESC desc{};
    if (pick_surface_ && SUCCEEDED(pick_surface_->GetDesc(&desc)) &&
        SUCCEEDED(pick_surface_->LockRect(&pick_rect_, nullptr, 0)))
    {
        pick_width_ = static_cast<int>(desc.Width);
        pick_height_ = static_cast<int>(desc.Height);
        return;
    }
    pick_rect_ = D3DLOCKED_RECT{};
}

unsigned long ixo_render_view::pick(const ixo_vector2<int>& p) const
{
    if (!pick_rect_.pBits || pick_width_ <= 0 || pick_height_ <= 0)
        return ixo_invalid_object_id;
    // The callers hand over (w - x, h - y) with y counted from the bottom: column w - p.x
    // is x again, and row p.y from the top is the pointer's row.
    long const column =
        std::clamp(static_cast<long>(pick_width_) - p[0], 0L, static_cast<long>(pick_width_) - 1);
    long const row = std::clamp(static_cast<long>(p[1]), 0L, static_cast<long>(pick_height_) - 1);
    auto const* bytes = static_cast<const std::uint8_t*>(pick_rect_.pBits) +
                        row * static_cast<long>(pick_rect_.Pitch) + 4 * column;
    // Memory order of an A8R8G8B8 pixel: blue, green, red, alpha.
    return ixo_id_from_color(ixo_vector4<unsigned char>(bytes[0], bytes[1], bytes[2], bytes[3]));
}

void ixo_render_view::pick_unlock()
{
    if (pick_surface_ && pick_rect_.pBits)
        pick_surface_->UnlockRect();
    pick_rect_ = D3DLOCKED_RECT{};
}

bool ixo_render_view::shadow_map_current(const ixo_light* light) const
{
    if (!shadow_drawn_ || shadow_scene_ != scene_.get() ||
        shadow_revision_ != scene_->get_revision() || shadow_light_ != light ||
        shadow_width_ != camera_->get_width() || shadow_height_ != camera_->get_height())
        return false;
    bool const casts = light && light->get_direct_light_enabled();
    if (casts != shadow_light_casts_)
        return false;
    // A light that casts nothing leaves the map as cleared whatever its matrices.
    return !casts || shadow_matrices_ == light_matrices(*light);
}

bool ixo_render_view::map_shadows()
{
    if (!check_device())
        return false;
    IDirect3DDevice9* dev = device();
    if (!shadow_texture_ || !shadow_depth_)
        return false;
    int const w = 2 * camera_->get_width();
    int const h = 2 * camera_->get_height();
    // Only the first light casts shadows.
    ixo_object_ptr<ixo_light> const light =
        scene_ && scene_->get_num_lights() > 0 ? scene_->get_light(0) : nullptr;

    bool ok = true;
    if (!scene_)
        ok = false;
    else if (!shadow_map_current(light.get()))
    {
        IDirect3DSurface9* level = nullptr;
        if (FAILED(shadow_texture_->GetSurfaceLevel(0, &level)) || !level)
            return false;
        dev->SetRenderTarget(0, level);
        dev->SetDepthStencilSurface(shadow_depth_);
        ok = SUCCEEDED(dev->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER | D3DCLEAR_STENCIL,
                                  0xFFFFFFFFu, 1.0f, 0));
        D3DVIEWPORT9 vp{};
        vp.Width = static_cast<DWORD>(w);
        vp.Height = static_cast<DWORD>(h);
        vp.MinZ = 0.0f;
        vp.MaxZ = 1.0f;
        dev->SetViewport(&vp);

        ixo_scene_draw_data d;
        d.set_render_view(ixo_object_ptr<ixo_render_view>(this));
        d.set_mapping_shadows(true);
        ok = scene_->draw(d) && ok;
        level->Release();

        // A failed pass is drawn again next frame.
        shadow_drawn_ = ok;
        shadow_scene_ = scene_.get();
        shadow_revision_ = scene_->get_revision();
        shadow_light_ = light.get();
        shadow_light_casts_ = light && light->get_direct_light_enabled();
        shadow_matrices_ = light ? light_matrices(*light) : std::array<float, 32>{};
        shadow_width_ = camera_->get_width();
        shadow_height_ = camera_->get_height();
    }

    // Every frame: the effect is shared with the other views and their maps.
    if (ID3DXEffect* fx = effect())
    {
        fx->SetTexture("g_shadowTexture", shadow_texture_);
        fx->SetInt("g_shadowWidth", w);
        fx->SetInt("g_shadowHeight", h);
        fx->CommitChanges();
    }
    return ok;
}

bool ixo_render_view::pre_reset()
{
    pick_unlock();
    d3d_release();
    remove_background_image();
    return overlay_ ? overlay_->pre_reset() : true;
}

bool ixo_render_view::post_reset()
{
    bool const initialized = initialize(window_, static_cast<unsigned>(camera_->get_width()),
                                        static_cast<unsigned>(camera_->get_height()), scene_);
    if (!background_file_.is_empty())
        load_background_image(background_file_);
    bool const overlay = overlay_ ? overlay_->post_reset() : true;
    return initialized && overlay;
}

void ixo_render_view::d3d_release()
{
    // The pick image lives in the surfaces released here.
    pick_unlock();
    release_device_object(depth_stencil_);
    release_device_object(render_target_);
    release_device_object(swap_chain_);
    release_device_object(pick_target_);
    release_device_object(pick_surface_);
    release_device_object(shadow_texture_);
    release_device_object(shadow_depth_);
    presented_ = false;
    shadow_drawn_ = false;
}

bool ixo_render_view::load_background_image(const ixo_string& path)
{
    if (path.is_empty())
        return false;
    remove_background_image();
    IDirect3DDevice9* dev = device();
    if (!dev)
        return false;
    if (FAILED(D3DXCreateTextureFromFileExW(dev, path.c_str(), D3DX_DEFAULT_NONPOW2,
                                            D3DX_DEFAULT_NONPOW2, 1, 0, D3DFMT_A8R8G8B8,
                                            D3DPOOL_DEFAULT, D3DX_FILTER_NONE, D3DX_FILTER_NONE, 0,
                                            nullptr, nullptr, &background_texture_)) ||
        !background_texture_)
    {
        background_texture_ = nullptr;
        return false;
    }
    background_file_ = path;
    return true;
}

void ixo_render_view::remove_background_image()
{
    release_device_object(background_texture_);
}

void ixo_render_view::set_background_color(const ixo_vector4<float>& color)
{
    background_color_ = color;
}

ixo_vector4<float> ixo_render_view::get_background_color() const
{
    return background_color_;
}

void ixo_render_view::set_shadow_mapping(bool on)
{
    shadow_mapping_ = on;
}

bool ixo_render_view::is_shadow_mapping() const
{
    return shadow_mapping_;
}

ixo_object_ptr<ixo_camera_view> ixo_render_view::get_camera()
{
    return camera_;
}

ixo_object_ptr<ixo_scene> ixo_render_view::get_scene()
{
    return scene_;
}

ixo_object_ptr<ixo_scene_object> ixo_render_view::get_overlay()
{
    return overlay_;
}

IDirect3DSwapChain9* ixo_render_view::get_swap_chain()
{
    return swap_chain_;
}

IDirect3DSurface9* ixo_render_view::get_render_target()
{
    return render_target_;
}

IDirect3DSurface9* ixo_render_view::get_depth_stencil()
{
    return depth_stencil_;
}

HWND ixo_render_view::get_window() const
{
    return window_;
}

bool ixo_render_view::capture(std::vector<ixo_vector4<unsigned char>>& rgba)
{
    rgba.clear();
    IDirect3DDevice9* dev = device();
    if (!dev || !render_target_ || !presented_)
        return false;
    D3DSURFACE_DESC desc{};
    if (FAILED(render_target_->GetDesc(&desc)) || desc.Width == 0 || desc.Height == 0)
        return false;
    // The back buffer keeps the presented image until the next frame draws into it.
    IDirect3DSurface9* copy = nullptr;
    if (FAILED(dev->CreateOffscreenPlainSurface(desc.Width, desc.Height, D3DFMT_A8R8G8B8,
                                                D3DPOOL_SYSTEMMEM, &copy, nullptr)) ||
        !copy)
        return false;
    D3DLOCKED_RECT locked{};
    bool ok = SUCCEEDED(dev->GetRenderTargetData(render_target_, copy)) &&
              SUCCEEDED(copy->LockRect(&locked, nullptr, 0)) && locked.pBits;
    if (ok)
    {
        rgba.resize(std::size_t(desc.Width) * desc.Height);
        for (UINT y = 0; y < desc.Height; ++y)
        {
            auto const* row = static_cast<const std::uint8_t*>(locked.pBits) +
                              std::size_t(y) * static_cast<std::size_t>(locked.Pitch);
            for (UINT x = 0; x < desc.Width; ++x)
            {
                const std::uint8_t* px = row + 4 * std::size_t(x);
                rgba[std::size_t(y) * desc.Width + x] =
                    ixo_vector4<unsigned char>(px[2], px[1], px[0], px[3]);
            }
        }
        copy->UnlockRect();
    }
    copy->Release();
    return ok;
}

bool ixo_render_view::save_png(const ixo_string& path)
{
    std::vector<ixo_vector4<unsigned char>> rgba;
    if (path.is_empty() || !capture(rgba))
        return false;
    int const w = camera_->get_width();
    int const h = camera_->get_height();
    if (rgba.size() != std::size_t(w) * std::size_t(h))
        return false;
    // Written opaque, as the window shows it.
    std::vector<unsigned char> rgb(rgba.size() * 3);
    for (std::size_t i = 0; i < rgba.size(); ++i)
        for (int c = 0; c < 3; ++c)
            rgb[3 * i + std::size_t(c)] = rgba[i][c];
    std::string const file = ixo_native_path(path.c_str());
    return stbi_write_png(file.c_str(), w, h, 3, rgb.data(), w * 3) != 0;
}
