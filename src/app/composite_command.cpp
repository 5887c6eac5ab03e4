#include <ixocore/app/composite_command.h>

ixo_object_ptr<ixo_composite_command> ixo_composite_command::create()
{
    return new ixo_composite_command;
}

ixo_composite_command::~ixo_composite_command() = default;

void ixo_composite_command::add(ixo_object_ptr<ixo_command> command)
{
    if (command)
        children_.push_back(std::move(command));
}

bool ixo_composite_command::execute()
{
    bool ok = true;
    for (auto const& child : children_)
        ok = child->execute() && ok;
    return ok;
}

bool ixo_composite_command::is_undoable()
{
    bool undoable = true;
    for (auto const& child : children_)
        undoable = child->is_undoable() && undoable;
    return undoable;
}

bool ixo_composite_command::undo()
{
    bool ok = true;
    for (auto child = children_.rbegin(); child != children_.rend(); ++child)
        ok = (*child)->undo() && ok;
    return ok;
}

bool ixo_composite_command::redo()
{
    bool ok = true;
    for (auto const& child : children_)
        ok = child->redo() && ok;
    return ok;
}
