#include <ixocore/scene/scene_coordinate_system.h>

#include <ixocore/core/string.h>
#include <ixocore/scene/scene_axis.h>
#include <ixocore/scene/scene_sphere.h>

IXO_TYPIFIED_DEFINE(ixo_scene_coordinate_system, IXO_TEXT("Coordinate System"))

namespace
{
ixo_object_ptr<ixo_scene_object> make_axis(const ixo_vector4<unsigned char>& color,
                                           const ixo_matrix44<float>& transform)
{
    ixo_object_ptr<ixo_scene_object> axis = ixo_scene_axis::create();
    axis->set_color(color);
    axis->set_transform(transform);
    return axis;
}
} // namespace

ixo_object_ptr<ixo_scene_coordinate_system> ixo_scene_coordinate_system::create()
{
    return new ixo_scene_coordinate_system;
}

ixo_scene_coordinate_system::ixo_scene_coordinate_system()
{
    ixo_object_ptr<ixo_scene_object> ball = ixo_scene_sphere::create();
    ball->set_transform(ixo_scale_transform(0.2f));
    ball->set_color(ixo_vector4<unsigned char>(128, 128, 128, 255));
    add_child(ball);

    // Quarter turns that carry the arrow's +z onto +x and onto +y.
    ixo_matrix44<float> to_x = ixo_identity_transform();
    to_x[0] = ixo_vector4<float>(0, 0, 1, 0);
    to_x[2] = ixo_vector4<float>(-1, 0, 0, 0);
    ixo_matrix44<float> to_y = ixo_identity_transform();
    to_y[1] = ixo_vector4<float>(0, 0, 1, 0);
    to_y[2] = ixo_vector4<float>(0, -1, 0, 0);

    add_child(make_axis(ixo_vector4<unsigned char>(128, 0, 0, 255), to_x));
    add_child(make_axis(ixo_vector4<unsigned char>(0, 128, 0, 255), to_y));
    add_child(make_axis(ixo_vector4<unsigned char>(0, 0, 128, 255), ixo_identity_transform()));
}

ixo_scene_coordinate_system::ixo_scene_coordinate_system(const ixo_scene_coordinate_system& other)
    : ixo_scene_object(other)
{
}

ixo_scene_coordinate_system::~ixo_scene_coordinate_system() = default;
