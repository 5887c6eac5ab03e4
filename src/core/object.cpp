#include <ixocore/core/object.h>

int ixo_object::add_ref()
{
    return ++count_;
}

int ixo_object::release()
{
    int const count = --count_;
    if (count == 0)
        delete this;
    return count;
}

bool ixo_object::allocation_check(ixo_object* object)
{
    return object != nullptr;
}

ixo_object::~ixo_object() = default;

unsigned long ixo_assign_object_type()
{
    static unsigned long counter = ixo_invalid_object_type;
    return ++counter;
}
