#pragma once
// Reference counting shared by the D3DX objects: created with one reference, destroyed
// by the Release that drops the last.

#include <ixocore/platform/d3dx9.h>

template <class Interface> class ixo_d3dx_unknown : public Interface
{
public:
    HRESULT QueryInterface(REFIID, void** ppvObj) override
    {
        if (ppvObj != nullptr)
            *ppvObj = nullptr;
        return E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++refs_; }
    ULONG Release() override
    {
        ULONG left = --refs_;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    ixo_d3dx_unknown() = default;
    ixo_d3dx_unknown(ixo_d3dx_unknown const&) = delete;
    ixo_d3dx_unknown& operator=(ixo_d3dx_unknown const&) = delete;

private:
    ULONG refs_ = 1;
};

// Hands out a device reference as GetDevice does.
inline HRESULT ixo_d3dx_get_device(IDirect3DDevice9* device, IDirect3DDevice9** out)
{
    if (out == nullptr)
        return D3DERR_INVALIDCALL;
    *out = device;
    device->AddRef();
    return D3D_OK;
}
