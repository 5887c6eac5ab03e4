#pragma once
// Runs this test program again from a copy placed elsewhere, so code that finds files beside
// the executable meets folders the test lays out. The copy's file-scope "child mode" object
// sees the variable, writes its answer to the file it names and exits before any test runs.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace ixo_test
{
// A fresh, empty folder under the system's temporary folder; removed by the destructor.
struct temp_folder
{
    temp_folder()
    {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "ixocore_test_XXXXXX").string();
        // Canonical, so it compares equal to the resolved path of a program run from it.
        std::error_code ec;
        if (mkdtemp(pattern.data()))
            path = std::filesystem::canonical(pattern, ec);
    }
    ~temp_folder()
    {
        std::error_code ec;
        if (!path.empty())
            std::filesystem::remove_all(path, ec);
    }
    std::filesystem::path path;
};

// Copies the running executable to `exe` (creating its folders), runs the copy with
// `variable` set to the path of an answer file, and returns what the copy wrote there;
// "<failed>" when it could not run or exited with a non-zero status. The folders made by
// temp_folder need no quoting beyond single quotes.
inline std::string run_copy(const std::filesystem::path& exe, const char* variable)
{
    std::error_code ec;
    std::filesystem::create_directories(exe.parent_path(), ec);
    std::filesystem::copy_file(std::filesystem::read_symlink("/proc/self/exe"), exe,
                               std::filesystem::copy_options::overwrite_existing, ec);
    if (ec)
        return "<failed>";
    std::filesystem::path const answer = exe.parent_path() / "answer.txt";
    std::filesystem::remove(answer, ec);
    std::string const command =
        std::string(variable) + "='" + answer.string() + "' '" + exe.string() + "'";
    if (std::system(command.c_str()) != 0)
        return "<failed>";
    std::ifstream in(answer);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
} // namespace ixo_test
