#include <ixocore/app/document_object.h>

#include <ixocore/app/document.h>
#include <ixocore/core/property.h>

ixo_document_object::ixo_document_object() = default;
ixo_document_object::ixo_document_object(ixo_document_object const& other) = default;
ixo_document_object&
ixo_document_object::operator=(ixo_document_object const& other) = default;
ixo_document_object::~ixo_document_object() = default;

void ixo_document_object::on_add(ixo_object_ptr<ixo_document>) {}

void ixo_document_object::on_remove(ixo_object_ptr<ixo_document>) {}

ixo_object_ptr<ixo_property> ixo_document_object::get_property(unsigned long type)
{
    auto const it = properties_.find(type);
    return it == properties_.end() ? nullptr : it->second;
}

void ixo_document_object::add_property(ixo_object_ptr<ixo_property> property)
{
    if (!property)
        return;
    unsigned long const type = property->type();
    properties_[type] = std::move(property);
}

void ixo_document_object::remove_property(unsigned long type)
{
    properties_.erase(type);
}

bool ixo_document_object::has_property(unsigned long type)
{
    return properties_.contains(type);
}
