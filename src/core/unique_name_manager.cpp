#include <ixocore/core/unique_name_manager.h>

ixo_object_ptr<ixo_unique_name_manager> ixo_unique_name_manager::create()
{
    return ixo_object_ptr<ixo_unique_name_manager>(new ixo_unique_name_manager());
}

ixo_unique_name_manager::ixo_unique_name_manager(ixo_unique_name_manager const& other)
    : ixo_object(other), names_(other.names_)
{
}

ixo_unique_name_manager& ixo_unique_name_manager::operator=(ixo_unique_name_manager const& other)
{
    ixo_object::operator=(other);
    names_ = other.names_;
    return *this;
}

ixo_unique_name_manager::~ixo_unique_name_manager() = default;

bool ixo_unique_name_manager::add_name(ixo_string const& name)
{
    return names_.insert(name).second;
}

bool ixo_unique_name_manager::is_name_taken(ixo_string const& name) const
{
    return names_.count(name) != 0;
}

bool ixo_unique_name_manager::remove_name(ixo_string const& name)
{
    return names_.erase(name) != 0;
}
