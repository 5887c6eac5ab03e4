// ixo-render: renders the views of a JSON scene file headless and writes one PNG per view.
//
//   ixo-render SCENE.json -o OUTPUT.png
//
// With several views OUTPUT.png is the first and the others get _1, _2, ... before the
// extension. Problems in the scene file are reported with their place in it, and the exit
// status is 1; a failure to start the graphics device or to render or write gives 2.

#include "scene_builder.h"

#include <ixocore/app/application.h>
#include <ixocore/app/document.h>
#include <ixocore/core/string.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/light.h>
#include <ixocore/render/render_view.h>
#include <ixocore/render/render_view_manager.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

using namespace ixo_scene_file;

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
    std::vector<ixo_object_ptr<ixo_light>> const lights = build_scene(described, *scene);

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
        if (!apply_view(*view, v, *scene, !lights.empty()))
        {
            std::fprintf(stderr, "%s: %s/background_picture: cannot read the picture %s\n",
                         scene_name.c_str(), where.c_str(), v.picture.c_str());
            status = 1;
            break;
        }

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
        // One view at a time: its surfaces go before the next view's are made.
        manager->remove(view);
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
                        format_help().c_str());
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

    std::optional<scene_desc> const read = read_scene_file_or_report(input);
    if (!read)
        return 1;
    scene_desc const& described = *read;

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
