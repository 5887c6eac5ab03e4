#include <ixocore/app/command_manager.h>

#include <ixocore/app/command.h>

ixo_object_ptr<ixo_command_manager> ixo_command_manager::create()
{
    return new ixo_command_manager;
}

ixo_command_manager::~ixo_command_manager()
{
    clear_all();
}

bool ixo_command_manager::execute(ixo_object_ptr<ixo_command> command)
{
    if (!command)
        return false;
    bool const done = command->execute();
    if (done)
        push_undo(command);
    return done;
}

void ixo_command_manager::undo()
{
    if (!can_undo())
        return;
    ixo_object_ptr<ixo_command> const command = pop_undo_push_redo();
    command->undo();
}

void ixo_command_manager::redo()
{
    if (!can_redo())
        return;
    ixo_object_ptr<ixo_command> const command = pop_redo();
    command->redo();
}

bool ixo_command_manager::can_undo()
{
    return !is_undo_empty();
}

bool ixo_command_manager::can_redo()
{
    return !is_redo_empty();
}

void ixo_command_manager::push_undo(ixo_object_ptr<ixo_command> command)
{
    if (!command || !command->is_undoable())
        return;
    command->set_next(undo_top_);
    undo_top_ = command;
    clear_redo();
}

ixo_object_ptr<ixo_command> ixo_command_manager::pop_undo_push_redo()
{
    ixo_object_ptr<ixo_command> command = undo_top_;
    if (command)
    {
        undo_top_ = command->get_next();
        command->set_next(redo_top_);
        redo_top_ = command;
    }
    return command;
}

ixo_object_ptr<ixo_command> ixo_command_manager::pop_redo()
{
    ixo_object_ptr<ixo_command> command = redo_top_;
    if (command)
    {
        redo_top_ = command->get_next();
        command->set_next(undo_top_);
        undo_top_ = command;
    }
    return command;
}

// Each command is unlinked before it is let go, so releasing it never releases the rest of
// the chain from inside its destructor.
static void clear_stack(ixo_object_ptr<ixo_command>& top)
{
    while (top)
    {
        ixo_object_ptr<ixo_command> next = top->get_next();
        top->set_next(nullptr);
        top = std::move(next);
    }
}

void ixo_command_manager::clear_undo()
{
    clear_stack(undo_top_);
}

void ixo_command_manager::clear_redo()
{
    clear_stack(redo_top_);
}

void ixo_command_manager::clear_all()
{
    clear_undo();
    clear_redo();
}

bool ixo_command_manager::is_undo_empty()
{
    return !undo_top_;
}

bool ixo_command_manager::is_redo_empty()
{
    return !redo_top_;
}
