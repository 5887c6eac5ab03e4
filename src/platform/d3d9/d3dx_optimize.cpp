#include "platform/d3d9/d3dx_shapes.h"

#include <ixocore/platform/d3dx9.h>

#include <vector>

namespace
{

// The indices as 32-bit values, or empty when the arguments are unusable.
bool widen(LPCVOID indices, UINT faces, BOOL indices_32bit, std::vector<std::uint32_t>& out)
{
    if (indices == nullptr)
        return faces == 0;
    std::size_t const n = std::size_t(faces) * 3;
    if (indices_32bit)
    {
        auto p = static_cast<std::uint32_t const*>(indices);
        out.assign(p, p + n);
    }
    else
    {
        auto p = static_cast<std::uint16_t const*>(indices);
        out.assign(p, p + n);
    }
    return true;
}

} // namespace

HRESULT D3DXOptimizeFaces(LPCVOID pIndices, UINT NumFaces, UINT NumVertices, BOOL Indices32Bit,
                          DWORD* pFaceRemap)
{
    std::vector<std::uint32_t> indices;
    if ((pFaceRemap == nullptr && NumFaces > 0) || (!Indices32Bit && NumFaces > 65535) ||
        !widen(pIndices, NumFaces, Indices32Bit, indices))
        return D3DERR_INVALIDCALL;
    static_assert(sizeof(DWORD) == sizeof(std::uint32_t));
    return ixo_d3dx_optimize_faces(indices.data(), NumFaces, NumVertices, pFaceRemap)
               ? D3D_OK
               : D3DERR_INVALIDCALL;
}

HRESULT D3DXOptimizeVertices(LPCVOID pIndices, UINT NumFaces, UINT NumVertices, BOOL Indices32Bit,
                             DWORD* pVertexRemap)
{
    std::vector<std::uint32_t> indices;
    if ((pVertexRemap == nullptr && NumVertices > 0) ||
        !widen(pIndices, NumFaces, Indices32Bit, indices))
        return D3DERR_INVALIDCALL;
    return ixo_d3dx_optimize_vertices(indices.data(), NumFaces, NumVertices, pVertexRemap)
               ? D3D_OK
               : D3DERR_INVALIDCALL;
}
