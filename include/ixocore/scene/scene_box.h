#pragma once
// ixo_scene_box: a solid box centred on its local origin, drawn from a device mesh of its
// own that is rebuilt from the stored sizes after a device reset.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/scene/scene_object.h>

struct ID3DXMesh;

class IXO_API ixo_scene_box : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // A box of the given edge lengths along x, y and z. The mesh is built at once on the
    // application's device; without a device it waits for the next post_reset.
    static ixo_object_ptr<ixo_scene_box> create(float width, float height, float depth);

    float get_width() const { return width_; }
    float get_height() const { return height_; }
    float get_depth() const { return depth_; }
    // The device mesh, null while none exists (no device, creation failed, or between
    // pre_reset and post_reset).
    ID3DXMesh* get_mesh() const { return mesh_; }

    // (-width/2, -height/2, -depth/2) to (width/2, height/2, depth/2).
    ixo_box3<float> get_object_bounds() const override;
    // Draws subset 0 of the mesh, inside the effect when the pass reads the shadow map.
    // Without a mesh draws nothing. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Releases the mesh; always true.
    bool pre_reset_object() override;
    // Rebuilds the mesh from the stored sizes; true also when that fails.
    bool post_reset_object() override;

    // Copies the sizes and shares the other box's mesh (a reference of its own).
    ixo_scene_box& operator=(const ixo_scene_box& other);

protected:
    ixo_scene_box(float width, float height, float depth);
    ixo_scene_box(const ixo_scene_box& other);
    ~ixo_scene_box() override;

private:
    void release_mesh();

    float width_;
    float height_;
    float depth_;
    ID3DXMesh* mesh_ = nullptr;
};
