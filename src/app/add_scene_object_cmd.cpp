#include <ixocore/app/add_scene_object_cmd.h>

#include <ixocore/scene/scene_object.h>

ixo_object_ptr<ixo_add_scene_object_cmd>
ixo_add_scene_object_cmd::create(ixo_object_ptr<ixo_scene_object> parent,
                                 ixo_object_ptr<ixo_scene_object> child)
{
    return new ixo_add_scene_object_cmd(std::move(parent), std::move(child));
}

ixo_add_scene_object_cmd::ixo_add_scene_object_cmd(ixo_object_ptr<ixo_scene_object> parent,
                                                   ixo_object_ptr<ixo_scene_object> child)
    : parent_(std::move(parent)), child_(std::move(child))
{
}

ixo_add_scene_object_cmd::~ixo_add_scene_object_cmd() = default;

bool ixo_add_scene_object_cmd::execute()
{
    if (!parent_ || !child_)
        return false;
    parent_->add_child(child_);
    return true;
}

bool ixo_add_scene_object_cmd::is_undoable()
{
    return true;
}

bool ixo_add_scene_object_cmd::undo()
{
    if (!parent_ || !child_)
        return false;
    parent_->remove_child(child_);
    return true;
}

bool ixo_add_scene_object_cmd::redo()
{
    return execute();
}
