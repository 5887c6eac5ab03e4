#include <ixocore/ixocore.h>

#include "render/exe_copy.h"

#include <gtest/gtest.h>

#include <filesystem>
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
    if (const char* answer = ixo_test::child_answer_file(child_variable))
    {
        ixo_object_ptr<ixo_resource_manager> resources = ixo_resource_manager::create();
        ixo_test::write_answer(answer,
                               native(resources->get_exe_path()) + "\n" +
                                   native(resources->get_full_path(IXO_TEXT("ixo_default.fx"))));
        _exit(0);
    }
    return false;
}();

std::string own_folder()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
}
} // namespace

TEST(ResourceManager, PathsFollowTheExecutable)
{
    ixo_object_ptr<ixo_resource_manager> resources = ixo_resource_manager::create();
    std::string const folder = own_folder();
    EXPECT_EQ(native(resources->get_exe_path()), folder);
    EXPECT_EQ(native(resources->get_full_path(IXO_TEXT("ixo_default.fx"))),
              folder + "/Media/ixo_default.fx");
    EXPECT_EQ(native(resources->get_full_path(IXO_TEXT(""))), folder + "/Media/");
}

TEST(ResourceManager, ExecutableElsewhereAndBeyondTheFirstBuffer)
{
    ixo_test::temp_folder temp;
    ASSERT_FALSE(temp.path().empty());

    std::filesystem::path const short_exe = temp.path() / "a" / "b" / "host";
    std::string const short_folder = (temp.path() / "a" / "b").string();
    EXPECT_EQ(ixo_test::run_copy(short_exe, child_variable),
              short_folder + "\n" + short_folder + "/Media/ixo_default.fx");

    // A path longer than the first 256-character buffer is read in full on the second try.
    std::filesystem::path deep = temp.path();
    for (int i = 0; i < 30; ++i)
        deep /= "folder_" + std::to_string(i);
    ASSERT_GT(deep.string().size(), 256u);
    EXPECT_EQ(ixo_test::run_copy(deep / "host", child_variable),
              deep.string() + "\n" + deep.string() + "/Media/ixo_default.fx");
}
