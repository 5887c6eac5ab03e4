#include <ixocore/core/string.h>
#include <ixocore/platform/crt.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <new>
#include <utility>

namespace
{

constexpr ixo_wchar empty_text[1] = {0};

// Code units of a zero-terminated text (0 for null).
int text_length(ixo_wchar const* text) noexcept
{
    if (!text)
        return 0;
    std::size_t n = 0;
    while (text[n])
        ++n;
    return n > static_cast<std::size_t>(INT_MAX - 1) ? INT_MAX - 1 : static_cast<int>(n);
}

// A buffer of n code units; sizes beyond int range are refused like a failed allocation.
ixo_wchar* allocate(long long n)
{
    if (n <= 0 || n > INT_MAX)
        throw std::bad_alloc();
    return new ixo_wchar[static_cast<std::size_t>(n)];
}

void copy_units(ixo_wchar* to, ixo_wchar const* from, int n) noexcept
{
    if (n > 0)
        std::memmove(to, from, static_cast<std::size_t>(n) * sizeof(ixo_wchar));
}

// -1, 0 or +1 in the order of the code units as unsigned numbers.
int compare_units(ixo_wchar const* a, ixo_wchar const* b) noexcept
{
    for (;; ++a, ++b)
    {
        if (*a != *b)
            return static_cast<unsigned>(*a) < static_cast<unsigned>(*b) ? -1 : 1;
        if (*a == 0)
            return 0;
    }
}

void push_utf16(std::basic_string<ixo_wchar>& out, char32_t c)
{
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
        c = 0xFFFD;
    if (c >= 0x10000)
    {
        out.push_back(static_cast<ixo_wchar>(0xD800 + ((c - 0x10000) >> 10)));
        out.push_back(static_cast<ixo_wchar>(0xDC00 + ((c - 0x10000) & 0x3FF)));
    }
    else
        out.push_back(static_cast<ixo_wchar>(c));
}

} // namespace

ixo_string::ixo_string(ixo_wchar const* text)
{
    assign(text);
}

ixo_string::ixo_string(wchar_t const* text)
{
    assign(text);
}

ixo_string::ixo_string(char const* text)
{
    assign(text);
}

ixo_string::ixo_string(ixo_string const& other)
{
    assign(other);
}

ixo_string::ixo_string(ixo_string&& other) noexcept
    : buffer_(std::exchange(other.buffer_, nullptr)), size_(std::exchange(other.size_, 0))
{
}

ixo_string::~ixo_string()
{
    erase();
}

ixo_string& ixo_string::operator=(ixo_string const& other)
{
    assign(other);
    return *this;
}

ixo_string& ixo_string::operator=(ixo_string&& other) noexcept
{
    if (this != &other)
    {
        adopt(std::exchange(other.buffer_, nullptr), other.size_);
        other.size_ = 0;
    }
    return *this;
}

ixo_string& ixo_string::operator=(ixo_wchar const* text)
{
    assign(text);
    return *this;
}

ixo_string& ixo_string::operator=(wchar_t const* text)
{
    assign(text);
    return *this;
}

ixo_string& ixo_string::operator=(char const* text)
{
    assign(text);
    return *this;
}

ixo_string& ixo_string::operator=(std::nullptr_t) noexcept
{
    erase();
    return *this;
}

void ixo_string::adopt(ixo_wchar* buffer, int size) noexcept
{
    delete[] buffer_;
    buffer_ = buffer;
    size_ = buffer ? size : 0;
}

void ixo_string::assign_units(ixo_wchar const* text, int length)
{
    ixo_wchar* buffer = allocate(static_cast<long long>(length) + 1);
    copy_units(buffer, text, length);
    buffer[length] = 0;
    adopt(buffer, length + 1);
}

void ixo_string::assign(ixo_string const& other)
{
    if (this == &other)
        return;
    if (!other.buffer_)
        erase();
    else
        assign_units(other.buffer_, other.length());
}

void ixo_string::assign(ixo_wchar const* text)
{
    // The new buffer is filled before the old one is released, so text may point into it.
    if (!text)
        erase();
    else
        assign_units(text, text_length(text));
}

void ixo_string::assign(wchar_t const* text)
{
    if (!text)
    {
        erase();
        return;
    }
    std::basic_string<ixo_wchar> units;
    for (; *text; ++text)
        push_utf16(units, static_cast<char32_t>(*text));
    assign_units(units.data(), static_cast<int>(std::min<std::size_t>(units.size(), INT_MAX - 1)));
}

void ixo_string::assign(char const* text)
{
    if (!text)
    {
        erase();
        return;
    }
    std::size_t needed = 0;
    if (mbstowcs_s(&needed, nullptr, 0, text, 0) != 0 || needed == 0 ||
        needed > static_cast<std::size_t>(INT_MAX))
    {
        erase();
        return;
    }
    ixo_wchar* buffer = allocate(static_cast<long long>(needed));
    std::size_t converted = 0;
    if (mbstowcs_s(&converted, buffer, needed, text, needed - 1) != 0)
    {
        delete[] buffer;
        erase();
        return;
    }
    adopt(buffer, static_cast<int>(needed));
}

ixo_string ixo_string::from_utf8(std::string_view text)
{
    std::basic_string<ixo_wchar> units;
    auto const* p = reinterpret_cast<unsigned char const*>(text.data());
    auto const* const end = p + text.size();
    while (p < end)
    {
        unsigned char const lead = *p++;
        if (lead < 0x80)
        {
            units.push_back(lead);
            continue;
        }
        int extra = lead >= 0xF0 && lead <= 0xF4 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC2 ? 1 : -1;
        if (lead > 0xF4)
            extra = -1;
        char32_t c = extra == 3 ? lead & 0x07 : extra == 2 ? lead & 0x0F : lead & 0x1F;
        bool valid = extra > 0;
        for (int i = 0; valid && i < extra; ++i)
        {
            if (p == end || (*p & 0xC0) != 0x80)
                valid = false;
            else
                c = (c << 6) | (*p++ & 0x3F);
        }
        // Overlong forms and surrogates are malformed.
        if (valid && ((extra == 2 && c < 0x800) || (extra == 3 && c < 0x10000)))
            valid = false;
        push_utf16(units, valid ? c : 0xFFFD);
    }
    ixo_string s;
    s.assign_units(units.data(),
                   static_cast<int>(std::min<std::size_t>(units.size(), INT_MAX - 1)));
    return s;
}

void ixo_string::erase() noexcept
{
    adopt(nullptr, 0);
}

ixo_wchar const* ixo_string::c_str() const noexcept
{
    return buffer_ ? buffer_ : empty_text;
}

std::basic_string_view<ixo_wchar> ixo_string::view() const noexcept
{
    return {c_str(), static_cast<std::size_t>(length())};
}

int ixo_string::length() const noexcept
{
    int n = 0;
    while (n < size_ && buffer_[n])
        ++n;
    return n < size_ ? n : 0;
}

void ixo_string::resize(int n)
{
    if (n < 0)
        n = 0;
    ixo_wchar* buffer = allocate(static_cast<long long>(n) + 1);
    int const keep = std::min(n, length());
    copy_units(buffer, buffer_, keep);
    buffer[keep] = 0;
    adopt(buffer, n + 1);
}

int ixo_string::compare(ixo_string const& other) const noexcept
{
    return compare_units(c_str(), other.c_str());
}

int ixo_string::compare_no_case(ixo_string const& other) const noexcept
{
    return _wcsicmp(c_str(), other.c_str());
}

bool ixo_string::operator==(ixo_wchar const* text) const noexcept
{
    return view() == std::basic_string_view<ixo_wchar>(text ? text : empty_text);
}

std::strong_ordering ixo_string::operator<=>(ixo_wchar const* text) const noexcept
{
    int const c = compare_units(c_str(), text ? text : empty_text);
    return c < 0   ? std::strong_ordering::less
           : c > 0 ? std::strong_ordering::greater
                   : std::strong_ordering::equal;
}

int ixo_string::find(ixo_string const& s, int start) const noexcept
{
    auto const text = view();
    if (start < 0 || static_cast<std::size_t>(start) > text.size())
        return -1;
    std::size_t const at = text.find(s.view(), static_cast<std::size_t>(start));
    return at == text.npos ? -1 : static_cast<int>(at);
}

int ixo_string::find(ixo_wchar c, int start) const noexcept
{
    auto const text = view();
    if (c == 0 || start < 0 || static_cast<std::size_t>(start) > text.size())
        return -1;
    std::size_t const at = text.find(c, static_cast<std::size_t>(start));
    return at == text.npos ? -1 : static_cast<int>(at);
}

int ixo_string::reverse_find(ixo_wchar c, int) const noexcept
{
    if (c == 0)
        return -1;
    std::size_t const at = view().rfind(c);
    return at == std::basic_string_view<ixo_wchar>::npos ? -1 : static_cast<int>(at);
}

int ixo_string::append(ixo_string const& s)
{
    int const n = length();
    int const m = s.length();
    long long const total = static_cast<long long>(n) + m;
    if (total + 1 > size_)
    {
        ixo_wchar* buffer = allocate(total + 1);
        copy_units(buffer, buffer_, n);
        copy_units(buffer + n, s.c_str(), m); // s may be this string: old buffer still alive
        buffer[total] = 0;
        adopt(buffer, static_cast<int>(total + 1));
    }
    else
    {
        copy_units(buffer_ + n, s.c_str(), m);
        buffer_[total] = 0;
    }
    return static_cast<int>(total);
}

int ixo_string::append(ixo_wchar c)
{
    int const n = length();
    if (c == 0)
        return n;
    if (n + 2 > size_)
    {
        ixo_wchar* buffer = allocate(static_cast<long long>(n) + 2);
        copy_units(buffer, buffer_, n);
        adopt(buffer, n + 2);
    }
    buffer_[n] = c;
    buffer_[n + 1] = 0;
    return n + 1;
}

ixo_string ixo_string::operator+(ixo_string const& s) const
{
    ixo_string result(*this);
    result.append(s);
    return result;
}

int ixo_string::prepend(ixo_string const& s)
{
    int const n = length();
    int const m = s.length();
    long long const total = static_cast<long long>(n) + m;
    ixo_wchar* buffer = allocate(total + 1);
    copy_units(buffer, s.c_str(), m);
    copy_units(buffer + m, buffer_, n);
    buffer[total] = 0;
    adopt(buffer, static_cast<int>(total + 1));
    return static_cast<int>(total);
}

int ixo_string::prepend(ixo_wchar c)
{
    if (c == 0)
        return length();
    ixo_wchar const text[2] = {c, 0};
    return prepend(ixo_string(text));
}

int ixo_string::insert(ixo_string const& s, int pos)
{
    if (&s == this)
        return insert(ixo_string(s), pos);
    int const n = length();
    int const m = s.length();
    pos = std::clamp(pos, 0, n);
    long long const total = static_cast<long long>(n) + m;
    if (total + 1 > size_)
    {
        ixo_wchar* buffer = allocate(total + 1);
        copy_units(buffer, buffer_, n);
        buffer[n] = 0;
        adopt(buffer, static_cast<int>(total + 1));
    }
    copy_units(buffer_ + pos + m, buffer_ + pos, n - pos);
    copy_units(buffer_ + pos, s.c_str(), m);
    buffer_[total] = 0;
    return static_cast<int>(total);
}

int ixo_string::insert(ixo_wchar c, int pos)
{
    if (c == 0)
        return length();
    ixo_wchar const text[2] = {c, 0};
    return insert(ixo_string(text), pos);
}

ixo_string ixo_string::left(int n) const
{
    int const len = length();
    if (n >= len)
        return *this;
    ixo_string s;
    s.assign_units(c_str(), std::max(n, 0));
    return s;
}

ixo_string ixo_string::right(int n) const
{
    int const len = length();
    if (n >= len)
        return *this;
    n = std::max(n, 0);
    ixo_string s;
    s.assign_units(c_str() + (len - n), n);
    return s;
}

bool ixo_string::format_args(ixo_wchar const* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    bool const ok = format_list(fmt, args);
    va_end(args);
    return ok;
}

bool ixo_string::format_list(ixo_wchar const* fmt, va_list args)
{
    // The format may be (a part of) this string's own text: format from a copy.
    if (fmt && buffer_ && fmt >= buffer_ && fmt < buffer_ + size_)
    {
        ixo_string const copy(fmt);
        return format_list(copy.c_str(), args);
    }
    va_list measure;
    va_copy(measure, args);
    int const n = _vscwprintf(fmt, measure);
    va_end(measure);
    if (n < 0)
        return false;
    erase();
    resize(n);
    va_list write;
    va_copy(write, args);
    int const written = vswprintf_s(buffer_, static_cast<std::size_t>(size_), fmt, write);
    va_end(write);
    return written == n;
}

void ixo_string::make_upper() noexcept
{
    if (buffer_)
        _wcsupr_s(buffer_, static_cast<std::size_t>(size_));
}

void ixo_string::make_lower() noexcept
{
    if (buffer_)
        _wcslwr_s(buffer_, static_cast<std::size_t>(size_));
}

void ixo_string::reverse() noexcept
{
    if (buffer_ && length() > 0)
        _wcsrev(buffer_);
}

bool ixo_string::convert(int& out) const noexcept
{
    if (!buffer_)
        return false;
    int const saved = errno;
    errno = 0;
    int const value = _wtoi(buffer_);
    bool const range_error = errno == ERANGE;
    errno = saved;
    if (range_error)
        return false;
    out = value;
    return true;
}

bool ixo_string::convert(unsigned int& out) const noexcept
{
    int value = 0;
    if (!convert(value))
        return false;
    // Negating in unsigned arithmetic also gives INT_MIN its absolute value.
    out = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
    return true;
}

bool ixo_string::convert(double& out) const noexcept
{
    if (!buffer_)
        return false;
    int const saved = errno;
    errno = 0;
    double const value = _wtof(buffer_);
    bool const range_error = errno == ERANGE;
    errno = saved;
    if (range_error)
        return false;
    out = value;
    return true;
}

bool ixo_string::convert(float& out) const noexcept
{
    double value = 0.0;
    if (!convert(value))
        return false;
    out = static_cast<float>(value);
    return true;
}

bool ixo_string::to_single_byte(int size, char* out) const noexcept
{
    if (size <= 0 || !out)
        return false;
    if (!buffer_)
    {
        out[0] = 0;
        return true;
    }
    std::size_t converted = 0;
    return wcstombs_s(&converted, out, static_cast<std::size_t>(size), c_str(), _TRUNCATE) == 0;
}

std::string ixo_string::to_utf8() const
{
    std::string out;
    auto const text = view();
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        char32_t c = text[i];
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF)
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
        else if (c >= 0xD800 && c <= 0xDFFF)
            c = 0xFFFD;
        if (c < 0x80)
            out.push_back(static_cast<char>(c));
        else if (c < 0x800)
        {
            out.push_back(static_cast<char>(0xC0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
        else if (c < 0x10000)
        {
            out.push_back(static_cast<char>(0xE0 | (c >> 12)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
        else
        {
            out.push_back(static_cast<char>(0xF0 | (c >> 18)));
            out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return out;
}
