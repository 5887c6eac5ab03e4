#pragma once
// ixo_command: one undoable step. A command carries the link to the command below it on
// whichever undo or redo stack holds it, so a command is on at most one stack at a time.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>

class IXO_API ixo_command : public ixo_object
{
public:
    // Performs the step; true on success. A command manager records only commands whose
    // execute succeeded.
    virtual bool execute() = 0;
    // Whether the step can be taken back; a manager does not record a command answering
    // false.
    virtual bool is_undoable() = 0;
    // Takes back the step done by execute or redo.
    virtual bool undo() = 0;
    // Performs the step again after undo.
    virtual bool redo() = 0;

    // The link to the command below this one on a stack (null at the bottom). Storing the
    // command already linked changes nothing.
    virtual void set_next(ixo_object_ptr<ixo_command> next);
    virtual ixo_object_ptr<ixo_command> get_next();

protected:
    ixo_command() = default;
    ixo_command(ixo_command const& other) = default;
    ixo_command& operator=(ixo_command const& other) = default;
    ~ixo_command() override;

private:
    ixo_object_ptr<ixo_command> next_;
};
