#pragma once
// ixo_scene_axis: an arrow of length 1 from the origin along +z, made of two children that
// take the axis's colour: a thin cylinder shaft and a cone head.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/scene/scene_object.h>

class IXO_API ixo_scene_axis : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // The arrow with its shaft (child 0) and head (child 1), both inheriting the colour.
    static ixo_object_ptr<ixo_scene_axis> create();

protected:
    ixo_scene_axis();
    // A copy takes the attributes only; it has no children (a child has one parent).
    ixo_scene_axis(const ixo_scene_axis& other);
    ~ixo_scene_axis() override;
};
