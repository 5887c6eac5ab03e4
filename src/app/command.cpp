#include <ixocore/app/command.h>

ixo_command::~ixo_command() = default;

void ixo_command::set_next(ixo_object_ptr<ixo_command> next)
{
    next_ = std::move(next);
}

ixo_object_ptr<ixo_command> ixo_command::get_next()
{
    return next_;
}
