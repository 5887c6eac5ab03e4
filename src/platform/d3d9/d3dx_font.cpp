#include "platform/d3d9/d3dx_unknown.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

namespace
{

UINT const page_side = 256;

std::string utf8_of(LPCWSTR text)
{
    // Face names only: the native-path conversion already speaks UTF-16 to UTF-8, and a
    // face name holds no backslashes worth keeping.
    return ixo_native_path(text);
}

// A glyph's place in the atlas and its metrics in pixels.
struct glyph
{
    int page = -1;
    RECT src{};
    int left = 0; // pen to bitmap's left edge
    int top = 0;  // baseline to bitmap's top edge (upwards)
    int advance = 0;
};

// One laid-out line: code points and width in pixels.
struct text_line
{
    std::u32string chars;
    int width = 0;
};

class d3dx_font final : public ixo_d3dx_unknown<ID3DXFont>
{
public:
    d3dx_font(IDirect3DDevice9* device, D3DXFONT_DESCW const& desc) : device_(device), desc_(desc)
    {
        device_->AddRef();
    }

    // Opens the face fontconfig answers and sizes it; false when none can be opened.
    bool open(std::string const& family)
    {
        FcPattern* pattern = FcPatternCreate();
        if (pattern == nullptr)
            return false;
        FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<FcChar8 const*>(family.c_str()));
        if (desc_.Weight != 0)
            FcPatternAddInteger(pattern, FC_WEIGHT,
                                FcWeightFromOpenType(int(std::min(desc_.Weight, 1000u))));
        FcPatternAddInteger(pattern, FC_SLANT, desc_.Italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
        FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
        FcDefaultSubstitute(pattern);
        FcResult result = FcResultNoMatch;
        FcPattern* match = FcFontMatch(nullptr, pattern, &result);
        FcPatternDestroy(pattern);
        if (match == nullptr)
            return false;
        FcChar8* file = nullptr;
        int index = 0;
        std::string path;
        if (FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch && file != nullptr)
            path = reinterpret_cast<char const*>(file);
        FcPatternGetInteger(match, FC_INDEX, 0, &index);
        FcPatternDestroy(match);
        if (path.empty() || FT_Init_FreeType(&library_) != 0)
            return false;
        if (FT_New_Face(library_, path.c_str(), index, &face_) != 0)
        {
            face_ = nullptr;
            return false;
        }
        FT_Select_Charmap(face_, FT_ENCODING_UNICODE);
        // Negative heights are the em size; positive ones the cell (ascent + descent).
        int height = desc_.Height == 0 ? -16 : desc_.Height;
        FT_UInt pixels = FT_UInt(height < 0 ? -height : height);
        if (height > 0 && face_->units_per_EM > 0 && face_->ascender - face_->descender > 0)
            pixels = FT_UInt(std::max<long>(1, long(height) * face_->units_per_EM /
                                                   (face_->ascender - face_->descender)));
        if (FT_Set_Pixel_Sizes(face_, 0, std::min<FT_UInt>(pixels, 2048)) != 0)
            return false;
        ascent_ = int((face_->size->metrics.ascender + 63) >> 6);
        descent_ = int((-face_->size->metrics.descender + 63) >> 6);
        return SUCCEEDED(D3DXCreateSprite(device_, &sprite_));
    }

    HRESULT GetDevice(LPDIRECT3DDEVICE9* ppDevice) override
    {
        return ixo_d3dx_get_device(device_, ppDevice);
    }
    HRESULT GetDescW(D3DXFONT_DESCW* pDesc) override
    {
        if (pDesc == nullptr)
            return D3DERR_INVALIDCALL;
        *pDesc = desc_;
        return D3D_OK;
    }

    INT DrawTextW(LPD3DXSPRITE pSprite, LPCWSTR pString, INT Count, LPRECT pRect, DWORD Format,
                  D3DCOLOR Color) override
    {
        if (pString == nullptr || pRect == nullptr)
            return 0;
        std::vector<text_line> lines = layout(decode(pString, Count), Format, *pRect);
        int const line_height = ascent_ + descent_;
        int widest = 0;
        for (text_line const& l : lines)
            widest = std::max(widest, l.width);
        int const total = line_height * int(lines.size());
        if (Format & DT_CALCRECT)
        {
            pRect->right = pRect->left + widest;
            pRect->bottom = pRect->top + total;
            return total;
        }
        if (lines.empty())
            return 0;
        upload_pending();

        RECT const r = *pRect;
        int y = r.top;
        if (Format & DT_VCENTER)
            y = r.top + (r.bottom - r.top - total) / 2;
        else if (Format & DT_BOTTOM)
            y = r.bottom - total;
        ID3DXSprite* sprite = pSprite != nullptr ? pSprite : sprite_;
        if (pSprite == nullptr && FAILED(sprite_->Begin(D3DXSPRITE_ALPHABLEND)))
            return 0;
        bool const clip = !(Format & DT_NOCLIP);
        for (text_line const& l : lines)
        {
            int x = r.left;
            if (Format & DT_CENTER)
                x = r.left + (r.right - r.left - l.width) / 2;
            else if (Format & DT_RIGHT)
                x = r.right - l.width;
            for (char32_t c : l.chars)
            {
                glyph const& g = glyph_of(c);
                if (g.page >= 0)
                {
                    RECT src = g.src;
                    LONG gx = x + g.left, gy = y + ascent_ - g.top;
                    if (clip)
                    {
                        // Trim the glyph to the rectangle, texel for pixel.
                        LONG const dl = std::max(0L, long(r.left - gx)),
                                   dt = std::max(0L, long(r.top - gy));
                        LONG const dr = std::max(0L, long(gx + (src.right - src.left) - r.right));
                        LONG const db = std::max(0L, long(gy + (src.bottom - src.top) - r.bottom));
                        src.left += dl, src.top += dt, src.right -= dr, src.bottom -= db;
                        gx += dl, gy += dt;
                    }
                    if (src.right > src.left && src.bottom > src.top)
                    {
                        D3DXVECTOR3 pos(float(gx), float(gy), 0.0f);
                        sprite->Draw(pages_[std::size_t(g.page)], &src, nullptr, &pos, Color);
                    }
                }
                // As measured: a tab under DT_EXPANDTABS is eight spaces wide.
                x += advance_of(c, Format);
            }
            y += line_height;
        }
        if (pSprite == nullptr)
            sprite_->End();
        return total;
    }

    HRESULT OnLostDevice() override { return sprite_ ? sprite_->OnLostDevice() : D3D_OK; }
    HRESULT OnResetDevice() override { return sprite_ ? sprite_->OnResetDevice() : D3D_OK; }

private:
    ~d3dx_font() override
    {
        for (IDirect3DTexture9* page : pages_)
            page->Release();
        if (sprite_ != nullptr)
            sprite_->Release();
        if (face_ != nullptr)
            FT_Done_Face(face_);
        if (library_ != nullptr)
            FT_Done_FreeType(library_);
        device_->Release();
    }

    static std::u32string decode(LPCWSTR s, INT count)
    {
        std::u32string out;
        std::size_t n = 0;
        if (count < 0)
            while (s[n] != 0)
                ++n;
        else
            n = std::size_t(count);
        for (std::size_t i = 0; i < n; ++i)
        {
            char32_t c = char32_t(s[i]);
            if (c >= 0xD800 && c < 0xDC00 && i + 1 < n && s[i + 1] >= 0xDC00 && s[i + 1] < 0xE000)
                c = 0x10000 + ((c - 0xD800) << 10) + (char32_t(s[++i]) - 0xDC00);
            out.push_back(c);
        }
        return out;
    }

    int advance_of(char32_t c, DWORD format)
    {
        if (c == U'\t' && (format & DT_EXPANDTABS))
            return 8 * glyph_of(U' ').advance;
        return glyph_of(c).advance;
    }

    // Splits at line feeds (unless DT_SINGLELINE) and, with DT_WORDBREAK, before words
    // that would cross the rectangle's right edge.
    std::vector<text_line> layout(std::u32string const& text, DWORD format, RECT const& rect)
    {
        std::vector<text_line> lines;
        if (text.empty())
            return lines;
        bool const single = (format & DT_SINGLELINE) != 0;
        bool const wrap = (format & DT_WORDBREAK) && !single && rect.right > rect.left;
        lines.emplace_back();
        std::size_t i = 0;
        while (i < text.size())
        {
            char32_t c = text[i];
            if (c == U'\r')
            {
                ++i;
                continue;
            }
            if (c == U'\n' && !single)
            {
                lines.emplace_back();
                ++i;
                continue;
            }
            if (wrap && c != U' ')
            {
                // A whole word: moved to a new line when it does not fit.
                std::size_t end = i;
                int w = 0;
                while (end < text.size() && text[end] != U' ' && text[end] != U'\n' &&
                       text[end] != U'\r')
                    w += advance_of(text[end++], format);
                text_line& cur = lines.back();
                if (!cur.chars.empty() && cur.width + w > rect.right - rect.left)
                {
                    while (!cur.chars.empty() && cur.chars.back() == U' ')
                    {
                        cur.width -= advance_of(U' ', format);
                        cur.chars.pop_back();
                    }
                    lines.emplace_back();
                }
                lines.back().chars.append(text, i, end - i);
                lines.back().width += w;
                i = end;
                continue;
            }
            lines.back().chars.push_back(c);
            lines.back().width += advance_of(c, format);
            ++i;
        }
        return lines;
    }

    // The glyph of c, rasterised into the atlas on first use (its pixels reach the page
    // texture at the next upload_pending).
    glyph const& glyph_of(char32_t c)
    {
        auto it = glyphs_.find(c);
        if (it != glyphs_.end())
            return it->second;
        glyph& g = glyphs_[c];
        bool const mono = desc_.Quality == NONANTIALIASED_QUALITY;
        FT_Int32 flags = FT_LOAD_RENDER | (mono ? FT_LOAD_TARGET_MONO : FT_LOAD_TARGET_NORMAL);
        if (c < 0x20 || FT_Load_Char(face_, c, flags) != 0)
            return g;
        FT_GlyphSlot slot = face_->glyph;
        g.advance = int((slot->advance.x + 32) >> 6);
        g.left = slot->bitmap_left;
        g.top = slot->bitmap_top;
        FT_Bitmap const& bm = slot->bitmap;
        UINT const w = bm.width, h = bm.rows;
        if (w == 0 || h == 0 || w + 1 > page_side || h + 1 > page_side)
            return g;
        // Shelf packing with a one-texel gap.
        if (shelf_x_ + w + 1 > page_side)
        {
            shelf_x_ = 0;
            shelf_y_ += shelf_h_ + 1;
            shelf_h_ = 0;
        }
        if (pages_.empty() || shelf_y_ + h + 1 > page_side)
        {
            IDirect3DTexture9* page = nullptr;
            if (FAILED(device_->CreateTexture(page_side, page_side, 1, 0, D3DFMT_A8R8G8B8,
                                              D3DPOOL_MANAGED, &page, nullptr)))
                return g;
            pages_.push_back(page);
            page_pixels_.emplace_back(std::size_t(page_side) * page_side, 0u);
            page_dirty_.push_back(true);
            shelf_x_ = shelf_y_ = shelf_h_ = 0;
        }
        std::size_t const p = pages_.size() - 1;
        std::vector<std::uint32_t>& pixels = page_pixels_[p];
        for (UINT y = 0; y < h; ++y)
        {
            unsigned char const* row =
                bm.pitch >= 0 ? bm.buffer + std::size_t(y) * std::size_t(bm.pitch)
                              : bm.buffer + std::size_t(h - 1 - y) * std::size_t(-bm.pitch);
            for (UINT x = 0; x < w; ++x)
            {
                std::uint32_t coverage = bm.pixel_mode == FT_PIXEL_MODE_MONO
                                             ? ((row[x >> 3] >> (7 - (x & 7))) & 1) * 255u
                                             : row[x];
                // White texels whose alpha is the coverage: the sprite's colour tints them.
                pixels[std::size_t(shelf_y_ + y) * page_side + shelf_x_ + x] =
                    (coverage << 24) | 0x00FFFFFFu;
            }
        }
        g.page = int(p);
        g.src = {LONG(shelf_x_), LONG(shelf_y_), LONG(shelf_x_ + w), LONG(shelf_y_ + h)};
        page_dirty_[p] = true;
        shelf_x_ += w + 1;
        shelf_h_ = std::max(shelf_h_, h);
        return g;
    }

    void upload_pending()
    {
        for (std::size_t p = 0; p < pages_.size(); ++p)
        {
            if (!page_dirty_[p])
                continue;
            D3DLOCKED_RECT lr{};
            if (FAILED(pages_[p]->LockRect(0, &lr, nullptr, 0)))
                continue;
            for (UINT y = 0; y < page_side; ++y)
                std::memcpy(static_cast<unsigned char*>(lr.pBits) + std::size_t(y) * lr.Pitch,
                            &page_pixels_[p][std::size_t(y) * page_side], page_side * 4);
            pages_[p]->UnlockRect(0);
            page_dirty_[p] = false;
        }
    }

    IDirect3DDevice9* device_;
    D3DXFONT_DESCW desc_;
    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
    int ascent_ = 0;
    int descent_ = 0;
    ID3DXSprite* sprite_ = nullptr;
    std::unordered_map<char32_t, glyph> glyphs_;
    std::vector<IDirect3DTexture9*> pages_;
    std::vector<std::vector<std::uint32_t>> page_pixels_;
    std::vector<bool> page_dirty_;
    UINT shelf_x_ = 0, shelf_y_ = 0, shelf_h_ = 0;
};

} // namespace

HRESULT D3DXCreateFontW(LPDIRECT3DDEVICE9 pDevice, INT Height, UINT Width, UINT Weight,
                        UINT MipLevels, BOOL Italic, DWORD CharSet, DWORD OutputPrecision,
                        DWORD Quality, DWORD PitchAndFamily, LPCWSTR pFaceName, LPD3DXFONT* ppFont)
{
    if (pDevice == nullptr || ppFont == nullptr)
        return D3DERR_INVALIDCALL;
    *ppFont = nullptr;
    D3DXFONT_DESCW desc{};
    desc.Height = Height;
    desc.Width = Width;
    desc.Weight = Weight;
    desc.MipLevels = MipLevels;
    desc.Italic = Italic;
    desc.CharSet = BYTE(CharSet);
    desc.OutputPrecision = BYTE(OutputPrecision);
    desc.Quality = BYTE(Quality);
    desc.PitchAndFamily = BYTE(PitchAndFamily);
    for (std::size_t i = 0; pFaceName != nullptr && i < 31 && pFaceName[i] != 0; ++i)
        desc.FaceName[i] = pFaceName[i];
    auto* font = new d3dx_font(pDevice, desc);
    std::string family = utf8_of(desc.FaceName);
    if (!font->open(family.empty() ? "sans-serif" : family))
    {
        font->Release();
        return D3DERR_INVALIDCALL;
    }
    *ppFont = font;
    return D3D_OK;
}
