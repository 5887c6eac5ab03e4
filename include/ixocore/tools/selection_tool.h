#pragma once
// ixo_selection_tool: picks objects under the pointer, or inside a rubber-band rectangle,
// into a document's selection.
//
// A gesture renders the view's picking image once, at the down, and shows a rubber band
// (a black ixo_scene_rectangle under the scene's root) that follows the drags. The up
// drops the band and reads every pixel of the rectangle from the down to the up (one pixel
// for a click) out of that image:
// - modifier1 abandons the gesture: the selection stays as it was (answer false);
// - without modifier2 the selection becomes exactly the selectable objects found (a
//   click into empty space empties it);
// - with modifier2 each object found is toggled: unselected ones are added, selected ones
//   removed.
// Objects are visited in ascending identifier order, each once however many pixels it
// covers. Positions count y from the bottom of the view; picking addresses the image with
// (w - x, h - y) for a w × h camera.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/selectable_object.h>
#include <ixocore/tools/tool.h>

class ixo_render_view;
class ixo_scene_rectangle;
class ixo_selection;

class IXO_API ixo_selection_tool : public ixo_tool
{
public:
    // A tool that changes `selection` (may be null: gestures then change nothing).
    static ixo_object_ptr<ixo_selection_tool> create(ixo_object_ptr<ixo_selection> selection);

    // The selectable object drawn at (x, y) (y from the bottom): renders the picking image
    // and reads one pixel. Null for a null view, a point outside 0..w × 0..h (without
    // rendering anything) or a pixel of no selectable object. Costs one picking pass.
    static ixo_object_ptr<ixo_selectable_object>
    get_object_in_point(ixo_object_ptr<ixo_render_view> view, int x, int y);

    void start() override;
    void stop() override;
    // Renders the picking image and shows the band at the pointer; false.
    bool on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_move(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Stretches the band to the pointer and repaints; true.
    bool on_mouse_drag(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Drops the band, changes the selection (see the class), asks every view to redraw and
    // forgets the view; true (false when modifier1 abandons). Reads at most the view's
    // pixels: a band reaching outside the view is cut to it.
    bool on_mouse_up(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                     bool modifier2) override;
    bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                            bool modifier2) override;

    // The rubber band of the current gesture; null between gestures.
    ixo_object_ptr<ixo_scene_rectangle> get_rectangle() const;

    ixo_selection_tool(const ixo_selection_tool& other);
    ixo_selection_tool& operator=(const ixo_selection_tool& other);

protected:
    explicit ixo_selection_tool(ixo_object_ptr<ixo_selection> selection);
    ~ixo_selection_tool() override;

private:
    void hide_rect();

    ixo_object_ptr<ixo_render_view> view_;
    int start_x_ = 0;
    int start_y_ = 0;
    ixo_object_ptr<ixo_scene_rectangle> rectangle_;
    ixo_object_ptr<ixo_selection> selection_;
};
