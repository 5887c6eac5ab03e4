#include <ixocore/scene/selection.h>

#include <ixocore/events/event.h>
#include <ixocore/events/event_manager.h>

#include <iterator>

ixo_object_ptr<ixo_selection> ixo_selection::create()
{
    return new ixo_selection;
}

ixo_selection::ixo_selection(ixo_selection const& other) : ixo_object(other)
{
    *this = other;
}

ixo_selection& ixo_selection::operator=(ixo_selection const& other)
{
    if (this == &other)
        return *this;
    objects_ = other.objects_;
    // The other cursor points into the other set: take the same position here.
    cursor_ =
        other.cursor_ == other.objects_.end() ? objects_.end() : objects_.find(*other.cursor_);
    return *this;
}

ixo_selection::~ixo_selection()
{
    for (auto const& object : objects_)
        object->selected_ = false;
    objects_.clear();
}

void ixo_selection::report(bool changed)
{
    ixo_object_ptr<ixo_event_manager> const manager = ixo_event_manager::get_app_event_manager();
    if (!manager)
        return;
    if (changed)
        manager->report(ixo_event_selection_changed::create(this));
    else
        manager->report(ixo_event_selection_changing::create(this));
}

bool ixo_selection::add_object(ixo_object_ptr<ixo_selectable_object> object)
{
    if (!object)
        return true;
    report(false);
    objects_.insert(object);
    object->selected_ = true;
    cursor_ = objects_.end();
    report(true);
    return true;
}

bool ixo_selection::remove_object(ixo_object_ptr<ixo_selectable_object> object)
{
    if (!object || !objects_.contains(object))
        return true;
    report(false);
    objects_.erase(object);
    object->selected_ = false;
    cursor_ = objects_.end();
    report(true);
    return true;
}

bool ixo_selection::remove_all()
{
    report(false);
    for (auto const& object : objects_)
        object->selected_ = false;
    // Moved out first: the last reference to a member may go here, and its destruction
    // must find the selection already consistent.
    object_set old = std::move(objects_);
    objects_.clear();
    cursor_ = objects_.end();
    old.clear();
    report(true);
    return true;
}

bool ixo_selection::is_empty() const
{
    return objects_.empty();
}

int ixo_selection::get_count() const
{
    return static_cast<int>(objects_.size());
}

ixo_object_ptr<ixo_selectable_object> ixo_selection::get_first_object()
{
    cursor_ = objects_.begin();
    return cursor_ == objects_.end() ? nullptr : *cursor_;
}

ixo_object_ptr<ixo_selectable_object> ixo_selection::get_next_object()
{
    if (cursor_ == objects_.end())
        return nullptr;
    ++cursor_;
    return cursor_ == objects_.end() ? nullptr : *cursor_;
}
