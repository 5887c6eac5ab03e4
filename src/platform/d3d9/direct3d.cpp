// The Direct3D object: the adapter list (replaceable by tests), its checks and
// capabilities, and device creation.

#include "d3d9_internal.h"

namespace
{

bool g_fail_create = false;

bool is_back_buffer_format(D3DFORMAT format)
{
    return format == D3DFMT_A8R8G8B8 || format == D3DFMT_X8R8G8B8;
}

bool is_depth_format(D3DFORMAT format)
{
    const ixo_d3d9_format* f = ixo_d3d9_find_format(format);
    return f && f->depth;
}

} // namespace

std::vector<ixo_d3d9_test_adapter>& ixo_d3d9_adapters::list()
{
    static std::vector<ixo_d3d9_test_adapter> adapters(1);
    return adapters;
}

void ixo_d3d9_test_set_adapters(const ixo_d3d9_test_adapter* adapters, UINT count)
{
    if (!adapters)
        ixo_d3d9_adapters::list().assign(1, ixo_d3d9_test_adapter{});
    else
        ixo_d3d9_adapters::list().assign(adapters, adapters + count);
}

void ixo_d3d9_test_fail_create(BOOL fail)
{
    g_fail_create = fail != FALSE;
}

void ixo_d3d9_test_lose_device(IDirect3DDevice9* device, UINT lost_reports)
{
    if (device)
        static_cast<ixo_d3d9_device*>(device)->lose(lost_reports);
}

IDirect3D9* Direct3DCreate9(UINT SDKVersion)
{
    if (SDKVersion != D3D_SDK_VERSION || g_fail_create)
        return nullptr;
    return new ixo_d3d9_direct3d();
}

HRESULT ixo_d3d9_direct3d::CheckDeviceType(UINT Adapter, D3DDEVTYPE DevType,
                                           D3DFORMAT AdapterFormat, D3DFORMAT BackBufferFormat,
                                           BOOL)
{
    if (Adapter >= m_adapters.size() || DevType != D3DDEVTYPE_HAL)
        return D3DERR_INVALIDCALL;
    if (AdapterFormat != D3DFMT_X8R8G8B8 || !is_back_buffer_format(BackBufferFormat))
        return D3DERR_NOTAVAILABLE;
    return m_adapters[Adapter].check_device_type;
}

HRESULT ixo_d3d9_direct3d::CheckDeviceFormat(UINT Adapter, D3DDEVTYPE DeviceType,
                                             D3DFORMAT AdapterFormat, DWORD Usage,
                                             D3DRESOURCETYPE RType, D3DFORMAT CheckFormat)
{
    if (Adapter >= m_adapters.size() || DeviceType != D3DDEVTYPE_HAL)
        return D3DERR_INVALIDCALL;
    if (AdapterFormat != D3DFMT_X8R8G8B8)
        return D3DERR_NOTAVAILABLE;
    const ixo_d3d9_format* f = ixo_d3d9_find_format(CheckFormat);
    if (!f)
        return D3DERR_NOTAVAILABLE;
    if ((Usage & D3DUSAGE_DEPTHSTENCIL) && !f->depth)
        return D3DERR_NOTAVAILABLE;
    if ((Usage & D3DUSAGE_RENDERTARGET) && f->depth)
        return D3DERR_NOTAVAILABLE;
    if (RType == D3DRTYPE_TEXTURE && f->depth)
        return D3DERR_NOTAVAILABLE;
    if (RType != D3DRTYPE_TEXTURE && RType != D3DRTYPE_SURFACE)
        return D3DERR_NOTAVAILABLE;
    return D3D_OK;
}

HRESULT ixo_d3d9_direct3d::CheckDepthStencilMatch(UINT Adapter, D3DDEVTYPE DeviceType,
                                                  D3DFORMAT AdapterFormat,
                                                  D3DFORMAT RenderTargetFormat,
                                                  D3DFORMAT DepthStencilFormat)
{
    if (Adapter >= m_adapters.size() || DeviceType != D3DDEVTYPE_HAL)
        return D3DERR_INVALIDCALL;
    if (AdapterFormat != D3DFMT_X8R8G8B8 || !ixo_d3d9_find_format(RenderTargetFormat) ||
        !is_depth_format(DepthStencilFormat))
        return D3DERR_NOTAVAILABLE;
    return m_adapters[Adapter].check_depth_stencil;
}

HRESULT ixo_d3d9_direct3d::GetDeviceCaps(UINT Adapter, D3DDEVTYPE DeviceType, D3DCAPS9* pCaps)
{
    if (Adapter >= m_adapters.size() || DeviceType != D3DDEVTYPE_HAL || !pCaps)
        return D3DERR_INVALIDCALL;
    *pCaps = D3DCAPS9{};
    pCaps->DeviceType = D3DDEVTYPE_HAL;
    pCaps->AdapterOrdinal = Adapter;
    pCaps->VertexProcessingCaps = m_adapters[Adapter].vertex_processing_caps;
    pCaps->DevCaps = pCaps->VertexProcessingCaps ? D3DDEVCAPS_HWTRANSFORMANDLIGHT : 0;
    pCaps->MaxTextureWidth = 16384;
    pCaps->MaxTextureHeight = 16384;
    pCaps->MaxTextureBlendStages = 8;
    pCaps->MaxSimultaneousTextures = 8;
    pCaps->MaxActiveLights = 8;
    pCaps->MaxPrimitiveCount = 0x7fffffff;
    pCaps->MaxVertexIndex = 0x7fffffff;
    pCaps->MaxStreams = 1;
    pCaps->MaxStreamStride = 255;
    pCaps->VertexShaderVersion = 0xFFFE0300;
    pCaps->PixelShaderVersion = 0xFFFF0300;
    pCaps->NumSimultaneousRTs = 1;
    return D3D_OK;
}

HRESULT ixo_d3d9_direct3d::CreateDevice(UINT Adapter, D3DDEVTYPE DeviceType, HWND hFocusWindow,
                                        DWORD BehaviorFlags,
                                        D3DPRESENT_PARAMETERS* pPresentationParameters,
                                        IDirect3DDevice9** ppReturnedDeviceInterface)
{
    if (!ppReturnedDeviceInterface)
        return D3DERR_INVALIDCALL;
    *ppReturnedDeviceInterface = nullptr;
    if (Adapter >= m_adapters.size() || DeviceType != D3DDEVTYPE_HAL || !pPresentationParameters)
        return D3DERR_INVALIDCALL;
    const DWORD processing =
        BehaviorFlags & (D3DCREATE_HARDWARE_VERTEXPROCESSING | D3DCREATE_SOFTWARE_VERTEXPROCESSING |
                         D3DCREATE_MIXED_VERTEXPROCESSING);
    if (processing != D3DCREATE_HARDWARE_VERTEXPROCESSING &&
        processing != D3DCREATE_SOFTWARE_VERTEXPROCESSING &&
        processing != D3DCREATE_MIXED_VERTEXPROCESSING)
        return D3DERR_INVALIDCALL;
    const ixo_d3d9_test_adapter& a = m_adapters[Adapter];
    HRESULT simulated =
        processing == D3DCREATE_SOFTWARE_VERTEXPROCESSING ? a.create_software : a.create_hardware;
    if (FAILED(simulated))
        return simulated;
    if (processing != D3DCREATE_SOFTWARE_VERTEXPROCESSING && a.vertex_processing_caps == 0)
        return D3DERR_NOTAVAILABLE;
    return ixo_d3d9_device::create(this, Adapter, DeviceType, hFocusWindow, BehaviorFlags,
                                   pPresentationParameters, ppReturnedDeviceInterface);
}
