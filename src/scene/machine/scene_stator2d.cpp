#include <ixocore/scene/machine/scene_stator2d.h>

#include "scene/machine/machine_lines.h"

#include <ixocore/core/string.h>

#include <cmath>

IXO_TYPIFIED_DEFINE(ixo_scene_stator2d, IXO_TEXT("Stator 2D"))

ixo_vector4<unsigned char> ixo_scene_stator2d::m_scaleColor(128, 128, 128, 200);
float ixo_scene_stator2d::m_scaleWidth = 1.0f;
ixo_vector4<unsigned char> ixo_scene_stator2d::m_caseColor(255, 0, 0, 200);
float ixo_scene_stator2d::m_caseWidth = 1.0f;
ixo_vector4<unsigned char> ixo_scene_stator2d::m_probeColor(0, 255, 0, 200);
float ixo_scene_stator2d::m_probeWidth = 1.0f;
ixo_vector4<unsigned char> ixo_scene_stator2d::m_tickColor(128, 128, 128, 200);
float ixo_scene_stator2d::m_tickWidth = 1.0f;

namespace
{
constexpr double pi = 3.14159265358979323846;
constexpr double delta = 5 * pi / 180; // width of a tick arc

using v3 = ixo_vector3<float>;

D3DXVECTOR3 on_circle(double radius, double angle)
{
    return D3DXVECTOR3(float(radius * std::cos(angle)), float(-radius * std::sin(angle)), 0);
}

// Five points on the circle of `radius` from angle - delta/2 to angle + delta/2.
std::vector<D3DXVECTOR3> tick_arc(double radius, double angle)
{
    std::vector<D3DXVECTOR3> p;
    for (int k = 0; k < 5; ++k)
        p.push_back(on_circle(radius, angle - delta / 2 + k * delta / 4));
    return p;
}

std::vector<D3DXVECTOR3> circle(float radius, int segments)
{
    std::vector<D3DXVECTOR3> p;
    for (int k = 0; k < segments; ++k)
    {
        double const a = 2 * pi * k / segments;
        p.emplace_back(float(radius * std::cos(a)), float(radius * std::sin(a)), 0.0f);
    }
    p.push_back(p.front());
    return p;
}

std::vector<D3DXVECTOR3> as_points(const std::vector<v3>& v)
{
    std::vector<D3DXVECTOR3> p;
    p.reserve(v.size());
    for (auto const& x : v)
        p.emplace_back(x[0], x[1], x[2]);
    return p;
}

std::vector<v3> as_vectors(const std::vector<D3DXVECTOR3>& p)
{
    std::vector<v3> v;
    v.reserve(p.size());
    for (auto const& x : p)
        v.emplace_back(x.x, x.y, x.z);
    return v;
}
} // namespace

ixo_object_ptr<ixo_scene_stator2d> ixo_scene_stator2d::create()
{
    return new ixo_scene_stator2d();
}

ixo_scene_stator2d::ixo_scene_stator2d() = default;
ixo_scene_stator2d::ixo_scene_stator2d(const ixo_scene_stator2d& other) = default;
ixo_scene_stator2d& ixo_scene_stator2d::operator=(const ixo_scene_stator2d& other) = default;
ixo_scene_stator2d::~ixo_scene_stator2d() = default;

void ixo_scene_stator2d::set_start_radius(float radius)
{
    start_radius_ = radius;
    start_points_.clear();
    stop_points_.clear();
}

void ixo_scene_stator2d::set_stop_radius(float radius)
{
    stop_radius_ = radius;
    start_points_.clear();
    stop_points_.clear();
}

#define IXO_STATOR_SETTING(name, color_member, width_member)                                       \
    const ixo_vector4<unsigned char>& ixo_scene_stator2d::get_##name##_color()                     \
    {                                                                                              \
        return color_member;                                                                       \
    }                                                                                              \
    void ixo_scene_stator2d::set_##name##_color(const ixo_vector4<unsigned char>& color)           \
    {                                                                                              \
        color_member = color;                                                                      \
    }                                                                                              \
    float ixo_scene_stator2d::get_##name##_width()                                                 \
    {                                                                                              \
        return width_member;                                                                       \
    }                                                                                              \
    void ixo_scene_stator2d::set_##name##_width(float width)                                       \
    {                                                                                              \
        width_member = width;                                                                      \
    }

IXO_STATOR_SETTING(scale, m_scaleColor, m_scaleWidth)
IXO_STATOR_SETTING(case, m_caseColor, m_caseWidth)
IXO_STATOR_SETTING(probe, m_probeColor, m_probeWidth)
IXO_STATOR_SETTING(tick, m_tickColor, m_tickWidth)
#undef IXO_STATOR_SETTING

ixo_box3<float> ixo_scene_stator2d::get_object_bounds() const
{
    ixo_box3<float> box;
    float const r1 = start_radius_;
    float const r2 = stop_radius_;
    box += ixo_box3<float>(v3(-r1, -r1, 0), v3(r1, r1, 0));
    box += ixo_box3<float>(v3(-r2, -r2, 0), v3(r2, r2, 0));
    if (poly_cylinder_)
        box += poly_cylinder_->get_bounds();
    return box;
}

bool ixo_scene_stator2d::draw_object(const ixo_scene_draw_data& d)
{
    ixo_machine::line_painter lines(d, id());
    if (!lines.ok())
        return true;
    double const r1 = start_radius_;
    double const r2 = stop_radius_;
    if (start_points_.empty())
        start_points_ = as_vectors(circle(start_radius_, circle_segments_));
    if (stop_points_.empty())
        stop_points_ = as_vectors(circle(stop_radius_, circle_segments_));
    lines.draw(as_points(start_points_), m_scaleColor, m_scaleWidth);
    lines.draw(as_points(stop_points_), m_scaleColor, m_scaleWidth);
    if (!poly_cylinder_)
        return true;

    // The case: the poly-cylinder's profile, closed.
    std::vector<D3DXVECTOR3> outline;
    ixo_vector3<float> const* ids = poly_cylinder_->get_smooth_id_array();
    int const n_ids = poly_cylinder_->get_smooth_id_array_size();
    for (int i = 0; ids && i < n_ids; ++i)
        outline.emplace_back(ids[i][0], ids[i][1], ids[i][2]);
    if (!outline.empty())
        outline.push_back(outline.front());
    lines.draw(outline, m_caseColor, m_caseWidth);

    // A probe mark, a scale line and four tick arcs at every sample.
    double const h = 0.5 * delta * r2;
    for (int i = 0; i < poly_cylinder_->get_data_count(); ++i)
    {
        double const theta = double(poly_cylinder_->get_angle(i)) * pi / 180;
        double const r = poly_cylinder_->get_radius(i);
        double const ux = std::cos(theta), uy = -std::sin(theta);
        double const vx = std::sin(theta), vy = std::cos(theta);
        auto point = [&](double along, double across) {
            return D3DXVECTOR3(float(along * ux + across * vx), float(along * uy + across * vy), 0);
        };
        lines.draw(
            {point(r, -h), point(r + 10 * h, -h), point(r + 10 * h, h), point(r, h), point(r, -h)},
            m_probeColor, m_probeWidth);
        lines.draw({point(r2, 0), point((1 + case_exaggeration_) * r2, 0)}, m_scaleColor,
                   m_scaleWidth);
        for (int k = 1; k <= 4; ++k)
            lines.draw(tick_arc((1 + 0.25 * k * case_exaggeration_) * r2, theta), m_tickColor,
                       m_tickWidth);
    }

    // The blade scale, inward from the stop radius in eight directions.
    for (int j = 0; j < 8; ++j)
    {
        double const phi = j * pi / 4;
        lines.draw({on_circle(r2, phi), on_circle(r2 - (r2 - r1) * blade_exaggeration_, phi)},
                   m_scaleColor, m_scaleWidth);
        for (int k = 1; k <= 4; ++k)
            lines.draw(tick_arc(r2 - 0.25 * k * (r2 - r1) * blade_exaggeration_, phi), m_tickColor,
                       m_tickWidth);
    }
    return true;
}

bool ixo_scene_stator2d::pre_reset_object()
{
    return true;
}

bool ixo_scene_stator2d::post_reset_object()
{
    return true;
}
