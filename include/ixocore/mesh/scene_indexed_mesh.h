#pragma once
// ixo_scene_indexed_mesh: the scene object that draws an indexed mesh as a triangle list
// from the mesh's device buffers, without back-face culling.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/box.h>
#include <ixocore/mesh/indexed_mesh.h>
#include <ixocore/scene/scene_object.h>

class IXO_API ixo_scene_indexed_mesh : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // A scene object over `mesh` (which may be null: it then draws nothing and has an
    // empty box).
    static ixo_object_ptr<ixo_scene_indexed_mesh> create(ixo_object_ptr<ixo_indexed_mesh> mesh);

    ixo_object_ptr<ixo_indexed_mesh> get_mesh() const;

    // The box of the mesh's vertex positions, computed at the first call and cached: later
    // edits of the mesh are not reflected. Empty for a mesh without vertices.
    ixo_box3<float> get_object_bounds() const override;
    // Binds the mesh's buffers (made on first use) unless they are bound already and draws
    // every triangle with culling off, inside the effect's first pass when the pass reads
    // the shadow map. Draws nothing (and answers true) without a device, without buffers,
    // or when an index of the mesh is outside its vertex array.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Forgets the buffers and has the mesh release them, so the device can be reset.
    bool pre_reset_object() override;
    // Forgets the buffers last obtained from the mesh (the mesh owns them).
    virtual void release_buffers();

    ixo_scene_indexed_mesh& operator=(const ixo_scene_indexed_mesh& other);

protected:
    explicit ixo_scene_indexed_mesh(ixo_object_ptr<ixo_indexed_mesh> mesh);
    // Shares the mesh; the cached box is copied, the buffers are not.
    ixo_scene_indexed_mesh(const ixo_scene_indexed_mesh& other);
    ~ixo_scene_indexed_mesh() override;

private:
    ixo_object_ptr<ixo_indexed_mesh> mesh_;
    mutable ixo_box3<float> bounds_;
    IDirect3DVertexBuffer9* vertex_buffer_ = nullptr;
    IDirect3DIndexBuffer9* index_buffer_ = nullptr;
};
