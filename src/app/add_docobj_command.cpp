#include <ixocore/app/add_docobj_command.h>

#include <ixocore/app/document.h>
#include <ixocore/app/document_object.h>

ixo_object_ptr<ixo_add_docobj_command>
ixo_add_docobj_command::create(ixo_object_ptr<ixo_document> document,
                               ixo_object_ptr<ixo_document_object> object)
{
    return new ixo_add_docobj_command(std::move(document), std::move(object));
}

ixo_add_docobj_command::ixo_add_docobj_command(ixo_object_ptr<ixo_document> document,
                                               ixo_object_ptr<ixo_document_object> object)
    : document_(std::move(document)), object_(std::move(object))
{
}

ixo_add_docobj_command::~ixo_add_docobj_command() = default;

bool ixo_add_docobj_command::execute()
{
    if (!document_ || !object_)
        return false;
    document_->add(object_);
    return true;
}

bool ixo_add_docobj_command::is_undoable()
{
    return true;
}

bool ixo_add_docobj_command::undo()
{
    if (!document_ || !object_)
        return false;
    document_->remove(object_);
    return true;
}

bool ixo_add_docobj_command::redo()
{
    return execute();
}
