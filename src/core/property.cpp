#include <ixocore/core/property.h>

ixo_property::~ixo_property() = default;

IXO_TYPIFIED_DEFINE(ixo_name_property, IXO_TEXT("Name Property"))

ixo_string const ixo_name_property::m_default_name(IXO_TEXT("Unnamed Object"));

ixo_object_ptr<ixo_name_property> ixo_name_property::create()
{
    return ixo_object_ptr<ixo_name_property>(new ixo_name_property());
}

ixo_name_property::ixo_name_property() : name_(m_default_name) {}

ixo_name_property::ixo_name_property(ixo_name_property const& other)
    : ixo_property(other), name_(other.name_)
{
}

ixo_name_property& ixo_name_property::operator=(ixo_name_property const& other)
{
    ixo_property::operator=(other);
    name_ = other.name_;
    return *this;
}

ixo_name_property::~ixo_name_property() = default;

ixo_string const& ixo_name_property::get_name() const
{
    return name_;
}

void ixo_name_property::set_name(ixo_string const& name)
{
    name_ = name;
}

ixo_string const& ixo_name_property::default_name()
{
    return m_default_name;
}
