#pragma once
// The started library, a document and a 200 x 100 render view of its scene, its camera at
// (0, 0, 10) looking at the origin with +y up and a 30° field of view, for tests that drive
// tools with mouse calls.

#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

namespace ixo_test
{
class tool_view_test : public ::testing::Test
{
protected:
    static constexpr int w = 200;
    static constexpr int h = 100;

    void SetUp() override
    {
        ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
        doc = ixo_application::instance()->create_document();
        ASSERT_TRUE(doc);
        scene = doc->get_scene();
        view = ixo_render_view_manager::get_app_render_view_manager()->create();
        ASSERT_TRUE(view->initialize(nullptr, w, h, scene));
        camera = view->get_camera();
        reset_camera();
    }

    void reset_camera()
    {
        camera->set_eye({0, 0, 10});
        camera->set_focus({0, 0, 0});
        camera->set_up({0, 1, 0});
        camera->set_fov(30.0f);
    }

    // A destructor rather than TearDown, so the objects a derived fixture holds are gone
    // before the library ends.
    ~tool_view_test() override
    {
        camera = nullptr;
        view = nullptr;
        scene = nullptr;
        if (doc)
            ixo_application::instance()->remove_document(doc);
        doc = nullptr;
        ixo_application::end();
    }

    ixo_object_ptr<ixo_document> doc;
    ixo_object_ptr<ixo_scene> scene;
    ixo_object_ptr<ixo_render_view> view;
    ixo_object_ptr<ixo_camera_view> camera;
};

// Down, one drag, up; answers what the drag answered.
inline bool gesture(ixo_tool& tool, ixo_object_ptr<ixo_render_view> view, int x0, int y0, int x1,
                    int y1, bool m1 = false, bool m2 = false)
{
    EXPECT_FALSE(tool.on_mouse_down(view, x0, y0, m1, m2));
    bool const dragged = tool.on_mouse_drag(view, x1, y1, m1, m2);
    EXPECT_TRUE(tool.on_mouse_up(view, x1, y1, m1, m2));
    return dragged;
}
} // namespace ixo_test
