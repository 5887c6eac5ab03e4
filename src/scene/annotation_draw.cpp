#include "annotation_draw.h"

#include <cstring>

namespace ixo_annotation
{
IDirect3DTexture9*& shared_texture()
{
    static IDirect3DTexture9* texture = nullptr;
    return texture;
}

namespace
{
IDirect3DTexture9* make_white_texture(IDirect3DDevice9* device)
{
    IDirect3DTexture9* texture = nullptr;
    if (FAILED(device->CreateTexture(texture_size, texture_size, 1, 0, D3DFMT_A8R8G8B8,
                                     D3DPOOL_MANAGED, &texture, nullptr)))
        return nullptr;
    D3DLOCKED_RECT locked{};
    if (FAILED(texture->LockRect(0, &locked, nullptr, 0)))
    {
        texture->Release();
        return nullptr;
    }
    for (UINT y = 0; y < texture_size; ++y)
        std::memset(static_cast<unsigned char*>(locked.pBits) + std::size_t(y) * locked.Pitch, 0xff,
                    texture_size * 4);
    texture->UnlockRect(0);
    return texture;
}
} // namespace

bool acquire_texture(bool& holds)
{
    IDirect3DTexture9*& texture = shared_texture();
    if (holds)
        return texture != nullptr;
    if (texture)
    {
        texture->AddRef();
        holds = true;
        return true;
    }
    IDirect3DDevice9* device = ixo_primitive::device();
    if (!device || !(texture = make_white_texture(device)))
        return false;
    holds = true;
    return true;
}

void release_texture(bool& holds)
{
    if (!holds)
        return;
    holds = false;
    IDirect3DTexture9*& texture = shared_texture();
    if (texture && texture->Release() == 0)
        texture = nullptr;
}

flat_batch::flat_batch(bool exact)
{
    ID3DXSprite* sprite = ixo_primitive::device() ? ixo_direct3d::get_sprite() : nullptr;
    texture_ = shared_texture();
    if (!sprite || !texture_)
        return;
    if (!exact)
    {
        if (SUCCEEDED(sprite->Begin(D3DXSPRITE_ALPHABLEND)))
            sprite_ = sprite;
        return;
    }
    // The sprite saves the states it would set and restores them at End; these replace
    // its own so that colour and alpha come from the vertex and nothing is discarded.
    if (FAILED(sprite->Begin(D3DXSPRITE_DONOTMODIFY_RENDERSTATE)))
        return;
    sprite_ = sprite;
    IDirect3DDevice9* device = ixo_primitive::device();
    device->SetRenderState(D3DRS_ALPHABLENDENABLE, FALSE);
    device->SetRenderState(D3DRS_ALPHATESTENABLE, FALSE);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
    device->SetRenderState(D3DRS_LIGHTING, FALSE);
    device->SetRenderState(D3DRS_ZENABLE, D3DZB_FALSE);
    device->SetRenderState(D3DRS_ZWRITEENABLE, FALSE);
    device->SetRenderState(D3DRS_FILLMODE, D3DFILL_SOLID);
    device->SetRenderState(D3DRS_FOGENABLE, FALSE);
    device->SetTextureStageState(0, D3DTSS_COLOROP, D3DTOP_SELECTARG2);
    device->SetTextureStageState(0, D3DTSS_COLORARG2, D3DTA_DIFFUSE);
    device->SetTextureStageState(0, D3DTSS_ALPHAOP, D3DTOP_SELECTARG2);
    device->SetTextureStageState(0, D3DTSS_ALPHAARG2, D3DTA_DIFFUSE);
}

flat_batch::~flat_batch()
{
    if (!sprite_)
        return;
    D3DXMATRIX identity;
    D3DXMatrixIdentity(&identity);
    sprite_->SetTransform(&identity);
    sprite_->End();
}

void flat_batch::fill(int x0, int y0, int x1, int y1, D3DCOLOR color)
{
    if (!sprite_ || x1 <= x0 || y1 <= y0)
        return;
    // The texture stretched over the rectangle: scale first, then move.
    D3DXMATRIX scale, move, transform;
    float const s = float(texture_size);
    D3DXMatrixScaling(&scale, float(x1 - x0) / s, float(y1 - y0) / s, 1.0f);
    D3DXMatrixTranslation(&move, float(x0), float(y0), 0.0f);
    D3DXMatrixMultiply(&transform, &scale, &move);
    sprite_->SetTransform(&transform);
    sprite_->Draw(texture_, nullptr, nullptr, nullptr, color);
}
} // namespace ixo_annotation
