#include <ixocore/scene/scene_overlay_rectangle.h>

#include "primitive_device.h"

#include <ixocore/core/identifiable_object.h>
#include <ixocore/core/string.h>

#include <algorithm>
#include <cstring>

IXO_TYPIFIED_DEFINE(ixo_scene_overlay_rectangle, IXO_TEXT("Overlay Rectangle"))

namespace
{
DWORD const overlay_fvf = D3DFVF_XYZ | D3DFVF_NORMAL;
UINT const vertex_size = 24;
UINT const vertex_count = 6;

// View pixels to clip space over a viewport of w × h, moved by (dx, dy) pixels, at depth 0.
D3DXMATRIX pixel_projection(float w, float h, float dx, float dy)
{
    D3DXMATRIX m;
    for (auto& row : m.m)
        for (float& v : row)
            v = 0.0f;
    m.m[0][0] = 2.0f / w;
    m.m[1][1] = -2.0f / h;
    m.m[3][0] = -1.0f + 2.0f * dx / w;
    m.m[3][1] = 1.0f - 2.0f * dy / h;
    m.m[3][3] = 1.0f;
    return m;
}

D3DXVECTOR4 to_vector(const ixo_vector4<float>& c)
{
    return D3DXVECTOR4(c[0], c[1], c[2], c[3]);
}
} // namespace

ixo_object_ptr<ixo_scene_overlay_rectangle> ixo_scene_overlay_rectangle::create()
{
    return new ixo_scene_overlay_rectangle;
}

ixo_scene_overlay_rectangle::ixo_scene_overlay_rectangle()
    : start_(0.0f, 0.0f, 0.0f), end_(0.0f, 0.0f, 0.0f)
{
    set_property(depth_test, false);
    set_property(pickable, true);
    set_property(inherit_visible, true);
    set_color(ixo_vector4<unsigned char>(0, 0, 0, 128));
}

ixo_scene_overlay_rectangle::ixo_scene_overlay_rectangle(const ixo_scene_overlay_rectangle& other)
    : ixo_scene_object(other), start_(other.start_), end_(other.end_), buffer_(other.buffer_)
{
    if (buffer_)
        buffer_->AddRef();
}

ixo_scene_overlay_rectangle&
ixo_scene_overlay_rectangle::operator=(const ixo_scene_overlay_rectangle& other)
{
    if (this == &other)
        return *this;
    ixo_scene_object::operator=(other);
    start_ = other.start_;
    end_ = other.end_;
    if (other.buffer_)
        other.buffer_->AddRef();
    release_buffer();
    buffer_ = other.buffer_;
    return *this;
}

ixo_scene_overlay_rectangle::~ixo_scene_overlay_rectangle()
{
    release_buffer();
}

void ixo_scene_overlay_rectangle::release_buffer()
{
    if (buffer_)
        buffer_->Release();
    buffer_ = nullptr;
}

void ixo_scene_overlay_rectangle::set_start(const ixo_vector3<float>& start)
{
    start_ = start;
    release_buffer();
}

void ixo_scene_overlay_rectangle::set_end(const ixo_vector3<float>& end)
{
    end_ = end;
    release_buffer();
}

ixo_vector4<unsigned char> ixo_scene_overlay_rectangle::get_outline_color() const
{
    ixo_vector4<unsigned char> const& c = get_color();
    float const luminance = 0.299f * c[0] + 0.587f * c[1] + 0.114f * c[2];
    unsigned char const v = luminance >= 128.0f ? 0 : 255;
    return ixo_vector4<unsigned char>(v, v, v, 255);
}

ixo_box3<float> ixo_scene_overlay_rectangle::get_object_bounds() const
{
    ixo_box3<float> box;
    box += start_;
    box += end_;
    return box;
}

bool ixo_scene_overlay_rectangle::create_vertex_buffer()
{
    release_buffer();
    IDirect3DDevice9* device = ixo_primitive::device();
    if (!device || FAILED(device->CreateVertexBuffer(vertex_count * vertex_size, 0, overlay_fvf,
                                                     D3DPOOL_DEFAULT, &buffer_, nullptr)))
    {
        buffer_ = nullptr;
        return false;
    }
    float const x0 = std::min(start_[0], end_[0]), x1 = std::max(start_[0], end_[0]);
    float const y0 = std::min(start_[1], end_[1]), y1 = std::max(start_[1], end_[1]);
    // Two triangles whose six corners, read as a line strip, also walk the closed outline
    // (the repeated corner is a segment of no length).
    float const corners[vertex_count][2] = {{x0, y0}, {x1, y0}, {x1, y1},
                                            {x1, y1}, {x0, y1}, {x0, y0}};
    float vertices[vertex_count][6];
    for (UINT i = 0; i < vertex_count; ++i)
    {
        vertices[i][0] = corners[i][0];
        vertices[i][1] = corners[i][1];
        vertices[i][2] = 0.0f;
        vertices[i][3] = 0.0f;
        vertices[i][4] = 0.0f;
        vertices[i][5] = 1.0f;
    }
    void* data = nullptr;
    if (FAILED(buffer_->Lock(0, 0, &data, 0)))
    {
        release_buffer();
        return false;
    }
    std::memcpy(data, vertices, sizeof vertices);
    buffer_->Unlock();
    return true;
}

bool ixo_scene_overlay_rectangle::draw_object(const ixo_scene_draw_data& d)
{
    IDirect3DDevice9* device = ixo_primitive::device();
    if (d.do_mapping_shadows() || !device || (!buffer_ && !create_vertex_buffer()))
        return true;
    D3DVIEWPORT9 viewport{};
    if (FAILED(device->GetViewport(&viewport)) || viewport.Width == 0 || viewport.Height == 0)
        return true;
    ID3DXEffect* effect = ixo_primitive::effect();
    float const w = float(viewport.Width), h = float(viewport.Height);

    ixo_vector4<float> fill;
    if (d.do_mapping())
        fill = ixo_id_to_color(id());
    else
    {
        ixo_vector3<float> const c = get_actual_color();
        fill = ixo_vector4<float>(c[0], c[1], c[2], get_actual_alpha());
    }
    ixo_vector4<unsigned char> const o = get_outline_color();
    ixo_vector4<float> const outline =
        d.do_mapping() ? fill : ixo_vector4<float>(o[0] / 255.0f, o[1] / 255.0f, o[2] / 255.0f, 1);

    D3DMATRIX saved_view{}, saved_projection{};
    device->GetTransform(D3DTS_VIEW, &saved_view);
    device->GetTransform(D3DTS_PROJECTION, &saved_projection);
    D3DXMATRIX fx_view, fx_projection;
    if (effect)
    {
        effect->GetMatrix("g_mView", &fx_view);
        effect->GetMatrix("g_mProj", &fx_projection);
    }
    DWORD saved_cull = D3DCULL_CW;
    device->GetRenderState(D3DRS_CULLMODE, &saved_cull);

    D3DXMATRIX identity;
    D3DXMatrixIdentity(&identity);
    // The outline runs through pixel centres: half a pixel right of and below the corners.
    D3DXMATRIX const fill_projection = pixel_projection(w, h, 0.0f, 0.0f);
    D3DXMATRIX const line_projection = pixel_projection(w, h, 0.5f, 0.5f);
    device->SetTransform(D3DTS_WORLD, &identity);
    device->SetTransform(D3DTS_VIEW, &identity);
    device->SetStreamSource(0, buffer_, 0, vertex_size);
    device->SetFVF(overlay_fvf);
    device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);

    auto draw = [&](D3DPRIMITIVETYPE type, UINT count, const ixo_vector4<float>& color,
                    const D3DXMATRIX& projection)
    {
        device->SetTransform(D3DTS_PROJECTION, &projection);
        if (effect)
        {
            D3DXVECTOR4 const v = to_vector(color);
            effect->SetMatrix("g_mWorld", &identity);
            effect->SetMatrix("g_mView", &identity);
            effect->SetMatrix("g_mProj", &projection);
            effect->SetVector("g_ObjectColor", &v);
            effect->CommitChanges();
        }
        else
        {
            // Fixed function: the colour as the emissive term alone, the alpha from the
            // diffuse term as lighting takes it.
            D3DMATERIAL9 material{};
            material.Emissive = D3DCOLORVALUE{color[0], color[1], color[2], color[3]};
            material.Diffuse = D3DCOLORVALUE{0.0f, 0.0f, 0.0f, color[3]};
            device->SetMaterial(&material);
        }
        device->DrawPrimitive(type, 0, count);
    };

    if (effect)
    {
        effect->SetTechnique("MainTechnique");
        effect->SetBool("g_bEnableLighting", FALSE);
        UINT passes = 0;
        effect->Begin(&passes, 0);
        effect->BeginPass(0);
    }
    draw(D3DPT_TRIANGLELIST, 2, fill, fill_projection);
    draw(D3DPT_LINESTRIP, 5, outline, line_projection);
    if (effect)
    {
        effect->EndPass();
        effect->End();
        effect->SetMatrix("g_mView", &fx_view);
        effect->SetMatrix("g_mProj", &fx_projection);
    }
    device->SetTransform(D3DTS_VIEW, &saved_view);
    device->SetTransform(D3DTS_PROJECTION, &saved_projection);
    device->SetRenderState(D3DRS_CULLMODE, saved_cull);
    return true;
}

bool ixo_scene_overlay_rectangle::pre_reset_object()
{
    release_buffer();
    return true;
}

bool ixo_scene_overlay_rectangle::post_reset_object()
{
    create_vertex_buffer();
    return true;
}
