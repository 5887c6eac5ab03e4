#pragma once
// ixo_add_docobj_command: adds a document object to a document, undoably.

#include <ixocore/app/command.h>
#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>

class ixo_document;
class ixo_document_object;

class IXO_API ixo_add_docobj_command : public ixo_command
{
public:
    static ixo_object_ptr<ixo_add_docobj_command>
    create(ixo_object_ptr<ixo_document> document, ixo_object_ptr<ixo_document_object> object);

    // Adds the object to the document; false only when either is null (the document's own
    // answer is not used).
    bool execute() override;
    // Always true.
    bool is_undoable() override;
    // Removes the object from the document; false only when either is null.
    bool undo() override;
    // As execute.
    bool redo() override;

private:
    ixo_add_docobj_command(ixo_object_ptr<ixo_document> document,
                           ixo_object_ptr<ixo_document_object> object);
    ~ixo_add_docobj_command() override;

    ixo_object_ptr<ixo_document> document_;
    ixo_object_ptr<ixo_document_object> object_;
};
