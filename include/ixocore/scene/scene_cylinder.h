#pragma once
// ixo_scene_cylinder: a solid cylinder along the local z axis, centred on the origin, drawn
// from a device mesh of its own (72 slices) that is rebuilt after a device reset.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/scene/scene_object.h>

struct ID3DXMesh;

class IXO_API ixo_scene_cylinder : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // A cylinder of the given radius reaching from z = -length/2 to z = +length/2. The mesh
    // is built at once on the application's device; without one it waits for post_reset.
    static ixo_object_ptr<ixo_scene_cylinder> create(float radius, float length);

    float get_radius() const { return radius_; }
    float get_length() const { return length_; }
    // The device mesh, null while none exists.
    ID3DXMesh* get_mesh() const { return mesh_; }

    // (-radius, -radius, -length/2) to (radius, radius, length/2).
    ixo_box3<float> get_object_bounds() const override;
    // Draws subset 0 of the mesh, inside the effect when the pass reads the shadow map.
    // Without a mesh draws nothing. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Releases the mesh; always true.
    bool pre_reset_object() override;
    // Rebuilds the mesh from the stored sizes; true also when that fails.
    bool post_reset_object() override;

    // Copies the sizes and shares the other cylinder's mesh (a reference of its own).
    ixo_scene_cylinder& operator=(const ixo_scene_cylinder& other);

protected:
    ixo_scene_cylinder(float radius, float length);
    ixo_scene_cylinder(const ixo_scene_cylinder& other);
    ~ixo_scene_cylinder() override;

private:
    void release_mesh();

    float radius_;
    float length_;
    ID3DXMesh* mesh_ = nullptr;
};
