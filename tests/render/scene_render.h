#pragma once
// The started library, an off-screen W x H target on its device and an empty scene, for
// render tests that draw scenes. draw() looks down -z orthographically with the world
// origin at the centre of the target and `px_per_unit` pixels to a world unit.

#include "render/render_target.h"

#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace ixo_test
{
template <UINT width, UINT height> class scene_render : public ::testing::Test
{
protected:
    static constexpr UINT W = width;
    static constexpr UINT H = height;
    static constexpr float px_per_unit = 20;
    static constexpr D3DCOLOR background = D3DCOLOR_XRGB(10, 20, 30);

    void SetUp() override
    {
        ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
        device = ixo_direct3d::get_device();
        ASSERT_NE(device, nullptr);
        target = std::make_unique<render_target>(device, W, H);
        ASSERT_TRUE(target->ok());
        scene = ixo_scene::create();
    }

    void TearDown() override
    {
        scene = nullptr;
        target.reset();
        ixo_application::end();
    }

    // Column and row of the world point (x, y) under draw()'s view.
    static UINT col(float x) { return UINT(W / 2 + x * px_per_unit); }
    static UINT row(float y) { return UINT(H / 2 - y * px_per_unit); }

    // The scene's picking pass or normal passes as a render view draws them, read back.
    std::vector<pixel> draw(bool mapping, bool mapped_shadows = false)
    {
        if (!target || !target->bind(background))
            return {};
        look_along_minus_z(device, W / px_per_unit, H / px_per_unit);
        ixo_scene_draw_data d;
        d.set_mapping(mapping);
        d.set_draw_mapped_shadows(mapped_shadows);
        EXPECT_TRUE(scene->draw(d));
        return target->read();
    }

    std::vector<pixel> read() { return target ? target->read() : std::vector<pixel>(); }

    static pixel at(const std::vector<pixel>& img, UINT x, UINT y)
    {
        return img.size() == std::size_t(W) * H && x < W && y < H ? img[std::size_t(y) * W + x]
                                                                  : pixel{};
    }

    static unsigned long id_at(const std::vector<pixel>& img, UINT x, UINT y)
    {
        return img.size() == std::size_t(W) * H && x < W && y < H
                   ? id_of(img[std::size_t(y) * W + x])
                   : ixo_invalid_object_id;
    }

    static int count_id(const std::vector<pixel>& img, unsigned long id)
    {
        int n = 0;
        for (const pixel& p : img)
            n += id_of(p) == id;
        return img.size() == std::size_t(W) * H ? n : 0;
    }

    IDirect3DDevice9* device = nullptr;
    std::unique_ptr<render_target> target;
    ixo_object_ptr<ixo_scene> scene;
};
} // namespace ixo_test
