#include "events/event_probe.h"

#include <string>
#include <vector>

namespace
{
struct journal
{
    std::vector<std::string> calls;
    int destroyed = 0;
    // Destroyed while still linked to the next: a chain released recursively.
    int destroyed_linked = 0;
};

class step : public ixo_command
{
public:
    static ixo_object_ptr<step> create(journal& j, std::string name, bool succeeds = true,
                                       bool undoable = true)
    {
        return new step(j, std::move(name), succeeds, undoable);
    }
    bool execute() override { return log("do", succeeds_); }
    bool is_undoable() override { return undoable_; }
    bool undo() override { return log("undo", succeeds_); }
    bool redo() override { return log("redo", succeeds_); }

private:
    step(journal& j, std::string name, bool succeeds, bool undoable)
        : j_(j), name_(std::move(name)), succeeds_(succeeds), undoable_(undoable)
    {
    }
    ~step() override
    {
        ++j_.destroyed;
        if (get_next())
            ++j_.destroyed_linked;
    }
    bool log(const char* what, bool answer)
    {
        j_.calls.push_back(std::string(what) + " " + name_);
        return answer;
    }

    journal& j_;
    std::string name_;
    bool succeeds_;
    bool undoable_;
};

class part : public ixo_document_object
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<part> create() { return new part; }

private:
    part() = default;
    ~part() override = default;
};
IXO_TYPIFIED_DEFINE(part, IXO_TEXT("Test Part"))

std::vector<std::string> take(journal& j)
{
    std::vector<std::string> out;
    out.swap(j.calls);
    return out;
}
} // namespace

TEST(command_manager, undo_redo_move_commands_between_the_stacks)
{
    journal j;
    auto manager = ixo_command_manager::create();
    EXPECT_FALSE(manager->can_undo());
    EXPECT_FALSE(manager->can_redo());
    manager->undo();
    manager->redo();
    EXPECT_EQ(manager->pop_undo_push_redo(), nullptr);
    EXPECT_EQ(manager->pop_redo(), nullptr);
    EXPECT_TRUE(take(j).empty());

    EXPECT_TRUE(manager->execute(step::create(j, "A")));
    EXPECT_TRUE(manager->execute(step::create(j, "B")));
    EXPECT_TRUE(manager->execute(step::create(j, "C")));
    manager->undo();
    manager->undo();
    EXPECT_EQ(take(j), (std::vector<std::string>{"do A", "do B", "do C", "undo C", "undo B"}));
    EXPECT_TRUE(manager->can_redo());
    EXPECT_TRUE(manager->can_undo());

    // B is on top of the redo stack; redoing it puts it back above A.
    manager->redo();
    EXPECT_EQ(take(j), std::vector<std::string>{"redo B"});
    manager->undo();
    manager->undo();
    EXPECT_EQ(take(j), (std::vector<std::string>{"undo B", "undo A"}));
    EXPECT_FALSE(manager->can_undo());
    manager->redo();
    manager->redo();
    EXPECT_EQ(take(j), (std::vector<std::string>{"redo A", "redo B"}));
    EXPECT_TRUE(manager->can_redo()); // C is still there

    // A new command empties the redo stack, releasing C.
    EXPECT_EQ(j.destroyed, 0);
    EXPECT_TRUE(manager->execute(step::create(j, "D")));
    EXPECT_EQ(j.destroyed, 1);
    EXPECT_FALSE(manager->can_redo());
    manager->undo();
    manager->undo();
    manager->undo();
    EXPECT_EQ(take(j), (std::vector<std::string>{"do D", "undo D", "undo B", "undo A"}));
}

TEST(command_manager, failed_and_non_undoable_commands_are_not_recorded)
{
    journal j;
    auto manager = ixo_command_manager::create();
    EXPECT_FALSE(manager->execute(nullptr));
    manager->execute(step::create(j, "A"));
    manager->execute(step::create(j, "B"));
    manager->undo();
    take(j);

    // Runs, but leaves the undo stack and keeps the redo stack.
    EXPECT_TRUE(manager->execute(step::create(j, "N", true, false)));
    EXPECT_EQ(take(j), std::vector<std::string>{"do N"});
    EXPECT_TRUE(manager->can_redo());

    // Fails: handed back false, both stacks as before.
    EXPECT_FALSE(manager->execute(step::create(j, "F", false)));
    EXPECT_TRUE(manager->can_redo());
    EXPECT_EQ(j.destroyed, 2); // N and F are gone

    manager->undo();
    manager->undo();
    manager->redo();
    EXPECT_EQ(take(j), (std::vector<std::string>{"do F", "undo A", "redo A"}));

    // An undo that reports failure still moves the command.
    auto failing_undo = step::create(j, "U", false);
    manager->push_undo(failing_undo);
    EXPECT_FALSE(manager->can_redo());
    manager->undo();
    EXPECT_TRUE(manager->can_redo());
}

TEST(command_manager, long_history_is_released_one_command_at_a_time)
{
    journal j;
    {
        auto manager = ixo_command_manager::create();
        for (int i = 0; i < 1000; ++i)
            manager->execute(step::create(j, "x"));
        for (int i = 0; i < 400; ++i)
            manager->undo();
        manager->clear_all();
        EXPECT_EQ(j.destroyed, 1000);
        EXPECT_EQ(j.destroyed_linked, 0);
        EXPECT_TRUE(manager->is_undo_empty());
        EXPECT_TRUE(manager->is_redo_empty());

        for (int i = 0; i < 1000; ++i)
            manager->execute(step::create(j, "y"));
        for (int i = 0; i < 10; ++i)
            manager->undo();
    }
    // The manager's end clears its history the same way.
    EXPECT_EQ(j.destroyed, 2000);
    EXPECT_EQ(j.destroyed_linked, 0);
}

TEST(composite_command, runs_every_child_and_undoes_in_reverse)
{
    journal j;
    auto manager = ixo_command_manager::create();

    auto empty = ixo_composite_command::create();
    EXPECT_TRUE(empty->execute());
    EXPECT_TRUE(empty->undo());
    EXPECT_TRUE(empty->is_undoable());

    auto failing = ixo_composite_command::create();
    failing->add(step::create(j, "1"));
    failing->add(step::create(j, "2", false));
    failing->add(step::create(j, "3"));
    failing->add(nullptr);
    EXPECT_FALSE(manager->execute(failing));
    EXPECT_EQ(take(j), (std::vector<std::string>{"do 1", "do 2", "do 3"}));
    EXPECT_FALSE(manager->can_undo());
    EXPECT_FALSE(failing->undo());
    EXPECT_EQ(take(j), (std::vector<std::string>{"undo 3", "undo 2", "undo 1"}));

    auto good = ixo_composite_command::create();
    good->add(step::create(j, "a"));
    good->add(step::create(j, "b"));
    EXPECT_TRUE(manager->execute(good));
    manager->undo();
    manager->redo();
    EXPECT_EQ(take(j),
              (std::vector<std::string>{"do a", "do b", "undo b", "undo a", "redo a", "redo b"}));

    // One child that cannot be undone makes the whole composite unrecorded.
    auto mixed = ixo_composite_command::create();
    mixed->add(step::create(j, "u"));
    mixed->add(step::create(j, "n", true, false));
    EXPECT_FALSE(mixed->is_undoable());
    manager->undo();
    EXPECT_TRUE(manager->execute(mixed));
    EXPECT_TRUE(manager->can_redo()); // not recorded: the redo stack stays
}

TEST(model_commands, add_document_object_and_scene_object)
{
    ixo_test::started library; // ends after everything below has gone
    auto doc = library.app().create_document();
    auto obj = part::create();

    EXPECT_FALSE(ixo_add_docobj_command::create(nullptr, obj)->execute());
    EXPECT_FALSE(ixo_add_docobj_command::create(doc, nullptr)->execute());
    EXPECT_FALSE(ixo_add_docobj_command::create(nullptr, obj)->undo());

    auto manager = ixo_command_manager::create();
    EXPECT_TRUE(manager->execute(ixo_add_docobj_command::create(doc, obj)));
    EXPECT_EQ(doc->get_first_object_of_type(part::static_type()), obj);
    manager->undo();
    EXPECT_EQ(doc->get_first_type(), ixo_invalid_object_type);
    manager->redo();
    EXPECT_EQ(doc->get_first_object_of_type(part::static_type()), obj);

    auto parent = ixo_scene_object::create();
    auto child = ixo_scene_object::create();
    EXPECT_FALSE(ixo_add_scene_object_cmd::create(nullptr, child)->execute());
    EXPECT_FALSE(ixo_add_scene_object_cmd::create(parent, nullptr)->undo());
    EXPECT_TRUE(manager->execute(ixo_add_scene_object_cmd::create(parent, child)));
    EXPECT_EQ(child->get_parent(), parent);
    manager->undo();
    EXPECT_EQ(child->get_parent(), nullptr);
    EXPECT_EQ(parent->get_num_children(), 0);
    manager->redo();
    EXPECT_EQ(parent->get_child(0), child);
    library.app().remove_document(doc);
}
