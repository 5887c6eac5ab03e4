#pragma once
// ixo_direct3d: the one graphics device of the application and the drawing objects every
// part of the library shares (font, line drawer, sprite drawer and the effect), with the
// protocol that rebuilds device resources after the device was lost.

#include <ixocore/app/application.h>
#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/platform/win32.h>

// Owned by the application; everything else reaches the device objects through the
// static accessors.
class IXO_API ixo_direct3d : public ixo_object
{
public:
    // Picks an adapter, creates the device for `window` (null: headless) with a tiny back
    // buffer (views present through swap chains of their own), then the 9-point
    // "Segoe UI" font, the line and sprite drawers and the effect Media/ixo_default.fx of
    // the application's resource manager. On failure answers null with `code` set to the
    // step that failed (ixo_start_no_adapter ... ixo_start_no_effect); on success `code`
    // is left as it was.
    static ixo_object_ptr<ixo_direct3d> create(HWND window, ixo_start_code& code);

    // The application's device objects, without a reference of their own. Null while no
    // application or no device exists. The effect may be absent: callers test for it.
    static IDirect3D9* get_direct3d();
    static IDirect3DDevice9* get_device();
    static ID3DXFont* get_font();
    static ID3DXLine* get_line();
    static ID3DXSprite* get_sprite();
    static ID3DXEffect* get_effect();

    // Called when the device reports trouble. While the device is lost, releases the
    // device resources (pre_reset) and, once the device can be reset, resets it and
    // rebuilds them (post_reset). True when the device is usable afterwards; false while
    // it is still lost (call again on the next frame).
    bool reset();
    // The shared drawing objects, then the application (scenes and render views), release
    // their device resources; then ixo_event_direct3d_resetting is reported.
    void pre_reset();
    // The same objects rebuild their device resources; then ixo_event_direct3d_reset is
    // reported.
    void post_reset();

protected:
    // A copy shares the device handles (each with a reference of its own).
    ixo_direct3d(const ixo_direct3d& other);
    ixo_direct3d& operator=(const ixo_direct3d& other);

private:
    ixo_direct3d() = default;
    ~ixo_direct3d() override;

    IDirect3D9* direct3d_ = nullptr;
    IDirect3DDevice9* device_ = nullptr;
    ID3DXFont* font_ = nullptr;
    ID3DXLine* line_ = nullptr;
    ID3DXSprite* sprite_ = nullptr;
    ID3DXEffect* effect_ = nullptr;
    D3DPRESENT_PARAMETERS present_parameters_{};
};
