#pragma once
// ixo_scene_stator2d: the stator ring round a rotor, drawn in its plane (z = 0) as lines:
// the start (inner) and stop (outer) circles, and, when it holds a poly-cylinder for a
// quantity varying round the circumference, the case outline (the poly-cylinder's
// profile), a probe mark, a radial scale line and tick arcs at every sample, and a blade
// scale in eight directions. Angles turn clockwise seen from +z: angle a lies at
// (cos a, -sin a). All stators share their line colours and widths.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/box.h>
#include <ixocore/math/vector.h>
#include <ixocore/scene/scene_object.h>
#include <ixocore/scene/scene_poly_cylinder.h>

#include <vector>

class IXO_API ixo_scene_stator2d : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // A stator from radius 1 to radius 2 without a poly-cylinder.
    static ixo_object_ptr<ixo_scene_stator2d> create();

    float get_start_radius() const { return start_radius_; }
    // Stores the radius and empties both cached circles.
    void set_start_radius(float radius);
    float get_stop_radius() const { return stop_radius_; }
    void set_stop_radius(float radius);

    // The poly-cylinder whose samples and profile the stator marks (not drawn by the
    // stator itself); may be null.
    ixo_object_ptr<ixo_scene_poly_cylinder> get_poly_cylinder() const { return poly_cylinder_; }
    void set_poly_cylinder(ixo_object_ptr<ixo_scene_poly_cylinder> p) { poly_cylinder_ = p; }

    // Reach of the scale lines and ticks outside the stop radius (in units of it) and of the
    // blade scale inside it (in units of the ring's width).
    float get_case_exaggeration() const { return case_exaggeration_; }
    void set_case_exaggeration(float e) { case_exaggeration_ = e; }
    float get_blade_exaggeration() const { return blade_exaggeration_; }
    void set_blade_exaggeration(float e) { blade_exaggeration_ = e; }

    // The cached start and stop circles (37 points each once drawn, empty after a change of
    // either radius until the next draw).
    const std::vector<ixo_vector3<float>>& get_start_points() const { return start_points_; }
    const std::vector<ixo_vector3<float>>& get_stop_points() const { return stop_points_; }

    // Class-wide line colours (r, g, b, a) and widths in pixels.
    static const ixo_vector4<unsigned char>& get_scale_color();
    static void set_scale_color(const ixo_vector4<unsigned char>& color);
    static float get_scale_width();
    static void set_scale_width(float width);
    static const ixo_vector4<unsigned char>& get_case_color();
    static void set_case_color(const ixo_vector4<unsigned char>& color);
    static float get_case_width();
    static void set_case_width(float width);
    static const ixo_vector4<unsigned char>& get_probe_color();
    static void set_probe_color(const ixo_vector4<unsigned char>& color);
    static float get_probe_width();
    static void set_probe_width(float width);
    static const ixo_vector4<unsigned char>& get_tick_color();
    static void set_tick_color(const ixo_vector4<unsigned char>& color);
    static float get_tick_width();
    static void set_tick_width(float width);

    // The boxes of both circles and the poly-cylinder's bounds.
    ixo_box3<float> get_object_bounds() const override;
    // Draws the lines with the shared line object (in the identifier colour in the picking
    // pass); without a poly-cylinder only the two circles. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Nothing is held on the device; always true.
    bool pre_reset_object() override;
    bool post_reset_object() override;

    ixo_scene_stator2d& operator=(const ixo_scene_stator2d& other);

protected:
    ixo_scene_stator2d();
    ixo_scene_stator2d(const ixo_scene_stator2d& other);
    ~ixo_scene_stator2d() override;

private:
    float start_radius_ = 1;
    float stop_radius_ = 2;
    ixo_object_ptr<ixo_scene_poly_cylinder> poly_cylinder_;
    std::vector<ixo_vector3<float>> start_points_;
    std::vector<ixo_vector3<float>> stop_points_;
    int circle_segments_ = 36;
    float case_exaggeration_ = 1;
    float blade_exaggeration_ = 1;

    static ixo_vector4<unsigned char> m_scaleColor;
    static float m_scaleWidth;
    static ixo_vector4<unsigned char> m_caseColor;
    static float m_caseWidth;
    static ixo_vector4<unsigned char> m_probeColor;
    static float m_probeWidth;
    static ixo_vector4<unsigned char> m_tickColor;
    static float m_tickWidth;
};
