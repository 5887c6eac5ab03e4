#include "events/event_probe.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace
{
int alive = 0; // handlers made by record() not yet destroyed

// A handler that logs "<name>:<event type name>", then runs an optional action.
ixo_object_ptr<ixo_event_handler> record(std::vector<std::string>& log, std::string name,
                                         std::function<void(ixo_object_ptr<ixo_event>)> act = {})
{
    struct counted
    {
        counted() { ++alive; }
        ~counted() { --alive; }
    };
    return ixo_test::event_function::create(
        [&log, name, act, c = std::make_shared<counted>()](ixo_object_ptr<ixo_event> e)
        {
            log.push_back(name + ":" + e->type_name().to_utf8());
            if (act)
                act(e);
        });
}

ixo_object_ptr<ixo_event> idle()
{
    return ixo_event_application_idle::create();
}
} // namespace

TEST(events, matching_by_type_and_payload)
{
    ixo_object_ptr<ixo_selection> a = ixo_selection::create();
    ixo_object_ptr<ixo_selection> b = ixo_selection::create();
    ixo_object_ptr<ixo_event> changed_a = ixo_event_selection_changed::create(a);
    ixo_object_ptr<ixo_event> changed_a2 = ixo_event_selection_changed::create(a);
    ixo_object_ptr<ixo_event> changed_b = ixo_event_selection_changed::create(b);
    ixo_object_ptr<ixo_event> changing_a = ixo_event_selection_changing::create(a);
    ixo_object_ptr<ixo_event> changed_null = ixo_event_selection_changed::create(nullptr);

    EXPECT_TRUE(changed_a->is_matching(changed_a2));
    EXPECT_FALSE(changed_a->is_matching(changed_b));
    EXPECT_FALSE(changed_a->is_matching(changing_a));
    EXPECT_FALSE(changed_a->is_matching(changed_null));
    EXPECT_TRUE(changed_null->is_matching(ixo_event_selection_changed::create(nullptr)));
    EXPECT_FALSE(changed_a->is_matching(nullptr));
    EXPECT_TRUE(idle()->is_matching(idle()));
    EXPECT_FALSE(idle()->is_matching(ixo_event_request_redraw::create()));

    // Scene events match the same way; a selection stands in for the scene here.
    ixo_object_ptr<ixo_event> scene_a = ixo_event_scene_changed::create<ixo_selection>(a);
    EXPECT_TRUE(scene_a->is_matching(ixo_event_scene_changed::create<ixo_selection>(a)));
    EXPECT_FALSE(scene_a->is_matching(ixo_event_scene_changed::create<ixo_selection>(nullptr)));
    EXPECT_FALSE(scene_a->is_matching(ixo_event_scene_changing::create<ixo_selection>(a)));
    EXPECT_FALSE(scene_a->is_matching(changed_a));
    EXPECT_EQ(scene_a->type_name().to_utf8(), "Scene Changed Event");

    // The payload is held for the life of the event.
    ixo_selection* raw = b.get();
    b = nullptr;
    changed_b = ixo_event_selection_changed::create(raw);
    EXPECT_EQ(raw->get_count(), 0);
}

TEST(event_manager, dispatch_in_subscription_order)
{
    std::vector<std::string> log;
    ixo_object_ptr<ixo_event_manager> m = ixo_event_manager::create();
    ixo_event_key k1 = m->subscribe(idle(), record(log, "first"));
    ixo_event_key k2 = m->subscribe(idle(), record(log, "second"));
    m->subscribe(ixo_event_request_redraw::create(), record(log, "redraw"));
    EXPECT_EQ(k1.get_type(), ixo_event_application_idle::static_type());
    EXPECT_GT(k2.get_serial(), k1.get_serial());
    EXPECT_FALSE(k1.is_empty());

    m->report(idle());
    EXPECT_EQ(log, (std::vector<std::string>{"first:Application Idle Event",
                                             "second:Application Idle Event"}));
    log.clear();
    EXPECT_TRUE(m->unsubscribe(k1));
    EXPECT_FALSE(m->unsubscribe(k1));
    EXPECT_FALSE(m->unsubscribe(ixo_event_key()));
    EXPECT_FALSE(m->unsubscribe(ixo_event_key(k2.get_type(), k2.get_serial() + 100)));
    m->report(idle());
    m->report(ixo_event_request_redraw::create());
    m->report(ixo_event_direct3d_reset::create()); // nobody subscribed
    m->report(nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"second:Application Idle Event",
                                             "redraw:Request Redraw Event"}));

    // Bad subscriptions answer an empty key.
    EXPECT_TRUE(m->subscribe(nullptr, record(log, "x")).is_empty());
    EXPECT_TRUE(m->subscribe(idle(), nullptr).is_empty());

    // Serials are shared by every manager.
    ixo_object_ptr<ixo_event_manager> other = ixo_event_manager::create();
    ixo_event_key k3 = other->subscribe(idle(), record(log, "x"));
    EXPECT_GT(k3.get_serial(), k2.get_serial());
    EXPECT_FALSE(m->unsubscribe(k3));

    m->unsubscribe_all();
    log.clear();
    m->report(idle());
    EXPECT_TRUE(log.empty());

    // A payload subscription sees only events of its type about its payload.
    ixo_object_ptr<ixo_selection> a = ixo_selection::create();
    m->subscribe(ixo_event_selection_changed::create(a), record(log, "a"));
    m->report(ixo_event_selection_changed::create(ixo_selection::create()));
    m->report(ixo_event_selection_changing::create(a));
    EXPECT_TRUE(log.empty());
    m->report(ixo_event_selection_changed::create(a));
    EXPECT_EQ(log, std::vector<std::string>{"a:Selection Changed Event"});
}

TEST(event_manager, handlers_change_subscriptions_while_dispatching)
{
    std::vector<std::string> log;
    int const alive_before = alive;
    {
        ixo_object_ptr<ixo_event_manager> m = ixo_event_manager::create();
        ixo_event_key self_key, next_key;
        // Unsubscribes itself and the next record and subscribes a new one, in one dispatch.
        self_key = m->subscribe(idle(), record(log, "first",
                                               [&](auto)
                                               {
                                                   EXPECT_TRUE(m->unsubscribe(self_key));
                                                   EXPECT_TRUE(m->unsubscribe(next_key));
                                                   m->subscribe(idle(), record(log, "late"));
                                               }));
        next_key = m->subscribe(idle(), record(log, "second"));
        m->subscribe(idle(), record(log, "third"));

        m->report(idle());
        EXPECT_EQ(log, (std::vector<std::string>{"first:Application Idle Event",
                                                 "third:Application Idle Event"}));
        log.clear();
        m->report(idle());
        EXPECT_EQ(log, (std::vector<std::string>{"third:Application Idle Event",
                                                 "late:Application Idle Event"}));
        EXPECT_EQ(alive - alive_before, 2); // the two removed are gone

        // A handler that removes every subscription, including its own, while it runs.
        log.clear();
        m->subscribe(idle(), record(log, "wipe", [&](auto) { m->unsubscribe_all(); }));
        m->report(idle());
        EXPECT_EQ(log.size(), 3u);
        log.clear();
        m->report(idle());
        EXPECT_TRUE(log.empty());

        // Reporting from inside a dispatch dispatches the inner event at once.
        m->subscribe(ixo_event_request_redraw::create(), record(log, "redraw"));
        m->subscribe(idle(), record(log, "outer",
                                    [&](auto) { m->report(ixo_event_request_redraw::create()); }));
        m->subscribe(idle(), record(log, "after"));
        m->report(idle());
        EXPECT_EQ(log, (std::vector<std::string>{"outer:Application Idle Event",
                                                 "redraw:Request Redraw Event",
                                                 "after:Application Idle Event"}));
    }
    EXPECT_EQ(alive, alive_before);
}

TEST(event_manager, application_event_manager)
{
    EXPECT_EQ(ixo_event_manager::get_app_event_manager(), nullptr);
    ixo_request_redraw(); // not started: nothing happens

    std::vector<std::string> log;
    ixo_application::start(nullptr);
    ixo_object_ptr<ixo_event_manager> m = ixo_event_manager::get_app_event_manager();
    ASSERT_TRUE(m);
    EXPECT_EQ(m, ixo_application::instance()->get_event_manager());
    m->subscribe(ixo_event_request_redraw::create(), record(log, "view"));
    ixo_request_redraw();
    ixo_request_redraw();
    EXPECT_EQ(log.size(), 2u);
    ixo_application::end();
    EXPECT_EQ(ixo_event_manager::get_app_event_manager(), nullptr);
    // The application unsubscribed everything before it went.
    log.clear();
    m->report(ixo_event_request_redraw::create());
    EXPECT_TRUE(log.empty());

    // Ended inside a handler: the manager outlives the dispatch, the change goes on silently.
    ixo_application::start(nullptr);
    ixo_object_ptr<ixo_selection> s = ixo_selection::create();
    m = ixo_event_manager::get_app_event_manager();
    m->subscribe(ixo_event_selection_changing::create(s),
                 record(log, "ender", [](auto) { ixo_application::end(); }));
    m->subscribe(ixo_event_selection_changing::create(s), record(log, "later"));
    m->subscribe(ixo_event_selection_changed::create(s), record(log, "after"));
    m = nullptr;
    s->remove_all();
    EXPECT_EQ(ixo_application::instance(), nullptr);
    EXPECT_EQ(log, std::vector<std::string>{"ender:Selection Changing Event"});
    EXPECT_EQ(alive, 0);
}
