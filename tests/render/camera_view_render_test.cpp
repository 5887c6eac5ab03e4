// Draws through a camera on the headless device and checks that what lands on the pixels
// agrees with the camera's own arithmetic.

#include "render/scene_render.h"

#include <array>
#include <cmath>
#include <tuple>

namespace
{
using v3 = ixo_vector3<float>;
using v2 = ixo_vector2<float>;

struct xyz_color
{
    float x, y, z;
    D3DCOLOR c;
};

class camera_view_render : public ixo_test::scene_render<160, 120>
{
protected:
    void SetUp() override
    {
        scene_render::SetUp();
        ASSERT_TRUE(target->bind(0xff000000));

        camera = ixo_camera_view::create();
        camera->resize(int(W), int(H));
        camera->set_eye(v3(3, -4, 7));
        camera->set_focus(v3(1, 1, 0));
        camera->set_up(v3(0, 0, 1));
        camera->set_near(1.0f);
        camera->set_far(30.0f);
    }

    void TearDown() override
    {
        camera.reset();
        scene_render::TearDown();
    }

    // Draws a small square around `p`, facing the camera, in white on black, and returns
    // the centre of the pixels it covered (pixel (i, j) spans [i, i + 1) × [j, j + 1)).
    // Negative when nothing was drawn.
    v2 draw_marker(const v3& p, float half_size)
    {
        const v3 back = (camera->get_eye() - camera->get_focus()).normalized();
        const v3 right = (camera->get_up().normalized() ^ back).normalized();
        const v3 up = (back ^ right).normalized();
        const v3 a = right * half_size;
        const v3 b = up * half_size;
        const D3DCOLOR white = 0xffffffff;
        auto vertex = [&](const v3& q) { return xyz_color{q[0], q[1], q[2], white}; };
        const std::array<xyz_color, 4> quad = {vertex(p - a + b), vertex(p + a + b),
                                               vertex(p - a - b), vertex(p + a - b)};

        EXPECT_TRUE(camera->initiate_draw());
        EXPECT_TRUE(target->begin(0xff000000));
        D3DMATRIX world{};
        world._11 = world._22 = world._33 = world._44 = 1.0f;
        device->SetTransform(D3DTS_WORLD, &world);
        device->SetRenderState(D3DRS_LIGHTING, FALSE);
        device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
        device->SetRenderState(D3DRS_ZENABLE, D3DZB_TRUE);
        device->SetFVF(D3DFVF_XYZ | D3DFVF_DIFFUSE);
        EXPECT_EQ(device->DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, quad.data(), sizeof(xyz_color)),
                  D3D_OK);
        std::vector<ixo_test::pixel> const img = target->end();
        double sx = 0, sy = 0;
        int count = 0;
        if (img.empty())
            return v2(-1, -1);
        for (UINT y = 0; y < H; ++y)
            for (UINT x = 0; x < W; ++x)
                if (img[std::size_t(y) * W + x].g > 128)
                {
                    sx += x + 0.5;
                    sy += y + 0.5;
                    ++count;
                }
        if (count == 0)
            return v2(-1, -1);
        return v2(float(sx / count), float(sy / count));
    }

    ixo_object_ptr<ixo_camera_view> camera;
};

bool same(const D3DMATRIX& a, const D3DMATRIX& b)
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            if (std::fabs(a.m[i][j] - b.m[i][j]) > 1e-5f)
                return false;
    return true;
}
} // namespace

TEST_F(camera_view_render, drawn_points_land_on_the_predicted_pixels)
{
    // Half the visible height at the focus is tan(15°) · |eye - focus| ≈ 2.37, so a
    // marker of half size 0.06 covers a few pixels.
    const float half_size = 0.06f;
    const v3 back = (camera->get_eye() - camera->get_focus()).normalized();
    for (bool perspective : {false, true})
    {
        camera->use_perspective(perspective);
        // The last two lie off the focus plane, nearer to and farther from the eye: there the
        // two projections disagree, and each must still match its own prediction.
        for (const v3& p :
             {camera->point_from_pixel(80, 60), camera->point_from_pixel(20, 100),
              camera->point_from_pixel(130, 15), camera->point_from_pixel(40, 30) + back * 3.0f,
              camera->point_from_pixel(120, 90) - back * 5.0f})
        {
            SCOPED_TRACE(testing::Message() << (perspective ? "perspective" : "orthographic")
                                            << " point " << p[0] << ", " << p[1] << ", " << p[2]);
            const v2 predicted = camera->pixel_from_point(p);
            const v2 drawn = draw_marker(p, half_size);
            EXPECT_NEAR(drawn[0], predicted[0], 0.6f);
            EXPECT_NEAR(drawn[1], predicted[1], 0.6f);
        }
    }
    // The orthographic marker for the near point sits elsewhere than the perspective one.
    const v3 near_point = camera->point_from_pixel(40, 30) + back * 3.0f;
    camera->use_perspective(false);
    const v2 orthographic = camera->pixel_from_point(near_point);
    camera->use_perspective(true);
    const v2 perspective = camera->pixel_from_point(near_point);
    EXPECT_GT(std::fabs(orthographic[0] - perspective[0]), 5.0f);
}

TEST_F(camera_view_render, initiate_draw_sets_viewport_matrices_and_head_light)
{
    camera->resize(100, 80);
    camera->use_perspective(true);
    ASSERT_TRUE(camera->initiate_draw());

    D3DVIEWPORT9 vp{};
    ASSERT_EQ(device->GetViewport(&vp), D3D_OK);
    EXPECT_EQ(std::tuple(vp.X, vp.Y, vp.Width, vp.Height, vp.MinZ, vp.MaxZ),
              std::tuple(0u, 0u, 100u, 80u, 0.0f, 1.0f));

    const D3DXVECTOR3 eye(3, -4, 7), at(1, 1, 0), up(0, 0, 1);
    D3DXMATRIX view, projection, device_view, device_projection;
    D3DXMatrixLookAtRH(&view, &eye, &at, &up);
    D3DXMatrixPerspectiveFovRH(&projection, 30.0f * 3.14159265f / 180.0f, 100.0f / 80.0f, 1.0f,
                               30.0f);
    device->GetTransform(D3DTS_VIEW, &device_view);
    device->GetTransform(D3DTS_PROJECTION, &device_projection);
    EXPECT_TRUE(same(device_view, view));
    EXPECT_TRUE(same(device_projection, projection));

    // The head light sits at the eye and shines.
    D3DLIGHT9 light{};
    ASSERT_EQ(device->GetLight(0, &light), D3D_OK);
    EXPECT_EQ(v3(light.Position.x, light.Position.y, light.Position.z), v3(3, -4, 7));
    BOOL enabled = FALSE;
    device->GetLightEnable(0, &enabled);
    EXPECT_TRUE(enabled);
    EXPECT_EQ(camera->get_light()->get_position(), v3(3, -4, 7));

    // The orthographic box spans the visible area at the focus distance.
    camera->use_perspective(false);
    ASSERT_TRUE(camera->initiate_draw());
    D3DXMatrixOrthoRH(&projection, 2.0f * camera->frustum_width(), 2.0f * camera->frustum_height(),
                      1.0f, 30.0f);
    device->GetTransform(D3DTS_PROJECTION, &device_projection);
    EXPECT_TRUE(same(device_projection, projection));

    // The effect, when there is one, gets the same matrices and the head-light colour, or
    // black while the head light is off.
    ID3DXEffect* effect = ixo_direct3d::get_effect();
    if (!effect)
        GTEST_SKIP() << "no effect file";
    D3DXMATRIX effect_view, effect_projection;
    ASSERT_EQ(effect->GetMatrix("g_mView", &effect_view), D3D_OK);
    ASSERT_EQ(effect->GetMatrix("g_mProj", &effect_projection), D3D_OK);
    EXPECT_TRUE(same(effect_view, view));
    EXPECT_TRUE(same(effect_projection, projection));
    D3DXVECTOR4 diffuse;
    camera->get_light()->set_diffuse(0.5f, 0.25f, 1.0f);
    ASSERT_TRUE(camera->initiate_draw());
    ASSERT_EQ(effect->GetVector("g_headlightDiffuse", &diffuse), D3D_OK);
    EXPECT_EQ(diffuse, D3DXVECTOR4(0.5f, 0.25f, 1.0f, 1.0f));
    camera->use_light(false);
    ASSERT_TRUE(camera->initiate_draw());
    ASSERT_EQ(effect->GetVector("g_headlightDiffuse", &diffuse), D3D_OK);
    EXPECT_EQ(diffuse, D3DXVECTOR4(0, 0, 0, 0));
}

TEST(camera_view_render_without_device, initiate_draw_fails)
{
    ASSERT_EQ(ixo_application::instance(), nullptr);
    auto camera = ixo_camera_view::create();
    camera->resize(10, 10);
    EXPECT_FALSE(camera->initiate_draw());
    EXPECT_FALSE(camera->apply_projection());
    EXPECT_FALSE(camera->apply_modelview());
}
