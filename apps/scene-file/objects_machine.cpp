// Machine objects: poly-cylinders, shafts with their measured rings, 2-D stators (with an
// optional case poly-cylinder) and 2-D bladed rotors.

#include "object_types.h"

#include <ixocore/scene/machine/scene_rotor2d.h>
#include <ixocore/scene/machine/scene_shaft.h>
#include <ixocore/scene/machine/scene_stator2d.h>
#include <ixocore/scene/scene_poly_cylinder.h>

namespace ixo_scene_file
{
namespace
{
// Angles in degrees may run over several turns, not to infinity.
constexpr double angle_limit = 1e6;
// Deflections and scale factors are plain numbers within this.
constexpr double factor_limit = 1e6;

float optional_number(const json& j, const std::string& where, const char* key, float fallback,
                      double lo, double hi)
{
    return j.contains(key) ? read_number(j[key], child(where, key), lo, hi) : fallback;
}

float optional_size(const json& j, const std::string& where, const char* key, float fallback)
{
    return j.contains(key) ? read_size(j[key], child(where, key)) : fallback;
}

const json& array_of(const json& j, const std::string& where, std::size_t min, std::size_t max,
                     const char* what)
{
    const json& a = expect_array(j, where);
    if (a.size() < min || a.size() > max)
        fail(where, "expected " + std::to_string(min) + " to " + std::to_string(max) + " " + what +
                        ", found " + std::to_string(a.size()));
    return a;
}

struct poly_data
{
    float height = 1;
    float thickness = 0.1f;
    bool smooth = true;
    std::vector<float> angles;
    std::vector<float> radii;
    std::vector<ixo_vector4<unsigned char>> colors;

    ixo_object_ptr<ixo_scene_poly_cylinder> make() const
    {
        auto p = ixo_scene_poly_cylinder::create(height, thickness);
        p->set_smooth(smooth);
        p->set_data(int(angles.size()), angles.data(), radii.data(), colors.data());
        return p;
    }
};

const std::vector<const char*> poly_keys = {"height", "thickness", "smooth", "samples"};

poly_data read_poly(const json& j, const std::string& where)
{
    poly_data p;
    p.height = optional_size(j, where, "height", p.height);
    p.thickness = optional_number(j, where, "thickness", p.thickness, 0, coordinate_limit);
    if (j.contains("smooth"))
        p.smooth = read_bool(j["smooth"], child(where, "smooth"));
    if (!j.contains("samples"))
        fail(where, "a poly-cylinder needs \"samples\"");
    std::string const ws = child(where, "samples");
    const json& samples = array_of(j["samples"], ws, 1,
                                   std::size_t(ixo_scene_poly_cylinder::max_data_count), "samples");
    for (std::size_t i = 0; i < samples.size(); ++i)
    {
        std::string const w = child(ws, i);
        const json& s = expect_object(samples[i], w);
        check_keys(s, w, {"angle", "radius", "color"}, "a sample");
        if (!s.contains("angle") || !s.contains("radius"))
            fail(w, "a sample needs \"angle\" and \"radius\"");
        p.angles.push_back(read_number(s["angle"], child(w, "angle"), -angle_limit, angle_limit));
        p.radii.push_back(read_number(s["radius"], child(w, "radius"), 0, coordinate_limit,
                                      "a number of at least 0"));
        p.colors.push_back(s.contains("color") ? read_color(s["color"], child(w, "color"))
                                               : ixo_vector4<unsigned char>(196, 196, 196, 255));
    }
    return p;
}

object_maker read_poly_cylinder(const json& j, const std::string& where, const read_context&)
{
    poly_data const p = read_poly(j, where);
    return [p] { return ixo_object_ptr<ixo_scene_object>(p.make()); };
}

object_maker read_shaft(const json& j, const std::string& where, const read_context&)
{
    int const sectors =
        j.contains("sectors") ? read_int(j["sectors"], child(where, "sectors"), 1, 1024) : 8;
    int const subdivisions =
        j.contains("subdivisions")
            ? read_int(j["subdivisions"], child(where, "subdivisions"), 1, 1024)
            : 4;
    if (!j.contains("rings"))
        fail(where, "a shaft needs \"rings\"");
    std::string const wr = child(where, "rings");
    const json& rings = array_of(j["rings"], wr, 1, 1 << 20, "rings");
    std::vector<ixo_vector3<float>> infos;
    for (std::size_t i = 0; i < rings.size(); ++i)
    {
        std::string const w = child(wr, i);
        const json& r = rings[i];
        if (!r.is_array() || r.size() != 3)
            wrong_type(r, w, "an array [torsion in degrees, x deflection, y deflection]");
        infos.emplace_back(read_number(r[0], child(w, 0), -angle_limit, angle_limit),
                           read_number(r[1], child(w, 1), -factor_limit, factor_limit),
                           read_number(r[2], child(w, 2), -factor_limit, factor_limit));
    }
    if ((unsigned long long)infos.size() * unsigned(sectors) * (unsigned(subdivisions) + 1) >
        ixo_scene_shaft::max_vertices)
        fail(wr, "rings x sectors x (subdivisions + 1) exceeds " +
                     std::to_string(ixo_scene_shaft::max_vertices) + " vertices");
    float const radius = optional_size(j, where, "radius", 1);
    float const length = optional_size(j, where, "length", 1);
    float const rotation =
        optional_number(j, where, "rotation_angle", 0, -angle_limit, angle_limit);
    float const xy_scale = optional_number(j, where, "xy_scale", 1, -factor_limit, factor_limit);
    float const torsion_scale =
        optional_number(j, where, "torsion_scale", 1, -factor_limit, factor_limit);
    return [=]
    {
        auto s = ixo_scene_shaft::create(unsigned(sectors), unsigned(subdivisions),
                                         unsigned(infos.size()));
        for (std::size_t i = 0; i < infos.size(); ++i)
            s->set_ring_info(unsigned(i), infos[i][0], infos[i][1], infos[i][2]);
        s->set_radius(radius);
        s->set_length(length);
        s->set_rotation_angle(rotation);
        s->set_xy_scale(xy_scale);
        s->set_torsion_scale(torsion_scale);
        return ixo_object_ptr<ixo_scene_object>(s);
    };
}

object_maker read_stator(const json& j, const std::string& where, const read_context&)
{
    float const start = optional_number(j, where, "start_radius", 1, 0, coordinate_limit);
    float const stop = optional_number(j, where, "stop_radius", 2, 0, coordinate_limit);
    if (!(start <= stop))
        fail(child(where, "stop_radius"), "the stop radius lies inside the start radius");
    float const case_ex =
        optional_number(j, where, "case_exaggeration", 1, -factor_limit, factor_limit);
    float const blade_ex =
        optional_number(j, where, "blade_exaggeration", 1, -factor_limit, factor_limit);
    bool has_case = j.contains("case");
    poly_data p;
    bool show_case = true;
    if (has_case)
    {
        std::string const w = child(where, "case");
        const json& c = expect_object(j["case"], w);
        std::vector<const char*> keys = poly_keys;
        keys.push_back("show");
        check_keys(c, w, keys, "a stator case");
        p = read_poly(c, w);
        if (c.contains("show"))
            show_case = read_bool(c["show"], child(w, "show"));
    }
    return [=]
    {
        auto s = ixo_scene_stator2d::create();
        s->set_start_radius(start);
        s->set_stop_radius(stop);
        s->set_case_exaggeration(case_ex);
        s->set_blade_exaggeration(blade_ex);
        if (has_case)
        {
            auto tube = p.make();
            s->set_poly_cylinder(tube);
            // The stator draws only the case's outline; the tube itself is a child.
            if (show_case)
                s->add_child(tube);
        }
        return ixo_object_ptr<ixo_scene_object>(s);
    };
}

object_maker read_rotor(const json& j, const std::string& where, const read_context&)
{
    if (!j.contains("blades"))
        fail(where, "a rotor needs \"blades\"");
    std::string const wb = child(where, "blades");
    const json& blades = array_of(j["blades"], wb, 1, ixo_scene_rotor2d::max_blades, "blades");
    std::vector<float> radii;
    for (std::size_t i = 0; i < blades.size(); ++i)
        radii.push_back(read_number(blades[i], child(wb, i), 0, coordinate_limit,
                                    "a tip radius of at least 0"));
    float const base = optional_number(j, where, "base_radius", 0, 0, coordinate_limit);
    return [=]
    {
        auto r = ixo_scene_rotor2d::create();
        r->set_num_blades(unsigned(radii.size()));
        for (std::size_t i = 0; i < radii.size(); ++i)
            r->set_blade_radius(unsigned(i), radii[i]);
        r->set_base_radius(base);
        return ixo_object_ptr<ixo_scene_object>(r);
    };
}
} // namespace

void add_machine_types(std::vector<object_type>& types)
{
    types.push_back(
        {"poly_cylinder", poly_keys, read_poly_cylinder, true,
         R"(poly_cylinder              a tube round z whose radius and colour follow "samples":
                             [{"angle": degrees, "radius": r, "color": [r, g, b]}, ...]
                             (1 to 10000; angle a lies at (cos a, -sin a)), smoothed round
                             the circumference; "height" (1), "thickness" (0.1) of the
                             wall outside the radius, "smooth" (true; false: the polygon
                             through the samples)
)"});
    types.push_back(
        {"shaft",
         {"sectors", "subdivisions", "rings", "radius", "length", "rotation_angle", "xy_scale",
          "torsion_scale"},
         read_shaft,
         true,
         R"(shaft                      a tube from z = 0 to "length" (1) of "radius" (1) through
                             "rings": [[torsion degrees, dx, dy], ...] spread evenly along
                             it, deflections in radii; "xy_scale" (1) and "torsion_scale"
                             (1) exaggerate them, "rotation_angle" (0) turns all rings;
                             "sectors" (8) black and white sectors of "subdivisions" (4)
                             facets each
)"});
    types.push_back(
        {"stator",
         {"start_radius", "stop_radius", "case_exaggeration", "blade_exaggeration", "case"},
         read_stator,
         false,
         R"(stator                     lines in z = 0: circles at "start_radius" (1) and
                             "stop_radius" (2); with "case" (the keys of a poly_cylinder,
                             and "show" (true) to draw its tube too) the case outline, a
                             probe mark, scale line and ticks at each sample and a blade
                             scale in 8 directions, reaching "case_exaggeration" (1) stop
                             radii out and "blade_exaggeration" (1) ring widths in
)"});
    types.push_back(
        {"rotor",
         {"blades", "base_radius"},
         read_rotor,
         false,
         R"(rotor                      blade outlines in z = 0 from "base_radius" (0) out to each
                             of "blades": [tip radius, ...] (1 to 10000), blade i centred
                             at 360 i / n degrees
)"});
}
} // namespace ixo_scene_file
