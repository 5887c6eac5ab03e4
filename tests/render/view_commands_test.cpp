#include "scene/scene_probe.h"

#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

#include <cmath>

namespace
{
probe_log no_draws;

ixo_object_ptr<ixo_scene> scene_with(const ixo_box3<float>& box)
{
    ixo_object_ptr<ixo_scene> scene = ixo_scene::create();
    scene->get_root()->add_child(probe::create(no_draws, "box", box));
    return scene;
}

const ixo_box3<float> unit_cube(ixo_vector3<float>(-1, -1, -1), ixo_vector3<float>(1, 1, 1));

void expect_vec(const ixo_vector3<float>& v, float x, float y, float z, float tol = 1e-3f)
{
    EXPECT_NEAR(v[0], x, tol);
    EXPECT_NEAR(v[1], y, tol);
    EXPECT_NEAR(v[2], z, tol);
}

TEST(view_commands, standard_view_undo_and_redo_exchange_the_camera_frame)
{
    auto camera = ixo_camera_view::create();
    camera->set_eye(ixo_vector3<float>(1, 2, 3));
    camera->set_focus(ixo_vector3<float>(0.5f, 0.25f, -4));
    camera->set_up(ixo_vector3<float>(0, 0, 1));
    camera->set_fov(45.0f);
    camera->set_near(0.25f);
    auto manager = ixo_command_manager::create();

    auto top = ixo_standard_view_command::create(ixo_standard_view_command::top_view, camera);
    EXPECT_TRUE(top->is_undoable());
    ASSERT_TRUE(manager->execute(top));
    // Looking along -y with -z up on the screen, one unit from the focus.
    expect_vec(camera->get_eye(), 0, 0, 0);
    expect_vec(camera->get_focus(), 0, -1, 0);
    expect_vec(camera->get_up(), 0, 0, -1);
    EXPECT_EQ(camera->get_fov(), 45.0f) << "fov, near and far are kept";
    EXPECT_EQ(camera->get_near(), 0.25f);

    manager->undo();
    EXPECT_EQ(camera->get_eye(), ixo_vector3<float>(1, 2, 3));
    EXPECT_EQ(camera->get_focus(), ixo_vector3<float>(0.5f, 0.25f, -4));
    EXPECT_EQ(camera->get_up(), ixo_vector3<float>(0, 0, 1));
    manager->redo();
    expect_vec(camera->get_focus(), 0, -1, 0);
    // Undo called twice on the command itself toggles.
    top->undo();
    top->undo();
    expect_vec(camera->get_focus(), 0, -1, 0);

    // Every direction of the table, by value.
    const float focus[6][3] = {{0, 0, -1}, {-1, 0, 0}, {0, -1, 0}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}};
    const float up[6][3] = {{0, 1, 0}, {0, 1, 0}, {0, 0, -1}, {0, 1, 0}, {0, 1, 0}, {0, 0, -1}};
    for (int v = 0; v < 6; ++v)
    {
        ixo_standard_view_command::create(ixo_standard_view_command::view_type(v), camera)
            ->execute();
        expect_vec(camera->get_focus(), focus[v][0], focus[v][1], focus[v][2]);
        expect_vec(camera->get_up(), up[v][0], up[v][1], up[v][2]);
        expect_vec(camera->get_eye(), 0, 0, 0);
    }

    // A value outside the table and a missing camera leave things as they are.
    camera->set_eye(ixo_vector3<float>(7, 7, 7));
    EXPECT_TRUE(ixo_standard_view_command::create(ixo_standard_view_command::view_type(9), camera)
                    ->execute());
    EXPECT_EQ(camera->get_eye(), ixo_vector3<float>(7, 7, 7));
    EXPECT_TRUE(ixo_standard_view_command::create(ixo_standard_view_command::front_view, nullptr)
                    ->execute());
}

TEST(view_commands, view_normal_to_plane_frames_the_scene_on_the_plane)
{
    auto camera = ixo_camera_view::create();
    camera->set_fov(50.0f);
    auto scene = scene_with(unit_cube);
    auto cmd = ixo_view_normal_to_plane_command::create(camera, scene, ixo_plane<float>());
    ASSERT_TRUE(cmd->execute());
    // The cube covers [-1, 1]² on the x-y plane: diagonal 2√2, distance √2 / tan 15°.
    float const dist = std::sqrt(2.0f) / std::tan(15.0f * 3.14159265f / 180.0f);
    ASSERT_NEAR(dist, 5.278f, 1e-3f);
    expect_vec(camera->get_focus(), 0, 0, 0);
    expect_vec(camera->get_eye(), 0, 0, 5.278f);
    expect_vec(camera->get_up(), 0, 1, 0);
    EXPECT_EQ(camera->get_fov(), 30.0f);
    // Near and far: distance ∓ 1.1 times the cube's diagonal 2√3.
    EXPECT_NEAR(camera->get_near(), 1.467f, 1e-3f);
    EXPECT_NEAR(camera->get_far(), 9.088f, 1e-3f);

    cmd->undo();
    expect_vec(camera->get_eye(), 0, 0, 10);
    EXPECT_EQ(camera->get_fov(), 50.0f);
    EXPECT_EQ(camera->get_near(), 0.5f);
    EXPECT_EQ(camera->get_far(), 200.0f);
    cmd->redo();
    expect_vec(camera->get_eye(), 0, 0, 5.278f);

    // The plane x = 3 facing +x: the focus is its root, the eye along its normal; the
    // plane's v direction is +y.
    ixo_plane<float> const side(ixo_vector3<float>(3, 0, 0), ixo_vector3<float>(1, 0, 0));
    ixo_view_normal_to_plane_command::create(camera, scene, side)->execute();
    expect_vec(camera->get_focus(), 3, 0, 0);
    expect_vec(camera->get_eye(), 3 + 5.278f, 0, 0);
    expect_vec(camera->get_up(), 0, 1, 0);

    // A scene shrunk to one point: the distance falls back to 0.1.
    auto point =
        scene_with(ixo_box3<float>(ixo_vector3<float>(2, 2, 2), ixo_vector3<float>(2, 2, 2)));
    ixo_view_normal_to_plane_command::create(camera, point, ixo_plane<float>())->execute();
    expect_vec(camera->get_eye(), 0, 0, 0.1f, 1e-5f);
    EXPECT_NEAR(camera->get_near(), 0.1f, 1e-6f);
    EXPECT_NEAR(camera->get_far(), 0.1f, 1e-6f);

    // Nothing to look at: nothing changes.
    camera->set_eye(ixo_vector3<float>(4, 4, 4));
    EXPECT_TRUE(
        ixo_view_normal_to_plane_command::create(camera, nullptr, ixo_plane<float>())->execute());
    EXPECT_EQ(camera->get_eye(), ixo_vector3<float>(4, 4, 4));
}

// View all works on a render view's camera; a view exists only inside a started library.
// The view is never initialised, so the repaint at the end of view all finds no surfaces.
TEST(view_commands, view_all_fits_the_cube_and_undo_restores)
{
    ixo_application::start(nullptr);
    {
        auto view = ixo_render_view_manager::get_app_render_view_manager()->create();
        auto camera = view->get_camera();
        camera->resize(100, 100);
        camera->set_fov(60.0f);
        auto scene = scene_with(unit_cube);
        scene->set_full_update(false);
        auto manager = ixo_command_manager::create();

        ASSERT_TRUE(manager->execute(ixo_view_all_command::create(view, scene)));
        expect_vec(camera->get_focus(), 0, 0, 0);
        // 1.05 · cot 15° in front of the cube's middle; near and far at 0.9 and 1.1 times
        // the distances of the cube's faces.
        expect_vec(camera->get_eye(), 0, 0, 3.919f);
        EXPECT_EQ(camera->get_fov(), 30.0f);
        EXPECT_NEAR(camera->get_near(), 2.627f, 1e-3f);
        EXPECT_NEAR(camera->get_far(), 5.411f, 1e-3f);
        EXPECT_FALSE(scene->do_full_update());

        manager->undo();
        expect_vec(camera->get_eye(), 0, 0, 10);
        EXPECT_EQ(camera->get_fov(), 60.0f);
        EXPECT_EQ(camera->get_near(), 0.5f);
        EXPECT_EQ(camera->get_far(), 200.0f);
        EXPECT_TRUE(scene->do_full_update()) << "undo asks for a full update";
        manager->redo();
        expect_vec(camera->get_eye(), 0, 0, 3.919f);

        // Seen from the side, the same cube is framed along the new direction.
        camera->set_eye(ixo_vector3<float>(20, 0, 0));
        ixo_view_all_command::create(view, scene)->execute();
        expect_vec(camera->get_eye(), 3.919f, 0, 0);

        // Without a scene nothing changes, and the answer is still true.
        camera->set_eye(ixo_vector3<float>(1, 1, 1));
        EXPECT_TRUE(ixo_view_all_command::create(view, nullptr)->execute());
        EXPECT_TRUE(ixo_view_all_command::create(nullptr, scene)->execute());
        EXPECT_EQ(camera->get_eye(), ixo_vector3<float>(1, 1, 1));
    }
    ixo_application::end();
}
} // namespace
