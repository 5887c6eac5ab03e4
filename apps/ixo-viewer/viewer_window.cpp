#include "viewer_window.h"

#include <ixocore/app/command_manager.h>
#include <ixocore/app/composite_command.h>
#include <ixocore/app/document.h>
#include <ixocore/core/string.h>
#include <ixocore/events/event.h>
#include <ixocore/events/event_manager.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/render_view.h>
#include <ixocore/render/view_commands.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>
#include <ixocore/scene/selection.h>
#include <ixocore/tools/label_move_tool.h>
#include <ixocore/tools/selection_tool.h>
#include <ixocore/tools/spin_object_tool.h>
#include <ixocore/tools/tool.h>
#include <ixocore/tools/tool_manager.h>
#include <ixocore/tools/view_tools.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <poll.h>

namespace ixo_viewer
{
const char* const bindings_help =
    "Mouse:\n"
    "  left drag           rotate (trackball; see c, t)\n"
    "  middle drag         pan\n"
    "  right drag          zoom (up moves away, down closer)\n"
    "  wheel               zoom toward the pointer\n"
    "  ctrl + left drag    zoom to the rectangle\n"
    "  shift + left click  select the object under the pointer (drag: all in the rectangle)\n"
    "  shift + ctrl + left toggle objects in the selection\n"
    "Keys:\n"
    "  f                   view all\n"
    "  1 ... 6             front, right, top, back, left, bottom view\n"
    "  u, r                undo, redo the last view change\n"
    "  c                   left drag: constrained trackball (keeps +y up) / free trackball\n"
    "  t                   left drag: spin the selected object (or the scene) about z and\n"
    "                      let it go to keep it turning / back to rotating\n"
    "  l                   left drag: move call-out labels by their title bar / resize\n"
    "                      them / back to rotating\n"
    "  s                   save the window's picture as a PNG file (-o)\n"
    "  q, Escape           quit\n";

namespace
{
Display* as_display(void* d)
{
    return static_cast<Display*>(d);
}

// Only set while a window of this process exists.
bool g_window_gone = false;

// The library draws into the window through its own connection; once the window has been
// destroyed from outside, what it still sends to the window fails harmlessly.
int on_x_error(Display* display, XErrorEvent* error)
{
    if (g_window_gone && (error->error_code == BadWindow || error->error_code == BadDrawable ||
                          error->error_code == BadMatch))
        return 0;
    char text[256] = {};
    XGetErrorText(display, error->error_code, text, sizeof text);
    std::fprintf(stderr, "ixo-viewer: X error: %s (request %d)\n", text, error->request_code);
    return 0;
}

constexpr long flash_period_ms = 400;
// A wheel notch zooms like a drag over a tenth of the view's height.
constexpr int wheel_fraction = 10;
// Idle events follow each other this closely while a spin runs.
constexpr int spin_idle_ms = 10;
const ixo_vector4<unsigned char> highlight(255, 170, 0, 255);
} // namespace

viewer_window::~viewer_window()
{
    close();
}

bool viewer_window::open(int width, int height, const std::string& title)
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
    {
        std::fprintf(stderr, "ixo-viewer: cannot open the X display (is DISPLAY set?)\n");
        return false;
    }
    display_ = display;
    XSetErrorHandler(on_x_error);
    int const screen = DefaultScreen(display);
    Window const window = XCreateSimpleWindow(
        display, RootWindow(display, screen), 0, 0, unsigned(width), unsigned(height), 0,
        BlackPixel(display, screen), WhitePixel(display, screen));
    window_ = window;
    width_ = width;
    height_ = height;
    // Frames cover the whole window: no clearing to a background in between.
    XSetWindowBackgroundPixmap(display, window, None);
    XStoreName(display, window, title.c_str());
    XClassHint* hint = XAllocClassHint();
    if (hint)
    {
        hint->res_name = const_cast<char*>("ixo-viewer");
        hint->res_class = const_cast<char*>("ixo-viewer");
        XSetClassHint(display, window, hint);
        XFree(hint);
    }
    Atom delete_atom = XInternAtom(display, "WM_DELETE_WINDOW", False);
    delete_atom_ = delete_atom;
    XSetWMProtocols(display, window, &delete_atom, 1);
    XSelectInput(display, window,
                 ExposureMask | StructureNotifyMask | KeyPressMask | ButtonPressMask |
                     ButtonReleaseMask | ButtonMotionMask);
    XMapWindow(display, window);
    // The library may draw only into a window the server has mapped.
    XEvent e;
    do
        XWindowEvent(display, window, StructureNotifyMask, &e);
    while (e.type != MapNotify);
    XSync(display, False);
    return true;
}

HWND viewer_window::handle() const
{
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(window_));
}

void viewer_window::close()
{
    Display* display = as_display(display_);
    if (!display)
        return;
    if (!window_gone_ && window_)
        XDestroyWindow(display, Window(window_));
    XCloseDisplay(display);
    display_ = nullptr;
    window_ = 0;
}

int viewer_window::tool_y(int y) const
{
    return height_ - y;
}

int viewer_window::run(ixo_object_ptr<ixo_document> document, ixo_object_ptr<ixo_render_view> view,
                       const std::string& png_path)
{
    Display* display = as_display(display_);
    document_ = std::move(document);
    view_ = std::move(view);
    png_path_ = png_path;
    running_ = true;
    view_->paint();

    auto next_flash = std::chrono::steady_clock::now();
    int const fd = ConnectionNumber(display);
    // Exposures and new sizes are drawn once the queue is empty: a burst of them costs one
    // frame, and a window closed meanwhile is seen before anything is drawn into it.
    bool repaint = false;
    while (running_)
    {
        if (!XPending(display))
        {
            if (repaint)
            {
                repaint = false;
                view_->paint();
                continue;
            }
            // Nothing from the server: spin, flash, or sleep until it sends something.
            int timeout = -1;
            bool const spinning = ixo_spin_object_tool::is_spinning();
            if (spinning)
            {
                if (auto events = ixo_event_manager::get_app_event_manager())
                    events->report(ixo_event_application_idle::create());
                timeout = spin_idle_ms;
            }
            if (!flashing_.empty())
            {
                auto const now = std::chrono::steady_clock::now();
                if (now >= next_flash)
                {
                    flash_selection();
                    next_flash = now + std::chrono::milliseconds(flash_period_ms);
                }
                auto const wait =
                    std::chrono::duration_cast<std::chrono::milliseconds>(next_flash - now).count();
                int const flash_wait = int(std::max<long long>(1, wait));
                timeout = timeout < 0 ? flash_wait : std::min(timeout, flash_wait);
            }
            pollfd p{fd, POLLIN, 0};
            poll(&p, 1, timeout);
            continue;
        }
        XEvent e;
        XNextEvent(display, &e);
        switch (e.type)
        {
        case Expose:
            repaint = repaint || e.xexpose.count == 0;
            break;
        case ConfigureNotify:
            if (e.xconfigure.width != width_ || e.xconfigure.height != height_)
            {
                width_ = e.xconfigure.width;
                height_ = e.xconfigure.height;
                // A size the view refuses keeps its old surfaces, which still need drawing.
                if (width_ > 0 && height_ > 0)
                {
                    view_->resize(unsigned(width_), unsigned(height_));
                    repaint = true;
                }
            }
            break;
        case ButtonPress:
            on_button_press(e.xbutton.button, e.xbutton.x, e.xbutton.y, e.xbutton.state);
            break;
        case MotionNotify:
        {
            // Only the latest position matters; drawing every one would lag behind.
            while (XCheckTypedWindowEvent(display, Window(window_), MotionNotify, &e))
            {
            }
            on_motion(e.xmotion.x, e.xmotion.y);
            break;
        }
        case ButtonRelease:
            on_button_release(e.xbutton.button, e.xbutton.x, e.xbutton.y);
            break;
        case KeyPress:
        {
            KeySym keysym = NoSymbol;
            char text[8];
            XLookupString(&e.xkey, text, sizeof text, &keysym, nullptr);
            on_key(keysym);
            break;
        }
        case ClientMessage:
            if (static_cast<unsigned long>(e.xclient.data.l[0]) == delete_atom_)
                running_ = false;
            break;
        case DestroyNotify:
            if (e.xdestroywindow.window == Window(window_))
            {
                window_gone_ = g_window_gone = true;
                running_ = false;
            }
            break;
        default:
            break;
        }
    }
    if (gesture_button_)
        end_gesture(0, 0);
    stop_flashing();
    document_->get_tool_manager()->clear_all_tools();
    view_ = nullptr;
    document_ = nullptr;
    return 0;
}

void viewer_window::begin_gesture(ixo_object_ptr<ixo_tool> tool, unsigned button, int x, int y,
                                  bool m1, bool m2)
{
    ixo_object_ptr<ixo_tool_manager> tools = document_->get_tool_manager();
    tools->push_tool(tool);
    gesture_button_ = button;
    gesture_m1_ = m1;
    gesture_m2_ = m2;
    tools->get_active_tool()->on_mouse_down(view_, x, tool_y(y), m1, m2);
}

void viewer_window::end_gesture(int x, int y)
{
    ixo_object_ptr<ixo_tool_manager> tools = document_->get_tool_manager();
    if (ixo_object_ptr<ixo_tool> tool = tools->get_active_tool())
        tool->on_mouse_up(view_, x, tool_y(y), gesture_m1_, gesture_m2_);
    tools->pop_tool();
    gesture_button_ = 0;
    if (gesture_selects_)
        update_flashing();
    gesture_selects_ = false;
}

void viewer_window::on_button_press(unsigned button, int x, int y, unsigned state)
{
    if (gesture_button_)
        return;
    bool const shift = state & ShiftMask;
    bool const ctrl = state & ControlMask;
    switch (button)
    {
    case Button1:
        if (shift)
        {
            gesture_selects_ = true;
            begin_gesture(ixo_selection_tool::create(document_->get_selection()), button, x, y,
                          false, ctrl);
        }
        else if (ctrl)
            begin_gesture(ixo_zoom_window_tool::create(), button, x, y, false, false);
        else if (mode_ == left_mode::constrained_rotate)
            begin_gesture(ixo_constrained_rotate_view_tool::create(), button, x, y, false, false);
        else if (mode_ == left_mode::spin)
            begin_gesture(ixo_spin_object_tool::create(spin_target()), button, x, y, false, false);
        else if (mode_ == left_mode::label_move || mode_ == left_mode::label_resize)
        {
            ixo_object_ptr<ixo_label_move_tool> tool = ixo_label_move_tool::create();
            tool->set_mode(mode_ == left_mode::label_move ? 0 : 1);
            begin_gesture(tool, button, x, y, false, false);
        }
        else
            begin_gesture(ixo_rotate_view_tool::create(), button, x, y, false, false);
        break;
    case Button2:
        begin_gesture(ixo_pan_view_tool::create(), button, x, y, false, false);
        break;
    case Button3:
        begin_gesture(ixo_zoom_view_tool::create(), button, x, y, false, false);
        break;
    case Button4:
    case Button5:
        wheel(x, y, button == Button4);
        break;
    default:
        break;
    }
}

void viewer_window::on_motion(int x, int y)
{
    if (!gesture_button_)
        return;
    if (ixo_object_ptr<ixo_tool> tool = document_->get_tool_manager()->get_active_tool())
        tool->on_mouse_drag(view_, x, tool_y(y), gesture_m1_, gesture_m2_);
}

void viewer_window::on_button_release(unsigned button, int x, int y)
{
    if (gesture_button_ && button == gesture_button_)
        end_gesture(x, y);
}

void viewer_window::wheel(int x, int y, bool toward)
{
    int const step = std::max(1, height_ / wheel_fraction);
    ixo_object_ptr<ixo_tool_manager> tools = document_->get_tool_manager();
    tools->push_tool(ixo_zoom_view_to_mouse_tool::create());
    ixo_object_ptr<ixo_tool> tool = tools->get_active_tool();
    int const ty = tool_y(y);
    tool->on_mouse_down(view_, x, ty, false, false);
    tool->on_mouse_drag(view_, x, toward ? ty + step : ty - step, false, false);
    tool->on_mouse_up(view_, x, toward ? ty + step : ty - step, false, false);
    tools->pop_tool();
}

void viewer_window::on_key(unsigned long keysym)
{
    ixo_object_ptr<ixo_command_manager> commands = document_->get_command_manager();
    switch (keysym)
    {
    case XK_q:
    case XK_Escape:
        running_ = false;
        break;
    case XK_f:
        commands->execute(ixo_view_all_command::create(view_, view_->get_scene()));
        view_->paint();
        break;
    case XK_1:
    case XK_2:
    case XK_3:
    case XK_4:
    case XK_5:
    case XK_6:
        standard_view(int(keysym - XK_1));
        break;
    case XK_u:
        commands->undo();
        view_->paint();
        break;
    case XK_r:
        commands->redo();
        view_->paint();
        break;
    case XK_c:
        mode_ = mode_ == left_mode::constrained_rotate ? left_mode::rotate
                                                       : left_mode::constrained_rotate;
        break;
    case XK_t:
        mode_ = mode_ == left_mode::spin ? left_mode::rotate : left_mode::spin;
        break;
    case XK_l:
        mode_ = mode_ == left_mode::label_move     ? left_mode::label_resize
                : mode_ == left_mode::label_resize ? left_mode::rotate
                                                   : left_mode::label_move;
        break;
    case XK_s:
        save_png();
        break;
    default:
        break;
    }
}

void viewer_window::standard_view(int index)
{
    // One undo step: the direction and the framing that follows it.
    ixo_object_ptr<ixo_composite_command> both = ixo_composite_command::create();
    both->add(ixo_standard_view_command::create(
        static_cast<ixo_standard_view_command::view_type>(index), view_->get_camera()));
    both->add(ixo_view_all_command::create(view_, view_->get_scene()));
    document_->get_command_manager()->execute(both);
    view_->paint();
}

void viewer_window::save_png()
{
    // Written under another name first, so a reader never sees half a file.
    std::string const partial = png_path_ + ".part";
    view_->paint();
    std::error_code ec;
    if (view_->save_png(ixo_string(partial.c_str())) &&
        (std::filesystem::rename(partial, png_path_, ec), !ec))
        std::printf("%s\n", png_path_.c_str());
    else
        std::fprintf(stderr, "ixo-viewer: cannot write %s\n", png_path_.c_str());
    std::fflush(stdout);
}

ixo_object_ptr<ixo_scene_object> viewer_window::spin_target()
{
    ixo_object_ptr<ixo_selection> selection = document_->get_selection();
    for (auto o = selection->get_first_object(); o; o = selection->get_next_object())
        if (ixo_object_ptr<ixo_scene_object> object{o})
            return object;
    return view_->get_scene()->get_root();
}

void viewer_window::update_flashing()
{
    std::map<ixo_scene_object*, ixo_object_ptr<ixo_scene_object>> selected;
    ixo_object_ptr<ixo_selection> selection = document_->get_selection();
    for (auto o = selection->get_first_object(); o; o = selection->get_next_object())
        if (ixo_object_ptr<ixo_scene_object> object{o})
            selected[object.get()] = object;
    for (auto it = flashing_.begin(); it != flashing_.end();)
    {
        if (selected.count(it->first))
        {
            ++it;
            continue;
        }
        it->second.object->set_flash_time(0);
        it->second.object->set_color(it->second.color);
        it = flashing_.erase(it);
    }
    for (auto& [key, object] : selected)
    {
        if (flashing_.count(key))
            continue;
        ixo_vector4<unsigned char> const color = object->get_color();
        object->set_flash_color(color);
        object->set_flash_color1(highlight);
        object->set_flash_time(flash_period_ms);
        flashing_[key] = flashing_object{object, color};
    }
    view_->paint();
}

void viewer_window::flash_selection()
{
    for (auto& [key, f] : flashing_)
        f.object->flash();
    view_->paint();
}

void viewer_window::stop_flashing()
{
    for (auto& [key, f] : flashing_)
    {
        f.object->set_flash_time(0);
        f.object->set_color(f.color);
    }
    flashing_.clear();
}
} // namespace ixo_viewer
