#include <ixocore/render/render_view_manager.h>

#include <ixocore/app/application.h>
#include <ixocore/render/render_view.h>

#include <algorithm>

ixo_render_view_manager::ixo_render_view_manager() = default;

ixo_render_view_manager::~ixo_render_view_manager()
{
    // Last made, first gone.
    while (!views_.empty())
        views_.pop_back();
}

ixo_object_ptr<ixo_render_view_manager> ixo_render_view_manager::get_app_render_view_manager()
{
    ixo_application* app = ixo_application::instance();
    return app ? app->get_render_view_manager() : nullptr;
}

ixo_object_ptr<ixo_render_view> ixo_render_view_manager::create()
{
    ixo_object_ptr<ixo_render_view> view(new ixo_render_view);
    views_.push_back(view);
    return view;
}

bool ixo_render_view_manager::remove(ixo_object_ptr<ixo_render_view> view)
{
    auto const it = std::find(views_.begin(), views_.end(), view);
    if (it == views_.end())
        return false;
    views_.erase(it);
    view->detach();
    return true;
}

bool ixo_render_view_manager::paint()
{
    // A copy: a paint may make or drop views.
    std::vector<ixo_object_ptr<ixo_render_view>> const views = views_;
    bool ok = true;
    for (const auto& view : views)
        ok = view->paint() && ok;
    return ok;
}

bool ixo_render_view_manager::pre_reset()
{
    std::vector<ixo_object_ptr<ixo_render_view>> const views = views_;
    bool ok = true;
    for (const auto& view : views)
        ok = view->pre_reset() && ok;
    return ok;
}

bool ixo_render_view_manager::post_reset()
{
    std::vector<ixo_object_ptr<ixo_render_view>> const views = views_;
    bool ok = true;
    for (const auto& view : views)
        ok = view->post_reset() && ok;
    return ok;
}

int ixo_render_view_manager::get_num_views() const
{
    return static_cast<int>(views_.size());
}

ixo_object_ptr<ixo_render_view> ixo_render_view_manager::get_view(int index) const
{
    if (index < 0 || index >= get_num_views())
        return nullptr;
    return views_[std::size_t(index)];
}
