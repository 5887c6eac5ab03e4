#pragma once
// Test hooks of the Direct3D 9 stand-in: device loss and the adapter list, so that the
// device-reset protocol and the adapter choice can be exercised on a machine that has
// neither several adapters nor a way to lose its device.

#include <ixocore/platform/d3d9.h>

// Makes the device lost: its TestCooperativeLevel answers D3DERR_DEVICELOST for the next
// lost_reports calls, then D3DERR_DEVICENOTRESET until a successful Reset; Present answers
// D3DERR_DEVICELOST and Reset fails with D3DERR_DEVICELOST while it is still lost.
// lost_reports 0 goes straight to D3DERR_DEVICENOTRESET. A null device does nothing.
IXO_API void ixo_d3d9_test_lose_device(IDirect3DDevice9* device, UINT lost_reports);

// One simulated display adapter: what its checks answer and what it reports. Every
// adapter draws with the same OpenGL implementation.
struct ixo_d3d9_test_adapter
{
    HRESULT check_device_type = D3D_OK;   // CheckDeviceType's answer
    HRESULT check_depth_stencil = D3D_OK; // CheckDepthStencilMatch's answer
    DWORD vertex_processing_caps = 0x3b;  // D3DCAPS9::VertexProcessingCaps
    HRESULT create_hardware = D3D_OK;     // CreateDevice with hardware vertex processing
    HRESULT create_software = D3D_OK;     // CreateDevice with software vertex processing
};

// Replaces the adapter list seen by Direct3D objects created afterwards (count entries;
// count 0 means no adapter). Null restores the default list: one adapter that passes.
IXO_API void ixo_d3d9_test_set_adapters(const ixo_d3d9_test_adapter* adapters, UINT count);

// While set, Direct3DCreate9 returns null.
IXO_API void ixo_d3d9_test_fail_create(BOOL fail);
