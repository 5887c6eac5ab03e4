// Meshes from generated STL files drawn headless and picked where their triangles are.

#include "mesh/mesh_test_files.h"
#include "render/scene_render.h"

using namespace mesh_test;

namespace
{
// The square [x0, x1] x [y0, y1] at z = 0 read from a binary STL of two facets facing +z.
ixo_object_ptr<ixo_indexed_mesh> square(const char* name, float x0, float y0, float x1, float y1)
{
    return read_stl(name, binary_stl({{{0, 0, 1}, {x0, y0, 0, x1, y0, 0, x1, y1, 0}},
                                      {{0, 0, 1}, {x0, y0, 0, x1, y1, 0, x0, y1, 0}}},
                                     char(0xff)));
}

class scene_indexed_mesh_render : public ixo_test::scene_render<160, 120>
{
protected:
    // A pickable scene object of `mesh` under the root.
    ixo_object_ptr<ixo_scene_indexed_mesh> add(ixo_object_ptr<ixo_indexed_mesh> mesh)
    {
        auto object = ixo_scene_indexed_mesh::create(mesh);
        object->set_property(ixo_scene_object::pickable, true);
        scene->get_root()->add_child(object);
        return object;
    }
};
} // namespace

TEST_F(scene_indexed_mesh_render, MeshNamingMissingVerticesDrawsNothing)
{
    auto object = add(make_mesh({-2, -2, 0, 2, -2, 0, 2, 2, 0}, {0, 1, 2, 0, 2, 77}));
    ASSERT_TRUE(object->get_mesh());
    auto img = draw(true);
    ASSERT_EQ(img.size(), std::size_t(W) * H);
    EXPECT_EQ(count_id(img, object->id()), 0);
}

TEST_F(scene_indexed_mesh_render, DocumentObjectHangsItsSceneObjectUnderTheRoot)
{
    auto mesh = square("doc_square.stl", -1, -1, 1, 1);
    ASSERT_TRUE(mesh);
    auto doc_object = ixo_doc_indexed_mesh::create(mesh);
    EXPECT_EQ(doc_object->type_name(), ixo_string("Indexed Mesh Document Object"));
    EXPECT_EQ(doc_object->get_mesh(), mesh);
    ASSERT_TRUE(doc_object->get_scene_object());
    EXPECT_EQ(doc_object->get_scene_object()->get_mesh(), mesh);

    auto doc = ixo_application::instance()->create_document();
    ASSERT_TRUE(doc);
    auto root = doc->get_scene()->get_root();
    int before = root->get_num_children();
    EXPECT_TRUE(doc->add(doc_object));
    ASSERT_EQ(root->get_num_children(), before + 1);
    EXPECT_EQ(root->get_child(before), doc_object->get_scene_object());
    EXPECT_TRUE(doc->remove(doc_object));
    EXPECT_EQ(root->get_num_children(), before);
    ixo_application::instance()->remove_document(doc);
}

// A plane's own vertex stream must not be what the mesh after it draws from.
TEST_F(scene_indexed_mesh_render, MeshAfterAPlaneDrawsFromItsOwnVertices)
{
    auto object = add(square("left_square.stl", -3, -1, -1, 1));
    ASSERT_TRUE(object->get_mesh());
    EXPECT_EQ(id_at(draw(true), col(-2), row(0)), object->id());

    auto plane = ixo_scene_plane::create(
        ixo_plane<float>(ixo_vector3<float>(2, 0, 0), ixo_vector3<float>(0, 0, 1)), 2, 2);
    plane->set_property(ixo_scene_object::pickable, true);
    scene->get_root()->add_child_front(plane);
    for (int frame = 0; frame < 2; ++frame)
    {
        auto img = draw(true);
        EXPECT_EQ(id_at(img, col(-2), row(0)), object->id()) << "frame " << frame;
        EXPECT_EQ(id_at(img, col(2), row(0)), plane->id()) << "frame " << frame;
        EXPECT_NE(id_at(img, col(0), row(0)), object->id()) << "frame " << frame;
    }
    // After a device release the mesh draws from new buffers.
    EXPECT_TRUE(object->pre_reset_object());
    EXPECT_EQ(id_at(draw(true), col(-2), row(0)), object->id());
}
