#pragma once
// ixo_scene_rotor2d: a bladed rotor drawn in its plane (z = 0) as line outlines, one per
// blade. Blade i is centred at angle 2 pi i / n (turning clockwise seen from +z: angle a
// lies at (cos a, -sin a)) and spans 0.9 of its share of the circle, from the hub's base
// radius out to its own tip radius. All rotors share one line colour and width.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/box.h>
#include <ixocore/math/vector.h>
#include <ixocore/scene/scene_object.h>

#include <vector>

class IXO_API ixo_scene_rotor2d : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // The most blades one rotor takes.
    static constexpr unsigned int max_blades = 10000;

    // A rotor with no blades and base radius 0.
    static ixo_object_ptr<ixo_scene_rotor2d> create();

    // Resizes the blades to n, new ones with tip radius 0; false (unchanged) above
    // max_blades.
    bool set_num_blades(unsigned int n);
    unsigned int get_num_blades() const { return (unsigned int)(radii_.size()); }
    // Tip radius of a blade; 0 for an index outside the blades, where the setter does
    // nothing.
    float get_blade_radius(unsigned int i) const;
    void set_blade_radius(unsigned int i, float radius);
    float get_base_radius() const { return base_radius_; }
    void set_base_radius(float radius) { base_radius_ = radius; }

    // Line colour (r, g, b, a) and width in pixels of every rotor; (0, 0, 255, 200) and 1.
    static const ixo_vector4<unsigned char>& get_blade_color();
    static void set_blade_color(const ixo_vector4<unsigned char>& color);
    static float get_blade_width();
    static void set_blade_width(float width);

    // The four corner points of blade i's outline and its tip's middle, in drawing order:
    // base and tip at the leading side, the tip's centre, tip and base at the trailing side.
    // Empty for an index outside the blades.
    std::vector<ixo_vector3<float>> get_blade_outline(unsigned int i) const;

    // (-m, -m, 0) to (m, m, 0) with m the largest tip radius; the origin with no blades.
    ixo_box3<float> get_object_bounds() const override;
    // Draws one 5-point polyline per blade with the shared line object (in the identifier
    // colour in the picking pass). Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Nothing is held on the device; always true.
    bool pre_reset_object() override;
    bool post_reset_object() override;

    ixo_scene_rotor2d& operator=(const ixo_scene_rotor2d& other);

protected:
    ixo_scene_rotor2d();
    ixo_scene_rotor2d(const ixo_scene_rotor2d& other);
    ~ixo_scene_rotor2d() override;

private:
    std::vector<float> radii_;
    float base_radius_ = 0;

    static ixo_vector4<unsigned char> m_bladeColor;
    static float m_bladeWidth;
};
