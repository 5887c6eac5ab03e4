#pragma once
// ID3DXEffect over OpenGL. HLSL cannot be compiled here, so an effect file is our own
// text format: named techniques, each with one pass of GLSL 4.50 vertex and fragment
// source whose uniforms carry the parameter names.
//
//   // comment lines start with two slashes (outside shader sources)
//   common                 <- optional GLSL shared by every stage, up to the next keyword
//   technique MainTechnique
//   vertex                 <- GLSL vertex stage; "#version 450 core" is prepended
//   ...
//   fragment               <- GLSL fragment stage
//   ...
//   end                    <- closes the technique
//
// Keywords stand alone on their line. Vertex inputs come from the vertex format: location
// 0 position (vec3, or vec4 x, y, z, rhw), 1 normal, 2 diffuse colour (vec4 red, green,
// blue, alpha), 3 first texture coordinate. Matrices set with SetMatrix arrive so that
// "g_mProj * g_mView * g_mWorld * vec4(p, 1)" computes Direct3D's p * World * View * Proj.
// A parameter is any uniform of any technique (bool, int, float, vec4, mat4, sampler2D);
// values persist across techniques. Parameter changes reach the drawing at BeginPass,
// CommitChanges and the next draw inside the pass.

#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9_math_types.h>

typedef const char* D3DXHANDLE;
typedef D3DXHANDLE* LPD3DXHANDLE;

#define D3DXERR_INVALIDDATA MAKE_D3DHRESULT(2905)

typedef struct _D3DXMACRO
{
    LPCSTR Name;
    LPCSTR Definition;
} D3DXMACRO;

// Include handlers and effect pools are not supported (pass null).
struct ID3DXInclude;
struct ID3DXEffectPool;
typedef ID3DXInclude* LPD3DXINCLUDE;
typedef ID3DXEffectPool* LPD3DXEFFECTPOOL;

// A block of bytes handed out by D3DX (compiler messages, for instance).
struct ID3DXBuffer : IUnknown
{
    virtual LPVOID GetBufferPointer() = 0;
    virtual DWORD GetBufferSize() = 0;
};
typedef ID3DXBuffer* LPD3DXBUFFER;

// Makes a zero-filled buffer of NumBytes bytes.
IXO_API HRESULT D3DXCreateBuffer(DWORD NumBytes, LPD3DXBUFFER* ppBuffer);

struct ID3DXEffect : IUnknown
{
    // Handles are names or the handles these two return; null when not found.
    virtual D3DXHANDLE GetParameterByName(D3DXHANDLE hParameter, LPCSTR pName) = 0;
    virtual D3DXHANDLE GetTechniqueByName(LPCSTR pName) = 0;

    virtual HRESULT SetBool(D3DXHANDLE hParameter, BOOL b) = 0;
    virtual HRESULT GetBool(D3DXHANDLE hParameter, BOOL* pb) = 0;
    virtual HRESULT SetInt(D3DXHANDLE hParameter, INT n) = 0;
    virtual HRESULT GetInt(D3DXHANDLE hParameter, INT* pn) = 0;
    virtual HRESULT SetFloat(D3DXHANDLE hParameter, FLOAT f) = 0;
    virtual HRESULT GetFloat(D3DXHANDLE hParameter, FLOAT* pf) = 0;
    virtual HRESULT SetVector(D3DXHANDLE hParameter, const D3DXVECTOR4* pVector) = 0;
    virtual HRESULT GetVector(D3DXHANDLE hParameter, D3DXVECTOR4* pVector) = 0;
    virtual HRESULT SetMatrix(D3DXHANDLE hParameter, const D3DXMATRIX* pMatrix) = 0;
    virtual HRESULT GetMatrix(D3DXHANDLE hParameter, D3DXMATRIX* pMatrix) = 0;
    // The texture is referenced while set.
    virtual HRESULT SetTexture(D3DXHANDLE hParameter, LPDIRECT3DBASETEXTURE9 pTexture) = 0;
    virtual HRESULT GetTexture(D3DXHANDLE hParameter, LPDIRECT3DBASETEXTURE9* ppTexture) = 0;

    virtual HRESULT SetTechnique(D3DXHANDLE hTechnique) = 0;
    virtual D3DXHANDLE GetCurrentTechnique() = 0;
    // Starts the current technique; *pPasses = 1. Flags are accepted and ignored.
    virtual HRESULT Begin(UINT* pPasses, DWORD Flags) = 0;
    // Makes the technique's program draw the device's following draw calls.
    virtual HRESULT BeginPass(UINT Pass) = 0;
    virtual HRESULT CommitChanges() = 0;
    virtual HRESULT EndPass() = 0;
    virtual HRESULT End() = 0;

    virtual HRESULT GetDevice(LPDIRECT3DDEVICE9* ppDevice) = 0;
    virtual HRESULT OnLostDevice() = 0;
    virtual HRESULT OnResetDevice() = 0;
};
typedef ID3DXEffect* LPD3DXEFFECT;

// Reads an effect file (see above; backslashes in the path are taken as separators),
// compiles every technique for the device and returns the effect. Fails with
// D3DXERR_INVALIDDATA when the file does not parse or a stage does not compile (the
// messages go to ppCompilationErrors when it is given), D3DERR_NOTFOUND when the file
// cannot be read, D3DERR_INVALIDCALL for null arguments. Macros, include handlers, flags
// and pools are ignored.
IXO_API HRESULT D3DXCreateEffectFromFileW(LPDIRECT3DDEVICE9 pDevice, LPCWSTR pSrcFile,
                                          const D3DXMACRO* pDefines, LPD3DXINCLUDE pInclude,
                                          DWORD Flags, LPD3DXEFFECTPOOL pPool,
                                          LPD3DXEFFECT* ppEffect,
                                          LPD3DXBUFFER* ppCompilationErrors);
// The same from text in memory.
IXO_API HRESULT D3DXCreateEffect(LPDIRECT3DDEVICE9 pDevice, LPCVOID pSrcData, UINT SrcDataLen,
                                 const D3DXMACRO* pDefines, LPD3DXINCLUDE pInclude, DWORD Flags,
                                 LPD3DXEFFECTPOOL pPool, LPD3DXEFFECT* ppEffect,
                                 LPD3DXBUFFER* ppCompilationErrors);
