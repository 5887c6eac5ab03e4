#pragma once
// An off-screen A8R8G8B8 render target with a depth buffer on the application's device,
// and its pixels read back (row 0 at the top), for render tests that draw without a view.

#include <ixocore/platform/d3d9.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace ixo_test
{
struct pixel
{
    std::uint8_t b, g, r, a;
};

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

    // Makes the target current and clears colour and depth.
    bool begin(D3DCOLOR clear)
    {
        if (!ok() || FAILED(device_->SetRenderTarget(0, target_)) ||
            FAILED(device_->SetDepthStencilSurface(depth_)))
            return false;
        return SUCCEEDED(
                   device_->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER, clear, 1.f, 0)) &&
               SUCCEEDED(device_->BeginScene());
    }

    // Ends the scene and reads the pixels back, rows top-down.
    std::vector<pixel> end()
    {
        std::vector<pixel> pixels;
        device_->EndScene();
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
} // namespace ixo_test
