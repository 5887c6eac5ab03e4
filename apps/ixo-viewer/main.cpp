// ixo-viewer: shows a JSON scene file (the format of ixo-render) in an X11 window and lets
// the mouse move the camera, select and spin objects through the library's tools.
//
//   ixo-viewer SCENE.json [--view N] [-o PICTURE.png]
//
// The window has the size of the file's view (the first, or view N) and starts with its
// camera, so the picture saved with s equals what ixo-render draws for that view. Problems
// in the scene file give exit status 1 with their place in the file; no display or no
// graphics device gives 2; closing the window or q ends with 0.

#include "scene_builder.h"
#include "scene_file.h"
#include "viewer_window.h"

#include <ixocore/app/application.h>
#include <ixocore/app/document.h>
#include <ixocore/render/light.h>
#include <ixocore/render/render_view.h>
#include <ixocore/render/render_view_manager.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace ixo_scene_file;

namespace
{
const char* usage = "usage: ixo-viewer SCENE.json [--view N] [-o PICTURE.png]\n"
                    "       ixo-viewer --help\n";

// Every object can be picked, so that clicks can select any of them.
void make_pickable(const ixo_object_ptr<ixo_scene_object>& o)
{
    o->set_property(ixo_scene_object::pickable, true);
    for (int i = 0; i < o->get_num_children(); ++i)
        make_pickable(o->get_child(i));
}

int show(const scene_desc& described, std::size_t view_index, const std::string& scene_name,
         const std::string& png_path, ixo_viewer::viewer_window& window)
{
    ixo_object_ptr<ixo_document> document = ixo_application::instance()->create_document();
    ixo_object_ptr<ixo_scene> scene = document ? document->get_scene() : nullptr;
    if (!scene)
    {
        std::fprintf(stderr, "ixo-viewer: cannot create a document\n");
        return 2;
    }
    std::vector<ixo_object_ptr<ixo_light>> const lights = build_scene(described, *scene);
    for (int i = 0; i < scene->get_root()->get_num_children(); ++i)
        make_pickable(scene->get_root()->get_child(i));

    view_desc const& v = described.views[view_index];
    int status = 0;
    ixo_object_ptr<ixo_render_view_manager> manager =
        ixo_render_view_manager::get_app_render_view_manager();
    ixo_object_ptr<ixo_render_view> view = manager ? manager->create() : nullptr;
    if (!view || !view->initialize(window.handle(), unsigned(v.width), unsigned(v.height), scene))
    {
        std::fprintf(stderr, "ixo-viewer: cannot show a %d x %d view in the window\n", v.width,
                     v.height);
        status = 2;
    }
    else if (!apply_view(*view, v, *scene, !lights.empty()))
    {
        std::fprintf(stderr, "%s: background_picture: cannot read the picture %s\n",
                     scene_name.c_str(), v.picture.c_str());
        status = 1;
    }
    else
        status = window.run(document, view, png_path);

    view = nullptr;
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

    std::string input;
    std::string png_path = "ixo-viewer.png";
    long view_index = 0;
    for (int i = 1; i < argc; ++i)
    {
        std::string const a = argv[i];
        if (a == "--help" || a == "-h")
        {
            std::printf("%s\nShows a scene file in a window; the mouse and keys move the camera, "
                        "select and spin.\n\n%s\nThe scene file is that of ixo-render:\n\n%s",
                        usage, ixo_viewer::bindings_help, format_help().c_str());
            return 0;
        }
        if (a == "-o" || a == "--output" || a == "--view")
        {
            if (i + 1 >= argc)
            {
                std::fprintf(stderr, "ixo-viewer: %s needs a value\n%s", a.c_str(), usage);
                return 1;
            }
            std::string const value = argv[++i];
            if (a == "--view")
            {
                char* end = nullptr;
                view_index = std::strtol(value.c_str(), &end, 10);
                if (value.empty() || *end || view_index < 0)
                {
                    std::fprintf(stderr, "ixo-viewer: --view needs a view number\n%s", usage);
                    return 1;
                }
            }
            else
                png_path = value;
        }
        else if (!a.empty() && a[0] == '-')
        {
            std::fprintf(stderr, "ixo-viewer: unknown option %s\n%s", a.c_str(), usage);
            return 1;
        }
        else if (input.empty())
            input = a;
        else
        {
            std::fprintf(stderr, "ixo-viewer: more than one scene file\n%s", usage);
            return 1;
        }
    }
    if (input.empty())
    {
        std::fprintf(stderr, "ixo-viewer: no scene file given\n%s", usage);
        return 1;
    }

    std::optional<scene_desc> const read = read_scene_file_or_report(input);
    if (!read)
        return 1;
    scene_desc const& described = *read;
    if (std::size_t(view_index) >= described.views.size())
    {
        std::fprintf(stderr, "%s: there is no view %ld\n", input.c_str(), view_index);
        return 1;
    }
    view_desc const& v = described.views[std::size_t(view_index)];

    ixo_viewer::viewer_window window;
    if (!window.open(v.width, v.height, "ixo-viewer: " + input))
        return 2;
    ixo_start_code const code = ixo_application::start(window.handle());
    int status = 2;
    if (code != ixo_start_success)
        std::fprintf(stderr, "ixo-viewer: cannot start the graphics device (start code %d)\n",
                     int(code));
    else
    {
        try
        {
            status = show(described, std::size_t(view_index), input, png_path, window);
        }
        catch (const std::exception& e)
        {
            std::fprintf(stderr, "ixo-viewer: %s\n", e.what());
            status = 2;
        }
    }
    // The library lets go of the window before it goes.
    ixo_application::end();
    window.close();
    return status;
}
