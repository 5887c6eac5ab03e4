#include <ixocore/app/application.h>
#include <ixocore/math/box.h>
#include <ixocore/math/matrix.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/light.h>

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using vec3 = ixo_vector3<float>;
using vec4 = ixo_vector4<float>;
using box3 = ixo_box3<float>;

// Any two 4 × 4 matrices indexed [row][column].
template <class A, class B> void expect_rows(const A& actual, const B& expected)
{
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(actual[r][c], expected[r][c], 1e-5f) << "row " << r << " column " << c;
}

void expect_near(const vec3& actual, const vec3& expected, float tolerance)
{
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "element " << i;
}

// Clip coordinates after the divide: x, y in [-1, 1] and depth in [0, 1] inside the map.
vec3 to_map(const ixo_light& light, const vec3& p)
{
    vec4 const q =
        light.get_shadow_projection() * light.get_shadow_view() * vec4(p[0], p[1], p[2], 1.f);
    return vec3(q[0] / q[3], q[1] / q[3], q[2] / q[3]);
}

class LightOnDevice : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
        device = ixo_direct3d::get_device();
        effect = ixo_direct3d::get_effect();
        ASSERT_NE(effect, nullptr);
        light = ixo_light::create(3);
        light->set_position(1.f, 2.f, 3.f);
        light->set_ambient(0.1f, 0.2f, 0.3f);
        light->set_diffuse(0.4f, 0.5f, 0.6f);
        ASSERT_TRUE(light->compute_shadow_matrices(
            ixo_box3<float>(ixo_vector3<float>(-1, -1, -1), ixo_vector3<float>(1, 0, 1))));
        // Sentinels, so an untouched parameter can be told from a written one.
        D3DXMATRIX sentinel;
        D3DXMatrixScaling(&sentinel, 7.f, 7.f, 7.f);
        effect->SetMatrix("g_mShadow", &sentinel);
        effect->SetMatrix("g_mView", &sentinel);
    }
    void TearDown() override
    {
        light = nullptr;
        ixo_application::end();
    }

    IDirect3DDevice9* device = nullptr;
    ID3DXEffect* effect = nullptr;
    ixo_object_ptr<ixo_light> light;
};
} // namespace

TEST(Light, ColourSettersKeepAlphaAndIgnoreNull)
{
    ixo_object_ptr<ixo_light> light = ixo_light::create(2);
    EXPECT_EQ(light->get_index(), 2);
    light->set_diffuse(0.25f, 0.5f, 0.75f);
    EXPECT_EQ(light->get_diffuse(), vec4(0.25f, 0.5f, 0.75f, 1.f));
    float const rgb[3] = {0.1f, 0.2f, 0.3f};
    light->set_ambient(rgb);
    light->set_ambient(nullptr);
    float out[3] = {};
    light->get_ambient(out);
    EXPECT_FLOAT_EQ(out[2], 0.3f);
    light->set_position(1.f, 2.f, 3.f);
    light->set_position(nullptr);
    EXPECT_EQ(light->get_position(), vec3(1.f, 2.f, 3.f));
    // Without a device there is nothing to set.
    EXPECT_FALSE(light->draw(nullptr));
}

TEST(Light, ShadowMatricesHoldAnOffsetBoxTightly)
{
    // An oblique light and a box off the origin: every point of the box lands inside the
    // map's clip volume and the box touches each side of it.
    ixo_object_ptr<ixo_light> light = ixo_light::create(1);
    light->set_position(7.f, 12.f, -4.f);
    box3 const box(vec3(1.f, -2.f, 0.5f), vec3(4.f, 1.f, 6.f));
    ASSERT_TRUE(light->compute_shadow_matrices(box));

    vec3 lo(1e30f, 1e30f, 1e30f), hi(-1e30f, -1e30f, -1e30f);
    for (int i = 0; i <= 4; ++i)
        for (int j = 0; j <= 4; ++j)
            for (int k = 0; k <= 4; ++k)
            {
                vec3 const p(1.f + 3.f * i / 4, -2.f + 3.f * j / 4, 0.5f + 5.5f * k / 4);
                vec3 const q = to_map(*light, p);
                for (int a = 0; a < 3; ++a)
                {
                    lo[a] = std::min(lo[a], q[a]);
                    hi[a] = std::max(hi[a], q[a]);
                }
            }
    expect_near(lo, vec3(-1.f, -1.f, 0.f), 1e-4f);
    expect_near(hi, vec3(1.f, 1.f, 1.f), 1e-4f);
    // The map's first axis carries the wider spread.
    EXPECT_LE(light->get_shadow_projection()[0][0], light->get_shadow_projection()[1][1]);

    // The middle of the box lies straight ahead of the light: the map's centre.
    vec3 const centre = to_map(*light, box.middle());
    EXPECT_NEAR(centre[0], 0.f, 0.2f);
    EXPECT_NEAR(centre[1], 0.f, 0.2f);
}

// A light draws a shadow map only once its matrices are fitted to something.
TEST(Light, ShadowMapPassOnlyForAFittedLight)
{
    ixo_object_ptr<ixo_light> light = ixo_light::create(0);
    light->set_position(0.f, 5.f, 0.f);
    EXPECT_FALSE(light->initiate_create_shadows(nullptr));
    EXPECT_TRUE(light->compute_shadow_matrices(box3(vec3(-1, 0, -1), vec3(1, 1, 1))));
    EXPECT_TRUE(light->initiate_create_shadows(nullptr));
    light->set_direct_light_enabled(false);
    EXPECT_FALSE(light->initiate_create_shadows(nullptr));
    light->set_direct_light_enabled(true);
    EXPECT_FALSE(light->compute_shadow_matrices(box3()));
    EXPECT_FALSE(light->initiate_create_shadows(nullptr));
}

TEST(Light, ShadowMatricesRefuseBoxesNoMapCanHold)
{
    ixo_object_ptr<ixo_light> light = ixo_light::create(0);
    ixo_matrix44<float> const identity = ixo_identity_transform<float>();

    // Empty box, and a light at the middle of the box: nothing to aim at; matrices stay.
    EXPECT_FALSE(light->compute_shadow_matrices(box3()));
    EXPECT_TRUE(light->get_shadow_bounds().empty());
    light->set_position(0.f, 0.f, 0.f);
    EXPECT_FALSE(light->compute_shadow_matrices(box3(vec3(-1, -1, -1), vec3(1, 1, 1))));
    EXPECT_EQ(light->get_shadow_view(), identity);
    EXPECT_EQ(light->get_shadow_projection(), identity);

    // Inside the box but off its middle: refused, with finite matrices.
    light->set_position(0.5f, 0.f, 0.f);
    EXPECT_FALSE(light->compute_shadow_matrices(box3(vec3(-1, -1, -1), vec3(1, 1, 1))));
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_TRUE(std::isfinite(light->get_shadow_projection()[r][c]));

    // A flat box seen face-on (one depth) still gets an invertible projection.
    light->set_position(0.f, 5.f, 0.f);
    EXPECT_TRUE(light->compute_shadow_matrices(box3(vec3(-1, 0, -1), vec3(1, 0, 1))));
    EXPECT_NE(light->get_shadow_projection().determinant(), 0.f);
    vec3 const corner = to_map(*light, vec3(1.f, 0.f, 1.f));
    EXPECT_NEAR(std::fabs(corner[0]), 1.f, 1e-4f);
    EXPECT_GE(corner[2], -1e-4f);
    EXPECT_LE(corner[2], 1.f + 1e-4f);
}

TEST_F(LightOnDevice, DisabledTermsReachNeitherEffectNorShadows)
{
    light->set_ambient_light_enabled(false);
    light->set_direct_light_enabled(false);
    ASSERT_TRUE(light->draw(nullptr));
    D3DLIGHT9 l{};
    ASSERT_EQ(device->GetLight(3, &l), D3D_OK);
    // The device light loses its ambient colour but keeps its diffuse one.
    EXPECT_FLOAT_EQ(l.Ambient.r + l.Ambient.g + l.Ambient.b, 0.f);
    EXPECT_FLOAT_EQ(l.Diffuse.b, 0.6f);
    D3DXVECTOR4 v;
    effect->GetVector("g_lightAmbient", &v);
    EXPECT_EQ(v, D3DXVECTOR4(0.f, 0.f, 0.f, 0.f));
    effect->GetVector("g_lightDiffuse", &v);
    EXPECT_EQ(v, D3DXVECTOR4(0.f, 0.f, 0.f, 0.f));
    D3DXMATRIX shadow, sentinel;
    D3DXMatrixScaling(&sentinel, 7.f, 7.f, 7.f);
    effect->GetMatrix("g_mShadow", &shadow);
    EXPECT_EQ(shadow, sentinel);
    // Without the direct term there is no shadow map either.
    EXPECT_FALSE(light->initiate_create_shadows(nullptr));
    effect->GetMatrix("g_mView", &shadow);
    EXPECT_EQ(shadow, sentinel);
}
