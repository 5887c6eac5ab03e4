#pragma once
// ixo_scene_overlay_rectangle: a translucent rectangle over the view, spanned by two corners
// given in view pixels (x right, y down from the top-left; z is kept but not drawn), as two
// triangles in the object's colour with a one-pixel outline in the opposite luminance:
// black over colours of luminance 128 of 255 and more, white over darker ones. It is drawn
// without depth test, blends by the colour's alpha in the normal passes and picks as a
// whole in the picking pass.
//
// Its bounds are the box spanned by start and end as they stand, so a scene that holds one
// measures it in pixels among its model units.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/vector.h>
#include <ixocore/scene/scene_object.h>

struct IDirect3DVertexBuffer9;

class IXO_API ixo_scene_overlay_rectangle : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // Start and end (0, 0, 0); depth test off, pickable and inherit_visible on, colour
    // (0, 0, 0, 128).
    static ixo_object_ptr<ixo_scene_overlay_rectangle> create();

    // Each stores its corner and drops the vertex buffer, rebuilt at the next draw.
    void set_start(const ixo_vector3<float>& start);
    void set_end(const ixo_vector3<float>& end);
    const ixo_vector3<float>& get_start() const { return start_; }
    const ixo_vector3<float>& get_end() const { return end_; }
    // The 6-vertex buffer (position and normal), null while none exists.
    IDirect3DVertexBuffer9* get_vertex_buffer() const { return buffer_; }
    // The outline's colour for the current colour, opaque.
    ixo_vector4<unsigned char> get_outline_color() const;

    // The box spanned by start and end.
    ixo_box3<float> get_object_bounds() const override;
    // Creates the buffer when missing, then draws the two triangles (no culling, lighting
    // off) and the outline inside the shared effect's first pass, in view pixels over the
    // device's viewport; the device's and the effect's view and projection are restored
    // afterwards. Without a device, or when the buffer cannot be made, nothing is drawn.
    // Nothing goes into a shadow map. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Releases the buffer; always true.
    bool pre_reset_object() override;
    // Rebuilds it; true also when that fails.
    bool post_reset_object() override;

    // Copies the corners and shares the other rectangle's buffer.
    ixo_scene_overlay_rectangle& operator=(const ixo_scene_overlay_rectangle& other);

protected:
    ixo_scene_overlay_rectangle();
    ixo_scene_overlay_rectangle(const ixo_scene_overlay_rectangle& other);
    ~ixo_scene_overlay_rectangle() override;

private:
    bool create_vertex_buffer();
    void release_buffer();

    ixo_vector3<float> start_;
    ixo_vector3<float> end_;
    IDirect3DVertexBuffer9* buffer_ = nullptr;
};
