#pragma once
// ixo_tool: one mode of mouse interaction with a render view (rotate, pan, zoom, select,
// drag, spin). Tools live on a document's tool stack (ixo_tool_manager); only the tool on
// top receives input, and the host forwards it: nothing in the library reads the mouse.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>

class ixo_render_view;
class ixo_tool_manager;

class IXO_API ixo_tool : public ixo_object
{
public:
    // Called when the tool becomes the active tool (after it has been linked on top).
    virtual void start() = 0;
    // Called when the tool stops being the active tool (after it has been unlinked, when
    // popped).
    virtual void stop() = 0;

    // Mouse input as the host forwards it: `view` is the render view under the pointer,
    // (x, y) the pointer in pixels of its client area with y counted from the bottom edge,
    // and the two modifier flags carry whatever the host maps to them. Each answers true
    // when the tool changed what the view shows and has already repainted the view; false
    // when nothing visible happened.
    virtual bool on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                               bool modifier2) = 0;
    virtual bool on_mouse_move(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                               bool modifier2) = 0;
    virtual bool on_mouse_drag(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                               bool modifier2) = 0;
    virtual bool on_mouse_up(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                             bool modifier2) = 0;
    virtual bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view> view, int x, int y,
                                    bool modifier1, bool modifier2) = 0;

    // The tool below this one on its manager's stack; null at the bottom and off the stack.
    virtual ixo_object_ptr<ixo_tool> get_next();
    virtual void set_next(ixo_object_ptr<ixo_tool> next);
    // The manager whose stack holds the tool; null while on no stack.
    virtual ixo_object_ptr<ixo_tool_manager> get_tool_manager();
    virtual void set_tool_manager(ixo_object_ptr<ixo_tool_manager> manager);

    // Copies share the tool below and the manager.
    ixo_tool(ixo_tool const& other);
    ixo_tool& operator=(ixo_tool const& other);

protected:
    ixo_tool();
    // Releases the manager, then the tool below.
    ~ixo_tool() override;

private:
    ixo_object_ptr<ixo_tool> next_;
    ixo_object_ptr<ixo_tool_manager> tool_manager_;
};
