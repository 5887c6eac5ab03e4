#pragma once
// The view navigation tools: six ixo_tools that move the camera of a render view with the
// mouse. A free trackball, a trackball that keeps a vertical axis upright, panning, dolly
// zoom, dolly zoom toward the pointer and zoom to a rubber-band rectangle.
//
// Every tool works only through the camera of the view it is handed, the view's scene
// (whose bounds refit near and far after each step) and the view's paint(). A gesture is
// on_mouse_down (remembers the view and the start; answers false), any number of
// on_mouse_drag (moves the camera, repaints, answers true) and on_mouse_up. Drags and ups
// act on the view remembered from the last down, not on their argument; before any down
// they answer false and touch nothing. The rotate, pan and zoom-window tools keep the view
// after the up (a later drag without a down acts on it again); the two zoom tools drop it.
//
// Positions are pixels of the view with y counted from the bottom edge. With w × h the
// camera size, the rotate tools use normalised coordinates nx = (2x - w)/w, ny = (2y - h)/h.
// A camera without a size (w or h not positive) makes every call answer false.
// on_mouse_move and on_mouse_dbl_click do nothing; start and stop do nothing.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/quaternion.h>
#include <ixocore/math/vector.h>
#include <ixocore/tools/tool.h>

class ixo_render_view;
class ixo_scene_rectangle;

// Free trackball. Without modifiers the drag turns the camera like a ball of radius
// project_radius / sqrt(m_speed) (in normalised coordinates) under the pointer, composed
// onto the orientation taken at the down. modifier1 alone orbits about the up vector by
// -(nx - last nx) · π · m_speed, modifier2 alone about the right axis by
// -(ny - last ny) · π · m_speed, both together roll by the change of the pointer's angle
// about the view centre times m_speed.
class IXO_API ixo_rotate_view_tool : public ixo_tool
{
public:
    static ixo_object_ptr<ixo_rotate_view_tool> create();

    // Speed factor of every rotate tool of this class (1 initially). Values that are not
    // positive numbers are refused (false) and the old speed stays.
    static bool set_speed(float speed);
    static float get_speed();
    // Trackball radius at speed 1, in normalised coordinates.
    static constexpr float project_radius = 1.4f;

    void start() override;
    void stop() override;
    // Remembers the view, marks its camera dynamic and takes the camera's orientation.
    bool on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_move(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Rotates by the modifiers (see the class), refits near and far, repaints.
    bool on_mouse_drag(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Clears the camera's dynamic mark and repaints.
    bool on_mouse_up(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                     bool modifier2) override;
    bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                            bool modifier2) override;

    ixo_rotate_view_tool(const ixo_rotate_view_tool& other);
    ixo_rotate_view_tool& operator=(const ixo_rotate_view_tool& other);

protected:
    ixo_rotate_view_tool();
    ~ixo_rotate_view_tool() override;

private:
    static float m_speed;

    ixo_object_ptr<ixo_render_view> view_;
    float last_x_ = 0.0f;
    float last_y_ = 0.0f;
    ixo_quaternion<float> orientation_;
};

// Trackball that keeps `axis` (+y) upright: horizontal motion orbits about the axis by
// -(nx - last nx) · π · m_speed, vertical motion tilts toward or away from it by
// -(ny - last ny) · π · m_speed. A tilt that would carry the view direction past the axis
// stops with the eye exactly on the axis at the current distance. Modifiers are ignored.
class IXO_API ixo_constrained_rotate_view_tool : public ixo_tool
{
public:
    static ixo_object_ptr<ixo_constrained_rotate_view_tool> create();

    // As ixo_rotate_view_tool::set_speed, for this class.
    static bool set_speed(float speed);
    static float get_speed();
    static constexpr float project_radius = 1.4f;

    void start() override;
    void stop() override;
    bool on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_move(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_drag(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_up(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                     bool modifier2) override;
    bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                            bool modifier2) override;

    ixo_constrained_rotate_view_tool(const ixo_constrained_rotate_view_tool& other);
    ixo_constrained_rotate_view_tool& operator=(const ixo_constrained_rotate_view_tool& other);

protected:
    ixo_constrained_rotate_view_tool();
    ~ixo_constrained_rotate_view_tool() override;

private:
    static float m_speed;

    ixo_object_ptr<ixo_render_view> view_;
    float last_x_ = 0.0f;
    float last_y_ = 0.0f;
    ixo_quaternion<float> orientation_;
    ixo_vector3<float> axis_{0.0f, 1.0f, 0.0f};
};

// Pans: each drag moves the camera by the pointer's pixel motion (camera move), so the
// world point under the pointer stays under it.
class IXO_API ixo_pan_view_tool : public ixo_tool
{
public:
    static ixo_object_ptr<ixo_pan_view_tool> create();

    void start() override;
    void stop() override;
    bool on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_move(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_drag(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_up(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                     bool modifier2) override;
    bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                            bool modifier2) override;

    ixo_pan_view_tool(const ixo_pan_view_tool& other);
    ixo_pan_view_tool& operator=(const ixo_pan_view_tool& other);

protected:
    ixo_pan_view_tool();
    ~ixo_pan_view_tool() override;

private:
    ixo_object_ptr<ixo_render_view> view_;
    int last_x_ = 0;
    int last_y_ = 0;
};

// Dolly zoom: a drag by f = (y - last y)/h moves the eye to eye + (eye - focus) · f (up
// moves away), pushing the focus ahead one unit when the eye would pass it; horizontal
// motion pans sideways.
class IXO_API ixo_zoom_view_tool : public ixo_tool
{
public:
    static ixo_object_ptr<ixo_zoom_view_tool> create();

    void start() override;
    void stop() override;
    bool on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_move(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_drag(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Clears the dynamic mark, repaints and forgets the view.
    bool on_mouse_up(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                     bool modifier2) override;
    bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                            bool modifier2) override;

    ixo_zoom_view_tool(const ixo_zoom_view_tool& other);
    ixo_zoom_view_tool& operator=(const ixo_zoom_view_tool& other);

protected:
    ixo_zoom_view_tool();
    ~ixo_zoom_view_tool() override;

private:
    ixo_object_ptr<ixo_render_view> view_;
    int last_x_ = 0;
    int last_y_ = 0;
};

// Dolly zoom toward the pointer: moving up (f > 0) steps the eye toward the focus by
// |eye - focus| · f and sideways toward the point under the previous pointer position, so
// that point stays put; moving down backs away as the zoom tool does.
class IXO_API ixo_zoom_view_to_mouse_tool : public ixo_tool
{
public:
    static ixo_object_ptr<ixo_zoom_view_to_mouse_tool> create();

    void start() override;
    void stop() override;
    bool on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_move(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_drag(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Clears the dynamic mark, repaints and forgets the view.
    bool on_mouse_up(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                     bool modifier2) override;
    bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                            bool modifier2) override;

    ixo_zoom_view_to_mouse_tool(const ixo_zoom_view_to_mouse_tool& other);
    ixo_zoom_view_to_mouse_tool& operator=(const ixo_zoom_view_to_mouse_tool& other);

protected:
    ixo_zoom_view_to_mouse_tool();
    ~ixo_zoom_view_to_mouse_tool() override;

private:
    ixo_object_ptr<ixo_render_view> view_;
    int last_x_ = 0;
    int last_y_ = 0;
};

// Zoom to a rubber-band rectangle: the down shows a black rectangle (a child of the scene's
// root until the up), drags stretch it from the start point to the pointer, and the up
// shifts the camera sideways so the rectangle's centre comes to the view centre and sets
// the field of view to the rectangle's height (viewing direction and distance stay). A
// rectangle of zero width or height only disappears; the camera is left as it was.
class IXO_API ixo_zoom_window_tool : public ixo_tool
{
public:
    static ixo_object_ptr<ixo_zoom_window_tool> create();

    void start() override;
    void stop() override;
    // Needs a view with a scene: shows the rectangle there.
    bool on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_move(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Stretches the rectangle and repaints (the camera is not touched).
    bool on_mouse_drag(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Zooms, removes the rectangle and repaints.
    bool on_mouse_up(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                     bool modifier2) override;
    bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                            bool modifier2) override;

    // The rubber band (hidden and outside any scene between gestures).
    ixo_object_ptr<ixo_scene_rectangle> get_rectangle() const;

    ixo_zoom_window_tool(const ixo_zoom_window_tool& other);
    ixo_zoom_window_tool& operator=(const ixo_zoom_window_tool& other);

protected:
    ixo_zoom_window_tool();
    ~ixo_zoom_window_tool() override;

private:
    ixo_object_ptr<ixo_render_view> view_;
    int start_x_ = 0;
    int start_y_ = 0;
    ixo_object_ptr<ixo_scene_rectangle> rectangle_;
};
