#include <ixocore/render/scene_shadow.h>

#include <ixocore/app/application.h>
#include <ixocore/core/string.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9_math_types.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/scene_draw_data.h>

IXO_TYPIFIED_DEFINE(ixo_scene_shadow, IXO_TEXT("Shadow"))

ixo_matrix44<float> ixo_planar_shadow_transform(const ixo_vector3<float>& light,
                                                const ixo_plane<float>& plane)
{
    // Work relative to the light: a point q then goes to k·q / (n·q), where the ray from
    // the light through q meets the plane.
    ixo_matrix44<float> const to_light = ixo_translation_transform<float>(-light);
    ixo_matrix44<float> const from_light = to_light.inverse();
    ixo_vector3<float> const n = plane.normal();
    ixo_vector3<float> const r = to_light * plane.root();
    float const k = n * r;

    ixo_matrix44<float> project = ixo_scale_transform<float>(k);
    project[3] = ixo_vector4<float>(n[0], n[1], n[2], 0.f);
    // -P is the same projective map; it gives the points between light and plane a
    // positive w instead of a negative one, which the clipper would throw away.
    if (k < 0.f)
        project = -project;
    return from_light * project * to_light;
}

ixo_object_ptr<ixo_scene_shadow> ixo_scene_shadow::create(ixo_object_ptr<ixo_scene_object> object,
                                                          ixo_object_ptr<ixo_light> light,
                                                          const ixo_plane<float>& plane)
{
    return new ixo_scene_shadow(std::move(object), std::move(light), plane);
}

ixo_scene_shadow::ixo_scene_shadow(ixo_object_ptr<ixo_scene_object> object,
                                   ixo_object_ptr<ixo_light> light, const ixo_plane<float>& plane)
    : object_(std::move(object)), light_(std::move(light)), plane_(plane)
{
}

ixo_scene_shadow::~ixo_scene_shadow() = default;

ixo_box3<float> ixo_scene_shadow::get_object_bounds() const
{
    return ixo_box3<float>();
}

bool ixo_scene_shadow::draw_object(const ixo_scene_draw_data& d)
{
    if (!object_ || !light_ || drawing_)
        return true;
    struct guard
    {
        bool& flag;
        explicit guard(bool& f) : flag(f) { flag = true; }
        ~guard() { flag = false; }
    } const drawing(drawing_);
    IDirect3DDevice9* device = ixo_application::instance() ? ixo_direct3d::get_device() : nullptr;
    if (!device)
        return object_->draw(d);

    ixo_matrix44<float> const m = ixo_planar_shadow_transform(light_->get_position(), plane_);
    float a[16];
    m.transpose().array(a);
    D3DXMATRIX const shadow(a);
    // The shadow's children are drawn after this with the shadow's own world matrix.
    D3DMATRIX saved{};
    device->GetTransform(D3DTS_WORLD, &saved);
    device->MultiplyTransform(D3DTS_WORLD, &shadow);
    bool const ok = object_->draw(d);
    device->SetTransform(D3DTS_WORLD, &saved);
    return ok;
}
