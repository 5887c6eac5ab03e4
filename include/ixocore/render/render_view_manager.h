#pragma once
// ixo_render_view_manager: the application's list of render views. It makes every view,
// paints them all, and forwards device resets to them in the order they were made.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>

#include <vector>

class ixo_application;
class ixo_render_view;

class IXO_API ixo_render_view_manager : public ixo_object
{
public:
    // The application's manager, or null while the library is not started.
    static ixo_object_ptr<ixo_render_view_manager> get_app_render_view_manager();

    // A new, uninitialised view, appended to the list. The manager keeps it for its own
    // lifetime.
    virtual ixo_object_ptr<ixo_render_view> create();
    // paint / pre_reset / post_reset of every view, in list order. Each answers true only
    // if every view did.
    virtual bool paint();
    virtual bool pre_reset();
    virtual bool post_reset();

    // Drops the manager's reference to `view` (the view lives on while others hold it,
    // still subscribed to redraw requests); false when it is not listed.
    bool remove(ixo_object_ptr<ixo_render_view> view);
    // The number of views made, and view `index` (null outside 0 .. count - 1).
    int get_num_views() const;
    ixo_object_ptr<ixo_render_view> get_view(int index) const;

    ixo_render_view_manager(const ixo_render_view_manager&) = delete;
    ixo_render_view_manager& operator=(const ixo_render_view_manager&) = delete;

private:
    friend class ixo_application;

    ixo_render_view_manager();
    ~ixo_render_view_manager() override;

    std::vector<ixo_object_ptr<ixo_render_view>> views_;
};
