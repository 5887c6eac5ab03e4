#pragma once
// Process-wide object identifiers, the generator that hands them out, and their encoding
// as colours for picking by colour.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>

#include <cstdint>
#include <map>

template <typename T> class ixo_vector4;
class ixo_id_generator;

// Base of every object that can be found again from its number. The object is listed in the
// process's generator from its construction to its destruction.
class IXO_API ixo_identifiable_object
{
public:
    // Takes `requested` when it is free, otherwise (and for ixo_invalid_object_id) a newly
    // generated identifier.
    explicit ixo_identifiable_object(unsigned long requested = ixo_invalid_object_id);
    // A copy is a different object and gets an identifier of its own.
    ixo_identifiable_object(ixo_identifiable_object const& other);
    // Keeps this object's identifier.
    ixo_identifiable_object& operator=(ixo_identifiable_object const&) { return *this; }
    // Removes the identifier from the generator.
    virtual ~ixo_identifiable_object();

    // The object's identifier.
    virtual unsigned long id() const;
    // Moves the object to identifier `id` when it is free (and valid); the former identifier
    // is released at once. False, and nothing changes, when `id` is taken or invalid.
    virtual bool request_id(unsigned long id);

    // The process's generator; lives from library load to unload.
    static ixo_id_generator const* get_id_generator();

private:
    friend class ixo_id_generator;
    static ixo_id_generator* m_generator;
    std::uint32_t id_ = static_cast<std::uint32_t>(ixo_invalid_object_id);
};

// Hands out identifiers from 1 upward and never reuses one. Keeps a non-owning map from
// identifier to object; it never touches reference counts.
class IXO_API ixo_id_generator
{
public:
    ixo_id_generator() = default;
    virtual ~ixo_id_generator();

    // Lists `object` under the next identifier and returns that identifier. Answers
    // ixo_invalid_object_id (and lists nothing) once all 2^32 - 1 identifiers are spent.
    virtual unsigned long generate_id(ixo_identifiable_object* object);
    // The object listed under `id`, or null.
    virtual ixo_identifiable_object* object_from_id(unsigned long id) const;
    // Lists `object` under `id` when `id` is free; later generated identifiers are then above
    // it. False, and nothing changes, when `id` is listed, invalid or wider than 32 bits.
    virtual bool request_id(unsigned long id, ixo_identifiable_object* object);
    // Removes the entry of `id`; true when there was one. The identifier is not reused.
    virtual bool destroy_id(unsigned long id);

private:
    // Kept wider than an identifier so that exhaustion can be told from wrapping around.
    std::uint64_t next_ = ixo_invalid_object_id + 1;
    std::map<std::uint32_t, ixo_identifiable_object*> objects_;
};

// The living object listed under `id`, or null (also for ixo_invalid_object_id). The result
// is a plain pointer without a reference; reach the full object with dynamic_cast.
IXO_API ixo_identifiable_object* ixo_object_from_id(unsigned long id);

// The colour that encodes `id`: byte k of the identifier (k = 0 the lowest) divided by 255
// becomes component k (red, green, blue, alpha). Identifier 1 is (1/255, 0, 0, 0).
IXO_API ixo_vector4<float> ixo_id_to_color(unsigned long id);

// The identifier read back from a pixel whose bytes are in the memory order of an 8-bit ARGB
// surface: b[0] blue, b[1] green, b[2] red, b[3] alpha. Inverse of ixo_id_to_color; an
// all-zero pixel reads back as ixo_invalid_object_id.
IXO_API unsigned long ixo_id_from_color(ixo_vector4<unsigned char> const& b);
