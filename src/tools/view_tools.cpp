#include <ixocore/tools/view_tools.h>

#include <ixocore/math/box.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/render_view.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>
#include <ixocore/scene/scene_rectangle.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{
// π rounded to single precision, as every angle here is computed.
constexpr float pi_f = 3.1415927f;

// The camera and its size as floats; null when there is no view or camera, or the camera
// has no size (every formula divides by it).
ixo_object_ptr<ixo_camera_view> sized_camera(ixo_render_view* view, float& w, float& h)
{
    if (!view)
        return nullptr;
    ixo_object_ptr<ixo_camera_view> camera = view->get_camera();
    if (!camera || camera->get_width() <= 0 || camera->get_height() <= 0)
        return nullptr;
    w = static_cast<float>(camera->get_width());
    h = static_cast<float>(camera->get_height());
    return camera;
}

float normalised(int p, float size)
{
    return (2.0f * static_cast<float>(p) - size) / size;
}

// Near and far follow the scene after each camera step, then the view shows it.
bool refit_and_paint(ixo_render_view& view, ixo_camera_view& camera)
{
    if (ixo_object_ptr<ixo_scene> scene = view.get_scene())
        camera.near_far_to_box(scene->get_bounds());
    view.paint();
    return true;
}

bool valid_speed(float speed)
{
    return std::isfinite(speed) && speed > 0.0f;
}

// Lifts (p.x, p.y) onto the virtual trackball of radius² project_radius² / speed; points
// outside it stay in the plane z = 0.
ixo_vector3<float> project_to_sphere(ixo_vector3<float> p, float radius, float speed)
{
    float const r2 = radius * radius / speed;
    float const d2 = p[0] * p[0] + p[1] * p[1];
    if (r2 > d2)
        p[2] = std::sqrt(r2 - d2);
    return p;
}

// The rotation carrying direction a into b: the half-way quaternion of (a·b, a×b).
ixo_quaternion<float> rotation_from_move(const ixo_vector3<float>& a, const ixo_vector3<float>& b)
{
    ixo_vector3<float> const v = a ^ b;
    ixo_quaternion<float> q(a * b, v[0], v[1], v[2]);
    q.normalize();
    q[0] += 1.0f;
    if (q[0] <= 0.0001f)
    {
        // Nearly opposite: any axis perpendicular to a will do.
        if (a[0] * a[0] < a[2] * a[2])
            q = ixo_quaternion<float>(-a[1], 0.0f, 0.0f, a[2]);
        else
            q = ixo_quaternion<float>(0.0f, 0.0f, a[1], -a[0]);
    }
    q.normalize();
    return q;
}

// Down of both trackballs: remember the view, the normalised pointer and the orientation.
bool trackball_down(ixo_object_ptr<ixo_render_view>& stored, ixo_object_ptr<ixo_render_view> view,
                    int x, int y, float& last_x, float& last_y, ixo_quaternion<float>& orientation)
{
    float w = 0, h = 0;
    ixo_object_ptr<ixo_camera_view> camera = sized_camera(view.get(), w, h);
    if (!camera)
        return false;
    stored = std::move(view);
    camera->set_dynamic(true);
    last_x = normalised(x, w);
    last_y = normalised(y, h);
    orientation = camera->get_orientation();
    return false;
}

bool trackball_up(ixo_render_view* view, int x, int y, float& last_x, float& last_y)
{
    float w = 0, h = 0;
    ixo_object_ptr<ixo_camera_view> camera = sized_camera(view, w, h);
    if (!camera)
        return false;
    last_x = normalised(x, w);
    last_y = normalised(y, h);
    camera->set_dynamic(false);
    view->paint();
    return true;
}

// Down of the pixel-based tools (pan and both zooms).
bool pixel_down(ixo_object_ptr<ixo_render_view>& stored, ixo_object_ptr<ixo_render_view> view,
                int x, int y, int& last_x, int& last_y)
{
    float w = 0, h = 0;
    ixo_object_ptr<ixo_camera_view> camera = sized_camera(view.get(), w, h);
    if (!camera)
        return false;
    stored = std::move(view);
    camera->set_dynamic(true);
    last_x = x;
    last_y = y;
    return false;
}

bool pixel_up(ixo_object_ptr<ixo_render_view>& stored, bool forget)
{
    float w = 0, h = 0;
    ixo_object_ptr<ixo_camera_view> camera = sized_camera(stored.get(), w, h);
    if (!camera)
        return false;
    camera->set_dynamic(false);
    stored->paint();
    if (forget)
        stored = nullptr;
    return true;
}

// Backs the eye away from the focus by (eye - focus) · (-f) for f <= 0, or toward it for
// f > 0, keeping the focus one unit ahead of an eye that passes it.
void dolly(ixo_camera_view& camera, float f)
{
    ixo_vector3<float> const eye = camera.get_eye();
    ixo_vector3<float> const focus = camera.get_focus();
    ixo_vector3<float> const d = eye - focus;
    ixo_vector3<float> const n = -d.normalized();
    ixo_vector3<float> const moved = eye + d * f;
    camera.set_eye(moved);
    if ((moved - focus) * n > 0.0f)
        camera.set_focus(moved + n);
}
} // namespace

// ---------------------------------------------------------------------------------------
// ixo_rotate_view_tool

float ixo_rotate_view_tool::m_speed = 1.0f;

ixo_object_ptr<ixo_rotate_view_tool> ixo_rotate_view_tool::create()
{
    return new ixo_rotate_view_tool;
}

ixo_rotate_view_tool::ixo_rotate_view_tool() = default;
ixo_rotate_view_tool::ixo_rotate_view_tool(const ixo_rotate_view_tool& other) = default;
ixo_rotate_view_tool& ixo_rotate_view_tool::operator=(const ixo_rotate_view_tool& other) = default;
ixo_rotate_view_tool::~ixo_rotate_view_tool() = default;

bool ixo_rotate_view_tool::set_speed(float speed)
{
    if (!valid_speed(speed))
        return false;
    m_speed = speed;
    return true;
}

float ixo_rotate_view_tool::get_speed()
{
    return m_speed;
}

void ixo_rotate_view_tool::start() {}
void ixo_rotate_view_tool::stop() {}

bool ixo_rotate_view_tool::on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool,
                                         bool)
{
    return trackball_down(view_, std::move(view), x, y, last_x_, last_y_, orientation_);
}

bool ixo_rotate_view_tool::on_mouse_move(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}

bool ixo_rotate_view_tool::on_mouse_drag(ixo_object_ptr<ixo_render_view>, int x, int y,
                                         bool modifier1, bool modifier2)
{
    float w = 0, h = 0;
    ixo_object_ptr<ixo_camera_view> camera = sized_camera(view_.get(), w, h);
    if (!camera)
        return false;
    camera->set_dynamic(true);
    float const nx = normalised(x, w);
    float const ny = normalised(y, h);
    if (modifier1 && modifier2)
        camera->rotate_around((std::atan2(nx, ny) - std::atan2(last_x_, last_y_)) * m_speed);
    else if (modifier1)
        camera->rotate_horizontally(-(nx - last_x_) * pi_f * m_speed);
    else if (modifier2)
        camera->rotate_vertically(-(ny - last_y_) * pi_f * m_speed);
    else
    {
        ixo_vector3<float> const p0 =
            project_to_sphere({last_x_, last_y_, 0.0f}, project_radius, m_speed);
        ixo_vector3<float> const p1 = project_to_sphere({nx, ny, 0.0f}, project_radius, m_speed);
        orientation_ = rotation_from_move(p0, p1) ^ orientation_;
        camera->set_orientation(orientation_);
    }
    last_x_ = nx;
    last_y_ = ny;
    return refit_and_paint(*view_, *camera);
}

bool ixo_rotate_view_tool::on_mouse_up(ixo_object_ptr<ixo_render_view>, int x, int y, bool, bool)
{
    return trackball_up(view_.get(), x, y, last_x_, last_y_);
}

bool ixo_rotate_view_tool::on_mouse_dbl_click(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}

// ---------------------------------------------------------------------------------------
// ixo_constrained_rotate_view_tool

float ixo_constrained_rotate_view_tool::m_speed = 1.0f;

ixo_object_ptr<ixo_constrained_rotate_view_tool> ixo_constrained_rotate_view_tool::create()
{
    return new ixo_constrained_rotate_view_tool;
}

ixo_constrained_rotate_view_tool::ixo_constrained_rotate_view_tool() = default;
ixo_constrained_rotate_view_tool::ixo_constrained_rotate_view_tool(
    const ixo_constrained_rotate_view_tool& other) = default;
ixo_constrained_rotate_view_tool& ixo_constrained_rotate_view_tool::operator=(
    const ixo_constrained_rotate_view_tool& other) = default;
ixo_constrained_rotate_view_tool::~ixo_constrained_rotate_view_tool() = default;

bool ixo_constrained_rotate_view_tool::set_speed(float speed)
{
    if (!valid_speed(speed))
        return false;
    m_speed = speed;
    return true;
}

float ixo_constrained_rotate_view_tool::get_speed()
{
    return m_speed;
}

void ixo_constrained_rotate_view_tool::start() {}
void ixo_constrained_rotate_view_tool::stop() {}

bool ixo_constrained_rotate_view_tool::on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x,
                                                     int y, bool, bool)
{
    return trackball_down(view_, std::move(view), x, y, last_x_, last_y_, orientation_);
}

bool ixo_constrained_rotate_view_tool::on_mouse_move(ixo_object_ptr<ixo_render_view>, int, int,
                                                     bool, bool)
{
    return false;
}

bool ixo_constrained_rotate_view_tool::on_mouse_drag(ixo_object_ptr<ixo_render_view>, int x, int y,
                                                     bool, bool)
{
    float w = 0, h = 0;
    ixo_object_ptr<ixo_camera_view> camera = sized_camera(view_.get(), w, h);
    if (!camera)
        return false;
    camera->set_dynamic(true);
    float const nx = normalised(x, w);
    float const ny = normalised(y, h);
    float const a_h = -(nx - last_x_) * pi_f * m_speed;
    float const a_v = -(ny - last_y_) * pi_f * m_speed;

    ixo_vector3<float> const eye = camera->get_eye();
    ixo_vector3<float> const focus = camera->get_focus();
    ixo_vector3<float> dir = eye - focus;
    float const dist = dir.length();
    dir.normalize();
    ixo_vector3<float> const side = (camera->get_up() ^ dir).normalized();

    float const k = std::clamp(dir * axis_, -1.0f, 1.0f);
    float const phi = std::acos(k);
    float const tilted = phi + a_v;
    constexpr float tolerance = 1e-6f;
    if (tilted < tolerance)
        camera->set_eye(focus + axis_ * dist);
    else if (tilted > pi_f - tolerance)
        camera->set_eye(focus - axis_ * dist);
    else if (phi < tolerance || phi > pi_f - tolerance)
        camera->rotate_view(ixo_quaternion<float>(a_v, -side));
    else
        camera->rotate_view(ixo_quaternion<float>(a_v, (dir ^ axis_).normalized()));
    camera->rotate_view(ixo_quaternion<float>(a_h, axis_));

    last_x_ = nx;
    last_y_ = ny;
    return refit_and_paint(*view_, *camera);
}

bool ixo_constrained_rotate_view_tool::on_mouse_up(ixo_object_ptr<ixo_render_view>, int x, int y,
                                                   bool, bool)
{
    return trackball_up(view_.get(), x, y, last_x_, last_y_);
}

bool ixo_constrained_rotate_view_tool::on_mouse_dbl_click(ixo_object_ptr<ixo_render_view>, int, int,
                                                          bool, bool)
{
    return false;
}

// ---------------------------------------------------------------------------------------
// ixo_pan_view_tool

ixo_object_ptr<ixo_pan_view_tool> ixo_pan_view_tool::create()
{
    return new ixo_pan_view_tool;
}

ixo_pan_view_tool::ixo_pan_view_tool() = default;
ixo_pan_view_tool::ixo_pan_view_tool(const ixo_pan_view_tool& other) = default;
ixo_pan_view_tool& ixo_pan_view_tool::operator=(const ixo_pan_view_tool& other) = default;
ixo_pan_view_tool::~ixo_pan_view_tool() = default;

void ixo_pan_view_tool::start() {}
void ixo_pan_view_tool::stop() {}

bool ixo_pan_view_tool::on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool,
                                      bool)
{
    return pixel_down(view_, std::move(view), x, y, last_x_, last_y_);
}

bool ixo_pan_view_tool::on_mouse_move(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}

bool ixo_pan_view_tool::on_mouse_drag(ixo_object_ptr<ixo_render_view>, int x, int y, bool, bool)
{
    float w = 0, h = 0;
    ixo_object_ptr<ixo_camera_view> camera = sized_camera(view_.get(), w, h);
    if (!camera)
        return false;
    camera->move(x - last_x_, y - last_y_);
    last_x_ = x;
    last_y_ = y;
    return refit_and_paint(*view_, *camera);
}

bool ixo_pan_view_tool::on_mouse_up(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return pixel_up(view_, false);
}

bool ixo_pan_view_tool::on_mouse_dbl_click(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}

// ---------------------------------------------------------------------------------------
// ixo_zoom_view_tool

ixo_object_ptr<ixo_zoom_view_tool> ixo_zoom_view_tool::create()
{
    return new ixo_zoom_view_tool;
}

ixo_zoom_view_tool::ixo_zoom_view_tool() = default;
ixo_zoom_view_tool::ixo_zoom_view_tool(const ixo_zoom_view_tool& other) = default;
ixo_zoom_view_tool& ixo_zoom_view_tool::operator=(const ixo_zoom_view_tool& other) = default;
ixo_zoom_view_tool::~ixo_zoom_view_tool() = default;

void ixo_zoom_view_tool::start() {}
void ixo_zoom_view_tool::stop() {}

bool ixo_zoom_view_tool::on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool,
                                       bool)
{
    return pixel_down(view_, std::move(view), x, y, last_x_, last_y_);
}

bool ixo_zoom_view_tool::on_mouse_move(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}

bool ixo_zoom_view_tool::on_mouse_drag(ixo_object_ptr<ixo_render_view>, int x, int y, bool, bool)
{
    float w = 0, h = 0;
    ixo_object_ptr<ixo_camera_view> camera = sized_camera(view_.get(), w, h);
    if (!camera)
        return false;
    dolly(*camera, static_cast<float>(y - last_y_) / h);
    camera->move(x - last_x_, 0);
    last_x_ = x;
    last_y_ = y;
    return refit_and_paint(*view_, *camera);
}

bool ixo_zoom_view_tool::on_mouse_up(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return pixel_up(view_, true);
}

bool ixo_zoom_view_tool::on_mouse_dbl_click(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}

// ---------------------------------------------------------------------------------------
// ixo_zoom_view_to_mouse_tool

ixo_object_ptr<ixo_zoom_view_to_mouse_tool> ixo_zoom_view_to_mouse_tool::create()
{
    return new ixo_zoom_view_to_mouse_tool;
}

ixo_zoom_view_to_mouse_tool::ixo_zoom_view_to_mouse_tool() = default;
ixo_zoom_view_to_mouse_tool::ixo_zoom_view_to_mouse_tool(const ixo_zoom_view_to_mouse_tool& other) =
    default;
ixo_zoom_view_to_mouse_tool&
ixo_zoom_view_to_mouse_tool::operator=(const ixo_zoom_view_to_mouse_tool& other) = default;
ixo_zoom_view_to_mouse_tool::~ixo_zoom_view_to_mouse_tool() = default;

void ixo_zoom_view_to_mouse_tool::start() {}
void ixo_zoom_view_to_mouse_tool::stop() {}

bool ixo_zoom_view_to_mouse_tool::on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y,
                                                bool, bool)
{
    return pixel_down(view_, std::move(view), x, y, last_x_, last_y_);
}

bool ixo_zoom_view_to_mouse_tool::on_mouse_move(ixo_object_ptr<ixo_render_view>, int, int, bool,
                                                bool)
{
    return false;
}

bool ixo_zoom_view_to_mouse_tool::on_mouse_drag(ixo_object_ptr<ixo_render_view>, int x, int y, bool,
                                                bool)
{
    float w = 0, h = 0;
    ixo_object_ptr<ixo_camera_view> camera = sized_camera(view_.get(), w, h);
    if (!camera)
        return false;
    float const f = static_cast<float>(y - last_y_) / h;
    if (f > 0.0f)
    {
        ixo_vector3<float> const eye = camera->get_eye();
        ixo_vector3<float> const focus = camera->get_focus();
        float const aspect = w / h;
        float const dist = (eye - focus).length();
        if (dist > 0.0f)
        {
            ixo_vector3<float> const dir = (eye - focus) / dist;
            float const pd = camera->using_perspective() ? camera->get_near() : dist;
            float const hh = std::tan(pi_f * 0.5f * camera->get_fov() / 180.0f) * pd;
            float const hw = hh * aspect;
            ixo_vector3<float> const u = camera->get_up().normalized();
            ixo_vector3<float> const right = (u ^ dir).normalized();
            ixo_vector3<float> const up2 = (dir ^ right).normalized();
            float const step = dist * f;
            // Toward the point under the previous pointer position.
            float const px = (static_cast<float>(last_x_) - w / 2.0f) / (w / 2.0f);
            float const py = (static_cast<float>(last_y_) - h / 2.0f) / (h / 2.0f);
            float const sx = px * hw * step / pd;
            float const sy = py * hh * step / pd;
            ixo_vector3<float> const moved = eye + right * sx + up2 * sy - dir * step;
            float nd = dist - step;
            if (!(nd > 1e-6f))
                nd = 1.0f;
            camera->set_eye(moved);
            camera->set_focus(moved - dir * nd);
        }
    }
    else
    {
        dolly(*camera, -f);
        camera->move(x - last_x_, 0);
    }
    last_x_ = x;
    last_y_ = y;
    return refit_and_paint(*view_, *camera);
}

bool ixo_zoom_view_to_mouse_tool::on_mouse_up(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return pixel_up(view_, true);
}

bool ixo_zoom_view_to_mouse_tool::on_mouse_dbl_click(ixo_object_ptr<ixo_render_view>, int, int,
                                                     bool, bool)
{
    return false;
}

// ---------------------------------------------------------------------------------------
// ixo_zoom_window_tool

ixo_object_ptr<ixo_zoom_window_tool> ixo_zoom_window_tool::create()
{
    return new ixo_zoom_window_tool;
}

ixo_zoom_window_tool::ixo_zoom_window_tool() : rectangle_(ixo_scene_rectangle::create())
{
    rectangle_->set_property(ixo_scene_object::visible, false);
    rectangle_->set_color(ixo_vector4<unsigned char>(0, 0, 0, 255));
}

ixo_zoom_window_tool::ixo_zoom_window_tool(const ixo_zoom_window_tool& other) = default;
ixo_zoom_window_tool& ixo_zoom_window_tool::operator=(const ixo_zoom_window_tool& other) = default;
ixo_zoom_window_tool::~ixo_zoom_window_tool() = default;

void ixo_zoom_window_tool::start() {}
void ixo_zoom_window_tool::stop() {}

ixo_object_ptr<ixo_scene_rectangle> ixo_zoom_window_tool::get_rectangle() const
{
    return rectangle_;
}

bool ixo_zoom_window_tool::on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool,
                                         bool)
{
    float w = 0, h = 0;
    if (!sized_camera(view.get(), w, h))
        return false;
    ixo_object_ptr<ixo_scene> scene = view->get_scene();
    ixo_object_ptr<ixo_scene_object> root = scene ? scene->get_root() : nullptr;
    if (!root)
        return false;
    view_ = std::move(view);
    root->add_child(rectangle_);
    start_x_ = x;
    start_y_ = y;
    // No band is left over from an earlier gesture before the first drag.
    ixo_box2<float> band;
    band += ixo_vector2<float>(static_cast<float>(x), h - static_cast<float>(y));
    rectangle_->set_rectangle(band);
    rectangle_->set_property(ixo_scene_object::visible, true);
    return false;
}

bool ixo_zoom_window_tool::on_mouse_move(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}

bool ixo_zoom_window_tool::on_mouse_drag(ixo_object_ptr<ixo_render_view>, int x, int y, bool, bool)
{
    float w = 0, h = 0;
    if (!sized_camera(view_.get(), w, h))
        return false;
    ixo_box2<float> band;
    band += ixo_vector2<float>(static_cast<float>(start_x_), h - static_cast<float>(start_y_));
    band += ixo_vector2<float>(static_cast<float>(x), h - static_cast<float>(y));
    rectangle_->set_rectangle(band);
    view_->paint();
    return true;
}

bool ixo_zoom_window_tool::on_mouse_up(ixo_object_ptr<ixo_render_view>, int x, int y, bool, bool)
{
    float w = 0, h = 0;
    ixo_object_ptr<ixo_camera_view> camera = sized_camera(view_.get(), w, h);
    if (!camera)
        return false;
    // A band without width or height gives no field of view: it only disappears.
    if (x != start_x_ && y != start_y_)
    {
        int const iw = camera->get_width();
        int const ih = camera->get_height();
        int const cx = (start_x_ + x) / 2 - iw / 2;
        int const cy = (start_y_ + y) / 2 - ih / 2;
        float const dx = -(static_cast<float>(cx) + 0.5f) / w;
        float const dy = -(static_cast<float>(cy) + 0.5f) / h;
        float const aspect = w / h;

        ixo_vector3<float> const eye = camera->get_eye();
        ixo_vector3<float> d = eye - camera->get_focus();
        float const dist = d.length();
        float const pd = camera->using_perspective() ? camera->get_near() : dist;
        float const hh = std::tan(pi_f * 0.5f * camera->get_fov() / 180.0f) * pd;
        float const hw = hh * aspect;
        float const ox = dx * hw * -2.0f;
        float const oy = dy * hh * -2.0f;
        d.normalize();
        ixo_vector3<float> const u = camera->get_up().normalized();
        ixo_vector3<float> const right = (u ^ d).normalized();
        ixo_vector3<float> const up2 = (d ^ right).normalized();
        ixo_vector3<float> const moved = eye + right * ox + up2 * oy;
        camera->set_eye(moved);
        camera->set_focus(moved - d * dist);

        float const y1 = 2.0f * static_cast<float>(y) / h - 1.0f;
        float const y0 = 2.0f * static_cast<float>(start_y_) / h - 1.0f;
        float const r = std::fabs(y1 * hh - y0 * hh) * 0.5f;
        camera->set_fov(std::atan2(r, pd) * 360.0f / pi_f);
    }
    rectangle_->set_property(ixo_scene_object::visible, false);
    if (ixo_object_ptr<ixo_scene_object> parent = rectangle_->get_parent())
        parent->remove_child(rectangle_);
    view_->paint();
    return true;
}

bool ixo_zoom_window_tool::on_mouse_dbl_click(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}
