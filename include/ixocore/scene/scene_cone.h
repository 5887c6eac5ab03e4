#pragma once
// ixo_scene_cone: a unit cone along the local z axis (radius 1 at z = -0.5, the point at
// z = +0.5); its size comes only from its transform. All cones draw one class-wide device
// mesh whose own reference count is the number of cones holding it.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/scene/scene_object.h>

struct ID3DXMesh;

class IXO_API ixo_scene_cone : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // A cone holding a reference on the shared mesh (creating it on the application's
    // device when it does not exist yet; without a device the cone waits for post_reset).
    static ixo_object_ptr<ixo_scene_cone> create();

    // The mesh all cones share, null while no cone holds one. No reference is added.
    static ID3DXMesh* get_shared_mesh() { return m_mesh; }

    // The mesh's true extent: (-1, -1, -0.5) to (1, 1, 0.5).
    ixo_box3<float> get_object_bounds() const override;
    // Draws subset 0 of the shared mesh; without it draws nothing. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Drops this cone's reference; the mesh goes with the last one. Always true.
    bool pre_reset_object() override;
    // Takes a reference again, recreating the mesh when it is absent. Always true.
    bool post_reset_object() override;

    ixo_scene_cone& operator=(const ixo_scene_cone& other);

protected:
    ixo_scene_cone();
    // A copy holds a reference of its own on the shared mesh.
    ixo_scene_cone(const ixo_scene_cone& other);
    ~ixo_scene_cone() override;

private:
    void acquire_mesh();
    void release_mesh();

    static ID3DXMesh* m_mesh;
    // Whether this cone holds one of the shared mesh's references.
    bool holds_mesh_ = false;
};
