// EGL displays and OpenGL 4.5 core contexts: surfaceless (Mesa) or device platform when
// headless, X11 when a window is to be shown.

#include "d3d9_internal.h"

#include <X11/Xlib.h>

#include <cstring>

namespace
{

bool has_extension(const char* list, const char* name)
{
    if (!list)
        return false;
    size_t n = std::strlen(name);
    for (const char* p = list; (p = std::strstr(p, name)) != nullptr; p += n)
    {
        if ((p == list || p[-1] == ' ') && (p[n] == ' ' || p[n] == '\0'))
            return true;
    }
    return false;
}

// Displays live for the process: EGL hands out one display per native display, and
// terminating it would take the contexts of other devices with it.
struct display_entry
{
    EGLDisplay display = EGL_NO_DISPLAY;
    Display* native = nullptr;
    bool tried = false;
};

display_entry g_x11;

EGLDisplay headless_display()
{
    static display_entry entry;
    if (entry.tried)
        return entry.display;
    entry.tried = true;
    const char* client = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    EGLDisplay display = EGL_NO_DISPLAY;
    if (has_extension(client, "EGL_MESA_platform_surfaceless"))
        display =
            eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (display != EGL_NO_DISPLAY && !eglInitialize(display, nullptr, nullptr))
        display = EGL_NO_DISPLAY;
    if (display == EGL_NO_DISPLAY && has_extension(client, "EGL_EXT_platform_device") &&
        has_extension(client, "EGL_EXT_device_enumeration"))
    {
        EGLDeviceEXT devices[8];
        EGLint count = 0;
        if (eglQueryDevicesEXT(8, devices, &count) && count > 0)
        {
            for (EGLint i = 0; i < count && display == EGL_NO_DISPLAY; ++i)
            {
                display = eglGetPlatformDisplayEXT(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr);
                if (display != EGL_NO_DISPLAY && !eglInitialize(display, nullptr, nullptr))
                    display = EGL_NO_DISPLAY;
            }
        }
    }
    entry.display = display;
    return display;
}

EGLDisplay x11_display()
{
    display_entry& entry = g_x11;
    if (entry.tried)
        return entry.display;
    entry.tried = true;
    const char* client = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (!has_extension(client, "EGL_EXT_platform_x11") &&
        !has_extension(client, "EGL_KHR_platform_x11"))
        return EGL_NO_DISPLAY;
    Display* native = XOpenDisplay(nullptr);
    if (!native)
        return EGL_NO_DISPLAY;
    EGLDisplay display = eglGetPlatformDisplayEXT(EGL_PLATFORM_X11_KHR, native, nullptr);
    if (display != EGL_NO_DISPLAY && !eglInitialize(display, nullptr, nullptr))
        display = EGL_NO_DISPLAY;
    if (display == EGL_NO_DISPLAY)
        XCloseDisplay(native);
    else
        entry.native = native;
    entry.display = display;
    return display;
}

// Mesa's software rasteriser crashes when a surface is made for a window that is already
// gone, which happens when another client destroys the window while a frame is on its way.
// The probe's own BadWindow error is swallowed; any other error that arrives meanwhile goes
// to the handler that was installed before.
XErrorHandler g_previous_handler = nullptr;
Window g_probed_window = 0;

int probe_error(Display* display, XErrorEvent* error)
{
    if (error->error_code == BadWindow && error->resourceid == g_probed_window)
        return 0;
    return g_previous_handler ? g_previous_handler(display, error) : 0;
}

bool window_exists(Window window)
{
    if (!g_x11.native)
        return false;
    g_probed_window = window;
    g_previous_handler = XSetErrorHandler(probe_error);
    XWindowAttributes attributes;
    Status const found = XGetWindowAttributes(g_x11.native, window, &attributes);
    XSetErrorHandler(g_previous_handler);
    g_previous_handler = nullptr;
    return found != 0;
}

} // namespace

std::unique_ptr<ixo_gl_context> ixo_gl_context::create(bool native_display_wanted)
{
    std::unique_ptr<ixo_gl_context> gl(new ixo_gl_context());
    EGLDisplay display = EGL_NO_DISPLAY;
    if (native_display_wanted)
    {
        display = x11_display();
        gl->m_headless = display == EGL_NO_DISPLAY;
    }
    if (display == EGL_NO_DISPLAY)
        display = headless_display();
    if (display == EGL_NO_DISPLAY)
        return nullptr;
    gl->m_display = display;
    if (!eglBindAPI(EGL_OPENGL_API))
        return nullptr;

    const EGLint config_attribs[] = {EGL_SURFACE_TYPE,
                                     gl->m_headless ? EGL_PBUFFER_BIT : EGL_WINDOW_BIT,
                                     EGL_RENDERABLE_TYPE,
                                     EGL_OPENGL_BIT,
                                     EGL_RED_SIZE,
                                     8,
                                     EGL_GREEN_SIZE,
                                     8,
                                     EGL_BLUE_SIZE,
                                     8,
                                     EGL_NONE};
    EGLint count = 0;
    EGLConfig config = nullptr;
    if (!eglChooseConfig(display, config_attribs, &config, 1, &count) || count == 0)
    {
        const char* ext = eglQueryString(display, EGL_EXTENSIONS);
        if (!gl->m_headless || !has_extension(ext, "EGL_KHR_no_config_context"))
            return nullptr;
        config = EGL_NO_CONFIG_KHR;
    }
    gl->m_config = config;
    const EGLint context_attribs[] = {EGL_CONTEXT_MAJOR_VERSION,
                                      4,
                                      EGL_CONTEXT_MINOR_VERSION,
                                      5,
                                      EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                      EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                      EGL_NONE};
    gl->m_context = eglCreateContext(display, config, EGL_NO_CONTEXT, context_attribs);
    if (gl->m_context == EGL_NO_CONTEXT)
        return nullptr;
    if (!eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, gl->m_context))
        return nullptr;
    if (epoxy_gl_version() < 45)
        return nullptr;
    return gl;
}

ixo_gl_context::~ixo_gl_context()
{
    if (m_context != EGL_NO_CONTEXT)
    {
        if (eglGetCurrentContext() == m_context)
            eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglDestroyContext(m_display, m_context);
    }
}

void ixo_gl_context::make_current()
{
    // The host may make other contexts current between calls, so ask EGL (a thread-local
    // read) rather than trusting what this library last did.
    if (eglGetCurrentContext() == m_context && eglGetCurrentSurface(EGL_DRAW) == m_current_surface)
        return;
    eglMakeCurrent(m_display, m_current_surface, m_current_surface, m_context);
}

EGLSurface ixo_gl_context::create_window_surface(HWND window)
{
    if (m_headless || !window)
        return EGL_NO_SURFACE;
    Window native = static_cast<Window>(reinterpret_cast<std::uintptr_t>(window));
    if (!window_exists(native))
        return EGL_NO_SURFACE;
    return eglCreatePlatformWindowSurfaceEXT(m_display, m_config, &native, nullptr);
}

void ixo_gl_context::destroy_window_surface(EGLSurface surface)
{
    if (surface == EGL_NO_SURFACE)
        return;
    if (m_current_surface == surface)
    {
        m_current_surface = EGL_NO_SURFACE;
        eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, m_context);
    }
    eglDestroySurface(m_display, surface);
}

void ixo_gl_context::use_surface(EGLSurface surface)
{
    m_current_surface = surface;
    make_current();
}

bool ixo_gl_context::swap_buffers(EGLSurface surface)
{
    return surface != EGL_NO_SURFACE && eglSwapBuffers(m_display, surface) == EGL_TRUE;
}
