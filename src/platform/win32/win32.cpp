#include <ixocore/platform/win32.h>
#include <ixocore/platform/win32_testing.h>

#include <X11/Xlib.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>
#include <vector>

namespace
{

// The context of the whole screen; window contexts are the window id itself, so no
// context owns memory.
struct screen_context
{
};
screen_context g_screen_dc;

std::int64_t monotonic_ns()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return std::int64_t(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

// Appends the UTF-16 form of a UTF-8 string; malformed bytes become U+FFFD.
std::u16string utf8_to_utf16(std::string const& s)
{
    std::u16string out;
    std::size_t i = 0;
    while (i < s.size())
    {
        unsigned char c = static_cast<unsigned char>(s[i]);
        char32_t cp = 0xFFFD;
        std::size_t n = 1;
        if (c < 0x80)
            cp = c;
        else if ((c & 0xE0) == 0xC0)
            n = 2, cp = c & 0x1F;
        else if ((c & 0xF0) == 0xE0)
            n = 3, cp = c & 0x0F;
        else if ((c & 0xF8) == 0xF0)
            n = 4, cp = c & 0x07;
        if (n > 1)
        {
            bool ok = i + n <= s.size();
            for (std::size_t k = 1; ok && k < n; ++k)
            {
                unsigned char d = static_cast<unsigned char>(s[i + k]);
                ok = (d & 0xC0) == 0x80;
                cp = (cp << 6) | (d & 0x3F);
            }
            if (!ok || cp > 0x10FFFF)
                cp = 0xFFFD, n = 1;
        }
        i += n;
        if (cp >= 0x10000)
        {
            cp -= 0x10000;
            out.push_back(char16_t(0xD800 + (cp >> 10)));
            out.push_back(char16_t(0xDC00 + (cp & 0x3FF)));
        }
        else
            out.push_back(char16_t(cp));
    }
    return out;
}

void append_utf8(std::string& out, char32_t cp)
{
    if (cp < 0x80)
        out.push_back(char(cp));
    else if (cp < 0x800)
    {
        out.push_back(char(0xC0 | (cp >> 6)));
        out.push_back(char(0x80 | (cp & 0x3F)));
    }
    else if (cp < 0x10000)
    {
        out.push_back(char(0xE0 | (cp >> 12)));
        out.push_back(char(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(char(0x80 | (cp & 0x3F)));
    }
    else
    {
        out.push_back(char(0xF0 | (cp >> 18)));
        out.push_back(char(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(char(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(char(0x80 | (cp & 0x3F)));
    }
}

} // namespace

namespace
{
// Writes `path` (UTF-8, '/' separators) in the Windows form, truncating as Windows does.
DWORD write_module_path(std::string const& native, LPWSTR buffer, DWORD size)
{
    std::u16string path = utf8_to_utf16(native);
    for (char16_t& c : path)
        if (c == u'/')
            c = u'\\';
    if (path.size() >= size)
    {
        // Truncated: as many characters as fit beside the terminating zero.
        for (DWORD i = 0; i + 1 < size; ++i)
            buffer[i] = WCHAR(path[i]);
        buffer[size - 1] = 0;
        return size;
    }
    for (std::size_t i = 0; i < path.size(); ++i)
        buffer[i] = WCHAR(path[i]);
    buffer[path.size()] = 0;
    return DWORD(path.size());
}

std::string executable_path()
{
    std::vector<char> link(4096);
    ssize_t n = readlink("/proc/self/exe", link.data(), link.size());
    if (n <= 0 || std::size_t(n) >= link.size())
        return {};
    return std::string(link.data(), std::size_t(n));
}
} // namespace

DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size)
{
    if (buffer == nullptr || size == 0)
        return 0;
    std::string path;
    if (module == nullptr)
        path = executable_path();
    else
    {
        // A module handle is the load address of a shared object (GetModuleHandleExW).
        Dl_info info{};
        link_map* map = nullptr;
        if (dladdr1(reinterpret_cast<void*>(module), &info, reinterpret_cast<void**>(&map),
                    RTLD_DL_LINKMAP) == 0 ||
            info.dli_fbase != module || map == nullptr)
            return 0;
        // The main program's entry has no name of its own.
        if (map->l_name == nullptr || *map->l_name == 0)
            path = executable_path();
        else if (char* resolved = realpath(map->l_name, nullptr))
        {
            path = resolved;
            std::free(resolved);
        }
    }
    if (path.empty())
        return 0;
    return write_module_path(path, buffer, size);
}

BOOL GetModuleHandleExW(DWORD flags, LPCWSTR name, HMODULE* module)
{
    if (module == nullptr)
        return FALSE;
    *module = nullptr;
    if (!(flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) || name == nullptr)
        return FALSE;
    Dl_info info{};
    if (dladdr(reinterpret_cast<void const*>(name), &info) == 0 || info.dli_fbase == nullptr)
        return FALSE;
    *module = static_cast<HMODULE>(info.dli_fbase);
    return TRUE;
}

DWORD GetTickCount()
{
    return DWORD(std::uint64_t(monotonic_ns() / 1000000));
}

namespace
{
bool g_counter_frozen = false;
LONGLONG g_frozen_ticks = 0;
} // namespace

void ixo_win32_test_set_performance_counter(BOOL frozen, LONGLONG ticks)
{
    g_counter_frozen = frozen != FALSE;
    g_frozen_ticks = ticks;
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* count)
{
    if (count == nullptr)
        return FALSE;
    count->QuadPart = g_counter_frozen ? g_frozen_ticks : monotonic_ns();
    return TRUE;
}

BOOL QueryPerformanceFrequency(LARGE_INTEGER* frequency)
{
    if (frequency == nullptr)
        return FALSE;
    frequency->QuadPart = 1000000000;
    return TRUE;
}

int MulDiv(int number, int numerator, int denominator)
{
    if (denominator == 0)
        return -1;
    std::int64_t product = std::int64_t(number) * numerator;
    std::int64_t d = denominator;
    if (d < 0)
    {
        product = -product;
        d = -d;
    }
    // Round half away from zero.
    std::int64_t result = product >= 0 ? (product + d / 2) / d : (product - d / 2) / d;
    if (result > 2147483647 || result < -2147483647)
        return -1;
    return int(result);
}

HDC GetWindowDC(HWND window)
{
    if (window == nullptr)
        return reinterpret_cast<HDC>(&g_screen_dc);
    return reinterpret_cast<HDC>(window);
}

int ReleaseDC(HWND, HDC dc)
{
    return dc != nullptr ? 1 : 0;
}

int GetDeviceCaps(HDC dc, int index)
{
    if (dc == nullptr || (index != LOGPIXELSX && index != LOGPIXELSY))
        return 0;
    if (dc == reinterpret_cast<HDC>(&g_screen_dc))
        return 96;
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr)
        return 96;
    int screen = DefaultScreen(display);
    double pixels =
        index == LOGPIXELSY ? DisplayHeight(display, screen) : DisplayWidth(display, screen);
    double mm =
        index == LOGPIXELSY ? DisplayHeightMM(display, screen) : DisplayWidthMM(display, screen);
    XCloseDisplay(display);
    if (mm <= 0.0 || pixels <= 0.0)
        return 96;
    return int(std::lround(pixels * 25.4 / mm));
}

BOOL SetRect(LPRECT rect, int left, int top, int right, int bottom)
{
    if (rect == nullptr)
        return FALSE;
    rect->left = left;
    rect->top = top;
    rect->right = right;
    rect->bottom = bottom;
    return TRUE;
}

std::string ixo_native_path(LPCWSTR path)
{
    std::string out;
    if (path == nullptr)
        return out;
    for (std::size_t i = 0; path[i] != 0; ++i)
    {
        char32_t c = char32_t(path[i]);
        if (c >= 0xD800 && c < 0xDC00 && path[i + 1] >= 0xDC00 && path[i + 1] < 0xE000)
        {
            c = 0x10000 + ((c - 0xD800) << 10) + (char32_t(path[i + 1]) - 0xDC00);
            ++i;
        }
        else if (c >= 0xD800 && c < 0xE000)
            c = 0xFFFD;
        if (c == U'\\')
            c = U'/';
        append_utf8(out, c);
    }
    return out;
}
