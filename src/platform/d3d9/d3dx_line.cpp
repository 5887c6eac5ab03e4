#include "platform/d3d9/d3dx_state.h"
#include "platform/d3d9/d3dx_unknown.h"

#include <cmath>
#include <vector>

namespace
{

DWORD const line_fvf = D3DFVF_XYZRHW | D3DFVF_DIFFUSE;

struct line_vertex
{
    float x, y, z, rhw;
    D3DCOLOR color;
};
static_assert(sizeof(line_vertex) == 20);

// A polyline point in view pixels with its depth and reciprocal w.
struct screen_point
{
    float x, y, z, rhw;
    bool valid;
};

class d3dx_line final : public ixo_d3dx_unknown<ID3DXLine>
{
public:
    explicit d3dx_line(IDirect3DDevice9* device) : device_(device) { device_->AddRef(); }

    HRESULT GetDevice(LPDIRECT3DDEVICE9* ppDevice) override
    {
        return ixo_d3dx_get_device(device_, ppDevice);
    }

    HRESULT Begin() override
    {
        if (begun_)
            return D3DERR_INVALIDCALL;
        begun_ = true;
        saved_.capture(device_,
                       {D3DRS_LIGHTING, D3DRS_CULLMODE, D3DRS_ALPHABLENDENABLE, D3DRS_SRCBLEND,
                        D3DRS_DESTBLEND, D3DRS_BLENDOP, D3DRS_ALPHATESTENABLE, D3DRS_FILLMODE,
                        D3DRS_FOGENABLE},
                       {D3DTSS_COLOROP, D3DTSS_COLORARG1, D3DTSS_ALPHAOP, D3DTSS_ALPHAARG1}, {});
        device_->SetRenderState(D3DRS_LIGHTING, FALSE);
        device_->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
        device_->SetRenderState(D3DRS_ALPHABLENDENABLE, TRUE);
        device_->SetRenderState(D3DRS_SRCBLEND, D3DBLEND_SRCALPHA);
        device_->SetRenderState(D3DRS_DESTBLEND, D3DBLEND_INVSRCALPHA);
        device_->SetRenderState(D3DRS_BLENDOP, D3DBLENDOP_ADD);
        device_->SetRenderState(D3DRS_ALPHATESTENABLE, FALSE);
        device_->SetRenderState(D3DRS_FILLMODE, D3DFILL_SOLID);
        device_->SetRenderState(D3DRS_FOGENABLE, FALSE);
        device_->SetTextureStageState(0, D3DTSS_COLOROP, D3DTOP_SELECTARG1);
        device_->SetTextureStageState(0, D3DTSS_COLORARG1, D3DTA_DIFFUSE);
        device_->SetTextureStageState(0, D3DTSS_ALPHAOP, D3DTOP_SELECTARG1);
        device_->SetTextureStageState(0, D3DTSS_ALPHAARG1, D3DTA_DIFFUSE);
        device_->SetTexture(0, nullptr);
        return D3D_OK;
    }

    HRESULT Draw(const D3DXVECTOR2* pVertexList, DWORD dwVertexListCount, D3DCOLOR Color) override
    {
        if (pVertexList == nullptr && dwVertexListCount > 0)
            return D3DERR_INVALIDCALL;
        std::vector<screen_point> points(dwVertexListCount);
        for (DWORD i = 0; i < dwVertexListCount; ++i)
            points[i] = {pVertexList[i].x, pVertexList[i].y, 0.0f, 1.0f, true};
        return draw(points, Color);
    }

    HRESULT DrawTransform(const D3DXVECTOR3* pVertexList, DWORD dwVertexListCount,
                          const D3DXMATRIX* pTransform, D3DCOLOR Color) override
    {
        if ((pVertexList == nullptr && dwVertexListCount > 0) || pTransform == nullptr)
            return D3DERR_INVALIDCALL;
        D3DVIEWPORT9 vp{};
        if (FAILED(device_->GetViewport(&vp)))
            return D3DERR_INVALIDCALL;
        std::vector<screen_point> points(dwVertexListCount);
        for (DWORD i = 0; i < dwVertexListCount; ++i)
        {
            D3DXVECTOR4 c;
            D3DXVec3Transform(&c, &pVertexList[i], pTransform);
            if (!(c.w > 0.0f))
            {
                points[i].valid = false;
                continue;
            }
            float const rhw = 1.0f / c.w;
            points[i] = {float(vp.X) + (c.x * rhw + 1.0f) * float(vp.Width) / 2,
                         float(vp.Y) + (1.0f - c.y * rhw) * float(vp.Height) / 2,
                         vp.MinZ + c.z * rhw * (vp.MaxZ - vp.MinZ), rhw, true};
        }
        return draw(points, Color);
    }

    HRESULT SetPattern(DWORD dwPattern) override
    {
        pattern_ = dwPattern;
        return D3D_OK;
    }
    DWORD GetPattern() override { return pattern_; }
    HRESULT SetPatternScale(FLOAT fPatternScale) override
    {
        pattern_scale_ = fPatternScale;
        return D3D_OK;
    }
    FLOAT GetPatternScale() override { return pattern_scale_; }
    HRESULT SetWidth(FLOAT fWidth) override
    {
        if (!(fWidth > 0.0f) || !std::isfinite(fWidth))
            return D3DERR_INVALIDCALL;
        width_ = fWidth;
        return D3D_OK;
    }
    FLOAT GetWidth() override { return width_; }
    HRESULT SetAntialias(BOOL bAntialias) override
    {
        antialias_ = bAntialias;
        return D3D_OK;
    }
    BOOL GetAntialias() override { return antialias_; }
    HRESULT SetGLLines(BOOL bGLLines) override
    {
        gl_lines_ = bGLLines;
        return D3D_OK;
    }
    BOOL GetGLLines() override { return gl_lines_; }

    HRESULT End() override
    {
        if (!begun_)
            return D3DERR_INVALIDCALL;
        saved_.restore();
        begun_ = false;
        return D3D_OK;
    }
    HRESULT OnLostDevice() override
    {
        if (begun_)
            End();
        return D3D_OK;
    }
    HRESULT OnResetDevice() override { return D3D_OK; }

private:
    ~d3dx_line() override
    {
        saved_.restore();
        device_->Release();
    }

    // One quad per segment, Width pixels across, centred on the segment.
    HRESULT draw(std::vector<screen_point> const& points, D3DCOLOR color)
    {
        std::vector<line_vertex> tris;
        float const half = width_ / 2;
        for (std::size_t i = 0; i + 1 < points.size(); ++i)
        {
            screen_point const& a = points[i];
            screen_point const& b = points[i + 1];
            if (!a.valid || !b.valid)
                continue;
            float dx = b.x - a.x, dy = b.y - a.y;
            float const len = std::sqrt(dx * dx + dy * dy);
            if (len == 0.0f)
                continue;
            float const nx = -dy / len * half, ny = dx / len * half;
            line_vertex const a0{a.x + nx, a.y + ny, a.z, a.rhw, color};
            line_vertex const a1{a.x - nx, a.y - ny, a.z, a.rhw, color};
            line_vertex const b0{b.x + nx, b.y + ny, b.z, b.rhw, color};
            line_vertex const b1{b.x - nx, b.y - ny, b.z, b.rhw, color};
            tris.insert(tris.end(), {a0, b0, a1, a1, b0, b1});
        }
        if (tris.empty())
            return D3D_OK;
        bool const own = !begun_;
        if (own)
            Begin();
        HRESULT hr = device_->SetFVF(line_fvf);
        if (SUCCEEDED(hr))
            hr = device_->DrawPrimitiveUP(D3DPT_TRIANGLELIST, UINT(tris.size() / 3), tris.data(),
                                          sizeof(line_vertex));
        if (own)
            End();
        return hr;
    }

    IDirect3DDevice9* device_;
    bool begun_ = false;
    float width_ = 1.0f;
    DWORD pattern_ = 0xFFFFFFFF;
    float pattern_scale_ = 1.0f;
    BOOL antialias_ = FALSE;
    BOOL gl_lines_ = FALSE;
    ixo_d3dx_state_block saved_;
};

} // namespace

HRESULT D3DXCreateLine(LPDIRECT3DDEVICE9 pDevice, LPD3DXLINE* ppLine)
{
    if (pDevice == nullptr || ppLine == nullptr)
        return D3DERR_INVALIDCALL;
    *ppLine = new d3dx_line(pDevice);
    return D3D_OK;
}
