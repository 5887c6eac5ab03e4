#pragma once
// Internal classes of the Direct3D 9 stand-in. Every OpenGL and EGL call of the library
// lives in this folder.

#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3d9_testing.h>

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class ixo_d3d9_device;

// ---------------------------------------------------------------------------------------
// EGL: one display per platform for the process, one context per device.

class ixo_gl_context
{
public:
    // A context on the X11 platform when native_display_wanted and the default display
    // opens, else headless. Null when no OpenGL 4.5 core context can be made.
    static std::unique_ptr<ixo_gl_context> create(bool native_display_wanted);
    ~ixo_gl_context();

    // Makes the context current (without surface, or with the last window surface).
    void make_current();
    bool is_headless() const { return m_headless; }
    // A window surface for an X11 window id; EGL_NO_SURFACE when headless or on failure.
    EGLSurface create_window_surface(HWND window);
    void destroy_window_surface(EGLSurface surface);
    // Makes the window surface current (it stays current), then shows what was drawn.
    void use_surface(EGLSurface surface);
    bool swap_buffers(EGLSurface surface);

private:
    ixo_gl_context() = default;
    EGLDisplay m_display = EGL_NO_DISPLAY;
    EGLConfig m_config = nullptr;
    EGLContext m_context = EGL_NO_CONTEXT;
    EGLSurface m_current_surface = EGL_NO_SURFACE;
    bool m_headless = true;
};

// ---------------------------------------------------------------------------------------
// Formats

struct ixo_d3d9_format
{
    D3DFORMAT format;
    GLenum internal_format;
    GLenum pixel_format;
    GLenum pixel_type;
    UINT bytes_per_pixel;
    bool depth;
    std::array<GLint, 4> swizzle;
};

// Null for formats outside the subset.
const ixo_d3d9_format* ixo_d3d9_find_format(D3DFORMAT format);

// ---------------------------------------------------------------------------------------
// Reference counting with an optional container (texture levels, back buffers), whose
// count the object shares as on Direct3D.

template <class Interface> class ixo_d3d9_counted : public Interface
{
public:
    HRESULT QueryInterface(REFIID, void** ppvObj) override
    {
        if (ppvObj)
            *ppvObj = nullptr;
        return E_NOINTERFACE;
    }
    ULONG AddRef() override
    {
        if (m_container)
            return m_container->AddRef();
        return ++m_refs;
    }
    ULONG Release() override
    {
        if (m_container)
            return m_container->Release();
        ULONG left = --m_refs;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    ULONG m_refs = 1;
    IUnknown* m_container = nullptr;
};

// ---------------------------------------------------------------------------------------
// Resources

class ixo_d3d9_surface final : public ixo_d3d9_counted<IDirect3DSurface9>
{
public:
    // A surface of its own (texture 0 = make one) or a level of a texture's GL texture.
    ixo_d3d9_surface(ixo_d3d9_device* device, IUnknown* container, const D3DSURFACE_DESC& desc,
                     const ixo_d3d9_format* format, GLuint texture, GLint level, bool lockable);
    ~ixo_d3d9_surface() override;

    HRESULT GetDevice(IDirect3DDevice9** ppDevice) override;
    D3DRESOURCETYPE GetType() override { return D3DRTYPE_SURFACE; }
    HRESULT GetDesc(D3DSURFACE_DESC* pDesc) override;
    HRESULT LockRect(D3DLOCKED_RECT* pLockedRect, const RECT* pRect, DWORD Flags) override;
    HRESULT UnlockRect() override;

    bool is_gpu() const { return m_texture != 0; }
    GLuint texture() const { return m_texture; }
    GLint level() const { return m_level; }
    const D3DSURFACE_DESC& desc() const { return m_desc; }
    const ixo_d3d9_format* format() const { return m_format; }
    std::vector<std::uint8_t>& memory() { return m_memory; }
    UINT pitch() const { return m_desc.Width * m_format->bytes_per_pixel; }
    bool is_locked() const { return m_locked; }
    ixo_d3d9_device* device() const { return m_device; }
    void set_parent_texture(class ixo_d3d9_texture* texture) { m_parent_texture = texture; }

private:
    ixo_d3d9_device* m_device;
    class ixo_d3d9_texture* m_parent_texture = nullptr;
    D3DSURFACE_DESC m_desc;
    const ixo_d3d9_format* m_format;
    GLuint m_texture = 0;
    GLint m_level = 0;
    bool m_owns_texture = false;
    bool m_lockable;
    bool m_locked = false;
    DWORD m_lock_flags = 0;
    // System-memory pixels, or the copy that a lock of a video-memory surface maps.
    std::vector<std::uint8_t> m_memory;
};

class ixo_d3d9_texture final : public ixo_d3d9_counted<IDirect3DTexture9>
{
public:
    ixo_d3d9_texture(ixo_d3d9_device* device, UINT width, UINT height, UINT levels, DWORD usage,
                     const ixo_d3d9_format* format, D3DPOOL pool);
    ~ixo_d3d9_texture() override;

    HRESULT GetDevice(IDirect3DDevice9** ppDevice) override;
    D3DRESOURCETYPE GetType() override { return D3DRTYPE_TEXTURE; }
    DWORD GetLevelCount() override { return static_cast<DWORD>(m_levels.size()); }
    HRESULT GetLevelDesc(UINT Level, D3DSURFACE_DESC* pDesc) override;
    HRESULT GetSurfaceLevel(UINT Level, IDirect3DSurface9** ppSurfaceLevel) override;
    HRESULT LockRect(UINT Level, D3DLOCKED_RECT* pLockedRect, const RECT* pRect,
                     DWORD Flags) override;
    HRESULT UnlockRect(UINT Level) override;

    GLuint texture() const { return m_texture; }
    ixo_d3d9_device* device() const { return m_device; }
    void level_changed(UINT level);

private:
    ixo_d3d9_device* m_device;
    GLuint m_texture = 0;
    DWORD m_usage;
    D3DPOOL m_pool;
    std::vector<ixo_d3d9_surface*> m_levels;
};

// Vertex and index buffers: a GL buffer and the CPU copy that locks map.
class ixo_d3d9_buffer_data
{
public:
    ixo_d3d9_buffer_data(ixo_d3d9_device* device, UINT length, DWORD usage, D3DPOOL pool);
    ~ixo_d3d9_buffer_data();
    HRESULT lock(UINT offset, UINT size, void** data, DWORD flags);
    HRESULT unlock();

    ixo_d3d9_device* device;
    GLuint buffer = 0;
    UINT length;
    DWORD usage;
    D3DPOOL pool;
    std::vector<std::uint8_t> memory;
    bool locked = false;
    DWORD lock_flags = 0;
    UINT lock_offset = 0;
    UINT lock_size = 0;
    // Bumped by every unlock that may change the data.
    std::uint64_t version = 0;
};

class ixo_d3d9_vertex_buffer final : public ixo_d3d9_counted<IDirect3DVertexBuffer9>
{
public:
    ixo_d3d9_vertex_buffer(ixo_d3d9_device* device, UINT length, DWORD usage, DWORD fvf,
                           D3DPOOL pool);
    ~ixo_d3d9_vertex_buffer() override;
    HRESULT GetDevice(IDirect3DDevice9** ppDevice) override;
    D3DRESOURCETYPE GetType() override { return D3DRTYPE_VERTEXBUFFER; }
    HRESULT Lock(UINT OffsetToLock, UINT SizeToLock, void** ppbData, DWORD Flags) override
    {
        return m_data.lock(OffsetToLock, SizeToLock, ppbData, Flags);
    }
    HRESULT Unlock() override { return m_data.unlock(); }
    HRESULT GetDesc(D3DVERTEXBUFFER_DESC* pDesc) override;

    ixo_d3d9_buffer_data m_data;
    DWORD m_fvf;
};

class ixo_d3d9_index_buffer final : public ixo_d3d9_counted<IDirect3DIndexBuffer9>
{
public:
    ixo_d3d9_index_buffer(ixo_d3d9_device* device, UINT length, DWORD usage, D3DFORMAT format,
                          D3DPOOL pool);
    ~ixo_d3d9_index_buffer() override;
    HRESULT GetDevice(IDirect3DDevice9** ppDevice) override;
    D3DRESOURCETYPE GetType() override { return D3DRTYPE_INDEXBUFFER; }
    HRESULT Lock(UINT OffsetToLock, UINT SizeToLock, void** ppbData, DWORD Flags) override
    {
        return m_data.lock(OffsetToLock, SizeToLock, ppbData, Flags);
    }
    HRESULT Unlock() override { return m_data.unlock(); }
    HRESULT GetDesc(D3DINDEXBUFFER_DESC* pDesc) override;

    // The largest index among count indices from first (cached for the last range asked).
    std::uint32_t max_index(UINT first, UINT count);
    UINT index_size() const { return m_format == D3DFMT_INDEX16 ? 2u : 4u; }

    ixo_d3d9_buffer_data m_data;
    D3DFORMAT m_format;

private:
    std::uint64_t m_max_version = ~std::uint64_t(0);
    UINT m_max_first = 0;
    UINT m_max_count = 0;
    std::uint32_t m_max = 0;
};

class ixo_d3d9_swap_chain final : public ixo_d3d9_counted<IDirect3DSwapChain9>
{
public:
    // implicit: the device's own chain, which shares the device's count.
    ixo_d3d9_swap_chain(ixo_d3d9_device* device, const D3DPRESENT_PARAMETERS& params,
                        bool implicit);
    ~ixo_d3d9_swap_chain() override;
    bool valid() const { return m_back_buffer != nullptr; }

    HRESULT Present(const RECT* pSourceRect, const RECT* pDestRect, HWND hDestWindowOverride,
                    const RGNDATA* pDirtyRegion, DWORD dwFlags) override;
    HRESULT GetBackBuffer(UINT iBackBuffer, D3DBACKBUFFER_TYPE Type,
                          IDirect3DSurface9** ppBackBuffer) override;
    HRESULT GetPresentParameters(D3DPRESENT_PARAMETERS* pPresentationParameters) override;
    HRESULT GetDevice(IDirect3DDevice9** ppDevice) override;

private:
    ixo_d3d9_device* m_device;
    D3DPRESENT_PARAMETERS m_params;
    bool m_implicit;
    ixo_d3d9_surface* m_back_buffer = nullptr;
    EGLSurface m_window_surface = EGL_NO_SURFACE;
};

// ---------------------------------------------------------------------------------------
// An effect pass that draws instead of the fixed function.

class ixo_d3d9_program_override
{
public:
    virtual ~ixo_d3d9_program_override() = default;
    // Binds the program and brings its uniforms and textures up to date.
    virtual void prepare_draw() = 0;
    // The texture is being destroyed: drop every pointer to it.
    virtual void forget_texture(IDirect3DBaseTexture9* texture) = 0;
};

// ---------------------------------------------------------------------------------------
// Adapters

struct ixo_d3d9_adapters
{
    static std::vector<ixo_d3d9_test_adapter>& list();
};

// ---------------------------------------------------------------------------------------
// The device

class ixo_d3d9_direct3d;

class ixo_d3d9_device final : public ixo_d3d9_counted<IDirect3DDevice9>
{
public:
    static HRESULT create(ixo_d3d9_direct3d* d3d, UINT adapter, D3DDEVTYPE type, HWND focus,
                          DWORD behavior, D3DPRESENT_PARAMETERS* params, IDirect3DDevice9** device);
    ~ixo_d3d9_device() override;

    HRESULT TestCooperativeLevel() override;
    HRESULT Reset(D3DPRESENT_PARAMETERS* pPresentationParameters) override;
    HRESULT GetDirect3D(IDirect3D9** ppD3D9) override;
    HRESULT GetDeviceCaps(D3DCAPS9* pCaps) override;
    HRESULT GetCreationParameters(D3DDEVICE_CREATION_PARAMETERS* pParameters) override;
    HRESULT CreateAdditionalSwapChain(D3DPRESENT_PARAMETERS* pPresentationParameters,
                                      IDirect3DSwapChain9** pSwapChain) override;
    HRESULT GetSwapChain(UINT iSwapChain, IDirect3DSwapChain9** pSwapChain) override;
    HRESULT Present(const RECT* pSourceRect, const RECT* pDestRect, HWND hDestWindowOverride,
                    const RGNDATA* pDirtyRegion) override;
    HRESULT GetBackBuffer(UINT iSwapChain, UINT iBackBuffer, D3DBACKBUFFER_TYPE Type,
                          IDirect3DSurface9** ppBackBuffer) override;
    HRESULT CreateTexture(UINT Width, UINT Height, UINT Levels, DWORD Usage, D3DFORMAT Format,
                          D3DPOOL Pool, IDirect3DTexture9** ppTexture,
                          HANDLE* pSharedHandle) override;
    HRESULT CreateVertexBuffer(UINT Length, DWORD Usage, DWORD FVF, D3DPOOL Pool,
                               IDirect3DVertexBuffer9** ppVertexBuffer,
                               HANDLE* pSharedHandle) override;
    HRESULT CreateIndexBuffer(UINT Length, DWORD Usage, D3DFORMAT Format, D3DPOOL Pool,
                              IDirect3DIndexBuffer9** ppIndexBuffer,
                              HANDLE* pSharedHandle) override;
    HRESULT CreateRenderTarget(UINT Width, UINT Height, D3DFORMAT Format,
                               D3DMULTISAMPLE_TYPE MultiSample, DWORD MultisampleQuality,
                               BOOL Lockable, IDirect3DSurface9** ppSurface,
                               HANDLE* pSharedHandle) override;
    HRESULT CreateDepthStencilSurface(UINT Width, UINT Height, D3DFORMAT Format,
                                      D3DMULTISAMPLE_TYPE MultiSample, DWORD MultisampleQuality,
                                      BOOL Discard, IDirect3DSurface9** ppSurface,
                                      HANDLE* pSharedHandle) override;
    HRESULT GetRenderTargetData(IDirect3DSurface9* pRenderTarget,
                                IDirect3DSurface9* pDestSurface) override;
    HRESULT StretchRect(IDirect3DSurface9* pSourceSurface, const RECT* pSourceRect,
                        IDirect3DSurface9* pDestSurface, const RECT* pDestRect,
                        D3DTEXTUREFILTERTYPE Filter) override;
    HRESULT ColorFill(IDirect3DSurface9* pSurface, const RECT* pRect, D3DCOLOR color) override;
    HRESULT CreateOffscreenPlainSurface(UINT Width, UINT Height, D3DFORMAT Format, D3DPOOL Pool,
                                        IDirect3DSurface9** ppSurface,
                                        HANDLE* pSharedHandle) override;
    HRESULT SetRenderTarget(DWORD RenderTargetIndex, IDirect3DSurface9* pRenderTarget) override;
    HRESULT GetRenderTarget(DWORD RenderTargetIndex, IDirect3DSurface9** ppRenderTarget) override;
    HRESULT SetDepthStencilSurface(IDirect3DSurface9* pNewZStencil) override;
    HRESULT GetDepthStencilSurface(IDirect3DSurface9** ppZStencilSurface) override;
    HRESULT BeginScene() override;
    HRESULT EndScene() override;
    HRESULT Clear(DWORD Count, const D3DRECT* pRects, DWORD Flags, D3DCOLOR Color, float Z,
                  DWORD Stencil) override;
    HRESULT SetTransform(D3DTRANSFORMSTATETYPE State, const D3DMATRIX* pMatrix) override;
    HRESULT GetTransform(D3DTRANSFORMSTATETYPE State, D3DMATRIX* pMatrix) override;
    HRESULT MultiplyTransform(D3DTRANSFORMSTATETYPE State, const D3DMATRIX* pMatrix) override;
    HRESULT SetViewport(const D3DVIEWPORT9* pViewport) override;
    HRESULT GetViewport(D3DVIEWPORT9* pViewport) override;
    HRESULT SetMaterial(const D3DMATERIAL9* pMaterial) override;
    HRESULT GetMaterial(D3DMATERIAL9* pMaterial) override;
    HRESULT SetLight(DWORD Index, const D3DLIGHT9* pLight) override;
    HRESULT GetLight(DWORD Index, D3DLIGHT9* pLight) override;
    HRESULT LightEnable(DWORD Index, BOOL Enable) override;
    HRESULT GetLightEnable(DWORD Index, BOOL* pEnable) override;
    HRESULT SetRenderState(D3DRENDERSTATETYPE State, DWORD Value) override;
    HRESULT GetRenderState(D3DRENDERSTATETYPE State, DWORD* pValue) override;
    HRESULT GetTexture(DWORD Stage, IDirect3DBaseTexture9** ppTexture) override;
    HRESULT SetTexture(DWORD Stage, IDirect3DBaseTexture9* pTexture) override;
    HRESULT GetTextureStageState(DWORD Stage, D3DTEXTURESTAGESTATETYPE Type,
                                 DWORD* pValue) override;
    HRESULT SetTextureStageState(DWORD Stage, D3DTEXTURESTAGESTATETYPE Type, DWORD Value) override;
    HRESULT GetSamplerState(DWORD Sampler, D3DSAMPLERSTATETYPE Type, DWORD* pValue) override;
    HRESULT SetSamplerState(DWORD Sampler, D3DSAMPLERSTATETYPE Type, DWORD Value) override;
    HRESULT SetScissorRect(const RECT* pRect) override;
    HRESULT GetScissorRect(RECT* pRect) override;
    HRESULT DrawPrimitive(D3DPRIMITIVETYPE PrimitiveType, UINT StartVertex,
                          UINT PrimitiveCount) override;
    HRESULT DrawIndexedPrimitive(D3DPRIMITIVETYPE PrimitiveType, INT BaseVertexIndex,
                                 UINT MinVertexIndex, UINT NumVertices, UINT startIndex,
                                 UINT primCount) override;
    HRESULT DrawPrimitiveUP(D3DPRIMITIVETYPE PrimitiveType, UINT PrimitiveCount,
                            const void* pVertexStreamZeroData,
                            UINT VertexStreamZeroStride) override;
    HRESULT DrawIndexedPrimitiveUP(D3DPRIMITIVETYPE PrimitiveType, UINT MinVertexIndex,
                                   UINT NumVertices, UINT PrimitiveCount, const void* pIndexData,
                                   D3DFORMAT IndexDataFormat, const void* pVertexStreamZeroData,
                                   UINT VertexStreamZeroStride) override;
    HRESULT SetFVF(DWORD FVF) override;
    HRESULT GetFVF(DWORD* pFVF) override;
    HRESULT SetStreamSource(UINT StreamNumber, IDirect3DVertexBuffer9* pStreamData,
                            UINT OffsetInBytes, UINT Stride) override;
    HRESULT GetStreamSource(UINT StreamNumber, IDirect3DVertexBuffer9** ppStreamData,
                            UINT* pOffsetInBytes, UINT* pStride) override;
    HRESULT SetIndices(IDirect3DIndexBuffer9* pIndexData) override;
    HRESULT GetIndices(IDirect3DIndexBuffer9** ppIndexData) override;

    // --- for the resources and the effect
    void make_current();
    ixo_gl_context* gl() { return m_gl.get(); }
    void resource_created(D3DPOOL pool);
    void resource_destroyed(D3DPOOL pool);
    void swap_chain_created() { ++m_live_swap_chains; }
    void swap_chain_destroyed() { --m_live_swap_chains; }
    bool is_lost() const { return m_lost; }
    void lose(UINT lost_reports);
    // Forgets a surface or texture that is being destroyed wherever it is bound.
    void unbind_surface(ixo_d3d9_surface* surface);
    void unbind_texture(ixo_d3d9_texture* texture);
    void unbind_buffer(const void* buffer);
    // Binds a GL texture to a unit unless it is bound there already.
    void bind_texture_unit(GLuint unit, GLuint texture);
    // Binds a sampler object to a unit unless it is bound there already; forget_sampler
    // drops a sampler about to be deleted from that record.
    void bind_sampler_unit(GLuint unit, GLuint sampler);
    void forget_sampler(GLuint sampler);
    void set_program_override(ixo_d3d9_program_override* program);
    // Effects hear of destroyed textures; they hold textures without a reference.
    void add_effect(ixo_d3d9_program_override* effect) { m_effects.push_back(effect); }
    void remove_effect(ixo_d3d9_program_override* effect);
    ixo_d3d9_program_override* program_override() const { return m_override; }
    void use_program(GLuint program);
    // Framebuffers reading or drawing one surface (for copies).
    GLuint scratch_framebuffer(int which) const { return m_scratch_fbo[which]; }
    void attach(GLuint fbo, ixo_d3d9_surface* surface);

private:
    struct light_slot
    {
        D3DLIGHT9 light;
        bool enabled;
        bool set;
    };
    struct stage_state
    {
        std::array<DWORD, 33> tss;
        std::array<DWORD, 14> samp;
        IDirect3DBaseTexture9* texture = nullptr;
        GLuint sampler = 0;
        bool sampler_dirty = true;
    };

    ixo_d3d9_device(ixo_d3d9_direct3d* d3d, std::unique_ptr<ixo_gl_context> gl);
    void init_gl();
    void create_auto_depth_stencil(const D3DPRESENT_PARAMETERS& params);
    D3DMATRIX* transform_slot(D3DTRANSFORMSTATETYPE state);
    HRESULT draw(GLenum mode, UINT vertex_count, DWORD fvf, bool indexed, GLenum index_type,
                 UINT first, INT base_vertex, GLuint vertex_buffer, UINT offset, UINT stride,
                 GLuint index_buffer);
    void set_default_state();
    void release_bindings();
    void apply_framebuffer();
    void apply_render_states();
    GLuint fixed_function_program(DWORD fvf);
    GLuint vertex_array(DWORD fvf);
    void upload_fixed_function_uniforms();
    void apply_samplers();

    ixo_d3d9_direct3d* m_d3d;
    std::unique_ptr<ixo_gl_context> m_gl;
    D3DDEVICE_CREATION_PARAMETERS m_creation{};
    ixo_d3d9_swap_chain* m_implicit = nullptr;
    ixo_d3d9_surface* m_auto_depth = nullptr;
    int m_live_default_resources = 0;
    int m_live_swap_chains = 0;
    bool m_lost = false;
    UINT m_lost_reports = 0;
    bool m_in_scene = false;

    // State
    std::array<DWORD, 256> m_rs{};
    D3DMATRIX m_world{}, m_view{}, m_proj{};
    std::unordered_map<DWORD, D3DMATRIX> m_other_transforms;
    std::vector<light_slot> m_lights;
    D3DMATERIAL9 m_material{};
    D3DVIEWPORT9 m_viewport{};
    RECT m_scissor{};
    DWORD m_fvf = 0;
    ixo_d3d9_vertex_buffer* m_stream = nullptr;
    UINT m_stream_offset = 0;
    UINT m_stream_stride = 0;
    ixo_d3d9_index_buffer* m_indices = nullptr;
    ixo_d3d9_surface* m_render_target = nullptr;
    ixo_d3d9_surface* m_depth_stencil = nullptr;
    std::array<stage_state, 8> m_stages;
    ixo_d3d9_program_override* m_override = nullptr;
    std::vector<ixo_d3d9_program_override*> m_effects;

    // GL objects and caches
    GLuint m_fbo = 0;
    std::array<GLuint, 2> m_scratch_fbo{};
    bool m_fbo_dirty = true;
    bool m_render_states_dirty = true;
    bool m_uniforms_dirty = true;
    bool m_viewport_dirty = true;
    bool m_program_dirty = true;
    GLuint m_ubo = 0;
    // What the uniform block holds, as last uploaded (empty: unknown).
    std::vector<std::uint8_t> m_ff_uploaded;
    GLuint m_up_buffer = 0;
    GLsizeiptr m_up_buffer_size = 0;
    GLuint m_up_index_buffer = 0;
    GLsizeiptr m_up_index_buffer_size = 0;
    std::unordered_map<std::string, GLuint> m_programs;
    std::unordered_map<DWORD, GLuint> m_vaos;
    GLuint m_current_program = 0;
    // The vertex array last bound and what its bindings hold (0: unknown).
    GLuint m_bound_vao = 0;
    GLuint m_bound_vertex_buffer = 0;
    UINT m_bound_offset = 0;
    UINT m_bound_stride = 0;
    GLuint m_bound_index_buffer = 0;
    std::array<GLuint, 16> m_bound_textures{};
    std::array<GLuint, 16> m_bound_samplers{};
    GLuint m_ff_program = 0;
    DWORD m_ff_fvf = ~0u;
};

class ixo_d3d9_direct3d final : public ixo_d3d9_counted<IDirect3D9>
{
public:
    ixo_d3d9_direct3d() : m_adapters(ixo_d3d9_adapters::list()) {}
    UINT GetAdapterCount() override { return static_cast<UINT>(m_adapters.size()); }
    HRESULT CheckDeviceType(UINT Adapter, D3DDEVTYPE DevType, D3DFORMAT AdapterFormat,
                            D3DFORMAT BackBufferFormat, BOOL bWindowed) override;
    HRESULT CheckDeviceFormat(UINT Adapter, D3DDEVTYPE DeviceType, D3DFORMAT AdapterFormat,
                              DWORD Usage, D3DRESOURCETYPE RType, D3DFORMAT CheckFormat) override;
    HRESULT CheckDepthStencilMatch(UINT Adapter, D3DDEVTYPE DeviceType, D3DFORMAT AdapterFormat,
                                   D3DFORMAT RenderTargetFormat,
                                   D3DFORMAT DepthStencilFormat) override;
    HRESULT GetDeviceCaps(UINT Adapter, D3DDEVTYPE DeviceType, D3DCAPS9* pCaps) override;
    HRESULT CreateDevice(UINT Adapter, D3DDEVTYPE DeviceType, HWND hFocusWindow,
                         DWORD BehaviorFlags, D3DPRESENT_PARAMETERS* pPresentationParameters,
                         IDirect3DDevice9** ppReturnedDeviceInterface) override;

    const std::vector<ixo_d3d9_test_adapter>& adapters() const { return m_adapters; }

private:
    std::vector<ixo_d3d9_test_adapter> m_adapters;
};

// Size limits of the creation calls.
bool ixo_d3d9_size_ok(UINT width, UINT height);
bool ixo_d3d9_buffer_size_ok(UINT length);

// Multiplies two row-vector matrices: a * b.
D3DMATRIX ixo_d3d9_multiply(const D3DMATRIX& a, const D3DMATRIX& b);
D3DMATRIX ixo_d3d9_identity();
