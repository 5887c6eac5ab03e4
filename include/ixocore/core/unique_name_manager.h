#pragma once
// ixo_unique_name_manager: a registry of the names in use, so that a host can tell whether
// a name is free before giving it to a new object.
//
// The registry keeps no link to the objects that bear the names and the library never
// fills it by itself: the host forms a candidate, asks is_name_taken, registers a free name
// with add_name and removes it when the object is renamed or deleted. Names compare
// exactly (every code unit counts, letter case included).

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/string.h>

#include <set>

class IXO_API ixo_unique_name_manager : public ixo_object
{
public:
    // A new, empty registry.
    static ixo_object_ptr<ixo_unique_name_manager> create();

    // Copies the set of names.
    ixo_unique_name_manager(ixo_unique_name_manager const& other);
    ixo_unique_name_manager& operator=(ixo_unique_name_manager const& other);

    // Inserts the name: true when it was not present yet, false (set unchanged) when it was.
    bool add_name(ixo_string const& name);
    // True when the name is present. O(log n).
    bool is_name_taken(ixo_string const& name) const;
    // Erases the name: true when it was present.
    bool remove_name(ixo_string const& name);

private:
    ixo_unique_name_manager() = default;
    ~ixo_unique_name_manager() override;

    std::set<ixo_string> names_;
};
