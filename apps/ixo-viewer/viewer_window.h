#pragma once
// The X11 side of ixo-viewer: one top-level window, its event loop, and the routing of
// mouse and key input to the document's tool stack and commands.

#include <ixocore/core/object_ptr.h>
#include <ixocore/math/vector.h>
#include <ixocore/platform/win32.h>

#include <map>
#include <string>

class ixo_document;
class ixo_render_view;
class ixo_scene_object;
class ixo_tool;

namespace ixo_viewer
{
// What the keys and buttons do, for --help.
extern const char* const bindings_help;

class viewer_window
{
public:
    viewer_window() = default;
    ~viewer_window();
    viewer_window(const viewer_window&) = delete;
    viewer_window& operator=(const viewer_window&) = delete;

    // Opens the display and shows a window of the given size; false (with a message on
    // stderr) when there is no display.
    bool open(int width, int height, const std::string& title);
    // The window as the library's host-window handle.
    HWND handle() const;

    // Runs until the window is closed or q/Escape is pressed. `png_path` is where s saves
    // the picture. Returns the exit status (0).
    int run(ixo_object_ptr<ixo_document> document, ixo_object_ptr<ixo_render_view> view,
            const std::string& png_path);

    // Lets the window go (when the library no longer presents into it) and closes the
    // display.
    void close();

private:
    enum class left_mode
    {
        rotate,
        constrained_rotate,
        spin,
        label_move,
        label_resize,
    };

    void on_button_press(unsigned button, int x, int y, unsigned state);
    void on_motion(int x, int y);
    void on_button_release(unsigned button, int x, int y);
    void on_key(unsigned long keysym);
    void begin_gesture(ixo_object_ptr<ixo_tool> tool, unsigned button, int x, int y, bool m1,
                       bool m2);
    void end_gesture(int x, int y);
    void wheel(int x, int y, bool toward);
    void standard_view(int index);
    void save_png();
    void update_flashing();
    void flash_selection();
    void stop_flashing();
    ixo_object_ptr<ixo_scene_object> spin_target();
    // Pointer y as the tools count it: from the bottom of the view.
    int tool_y(int y) const;

    struct flashing_object
    {
        ixo_object_ptr<ixo_scene_object> object;
        ixo_vector4<unsigned char> color;
    };

    void* display_ = nullptr; // Display*, kept opaque so this header needs no Xlib
    unsigned long window_ = 0;
    unsigned long delete_atom_ = 0;
    bool window_gone_ = false;
    bool running_ = false;
    int width_ = 0;
    int height_ = 0;

    ixo_object_ptr<ixo_document> document_;
    ixo_object_ptr<ixo_render_view> view_;
    std::string png_path_;
    left_mode mode_ = left_mode::rotate;
    // The gesture in progress: the button that began it (0 for none) and its modifiers.
    unsigned gesture_button_ = 0;
    bool gesture_m1_ = false;
    bool gesture_m2_ = false;
    bool gesture_selects_ = false;
    std::map<ixo_scene_object*, flashing_object> flashing_;
};
} // namespace ixo_viewer
