// ixo-render: renders the views of a JSON scene file headless and writes one PNG per view.
//
//   ixo-render SCENE.json -o OUTPUT.png
//
// With several views OUTPUT.png is the first and the others get _1, _2, ... before the
// extension. Problems in the scene file are reported with their place in it, and the exit
// status is 1; a failure to start the graphics device or to render or write gives 2.

#include "scene_file.h"

#include <ixocore/app/application.h>
#include <ixocore/app/document.h>
#include <ixocore/core/string.h>
#include <ixocore/math/plane.h>
#include <ixocore/mesh/scene_indexed_mesh.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/light.h>
#include <ixocore/render/render_view.h>
#include <ixocore/render/render_view_manager.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_axis.h>
#include <ixocore/scene/scene_box.h>
#include <ixocore/scene/scene_cone.h>
#include <ixocore/scene/scene_coordinate_system.h>
#include <ixocore/scene/scene_cylinder.h>
#include <ixocore/scene/scene_object.h>
#include <ixocore/scene/scene_plane.h>
#include <ixocore/scene/scene_rectangle.h>
#include <ixocore/scene/scene_sphere.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

using namespace ixo_render_app;

namespace
{
const char* usage = "usage: ixo-render SCENE.json -o OUTPUT.png\n"
                    "       ixo-render --help\n";

// OUTPUT.png for view 0, OUTPUT_1.png for view 1, ...
std::string output_name(const std::string& output, std::size_t index)
{
    if (index == 0)
        return output;
    std::filesystem::path p(output);
    std::filesystem::path const ext = p.extension();
    p.replace_extension();
    return p.string() + "_" + std::to_string(index) + ext.string();
}

ixo_string wide(const std::string& s)
{
    return ixo_string(s.c_str());
}

// Shadows are cast by the object and every part a composite made for it, unless the
// file says otherwise for the object itself.
void set_cast_shadow(const ixo_object_ptr<ixo_scene_object>& o, bool on)
{
    o->set_property(ixo_scene_object::cast_shadow, on);
    for (int i = 0; i < o->get_num_children(); ++i)
        set_cast_shadow(o->get_child(i), on);
}

ixo_object_ptr<ixo_scene_object> build(const object_desc& s)
{
    ixo_object_ptr<ixo_scene_object> o;
    if (s.type == "box")
        o = ixo_scene_box::create(s.size[0], s.size[1], s.size[2]);
    else if (s.type == "cylinder")
        o = ixo_scene_cylinder::create(s.radius, s.length);
    else if (s.type == "cone")
        o = ixo_scene_cone::create();
    else if (s.type == "sphere")
        o = ixo_scene_sphere::create();
    else if (s.type == "plane")
    {
        auto plane = ixo_scene_plane::create(ixo_plane<float>(s.root, s.normal), s.width, s.height);
        plane->set_occupy_space(s.occupy_space);
        o = plane;
    }
    else if (s.type == "rectangle")
    {
        auto rect = ixo_scene_rectangle::create();
        rect->set_rectangle(s.rectangle);
        o = rect;
    }
    else if (s.type == "axis")
        o = ixo_scene_axis::create();
    else if (s.type == "coordinate_system")
        o = ixo_scene_coordinate_system::create();
    else if (s.type == "mesh")
        o = ixo_scene_indexed_mesh::create(s.mesh);
    else
        o = ixo_scene_object::create();

    set_cast_shadow(o, s.type != "plane" && s.type != "rectangle");
    o->set_transform(s.transform);
    if (s.color)
        o->set_color(*s.color);
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
    for (auto const& [name, on] : s.properties)
        for (std::size_t i = 0; i < names.size(); ++i)
            if (names[i] == name)
                o->set_property(values[i], on);
    for (auto const& c : s.children)
        o->add_child(build(c));
    return o;
}

// Eye, focus and up of the named standard view: the eye at the origin, one unit from the
// focus; view all then backs the eye off along the direction.
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
    if (c.view_all)
    {
        ixo_box3<float> const box = scene.get_bounds();
        camera.view_to_box(box);
        camera.near_far_to_box(box);
    }
    else
        camera.near_far_to_box(scene.get_bounds());
    if (c.fov)
        camera.set_fov(*c.fov);
}

int render(const scene_desc& described, const std::string& scene_name, const std::string& output)
{
    // A document's scene, so that a device reset reaches it through the application.
    ixo_object_ptr<ixo_document> document = ixo_application::instance()->create_document();
    ixo_object_ptr<ixo_scene> scene = document ? document->get_scene() : nullptr;
    if (!scene)
    {
        std::fprintf(stderr, "ixo-render: cannot create a document\n");
        return 2;
    }
    for (auto const& o : described.objects)
        scene->get_root()->add_child(build(o));
    scene->reset_cached_bounds();

    std::vector<ixo_object_ptr<ixo_light>> lights;
    for (std::size_t i = 0; i < described.lights.size(); ++i)
    {
        light_desc const& l = described.lights[i];
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
        light->compute_shadow_matrices(scene->get_bounds());
        scene->add_light(light);
        lights.push_back(light);
    }

    ixo_object_ptr<ixo_render_view_manager> manager =
        ixo_render_view_manager::get_app_render_view_manager();
    if (!manager)
    {
        std::fprintf(stderr, "ixo-render: no render-view manager\n");
        return 2;
    }
    int status = 0;
    for (std::size_t i = 0; i < described.views.size() && status == 0; ++i)
    {
        view_desc const& v = described.views[i];
        std::string const where =
            described.views.size() > 1 ? "/views/" + std::to_string(i) : "/view";
        ixo_object_ptr<ixo_render_view> view = manager->create();
        if (!view || !view->initialize(nullptr, unsigned(v.width), unsigned(v.height), scene))
        {
            std::fprintf(stderr, "%s: %s: cannot create a %d x %d view\n", scene_name.c_str(),
                         where.c_str(), v.width, v.height);
            status = 2;
            break;
        }
        view->set_background_color(v.background);
        if (!v.picture.empty() && !view->load_background_image(wide(v.picture)))
        {
            std::fprintf(stderr, "%s: %s/background_picture: cannot read the picture %s\n",
                         scene_name.c_str(), where.c_str(), v.picture.c_str());
            status = 1;
            break;
        }
        view->set_shadow_mapping(v.shadows && !lights.empty());
        apply_camera(*view->get_camera(), v.camera, *scene);

        std::string const file = output_name(output, i);
        if (!view->paint())
            std::fprintf(stderr, "ixo-render: warning: view %zu: some of the frame failed\n", i);
        if (!view->save_png(wide(file)))
        {
            std::fprintf(stderr, "ixo-render: cannot write %s\n", file.c_str());
            status = 2;
            break;
        }
        std::printf("%s\n", file.c_str());
    }
    scene->remove_all_lights();
    scene->get_root()->remove_all_children();
    ixo_application::instance()->remove_document(document);
    return status;
}
} // namespace

int main(int argc, char** argv)
{
    if (!std::setlocale(LC_ALL, ""))
        std::setlocale(LC_ALL, "C.UTF-8");

    std::string input, output;
    for (int i = 1; i < argc; ++i)
    {
        std::string const a = argv[i];
        if (a == "--help" || a == "-h")
        {
            std::printf("%s\nReads a scene file and writes one PNG picture per view.\n\n%s", usage,
                        format_help());
            return 0;
        }
        if (a == "-o" || a == "--output")
        {
            if (i + 1 >= argc)
            {
                std::fprintf(stderr, "ixo-render: -o needs a file name\n%s", usage);
                return 1;
            }
            output = argv[++i];
        }
        else if (!a.empty() && a[0] == '-' && a != "-")
        {
            std::fprintf(stderr, "ixo-render: unknown option %s\n%s", a.c_str(), usage);
            return 1;
        }
        else if (input.empty())
            input = a;
        else
        {
            std::fprintf(stderr, "ixo-render: more than one scene file\n%s", usage);
            return 1;
        }
    }
    if (input.empty() || output.empty())
    {
        std::fprintf(stderr, "ixo-render: %s\n%s",
                     input.empty() ? "no scene file given" : "no output file given (-o)", usage);
        return 1;
    }

    scene_desc described;
    try
    {
        described = read_scene_file(input);
    }
    catch (const scene_error& e)
    {
        if (e.where().empty())
            std::fprintf(stderr, "%s: %s\n", input.c_str(), e.what());
        else
            std::fprintf(stderr, "%s: %s: %s\n", input.c_str(), e.where().c_str(), e.what());
        return 1;
    }

    ixo_start_code const code = ixo_application::start(nullptr);
    if (code != ixo_start_success)
    {
        std::fprintf(stderr, "ixo-render: cannot start the graphics device (start code %d)\n",
                     int(code));
        ixo_application::end();
        return 2;
    }
    int status = 2;
    try
    {
        status = render(described, input, output);
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "ixo-render: %s\n", e.what());
        status = 2;
    }
    ixo_application::end();
    return status;
}
