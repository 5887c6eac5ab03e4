#include "platform/d3d9/d3dx_state.h"
#include "platform/d3d9/d3dx_unknown.h"

#include <vector>

namespace
{

DWORD const sprite_fvf = D3DFVF_XYZRHW | D3DFVF_DIFFUSE | D3DFVF_TEX1;

struct sprite_vertex
{
    float x, y, z, rhw;
    D3DCOLOR color;
    float u, v;
};
static_assert(sizeof(sprite_vertex) == 28);

class d3dx_sprite final : public ixo_d3dx_unknown<ID3DXSprite>
{
public:
    explicit d3dx_sprite(IDirect3DDevice9* device) : device_(device)
    {
        device_->AddRef();
        D3DXMatrixIdentity(&transform_);
    }

    HRESULT GetDevice(LPDIRECT3DDEVICE9* ppDevice) override
    {
        return ixo_d3dx_get_device(device_, ppDevice);
    }
    HRESULT GetTransform(D3DXMATRIX* pTransform) override
    {
        if (pTransform == nullptr)
            return D3DERR_INVALIDCALL;
        *pTransform = transform_;
        return D3D_OK;
    }
    HRESULT SetTransform(const D3DXMATRIX* pTransform) override
    {
        if (pTransform == nullptr)
            return D3DERR_INVALIDCALL;
        transform_ = *pTransform;
        return D3D_OK;
    }

    HRESULT Begin(DWORD Flags) override
    {
        if (begun_)
            return D3DERR_INVALIDCALL;
        flags_ = Flags;
        begun_ = true;
        if (!(flags_ & D3DXSPRITE_DONOTSAVESTATE))
            saved_.capture(device_,
                           {D3DRS_ALPHABLENDENABLE, D3DRS_SRCBLEND, D3DRS_DESTBLEND, D3DRS_BLENDOP,
                            D3DRS_ALPHATESTENABLE, D3DRS_ALPHAFUNC, D3DRS_ALPHAREF, D3DRS_CULLMODE,
                            D3DRS_LIGHTING, D3DRS_ZENABLE, D3DRS_ZWRITEENABLE, D3DRS_FILLMODE,
                            D3DRS_FOGENABLE},
                           {D3DTSS_COLOROP, D3DTSS_COLORARG1, D3DTSS_COLORARG2, D3DTSS_ALPHAOP,
                            D3DTSS_ALPHAARG1, D3DTSS_ALPHAARG2},
                           {D3DSAMP_ADDRESSU, D3DSAMP_ADDRESSV, D3DSAMP_MAGFILTER,
                            D3DSAMP_MINFILTER, D3DSAMP_MIPFILTER});
        if (!(flags_ & D3DXSPRITE_DONOTMODIFY_RENDERSTATE))
            set_states();
        return D3D_OK;
    }

    HRESULT Draw(LPDIRECT3DTEXTURE9 pTexture, const RECT* pSrcRect, const D3DXVECTOR3* pCenter,
                 const D3DXVECTOR3* pPosition, D3DCOLOR Color) override
    {
        if (!begun_ || pTexture == nullptr)
            return D3DERR_INVALIDCALL;
        D3DSURFACE_DESC desc{};
        if (FAILED(pTexture->GetLevelDesc(0, &desc)) || desc.Width == 0 || desc.Height == 0)
            return D3DERR_INVALIDCALL;
        RECT src{0, 0, LONG(desc.Width), LONG(desc.Height)};
        if (pSrcRect != nullptr)
            src = *pSrcRect;
        D3DXVECTOR3 const c = pCenter ? *pCenter : D3DXVECTOR3(0, 0, 0);
        D3DXVECTOR3 const p = pPosition ? *pPosition : D3DXVECTOR3(0, 0, 0);
        float const w = float(src.right - src.left), h = float(src.bottom - src.top);
        float const tw = float(desc.Width), th = float(desc.Height);
        quad q{pTexture, {}};
        pTexture->AddRef();
        for (int k = 0; k < 4; ++k)
        {
            float const i = float(k & 1), j = float(k >> 1);
            D3DXVECTOR3 corner(p.x - c.x + i * w, p.y - c.y + j * h, p.z - c.z), screen;
            D3DXVec3TransformCoord(&screen, &corner, &transform_);
            // Pixel centres lie on integer coordinates: texel edges go half a pixel up-left.
            q.v[k] = {screen.x - 0.5f,
                      screen.y - 0.5f,
                      screen.z,
                      1.0f,
                      Color,
                      (float(src.left) + i * w) / tw,
                      (float(src.top) + j * h) / th};
        }
        queue_.push_back(q);
        return D3D_OK;
    }

    HRESULT Flush() override
    {
        if (!begun_)
            return D3DERR_INVALIDCALL;
        HRESULT result = D3D_OK;
        std::vector<sprite_vertex> batch;
        std::size_t i = 0;
        while (i < queue_.size())
        {
            // Consecutive quads with the same texture go in one call.
            IDirect3DTexture9* texture = queue_[i].texture;
            batch.clear();
            for (; i < queue_.size() && queue_[i].texture == texture; ++i)
            {
                auto const& v = queue_[i].v;
                batch.insert(batch.end(), {v[0], v[1], v[2], v[1], v[3], v[2]});
            }
            HRESULT hr = device_->SetFVF(sprite_fvf);
            if (SUCCEEDED(hr))
                hr = device_->SetTexture(0, texture);
            if (SUCCEEDED(hr))
                hr = device_->DrawPrimitiveUP(D3DPT_TRIANGLELIST, UINT(batch.size() / 3),
                                              batch.data(), sizeof(sprite_vertex));
            if (FAILED(hr))
                result = hr;
        }
        drop_queue();
        return result;
    }

    HRESULT End() override
    {
        if (!begun_)
            return D3DERR_INVALIDCALL;
        HRESULT hr = Flush();
        saved_.restore();
        begun_ = false;
        return hr;
    }

    HRESULT OnLostDevice() override
    {
        drop_queue();
        saved_.restore();
        begun_ = false;
        return D3D_OK;
    }
    HRESULT OnResetDevice() override { return D3D_OK; }

private:
    struct quad
    {
        IDirect3DTexture9* texture;
        sprite_vertex v[4];
    };

    ~d3dx_sprite() override
    {
        drop_queue();
        saved_.restore();
        device_->Release();
    }

    void set_states()
    {
        bool const blend = (flags_ & D3DXSPRITE_ALPHABLEND) != 0;
        device_->SetRenderState(D3DRS_ALPHABLENDENABLE, blend ? TRUE : FALSE);
        device_->SetRenderState(D3DRS_SRCBLEND, D3DBLEND_SRCALPHA);
        device_->SetRenderState(D3DRS_DESTBLEND, D3DBLEND_INVSRCALPHA);
        device_->SetRenderState(D3DRS_BLENDOP, D3DBLENDOP_ADD);
        // Fully transparent texels leave the target alone, with or without blending.
        device_->SetRenderState(D3DRS_ALPHATESTENABLE, TRUE);
        device_->SetRenderState(D3DRS_ALPHAFUNC, D3DCMP_GREATER);
        device_->SetRenderState(D3DRS_ALPHAREF, 0);
        device_->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
        device_->SetRenderState(D3DRS_LIGHTING, FALSE);
        device_->SetRenderState(D3DRS_ZENABLE, D3DZB_FALSE);
        device_->SetRenderState(D3DRS_ZWRITEENABLE, FALSE);
        device_->SetRenderState(D3DRS_FILLMODE, D3DFILL_SOLID);
        device_->SetRenderState(D3DRS_FOGENABLE, FALSE);
        device_->SetTextureStageState(0, D3DTSS_COLOROP, D3DTOP_MODULATE);
        device_->SetTextureStageState(0, D3DTSS_COLORARG1, D3DTA_TEXTURE);
        device_->SetTextureStageState(0, D3DTSS_COLORARG2, D3DTA_DIFFUSE);
        device_->SetTextureStageState(0, D3DTSS_ALPHAOP, D3DTOP_MODULATE);
        device_->SetTextureStageState(0, D3DTSS_ALPHAARG1, D3DTA_TEXTURE);
        device_->SetTextureStageState(0, D3DTSS_ALPHAARG2, D3DTA_DIFFUSE);
        device_->SetSamplerState(0, D3DSAMP_ADDRESSU, D3DTADDRESS_CLAMP);
        device_->SetSamplerState(0, D3DSAMP_ADDRESSV, D3DTADDRESS_CLAMP);
        // Texels map 1:1 to pixels: nearest keeps 1-bit glyphs and flat colours exact.
        device_->SetSamplerState(0, D3DSAMP_MAGFILTER, D3DTEXF_POINT);
        device_->SetSamplerState(0, D3DSAMP_MINFILTER, D3DTEXF_POINT);
        device_->SetSamplerState(0, D3DSAMP_MIPFILTER, D3DTEXF_NONE);
    }

    void drop_queue()
    {
        for (quad& q : queue_)
            q.texture->Release();
        queue_.clear();
    }

    IDirect3DDevice9* device_;
    D3DXMATRIX transform_;
    DWORD flags_ = 0;
    bool begun_ = false;
    std::vector<quad> queue_;
    ixo_d3dx_state_block saved_;
};

} // namespace

HRESULT D3DXCreateSprite(LPDIRECT3DDEVICE9 pDevice, LPD3DXSPRITE* ppSprite)
{
    if (pDevice == nullptr || ppSprite == nullptr)
        return D3DERR_INVALIDCALL;
    *ppSprite = new d3dx_sprite(pDevice);
    return D3D_OK;
}
