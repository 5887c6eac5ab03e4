// Surfaces, textures, vertex and index buffers and swap chains.
//
// Video-memory images are GL textures whose row 0 is the top of the image (the device
// draws with an upper-left origin), so pixels move between memory and GL unflipped.

#include "d3d9_internal.h"

#include <algorithm>
#include <new>

namespace
{

const ixo_d3d9_format k_formats[] = {
    {D3DFMT_A8R8G8B8,
     GL_RGBA8,
     GL_BGRA,
     GL_UNSIGNED_BYTE,
     4,
     false,
     {GL_RED, GL_GREEN, GL_BLUE, GL_ALPHA}},
    {D3DFMT_X8R8G8B8,
     GL_RGBA8,
     GL_BGRA,
     GL_UNSIGNED_BYTE,
     4,
     false,
     {GL_RED, GL_GREEN, GL_BLUE, GL_ONE}},
    {D3DFMT_A8, GL_R8, GL_RED, GL_UNSIGNED_BYTE, 1, false, {GL_ZERO, GL_ZERO, GL_ZERO, GL_RED}},
    {D3DFMT_L8, GL_R8, GL_RED, GL_UNSIGNED_BYTE, 1, false, {GL_RED, GL_RED, GL_RED, GL_ONE}},
    {D3DFMT_R32F, GL_R32F, GL_RED, GL_FLOAT, 4, false, {GL_RED, GL_ONE, GL_ONE, GL_ONE}},
    {D3DFMT_A32B32G32R32F,
     GL_RGBA32F,
     GL_RGBA,
     GL_FLOAT,
     16,
     false,
     {GL_RED, GL_GREEN, GL_BLUE, GL_ALPHA}},
    {D3DFMT_D24S8,
     GL_DEPTH24_STENCIL8,
     GL_DEPTH_STENCIL,
     GL_UNSIGNED_INT_24_8,
     4,
     true,
     {GL_RED, GL_GREEN, GL_BLUE, GL_ALPHA}},
    {D3DFMT_D24X8,
     GL_DEPTH24_STENCIL8,
     GL_DEPTH_STENCIL,
     GL_UNSIGNED_INT_24_8,
     4,
     true,
     {GL_RED, GL_GREEN, GL_BLUE, GL_ALPHA}},
    {D3DFMT_D16,
     GL_DEPTH_COMPONENT16,
     GL_DEPTH_COMPONENT,
     GL_UNSIGNED_SHORT,
     2,
     true,
     {GL_RED, GL_GREEN, GL_BLUE, GL_ALPHA}},
};

// Larger sizes are refused rather than attempted.
constexpr UINT k_max_dimension = 16384;
constexpr UINT k_max_buffer = 1u << 30;

GLuint make_texture(const ixo_d3d9_format* format, UINT width, UINT height, UINT levels)
{
    GLuint texture = 0;
    glCreateTextures(GL_TEXTURE_2D, 1, &texture);
    glTextureStorage2D(texture, static_cast<GLsizei>(levels), format->internal_format,
                       static_cast<GLsizei>(width), static_cast<GLsizei>(height));
    if (!format->depth)
        glTextureParameteriv(texture, GL_TEXTURE_SWIZZLE_RGBA, format->swizzle.data());
    glTextureParameteri(texture, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(levels) - 1);
    glTextureParameteri(texture, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTextureParameteri(texture, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    return texture;
}

} // namespace

const ixo_d3d9_format* ixo_d3d9_find_format(D3DFORMAT format)
{
    for (const ixo_d3d9_format& f : k_formats)
        if (f.format == format)
            return &f;
    return nullptr;
}

// ---------------------------------------------------------------------------------------
// Surface

ixo_d3d9_surface::ixo_d3d9_surface(ixo_d3d9_device* device, IUnknown* container,
                                   const D3DSURFACE_DESC& desc, const ixo_d3d9_format* format,
                                   GLuint texture, GLint level, bool lockable)
    : m_device(device), m_desc(desc), m_format(format), m_texture(texture), m_level(level),
      m_lockable(lockable)
{
    m_container = container;
    bool video = desc.Pool != D3DPOOL_SYSTEMMEM && desc.Pool != D3DPOOL_SCRATCH;
    if (!container)
    {
        m_device->AddRef();
        m_device->resource_created(desc.Pool);
    }
    if (video && m_texture == 0)
    {
        m_device->make_current();
        m_texture = make_texture(format, desc.Width, desc.Height, 1);
        m_owns_texture = true;
    }
    if (!video)
        m_memory.assign(static_cast<size_t>(pitch()) * desc.Height, 0);
}

ixo_d3d9_surface::~ixo_d3d9_surface()
{
    m_device->unbind_surface(this);
    if (m_owns_texture)
    {
        m_device->make_current();
        glDeleteTextures(1, &m_texture);
    }
    if (!m_container)
    {
        m_device->resource_destroyed(m_desc.Pool);
        m_device->Release();
    }
}

HRESULT ixo_d3d9_surface::GetDevice(IDirect3DDevice9** ppDevice)
{
    if (!ppDevice)
        return D3DERR_INVALIDCALL;
    m_device->AddRef();
    *ppDevice = m_device;
    return D3D_OK;
}

HRESULT ixo_d3d9_surface::GetDesc(D3DSURFACE_DESC* pDesc)
{
    if (!pDesc)
        return D3DERR_INVALIDCALL;
    *pDesc = m_desc;
    return D3D_OK;
}

HRESULT ixo_d3d9_surface::LockRect(D3DLOCKED_RECT* pLockedRect, const RECT* pRect, DWORD Flags)
{
    if (!pLockedRect || m_locked || !m_lockable || m_format->depth)
        return D3DERR_INVALIDCALL;
    RECT r = {0, 0, static_cast<LONG>(m_desc.Width), static_cast<LONG>(m_desc.Height)};
    if (pRect)
    {
        if (pRect->left < 0 || pRect->top < 0 || pRect->left >= pRect->right ||
            pRect->top >= pRect->bottom || pRect->right > r.right || pRect->bottom > r.bottom)
            return D3DERR_INVALIDCALL;
        r = *pRect;
    }
    if (is_gpu())
    {
        m_memory.resize(static_cast<size_t>(pitch()) * m_desc.Height);
        if (!(Flags & D3DLOCK_DISCARD))
        {
            m_device->make_current();
            glGetTextureImage(m_texture, m_level, m_format->pixel_format, m_format->pixel_type,
                              static_cast<GLsizei>(m_memory.size()), m_memory.data());
        }
    }
    m_locked = true;
    m_lock_flags = Flags;
    pLockedRect->Pitch = static_cast<INT>(pitch());
    pLockedRect->pBits = m_memory.data() + static_cast<size_t>(r.top) * pitch() +
                         static_cast<size_t>(r.left) * m_format->bytes_per_pixel;
    return D3D_OK;
}

HRESULT ixo_d3d9_surface::UnlockRect()
{
    if (!m_locked)
        return D3DERR_INVALIDCALL;
    m_locked = false;
    if (is_gpu())
    {
        if (!(m_lock_flags & D3DLOCK_READONLY))
        {
            m_device->make_current();
            glTextureSubImage2D(m_texture, m_level, 0, 0, static_cast<GLsizei>(m_desc.Width),
                                static_cast<GLsizei>(m_desc.Height), m_format->pixel_format,
                                m_format->pixel_type, m_memory.data());
            if (m_parent_texture)
                m_parent_texture->level_changed(static_cast<UINT>(m_level));
        }
        std::vector<std::uint8_t>().swap(m_memory);
    }
    return D3D_OK;
}

// ---------------------------------------------------------------------------------------
// Texture

ixo_d3d9_texture::ixo_d3d9_texture(ixo_d3d9_device* device, UINT width, UINT height, UINT levels,
                                   DWORD usage, const ixo_d3d9_format* format, D3DPOOL pool)
    : m_device(device), m_usage(usage), m_pool(pool)
{
    m_device->AddRef();
    m_device->resource_created(pool);
    m_device->make_current();
    m_texture = make_texture(format, width, height, levels);
    for (UINT i = 0; i < levels; ++i)
    {
        D3DSURFACE_DESC d{};
        d.Format = format->format;
        d.Type = D3DRTYPE_SURFACE;
        d.Usage = usage & (D3DUSAGE_RENDERTARGET | D3DUSAGE_DYNAMIC);
        d.Pool = pool;
        d.Width = std::max(1u, width >> i);
        d.Height = std::max(1u, height >> i);
        bool lockable = !(usage & D3DUSAGE_RENDERTARGET);
        m_levels.push_back(new ixo_d3d9_surface(device, static_cast<IDirect3DTexture9*>(this), d,
                                                format, m_texture, static_cast<GLint>(i),
                                                lockable));
        m_levels.back()->set_parent_texture(this);
    }
}

ixo_d3d9_texture::~ixo_d3d9_texture()
{
    m_device->unbind_texture(this);
    for (ixo_d3d9_surface* s : m_levels)
        delete s;
    m_device->make_current();
    glDeleteTextures(1, &m_texture);
    m_device->resource_destroyed(m_pool);
    m_device->Release();
}

HRESULT ixo_d3d9_texture::GetDevice(IDirect3DDevice9** ppDevice)
{
    if (!ppDevice)
        return D3DERR_INVALIDCALL;
    m_device->AddRef();
    *ppDevice = m_device;
    return D3D_OK;
}

HRESULT ixo_d3d9_texture::GetLevelDesc(UINT Level, D3DSURFACE_DESC* pDesc)
{
    if (Level >= m_levels.size() || !pDesc)
        return D3DERR_INVALIDCALL;
    *pDesc = m_levels[Level]->desc();
    pDesc->Usage = m_usage;
    return D3D_OK;
}

HRESULT ixo_d3d9_texture::GetSurfaceLevel(UINT Level, IDirect3DSurface9** ppSurfaceLevel)
{
    if (Level >= m_levels.size() || !ppSurfaceLevel)
        return D3DERR_INVALIDCALL;
    AddRef();
    *ppSurfaceLevel = m_levels[Level];
    return D3D_OK;
}

HRESULT ixo_d3d9_texture::LockRect(UINT Level, D3DLOCKED_RECT* pLockedRect, const RECT* pRect,
                                   DWORD Flags)
{
    if (Level >= m_levels.size())
        return D3DERR_INVALIDCALL;
    return m_levels[Level]->LockRect(pLockedRect, pRect, Flags);
}

HRESULT ixo_d3d9_texture::UnlockRect(UINT Level)
{
    if (Level >= m_levels.size())
        return D3DERR_INVALIDCALL;
    return m_levels[Level]->UnlockRect();
}

void ixo_d3d9_texture::level_changed(UINT level)
{
    if (level == 0 && (m_usage & D3DUSAGE_AUTOGENMIPMAP) && m_levels.size() > 1)
        glGenerateTextureMipmap(m_texture);
}

// ---------------------------------------------------------------------------------------
// Buffers

ixo_d3d9_buffer_data::ixo_d3d9_buffer_data(ixo_d3d9_device* owner, UINT size, DWORD use,
                                           D3DPOOL where)
    : device(owner), length(size), usage(use), pool(where)
{
    device->AddRef();
    device->resource_created(pool);
    memory.assign(length, 0);
    device->make_current();
    glCreateBuffers(1, &buffer);
    glNamedBufferStorage(buffer, length, memory.data(), GL_DYNAMIC_STORAGE_BIT);
}

ixo_d3d9_buffer_data::~ixo_d3d9_buffer_data()
{
    device->make_current();
    glDeleteBuffers(1, &buffer);
    device->resource_destroyed(pool);
    device->Release();
}

HRESULT ixo_d3d9_buffer_data::lock(UINT offset, UINT size, void** data, DWORD flags)
{
    if (!data || locked)
        return D3DERR_INVALIDCALL;
    if (offset > length || (size != 0 && size > length - offset))
    {
        *data = nullptr;
        return D3DERR_INVALIDCALL;
    }
    if (offset == 0 && size == 0)
        size = length;
    else if (size == 0)
        size = length - offset;
    locked = true;
    lock_flags = flags;
    lock_offset = offset;
    lock_size = size;
    *data = memory.data() + offset;
    return D3D_OK;
}

HRESULT ixo_d3d9_buffer_data::unlock()
{
    if (!locked)
        return D3DERR_INVALIDCALL;
    locked = false;
    if (!(lock_flags & D3DLOCK_READONLY) && lock_size > 0)
    {
        device->make_current();
        glNamedBufferSubData(buffer, lock_offset, lock_size, memory.data() + lock_offset);
        ++version;
    }
    return D3D_OK;
}

ixo_d3d9_vertex_buffer::ixo_d3d9_vertex_buffer(ixo_d3d9_device* device, UINT length, DWORD usage,
                                               DWORD fvf, D3DPOOL pool)
    : m_data(device, length, usage, pool), m_fvf(fvf)
{
}

ixo_d3d9_vertex_buffer::~ixo_d3d9_vertex_buffer()
{
    // The device forgets the buffer before the GL name goes.
    m_data.device->unbind_buffer(this);
}

HRESULT ixo_d3d9_vertex_buffer::GetDevice(IDirect3DDevice9** ppDevice)
{
    if (!ppDevice)
        return D3DERR_INVALIDCALL;
    m_data.device->AddRef();
    *ppDevice = m_data.device;
    return D3D_OK;
}

HRESULT ixo_d3d9_vertex_buffer::GetDesc(D3DVERTEXBUFFER_DESC* pDesc)
{
    if (!pDesc)
        return D3DERR_INVALIDCALL;
    pDesc->Format = D3DFMT_VERTEXDATA;
    pDesc->Type = D3DRTYPE_VERTEXBUFFER;
    pDesc->Usage = m_data.usage;
    pDesc->Pool = m_data.pool;
    pDesc->Size = m_data.length;
    pDesc->FVF = m_fvf;
    return D3D_OK;
}

ixo_d3d9_index_buffer::ixo_d3d9_index_buffer(ixo_d3d9_device* device, UINT length, DWORD usage,
                                             D3DFORMAT format, D3DPOOL pool)
    : m_data(device, length, usage, pool), m_format(format)
{
}

ixo_d3d9_index_buffer::~ixo_d3d9_index_buffer()
{
    m_data.device->unbind_buffer(this);
}

HRESULT ixo_d3d9_index_buffer::GetDevice(IDirect3DDevice9** ppDevice)
{
    if (!ppDevice)
        return D3DERR_INVALIDCALL;
    m_data.device->AddRef();
    *ppDevice = m_data.device;
    return D3D_OK;
}

HRESULT ixo_d3d9_index_buffer::GetDesc(D3DINDEXBUFFER_DESC* pDesc)
{
    if (!pDesc)
        return D3DERR_INVALIDCALL;
    pDesc->Format = m_format;
    pDesc->Type = D3DRTYPE_INDEXBUFFER;
    pDesc->Usage = m_data.usage;
    pDesc->Pool = m_data.pool;
    pDesc->Size = m_data.length;
    return D3D_OK;
}

std::uint32_t ixo_d3d9_index_buffer::max_index(UINT first, UINT count)
{
    if (m_max_version == m_data.version && m_max_first == first && m_max_count == count)
        return m_max;
    std::uint32_t best = 0;
    const std::uint8_t* p = m_data.memory.data() + static_cast<size_t>(first) * index_size();
    if (m_format == D3DFMT_INDEX16)
    {
        for (UINT i = 0; i < count; ++i)
        {
            std::uint16_t v;
            std::memcpy(&v, p + 2 * i, 2);
            best = std::max<std::uint32_t>(best, v);
        }
    }
    else
    {
        for (UINT i = 0; i < count; ++i)
        {
            std::uint32_t v;
            std::memcpy(&v, p + 4 * i, 4);
            best = std::max(best, v);
        }
    }
    m_max_version = m_data.version;
    m_max_first = first;
    m_max_count = count;
    m_max = best;
    return best;
}

// ---------------------------------------------------------------------------------------
// Swap chain

ixo_d3d9_swap_chain::ixo_d3d9_swap_chain(ixo_d3d9_device* device,
                                         const D3DPRESENT_PARAMETERS& params, bool implicit)
    : m_device(device), m_params(params), m_implicit(implicit)
{
    if (m_params.BackBufferFormat == D3DFMT_UNKNOWN)
        m_params.BackBufferFormat = D3DFMT_A8R8G8B8;
    if (m_params.BackBufferWidth == 0)
        m_params.BackBufferWidth = 1;
    if (m_params.BackBufferHeight == 0)
        m_params.BackBufferHeight = 1;
    if (m_params.BackBufferCount == 0)
        m_params.BackBufferCount = 1;
    const ixo_d3d9_format* format = ixo_d3d9_find_format(m_params.BackBufferFormat);
    if (!format || format->depth || m_params.BackBufferWidth > k_max_dimension ||
        m_params.BackBufferHeight > k_max_dimension ||
        m_params.MultiSampleType != D3DMULTISAMPLE_NONE)
        return;
    if (implicit)
        m_container = device;
    else
    {
        m_device->AddRef();
        m_device->swap_chain_created();
    }
    D3DSURFACE_DESC d{};
    d.Format = format->format;
    d.Type = D3DRTYPE_SURFACE;
    d.Usage = D3DUSAGE_RENDERTARGET;
    d.Pool = D3DPOOL_DEFAULT;
    d.Width = m_params.BackBufferWidth;
    d.Height = m_params.BackBufferHeight;
    IUnknown* container = implicit
                              ? static_cast<IUnknown*>(device)
                              : static_cast<IUnknown*>(static_cast<IDirect3DSwapChain9*>(this));
    m_back_buffer =
        new ixo_d3d9_surface(device, container, d, format, 0, 0,
                             (m_params.Flags & D3DPRESENTFLAG_LOCKABLE_BACKBUFFER) != 0);
}

ixo_d3d9_swap_chain::~ixo_d3d9_swap_chain()
{
    delete m_back_buffer;
    m_device->gl()->destroy_window_surface(m_window_surface);
    if (!m_implicit && m_back_buffer)
    {
        m_device->swap_chain_destroyed();
        m_device->Release();
    }
}

HRESULT ixo_d3d9_swap_chain::Present(const RECT*, const RECT*, HWND hDestWindowOverride,
                                     const RGNDATA*, DWORD)
{
    if (m_device->is_lost())
        return D3DERR_DEVICELOST;
    HWND window = hDestWindowOverride ? hDestWindowOverride : m_params.hDeviceWindow;
    ixo_gl_context* gl = m_device->gl();
    if (gl->is_headless() || !window)
    {
        m_device->make_current();
        glFlush();
        return D3D_OK;
    }
    if (m_window_surface == EGL_NO_SURFACE)
        m_window_surface = gl->create_window_surface(window);
    if (m_window_surface == EGL_NO_SURFACE)
        return D3D_OK;
    gl->use_surface(m_window_surface);
    GLuint read = m_device->scratch_framebuffer(0);
    m_device->attach(read, m_back_buffer);
    GLint w = static_cast<GLint>(m_params.BackBufferWidth);
    GLint h = static_cast<GLint>(m_params.BackBufferHeight);
    glDisable(GL_SCISSOR_TEST);
    // Window rows run bottom-up; the back buffer's row 0 is the top of the image.
    glBlitNamedFramebuffer(read, 0, 0, 0, w, h, 0, h, w, 0, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    gl->swap_buffers(m_window_surface);
    m_device->SetScissorRect(nullptr);
    return D3D_OK;
}

HRESULT ixo_d3d9_swap_chain::GetBackBuffer(UINT iBackBuffer, D3DBACKBUFFER_TYPE Type,
                                           IDirect3DSurface9** ppBackBuffer)
{
    if (!ppBackBuffer || iBackBuffer != 0 || Type != D3DBACKBUFFER_TYPE_MONO || !m_back_buffer)
        return D3DERR_INVALIDCALL;
    m_back_buffer->AddRef();
    *ppBackBuffer = m_back_buffer;
    return D3D_OK;
}

HRESULT ixo_d3d9_swap_chain::GetPresentParameters(D3DPRESENT_PARAMETERS* pPresentationParameters)
{
    if (!pPresentationParameters)
        return D3DERR_INVALIDCALL;
    *pPresentationParameters = m_params;
    return D3D_OK;
}

HRESULT ixo_d3d9_swap_chain::GetDevice(IDirect3DDevice9** ppDevice)
{
    if (!ppDevice)
        return D3DERR_INVALIDCALL;
    m_device->AddRef();
    *ppDevice = m_device;
    return D3D_OK;
}

// Size limits shared with the device's creation calls.
bool ixo_d3d9_size_ok(UINT width, UINT height)
{
    return width > 0 && height > 0 && width <= k_max_dimension && height <= k_max_dimension;
}

bool ixo_d3d9_buffer_size_ok(UINT length)
{
    return length > 0 && length <= k_max_buffer;
}
