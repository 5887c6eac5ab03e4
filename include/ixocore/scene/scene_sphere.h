#pragma once
// ixo_scene_sphere: a unit sphere centred on its local origin (72 slices, 36 stacks, poles
// on z); its size comes only from its transform. All spheres draw one class-wide device
// mesh whose own reference count is the number of spheres holding it.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/scene/scene_object.h>

struct ID3DXMesh;

class IXO_API ixo_scene_sphere : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // A sphere holding a reference on the shared mesh (creating it on the application's
    // device when it does not exist yet; without a device it waits for post_reset).
    static ixo_object_ptr<ixo_scene_sphere> create();

    // The mesh all spheres share, null while no sphere holds one. No reference is added.
    static ID3DXMesh* get_shared_mesh() { return m_mesh; }

    // (-1, -1, -1) to (1, 1, 1).
    ixo_box3<float> get_object_bounds() const override;
    // Draws subset 0 of the shared mesh; without it draws nothing. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Drops this sphere's reference; the mesh goes with the last one. Always true.
    bool pre_reset_object() override;
    // Takes a reference again, recreating the mesh when it is absent. Always true.
    bool post_reset_object() override;

    ixo_scene_sphere& operator=(const ixo_scene_sphere& other);

protected:
    ixo_scene_sphere();
    // A copy holds a reference of its own on the shared mesh.
    ixo_scene_sphere(const ixo_scene_sphere& other);
    ~ixo_scene_sphere() override;

private:
    void acquire_mesh();
    void release_mesh();

    static ID3DXMesh* m_mesh;
    // Whether this sphere holds one of the shared mesh's references.
    bool holds_mesh_ = false;
};
