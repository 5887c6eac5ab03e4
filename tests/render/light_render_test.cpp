#include <ixocore/app/application.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/light.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

namespace
{
D3DXMATRIX device_form(const ixo_matrix44<float>& m)
{
    float a[16];
    m.transpose().array(a);
    return D3DXMATRIX(a);
}

void expect_matrix(const D3DXMATRIX& actual, const D3DXMATRIX& expected)
{
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(actual.m[r][c], expected.m[r][c], 1e-5f) << r << "," << c;
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

TEST_F(LightOnDevice, DrawSetsTheDeviceLightAndTheEffect)
{
    ASSERT_TRUE(light->draw(nullptr));
    D3DLIGHT9 l{};
    ASSERT_EQ(device->GetLight(3, &l), D3D_OK);
    BOOL enabled = FALSE;
    device->GetLightEnable(3, &enabled);
    EXPECT_TRUE(enabled);
    EXPECT_EQ(l.Type, D3DLIGHT_POINT);
    EXPECT_FLOAT_EQ(l.Position.z, 3.f);
    EXPECT_FLOAT_EQ(l.Ambient.b, 0.3f);
    EXPECT_FLOAT_EQ(l.Diffuse.g, 0.5f);
    EXPECT_FLOAT_EQ(l.Specular.r, 0.5f);
    EXPECT_FLOAT_EQ(l.Attenuation0, 1.f);
    EXPECT_FLOAT_EQ(l.Range, std::sqrt(FLT_MAX));

    D3DXVECTOR4 v;
    effect->GetVector("g_lightPos", &v);
    EXPECT_EQ(v, D3DXVECTOR4(1.f, 2.f, 3.f, 1.f));
    effect->GetVector("g_lightAmbient", &v);
    EXPECT_EQ(v, D3DXVECTOR4(0.1f, 0.2f, 0.3f, 1.f));
    effect->GetVector("g_lightDiffuse", &v);
    EXPECT_EQ(v, D3DXVECTOR4(0.4f, 0.5f, 0.6f, 1.f));
    // The shadow lookup: projection · view, in the device's row-vector form.
    D3DXMATRIX shadow;
    effect->GetMatrix("g_mShadow", &shadow);
    expect_matrix(shadow, device_form(light->get_shadow_projection() * light->get_shadow_view()));
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

TEST_F(LightOnDevice, ShadowMapPassUsesTheLightSpaceMatrices)
{
    ASSERT_TRUE(light->initiate_create_shadows(nullptr));
    D3DXMATRIX view, proj;
    device->GetTransform(D3DTS_VIEW, &view);
    device->GetTransform(D3DTS_PROJECTION, &proj);
    expect_matrix(view, device_form(light->get_shadow_view()));
    expect_matrix(proj, device_form(light->get_shadow_projection()));
    effect->GetMatrix("g_mView", &view);
    effect->GetMatrix("g_mProj", &proj);
    expect_matrix(view, device_form(light->get_shadow_view()));
    expect_matrix(proj, device_form(light->get_shadow_projection()));
}
