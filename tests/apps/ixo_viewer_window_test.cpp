// ixo-viewer in its own Xvfb, driven through xdotool and read back with xwd.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace
{
namespace fs = std::filesystem;
using namespace std::chrono_literals;

bool wait_until(const std::function<bool()>& done, std::chrono::milliseconds limit = 20s)
{
    auto const end = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < end)
    {
        if (done())
            return true;
        std::this_thread::sleep_for(50ms);
    }
    return done();
}

// Runs `args` with stdout into `out_file` (DISPLAY is the test's server once started).
pid_t spawn(const std::vector<std::string>& args, const std::string& out_file = "/dev/null")
{
    std::vector<char*> argv;
    std::vector<std::string> arg_text = args;
    for (auto& s : arg_text)
        argv.push_back(s.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, out_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    pid_t pid = -1;
    if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0)
        pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

// The exit status of `pid` within `limit`; -1 (killed) when it does not exit normally.
int wait_exit(pid_t pid, std::chrono::milliseconds limit = 20s)
{
    int status = 0;
    bool const ended = wait_until([&] { return waitpid(pid, &status, WNOHANG) == pid; }, limit);
    if (!ended)
    {
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string output_of(const std::string& command)
{
    std::string out;
    if (FILE* p = popen(command.c_str(), "r"))
    {
        char buffer[65536];
        std::size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, p)) > 0)
            out.append(buffer, n);
        pclose(p);
    }
    return out;
}

std::string read_file(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// A window's picture from xwd: size and the pixels after header and colour map (big-endian).
struct picture
{
    unsigned width = 0, height = 0;
    std::string pixels;

    // More than one distinct pixel: something has been drawn.
    bool drawn() const
    {
        for (std::size_t i = 4; i + 4 <= pixels.size(); i += 4)
            if (pixels.compare(i, 3, pixels, 0, 3) != 0)
                return true;
        return false;
    }
};

picture parse_xwd(const std::string& dump)
{
    auto field = [&](std::size_t index) -> unsigned
    {
        std::size_t const at = index * 4;
        if (at + 4 > dump.size())
            return 0;
        unsigned v = 0;
        for (std::size_t i = 0; i < 4; ++i)
            v = (v << 8) | static_cast<unsigned char>(dump[at + i]);
        return v;
    };
    picture p;
    std::size_t const header = field(0);
    std::size_t const colors = field(19);
    p.width = field(4);
    p.height = field(5);
    std::size_t const data = header + colors * 12;
    if (data < dump.size())
        p.pixels = dump.substr(data);
    return p;
}

class ixo_viewer_window_test : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        // A display number nobody uses: no lock file and no socket.
        for (int n = 91; n < 160 && display_.empty(); ++n)
        {
            std::string const id = std::to_string(n);
            if (fs::exists("/tmp/.X" + id + "-lock") || fs::exists("/tmp/.X11-unix/X" + id))
                continue;
            // No reset when the last client leaves: one in progress refuses the next viewer.
            xvfb_ = spawn(
                {"Xvfb", ":" + id, "-screen", "0", "1024x768x24", "-nolisten", "tcp", "-noreset"});
            // The socket shows before the server answers: wait for an answer.
            auto const answers = [&] {
                return !output_of("DISPLAY=:" + id + " xdotool getdisplaygeometry 2>/dev/null")
                            .empty();
            };
            if (xvfb_ > 0 && wait_until(answers, 10s))
            {
                display_ = ":" + id;
                setenv("DISPLAY", display_.c_str(), 1);
            }
            else if (xvfb_ > 0)
                TearDownTestSuite();
        }
    }
    static void TearDownTestSuite()
    {
        if (xvfb_ > 0)
        {
            kill(xvfb_, SIGTERM);
            waitpid(xvfb_, nullptr, 0);
            xvfb_ = -1;
        }
    }

    void SetUp() override
    {
        ASSERT_FALSE(display_.empty()) << "Xvfb did not start";
        folder_ = fs::temp_directory_path() / ("ixo_viewer_test_" + std::to_string(getpid()));
        fs::create_directories(folder_);
    }
    void TearDown() override
    {
        if (viewer_ > 0)
            wait_exit(viewer_, 1ms);
        std::error_code ec;
        fs::remove_all(folder_, ec);
    }

    std::string x(const std::string& command)
    {
        return output_of("DISPLAY=" + display_ + " " + command + " 2>/dev/null");
    }

    // Starts the viewer and waits for its window and its first picture.
    void start_viewer()
    {
        viewer_ = spawn({IXO_VIEWER, IXO_VIEWER_SCENE, "-o", (folder_ / "viewer.png").string()},
                        (folder_ / "viewer.out").string());
        ASSERT_GT(viewer_, 0);
        ASSERT_TRUE(wait_until(
            [&]
            {
                window_ = x("xdotool search --name '^ixo-viewer: '");
                window_ = window_.substr(0, window_.find('\n'));
                return !window_.empty();
            }))
            << "no viewer window";
        ASSERT_TRUE(wait_until([&] { return grab().drawn(); })) << "nothing drawn";
    }

    picture grab() { return parse_xwd(x("xwd -silent -id " + window_)); }

    static std::string display_;
    static pid_t xvfb_;
    fs::path folder_;
    pid_t viewer_ = -1;
    std::string window_;
};

std::string ixo_viewer_window_test::display_;
pid_t ixo_viewer_window_test::xvfb_ = -1;
} // namespace

TEST_F(ixo_viewer_window_test, saved_picture_equals_what_ixo_render_draws)
{
    start_viewer();
    picture const shown = grab();
    EXPECT_EQ(shown.width, 320u);
    EXPECT_EQ(shown.height, 240u);

    x("xdotool mousemove --window " + window_ + " 5 5 key s");
    fs::path const saved = folder_ / "viewer.png";
    // Whole once its closing chunk is there: the viewer may still be writing it.
    auto const whole = [&]
    {
        std::string const png = read_file(saved);
        return png.size() > 12 && png.compare(png.size() - 8, 4, "IEND") == 0;
    };
    ASSERT_TRUE(wait_until(whole)) << "s saved nothing";

    fs::path const rendered = folder_ / "render.png";
    pid_t render = spawn({IXO_RENDER, IXO_VIEWER_SCENE, "-o", rendered.string()});
    ASSERT_EQ(wait_exit(render), 0);
    std::string const a = read_file(saved), b = read_file(rendered);
    EXPECT_GT(a.size(), 1000u);
    EXPECT_TRUE(a == b) << "the saved picture differs from ixo-render's";

    x("xdotool key q");
    EXPECT_EQ(wait_exit(viewer_), 0);
    viewer_ = -1;
}

TEST_F(ixo_viewer_window_test, drag_select_and_resize_change_the_picture_and_close_ends_cleanly)
{
    start_viewer();
    picture const first = grab();

    // Left drag rotates the camera.
    x("xdotool mousemove --window " + window_ + " 100 120 mousedown 1 mousemove --window " +
      window_ + " 160 140 mousemove --window " + window_ + " 220 150 mouseup 1");
    ASSERT_TRUE(wait_until([&] { return grab().pixels != first.pixels; }))
        << "the drag did not change the picture";

    // A shift-click selects the box, which flashes: the picture changes without input.
    wait_until([] { return false; }, 300ms);
    picture const rotated = grab();
    x("xdotool mousemove --window " + window_ + " 5 5 mousemove --window " + window_ +
      " 160 120 keydown shift click 1 keyup shift");
    EXPECT_TRUE(wait_until([&] { return grab().pixels != rotated.pixels; }))
        << "the selection does not show";

    // The window follows a new size.
    x("xdotool windowsize " + window_ + " 200 150");
    EXPECT_TRUE(wait_until(
        [&]
        {
            picture const p = grab();
            return p.width == 200 && p.height == 150 && p.drawn();
        }));

    // Closed while a new size is still on its way: nothing may be drawn into the gone window.
    x("xdotool windowsize " + window_ + " 240 180 windowclose " + window_);
    EXPECT_EQ(wait_exit(viewer_), 0);
    viewer_ = -1;
}
