#pragma once
// The D3DX 9 subset the system draws with, built on the Direct3D 9 device interface as
// D3DX itself is: mesh builders, text, screen-space lines and sprites, textures from
// image files, cache-order optimisation and the matrix and vector helpers.
//
// Matrices are row-vector (v * M), as in D3DX. Text comes from FreeType through
// fontconfig ("Segoe UI" resolves to fontconfig's fallback where it is not installed);
// images are decoded by stb_image (PNG, JPEG, BMP and the other formats it reads).

#include <ixocore/core/api.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/platform/d3dx9_math_types.h>

// ---------------------------------------------------------------------------------------
// Constants

#define D3DX_PI 3.141592654f
#define D3DX_DEFAULT static_cast<UINT>(-1)
#define D3DX_DEFAULT_NONPOW2 static_cast<UINT>(-2)
#define D3DX_FROM_FILE static_cast<UINT>(-3)
#define D3DFMT_FROM_FILE static_cast<D3DFORMAT>(-3)

// Image filters (only the point/none distinction matters here: sizes change by nearest
// pixel, mip levels by averaging 2 x 2 blocks).
#define D3DX_FILTER_NONE 0x00000001
#define D3DX_FILTER_POINT 0x00000002
#define D3DX_FILTER_LINEAR 0x00000003
#define D3DX_FILTER_TRIANGLE 0x00000004
#define D3DX_FILTER_BOX 0x00000005

// Mesh options reported by GetOptions.
#define D3DXMESH_32BIT 0x001
#define D3DXMESH_VB_MANAGED 0x010
#define D3DXMESH_IB_MANAGED 0x200
#define D3DXMESH_MANAGED 0x220

// Sprite flags for ID3DXSprite::Begin.
#define D3DXSPRITE_DONOTSAVESTATE (1 << 0)
#define D3DXSPRITE_DONOTMODIFY_RENDERSTATE (1 << 1)
#define D3DXSPRITE_OBJECTSPACE (1 << 2)
#define D3DXSPRITE_BILLBOARD (1 << 3)
#define D3DXSPRITE_ALPHABLEND (1 << 4)
#define D3DXSPRITE_SORT_TEXTURE (1 << 5)
#define D3DXSPRITE_SORT_DEPTH_FRONTTOBACK (1 << 6)
#define D3DXSPRITE_SORT_DEPTH_BACKTOFRONT (1 << 7)

// DrawText formats (the Win32 values).
#ifndef DT_TOP
#define DT_TOP 0x00000000
#define DT_LEFT 0x00000000
#define DT_CENTER 0x00000001
#define DT_RIGHT 0x00000002
#define DT_VCENTER 0x00000004
#define DT_BOTTOM 0x00000008
#define DT_WORDBREAK 0x00000010
#define DT_SINGLELINE 0x00000020
#define DT_EXPANDTABS 0x00000040
#define DT_NOCLIP 0x00000100
#define DT_CALCRECT 0x00000400
#endif

// Font creation values (the Win32 values).
#ifndef FW_NORMAL
#define FW_DONTCARE 0
#define FW_NORMAL 400
#define FW_BOLD 700
#define DEFAULT_CHARSET 1
#define OUT_DEFAULT_PRECIS 0
#define DEFAULT_QUALITY 0
#define NONANTIALIASED_QUALITY 3
#define ANTIALIASED_QUALITY 4
#define DEFAULT_PITCH 0
#define FF_DONTCARE 0
#endif

typedef enum _D3DXIMAGE_FILEFORMAT
{
    D3DXIFF_BMP = 0,
    D3DXIFF_JPG = 1,
    D3DXIFF_TGA = 2,
    D3DXIFF_PNG = 3,
    D3DXIFF_DDS = 4,
    D3DXIFF_PPM = 5,
    D3DXIFF_DIB = 6,
    D3DXIFF_HDR = 7,
    D3DXIFF_PFM = 8,
    D3DXIFF_FORCE_DWORD = 0x7fffffff
} D3DXIMAGE_FILEFORMAT;

typedef struct _D3DXIMAGE_INFO
{
    UINT Width;
    UINT Height;
    UINT Depth;
    UINT MipLevels;
    D3DFORMAT Format;
    D3DRESOURCETYPE ResourceType;
    D3DXIMAGE_FILEFORMAT ImageFileFormat;
} D3DXIMAGE_INFO;

typedef struct tagPALETTEENTRY
{
    BYTE peRed;
    BYTE peGreen;
    BYTE peBlue;
    BYTE peFlags;
} PALETTEENTRY;

typedef struct _D3DXFONT_DESCW
{
    INT Height;
    UINT Width;
    UINT Weight;
    UINT MipLevels;
    BOOL Italic;
    BYTE CharSet;
    BYTE OutputPrecision;
    BYTE Quality;
    BYTE PitchAndFamily;
    WCHAR FaceName[32];
} D3DXFONT_DESCW;

// ---------------------------------------------------------------------------------------
// Interfaces

// A triangle-list mesh in one vertex buffer and one index buffer (managed pool), all faces
// in attribute subset 0.
struct ID3DXBaseMesh : IUnknown
{
    // Draws the faces of subset AttribId with the mesh's FVF, stream 0 and indices; the
    // device keeps them set afterwards. Other subsets are empty and draw nothing.
    virtual HRESULT DrawSubset(DWORD AttribId) = 0;
    virtual DWORD GetNumFaces() = 0;
    virtual DWORD GetNumVertices() = 0;
    virtual DWORD GetFVF() = 0;
    virtual DWORD GetOptions() = 0;
    virtual DWORD GetNumBytesPerVertex() = 0;
    // The creating device, with a reference added.
    virtual HRESULT GetDevice(LPDIRECT3DDEVICE9* ppDevice) = 0;
    // The buffers, with a reference added.
    virtual HRESULT GetVertexBuffer(LPDIRECT3DVERTEXBUFFER9* ppVB) = 0;
    virtual HRESULT GetIndexBuffer(LPDIRECT3DINDEXBUFFER9* ppIB) = 0;
    virtual HRESULT LockVertexBuffer(DWORD Flags, LPVOID* ppData) = 0;
    virtual HRESULT UnlockVertexBuffer() = 0;
    virtual HRESULT LockIndexBuffer(DWORD Flags, LPVOID* ppData) = 0;
    virtual HRESULT UnlockIndexBuffer() = 0;
};

struct ID3DXMesh : ID3DXBaseMesh
{
    // One DWORD per face: the face's subset (0 for every builder's face).
    virtual HRESULT LockAttributeBuffer(DWORD Flags, DWORD** ppData) = 0;
    virtual HRESULT UnlockAttributeBuffer() = 0;
};

// Draws textured screen-space rectangles, batched between Begin and End.
struct ID3DXSprite : IUnknown
{
    virtual HRESULT GetDevice(LPDIRECT3DDEVICE9* ppDevice) = 0;
    // The transform applied to every rectangle's corners (identity at creation).
    virtual HRESULT GetTransform(D3DXMATRIX* pTransform) = 0;
    virtual HRESULT SetTransform(const D3DXMATRIX* pTransform) = 0;
    // Starts a batch. Unless D3DXSPRITE_DONOTMODIFY_RENDERSTATE, sets the states sprites
    // draw with (no lighting, culling or depth test; texture times colour; alpha blending
    // with D3DXSPRITE_ALPHABLEND); unless D3DXSPRITE_DONOTSAVESTATE, End restores them.
    // The object-space, billboard and sort flags are accepted and ignored: rectangles are
    // drawn in view pixels in the order they were queued.
    virtual HRESULT Begin(DWORD Flags) = 0;
    // Queues the pSrcRect part of pTexture (null: all of it) with its point pCenter (null:
    // its top-left corner) at pPosition (null: the origin), in view pixels, each texel
    // multiplied by Color (ARGB). Texels map 1:1 to pixels under the identity transform.
    virtual HRESULT Draw(LPDIRECT3DTEXTURE9 pTexture, const RECT* pSrcRect,
                         const D3DXVECTOR3* pCenter, const D3DXVECTOR3* pPosition,
                         D3DCOLOR Color) = 0;
    // Draws what is queued.
    virtual HRESULT Flush() = 0;
    // Draws what is queued and ends the batch.
    virtual HRESULT End() = 0;
    virtual HRESULT OnLostDevice() = 0;
    virtual HRESULT OnResetDevice() = 0;
};
typedef ID3DXSprite* LPD3DXSPRITE;

// A font: glyphs rasterised by FreeType into atlas textures (managed pool), drawn through
// a sprite.
struct ID3DXFont : IUnknown
{
    virtual HRESULT GetDevice(LPDIRECT3DDEVICE9* ppDevice) = 0;
    virtual HRESULT GetDescW(D3DXFONT_DESCW* pDesc) = 0;
    // Lays out Count characters of pString (-1: up to its terminating zero; lines break at
    // "\n" and, with DT_WORDBREAK, at spaces to fit the rectangle's width) in pRect. With
    // DT_CALCRECT only measures: pRect's right and bottom become left + widest line and
    // top + lines * line height. Otherwise draws in Color (ARGB), aligned by DT_CENTER,
    // DT_RIGHT, DT_VCENTER, DT_BOTTOM and clipped to pRect unless DT_NOCLIP, through
    // pSprite when given (inside its Begin/End) or an own sprite with alpha blending.
    // Returns the height of the text in pixels, 0 on failure.
    virtual INT DrawTextW(LPD3DXSPRITE pSprite, LPCWSTR pString, INT Count, LPRECT pRect,
                          DWORD Format, D3DCOLOR Color) = 0;
    virtual HRESULT OnLostDevice() = 0;
    virtual HRESULT OnResetDevice() = 0;
};
typedef ID3DXFont* LPD3DXFONT;

// Polylines of a given pixel width, drawn as screen-space quads (one per segment).
struct ID3DXLine : IUnknown
{
    virtual HRESULT GetDevice(LPDIRECT3DDEVICE9* ppDevice) = 0;
    // Sets the states lines draw with (no lighting, texture or culling, alpha blending);
    // End restores them. Draw and DrawTransform call Begin/End themselves when outside.
    virtual HRESULT Begin() = 0;
    // Draws the polyline through dwVertexListCount points in view pixels.
    virtual HRESULT Draw(const D3DXVECTOR2* pVertexList, DWORD dwVertexListCount,
                         D3DCOLOR Color) = 0;
    // Draws the polyline through points transformed by pTransform (object to clip space,
    // for example world * view * projection) and the device's viewport. Segments with an
    // end behind the eye (w <= 0) are left out.
    virtual HRESULT DrawTransform(const D3DXVECTOR3* pVertexList, DWORD dwVertexListCount,
                                  const D3DXMATRIX* pTransform, D3DCOLOR Color) = 0;
    // Pattern, pattern scale, antialiasing and GL lines are recorded only: lines are solid
    // and aliased.
    virtual HRESULT SetPattern(DWORD dwPattern) = 0;
    virtual DWORD GetPattern() = 0;
    virtual HRESULT SetPatternScale(FLOAT fPatternScale) = 0;
    virtual FLOAT GetPatternScale() = 0;
    // Width in pixels, > 0 (1 at creation).
    virtual HRESULT SetWidth(FLOAT fWidth) = 0;
    virtual FLOAT GetWidth() = 0;
    virtual HRESULT SetAntialias(BOOL bAntialias) = 0;
    virtual BOOL GetAntialias() = 0;
    virtual HRESULT SetGLLines(BOOL bGLLines) = 0;
    virtual BOOL GetGLLines() = 0;
    virtual HRESULT End() = 0;
    virtual HRESULT OnLostDevice() = 0;
    virtual HRESULT OnResetDevice() = 0;
};
typedef ID3DXLine* LPD3DXLINE;
typedef ID3DXMesh* LPD3DXMESH;

// ---------------------------------------------------------------------------------------
// Mesh builders. Vertices are D3DFVF_XYZ | D3DFVF_NORMAL with 16-bit indices, triangles
// clockwise seen from outside in a left-handed view (their (p1 - p0) x (p2 - p0) points
// outwards). ppAdjacency, when given, receives null: adjacency is not computed.

// A box centred on the origin, Width along x, Height along y, Depth along z: 24 vertices
// (four per side with the side's normal) and 12 faces.
IXO_API HRESULT D3DXCreateBox(LPDIRECT3DDEVICE9 pDevice, FLOAT Width, FLOAT Height, FLOAT Depth,
                              LPD3DXMESH* ppMesh, LPD3DXBUFFER* ppAdjacency);
// A cylinder along z, Radius1 at z = -Length/2 and Radius2 at z = +Length/2 (0 makes a
// cone), closed by fans: 2 + Slices (Stacks + 3) vertices and 2 Slices (Stacks + 1) faces.
// Slices >= 2, Stacks >= 1.
IXO_API HRESULT D3DXCreateCylinder(LPDIRECT3DDEVICE9 pDevice, FLOAT Radius1, FLOAT Radius2,
                                   FLOAT Length, UINT Slices, UINT Stacks, LPD3DXMESH* ppMesh,
                                   LPD3DXBUFFER* ppAdjacency);
// A sphere centred on the origin with poles on z: 2 + Slices (Stacks - 1) vertices and
// 2 Slices (Stacks - 1) faces. Slices >= 2, Stacks >= 2.
IXO_API HRESULT D3DXCreateSphere(LPDIRECT3DDEVICE9 pDevice, FLOAT Radius, UINT Slices, UINT Stacks,
                                 LPD3DXMESH* ppMesh, LPD3DXBUFFER* ppAdjacency);

// ---------------------------------------------------------------------------------------
// Text, lines, sprites, textures

// A font of Height pixels (negative: character height, the em size; positive: cell height,
// ascent plus descent; 0: 16) from the face fontconfig answers for pFaceName, Weight and
// Italic. Quality NONANTIALIASED_QUALITY rasterises 1-bit glyphs, others 8-bit coverage.
// Width, MipLevels, CharSet, OutputPrecision and PitchAndFamily are recorded only.
// D3DERR_INVALIDCALL for null pointers or when no font file can be opened.
IXO_API HRESULT D3DXCreateFontW(LPDIRECT3DDEVICE9 pDevice, INT Height, UINT Width, UINT Weight,
                                UINT MipLevels, BOOL Italic, DWORD CharSet, DWORD OutputPrecision,
                                DWORD Quality, DWORD PitchAndFamily, LPCWSTR pFaceName,
                                LPD3DXFONT* ppFont);
IXO_API HRESULT D3DXCreateLine(LPDIRECT3DDEVICE9 pDevice, LPD3DXLINE* ppLine);
IXO_API HRESULT D3DXCreateSprite(LPDIRECT3DDEVICE9 pDevice, LPD3DXSPRITE* ppSprite);

// Loads an image file (Windows or native path) into a new texture. Width and Height: 0,
// D3DX_DEFAULT_NONPOW2 or D3DX_FROM_FILE take the file's size, D3DX_DEFAULT rounds it up
// to powers of two, other values are used as given (the image is resized by nearest
// pixel). MipLevels 0 or D3DX_DEFAULT: a full chain; D3DX_FROM_FILE: 1. Format
// D3DFMT_A8R8G8B8, D3DFMT_X8R8G8B8, D3DFMT_UNKNOWN or D3DFMT_FROM_FILE (both give
// A8R8G8B8). A non-zero ColorKey (ARGB) turns matching texels into transparent black.
// pSrcInfo receives the file's description. D3DXERR_INVALIDDATA for an unreadable file,
// D3DERR_INVALIDCALL for bad arguments or a side (of the file or the texture) over 8192.
IXO_API HRESULT D3DXCreateTextureFromFileExW(LPDIRECT3DDEVICE9 pDevice, LPCWSTR pSrcFile,
                                             UINT Width, UINT Height, UINT MipLevels, DWORD Usage,
                                             D3DFORMAT Format, D3DPOOL Pool, DWORD Filter,
                                             DWORD MipFilter, D3DCOLOR ColorKey,
                                             D3DXIMAGE_INFO* pSrcInfo, PALETTEENTRY* pPalette,
                                             LPDIRECT3DTEXTURE9* ppTexture);
// The same with every option at its default (power-of-two size, full mip chain, managed).
IXO_API HRESULT D3DXCreateTextureFromFileW(LPDIRECT3DDEVICE9 pDevice, LPCWSTR pSrcFile,
                                           LPDIRECT3DTEXTURE9* ppTexture);

// ---------------------------------------------------------------------------------------
// Cache optimisation of triangle lists (meshoptimizer). pIndices holds 3 NumFaces indices,
// 32-bit when Indices32Bit, each below NumVertices. D3DERR_INVALIDCALL for null pointers
// or an index out of range. Cost O(n log n).

// pFaceRemap receives NumFaces entries: for each new face position, the old face that
// goes there (new face i = old face pFaceRemap[i]), ordered for the post-transform cache.
IXO_API HRESULT D3DXOptimizeFaces(LPCVOID pIndices, UINT NumFaces, UINT NumVertices,
                                  BOOL Indices32Bit, DWORD* pFaceRemap);
// pVertexRemap receives NumVertices entries: the new index of each old vertex, numbering
// vertices in order of first use by the faces; unused vertices come last.
IXO_API HRESULT D3DXOptimizeVertices(LPCVOID pIndices, UINT NumFaces, UINT NumVertices,
                                     BOOL Indices32Bit, DWORD* pVertexRemap);

// ---------------------------------------------------------------------------------------
// Math (row vectors: a point p maps to p * M; M1 * M2 applies M1 first). Every function
// returns its output pointer; the output may alias an input.

IXO_API D3DXMATRIX* D3DXMatrixIdentity(D3DXMATRIX* pOut);
IXO_API BOOL D3DXMatrixIsIdentity(const D3DXMATRIX* pM);
IXO_API D3DXMATRIX* D3DXMatrixMultiply(D3DXMATRIX* pOut, const D3DXMATRIX* pM1,
                                       const D3DXMATRIX* pM2);
IXO_API D3DXMATRIX* D3DXMatrixTranspose(D3DXMATRIX* pOut, const D3DXMATRIX* pM);
// The inverse, or null (pOut untouched) when the determinant is 0. pDeterminant may be
// null.
IXO_API D3DXMATRIX* D3DXMatrixInverse(D3DXMATRIX* pOut, FLOAT* pDeterminant, const D3DXMATRIX* pM);
IXO_API FLOAT D3DXMatrixDeterminant(const D3DXMATRIX* pM);
IXO_API D3DXMATRIX* D3DXMatrixTranslation(D3DXMATRIX* pOut, FLOAT x, FLOAT y, FLOAT z);
IXO_API D3DXMATRIX* D3DXMatrixScaling(D3DXMATRIX* pOut, FLOAT sx, FLOAT sy, FLOAT sz);
// Rotations by Angle radians, counter-clockwise looking from the axis' positive end
// towards the origin in a right-handed frame (p * M with p a row vector).
IXO_API D3DXMATRIX* D3DXMatrixRotationX(D3DXMATRIX* pOut, FLOAT Angle);
IXO_API D3DXMATRIX* D3DXMatrixRotationY(D3DXMATRIX* pOut, FLOAT Angle);
IXO_API D3DXMATRIX* D3DXMatrixRotationZ(D3DXMATRIX* pOut, FLOAT Angle);
IXO_API D3DXMATRIX* D3DXMatrixRotationAxis(D3DXMATRIX* pOut, const D3DXVECTOR3* pV, FLOAT Angle);
// The rotation of a unit quaternion; translation zero.
IXO_API D3DXMATRIX* D3DXMatrixRotationQuaternion(D3DXMATRIX* pOut, const D3DXQUATERNION* pQ);
// Splits M = scale * rotation * translation: scales are the lengths of the first three
// rows (the first negated when the matrix mirrors), the rotation a unit quaternion, the
// translation the fourth row. D3DERR_INVALIDCALL (outputs unspecified) when a scale is 0.
IXO_API HRESULT D3DXMatrixDecompose(D3DXVECTOR3* pOutScale, D3DXQUATERNION* pOutRotation,
                                    D3DXVECTOR3* pOutTranslation, const D3DXMATRIX* pM);
// View matrices: the eye at the origin looking along -z (right-handed) or +z (left-handed).
IXO_API D3DXMATRIX* D3DXMatrixLookAtRH(D3DXMATRIX* pOut, const D3DXVECTOR3* pEye,
                                       const D3DXVECTOR3* pAt, const D3DXVECTOR3* pUp);
IXO_API D3DXMATRIX* D3DXMatrixLookAtLH(D3DXMATRIX* pOut, const D3DXVECTOR3* pEye,
                                       const D3DXVECTOR3* pAt, const D3DXVECTOR3* pUp);
// Projections onto clip depth 0 (near) .. 1 (far); fovy in radians.
IXO_API D3DXMATRIX* D3DXMatrixPerspectiveFovRH(D3DXMATRIX* pOut, FLOAT fovy, FLOAT Aspect, FLOAT zn,
                                               FLOAT zf);
IXO_API D3DXMATRIX* D3DXMatrixPerspectiveFovLH(D3DXMATRIX* pOut, FLOAT fovy, FLOAT Aspect, FLOAT zn,
                                               FLOAT zf);
IXO_API D3DXMATRIX* D3DXMatrixOrthoRH(D3DXMATRIX* pOut, FLOAT w, FLOAT h, FLOAT zn, FLOAT zf);
IXO_API D3DXMATRIX* D3DXMatrixOrthoLH(D3DXMATRIX* pOut, FLOAT w, FLOAT h, FLOAT zn, FLOAT zf);
IXO_API D3DXMATRIX* D3DXMatrixOrthoOffCenterRH(D3DXMATRIX* pOut, FLOAT l, FLOAT r, FLOAT b, FLOAT t,
                                               FLOAT zn, FLOAT zf);

IXO_API D3DXQUATERNION* D3DXQuaternionIdentity(D3DXQUATERNION* pOut);
IXO_API D3DXQUATERNION* D3DXQuaternionNormalize(D3DXQUATERNION* pOut, const D3DXQUATERNION* pQ);
// The unit quaternion of the rotation part of M (rows assumed orthonormal).
IXO_API D3DXQUATERNION* D3DXQuaternionRotationMatrix(D3DXQUATERNION* pOut, const D3DXMATRIX* pM);
IXO_API D3DXQUATERNION* D3DXQuaternionRotationAxis(D3DXQUATERNION* pOut, const D3DXVECTOR3* pV,
                                                   FLOAT Angle);

IXO_API FLOAT D3DXVec3Length(const D3DXVECTOR3* pV);
IXO_API FLOAT D3DXVec3Dot(const D3DXVECTOR3* pV1, const D3DXVECTOR3* pV2);
IXO_API D3DXVECTOR3* D3DXVec3Cross(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV1,
                                   const D3DXVECTOR3* pV2);
IXO_API D3DXVECTOR3* D3DXVec3Add(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV1, const D3DXVECTOR3* pV2);
IXO_API D3DXVECTOR3* D3DXVec3Subtract(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV1,
                                      const D3DXVECTOR3* pV2);
IXO_API D3DXVECTOR3* D3DXVec3Scale(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV, FLOAT s);
// The unit vector along pV; the zero vector stays zero.
IXO_API D3DXVECTOR3* D3DXVec3Normalize(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV);
// (x, y, z, 1) * M.
IXO_API D3DXVECTOR4* D3DXVec3Transform(D3DXVECTOR4* pOut, const D3DXVECTOR3* pV,
                                       const D3DXMATRIX* pM);
// (x, y, z, 1) * M divided by its w.
IXO_API D3DXVECTOR3* D3DXVec3TransformCoord(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV,
                                            const D3DXMATRIX* pM);
// (x, y, z, 0) * M: directions, translation ignored.
IXO_API D3DXVECTOR3* D3DXVec3TransformNormal(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV,
                                             const D3DXMATRIX* pM);
IXO_API D3DXVECTOR4* D3DXVec4Transform(D3DXVECTOR4* pOut, const D3DXVECTOR4* pV,
                                       const D3DXMATRIX* pM);
