#pragma once
// ixo_tool_manager: a document's stack of tools. The top is the active tool; pushing a
// tool suspends the one below it (stop) and popping resumes it (start). The stack is a
// singly linked list through the tools' next links, owned from the top.
//
// A tool on the stack and its manager hold each other: empty the stack (pop_tool or
// clear_all_tools) to break the cycle. The document does so before it lets its manager go.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>

class ixo_tool;

class IXO_API ixo_tool_manager : public ixo_object
{
public:
    // A manager with an empty stack.
    static ixo_object_ptr<ixo_tool_manager> create();

    // The top of the stack, or null when it is empty.
    virtual ixo_object_ptr<ixo_tool> get_active_tool();
    // Removes the top tool and answers it, unlinked (no next, no manager) and stopped; the
    // tool below, if any, is started. Null on an empty stack.
    virtual ixo_object_ptr<ixo_tool> pop_tool();
    // Stops the current top, links `tool` above it and starts `tool`. A null tool changes
    // nothing and calls nothing.
    virtual void push_tool(ixo_object_ptr<ixo_tool> tool);
    // Pops until the stack is empty: every tool is stopped once, each tool below the top is
    // started on the way down.
    virtual void clear_all_tools();

    // Copies share the active tool.
    ixo_tool_manager(ixo_tool_manager const& other);
    ixo_tool_manager& operator=(ixo_tool_manager const& other);

protected:
    ixo_tool_manager();
    // Empties the stack first.
    ~ixo_tool_manager() override;

private:
    ixo_object_ptr<ixo_tool> pop_top();

    ixo_object_ptr<ixo_tool> active_tool_;
};
