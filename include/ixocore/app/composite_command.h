#pragma once
// ixo_composite_command: several commands done, undone and redone as one step.

#include <ixocore/app/command.h>
#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>

#include <vector>

class IXO_API ixo_composite_command : public ixo_command
{
public:
    // An empty composite: it executes, undoes and redoes successfully and is undoable.
    static ixo_object_ptr<ixo_composite_command> create();

    // Executes every child from first to last without stopping at a failure; true only when
    // all succeeded.
    bool execute() override;
    // Undoable only when every child is.
    bool is_undoable() override;
    // Undoes every child from last to first without stopping; true only when all succeeded.
    bool undo() override;
    // Redoes every child from first to last without stopping; true only when all succeeded.
    bool redo() override;

    // Appends a child; a null pointer is ignored. The children's own stack links are not
    // used.
    virtual void add(ixo_object_ptr<ixo_command> command);

protected:
    ixo_composite_command() = default;
    ixo_composite_command(ixo_composite_command const& other) = default;
    ixo_composite_command& operator=(ixo_composite_command const& other) = default;
    ~ixo_composite_command() override;

private:
    std::vector<ixo_object_ptr<ixo_command>> children_;
};
