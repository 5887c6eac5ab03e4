#pragma once
// ixo_scene_plane: a finite rectangular patch of a plane, centred on the plane's root and
// spanned along its u and v directions, drawn as one two-triangle strip. By default it
// takes no space, so it never enlarges the scene's bounds.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/plane.h>
#include <ixocore/scene/scene_object.h>

struct IDirect3DVertexBuffer9;

class IXO_API ixo_scene_plane : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // The patch of `plane` from plane coordinates (-width/2, -height/2) to (width/2,
    // height/2). Its four-vertex buffer is filled at once on the application's device;
    // without one it waits for post_reset.
    static ixo_object_ptr<ixo_scene_plane> create(const ixo_plane<float>& plane, float width,
                                                  float height);

    const ixo_plane<float>& get_plane() const { return plane_; }
    float get_width() const { return width_; }
    float get_height() const { return height_; }
    // Whether the patch's corners count in the bounds (false at creation).
    void set_occupy_space(bool occupy);
    bool get_occupy_space() const { return occupy_space_; }
    // The vertex buffer, null while none exists.
    IDirect3DVertexBuffer9* get_vertex_buffer() const { return buffer_; }

    // Empty unless occupy_space is set; then the box of the four corners.
    ixo_box3<float> get_object_bounds() const override;
    // Draws the strip (clockwise faces culled, so it shows from the side its normal points
    // to), inside the effect when the pass reads the shadow map. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Releases the vertex buffer; always true.
    bool pre_reset_object() override;
    // Rebuilds it; true also when that fails.
    bool post_reset_object() override;

    // Copies plane, sizes and occupy_space and shares the other plane's buffer.
    ixo_scene_plane& operator=(const ixo_scene_plane& other);

protected:
    ixo_scene_plane(const ixo_plane<float>& plane, float width, float height);
    ixo_scene_plane(const ixo_scene_plane& other);
    ~ixo_scene_plane() override;

private:
    void build_buffer();
    void release_buffer();

    ixo_plane<float> plane_;
    float width_;
    float height_;
    bool occupy_space_ = false;
    IDirect3DVertexBuffer9* buffer_ = nullptr;
};
