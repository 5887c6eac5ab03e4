#pragma once
// ixo_scene_poly_cylinder: a closed tube around the local z axis whose inner radius and
// colour vary with the polar angle. The caller gives samples (angle in degrees, radius,
// colour); the object runs a smooth closed profile through them, gives the wall a radial
// thickness and an axial height (centred on z = 0) and colours it by interpolating the
// sample colours. Angles run clockwise seen from +z: angle a lies at (cos a, -sin a).
//
// Geometry is built lazily into four vertex buffers (inner wall, outer wall, bottom rim,
// top rim) and two index buffers (the interpolated tube and the polygon through the
// samples). Every setter that changes the shape discards the buffers; the next draw (or
// set_data, at once) rebuilds them, and so does the first draw after a device reset.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/box.h>
#include <ixocore/math/vector.h>
#include <ixocore/scene/scene_object.h>

#include <vector>

struct IDirect3DVertexBuffer9;
struct IDirect3DIndexBuffer9;

// The coloured device vertex (flexible vertex format 0x52: position, normal, diffuse),
// 28 bytes, shared by poly-cylinders and the shaft. The colour is read by the device as
// one D3DCOLOR, so its bytes are blue, green, red, alpha in that order.
struct IXO_API ixo_poly_cylinder_vertex
{
    ixo_vector3<float> position;
    ixo_vector3<float> normal;
    ixo_vector4<unsigned char> color;

    ixo_poly_cylinder_vertex();
    ixo_poly_cylinder_vertex(const ixo_vector3<float>& position, const ixo_vector3<float>& normal,
                             const ixo_vector4<unsigned char>& color);
    ixo_poly_cylinder_vertex(const ixo_poly_cylinder_vertex& other);
    ixo_poly_cylinder_vertex& operator=(const ixo_poly_cylinder_vertex& other);
    ~ixo_poly_cylinder_vertex();
};

class IXO_API ixo_scene_poly_cylinder : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // The most samples one poly-cylinder takes: each costs up to 25 steps of four
    // 56-byte vertex pairs, so this bounds the device memory of one object (about 60 MB).
    static constexpr int max_data_count = 10000;

    // A tube of the given height and wall thickness with no samples (it draws nothing).
    static ixo_object_ptr<ixo_scene_poly_cylinder> create(float height, float thickness);

    float get_height() const { return height_; }
    // Stores the height and discards the geometry.
    void set_height(float height);
    float get_thickness() const { return thickness_; }
    // Stores the thickness and discards the geometry.
    void set_thickness(float thickness);

    int get_data_count() const { return int(angles_.size()); }
    // n > 0 resizes the samples to n (new angles and radii 0, new colours (0, 0, 0, 0));
    // n <= 0 empties them. Discards the geometry. Refuses (false, nothing changed) n above
    // max_data_count.
    bool set_data_count(int n);
    // Takes n samples from the three arrays and builds the geometry at once (when a device
    // exists; the bounds and profile points are computed regardless). False, with nothing
    // changed, for n above max_data_count or a null array with n > 0. Cost O(n).
    bool set_data(int n, const float* angles, const float* radii,
                  const ixo_vector4<unsigned char>* colors);

    // Per-sample access. Getters answer 0 (or a zero colour) and setters do nothing for an
    // index outside 0 .. count - 1; setters discard the geometry.
    float get_angle(int i) const;
    void set_angle(int i, float degrees);
    float get_radius(int i) const;
    void set_radius(int i, float radius);
    using ixo_scene_object::get_color;
    using ixo_scene_object::set_color;
    ixo_vector4<unsigned char> get_color(int i) const;
    void set_color(int i, const ixo_vector4<unsigned char>& color);

    bool get_smooth() const { return smooth_; }
    // Chooses, at the next draw and without a rebuild, between the interpolated tube (true)
    // and the polygon through the samples' own angles (false).
    void set_smooth(bool smooth);

    // The profile of the last build: the inner wall's points at z = +height/2, one per step
    // around, the last repeating the first (so size = steps + 1). Null and 0 before any
    // build or with no samples.
    const ixo_vector3<float>* get_smooth_id_array() const;
    int get_smooth_id_array_size() const;

    // Vertices per buffer (two per step) and the triangle counts of the interpolated and the
    // polygonal strips, as last built; 0 before.
    int get_vertex_count() const { return vertex_count_; }
    int get_smooth_primitive_count() const { return smooth_primitives_; }
    int get_polygon_primitive_count() const { return polygon_primitives_; }
    // The device buffers: 0..3 inner wall, outer wall, bottom rim, top rim. Null while not
    // built.
    IDirect3DVertexBuffer9* get_vertex_buffer(int wall) const;

    // The box of all positions of the last build; empty before.
    ixo_box3<float> get_object_bounds() const override;
    // Builds the geometry when a buffer is missing, then draws the four strips without
    // culling, in the vertices' own colours (in the picking pass in the identifier colour).
    // Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Releases the buffers; they are rebuilt at the next draw. Always true.
    bool pre_reset_object() override;

    // Copies the samples and settings; the buffers are shared (a reference of its own each).
    ixo_scene_poly_cylinder& operator=(const ixo_scene_poly_cylinder& other);

protected:
    ixo_scene_poly_cylinder(float height, float thickness);
    ixo_scene_poly_cylinder(const ixo_scene_poly_cylinder& other);
    ~ixo_scene_poly_cylinder() override;

private:
    void update_buffers();
    void release_buffers();
    // Releases the buffers and tells the scene that what it draws has changed.
    void discard_geometry();
    bool need_buffers() const;
    void share_buffers(const ixo_scene_poly_cylinder& other);

    ixo_box3<float> bounds_;
    IDirect3DIndexBuffer9* smooth_indices_ = nullptr;
    IDirect3DIndexBuffer9* polygon_indices_ = nullptr;
    IDirect3DVertexBuffer9* walls_[4] = {};
    float height_;
    float thickness_;
    std::vector<float> angles_;
    std::vector<float> radii_;
    std::vector<ixo_vector4<unsigned char>> colors_;
    std::vector<ixo_vector3<float>> smooth_ids_;
    bool smooth_ = true;
    bool built_ = false;
    int vertex_count_ = 0;
    int smooth_primitives_ = 0;
    int polygon_primitives_ = 0;
};
