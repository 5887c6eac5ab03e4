#pragma once
// Polylines of the two-dimensional machine parts, drawn with the shared line object through
// world x view x projection. In the picking pass every line takes the object's identifier
// colour, unblended, so the outlines can be picked like solids.

#include "scene/primitive_device.h"

#include <ixocore/core/identifiable_object.h>
#include <ixocore/math/vector.h>

#include <vector>

namespace ixo_machine
{
class line_painter
{
public:
    // Ready when a device and its line object exist, except in the shadow-map pass; holds
    // the line inside Begin/End.
    line_painter(const ixo_scene_draw_data& d, unsigned long id)
    {
        // Lines have no depth of their own worth casting a shadow.
        if (d.do_mapping_shadows())
            return;
        device_ = ixo_primitive::device();
        line_ = device_ ? ixo_direct3d::get_line() : nullptr;
        if (!line_)
            return;
        D3DXMATRIX world, view, projection, wv;
        device_->GetTransform(D3DTS_WORLD, &world);
        device_->GetTransform(D3DTS_VIEW, &view);
        device_->GetTransform(D3DTS_PROJECTION, &projection);
        D3DXMatrixMultiply(&wv, &world, &view);
        D3DXMatrixMultiply(&transform_, &wv, &projection);
        line_->SetWidth(1.0f);
        if (FAILED(line_->Begin()))
        {
            line_ = nullptr;
            return;
        }
        if (d.do_mapping())
        {
            device_->SetRenderState(D3DRS_ALPHABLENDENABLE, FALSE);
            ixo_vector4<float> const c = ixo_id_to_color(id);
            id_color_ = to_color(ixo_vector4<unsigned char>(
                (unsigned char)(c[0] * 255 + 0.5f), (unsigned char)(c[1] * 255 + 0.5f),
                (unsigned char)(c[2] * 255 + 0.5f), (unsigned char)(c[3] * 255 + 0.5f)));
            picking_ = true;
        }
    }
    ~line_painter()
    {
        if (line_)
            line_->End();
    }
    line_painter(const line_painter&) = delete;
    line_painter& operator=(const line_painter&) = delete;

    bool ok() const { return line_ != nullptr; }

    // One polyline in the colour (r, g, b, a) and width in pixels; fewer than 2 points draw
    // nothing.
    void draw(const std::vector<D3DXVECTOR3>& points, const ixo_vector4<unsigned char>& color,
              float width)
    {
        if (!line_ || points.size() < 2)
            return;
        line_->SetWidth(width);
        line_->DrawTransform(points.data(), DWORD(points.size()), &transform_,
                             picking_ ? id_color_ : to_color(color));
    }

    // Packed as the device takes colours: alpha, red, green, blue.
    static D3DCOLOR to_color(const ixo_vector4<unsigned char>& c)
    {
        return D3DCOLOR_ARGB(c[3], c[0], c[1], c[2]);
    }

private:
    IDirect3DDevice9* device_ = nullptr;
    ID3DXLine* line_ = nullptr;
    D3DXMATRIX transform_;
    D3DCOLOR id_color_ = 0;
    bool picking_ = false;
};
} // namespace ixo_machine
