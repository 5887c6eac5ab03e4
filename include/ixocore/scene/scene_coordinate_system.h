#pragma once
// ixo_scene_coordinate_system: the three unit axes as arrows in dark red (x), dark green
// (y) and dark blue (z) around a grey ball at the origin, all children of the object.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/scene/scene_object.h>

class IXO_API ixo_scene_coordinate_system : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // Children in order: the ball (a sphere scaled by 0.2), then the x, y and z arrows.
    static ixo_object_ptr<ixo_scene_coordinate_system> create();

protected:
    ixo_scene_coordinate_system();
    // A copy takes the attributes only; it has no children (a child has one parent).
    ixo_scene_coordinate_system(const ixo_scene_coordinate_system& other);
    ~ixo_scene_coordinate_system() override;
};
