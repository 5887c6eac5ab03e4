// The device: creation, loss and reset, resource creation, copies, clears and state.
// Drawing is in draw.cpp.

#include "d3d9_internal.h"
#include "fixed_function.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace
{

ixo_d3d9_surface* as_surface(IDirect3DSurface9* s)
{
    return static_cast<ixo_d3d9_surface*>(s);
}

RECT whole(const ixo_d3d9_surface* s)
{
    return RECT{0, 0, static_cast<LONG>(s->desc().Width), static_cast<LONG>(s->desc().Height)};
}

bool rect_inside(const RECT& r, const ixo_d3d9_surface* s)
{
    return r.left >= 0 && r.top >= 0 && r.left < r.right && r.top < r.bottom &&
           r.right <= static_cast<LONG>(s->desc().Width) &&
           r.bottom <= static_cast<LONG>(s->desc().Height);
}

} // namespace

D3DMATRIX ixo_d3d9_identity()
{
    D3DMATRIX m{};
    m._11 = m._22 = m._33 = m._44 = 1.f;
    return m;
}

D3DMATRIX ixo_d3d9_multiply(const D3DMATRIX& a, const D3DMATRIX& b)
{
    D3DMATRIX r{};
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
        {
            float v = 0.f;
            for (int k = 0; k < 4; ++k)
                v += a.m[i][k] * b.m[k][j];
            r.m[i][j] = v;
        }
    return r;
}

// ---------------------------------------------------------------------------------------
// Creation and destruction

ixo_d3d9_device::ixo_d3d9_device(ixo_d3d9_direct3d* d3d, std::unique_ptr<ixo_gl_context> gl)
    : m_d3d(d3d), m_gl(std::move(gl))
{
    m_d3d->AddRef();
}

HRESULT ixo_d3d9_device::create(ixo_d3d9_direct3d* d3d, UINT adapter, D3DDEVTYPE type, HWND focus,
                                DWORD behavior, D3DPRESENT_PARAMETERS* params,
                                IDirect3DDevice9** device)
{
    const ixo_d3d9_format* format = ixo_d3d9_find_format(
        params->BackBufferFormat == D3DFMT_UNKNOWN ? D3DFMT_A8R8G8B8 : params->BackBufferFormat);
    if (!format || format->depth || params->MultiSampleType != D3DMULTISAMPLE_NONE ||
        params->BackBufferWidth > 16384 || params->BackBufferHeight > 16384)
        return D3DERR_INVALIDCALL;
    if (params->EnableAutoDepthStencil)
    {
        const ixo_d3d9_format* depth = ixo_d3d9_find_format(params->AutoDepthStencilFormat);
        if (!depth || !depth->depth)
            return D3DERR_INVALIDCALL;
    }
    HWND window = params->hDeviceWindow ? params->hDeviceWindow : focus;
    std::unique_ptr<ixo_gl_context> gl = ixo_gl_context::create(window != nullptr);
    if (!gl)
        return D3DERR_NOTAVAILABLE;
    ixo_d3d9_device* d = new ixo_d3d9_device(d3d, std::move(gl));
    d->m_creation.AdapterOrdinal = adapter;
    d->m_creation.DeviceType = type;
    d->m_creation.hFocusWindow = focus;
    d->m_creation.BehaviorFlags = behavior;
    d->init_gl();
    D3DPRESENT_PARAMETERS p = *params;
    if (!p.hDeviceWindow)
        p.hDeviceWindow = focus;
    d->m_implicit = new ixo_d3d9_swap_chain(d, p, true);
    if (!d->m_implicit->valid())
    {
        d->Release();
        return D3DERR_INVALIDCALL;
    }
    if (p.EnableAutoDepthStencil)
        d->create_auto_depth_stencil(p);
    d->set_default_state();
    *device = d;
    return D3D_OK;
}

void ixo_d3d9_device::create_auto_depth_stencil(const D3DPRESENT_PARAMETERS& p)
{
    D3DPRESENT_PARAMETERS q{};
    m_implicit->GetPresentParameters(&q);
    D3DSURFACE_DESC d{};
    d.Format = p.AutoDepthStencilFormat;
    d.Type = D3DRTYPE_SURFACE;
    d.Usage = D3DUSAGE_DEPTHSTENCIL;
    d.Pool = D3DPOOL_DEFAULT;
    d.Width = q.BackBufferWidth;
    d.Height = q.BackBufferHeight;
    m_auto_depth = new ixo_d3d9_surface(this, this, d, ixo_d3d9_find_format(d.Format), 0, 0, false);
}

void ixo_d3d9_device::init_gl()
{
    make_current();
    glClipControl(GL_UPPER_LEFT, GL_ZERO_TO_ONE);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glDisable(GL_DITHER);
    glDisable(GL_FRAMEBUFFER_SRGB);
    glDisable(GL_MULTISAMPLE);
    glFrontFace(GL_CCW);
    glCreateFramebuffers(1, &m_fbo);
    glCreateFramebuffers(2, m_scratch_fbo.data());
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_fbo);
    glCreateBuffers(1, &m_ubo);
    glNamedBufferStorage(m_ubo, sizeof(ixo_d3d9_ff_uniforms), nullptr, GL_DYNAMIC_STORAGE_BIT);
    glBindBufferBase(GL_UNIFORM_BUFFER, 0, m_ubo);
    glCreateBuffers(1, &m_up_buffer);
    glCreateBuffers(1, &m_up_index_buffer);
    // A vertex without a diffuse colour is opaque white, as on Direct3D.
    glVertexAttrib4f(2, 1.f, 1.f, 1.f, 1.f);
    for (size_t i = 0; i < m_stages.size(); ++i)
    {
        glCreateSamplers(1, &m_stages[i].sampler);
        glBindSampler(static_cast<GLuint>(i), m_stages[i].sampler);
        m_bound_samplers[i] = m_stages[i].sampler;
    }
}

ixo_d3d9_device::~ixo_d3d9_device()
{
    delete m_auto_depth;
    m_auto_depth = nullptr;
    delete m_implicit;
    m_implicit = nullptr;
    make_current();
    for (auto& p : m_programs)
        glDeleteProgram(p.second);
    for (auto& v : m_vaos)
        glDeleteVertexArrays(1, &v.second);
    for (stage_state& s : m_stages)
        glDeleteSamplers(1, &s.sampler);
    glDeleteFramebuffers(1, &m_fbo);
    glDeleteFramebuffers(2, m_scratch_fbo.data());
    glDeleteBuffers(1, &m_ubo);
    glDeleteBuffers(1, &m_up_buffer);
    glDeleteBuffers(1, &m_up_index_buffer);
    m_gl.reset();
    m_d3d->Release();
}

void ixo_d3d9_device::make_current()
{
    m_gl->make_current();
}

void ixo_d3d9_device::set_default_state()
{
    m_rs.fill(0);
    m_rs[D3DRS_ZENABLE] = m_auto_depth ? D3DZB_TRUE : D3DZB_FALSE;
    m_rs[D3DRS_FILLMODE] = D3DFILL_SOLID;
    m_rs[D3DRS_SHADEMODE] = D3DSHADE_GOURAUD;
    m_rs[D3DRS_ZWRITEENABLE] = TRUE;
    m_rs[D3DRS_LASTPIXEL] = TRUE;
    m_rs[D3DRS_SRCBLEND] = D3DBLEND_ONE;
    m_rs[D3DRS_DESTBLEND] = D3DBLEND_ZERO;
    m_rs[D3DRS_CULLMODE] = D3DCULL_CCW;
    m_rs[D3DRS_ZFUNC] = D3DCMP_LESSEQUAL;
    m_rs[D3DRS_ALPHAFUNC] = D3DCMP_ALWAYS;
    m_rs[D3DRS_STENCILFAIL] = D3DSTENCILOP_KEEP;
    m_rs[D3DRS_STENCILZFAIL] = D3DSTENCILOP_KEEP;
    m_rs[D3DRS_STENCILPASS] = D3DSTENCILOP_KEEP;
    m_rs[D3DRS_STENCILFUNC] = D3DCMP_ALWAYS;
    m_rs[D3DRS_STENCILMASK] = 0xffffffff;
    m_rs[D3DRS_STENCILWRITEMASK] = 0xffffffff;
    m_rs[D3DRS_TEXTUREFACTOR] = 0xffffffff;
    m_rs[D3DRS_CLIPPING] = TRUE;
    m_rs[D3DRS_LIGHTING] = TRUE;
    m_rs[D3DRS_COLORVERTEX] = TRUE;
    m_rs[D3DRS_LOCALVIEWER] = TRUE;
    m_rs[D3DRS_DIFFUSEMATERIALSOURCE] = D3DMCS_COLOR1;
    m_rs[D3DRS_SPECULARMATERIALSOURCE] = D3DMCS_COLOR2;
    m_rs[D3DRS_AMBIENTMATERIALSOURCE] = D3DMCS_MATERIAL;
    m_rs[D3DRS_EMISSIVEMATERIALSOURCE] = D3DMCS_MATERIAL;
    m_rs[D3DRS_MULTISAMPLEANTIALIAS] = TRUE;
    m_rs[D3DRS_COLORWRITEENABLE] = 0xf;
    m_rs[D3DRS_BLENDOP] = D3DBLENDOP_ADD;
    m_world = m_view = m_proj = ixo_d3d9_identity();
    m_other_transforms.clear();
    m_lights.clear();
    m_material = D3DMATERIAL9{};
    m_fvf = 0;
    m_stream = nullptr;
    m_stream_offset = m_stream_stride = 0;
    m_indices = nullptr;
    for (size_t i = 0; i < m_stages.size(); ++i)
    {
        stage_state& s = m_stages[i];
        s.tss.fill(0);
        s.samp.fill(0);
        s.tss[D3DTSS_COLOROP] = i == 0 ? D3DTOP_MODULATE : D3DTOP_DISABLE;
        s.tss[D3DTSS_COLORARG1] = D3DTA_TEXTURE;
        s.tss[D3DTSS_COLORARG2] = D3DTA_CURRENT;
        s.tss[D3DTSS_ALPHAOP] = i == 0 ? D3DTOP_SELECTARG1 : D3DTOP_DISABLE;
        s.tss[D3DTSS_ALPHAARG1] = D3DTA_TEXTURE;
        s.tss[D3DTSS_ALPHAARG2] = D3DTA_CURRENT;
        s.tss[D3DTSS_TEXCOORDINDEX] = static_cast<DWORD>(i);
        s.samp[D3DSAMP_ADDRESSU] = s.samp[D3DSAMP_ADDRESSV] = s.samp[D3DSAMP_ADDRESSW] =
            D3DTADDRESS_WRAP;
        s.samp[D3DSAMP_MAGFILTER] = s.samp[D3DSAMP_MINFILTER] = D3DTEXF_POINT;
        s.samp[D3DSAMP_MIPFILTER] = D3DTEXF_NONE;
        s.texture = nullptr;
        s.sampler_dirty = true;
    }
    IDirect3DSurface9* back = nullptr;
    m_implicit->GetBackBuffer(0, D3DBACKBUFFER_TYPE_MONO, &back);
    m_render_target = as_surface(back);
    back->Release();
    m_depth_stencil = m_auto_depth;
    m_viewport =
        D3DVIEWPORT9{0, 0, m_render_target->desc().Width, m_render_target->desc().Height, 0.f, 1.f};
    m_scissor = whole(m_render_target);
    m_override = nullptr;
    m_in_scene = false;
    m_fbo_dirty = m_render_states_dirty = m_uniforms_dirty = m_viewport_dirty = true;
    m_program_dirty = true;
}

// ---------------------------------------------------------------------------------------
// Loss and reset

void ixo_d3d9_device::lose(UINT lost_reports)
{
    m_lost = true;
    m_lost_reports = lost_reports;
}

HRESULT ixo_d3d9_device::TestCooperativeLevel()
{
    if (!m_lost)
        return D3D_OK;
    if (m_lost_reports > 0)
    {
        --m_lost_reports;
        return D3DERR_DEVICELOST;
    }
    return D3DERR_DEVICENOTRESET;
}

HRESULT ixo_d3d9_device::Reset(D3DPRESENT_PARAMETERS* pPresentationParameters)
{
    if (!pPresentationParameters)
        return D3DERR_INVALIDCALL;
    if (m_lost && m_lost_reports > 0)
        return D3DERR_DEVICELOST;
    // Video-memory resources must be gone, as on Direct3D.
    if (m_live_default_resources > 0 || m_live_swap_chains > 0)
        return D3DERR_INVALIDCALL;
    D3DPRESENT_PARAMETERS p = *pPresentationParameters;
    if (!p.hDeviceWindow)
        p.hDeviceWindow = m_creation.hFocusWindow;
    if (p.EnableAutoDepthStencil)
    {
        const ixo_d3d9_format* depth = ixo_d3d9_find_format(p.AutoDepthStencilFormat);
        if (!depth || !depth->depth)
            return D3DERR_INVALIDCALL;
    }
    ixo_d3d9_swap_chain* chain = new ixo_d3d9_swap_chain(this, p, true);
    if (!chain->valid())
    {
        delete chain;
        return D3DERR_INVALIDCALL;
    }
    delete m_auto_depth;
    m_auto_depth = nullptr;
    delete m_implicit;
    m_implicit = chain;
    if (p.EnableAutoDepthStencil)
        create_auto_depth_stencil(p);
    set_default_state();
    m_lost = false;
    m_lost_reports = 0;
    return D3D_OK;
}

void ixo_d3d9_device::resource_created(D3DPOOL pool)
{
    if (pool == D3DPOOL_DEFAULT)
        ++m_live_default_resources;
}

void ixo_d3d9_device::resource_destroyed(D3DPOOL pool)
{
    if (pool == D3DPOOL_DEFAULT)
        --m_live_default_resources;
}

// ---------------------------------------------------------------------------------------
// Queries

HRESULT ixo_d3d9_device::GetDirect3D(IDirect3D9** ppD3D9)
{
    if (!ppD3D9)
        return D3DERR_INVALIDCALL;
    m_d3d->AddRef();
    *ppD3D9 = m_d3d;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetDeviceCaps(D3DCAPS9* pCaps)
{
    return m_d3d->GetDeviceCaps(m_creation.AdapterOrdinal, D3DDEVTYPE_HAL, pCaps);
}

HRESULT ixo_d3d9_device::GetCreationParameters(D3DDEVICE_CREATION_PARAMETERS* pParameters)
{
    if (!pParameters)
        return D3DERR_INVALIDCALL;
    *pParameters = m_creation;
    return D3D_OK;
}

// ---------------------------------------------------------------------------------------
// Swap chains

HRESULT ixo_d3d9_device::CreateAdditionalSwapChain(D3DPRESENT_PARAMETERS* pPresentationParameters,
                                                   IDirect3DSwapChain9** pSwapChain)
{
    if (!pSwapChain)
        return D3DERR_INVALIDCALL;
    *pSwapChain = nullptr;
    if (!pPresentationParameters || pPresentationParameters->BackBufferWidth == 0 ||
        pPresentationParameters->BackBufferHeight == 0)
        return D3DERR_INVALIDCALL;
    ixo_d3d9_swap_chain* chain = new ixo_d3d9_swap_chain(this, *pPresentationParameters, false);
    if (!chain->valid())
    {
        chain->Release();
        return D3DERR_INVALIDCALL;
    }
    *pSwapChain = chain;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetSwapChain(UINT iSwapChain, IDirect3DSwapChain9** pSwapChain)
{
    if (!pSwapChain || iSwapChain != 0)
        return D3DERR_INVALIDCALL;
    m_implicit->AddRef();
    *pSwapChain = m_implicit;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::Present(const RECT* pSourceRect, const RECT* pDestRect,
                                 HWND hDestWindowOverride, const RGNDATA* pDirtyRegion)
{
    return m_implicit->Present(pSourceRect, pDestRect, hDestWindowOverride, pDirtyRegion, 0);
}

HRESULT ixo_d3d9_device::GetBackBuffer(UINT iSwapChain, UINT iBackBuffer, D3DBACKBUFFER_TYPE Type,
                                       IDirect3DSurface9** ppBackBuffer)
{
    if (!ppBackBuffer || iSwapChain != 0)
        return D3DERR_INVALIDCALL;
    return m_implicit->GetBackBuffer(iBackBuffer, Type, ppBackBuffer);
}

// ---------------------------------------------------------------------------------------
// Resources

HRESULT ixo_d3d9_device::CreateTexture(UINT Width, UINT Height, UINT Levels, DWORD Usage,
                                       D3DFORMAT Format, D3DPOOL Pool,
                                       IDirect3DTexture9** ppTexture, HANDLE* pSharedHandle)
{
    if (!ppTexture)
        return D3DERR_INVALIDCALL;
    *ppTexture = nullptr;
    const ixo_d3d9_format* format = ixo_d3d9_find_format(Format);
    if (!ixo_d3d9_size_ok(Width, Height) || !format || format->depth || pSharedHandle ||
        Pool > D3DPOOL_SCRATCH || ((Usage & D3DUSAGE_RENDERTARGET) && Pool != D3DPOOL_DEFAULT) ||
        (Usage & D3DUSAGE_DEPTHSTENCIL))
        return D3DERR_INVALIDCALL;
    UINT max_levels = 1;
    for (UINT s = std::max(Width, Height); s > 1; s >>= 1)
        ++max_levels;
    if (Levels > max_levels)
        return D3DERR_INVALIDCALL;
    if (Levels == 0)
        Levels = max_levels;
    *ppTexture = new ixo_d3d9_texture(this, Width, Height, Levels, Usage, format, Pool);
    return D3D_OK;
}

HRESULT ixo_d3d9_device::CreateVertexBuffer(UINT Length, DWORD Usage, DWORD FVF, D3DPOOL Pool,
                                            IDirect3DVertexBuffer9** ppVertexBuffer,
                                            HANDLE* pSharedHandle)
{
    if (!ppVertexBuffer)
        return D3DERR_INVALIDCALL;
    *ppVertexBuffer = nullptr;
    if (!ixo_d3d9_buffer_size_ok(Length) || pSharedHandle || Pool > D3DPOOL_SCRATCH)
        return D3DERR_INVALIDCALL;
    *ppVertexBuffer = new ixo_d3d9_vertex_buffer(this, Length, Usage, FVF, Pool);
    return D3D_OK;
}

HRESULT ixo_d3d9_device::CreateIndexBuffer(UINT Length, DWORD Usage, D3DFORMAT Format, D3DPOOL Pool,
                                           IDirect3DIndexBuffer9** ppIndexBuffer,
                                           HANDLE* pSharedHandle)
{
    if (!ppIndexBuffer)
        return D3DERR_INVALIDCALL;
    *ppIndexBuffer = nullptr;
    if (!ixo_d3d9_buffer_size_ok(Length) || pSharedHandle || Pool > D3DPOOL_SCRATCH ||
        (Format != D3DFMT_INDEX16 && Format != D3DFMT_INDEX32))
        return D3DERR_INVALIDCALL;
    *ppIndexBuffer = new ixo_d3d9_index_buffer(this, Length, Usage, Format, Pool);
    return D3D_OK;
}

HRESULT ixo_d3d9_device::CreateRenderTarget(UINT Width, UINT Height, D3DFORMAT Format,
                                            D3DMULTISAMPLE_TYPE MultiSample, DWORD, BOOL Lockable,
                                            IDirect3DSurface9** ppSurface, HANDLE* pSharedHandle)
{
    if (!ppSurface)
        return D3DERR_INVALIDCALL;
    *ppSurface = nullptr;
    const ixo_d3d9_format* format = ixo_d3d9_find_format(Format);
    if (!ixo_d3d9_size_ok(Width, Height) || !format || format->depth || pSharedHandle ||
        MultiSample != D3DMULTISAMPLE_NONE)
        return D3DERR_INVALIDCALL;
    D3DSURFACE_DESC d{Format,
                      D3DRTYPE_SURFACE,
                      D3DUSAGE_RENDERTARGET,
                      D3DPOOL_DEFAULT,
                      D3DMULTISAMPLE_NONE,
                      0,
                      Width,
                      Height};
    *ppSurface = new ixo_d3d9_surface(this, nullptr, d, format, 0, 0, Lockable != FALSE);
    return D3D_OK;
}

HRESULT ixo_d3d9_device::CreateDepthStencilSurface(UINT Width, UINT Height, D3DFORMAT Format,
                                                   D3DMULTISAMPLE_TYPE MultiSample, DWORD, BOOL,
                                                   IDirect3DSurface9** ppSurface,
                                                   HANDLE* pSharedHandle)
{
    if (!ppSurface)
        return D3DERR_INVALIDCALL;
    *ppSurface = nullptr;
    const ixo_d3d9_format* format = ixo_d3d9_find_format(Format);
    if (!ixo_d3d9_size_ok(Width, Height) || !format || !format->depth || pSharedHandle ||
        MultiSample != D3DMULTISAMPLE_NONE)
        return D3DERR_INVALIDCALL;
    D3DSURFACE_DESC d{Format,
                      D3DRTYPE_SURFACE,
                      D3DUSAGE_DEPTHSTENCIL,
                      D3DPOOL_DEFAULT,
                      D3DMULTISAMPLE_NONE,
                      0,
                      Width,
                      Height};
    *ppSurface = new ixo_d3d9_surface(this, nullptr, d, format, 0, 0, false);
    return D3D_OK;
}

HRESULT ixo_d3d9_device::CreateOffscreenPlainSurface(UINT Width, UINT Height, D3DFORMAT Format,
                                                     D3DPOOL Pool, IDirect3DSurface9** ppSurface,
                                                     HANDLE* pSharedHandle)
{
    if (!ppSurface)
        return D3DERR_INVALIDCALL;
    *ppSurface = nullptr;
    const ixo_d3d9_format* format = ixo_d3d9_find_format(Format);
    if (!ixo_d3d9_size_ok(Width, Height) || !format || format->depth || pSharedHandle ||
        (Pool != D3DPOOL_DEFAULT && Pool != D3DPOOL_SYSTEMMEM && Pool != D3DPOOL_SCRATCH))
        return D3DERR_INVALIDCALL;
    D3DSURFACE_DESC d{Format, D3DRTYPE_SURFACE, 0, Pool, D3DMULTISAMPLE_NONE, 0, Width, Height};
    *ppSurface = new ixo_d3d9_surface(this, nullptr, d, format, 0, 0, true);
    return D3D_OK;
}

// ---------------------------------------------------------------------------------------
// Copies

void ixo_d3d9_device::attach(GLuint fbo, ixo_d3d9_surface* surface)
{
    glNamedFramebufferTexture(fbo, GL_COLOR_ATTACHMENT0, 0, 0);
    glNamedFramebufferTexture(fbo, GL_DEPTH_STENCIL_ATTACHMENT, 0, 0);
    if (!surface)
        return;
    if (surface->format()->depth)
    {
        GLenum point = surface->format()->format == D3DFMT_D16 ? GL_DEPTH_ATTACHMENT
                                                               : GL_DEPTH_STENCIL_ATTACHMENT;
        glNamedFramebufferTexture(fbo, point, surface->texture(), surface->level());
    }
    else
    {
        glNamedFramebufferTexture(fbo, GL_COLOR_ATTACHMENT0, surface->texture(), surface->level());
        glNamedFramebufferReadBuffer(fbo, GL_COLOR_ATTACHMENT0);
        glNamedFramebufferDrawBuffer(fbo, GL_COLOR_ATTACHMENT0);
    }
}

HRESULT ixo_d3d9_device::GetRenderTargetData(IDirect3DSurface9* pRenderTarget,
                                             IDirect3DSurface9* pDestSurface)
{
    ixo_d3d9_surface* src = as_surface(pRenderTarget);
    ixo_d3d9_surface* dst = as_surface(pDestSurface);
    if (!src || !dst || src == dst || src->device() != this || dst->device() != this ||
        !src->is_gpu() || dst->is_gpu() || src->format()->depth ||
        src->desc().Format != dst->desc().Format || src->desc().Width != dst->desc().Width ||
        src->desc().Height != dst->desc().Height || dst->is_locked() || src->is_locked())
        return D3DERR_INVALIDCALL;
    make_current();
    glGetTextureImage(src->texture(), src->level(), src->format()->pixel_format,
                      src->format()->pixel_type, static_cast<GLsizei>(dst->memory().size()),
                      dst->memory().data());
    return D3D_OK;
}

HRESULT ixo_d3d9_device::StretchRect(IDirect3DSurface9* pSourceSurface, const RECT* pSourceRect,
                                     IDirect3DSurface9* pDestSurface, const RECT* pDestRect,
                                     D3DTEXTUREFILTERTYPE Filter)
{
    ixo_d3d9_surface* src = as_surface(pSourceSurface);
    ixo_d3d9_surface* dst = as_surface(pDestSurface);
    if (!src || !dst || src == dst || src->device() != this || dst->device() != this ||
        !src->is_gpu() || !dst->is_gpu() || src->is_locked() || dst->is_locked() ||
        Filter > D3DTEXF_LINEAR)
        return D3DERR_INVALIDCALL;
    RECT s = pSourceRect ? *pSourceRect : whole(src);
    RECT d = pDestRect ? *pDestRect : whole(dst);
    if (!rect_inside(s, src) || !rect_inside(d, dst))
        return D3DERR_INVALIDCALL;
    bool depth = src->format()->depth;
    if (depth != dst->format()->depth)
        return D3DERR_INVALIDCALL;
    // Depth copies move whole surfaces of one size and format.
    if (depth &&
        (pSourceRect || pDestRect || src->desc().Format != dst->desc().Format ||
         src->desc().Width != dst->desc().Width || src->desc().Height != dst->desc().Height))
        return D3DERR_INVALIDCALL;
    make_current();
    attach(m_scratch_fbo[0], src);
    attach(m_scratch_fbo[1], dst);
    glDisable(GL_SCISSOR_TEST);
    GLbitfield mask = depth ? (GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT) : GL_COLOR_BUFFER_BIT;
    GLenum filter = (!depth && Filter == D3DTEXF_LINEAR) ? GL_LINEAR : GL_NEAREST;
    glBlitNamedFramebuffer(m_scratch_fbo[0], m_scratch_fbo[1], s.left, s.top, s.right, s.bottom,
                           d.left, d.top, d.right, d.bottom, mask, filter);
    m_render_states_dirty = true;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::ColorFill(IDirect3DSurface9* pSurface, const RECT* pRect, D3DCOLOR color)
{
    ixo_d3d9_surface* s = as_surface(pSurface);
    if (!s || s->device() != this || s->format()->depth || s->is_locked() || !s->is_gpu())
        return D3DERR_INVALIDCALL;
    RECT r = pRect ? *pRect : whole(s);
    if (!rect_inside(r, s))
        return D3DERR_INVALIDCALL;
    make_current();
    attach(m_scratch_fbo[1], s);
    GLfloat c[4] = {((color >> 16) & 0xff) / 255.f, ((color >> 8) & 0xff) / 255.f,
                    (color & 0xff) / 255.f, ((color >> 24) & 0xff) / 255.f};
    glEnable(GL_SCISSOR_TEST);
    glScissor(r.left, r.top, r.right - r.left, r.bottom - r.top);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glClearNamedFramebufferfv(m_scratch_fbo[1], GL_COLOR, 0, c);
    m_render_states_dirty = true;
    return D3D_OK;
}

// ---------------------------------------------------------------------------------------
// Targets

HRESULT ixo_d3d9_device::SetRenderTarget(DWORD RenderTargetIndex, IDirect3DSurface9* pRenderTarget)
{
    ixo_d3d9_surface* s = as_surface(pRenderTarget);
    if (RenderTargetIndex != 0)
        return s ? D3DERR_INVALIDCALL : D3D_OK;
    if (!s || s->device() != this || !(s->desc().Usage & D3DUSAGE_RENDERTARGET) || !s->is_gpu())
        return D3DERR_INVALIDCALL;
    m_render_target = s;
    m_viewport = D3DVIEWPORT9{0, 0, s->desc().Width, s->desc().Height, 0.f, 1.f};
    m_scissor = whole(s);
    m_fbo_dirty = m_viewport_dirty = m_uniforms_dirty = m_render_states_dirty = true;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetRenderTarget(DWORD RenderTargetIndex,
                                         IDirect3DSurface9** ppRenderTarget)
{
    if (!ppRenderTarget)
        return D3DERR_INVALIDCALL;
    *ppRenderTarget = nullptr;
    if (RenderTargetIndex != 0)
        return D3DERR_INVALIDCALL;
    if (!m_render_target)
        return D3DERR_NOTFOUND;
    m_render_target->AddRef();
    *ppRenderTarget = m_render_target;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::SetDepthStencilSurface(IDirect3DSurface9* pNewZStencil)
{
    ixo_d3d9_surface* s = as_surface(pNewZStencil);
    if (s && (!s->format()->depth || s->device() != this))
        return D3DERR_INVALIDCALL;
    m_depth_stencil = s;
    m_fbo_dirty = m_render_states_dirty = true;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetDepthStencilSurface(IDirect3DSurface9** ppZStencilSurface)
{
    if (!ppZStencilSurface)
        return D3DERR_INVALIDCALL;
    *ppZStencilSurface = nullptr;
    if (!m_depth_stencil)
        return D3DERR_NOTFOUND;
    m_depth_stencil->AddRef();
    *ppZStencilSurface = m_depth_stencil;
    return D3D_OK;
}

void ixo_d3d9_device::unbind_surface(ixo_d3d9_surface* surface)
{
    if (!surface)
        return;
    if (m_render_target == surface)
        m_render_target = nullptr;
    if (m_depth_stencil == surface)
        m_depth_stencil = nullptr;
    make_current();
    // Drop every attachment so a later texture of the same name is not mistaken for it.
    attach(m_fbo, nullptr);
    attach(m_scratch_fbo[0], nullptr);
    attach(m_scratch_fbo[1], nullptr);
    m_fbo_dirty = true;
}

void ixo_d3d9_device::unbind_texture(ixo_d3d9_texture* texture)
{
    for (ixo_d3d9_program_override* e : m_effects)
        e->forget_texture(texture);
    for (stage_state& s : m_stages)
        if (s.texture == static_cast<IDirect3DBaseTexture9*>(texture))
            s.texture = nullptr;
    for (GLuint& bound : m_bound_textures)
        if (bound == texture->texture())
            bound = ~0u;
    m_program_dirty = true;
}

void ixo_d3d9_device::unbind_buffer(const void* buffer)
{
    if (m_stream == buffer)
        m_stream = nullptr;
    if (m_indices == buffer)
        m_indices = nullptr;
    m_bound_vao = 0;
}

void ixo_d3d9_device::bind_texture_unit(GLuint unit, GLuint texture)
{
    if (unit < m_bound_textures.size() && m_bound_textures[unit] == texture)
        return;
    glBindTextureUnit(unit, texture);
    if (unit < m_bound_textures.size())
        m_bound_textures[unit] = texture;
}

void ixo_d3d9_device::bind_sampler_unit(GLuint unit, GLuint sampler)
{
    if (unit < m_bound_samplers.size() && m_bound_samplers[unit] == sampler)
        return;
    glBindSampler(unit, sampler);
    if (unit < m_bound_samplers.size())
        m_bound_samplers[unit] = sampler;
}

void ixo_d3d9_device::forget_sampler(GLuint sampler)
{
    for (GLuint& bound : m_bound_samplers)
        if (bound == sampler)
            bound = 0;
}

// ---------------------------------------------------------------------------------------
// Scene and clear

HRESULT ixo_d3d9_device::BeginScene()
{
    if (m_in_scene)
        return D3DERR_INVALIDCALL;
    m_in_scene = true;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::EndScene()
{
    if (!m_in_scene)
        return D3DERR_INVALIDCALL;
    m_in_scene = false;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::Clear(DWORD Count, const D3DRECT* pRects, DWORD Flags, D3DCOLOR Color,
                               float Z, DWORD Stencil)
{
    if ((Count > 0 && !pRects) || !m_render_target ||
        (Flags & ~(D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER | D3DCLEAR_STENCIL)))
        return D3DERR_INVALIDCALL;
    if ((Flags & (D3DCLEAR_ZBUFFER | D3DCLEAR_STENCIL)) && !m_depth_stencil)
        return D3DERR_INVALIDCALL;
    if ((Flags & D3DCLEAR_STENCIL) && m_depth_stencil->desc().Format == D3DFMT_D16)
        return D3DERR_INVALIDCALL;
    if (Z < 0.f || Z > 1.f)
        return D3DERR_INVALIDCALL;
    make_current();
    apply_framebuffer();
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glStencilMask(0xff);
    glEnable(GL_SCISSOR_TEST);
    m_render_states_dirty = true;
    LONG vx = static_cast<LONG>(m_viewport.X), vy = static_cast<LONG>(m_viewport.Y);
    LONG vr = vx + static_cast<LONG>(m_viewport.Width);
    LONG vb = vy + static_cast<LONG>(m_viewport.Height);
    GLfloat c[4] = {((Color >> 16) & 0xff) / 255.f, ((Color >> 8) & 0xff) / 255.f,
                    (Color & 0xff) / 255.f, ((Color >> 24) & 0xff) / 255.f};
    GLint stencil = static_cast<GLint>(Stencil & 0xff);
    DWORD n = Count > 0 ? Count : 1;
    for (DWORD i = 0; i < n; ++i)
    {
        LONG l = vx, t = vy, r = vr, b = vb;
        if (Count > 0)
        {
            l = std::max(l, pRects[i].x1);
            t = std::max(t, pRects[i].y1);
            r = std::min(r, pRects[i].x2);
            b = std::min(b, pRects[i].y2);
        }
        if (l >= r || t >= b)
            continue;
        glScissor(l, t, r - l, b - t);
        if (Flags & D3DCLEAR_TARGET)
            glClearBufferfv(GL_COLOR, 0, c);
        if ((Flags & D3DCLEAR_ZBUFFER) && (Flags & D3DCLEAR_STENCIL))
            glClearBufferfi(GL_DEPTH_STENCIL, 0, Z, stencil);
        else if (Flags & D3DCLEAR_ZBUFFER)
            glClearBufferfv(GL_DEPTH, 0, &Z);
        else if (Flags & D3DCLEAR_STENCIL)
            glClearBufferiv(GL_STENCIL, 0, &stencil);
    }
    return D3D_OK;
}

// ---------------------------------------------------------------------------------------
// Transforms, viewport, material, lights

D3DMATRIX* ixo_d3d9_device::transform_slot(D3DTRANSFORMSTATETYPE state)
{
    DWORD s = static_cast<DWORD>(state);
    if (s == D3DTS_VIEW)
        return &m_view;
    if (s == D3DTS_PROJECTION)
        return &m_proj;
    if (s == static_cast<DWORD>(D3DTS_WORLD))
        return &m_world;
    if ((s >= D3DTS_TEXTURE0 && s <= D3DTS_TEXTURE0 + 7) || (s > 256 && s < 512))
    {
        auto it = m_other_transforms.find(s);
        if (it == m_other_transforms.end())
            it = m_other_transforms.emplace(s, ixo_d3d9_identity()).first;
        return &it->second;
    }
    return nullptr;
}

HRESULT ixo_d3d9_device::SetTransform(D3DTRANSFORMSTATETYPE State, const D3DMATRIX* pMatrix)
{
    D3DMATRIX* slot = transform_slot(State);
    if (!slot || !pMatrix)
        return D3DERR_INVALIDCALL;
    *slot = *pMatrix;
    m_uniforms_dirty = true;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetTransform(D3DTRANSFORMSTATETYPE State, D3DMATRIX* pMatrix)
{
    D3DMATRIX* slot = transform_slot(State);
    if (!slot || !pMatrix)
        return D3DERR_INVALIDCALL;
    *pMatrix = *slot;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::MultiplyTransform(D3DTRANSFORMSTATETYPE State, const D3DMATRIX* pMatrix)
{
    D3DMATRIX* slot = transform_slot(State);
    if (!slot || !pMatrix)
        return D3DERR_INVALIDCALL;
    *slot = ixo_d3d9_multiply(*pMatrix, *slot);
    m_uniforms_dirty = true;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::SetViewport(const D3DVIEWPORT9* pViewport)
{
    if (!pViewport || !m_render_target || pViewport->Width == 0 || pViewport->Height == 0)
        return D3DERR_INVALIDCALL;
    const D3DVIEWPORT9& v = *pViewport;
    std::uint64_t right = std::uint64_t(v.X) + v.Width;
    std::uint64_t bottom = std::uint64_t(v.Y) + v.Height;
    if (right > m_render_target->desc().Width || bottom > m_render_target->desc().Height ||
        !(v.MinZ >= 0.f && v.MinZ <= 1.f && v.MaxZ >= 0.f && v.MaxZ <= 1.f))
        return D3DERR_INVALIDCALL;
    m_viewport = v;
    m_viewport_dirty = m_uniforms_dirty = true;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetViewport(D3DVIEWPORT9* pViewport)
{
    if (!pViewport)
        return D3DERR_INVALIDCALL;
    *pViewport = m_viewport;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::SetMaterial(const D3DMATERIAL9* pMaterial)
{
    if (!pMaterial)
        return D3DERR_INVALIDCALL;
    m_material = *pMaterial;
    m_uniforms_dirty = true;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetMaterial(D3DMATERIAL9* pMaterial)
{
    if (!pMaterial)
        return D3DERR_INVALIDCALL;
    *pMaterial = m_material;
    return D3D_OK;
}

namespace
{
constexpr DWORD k_max_light_index = 4096;

D3DLIGHT9 default_light()
{
    D3DLIGHT9 l{};
    l.Type = D3DLIGHT_DIRECTIONAL;
    l.Diffuse = D3DCOLORVALUE{1.f, 1.f, 1.f, 0.f};
    l.Direction = D3DVECTOR{0.f, 0.f, 1.f};
    return l;
}
} // namespace

HRESULT ixo_d3d9_device::SetLight(DWORD Index, const D3DLIGHT9* pLight)
{
    if (!pLight || Index >= k_max_light_index)
        return D3DERR_INVALIDCALL;
    const D3DLIGHT9& l = *pLight;
    if (l.Type != D3DLIGHT_POINT && l.Type != D3DLIGHT_DIRECTIONAL && l.Type != D3DLIGHT_SPOT)
        return D3DERR_INVALIDCALL;
    if (l.Type != D3DLIGHT_DIRECTIONAL &&
        (l.Range < 0.f || l.Attenuation0 < 0.f || l.Attenuation1 < 0.f || l.Attenuation2 < 0.f ||
         (l.Attenuation0 == 0.f && l.Attenuation1 == 0.f && l.Attenuation2 == 0.f)))
        return D3DERR_INVALIDCALL;
    if (l.Type == D3DLIGHT_DIRECTIONAL && l.Direction.x == 0.f && l.Direction.y == 0.f &&
        l.Direction.z == 0.f)
        return D3DERR_INVALIDCALL;
    if (m_lights.size() <= Index)
        m_lights.resize(Index + 1, light_slot{default_light(), false, false});
    m_lights[Index].light = l;
    m_lights[Index].set = true;
    m_uniforms_dirty = m_program_dirty = true;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetLight(DWORD Index, D3DLIGHT9* pLight)
{
    if (!pLight || Index >= m_lights.size() || !m_lights[Index].set)
        return D3DERR_INVALIDCALL;
    *pLight = m_lights[Index].light;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::LightEnable(DWORD Index, BOOL Enable)
{
    if (Index >= k_max_light_index)
        return D3DERR_INVALIDCALL;
    if (m_lights.size() <= Index)
        m_lights.resize(Index + 1, light_slot{default_light(), false, false});
    m_lights[Index].set = true;
    if (m_lights[Index].enabled != (Enable != FALSE))
    {
        m_lights[Index].enabled = Enable != FALSE;
        m_uniforms_dirty = m_program_dirty = true;
    }
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetLightEnable(DWORD Index, BOOL* pEnable)
{
    if (!pEnable || Index >= m_lights.size() || !m_lights[Index].set)
        return D3DERR_INVALIDCALL;
    *pEnable = m_lights[Index].enabled ? TRUE : FALSE;
    return D3D_OK;
}

// ---------------------------------------------------------------------------------------
// States

HRESULT ixo_d3d9_device::SetRenderState(D3DRENDERSTATETYPE State, DWORD Value)
{
    DWORD s = static_cast<DWORD>(State);
    if (s >= m_rs.size())
        return D3DERR_INVALIDCALL;
    if (m_rs[s] == Value)
        return D3D_OK;
    m_rs[s] = Value;
    switch (s)
    {
    case D3DRS_AMBIENT:
    case D3DRS_TEXTUREFACTOR:
    case D3DRS_ALPHAREF:
        m_uniforms_dirty = true;
        break;
    case D3DRS_LIGHTING:
    case D3DRS_COLORVERTEX:
    case D3DRS_NORMALIZENORMALS:
    case D3DRS_SPECULARENABLE:
    case D3DRS_LOCALVIEWER:
    case D3DRS_DIFFUSEMATERIALSOURCE:
    case D3DRS_SPECULARMATERIALSOURCE:
    case D3DRS_AMBIENTMATERIALSOURCE:
    case D3DRS_EMISSIVEMATERIALSOURCE:
    case D3DRS_ALPHATESTENABLE:
    case D3DRS_ALPHAFUNC:
        m_program_dirty = true;
        break;
    default:
        m_render_states_dirty = true;
        break;
    }
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetRenderState(D3DRENDERSTATETYPE State, DWORD* pValue)
{
    DWORD s = static_cast<DWORD>(State);
    if (s >= m_rs.size() || !pValue)
        return D3DERR_INVALIDCALL;
    *pValue = m_rs[s];
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetTexture(DWORD Stage, IDirect3DBaseTexture9** ppTexture)
{
    if (!ppTexture || Stage >= m_stages.size())
        return D3DERR_INVALIDCALL;
    *ppTexture = m_stages[Stage].texture;
    if (*ppTexture)
        (*ppTexture)->AddRef();
    return D3D_OK;
}

HRESULT ixo_d3d9_device::SetTexture(DWORD Stage, IDirect3DBaseTexture9* pTexture)
{
    if (Stage >= m_stages.size())
        return D3DERR_INVALIDCALL;
    if (pTexture &&
        (pTexture->GetType() != D3DRTYPE_TEXTURE ||
         static_cast<ixo_d3d9_texture*>(static_cast<IDirect3DTexture9*>(pTexture))->device() !=
             this))
        return D3DERR_INVALIDCALL;
    if ((m_stages[Stage].texture == nullptr) != (pTexture == nullptr))
        m_program_dirty = true;
    m_stages[Stage].texture = pTexture;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetTextureStageState(DWORD Stage, D3DTEXTURESTAGESTATETYPE Type,
                                              DWORD* pValue)
{
    DWORD t = static_cast<DWORD>(Type);
    if (!pValue || Stage >= m_stages.size() || t >= m_stages[0].tss.size())
        return D3DERR_INVALIDCALL;
    *pValue = m_stages[Stage].tss[t];
    return D3D_OK;
}

HRESULT ixo_d3d9_device::SetTextureStageState(DWORD Stage, D3DTEXTURESTAGESTATETYPE Type,
                                              DWORD Value)
{
    DWORD t = static_cast<DWORD>(Type);
    if (Stage >= m_stages.size() || t >= m_stages[0].tss.size())
        return D3DERR_INVALIDCALL;
    if (m_stages[Stage].tss[t] != Value)
    {
        m_stages[Stage].tss[t] = Value;
        m_program_dirty = true;
    }
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetSamplerState(DWORD Sampler, D3DSAMPLERSTATETYPE Type, DWORD* pValue)
{
    DWORD t = static_cast<DWORD>(Type);
    if (!pValue || Sampler >= m_stages.size() || t >= m_stages[0].samp.size())
        return D3DERR_INVALIDCALL;
    *pValue = m_stages[Sampler].samp[t];
    return D3D_OK;
}

HRESULT ixo_d3d9_device::SetSamplerState(DWORD Sampler, D3DSAMPLERSTATETYPE Type, DWORD Value)
{
    DWORD t = static_cast<DWORD>(Type);
    if (Sampler >= m_stages.size() || t >= m_stages[0].samp.size())
        return D3DERR_INVALIDCALL;
    if (m_stages[Sampler].samp[t] != Value)
    {
        m_stages[Sampler].samp[t] = Value;
        m_stages[Sampler].sampler_dirty = true;
    }
    return D3D_OK;
}

HRESULT ixo_d3d9_device::SetScissorRect(const RECT* pRect)
{
    if (!pRect)
    {
        m_render_states_dirty = true;
        return D3D_OK;
    }
    if (pRect->left > pRect->right || pRect->top > pRect->bottom)
        return D3DERR_INVALIDCALL;
    m_scissor = *pRect;
    m_render_states_dirty = true;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetScissorRect(RECT* pRect)
{
    if (!pRect)
        return D3DERR_INVALIDCALL;
    *pRect = m_scissor;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::SetFVF(DWORD FVF)
{
    if (m_fvf != FVF)
    {
        m_fvf = FVF;
        m_program_dirty = true;
    }
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetFVF(DWORD* pFVF)
{
    if (!pFVF)
        return D3DERR_INVALIDCALL;
    *pFVF = m_fvf;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::SetStreamSource(UINT StreamNumber, IDirect3DVertexBuffer9* pStreamData,
                                         UINT OffsetInBytes, UINT Stride)
{
    if (StreamNumber != 0)
        return pStreamData ? D3DERR_INVALIDCALL : D3D_OK;
    if (pStreamData && (Stride == 0 || Stride > 255 ||
                        static_cast<ixo_d3d9_vertex_buffer*>(pStreamData)->m_data.device != this))
        return D3DERR_INVALIDCALL;
    m_stream = static_cast<ixo_d3d9_vertex_buffer*>(pStreamData);
    m_stream_offset = pStreamData ? OffsetInBytes : 0;
    m_stream_stride = pStreamData ? Stride : 0;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetStreamSource(UINT StreamNumber, IDirect3DVertexBuffer9** ppStreamData,
                                         UINT* pOffsetInBytes, UINT* pStride)
{
    if (!ppStreamData || !pOffsetInBytes || !pStride || StreamNumber != 0)
        return D3DERR_INVALIDCALL;
    *ppStreamData = m_stream;
    if (m_stream)
        m_stream->AddRef();
    *pOffsetInBytes = m_stream_offset;
    *pStride = m_stream_stride;
    return D3D_OK;
}

HRESULT ixo_d3d9_device::SetIndices(IDirect3DIndexBuffer9* pIndexData)
{
    if (pIndexData && static_cast<ixo_d3d9_index_buffer*>(pIndexData)->m_data.device != this)
        return D3DERR_INVALIDCALL;
    m_indices = static_cast<ixo_d3d9_index_buffer*>(pIndexData);
    return D3D_OK;
}

HRESULT ixo_d3d9_device::GetIndices(IDirect3DIndexBuffer9** ppIndexData)
{
    if (!ppIndexData)
        return D3DERR_INVALIDCALL;
    *ppIndexData = m_indices;
    if (m_indices)
        m_indices->AddRef();
    return D3D_OK;
}

void ixo_d3d9_device::remove_effect(ixo_d3d9_program_override* effect)
{
    m_effects.erase(std::remove(m_effects.begin(), m_effects.end(), effect), m_effects.end());
    if (m_override == effect)
        set_program_override(nullptr);
}

void ixo_d3d9_device::set_program_override(ixo_d3d9_program_override* program)
{
    m_override = program;
    m_program_dirty = true;
}
