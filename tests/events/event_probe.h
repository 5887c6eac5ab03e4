#pragma once
// Event handlers for tests: one that runs a function for each event, and a log of the
// changing ('<') and changed ('>') events of one subject with the library started for as
// long as the log lives.

#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

namespace ixo_test
{
class event_function : public ixo_event_handler
{
public:
    using function = std::function<void(ixo_object_ptr<ixo_event>)>;
    static ixo_object_ptr<event_function> create(function f)
    {
        return new event_function(std::move(f));
    }
    void on_event(ixo_object_ptr<ixo_event> e) override { f_(e); }

private:
    explicit event_function(function f) : f_(std::move(f)) {}
    function f_;
};

// Starts the library for one test and ends it again.
struct started
{
    started() { EXPECT_EQ(ixo_application::start(nullptr), ixo_start_success); }
    ~started() { ixo_application::end(); }
    ixo_application& app() { return *ixo_application::instance(); }
};

struct change_log
{
    template <class changing, class changed, class subject> void watch(const subject& s)
    {
        auto m = ixo_event_manager::get_app_event_manager();
        m->subscribe(changing::create(s), event_function::create([this](auto) { log += '<'; }));
        m->subscribe(changed::create(s), event_function::create([this](auto) { log += '>'; }));
    }
    std::string take() { return std::exchange(log, std::string()); }

    std::string log;
    started library; // ends before the log goes
};
} // namespace ixo_test
