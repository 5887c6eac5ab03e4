#pragma once
// ixo_string: the library's text value, UTF-16 code units with a terminating zero in one
// exactly sized heap buffer that the string owns.
//
// Every length and index counts 16-bit code units. A string may own no buffer at all (the
// default); it then behaves as the empty string everywhere, except that its numeric
// conversions fail and its buffer pointer is null. No operation keeps spare room: each
// growing operation reallocates to exactly the size it needs, allocating the new buffer
// before releasing the old one, so an allocation failure (std::bad_alloc) leaves the
// former content in place.
//
// Narrow text is converted under the current C locale (hosts should run a UTF-8 locale;
// in a single-byte locale such as "C" each byte maps to the code unit of the same value).
// wchar_t text is UTF-32 on Linux and becomes UTF-16 with surrogate pairs.

#include <ixocore/core/api.h>
#include <ixocore/core/wchar.h>

#include <compare>
#include <cstdarg>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>

class IXO_API ixo_string
{
public:
    // The empty string without buffer.
    ixo_string() noexcept = default;
    ixo_string(std::nullptr_t) noexcept {}
    // Copies the text; a null pointer gives the empty string without buffer.
    ixo_string(ixo_wchar const* text);
    // UTF-32 text, stored as UTF-16 (code points outside Unicode become U+FFFD).
    ixo_string(wchar_t const* text);
    // Narrow text in the current locale's multibyte encoding. Text that does not convert
    // gives the empty string without buffer.
    ixo_string(char const* text);
    ixo_string(ixo_string const& other);
    ixo_string(ixo_string&& other) noexcept;
    ~ixo_string();

    ixo_string& operator=(ixo_string const& other);
    ixo_string& operator=(ixo_string&& other) noexcept;
    ixo_string& operator=(ixo_wchar const* text);
    ixo_string& operator=(wchar_t const* text);
    ixo_string& operator=(char const* text);
    ixo_string& operator=(std::nullptr_t) noexcept;

    // The buffer is sized to the new text plus the terminator; a null pointer (or a source
    // without buffer) leaves no buffer. Assigning a string to itself changes nothing.
    void assign(ixo_string const& other);
    void assign(ixo_wchar const* text);
    void assign(wchar_t const* text);
    void assign(char const* text);

    // Narrow text in UTF-8, whatever the locale; malformed bytes become U+FFFD.
    static ixo_string from_utf8(std::string_view text);

    // Releases the buffer: no buffer, size 0.
    void erase() noexcept;

    // The buffer itself (null without buffer). Callers may write into it within
    // buffer_size() code units and must keep a terminator inside.
    operator ixo_wchar const*() const noexcept { return buffer_; }
    operator ixo_wchar*() noexcept { return buffer_; }
    // Never null: the buffer, or a static empty text when there is no buffer.
    ixo_wchar const* c_str() const noexcept;
    // The text without terminator.
    std::basic_string_view<ixo_wchar> view() const noexcept;

    // Code unit i; i must lie in [0, length()).
    ixo_wchar operator[](int i) const noexcept { return buffer_[i]; }
    ixo_wchar& operator[](int i) noexcept { return buffer_[i]; }

    // Code units before the terminator (0 without buffer). O(length).
    int length() const noexcept;
    // Code units the buffer holds, terminator included; 0 without buffer.
    int buffer_size() const noexcept { return size_; }
    bool is_empty() const noexcept { return length() == 0; }

    // Replaces the buffer with one of n + 1 code units holding the first min(n, length())
    // code units of the old text and a terminator. Grows or truncates; negative n counts
    // as 0.
    void resize(int n);

    // -1, 0 or +1, comparing code units as unsigned 16-bit numbers.
    int compare(ixo_string const& other) const noexcept;
    // Case-insensitive order of the C runtime (_wcsicmp): negative, zero or positive.
    int compare_no_case(ixo_string const& other) const noexcept;

    bool operator==(ixo_string const& other) const noexcept { return compare(other) == 0; }
    bool operator!=(ixo_string const& other) const noexcept { return compare(other) != 0; }
    bool operator<(ixo_string const& other) const noexcept { return compare(other) < 0; }
    bool operator>(ixo_string const& other) const noexcept { return compare(other) > 0; }
    bool operator<=(ixo_string const& other) const noexcept { return compare(other) <= 0; }
    bool operator>=(ixo_string const& other) const noexcept { return compare(other) >= 0; }
    // Against a literal (null counts as empty): avoids building a temporary string.
    bool operator==(ixo_wchar const* text) const noexcept;
    bool operator!=(ixo_wchar const* text) const noexcept { return !(*this == text); }
    std::strong_ordering operator<=>(ixo_wchar const* text) const noexcept;

    // Index of the first occurrence of s (or c) at or after `start`, or -1. An empty s is
    // found at `start`. A start outside [0, length()] finds nothing; c = 0 is never found.
    int find(ixo_string const& s, int start = 0) const noexcept;
    int find(ixo_wchar c, int start = 0) const noexcept;
    // Index of the last occurrence of c in the whole string, or -1. The integer is accepted
    // for compatibility and ignored.
    int reverse_find(ixo_wchar c, int unused = 0) const noexcept;

    // Concatenates; grows to exactly the combined length when the buffer is too small.
    // Returns the new length.
    int append(ixo_string const& s);
    int append(ixo_wchar c);
    ixo_string& operator+=(ixo_string const& s)
    {
        append(s);
        return *this;
    }
    // A copy of this string with s appended.
    ixo_string operator+(ixo_string const& s) const;

    // Puts s (or c) in front, always into a new buffer of exactly the needed size.
    // Returns the new length.
    int prepend(ixo_string const& s);
    int prepend(ixo_wchar c);

    // The first `pos` code units, then s (or c), then the rest; `pos` is clamped into
    // [0, length()]. Returns the new length.
    int insert(ixo_string const& s, int pos);
    int insert(ixo_wchar c, int pos);

    // The first (last) n code units as a new string; the whole string when n exceeds the
    // length, the empty string for n <= 0.
    ixo_string left(int n) const;
    ixo_string right(int n) const;

    // Replaces the content with the wide printf formatting of the arguments, with the C
    // runtime's wide rules: %s and %c take ixo_wchar text and characters, %S and %C narrow
    // ones, %ls/%ws wide and %hs narrow. The buffer is sized to the exact result. Returns
    // false and leaves the string unchanged when the format is rejected (unknown
    // conversion, %n, a dangling %). An ixo_string argument is passed as its text; other
    // class types are refused at compile time.
    template <typename... Args> bool format(ixo_wchar const* fmt, Args const&... args)
    {
        return format_args(fmt, pass(args)...);
    }

    // In-place case mapping under the current locale; nothing without buffer.
    void make_upper() noexcept;
    void make_lower() noexcept;
    // Reverses the code units in place; nothing without buffer.
    void reverse() noexcept;

    // Leading number after optional white space; trailing text is ignored, and text that
    // does not start with a number gives 0. False (output untouched) without buffer or on
    // a range error. The unsigned form gives the absolute value of the signed result.
    bool convert(int& out) const noexcept;
    bool convert(unsigned int& out) const noexcept;
    bool convert(float& out) const noexcept;
    bool convert(double& out) const noexcept;

    // Writes the text to `out` (capacity `size` bytes, terminator included) in the current
    // locale's multibyte encoding, truncating at a character boundary when it does not fit.
    // Does nothing for size <= 0 or a null `out`. Returns false when the text was truncated
    // or does not convert (out is then the converted prefix or empty).
    bool to_single_byte(int size, char* out) const noexcept;
    // The text in UTF-8, whatever the locale; unpaired surrogates become U+FFFD.
    std::string to_utf8() const;

private:
    static ixo_wchar const* pass(ixo_string const& s) noexcept { return s.c_str(); }
    template <typename T> static T const& pass(T const& value) noexcept
    {
        static_assert(std::is_scalar_v<std::decay_t<T>>,
                      "format takes numbers, pointers, characters and ixo_string");
        return value;
    }
    bool format_args(ixo_wchar const* fmt, ...);
    bool format_list(ixo_wchar const* fmt, va_list args);
    // Takes ownership of a buffer of `size` code units (or none).
    void adopt(ixo_wchar* buffer, int size) noexcept;
    void assign_units(ixo_wchar const* text, int length);

    ixo_wchar* buffer_ = nullptr;
    int size_ = 0;
};

template <> struct std::hash<ixo_string>
{
    std::size_t operator()(ixo_string const& s) const noexcept
    {
        return std::hash<std::basic_string_view<ixo_wchar>>{}(s.view());
    }
};
