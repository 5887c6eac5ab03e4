#include <ixocore/scene/scene_legend.h>

#include "annotation_draw.h"

IXO_TYPIFIED_DEFINE(ixo_scene_legend, IXO_TEXT("Legend"))

namespace
{
bool in_table(int index)
{
    return index >= 0 && index < ixo_scene_legend::max_segments;
}
} // namespace

ixo_object_ptr<ixo_scene_legend> ixo_scene_legend::create(const ixo_string& title)
{
    return new ixo_scene_legend(title, ixo_vector2<float>(0, 0));
}

ixo_object_ptr<ixo_scene_legend> ixo_scene_legend::create(const ixo_string& title, float x, float y)
{
    return new ixo_scene_legend(title, ixo_vector2<float>(x, y));
}

ixo_scene_legend::ixo_scene_legend(const ixo_string& title, const ixo_vector2<float>& position)
    : title_(title), position_(position)
{
    for (auto& c : colors_)
        c = ixo_vector3<int>(0, 0, 0);
}

ixo_scene_legend::ixo_scene_legend(const ixo_scene_legend& other)
    : ixo_scene_object(other), title_(other.title_), position_(other.position_),
      count_(other.count_), box_width_(other.box_width_), box_height_(other.box_height_),
      spacing_(other.spacing_), layout_(other.layout_)
{
    for (int i = 0; i < max_segments; ++i)
    {
        captions_[i] = other.captions_[i];
        colors_[i] = other.colors_[i];
    }
}

ixo_scene_legend& ixo_scene_legend::operator=(const ixo_scene_legend& other)
{
    if (this == &other)
        return *this;
    ixo_scene_object::operator=(other);
    title_ = other.title_;
    position_ = other.position_;
    count_ = other.count_;
    for (int i = 0; i < max_segments; ++i)
    {
        captions_[i] = other.captions_[i];
        colors_[i] = other.colors_[i];
    }
    box_width_ = other.box_width_;
    box_height_ = other.box_height_;
    spacing_ = other.spacing_;
    layout_ = other.layout_;
    return *this;
}

ixo_scene_legend::~ixo_scene_legend()
{
    ixo_annotation::release_texture(holds_texture_);
}

void ixo_scene_legend::set_segment(int index, const ixo_string& caption, int red, int green,
                                   int blue)
{
    if (!in_table(index))
        return;
    captions_[index] = caption;
    colors_[index] = ixo_vector3<int>(red, green, blue);
}

void ixo_scene_legend::update_legend(int layout, const ixo_string& title, int count,
                                     float box_width, float box_height, float spacing)
{
    layout_ = layout;
    title_ = title;
    if (count != -1)
        count_ = count < 0 ? 0 : count > max_segments ? max_segments : count;
    if (box_width != -1.0f)
        box_width_ = box_width;
    if (box_height != -1.0f)
        box_height_ = box_height;
    if (spacing != -1.0f)
        spacing_ = spacing;
}

void ixo_scene_legend::update_position(float x, float y)
{
    position_ = ixo_vector2<float>(x, y);
}

const ixo_string& ixo_scene_legend::get_segment_caption(int index) const
{
    static ixo_string const none;
    return in_table(index) ? captions_[index] : none;
}

ixo_vector3<int> ixo_scene_legend::get_segment_color(int index) const
{
    return in_table(index) ? colors_[index] : ixo_vector3<int>(0, 0, 0);
}

int ixo_scene_legend::get_column_offset() const
{
    return layout_ == 1 ? int((box_height_ + spacing_) / 2.0f) : 0;
}

ixo_box3<float> ixo_scene_legend::get_object_bounds() const
{
    ixo_vector3<float> const origin(0, 0, 0);
    return ixo_box3<float>(origin, origin);
}

bool ixo_scene_legend::draw_object(const ixo_scene_draw_data& d)
{
    if (d.do_mapping_shadows())
        return true;
    ID3DXFont* font = ixo_primitive::device() ? ixo_direct3d::get_font() : nullptr;
    if (!font || !ixo_annotation::acquire_texture(holds_texture_))
        return true;
    // Sizes far outside any view are not drawn rather than overflowing the pixel arithmetic.
    auto sane = [](float v) { return v > -1e6f && v < 1e6f; };
    if (!sane(position_[0]) || !sane(position_[1]) || !sane(box_width_) || !sane(box_height_) ||
        !sane(spacing_))
        return true;

    bool const mapping = d.do_mapping();
    D3DCOLOR const pick = ixo_annotation::id_color(id());
    D3DCOLOR const text = mapping ? pick : ixo_annotation::pack(get_color());
    int const x = int(position_[0]);
    int const y = int(position_[1]);
    int const box_w = int(box_width_) + 2;
    int const box_h = int(box_height_);
    float const pitch = box_height_ + spacing_;
    int const column = y + title_band + get_column_offset();
    int const count = count_ < 0 ? 0 : count_ > max_segments ? max_segments : count_;

    ixo_vector2<int> const title = ixo_annotation::measure(font, title_);
    RECT const title_rect{x, y, x + title[0], y + title_band};
    // Boxes first, in one sprite batch; the font draws through a batch of its own.
    {
        ixo_annotation::flat_batch batch(mapping);
        if (mapping)
            batch.fill(x, y + (title_band - title[1]) / 2, x + title[0],
                       y + (title_band + title[1]) / 2, pick);
        for (int i = 0; i < count; ++i)
        {
            int const top = column + int(float(i) * pitch);
            ixo_vector3<int> const c = colors_[i];
            batch.fill(x, top, x + box_w, top + box_h,
                       mapping ? pick : ixo_annotation::pack(c[0], c[1], c[2], 255));
            if (mapping)
            {
                ixo_vector2<int> const size = ixo_annotation::measure(font, captions_[i]);
                int const left = x + box_w + caption_gap;
                batch.fill(left, top + (box_h - size[1]) / 2, left + size[0],
                           top + (box_h + size[1]) / 2, pick);
            }
        }
    }
    if (mapping)
        return true;
    ixo_annotation::write(font, title_, title_rect, DT_NOCLIP | DT_VCENTER, text);
    for (int i = 0; i < count; ++i)
    {
        int const top = column + int(float(i) * pitch);
        int const left = x + box_w + caption_gap;
        RECT const r{left, top, left + 1, top + box_h};
        ixo_annotation::write(font, captions_[i], r, DT_NOCLIP | DT_VCENTER, text);
    }
    return true;
}

bool ixo_scene_legend::pre_reset_object()
{
    ixo_annotation::release_texture(holds_texture_);
    return true;
}
