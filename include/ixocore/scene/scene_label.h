#pragma once
// ixo_scene_label: a call-out in view pixels. A filled box with a title bar and up to 32 body
// lines sits with its top-left corner on the screen position of the label's world position,
// and a leader line with an arrow head runs from the box's border to the model point the
// label annotates (its arrow position). It takes no space in the scene: its bounds are the
// single point at the origin.
//
// Box layout, for a title of h0 pixels and body lines of h1 .. hn pixels (the shared font):
// - the title bar spans the box width, h0 + 6 pixels high, filled in the label's colour,
//   with the title 3 pixels in from its top-left corner, written black on light colours and
//   white on dark ones (luminance 140 of 255 divides them);
// - the button, a square as high as the title bar, continues the title bar beyond the box's
//   right edge; the host gives it a meaning (pick_button);
// - the body below, filled near-white (250, 250, 240) at alpha 235, holds the lines in use
//   in index order, black, 3 pixels in from the left, each in a row of its height plus 2,
//   the first 4 pixels below the title bar;
// - a one-pixel dark grey (40, 40, 40) frame around box and button;
// - the leader, dark grey, from the point of the box's border nearest to the arrow's pixel
//   to that pixel, with two 10-pixel barbs; it is left out while the arrow's pixel lies
//   within 3 pixels of the box.
// With auto size on, the box takes the size fit_to_contents gives at every draw; with it off
// the box keeps its dimensions (fitted once when they are not positive) and clips the text.
//
// Picking: in the picking pass a label with the pickable property fills its title bar and
// button with its identifier colour; the body is not drawn, so a label is grabbed by its
// title bar only. A label without the pickable property cannot be picked.
//
// Frames: with space set, position and arrow position are world coordinates as they stand;
// with space clear they are in the label's own frame and go through its total transform.
// The plane, plane-fixed, update-z and needs-converting flags are kept for the tools that
// move labels: plane fixed asks them to keep the label on its plane rather than move it
// parallel to the screen, update z to take the depth of the point under the pointer, and
// needs converting tells that position must be re-expressed after space or plane fixed
// changed. The label's own drawing does not read them.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/string.h>
#include <ixocore/math/box.h>
#include <ixocore/math/plane.h>
#include <ixocore/math/vector.h>
#include <ixocore/scene/scene_object.h>

class IXO_API ixo_scene_label : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // The number of body lines a label holds.
    static constexpr int max_lines = 32;
    // Margins of fit_to_contents: the box is the widest text plus `margin_width` pixels,
    // the summed heights plus 2 per body line plus `margin_height` pixels.
    static constexpr int margin_width = 6;
    static constexpr int margin_height = 15;
    // Width of the border need_resize grabs.
    static constexpr int border = 2;

    // A label titled `text` at (0, 0, 0) or at `position`; the arrow points at the same
    // point until update_arrow_position moves it. Dimensions (-1, -1), auto size and arrow
    // on, space, plane fixed, update z and needs converting off, no line in use.
    static ixo_object_ptr<ixo_scene_label> create(const ixo_string& text);
    static ixo_object_ptr<ixo_scene_label> create(const ixo_string& text,
                                                  const ixo_vector3<float>& position);

    // Body line i (0..31): set_label stores the text and marks the line in use,
    // remove_label only clears the mark, get_label returns the stored text (also of a line
    // not in use). An index outside 0..31 changes nothing and reads as empty.
    void set_label(int i, const ixo_string& text);
    void remove_label(int i);
    const ixo_string& get_label(int i) const;
    bool is_label_used(int i) const;

    // The title.
    const ixo_string& get_text() const { return text_; }
    void update_text(const ixo_string& text);

    // Flags; a change of space or plane fixed sets needs converting.
    void set_space(bool space);
    bool get_space() const { return space_; }
    void set_plane_fixed(bool fixed);
    bool get_plane_fixed() const { return plane_fixed_; }
    void override_needs_converting(bool needs);
    bool get_needs_converting() const { return needs_converting_; }
    void show_arrow(bool show);
    bool is_arrow_shown() const { return show_arrow_; }
    void auto_size(bool on);
    bool get_auto_size() const { return auto_size_; }
    void update_z(bool on);
    bool get_update_z() const { return update_z_; }

    void set_plane(const ixo_plane<float>& plane);
    const ixo_plane<float>& get_plane() const { return plane_; }

    // The stored position, in the frame `space` names.
    void set_position(const ixo_vector3<float>& position);
    const ixo_vector3<float>& get_position() const { return position_; }
    // The position in world coordinates: as stored with space set, else through the total
    // transform. set_world_position always stores the inverse total transform applied to
    // `p`. Cost O(depth in the tree).
    ixo_vector3<float> get_world_position() const;
    void set_world_position(const ixo_vector3<float>& p);
    // The model point the arrow points at, stored as given, in the same frame as position.
    void update_arrow_position(const ixo_vector3<float>& position);
    const ixo_vector3<float>& get_arrow_position() const { return arrow_position_; }
    // The arrow position in world coordinates, converted as get_world_position converts.
    ixo_vector3<float> get_world_arrow_position() const;

    // Box size in pixels; (-1, -1) until fitted or set.
    void set_dimensions(const ixo_vector2<int>& dimensions);
    const ixo_vector2<int>& get_dimensions() const { return dimensions_; }

    // Pixel rectangles of the last draw (inclusive; empty before the first): the title
    // bar with the button, the button, and the box.
    const ixo_box2<int>& get_title_box() const { return title_box_; }
    const ixo_box2<int>& get_button_box() const { return button_box_; }
    const ixo_box2<int>& get_body_box() const { return body_box_; }

    // Whether pixel (x, y) lies on the title bar outside the button / on the button.
    bool pick_title(int x, int y) const;
    bool pick_button(int x, int y) const;
    // The borders of the box that pixel (x, y) grabs for resizing, 2 pixels wide: 1 left,
    // 2 right, 4 top, 8 bottom, summed (corners grab two); 0 for none and always 0 with
    // auto size on.
    int need_resize(int x, int y) const;

    // Sizes the box to its text with the shared font: W and H start from the title's
    // measured width and height; each line in use widens W to its own width and adds its
    // height plus 2 to H, and its height goes into the line-height table; the dimensions
    // become (W + 6, H + 15). Without a font only the title counts, as (0, 0).
    void fit_to_contents();
    // Heights of body lines 0..31 as last measured by any label (0 outside the table).
    static int get_line_height(int i);

    // The point (0, 0, 0) to (0, 0, 0).
    ixo_box3<float> get_object_bounds() const override;
    // Draws as described above and records the pixel rectangles; needs the draw data's
    // render view, device, font, line and sprite, else nothing is drawn and nothing is
    // recorded. Nothing goes into a shadow map. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;
    // Gives back the reference to the class-wide white texture; always true.
    bool pre_reset_object() override;

    ixo_scene_label& operator=(const ixo_scene_label& other);

protected:
    ixo_scene_label(const ixo_string& text, const ixo_vector3<float>& position);
    ixo_scene_label(const ixo_scene_label& other);
    ~ixo_scene_label() override;

private:
    // Measures title and lines (filling the line-height table): (W, H) before the margins.
    ixo_vector2<int> measure_contents(int& title_height) const;
    // `p` from the label's frame to world coordinates.
    ixo_vector3<float> to_world(const ixo_vector3<float>& p) const;
    void copy_from(const ixo_scene_label& other);

    static int m_line_heights[max_lines];

    ixo_string lines_[max_lines];
    bool used_[max_lines] = {};
    ixo_string text_;
    bool space_ = false;
    bool plane_fixed_ = false;
    bool needs_converting_ = false;
    bool show_arrow_ = true;
    bool auto_size_ = true;
    bool update_z_ = false;
    ixo_plane<float> plane_;
    ixo_vector3<float> position_;
    ixo_vector3<float> arrow_position_;
    ixo_vector2<int> dimensions_{-1, -1};
    ixo_box2<int> title_box_;
    ixo_box2<int> button_box_;
    ixo_box2<int> body_box_;
    bool holds_texture_ = false;
};
