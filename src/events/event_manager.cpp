#include <ixocore/events/event_manager.h>

#include <ixocore/app/application.h>

namespace
{
// Shared by every manager of the process, so a key never names two subscriptions.
unsigned long last_serial = 0;
} // namespace

ixo_event_handler::~ixo_event_handler() = default;

// ---------------------------------------------------------------------------------------
ixo_object_ptr<ixo_event_manager> ixo_event_manager::create()
{
    return new ixo_event_manager;
}

ixo_event_manager::~ixo_event_manager()
{
    // Whatever is left is dropped without being dispatched.
    held_.clear();
    subscriptions_.clear();
}

ixo_event_key ixo_event_manager::subscribe(ixo_object_ptr<ixo_event> prototype,
                                           ixo_object_ptr<ixo_event_handler> handler)
{
    if (!prototype || !handler)
        return {};
    unsigned long const type = prototype->type();
    unsigned long const serial = ++last_serial;
    subscriptions_[type].emplace(serial, record{std::move(prototype), std::move(handler)});
    return {type, serial};
}

bool ixo_event_manager::unsubscribe(ixo_event_key key)
{
    auto const of_type = subscriptions_.find(key.get_type());
    if (of_type == subscriptions_.end() || of_type->second.erase(key.get_serial()) == 0)
        return false;
    if (of_type->second.empty())
        subscriptions_.erase(of_type);
    return true;
}

void ixo_event_manager::unsubscribe_all()
{
    // Moved out first: releasing a handler may run code that subscribes again.
    auto old = std::move(subscriptions_);
    subscriptions_.clear();
}

void ixo_event_manager::report(ixo_object_ptr<ixo_event> e)
{
    if (!e)
        return;
    if (holding_)
    {
        held_.push_back(std::move(e));
        return;
    }

    // A handler may end the application, and with it this manager, while it runs.
    ixo_object_ptr<ixo_event_manager> const self(this);
    unsigned long const type = e->type();
    // Records subscribed during this dispatch have higher serials and are left out.
    unsigned long const last = last_serial;
    unsigned long serial = 0;
    for (;;)
    {
        // Looked up afresh at every step: handlers may have erased records, the current one
        // included, or the whole type.
        auto const of_type = subscriptions_.find(type);
        if (of_type == subscriptions_.end())
            break;
        auto const it = of_type->second.upper_bound(serial);
        if (it == of_type->second.end() || it->first > last)
            break;
        serial = it->first;
        record const visiting = it->second; // keeps both alive through the call
        if (e->is_matching(visiting.prototype))
            visiting.handler->on_event(e);
    }
}

void ixo_event_manager::hold(bool holding)
{
    if (holding == holding_)
        return;
    holding_ = holding;
    if (holding_)
        return;
    ixo_object_ptr<ixo_event_manager> const self(this);
    // Each event leaves the queue before it is dispatched, so a handler that holds and
    // releases again meanwhile empties the rest of the queue without seeing this one twice.
    // Holding again stops the emptying; what remains stays queued in order.
    while (!holding_ && !held_.empty())
    {
        ixo_object_ptr<ixo_event> e = std::move(held_.front());
        held_.pop_front();
        report(std::move(e));
    }
}

bool ixo_event_manager::is_holding() const
{
    return holding_;
}

ixo_object_ptr<ixo_event_manager> ixo_event_manager::get_app_event_manager()
{
    ixo_application* const app = ixo_application::instance();
    return app ? app->get_event_manager() : nullptr;
}

// ---------------------------------------------------------------------------------------
void ixo_request_redraw()
{
    if (ixo_object_ptr<ixo_event_manager> const manager =
            ixo_event_manager::get_app_event_manager())
        manager->report(ixo_event_request_redraw::create());
}
