#include "events/event_probe.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace
{
class item : public ixo_selectable_object
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<item> create() { return new item; }

private:
    item() = default;
    ~item() override = default;
};
IXO_TYPIFIED_DEFINE(item, IXO_TEXT("Test Item"))

// Logs the changing and changed events of one selection.
struct selection_events : ixo_test::change_log
{
    explicit selection_events(ixo_object_ptr<ixo_selection> const& selection)
    {
        watch<ixo_event_selection_changing, ixo_event_selection_changed>(selection);
    }
};

std::set<item*> members(ixo_object_ptr<ixo_selection> const& s)
{
    std::set<item*> out;
    for (auto o = s->get_first_object(); o; o = s->get_next_object())
        out.insert(ixo_object_ptr<item>(o).get());
    return out;
}
} // namespace

TEST(selection, add_and_remove_with_events)
{
    ixo_object_ptr<ixo_selection> s = ixo_selection::create();
    selection_events events(s);
    ixo_object_ptr<item> a = item::create();
    ixo_object_ptr<item> b = item::create();

    EXPECT_TRUE(s->is_empty());
    EXPECT_FALSE(a->is_selected());
    EXPECT_TRUE(s->add_object(a));
    EXPECT_TRUE(s->add_object(a)); // already there: stays once, still both events
    EXPECT_EQ(s->get_count(), 1);
    EXPECT_TRUE(a->is_selected());
    EXPECT_EQ(events.take(), "<><>");

    EXPECT_TRUE(s->add_object(nullptr));
    EXPECT_TRUE(s->remove_object(b)); // not a member: ignored
    EXPECT_TRUE(s->remove_object(nullptr));
    EXPECT_EQ(events.take(), "");
    EXPECT_FALSE(b->is_selected());

    s->add_object(b);
    EXPECT_EQ(s->get_count(), 2);
    EXPECT_EQ(members(s), (std::set<item*>{a.get(), b.get()}));
    EXPECT_TRUE(s->remove_object(a));
    EXPECT_FALSE(a->is_selected());
    EXPECT_TRUE(b->is_selected());
    EXPECT_EQ(members(s), std::set<item*>{b.get()});
    EXPECT_EQ(events.take(), "<><>");

    // Events of another selection do not reach these subscriptions.
    ixo_object_ptr<ixo_selection> other = ixo_selection::create();
    other->add_object(a);
    other->remove_all();
    EXPECT_EQ(events.take(), "");

    s->add_object(a);
    EXPECT_TRUE(s->remove_all());
    EXPECT_FALSE(a->is_selected());
    EXPECT_FALSE(b->is_selected());
    EXPECT_TRUE(s->is_empty());
    EXPECT_TRUE(s->remove_all()); // empty: both events all the same
    EXPECT_EQ(events.take(), "<><><>");

    // The changing handler sees the state before the change, the changed one after it.
    std::vector<int> counts;
    std::vector<bool> flags;
    auto probe = ixo_test::event_function::create(
        [&](auto)
        {
            counts.push_back(s->get_count());
            flags.push_back(a->is_selected());
        });
    auto m = ixo_event_manager::get_app_event_manager();
    m->subscribe(ixo_event_selection_changing::create(s), probe);
    m->subscribe(ixo_event_selection_changed::create(s), probe);
    s->add_object(a);
    s->remove_object(a);
    EXPECT_EQ(counts, (std::vector<int>{0, 1, 1, 0}));
    EXPECT_EQ(flags, (std::vector<bool>{false, true, true, false}));
}

TEST(selection, lifetime_of_members)
{
    ixo_object_ptr<item> a = item::create();
    ixo_object_ptr<item> b = item::create();
    ixo_selectable_object* raw = b.get();
    unsigned long const b_id = b->id();
    {
        ixo_object_ptr<ixo_selection> s = ixo_selection::create();
        s->add_object(a);
        s->add_object(b);
        b = nullptr; // the selection keeps it alive
        EXPECT_EQ(ixo_object_from_id(b_id), static_cast<ixo_identifiable_object*>(raw));
        EXPECT_TRUE(raw->is_selected());

        // A copy shares the members and the cursor position.
        ixo_object_ptr<ixo_selection> t = ixo_selection::create();
        s->get_first_object();
        *t = *s;
        EXPECT_EQ(t->get_count(), 2);
        EXPECT_EQ(t->get_next_object(), s->get_next_object());
        EXPECT_FALSE(t->get_next_object());
        t = nullptr; // clears the flags of its members
        EXPECT_FALSE(a->is_selected());
        s->remove_all();
        EXPECT_EQ(ixo_object_from_id(b_id), nullptr);
        s->add_object(a);
        EXPECT_TRUE(a->is_selected());
    }
    // The selection's end clears the flag without events.
    EXPECT_FALSE(a->is_selected());
}
