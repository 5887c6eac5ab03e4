#pragma once
// ixo_spin_object_tool: turns one scene object about the z axis with the mouse and, when
// released while turning, keeps it spinning on the host's application-idle events with a
// speed that decays by e^(-t) (a time constant of one second).
//
// Drags turn the object by the angle the pointer swept about m_origin, seen on the focus
// plane: a = normalize(p0 - m_origin), b = normalize(p1 - m_origin) for the world points
// under the previous and the current pointer, φ = acos(a·b), negated when (a × b)·z > 0,
// and the object's transform becomes rotation_transform(φ, z) · transform. The up starts a
// spin when the last step's angular speed ω = φ / (time since the step before) exceeds 0.01
// rad/s: each idle event then turns the object by dt · ω, repaints, and multiplies ω by
// e^(-dt) (dt measured with QueryPerformanceCounter). Below 0.01 rad/s idle events leave the
// object alone. The next down of any spin tool ends the spin (one spin per process).
//
// Positions count y from the bottom of the view.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/events/event_manager.h>
#include <ixocore/math/quaternion.h>
#include <ixocore/math/vector.h>
#include <ixocore/tools/tool.h>

#include <cstdint>

class ixo_render_view;
class ixo_scene_object;

class IXO_API ixo_spin_object_tool : public ixo_tool
{
public:
    // A tool that turns `object` (may be null: gestures then turn nothing).
    static ixo_object_ptr<ixo_spin_object_tool> create(ixo_object_ptr<ixo_scene_object> object);

    // A speed factor kept for hosts (1 initially); values that are not positive numbers are
    // refused (false) and the old value stays.
    static bool set_speed(float speed);
    static float get_speed();
    // The centre of the gesture in world coordinates (the origin initially).
    static void set_origin(const ixo_vector3<float>& origin);
    static ixo_vector3<float> get_origin();
    // Whether a released spin is still turning its object (faster than 0.01 rad/s): a host
    // posts idle events only while this holds.
    static bool is_spinning();

    void start() override;
    void stop() override;
    // Ends a running spin, remembers the view and the pointer, marks the camera dynamic;
    // false.
    bool on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    bool on_mouse_move(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Turns the object (see the class), refits near and far, repaints; true. False, doing
    // nothing, before a down or while the camera has no size.
    bool on_mouse_drag(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                       bool modifier2) override;
    // Clears the dynamic mark and starts a spin when the last step was fast enough; true.
    bool on_mouse_up(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                     bool modifier2) override;
    bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view> view, int x, int y, bool modifier1,
                            bool modifier2) override;

    ixo_spin_object_tool(const ixo_spin_object_tool& other);
    ixo_spin_object_tool& operator=(const ixo_spin_object_tool& other);

protected:
    explicit ixo_spin_object_tool(ixo_object_ptr<ixo_scene_object> object);
    ~ixo_spin_object_tool() override;

private:
    static float m_speed;
    static ixo_vector3<float> m_origin;
    static ixo_event_key m_event_key;

    ixo_object_ptr<ixo_render_view> view_;
    int last_x_ = 0;
    int last_y_ = 0;
    ixo_quaternion<float> orientation_;
    ixo_object_ptr<ixo_scene_object> object_;
    std::int64_t last_time_ = 0;
    float last_step_time_ = 0.0f;
    float last_step_angle_ = 0.0f;
};
