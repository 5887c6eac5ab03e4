#include <ixocore/platform/crt.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <clocale>
#include <string>
#include <utility>

namespace
{

// Formats through _scwprintf and swprintf_s and checks that both agree on the length.
template <typename... Args> std::u16string fmt(ixo_wchar const* format, Args... args)
{
    int const n = _scwprintf(format, args...);
    if (n < 0)
        return u"<error>";
    std::u16string out(static_cast<std::size_t>(n) + 1, u'#');
    int const written = swprintf_s(out.data(), out.size(), format, args...);
    EXPECT_EQ(written, n);
    EXPECT_EQ(out[static_cast<std::size_t>(n)], 0);
    out.resize(static_cast<std::size_t>(n));
    return out;
}

// A call's result with the errno it left, errno cleared before.
template <typename F> auto with_errno(F call)
{
    errno = 0;
    auto const result = call();
    return std::pair(result, errno);
}

} // namespace

TEST(crt, wtoi_clamps_and_reports_range_errors)
{
    errno = 0;
    EXPECT_EQ(_wtoi(u"  \t-123abc"), -123);
    EXPECT_EQ(_wtoi(u"+77"), 77);
    EXPECT_EQ(_wtoi(u"0x1F"), 0);
    EXPECT_EQ(_wtoi(u"abc"), 0);
    EXPECT_EQ(_wtoi(u""), 0);
    EXPECT_EQ(_wtoi(u"2147483647"), INT_MAX);
    EXPECT_EQ(_wtoi(u"-2147483648"), INT_MIN);
    EXPECT_EQ(_wtoi(u"\uFF14\uFF12"), 42); // full-width digits
    EXPECT_EQ(errno, 0);

    EXPECT_EQ(with_errno([] { return _wtoi(u"2147483648"); }), std::pair(INT_MAX, ERANGE));
    EXPECT_EQ(with_errno([] { return _wtoi(u"-99999999999999999999999"); }),
              std::pair(INT_MIN, ERANGE));
    EXPECT_EQ(with_errno([] { return _wtoi(nullptr); }), std::pair(0, EINVAL));
}

TEST(crt, wide_format_string_rules)
{
    // In a wide format %s and %c are wide, %S and %C narrow; h and l/w force a width.
    EXPECT_EQ(fmt(u"[%s|%S]", u"wide", "narrow"), u"[wide|narrow]");
    EXPECT_EQ(fmt(u"[%c%C]", u'w', 'n'), u"[wn]");
    EXPECT_EQ(fmt(u"[%hs|%ls|%ws|%hS|%lS]", "h", u"l", u"w", "H", u"L"), u"[h|l|w|H|L]");
    EXPECT_EQ(fmt(u"[%hc%lc%wc]", 'h', u'l', u'w'), u"[hlw]");
    EXPECT_EQ(fmt(u"%s", u"\xD83D\xDE00"), u"\xD83D\xDE00");
    // Null strings print as (null); precision cuts, width pads; 0 pads text with zeros.
    EXPECT_EQ(
        fmt(u"%s|%S", static_cast<ixo_wchar const*>(nullptr), static_cast<char const*>(nullptr)),
        u"(null)|(null)");
    EXPECT_EQ(fmt(u"[%.3s][%6s][%-6s][%06s]", u"abcdef", u"ab", u"ab", u"ab"),
              u"[abc][    ab][ab    ][0000ab]");
    EXPECT_EQ(fmt(u"[%*s][%-*S][%.*s]", 4, u"x", 3, "y", 2, u"xyz"), u"[   x][y  ][xy]");
    EXPECT_EQ(fmt(u"[%*s]", -3, u"x"), u"[x  ]");
    EXPECT_EQ(fmt(u"[%3c]", u'z'), u"[  z]");
    EXPECT_EQ(fmt(u"100%%"), u"100%");
}

TEST(crt, wide_format_numbers)
{
    EXPECT_EQ(fmt(u"%d %i %u %o %x %X", -5, 6, 7u, 8u, 255u, 255u), u"-5 6 7 10 ff FF");
    EXPECT_EQ(fmt(u"[%+05d][% d][%-4d][%.3d][%#x][%#o]", 42, 7, 3, 9, 26u, 8u),
              u"[+0042][ 7][3   ][009][0x1a][010]");
    EXPECT_EQ(fmt(u"%hd %hhd %hu", 70000, 300, 65537), u"4464 44 1");
    EXPECT_EQ(fmt(u"%I64d %lld %I32d %zu", 1234567890123ll, -9000000000ll, -3, std::size_t{9}),
              u"1234567890123 -9000000000 -3 9");
    EXPECT_EQ(fmt(u"%ld %lu", -2l, 3ul), u"-2 3");
    EXPECT_EQ(fmt(u"%f %.2f %e %g %G", 1.5, 2.345, 12345.678, 0.0001, 1e20),
              u"1.500000 2.35 1.234568e+04 0.0001 1E+20");
    EXPECT_EQ(fmt(u"[%8.3f][%-8.1f][%08.2f]", 3.14159, 2.0, -1.5),
              u"[   3.142][2.0     ][-0001.50]");
    EXPECT_EQ(fmt(u"%Lf", 0.5L), u"0.500000");
    // %a shows every hexadecimal digit of a double when no precision is given.
    EXPECT_EQ(fmt(u"%a", 1.0), u"0x1.0000000000000p+0");
    // %p: 2 * sizeof(void*) upper-case hexadecimal digits without prefix.
    EXPECT_EQ(fmt(u"%p", reinterpret_cast<void*>(std::uintptr_t{0xBEEF})), u"000000000000BEEF");
}

TEST(crt, invalid_formats_are_rejected)
{
    EXPECT_EQ(with_errno([] { return _scwprintf(u"%d%n", 1, nullptr); }), std::pair(-1, EINVAL));
    EXPECT_EQ(_scwprintf(u"%"), -1);
    EXPECT_EQ(_scwprintf(u"%k", 1), -1);
    EXPECT_EQ(_scwprintf(u"%99999999999d", 1), -1);
    ixo_wchar buffer[8] = {u'x', 0};
    EXPECT_EQ(swprintf_s(buffer, 8, u"%q"), -1);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(_vscwprintf(nullptr, nullptr), -1);

    // A huge width is counted without being written.
    EXPECT_EQ(_scwprintf(u"%100000000d", 1), 100000000);
}

TEST(crt, vswprintf_s_needs_room_for_the_terminator)
{
    ixo_wchar buffer[4] = {u'x', u'x', u'x', u'x'};
    EXPECT_EQ(swprintf_s(buffer, 4, u"%d", 123), 3);
    EXPECT_EQ(std::u16string(buffer), u"123");
    EXPECT_EQ(with_errno([&] { return swprintf_s(buffer, 4, u"%d", 1234); }),
              std::pair(-1, ERANGE));
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(with_errno([&] { return swprintf_s(buffer, 0, u"a"); }), std::pair(-1, EINVAL));
    EXPECT_EQ(swprintf_s(nullptr, 4, u"a"), -1);
}

TEST(crt, mbstowcs_s_size_rules)
{
    std::size_t n = 99;
    EXPECT_EQ(mbstowcs_s(&n, nullptr, 0, "rotor", 0), 0);
    EXPECT_EQ(n, 6u);

    ixo_wchar out[6];
    EXPECT_EQ(mbstowcs_s(&n, out, 6, "rotor", 5), 0);
    EXPECT_EQ(n, 6u);
    EXPECT_EQ(std::u16string(out), u"rotor");

    // count stops early without error.
    EXPECT_EQ(mbstowcs_s(&n, out, 6, "rotor", 2), 0);
    EXPECT_EQ(n, 3u);
    EXPECT_EQ(std::u16string(out), u"ro");

    // No room for the terminator: ERANGE and an empty buffer; _TRUNCATE truncates.
    EXPECT_EQ(mbstowcs_s(&n, out, 5, "rotor", 5), ERANGE);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(n, 0u);
    EXPECT_EQ(mbstowcs_s(&n, out, 4, "rotor", _TRUNCATE), STRUNCATE);
    EXPECT_EQ(std::u16string(out), u"rot");
    EXPECT_EQ(n, 4u);

    EXPECT_EQ(mbstowcs_s(&n, nullptr, 5, "x", 1), EINVAL);
    EXPECT_EQ(mbstowcs_s(&n, out, 0, "x", 1), EINVAL);
    EXPECT_EQ(mbstowcs_s(&n, out, 6, nullptr, 1), EINVAL);
    EXPECT_EQ(out[0], 0);

    // The "C" locale maps bytes one to one.
    EXPECT_EQ(mbstowcs_s(&n, out, 6, "\xE9\xFF", _TRUNCATE), 0);
    EXPECT_EQ(std::u16string(out), u"\u00E9\u00FF");
}

TEST(crt, multibyte_conversions_in_utf8)
{
    std::string const old = std::setlocale(LC_ALL, nullptr);
    if (!std::setlocale(LC_ALL, "C.UTF-8"))
        GTEST_SKIP() << "no C.UTF-8 locale";
    std::size_t n = 0;
    EXPECT_EQ(mbstowcs_s(&n, nullptr, 0, "\xC3\xA9\xF0\x9F\x98\x80", 0), 0);
    EXPECT_EQ(n, 4u); // one unit, a surrogate pair, the terminator
    ixo_wchar wide[4];
    // Two units of room (plus terminator) cannot hold the pair: it is not split.
    EXPECT_EQ(mbstowcs_s(&n, wide, 3, "\xC3\xA9\xF0\x9F\x98\x80", _TRUNCATE), STRUNCATE);
    EXPECT_EQ(std::u16string(wide), u"\u00E9");
    EXPECT_EQ(mbstowcs_s(&n, wide, 4, "\xFF", _TRUNCATE), EILSEQ);
    EXPECT_EQ(n, 0u);

    char out[8];
    EXPECT_EQ(wcstombs_s(&n, out, sizeof out, u"\u20AC\xD83D\xDE00", _TRUNCATE), 0);
    EXPECT_STREQ(out, "\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(n, 8u);
    EXPECT_EQ(wcstombs_s(&n, out, 6, u"\u20AC\xD83D\xDE00", _TRUNCATE), STRUNCATE);
    EXPECT_STREQ(out, "\xE2\x82\xAC");
    EXPECT_EQ(wcstombs_s(&n, out, sizeof out, u"a\xDC00", _TRUNCATE), EILSEQ);

    // Narrow text in a wide format is decoded as UTF-8; the precision counts bytes.
    EXPECT_EQ(fmt(u"[%S][%.2S][%4hs]", "\xC3\xA9t\xC3\xA9", "\xC3\xA9t", "\xC3\xA9"),
              u"[\u00E9t\u00E9][\u00E9][   \u00E9]");
    EXPECT_EQ(fmt(u"[%S]", "a\xFF"), u"[]");

    // Case mapping follows the locale beyond ASCII.
    ixo_wchar text[] = u"\u00E9t\u00E9";
    EXPECT_EQ(_wcsupr_s(text, 4), 0);
    EXPECT_EQ(std::u16string(text), u"\u00C9T\u00C9");
    std::setlocale(LC_ALL, old.c_str());
}

TEST(crt, case_mapping_and_reverse)
{
    ixo_wchar text[] = u"Shaft_42x";
    EXPECT_EQ(_wcsupr_s(text, 10), 0);
    EXPECT_EQ(std::u16string(text), u"SHAFT_42X");
    EXPECT_EQ(_wcslwr_s(text, 10), 0);
    EXPECT_EQ(std::u16string(text), u"shaft_42x");
    // No terminator within the size: EINVAL and the text is emptied.
    EXPECT_EQ(_wcsupr_s(text, 9), EINVAL);
    EXPECT_EQ(text[0], 0);
    EXPECT_EQ(_wcslwr_s(nullptr, 4), EINVAL);

    ixo_wchar word[] = u"rotor!";
    EXPECT_EQ(_wcsrev(word), word);
    EXPECT_EQ(std::u16string(word), u"!rotor");
    ixo_wchar one[] = u"x";
    _wcsrev(one);
    EXPECT_EQ(std::u16string(one), u"x");
    EXPECT_EQ(_wcsrev(nullptr), nullptr);
}
