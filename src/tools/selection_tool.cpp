#include <ixocore/tools/selection_tool.h>

#include <ixocore/core/identifiable_object.h>
#include <ixocore/events/event_manager.h>
#include <ixocore/math/box.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/render_view.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>
#include <ixocore/scene/scene_rectangle.h>
#include <ixocore/scene/selection.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <utility>
#include <vector>

namespace
{
ixo_object_ptr<ixo_scene_rectangle> make_band()
{
    ixo_object_ptr<ixo_scene_rectangle> band = ixo_scene_rectangle::create();
    band->set_color(ixo_vector4<unsigned char>(0, 0, 0, 255));
    band->set_property(ixo_scene_object::visible, false);
    return band;
}
} // namespace

ixo_object_ptr<ixo_selection_tool>
ixo_selection_tool::create(ixo_object_ptr<ixo_selection> selection)
{
    return new ixo_selection_tool(std::move(selection));
}

ixo_selection_tool::ixo_selection_tool(ixo_object_ptr<ixo_selection> selection)
    : rectangle_(make_band()), selection_(std::move(selection))
{
}

ixo_selection_tool::ixo_selection_tool(const ixo_selection_tool& other) = default;
ixo_selection_tool& ixo_selection_tool::operator=(const ixo_selection_tool& other) = default;
ixo_selection_tool::~ixo_selection_tool() = default;

void ixo_selection_tool::start() {}
void ixo_selection_tool::stop() {}

ixo_object_ptr<ixo_scene_rectangle> ixo_selection_tool::get_rectangle() const
{
    return rectangle_;
}

ixo_object_ptr<ixo_selectable_object>
ixo_selection_tool::get_object_in_point(ixo_object_ptr<ixo_render_view> view, int x, int y)
{
    if (!view)
        return nullptr;
    ixo_object_ptr<ixo_camera_view> camera = view->get_camera();
    int const w = camera->get_width();
    int const h = camera->get_height();
    if (x < 0 || y < 0 || y > h || x > w)
        return nullptr;
    view->map();
    view->pick_lock();
    unsigned long const id = view->pick(ixo_vector2<int>(w - x, h - y));
    ixo_object_ptr<ixo_selectable_object> found;
    if (id != ixo_invalid_object_id)
        found = dynamic_cast<ixo_selectable_object*>(ixo_object_from_id(id));
    view->pick_unlock();
    return found;
}

bool ixo_selection_tool::on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool,
                                       bool)
{
    if (!view)
        return false;
    if (!rectangle_)
        rectangle_ = make_band();
    view_ = std::move(view);
    view_->map();
    start_x_ = x;
    start_y_ = y;
    if (!rectangle_->get_scene())
        if (ixo_object_ptr<ixo_scene> scene = view_->get_scene())
            scene->get_root()->add_child(rectangle_);
    ixo_box2<float> band;
    band += ixo_vector2<float>(static_cast<float>(x),
                               static_cast<float>(view_->get_camera()->get_height() - y));
    rectangle_->set_rectangle(band);
    rectangle_->set_property(ixo_scene_object::visible, true);
    return false;
}

bool ixo_selection_tool::on_mouse_move(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}

bool ixo_selection_tool::on_mouse_drag(ixo_object_ptr<ixo_render_view>, int x, int y, bool, bool)
{
    if (!view_)
        return false;
    float const h = static_cast<float>(view_->get_camera()->get_height());
    if (rectangle_)
    {
        ixo_box2<float> band;
        band += ixo_vector2<float>(static_cast<float>(start_x_), h - static_cast<float>(start_y_));
        band += ixo_vector2<float>(static_cast<float>(x), h - static_cast<float>(y));
        rectangle_->set_rectangle(band);
    }
    view_->paint();
    return true;
}

void ixo_selection_tool::hide_rect()
{
    if (!rectangle_)
        return;
    if (view_ && rectangle_->get_scene())
        if (ixo_object_ptr<ixo_scene_object> parent = rectangle_->get_parent())
            parent->remove_child(rectangle_);
    rectangle_->set_property(ixo_scene_object::visible, false);
    rectangle_ = nullptr;
}

bool ixo_selection_tool::on_mouse_up(ixo_object_ptr<ixo_render_view>, int x, int y, bool modifier1,
                                     bool modifier2)
{
    if (!view_)
        return false;
    hide_rect();
    if (modifier1)
        return false;

    ixo_object_ptr<ixo_camera_view> camera = view_->get_camera();
    long const w = camera->get_width();
    long const h = camera->get_height();
    // The band in 64 bits, so far-out pointer positions cannot overflow, and cut to the
    // view: pick clamps its reads into the image, so pixels outside repeat the edge ones.
    long const x0 = std::min<long>(start_x_, x);
    long const y0 = std::min<long>(start_y_, y);
    long const cw = std::max(1L, std::labs(long(x) - start_x_));
    long const ch = std::max(1L, std::labs(long(y) - start_y_));
    long const i_begin = std::clamp(x0, 0L, w), i_end = std::clamp(x0 + cw, 0L, w + 1);
    long const j_begin = std::clamp(y0, 0L, h), j_end = std::clamp(y0 + ch, 0L, h + 1);

    view_->pick_lock();
    if (!modifier2 && selection_)
        selection_->remove_all();
    std::set<unsigned long> ids;
    for (long px = i_begin; px < i_end; ++px)
        for (long py = j_begin; py < j_end; ++py)
            ids.insert(view_->pick(ixo_vector2<int>(int(w - px), int(h - py))));
    view_->pick_unlock();

    std::vector<ixo_object_ptr<ixo_selectable_object>> to_add, to_remove;
    for (unsigned long id : ids)
    {
        if (id == ixo_invalid_object_id)
            continue;
        ixo_object_ptr<ixo_selectable_object> object =
            dynamic_cast<ixo_selectable_object*>(ixo_object_from_id(id));
        if (!object || !selection_)
            continue;
        if (!modifier2)
            selection_->add_object(object);
        else if (object->is_selected())
            to_remove.push_back(object);
        else
            to_add.push_back(object);
    }
    for (auto& object : to_add)
        selection_->add_object(object);
    for (auto& object : to_remove)
        selection_->remove_object(object);

    ixo_request_redraw();
    view_ = nullptr;
    return true;
}

bool ixo_selection_tool::on_mouse_dbl_click(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}
