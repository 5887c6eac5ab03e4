#pragma once
// ixo_command_manager: a document's undo history. Executes commands and keeps two stacks,
// what can be undone and what can be redone, linked through the commands themselves. The
// history has no depth limit.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>

class ixo_command;

class IXO_API ixo_command_manager : public ixo_object
{
public:
    // A manager with empty stacks.
    static ixo_object_ptr<ixo_command_manager> create();

    // Executes `command` and records it (push_undo) when it succeeded. Answers what the
    // command's execute answered; a failed command leaves both stacks as they were. A null
    // command answers false.
    virtual bool execute(ixo_object_ptr<ixo_command> command);
    // Moves the top of the undo stack to the redo stack and undoes it; nothing when empty.
    // The command's own answer is not reported.
    virtual void undo();
    // Moves the top of the redo stack back to the undo stack and redoes it; nothing when
    // empty.
    virtual void redo();
    virtual bool can_undo();
    virtual bool can_redo();
    // Records an executed command on the undo stack and empties the redo stack. A command
    // that is not undoable (or null) is not recorded, and the redo stack is kept.
    virtual void push_undo(ixo_object_ptr<ixo_command> command);
    // Moves the undo top onto the redo stack and returns it; null when there is none.
    virtual ixo_object_ptr<ixo_command> pop_undo_push_redo();
    // Moves the redo top back onto the undo stack and returns it; null when there is none.
    virtual ixo_object_ptr<ixo_command> pop_redo();
    // Empty a stack one command at a time, so that a long history is released without
    // recursion. Cost O(n).
    virtual void clear_undo();
    virtual void clear_redo();
    virtual void clear_all();
    virtual bool is_undo_empty();
    virtual bool is_redo_empty();

private:
    ixo_command_manager() = default;
    ~ixo_command_manager() override;

    ixo_object_ptr<ixo_command> undo_top_;
    ixo_object_ptr<ixo_command> redo_top_;
};
