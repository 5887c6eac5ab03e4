#pragma once
// The application's event manager: subscriptions of handlers to prototype events, synchronous
// dispatch, and holding (queueing reported events until holding ends).

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/events/event.h>

#include <deque>
#include <map>

// Receives the events dispatched to it. Written by subscribers.
class IXO_API ixo_event_handler : public ixo_object
{
public:
    // Called synchronously for each matching event, in subscription order.
    virtual void on_event(ixo_object_ptr<ixo_event> e) = 0;

protected:
    ixo_event_handler() = default;
    ~ixo_event_handler() override;
};

// Identifies one subscription: the prototype's type number and a serial number. Serials
// come from one counter shared by every manager of the process, start at 1 and are never
// reused. An empty key has type ixo_invalid_object_type.
class ixo_event_key
{
public:
    ixo_event_key() = default;
    ixo_event_key(unsigned long type, unsigned long serial) : type_(type), serial_(serial) {}

    unsigned long get_type() const { return type_; }
    unsigned long get_serial() const { return serial_; }
    bool is_empty() const { return type_ == ixo_invalid_object_type; }

    friend bool operator==(ixo_event_key const&, ixo_event_key const&) = default;

private:
    unsigned long type_ = ixo_invalid_object_type;
    unsigned long serial_ = 0;
};

// Connects the parts that change things with the parts that react. One per application.
//
// A handler may report, subscribe, unsubscribe and hold from inside on_event:
// - a dispatch visits the records of the event's type that existed when it began and are
//   still subscribed when their turn comes; records added meanwhile are not visited by it;
// - the handler and prototype being visited stay alive for the call even when unsubscribed;
// - holding started while the queue is being emptied stops the emptying; the remaining
//   events stay queued in order.
class IXO_API ixo_event_manager : public ixo_object
{
public:
    // A new manager: no subscriptions, not holding.
    static ixo_object_ptr<ixo_event_manager> create();

    // Registers `handler` for events that match `prototype`; records of one type are
    // dispatched in subscription order. Answers an empty key, and registers nothing, when
    // either pointer is null.
    virtual ixo_event_key subscribe(ixo_object_ptr<ixo_event> prototype,
                                    ixo_object_ptr<ixo_event_handler> handler);
    // Removes the subscription of `key`, releasing its prototype and handler; false when
    // there is none.
    virtual bool unsubscribe(ixo_event_key key);
    // Removes every subscription.
    virtual void unsubscribe_all();
    // Dispatches `e` at once to the handlers of matching subscriptions, or queues it while
    // holding. A null event is ignored.
    virtual void report(ixo_object_ptr<ixo_event> e);
    // Starts or ends holding (a flag, not a count). Ending it dispatches the queued events in
    // the order they were reported.
    virtual void hold(bool holding);
    virtual bool is_holding() const;

    // The event manager of the current application, or null when the library is not started.
    static ixo_object_ptr<ixo_event_manager> get_app_event_manager();

private:
    struct record
    {
        ixo_object_ptr<ixo_event> prototype;
        ixo_object_ptr<ixo_event_handler> handler;
    };

    ixo_event_manager() = default;
    ~ixo_event_manager() override;

    // Records by type, then by serial: serials grow, so serial order is subscription order,
    // and a dispatch can step to the next live record even when the current one is erased.
    std::map<unsigned long, std::map<unsigned long, record>> subscriptions_;
    std::deque<ixo_object_ptr<ixo_event>> held_;
    bool holding_ = false;
};

// Asks every render view to repaint: reports a new ixo_event_request_redraw to the
// application's event manager. Does nothing when the library is not started.
IXO_API void ixo_request_redraw();
