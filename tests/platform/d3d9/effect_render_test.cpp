// The effect: the shipped file's techniques and parameters, drawing with them, and the
// effect-file format's errors.

#include "d3d9_fixture.h"

#include <ixocore/platform/d3dx9_effect.h>

#include <cfloat>
#include <climits>
#include <limits>
#include <string>

namespace
{

struct xyz_normal
{
    float x, y, z, nx, ny, nz;
};

// A clip-space quad facing -z at depth z from x = -1 to x1 (identity transforms).
std::array<xyz_normal, 4> quad(float z, float x1 = 1)
{
    return {
        {{-1, 1, z, 0, 0, -1}, {x1, 1, z, 0, 0, -1}, {-1, -1, z, 0, 0, -1}, {x1, -1, z, 0, 0, -1}}};
}

} // namespace

class effect_render : public ixo_d3d9_fixture
{
protected:
    void SetUp() override
    {
        ixo_d3d9_fixture::SetUp();
        ASSERT_EQ(D3DXCreateEffectFromFileW(device, u"Media\\ixo_default.fx", nullptr, nullptr, 0,
                                            nullptr, &effect, &errors),
                  D3D_OK)
            << (errors ? static_cast<const char*>(errors->GetBufferPointer()) : "");
        D3DXMATRIX i(identity());
        for (const char* m : {"g_mWorld", "g_mView", "g_mProj", "g_mWorldNoScale", "g_mShadow"})
            effect->SetMatrix(m, &i);
        device->SetFVF(D3DFVF_XYZ | D3DFVF_NORMAL);
        device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
        clear(0xff000000, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER);
    }

    void TearDown() override
    {
        if (errors)
            errors->Release();
        if (effect)
            effect->Release();
        ixo_d3d9_fixture::TearDown();
    }

    void draw(float z = 0.5f, float x1 = 1)
    {
        UINT passes = 0;
        ASSERT_EQ(effect->Begin(&passes, 0), D3D_OK);
        EXPECT_EQ(passes, 1u);
        ASSERT_EQ(effect->BeginPass(0), D3D_OK);
        auto q = quad(z, x1);
        EXPECT_EQ(device->DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, q.data(), sizeof(xyz_normal)),
                  D3D_OK);
        effect->EndPass();
        effect->End();
    }

    ID3DXEffect* effect = nullptr;
    ID3DXBuffer* errors = nullptr;
};

TEST_F(effect_render, unknown_names_and_wrong_kinds_are_refused)
{
    EXPECT_EQ(effect->GetTechniqueByName("NoSuchTechnique"), nullptr);
    D3DXMATRIX m;
    ixo_expect_refused("parameters",
                       {effect->SetMatrix("g_ObjectColor", &m), effect->SetMatrix("g_unknown", &m),
                        effect->SetVector("g_lightPos", nullptr),
                        effect->SetTexture("g_mWorld", nullptr),
                        effect->SetTechnique("NoSuchTechnique"), effect->BeginPass(0)});
}

// Far-away lights and cameras reach the effect as any float; the int view of a float
// parameter truncates, saturates at the int range and reads NaN as 0.
TEST_F(effect_render, float_parameters_read_as_int_for_every_float)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const inf = std::numeric_limits<float>::infinity();
    struct
    {
        float value;
        INT expected;
    } const cases[] = {{2.9f, 2},
                       {-2.9f, -2},
                       {1e10f, INT_MAX},
                       {-1e10f, INT_MIN},
                       {inf, INT_MAX},
                       {-inf, INT_MIN},
                       {FLT_MAX, INT_MAX},
                       {nan, 0},
                       {2147483520.f, 2147483520},
                       {-2147483648.f, INT_MIN}};
    for (auto const& c : cases)
    {
        INT n = 12345;
        ASSERT_EQ(effect->SetFloat("g_shadowWidth", c.value), D3D_OK);
        effect->GetInt("g_shadowWidth", &n);
        EXPECT_EQ(n, c.expected) << c.value;
        D3DXVECTOR4 v(c.value, 0, 0, 1);
        n = 12345;
        ASSERT_EQ(effect->SetVector("g_lightPos", &v), D3D_OK);
        effect->GetInt("g_lightPos", &n);
        EXPECT_EQ(n, c.expected) << c.value;
    }
}

TEST_F(effect_render, shadow_technique_writes_depth_and_the_main_technique_reads_it)
{
    IDirect3DTexture9* map = nullptr;
    ASSERT_EQ(device->CreateTexture(W, H, 1, D3DUSAGE_RENDERTARGET, D3DFMT_R32F, D3DPOOL_DEFAULT,
                                    &map, nullptr),
              D3D_OK);
    IDirect3DSurface9* level = nullptr;
    map->GetSurfaceLevel(0, &level);
    device->SetRenderTarget(0, level);
    clear(0xffffffff, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER);
    ASSERT_EQ(effect->SetTechnique("ShadowTechnique"), D3D_OK);
    draw(0.25f, 0); // depth 0.25 over the left half only
    IDirect3DSurface9* copy = nullptr;
    device->CreateOffscreenPlainSurface(W, H, D3DFMT_R32F, D3DPOOL_SYSTEMMEM, &copy, nullptr);
    ASSERT_EQ(device->GetRenderTargetData(level, copy), D3D_OK);
    D3DLOCKED_RECT lr{};
    copy->LockRect(&lr, nullptr, D3DLOCK_READONLY);
    const float* row = static_cast<const float*>(lr.pBits) + (H / 2) * (lr.Pitch / 4);
    EXPECT_FLOAT_EQ(row[2], 0.25f);
    EXPECT_FLOAT_EQ(row[W - 2], 1.f);
    copy->UnlockRect();
    copy->Release();

    // The scene light (red) reaches the right half; the left half at depth 0.5 lies behind
    // the stored 0.25 and is in shadow.
    device->SetRenderTarget(0, target);
    clear(0xff000000, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER);
    effect->SetTechnique("MainTechnique");
    ASSERT_EQ(effect->SetTexture("g_shadowTexture", map), D3D_OK);
    effect->SetInt("g_shadowWidth", W);
    effect->SetInt("g_shadowHeight", H);
    D3DXVECTOR4 white(1, 1, 1, 1), red(1, 0, 0, 1), zero(0, 0, 0, 0), light(0, 0, -10, 1);
    effect->SetVector("g_ObjectColor", &white);
    effect->SetBool("g_bEnableLighting", TRUE);
    effect->SetVector("g_headlightDiffuse", &zero);
    effect->SetVector("g_lightAmbient", &zero);
    effect->SetVector("g_lightDiffuse", &red);
    effect->SetVector("g_lightPos", &light);
    draw(0.5f);
    auto p = read();
    EXPECT_TRUE(ixo_pixel_is(at(p, W / 4, H / 2), 0, 0, 0, 255, 1));
    EXPECT_TRUE(ixo_pixel_is(at(p, 3 * W / 4, H / 2), 255, 0, 0, 255, 2));

    // Releasing the texture clears the effect's hold on it; the device can then be reset.
    level->Release();
    map->Release();
    IDirect3DBaseTexture9* held = reinterpret_cast<IDirect3DBaseTexture9*>(1);
    ASSERT_EQ(effect->GetTexture("g_shadowTexture", &held), D3D_OK);
    EXPECT_EQ(held, nullptr);
}

TEST_F(effect_render, malformed_effect_files_are_refused_with_a_message)
{
    ID3DXEffect* e = nullptr;
    ID3DXBuffer* log = nullptr;
    auto create = [&](const std::string& text)
    {
        if (log)
            log->Release();
        log = nullptr;
        return D3DXCreateEffect(device, text.data(), static_cast<UINT>(text.size()), nullptr,
                                nullptr, 0, nullptr, &e, &log);
    };
    const std::string vertex = "vertex\nlayout(location = 0) in vec3 p;\nvoid main() { "
                               "gl_Position = vec4(p, 1.0); }\n";
    const std::string fragment = "fragment\nout vec4 c;\nuniform vec4 k;\nvoid main() { c = k; }\n";
    EXPECT_EQ(create("technique A\n" + vertex + fragment + "end\n"), D3D_OK);
    ASSERT_NE(e, nullptr);
    EXPECT_NE(e->GetParameterByName(nullptr, "k"), nullptr);
    e->Release();
    e = nullptr;

    EXPECT_EQ(create("technique A\n" + vertex + "end\n"), D3DXERR_INVALIDDATA);
    EXPECT_EQ(e, nullptr);
    ASSERT_NE(log, nullptr);
    EXPECT_NE(std::string(static_cast<const char*>(log->GetBufferPointer())).find("A"),
              std::string::npos);
    EXPECT_EQ(create("garbage\n"), D3DXERR_INVALIDDATA);
    EXPECT_EQ(create("technique A\n" + vertex + fragment), D3DXERR_INVALIDDATA);
    EXPECT_EQ(create("technique A\n" + vertex +
                     "fragment\nout vec4 c;\nvoid main() { c = undefined_name; }\nend\n"),
              D3DXERR_INVALIDDATA);
    ASSERT_NE(log, nullptr);
    EXPECT_NE(std::string(static_cast<const char*>(log->GetBufferPointer())).find("fragment"),
              std::string::npos);
    log->Release();
    log = nullptr;
    EXPECT_EQ(D3DXCreateEffectFromFileW(device, u"Media/no_such_file.fx", nullptr, nullptr, 0,
                                        nullptr, &e, nullptr),
              D3DERR_NOTFOUND);
    EXPECT_EQ(D3DXCreateEffectFromFileW(device, nullptr, nullptr, nullptr, 0, nullptr, &e, nullptr),
              D3DERR_INVALIDCALL);
    EXPECT_EQ(D3DXCreateEffect(device, "x", 1, nullptr, nullptr, 0, nullptr, nullptr, nullptr),
              D3DERR_INVALIDCALL);
}
