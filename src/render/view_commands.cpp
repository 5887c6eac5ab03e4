#include <ixocore/render/view_commands.h>

#include <ixocore/math/box.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/render_view.h>
#include <ixocore/scene/scene.h>

#include <cmath>
#include <utility>

namespace
{
constexpr float pi_single = 3.14159265358979f;

struct standard_frame
{
    ixo_vector3<float> eye, focus, up;
};

// Indexed by ixo_standard_view_command::view_type.
const standard_frame standard_frames[6] = {
    {{0, 0, 0}, {0, 0, -1}, {0, 1, 0}},  // front: along -z
    {{0, 0, 0}, {-1, 0, 0}, {0, 1, 0}},  // right: along -x
    {{0, 0, 0}, {0, -1, 0}, {0, 0, -1}}, // top: along -y
    {{0, 0, 0}, {0, 0, 1}, {0, 1, 0}},   // back: along +z
    {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}},   // left: along +x
    {{0, 0, 0}, {0, 1, 0}, {0, 0, -1}},  // bottom: along +y
};

// The camera state the view-all and normal-to-plane commands save and exchange.
struct camera_state
{
    float fov;
    ixo_vector3<float> eye, focus, up;
    float near_distance, far_distance;
};

camera_state read_state(const ixo_camera_view& c)
{
    return {c.get_fov(), c.get_eye(), c.get_focus(), c.get_up(), c.get_near(), c.get_far()};
}

void write_state(ixo_camera_view& c, const camera_state& s)
{
    c.set_fov(s.fov);
    c.set_eye(s.eye);
    c.set_focus(s.focus);
    c.set_up(s.up);
    c.set_near(s.near_distance);
    c.set_far(s.far_distance);
}

// Puts `saved` on the camera and the camera's former state into `saved`.
void exchange_state(ixo_camera_view& c, float& fov, ixo_vector3<float>& eye,
                    ixo_vector3<float>& focus, ixo_vector3<float>& up, float& near_distance,
                    float& far_distance)
{
    camera_state const current = read_state(c);
    write_state(c, {fov, eye, focus, up, near_distance, far_distance});
    fov = current.fov;
    eye = current.eye;
    focus = current.focus;
    up = current.up;
    near_distance = current.near_distance;
    far_distance = current.far_distance;
}
} // namespace

// ---------------------------------------------------------------------------------------
// Standard view

ixo_object_ptr<ixo_standard_view_command>
ixo_standard_view_command::create(view_type view, ixo_object_ptr<ixo_camera_view> camera)
{
    return ixo_object_ptr<ixo_standard_view_command>(
        new ixo_standard_view_command(view, std::move(camera)));
}

ixo_standard_view_command::ixo_standard_view_command(view_type view,
                                                     ixo_object_ptr<ixo_camera_view> camera)
    : view_(view), camera_(std::move(camera))
{
}

ixo_standard_view_command::ixo_standard_view_command(const ixo_standard_view_command& other) =
    default;
ixo_standard_view_command&
ixo_standard_view_command::operator=(const ixo_standard_view_command& other) = default;
ixo_standard_view_command::~ixo_standard_view_command() = default;

bool ixo_standard_view_command::execute()
{
    if (!camera_)
        return true;
    saved_eye_ = camera_->get_eye();
    saved_focus_ = camera_->get_focus();
    saved_up_ = camera_->get_up();
    if (view_ < front_view || view_ > bottom_view)
        return true;
    const standard_frame& f = standard_frames[view_];
    camera_->set_eye(f.eye);
    camera_->set_focus(f.focus);
    camera_->set_up(f.up);
    return true;
}

bool ixo_standard_view_command::is_undoable()
{
    return true;
}

bool ixo_standard_view_command::undo()
{
    if (!camera_)
        return true;
    ixo_vector3<float> const eye = camera_->get_eye();
    ixo_vector3<float> const focus = camera_->get_focus();
    ixo_vector3<float> const up = camera_->get_up();
    camera_->set_eye(saved_eye_);
    camera_->set_focus(saved_focus_);
    camera_->set_up(saved_up_);
    saved_eye_ = eye;
    saved_focus_ = focus;
    saved_up_ = up;
    return true;
}

bool ixo_standard_view_command::redo()
{
    return undo();
}

// ---------------------------------------------------------------------------------------
// View all

ixo_object_ptr<ixo_view_all_command>
ixo_view_all_command::create(ixo_object_ptr<ixo_render_view> view, ixo_object_ptr<ixo_scene> scene)
{
    return ixo_object_ptr<ixo_view_all_command>(
        new ixo_view_all_command(std::move(view), std::move(scene)));
}

ixo_view_all_command::ixo_view_all_command(ixo_object_ptr<ixo_render_view> view,
                                           ixo_object_ptr<ixo_scene> scene)
    : view_(std::move(view)), scene_(std::move(scene))
{
}

ixo_view_all_command::ixo_view_all_command(const ixo_view_all_command& other) = default;
ixo_view_all_command& ixo_view_all_command::operator=(const ixo_view_all_command& other) = default;
ixo_view_all_command::~ixo_view_all_command() = default;

bool ixo_view_all_command::execute()
{
    ixo_object_ptr<ixo_camera_view> const camera = view_ ? view_->get_camera() : nullptr;
    if (!camera || !scene_)
        return true;
    camera_state const s = read_state(*camera);
    saved_fov_ = s.fov;
    saved_eye_ = s.eye;
    saved_focus_ = s.focus;
    saved_up_ = s.up;
    saved_near_ = s.near_distance;
    saved_far_ = s.far_distance;

    ixo_box3<float> const box = scene_->get_bounds();
    if (box.empty())
        return true;
    camera->view_to_box(box);
    camera->near_far_to_box(box);
    camera->set_fov(30.0f);
    view_->paint();
    return true;
}

bool ixo_view_all_command::is_undoable()
{
    return true;
}

bool ixo_view_all_command::undo()
{
    ixo_object_ptr<ixo_camera_view> const camera = view_ ? view_->get_camera() : nullptr;
    if (!camera)
        return true;
    exchange_state(*camera, saved_fov_, saved_eye_, saved_focus_, saved_up_, saved_near_,
                   saved_far_);
    if (scene_)
        scene_->set_full_update(true);
    return true;
}

bool ixo_view_all_command::redo()
{
    return undo();
}

// ---------------------------------------------------------------------------------------
// View normal to plane

ixo_object_ptr<ixo_view_normal_to_plane_command>
ixo_view_normal_to_plane_command::create(ixo_object_ptr<ixo_camera_view> camera,
                                         ixo_object_ptr<ixo_scene> scene,
                                         const ixo_plane<float>& plane)
{
    return ixo_object_ptr<ixo_view_normal_to_plane_command>(
        new ixo_view_normal_to_plane_command(std::move(camera), std::move(scene), plane));
}

ixo_view_normal_to_plane_command::ixo_view_normal_to_plane_command(
    ixo_object_ptr<ixo_camera_view> camera, ixo_object_ptr<ixo_scene> scene,
    const ixo_plane<float>& plane)
    : camera_(std::move(camera)), scene_(std::move(scene)), plane_(plane)
{
}

ixo_view_normal_to_plane_command::ixo_view_normal_to_plane_command(
    const ixo_view_normal_to_plane_command& other) = default;
ixo_view_normal_to_plane_command& ixo_view_normal_to_plane_command::operator=(
    const ixo_view_normal_to_plane_command& other) = default;
ixo_view_normal_to_plane_command::~ixo_view_normal_to_plane_command() = default;

bool ixo_view_normal_to_plane_command::execute()
{
    if (!camera_ || !scene_)
        return true;
    camera_state const s = read_state(*camera_);
    saved_fov_ = s.fov;
    saved_eye_ = s.eye;
    saved_focus_ = s.focus;
    saved_up_ = s.up;
    saved_near_ = s.near_distance;
    saved_far_ = s.far_distance;

    ixo_box3<float> const box = scene_->get_bounds();
    // The corners of an empty box would give meaningless distances.
    if (box.empty())
        return true;
    camera_->set_fov(30.0f);

    // The scene's extent on the plane: its eight corners in plane coordinates.
    ixo_box2<float> rectangle;
    for (int i = 0; i < 8; ++i)
        rectangle += plane_.project_point(box.corner((i & 1) != 0, (i & 2) != 0, (i & 4) != 0));
    float const s_diag =
        (plane_.evaluate(rectangle.maximum()) - plane_.evaluate(rectangle.minimum())).length();

    float dist = (0.5f * s_diag) / std::tan(15.0f * pi_single / 180.0f);
    if (std::fabs(dist) < 1e-6f)
        dist = 0.1f;

    ixo_vector3<float> const root = plane_.root();
    camera_->set_focus(root);
    camera_->set_eye(root + plane_.normal() * dist);
    camera_->set_up(plane_.v_direction());

    float const e = 1.1f * (box.maximum() - box.minimum()).length();
    camera_->set_near(dist >= e ? dist - e : 1e-6f);
    camera_->set_far(dist + e);
    return true;
}

bool ixo_view_normal_to_plane_command::is_undoable()
{
    return true;
}

bool ixo_view_normal_to_plane_command::undo()
{
    if (!camera_)
        return true;
    exchange_state(*camera_, saved_fov_, saved_eye_, saved_focus_, saved_up_, saved_near_,
                   saved_far_);
    return true;
}

bool ixo_view_normal_to_plane_command::redo()
{
    return undo();
}
