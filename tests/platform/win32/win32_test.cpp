#include <ixocore/platform/win32.h>

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <unistd.h>
#include <vector>

TEST(win32, mul_div_rounds_half_away_from_zero_and_refuses_zero_divisor)
{
    EXPECT_EQ(MulDiv(9, 96, 72), 12);
    EXPECT_EQ(MulDiv(9, 120, 72), 15);
    EXPECT_EQ(MulDiv(5, 1, 2), 3);
    EXPECT_EQ(MulDiv(-5, 1, 2), -3);
    EXPECT_EQ(MulDiv(5, -1, 2), -3);
    EXPECT_EQ(MulDiv(5, 1, -2), -3);
    EXPECT_EQ(MulDiv(-5, -1, -2), -3);
    EXPECT_EQ(MulDiv(7, 1, 3), 2);
    EXPECT_EQ(MulDiv(8, 1, 3), 3);
    EXPECT_EQ(MulDiv(1, 2, 0), -1);
    // The intermediate product needs 64 bits.
    EXPECT_EQ(MulDiv(1 << 30, 1 << 20, 1 << 25), 1 << 25);
    // A result outside 32 bits is refused.
    EXPECT_EQ(MulDiv(1 << 30, 8, 1), -1);
}

TEST(win32, native_path_converts_separators_and_utf16)
{
    EXPECT_EQ(ixo_native_path(u"C:\\a/b\\c.png"), "C:/a/b/c.png");
    EXPECT_EQ(ixo_native_path(u"\u00e9\U0001F600"), "\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(ixo_native_path(nullptr), "");
    WCHAR lone[] = {0xD800, u'a', 0};
    EXPECT_EQ(ixo_native_path(lone), "\xEF\xBF\xBD"
                                     "a");
}

TEST(win32, screen_context_and_rectangles)
{
    HDC dc = GetWindowDC(nullptr);
    ASSERT_NE(dc, nullptr);
    EXPECT_EQ(GetDeviceCaps(dc, LOGPIXELSY), 96);
    EXPECT_EQ(GetDeviceCaps(dc, LOGPIXELSX), 96);
    EXPECT_EQ(GetDeviceCaps(dc, 12345), 0);
    EXPECT_EQ(GetDeviceCaps(nullptr, LOGPIXELSY), 0);
    EXPECT_EQ(-MulDiv(9, GetDeviceCaps(dc, LOGPIXELSY), 72), -12);
    EXPECT_EQ(ReleaseDC(nullptr, dc), 1);

    RECT r{};
    EXPECT_TRUE(SetRect(&r, 1, 2, 30, 40));
    EXPECT_EQ(std::tuple(r.left, r.top, r.right, r.bottom), std::tuple(1, 2, 30, 40));
    EXPECT_FALSE(SetRect(nullptr, 0, 0, 1, 1));
}

namespace
{
int executable_marker = 0;

std::string module_path(HMODULE module)
{
    std::vector<WCHAR> buffer(4096);
    DWORD len = GetModuleFileNameW(module, buffer.data(), DWORD(buffer.size()));
    return len == 0 ? std::string() : ixo_native_path(buffer.data());
}
} // namespace

TEST(win32, module_handle_from_address_names_the_file_holding_it)
{
    HMODULE library = nullptr;
    ASSERT_TRUE(GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                       GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                   reinterpret_cast<LPCWSTR>(&GetTickCount), &library));
    std::string const library_path = module_path(library);
    ASSERT_FALSE(library_path.empty());
    EXPECT_EQ(library_path.front(), '/');
    EXPECT_NE(library_path.find("/libixocore.so"), std::string::npos) << library_path;

    HMODULE executable = nullptr;
    ASSERT_TRUE(GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                   reinterpret_cast<LPCWSTR>(&executable_marker), &executable));
    EXPECT_NE(executable, library);
    char link[4096];
    ssize_t n = readlink("/proc/self/exe", link, sizeof link - 1);
    ASSERT_GT(n, 0);
    EXPECT_EQ(module_path(executable), std::string(link, std::size_t(n)));

    // Only look-up by address is known; a stack address lies in no module; an address
    // inside a module is no handle.
    HMODULE none = library;
    int on_stack = 0;
    EXPECT_FALSE(GetModuleHandleExW(0, reinterpret_cast<LPCWSTR>(&GetTickCount), &none));
    EXPECT_EQ(none, nullptr);
    EXPECT_FALSE(GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                    reinterpret_cast<LPCWSTR>(&on_stack), &none));
    EXPECT_FALSE(GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, nullptr, &none));
    EXPECT_FALSE(GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                    reinterpret_cast<LPCWSTR>(&GetTickCount), nullptr));
    EXPECT_EQ(module_path(reinterpret_cast<HMODULE>(reinterpret_cast<char*>(library) + 16)), "");
}
