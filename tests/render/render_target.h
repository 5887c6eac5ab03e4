#pragma once
// An off-screen A8R8G8B8 render target with a depth buffer on the application's device,
// and its pixels read back (row 0 at the top), for render tests that draw without a view.

#include <ixocore/core/identifiable_object.h>
#include <ixocore/math/vector.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/render/direct3d.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace ixo_test
{
struct pixel
{
    std::uint8_t b, g, r, a;
};

// The object identifier a picking pass wrote into this pixel.
inline unsigned long id_of(pixel p)
{
    return ixo_id_from_color(ixo_vector4<unsigned char>(p.b, p.g, p.r, p.a));
}

class render_target
{
public:
    render_target(IDirect3DDevice9* device, UINT width, UINT height)
        : device_(device), width_(width), height_(height)
    {
        if (!device_)
            return;
        device_->CreateRenderTarget(width, height, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0, FALSE,
                                    &target_, nullptr);
        device_->CreateDepthStencilSurface(width, height, D3DFMT_D24S8, D3DMULTISAMPLE_NONE, 0,
                                           TRUE, &depth_, nullptr);
    }
    ~render_target()
    {
        // The device holds what is current: hand it back its own back buffer so the
        // surfaces really go (a device reset needs them gone).
        if (device_)
        {
            IDirect3DSurface9* back = nullptr;
            if (SUCCEEDED(device_->GetBackBuffer(0, 0, D3DBACKBUFFER_TYPE_MONO, &back)))
            {
                device_->SetRenderTarget(0, back);
                back->Release();
            }
            device_->SetDepthStencilSurface(nullptr);
        }
        if (depth_)
            depth_->Release();
        if (target_)
            target_->Release();
    }
    render_target(const render_target&) = delete;
    render_target& operator=(const render_target&) = delete;

    bool ok() const { return target_ && depth_; }

    // Makes the target current with a viewport over all of it, and clears colour and depth.
    // For drawing that brings its own device scene (a scene's draw).
    bool bind(D3DCOLOR clear)
    {
        if (!ok() || FAILED(device_->SetRenderTarget(0, target_)) ||
            FAILED(device_->SetDepthStencilSurface(depth_)))
            return false;
        D3DVIEWPORT9 viewport{0, 0, width_, height_, 0.0f, 1.0f};
        device_->SetViewport(&viewport);
        return SUCCEEDED(
            device_->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER, clear, 1.f, 0));
    }

    // bind(), then a device scene for drawing calls made by the test itself.
    bool begin(D3DCOLOR clear) { return bind(clear) && SUCCEEDED(device_->BeginScene()); }

    // Ends the scene begun by begin() and reads the pixels back.
    std::vector<pixel> end()
    {
        device_->EndScene();
        return read();
    }

    // The target's pixels, rows top-down; empty when they cannot be read.
    std::vector<pixel> read()
    {
        std::vector<pixel> pixels;
        if (!ok())
            return pixels;
        IDirect3DSurface9* copy = nullptr;
        if (FAILED(device_->CreateOffscreenPlainSurface(width_, height_, D3DFMT_A8R8G8B8,
                                                        D3DPOOL_SYSTEMMEM, &copy, nullptr)))
            return pixels;
        D3DLOCKED_RECT locked{};
        if (SUCCEEDED(device_->GetRenderTargetData(target_, copy)) &&
            SUCCEEDED(copy->LockRect(&locked, nullptr, 0)))
        {
            pixels.resize(std::size_t(width_) * height_);
            for (UINT y = 0; y < height_; ++y)
                std::memcpy(&pixels[std::size_t(y) * width_],
                            static_cast<const std::uint8_t*>(locked.pBits) + y * locked.Pitch,
                            width_ * sizeof(pixel));
            copy->UnlockRect();
        }
        copy->Release();
        return pixels;
    }

private:
    IDirect3DDevice9* device_ = nullptr;
    UINT width_ = 0;
    UINT height_ = 0;
    IDirect3DSurface9* target_ = nullptr;
    IDirect3DSurface9* depth_ = nullptr;
};

// Sets the device's and the shared effect's view and projection to look down -z from
// (0, 0, 10) with y up, orthographic, `width` x `height` world units across the viewport.
inline void look_along_minus_z(IDirect3DDevice9* device, float width, float height)
{
    D3DXMATRIX view, projection;
    D3DXVECTOR3 const eye(0, 0, 10), at(0, 0, 0), up(0, 1, 0);
    D3DXMatrixLookAtRH(&view, &eye, &at, &up);
    D3DXMatrixOrthoRH(&projection, width, height, 0.1f, 20.0f);
    device->SetTransform(D3DTS_VIEW, &view);
    device->SetTransform(D3DTS_PROJECTION, &projection);
    if (ID3DXEffect* effect = ixo_direct3d::get_effect())
    {
        effect->SetMatrix("g_mView", &view);
        effect->SetMatrix("g_mProj", &projection);
    }
}
} // namespace ixo_test
