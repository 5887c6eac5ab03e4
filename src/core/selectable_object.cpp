#include <ixocore/core/selectable_object.h>

ixo_selectable_object::ixo_selectable_object() : ixo_identifiable_object(ixo_invalid_object_id) {}

// A copy is a new object: own count, own identifier, and in no selection.
ixo_selectable_object::ixo_selectable_object(ixo_selectable_object const& other)
    : ixo_object(other), ixo_identifiable_object(other), ixo_typified_object(other),
      information_(other.information_)
{
}

ixo_selectable_object& ixo_selectable_object::operator=(ixo_selectable_object const& other)
{
    information_ = other.information_;
    return *this;
}

ixo_selectable_object::~ixo_selectable_object() = default;

bool ixo_selectable_object::is_selected() const
{
    return selected_;
}

void ixo_selectable_object::set_information_field(int index, long value)
{
    if (index >= 0 && index < 4)
        information_[index] = value;
}
