#include <ixocore/scene/machine/scene_rotor2d.h>

#include "scene/machine/machine_lines.h"

#include <ixocore/core/string.h>

#include <algorithm>
#include <cmath>

IXO_TYPIFIED_DEFINE(ixo_scene_rotor2d, IXO_TEXT("Rotor 2D"))

ixo_vector4<unsigned char> ixo_scene_rotor2d::m_bladeColor(0, 0, 255, 200);
float ixo_scene_rotor2d::m_bladeWidth = 1.0f;

ixo_object_ptr<ixo_scene_rotor2d> ixo_scene_rotor2d::create()
{
    return new ixo_scene_rotor2d();
}

ixo_scene_rotor2d::ixo_scene_rotor2d() = default;
ixo_scene_rotor2d::ixo_scene_rotor2d(const ixo_scene_rotor2d& other)
    : ixo_scene_object(other), radii_(other.radii_), base_radius_(other.base_radius_)
{
}
ixo_scene_rotor2d& ixo_scene_rotor2d::operator=(const ixo_scene_rotor2d& other)
{
    if (this != &other)
    {
        ixo_scene_object::operator=(other);
        radii_ = other.radii_;
        base_radius_ = other.base_radius_;
    }
    return *this;
}
ixo_scene_rotor2d::~ixo_scene_rotor2d() = default;

bool ixo_scene_rotor2d::set_num_blades(unsigned int n)
{
    if (n > max_blades)
        return false;
    radii_.resize(n, 0.0f);
    return true;
}

float ixo_scene_rotor2d::get_blade_radius(unsigned int i) const
{
    return i < radii_.size() ? radii_[i] : 0.0f;
}

void ixo_scene_rotor2d::set_blade_radius(unsigned int i, float radius)
{
    if (i < radii_.size())
        radii_[i] = radius;
}

const ixo_vector4<unsigned char>& ixo_scene_rotor2d::get_blade_color()
{
    return m_bladeColor;
}
void ixo_scene_rotor2d::set_blade_color(const ixo_vector4<unsigned char>& color)
{
    m_bladeColor = color;
}
float ixo_scene_rotor2d::get_blade_width()
{
    return m_bladeWidth;
}
void ixo_scene_rotor2d::set_blade_width(float width)
{
    m_bladeWidth = width;
}

std::vector<ixo_vector3<float>> ixo_scene_rotor2d::get_blade_outline(unsigned int i) const
{
    if (i >= radii_.size())
        return {};
    double const step = 2 * 3.14159265358979323846 / double(radii_.size());
    double const c = double(i) * step;
    double const a = c - 0.45 * step;
    double const b = c + 0.45 * step;
    float const B = base_radius_;
    float const r = radii_[i];
    auto at = [](float radius, double angle)
    {
        return ixo_vector3<float>(radius * float(std::cos(angle)), -radius * float(std::sin(angle)),
                                  0);
    };
    return {at(B, a), at(r, a), at(r, c), at(r, b), at(B, b)};
}

ixo_box3<float> ixo_scene_rotor2d::get_object_bounds() const
{
    if (radii_.empty())
        return ixo_box3<float>(ixo_vector3<float>(0, 0, 0), ixo_vector3<float>(0, 0, 0));
    float const m = *std::max_element(radii_.begin(), radii_.end());
    return ixo_box3<float>(ixo_vector3<float>(-m, -m, 0), ixo_vector3<float>(m, m, 0));
}

bool ixo_scene_rotor2d::draw_object(const ixo_scene_draw_data& d)
{
    if (radii_.empty())
        return true;
    ixo_machine::line_painter lines(d, id());
    if (!lines.ok())
        return true;
    std::vector<D3DXVECTOR3> points(5);
    for (unsigned int i = 0; i < radii_.size(); ++i)
    {
        auto const outline = get_blade_outline(i);
        for (std::size_t k = 0; k < 5; ++k)
            points[k] = D3DXVECTOR3(outline[k][0], outline[k][1], outline[k][2]);
        lines.draw(points, m_bladeColor, m_bladeWidth);
    }
    return true;
}

bool ixo_scene_rotor2d::pre_reset_object()
{
    return true;
}

bool ixo_scene_rotor2d::post_reset_object()
{
    return true;
}
