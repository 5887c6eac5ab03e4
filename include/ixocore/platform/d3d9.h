#pragma once
// The Direct3D 9 subset the system draws with, under its own names and signatures, running
// on OpenGL 4.5 core through EGL.
//
// Conventions kept from Direct3D 9: matrices are row-vector (v * World * View * Proj),
// clip depth runs 0..1, row 0 of a locked surface is the top of the image, D3DCULL_CW culls
// triangles that are clockwise on the screen, D3DFMT_A8R8G8B8 pixels lie in memory as
// blue, green, red, alpha, and pixel centres of pre-transformed vertices lie on integer
// coordinates. A null HWND gives a headless device whose swap chains are off-screen
// images; otherwise HWND is an X11 Window id of the default display.
//
// Every call answers D3DERR_INVALIDCALL for bad arguments (null out-pointers, zero sizes,
// formats or vertex formats outside the subset, a second lock) and never crashes.
// Interfaces are reference counted: AddRef/Release as in COM.

#include <ixocore/core/api.h>
#include <ixocore/platform/win32.h>

#include <cstdint>

// ---------------------------------------------------------------------------------------
// Result codes

#define D3D_OK S_OK
#define D3D_SDK_VERSION 32
#define D3DADAPTER_DEFAULT 0

#define MAKE_D3DHRESULT(code) static_cast<HRESULT>(0x88760000u | (code))
#define D3DERR_WRONGTEXTUREFORMAT MAKE_D3DHRESULT(2072)
#define D3DERR_UNSUPPORTEDCOLOROPERATION MAKE_D3DHRESULT(2073)
#define D3DERR_UNSUPPORTEDTEXTUREFILTER MAKE_D3DHRESULT(2082)
#define D3DERR_DRIVERINTERNALERROR MAKE_D3DHRESULT(2087)
#define D3DERR_NOTFOUND MAKE_D3DHRESULT(2150)
#define D3DERR_MOREDATA MAKE_D3DHRESULT(2151)
#define D3DERR_DEVICELOST MAKE_D3DHRESULT(2152)
#define D3DERR_DEVICENOTRESET MAKE_D3DHRESULT(2153)
#define D3DERR_NOTAVAILABLE MAKE_D3DHRESULT(2154)
#define D3DERR_OUTOFVIDEOMEMORY MAKE_D3DHRESULT(380)
#define D3DERR_INVALIDDEVICE MAKE_D3DHRESULT(2155)
#define D3DERR_INVALIDCALL MAKE_D3DHRESULT(2156)
#define D3DERR_WASSTILLDRAWING MAKE_D3DHRESULT(540)

// ---------------------------------------------------------------------------------------
// Basic types

typedef DWORD D3DCOLOR;

#define D3DCOLOR_ARGB(a, r, g, b)                                                                  \
    (static_cast<D3DCOLOR>((((a)&0xffu) << 24) | (((r)&0xffu) << 16) | (((g)&0xffu) << 8) |        \
                           ((b)&0xffu)))
#define D3DCOLOR_RGBA(r, g, b, a) D3DCOLOR_ARGB(a, r, g, b)
#define D3DCOLOR_XRGB(r, g, b) D3DCOLOR_ARGB(0xff, r, g, b)
#define D3DCOLOR_COLORVALUE(r, g, b, a)                                                            \
    D3DCOLOR_RGBA(static_cast<DWORD>((r)*255.f), static_cast<DWORD>((g)*255.f),                    \
                  static_cast<DWORD>((b)*255.f), static_cast<DWORD>((a)*255.f))

struct GUID
{
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
};
typedef GUID const& REFIID;

typedef struct _D3DVECTOR
{
    float x;
    float y;
    float z;
} D3DVECTOR;

typedef struct _D3DCOLORVALUE
{
    float r;
    float g;
    float b;
    float a;
} D3DCOLORVALUE;

typedef struct _D3DRECT
{
    LONG x1;
    LONG y1;
    LONG x2;
    LONG y2;
} D3DRECT;

typedef struct _D3DMATRIX
{
    union
    {
        struct
        {
            float _11, _12, _13, _14;
            float _21, _22, _23, _24;
            float _31, _32, _33, _34;
            float _41, _42, _43, _44;
        };
        float m[4][4];
    };
} D3DMATRIX;

typedef struct _D3DVIEWPORT9
{
    DWORD X;
    DWORD Y;
    DWORD Width;
    DWORD Height;
    float MinZ;
    float MaxZ;
} D3DVIEWPORT9;

typedef enum _D3DLIGHTTYPE
{
    D3DLIGHT_POINT = 1,
    D3DLIGHT_SPOT = 2,
    D3DLIGHT_DIRECTIONAL = 3,
    D3DLIGHT_FORCE_DWORD = 0x7fffffff
} D3DLIGHTTYPE;

typedef struct _D3DLIGHT9
{
    D3DLIGHTTYPE Type;
    D3DCOLORVALUE Diffuse;
    D3DCOLORVALUE Specular;
    D3DCOLORVALUE Ambient;
    D3DVECTOR Position;
    D3DVECTOR Direction;
    float Range;
    float Falloff;
    float Attenuation0;
    float Attenuation1;
    float Attenuation2;
    float Theta;
    float Phi;
} D3DLIGHT9;

typedef struct _D3DMATERIAL9
{
    D3DCOLORVALUE Diffuse;
    D3DCOLORVALUE Ambient;
    D3DCOLORVALUE Specular;
    D3DCOLORVALUE Emissive;
    float Power;
} D3DMATERIAL9;

// Opaque: dirty regions of Present are not supported (pass null).
typedef struct _RGNDATA RGNDATA;

// ---------------------------------------------------------------------------------------
// Enumerations

typedef enum _D3DFORMAT
{
    D3DFMT_UNKNOWN = 0,
    D3DFMT_R8G8B8 = 20,
    D3DFMT_A8R8G8B8 = 21,
    D3DFMT_X8R8G8B8 = 22,
    D3DFMT_R5G6B5 = 23,
    D3DFMT_A8 = 28,
    D3DFMT_A8B8G8R8 = 32,
    D3DFMT_X8B8G8R8 = 33,
    D3DFMT_L8 = 50,
    D3DFMT_D32 = 71,
    D3DFMT_D24S8 = 75,
    D3DFMT_D24X8 = 77,
    D3DFMT_D16 = 80,
    D3DFMT_VERTEXDATA = 100,
    D3DFMT_INDEX16 = 101,
    D3DFMT_INDEX32 = 102,
    D3DFMT_R32F = 114,
    D3DFMT_A32B32G32R32F = 116,
    D3DFMT_FORCE_DWORD = 0x7fffffff
} D3DFORMAT;

typedef enum _D3DPOOL
{
    D3DPOOL_DEFAULT = 0,
    D3DPOOL_MANAGED = 1,
    D3DPOOL_SYSTEMMEM = 2,
    D3DPOOL_SCRATCH = 3,
    D3DPOOL_FORCE_DWORD = 0x7fffffff
} D3DPOOL;

typedef enum _D3DRESOURCETYPE
{
    D3DRTYPE_SURFACE = 1,
    D3DRTYPE_VOLUME = 2,
    D3DRTYPE_TEXTURE = 3,
    D3DRTYPE_VOLUMETEXTURE = 4,
    D3DRTYPE_CUBETEXTURE = 5,
    D3DRTYPE_VERTEXBUFFER = 6,
    D3DRTYPE_INDEXBUFFER = 7,
    D3DRTYPE_FORCE_DWORD = 0x7fffffff
} D3DRESOURCETYPE;

typedef enum _D3DDEVTYPE
{
    D3DDEVTYPE_HAL = 1,
    D3DDEVTYPE_REF = 2,
    D3DDEVTYPE_SW = 3,
    D3DDEVTYPE_NULLREF = 4,
    D3DDEVTYPE_FORCE_DWORD = 0x7fffffff
} D3DDEVTYPE;

typedef enum _D3DMULTISAMPLE_TYPE
{
    D3DMULTISAMPLE_NONE = 0,
    D3DMULTISAMPLE_NONMASKABLE = 1,
    D3DMULTISAMPLE_2_SAMPLES = 2,
    D3DMULTISAMPLE_4_SAMPLES = 4,
    D3DMULTISAMPLE_FORCE_DWORD = 0x7fffffff
} D3DMULTISAMPLE_TYPE;

typedef enum _D3DSWAPEFFECT
{
    D3DSWAPEFFECT_DISCARD = 1,
    D3DSWAPEFFECT_FLIP = 2,
    D3DSWAPEFFECT_COPY = 3,
    D3DSWAPEFFECT_FORCE_DWORD = 0x7fffffff
} D3DSWAPEFFECT;

typedef enum _D3DBACKBUFFER_TYPE
{
    D3DBACKBUFFER_TYPE_MONO = 0,
    D3DBACKBUFFER_TYPE_FORCE_DWORD = 0x7fffffff
} D3DBACKBUFFER_TYPE;

typedef enum _D3DPRIMITIVETYPE
{
    D3DPT_POINTLIST = 1,
    D3DPT_LINELIST = 2,
    D3DPT_LINESTRIP = 3,
    D3DPT_TRIANGLELIST = 4,
    D3DPT_TRIANGLESTRIP = 5,
    D3DPT_TRIANGLEFAN = 6,
    D3DPT_FORCE_DWORD = 0x7fffffff
} D3DPRIMITIVETYPE;

typedef enum _D3DTRANSFORMSTATETYPE
{
    D3DTS_VIEW = 2,
    D3DTS_PROJECTION = 3,
    D3DTS_TEXTURE0 = 16,
    D3DTS_FORCE_DWORD = 0x7fffffff
} D3DTRANSFORMSTATETYPE;
#define D3DTS_WORLDMATRIX(index) static_cast<D3DTRANSFORMSTATETYPE>((index) + 256)
#define D3DTS_WORLD D3DTS_WORLDMATRIX(0)

typedef enum _D3DTEXTUREFILTERTYPE
{
    D3DTEXF_NONE = 0,
    D3DTEXF_POINT = 1,
    D3DTEXF_LINEAR = 2,
    D3DTEXF_ANISOTROPIC = 3,
    D3DTEXF_FORCE_DWORD = 0x7fffffff
} D3DTEXTUREFILTERTYPE;

typedef enum _D3DRENDERSTATETYPE
{
    D3DRS_ZENABLE = 7,
    D3DRS_FILLMODE = 8,
    D3DRS_SHADEMODE = 9,
    D3DRS_ZWRITEENABLE = 14,
    D3DRS_ALPHATESTENABLE = 15,
    D3DRS_LASTPIXEL = 16,
    D3DRS_SRCBLEND = 19,
    D3DRS_DESTBLEND = 20,
    D3DRS_CULLMODE = 22,
    D3DRS_ZFUNC = 23,
    D3DRS_ALPHAREF = 24,
    D3DRS_ALPHAFUNC = 25,
    D3DRS_DITHERENABLE = 26,
    D3DRS_ALPHABLENDENABLE = 27,
    D3DRS_FOGENABLE = 28,
    D3DRS_SPECULARENABLE = 29,
    D3DRS_STENCILENABLE = 52,
    D3DRS_STENCILFAIL = 53,
    D3DRS_STENCILZFAIL = 54,
    D3DRS_STENCILPASS = 55,
    D3DRS_STENCILFUNC = 56,
    D3DRS_STENCILREF = 57,
    D3DRS_STENCILMASK = 58,
    D3DRS_STENCILWRITEMASK = 59,
    D3DRS_TEXTUREFACTOR = 60,
    D3DRS_CLIPPING = 136,
    D3DRS_LIGHTING = 137,
    D3DRS_AMBIENT = 139,
    D3DRS_COLORVERTEX = 141,
    D3DRS_LOCALVIEWER = 142,
    D3DRS_NORMALIZENORMALS = 143,
    D3DRS_DIFFUSEMATERIALSOURCE = 145,
    D3DRS_SPECULARMATERIALSOURCE = 146,
    D3DRS_AMBIENTMATERIALSOURCE = 147,
    D3DRS_EMISSIVEMATERIALSOURCE = 148,
    D3DRS_MULTISAMPLEANTIALIAS = 161,
    D3DRS_COLORWRITEENABLE = 168,
    D3DRS_BLENDOP = 171,
    D3DRS_SCISSORTESTENABLE = 174,
    D3DRS_ANTIALIASEDLINEENABLE = 176,
    D3DRS_SRGBWRITEENABLE = 194,
    D3DRS_FORCE_DWORD = 0x7fffffff
} D3DRENDERSTATETYPE;

typedef enum _D3DZBUFFERTYPE
{
    D3DZB_FALSE = 0,
    D3DZB_TRUE = 1,
    D3DZB_USEW = 2,
    D3DZB_FORCE_DWORD = 0x7fffffff
} D3DZBUFFERTYPE;

typedef enum _D3DFILLMODE
{
    D3DFILL_POINT = 1,
    D3DFILL_WIREFRAME = 2,
    D3DFILL_SOLID = 3,
    D3DFILL_FORCE_DWORD = 0x7fffffff
} D3DFILLMODE;

typedef enum _D3DSHADEMODE
{
    D3DSHADE_FLAT = 1,
    D3DSHADE_GOURAUD = 2,
    D3DSHADE_PHONG = 3,
    D3DSHADE_FORCE_DWORD = 0x7fffffff
} D3DSHADEMODE;

typedef enum _D3DCULL
{
    D3DCULL_NONE = 1,
    D3DCULL_CW = 2,
    D3DCULL_CCW = 3,
    D3DCULL_FORCE_DWORD = 0x7fffffff
} D3DCULL;

typedef enum _D3DCMPFUNC
{
    D3DCMP_NEVER = 1,
    D3DCMP_LESS = 2,
    D3DCMP_EQUAL = 3,
    D3DCMP_LESSEQUAL = 4,
    D3DCMP_GREATER = 5,
    D3DCMP_NOTEQUAL = 6,
    D3DCMP_GREATEREQUAL = 7,
    D3DCMP_ALWAYS = 8,
    D3DCMP_FORCE_DWORD = 0x7fffffff
} D3DCMPFUNC;

typedef enum _D3DBLEND
{
    D3DBLEND_ZERO = 1,
    D3DBLEND_ONE = 2,
    D3DBLEND_SRCCOLOR = 3,
    D3DBLEND_INVSRCCOLOR = 4,
    D3DBLEND_SRCALPHA = 5,
    D3DBLEND_INVSRCALPHA = 6,
    D3DBLEND_DESTALPHA = 7,
    D3DBLEND_INVDESTALPHA = 8,
    D3DBLEND_DESTCOLOR = 9,
    D3DBLEND_INVDESTCOLOR = 10,
    D3DBLEND_SRCALPHASAT = 11,
    D3DBLEND_FORCE_DWORD = 0x7fffffff
} D3DBLEND;

typedef enum _D3DBLENDOP
{
    D3DBLENDOP_ADD = 1,
    D3DBLENDOP_SUBTRACT = 2,
    D3DBLENDOP_REVSUBTRACT = 3,
    D3DBLENDOP_MIN = 4,
    D3DBLENDOP_MAX = 5,
    D3DBLENDOP_FORCE_DWORD = 0x7fffffff
} D3DBLENDOP;

typedef enum _D3DSTENCILOP
{
    D3DSTENCILOP_KEEP = 1,
    D3DSTENCILOP_ZERO = 2,
    D3DSTENCILOP_REPLACE = 3,
    D3DSTENCILOP_INCRSAT = 4,
    D3DSTENCILOP_DECRSAT = 5,
    D3DSTENCILOP_INVERT = 6,
    D3DSTENCILOP_INCR = 7,
    D3DSTENCILOP_DECR = 8,
    D3DSTENCILOP_FORCE_DWORD = 0x7fffffff
} D3DSTENCILOP;

typedef enum _D3DMATERIALCOLORSOURCE
{
    D3DMCS_MATERIAL = 0,
    D3DMCS_COLOR1 = 1,
    D3DMCS_COLOR2 = 2,
    D3DMCS_FORCE_DWORD = 0x7fffffff
} D3DMATERIALCOLORSOURCE;

typedef enum _D3DTEXTURESTAGESTATETYPE
{
    D3DTSS_COLOROP = 1,
    D3DTSS_COLORARG1 = 2,
    D3DTSS_COLORARG2 = 3,
    D3DTSS_ALPHAOP = 4,
    D3DTSS_ALPHAARG1 = 5,
    D3DTSS_ALPHAARG2 = 6,
    D3DTSS_TEXCOORDINDEX = 11,
    D3DTSS_TEXTURETRANSFORMFLAGS = 24,
    D3DTSS_FORCE_DWORD = 0x7fffffff
} D3DTEXTURESTAGESTATETYPE;

typedef enum _D3DTEXTUREOP
{
    D3DTOP_DISABLE = 1,
    D3DTOP_SELECTARG1 = 2,
    D3DTOP_SELECTARG2 = 3,
    D3DTOP_MODULATE = 4,
    D3DTOP_MODULATE2X = 5,
    D3DTOP_MODULATE4X = 6,
    D3DTOP_ADD = 7,
    D3DTOP_FORCE_DWORD = 0x7fffffff
} D3DTEXTUREOP;

// Texture stage arguments.
#define D3DTA_SELECTMASK 0x0000000f
#define D3DTA_DIFFUSE 0x00000000
#define D3DTA_CURRENT 0x00000001
#define D3DTA_TEXTURE 0x00000002
#define D3DTA_TFACTOR 0x00000003
#define D3DTA_COMPLEMENT 0x00000010
#define D3DTA_ALPHAREPLICATE 0x00000020

typedef enum _D3DSAMPLERSTATETYPE
{
    D3DSAMP_ADDRESSU = 1,
    D3DSAMP_ADDRESSV = 2,
    D3DSAMP_ADDRESSW = 3,
    D3DSAMP_BORDERCOLOR = 4,
    D3DSAMP_MAGFILTER = 5,
    D3DSAMP_MINFILTER = 6,
    D3DSAMP_MIPFILTER = 7,
    D3DSAMP_FORCE_DWORD = 0x7fffffff
} D3DSAMPLERSTATETYPE;

typedef enum _D3DTEXTUREADDRESS
{
    D3DTADDRESS_WRAP = 1,
    D3DTADDRESS_MIRROR = 2,
    D3DTADDRESS_CLAMP = 3,
    D3DTADDRESS_BORDER = 4,
    D3DTADDRESS_FORCE_DWORD = 0x7fffffff
} D3DTEXTUREADDRESS;

// Flexible vertex format bits. The subset draws D3DFVF_XYZ or D3DFVF_XYZRHW positions with
// any of NORMAL, DIFFUSE and TEX1 (two floats); components lie in that order.
#define D3DFVF_RESERVED0 0x001
#define D3DFVF_POSITION_MASK 0x400E
#define D3DFVF_XYZ 0x002
#define D3DFVF_XYZRHW 0x004
#define D3DFVF_NORMAL 0x010
#define D3DFVF_PSIZE 0x020
#define D3DFVF_DIFFUSE 0x040
#define D3DFVF_SPECULAR 0x080
#define D3DFVF_TEXCOUNT_MASK 0xf00
#define D3DFVF_TEXCOUNT_SHIFT 8
#define D3DFVF_TEX0 0x000
#define D3DFVF_TEX1 0x100

// Usage, lock, clear, creation and presentation flags.
#define D3DUSAGE_RENDERTARGET 0x00000001L
#define D3DUSAGE_DEPTHSTENCIL 0x00000002L
#define D3DUSAGE_WRITEONLY 0x00000008L
#define D3DUSAGE_DYNAMIC 0x00000200L
#define D3DUSAGE_AUTOGENMIPMAP 0x00000400L

#define D3DLOCK_READONLY 0x00000010L
#define D3DLOCK_DISCARD 0x00002000L
#define D3DLOCK_NOOVERWRITE 0x00001000L
#define D3DLOCK_NOSYSLOCK 0x00000800L

#define D3DCLEAR_TARGET 0x00000001L
#define D3DCLEAR_ZBUFFER 0x00000002L
#define D3DCLEAR_STENCIL 0x00000004L

#define D3DCREATE_FPU_PRESERVE 0x00000002L
#define D3DCREATE_MULTITHREADED 0x00000004L
#define D3DCREATE_PUREDEVICE 0x00000010L
#define D3DCREATE_SOFTWARE_VERTEXPROCESSING 0x00000020L
#define D3DCREATE_HARDWARE_VERTEXPROCESSING 0x00000040L
#define D3DCREATE_MIXED_VERTEXPROCESSING 0x00000080L

#define D3DPRESENT_INTERVAL_DEFAULT 0x00000000L
#define D3DPRESENT_INTERVAL_ONE 0x00000001L
#define D3DPRESENT_INTERVAL_IMMEDIATE 0x80000000L
#define D3DPRESENTFLAG_LOCKABLE_BACKBUFFER 0x00000001L

#define D3DCOLORWRITEENABLE_RED (1L << 0)
#define D3DCOLORWRITEENABLE_GREEN (1L << 1)
#define D3DCOLORWRITEENABLE_BLUE (1L << 2)
#define D3DCOLORWRITEENABLE_ALPHA (1L << 3)

// Capability bits reported by GetDeviceCaps.
#define D3DDEVCAPS_HWTRANSFORMANDLIGHT 0x00010000L
#define D3DVTXPCAPS_MATERIALSOURCE7 0x00000002L
#define D3DVTXPCAPS_DIRECTIONALLIGHTS 0x00000008L
#define D3DVTXPCAPS_POSITIONALLIGHTS 0x00000010L
#define D3DVTXPCAPS_LOCALVIEWER 0x00000020L

// ---------------------------------------------------------------------------------------
// Records

typedef struct _D3DPRESENT_PARAMETERS_
{
    UINT BackBufferWidth;
    UINT BackBufferHeight;
    D3DFORMAT BackBufferFormat;
    UINT BackBufferCount;
    D3DMULTISAMPLE_TYPE MultiSampleType;
    DWORD MultiSampleQuality;
    D3DSWAPEFFECT SwapEffect;
    HWND hDeviceWindow;
    BOOL Windowed;
    BOOL EnableAutoDepthStencil;
    D3DFORMAT AutoDepthStencilFormat;
    DWORD Flags;
    UINT FullScreen_RefreshRateInHz;
    UINT PresentationInterval;
} D3DPRESENT_PARAMETERS;

typedef struct _D3DLOCKED_RECT
{
    INT Pitch;
    void* pBits;
} D3DLOCKED_RECT;

typedef struct _D3DSURFACE_DESC
{
    D3DFORMAT Format;
    D3DRESOURCETYPE Type;
    DWORD Usage;
    D3DPOOL Pool;
    D3DMULTISAMPLE_TYPE MultiSampleType;
    DWORD MultiSampleQuality;
    UINT Width;
    UINT Height;
} D3DSURFACE_DESC;

typedef struct _D3DVERTEXBUFFER_DESC
{
    D3DFORMAT Format;
    D3DRESOURCETYPE Type;
    DWORD Usage;
    D3DPOOL Pool;
    UINT Size;
    DWORD FVF;
} D3DVERTEXBUFFER_DESC;

typedef struct _D3DINDEXBUFFER_DESC
{
    D3DFORMAT Format;
    D3DRESOURCETYPE Type;
    DWORD Usage;
    D3DPOOL Pool;
    UINT Size;
} D3DINDEXBUFFER_DESC;

typedef struct _D3DDEVICE_CREATION_PARAMETERS
{
    UINT AdapterOrdinal;
    D3DDEVTYPE DeviceType;
    HWND hFocusWindow;
    DWORD BehaviorFlags;
} D3DDEVICE_CREATION_PARAMETERS;

// The capability fields the system reads (a subset of Direct3D 9's record, same names).
typedef struct _D3DCAPS9
{
    D3DDEVTYPE DeviceType;
    UINT AdapterOrdinal;
    DWORD Caps;
    DWORD Caps2;
    DWORD DevCaps;
    DWORD PrimitiveMiscCaps;
    DWORD RasterCaps;
    DWORD ZCmpCaps;
    DWORD SrcBlendCaps;
    DWORD DestBlendCaps;
    DWORD TextureCaps;
    DWORD MaxTextureWidth;
    DWORD MaxTextureHeight;
    DWORD FVFCaps;
    DWORD TextureOpCaps;
    DWORD MaxTextureBlendStages;
    DWORD MaxSimultaneousTextures;
    DWORD VertexProcessingCaps;
    DWORD MaxActiveLights;
    DWORD MaxUserClipPlanes;
    DWORD MaxPrimitiveCount;
    DWORD MaxVertexIndex;
    DWORD MaxStreams;
    DWORD MaxStreamStride;
    DWORD VertexShaderVersion;
    DWORD PixelShaderVersion;
    DWORD NumSimultaneousRTs;
} D3DCAPS9;

// ---------------------------------------------------------------------------------------
// Interfaces

struct IDirect3D9;
struct IDirect3DDevice9;
struct IDirect3DSwapChain9;
struct IDirect3DResource9;
struct IDirect3DBaseTexture9;
struct IDirect3DTexture9;
struct IDirect3DSurface9;
struct IDirect3DVertexBuffer9;
struct IDirect3DIndexBuffer9;

struct IUnknown
{
    // Answers E_NOINTERFACE: interfaces are reached through the creating calls.
    virtual HRESULT QueryInterface(REFIID riid, void** ppvObj) = 0;
    virtual ULONG AddRef() = 0;
    // Drops one reference; the object is destroyed when none is left. Returns the count.
    virtual ULONG Release() = 0;

protected:
    virtual ~IUnknown() = default;
};

// The Direct3D object: adapters, their checks and capabilities, device creation.
struct IDirect3D9 : IUnknown
{
    // Adapters are simulated (see d3d9_testing.h); by default one, drawing with OpenGL.
    virtual UINT GetAdapterCount() = 0;
    // D3D_OK when the adapter renders the formats in a window (X8R8G8B8 display with
    // A8R8G8B8 or X8R8G8B8 back buffers), D3DERR_NOTAVAILABLE otherwise.
    virtual HRESULT CheckDeviceType(UINT Adapter, D3DDEVTYPE DevType, D3DFORMAT AdapterFormat,
                                    D3DFORMAT BackBufferFormat, BOOL bWindowed) = 0;
    // D3D_OK when CheckFormat can be created with Usage as a resource of RType.
    virtual HRESULT CheckDeviceFormat(UINT Adapter, D3DDEVTYPE DeviceType, D3DFORMAT AdapterFormat,
                                      DWORD Usage, D3DRESOURCETYPE RType,
                                      D3DFORMAT CheckFormat) = 0;
    virtual HRESULT CheckDepthStencilMatch(UINT Adapter, D3DDEVTYPE DeviceType,
                                           D3DFORMAT AdapterFormat, D3DFORMAT RenderTargetFormat,
                                           D3DFORMAT DepthStencilFormat) = 0;
    virtual HRESULT GetDeviceCaps(UINT Adapter, D3DDEVTYPE DeviceType, D3DCAPS9* pCaps) = 0;
    // Creates the device (one EGL display and OpenGL 4.5 context) and its implicit swap
    // chain from the present parameters. hFocusWindow null and no hDeviceWindow: headless.
    virtual HRESULT CreateDevice(UINT Adapter, D3DDEVTYPE DeviceType, HWND hFocusWindow,
                                 DWORD BehaviorFlags,
                                 D3DPRESENT_PARAMETERS* pPresentationParameters,
                                 IDirect3DDevice9** ppReturnedDeviceInterface) = 0;
};

struct IDirect3DResource9 : IUnknown
{
    // The creating device, with a reference added.
    virtual HRESULT GetDevice(IDirect3DDevice9** ppDevice) = 0;
    virtual D3DRESOURCETYPE GetType() = 0;
};

struct IDirect3DBaseTexture9 : IDirect3DResource9
{
    // Number of mip levels.
    virtual DWORD GetLevelCount() = 0;
};

// A 2-D image: a render target, depth/stencil surface, off-screen plain surface, back
// buffer or one level of a texture (whose references are the texture's).
struct IDirect3DSurface9 : IDirect3DResource9
{
    // Format, usage, pool and size.
    virtual HRESULT GetDesc(D3DSURFACE_DESC* pDesc) = 0;
    // Maps the pixels (or pRect of them): row 0 is the top of the image, pitch in bytes.
    // Depth/stencil surfaces and render targets made without Lockable cannot be locked.
    virtual HRESULT LockRect(D3DLOCKED_RECT* pLockedRect, const RECT* pRect, DWORD Flags) = 0;
    virtual HRESULT UnlockRect() = 0;
};

struct IDirect3DTexture9 : IDirect3DBaseTexture9
{
    // Description of one level; D3DERR_INVALIDCALL past the last level.
    virtual HRESULT GetLevelDesc(UINT Level, D3DSURFACE_DESC* pDesc) = 0;
    // The surface of one mip level, with a reference added.
    virtual HRESULT GetSurfaceLevel(UINT Level, IDirect3DSurface9** ppSurfaceLevel) = 0;
    virtual HRESULT LockRect(UINT Level, D3DLOCKED_RECT* pLockedRect, const RECT* pRect,
                             DWORD Flags) = 0;
    virtual HRESULT UnlockRect(UINT Level) = 0;
};

struct IDirect3DVertexBuffer9 : IDirect3DResource9
{
    // Maps SizeToLock bytes from OffsetToLock (0, 0: the whole buffer). Data reaches the
    // GPU at Unlock.
    virtual HRESULT Lock(UINT OffsetToLock, UINT SizeToLock, void** ppbData, DWORD Flags) = 0;
    virtual HRESULT Unlock() = 0;
    virtual HRESULT GetDesc(D3DVERTEXBUFFER_DESC* pDesc) = 0;
};

struct IDirect3DIndexBuffer9 : IDirect3DResource9
{
    // As IDirect3DVertexBuffer9::Lock.
    virtual HRESULT Lock(UINT OffsetToLock, UINT SizeToLock, void** ppbData, DWORD Flags) = 0;
    virtual HRESULT Unlock() = 0;
    virtual HRESULT GetDesc(D3DINDEXBUFFER_DESC* pDesc) = 0;
};

struct IDirect3DSwapChain9 : IUnknown
{
    // Shows back buffer 0 in the window (headless: nothing to show). D3DERR_DEVICELOST
    // while the device is lost.
    virtual HRESULT Present(const RECT* pSourceRect, const RECT* pDestRect,
                            HWND hDestWindowOverride, const RGNDATA* pDirtyRegion,
                            DWORD dwFlags) = 0;
    virtual HRESULT GetBackBuffer(UINT iBackBuffer, D3DBACKBUFFER_TYPE Type,
                                  IDirect3DSurface9** ppBackBuffer) = 0;
    virtual HRESULT GetPresentParameters(D3DPRESENT_PARAMETERS* pPresentationParameters) = 0;
    virtual HRESULT GetDevice(IDirect3DDevice9** ppDevice) = 0;
};

// The device. Fixed-function drawing is emulated by generated GLSL (Direct3D 9's lighting
// equation); within an effect pass the effect's program draws instead. Unlike Direct3D,
// bindings (render target, depth/stencil, texture, stream, indices) hold no reference: a
// resource released while bound is unbound, and the Get calls then answer null.
struct IDirect3DDevice9 : IUnknown
{
    // D3D_OK, or D3DERR_DEVICELOST / D3DERR_DEVICENOTRESET after the device was lost.
    virtual HRESULT TestCooperativeLevel() = 0;
    // Rebuilds the implicit swap chain; fails with D3DERR_INVALIDCALL while any
    // D3DPOOL_DEFAULT resource or additional swap chain is still alive, and with
    // D3DERR_DEVICELOST while the device cannot be reset yet. Resets all device state.
    virtual HRESULT Reset(D3DPRESENT_PARAMETERS* pPresentationParameters) = 0;
    virtual HRESULT GetDirect3D(IDirect3D9** ppD3D9) = 0;
    virtual HRESULT GetDeviceCaps(D3DCAPS9* pCaps) = 0;
    virtual HRESULT GetCreationParameters(D3DDEVICE_CREATION_PARAMETERS* pParameters) = 0;

    // A swap chain of its own back buffer: headless an off-screen render target, else
    // shown in hDeviceWindow by Present. Counts as video memory for Reset.
    virtual HRESULT CreateAdditionalSwapChain(D3DPRESENT_PARAMETERS* pPresentationParameters,
                                              IDirect3DSwapChain9** pSwapChain) = 0;
    virtual HRESULT GetSwapChain(UINT iSwapChain, IDirect3DSwapChain9** pSwapChain) = 0;
    virtual HRESULT Present(const RECT* pSourceRect, const RECT* pDestRect,
                            HWND hDestWindowOverride, const RGNDATA* pDirtyRegion) = 0;
    virtual HRESULT GetBackBuffer(UINT iSwapChain, UINT iBackBuffer, D3DBACKBUFFER_TYPE Type,
                                  IDirect3DSurface9** ppBackBuffer) = 0;

    // Levels 0 makes the full mip chain. Formats: A8R8G8B8, X8R8G8B8, A8, R32F.
    virtual HRESULT CreateTexture(UINT Width, UINT Height, UINT Levels, DWORD Usage,
                                  D3DFORMAT Format, D3DPOOL Pool, IDirect3DTexture9** ppTexture,
                                  HANDLE* pSharedHandle) = 0;
    virtual HRESULT CreateVertexBuffer(UINT Length, DWORD Usage, DWORD FVF, D3DPOOL Pool,
                                       IDirect3DVertexBuffer9** ppVertexBuffer,
                                       HANDLE* pSharedHandle) = 0;
    // Format D3DFMT_INDEX16 or D3DFMT_INDEX32.
    virtual HRESULT CreateIndexBuffer(UINT Length, DWORD Usage, D3DFORMAT Format, D3DPOOL Pool,
                                      IDirect3DIndexBuffer9** ppIndexBuffer,
                                      HANDLE* pSharedHandle) = 0;
    // Multisampling is not available: MultiSample must be D3DMULTISAMPLE_NONE.
    virtual HRESULT CreateRenderTarget(UINT Width, UINT Height, D3DFORMAT Format,
                                       D3DMULTISAMPLE_TYPE MultiSample, DWORD MultisampleQuality,
                                       BOOL Lockable, IDirect3DSurface9** ppSurface,
                                       HANDLE* pSharedHandle) = 0;
    // Formats D24S8, D24X8, D16, D32.
    virtual HRESULT CreateDepthStencilSurface(UINT Width, UINT Height, D3DFORMAT Format,
                                              D3DMULTISAMPLE_TYPE MultiSample,
                                              DWORD MultisampleQuality, BOOL Discard,
                                              IDirect3DSurface9** ppSurface,
                                              HANDLE* pSharedHandle) = 0;
    // Copies a render target into a D3DPOOL_SYSTEMMEM surface of the same size and format.
    virtual HRESULT GetRenderTargetData(IDirect3DSurface9* pRenderTarget,
                                        IDirect3DSurface9* pDestSurface) = 0;
    // Copies (scaling) between two video-memory surfaces; null rectangles mean whole
    // surfaces. Filter D3DTEXF_NONE/POINT: nearest pixel, D3DTEXF_LINEAR: bilinear.
    virtual HRESULT StretchRect(IDirect3DSurface9* pSourceSurface, const RECT* pSourceRect,
                                IDirect3DSurface9* pDestSurface, const RECT* pDestRect,
                                D3DTEXTUREFILTERTYPE Filter) = 0;
    virtual HRESULT ColorFill(IDirect3DSurface9* pSurface, const RECT* pRect, D3DCOLOR color) = 0;
    virtual HRESULT CreateOffscreenPlainSurface(UINT Width, UINT Height, D3DFORMAT Format,
                                                D3DPOOL Pool, IDirect3DSurface9** ppSurface,
                                                HANDLE* pSharedHandle) = 0;

    // Setting render target 0 resets the viewport to the whole target.
    virtual HRESULT SetRenderTarget(DWORD RenderTargetIndex, IDirect3DSurface9* pRenderTarget) = 0;
    virtual HRESULT GetRenderTarget(DWORD RenderTargetIndex,
                                    IDirect3DSurface9** ppRenderTarget) = 0;
    virtual HRESULT SetDepthStencilSurface(IDirect3DSurface9* pNewZStencil) = 0;
    virtual HRESULT GetDepthStencilSurface(IDirect3DSurface9** ppZStencilSurface) = 0;

    // Bracket a frame's drawing; nesting is refused. Drawing outside them is allowed.
    virtual HRESULT BeginScene() = 0;
    virtual HRESULT EndScene() = 0;
    // Clears the viewport (intersected with the rectangles when Count > 0), regardless of
    // the write masks.
    virtual HRESULT Clear(DWORD Count, const D3DRECT* pRects, DWORD Flags, D3DCOLOR Color, float Z,
                          DWORD Stencil) = 0;

    // D3DTS_WORLD, D3DTS_VIEW and D3DTS_PROJECTION drive drawing; texture and further world
    // matrices are kept only.
    virtual HRESULT SetTransform(D3DTRANSFORMSTATETYPE State, const D3DMATRIX* pMatrix) = 0;
    virtual HRESULT GetTransform(D3DTRANSFORMSTATETYPE State, D3DMATRIX* pMatrix) = 0;
    // Current = pMatrix * Current (the new matrix applies first).
    virtual HRESULT MultiplyTransform(D3DTRANSFORMSTATETYPE State, const D3DMATRIX* pMatrix) = 0;
    virtual HRESULT SetViewport(const D3DVIEWPORT9* pViewport) = 0;
    virtual HRESULT GetViewport(D3DVIEWPORT9* pViewport) = 0;
    virtual HRESULT SetMaterial(const D3DMATERIAL9* pMaterial) = 0;
    virtual HRESULT GetMaterial(D3DMATERIAL9* pMaterial) = 0;
    // Eight light slots (0..7); point and directional lights.
    virtual HRESULT SetLight(DWORD Index, const D3DLIGHT9* pLight) = 0;
    virtual HRESULT GetLight(DWORD Index, D3DLIGHT9* pLight) = 0;
    virtual HRESULT LightEnable(DWORD Index, BOOL Enable) = 0;
    virtual HRESULT GetLightEnable(DWORD Index, BOOL* pEnable) = 0;
    virtual HRESULT SetRenderState(D3DRENDERSTATETYPE State, DWORD Value) = 0;
    virtual HRESULT GetRenderState(D3DRENDERSTATETYPE State, DWORD* pValue) = 0;

    // Eight stages; stage 0 is combined by the fixed-function texture stage states.
    virtual HRESULT GetTexture(DWORD Stage, IDirect3DBaseTexture9** ppTexture) = 0;
    virtual HRESULT SetTexture(DWORD Stage, IDirect3DBaseTexture9* pTexture) = 0;
    virtual HRESULT GetTextureStageState(DWORD Stage, D3DTEXTURESTAGESTATETYPE Type,
                                         DWORD* pValue) = 0;
    virtual HRESULT SetTextureStageState(DWORD Stage, D3DTEXTURESTAGESTATETYPE Type,
                                         DWORD Value) = 0;
    virtual HRESULT GetSamplerState(DWORD Sampler, D3DSAMPLERSTATETYPE Type, DWORD* pValue) = 0;
    virtual HRESULT SetSamplerState(DWORD Sampler, D3DSAMPLERSTATETYPE Type, DWORD Value) = 0;
    virtual HRESULT SetScissorRect(const RECT* pRect) = 0;
    virtual HRESULT GetScissorRect(RECT* pRect) = 0;

    // Drawing from stream 0 (and the index buffer) in the current vertex format.
    virtual HRESULT DrawPrimitive(D3DPRIMITIVETYPE PrimitiveType, UINT StartVertex,
                                  UINT PrimitiveCount) = 0;
    virtual HRESULT DrawIndexedPrimitive(D3DPRIMITIVETYPE PrimitiveType, INT BaseVertexIndex,
                                         UINT MinVertexIndex, UINT NumVertices, UINT startIndex,
                                         UINT primCount) = 0;
    // Drawing from caller memory; afterwards stream 0 and the indices are unset, as on D3D.
    virtual HRESULT DrawPrimitiveUP(D3DPRIMITIVETYPE PrimitiveType, UINT PrimitiveCount,
                                    const void* pVertexStreamZeroData,
                                    UINT VertexStreamZeroStride) = 0;
    virtual HRESULT DrawIndexedPrimitiveUP(D3DPRIMITIVETYPE PrimitiveType, UINT MinVertexIndex,
                                           UINT NumVertices, UINT PrimitiveCount,
                                           const void* pIndexData, D3DFORMAT IndexDataFormat,
                                           const void* pVertexStreamZeroData,
                                           UINT VertexStreamZeroStride) = 0;
    virtual HRESULT SetFVF(DWORD FVF) = 0;
    virtual HRESULT GetFVF(DWORD* pFVF) = 0;
    // Stream 0 only.
    virtual HRESULT SetStreamSource(UINT StreamNumber, IDirect3DVertexBuffer9* pStreamData,
                                    UINT OffsetInBytes, UINT Stride) = 0;
    virtual HRESULT GetStreamSource(UINT StreamNumber, IDirect3DVertexBuffer9** ppStreamData,
                                    UINT* pOffsetInBytes, UINT* pStride) = 0;
    virtual HRESULT SetIndices(IDirect3DIndexBuffer9* pIndexData) = 0;
    // The current index buffer with a reference added (null when none).
    virtual HRESULT GetIndices(IDirect3DIndexBuffer9** ppIndexData) = 0;
};

typedef IDirect3D9* LPDIRECT3D9;
typedef IDirect3DDevice9* LPDIRECT3DDEVICE9;
typedef IDirect3DSwapChain9* LPDIRECT3DSWAPCHAIN9;
typedef IDirect3DSurface9* LPDIRECT3DSURFACE9;
typedef IDirect3DBaseTexture9* LPDIRECT3DBASETEXTURE9;
typedef IDirect3DTexture9* LPDIRECT3DTEXTURE9;
typedef IDirect3DVertexBuffer9* LPDIRECT3DVERTEXBUFFER9;
typedef IDirect3DIndexBuffer9* LPDIRECT3DINDEXBUFFER9;

// The Direct3D object for SDKVersion D3D_SDK_VERSION; null for another version (or when
// a test made creation fail, see d3d9_testing.h).
IXO_API IDirect3D9* Direct3DCreate9(UINT SDKVersion);
