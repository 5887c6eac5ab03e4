#include <ixocore/tools/tool_manager.h>

#include <ixocore/tools/tool.h>

ixo_object_ptr<ixo_tool_manager> ixo_tool_manager::create()
{
    return ixo_object_ptr<ixo_tool_manager>(new ixo_tool_manager);
}

ixo_tool_manager::ixo_tool_manager() = default;

ixo_tool_manager::ixo_tool_manager(ixo_tool_manager const& other)
    : ixo_object(other), active_tool_(other.active_tool_)
{
}

ixo_tool_manager& ixo_tool_manager::operator=(ixo_tool_manager const& other)
{
    ixo_object::operator=(other);
    active_tool_ = other.active_tool_;
    return *this;
}

ixo_tool_manager::~ixo_tool_manager()
{
    // Not clear_all_tools: its guard reference must not be taken on a dying object.
    while (pop_top())
    {
    }
    active_tool_ = nullptr;
}

ixo_object_ptr<ixo_tool> ixo_tool_manager::get_active_tool()
{
    return active_tool_;
}

ixo_object_ptr<ixo_tool> ixo_tool_manager::pop_tool()
{
    // The popped tool may hold the last reference to this manager.
    ixo_object_ptr<ixo_tool_manager> keep(this);
    return pop_top();
}

ixo_object_ptr<ixo_tool> ixo_tool_manager::pop_top()
{
    if (!active_tool_)
        return nullptr;
    ixo_object_ptr<ixo_tool> top = active_tool_;
    active_tool_ = top->get_next();
    // Unlinked before it is stopped, so stop() sees a tool on no stack.
    top->set_next(nullptr);
    top->set_tool_manager(nullptr);
    top->stop();
    if (active_tool_)
        active_tool_->start();
    return top;
}

void ixo_tool_manager::push_tool(ixo_object_ptr<ixo_tool> tool)
{
    if (!tool)
        return;
    ixo_object_ptr<ixo_tool_manager> keep(this);
    if (active_tool_)
        active_tool_->stop();
    tool->set_next(active_tool_);
    tool->set_tool_manager(this);
    tool->start();
    active_tool_ = std::move(tool);
}

void ixo_tool_manager::clear_all_tools()
{
    // Iterative, so a deep stack never unwinds recursively through the next links.
    ixo_object_ptr<ixo_tool_manager> keep(this);
    while (pop_top())
    {
    }
}
