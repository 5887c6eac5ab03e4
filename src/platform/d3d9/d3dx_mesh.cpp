#include "platform/d3d9/d3dx_shapes.h"
#include "platform/d3d9/d3dx_unknown.h"

#include <cstring>
#include <vector>

namespace
{

DWORD const mesh_fvf = D3DFVF_XYZ | D3DFVF_NORMAL;
DWORD const mesh_stride = 24;

class d3dx_mesh final : public ixo_d3dx_unknown<ID3DXMesh>
{
public:
    d3dx_mesh(IDirect3DDevice9* device, IDirect3DVertexBuffer9* vb, IDirect3DIndexBuffer9* ib,
              DWORD vertices, DWORD faces)
        : device_(device), vb_(vb), ib_(ib), vertices_(vertices), faces_(faces),
          attributes_(faces, 0)
    {
        device_->AddRef();
    }

    HRESULT DrawSubset(DWORD AttribId) override
    {
        if (AttribId != 0 || faces_ == 0)
            return D3D_OK;
        HRESULT hr = device_->SetFVF(mesh_fvf);
        if (SUCCEEDED(hr))
            hr = device_->SetStreamSource(0, vb_, 0, mesh_stride);
        if (SUCCEEDED(hr))
            hr = device_->SetIndices(ib_);
        if (SUCCEEDED(hr))
            hr = device_->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 0, vertices_, 0, faces_);
        return hr;
    }
    DWORD GetNumFaces() override { return faces_; }
    DWORD GetNumVertices() override { return vertices_; }
    DWORD GetFVF() override { return mesh_fvf; }
    DWORD GetOptions() override { return D3DXMESH_MANAGED; }
    DWORD GetNumBytesPerVertex() override { return mesh_stride; }
    HRESULT GetDevice(LPDIRECT3DDEVICE9* ppDevice) override
    {
        return ixo_d3dx_get_device(device_, ppDevice);
    }
    HRESULT GetVertexBuffer(LPDIRECT3DVERTEXBUFFER9* ppVB) override
    {
        if (ppVB == nullptr)
            return D3DERR_INVALIDCALL;
        *ppVB = vb_;
        vb_->AddRef();
        return D3D_OK;
    }
    HRESULT GetIndexBuffer(LPDIRECT3DINDEXBUFFER9* ppIB) override
    {
        if (ppIB == nullptr)
            return D3DERR_INVALIDCALL;
        *ppIB = ib_;
        ib_->AddRef();
        return D3D_OK;
    }
    HRESULT LockVertexBuffer(DWORD Flags, LPVOID* ppData) override
    {
        return vb_->Lock(0, 0, ppData, Flags);
    }
    HRESULT UnlockVertexBuffer() override { return vb_->Unlock(); }
    HRESULT LockIndexBuffer(DWORD Flags, LPVOID* ppData) override
    {
        return ib_->Lock(0, 0, ppData, Flags);
    }
    HRESULT UnlockIndexBuffer() override { return ib_->Unlock(); }
    HRESULT LockAttributeBuffer(DWORD, DWORD** ppData) override
    {
        if (ppData == nullptr || attributes_locked_)
            return D3DERR_INVALIDCALL;
        attributes_locked_ = true;
        *ppData = attributes_.data();
        return D3D_OK;
    }
    HRESULT UnlockAttributeBuffer() override
    {
        if (!attributes_locked_)
            return D3DERR_INVALIDCALL;
        attributes_locked_ = false;
        return D3D_OK;
    }

private:
    ~d3dx_mesh() override
    {
        ib_->Release();
        vb_->Release();
        device_->Release();
    }

    IDirect3DDevice9* device_;
    IDirect3DVertexBuffer9* vb_;
    IDirect3DIndexBuffer9* ib_;
    DWORD vertices_;
    DWORD faces_;
    std::vector<DWORD> attributes_;
    bool attributes_locked_ = false;
};

HRESULT upload(IDirect3DDevice9* device, ixo_d3dx_shape const& shape, LPD3DXMESH* ppMesh)
{
    UINT const vb_size = UINT(shape.vertices.size() * sizeof(float));
    UINT const ib_size = UINT(shape.indices.size() * sizeof(std::uint16_t));
    IDirect3DVertexBuffer9* vb = nullptr;
    IDirect3DIndexBuffer9* ib = nullptr;
    HRESULT hr = device->CreateVertexBuffer(vb_size, 0, mesh_fvf, D3DPOOL_MANAGED, &vb, nullptr);
    if (SUCCEEDED(hr))
        hr = device->CreateIndexBuffer(ib_size, 0, D3DFMT_INDEX16, D3DPOOL_MANAGED, &ib, nullptr);
    void* data = nullptr;
    if (SUCCEEDED(hr) && SUCCEEDED(hr = vb->Lock(0, 0, &data, 0)))
    {
        std::memcpy(data, shape.vertices.data(), vb_size);
        hr = vb->Unlock();
    }
    if (SUCCEEDED(hr) && SUCCEEDED(hr = ib->Lock(0, 0, &data, 0)))
    {
        std::memcpy(data, shape.indices.data(), ib_size);
        hr = ib->Unlock();
    }
    if (FAILED(hr))
    {
        if (ib != nullptr)
            ib->Release();
        if (vb != nullptr)
            vb->Release();
        return hr;
    }
    *ppMesh = new d3dx_mesh(device, vb, ib, DWORD(shape.vertex_count()), DWORD(shape.face_count()));
    return D3D_OK;
}

HRESULT finish(IDirect3DDevice9* device, bool built, ixo_d3dx_shape const& shape,
               LPD3DXMESH* ppMesh, LPD3DXBUFFER* ppAdjacency)
{
    if (ppAdjacency != nullptr)
        *ppAdjacency = nullptr;
    if (device == nullptr || ppMesh == nullptr || !built)
        return D3DERR_INVALIDCALL;
    *ppMesh = nullptr;
    return upload(device, shape, ppMesh);
}

} // namespace

HRESULT D3DXCreateBox(LPDIRECT3DDEVICE9 pDevice, FLOAT Width, FLOAT Height, FLOAT Depth,
                      LPD3DXMESH* ppMesh, LPD3DXBUFFER* ppAdjacency)
{
    ixo_d3dx_shape shape;
    bool built = ixo_d3dx_build_box(Width, Height, Depth, shape);
    return finish(pDevice, built, shape, ppMesh, ppAdjacency);
}

HRESULT D3DXCreateCylinder(LPDIRECT3DDEVICE9 pDevice, FLOAT Radius1, FLOAT Radius2, FLOAT Length,
                           UINT Slices, UINT Stacks, LPD3DXMESH* ppMesh, LPD3DXBUFFER* ppAdjacency)
{
    ixo_d3dx_shape shape;
    bool built = ixo_d3dx_build_cylinder(Radius1, Radius2, Length, Slices, Stacks, shape);
    return finish(pDevice, built, shape, ppMesh, ppAdjacency);
}

HRESULT D3DXCreateSphere(LPDIRECT3DDEVICE9 pDevice, FLOAT Radius, UINT Slices, UINT Stacks,
                         LPD3DXMESH* ppMesh, LPD3DXBUFFER* ppAdjacency)
{
    ixo_d3dx_shape shape;
    bool built = ixo_d3dx_build_sphere(Radius, Slices, Stacks, shape);
    return finish(pDevice, built, shape, ppMesh, ppAdjacency);
}
