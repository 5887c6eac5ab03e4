#include <ixocore/scene/scene_text.h>

#include "annotation_draw.h"

IXO_TYPIFIED_DEFINE(ixo_scene_text, IXO_TEXT("Text"))

ixo_object_ptr<ixo_scene_text> ixo_scene_text::create(const ixo_string& text)
{
    return new ixo_scene_text(text, ixo_vector3<float>(0, 0, 0));
}

ixo_object_ptr<ixo_scene_text> ixo_scene_text::create(const ixo_string& text, float x, float y,
                                                      float z)
{
    return new ixo_scene_text(text, ixo_vector3<float>(x, y, z));
}

ixo_scene_text::ixo_scene_text(const ixo_string& text, const ixo_vector3<float>& position)
    : text_(text), position_(position)
{
}

ixo_scene_text::ixo_scene_text(const ixo_scene_text& other)
    : ixo_scene_object(other), text_(other.text_), position_(other.position_)
{
}

ixo_scene_text& ixo_scene_text::operator=(const ixo_scene_text& other)
{
    ixo_scene_object::operator=(other);
    text_ = other.text_;
    position_ = other.position_;
    return *this;
}

ixo_scene_text::~ixo_scene_text() = default;

void ixo_scene_text::update_text(const ixo_string& text)
{
    text_ = text;
}

void ixo_scene_text::update_position(float x, float y, float z)
{
    position_ = ixo_vector3<float>(x, y, z);
}

ixo_box3<float> ixo_scene_text::get_object_bounds() const
{
    ixo_vector3<float> const origin(0, 0, 0);
    return ixo_box3<float>(origin, origin);
}

bool ixo_scene_text::draw_object(const ixo_scene_draw_data& d)
{
    // Screen-space text casts no shadow.
    if (d.do_mapping_shadows() || (d.do_mapping() && !get_property(pickable)))
        return true;
    ID3DXFont* font = ixo_primitive::device() ? ixo_direct3d::get_font() : nullptr;
    ixo_vector2<float> p;
    if (!font || !ixo_annotation::pixel_of(d, position_, p))
        return true;
    ixo_vector2<int> const size = ixo_annotation::measure(font, text_);
    int const left = int(p[0] - float(size[0] / 2));
    int const top = int(p[1] - float(size[1] / 2));
    if (d.do_mapping())
    {
        bool holds = false;
        if (ixo_annotation::acquire_texture(holds))
        {
            ixo_annotation::flat_batch batch(true);
            batch.fill(left, top, left + size[0], top + size[1], ixo_annotation::id_color(id()));
        }
        ixo_annotation::release_texture(holds);
        return true;
    }
    RECT const r{left, top, left + size[0], top + size[1]};
    ixo_annotation::write(font, text_, r, DT_NOCLIP, ixo_annotation::pack(get_color()));
    return true;
}
