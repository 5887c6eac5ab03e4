// Every sample scene paints the same pictures frame after frame, in every view.

#include "scene_builder.h"
#include "scene_file.h"

#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace
{
using image = std::vector<ixo_vector4<unsigned char>>;

std::vector<std::string> example_scenes()
{
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(IXO_EXAMPLES_DIR))
        if (entry.path().extension() == ".json")
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

class scene_frames : public ::testing::TestWithParam<std::string>
{
protected:
    void SetUp() override { ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success); }
    void TearDown() override
    {
        while (ixo_application::instance())
            ixo_application::end();
    }
};

// The frames of every view, painted one view after the other.
std::vector<image> paint_all(const std::vector<ixo_object_ptr<ixo_render_view>>& views)
{
    std::vector<image> frames(views.size());
    for (std::size_t i = 0; i < views.size(); ++i)
    {
        views[i]->paint();
        EXPECT_TRUE(views[i]->capture(frames[i])) << "view " << i;
    }
    return frames;
}

TEST_P(scene_frames, every_view_paints_the_same_picture_twice)
{
    namespace sf = ixo_scene_file;
    sf::scene_desc const described =
        sf::read_scene_file(std::filesystem::path(IXO_EXAMPLES_DIR) / (GetParam() + ".json"));
    auto document = ixo_application::instance()->create_document();
    ASSERT_NE(document, nullptr);
    ixo_object_ptr<ixo_scene> scene = document->get_scene();
    std::vector<ixo_object_ptr<ixo_light>> const lights = sf::build_scene(described, *scene);

    std::vector<ixo_object_ptr<ixo_render_view>> views;
    for (sf::view_desc const& v : described.views)
    {
        auto view = ixo_render_view_manager::get_app_render_view_manager()->create();
        ASSERT_TRUE(view->initialize(nullptr, unsigned(v.width), unsigned(v.height), scene));
        ASSERT_TRUE(sf::apply_view(*view, v, *scene, !lights.empty()));
        view->set_shadow_mapping(true);
        views.push_back(view);
    }
    ASSERT_FALSE(views.empty());

    std::vector<image> const first = paint_all(views);
    // Again as they stand, then with every shadow map drawn anew.
    for (bool redraw_maps : {false, true})
    {
        if (redraw_maps)
            scene->touch();
        std::vector<image> const again = paint_all(views);
        for (std::size_t i = 0; i < views.size(); ++i)
            EXPECT_TRUE(again[i] == first[i])
                << "view " << i << (redraw_maps ? ", maps redrawn" : "");
    }

    views.clear();
    scene->remove_all_lights();
    scene->get_root()->remove_all_children();
    ixo_application::instance()->remove_document(document);
}

INSTANTIATE_TEST_SUITE_P(examples, scene_frames, ::testing::ValuesIn(example_scenes()),
                         [](const auto& info) { return info.param; });
} // namespace
