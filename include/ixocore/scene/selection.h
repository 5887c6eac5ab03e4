#pragma once
// ixo_selection: a document's set of selected objects, with a built-in iteration cursor.
// The selection is the only writer of its members' selected flags and announces every change
// with a selection-changing event before it and a selection-changed event after it.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/selectable_object.h>

#include <set>

class IXO_API ixo_selection : public ixo_object
{
public:
    // An empty selection.
    static ixo_object_ptr<ixo_selection> create();

    // Copies the members and the cursor position; the members stay selected.
    ixo_selection& operator=(ixo_selection const& other);

    // Adds `object` (once; adding a member again still raises both events) and marks it
    // selected. A null pointer is ignored without events. Always true.
    virtual bool add_object(ixo_object_ptr<ixo_selectable_object> object);
    // Removes a member and clears its selected flag. A null pointer or an object that is not
    // a member is ignored without events. Always true.
    virtual bool remove_object(ixo_object_ptr<ixo_selectable_object> object);
    // Clears every member's flag and empties the selection; both events are raised even
    // when it was empty. Always true.
    virtual bool remove_all();
    virtual bool is_empty() const;
    virtual int get_count() const;
    // Moves the cursor to the first member (in address order) and returns it; null when
    // empty.
    virtual ixo_object_ptr<ixo_selectable_object> get_first_object();
    // Advances the cursor and returns the member there; null at the end, and again on every
    // later call. Any change of the selection puts the cursor at the end: start again with
    // get_first_object.
    virtual ixo_object_ptr<ixo_selectable_object> get_next_object();

private:
    using object_set = std::set<ixo_object_ptr<ixo_selectable_object>>;

    ixo_selection() = default;
    ixo_selection(ixo_selection const& other);
    // Clears the members' flags without events.
    ~ixo_selection() override;

    void report(bool changed);

    object_set objects_;
    object_set::iterator cursor_ = objects_.end();
};
