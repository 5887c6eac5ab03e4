#pragma once
// ixo_selectable_object: the base of document objects and scene objects. Counted,
// identified and typed, with a selected flag and four integers of host data.

#include <ixocore/core/api.h>
#include <ixocore/core/identifiable_object.h>
#include <ixocore/core/object.h>
#include <ixocore/math/vector.h>

class ixo_selection;

class IXO_API ixo_selectable_object : public ixo_object,
                                      public ixo_identifiable_object,
                                      public ixo_typified_object
{
public:
    // True while the object is in a selection. Only ixo_selection changes it.
    virtual bool is_selected() const;

    // Four integers for the host's own use, (-1, -1, -1, -1) at construction; the library
    // never reads them.
    ixo_vector4<long> get_information() const { return information_; }
    void set_information(ixo_vector4<long> information) { information_ = information; }
    // Sets field `index` (0..3); any other index is ignored.
    void set_information_field(int index, long value);

protected:
    // Takes a generated identifier.
    ixo_selectable_object();
    ixo_selectable_object(ixo_selectable_object const& other);
    ixo_selectable_object& operator=(ixo_selectable_object const& other);
    ~ixo_selectable_object() override;

private:
    friend class ixo_selection;

    bool selected_ = false;
    ixo_vector4<long> information_{-1, -1, -1, -1};
};
