#include <ixocore/render/direct3d.h>

#include <ixocore/events/event.h>
#include <ixocore/events/event_manager.h>
#include <ixocore/render/resource_manager.h>

#include <utility>

namespace
{
constexpr D3DFORMAT display_format = D3DFMT_X8R8G8B8;
constexpr D3DFORMAT back_buffer_format = D3DFMT_A8R8G8B8;
constexpr D3DFORMAT depth_stencil_format = D3DFMT_D24S8;
constexpr int font_points = 9;
constexpr UINT font_weight_normal = 400;
constexpr DWORD font_charset_default = 1;
constexpr DWORD font_precision_default = 0;
constexpr DWORD font_quality_nonantialiased = 3;

template <typename T> void release_interface(T*& p)
{
    if (p)
        p->Release();
    p = nullptr;
}

template <typename T> T* add_interface_ref(T* p)
{
    if (p)
        p->AddRef();
    return p;
}

// Whether the adapter can draw into A8R8G8B8 back buffers with a D24S8 depth buffer in a
// window on an X8R8G8B8 display.
bool adapter_passes_checks(IDirect3D9* d3d, UINT adapter)
{
    return SUCCEEDED(d3d->CheckDeviceType(adapter, D3DDEVTYPE_HAL, display_format,
                                          back_buffer_format, TRUE)) &&
           SUCCEEDED(d3d->CheckDepthStencilMatch(adapter, D3DDEVTYPE_HAL, display_format,
                                                 back_buffer_format, depth_stencil_format));
}

bool adapter_processes_vertices(IDirect3D9* d3d, UINT adapter)
{
    D3DCAPS9 caps{};
    return SUCCEEDED(d3d->GetDeviceCaps(adapter, D3DDEVTYPE_HAL, &caps)) &&
           caps.VertexProcessingCaps != 0;
}

// The first adapter that passes the checks and processes vertices itself, else the first
// that passes the checks; false when none does.
bool choose_adapter(IDirect3D9* d3d, UINT& chosen)
{
    UINT const count = d3d->GetAdapterCount();
    for (UINT i = 0; i < count; ++i)
        if (adapter_passes_checks(d3d, i) && adapter_processes_vertices(d3d, i))
        {
            chosen = i;
            return true;
        }
    for (UINT i = 0; i < count; ++i)
        if (adapter_passes_checks(d3d, i))
        {
            chosen = i;
            return true;
        }
    return false;
}

// Character height in pixels of `points` on the window's display, negative as the font
// creation expects for a character (not cell) height.
int font_height(HWND window, int points)
{
    HDC dc = GetWindowDC(window);
    int const dpi = GetDeviceCaps(dc, LOGPIXELSY);
    ReleaseDC(window, dc);
    return -MulDiv(points, dpi, 72);
}

void report(ixo_object_ptr<ixo_event> e)
{
    if (ixo_object_ptr<ixo_event_manager> events = ixo_event_manager::get_app_event_manager())
        events->report(std::move(e));
}

ixo_direct3d* app_direct3d()
{
    ixo_application* app = ixo_application::instance();
    // The application holds the device, so the plain pointer outlives the temporary.
    return app ? app->get_direct3d().get() : nullptr;
}
} // namespace

ixo_object_ptr<ixo_direct3d> ixo_direct3d::create(HWND window, ixo_start_code& code)
{
    // Held from the start so every early return releases what was built so far.
    ixo_object_ptr<ixo_direct3d> d3d(new ixo_direct3d);
    d3d->direct3d_ = Direct3DCreate9(D3D_SDK_VERSION);
    if (!d3d->direct3d_)
    {
        code = ixo_start_no_direct3d;
        return nullptr;
    }

    // Every view presents through a swap chain of its own; the device's back buffer only
    // has to exist.
    D3DPRESENT_PARAMETERS& pp = d3d->present_parameters_;
    pp = D3DPRESENT_PARAMETERS{};
    pp.BackBufferWidth = 8;
    pp.BackBufferHeight = 8;
    pp.BackBufferFormat = D3DFMT_UNKNOWN;
    pp.SwapEffect = D3DSWAPEFFECT_DISCARD;
    pp.Windowed = TRUE;
    pp.EnableAutoDepthStencil = FALSE;

    UINT adapter = 0;
    if (!choose_adapter(d3d->direct3d_, adapter))
    {
        code = ixo_start_no_adapter;
        return nullptr;
    }

    DWORD const precision = D3DCREATE_FPU_PRESERVE;
    if (FAILED(d3d->direct3d_->CreateDevice(adapter, D3DDEVTYPE_HAL, window,
                                            D3DCREATE_HARDWARE_VERTEXPROCESSING | precision, &pp,
                                            &d3d->device_)) &&
        FAILED(d3d->direct3d_->CreateDevice(adapter, D3DDEVTYPE_HAL, window,
                                            D3DCREATE_SOFTWARE_VERTEXPROCESSING | precision, &pp,
                                            &d3d->device_)))
    {
        d3d->device_ = nullptr;
        code = ixo_start_no_device;
        return nullptr;
    }

    if (FAILED(D3DXCreateFontW(d3d->device_, font_height(window, font_points), 0,
                               font_weight_normal, 0, FALSE, font_charset_default,
                               font_precision_default, font_quality_nonantialiased, 0,
                               IXO_TEXT("Segoe UI"), &d3d->font_)))
    {
        d3d->font_ = nullptr;
        code = ixo_start_no_font;
        return nullptr;
    }
    if (FAILED(D3DXCreateLine(d3d->device_, &d3d->line_)))
    {
        d3d->line_ = nullptr;
        code = ixo_start_no_line;
        return nullptr;
    }
    if (FAILED(D3DXCreateSprite(d3d->device_, &d3d->sprite_)))
    {
        d3d->sprite_ = nullptr;
        code = ixo_start_no_sprite;
        return nullptr;
    }

    ixo_object_ptr<ixo_resource_manager> resources =
        ixo_resource_manager::get_app_resource_manager();
    if (!resources)
    {
        code = ixo_start_no_effect;
        return nullptr;
    }
    ixo_string const path = resources->get_full_path(IXO_TEXT("ixo_default.fx"));
    // The compiler's messages are taken so they go nowhere: nothing is shown to the user.
    ID3DXBuffer* messages = nullptr;
    HRESULT const hr = D3DXCreateEffectFromFileW(d3d->device_, path.c_str(), nullptr, nullptr, 0,
                                                 nullptr, &d3d->effect_, &messages);
    release_interface(messages);
    if (FAILED(hr) || !d3d->effect_)
    {
        d3d->effect_ = nullptr;
        code = ixo_start_no_effect;
        return nullptr;
    }
    return d3d;
}

ixo_direct3d::ixo_direct3d(const ixo_direct3d& other)
    : ixo_object(other), direct3d_(add_interface_ref(other.direct3d_)),
      device_(add_interface_ref(other.device_)), font_(add_interface_ref(other.font_)),
      line_(add_interface_ref(other.line_)), sprite_(add_interface_ref(other.sprite_)),
      effect_(add_interface_ref(other.effect_)), present_parameters_(other.present_parameters_)
{
}

ixo_direct3d& ixo_direct3d::operator=(const ixo_direct3d& other)
{
    if (this == &other)
        return *this;
    // References are taken on the new handles before the old ones go, so assigning a copy
    // that shares them cannot destroy them on the way.
    ixo_direct3d copy(other);
    std::swap(direct3d_, copy.direct3d_);
    std::swap(device_, copy.device_);
    std::swap(font_, copy.font_);
    std::swap(line_, copy.line_);
    std::swap(sprite_, copy.sprite_);
    std::swap(effect_, copy.effect_);
    present_parameters_ = other.present_parameters_;
    return *this;
}

ixo_direct3d::~ixo_direct3d()
{
    release_interface(line_);
    release_interface(font_);
    release_interface(device_);
    release_interface(direct3d_);
    release_interface(sprite_);
    release_interface(effect_);
}

IDirect3D9* ixo_direct3d::get_direct3d()
{
    ixo_direct3d* d3d = app_direct3d();
    return d3d ? d3d->direct3d_ : nullptr;
}

IDirect3DDevice9* ixo_direct3d::get_device()
{
    ixo_direct3d* d3d = app_direct3d();
    return d3d ? d3d->device_ : nullptr;
}

ID3DXFont* ixo_direct3d::get_font()
{
    ixo_direct3d* d3d = app_direct3d();
    return d3d ? d3d->font_ : nullptr;
}

ID3DXLine* ixo_direct3d::get_line()
{
    ixo_direct3d* d3d = app_direct3d();
    return d3d ? d3d->line_ : nullptr;
}

ID3DXSprite* ixo_direct3d::get_sprite()
{
    ixo_direct3d* d3d = app_direct3d();
    return d3d ? d3d->sprite_ : nullptr;
}

ID3DXEffect* ixo_direct3d::get_effect()
{
    ixo_direct3d* d3d = app_direct3d();
    return d3d ? d3d->effect_ : nullptr;
}

bool ixo_direct3d::reset()
{
    if (!device_)
        return false;
    HRESULT const level = device_->TestCooperativeLevel();
    if (level != D3DERR_DEVICELOST && level != D3DERR_DEVICENOTRESET)
        return SUCCEEDED(device_->TestCooperativeLevel());

    pre_reset();
    // Still lost: the resources stay released until a later call gets this far.
    if (device_->TestCooperativeLevel() != D3DERR_DEVICENOTRESET)
        return false;
    if (FAILED(device_->Reset(&present_parameters_)))
        return false;
    post_reset();
    return SUCCEEDED(device_->TestCooperativeLevel());
}

void ixo_direct3d::pre_reset()
{
    if (font_)
        font_->OnLostDevice();
    if (line_)
        line_->OnLostDevice();
    if (sprite_)
        sprite_->OnLostDevice();
    if (ixo_application* app = ixo_application::instance())
        app->pre_reset();
    report(ixo_event_direct3d_resetting::create());
}

void ixo_direct3d::post_reset()
{
    if (font_)
        font_->OnResetDevice();
    if (line_)
        line_->OnResetDevice();
    if (sprite_)
        sprite_->OnResetDevice();
    if (ixo_application* app = ixo_application::instance())
        app->post_reset();
    report(ixo_event_direct3d_reset::create());
}
