#pragma once
// ixo_scene_shaft: a shaft drawn as a tube along the local z axis from z = 0 to its length,
// through rings spread evenly along it. Each ring carries a measured torsion angle and a
// lateral deflection, which the shaft exaggerates by two scale factors so that twist and
// bending become visible; alternating black and white sectors make the twist readable.
//
// Angles run from +y towards +x: a point at angle a lies at (sin a, cos a). Deflections are
// in units of the radius. The vertex data is rebuilt at the next draw after any change
// (ring infos and the scalar settings alike); the device buffers are released before a
// device reset and made again after it.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/box.h>
#include <ixocore/math/vector.h>
#include <ixocore/scene/scene_object.h>
#include <ixocore/scene/scene_poly_cylinder.h>

#include <vector>

struct IDirect3DVertexBuffer9;
struct IDirect3DIndexBuffer9;

class IXO_API ixo_scene_shaft : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // The most vertices (rings x sectors x (subdivisions + 1)) one shaft may have, which
    // bounds its device memory at about 110 MB.
    static constexpr unsigned long long max_vertices = 1ull << 22;

    // A shaft of `rings` rings with `sectors` coloured sectors of `subdivisions` facets each,
    // all ring infos zero. Null when the vertex count would exceed max_vertices. A shaft
    // with no sectors, no subdivisions or no rings draws nothing; one with a single ring
    // has its vertices at z = 0 and no triangles.
    static ixo_object_ptr<ixo_scene_shaft> create(unsigned int sectors, unsigned int subdivisions,
                                                  unsigned int rings);

    // Stores (torsion in degrees, x deflection, y deflection) for a ring and marks the
    // vertex data for rebuild; false (nothing stored) for a ring outside 0 .. count - 1.
    bool set_ring_info(unsigned int ring, float torsion, float dx, float dy);
    // The stored info of a ring, (0, 0, 0) outside the range.
    ixo_vector3<float> get_ring_info(unsigned int ring) const;
    unsigned int get_ring_count() const { return (unsigned int)(ring_infos_.size()); }
    unsigned int get_sectors() const { return sectors_; }
    unsigned int get_subdivisions() const { return subdivisions_; }

    // The scalar settings; each setter marks the vertex data for rebuild.
    float get_radius() const { return radius_; }
    void set_radius(float radius);
    float get_length() const { return length_; }
    void set_length(float length);
    // Degrees added to every ring's angle.
    float get_rotation_angle() const { return rotation_angle_; }
    void set_rotation_angle(float degrees);
    // Exaggeration of the deflections.
    float get_xy_scale() const { return xy_scale_; }
    void set_xy_scale(float scale);
    // Exaggeration of the torsion angles.
    float get_torsion_scale() const { return torsion_scale_; }
    void set_torsion_scale(float scale);

    unsigned int get_vertex_count() const;
    unsigned int get_triangle_count() const;
    // The vertices as they are built from the current settings (positions, radial normals,
    // black and white sector colours), ring by ring, sector by sector. Cost O(vertices).
    std::vector<ixo_poly_cylinder_vertex> get_vertices() const;
    // The device buffers, null while not made.
    IDirect3DVertexBuffer9* get_vertex_buffer() const { return vertex_buffer_; }
    IDirect3DIndexBuffer9* get_index_buffer() const { return index_buffer_; }

    // The box of all vertex positions for the current settings (recomputed after a change).
    ixo_box3<float> get_object_bounds() const override;
    // Makes the buffers when missing, rebuilds the vertex data when marked, and draws the
    // triangle list without culling. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Releases both buffers; always true.
    bool pre_reset_object() override;
    // Makes both buffers again (the vertex data is refilled at the next draw); always true.
    bool post_reset_object() override;

    // Copies the settings and ring infos; the buffers are shared (a reference each).
    ixo_scene_shaft& operator=(const ixo_scene_shaft& other);

protected:
    ixo_scene_shaft(unsigned int sectors, unsigned int subdivisions, unsigned int rings);
    ixo_scene_shaft(const ixo_scene_shaft& other);
    ~ixo_scene_shaft() override;

private:
    void recreate_buffers();
    void update_vertex_buffer();
    void release_buffers();
    void changed();

    std::vector<ixo_vector3<float>> ring_infos_;
    float radius_ = 1;
    float length_ = 1;
    float rotation_angle_ = 0;
    unsigned int sectors_;
    unsigned int subdivisions_;
    IDirect3DVertexBuffer9* vertex_buffer_ = nullptr;
    IDirect3DIndexBuffer9* index_buffer_ = nullptr;
    bool valid_ = false;
    mutable bool bounds_valid_ = false;
    mutable ixo_box3<float> bounds_;
    float xy_scale_ = 1;
    float torsion_scale_ = 1;
};
