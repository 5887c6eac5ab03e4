#pragma once
// Typed properties that document objects carry, at most one per type number, found again
// by the property class's static_type().

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/string.h>

// Abstract base: each concrete property supplies type() and type_name().
class IXO_API ixo_property : public ixo_object, public ixo_typified_object
{
protected:
    ixo_property() = default;
    ixo_property(ixo_property const&) = default;
    ixo_property& operator=(ixo_property const&) = default;
    ~ixo_property() override;
};

// A name string, "Unnamed Object" until set. Setting it consults no registry and raises
// no event.
class IXO_API ixo_name_property : public ixo_property
{
public:
    // A property holding the default name.
    static ixo_object_ptr<ixo_name_property> create();

    // Copies the name.
    ixo_name_property(ixo_name_property const& other);
    ixo_name_property& operator=(ixo_name_property const& other);

    virtual ixo_string const& get_name() const;
    virtual void set_name(ixo_string const& name);

    // "Unnamed Object".
    static ixo_string const& default_name();

    IXO_TYPIFIED_DECLARE()

private:
    ixo_name_property();
    ~ixo_name_property() override;

    static ixo_string const m_default_name;

    ixo_string name_;
};
