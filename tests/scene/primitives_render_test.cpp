// The primitives drawn headless and read back: coverage, outlines, shared meshes, resets.

#include "scene/scene_render_fixture.h"

#include <cmath>

namespace
{
using ixo_test::pixel;
using color = ixo_vector4<unsigned char>;
using v3 = ixo_vector3<float>;

ixo_matrix44<float> rows(v3 r0, v3 r1, v3 r2)
{
    return ixo_matrix44<float>(
        ixo_vector4<float>(r0[0], r0[1], r0[2], 0), ixo_vector4<float>(r1[0], r1[1], r1[2], 0),
        ixo_vector4<float>(r2[0], r2[1], r2[2], 0), ixo_vector4<float>(0, 0, 0, 1));
}

// Turns the object's +z onto +y (x stays).
ixo_matrix44<float> z_to_y()
{
    return rows(v3(1, 0, 0), v3(0, 0, 1), v3(0, -1, 0));
}

using primitives_render = ixo_test::part_render;

// Within 2 % of the expected pixel count (edges of curved outlines).
::testing::AssertionResult about(int n, double expected)
{
    if (std::abs(n - expected) <= 0.02 * expected + 2)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << n << " pixels, expected about " << expected;
}

int references(IUnknown* p)
{
    p->AddRef();
    return int(p->Release());
}
} // namespace

TEST_F(primitives_render, solids_and_planes_cover_their_outlines)
{
    // A 2 x 1 box face-on: 40 x 20 pixels, centred.
    auto box = ixo_scene_box::create(2, 1, 3);
    ASSERT_NE(box->get_mesh(), nullptr);
    EXPECT_EQ(coverage(box), 800);
    auto img = draw(true);
    EXPECT_EQ(id_at(img, col(0), row(0)), box->id());
    EXPECT_EQ(id_at(img, col(0.95f), row(0.45f)), box->id());
    EXPECT_EQ(id_at(img, col(1.05f), row(0)), ixo_invalid_object_id);
    EXPECT_EQ(id_at(img, col(0), row(0.55f)), ixo_invalid_object_id);

    // A sphere scaled by 1.5: a disc of radius 30 pixels.
    auto sphere = ixo_scene_sphere::create();
    sphere->set_transform(ixo_scale_transform(1.5f));
    EXPECT_TRUE(about(coverage(sphere), 3.14159265 * 30 * 30));

    // A cylinder of radius 1: end-on a disc of 20 pixels, turned onto y a 2 x 3 rectangle.
    auto cylinder = ixo_scene_cylinder::create(1, 3);
    EXPECT_TRUE(about(coverage(cylinder), 3.14159265 * 20 * 20));
    cylinder->set_transform(z_to_y());
    EXPECT_TRUE(about(coverage(cylinder), 40 * 60));
    img = draw(true);
    EXPECT_EQ(id_at(img, col(0.9f), row(1.4f)), cylinder->id());
    EXPECT_EQ(id_at(img, col(0), row(1.6f)), ixo_invalid_object_id);

    // A cone: end-on its base disc; turned onto y a triangle, base at -0.5, point at +0.5.
    auto cone = ixo_scene_cone::create();
    EXPECT_TRUE(about(coverage(cone), 3.14159265 * 20 * 20));
    cone->set_transform(z_to_y());
    EXPECT_TRUE(about(coverage(cone), 0.5 * 40 * 20));
    img = draw(true);
    auto row_width = [&](float y)
    {
        int n = 0;
        for (UINT x = 0; x < W; ++x)
            n += id_at(img, x, row(y)) == cone->id();
        return n;
    };
    EXPECT_NEAR(row_width(-0.4f), 36, 3);
    EXPECT_NEAR(row_width(0.4f), 4, 3);

    // A plane shows from the side its normal points to.
    auto front = ixo_scene_plane::create(ixo_plane<float>(v3(0, 0, 0), v3(0, 0, 1)), 2, 1);
    ASSERT_NE(front->get_vertex_buffer(), nullptr);
    EXPECT_EQ(coverage(front), 800);

    // Seen from behind: culled.
    auto back = ixo_scene_plane::create(ixo_plane<float>(v3(0, 0, 0), v3(0, 0, -1)), 2, 1);
    EXPECT_EQ(coverage(back), 0);

    // The patch is centred on the root, width along u (here x) and height along v (y).
    auto moved = ixo_scene_plane::create(ixo_plane<float>(v3(1, 1.5f, 0), v3(0, 0, 1)), 1, 2);
    scene->get_root()->add_child(front);
    scene->get_root()->add_child(moved);
    img = draw(true);
    EXPECT_EQ(count_id(img, moved->id()), 20 * 40);
    EXPECT_EQ(count_id(img, front->id()), 800);
    EXPECT_EQ(id_at(img, col(1.4f), row(2.4f)), moved->id());
    EXPECT_EQ(id_at(img, col(0.6f), row(0.6f)), moved->id());
    EXPECT_EQ(id_at(img, col(1.6f), row(1.5f)), ixo_invalid_object_id);
    EXPECT_EQ(id_at(img, col(0), row(0)), front->id());
}

TEST_F(primitives_render, rectangle_outline_is_drawn_in_the_foreground_only)
{
    auto rect = ixo_scene_rectangle::create();
    rect->set_rectangle(ixo_box2<float>(ixo_vector2<float>(20, 30), ixo_vector2<float>(100, 90)));
    rect->set_color(color(0, 255, 0, 255));
    scene->get_root()->add_child(rect);

    auto green = [](const pixel& p) { return p.g > 200 && p.r < 50 && p.b < 50; };
    auto green_near = [&](const std::vector<pixel>& img, UINT x, UINT y)
    {
        for (UINT dy = 0; dy < 3; ++dy)
            for (UINT dx = 0; dx < 3; ++dx)
                if (green(at(img, x + dx - 1, y + dy - 1)))
                    return true;
        return false;
    };
    auto img = draw(false);
    EXPECT_TRUE(green_near(img, 20, 60));  // left edge
    EXPECT_TRUE(green_near(img, 100, 60)); // right edge
    EXPECT_TRUE(green_near(img, 60, 30));  // top edge
    EXPECT_TRUE(green_near(img, 60, 90));  // bottom edge
    EXPECT_FALSE(green(at(img, 60, 60)));  // inside
    EXPECT_FALSE(green(at(img, 10, 60)));  // outside

    // Drawn by hand in a background pass alone: skipped.
    device->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER, background, 1.0f, 0);
    device->BeginScene();
    ixo_scene_draw_data d;
    d.set_background(true);
    EXPECT_TRUE(scene->get_root()->draw(d));
    device->EndScene();
    img = read();
    int greens = 0;
    for (const pixel& p : img)
        greens += green(p);
    EXPECT_EQ(greens, 0);
}

TEST_F(primitives_render, meshes_are_rebuilt_after_a_device_reset)
{
    std::vector<ixo_object_ptr<ixo_scene_cone>> cones;
    for (int i = 0; i < 5; ++i)
    {
        cones.push_back(ixo_scene_cone::create());
        cones.back()->set_transform(ixo_translation_transform(v3(-3.0f + 1.5f * i, 1.5f, 0)) *
                                    ixo_scale_transform(0.5f));
        scene->get_root()->add_child(cones.back());
    }
    auto box = ixo_scene_box::create(1, 1, 1);
    box->set_transform(ixo_translation_transform(v3(0, -1.5f, 0)));
    scene->get_root()->add_child(box);
    auto plane = ixo_scene_plane::create(ixo_plane<float>(v3(2, -1.5f, 0), v3(0, 0, 1)), 1, 1);
    scene->get_root()->add_child(plane);
    auto before = draw(true);
    EXPECT_TRUE(about(count_id(before, cones[2]->id()), 3.14159265 * 10 * 10));
    EXPECT_EQ(count_id(before, box->id()), 400);
    EXPECT_EQ(count_id(before, plane->id()), 400);

    ASSERT_TRUE(reset_device());

    // One cone mesh again, held by each of the five cones.
    ID3DXMesh* mesh = ixo_scene_cone::get_shared_mesh();
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(references(mesh), 5);
    EXPECT_NE(box->get_mesh(), nullptr);
    EXPECT_NE(plane->get_vertex_buffer(), nullptr);
    auto after = draw(true);
    for (auto& c : cones)
        EXPECT_EQ(count_id(after, c->id()), count_id(before, c->id()));
    EXPECT_EQ(count_id(after, box->id()), 400);
    EXPECT_EQ(count_id(after, plane->id()), 400);
}
