#pragma once
// A headless device with a W x H render target, a depth buffer and a readable copy, shared
// by the Direct3D 9 render tests.

#include <ixocore/platform/d3d9.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <vector>

struct ixo_test_pixel
{
    std::uint8_t b, g, r, a;
};

// Pre-transformed vertices with a colour and texture coordinates.
struct ixo_test_rhw_tex
{
    float x, y, z, rhw;
    D3DCOLOR c;
    float u, v;
};

// A strip over the top-left w x h pixels, texture coordinates running from 0 to 1.
inline std::array<ixo_test_rhw_tex, 4> ixo_test_textured_rect(float w, float h, D3DCOLOR c)
{
    return {{{-0.5f, -0.5f, 0, 1, c, 0, 0},
             {w - 0.5f, -0.5f, 0, 1, c, 1, 0},
             {-0.5f, h - 0.5f, 0, 1, c, 0, 1},
             {w - 0.5f, h - 0.5f, 0, 1, c, 1, 1}}};
}

template <UINT width, UINT height> class ixo_d3d9_target : public ::testing::Test
{
protected:
    static constexpr UINT W = width;
    static constexpr UINT H = height;

    void SetUp() override
    {
        d3d = Direct3DCreate9(D3D_SDK_VERSION);
        ASSERT_NE(d3d, nullptr);
        pp.BackBufferWidth = 8;
        pp.BackBufferHeight = 8;
        pp.SwapEffect = D3DSWAPEFFECT_DISCARD;
        pp.Windowed = TRUE;
        ASSERT_EQ(d3d->CreateDevice(0, D3DDEVTYPE_HAL, nullptr,
                                    D3DCREATE_HARDWARE_VERTEXPROCESSING | D3DCREATE_FPU_PRESERVE,
                                    &pp, &device),
                  D3D_OK);
        create_surfaces();
    }

    // The target, depth buffer and readable copy; released and made again around a
    // device reset.
    void create_surfaces()
    {
        ASSERT_EQ(device->CreateRenderTarget(W, H, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0, FALSE,
                                             &target, nullptr),
                  D3D_OK);
        ASSERT_EQ(device->CreateDepthStencilSurface(W, H, D3DFMT_D24S8, D3DMULTISAMPLE_NONE, 0,
                                                    TRUE, &depth, nullptr),
                  D3D_OK);
        ASSERT_EQ(device->CreateOffscreenPlainSurface(W, H, D3DFMT_A8R8G8B8, D3DPOOL_SYSTEMMEM,
                                                      &readback, nullptr),
                  D3D_OK);
        ASSERT_EQ(device->SetRenderTarget(0, target), D3D_OK);
        ASSERT_EQ(device->SetDepthStencilSurface(depth), D3D_OK);
    }

    void release_surfaces()
    {
        for (IDirect3DSurface9** s : {&readback, &depth, &target})
        {
            if (*s)
                (*s)->Release();
            *s = nullptr;
        }
    }

    void TearDown() override
    {
        release_surfaces();
        if (device)
        {
            EXPECT_EQ(device->Release(), 0u);
        }
        if (d3d)
        {
            EXPECT_EQ(d3d->Release(), 0u);
        }
    }

    // Clears the whole target (and, by the flags, the depth buffer) to one colour.
    void clear(D3DCOLOR colour = 0xff000000, DWORD flags = D3DCLEAR_TARGET)
    {
        EXPECT_EQ(device->Clear(0, nullptr, flags, colour, 1.f, 0), D3D_OK);
    }

    // Clears, runs `draw` between BeginScene and EndScene and reads the target back.
    template <typename F> std::vector<ixo_test_pixel> scene(F draw)
    {
        clear();
        EXPECT_EQ(device->BeginScene(), D3D_OK);
        draw();
        EXPECT_EQ(device->EndScene(), D3D_OK);
        return read();
    }

    // Copies the render target and returns its pixels, row 0 first.
    std::vector<ixo_test_pixel> read(IDirect3DSurface9* surface = nullptr)
    {
        std::vector<ixo_test_pixel> out(W * H);
        if (device->GetRenderTargetData(surface ? surface : target, readback) != D3D_OK)
            return {};
        D3DLOCKED_RECT lr{};
        if (readback->LockRect(&lr, nullptr, D3DLOCK_READONLY) != D3D_OK)
            return {};
        for (UINT y = 0; y < H; ++y)
            std::memcpy(&out[y * W], static_cast<std::uint8_t*>(lr.pBits) + y * lr.Pitch, W * 4);
        readback->UnlockRect();
        return out;
    }

    static ixo_test_pixel at(const std::vector<ixo_test_pixel>& p, UINT x, UINT y)
    {
        return p.at(y * W + x);
    }

    static D3DMATRIX identity()
    {
        D3DMATRIX m{};
        m._11 = m._22 = m._33 = m._44 = 1.f;
        return m;
    }

    void identity_transforms()
    {
        D3DMATRIX i = identity();
        device->SetTransform(D3DTS_WORLD, &i);
        device->SetTransform(D3DTS_VIEW, &i);
        device->SetTransform(D3DTS_PROJECTION, &i);
    }

    D3DPRESENT_PARAMETERS pp{};
    IDirect3D9* d3d = nullptr;
    IDirect3DDevice9* device = nullptr;
    IDirect3DSurface9* target = nullptr;
    IDirect3DSurface9* depth = nullptr;
    IDirect3DSurface9* readback = nullptr;
};

using ixo_d3d9_fixture = ixo_d3d9_target<64, 48>;

inline bool ixo_near(const ixo_test_pixel& p, int r, int g, int b, int a, int tolerance = 1)
{
    auto close = [&](int x, int y) { return x - y <= tolerance && y - x <= tolerance; };
    return close(p.r, r) && close(p.g, g) && close(p.b, b) && close(p.a, a);
}

inline ::testing::AssertionResult ixo_pixel_is(const ixo_test_pixel& p, int r, int g, int b, int a,
                                               int tolerance = 1)
{
    if (ixo_near(p, r, g, b, a, tolerance))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "pixel (r, g, b, a) = (" << int(p.r) << ", " << int(p.g) << ", " << int(p.b) << ", "
           << int(p.a) << "), expected (" << r << ", " << g << ", " << b << ", " << a << ")";
}

// Expects every call of the list (a braced list runs them left to right) to be refused.
inline void ixo_expect_refused(const char* what, std::initializer_list<HRESULT> calls)
{
    int i = 0;
    for (HRESULT hr : calls)
        EXPECT_EQ(hr, D3DERR_INVALIDCALL) << what << ", call " << i++;
}
