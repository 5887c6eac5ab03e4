#pragma once
// Runs this test program again from a copy placed elsewhere, so code that locates files
// beside the running executable can be tested against folders the test lays out. The copy
// runs in "child mode": a file-scope object of the test sees the environment variable,
// does its work, writes its answer to the file the variable names and exits before any
// test runs.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace ixo_test
{
// A fresh, empty folder under the system's temporary folder; removed by the destructor.
class temp_folder
{
public:
    temp_folder()
    {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "ixocore_test_XXXXXX").string();
        // Canonical, so it compares equal to the resolved path of a program run from it.
        std::error_code ec;
        if (mkdtemp(pattern.data()))
            path_ = std::filesystem::canonical(pattern, ec);
    }
    ~temp_folder()
    {
        std::error_code ec;
        if (!path_.empty())
            std::filesystem::remove_all(path_, ec);
    }
    temp_folder(const temp_folder&) = delete;
    temp_folder& operator=(const temp_folder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

// Copies the running executable to `exe` (creating its folders), runs the copy with
// `variable` set to the path of an answer file, and returns what the copy wrote there;
// "<failed>" when it could not run or exited with a non-zero status.
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

    std::vector<std::string> env_text;
    for (char** e = environ; *e; ++e)
        env_text.emplace_back(*e);
    env_text.push_back(std::string(variable) + "=" + answer.string());
    std::vector<char*> envp;
    for (std::string& s : env_text)
        envp.push_back(s.data());
    envp.push_back(nullptr);
    std::string exe_text = exe.string();
    char* argv[] = {exe_text.data(), nullptr};

    pid_t pid = 0;
    if (posix_spawn(&pid, exe_text.c_str(), nullptr, nullptr, argv, envp.data()) != 0)
        return "<failed>";
    int status = 0;
    if (waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return "<failed>";
    std::ifstream in(answer);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// In child mode (the variable is set): the file to write the answer to; otherwise null.
inline const char* child_answer_file(const char* variable)
{
    return std::getenv(variable);
}

inline void write_answer(const char* file, const std::string& text)
{
    std::ofstream(file) << text;
}
} // namespace ixo_test
