#pragma once
// ixo_render_view: one scene shown in one host window through the view's own camera.
//
// A view owns the window's additional swap chain and the off-screen surfaces it draws
// into: the depth/stencil surface, the picking image (a render target and a system-memory
// copy that can be locked), and the shadow map of the scene's first light (twice the view
// size each way). It paints frames, renders the picking image from which the object under
// the pointer is read, shows an optional centred background picture and a small overlay
// scene in the top-right corner, and rebuilds its device resources around a device reset.
//
// A view with a null window renders into an off-screen swap chain; `capture` and
// `save_png` read its last presented frame back. Views are made by the application's
// ixo_render_view_manager.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/string.h>
#include <ixocore/events/event_manager.h>
#include <ixocore/math/vector.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/win32.h>

#include <array>
#include <cstdint>
#include <vector>

class ixo_camera_view;
class ixo_light;
class ixo_render_view_manager;
class ixo_scene;
class ixo_scene_object;

class IXO_API ixo_render_view : public ixo_object
{
public:
    // Binds the view to `window` (null: headless) and `scene`, creates the swap chain, the
    // picking surfaces, the depth/stencil surface and the shadow map at width × height,
    // sizes the camera, fits it to the whole scene (which paints a first frame) and
    // subscribes the view to redraw requests (once per view, however often it is called).
    // False as soon as one of the swap chain, picking or depth surfaces cannot be made
    // (zero sizes included); what was made so far is kept. Needs a started library.
    bool initialize(HWND window, unsigned width, unsigned height, ixo_object_ptr<ixo_scene> scene);
    // Re-creates the device resources at the new size and resizes the camera, which is not
    // refitted. False, and nothing changes, when the view's resources are incomplete (for
    // example a view never initialised).
    bool resize(unsigned width, unsigned height);

    // Draws and presents one frame: shadow map (when shadow mapping is on), clear to the
    // background colour and picture, the scene, the corner overlay, present. A lost device
    // is reset first; while it stays lost nothing is drawn and the answer is false. Every
    // step runs even when an earlier one failed; the answer is true only if all succeeded.
    bool paint();
    // Renders the picking image: every pickable object in the colour of its identifier
    // (transparent objects are not drawn), then copies it to system memory. Use before
    // pick_lock / pick / pick_unlock.
    bool map();
    // Locks the picking image for reading; without picking surfaces nothing is locked.
    void pick_lock();
    // The identifier drawn at `p` in the locked picking image, or ixo_invalid_object_id
    // when nothing is locked. Callers pass (w - x, h - y) for a pointer at (x, y) with y
    // counted from the bottom of a w × h view; the pixel read is column w - p.x, row p.y
    // from the top, clamped into the image, so no point reads outside it.
    unsigned long pick(const ixo_vector2<int>& p) const;
    // Unlocks the picking image.
    void pick_unlock();

    // Device reset: releases every device resource, the background texture and the
    // overlay's resources (answers the overlay's result) ...
    bool pre_reset();
    // ... and rebuilds them at the camera's size, refitting the camera to the scene and
    // reloading the background picture. The redraw subscription is kept, not repeated.
    bool post_reset();

    // Loads an image file (PNG, BMP, JPEG, ...) at its own size as the background picture,
    // replacing any loaded one. False for an empty path or a file that cannot be read.
    bool load_background_image(const ixo_string& path);
    void remove_background_image();
    // Clear colour of every frame, (r, g, b, a) in 0..1; white by default.
    void set_background_color(const ixo_vector4<float>& color);
    ixo_vector4<float> get_background_color() const;
    // Whether frames render and use the shadow map of the scene's first light (default on).
    void set_shadow_mapping(bool on);
    bool is_shadow_mapping() const;

    // New references to the camera, the scene (null before initialize) and the root of the
    // corner overlay.
    ixo_object_ptr<ixo_camera_view> get_camera();
    ixo_object_ptr<ixo_scene> get_scene();
    ixo_object_ptr<ixo_scene_object> get_overlay();
    // The raw device objects, without a reference of their own; null before initialize.
    IDirect3DSwapChain9* get_swap_chain();
    IDirect3DSurface9* get_render_target();
    IDirect3DSurface9* get_depth_stencil();
    // The window the view presents into (null: headless).
    HWND get_window() const;

    // The last presented frame, rows top-down, camera width × height pixels in red, green,
    // blue, alpha order. False (and `rgba` emptied) before the first presented frame.
    // Reads the image back from the device: meant for tests and headless hosts.
    bool capture(std::vector<ixo_vector4<unsigned char>>& rgba);
    // Writes the last presented frame as a PNG file; false when there is none or the file
    // cannot be written.
    bool save_png(const ixo_string& path);

    ixo_render_view(const ixo_render_view&) = delete;
    ixo_render_view& operator=(const ixo_render_view&) = delete;

private:
    friend class ixo_render_view_manager;

    ixo_render_view();
    // Unsubscribes from redraw requests, releases camera, overlay and device resources.
    ~ixo_render_view() override;

    // Creates swap chain, picking and depth surfaces (false at the first failure), sets the
    // viewport, creates the shadow map and resizes the camera.
    bool create_resources(unsigned width, unsigned height);
    // Resets a lost device; false while it stays lost.
    bool check_device();
    bool begin_paint();
    bool end_paint();
    bool map_shadows();
    // Whether the shadow map still holds what a new shadow pass would draw.
    bool shadow_map_current(const ixo_light* light) const;
    bool paint_overlay(bool mapping);
    void d3d_release();
    // Stops answering redraw requests and lets go of the device objects and the scene:
    // what the destructor does, and what the manager does to a view it removes while
    // others (a command in an undo history, a tool) still hold it.
    void detach();

    HWND window_ = nullptr;
    IDirect3DSwapChain9* swap_chain_ = nullptr;
    IDirect3DSurface9* render_target_ = nullptr;
    IDirect3DSurface9* depth_stencil_ = nullptr;
    ixo_vector4<float> background_color_{1.0f, 1.0f, 1.0f, 1.0f};
    ixo_object_ptr<ixo_camera_view> camera_;
    ixo_object_ptr<ixo_scene> scene_;
    D3DVIEWPORT9 viewport_{};
    D3DLOCKED_RECT pick_rect_{};
    // Size of the locked picking image.
    int pick_width_ = 0;
    int pick_height_ = 0;
    IDirect3DSurface9* pick_target_ = nullptr;
    IDirect3DSurface9* pick_surface_ = nullptr;
    IDirect3DTexture9* shadow_texture_ = nullptr;
    IDirect3DSurface9* shadow_depth_ = nullptr;
    bool shadow_mapping_ = true;
    IDirect3DTexture9* background_texture_ = nullptr;
    ixo_string background_file_;
    ixo_object_ptr<ixo_scene_object> overlay_;
    ixo_event_key redraw_key_;
    // Whether render_target_ holds a presented frame.
    bool presented_ = false;
    // What the shadow map was last drawn from: the scene at a revision, its first light
    // with its light-space matrices, and the map's size. The map is drawn again only when
    // one of them differs; releasing the surfaces forgets it.
    bool shadow_drawn_ = false;
    const ixo_scene* shadow_scene_ = nullptr;
    std::uint64_t shadow_revision_ = 0;
    const ixo_light* shadow_light_ = nullptr;
    bool shadow_light_casts_ = false;
    std::array<float, 32> shadow_matrices_{};
    int shadow_width_ = 0;
    int shadow_height_ = 0;
};
