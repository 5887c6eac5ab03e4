#include <ixocore/render/scene_draw_data.h>

#include "render/view_link.h"

ixo_scene_draw_data::ixo_scene_draw_data() = default;

ixo_scene_draw_data::ixo_scene_draw_data(const ixo_scene_draw_data& other) = default;

ixo_scene_draw_data& ixo_scene_draw_data::operator=(const ixo_scene_draw_data& other) = default;

ixo_scene_draw_data::~ixo_scene_draw_data() = default;

void ixo_scene_draw_data::set_bit(pass_bit bit, bool on)
{
    if (on)
        flags_ |= bit;
    else
        flags_ &= ~static_cast<std::uint32_t>(bit);
}

bool ixo_scene_draw_data::has_bit(pass_bit bit) const
{
    return (flags_ & bit) != 0;
}

void ixo_scene_draw_data::set_background(bool on)
{
    set_bit(background_bit, on);
}

bool ixo_scene_draw_data::do_background() const
{
    return has_bit(background_bit);
}

void ixo_scene_draw_data::set_foreground(bool on)
{
    set_bit(foreground_bit, on);
}

bool ixo_scene_draw_data::do_foreground() const
{
    return has_bit(foreground_bit);
}

void ixo_scene_draw_data::set_transparent(bool on)
{
    set_bit(transparent_bit, on);
}

bool ixo_scene_draw_data::do_transparent() const
{
    return has_bit(transparent_bit);
}

void ixo_scene_draw_data::set_mapping(bool on)
{
    set_bit(mapping_bit, on);
}

bool ixo_scene_draw_data::do_mapping() const
{
    return has_bit(mapping_bit);
}

void ixo_scene_draw_data::set_mapping_shadows(bool on)
{
    set_bit(mapping_shadows_bit, on);
}

bool ixo_scene_draw_data::do_mapping_shadows() const
{
    return has_bit(mapping_shadows_bit);
}

void ixo_scene_draw_data::set_draw_mapped_shadows(bool on)
{
    set_bit(draw_mapped_shadows_bit, on);
}

bool ixo_scene_draw_data::do_draw_mapped_shadows() const
{
    return has_bit(draw_mapped_shadows_bit);
}

void ixo_scene_draw_data::set_render_view(ixo_object_ptr<ixo_render_view> view)
{
    render_view_ = std::move(view);
}

ixo_object_ptr<ixo_render_view> ixo_scene_draw_data::get_render_view() const
{
    return render_view_;
}
