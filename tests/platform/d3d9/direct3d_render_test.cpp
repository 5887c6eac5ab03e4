// Adapters, device creation, swap chains, and the lost-device protocol with its test hooks.

#include "d3d9_fixture.h"

#include <ixocore/platform/d3d9_testing.h>

namespace
{

D3DPRESENT_PARAMETERS small_present()
{
    D3DPRESENT_PARAMETERS pp{};
    pp.BackBufferWidth = 8;
    pp.BackBufferHeight = 8;
    pp.SwapEffect = D3DSWAPEFFECT_DISCARD;
    pp.Windowed = TRUE;
    return pp;
}

// Restores the default adapter list when a test ends, whatever happened.
struct adapter_list_guard
{
    ~adapter_list_guard()
    {
        ixo_d3d9_test_set_adapters(nullptr, 0);
        ixo_d3d9_test_fail_create(FALSE);
    }
};

} // namespace

TEST(direct3d, adapter_hooks_drive_checks_caps_and_creation)
{
    adapter_list_guard guard;
    ixo_d3d9_test_adapter list[2];
    list[0].vertex_processing_caps = 0;
    list[1].check_depth_stencil = D3DERR_NOTAVAILABLE;
    ixo_d3d9_test_set_adapters(list, 2);
    IDirect3D9* d3d = Direct3DCreate9(D3D_SDK_VERSION);
    ASSERT_NE(d3d, nullptr);
    EXPECT_EQ(d3d->GetAdapterCount(), 2u);
    auto check_type = [&](UINT adapter) {
        return d3d->CheckDeviceType(adapter, D3DDEVTYPE_HAL, D3DFMT_X8R8G8B8, D3DFMT_A8R8G8B8,
                                    TRUE);
    };
    auto check_depth = [&](UINT adapter, D3DFORMAT depth)
    {
        return d3d->CheckDepthStencilMatch(adapter, D3DDEVTYPE_HAL, D3DFMT_X8R8G8B8,
                                           D3DFMT_A8R8G8B8, depth);
    };
    EXPECT_EQ(check_type(0), D3D_OK);
    EXPECT_EQ(check_type(2), D3DERR_INVALIDCALL);
    EXPECT_EQ(check_depth(0, D3DFMT_D24S8), D3D_OK);
    EXPECT_EQ(check_depth(1, D3DFMT_D24S8), D3DERR_NOTAVAILABLE);
    EXPECT_EQ(check_depth(0, D3DFMT_A8R8G8B8), D3DERR_NOTAVAILABLE);
    D3DCAPS9 caps{};
    ASSERT_EQ(d3d->GetDeviceCaps(0, D3DDEVTYPE_HAL, &caps), D3D_OK);
    EXPECT_EQ(caps.VertexProcessingCaps, 0u);
    ASSERT_EQ(d3d->GetDeviceCaps(1, D3DDEVTYPE_HAL, &caps), D3D_OK);
    EXPECT_NE(caps.VertexProcessingCaps, 0u);
    EXPECT_EQ(d3d->GetDeviceCaps(0, D3DDEVTYPE_HAL, nullptr), D3DERR_INVALIDCALL);

    // Without vertex-processing capabilities only software vertex processing starts.
    D3DPRESENT_PARAMETERS pp = small_present();
    IDirect3DDevice9* device = nullptr;
    auto create = [&](UINT adapter, DWORD flags, D3DPRESENT_PARAMETERS* params)
    { return d3d->CreateDevice(adapter, D3DDEVTYPE_HAL, nullptr, flags, params, &device); };
    DWORD const hardware = D3DCREATE_HARDWARE_VERTEXPROCESSING,
                software = D3DCREATE_SOFTWARE_VERTEXPROCESSING;
    EXPECT_NE(create(0, hardware | D3DCREATE_FPU_PRESERVE, &pp), D3D_OK);
    EXPECT_EQ(device, nullptr);
    ASSERT_EQ(create(0, software | D3DCREATE_FPU_PRESERVE, &pp), D3D_OK);
    D3DDEVICE_CREATION_PARAMETERS created{};
    ASSERT_EQ(device->GetCreationParameters(&created), D3D_OK);
    EXPECT_EQ(created.AdapterOrdinal, 0u);
    EXPECT_TRUE(created.BehaviorFlags & D3DCREATE_SOFTWARE_VERTEXPROCESSING);
    device->Release();
    ASSERT_EQ(create(1, hardware, &pp), D3D_OK);
    device->GetCreationParameters(&created);
    EXPECT_EQ(created.AdapterOrdinal, 1u);
    device->Release();
    ixo_expect_refused("creation", {create(0, 0, &pp), create(0, software, nullptr)});

    // A creation failure planted on an adapter is what CreateDevice answers; the Direct3D
    // object keeps the list it was made with.
    list[1].create_hardware = D3DERR_NOTAVAILABLE;
    ixo_d3d9_test_set_adapters(list, 2);
    EXPECT_EQ(create(1, hardware, &pp), D3D_OK);
    device->Release();
    EXPECT_EQ(d3d->Release(), 0u);
    d3d = Direct3DCreate9(D3D_SDK_VERSION);
    EXPECT_EQ(create(1, hardware, &pp), D3DERR_NOTAVAILABLE);
    EXPECT_EQ(device, nullptr);
    d3d->Release();

    // No adapters at all.
    ixo_d3d9_test_set_adapters(list, 0);
    d3d = Direct3DCreate9(D3D_SDK_VERSION);
    EXPECT_EQ(d3d->GetAdapterCount(), 0u);
    EXPECT_EQ(create(0, hardware, &pp), D3DERR_INVALIDCALL);
    d3d->Release();

    ixo_d3d9_test_fail_create(TRUE);
    EXPECT_EQ(Direct3DCreate9(D3D_SDK_VERSION), nullptr);
    ixo_d3d9_test_fail_create(FALSE);
    EXPECT_EQ(Direct3DCreate9(31), nullptr);
}

using direct3d_device = ixo_d3d9_fixture;

TEST_F(direct3d_device, additional_swap_chains_are_off_screen_targets)
{
    D3DPRESENT_PARAMETERS pp = small_present();
    pp.BackBufferWidth = 32;
    pp.BackBufferHeight = 16;
    pp.BackBufferFormat = D3DFMT_A8R8G8B8;
    pp.BackBufferCount = 1;
    IDirect3DSwapChain9* chain = nullptr;
    ASSERT_EQ(device->CreateAdditionalSwapChain(&pp, &chain), D3D_OK);
    IDirect3DSurface9* back = nullptr;
    ASSERT_EQ(chain->GetBackBuffer(0, D3DBACKBUFFER_TYPE_MONO, &back), D3D_OK);
    D3DSURFACE_DESC d{};
    back->GetDesc(&d);
    EXPECT_EQ(d.Width, 32u);
    EXPECT_EQ(d.Height, 16u);
    EXPECT_EQ(d.Format, D3DFMT_A8R8G8B8);
    EXPECT_TRUE(d.Usage & D3DUSAGE_RENDERTARGET);
    ASSERT_EQ(device->SetRenderTarget(0, back), D3D_OK);
    clear(0xff336699);
    EXPECT_EQ(chain->Present(nullptr, nullptr, nullptr, nullptr, 0), D3D_OK);
    // The back buffer copies out like any render target.
    RECT into = {0, 0, 32, 16};
    ASSERT_EQ(device->StretchRect(back, nullptr, target, &into, D3DTEXF_NONE), D3D_OK);
    auto p = read();
    EXPECT_TRUE(ixo_pixel_is(at(p, 31, 15), 0x33, 0x66, 0x99, 0xff, 0));
    EXPECT_TRUE(ixo_pixel_is(at(p, 32, 0), 0, 0, 0, 0, 255)); // untouched beyond (any value)
    D3DPRESENT_PARAMETERS got{};
    chain->GetPresentParameters(&got);
    EXPECT_EQ(got.BackBufferWidth, 32u);
    device->SetRenderTarget(0, target);
    back->Release();
    EXPECT_EQ(chain->Release(), 0u);
    pp.BackBufferWidth = 0;
    ixo_expect_refused("swap chains", {device->CreateAdditionalSwapChain(&pp, &chain),
                                       device->CreateAdditionalSwapChain(nullptr, &chain)});
}

TEST_F(direct3d_device, lost_device_reports_codes_and_resets_once_video_memory_is_released)
{
    // A managed texture (survives) with a known colour, drawn as a sprite-like quad.
    IDirect3DTexture9* texture = nullptr;
    ASSERT_EQ(
        device->CreateTexture(2, 2, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &texture, nullptr),
        D3D_OK);
    D3DLOCKED_RECT lr{};
    ASSERT_EQ(texture->LockRect(0, &lr, nullptr, 0), D3D_OK);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x)
            std::memcpy(static_cast<std::uint8_t*>(lr.pBits) + y * lr.Pitch + x * 4,
                        "\x20\x40\x80\xff", 4); // b, g, r, a
    texture->UnlockRect(0);
    IDirect3DSwapChain9* chain = nullptr;
    D3DPRESENT_PARAMETERS pp = small_present();
    ASSERT_EQ(device->CreateAdditionalSwapChain(&pp, &chain), D3D_OK);

    ixo_d3d9_test_lose_device(device, 2);
    EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICELOST);
    EXPECT_EQ(device->Present(nullptr, nullptr, nullptr, nullptr), D3DERR_DEVICELOST);
    EXPECT_EQ(chain->Present(nullptr, nullptr, nullptr, nullptr, 0), D3DERR_DEVICELOST);
    // Still lost: Reset is refused.
    EXPECT_EQ(device->Reset(&pp), D3DERR_DEVICELOST);
    EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICELOST);
    EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICENOTRESET);
    EXPECT_EQ(device->TestCooperativeLevel(), D3DERR_DEVICENOTRESET);
    // Video-memory resources (render target, depth surface, swap chain) block Reset.
    EXPECT_EQ(device->Reset(&pp), D3DERR_INVALIDCALL);
    chain->Release();
    target->Release();
    target = nullptr;
    EXPECT_EQ(device->Reset(&pp), D3DERR_INVALIDCALL);
    depth->Release();
    depth = nullptr;
    ASSERT_EQ(device->Reset(&pp), D3D_OK);
    EXPECT_EQ(device->TestCooperativeLevel(), D3D_OK);
    EXPECT_EQ(device->Present(nullptr, nullptr, nullptr, nullptr), D3D_OK);

    // Rebuilt video memory and the surviving managed texture draw as before.
    ASSERT_EQ(device->CreateRenderTarget(W, H, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0, FALSE,
                                         &target, nullptr),
              D3D_OK);
    ASSERT_EQ(device->SetRenderTarget(0, target), D3D_OK);
    clear();
    device->SetFVF(D3DFVF_XYZRHW | D3DFVF_DIFFUSE | D3DFVF_TEX1);
    device->SetTexture(0, texture);
    device->SetTextureStageState(0, D3DTSS_ALPHAOP, D3DTOP_MODULATE);
    device->SetTextureStageState(0, D3DTSS_ALPHAARG2, D3DTA_DIFFUSE);
    auto const v = ixo_test_textured_rect(16, 16, D3DCOLOR_ARGB(255, 255, 128, 255));
    device->BeginScene();
    ASSERT_EQ(device->DrawPrimitiveUP(D3DPT_TRIANGLESTRIP, 2, v.data(), sizeof(ixo_test_rhw_tex)),
              D3D_OK);
    device->EndScene();
    auto p = read();
    // Texture (0x80, 0x40, 0x20) modulated by (1, 128/255, 1).
    EXPECT_TRUE(ixo_pixel_is(at(p, 8, 8), 0x80, 0x20, 0x20, 255, 1));
    EXPECT_TRUE(ixo_pixel_is(at(p, 16, 8), 0, 0, 0, 255, 0));
    device->SetTexture(0, nullptr);
    texture->Release();
}

TEST_F(direct3d_device, resources_of_another_device_are_refused)
{
    D3DPRESENT_PARAMETERS pp = small_present();
    IDirect3DDevice9* other = nullptr;
    ASSERT_EQ(d3d->CreateDevice(0, D3DDEVTYPE_HAL, nullptr, D3DCREATE_HARDWARE_VERTEXPROCESSING,
                                &pp, &other),
              D3D_OK);
    IDirect3DSurface9* other_target = nullptr;
    IDirect3DTexture9* other_texture = nullptr;
    ASSERT_EQ(other->CreateRenderTarget(W, H, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0, FALSE,
                                        &other_target, nullptr),
              D3D_OK);
    ASSERT_EQ(
        other->CreateTexture(4, 4, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &other_texture, nullptr),
        D3D_OK);
    ixo_expect_refused("foreign resources",
                       {device->SetRenderTarget(0, other_target),
                        device->SetTexture(0, other_texture),
                        device->StretchRect(other_target, nullptr, target, nullptr, D3DTEXF_NONE),
                        device->GetRenderTargetData(other_target, readback)});
    other_texture->Release();
    other_target->Release();
    EXPECT_EQ(other->Release(), 0u);
}
