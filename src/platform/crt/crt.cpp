// The C runtime's wide functions over ixo_wchar with the Microsoft runtime's behaviour.
// Conversions go through the C library's locale-aware multibyte functions; formatting parses
// each % directive itself and hands numbers to the narrow snprintf.

#include <ixocore/platform/crt.h>

#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <string>

namespace
{

bool is_surrogate(char32_t c)
{
    return c >= 0xD800 && c <= 0xDFFF;
}

bool is_space(ixo_wchar c)
{
    if (c == u' ' || (c >= 9 && c <= 13))
        return true;
    return c >= 0x80 && !is_surrogate(c) && std::iswspace(static_cast<wint_t>(c));
}

ixo_wchar to_lower(ixo_wchar c)
{
    if (c < 0x80)
        return (c >= u'A' && c <= u'Z') ? static_cast<ixo_wchar>(c + 32) : c;
    if (is_surrogate(c))
        return c;
    wint_t const m = std::towlower(static_cast<wint_t>(c));
    return m <= 0xFFFF ? static_cast<ixo_wchar>(m) : c;
}

ixo_wchar to_upper(ixo_wchar c)
{
    if (c < 0x80)
        return (c >= u'a' && c <= u'z') ? static_cast<ixo_wchar>(c - 32) : c;
    if (is_surrogate(c))
        return c;
    wint_t const m = std::towupper(static_cast<wint_t>(c));
    return m <= 0xFFFF ? static_cast<ixo_wchar>(m) : c;
}

// Decimal digit value of an ASCII or full-width digit, or -1.
int digit_value(ixo_wchar c)
{
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= 0xFF10 && c <= 0xFF19)
        return c - 0xFF10;
    return -1;
}

// In a single-byte locale the Microsoft runtime maps every byte to the code point of the
// same value; glibc's "C" locale rejects bytes above 0x7F, so those are mapped here.
bool single_byte_locale()
{
    return MB_CUR_MAX == 1;
}

// Decodes the next multibyte character of [p, end). Returns the bytes consumed (0 at a
// terminating zero) or -1 for an invalid or incomplete sequence.
long decode_multibyte(char const* p, char const* end, std::mbstate_t& state, char32_t& out)
{
    wchar_t wc = 0;
    std::size_t const r = std::mbrtowc(&wc, p, static_cast<std::size_t>(end - p), &state);
    if (r == static_cast<std::size_t>(-1) || r == static_cast<std::size_t>(-2))
    {
        if (!single_byte_locale())
            return -1;
        state = std::mbstate_t{};
        out = static_cast<unsigned char>(*p);
        return 1;
    }
    out = static_cast<char32_t>(wc);
    if (out > 0x10FFFF || is_surrogate(out))
        return -1;
    return static_cast<long>(r);
}

// Encodes one code point in the current locale into `out` (MB_LEN_MAX bytes). Returns the
// byte count or -1 when the locale cannot encode it.
long encode_multibyte(char32_t c, char* out, std::mbstate_t& state)
{
    std::size_t const r = std::wcrtomb(out, static_cast<wchar_t>(c), &state);
    if (r != static_cast<std::size_t>(-1))
        return static_cast<long>(r);
    if (single_byte_locale() && c <= 0xFF)
    {
        state = std::mbstate_t{};
        out[0] = static_cast<char>(c);
        return 1;
    }
    return -1;
}

// Shared body of mbstowcs_s and wcstombs_s: validates the arguments, runs `convert(limit)`
// (which returns {units written, complete} or {-1, ...} for an invalid sequence) and
// applies the Microsoft size rules.
template <typename Unit, typename Convert>
errno_t convert_s(std::size_t* converted, Unit* out, std::size_t size, void const* text,
                  std::size_t count, Convert convert)
{
    if ((out == nullptr) != (size == 0))
    {
        errno = EINVAL;
        return EINVAL;
    }
    if (out)
        out[0] = 0;
    if (converted)
        *converted = 0;
    if (!text)
    {
        errno = EINVAL;
        return EINVAL;
    }
    std::size_t limit = SIZE_MAX; // query mode: count everything
    if (out)
        limit = count == _TRUNCATE ? size - 1 : (count < size ? count : size);
    auto const [units, complete] = convert(limit);
    if (units < 0)
    {
        if (out)
            out[0] = 0;
        errno = EILSEQ;
        return EILSEQ;
    }
    std::size_t n = static_cast<std::size_t>(units);
    errno_t result = 0;
    if (out)
    {
        if (count == _TRUNCATE)
        {
            if (!complete)
                result = STRUNCATE;
        }
        else if (n >= size || (!complete && count >= size))
        {
            out[0] = 0;
            errno = ERANGE;
            return ERANGE;
        }
        out[n] = 0;
    }
    if (converted)
        *converted = n + 1;
    return result;
}

struct convert_result
{
    long long units;
    bool complete;
};

// ---------------------------------------------------------------------------------------
// Formatting

// Collects formatted output: writes into the caller's buffer while it has room (one unit
// is kept for the terminator) and counts everything.
class sink
{
public:
    sink(ixo_wchar* buffer, std::size_t capacity) : buffer_(buffer), capacity_(capacity) {}

    // Appends n copies of c; what does not fit is counted only.
    void put(ixo_wchar c, std::size_t n = 1)
    {
        std::size_t const room = capacity_ > total_ + 1 ? capacity_ - total_ - 1 : 0;
        for (std::size_t i = 0; i < n && i < room; ++i)
            buffer_[total_ + i] = c;
        skip(n);
    }
    void put_ascii(char const* s, std::size_t n)
    {
        for (std::size_t i = 0; i < n; ++i)
            put(static_cast<unsigned char>(s[i]));
    }
    // True when n more units can still be written.
    bool fits(std::size_t n) const { return total_ < capacity_ && n < capacity_ - total_; }
    // Counts n units without writing them.
    void skip(std::size_t n) { total_ = n > SIZE_MAX - total_ ? SIZE_MAX : total_ + n; }
    std::size_t total() const { return total_; }

private:
    ixo_wchar* buffer_;
    std::size_t capacity_;
    std::size_t total_ = 0;
};

enum class length_modifier
{
    none,
    hh,
    h,
    l,
    ll,
    L,
    j,
    z,
    t,
    w,
    i32,
    i64,
    i_ptr,
};

struct directive
{
    bool left = false, plus = false, space = false, alternate = false, zero = false;
    int width = 0;
    int precision = -1;
    length_modifier length = length_modifier::none;
    ixo_wchar conversion = 0;
};

// Pads a text field of `n` units to the width: spaces before it, or zeros before it when
// the 0 flag is given (the Microsoft runtime pads text with zeros too), or spaces after it.
template <typename Body> void put_padded(sink& out, directive const& s, std::size_t n, Body body)
{
    std::size_t const pad = s.width > 0 && static_cast<std::size_t>(s.width) > n ? s.width - n : 0;
    if (!s.left)
        out.put(s.zero ? u'0' : u' ', pad);
    body();
    if (s.left)
        out.put(u' ', pad);
}

void put_wide_text(sink& out, directive const& s, ixo_wchar const* text)
{
    static constexpr ixo_wchar null_text[] = u"(null)";
    if (!text)
        text = null_text;
    std::size_t n = 0;
    std::size_t const max = s.precision >= 0 ? static_cast<std::size_t>(s.precision) : SIZE_MAX;
    while (n < max && text[n])
        ++n;
    put_padded(out, s, n,
               [&]
               {
                   for (std::size_t i = 0; i < n; ++i)
                       out.put(text[i]);
               });
}

// Narrow text in a wide format is converted under the current locale; the precision counts
// bytes of the narrow text. Text that does not convert produces an empty field.
void put_narrow_text(sink& out, directive const& s, char const* text)
{
    if (!text)
        text = "(null)";
    std::size_t bytes = 0;
    std::size_t const max = s.precision >= 0 ? static_cast<std::size_t>(s.precision) : SIZE_MAX;
    while (bytes < max && text[bytes])
        ++bytes;
    std::u32string points;
    std::mbstate_t state{};
    std::size_t units = 0;
    for (char const *p = text, *end = text + bytes; p < end;)
    {
        char32_t c = 0;
        long const r = decode_multibyte(p, end, state, c);
        if (r <= 0)
        {
            points.clear();
            units = 0;
            break;
        }
        points.push_back(c);
        units += c >= 0x10000 ? 2 : 1;
        p += r;
    }
    put_padded(out, s, units,
               [&]
               {
                   for (char32_t c : points)
                   {
                       if (c >= 0x10000)
                       {
                           out.put(static_cast<ixo_wchar>(0xD800 + ((c - 0x10000) >> 10)));
                           out.put(static_cast<ixo_wchar>(0xDC00 + ((c - 0x10000) & 0x3FF)));
                       }
                       else
                           out.put(static_cast<ixo_wchar>(c));
                   }
               });
}

// Formats one number with the narrow snprintf. `conv` is the narrow conversion with its
// length modifier ("lld", "Lf", ...). Returns false when snprintf fails.
template <typename T>
bool put_number(sink& out, directive const& s, char const* conv, T value, int precision)
{
    char fmt[32];
    char* f = fmt;
    *f++ = '%';
    if (s.left)
        *f++ = '-';
    if (s.plus)
        *f++ = '+';
    if (s.space)
        *f++ = ' ';
    if (s.alternate)
        *f++ = '#';
    if (s.zero)
        *f++ = '0';
    *f = 0;
    std::strcat(fmt, "*.*");
    std::strcat(fmt, conv);
    int const n = std::snprintf(nullptr, 0, fmt, s.width, precision, value);
    if (n < 0)
        return false;
    if (!out.fits(static_cast<std::size_t>(n)))
    {
        out.skip(static_cast<std::size_t>(n));
        return true;
    }
    std::string text(static_cast<std::size_t>(n), '\0');
    std::snprintf(text.data(), text.size() + 1, fmt, s.width, precision, value);
    out.put_ascii(text.data(), text.size());
    return true;
}

// Parses a decimal field (width or precision). Returns false on overflow.
bool parse_count(ixo_wchar const*& p, int& value)
{
    long long v = 0;
    while (*p >= u'0' && *p <= u'9')
    {
        v = v * 10 + (*p++ - u'0');
        if (v > INT_MAX)
            return false;
    }
    value = static_cast<int>(v);
    return true;
}

// Formats `format` into `out`. Returns false for an invalid format.
bool format_into(sink& out, ixo_wchar const* format, va_list args)
{
    for (ixo_wchar const* p = format; *p;)
    {
        if (*p != u'%')
        {
            out.put(*p++);
            continue;
        }
        ++p;
        if (*p == u'%')
        {
            out.put(*p++);
            continue;
        }
        directive s;
        for (;; ++p)
        {
            if (*p == u'-')
                s.left = true;
            else if (*p == u'+')
                s.plus = true;
            else if (*p == u' ')
                s.space = true;
            else if (*p == u'#')
                s.alternate = true;
            else if (*p == u'0')
                s.zero = true;
            else
                break;
        }
        if (*p == u'*')
        {
            ++p;
            s.width = va_arg(args, int);
            if (s.width < 0)
            {
                s.left = true;
                s.width = s.width == INT_MIN ? INT_MAX : -s.width;
            }
        }
        else if (!parse_count(p, s.width))
            return false;
        if (*p == u'.')
        {
            ++p;
            if (*p == u'*')
            {
                ++p;
                s.precision = va_arg(args, int);
                if (s.precision < 0)
                    s.precision = -1;
            }
            else if (!parse_count(p, s.precision))
                return false;
        }
        switch (*p)
        {
        case u'h':
            ++p;
            s.length = *p == u'h' ? (++p, length_modifier::hh) : length_modifier::h;
            break;
        case u'l':
            ++p;
            s.length = *p == u'l' ? (++p, length_modifier::ll) : length_modifier::l;
            break;
        case u'L':
            ++p;
            s.length = length_modifier::L;
            break;
        case u'j':
            ++p;
            s.length = length_modifier::j;
            break;
        case u'z':
            ++p;
            s.length = length_modifier::z;
            break;
        case u't':
            ++p;
            s.length = length_modifier::t;
            break;
        case u'w':
            ++p;
            s.length = length_modifier::w;
            break;
        case u'I':
            ++p;
            if (p[0] == u'6' && p[1] == u'4')
                p += 2, s.length = length_modifier::i64;
            else if (p[0] == u'3' && p[1] == u'2')
                p += 2, s.length = length_modifier::i32;
            else
                s.length = length_modifier::i_ptr;
            break;
        default:
            break;
        }
        s.conversion = *p;
        if (!s.conversion)
            return false;
        ++p;

        bool const wide_default = s.conversion == u's' || s.conversion == u'c';
        bool const wide = s.length == length_modifier::l || s.length == length_modifier::w ||
                          (wide_default && s.length != length_modifier::h);
        switch (s.conversion)
        {
        case u'c':
        case u'C':
        {
            int const v = va_arg(args, int);
            if (wide)
            {
                ixo_wchar const c = static_cast<ixo_wchar>(v);
                put_padded(out, s, 1, [&] { out.put(c); });
            }
            else
            {
                char const text[2] = {static_cast<char>(v), 0};
                directive t = s;
                t.precision = -1;
                if (text[0] == 0)
                    put_padded(out, s, 1, [&] { out.put(0); });
                else
                    put_narrow_text(out, t, text);
            }
            break;
        }
        case u's':
        case u'S':
            if (wide)
                put_wide_text(out, s, va_arg(args, ixo_wchar const*));
            else
                put_narrow_text(out, s, va_arg(args, char const*));
            break;
        case u'd':
        case u'i':
        {
            long long v = 0;
            switch (s.length)
            {
            case length_modifier::hh:
                v = static_cast<signed char>(va_arg(args, int));
                break;
            case length_modifier::h:
                v = static_cast<short>(va_arg(args, int));
                break;
            case length_modifier::l:
                v = va_arg(args, long);
                break;
            case length_modifier::ll:
            case length_modifier::L:
            case length_modifier::i64:
                v = va_arg(args, long long);
                break;
            case length_modifier::j:
                v = va_arg(args, intmax_t);
                break;
            case length_modifier::z:
            case length_modifier::t:
            case length_modifier::i_ptr:
                v = va_arg(args, std::ptrdiff_t);
                break;
            default:
                v = va_arg(args, int);
                break;
            }
            if (!put_number(out, s, "lld", v, s.precision))
                return false;
            break;
        }
        case u'u':
        case u'o':
        case u'x':
        case u'X':
        {
            unsigned long long v = 0;
            switch (s.length)
            {
            case length_modifier::hh:
                v = static_cast<unsigned char>(va_arg(args, unsigned));
                break;
            case length_modifier::h:
                v = static_cast<unsigned short>(va_arg(args, unsigned));
                break;
            case length_modifier::l:
                v = va_arg(args, unsigned long);
                break;
            case length_modifier::ll:
            case length_modifier::L:
            case length_modifier::i64:
                v = va_arg(args, unsigned long long);
                break;
            case length_modifier::j:
                v = va_arg(args, uintmax_t);
                break;
            case length_modifier::z:
            case length_modifier::t:
            case length_modifier::i_ptr:
                v = va_arg(args, std::size_t);
                break;
            default:
                v = va_arg(args, unsigned);
                break;
            }
            char conv[4] = {'l', 'l', static_cast<char>(s.conversion), 0};
            if (!put_number(out, s, conv, v, s.precision))
                return false;
            break;
        }
        case u'e':
        case u'E':
        case u'f':
        case u'F':
        case u'g':
        case u'G':
        case u'a':
        case u'A':
        {
            // Without a precision %a shows every hexadecimal digit of a double.
            int precision = s.precision;
            if (precision < 0)
                precision = (s.conversion == u'a' || s.conversion == u'A') ? 13 : 6;
            if (s.length == length_modifier::L)
            {
                char conv[3] = {'L', static_cast<char>(s.conversion), 0};
                if (!put_number(out, s, conv, va_arg(args, long double), precision))
                    return false;
            }
            else
            {
                char conv[2] = {static_cast<char>(s.conversion), 0};
                if (!put_number(out, s, conv, va_arg(args, double), precision))
                    return false;
            }
            break;
        }
        case u'p':
        {
            // Pointers print as 2 * sizeof(void*) upper-case hexadecimal digits, no prefix.
            directive t = s;
            t.alternate = false;
            auto const v = reinterpret_cast<std::uintptr_t>(va_arg(args, void*));
            if (!put_number(out, t, "llX", static_cast<unsigned long long>(v),
                            static_cast<int>(2 * sizeof(void*))))
                return false;
            break;
        }
        default:
            // %n is disabled in the Microsoft runtime; anything else is not a conversion.
            return false;
        }
    }
    return true;
}

// Formats with the given capacity (0: count only). Returns the length or -1.
long long format_checked(ixo_wchar* buffer, std::size_t capacity, ixo_wchar const* format,
                         va_list args)
{
    sink out(buffer, capacity);
    va_list copy;
    va_copy(copy, args);
    bool const ok = format_into(out, format, copy);
    va_end(copy);
    if (!ok)
    {
        errno = EINVAL;
        return -1;
    }
    if (out.total() > static_cast<std::size_t>(INT_MAX))
    {
        errno = ERANGE;
        return -1;
    }
    return static_cast<long long>(out.total());
}

} // namespace

int _wtoi(ixo_wchar const* text)
{
    if (!text)
    {
        errno = EINVAL;
        return 0;
    }
    ixo_wchar const* p = text;
    while (is_space(*p))
        ++p;
    bool negative = false;
    if (*p == u'+' || *p == u'-')
        negative = *p++ == u'-';
    unsigned long long const limit = negative ? 2147483648ull : 2147483647ull;
    unsigned long long value = 0;
    bool overflow = false;
    for (int d; (d = digit_value(*p)) >= 0; ++p)
    {
        if (!overflow)
        {
            value = value * 10 + static_cast<unsigned>(d);
            overflow = value > limit;
        }
    }
    if (overflow)
    {
        errno = ERANGE;
        return negative ? INT_MIN : INT_MAX;
    }
    return negative ? static_cast<int>(0 - value) : static_cast<int>(value);
}

double _wtof(ixo_wchar const* text)
{
    if (!text)
    {
        errno = EINVAL;
        return 0.0;
    }
    ixo_wchar const* p = text;
    while (is_space(*p))
        ++p;
    // A number is ASCII (the locale's decimal point included), so the narrow strtod reads it
    // from the ASCII prefix of the text.
    std::string narrow;
    while (*p && *p < 0x80)
        narrow.push_back(static_cast<char>(*p++));
    int const saved = errno;
    errno = 0;
    double const value = std::strtod(narrow.c_str(), nullptr);
    if (errno != ERANGE)
        errno = saved;
    return value;
}

int _wcsicmp(ixo_wchar const* a, ixo_wchar const* b)
{
    if (!a || !b)
    {
        errno = EINVAL;
        return INT_MAX;
    }
    for (;; ++a, ++b)
    {
        int const ca = to_lower(*a);
        int const cb = to_lower(*b);
        if (ca != cb || ca == 0)
            return ca - cb;
    }
}

int _vscwprintf(ixo_wchar const* format, va_list args)
{
    if (!format)
    {
        errno = EINVAL;
        return -1;
    }
    return static_cast<int>(format_checked(nullptr, 0, format, args));
}

int _scwprintf(ixo_wchar const* format, ...)
{
    va_list args;
    va_start(args, format);
    int const n = _vscwprintf(format, args);
    va_end(args);
    return n;
}

int vswprintf_s(ixo_wchar* buffer, std::size_t size, ixo_wchar const* format, va_list args)
{
    if (!buffer || size == 0 || !format)
    {
        if (buffer && size > 0)
            buffer[0] = 0;
        errno = EINVAL;
        return -1;
    }
    long long const n = format_checked(buffer, size, format, args);
    if (n < 0)
    {
        buffer[0] = 0;
        return -1;
    }
    if (static_cast<std::size_t>(n) >= size)
    {
        buffer[0] = 0;
        errno = ERANGE;
        return -1;
    }
    buffer[n] = 0;
    return static_cast<int>(n);
}

int swprintf_s(ixo_wchar* buffer, std::size_t size, ixo_wchar const* format, ...)
{
    va_list args;
    va_start(args, format);
    int const n = vswprintf_s(buffer, size, format, args);
    va_end(args);
    return n;
}

errno_t mbstowcs_s(std::size_t* converted, ixo_wchar* out, std::size_t size, char const* text,
                   std::size_t count)
{
    return convert_s(converted, out, size, text, count,
                     [&](std::size_t limit)
                     {
                         char const* p = text;
                         char const* const end = text + std::strlen(text);
                         std::mbstate_t state{};
                         std::size_t n = 0;
                         while (p < end)
                         {
                             char32_t c = 0;
                             long const r = decode_multibyte(p, end, state, c);
                             if (r < 0)
                                 return convert_result{-1, false};
                             if (r == 0)
                                 break;
                             std::size_t const units = c >= 0x10000 ? 2 : 1;
                             if (n + units > limit)
                                 return convert_result{static_cast<long long>(n), false};
                             if (out)
                             {
                                 if (units == 2)
                                 {
                                     out[n] =
                                         static_cast<ixo_wchar>(0xD800 + ((c - 0x10000) >> 10));
                                     out[n + 1] =
                                         static_cast<ixo_wchar>(0xDC00 + ((c - 0x10000) & 0x3FF));
                                 }
                                 else
                                     out[n] = static_cast<ixo_wchar>(c);
                             }
                             n += units;
                             p += r;
                         }
                         return convert_result{static_cast<long long>(n), true};
                     });
}

errno_t wcstombs_s(std::size_t* converted, char* out, std::size_t size, ixo_wchar const* text,
                   std::size_t count)
{
    return convert_s(converted, out, size, text, count,
                     [&](std::size_t limit)
                     {
                         std::mbstate_t state{};
                         std::size_t n = 0;
                         for (ixo_wchar const* p = text; *p;)
                         {
                             char32_t c = *p++;
                             if (c >= 0xD800 && c <= 0xDBFF && *p >= 0xDC00 && *p <= 0xDFFF)
                                 c = 0x10000 + ((c - 0xD800) << 10) + (*p++ - 0xDC00);
                             else if (is_surrogate(c))
                                 return convert_result{-1, false};
                             char bytes[MB_LEN_MAX];
                             long const r = encode_multibyte(c, bytes, state);
                             if (r < 0)
                                 return convert_result{-1, false};
                             if (n + static_cast<std::size_t>(r) > limit)
                                 return convert_result{static_cast<long long>(n), false};
                             if (out)
                                 std::memcpy(out + n, bytes, static_cast<std::size_t>(r));
                             n += static_cast<std::size_t>(r);
                         }
                         return convert_result{static_cast<long long>(n), true};
                     });
}

namespace
{
template <typename Map> errno_t map_case(ixo_wchar* text, std::size_t size, Map map)
{
    if (!text)
    {
        errno = EINVAL;
        return EINVAL;
    }
    std::size_t n = 0;
    while (n < size && text[n])
        ++n;
    if (n >= size)
    {
        if (size > 0)
            text[0] = 0;
        errno = EINVAL;
        return EINVAL;
    }
    for (std::size_t i = 0; i < n; ++i)
        text[i] = map(text[i]);
    return 0;
}
} // namespace

errno_t _wcsupr_s(ixo_wchar* text, std::size_t size)
{
    return map_case(text, size, to_upper);
}

errno_t _wcslwr_s(ixo_wchar* text, std::size_t size)
{
    return map_case(text, size, to_lower);
}

ixo_wchar* _wcsrev(ixo_wchar* text)
{
    if (!text)
        return nullptr;
    std::size_t n = 0;
    while (text[n])
        ++n;
    for (std::size_t i = 0, j = n; i + 1 < j; ++i, --j)
    {
        ixo_wchar const t = text[i];
        text[i] = text[j - 1];
        text[j - 1] = t;
    }
    return text;
}
