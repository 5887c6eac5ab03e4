#include <ixocore/core/string.h>

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <ostream>
#include <set>
#include <string>
#include <unordered_set>
#include <utility>

// Readable failure messages.
void PrintTo(ixo_string const& s, std::ostream* os)
{
    *os << '"' << s.to_utf8() << '"';
}

namespace
{

std::u16string text(ixo_string const& s)
{
    return std::u16string(s.view());
}

// The text and the exact buffer size (terminator included) of a string.
::testing::AssertionResult holds(ixo_string const& s, ixo_wchar const* want, int buffer)
{
    if (s == want && s.buffer_size() == buffer)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << '"' << s.to_utf8() << "\" in " << s.buffer_size() << " units, expected " << buffer;
}

// Whether the text converts, and the value left in a variable that held `start`.
template <typename T> std::pair<bool, T> convert(ixo_string const& s, T start)
{
    bool const ok = s.convert(start);
    return {ok, start};
}

// Runs a block under a UTF-8 locale when the machine has one, restoring the old one.
class utf8_locale
{
public:
    utf8_locale()
    {
        old_ = std::setlocale(LC_ALL, nullptr);
        ok_ = std::setlocale(LC_ALL, "C.UTF-8") || std::setlocale(LC_ALL, "en_US.UTF-8");
    }
    ~utf8_locale() { std::setlocale(LC_ALL, old_.c_str()); }
    bool ok() const { return ok_; }

private:
    std::string old_;
    bool ok_ = false;
};

} // namespace

TEST(ixo_string, construction_and_empty_forms)
{
    ixo_string none;
    EXPECT_EQ(none.length(), 0);
    EXPECT_EQ(none.buffer_size(), 0);
    EXPECT_EQ(static_cast<ixo_wchar const*>(none), nullptr);
    EXPECT_EQ(none.c_str()[0], 0);

    ixo_string empty(IXO_TEXT(""));
    EXPECT_EQ(empty.buffer_size(), 1);
    EXPECT_TRUE(none == empty);
    EXPECT_EQ(none.compare(empty), 0);

    ixo_string const null_text(static_cast<ixo_wchar const*>(nullptr));
    EXPECT_EQ(null_text.buffer_size(), 0);

    ixo_string rotor(IXO_TEXT("rotor"));
    EXPECT_EQ(rotor.length(), 5);
    EXPECT_TRUE(holds(rotor, IXO_TEXT("rotor"), 6));
    rotor = static_cast<char const*>(nullptr);
    EXPECT_EQ(rotor.buffer_size(), 0);

    // Narrow and UTF-32 sources give the same code units.
    EXPECT_EQ(ixo_string("abc"), ixo_string(IXO_TEXT("abc")));
    EXPECT_EQ(ixo_string(L"abc"), ixo_string(IXO_TEXT("abc")));
    ixo_string const astral(L"a\U0001F600b");
    EXPECT_EQ(astral.length(), 4);
    EXPECT_EQ(text(astral), u"a\xD83D\xDE00"
                            u"b");
    EXPECT_EQ(text(ixo_string(L"\xD800")), u"\xFFFD");

    // Copies are independent, self-assignment keeps the text, moves leave no buffer.
    ixo_string a(IXO_TEXT("shaft"));
    ixo_string b(a);
    b[0] = u'S';
    EXPECT_EQ(b, IXO_TEXT("Shaft"));
    ixo_string& same = a;
    a = same;
    EXPECT_EQ(a, IXO_TEXT("shaft"));
    ixo_string c(std::move(a));
    EXPECT_EQ(a.buffer_size(), 0);
    EXPECT_TRUE(holds(c, IXO_TEXT("shaft"), 6));
    c.erase();
    EXPECT_EQ(c.buffer_size(), 0);
    a = ixo_string();
    EXPECT_EQ(a.buffer_size(), 0);
}

TEST(ixo_string, narrow_text_follows_the_locale)
{
    // In the "C" locale every byte maps to the code unit of the same value.
    EXPECT_EQ(text(ixo_string("caf\xE9")), u"caf\u00E9");
    char out[8] = {};
    EXPECT_TRUE(ixo_string(IXO_TEXT("caf\u00E9")).to_single_byte(sizeof out, out));
    EXPECT_STREQ(out, "caf\xE9");

    utf8_locale utf8;
    if (!utf8.ok())
        GTEST_SKIP() << "no UTF-8 locale";
    EXPECT_EQ(text(ixo_string("caf\xC3\xA9 \xF0\x9F\x98\x80")), u"caf\u00E9 \xD83D\xDE00");
    // Invalid UTF-8 does not convert.
    EXPECT_EQ(ixo_string("a\xC3").buffer_size(), 0);
    char utf8_out[16] = {};
    EXPECT_TRUE(ixo_string(u"\u00E9\xD83D\xDE00").to_single_byte(sizeof utf8_out, utf8_out));
    EXPECT_STREQ(utf8_out, "\xC3\xA9\xF0\x9F\x98\x80");
    // Truncation stops at a character boundary: 4 bytes hold "a" and "é", not half a face.
    char small[5] = {};
    EXPECT_FALSE(ixo_string(u"a\u00E9\xD83D\xDE00").to_single_byte(sizeof small, small));
    EXPECT_STREQ(small, "a\xC3\xA9");
}

TEST(ixo_string, utf8_is_locale_independent)
{
    ixo_string const s = ixo_string::from_utf8("\xE2\x82\xAC x \xF0\x9F\x98\x80 \xC0\xAF");
    EXPECT_EQ(text(s), u"\u20AC x \xD83D\xDE00 \xFFFD\xFFFD");
    EXPECT_EQ(ixo_string(u"\u20AC\xD83D\xDE00").to_utf8(), "\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(ixo_string(u"\xDC00").to_utf8(), "\xEF\xBF\xBD");

    char out[4] = {'x', 'x', 'x', 'x'};
    ixo_string().to_single_byte(sizeof out, out);
    EXPECT_EQ(out[0], 0);
    out[0] = 'x';
    ixo_string(IXO_TEXT("ab")).to_single_byte(0, out);
    EXPECT_EQ(out[0], 'x');
}

TEST(ixo_string, resize_and_exact_buffers)
{
    ixo_string s(IXO_TEXT("hello"));
    s.resize(2);
    EXPECT_TRUE(holds(s, IXO_TEXT("he"), 3));
    s.resize(10);
    EXPECT_TRUE(holds(s, IXO_TEXT("he"), 11));
    EXPECT_EQ(s.length(), 2);

    // append fills spare room without reallocating, then grows to exactly the sum.
    EXPECT_EQ(s.append(IXO_TEXT("llo")), 5);
    EXPECT_EQ(s.buffer_size(), 11);
    EXPECT_EQ(s.append(IXO_TEXT(" world!")), 12);
    EXPECT_TRUE(holds(s, IXO_TEXT("hello world!"), 13));
    ixo_string c;
    EXPECT_EQ(c.append(u'x'), 1);
    EXPECT_EQ(c.buffer_size(), 2);
    EXPECT_EQ(c.append(u'y'), 2);
    EXPECT_EQ(c.buffer_size(), 3);

    // prepend always builds a new buffer of exactly the needed size.
    ixo_string p(IXO_TEXT("tor"));
    p.resize(8);
    EXPECT_EQ(p.prepend(IXO_TEXT("ro")), 5);
    EXPECT_EQ(p.buffer_size(), 6);
    EXPECT_EQ(p.prepend(u'>'), 6);
    EXPECT_TRUE(holds(p, IXO_TEXT(">rotor"), 7));

    // Appending and prepending a string to itself.
    ixo_string twice(IXO_TEXT("ab"));
    twice += twice;
    EXPECT_EQ(twice, IXO_TEXT("abab"));
    twice.prepend(twice);
    EXPECT_EQ(twice, IXO_TEXT("abababab"));

    ixo_string base(IXO_TEXT("stator"));
    EXPECT_EQ(base + ixo_string(IXO_TEXT(" ring")), IXO_TEXT("stator ring"));
    EXPECT_EQ(base, IXO_TEXT("stator"));
    ixo_string none;
    none.resize(-3);
    EXPECT_EQ(none.buffer_size(), 1);
}

TEST(ixo_string, insert_left_right)
{
    ixo_string s(IXO_TEXT("abcd"));
    EXPECT_EQ(s.insert(IXO_TEXT("XY"), 1), 6);
    EXPECT_TRUE(holds(s, IXO_TEXT("aXYbcd"), 7));
    ixo_string z(IXO_TEXT("abc"));
    EXPECT_EQ(z.insert(u'Z', 0), 4);
    EXPECT_EQ(z, IXO_TEXT("Zabc"));
    EXPECT_EQ(z.insert(u'!', z.length()), 5);
    EXPECT_EQ(z, IXO_TEXT("Zabc!"));
    // Inserting into spare room keeps the buffer.
    ixo_string r(IXO_TEXT("ad"));
    r.resize(6);
    r.insert(IXO_TEXT("bc"), 1);
    EXPECT_TRUE(holds(r, IXO_TEXT("abcd"), 7));
    r.insert(r, 2);
    EXPECT_EQ(r, IXO_TEXT("ababcdcd"));

    ixo_string const hello(IXO_TEXT("hello"));
    EXPECT_EQ(hello.left(2), IXO_TEXT("he"));
    EXPECT_EQ(hello.right(3), IXO_TEXT("llo"));
    EXPECT_EQ(hello.left(10), IXO_TEXT("hello"));
    EXPECT_EQ(hello.right(10), IXO_TEXT("hello"));
    EXPECT_EQ(hello.left(0).length(), 0);
    EXPECT_EQ(hello.right(-1).length(), 0);
    EXPECT_EQ(hello, IXO_TEXT("hello"));
}

TEST(ixo_string, search)
{
    ixo_string const hello(IXO_TEXT("hello"));
    EXPECT_EQ(hello.find(IXO_TEXT("lo"), 0), 3);
    EXPECT_EQ(hello.find(IXO_TEXT("l"), 3), 3);
    EXPECT_EQ(hello.find(IXO_TEXT("he"), 1), -1);
    EXPECT_EQ(hello.find(u'z', 0), -1);
    EXPECT_EQ(hello.find(u'l', 0), 2);
    EXPECT_EQ(hello.find(u'l', 4), -1);
    EXPECT_EQ(hello.reverse_find(u'l', 0), 3);
    EXPECT_EQ(hello.reverse_find(u'h', 4), 0);
    EXPECT_EQ(hello.find(u'h', 9), -1);
    EXPECT_EQ(hello.find(IXO_TEXT(""), 5), 5);
    EXPECT_EQ(ixo_string().find(u'a', 0), -1);
    EXPECT_EQ(ixo_string().reverse_find(u'a', 0), -1);

    ixo_string path(IXO_TEXT("C:\\bin\\host.exe"));
    path[path.reverse_find(u'\\', 0)] = 0;
    EXPECT_EQ(path.length(), 6);
    EXPECT_EQ(path, IXO_TEXT("C:\\bin"));
}

TEST(ixo_string, comparison_orders)
{
    ixo_string const a(IXO_TEXT("a"));
    ixo_string const B(IXO_TEXT("B"));
    EXPECT_EQ(a.compare(B), 1);
    EXPECT_EQ(B.compare(a), -1);
    EXPECT_LT(a.compare_no_case(B), 0);
    EXPECT_TRUE(B < a);
    EXPECT_TRUE(a >= B);
    EXPECT_TRUE(a != B);
    EXPECT_EQ(ixo_string(IXO_TEXT("ROTOR")).compare_no_case(ixo_string(IXO_TEXT("rotor"))), 0);
    // Code units compare unsigned: a surrogate sorts above U+E000 in UTF-16 order.
    EXPECT_EQ(ixo_string(u"\xD83D\xDE00").compare(ixo_string(u"\uE000")), -1);
    EXPECT_EQ(ixo_string(u"\uFFFF").compare(ixo_string(u"a")), 1);
    EXPECT_EQ(ixo_string(IXO_TEXT("ab")).compare(ixo_string(IXO_TEXT("abc"))), -1);

    // Against literals, from either side.
    EXPECT_TRUE(a == IXO_TEXT("a"));
    EXPECT_TRUE(IXO_TEXT("B") != a);
    EXPECT_TRUE(B < IXO_TEXT("a"));
    EXPECT_TRUE(IXO_TEXT("a") > B);
    EXPECT_TRUE(ixo_string() == static_cast<ixo_wchar const*>(nullptr));
    EXPECT_TRUE(ixo_string() <= IXO_TEXT(""));

    std::set<ixo_string> names{ixo_string(IXO_TEXT("b")), ixo_string(IXO_TEXT("a")),
                               ixo_string(IXO_TEXT("B"))};
    EXPECT_EQ(*names.begin(), IXO_TEXT("B"));
    std::unordered_set<ixo_string> hashed{ixo_string(IXO_TEXT("x")), ixo_string("x")};
    EXPECT_EQ(hashed.size(), 1u);
}

TEST(ixo_string, format_sizes_exactly)
{
    ixo_string s;
    EXPECT_TRUE(s.format(IXO_TEXT("%d-%s"), 7, IXO_TEXT("x")));
    EXPECT_TRUE(holds(s, IXO_TEXT("7-x"), 4));

    EXPECT_TRUE(s.format(IXO_TEXT("%S|%5.2f|%-4d|%x"), "narrow", 3.14159, 42, 255u));
    EXPECT_EQ(s, IXO_TEXT("narrow| 3.14|42  |ff"));
    EXPECT_EQ(s.buffer_size(), s.length() + 1);

    // ixo_string arguments are passed as their text.
    ixo_string const name(IXO_TEXT("rotor"));
    EXPECT_TRUE(s.format(IXO_TEXT("[%s:%c]"), name, u'R'));
    EXPECT_EQ(s, IXO_TEXT("[rotor:R]"));

    // The format may be the string's own text.
    ixo_string self(IXO_TEXT("<%d>"));
    EXPECT_TRUE(self.format(self, 5));
    EXPECT_EQ(self, IXO_TEXT("<5>"));

    // A rejected format leaves the string unchanged.
    EXPECT_FALSE(s.format(IXO_TEXT("%d %n"), 1, nullptr));
    EXPECT_FALSE(s.format(IXO_TEXT("100%")));
    EXPECT_FALSE(s.format(nullptr));
    EXPECT_TRUE(holds(s, IXO_TEXT("[rotor:R]"), 10));
}

TEST(ixo_string, case_and_reverse)
{
    ixo_string s(IXO_TEXT("Rotor_7b"));
    s.make_upper();
    EXPECT_EQ(s, IXO_TEXT("ROTOR_7B"));
    s.make_lower();
    EXPECT_EQ(s, IXO_TEXT("rotor_7b"));
    s.reverse();
    EXPECT_EQ(s, IXO_TEXT("b7_rotor"));
    ixo_string none;
    none.make_upper();
    none.make_lower();
    none.reverse();
    EXPECT_EQ(none.buffer_size(), 0);
}

TEST(ixo_string, numeric_conversions)
{
    auto s = [](ixo_wchar const* text) { return ixo_string(text); };
    // Whitespace, then the longest number; no digits give 0; out of range keeps the value.
    EXPECT_EQ(convert(ixo_string(), -1), std::pair(false, -1));
    EXPECT_EQ(convert(s(IXO_TEXT("  42xyz")), -1), std::pair(true, 42));
    EXPECT_EQ(convert(s(IXO_TEXT("abc")), -1), std::pair(true, 0));
    EXPECT_EQ(convert(s(IXO_TEXT("   ")), 5), std::pair(true, 0));
    EXPECT_EQ(convert(s(IXO_TEXT("99999999999")), 5), std::pair(false, 5));
    EXPECT_EQ(convert(s(IXO_TEXT("-2147483649")), 5).first, false);
    EXPECT_EQ(convert(s(IXO_TEXT("-2147483648")), 5), std::pair(true, INT_MIN));
    // Unsigned takes the magnitude.
    EXPECT_EQ(convert(s(IXO_TEXT("-7")), 0u), std::pair(true, 7u));
    EXPECT_EQ(convert(s(IXO_TEXT("-2147483648")), 0u), std::pair(true, 2147483648u));
    // Doubles parse in double precision, floats in float.
    EXPECT_EQ(convert(s(IXO_TEXT("0.1")), 0.0), std::pair(true, 0.1));
    EXPECT_EQ(convert(s(IXO_TEXT(" -2.5e3mm")), 0.0), std::pair(true, -2500.0));
    EXPECT_EQ(convert(s(IXO_TEXT("1e400")), 7.0), std::pair(false, 7.0));
    EXPECT_EQ(convert(ixo_string(), 7.0), std::pair(false, 7.0));
    EXPECT_EQ(convert(s(IXO_TEXT("0.1")), 0.0f), std::pair(true, 0.1f));
    EXPECT_EQ(convert(s(IXO_TEXT("x")), 1.0f), std::pair(true, 0.0f));
}
