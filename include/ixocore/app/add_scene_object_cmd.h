#pragma once
// ixo_add_scene_object_cmd: adds a scene object under a parent scene object, undoably.

#include <ixocore/app/command.h>
#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>

class ixo_scene_object;

class IXO_API ixo_add_scene_object_cmd : public ixo_command
{
public:
    static ixo_object_ptr<ixo_add_scene_object_cmd> create(ixo_object_ptr<ixo_scene_object> parent,
                                                           ixo_object_ptr<ixo_scene_object> child);

    // Adds the child under the parent; false only when either is null.
    bool execute() override;
    // Always true.
    bool is_undoable() override;
    // Removes the child from the parent; false only when either is null.
    bool undo() override;
    // As execute.
    bool redo() override;

private:
    ixo_add_scene_object_cmd(ixo_object_ptr<ixo_scene_object> parent,
                             ixo_object_ptr<ixo_scene_object> child);
    ~ixo_add_scene_object_cmd() override;

    ixo_object_ptr<ixo_scene_object> parent_;
    ixo_object_ptr<ixo_scene_object> child_;
};
