#pragma once
// ixo_document_object: the base of everything that lives in a document outside the scene
// graph. Carries at most one property per property type and is told when it enters and
// leaves a document.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/property.h>
#include <ixocore/core/selectable_object.h>

#include <map>

class ixo_document;

// Abstract: concrete classes supply type() and type_name().
class IXO_API ixo_document_object : public ixo_selectable_object
{
public:
    // Called by the document after `doc` added this object (also when it was there
    // already). Empty here; a concrete object puts its scene object into the document's
    // scene.
    virtual void on_add(ixo_object_ptr<ixo_document> doc);
    // Called by the document when it removes this object or is cleared. Empty here.
    virtual void on_remove(ixo_object_ptr<ixo_document> doc);
    // The property of type `type`, or null.
    virtual ixo_object_ptr<ixo_property> get_property(unsigned long type);
    // Stores `property` under its type, replacing (and releasing) one of the same type.
    // A null pointer is ignored.
    virtual void add_property(ixo_object_ptr<ixo_property> property);
    // Removes the property of type `type`; nothing happens when there is none.
    virtual void remove_property(unsigned long type);
    virtual bool has_property(unsigned long type);

protected:
    ixo_document_object();
    ixo_document_object(ixo_document_object const& other);
    ixo_document_object& operator=(ixo_document_object const& other);
    ~ixo_document_object() override;

private:
    std::map<unsigned long, ixo_object_ptr<ixo_property>> properties_;
};
