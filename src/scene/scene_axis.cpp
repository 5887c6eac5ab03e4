#include <ixocore/scene/scene_axis.h>

#include <ixocore/core/string.h>
#include <ixocore/scene/scene_cone.h>
#include <ixocore/scene/scene_cylinder.h>

IXO_TYPIFIED_DEFINE(ixo_scene_axis, IXO_TEXT("Axis"))

namespace
{
constexpr float golden_ratio = 1.618033988749895f;
} // namespace

ixo_object_ptr<ixo_scene_axis> ixo_scene_axis::create()
{
    return new ixo_scene_axis;
}

ixo_scene_axis::ixo_scene_axis()
{
    // Shaft: radius 0.1 from z = 0 to z = 1.
    ixo_object_ptr<ixo_scene_object> shaft = ixo_scene_cylinder::create(1, 1);
    shaft->set_transform(ixo_translation_transform(ixo_vector3<float>(0, 0, 0.5f)) *
                         ixo_anisotropic_transform(ixo_vector3<float>(0.1f, 0.1f, 1)));
    shaft->set_property(inherit_color, true);
    add_child(shaft);

    ixo_object_ptr<ixo_scene_object> head = ixo_scene_cone::create();
    head->set_transform(ixo_translation_transform(ixo_vector3<float>(0, 0, 0.5f)) *
                        ixo_anisotropic_transform(ixo_vector3<float>(2, 2, 1 / golden_ratio)));
    head->set_property(inherit_color, true);
    add_child(head);
}

ixo_scene_axis::ixo_scene_axis(const ixo_scene_axis& other) : ixo_scene_object(other) {}

ixo_scene_axis::~ixo_scene_axis() = default;
