#include <ixocore/core/identifiable_object.h>

#include <ixocore/math/vector.h>

#include <limits>

namespace
{
constexpr std::uint64_t max_id = std::numeric_limits<std::uint32_t>::max();

ixo_id_generator the_generator;
} // namespace

ixo_id_generator* ixo_identifiable_object::m_generator = &the_generator;

// ---------------------------------------------------------------------------------------
ixo_identifiable_object::ixo_identifiable_object(unsigned long requested)
{
    if (!m_generator)
        return;
    if (requested != ixo_invalid_object_id && m_generator->request_id(requested, this))
        id_ = static_cast<std::uint32_t>(requested);
    else
        id_ = static_cast<std::uint32_t>(m_generator->generate_id(this));
}

ixo_identifiable_object::ixo_identifiable_object(ixo_identifiable_object const&)
    : ixo_identifiable_object(ixo_invalid_object_id)
{
}

ixo_identifiable_object::~ixo_identifiable_object()
{
    if (m_generator && id_ != ixo_invalid_object_id)
        m_generator->destroy_id(id_);
}

unsigned long ixo_identifiable_object::id() const
{
    return id_;
}

bool ixo_identifiable_object::request_id(unsigned long id)
{
    if (!m_generator || !m_generator->request_id(id, this))
        return false;
    // The former identifier would otherwise stay listed for an object that no longer
    // answers to it, and outlive the object.
    if (id_ != ixo_invalid_object_id)
        m_generator->destroy_id(id_);
    id_ = static_cast<std::uint32_t>(id);
    return true;
}

ixo_id_generator const* ixo_identifiable_object::get_id_generator()
{
    return m_generator;
}

// ---------------------------------------------------------------------------------------
ixo_id_generator::~ixo_id_generator()
{
    // Objects that outlive the process's generator (statics destroyed after the library's)
    // must not reach into a destroyed map.
    if (ixo_identifiable_object::m_generator == this)
        ixo_identifiable_object::m_generator = nullptr;
}

unsigned long ixo_id_generator::generate_id(ixo_identifiable_object* object)
{
    if (next_ > max_id)
        return ixo_invalid_object_id;
    auto const id = static_cast<std::uint32_t>(next_++);
    objects_[id] = object;
    return id;
}

ixo_identifiable_object* ixo_id_generator::object_from_id(unsigned long id) const
{
    if (id > max_id)
        return nullptr;
    auto const it = objects_.find(static_cast<std::uint32_t>(id));
    return it == objects_.end() ? nullptr : it->second;
}

bool ixo_id_generator::request_id(unsigned long id, ixo_identifiable_object* object)
{
    if (id == ixo_invalid_object_id || id > max_id)
        return false;
    if (!objects_.try_emplace(static_cast<std::uint32_t>(id), object).second)
        return false;
    if (id >= next_)
        next_ = std::uint64_t{id} + 1;
    return true;
}

bool ixo_id_generator::destroy_id(unsigned long id)
{
    if (id > max_id)
        return false;
    return objects_.erase(static_cast<std::uint32_t>(id)) != 0;
}

// ---------------------------------------------------------------------------------------
ixo_identifiable_object* ixo_object_from_id(unsigned long id)
{
    ixo_id_generator const* generator = ixo_identifiable_object::get_id_generator();
    return generator ? generator->object_from_id(id) : nullptr;
}

ixo_vector4<float> ixo_id_to_color(unsigned long id)
{
    auto byte = [id](int k) { return static_cast<float>((id >> (8 * k)) & 0xffu) / 255.0f; };
    return {byte(0), byte(1), byte(2), byte(3)};
}

unsigned long ixo_id_from_color(ixo_vector4<unsigned char> const& b)
{
    // Memory order of an ARGB surface: blue, green, red, alpha.
    return (static_cast<unsigned long>(b[3]) << 24) | (static_cast<unsigned long>(b[0]) << 16) |
           (static_cast<unsigned long>(b[1]) << 8) | static_cast<unsigned long>(b[2]);
}
