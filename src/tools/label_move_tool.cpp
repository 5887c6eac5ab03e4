#include <ixocore/tools/label_move_tool.h>

#include <ixocore/core/identifiable_object.h>
#include <ixocore/events/event_manager.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/render_view.h>
#include <ixocore/scene/scene_label.h>
#include <ixocore/tools/selection_tool.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{
// No box grows beyond what any view could show.
constexpr long max_size = 1L << 16;
} // namespace

ixo_object_ptr<ixo_label_move_tool> ixo_label_move_tool::create()
{
    return new ixo_label_move_tool;
}

ixo_label_move_tool::ixo_label_move_tool() = default;
ixo_label_move_tool::ixo_label_move_tool(const ixo_label_move_tool& other) = default;
ixo_label_move_tool& ixo_label_move_tool::operator=(const ixo_label_move_tool& other) = default;
ixo_label_move_tool::~ixo_label_move_tool() = default;

void ixo_label_move_tool::set_mode(int mode)
{
    mode_ = mode;
}

int ixo_label_move_tool::get_mode() const
{
    return mode_;
}

void ixo_label_move_tool::start() {}
void ixo_label_move_tool::stop() {}

ixo_object_ptr<ixo_scene_label>
ixo_label_move_tool::get_object_in_point(ixo_object_ptr<ixo_render_view> view, int x, int y)
{
    ixo_object_ptr<ixo_selectable_object> const found =
        ixo_selection_tool::get_object_in_point(std::move(view), x, y);
    return dynamic_cast<ixo_scene_label*>(found.get());
}

bool ixo_label_move_tool::on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool,
                                        bool)
{
    if (!view)
        return false;
    view_ = std::move(view);
    label_ = get_object_in_point(view_, x, y);
    if (label_)
    {
        last_x_ = x;
        last_y_ = y;
        grab_position_ = label_->get_world_position();
        ixo_object_ptr<ixo_camera_view> camera = view_->get_camera();
        ixo_vector2<float> const corner = camera->pixel_from_point(grab_position_);
        grab_offset_ = ixo_vector2<float>(static_cast<float>(x) - corner[0],
                                          static_cast<float>(camera->get_height() - y) - corner[1]);
    }
    return false;
}

bool ixo_label_move_tool::on_mouse_move(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}

bool ixo_label_move_tool::on_mouse_drag(ixo_object_ptr<ixo_render_view>, int x, int y, bool, bool)
{
    if (!view_ || !label_)
        return false;
    ixo_object_ptr<ixo_camera_view> camera = view_->get_camera();
    int const h = camera->get_height();
    if (camera->get_width() <= 0 || h <= 0)
        return false;
    if (mode_ == 0)
    {
        // The corner where the pointer's offset into the box puts it, on the focus plane ...
        float const cx = static_cast<float>(x) - grab_offset_[0];
        float const cy = static_cast<float>(h - y) - grab_offset_[1];
        ixo_vector3<float> const on_focus_plane = camera->point_from_pixel(
            static_cast<int>(std::lround(cx)), static_cast<int>(std::lround(cy)));
        // ... then back to the depth the label had.
        ixo_vector3<float> const eye = camera->get_eye();
        ixo_vector3<float> forward = camera->get_focus() - eye;
        float const focus_depth = forward.normalize();
        float const depth = (grab_position_ - eye) * forward;
        ixo_vector3<float> target = on_focus_plane;
        if (!camera->using_perspective())
            target = on_focus_plane + forward * (depth - focus_depth);
        else if (depth > 1e-6f && focus_depth > 1e-6f)
            target = eye + (on_focus_plane - eye) * (depth / focus_depth);
        label_->set_world_position(target);
    }
    else
    {
        ixo_vector2<int> size = label_->get_dimensions();
        if (size[0] <= 0 || size[1] <= 0)
            label_->fit_to_contents();
        size = label_->get_dimensions();
        label_->auto_size(false);
        // In 64 bits: pointer positions far outside the view cannot overflow.
        auto const grown = [](int from, long by)
        { return static_cast<int>(std::clamp(long(from) + by, long(min_size), max_size)); };
        label_->set_dimensions(
            ixo_vector2<int>(grown(size[0], long(x) - last_x_), grown(size[1], long(last_y_) - y)));
    }
    last_x_ = x;
    last_y_ = y;
    view_->paint();
    return true;
}

bool ixo_label_move_tool::on_mouse_up(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    if (!view_)
        return false;
    view_ = nullptr;
    label_ = nullptr;
    ixo_request_redraw();
    return true;
}

bool ixo_label_move_tool::on_mouse_dbl_click(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}
