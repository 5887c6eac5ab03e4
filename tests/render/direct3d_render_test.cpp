#include <ixocore/ixocore.h>

#include "events/event_probe.h"
#include "render/exe_copy.h"
#include "render/render_target.h"
#include "scene/scene_probe.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{
constexpr const char* child_variable = "IXO_DIRECT3D_TEST_ANSWER";
constexpr const char* paths_variable = "IXO_RESOURCE_MANAGER_TEST_ANSWER";

std::string native(const ixo_string& s)
{
    return ixo_native_path(s.c_str());
}

// Child mode, wherever this copy lies: start the library headless and report the code, or
// report the resource manager's folder and effect path.
[[maybe_unused]] const bool child_mode = []
{
    if (const char* answer = std::getenv(paths_variable))
    {
        ixo_object_ptr<ixo_resource_manager> resources = ixo_resource_manager::create();
        std::ofstream(answer) << native(resources->get_exe_path()) << "\n"
                              << native(resources->get_full_path(IXO_TEXT("ixo_default.fx")));
        _exit(0);
    }
    if (const char* answer = std::getenv(child_variable))
    {
        int const code = ixo_application::start(nullptr);
        bool const consistent =
            (code == ixo_start_success) == (ixo_direct3d::get_device() != nullptr);
        ixo_application::end();
        std::ofstream(answer) << code << (consistent ? "" : " inconsistent");
        _exit(0);
    }
    return false;
}();

// Restores the default adapter list and Direct3D creation, and ends the library, when a
// test ends, whatever happened.
struct library_guard
{
    ~library_guard()
    {
        while (ixo_application::instance())
            ixo_application::end();
        ixo_d3d9_test_set_adapters(nullptr, 0);
        ixo_d3d9_test_fail_create(FALSE);
    }
};

// How the application's device was created; zeroes without a device.
D3DDEVICE_CREATION_PARAMETERS creation()
{
    D3DDEVICE_CREATION_PARAMETERS p{};
    if (IDirect3DDevice9* device = ixo_direct3d::get_device())
        device->GetCreationParameters(&p);
    return p;
}

// Logs the reset events in the order they arrive into `log`.
void record_resets(std::vector<std::string>& log)
{
    auto record = ixo_test::event_function::create(
        [&log](ixo_object_ptr<ixo_event> e)
        { log.push_back(ixo_object_ptr<ixo_event_direct3d_reset>(e) ? "reset" : "resetting"); });
    ixo_object_ptr<ixo_event_manager> manager = ixo_event_manager::get_app_event_manager();
    manager->subscribe(ixo_event_direct3d_resetting::create(), record);
    manager->subscribe(ixo_event_direct3d_reset::create(), record);
}

// Draws text and a line with the shared objects and counts the lit pixels; -1 when the
// target could not be drawn.
int draw_with_shared_objects()
{
    IDirect3DDevice9* device = ixo_direct3d::get_device();
    ixo_test::render_target target(device, 64, 32);
    if (!target.begin(D3DCOLOR_XRGB(0, 0, 0)))
        return -1;
    RECT rect{2, 2, 62, 30};
    ixo_direct3d::get_font()->DrawTextW(nullptr, u"Wg", -1, &rect, DT_LEFT | DT_NOCLIP,
                                        D3DCOLOR_XRGB(255, 255, 255));
    D3DXVECTOR2 const points[2] = {D3DXVECTOR2(40.f, 16.f), D3DXVECTOR2(60.f, 16.f)};
    ixo_direct3d::get_line()->Draw(points, 2, D3DCOLOR_XRGB(255, 255, 255));
    int lit = 0;
    for (const ixo_test::pixel& p : target.end())
        lit += p.r > 128 ? 1 : 0;
    return lit;
}
} // namespace

TEST(Direct3D, StartCreatesTheDeviceAndEverySharedObject)
{
    library_guard guard;
    ixo_application::end(); // without a start: nothing happens
    EXPECT_EQ(ixo_direct3d::get_device(), nullptr);
    ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
    ASSERT_NE(ixo_direct3d::get_direct3d(), nullptr);
    ASSERT_NE(ixo_direct3d::get_device(), nullptr);
    ASSERT_NE(ixo_direct3d::get_font(), nullptr);
    ASSERT_NE(ixo_direct3d::get_line(), nullptr);
    ASSERT_NE(ixo_direct3d::get_sprite(), nullptr);
    ASSERT_NE(ixo_direct3d::get_effect(), nullptr);
    EXPECT_NE(ixo_direct3d::get_effect()->GetTechniqueByName("MainTechnique"), nullptr);
    EXPECT_NE(ixo_direct3d::get_effect()->GetTechniqueByName("ShadowTechnique"), nullptr);
    EXPECT_EQ(creation().BehaviorFlags,
              DWORD(D3DCREATE_HARDWARE_VERTEXPROCESSING | D3DCREATE_FPU_PRESERVE));

    // Nine points at the display's vertical resolution, as a character height.
    HDC dc = GetWindowDC(nullptr);
    int const dpi = GetDeviceCaps(dc, LOGPIXELSY);
    ReleaseDC(nullptr, dc);
    D3DXFONT_DESCW desc{};
    ASSERT_EQ(ixo_direct3d::get_font()->GetDescW(&desc), D3D_OK);
    EXPECT_EQ(desc.Height, -MulDiv(9, dpi, 72));
    EXPECT_EQ(desc.Weight, 400u);
    EXPECT_EQ(desc.Quality, 3);
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(desc.FaceName)), u"Segoe UI");
    EXPECT_GT(draw_with_shared_objects(), 0);

    // A second start only counts: the same device stays until the last end.
    IDirect3DDevice9* device = ixo_direct3d::get_device();
    EXPECT_EQ(ixo_application::start(nullptr), ixo_start_success);
    ixo_application::end();
    EXPECT_EQ(ixo_direct3d::get_device(), device);
    ixo_application::end();
    EXPECT_EQ(ixo_application::instance(), nullptr);
    EXPECT_EQ(ixo_direct3d::get_device(), nullptr);
    EXPECT_EQ(ixo_direct3d::get_effect(), nullptr);
}

TEST(Direct3D, AdapterChoiceAndCreationFallbacks)
{
    library_guard guard;
    ixo_d3d9_test_adapter list[3];

    // Only the second adapter processes vertices itself: it is taken.
    list[0].vertex_processing_caps = 0;
    ixo_d3d9_test_set_adapters(list, 2);
    ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
    EXPECT_EQ(creation().AdapterOrdinal, 1u);
    ixo_application::end();

    // No adapter processes vertices: the first that passes the checks, with software
    // vertex processing once the hardware attempt fails.
    list[0] = ixo_d3d9_test_adapter{};
    list[0].check_depth_stencil = D3DERR_NOTAVAILABLE;
    list[1] = ixo_d3d9_test_adapter{};
    list[1].vertex_processing_caps = 0;
    list[1].create_hardware = D3DERR_NOTAVAILABLE;
    list[2] = ixo_d3d9_test_adapter{};
    list[2].vertex_processing_caps = 0;
    ixo_d3d9_test_set_adapters(list, 3);
    ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
    EXPECT_EQ(creation().AdapterOrdinal, 1u);
    EXPECT_EQ(creation().BehaviorFlags,
              DWORD(D3DCREATE_SOFTWARE_VERTEXPROCESSING | D3DCREATE_FPU_PRESERVE));
    ixo_application::end();
}

TEST(Direct3D, StartCodesOfFailedCreation)
{
    library_guard guard;
    ixo_d3d9_test_adapter list[2];

    // No adapter passes the type and depth/stencil checks: code 1, the library runs on
    // without a device.
    list[0].check_device_type = D3DERR_NOTAVAILABLE;
    list[1].check_depth_stencil = D3DERR_NOTAVAILABLE;
    ixo_d3d9_test_set_adapters(list, 2);
    EXPECT_EQ(ixo_application::start(nullptr), ixo_start_no_adapter);
    EXPECT_NE(ixo_application::instance(), nullptr);
    EXPECT_EQ(ixo_direct3d::get_device(), nullptr);
    EXPECT_EQ(ixo_direct3d::get_font(), nullptr);
    EXPECT_TRUE(ixo_resource_manager::get_app_resource_manager());
    ixo_application::end();

    ixo_d3d9_test_set_adapters(list, 0);
    EXPECT_EQ(ixo_application::start(nullptr), ixo_start_no_adapter);
    ixo_application::end();

    // Both ways of creating the device fail: code 3.
    list[0] = ixo_d3d9_test_adapter{};
    list[0].create_hardware = D3DERR_NOTAVAILABLE;
    list[0].create_software = D3DERR_NOTAVAILABLE;
    ixo_d3d9_test_set_adapters(list, 1);
    EXPECT_EQ(ixo_application::start(nullptr), ixo_start_no_device);
    EXPECT_EQ(ixo_direct3d::get_device(), nullptr);
    ixo_application::end();

    // No Direct3D object: code 2.
    ixo_d3d9_test_set_adapters(nullptr, 0);
    ixo_d3d9_test_fail_create(TRUE);
    EXPECT_EQ(ixo_application::start(nullptr), ixo_start_no_direct3d);
    EXPECT_EQ(ixo_direct3d::get_direct3d(), nullptr);
    ixo_application::end();
}

TEST(Direct3D, EffectFileBesideTheExecutable)
{
    ixo_test::temp_folder temp;
    std::filesystem::path const own_media =
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / "Media" / "ixo_default.fx";
    ASSERT_TRUE(!temp.path.empty() && std::filesystem::exists(own_media));

    // No Media folder beside the program: code 7, no device kept.
    EXPECT_EQ(ixo_test::run_copy(temp.path / "missing" / "host", child_variable), "7");

    // An effect file that does not compile: code 7 too. The shipped file beside the same
    // copy: success, so the folder is the program's own.
    for (const char* folder : {"broken", "good"})
        std::filesystem::create_directories(temp.path / folder / "Media");
    std::ofstream(temp.path / "broken" / "Media" / "ixo_default.fx")
        << "technique MainTechnique\nvertex\nthis is not a shader\nend\n";
    EXPECT_EQ(ixo_test::run_copy(temp.path / "broken" / "host", child_variable), "7");
    std::filesystem::copy_file(own_media, temp.path / "good" / "Media" / "ixo_default.fx");
    EXPECT_EQ(ixo_test::run_copy(temp.path / "good" / "host", child_variable), "0");
}

TEST(Direct3D, ResetProtocolRaisesEventsAndRebuilds)
{
    std::vector<std::string> log;
    library_guard guard;
    ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
    record_resets(log);
    ixo_object_ptr<ixo_direct3d> d3d = ixo_application::instance()->get_direct3d();
    IDirect3DDevice9* device = ixo_direct3d::get_device();

    // A healthy device needs nothing.
    EXPECT_TRUE(d3d->reset());
    EXPECT_TRUE(log.empty());

    // Lost for one more query: released, reset and rebuilt in one call.
    ixo_d3d9_test_lose_device(device, 1);
    EXPECT_TRUE(d3d->reset());
    EXPECT_EQ(log, (std::vector<std::string>{"resetting", "reset"}));
    EXPECT_EQ(device->TestCooperativeLevel(), D3D_OK);
    EXPECT_GT(draw_with_shared_objects(), 0);

    // Still lost on the second query: resources released, no reset yet; the next call
    // finishes the job.
    log.clear();
    ixo_d3d9_test_lose_device(device, 2);
    EXPECT_FALSE(d3d->reset());
    EXPECT_EQ(log, (std::vector<std::string>{"resetting"}));
    EXPECT_TRUE(d3d->reset());
    EXPECT_EQ(log, (std::vector<std::string>{"resetting", "resetting", "reset"}));
    EXPECT_GT(draw_with_shared_objects(), 0);

    // A device resource left alive makes the device's Reset fail: no reset event, and a
    // later call, once it is gone, succeeds.
    log.clear();
    IDirect3DSurface9* leftover = nullptr;
    ASSERT_EQ(device->CreateRenderTarget(4, 4, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0, FALSE,
                                         &leftover, nullptr),
              D3D_OK);
    ixo_d3d9_test_lose_device(device, 0);
    EXPECT_FALSE(d3d->reset());
    EXPECT_EQ(log, (std::vector<std::string>{"resetting"}));
    leftover->Release();
    EXPECT_TRUE(d3d->reset());
    EXPECT_EQ(log, (std::vector<std::string>{"resetting", "resetting", "reset"}));

    // The effect still takes and gives back parameters.
    D3DXVECTOR4 const in(0.25f, 0.5f, 0.75f, 1.f);
    D3DXVECTOR4 out;
    ID3DXEffect* effect = ixo_direct3d::get_effect();
    ASSERT_EQ(effect->SetVector("g_lightPos", &in), D3D_OK);
    ASSERT_EQ(effect->GetVector("g_lightPos", &out), D3D_OK);
    EXPECT_EQ(out, in);
    d3d = nullptr;
}

TEST(Direct3D, ResetReachesEveryDocumentsScene)
{
    probe_log scenes; // outlives the documents' scenes
    library_guard guard;
    ASSERT_EQ(ixo_application::start(nullptr), ixo_start_success);
    record_resets(scenes.entries);
    {
        ixo_object_ptr<ixo_document> first = ixo_application::instance()->create_document();
        ixo_object_ptr<ixo_document> second = ixo_application::instance()->create_document();
        first->get_scene()->get_root()->add_child(probe::create(scenes, "scene"));
        second->get_scene()->get_root()->add_child(probe::create(scenes, "scene"));
    }
    ixo_d3d9_test_lose_device(ixo_direct3d::get_device(), 0);
    EXPECT_TRUE(ixo_application::instance()->get_direct3d()->reset());
    // Scenes release before the resetting event and rebuild before the reset event.
    EXPECT_EQ(scenes.take(), "pre scene pre scene resetting post scene post scene reset");
}

TEST(ResourceManager, PathsFollowTheExecutable)
{
    ixo_object_ptr<ixo_resource_manager> resources = ixo_resource_manager::create();
    std::string const folder =
        std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
    EXPECT_EQ(native(resources->get_exe_path()), folder);
    EXPECT_EQ(native(resources->get_full_path(IXO_TEXT("ixo_default.fx"))),
              folder + "/Media/ixo_default.fx");
    EXPECT_EQ(native(resources->get_full_path(IXO_TEXT(""))), folder + "/Media/");
}

TEST(ResourceManager, ExecutableElsewhereAndBeyondTheFirstBuffer)
{
    ixo_test::temp_folder temp;
    ASSERT_FALSE(temp.path.empty());
    // The second path is longer than the first 256-character buffer: it is read in full on
    // the second try.
    std::filesystem::path deep = temp.path;
    for (int i = 0; i < 30; ++i)
        deep /= "folder_" + std::to_string(i);
    ASSERT_GT(deep.string().size(), 256u);
    for (std::filesystem::path const& folder : {temp.path / "a" / "b", deep})
        EXPECT_EQ(ixo_test::run_copy(folder / "host", paths_variable),
                  folder.string() + "\n" + folder.string() + "/Media/ixo_default.fx");
}
