#include <ixocore/scene/scene_rectangle.h>

#include "primitive_device.h"

#include <ixocore/core/string.h>

IXO_TYPIFIED_DEFINE(ixo_scene_rectangle, IXO_TEXT("Rectangle"))

namespace
{
// A material component 0..1 as a byte, truncated; out-of-range values are clamped.
DWORD to_byte(float c)
{
    if (!(c > 0.0f))
        return 0;
    if (c >= 1.0f)
        return 255;
    return static_cast<DWORD>(c * 255.0f);
}
} // namespace

ixo_object_ptr<ixo_scene_rectangle> ixo_scene_rectangle::create()
{
    return new ixo_scene_rectangle;
}

ixo_scene_rectangle::ixo_scene_rectangle()
{
    set_property(in_foreground, true);
    set_property(in_background, false);
}

ixo_scene_rectangle::ixo_scene_rectangle(const ixo_scene_rectangle& other)
    : ixo_scene_object(other), rectangle_(other.rectangle_)
{
}

ixo_scene_rectangle& ixo_scene_rectangle::operator=(const ixo_scene_rectangle& other)
{
    ixo_scene_object::operator=(other);
    rectangle_ = other.rectangle_;
    return *this;
}

ixo_scene_rectangle::~ixo_scene_rectangle() = default;

void ixo_scene_rectangle::set_rectangle(const ixo_box2<float>& rectangle)
{
    rectangle_ = rectangle;
}

const ixo_box2<float>& ixo_scene_rectangle::get_rectangle() const
{
    return rectangle_;
}

ixo_box3<float> ixo_scene_rectangle::get_object_bounds() const
{
    return ixo_box3<float>();
}

bool ixo_scene_rectangle::draw_object(const ixo_scene_draw_data&)
{
    IDirect3DDevice9* device = ixo_primitive::device();
    ID3DXLine* line = device ? ixo_direct3d::get_line() : nullptr;
    if (!line)
        return true;
    D3DMATERIAL9 material{};
    device->GetMaterial(&material);
    D3DCOLOR const color = (to_byte(material.Diffuse.a) << 24) |
                           (to_byte(material.Diffuse.r) << 16) |
                           (to_byte(material.Diffuse.g) << 8) | to_byte(material.Diffuse.b);
    ixo_vector2<float> const corners[5] = {
        rectangle_.corner(false, false), rectangle_.corner(true, false),
        rectangle_.corner(true, true), rectangle_.corner(false, true),
        rectangle_.corner(false, false)};
    D3DXVECTOR2 points[5];
    for (int i = 0; i < 5; ++i)
        points[i] = D3DXVECTOR2(corners[i][0], corners[i][1]);
    line->Draw(points, 5, color);
    return true;
}
