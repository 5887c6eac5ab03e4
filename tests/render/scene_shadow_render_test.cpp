#include <ixocore/render/scene_shadow.h>

#include "render/scene_render.h"

#include <algorithm>

namespace
{
using vec3 = ixo_vector3<float>;

constexpr UINT size = 64;

// A horizontal square at height `y` over [x0, x1] × [z0, z1].
class flat_square : public ixo_scene_object
{
public:
    static ixo_object_ptr<flat_square> create(float y, float x0, float x1, float z0, float z1)
    {
        return new flat_square(y, x0, x1, z0, z1);
    }

    bool draw_object(const ixo_scene_draw_data&) override
    {
        IDirect3DDevice9* device = ixo_direct3d::get_device();
        device->SetFVF(D3DFVF_XYZ | D3DFVF_NORMAL);
        return SUCCEEDED(
            device->DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, vertices_, sizeof(float) * 6));
    }

    ixo_box3<float> get_object_bounds() const override
    {
        return ixo_box3<float>(vec3(vertices_[0], vertices_[1], vertices_[2]),
                               vec3(vertices_[18], vertices_[19], vertices_[20]));
    }

private:
    flat_square(float y, float x0, float x1, float z0, float z1)
        : vertices_{x0, y, z0, 0, 1, 0, x1, y, z0, 0, 1, 0, x0, y, z1, 0, 1, 0, x1, y, z1, 0, 1, 0}
    {
    }

    float vertices_[24];
};

struct lit_area
{
    int left = size, top = size, right = -1, bottom = -1, count = 0;
};

class scene_shadow_render : public ixo_test::scene_render<size, size>
{
protected:
    // Draws `object` in plain white, looking straight down from above the origin with 8
    // pixels per unit: world x grows to the right from column 32, world z downward from row 32.
    lit_area draw_from_above(ixo_scene_object& object)
    {
        lit_area area;
        if (!target->begin(D3DCOLOR_XRGB(0, 0, 0)))
            return area;
        D3DXMATRIX view, proj, identity;
        D3DXVECTOR3 const eye(0.f, 20.f, 0.f), at(0.f, 0.f, 0.f), up(0.f, 0.f, -1.f);
        D3DXMatrixLookAtRH(&view, &eye, &at, &up);
        D3DXMatrixOrthoRH(&proj, 8.f, 8.f, 1.f, 40.f);
        D3DXMatrixIdentity(&identity);
        device->SetTransform(D3DTS_VIEW, &view);
        device->SetTransform(D3DTS_PROJECTION, &proj);
        device->SetTransform(D3DTS_WORLD, &identity);
        device->SetRenderState(D3DRS_LIGHTING, FALSE);
        device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
        ixo_scene_draw_data d;
        d.set_foreground(true);
        object.draw(d);
        std::vector<ixo_test::pixel> const pixels = target->end();
        for (int y = 0; y < int(size) && !pixels.empty(); ++y)
            for (int x = 0; x < int(size); ++x)
                if (pixels[std::size_t(y) * size + std::size_t(x)].r > 128)
                {
                    area.left = std::min(area.left, x);
                    area.right = std::max(area.right, x);
                    area.top = std::min(area.top, y);
                    area.bottom = std::max(area.bottom, y);
                    ++area.count;
                }
        return area;
    }
};
} // namespace

TEST_F(scene_shadow_render, PlanarShadowLandsWhereTheLightCastsIt)
{
    ixo_object_ptr<flat_square> square = flat_square::create(5.f, 0.5f, 1.5f, -0.5f, 0.5f);
    ixo_object_ptr<ixo_light> light = ixo_light::create(0);
    light->set_position(0.f, 10.f, 0.f);
    ixo_object_ptr<ixo_scene_shadow> shadow = ixo_scene_shadow::create(
        square, light, ixo_plane<float>(vec3(0.f, 0.f, 0.f), vec3(0.f, 1.f, 0.f)));
    EXPECT_TRUE(shadow->get_object_bounds().empty());
    EXPECT_TRUE(shadow->get_bounds().empty());

    // The square itself: x in [0.5, 1.5], z in [-0.5, 0.5].
    lit_area const own = draw_from_above(*square);
    EXPECT_NEAR(own.left, 36, 1);
    EXPECT_NEAR(own.right, 43, 1);
    EXPECT_NEAR(own.top, 28, 1);
    EXPECT_NEAR(own.bottom, 35, 1);

    // Halfway between light and ground, its shadow is twice its size and twice as far
    // out: x in [1, 3], z in [-1, 1].
    lit_area const cast = draw_from_above(*shadow);
    EXPECT_NEAR(cast.left, 40, 1);
    EXPECT_NEAR(cast.right, 55, 1);
    EXPECT_NEAR(cast.top, 24, 1);
    EXPECT_NEAR(cast.bottom, 39, 1);
    EXPECT_NEAR(cast.count, 16 * 16, 32);

    // A shadow hung under its own object draws the object once and stops there; the
    // two overlap on x in [1, 1.5] (4 x 8 pixels). The child is taken off again, as the
    // pair hold each other.
    square->add_child(shadow);
    lit_area const both = draw_from_above(*square);
    EXPECT_NEAR(both.count, own.count + cast.count - 4 * 8, 16);
    EXPECT_EQ(both.left, own.left);
    EXPECT_EQ(both.right, cast.right);
    square->remove_child(shadow);

    // The light moves: the shadow follows at the next draw. From (1, 10, 0) the square's
    // x range maps to [0, 2].
    light->set_position(1.f, 10.f, 0.f);
    lit_area const moved = draw_from_above(*shadow);
    EXPECT_NEAR(moved.left, 32, 1);
    EXPECT_NEAR(moved.right, 47, 1);

    // The world transform is handed back as it was found.
    D3DXMATRIX world;
    device->GetTransform(D3DTS_WORLD, &world);
    D3DXMATRIX identity;
    D3DXMatrixIdentity(&identity);
    EXPECT_EQ(world, identity);
}
