// Renders headless through the Direct3D 9 stand-in and reads the pixels back.

#include "d3d9_fixture.h"

#include <ixocore/platform/d3dx9.h>

#include <cmath>
#include <random>

namespace
{

struct xyz_color
{
    float x, y, z;
    D3DCOLOR c;
};
constexpr DWORD k_xyz_color = D3DFVF_XYZ | D3DFVF_DIFFUSE;

struct xyz_normal
{
    float x, y, z, nx, ny, nz;
};

// A screen-filling quad in clip space (identity transforms) at depth z as a strip.
std::array<xyz_color, 4> quad(float z, D3DCOLOR c, float x0 = -1, float y0 = -1, float x1 = 1,
                              float y1 = 1)
{
    return {{{x0, y1, z, c}, {x1, y1, z, c}, {x0, y0, z, c}, {x1, y0, z, c}}};
}

} // namespace

class device_render : public ixo_d3d9_fixture
{
protected:
    // Identity transforms, no lighting, no culling, positions with colours: clip-space quads.
    void flat()
    {
        identity_transforms();
        device->SetRenderState(D3DRS_LIGHTING, FALSE);
        device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
        device->SetFVF(k_xyz_color);
    }
    HRESULT draw(const std::array<xyz_color, 4>& q)
    {
        return device->DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, q.data(), sizeof(xyz_color));
    }
    // Expects `hit` to hold for exactly the pixels of [x0, x1) x [y0, y1).
    template <typename F>
    void expect_rect(const std::vector<ixo_test_pixel>& p, UINT x0, UINT y0, UINT x1, UINT y1,
                     F hit)
    {
        ASSERT_EQ(p.size(), W * H);
        for (UINT y = 0; y < H; ++y)
            for (UINT x = 0; x < W; ++x)
                EXPECT_EQ(x >= x0 && x < x1 && y >= y0 && y < y1, hit(at(p, x, y)))
                    << x << ", " << y;
    }
};

TEST_F(device_render, clear_writes_blue_green_red_alpha_and_row_zero_is_the_top)
{
    ASSERT_EQ(device->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER,
                            D3DCOLOR_ARGB(0x40, 0x10, 0x20, 0x30), 1.f, 0),
              D3D_OK);
    // Only the top 8 rows get the second colour.
    D3DRECT top = {0, 0, static_cast<LONG>(W), 8};
    ASSERT_EQ(device->Clear(1, &top, D3DCLEAR_TARGET, D3DCOLOR_ARGB(0xff, 0xff, 0, 0), 1.f, 0),
              D3D_OK);
    auto p = read();
    EXPECT_TRUE(ixo_pixel_is(at(p, 0, 0), 0xff, 0, 0, 0xff, 0));
    EXPECT_TRUE(ixo_pixel_is(at(p, 0, H - 1), 0x10, 0x20, 0x30, 0x40, 0));

    D3DLOCKED_RECT lr{};
    ASSERT_EQ(readback->LockRect(&lr, nullptr, 0), D3D_OK);
    EXPECT_GE(lr.Pitch, static_cast<INT>(W * 4));
    // A second lock while locked is refused; so is unlocking twice.
    D3DLOCKED_RECT again{};
    EXPECT_EQ(readback->LockRect(&again, nullptr, 0), D3DERR_INVALIDCALL);
    EXPECT_EQ(readback->UnlockRect(), D3D_OK);
    EXPECT_EQ(readback->UnlockRect(), D3DERR_INVALIDCALL);
    // A sub-rectangle lock points at that pixel.
    RECT r = {3, 10, 4, 11};
    ASSERT_EQ(readback->LockRect(&lr, &r, D3DLOCK_READONLY), D3D_OK);
    EXPECT_EQ(static_cast<const std::uint8_t*>(lr.pBits)[2], 0x10);
    readback->UnlockRect();
    RECT outside = {60, 0, 70, 4};
    EXPECT_EQ(readback->LockRect(&lr, &outside, 0), D3DERR_INVALIDCALL);
}

TEST_F(device_render, depth_test_and_depth_write)
{
    flat();
    device->SetRenderState(D3DRS_ZENABLE, D3DZB_TRUE);
    clear(0xff000000, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER);
    device->BeginScene();
    ASSERT_EQ(draw(quad(0.25f, 0xffff0000, -1, -1, 0, 1)), D3D_OK); // left half, near red
    ASSERT_EQ(draw(quad(0.75f, 0xff00ff00)), D3D_OK);               // all, far green
    // Without depth writes a near blue quad shows but leaves the depth as it was, so a
    // yellow quad between the two still wins on the right half.
    device->SetRenderState(D3DRS_ZWRITEENABLE, FALSE);
    draw(quad(0.1f, 0xff0000ff, 0, -1, 1, 0)); // bottom-right quarter
    device->SetRenderState(D3DRS_ZWRITEENABLE, TRUE);
    draw(quad(0.5f, 0xffffff00, 0, -1, 1, 1));
    device->EndScene();
    auto p = read();
    EXPECT_TRUE(ixo_pixel_is(at(p, 5, 5), 255, 0, 0, 255));
    EXPECT_TRUE(ixo_pixel_is(at(p, 5, H - 5), 255, 0, 0, 255));
    EXPECT_TRUE(ixo_pixel_is(at(p, W - 5, 5), 255, 255, 0, 255));
    EXPECT_TRUE(ixo_pixel_is(at(p, W - 5, H - 5), 255, 255, 0, 255));
    // With the depth test off the last quad covers everything.
    device->SetRenderState(D3DRS_ZENABLE, D3DZB_FALSE);
    draw(quad(0.9f, 0xff00ffff));
    EXPECT_TRUE(ixo_pixel_is(at(read(), 5, 5), 0, 255, 255, 255));
}

TEST_F(device_render, cull_modes_follow_screen_winding)
{
    identity_transforms();
    device->SetRenderState(D3DRS_LIGHTING, FALSE);
    device->SetFVF(k_xyz_color);
    // Left: clockwise on the screen (top-left, top-right, bottom-left).
    // Right: counter-clockwise (top-left, bottom-left, top-right).
    xyz_color cw[3] = {
        {-1, 1, 0.5f, 0xffff0000}, {0, 1, 0.5f, 0xffff0000}, {-1, -1, 0.5f, 0xffff0000}};
    xyz_color ccw[3] = {
        {0, 1, 0.5f, 0xff00ff00}, {0, -1, 0.5f, 0xff00ff00}, {1, 1, 0.5f, 0xff00ff00}};
    auto draw_both = [&](DWORD cull)
    {
        clear();
        device->SetRenderState(D3DRS_CULLMODE, cull);
        device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, cw, sizeof(xyz_color));
        device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, ccw, sizeof(xyz_color));
        auto p = read();
        return std::make_pair(at(p, 4, 4).r == 255, at(p, W / 2 + 4, 4).g == 255);
    };
    EXPECT_EQ(draw_both(D3DCULL_CW), std::make_pair(false, true));
    EXPECT_EQ(draw_both(D3DCULL_CCW), std::make_pair(true, false));
    EXPECT_EQ(draw_both(D3DCULL_NONE), std::make_pair(true, true));
}

TEST_F(device_render, viewport_places_the_drawing_and_limits_clears)
{
    flat();
    clear();
    D3DVIEWPORT9 vp = {40, 0, 20, 10, 0.f, 1.f};
    ASSERT_EQ(device->SetViewport(&vp), D3D_OK);
    D3DVIEWPORT9 back{};
    device->GetViewport(&back);
    EXPECT_EQ(back.X, 40u);
    EXPECT_EQ(back.Width, 20u);
    // A full clip-space quad fills exactly the viewport.
    draw(quad(0.5f, 0xffffffff));
    expect_rect(read(), 40, 0, 60, 10, [](ixo_test_pixel q) { return q.r == 255; });
    // The clear respects the viewport.
    clear(0xff00ff00);
    auto p = read();
    EXPECT_TRUE(ixo_pixel_is(at(p, 45, 5), 0, 255, 0, 255, 0));
    EXPECT_EQ(at(p, 5, 5).g, 0);
    // Viewports outside the target are refused; setting the target resets the viewport.
    D3DVIEWPORT9 bad = {60, 0, 20, 10, 0.f, 1.f};
    EXPECT_EQ(device->SetViewport(&bad), D3DERR_INVALIDCALL);
    device->SetRenderTarget(0, target);
    device->GetViewport(&back);
    EXPECT_EQ(back.X, 0u);
    EXPECT_EQ(back.Width, W);
    EXPECT_EQ(back.Height, H);
}

TEST_F(device_render, transforms_use_row_vectors_and_multiply_applies_the_new_matrix_first)
{
    D3DMATRIX world = identity();
    world._41 = 0.5f; // translate x by 0.5
    D3DMATRIX scale = identity();
    scale._11 = 0.5f;
    device->SetTransform(D3DTS_WORLD, &world);
    ASSERT_EQ(device->MultiplyTransform(D3DTS_WORLD, &scale), D3D_OK);
    D3DMATRIX got{};
    device->GetTransform(D3DTS_WORLD, &got);
    // scale first, then translate: x' = 0.5 x + 0.5
    EXPECT_FLOAT_EQ(got._11, 0.5f);
    EXPECT_FLOAT_EQ(got._41, 0.5f);
    flat();
    device->SetTransform(D3DTS_WORLD, &got);
    clear();
    // The quad x in [-1, 1] lands on [0, 1]: the right half; y = +1 is the top row.
    draw(quad(0.5f, 0xffffffff, -1, 0, 1, 1));
    auto p = read();
    EXPECT_EQ(at(p, W / 4, H / 4).r, 0);
    EXPECT_EQ(at(p, 3 * W / 4, H / 4).r, 255);
    EXPECT_EQ(at(p, 3 * W / 4, 3 * H / 4).r, 0);
    EXPECT_EQ(device->SetTransform(static_cast<D3DTRANSFORMSTATETYPE>(1), &got),
              D3DERR_INVALIDCALL);
    EXPECT_EQ(device->GetTransform(D3DTS_WORLD, nullptr), D3DERR_INVALIDCALL);
}

TEST_F(device_render, lit_sphere_pixel_matches_the_lighting_equation)
{
    // A unit sphere at the origin seen from z = -5 (left-handed view), a point light at
    // (2, 3, -4) with linear attenuation, material with ambient, diffuse, specular.
    const int slices = 64, stacks = 32;
    std::vector<xyz_normal> vertices;
    std::vector<std::uint32_t> indices;
    for (int i = 0; i <= stacks; ++i)
        for (int j = 0; j <= slices; ++j)
        {
            float phi = static_cast<float>(M_PI) * i / stacks;
            float theta = 2.f * static_cast<float>(M_PI) * j / slices;
            float x = std::sin(phi) * std::cos(theta), y = std::cos(phi),
                  z = std::sin(phi) * std::sin(theta);
            vertices.push_back({x, y, z, x, y, z});
        }
    for (int i = 0; i < stacks; ++i)
        for (int j = 0; j < slices; ++j)
        {
            std::uint32_t a = i * (slices + 1) + j, b = a + slices + 1;
            indices.insert(indices.end(), {a, b, a + 1, a + 1, b, b + 1});
        }
    IDirect3DVertexBuffer9* vb = nullptr;
    IDirect3DIndexBuffer9* ib = nullptr;
    UINT vbytes = static_cast<UINT>(vertices.size() * sizeof(xyz_normal));
    UINT ibytes = static_cast<UINT>(indices.size() * 4);
    ASSERT_EQ(device->CreateVertexBuffer(vbytes, 0, D3DFVF_XYZ | D3DFVF_NORMAL, D3DPOOL_DEFAULT,
                                         &vb, nullptr),
              D3D_OK);
    ASSERT_EQ(device->CreateIndexBuffer(ibytes, 0, D3DFMT_INDEX32, D3DPOOL_DEFAULT, &ib, nullptr),
              D3D_OK);
    void* data = nullptr;
    ASSERT_EQ(vb->Lock(0, 0, &data, 0), D3D_OK);
    std::memcpy(data, vertices.data(), vbytes);
    ASSERT_EQ(vb->Lock(0, 0, &data, 0), D3DERR_INVALIDCALL);
    vb->Unlock();
    ASSERT_EQ(ib->Lock(0, 0, &data, 0), D3D_OK);
    std::memcpy(data, indices.data(), ibytes);
    ib->Unlock();

    // Camera at (0, 0, -5) looking along +z; fov 45 degrees, near 1, far 10.
    D3DXMATRIX world, view, proj;
    D3DXMatrixIdentity(&world);
    D3DXMatrixTranslation(&view, 0, 0, 5);
    D3DXMatrixPerspectiveFovLH(&proj, D3DX_PI / 4, static_cast<float>(W) / H, 1.f, 10.f);
    device->SetTransform(D3DTS_WORLD, &world);
    device->SetTransform(D3DTS_VIEW, &view);
    device->SetTransform(D3DTS_PROJECTION, &proj);

    D3DLIGHT9 light{};
    light.Type = D3DLIGHT_POINT;
    light.Position = {2.f, 3.f, -4.f};
    light.Diffuse = {0.9f, 0.8f, 0.7f, 1.f};
    light.Ambient = {0.1f, 0.1f, 0.1f, 1.f};
    light.Specular = {0.5f, 0.5f, 0.5f, 1.f};
    light.Attenuation0 = 1.f;
    light.Attenuation1 = 0.05f;
    light.Range = 100.f;
    ASSERT_EQ(device->SetLight(0, &light), D3D_OK);
    ASSERT_EQ(device->LightEnable(0, TRUE), D3D_OK);
    D3DMATERIAL9 m{};
    m.Diffuse = {0.6f, 0.5f, 0.4f, 1.f};
    m.Ambient = {0.3f, 0.2f, 0.1f, 1.f};
    m.Specular = {1.f, 1.f, 1.f, 1.f};
    m.Power = 20.f;
    ASSERT_EQ(device->SetMaterial(&m), D3D_OK);
    D3DMATERIAL9 back{};
    device->GetMaterial(&back);
    EXPECT_EQ(back.Power, 20.f);
    device->SetRenderState(D3DRS_LIGHTING, TRUE);
    device->SetRenderState(D3DRS_AMBIENT, D3DCOLOR_XRGB(0x20, 0x20, 0x20));
    device->SetRenderState(D3DRS_SPECULARENABLE, TRUE);
    device->SetRenderState(D3DRS_NORMALIZENORMALS, TRUE);
    device->SetRenderState(D3DRS_ZENABLE, D3DZB_TRUE);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
    device->SetFVF(D3DFVF_XYZ | D3DFVF_NORMAL);
    device->SetStreamSource(0, vb, 0, sizeof(xyz_normal));
    device->SetIndices(ib);
    const UINT nv = static_cast<UINT>(vertices.size()), nf = static_cast<UINT>(indices.size() / 3);
    clear(0xff000000, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER);
    device->BeginScene();
    ASSERT_EQ(device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 0, nv, 0, nf), D3D_OK);
    device->EndScene();
    auto p = read();
    // The centre sees the point (0, 0, -1) with normal (0, 0, -1), worked by hand: light
    // direction (2, 3, -3) / sqrt(22), attenuation 1 / (1 + 0.05 sqrt(22)) = 0.810,
    // N.L = 0.640, N.H = 0.905 with the eye direction (0, 0, -1); ambient (global 32/255
    // plus the light's) + diffuse + specular = (0.397, 0.304, 0.221). The pixel centre is
    // a half pixel off the axis: far below one colour level.
    EXPECT_TRUE(ixo_pixel_is(at(p, W / 2, H / 2), 101, 78, 56, 255, 3));
    EXPECT_TRUE(ixo_pixel_is(at(p, 0, 0), 0, 0, 0, 255, 0)); // background
    // Beyond the range the light contributes nothing: only global ambient is left.
    light.Range = 1.f;
    device->SetLight(0, &light);
    clear(0xff000000, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER);
    device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 0, nv, 0, nf);
    EXPECT_TRUE(ixo_pixel_is(at(read(), W / 2, H / 2), static_cast<int>(std::lround(0.3 * 0x20)),
                             static_cast<int>(std::lround(0.2 * 0x20)),
                             static_cast<int>(std::lround(0.1 * 0x20)), 255));
    // An index past the end of the vertex buffer is refused rather than read.
    EXPECT_EQ(device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 1, 0, 0, 0, nf), D3DERR_INVALIDCALL);
    IDirect3DIndexBuffer9* current = nullptr;
    ASSERT_EQ(device->GetIndices(&current), D3D_OK);
    EXPECT_EQ(current, ib);
    current->Release();
    vb->Release();
    ib->Release();
    // Released buffers are no longer bound.
    ASSERT_EQ(device->GetIndices(&current), D3D_OK);
    EXPECT_EQ(current, nullptr);
}

TEST_F(device_render, emissive_identifiers_read_back_exactly)
{
    // Lighting on, the emissive term alone carries each identifier as a colour, as the
    // picking pass draws it.
    identity_transforms();
    device->SetRenderState(D3DRS_LIGHTING, TRUE);
    device->SetRenderState(D3DRS_AMBIENT, 0);
    device->SetRenderState(D3DRS_ALPHABLENDENABLE, FALSE);
    device->SetRenderState(D3DRS_COLORVERTEX, TRUE);
    device->SetRenderState(D3DRS_EMISSIVEMATERIALSOURCE, D3DMCS_MATERIAL);
    device->SetRenderState(D3DRS_SPECULARENABLE, TRUE);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
    D3DLIGHT9 light{};
    light.Type = D3DLIGHT_POINT;
    light.Position = {0.f, 0.f, -3.f};
    light.Diffuse = light.Specular = light.Ambient = {1.f, 1.f, 1.f, 1.f};
    light.Attenuation0 = 1.f;
    light.Range = 1e19f;
    device->SetLight(0, &light);
    device->LightEnable(0, TRUE);
    device->SetFVF(D3DFVF_XYZ | D3DFVF_NORMAL);
    std::mt19937 random(12345);
    std::uniform_int_distribution<std::uint32_t> ids(1, 0xffffff);
    // 1000 identifiers, 40 per frame in 8 x 5 cells of 8 x 8 pixels, drawn in 25 frames.
    const int cols = 8, rows = 5;
    int wrong = 0;
    for (int frame = 0; frame < 25; ++frame)
    {
        clear(0);
        std::vector<std::uint32_t> drawn;
        for (int c = 0; c < rows * cols; ++c)
        {
            std::uint32_t id = ids(random);
            drawn.push_back(id);
            D3DMATERIAL9 m{};
            m.Emissive = {(id & 0xff) / 255.f, ((id >> 8) & 0xff) / 255.f,
                          ((id >> 16) & 0xff) / 255.f, 0.f};
            device->SetMaterial(&m);
            float x0 = -1.f + 2.f * (c % cols) / cols, x1 = x0 + 2.f / cols;
            float y1 = 1.f - 2.f * (c / cols) / rows, y0 = y1 - 2.f / rows;
            xyz_normal v[4] = {{x0, y1, 0.5f, 0, 0, -1},
                               {x1, y1, 0.5f, 0, 0, -1},
                               {x0, y0, 0.5f, 0, 0, -1},
                               {x1, y0, 0.5f, 0, 0, -1}};
            device->DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, v, sizeof(xyz_normal));
        }
        auto p = read();
        for (UINT c = 0; c < drawn.size(); ++c)
        {
            ixo_test_pixel px =
                at(p, (c % cols) * W / cols + W / cols / 2, (c / cols) * H / rows + H / rows / 2);
            std::uint32_t back = (std::uint32_t(px.a) << 24) | (std::uint32_t(px.b) << 16) |
                                 (std::uint32_t(px.g) << 8) | px.r;
            wrong += back != drawn[c];
        }
    }
    EXPECT_EQ(wrong, 0);
}

TEST_F(device_render, bad_calls_answer_invalid_call)
{
    IDirect3DSurface9* s = nullptr;
    IDirect3DTexture9* t = nullptr;
    IDirect3DVertexBuffer9* vb = nullptr;
    IDirect3DIndexBuffer9* ib = nullptr;
    ixo_expect_refused(
        "creation and state",
        {device->CreateRenderTarget(0, 4, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0, FALSE, &s,
                                    nullptr),
         device->CreateRenderTarget(4, 4, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0, FALSE, nullptr,
                                    nullptr),
         device->CreateRenderTarget(1u << 20, 4, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0, FALSE, &s,
                                    nullptr),
         device->CreateRenderTarget(4, 4, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_4_SAMPLES, 0, FALSE, &s,
                                    nullptr),
         device->CreateDepthStencilSurface(4, 4, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0, TRUE, &s,
                                           nullptr),
         device->CreateTexture(4, 4, 1, 0, static_cast<D3DFORMAT>(12345), D3DPOOL_MANAGED, &t,
                               nullptr),
         device->CreateTexture(4, 4, 9, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &t, nullptr),
         device->CreateVertexBuffer(0, 0, 0x12, D3DPOOL_DEFAULT, &vb, nullptr),
         device->CreateIndexBuffer(16, 0, D3DFMT_A8R8G8B8, D3DPOOL_DEFAULT, &ib, nullptr),
         device->SetTransform(D3DTS_WORLD, nullptr), device->SetMaterial(nullptr),
         device->SetLight(0, nullptr), device->GetLight(7, nullptr),
         device->Clear(1, nullptr, D3DCLEAR_TARGET, 0, 1.f, 0), device->EndScene(),
         device->GetRenderTargetData(target, nullptr), device->SetRenderTarget(0, nullptr),
         device->SetRenderTarget(0, depth)});
    EXPECT_EQ(device->BeginScene(), D3D_OK);
    EXPECT_EQ(device->BeginScene(), D3DERR_INVALIDCALL);
    EXPECT_EQ(device->EndScene(), D3D_OK);

    // Unsupported vertex formats, missing streams and zero counts do not draw.
    float v[12] = {};
    device->SetFVF(D3DFVF_XYZ | D3DFVF_SPECULAR);
    EXPECT_EQ(device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, v, 16), D3DERR_INVALIDCALL);
    device->SetFVF(D3DFVF_XYZ);
    ixo_expect_refused("draws",
                       {device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 0, v, 12),
                        device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, nullptr, 12),
                        device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 1, v, 8),
                        device->DrawPrimitive(D3DPT_TRIANGLELIST, 0, 1),
                        device->DrawPrimitiveUP(static_cast<D3DPRIMITIVETYPE>(99), 1, v, 12)});

    // A buffer too small for the draw, and buffer locks out of range.
    ASSERT_EQ(device->CreateVertexBuffer(36, 0, D3DFVF_XYZ, D3DPOOL_MANAGED, &vb, nullptr), D3D_OK);
    device->SetStreamSource(0, vb, 0, 12);
    EXPECT_EQ(device->DrawPrimitive(D3DPT_TRIANGLELIST, 0, 1), D3D_OK);
    void* data = nullptr;
    ixo_expect_refused("buffer",
                       {device->DrawPrimitive(D3DPT_TRIANGLELIST, 1, 1),
                        device->DrawPrimitive(D3DPT_TRIANGLESTRIP, 0, 2),
                        vb->Lock(30, 10, &data, 0), vb->Lock(0, 0, nullptr, 0), vb->Unlock()});
    ASSERT_EQ(vb->Lock(12, 0, &data, 0), D3D_OK);
    vb->Unlock();
    D3DVERTEXBUFFER_DESC vd{};
    vb->GetDesc(&vd);
    EXPECT_EQ(vd.Size, 36u);
    EXPECT_EQ(vd.FVF, static_cast<DWORD>(D3DFVF_XYZ));
    vb->Release();
    // Depth surfaces and render targets cannot be locked.
    D3DLOCKED_RECT lr{};
    EXPECT_EQ(depth->LockRect(&lr, nullptr, 0), D3DERR_INVALIDCALL);
    EXPECT_EQ(target->LockRect(&lr, nullptr, 0), D3DERR_INVALIDCALL);
}

TEST_F(device_render, material_sources_pick_vertex_or_material_colours)
{
    // Directional light straight into the screen: N.L = 1 for normals facing the eye.
    identity_transforms();
    D3DLIGHT9 light{};
    light.Type = D3DLIGHT_DIRECTIONAL;
    light.Direction = {0.f, 0.f, 1.f};
    light.Diffuse = {1.f, 1.f, 1.f, 1.f};
    ASSERT_EQ(device->SetLight(3, &light), D3D_OK);
    ASSERT_EQ(device->LightEnable(3, TRUE), D3D_OK);
    BOOL enabled = FALSE;
    ASSERT_EQ(device->GetLightEnable(3, &enabled), D3D_OK);
    EXPECT_TRUE(enabled);
    D3DMATERIAL9 m{};
    m.Diffuse = {0.f, 0.f, 1.f, 0.5f};
    m.Ambient = {1.f, 1.f, 1.f, 1.f};
    device->SetMaterial(&m);
    device->SetRenderState(D3DRS_LIGHTING, TRUE);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
    struct xyz_normal_color
    {
        float x, y, z, nx, ny, nz;
        D3DCOLOR c;
    };
    const D3DCOLOR c = D3DCOLOR_ARGB(200, 255, 0, 0);
    xyz_normal_color v[4] = {{-1, 1, 0.5f, 0, 0, -1, c},
                             {1, 1, 0.5f, 0, 0, -1, c},
                             {-1, -1, 0.5f, 0, 0, -1, c},
                             {1, -1, 0.5f, 0, 0, -1, c}};
    device->SetFVF(D3DFVF_XYZ | D3DFVF_NORMAL | D3DFVF_DIFFUSE);
    auto draw = [&]
    {
        clear(0);
        device->DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, v, sizeof(xyz_normal_color));
        return at(read(), W / 2, H / 2);
    };
    // Default: diffuse from the vertex colour (colour and alpha).
    EXPECT_TRUE(ixo_pixel_is(draw(), 255, 0, 0, 200));
    // From the material.
    device->SetRenderState(D3DRS_DIFFUSEMATERIALSOURCE, D3DMCS_MATERIAL);
    EXPECT_TRUE(ixo_pixel_is(draw(), 0, 0, 255, 128));
    // Colour vertex off also means the material, whatever the sources say.
    device->SetRenderState(D3DRS_DIFFUSEMATERIALSOURCE, D3DMCS_COLOR1);
    device->SetRenderState(D3DRS_COLORVERTEX, FALSE);
    EXPECT_TRUE(ixo_pixel_is(draw(), 0, 0, 255, 128));
    // Ambient from the vertex, lit by the global ambient only.
    device->SetRenderState(D3DRS_COLORVERTEX, TRUE);
    device->SetRenderState(D3DRS_DIFFUSEMATERIALSOURCE, D3DMCS_MATERIAL);
    device->SetRenderState(D3DRS_AMBIENTMATERIALSOURCE, D3DMCS_COLOR1);
    device->SetRenderState(D3DRS_AMBIENT, D3DCOLOR_XRGB(128, 128, 128));
    EXPECT_TRUE(ixo_pixel_is(draw(), 128, 0, 255, 128));
    // Lighting off: the vertex colour as it is.
    device->SetRenderState(D3DRS_LIGHTING, FALSE);
    EXPECT_TRUE(ixo_pixel_is(draw(), 255, 0, 0, 200, 0));
    // Lights off: only emissive and ambient remain.
    device->SetRenderState(D3DRS_LIGHTING, TRUE);
    device->LightEnable(3, FALSE);
    EXPECT_TRUE(ixo_pixel_is(draw(), 128, 0, 0, 128));
}

TEST_F(device_render, texture_stage_and_alpha_test)
{
    IDirect3DTexture9* texture = nullptr;
    ASSERT_EQ(
        device->CreateTexture(2, 1, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &texture, nullptr),
        D3D_OK);
    EXPECT_EQ(texture->GetLevelCount(), 1u);
    D3DLOCKED_RECT lr{};
    ASSERT_EQ(texture->LockRect(0, &lr, nullptr, 0), D3D_OK);
    // Left texel opaque white, right texel transparent white (b, g, r, a).
    std::memcpy(lr.pBits, "\xff\xff\xff\xff\xff\xff\xff\x10", 8);
    texture->UnlockRect(0);
    auto const v = ixo_test_textured_rect(32, 16, D3DCOLOR_ARGB(255, 0, 255, 0));
    device->SetFVF(D3DFVF_XYZRHW | D3DFVF_DIFFUSE | D3DFVF_TEX1);
    device->SetTexture(0, texture);
    IDirect3DBaseTexture9* bound = nullptr;
    ASSERT_EQ(device->GetTexture(0, &bound), D3D_OK);
    EXPECT_EQ(bound, texture);
    bound->Release();
    auto draw = [&]
    {
        clear();
        device->DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, v.data(), sizeof(ixo_test_rhw_tex));
        return read();
    };
    // Default stage: colour = texture * diffuse, alpha = texture.
    auto p = draw();
    EXPECT_TRUE(ixo_pixel_is(at(p, 4, 4), 0, 255, 0, 255, 0));
    EXPECT_TRUE(ixo_pixel_is(at(p, 24, 4), 0, 255, 0, 0x10, 0));
    // Alpha test drops the transparent half.
    device->SetRenderState(D3DRS_ALPHATESTENABLE, TRUE);
    device->SetRenderState(D3DRS_ALPHAREF, 0x80);
    device->SetRenderState(D3DRS_ALPHAFUNC, D3DCMP_GREATEREQUAL);
    p = draw();
    EXPECT_TRUE(ixo_pixel_is(at(p, 4, 4), 0, 255, 0, 255, 0));
    EXPECT_TRUE(ixo_pixel_is(at(p, 24, 4), 0, 0, 0, 255, 0));
    device->SetRenderState(D3DRS_ALPHATESTENABLE, FALSE);
    // Select the texture alone; then disable the stage: the diffuse colour alone.
    device->SetTextureStageState(0, D3DTSS_COLOROP, D3DTOP_SELECTARG1);
    p = draw();
    EXPECT_TRUE(ixo_pixel_is(at(p, 4, 4), 255, 255, 255, 255, 0));
    device->SetTextureStageState(0, D3DTSS_COLOROP, D3DTOP_DISABLE);
    p = draw();
    EXPECT_TRUE(ixo_pixel_is(at(p, 24, 4), 0, 255, 0, 255, 0));
    // Releasing the texture unbinds it.
    texture->Release();
    ASSERT_EQ(device->GetTexture(0, &bound), D3D_OK);
    EXPECT_EQ(bound, nullptr);
}
