#include "mesh/mesh_test_files.h"

#include <ixocore/ixocore.h>

using namespace mesh_test;

TEST(SceneIndexedMesh, BoundsAreThoseOfTheVerticesAndCached)
{
    auto mesh = make_mesh({1, -2, 3, -4, 5, 0.5f, 2, 2, 2}, {0, 1, 2});
    ASSERT_TRUE(mesh);
    auto object = ixo_scene_indexed_mesh::create(mesh);
    EXPECT_EQ(object->get_mesh(), mesh);
    EXPECT_EQ(object->type_name(), ixo_string("Indexed Mesh Scene Object"));
    EXPECT_EQ(object->type(), ixo_scene_indexed_mesh::static_type());
    EXPECT_NE(object->type(), ixo_scene_object::static_type());

    ixo_box3<float> box = object->get_object_bounds();
    expect_vec(box.minimum(), -4, -2, 0.5f);
    expect_vec(box.maximum(), 2, 5, 3);

    // The box is kept after the first query.
    mesh->get_vertex(0u).position = ixo_vector3<float>(100, 100, 100);
    expect_vec(object->get_object_bounds().maximum(), 2, 5, 3);

    // Without a mesh the box is empty and nothing is drawn.
    auto none = ixo_scene_indexed_mesh::create(nullptr);
    EXPECT_TRUE(none->get_object_bounds().empty());
    ixo_scene_draw_data d;
    d.set_foreground(true);
    EXPECT_TRUE(none->draw_object(d));
    // Without a device nothing is drawn either, and no buffer is made.
    EXPECT_TRUE(object->draw_object(d));
    EXPECT_TRUE(object->pre_reset_object());
}
