#include <ixocore/render/light.h>

#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/render/direct3d.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <numbers>

namespace
{
constexpr float tolerance = 1e-6f;

// The device takes row-vector matrices: the transpose of ours.
D3DXMATRIX to_device(const ixo_matrix44<float>& m)
{
    float a[16];
    m.transpose().array(a);
    return D3DXMATRIX(a);
}

void copy3(float* to, const float* from)
{
    to[0] = from[0];
    to[1] = from[1];
    to[2] = from[2];
}

D3DCOLORVALUE color_value(const float* c)
{
    return D3DCOLORVALUE{c[0], c[1], c[2], c[3]};
}

// The box's corners as seen from the light: x and y at unit distance in front of it (the
// central projection the shadow map uses), z the signed depth (negative in front).
ixo_box3<float> light_space_box(const ixo_matrix44<float>& view, const ixo_box3<float>& box)
{
    ixo_box3<float> result;
    for (int i = 0; i < 8; ++i)
    {
        ixo_vector3<float> const c = box.corner(i & 1, i & 2, i & 4);
        ixo_vector4<float> q = view * ixo_vector4<float>(c[0], c[1], c[2], 1.f);
        if (std::fabs(q[3]) > tolerance)
            q = q / q[3];
        // A corner in the light's own plane has no central projection; keep it finite.
        float const depth = std::max(std::fabs(q[2]), tolerance);
        result += ixo_vector3<float>(q[0] / depth, q[1] / depth, q[2]);
    }
    return result;
}

// Widens [lo, hi] symmetrically to at least `minimum`, so a flat box still gets an
// invertible projection.
void ensure_width(float& lo, float& hi, float minimum)
{
    if (hi - lo >= minimum)
        return;
    float const mid = 0.5f * (lo + hi);
    lo = mid - 0.5f * minimum;
    hi = mid + 0.5f * minimum;
}
} // namespace

ixo_object_ptr<ixo_light> ixo_light::create(int index)
{
    return new ixo_light(index);
}

ixo_light::ixo_light(int index)
    : index_(index), shadow_view_(ixo_identity_transform<float>()),
      shadow_projection_(ixo_identity_transform<float>())
{
}

ixo_light::~ixo_light() = default;

void ixo_light::set_position(float x, float y, float z)
{
    position_[0] = x;
    position_[1] = y;
    position_[2] = z;
}

void ixo_light::set_position(const float* p)
{
    if (p)
        copy3(position_, p);
}

ixo_vector3<float> ixo_light::get_position() const
{
    return ixo_vector3<float>(position_[0], position_[1], position_[2]);
}

void ixo_light::get_position(float* p) const
{
    if (p)
        copy3(p, position_);
}

void ixo_light::set_ambient(float r, float g, float b)
{
    ambient_[0] = r;
    ambient_[1] = g;
    ambient_[2] = b;
}

void ixo_light::set_ambient(const float* c)
{
    if (c)
        copy3(ambient_, c);
}

void ixo_light::get_ambient(float* c) const
{
    if (c)
        copy3(c, ambient_);
}

void ixo_light::set_diffuse(float r, float g, float b)
{
    diffuse_[0] = r;
    diffuse_[1] = g;
    diffuse_[2] = b;
}

void ixo_light::set_diffuse(const float* c)
{
    if (c)
        copy3(diffuse_, c);
}

ixo_vector4<float> ixo_light::get_diffuse() const
{
    return ixo_vector4<float>(diffuse_[0], diffuse_[1], diffuse_[2], diffuse_[3]);
}

void ixo_light::get_diffuse(float* c) const
{
    if (c)
        copy3(c, diffuse_);
}

void ixo_light::set_specular(const float* c)
{
    if (c)
        copy3(specular_, c);
}

void ixo_light::get_specular(float* c) const
{
    if (c)
        copy3(c, specular_);
}

bool ixo_light::draw(ixo_scene_draw_data* d) const
{
    IDirect3DDevice9* device = ixo_direct3d::get_device();
    if (!device)
        return false;
    float const zero[4] = {0.f, 0.f, 0.f, 0.f};

    D3DLIGHT9 light{};
    light.Type = D3DLIGHT_POINT;
    light.Position = D3DVECTOR{position_[0], position_[1], position_[2]};
    light.Ambient = color_value(ambient_light_enabled_ ? ambient_ : zero);
    light.Diffuse = color_value(diffuse_);
    light.Specular = color_value(specular_);
    light.Attenuation0 = 1.f;
    // As far as the light can reach without overflowing the range test.
    light.Range = std::sqrt(FLT_MAX);
    device->SetLight(DWORD(index_), &light);
    device->LightEnable(DWORD(index_), TRUE);

    if (ID3DXEffect* effect = ixo_direct3d::get_effect())
    {
        D3DXVECTOR4 const position(position_[0], position_[1], position_[2], 1.f);
        D3DXVECTOR4 const ambient(ambient_light_enabled_ ? ambient_ : zero);
        D3DXVECTOR4 const diffuse(direct_light_enabled_ ? diffuse_ : zero);
        effect->SetVector("g_lightPos", &position);
        effect->SetVector("g_lightAmbient", &ambient);
        effect->SetVector("g_lightDiffuse", &diffuse);
    }
    if (direct_light_enabled_)
        initiate_draw_shadows(d);
    return true;
}

bool ixo_light::compute_shadow_matrices(const ixo_box3<float>& box)
{
    shadow_bounds_ = box;
    if (box.empty())
        return false;

    ixo_vector3<float> const p = get_position();
    ixo_vector3<float> const c = box.middle();
    ixo_vector3<float> d = p - c;
    if (d.length() < tolerance)
        return false;
    d.normalize();

    ixo_vector3<float> up(0.f, 1.f, 0.f);
    if (std::fabs(std::fabs(up * d) - 1.f) < tolerance)
        up = ixo_vector3<float>(0.f, 0.f, 1.f);
    up.normalize();
    ixo_vector3<float> x = up ^ d;
    x.normalize();
    ixo_vector3<float> const y = d ^ x;

    // Right-handed look-at from the light toward the middle of the box: points in front
    // of the light get negative z.
    ixo_matrix44<float> view = ixo_identity_transform<float>();
    view[0] = ixo_vector4<float>(x[0], x[1], x[2], -(x * p));
    view[1] = ixo_vector4<float>(y[0], y[1], y[2], -(y * p));
    view[2] = ixo_vector4<float>(d[0], d[1], d[2], -(d * p));

    ixo_box3<float> seen = light_space_box(view, box);
    // The map's first axis takes the wider of the two spreads.
    if (seen.length(0) <= seen.length(1))
    {
        view = ixo_rotation_transform<float>(std::numbers::pi_v<float> / 2,
                                             ixo_vector3<float>(0.f, 0.f, 1.f)) *
               view;
        seen = light_space_box(view, box);
    }

    float l = seen.minimum()[0], r = seen.maximum()[0];
    float b = seen.minimum()[1], t = seen.maximum()[1];
    ensure_width(l, r, tolerance);
    ensure_width(b, t, tolerance);
    float const far_depth = std::fabs(seen.minimum()[2]);
    float near_depth = std::fabs(seen.maximum()[2]);
    // With the light inside the box's depth range the nearest corner is level with or
    // behind the light: no single perspective map holds the whole box.
    bool const in_front = seen.maximum()[2] < 0.f && near_depth > tolerance * far_depth;
    float far_plane = far_depth;
    if (!in_front)
    {
        far_plane = std::max(far_depth, tolerance);
        near_depth = far_plane * 1e-3f;
    }
    // A box seen face-on has one depth; a thin slab keeps the depth terms finite.
    float const min_depth_span = 1e-3f * std::max(1.f, far_plane);
    if (far_plane - near_depth < min_depth_span)
        far_plane = near_depth + min_depth_span;

    // Off-centre perspective onto the window [l, r] x [b, t] at unit distance, depth 0 at
    // the nearest corner and 1 at the farthest.
    ixo_matrix44<float> proj = ixo_identity_transform<float>();
    proj[0] = ixo_vector4<float>(2.f / (r - l), 0.f, (r + l) / (r - l), 0.f);
    proj[1] = ixo_vector4<float>(0.f, 2.f / (t - b), (t + b) / (t - b), 0.f);
    proj[2] = ixo_vector4<float>(0.f, 0.f, far_plane / (near_depth - far_plane),
                                 near_depth * far_plane / (near_depth - far_plane));
    proj[3] = ixo_vector4<float>(0.f, 0.f, -1.f, 0.f);

    shadow_view_ = view;
    shadow_projection_ = proj;
    return in_front;
}

bool ixo_light::compute_psm_shadow_matrices(ixo_scene_draw_data& d, const ixo_box3<float>& box)
{
    static_cast<void>(d);
    return compute_shadow_matrices(box);
}

bool ixo_light::initiate_create_shadows(ixo_scene_draw_data* d)
{
    static_cast<void>(d);
    // Before compute_shadow_matrices the matrices are identities: a map drawn with them
    // would shadow at random.
    if (!direct_light_enabled_ || shadow_bounds_.empty())
        return false;
    D3DXMATRIX const view = to_device(shadow_view_);
    D3DXMATRIX const proj = to_device(shadow_projection_);
    if (ID3DXEffect* effect = ixo_direct3d::get_effect())
    {
        effect->SetMatrix("g_mView", &view);
        effect->SetMatrix("g_mProj", &proj);
    }
    if (IDirect3DDevice9* device = ixo_direct3d::get_device())
    {
        device->SetTransform(D3DTS_VIEW, &view);
        device->SetTransform(D3DTS_PROJECTION, &proj);
    }
    return true;
}

bool ixo_light::initiate_draw_shadows(ixo_scene_draw_data* d) const
{
    static_cast<void>(d);
    if (ID3DXEffect* effect = ixo_direct3d::get_effect())
    {
        // A zero matrix puts every point behind the light's eye (w = 0), which the shader
        // leaves unshadowed: no map was drawn for a light that was never fitted.
        D3DXMATRIX const shadow =
            shadow_bounds_.empty()
                ? to_device(ixo_matrix44<float>(
                      ixo_vector4<float>(0, 0, 0, 0), ixo_vector4<float>(0, 0, 0, 0),
                      ixo_vector4<float>(0, 0, 0, 0), ixo_vector4<float>(0, 0, 0, 0)))
                : to_device(shadow_projection_ * shadow_view_);
        effect->SetMatrix("g_mShadow", &shadow);
    }
    return true;
}

bool ixo_light::get_ambient_light_enabled() const
{
    return ambient_light_enabled_;
}

void ixo_light::set_ambient_light_enabled(bool enabled)
{
    ambient_light_enabled_ = enabled;
}

bool ixo_light::get_direct_light_enabled() const
{
    return direct_light_enabled_;
}

void ixo_light::set_direct_light_enabled(bool enabled)
{
    direct_light_enabled_ = enabled;
}
