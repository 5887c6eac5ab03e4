#pragma once
// The counted object base, the run-time type interface and type numbers.
//
// Every object the library hands out or keeps in a document, a scene, a manager or an
// event derives from ixo_object and is held through ixo_object_ptr. Counts are plain
// integers: the object model is used from one thread only.

#include <ixocore/core/api.h>

class ixo_string;

// The identifier no object ever receives and the type number no class ever receives.
inline constexpr unsigned long ixo_invalid_object_id = 0;
inline constexpr unsigned long ixo_invalid_object_type = 0;

// Reference-counted base. A new object has count 0; the first smart pointer that takes it
// makes it 1, and the release that brings the count back to 0 deletes it.
class IXO_API ixo_object
{
public:
    // Increments the count and returns the new count.
    virtual int add_ref();
    // Decrements the count and returns the count after the decrement. At 0 the object
    // deletes itself through its virtual destructor and must not be touched afterwards.
    virtual int release();

    // True when the pointer is not null.
    static bool allocation_check(ixo_object* object);

protected:
    ixo_object() = default;
    // A copy is a new object: it starts uncounted, whatever the count of the original.
    ixo_object(ixo_object const&) : count_(0) {}
    // Assignment copies the derived members only; the count belongs to the object.
    ixo_object& operator=(ixo_object const&) { return *this; }
    virtual ~ixo_object();

private:
    int count_ = 0;
};

// Run-time type interface: a process-wide type number and a display name per class.
// Numbers are handed out lazily (see ixo_assign_object_type) and are valid only within one
// process; they are never written to files.
class IXO_API ixo_typified_object
{
public:
    // The type number of the object's class, assigned the first time the class is asked.
    virtual unsigned long type() const = 0;
    // The display name of the object's class.
    virtual ixo_string const& type_name() const = 0;

protected:
    ~ixo_typified_object() = default;
};

// Returns a type number never handed out before: 1, 2, 3, ... in the order of the calls.
IXO_API unsigned long ixo_assign_object_type();

// Declares the type members of a concrete typed class: the lazily assigned m_type, the
// display name m_type_name, static_type(), static_type_name() and the two overrides.
// Pair with IXO_TYPIFIED_DEFINE in the class's source file. Leaves the access at private.
#define IXO_TYPIFIED_DECLARE()                                                                     \
public:                                                                                            \
    [[maybe_unused]] static unsigned long static_type();                                           \
    [[maybe_unused]] static ixo_string const& static_type_name();                                  \
    unsigned long type() const override;                                                           \
    ixo_string const& type_name() const override;                                                  \
                                                                                                   \
private:                                                                                           \
    static unsigned long m_type;                                                                   \
    static ixo_string const m_type_name;

// Defines what IXO_TYPIFIED_DECLARE declares; `name` is the display name (an IXO_TEXT
// literal or anything else ixo_string is constructed from).
#define IXO_TYPIFIED_DEFINE(cls, name)                                                             \
    unsigned long cls::m_type = ixo_invalid_object_type;                                           \
    ixo_string const cls::m_type_name(name);                                                       \
    unsigned long cls::static_type()                                                               \
    {                                                                                              \
        if (m_type == ixo_invalid_object_type)                                                     \
            m_type = ixo_assign_object_type();                                                     \
        return m_type;                                                                             \
    }                                                                                              \
    ixo_string const& cls::static_type_name()                                                      \
    {                                                                                              \
        return m_type_name;                                                                        \
    }                                                                                              \
    unsigned long cls::type() const                                                                \
    {                                                                                              \
        return static_type();                                                                      \
    }                                                                                              \
    ixo_string const& cls::type_name() const                                                       \
    {                                                                                              \
        return m_type_name;                                                                        \
    }
