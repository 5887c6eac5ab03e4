#pragma once
// ixo_scene_legend: a colour key in view pixels, a column of up to 32 coloured boxes with a
// caption beside each and a title above them, drawn with the device's shared sprite and
// font. It takes no space in the scene: its bounds are the single point at the origin.
//
// Layout, from the legend's position (its top-left corner, x right and y down):
// - the title, in the object's colour, at the position, centred vertically in a band
//   40 pixels high;
// - below the band the boxes, box i with its top at 40 + i · (box height + spacing), box
//   width + 2 pixels wide and box height pixels high, in segment colour i (opaque);
// - each caption in the object's colour, 6 pixels right of its box, centred on the box's
//   height.
// Layout 1 moves the whole column of boxes and captions down by
// trunc((box height + spacing) / 2) pixels; the title stays. Other layouts draw as 0.
// In the picking pass the title band's text rectangle, the boxes and the caption
// rectangles are filled with the identifier colour, so the legend picks as one object.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/string.h>
#include <ixocore/math/vector.h>
#include <ixocore/scene/scene_object.h>

class IXO_API ixo_scene_legend : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // The number of segments a legend holds.
    static constexpr int max_segments = 32;
    // Height of the title band in pixels.
    static constexpr int title_band = 40;
    // Gap between a box and its caption in pixels.
    static constexpr int caption_gap = 6;

    // A legend at (0, 0), or at the pixel position (x, y); no segments shown, boxes 32 × 16
    // pixels, 5 pixels apart, layout 0.
    static ixo_object_ptr<ixo_scene_legend> create(const ixo_string& title);
    static ixo_object_ptr<ixo_scene_legend> create(const ixo_string& title, float x, float y);

    // Segment `index` (0..31): its caption and colour, each component 0..255 (clamped when
    // drawn). An index outside 0..31 changes nothing.
    void set_segment(int index, const ixo_string& caption, int red, int green, int blue);
    // Stores layout and title; stores count (clamped into 0..32) unless it is -1, and box
    // width, box height and spacing each unless it is -1.0.
    void update_legend(int layout, const ixo_string& title, int count, float box_width,
                       float box_height, float spacing);
    void update_position(float x, float y);

    const ixo_string& get_title() const { return title_; }
    const ixo_vector2<float>& get_position() const { return position_; }
    int get_segment_count() const { return count_; }
    // Caption and colour of segment `index`; empty and (0, 0, 0) outside 0..31.
    const ixo_string& get_segment_caption(int index) const;
    ixo_vector3<int> get_segment_color(int index) const;
    float get_box_width() const { return box_width_; }
    float get_box_height() const { return box_height_; }
    float get_spacing() const { return spacing_; }
    int get_layout() const { return layout_; }
    // Pixel offset of the column of boxes below the title band: trunc((box height +
    // spacing) / 2) with layout 1, else 0.
    int get_column_offset() const;

    // The point (0, 0, 0) to (0, 0, 0).
    ixo_box3<float> get_object_bounds() const override;
    // Draws as laid out above; needs device, sprite and font, and takes a reference to the
    // class-wide 64 × 64 white texture the sprite stretches over the boxes. Nothing goes into
    // a shadow map. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Gives back the texture reference; always true.
    bool pre_reset_object() override;

    ixo_scene_legend& operator=(const ixo_scene_legend& other);

protected:
    ixo_scene_legend(const ixo_string& title, const ixo_vector2<float>& position);
    ixo_scene_legend(const ixo_scene_legend& other);
    ~ixo_scene_legend() override;

private:
    ixo_string title_;
    ixo_vector2<float> position_;
    int count_ = 0;
    ixo_string captions_[max_segments];
    ixo_vector3<int> colors_[max_segments];
    float box_width_ = 32.0f;
    float box_height_ = 16.0f;
    float spacing_ = 5.0f;
    int layout_ = 0;
    bool holds_texture_ = false;
};
