#include "platform/d3d9/d3dx_unknown.h"

#include <stb_image.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace
{

// Larger images are refused before anything is decoded or allocated.
UINT const max_texture_side = 8192;

// An image in memory, 32-bit ARGB values (alpha in the top byte).
struct argb_image
{
    UINT width = 0, height = 0;
    std::vector<std::uint32_t> pixels;
};

D3DXIMAGE_FILEFORMAT file_format(std::string const& path)
{
    unsigned char head[4] = {};
    if (FILE* f = std::fopen(path.c_str(), "rb"))
    {
        std::size_t n = std::fread(head, 1, sizeof head, f);
        std::fclose(f);
        if (n >= 2 && head[0] == 0xFF && head[1] == 0xD8)
            return D3DXIFF_JPG;
        if (n >= 4 && head[0] == 0x89 && head[1] == 'P' && head[2] == 'N' && head[3] == 'G')
            return D3DXIFF_PNG;
        if (n >= 2 && head[0] == 'B' && head[1] == 'M')
            return D3DXIFF_BMP;
        if (n >= 2 && head[0] == 'P' && head[1] >= '1' && head[1] <= '6')
            return D3DXIFF_PPM;
        if (n >= 2 && head[0] == '#' && head[1] == '?')
            return D3DXIFF_HDR;
    }
    return D3DXIFF_TGA;
}

UINT round_up_pow2(UINT v)
{
    UINT p = 1;
    while (p < v)
        p <<= 1;
    return p;
}

UINT target_size(UINT requested, UINT from_file)
{
    if (requested == 0 || requested == D3DX_DEFAULT_NONPOW2 || requested == D3DX_FROM_FILE)
        return from_file;
    if (requested == D3DX_DEFAULT)
        return round_up_pow2(from_file);
    return requested;
}

// Resized by nearest pixel, or (no filter) copied into the top-left corner with the rest
// transparent black.
argb_image resize(argb_image const& src, UINT width, UINT height, bool filter)
{
    argb_image out;
    out.width = width;
    out.height = height;
    out.pixels.assign(std::size_t(width) * height, 0);
    for (UINT y = 0; y < height; ++y)
        for (UINT x = 0; x < width; ++x)
        {
            UINT sx = x, sy = y;
            if (filter)
            {
                sx = UINT(std::uint64_t(x) * src.width / width);
                sy = UINT(std::uint64_t(y) * src.height / height);
            }
            else if (sx >= src.width || sy >= src.height)
                continue;
            out.pixels[std::size_t(y) * width + x] = src.pixels[std::size_t(sy) * src.width + sx];
        }
    return out;
}

// The next mip level: each texel the average of a 2 x 2 block (clamped at odd edges).
argb_image half(argb_image const& src)
{
    argb_image out;
    out.width = std::max(1u, src.width / 2);
    out.height = std::max(1u, src.height / 2);
    out.pixels.resize(std::size_t(out.width) * out.height);
    for (UINT y = 0; y < out.height; ++y)
        for (UINT x = 0; x < out.width; ++x)
        {
            UINT const x0 = std::min(2 * x, src.width - 1), x1 = std::min(2 * x + 1, src.width - 1);
            UINT const y0 = std::min(2 * y, src.height - 1),
                       y1 = std::min(2 * y + 1, src.height - 1);
            std::uint32_t const q[4] = {src.pixels[std::size_t(y0) * src.width + x0],
                                        src.pixels[std::size_t(y0) * src.width + x1],
                                        src.pixels[std::size_t(y1) * src.width + x0],
                                        src.pixels[std::size_t(y1) * src.width + x1]};
            std::uint32_t v = 0;
            for (int shift = 0; shift < 32; shift += 8)
            {
                std::uint32_t sum = 2;
                for (std::uint32_t p : q)
                    sum += (p >> shift) & 0xFF;
                v |= (sum / 4) << shift;
            }
            out.pixels[std::size_t(y) * out.width + x] = v;
        }
    return out;
}

HRESULT upload_level(IDirect3DTexture9* texture, UINT level, argb_image const& image, bool opaque)
{
    D3DLOCKED_RECT lr{};
    HRESULT hr = texture->LockRect(level, &lr, nullptr, 0);
    if (FAILED(hr))
        return hr;
    for (UINT y = 0; y < image.height; ++y)
    {
        auto row = reinterpret_cast<unsigned char*>(lr.pBits) + std::size_t(y) * lr.Pitch;
        for (UINT x = 0; x < image.width; ++x)
        {
            std::uint32_t p = image.pixels[std::size_t(y) * image.width + x];
            if (opaque)
                p |= 0xFF000000u;
            // A8R8G8B8 lies in memory as blue, green, red, alpha.
            row[4 * x + 0] = static_cast<unsigned char>(p);
            row[4 * x + 1] = static_cast<unsigned char>(p >> 8);
            row[4 * x + 2] = static_cast<unsigned char>(p >> 16);
            row[4 * x + 3] = static_cast<unsigned char>(p >> 24);
        }
    }
    return texture->UnlockRect(level);
}

} // namespace

HRESULT D3DXCreateTextureFromFileExW(LPDIRECT3DDEVICE9 pDevice, LPCWSTR pSrcFile, UINT Width,
                                     UINT Height, UINT MipLevels, DWORD Usage, D3DFORMAT Format,
                                     D3DPOOL Pool, DWORD Filter, DWORD, D3DCOLOR ColorKey,
                                     D3DXIMAGE_INFO* pSrcInfo, PALETTEENTRY*,
                                     LPDIRECT3DTEXTURE9* ppTexture)
{
    if (pDevice == nullptr || pSrcFile == nullptr || ppTexture == nullptr)
        return D3DERR_INVALIDCALL;
    *ppTexture = nullptr;
    D3DFORMAT format = Format;
    if (format == D3DFMT_UNKNOWN || format == D3DFMT_FROM_FILE)
        format = D3DFMT_A8R8G8B8;
    if (format != D3DFMT_A8R8G8B8 && format != D3DFMT_X8R8G8B8)
        return D3DERR_INVALIDCALL;

    std::string const path = ixo_native_path(pSrcFile);
    int w = 0, h = 0, components = 0;
    if (!stbi_info(path.c_str(), &w, &h, &components))
        return D3DXERR_INVALIDDATA;
    if (w <= 0 || h <= 0 || UINT(w) > max_texture_side || UINT(h) > max_texture_side)
        return D3DERR_INVALIDCALL;
    unsigned char* rgba = stbi_load(path.c_str(), &w, &h, &components, 4);
    if (rgba == nullptr)
        return D3DXERR_INVALIDDATA;
    argb_image image;
    image.width = UINT(w);
    image.height = UINT(h);
    image.pixels.resize(std::size_t(w) * std::size_t(h));
    for (std::size_t i = 0; i < image.pixels.size(); ++i)
    {
        unsigned char const* p = rgba + 4 * i;
        std::uint32_t argb = (std::uint32_t(p[3]) << 24) | (std::uint32_t(p[0]) << 16) |
                             (std::uint32_t(p[1]) << 8) | p[2];
        // The colour key makes matching texels transparent black.
        image.pixels[i] = ColorKey != 0 && argb == ColorKey ? 0 : argb;
    }
    stbi_image_free(rgba);

    D3DXIMAGE_FILEFORMAT const file = file_format(path);
    if (pSrcInfo != nullptr)
    {
        pSrcInfo->Width = image.width;
        pSrcInfo->Height = image.height;
        pSrcInfo->Depth = 1;
        pSrcInfo->MipLevels = 1;
        pSrcInfo->Format = components == 4 || components == 2 ? D3DFMT_A8R8G8B8
                           : components == 1                  ? D3DFMT_L8
                           : file == D3DXIFF_BMP              ? D3DFMT_R8G8B8
                                                              : D3DFMT_X8R8G8B8;
        pSrcInfo->ResourceType = D3DRTYPE_TEXTURE;
        pSrcInfo->ImageFileFormat = file;
    }

    UINT const tw = target_size(Width, image.width), th = target_size(Height, image.height);
    if (tw == 0 || th == 0 || tw > max_texture_side || th > max_texture_side)
        return D3DERR_INVALIDCALL;
    UINT full_chain = 1;
    for (UINT side = std::max(tw, th); side > 1; side /= 2)
        ++full_chain;
    UINT levels = MipLevels == 0 || MipLevels == D3DX_DEFAULT ? full_chain
                  : MipLevels == D3DX_FROM_FILE               ? 1
                                                              : std::min(MipLevels, full_chain);
    if (tw != image.width || th != image.height)
        image = resize(image, tw, th, Filter != D3DX_FILTER_NONE);

    IDirect3DTexture9* texture = nullptr;
    HRESULT hr = pDevice->CreateTexture(tw, th, levels, Usage, format, Pool, &texture, nullptr);
    if (FAILED(hr))
        return hr;
    bool const opaque = format == D3DFMT_X8R8G8B8;
    for (UINT level = 0; level < levels && SUCCEEDED(hr); ++level)
    {
        if (level > 0)
            image = half(image);
        hr = upload_level(texture, level, image, opaque);
    }
    if (FAILED(hr))
    {
        texture->Release();
        return hr;
    }
    *ppTexture = texture;
    return D3D_OK;
}

HRESULT D3DXCreateTextureFromFileW(LPDIRECT3DDEVICE9 pDevice, LPCWSTR pSrcFile,
                                   LPDIRECT3DTEXTURE9* ppTexture)
{
    return D3DXCreateTextureFromFileExW(pDevice, pSrcFile, D3DX_DEFAULT, D3DX_DEFAULT, D3DX_DEFAULT,
                                        0, D3DFMT_UNKNOWN, D3DPOOL_MANAGED, D3DX_DEFAULT,
                                        D3DX_DEFAULT, 0, nullptr, nullptr, ppTexture);
}
