#include <ixocore/tools/tool.h>

#include <ixocore/tools/tool_manager.h>

ixo_tool::ixo_tool() = default;

ixo_tool::ixo_tool(ixo_tool const& other)
    : ixo_object(other), next_(other.next_), tool_manager_(other.tool_manager_)
{
}

ixo_tool& ixo_tool::operator=(ixo_tool const& other)
{
    ixo_object::operator=(other);
    next_ = other.next_;
    tool_manager_ = other.tool_manager_;
    return *this;
}

ixo_tool::~ixo_tool()
{
    tool_manager_ = nullptr;
    next_ = nullptr;
}

ixo_object_ptr<ixo_tool> ixo_tool::get_next()
{
    return next_;
}

void ixo_tool::set_next(ixo_object_ptr<ixo_tool> next)
{
    next_ = std::move(next);
}

ixo_object_ptr<ixo_tool_manager> ixo_tool::get_tool_manager()
{
    return tool_manager_;
}

void ixo_tool::set_tool_manager(ixo_object_ptr<ixo_tool_manager> manager)
{
    tool_manager_ = std::move(manager);
}
