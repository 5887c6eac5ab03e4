// D3DX helpers drawn on a headless device and read back.

#include "d3d9_fixture.h"

#include <ixocore/platform/d3dx9.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace
{

UINT const size = 64;
using pixel = ixo_test_pixel;

bool lit(pixel p)
{
    return p.r > 0 || p.g > 0 || p.b > 0;
}

// The lit pixels of rows [from, to): how many, their bounds, and how many of them differ
// from `colour` (when one is given).
struct ink
{
    int count = 0, off = 0, x0 = INT_MAX, y0 = INT_MAX, x1 = -1, y1 = -1;
};
ink ink_of(std::vector<pixel> const& img, D3DCOLOR colour = 0, int from = 0, int to = size)
{
    ink k;
    for (int y = from; y < to; ++y)
        for (int x = 0; x < int(size); ++x)
        {
            pixel p = img.at(y * size + x);
            if (!lit(p))
                continue;
            ++k.count;
            k.off += colour && (p.r != ((colour >> 16) & 0xFF) || p.g != ((colour >> 8) & 0xFF) ||
                                p.b != (colour & 0xFF));
            k.x0 = std::min(k.x0, x), k.y0 = std::min(k.y0, y);
            k.x1 = std::max(k.x1, x), k.y1 = std::max(k.y1, y);
        }
    return k;
}

// Expects each probe {x, y, lit} of the picture.
void expect_lit(std::vector<pixel> const& img, std::initializer_list<std::array<int, 3>> probes)
{
    for (auto const& p : probes)
        EXPECT_EQ(lit(img.at(p[1] * size + p[0])), p[2] != 0) << "pixel " << p[0] << ", " << p[1];
}

std::u16string wide(std::string const& s)
{
    return std::u16string(s.begin(), s.end());
}

} // namespace

using d3dx_render = ixo_d3d9_target<size, size>;

TEST_F(d3dx_render, polyline_outlines_a_rectangle)
{
    ID3DXLine* line = nullptr;
    ASSERT_EQ(D3DXCreateLine(device, &line), D3D_OK);
    EXPECT_EQ(line->GetWidth(), 1.0f);
    D3DXVECTOR2 const pts[5] = {{10, 10}, {50, 10}, {50, 40}, {10, 40}, {10, 10}};
    auto img = scene([&] { EXPECT_EQ(line->Draw(pts, 5, 0xFFFF0000), D3D_OK); });
    // Four one-pixel edges in red: 2 * (40 + 30) pixels, give or take the corners.
    ink const edges = ink_of(img, 0xFFFF0000);
    EXPECT_NEAR(edges.count, 140, 4);
    EXPECT_EQ(edges.off, 0);
    expect_lit(img, {{30, 10, 1}, {30, 40, 1}, {10, 25, 1}, {50, 25, 1}});
    expect_lit(img, {{30, 25, 0}, {30, 8, 0}, {30, 12, 0}, {8, 25, 0}, {52, 25, 0}});

    // Five pixels wide: rows 8..12 along the top edge.
    ASSERT_EQ(line->SetWidth(5), D3D_OK);
    EXPECT_EQ(line->SetWidth(0), D3DERR_INVALIDCALL);
    img = scene([&] { EXPECT_EQ(line->Draw(pts, 2, 0xFF00FF00), D3D_OK); });
    for (int y = 6; y <= 14; ++y)
        EXPECT_EQ(lit(at(img, 30, y)), y >= 8 && y <= 12) << y;

    // Through a transform: clip-space x from -0.5 to 0.5 at y = 0 is the middle row from
    // pixel 16 to 48; a point behind the eye drops its segment.
    ASSERT_EQ(line->SetWidth(1), D3D_OK);
    D3DXMATRIX identity;
    D3DXMatrixIdentity(&identity);
    D3DXVECTOR3 const world[3] = {{-0.5f, 0, 0.5f}, {0.5f, 0, 0.5f}, {0.5f, 0.5f, 0.5f}};
    D3DXMATRIX behind = identity;
    behind._44 = -1; // every point gets w = -1
    img = scene(
        [&]
        {
            ASSERT_EQ(line->Begin(), D3D_OK);
            EXPECT_EQ(line->DrawTransform(world, 2, &identity, 0xFF0000FF), D3D_OK);
            EXPECT_EQ(line->DrawTransform(world + 1, 2, &behind, 0xFF0000FF), D3D_OK);
            EXPECT_EQ(line->End(), D3D_OK);
        });
    expect_lit(img, {{32, 32, 1}, {17, 32, 1}, {47, 32, 1}, {12, 32, 0}, {52, 32, 0}, {48, 24, 0}});
    EXPECT_EQ(at(img, 32, 32).b, 255);

    EXPECT_EQ(line->Draw(nullptr, 3, 0), D3DERR_INVALIDCALL);
    EXPECT_EQ(line->End(), D3DERR_INVALIDCALL);
    line->Release();
}

TEST_F(d3dx_render, text_is_measured_and_drawn_inside_its_rectangle)
{
    HDC dc = GetWindowDC(nullptr);
    int const height = -MulDiv(9, GetDeviceCaps(dc, LOGPIXELSY), 72);
    ReleaseDC(nullptr, dc);
    ID3DXFont* font = nullptr;
    ASSERT_EQ(D3DXCreateFontW(device, height, 0, FW_NORMAL, 0, FALSE, DEFAULT_CHARSET,
                              OUT_DEFAULT_PRECIS, NONANTIALIASED_QUALITY, 0, u"Segoe UI", &font),
              D3D_OK);
    D3DXFONT_DESCW desc{};
    ASSERT_EQ(font->GetDescW(&desc), D3D_OK);
    EXPECT_EQ(desc.Height, -12);
    EXPECT_EQ(std::u16string(desc.FaceName), u"Segoe UI");
    auto measure =
        [&](ID3DXFont* f, char16_t const* text, INT count = -1, LONG width = 0, DWORD format = 0)
    {
        RECT r{0, 0, width, 0};
        INT h = f->DrawTextW(nullptr, text, count, &r, DT_CALCRECT | format, 0);
        EXPECT_EQ(h, r.bottom);
        return r;
    };

    RECT const m = measure(font, u"Hello");
    EXPECT_GT(m.right, 20);
    EXPECT_LT(m.right, 50);
    EXPECT_GE(m.bottom, 12);
    EXPECT_LE(m.bottom, 18);
    RECT const two = measure(font, u"Hello\nHello world");
    EXPECT_EQ(two.bottom, 2 * m.bottom);
    EXPECT_GT(two.right, m.right);
    EXPECT_EQ(measure(font, u"Hello world", 5).right, m.right);
    // Word breaks wrap at the rectangle's width, measuring included.
    RECT const narrow = measure(font, u"Hello Hello", -1, m.right + 2, DT_WORDBREAK);
    EXPECT_EQ(narrow.bottom, 2 * m.bottom);
    EXPECT_EQ(narrow.right, m.right);
    // A positive height is the cell: ascent plus descent.
    ID3DXFont* cell = nullptr;
    ASSERT_EQ(D3DXCreateFontW(device, 20, 0, FW_BOLD, 0, TRUE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                              ANTIALIASED_QUALITY, 0, u"Segoe UI", &cell),
              D3D_OK);
    EXPECT_NEAR(measure(cell, u"Hello").bottom, 20, 1);
    cell->Release();

    // Drawn at (10, 20): every lit pixel lies in the measured rectangle, in the colour.
    RECT r{10, 20, 10 + m.right, 20 + m.bottom};
    auto img = scene(
        [&] {
            EXPECT_EQ(font->DrawTextW(nullptr, u"Hello", -1, &r, DT_NOCLIP, 0xFFFFFF00), m.bottom);
        });
    ink const all = ink_of(img, 0xFFFFFF00);
    EXPECT_GT(all.count, 30);
    EXPECT_EQ(all.off, 0);
    EXPECT_GE(all.x0, r.left);
    EXPECT_LT(all.x1, r.right);
    EXPECT_GE(all.y0, r.top);
    EXPECT_LT(all.y1, r.bottom);

    // Without DT_NOCLIP the rectangle clips: only its left half stays lit.
    RECT half{10, 20, 10 + m.right / 2, 20 + m.bottom};
    img = scene([&] { font->DrawTextW(nullptr, u"Hello", -1, &half, 0, 0xFFFFFFFF); });
    ink const clipped = ink_of(img);
    EXPECT_LT(clipped.x1, half.right);
    EXPECT_GT(clipped.count, 5);
    EXPECT_LT(clipped.count, all.count);

    // Centred both ways in the whole target: the ink's middle is near the centre.
    RECT whole{0, 0, LONG(size), LONG(size)};
    img = scene(
        [&]
        {
            font->DrawTextW(nullptr, u"Hello", -1, &whole, DT_CENTER | DT_VCENTER | DT_SINGLELINE,
                            0xFFFFFFFF);
        });
    ink const centred = ink_of(img);
    EXPECT_NEAR((centred.x0 + centred.x1) / 2.0, 32.0, 3.0);
    EXPECT_NEAR((centred.y0 + centred.y1) / 2.0, 32.0, 4.0);
    EXPECT_GE(centred.y0, (int(size) - m.bottom) / 2);
    EXPECT_LT(centred.y1, (int(size) + m.bottom) / 2 + 1);

    // An expanded tab is drawn as wide as it is measured: the second H starts where the
    // measure puts it, not straight after the first.
    RECT const one_h = measure(font, u"H"), tabbed = measure(font, u"H\tH", -1, 0, DT_EXPANDTABS);
    ASSERT_GT(tabbed.right, 2 * one_h.right + 4);
    ASSERT_LT(tabbed.right, LONG(size) - 4);
    RECT tab_rect{2, 2, 2 + tabbed.right, 2 + tabbed.bottom};
    img = scene(
        [&] {
            font->DrawTextW(nullptr, u"H\tH", -1, &tab_rect, DT_EXPANDTABS | DT_NOCLIP, 0xFFFFFFFF);
        });
    int const rightmost = ink_of(img).x1;
    EXPECT_GT(rightmost, tab_rect.right - one_h.right);
    EXPECT_LT(rightmost, tab_rect.right + 1);

    // Through the caller's sprite: the same ink as without one.
    ID3DXSprite* sprite = nullptr;
    ASSERT_EQ(D3DXCreateSprite(device, &sprite), D3D_OK);
    img = scene(
        [&]
        {
            ASSERT_EQ(sprite->Begin(D3DXSPRITE_ALPHABLEND), D3D_OK);
            EXPECT_EQ(font->DrawTextW(sprite, u"Hello", -1, &r, DT_NOCLIP, 0xFFFFFF00), m.bottom);
            EXPECT_EQ(sprite->End(), D3D_OK);
        });
    EXPECT_EQ(ink_of(img, 0xFFFFFF00).count, all.count);
    sprite->Release();

    EXPECT_EQ(font->DrawTextW(nullptr, nullptr, -1, &whole, 0, 0), 0);
    EXPECT_EQ(font->DrawTextW(nullptr, u"x", -1, nullptr, 0, 0), 0);
    IDirect3DDevice9* got = nullptr;
    ASSERT_EQ(font->GetDevice(&got), D3D_OK);
    EXPECT_EQ(got, device);
    got->Release();
    font->Release();
}

TEST_F(d3dx_render, sprite_tints_and_places_texels)
{
    IDirect3DTexture9* tex = nullptr;
    ASSERT_EQ(device->CreateTexture(4, 4, 1, 0, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, &tex, nullptr),
              D3D_OK);
    D3DLOCKED_RECT lr{};
    ASSERT_EQ(tex->LockRect(0, &lr, nullptr, 0), D3D_OK);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            static_cast<DWORD*>(lr.pBits)[y * lr.Pitch / 4 + x] =
                x == 3 ? 0xFF808080u : 0xFFFFFFFFu;
    tex->UnlockRect(0);

    ID3DXSprite* sprite = nullptr;
    ASSERT_EQ(D3DXCreateSprite(device, &sprite), D3D_OK);
    EXPECT_EQ(sprite->Draw(tex, nullptr, nullptr, nullptr, 0xFFFFFFFF), D3DERR_INVALIDCALL);
    auto img = scene(
        [&]
        {
            ASSERT_EQ(sprite->Begin(D3DXSPRITE_ALPHABLEND), D3D_OK);
            EXPECT_EQ(sprite->Begin(0), D3DERR_INVALIDCALL);
            D3DXVECTOR3 pos(10, 10, 0);
            EXPECT_EQ(sprite->Draw(tex, nullptr, nullptr, &pos, 0xFF00FF00), D3D_OK);
            // Half-transparent red over black, and a 2 x 2 part of the texture with its centre.
            D3DXVECTOR3 pos2(30, 10, 0), centre(1, 1, 0), pos3(51, 11, 0);
            RECT src{2, 0, 4, 2};
            EXPECT_EQ(sprite->Draw(tex, nullptr, nullptr, &pos2, 0x80FF0000), D3D_OK);
            EXPECT_EQ(sprite->Draw(tex, &src, &centre, &pos3, 0xFFFFFFFF), D3D_OK);
            EXPECT_EQ(sprite->End(), D3D_OK);
            // A scaling transform doubles the rectangle.
            D3DXMATRIX scale;
            D3DXMatrixScaling(&scale, 2, 2, 1);
            EXPECT_EQ(sprite->SetTransform(&scale), D3D_OK);
            ASSERT_EQ(sprite->Begin(0), D3D_OK);
            D3DXVECTOR3 pos4(5, 20, 0);
            EXPECT_EQ(sprite->Draw(tex, nullptr, nullptr, &pos4, 0xFF0000FF), D3D_OK);
            EXPECT_EQ(sprite->End(), D3D_OK);
        });

    EXPECT_TRUE(ixo_pixel_is(at(img, 10, 10), 0, 255, 0, 255, 0));
    EXPECT_EQ(at(img, 12, 13).g, 255);
    EXPECT_NEAR(at(img, 13, 10).g, 128, 1); // the grey column, tinted green
    EXPECT_NEAR(at(img, 31, 11).r, 128, 2);
    EXPECT_EQ(at(img, 31, 11).g, 0);
    // The part: texels (2..3, 0..1) with texel (1, 1) of the part at (51, 11).
    EXPECT_EQ(at(img, 50, 10).r, 255);
    EXPECT_NEAR(at(img, 51, 10).r, 128, 1);
    // Scaled: (5, 20) * 2 = (10, 40), 8 x 8 pixels.
    EXPECT_EQ(at(img, 10, 40).b, 255);
    EXPECT_EQ(at(img, 15, 47).b, 255);
    expect_lit(img, {{14, 10, 0}, {9, 10, 0}, {10, 14, 0}, {10, 9, 0}, {52, 10, 0}, {50, 12, 0}});
    expect_lit(img, {{49, 10, 0}, {18, 40, 0}, {10, 48, 0}, {9, 40, 0}});
    sprite->Release();
    tex->Release();
}

TEST_F(d3dx_render, texture_from_png_file)
{
    char dir[] = "/tmp/ixo_d3dx_XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    std::string const path = std::string(dir) + "/picture.png";
    // 3 x 2 pixels, RGBA.
    unsigned char const rgba[] = {255, 0,  0,  255, 0,   255, 0,   255, 0, 0, 255, 255,
                                  10,  20, 30, 40,  255, 255, 255, 255, 1, 2, 3,   255};
    ASSERT_NE(stbi_write_png(path.c_str(), 3, 2, 4, rgba, 3 * 4), 0);
    // The Windows form of the path, as the host's folder helpers hand it out.
    std::u16string win = wide(path);
    std::replace(win.begin(), win.end(), u'/', u'\\');
    IDirect3DTexture9* tex = nullptr;
    D3DXIMAGE_INFO info{};
    auto load = [&](char16_t const* file, UINT width, UINT height, UINT levels, D3DFORMAT format,
                    D3DPOOL pool, DWORD filter, DWORD mip_filter, D3DCOLOR key,
                    D3DXIMAGE_INFO* out = nullptr)
    {
        return D3DXCreateTextureFromFileExW(device, file, width, height, levels, 0, format, pool,
                                            filter, mip_filter, key, out, nullptr, &tex);
    };
    ASSERT_EQ(load(win.c_str(), D3DX_DEFAULT_NONPOW2, D3DX_DEFAULT_NONPOW2, 1, D3DFMT_A8R8G8B8,
                   D3DPOOL_MANAGED, D3DX_FILTER_NONE, D3DX_FILTER_NONE, 0, &info),
              D3D_OK);
    EXPECT_EQ(info.Width, 3u);
    EXPECT_EQ(info.Height, 2u);
    EXPECT_EQ(info.ImageFileFormat, D3DXIFF_PNG);
    EXPECT_EQ(info.Format, D3DFMT_A8R8G8B8);
    D3DSURFACE_DESC desc{};
    ASSERT_EQ(tex->GetLevelDesc(0, &desc), D3D_OK);
    EXPECT_EQ(desc.Width, 3u);
    EXPECT_EQ(desc.Height, 2u);
    EXPECT_EQ(tex->GetLevelCount(), 1u);
    D3DLOCKED_RECT lr{};
    ASSERT_EQ(tex->LockRect(0, &lr, nullptr, D3DLOCK_READONLY), D3D_OK);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
        {
            pixel q;
            std::memcpy(&q, static_cast<unsigned char const*>(lr.pBits) + y * lr.Pitch + 4 * x, 4);
            unsigned char const* s = rgba + 4 * (3 * y + x);
            EXPECT_TRUE(ixo_pixel_is(q, s[0], s[1], s[2], s[3], 0)) << x << ", " << y;
        }
    tex->UnlockRect(0);
    tex->Release();

    // Default pool, drawn through a sprite: the picture reaches the target unchanged.
    ASSERT_EQ(load(win.c_str(), D3DX_DEFAULT_NONPOW2, D3DX_DEFAULT_NONPOW2, 1, D3DFMT_A8R8G8B8,
                   D3DPOOL_DEFAULT, D3DX_FILTER_NONE, D3DX_FILTER_NONE, 0),
              D3D_OK);
    ID3DXSprite* sprite = nullptr;
    ASSERT_EQ(D3DXCreateSprite(device, &sprite), D3D_OK);
    auto img = scene(
        [&]
        {
            sprite->Begin(0);
            D3DXVECTOR3 pos(7, 9, 0);
            sprite->Draw(tex, nullptr, nullptr, &pos, 0xFFFFFFFF);
            sprite->End();
        });
    EXPECT_EQ(at(img, 7, 9).r, 255);
    EXPECT_EQ(at(img, 8, 9).g, 255);
    EXPECT_EQ(at(img, 9, 9).b, 255);
    EXPECT_EQ(at(img, 9, 10).r, 1);
    EXPECT_EQ(at(img, 9, 10).b, 3);
    EXPECT_FALSE(lit(at(img, 10, 9)));
    sprite->Release();
    tex->Release();

    // Power-of-two rounding with a full chain, and a colour key on pure red.
    ASSERT_EQ(load(wide(path).c_str(), D3DX_DEFAULT, D3DX_DEFAULT, 0, D3DFMT_UNKNOWN,
                   D3DPOOL_MANAGED, D3DX_FILTER_POINT, D3DX_FILTER_BOX, 0xFFFF0000),
              D3D_OK);
    ASSERT_EQ(tex->GetLevelDesc(0, &desc), D3D_OK);
    EXPECT_EQ(desc.Width, 4u);
    EXPECT_EQ(desc.Height, 2u);
    EXPECT_EQ(tex->GetLevelCount(), 3u);
    ASSERT_EQ(tex->LockRect(0, &lr, nullptr, D3DLOCK_READONLY), D3D_OK);
    EXPECT_EQ(static_cast<DWORD const*>(lr.pBits)[0], 0u);
    tex->UnlockRect(0);
    tex->Release();

    // BMP and JPEG files, and a size beyond the limit.
    std::string const bmp = std::string(dir) + "/picture.bmp";
    std::string const jpg = std::string(dir) + "/picture.jpg";
    unsigned char grey[8 * 8 * 3];
    std::memset(grey, 200, sizeof grey);
    ASSERT_NE(stbi_write_bmp(bmp.c_str(), 8, 8, 3, grey), 0);
    ASSERT_NE(stbi_write_jpg(jpg.c_str(), 8, 8, 3, grey, 95), 0);
    for (auto const& [file, format] : {std::pair{bmp, D3DXIFF_BMP}, std::pair{jpg, D3DXIFF_JPG}})
    {
        ASSERT_EQ(load(wide(file).c_str(), D3DX_FROM_FILE, D3DX_FROM_FILE, D3DX_FROM_FILE,
                       D3DFMT_X8R8G8B8, D3DPOOL_MANAGED, D3DX_DEFAULT, D3DX_DEFAULT, 0, &info),
                  D3D_OK);
        EXPECT_EQ(info.ImageFileFormat, format);
        EXPECT_EQ(info.Width, 8u);
        ASSERT_EQ(tex->LockRect(0, &lr, nullptr, D3DLOCK_READONLY), D3D_OK);
        auto q = static_cast<unsigned char const*>(lr.pBits) + 3 * lr.Pitch + 4 * 5;
        EXPECT_NEAR(q[0], 200, 3);
        EXPECT_NEAR(q[2], 200, 3);
        EXPECT_EQ(q[3], 255);
        tex->UnlockRect(0);
        tex->Release();
    }
    EXPECT_EQ(load(wide(bmp).c_str(), 100000, 8, 1, D3DFMT_A8R8G8B8, D3DPOOL_MANAGED, D3DX_DEFAULT,
                   D3DX_DEFAULT, 0),
              D3DERR_INVALIDCALL);
    std::remove(bmp.c_str());
    std::remove(jpg.c_str());

    std::string const missing = std::string(dir) + "/none.png";
    EXPECT_EQ(D3DXCreateTextureFromFileW(device, wide(missing).c_str(), &tex), D3DXERR_INVALIDDATA);
    EXPECT_EQ(D3DXCreateTextureFromFileW(device, nullptr, &tex), D3DERR_INVALIDCALL);
    std::remove(path.c_str());
    rmdir(dir);
}

TEST_F(d3dx_render, mesh_builders_draw_their_shapes)
{
    ID3DXMesh* box = nullptr;
    ASSERT_EQ(D3DXCreateBox(device, 2, 4, 6, &box, nullptr), D3D_OK);
    EXPECT_EQ(box->GetNumVertices(), 24u);
    EXPECT_EQ(box->GetNumFaces(), 12u);
    EXPECT_EQ(box->GetFVF(), DWORD(D3DFVF_XYZ | D3DFVF_NORMAL));
    EXPECT_EQ(box->GetNumBytesPerVertex(), 24u);
    // The shapes' geometry is checked on its own; here, that the mesh hands it out.
    void* data = nullptr;
    ASSERT_EQ(box->LockVertexBuffer(D3DLOCK_READONLY, &data), D3D_OK);
    EXPECT_EQ(std::abs(static_cast<float const*>(data)[0]), 1.0f); // x of a 2-wide box
    box->UnlockVertexBuffer();
    ASSERT_EQ(box->LockIndexBuffer(D3DLOCK_READONLY, &data), D3D_OK);
    for (int i = 0; i < 36; ++i)
        EXPECT_LT(static_cast<std::uint16_t const*>(data)[i], 24);
    box->UnlockIndexBuffer();
    box->Release();

    ID3DXMesh* cyl = nullptr;
    ASSERT_EQ(D3DXCreateCylinder(device, 1, 1, 2, 72, 1, &cyl, nullptr), D3D_OK);
    EXPECT_EQ(cyl->GetNumVertices(), 290u);
    EXPECT_EQ(cyl->GetNumFaces(), 288u);
    cyl->Release();
    EXPECT_EQ(D3DXCreateCylinder(device, 1, 1, 2, 1, 1, &cyl, nullptr), D3DERR_INVALIDCALL);
    EXPECT_EQ(D3DXCreateBox(nullptr, 1, 1, 1, &box, nullptr), D3DERR_INVALIDCALL);

    // A unit sphere five units in front of a 45-degree camera covers a disc of radius
    // tan(asin(1/5)) / tan(22.5 deg) * 32 = 15.8 pixels.
    ID3DXMesh* sphere = nullptr;
    ASSERT_EQ(D3DXCreateSphere(device, 1, 72, 36, &sphere, nullptr), D3D_OK);
    EXPECT_EQ(sphere->GetNumVertices(), 2522u);
    EXPECT_EQ(sphere->GetNumFaces(), 5040u);
    D3DXMATRIX world, view, proj;
    D3DXMatrixIdentity(&world);
    D3DXVECTOR3 eye(0, 0, 5), at0(0, 0, 0), up(0, 1, 0);
    D3DXMatrixLookAtRH(&view, &eye, &at0, &up);
    D3DXMatrixPerspectiveFovRH(&proj, D3DX_PI / 4, 1.0f, 1.0f, 100.0f);
    device->SetTransform(D3DTS_WORLD, &world);
    device->SetTransform(D3DTS_VIEW, &view);
    device->SetTransform(D3DTS_PROJECTION, &proj);
    device->SetRenderState(D3DRS_LIGHTING, FALSE);
    device->SetRenderState(D3DRS_ZENABLE, D3DZB_FALSE);
    // Seen through a right-handed view, outward faces turn counter-clockwise.
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_CW);
    auto img = scene(
        [&]
        {
            EXPECT_EQ(sphere->DrawSubset(0), D3D_OK);
            EXPECT_EQ(sphere->DrawSubset(1), D3D_OK);
        });
    double const r = std::tan(std::asin(0.2)) / std::tan(D3DX_PI / 8) * 32;
    EXPECT_NEAR(ink_of(img).count, D3DX_PI * r * r, 0.06 * D3DX_PI * r * r);
    expect_lit(img, {{32, 32, 1}, {32, 32 - 18, 0}, {32 + 18, 32, 0}});
    sphere->Release();
}
