#include <ixocore/app/application.h>
#include <ixocore/app/document.h>
#include <ixocore/tools/tool_manager.h>
#include <ixocore/tools/view_tools.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
// Records start/stop calls as "A.start", "B.stop", ... in one shared journal, and what the
// tool saw of its links when it was started or stopped. The pan tool lends it the mouse
// handlers, which these tests never call.
class journal_tool : public ixo_pan_view_tool
{
public:
    static ixo_object_ptr<journal_tool> create(std::string name, std::vector<std::string>* log)
    {
        return ixo_object_ptr<journal_tool>(new journal_tool(std::move(name), log));
    }

    void start() override
    {
        log_->push_back(name_ + ".start");
        manager_at_start = get_tool_manager().get();
    }
    void stop() override
    {
        log_->push_back(name_ + ".stop");
        linked_at_stop = get_tool_manager() != nullptr || get_next() != nullptr;
    }

    ixo_tool_manager* manager_at_start = nullptr;
    bool linked_at_stop = true;
    static int alive;

private:
    journal_tool(std::string name, std::vector<std::string>* log)
        : name_(std::move(name)), log_(log)
    {
        ++alive;
    }
    ~journal_tool() override { --alive; }

    std::string name_;
    std::vector<std::string>* log_;
};

int journal_tool::alive = 0;

using journal = std::vector<std::string>;

TEST(tool_manager, push_pop_and_clear_keep_the_order_and_the_links)
{
    journal log;
    auto m = ixo_tool_manager::create();
    // A pop of the empty stack and a null push change nothing.
    EXPECT_EQ(m->pop_tool(), nullptr);
    m->push_tool(nullptr);
    EXPECT_EQ(m->get_active_tool(), nullptr);

    auto a = journal_tool::create("A", &log);
    auto b = journal_tool::create("B", &log);
    m->push_tool(a);
    EXPECT_EQ(a->manager_at_start, m.get()) << "a tool is linked before it is started";
    m->push_tool(nullptr);
    EXPECT_EQ(m->get_active_tool().get(), a.get());
    m->push_tool(b);
    EXPECT_EQ((journal{"A.start", "A.stop", "B.start"}), log) << "the null push logs nothing";
    EXPECT_EQ(m->get_active_tool().get(), b.get());
    EXPECT_EQ(b->get_next().get(), a.get());
    EXPECT_EQ(b->get_tool_manager().get(), m.get());
    EXPECT_EQ(a->get_next(), nullptr);

    log.clear();
    ixo_object_ptr<ixo_tool> popped = m->pop_tool();
    EXPECT_EQ(popped.get(), b.get());
    EXPECT_EQ((journal{"B.stop", "A.start"}), log);
    EXPECT_FALSE(b->linked_at_stop) << "a popped tool is unlinked before it is stopped";
    EXPECT_EQ(popped->get_next(), nullptr);
    EXPECT_EQ(popped->get_tool_manager(), nullptr);
    EXPECT_EQ(m->get_active_tool().get(), a.get());

    // Clearing walks down the stack.
    m->push_tool(journal_tool::create("C", &log));
    m->push_tool(journal_tool::create("D", &log));
    log.clear();
    m->clear_all_tools();
    EXPECT_EQ((journal{"D.stop", "C.start", "C.stop", "A.start", "A.stop"}), log);
    EXPECT_EQ(m->get_active_tool(), nullptr);
    EXPECT_EQ(journal_tool::alive, 2) << "the stack held the only references to C and D";
}

TEST(tool_manager, lifetime_with_tools_holding_the_manager)
{
    journal log;
    {
        // The tools hold the only reference to the manager: popping the last of them must
        // not destroy the manager in the middle of the call.
        ixo_object_ptr<ixo_tool_manager> m = ixo_tool_manager::create();
        ixo_tool_manager* raw = m.get();
        raw->push_tool(journal_tool::create("A", &log));
        raw->push_tool(journal_tool::create("B", &log));
        m = nullptr;
        raw->clear_all_tools();
    }
    EXPECT_EQ(journal_tool::alive, 0);

    {
        // A deep stack is emptied without recursing through the links.
        auto m = ixo_tool_manager::create();
        journal quiet;
        for (int i = 0; i < 20000; ++i)
            m->push_tool(journal_tool::create("T", &quiet));
        EXPECT_EQ(journal_tool::alive, 20000);
        m->clear_all_tools();
        EXPECT_EQ(quiet.back(), "T.stop");
    }
    EXPECT_EQ(journal_tool::alive, 0);
}

} // namespace
