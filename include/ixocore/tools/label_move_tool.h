#pragma once
// ixo_label_move_tool: grabs a label (ixo_scene_label) by its title bar and moves or
// resizes it with the mouse.
//
// The down picks the label under the pointer (labels pick by their title bar only); drags
// then act by `mode`, with positions in pixels and y counted from the bottom of a w × h
// view, so the pointer's pixel from the top-left is P = (x, h - y):
//
// Mode 0, move: the label's box has its top-left corner at C0 = pixel_from_point(world
// position) at the down, where the pointer was at P0. Each drag puts the corner at
// C = P - (P0 - C0), keeping the pointer's offset into the box, and the label at the world
// point seen at C at the depth d0 the label had along the view direction: F =
// point_from_pixel(C) lies on the focus plane at depth D (the focus distance); the new
// world position is F + v · (d0 - D) with v the unit view direction in the orthographic
// projection, eye + (F - eye) · d0 / D in the perspective one (the label's position is
// written with set_world_position). A label at or behind the eye moves on the focus plane.
//
// Any other mode, resize: the box dimensions change by the pointer's motion since the
// previous event, dx = x - last x wider and dy = last y - y taller (moving down grows the
// box, whose top edge stays), and never fall below 20 pixels either way:
// (W, H) -> (max(20, W + dx), max(20, H + dy)). Auto size is switched off, since it would
// refit the box at every draw, and a box never sized is fitted to its contents first.
//
// The up lets the label and the view go and asks every view to redraw.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/vector.h>
#include <ixocore/tools/tool.h>

class ixo_render_view;
class ixo_scene_label;

class IXO_API ixo_label_move_tool : public ixo_tool
{
public:
    // The smallest box, in pixels each way, a resize leaves.
    static constexpr int min_size = 20;

    static ixo_object_ptr<ixo_label_move_tool> create();

    // The label whose title bar is drawn at (x, y) (y from the bottom): renders the
    // picking image and reads one pixel. Null for a null view, a point outside
    // 0..w × 0..h (nothing is rendered then) or a pixel of no label. Costs one picking
    // pass.
    static ixo_object_ptr<ixo_scene_label> get_object_in_point(ixo_object_ptr<ixo_render_view> view,
                                                               int x, int y);

    // 0 moves the label, anything else resizes its box (see the class).
    void set_mode(int mode);
    int get_mode() const;

    void start() override;
    void stop() override;
    // Grabs the label under the pointer, if any; false.
    bool on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_move(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Moves or resizes the grabbed label and repaints; true. False without a label.
    bool on_mouse_drag(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Lets go of label and view and asks every view to redraw; true. False before a down.
    bool on_mouse_up(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                     bool modifier2) override;
    bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                            bool modifier2) override;

    ixo_label_move_tool(const ixo_label_move_tool& other);
    ixo_label_move_tool& operator=(const ixo_label_move_tool& other);

protected:
    ixo_label_move_tool();
    ~ixo_label_move_tool() override;

private:
    ixo_object_ptr<ixo_render_view> view_;
    int last_x_ = 0;
    int last_y_ = 0;
    ixo_vector3<float> grab_position_;
    ixo_object_ptr<ixo_scene_label> label_;
    int mode_ = 0;
    // The pointer's offset from the box's top-left corner at the down, in pixels.
    ixo_vector2<float> grab_offset_;
};
