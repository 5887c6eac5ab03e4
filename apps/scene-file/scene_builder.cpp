#include "scene_builder.h"

#include <ixocore/core/string.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/light.h>
#include <ixocore/render/render_view.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>

#include <cmath>

namespace ixo_scene_file
{
namespace
{
// Shadows are cast by the object and every part a composite made for it, unless the
// file says otherwise for the object itself.
void set_cast_shadow(const ixo_object_ptr<ixo_scene_object>& o, bool on)
{
    o->set_property(ixo_scene_object::cast_shadow, on);
    for (int i = 0; i < o->get_num_children(); ++i)
        set_cast_shadow(o->get_child(i), on);
}
} // namespace

ixo_object_ptr<ixo_scene_object> build_object(const object_desc& d)
{
    ixo_object_ptr<ixo_scene_object> o = d.make ? d.make() : ixo_scene_object::create();
    set_cast_shadow(o, d.casts_shadow);
    o->set_transform(d.transform);
    if (d.color)
        o->set_color(*d.color);
    auto const& names = property_names();
    static const ixo_scene_object::property values[] = {ixo_scene_object::visible,
                                                        ixo_scene_object::in_background,
                                                        ixo_scene_object::in_foreground,
                                                        ixo_scene_object::transparent,
                                                        ixo_scene_object::pickable,
                                                        ixo_scene_object::depth_test,
                                                        ixo_scene_object::depth_write,
                                                        ixo_scene_object::cast_shadow,
                                                        ixo_scene_object::inherit_visible,
                                                        ixo_scene_object::inherit_transparent,
                                                        ixo_scene_object::inherit_color,
                                                        ixo_scene_object::inherit_alpha,
                                                        ixo_scene_object::inherit_depth_test,
                                                        ixo_scene_object::inherit_depth_write};
    for (auto const& [name, on] : d.properties)
        for (std::size_t i = 0; i < names.size(); ++i)
            if (names[i] == name)
                o->set_property(values[i], on);
    for (auto const& c : d.children)
        o->add_child(build_object(c));
    return o;
}

std::vector<ixo_object_ptr<ixo_light>> build_scene(const scene_desc& d, ixo_scene& scene)
{
    for (auto const& o : d.objects)
        scene.get_root()->add_child(build_object(o));
    scene.reset_cached_bounds();

    std::vector<ixo_object_ptr<ixo_light>> lights;
    for (std::size_t i = 0; i < d.lights.size(); ++i)
    {
        light_desc const& l = d.lights[i];
        auto light = ixo_light::create(int(i) + 1);
        light->set_position(l.position[0], l.position[1], l.position[2]);
        if (l.diffuse)
            light->set_diffuse((*l.diffuse)[0], (*l.diffuse)[1], (*l.diffuse)[2]);
        if (l.ambient)
            light->set_ambient((*l.ambient)[0], (*l.ambient)[1], (*l.ambient)[2]);
        if (l.specular)
        {
            float const s[3] = {(*l.specular)[0], (*l.specular)[1], (*l.specular)[2]};
            light->set_specular(s);
        }
        light->compute_shadow_matrices(scene.get_bounds());
        scene.add_light(light);
        lights.push_back(light);
    }
    return lights;
}

void apply_standard_view(ixo_camera_view& camera, const std::string& view)
{
    struct row
    {
        const char* name;
        ixo_vector3<float> focus, up;
    };
    float const d = 1 / std::sqrt(3.0f);
    row const rows[] = {{"front", {0, 0, -1}, {0, 1, 0}},      {"right", {-1, 0, 0}, {0, 1, 0}},
                        {"top", {0, -1, 0}, {0, 0, -1}},       {"back", {0, 0, 1}, {0, 1, 0}},
                        {"left", {1, 0, 0}, {0, 1, 0}},        {"bottom", {0, 1, 0}, {0, 0, -1}},
                        {"isometric", {-d, -d, -d}, {0, 1, 0}}};
    for (const row& r : rows)
        if (view == r.name)
        {
            camera.set_eye(ixo_vector3<float>(0, 0, 0));
            camera.set_focus(r.focus);
            camera.set_up(r.up);
        }
}

void apply_camera(ixo_camera_view& camera, const camera_desc& c, ixo_scene& scene)
{
    camera.use_perspective(c.perspective);
    if (!c.view.empty())
        apply_standard_view(camera, c.view);
    if (c.eye)
        camera.set_eye(*c.eye);
    if (c.focus)
        camera.set_focus(*c.focus);
    if (c.up)
        camera.set_up(*c.up);
    ixo_box3<float> const box = scene.get_bounds();
    if (c.view_all)
        camera.view_to_box(box);
    camera.near_far_to_box(box);
    if (c.fov)
        camera.set_fov(*c.fov);
}

bool apply_view(ixo_render_view& view, const view_desc& v, ixo_scene& scene, bool has_lights)
{
    view.set_background_color(v.background);
    if (!v.picture.empty() && !view.load_background_image(ixo_string(v.picture.c_str())))
        return false;
    view.set_shadow_mapping(v.shadows && has_lights);
    apply_camera(*view.get_camera(), v.camera, scene);
    return true;
}
} // namespace ixo_scene_file
