#include <ixocore/scene/scene_label.h>

#include "annotation_draw.h"

#include <algorithm>
#include <cmath>

IXO_TYPIFIED_DEFINE(ixo_scene_label, IXO_TEXT("Label"))

int ixo_scene_label::m_line_heights[ixo_scene_label::max_lines] = {};

namespace
{
bool in_table(int i)
{
    return i >= 0 && i < ixo_scene_label::max_lines;
}

// Title-bar inset of the title text, and body inset of the lines.
constexpr int inset = 3;
// Gap between the title bar and the first body line.
constexpr int body_gap = 4;
constexpr int barb_length = 10;
constexpr float barb_angle = 0.4f;

D3DCOLOR const frame_color = ixo_annotation::pack(40, 40, 40, 255);
D3DCOLOR const body_color = ixo_annotation::pack(250, 250, 240, 235);
D3DCOLOR const body_text_color = ixo_annotation::pack(0, 0, 0, 255);

void polyline(ID3DXLine* line, std::initializer_list<ixo_vector2<float>> points, D3DCOLOR color)
{
    D3DXVECTOR2 v[8];
    DWORD n = 0;
    for (const auto& p : points)
        if (n < 8)
            v[n++] = D3DXVECTOR2(p[0], p[1]);
    line->Draw(v, n, color);
}
} // namespace

ixo_object_ptr<ixo_scene_label> ixo_scene_label::create(const ixo_string& text)
{
    return new ixo_scene_label(text, ixo_vector3<float>(0, 0, 0));
}

ixo_object_ptr<ixo_scene_label> ixo_scene_label::create(const ixo_string& text,
                                                        const ixo_vector3<float>& position)
{
    return new ixo_scene_label(text, position);
}

ixo_scene_label::ixo_scene_label(const ixo_string& text, const ixo_vector3<float>& position)
    : text_(text), position_(position), arrow_position_(position)
{
}

ixo_scene_label::ixo_scene_label(const ixo_scene_label& other) : ixo_scene_object(other)
{
    copy_from(other);
}

ixo_scene_label& ixo_scene_label::operator=(const ixo_scene_label& other)
{
    if (this == &other)
        return *this;
    ixo_scene_object::operator=(other);
    copy_from(other);
    return *this;
}

void ixo_scene_label::copy_from(const ixo_scene_label& other)
{
    for (int i = 0; i < max_lines; ++i)
    {
        lines_[i] = other.lines_[i];
        used_[i] = other.used_[i];
    }
    text_ = other.text_;
    space_ = other.space_;
    plane_fixed_ = other.plane_fixed_;
    needs_converting_ = other.needs_converting_;
    show_arrow_ = other.show_arrow_;
    auto_size_ = other.auto_size_;
    update_z_ = other.update_z_;
    plane_ = other.plane_;
    position_ = other.position_;
    arrow_position_ = other.arrow_position_;
    dimensions_ = other.dimensions_;
    title_box_ = other.title_box_;
    button_box_ = other.button_box_;
    body_box_ = other.body_box_;
}

ixo_scene_label::~ixo_scene_label()
{
    ixo_annotation::release_texture(holds_texture_);
}

void ixo_scene_label::set_label(int i, const ixo_string& text)
{
    if (!in_table(i))
        return;
    lines_[i] = text;
    used_[i] = true;
}

void ixo_scene_label::remove_label(int i)
{
    if (in_table(i))
        used_[i] = false;
}

const ixo_string& ixo_scene_label::get_label(int i) const
{
    static ixo_string const none;
    return in_table(i) ? lines_[i] : none;
}

bool ixo_scene_label::is_label_used(int i) const
{
    return in_table(i) && used_[i];
}

void ixo_scene_label::update_text(const ixo_string& text)
{
    text_ = text;
}

void ixo_scene_label::set_space(bool space)
{
    if (space != space_)
        needs_converting_ = true;
    space_ = space;
}

void ixo_scene_label::set_plane_fixed(bool fixed)
{
    if (fixed != plane_fixed_)
        needs_converting_ = true;
    plane_fixed_ = fixed;
}

void ixo_scene_label::override_needs_converting(bool needs)
{
    needs_converting_ = needs;
}

void ixo_scene_label::show_arrow(bool show)
{
    show_arrow_ = show;
}

void ixo_scene_label::auto_size(bool on)
{
    auto_size_ = on;
}

void ixo_scene_label::update_z(bool on)
{
    update_z_ = on;
}

void ixo_scene_label::set_plane(const ixo_plane<float>& plane)
{
    plane_ = plane;
}

void ixo_scene_label::set_position(const ixo_vector3<float>& position)
{
    position_ = position;
}

ixo_vector3<float> ixo_scene_label::to_world(const ixo_vector3<float>& p) const
{
    return space_ ? p : get_total_transform() * p;
}

ixo_vector3<float> ixo_scene_label::get_world_position() const
{
    return to_world(position_);
}

void ixo_scene_label::set_world_position(const ixo_vector3<float>& p)
{
    position_ = get_total_transform().inverse() * p;
}

void ixo_scene_label::update_arrow_position(const ixo_vector3<float>& position)
{
    arrow_position_ = position;
}

ixo_vector3<float> ixo_scene_label::get_world_arrow_position() const
{
    return to_world(arrow_position_);
}

void ixo_scene_label::set_dimensions(const ixo_vector2<int>& dimensions)
{
    dimensions_ = dimensions;
}

bool ixo_scene_label::pick_title(int x, int y) const
{
    ixo_vector2<int> const p(x, y);
    return title_box_.contains(p) && !button_box_.contains(p);
}

bool ixo_scene_label::pick_button(int x, int y) const
{
    return button_box_.contains(ixo_vector2<int>(x, y));
}

int ixo_scene_label::need_resize(int x, int y) const
{
    if (auto_size_ || body_box_.empty())
        return 0;
    ixo_vector2<int> const lo = body_box_.minimum();
    ixo_vector2<int> const hi = body_box_.maximum();
    int grab = 0;
    if (lo[0] <= x && x < lo[0] + border)
        grab += 1;
    if (hi[0] - border < x && x <= hi[0])
        grab += 2;
    if (lo[1] <= y && y < lo[1] + border)
        grab += 4;
    if (hi[1] - border < y && y <= hi[1])
        grab += 8;
    return grab;
}

ixo_vector2<int> ixo_scene_label::measure_contents(int& title_height) const
{
    ID3DXFont* font = ixo_primitive::device() ? ixo_direct3d::get_font() : nullptr;
    ixo_vector2<int> const title = ixo_annotation::measure(font, text_);
    title_height = title[1];
    int w = title[0];
    int h = title[1];
    for (int i = 0; i < max_lines; ++i)
    {
        if (!used_[i])
            continue;
        ixo_vector2<int> const line = ixo_annotation::measure(font, lines_[i]);
        w = std::max(w, line[0]);
        h += line[1] + 2;
        m_line_heights[i] = line[1];
    }
    return ixo_vector2<int>(w, h);
}

void ixo_scene_label::fit_to_contents()
{
    int title_height = 0;
    ixo_vector2<int> const size = measure_contents(title_height);
    dimensions_ = ixo_vector2<int>(size[0] + margin_width, size[1] + margin_height);
}

int ixo_scene_label::get_line_height(int i)
{
    return in_table(i) ? m_line_heights[i] : 0;
}

ixo_box3<float> ixo_scene_label::get_object_bounds() const
{
    ixo_vector3<float> const origin(0, 0, 0);
    return ixo_box3<float>(origin, origin);
}

bool ixo_scene_label::draw_object(const ixo_scene_draw_data& d)
{
    bool const mapping = d.do_mapping();
    if (d.do_mapping_shadows() || (mapping && !get_property(pickable)))
        return true;
    IDirect3DDevice9* device = ixo_primitive::device();
    ID3DXFont* font = device ? ixo_direct3d::get_font() : nullptr;
    ID3DXLine* line = device ? ixo_direct3d::get_line() : nullptr;
    ixo_vector2<float> anchor;
    if (!font || !line || !ixo_annotation::acquire_texture(holds_texture_) ||
        !ixo_annotation::pixel_of(d, get_world_position(), anchor))
        return true;

    int title_height = 0;
    ixo_vector2<int> const contents = measure_contents(title_height);
    if (auto_size_ || dimensions_[0] <= 0 || dimensions_[1] <= 0)
        dimensions_ = ixo_vector2<int>(contents[0] + margin_width, contents[1] + margin_height);
    // Sizes a host set beyond any view are drawn at a view-sized bound instead.
    int const w = std::min(dimensions_[0], 1 << 16);
    int const h = std::min(dimensions_[1], 1 << 16);
    int const x0 = int(anchor[0]);
    int const y0 = int(anchor[1]);
    int const bar = title_height + 2 * inset;

    body_box_ = ixo_box2<int>(ixo_vector2<int>(x0, y0), ixo_vector2<int>(x0 + w - 1, y0 + h - 1));
    button_box_ = ixo_box2<int>(ixo_vector2<int>(x0 + w, y0),
                                ixo_vector2<int>(x0 + w + bar - 1, y0 + bar - 1));
    title_box_ =
        ixo_box2<int>(ixo_vector2<int>(x0, y0), ixo_vector2<int>(x0 + w + bar - 1, y0 + bar - 1));

    if (mapping)
    {
        ixo_annotation::flat_batch batch(true);
        batch.fill(x0, y0, x0 + w + bar, y0 + bar, ixo_annotation::id_color(id()));
        return true;
    }

    ixo_vector4<unsigned char> const c = get_color();
    D3DCOLOR const bar_color = ixo_annotation::pack(c[0], c[1], c[2], 255);
    float const luminance = 0.299f * c[0] + 0.587f * c[1] + 0.114f * c[2];
    D3DCOLOR const title_color = luminance >= 140.0f ? ixo_annotation::pack(0, 0, 0, 255)
                                                     : ixo_annotation::pack(255, 255, 255, 255);

    // The leader first, so that the box covers its start.
    ixo_vector2<float> target;
    if (show_arrow_ && ixo_annotation::pixel_of(d, get_world_arrow_position(), target))
    {
        ixo_vector2<float> const from(std::clamp(target[0], float(x0), float(x0 + w - 1)),
                                      std::clamp(target[1], float(y0), float(y0 + h - 1)));
        float const dx = target[0] - from[0];
        float const dy = target[1] - from[1];
        float const length = std::sqrt(dx * dx + dy * dy);
        if (length > 3.0f)
        {
            polyline(line, {from, target}, frame_color);
            // Barbs: the leader's direction turned back by ± barb_angle.
            float const ux = -dx / length, uy = -dy / length;
            for (float a : {barb_angle, -barb_angle})
            {
                float const bx = ux * std::cos(a) - uy * std::sin(a);
                float const by = ux * std::sin(a) + uy * std::cos(a);
                polyline(line,
                         {target, ixo_vector2<float>(target[0] + barb_length * bx,
                                                     target[1] + barb_length * by)},
                         frame_color);
            }
        }
    }

    {
        ixo_annotation::flat_batch batch(false);
        batch.fill(x0, y0 + bar, x0 + w, y0 + h, body_color);
        batch.fill(x0, y0, x0 + w + bar, y0 + bar, bar_color);
    }
    float const l = float(x0), t = float(y0), r = float(x0 + w - 1), b = float(y0 + h - 1);
    float const br = float(x0 + w + bar - 1), bb = float(y0 + bar - 1);
    polyline(line,
             {ixo_vector2<float>(l, t), ixo_vector2<float>(br, t), ixo_vector2<float>(br, bb),
              ixo_vector2<float>(r, bb), ixo_vector2<float>(r, b), ixo_vector2<float>(l, b),
              ixo_vector2<float>(l, t)},
             frame_color);
    polyline(line, {ixo_vector2<float>(l, bb), ixo_vector2<float>(r, bb)}, frame_color);
    polyline(line, {ixo_vector2<float>(r, t), ixo_vector2<float>(r, bb)}, frame_color);
    // The button's mark: a short bar across its middle.
    float const mid = t + float(bar) / 2.0f;
    polyline(line,
             {ixo_vector2<float>(r + float(bar) / 4.0f, mid),
              ixo_vector2<float>(br - float(bar) / 4.0f, mid)},
             title_color);

    // Text, clipped to the box: only a box the host made smaller than its text cuts it.
    RECT const title_rect{x0 + inset, y0 + inset, x0 + w - inset, y0 + bar};
    ixo_annotation::write(font, text_, title_rect, DT_LEFT | DT_TOP, title_color);
    int y = y0 + bar + body_gap;
    for (int i = 0; i < max_lines; ++i)
    {
        if (!used_[i])
            continue;
        int const line_height = m_line_heights[i];
        RECT const rect{x0 + inset, y + 1, x0 + w - inset, std::min(y + 1 + line_height, y0 + h)};
        if (rect.top < rect.bottom)
            ixo_annotation::write(font, lines_[i], rect, DT_LEFT | DT_TOP, body_text_color);
        y += line_height + 2;
    }
    return true;
}

bool ixo_scene_label::pre_reset_object()
{
    ixo_annotation::release_texture(holds_texture_);
    return true;
}
