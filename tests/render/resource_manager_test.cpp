#include <ixocore/ixocore.h>

#include "render/exe_copy.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace
{
constexpr const char* child_variable = "IXO_RESOURCE_MANAGER_TEST_ANSWER";

std::string native(const ixo_string& s)
{
    return ixo_native_path(s.c_str());
}

// Child mode: report the folder and the effect path seen from wherever this copy lies.
[[maybe_unused]] const bool child_mode = []
{
    if (const char* answer = std::getenv(child_variable))
    {
        ixo_object_ptr<ixo_resource_manager> resources = ixo_resource_manager::create();
        std::ofstream(answer) << native(resources->get_exe_path()) << "\n"
                              << native(resources->get_full_path(IXO_TEXT("ixo_default.fx")));
        _exit(0);
    }
    return false;
}();
} // namespace

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
        EXPECT_EQ(ixo_test::run_copy(folder / "host", child_variable),
                  folder.string() + "\n" + folder.string() + "/Media/ixo_default.fx");
}
