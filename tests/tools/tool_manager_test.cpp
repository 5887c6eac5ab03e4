#include <ixocore/app/application.h>
#include <ixocore/app/document.h>
#include <ixocore/tools/tool.h>
#include <ixocore/tools/tool_manager.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

// Records start/stop calls as "A.start", "B.stop", ... in one shared journal, and what the
// tool saw of its links when it was started or stopped.
class journal_tool : public ixo_tool
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
    bool on_mouse_down(ixo_object_ptr<ixo_render_view>, int, int, bool, bool) override
    {
        return false;
    }
    bool on_mouse_move(ixo_object_ptr<ixo_render_view>, int, int, bool, bool) override
    {
        return false;
    }
    bool on_mouse_drag(ixo_object_ptr<ixo_render_view>, int, int, bool, bool) override
    {
        return false;
    }
    bool on_mouse_up(ixo_object_ptr<ixo_render_view>, int, int, bool, bool) override
    {
        return false;
    }
    bool on_mouse_dbl_click(ixo_object_ptr<ixo_render_view>, int, int, bool, bool) override
    {
        return false;
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

TEST(tool_manager, null_push_and_empty_pop_change_nothing)
{
    journal log;
    auto m = ixo_tool_manager::create();
    EXPECT_EQ(m->pop_tool(), nullptr);
    m->push_tool(nullptr);
    EXPECT_EQ(m->get_active_tool(), nullptr);

    auto a = journal_tool::create("A", &log);
    m->push_tool(a);
    log.clear();
    m->push_tool(nullptr);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(m->get_active_tool().get(), a.get());
    m->clear_all_tools();
}

TEST(tool_manager, push_and_pop_order_and_links)
{
    journal log;
    auto m = ixo_tool_manager::create();
    auto a = journal_tool::create("A", &log);
    auto b = journal_tool::create("B", &log);

    m->push_tool(a);
    EXPECT_EQ(a->manager_at_start, m.get()) << "a tool is linked before it is started";
    m->push_tool(b);
    EXPECT_EQ((journal{"A.start", "A.stop", "B.start"}), log);
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
    m->clear_all_tools();
}

TEST(tool_manager, clear_all_tools_walks_down_the_stack)
{
    journal log;
    auto m = ixo_tool_manager::create();
    m->push_tool(journal_tool::create("A", &log));
    m->push_tool(journal_tool::create("B", &log));
    m->push_tool(journal_tool::create("C", &log));
    log.clear();
    m->clear_all_tools();
    EXPECT_EQ((journal{"C.stop", "B.start", "B.stop", "A.start", "A.stop"}), log);
    EXPECT_EQ(m->get_active_tool(), nullptr);
    EXPECT_EQ(journal_tool::alive, 0) << "the stack held the only references";
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
        // A manager nobody else holds empties its stack on the way out.
        auto m = ixo_tool_manager::create();
        auto a = journal_tool::create("A", &log);
        m->push_tool(a);
        log.clear();
        m->pop_tool();
        m = nullptr;
        EXPECT_EQ(a->get_tool_manager(), nullptr);
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

TEST(tool_manager, a_document_owns_one_and_empties_it_when_it_goes)
{
    journal log;
    ixo_application::start(nullptr);
    {
        ixo_object_ptr<ixo_document> doc = ixo_application::instance()->create_document();
        ixo_object_ptr<ixo_tool_manager> m = doc->get_tool_manager();
        ASSERT_NE(m, nullptr);
        EXPECT_EQ(doc->get_tool_manager().get(), m.get());
        auto a = journal_tool::create("A", &log);
        m->push_tool(a);
        m->push_tool(journal_tool::create("B", &log));
        log.clear();
        ixo_application::instance()->remove_document(doc);
        doc = nullptr;
        EXPECT_EQ((journal{"B.stop", "A.start", "A.stop"}), log);
        EXPECT_EQ(a->get_tool_manager(), nullptr);
    }
    ixo_application::end();
    EXPECT_EQ(journal_tool::alive, 0);
}

} // namespace
