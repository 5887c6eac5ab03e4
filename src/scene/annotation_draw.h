#pragma once
// What the screen-space annotations (text, legend, label) share: the projection of a model
// point through the drawn view's camera, text measuring with the shared font, and flat
// rectangles painted with the shared sprite from one class-wide white texture.
//
// Flat rectangles in the picking pass must carry an identifier's exact bytes, alpha byte
// included (mostly 0), so there the sprite draws without blending or alpha test and takes
// colour and alpha from the vertex alone.

#include "primitive_device.h"

#include <ixocore/core/identifiable_object.h>
#include <ixocore/core/string.h>
#include <ixocore/math/vector.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/render_view.h>

#include <cmath>

namespace ixo_annotation
{
// Edge of the white texture that the sprite stretches over every flat rectangle.
constexpr UINT texture_size = 64;

// An (r, g, b, a) colour packed as the device's ARGB.
inline D3DCOLOR pack(int r, int g, int b, int a)
{
    auto byte = [](int v) { return DWORD(v < 0 ? 0 : v > 255 ? 255 : v); };
    return (byte(a) << 24) | (byte(r) << 16) | (byte(g) << 8) | byte(b);
}

inline D3DCOLOR pack(const ixo_vector4<unsigned char>& c)
{
    return pack(c[0], c[1], c[2], c[3]);
}

// The identifier colour of the picking pass, packed.
inline D3DCOLOR id_color(unsigned long id)
{
    ixo_vector4<float> const c = ixo_id_to_color(id);
    return pack(int(c[0] * 255.0f + 0.5f), int(c[1] * 255.0f + 0.5f), int(c[2] * 255.0f + 0.5f),
                int(c[3] * 255.0f + 0.5f));
}

// The pixel of the model point `p` in the view being drawn; false without a view or when the
// camera cannot project it (degenerate frame, point in the eye plane).
inline bool pixel_of(const ixo_scene_draw_data& d, const ixo_vector3<float>& p,
                     ixo_vector2<float>& pixel)
{
    ixo_object_ptr<ixo_render_view> const view = d.get_render_view();
    ixo_object_ptr<ixo_camera_view> const camera = view ? view->get_camera() : nullptr;
    if (!camera)
        return false;
    pixel = camera->pixel_from_point(p);
    // Far outside any view: the int conversions that follow must stay in range.
    return std::isfinite(pixel[0]) && std::isfinite(pixel[1]) && std::fabs(pixel[0]) < 1e7f &&
           std::fabs(pixel[1]) < 1e7f;
}

// Width and height of `text` in the shared font, measured with DT_CALCRECT; (0, 0) without
// a font or for empty text.
inline ixo_vector2<int> measure(ID3DXFont* font, const ixo_string& text)
{
    if (!font || text.length() == 0)
        return ixo_vector2<int>(0, 0);
    RECT r{0, 0, 0, 0};
    font->DrawTextW(nullptr, text.c_str(), -1, &r, DT_CALCRECT, 0);
    return ixo_vector2<int>(int(r.right), int(r.bottom));
}

// Draws `text` with the shared font into `r` with `format`; nothing for empty text.
inline void write(ID3DXFont* font, const ixo_string& text, RECT r, DWORD format, D3DCOLOR color)
{
    if (font && text.length() > 0)
        font->DrawTextW(nullptr, text.c_str(), -1, &r, format, color);
}

// The class-wide white texture: its own reference count is the number of objects holding
// it, like the primitives' shared meshes. Created on first use in the managed pool.
IDirect3DTexture9*& shared_texture();

// Takes a reference for a holder that has none; false when there is no texture.
bool acquire_texture(bool& holds);
// Gives the holder's reference back; the texture goes with the last one.
void release_texture(bool& holds);

// One sprite batch of flat rectangles. In the picking pass (`exact`) the colour is written
// as given, bytes and all; otherwise rectangles blend by their alpha.
class flat_batch
{
public:
    flat_batch(bool exact);
    ~flat_batch();
    flat_batch(const flat_batch&) = delete;
    flat_batch& operator=(const flat_batch&) = delete;

    bool ok() const { return sprite_ != nullptr; }
    // Fills the pixels x0 <= x < x1, y0 <= y < y1.
    void fill(int x0, int y0, int x1, int y1, D3DCOLOR color);

private:
    ID3DXSprite* sprite_ = nullptr;
    IDirect3DTexture9* texture_ = nullptr;
};
} // namespace ixo_annotation
