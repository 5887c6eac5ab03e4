// Draws meshes read from generated STL files headless on the application's device into a
// target of the test's own, through an orthographic camera looking down -z at 20 pixels
// per unit, and reads the pixels back: the picking pass shows the mesh's identifier
// exactly where its triangles are, and a mesh naming vertices it lacks draws nothing.

#include "mesh/mesh_test_files.h"
#include "render/render_target.h"

#include <ixocore/app/application.h>
#include <ixocore/app/document.h>
#include <ixocore/core/identifiable_object.h>
#include <ixocore/math/plane.h>
#include <ixocore/mesh/doc_indexed_mesh.h>
#include <ixocore/mesh/scene_indexed_mesh.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/scene_draw_data.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>
#include <ixocore/scene/scene_plane.h>

#include <memory>

using namespace mesh_test;

namespace
{
constexpr UINT W = 160;
constexpr UINT H = 120;
constexpr float px_per_unit = 20;
constexpr D3DCOLOR background = D3DCOLOR_XRGB(10, 20, 30);

using ixo_test::pixel;

UINT col(float x)
{
    return UINT(W / 2 + x * px_per_unit);
}
UINT row(float y)
{
    return UINT(H / 2 - y * px_per_unit);
}

// A binary STL of the square [x0, x1] x [y0, y1] at z = 0 (two facets facing +z).
std::string square_stl(float x0, float y0, float x1, float y1)
{
    std::string s(80, ' ');
    s[0] = char(0xff);
    put<std::uint32_t>(s, 2);
    const float facets[2][9] = {{x0, y0, 0, x1, y0, 0, x1, y1, 0},
                                {x0, y0, 0, x1, y1, 0, x0, y1, 0}};
    for (auto const& f : facets)
    {
        for (float n : {0.0f, 0.0f, 1.0f})
            put<float>(s, n);
        for (float v : f)
            put<float>(s, v);
        s.append(2, '\0');
    }
    return s;
}

class scene_indexed_mesh_render : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
        device = ixo_direct3d::get_device();
        ASSERT_NE(device, nullptr);
        target = std::make_unique<ixo_test::render_target>(device, W, H);
        ASSERT_TRUE(target->ok());
        scene = ixo_scene::create();
    }

    void TearDown() override
    {
        scene = nullptr;
        target.reset();
        ixo_application::end();
    }

    // The picking pass or the normal passes of the scene, read back.
    std::vector<pixel> draw(bool mapping)
    {
        if (!target->bind(background))
            return {};
        ixo_test::look_along_minus_z(device, W / px_per_unit, H / px_per_unit);
        ixo_scene_draw_data d;
        d.set_mapping(mapping);
        d.set_foreground(true);
        EXPECT_TRUE(scene->draw(d));
        return target->read();
    }

    static unsigned long id_at(const std::vector<pixel>& img, UINT x, UINT y)
    {
        if (img.size() != std::size_t(W) * H)
            return ixo_invalid_object_id;
        return ixo_test::id_of(img[std::size_t(y) * W + x]);
    }

    IDirect3DDevice9* device = nullptr;
    std::unique_ptr<ixo_test::render_target> target;
    ixo_object_ptr<ixo_scene> scene;
};

} // namespace

TEST_F(scene_indexed_mesh_render, MeshFromStlIsPickedWhereItsTrianglesAre)
{
    auto mesh = ixo_indexed_mesh::read_from_stl_file(
        wide(write_file("square.stl", square_stl(-2, -1, 1, 2))));
    ASSERT_TRUE(mesh);
    ASSERT_EQ(mesh->get_num_vertices(), 4u);
    auto object = ixo_scene_indexed_mesh::create(mesh);
    object->set_property(ixo_scene_object::pickable, true);
    scene->get_root()->add_child(object);

    auto img = draw(true);
    ASSERT_EQ(img.size(), std::size_t(W) * H);
    // Inside the square, on both of its triangles, and outside it.
    EXPECT_EQ(id_at(img, col(-1.5f), row(1.5f)), object->id());
    EXPECT_EQ(id_at(img, col(0.5f), row(-0.5f)), object->id());
    EXPECT_EQ(id_at(img, col(0), row(0)), object->id());
    EXPECT_NE(id_at(img, col(1.5f), row(0)), object->id());
    EXPECT_NE(id_at(img, col(0), row(-1.5f)), object->id());
    EXPECT_NE(id_at(img, col(-2.5f), row(0)), object->id());
    int covered = 0;
    for (UINT y = 0; y < H; ++y)
        for (UINT x = 0; x < W; ++x)
            covered += id_at(img, x, y) == object->id();
    EXPECT_NEAR(covered, 60 * 60, 2 * 60 + 2 * 60 + 4);

    // The normal pass draws it too; after the device resources are released it is drawn
    // again from new buffers.
    auto normal = draw(false);
    ASSERT_EQ(normal.size(), std::size_t(W) * H);
    pixel inside = normal[std::size_t(row(0)) * W + col(0)];
    EXPECT_FALSE(inside.r == 30 && inside.g == 20 && inside.b == 10);
    EXPECT_TRUE(object->pre_reset_object());
    EXPECT_EQ(id_at(draw(true), col(0), row(0)), object->id());
}

TEST_F(scene_indexed_mesh_render, MeshNamingMissingVerticesDrawsNothing)
{
    auto broken = make_mesh({-2, -2, 0, 2, -2, 0, 2, 2, 0}, {0, 1, 2, 0, 2, 77});
    ASSERT_TRUE(broken);
    auto object = ixo_scene_indexed_mesh::create(broken);
    object->set_property(ixo_scene_object::pickable, true);
    scene->get_root()->add_child(object);
    auto img = draw(true);
    ASSERT_EQ(img.size(), std::size_t(W) * H);
    for (UINT y = 0; y < H; ++y)
        for (UINT x = 0; x < W; ++x)
            ASSERT_NE(id_at(img, x, y), object->id());
}

TEST_F(scene_indexed_mesh_render, DocumentObjectHangsItsSceneObjectUnderTheRoot)
{
    auto mesh = ixo_indexed_mesh::read_from_stl_file(
        wide(write_file("doc_square.stl", square_stl(-1, -1, 1, 1))));
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

// A plane draws from a vertex stream of its own without touching the index buffer; the
// mesh drawn after it, in this frame and the next, must still draw from its own vertices.
TEST_F(scene_indexed_mesh_render, MeshAfterAPlaneDrawsFromItsOwnVertices)
{
    auto mesh = ixo_indexed_mesh::read_from_stl_file(
        wide(write_file("left_square.stl", square_stl(-3, -1, -1, 1))));
    ASSERT_TRUE(mesh);
    auto object = ixo_scene_indexed_mesh::create(mesh);
    object->set_property(ixo_scene_object::pickable, true);
    scene->get_root()->add_child(object);
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
}
