// PLY reader behind the RPly interface.
//
// Input goes through one 64 KiB buffer; ascii numbers are parsed with std::from_chars, so
// nothing depends on the C locale and no value costs a heap allocation.

#include <ixocore/platform/rply.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

struct t_ply_property_
{
    std::string name;
    e_ply_type type = PLY_UCHAR;
    e_ply_type length_type = PLY_UCHAR;
    e_ply_type value_type = PLY_UCHAR;
    p_ply_read_cb read_cb = nullptr;
    void* pdata = nullptr;
    long idata = 0;
};

struct t_ply_element_
{
    std::string name;
    long ninstances = 0;
    std::vector<std::unique_ptr<t_ply_property_>> properties;
};

struct t_ply_argument_
{
    p_ply_element element = nullptr;
    long instance_index = 0;
    p_ply_property property = nullptr;
    long length = 0;
    long value_index = 0;
    double value = 0;
    void* pdata = nullptr;
    long idata = 0;
};

struct t_ply_
{
    FILE* fp = nullptr;
    bool own_file = false;
    e_ply_storage_mode storage = PLY_DEFAULT;
    bool header_read = false;
    p_ply_error_cb error_cb = nullptr;
    long idata = 0;
    void* pdata = nullptr;
    std::vector<std::unique_ptr<t_ply_element_>> elements;
    std::vector<std::unique_ptr<std::string>> comments;
    std::vector<std::unique_ptr<std::string>> obj_infos;

    // Input buffer: bytes [pos, end) are unread.
    std::vector<char> buffer;
    std::size_t pos = 0;
    std::size_t end = 0;
    bool eof = false;
    // Bytes of the file not yet pulled into the buffer, and the bytes of data it holds;
    // -1 when unknown.
    long long unread_in_file = -1;
    long long file_size = -1;
    // Bytes of the file in holes: they read as zeros but back no count.
    long long hole_bytes = 0;

    t_ply_argument_ argument;
};

namespace
{

constexpr std::size_t buffer_size = 1 << 16;
constexpr std::size_t max_header_line = 4096;
constexpr std::size_t max_token = 512;

void print_error(p_ply, const char* message)
{
    std::fprintf(stderr, "RPly: %s\n", message);
}

void report(p_ply ply, const char* message)
{
    if (ply->error_cb)
        ply->error_cb(ply, message);
}

// Keeps at least `n` unread bytes in the buffer when the file still has them; false when
// fewer than `n` remain in all.
bool fill(p_ply ply, std::size_t n)
{
    if (ply->end - ply->pos >= n)
        return true;
    if (ply->pos > 0)
    {
        std::memmove(ply->buffer.data(), ply->buffer.data() + ply->pos, ply->end - ply->pos);
        ply->end -= ply->pos;
        ply->pos = 0;
    }
    while (!ply->eof && ply->end < n)
    {
        std::size_t got =
            std::fread(ply->buffer.data() + ply->end, 1, ply->buffer.size() - ply->end, ply->fp);
        if (got == 0)
            ply->eof = true;
        ply->end += got;
        if (ply->unread_in_file >= 0)
            ply->unread_in_file -= static_cast<long long>(got);
    }
    return ply->end - ply->pos >= n;
}

// Reads one header line without its line end (LF or CR LF). False at the end of the file
// or for a line longer than the limit.
bool read_header_line(p_ply ply, std::string& line)
{
    line.clear();
    for (;;)
    {
        if (ply->pos == ply->end && !fill(ply, 1))
            return !line.empty();
        const char* begin = ply->buffer.data() + ply->pos;
        const char* stop = ply->buffer.data() + ply->end;
        const char* nl = static_cast<const char*>(std::memchr(begin, '\n', stop - begin));
        std::size_t take = (nl ? nl : stop) - begin;
        if (line.size() + take > max_header_line)
            return false;
        line.append(begin, take);
        ply->pos += take;
        if (nl)
        {
            ++ply->pos;
            if (!line.empty() && line.back() == '\r')
                line.pop_back();
            return true;
        }
    }
}

std::vector<std::string_view> split_words(std::string_view line)
{
    std::vector<std::string_view> words;
    std::size_t i = 0;
    while (i < line.size())
    {
        while (i < line.size() && (line[i] == ' ' || line[i] == '\t'))
            ++i;
        std::size_t start = i;
        while (i < line.size() && line[i] != ' ' && line[i] != '\t')
            ++i;
        if (i > start)
            words.push_back(line.substr(start, i - start));
    }
    return words;
}

bool parse_type(std::string_view word, e_ply_type& type)
{
    static const char* const names[] = {"int8",    "uint8",   "int16", "uint16", "int32", "uint32",
                                        "float32", "float64", "char",  "uchar",  "short", "ushort",
                                        "int",     "uint",    "float", "double"};
    for (int i = 0; i < 16; ++i)
        if (word == names[i])
        {
            type = static_cast<e_ply_type>(i);
            return true;
        }
    return false;
}

int type_size(e_ply_type type)
{
    switch (type)
    {
    case PLY_INT8:
    case PLY_UINT8:
    case PLY_CHAR:
    case PLY_UCHAR:
        return 1;
    case PLY_INT16:
    case PLY_UINT16:
    case PLY_SHORT:
    case PLY_USHORT:
        return 2;
    case PLY_FLOAT64:
    case PLY_DOUBLE:
        return 8;
    default:
        return 4;
    }
}

bool is_integer_type(e_ply_type type)
{
    return type != PLY_FLOAT32 && type != PLY_FLOAT64 && type != PLY_FLOAT && type != PLY_DOUBLE &&
           type != PLY_LIST;
}

bool is_signed_type(e_ply_type type)
{
    return type == PLY_INT8 || type == PLY_CHAR || type == PLY_INT16 || type == PLY_SHORT ||
           type == PLY_INT32 || type == PLY_INT;
}

// Converts `size` bytes at `p`, stored in the file's byte order, to a double.
double decode_binary(const unsigned char* p, e_ply_type type, bool big_endian)
{
    int size = type_size(type);
    std::uint64_t bits = 0;
    for (int i = 0; i < size; ++i)
    {
        int shift = big_endian ? 8 * (size - 1 - i) : 8 * i;
        bits |= std::uint64_t(p[i]) << shift;
    }
    switch (type)
    {
    case PLY_INT8:
    case PLY_CHAR:
        return double(std::int8_t(bits));
    case PLY_INT16:
    case PLY_SHORT:
        return double(std::int16_t(bits));
    case PLY_INT32:
    case PLY_INT:
        return double(std::int32_t(bits));
    case PLY_FLOAT32:
    case PLY_FLOAT:
    {
        std::uint32_t b32 = std::uint32_t(bits);
        float f;
        std::memcpy(&f, &b32, 4);
        return double(f);
    }
    case PLY_FLOAT64:
    case PLY_DOUBLE:
    {
        double d;
        std::memcpy(&d, &bits, 8);
        return d;
    }
    default:
        return double(bits);
    }
}

bool is_space(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Reads the next white-space separated ascii number. Integer types accept only integers in
// their range; float types accept anything std::from_chars reads as a double.
bool read_ascii(p_ply ply, e_ply_type type, double& value)
{
    for (;;)
    {
        if (ply->pos == ply->end && !fill(ply, 1))
            return false;
        if (!is_space(ply->buffer[ply->pos]))
            break;
        ++ply->pos;
    }
    fill(ply, max_token);
    const char* begin = ply->buffer.data() + ply->pos;
    const char* stop = ply->buffer.data() + ply->end;
    const char* token_end = begin;
    while (token_end != stop && !is_space(*token_end))
        ++token_end;
    if (token_end == stop && !ply->eof)
        return false; // a token longer than any number
    ply->pos += token_end - begin;
    if (begin != token_end && *begin == '+')
        ++begin;
    if (is_integer_type(type))
    {
        long long v = 0;
        auto [p, ec] = std::from_chars(begin, token_end, v);
        if (ec != std::errc() || p != token_end)
            return false;
        long long lo = 0, hi = 0;
        switch (type_size(type))
        {
        case 1:
            lo = is_signed_type(type) ? INT8_MIN : 0;
            hi = is_signed_type(type) ? INT8_MAX : UINT8_MAX;
            break;
        case 2:
            lo = is_signed_type(type) ? INT16_MIN : 0;
            hi = is_signed_type(type) ? INT16_MAX : UINT16_MAX;
            break;
        default:
            lo = is_signed_type(type) ? INT32_MIN : 0;
            hi = is_signed_type(type) ? INT32_MAX : UINT32_MAX;
            break;
        }
        if (v < lo || v > hi)
            return false;
        value = double(v);
        return true;
    }
    auto [p, ec] = std::from_chars(begin, token_end, value);
    return ec == std::errc() && p == token_end;
}

bool read_value(p_ply ply, e_ply_type type, double& value)
{
    if (ply->storage == PLY_ASCII)
        return read_ascii(ply, type, value);
    std::size_t size = type_size(type);
    if (!fill(ply, size))
        return false;
    value = decode_binary(reinterpret_cast<const unsigned char*>(ply->buffer.data() + ply->pos),
                          type, ply->storage == PLY_BIG_ENDIAN);
    ply->pos += size;
    return true;
}

// Skips `count` binary values of `size` bytes each.
bool skip_binary(p_ply ply, unsigned long long count, std::size_t size)
{
    unsigned long long bytes = count * size;
    while (bytes > 0)
    {
        if (ply->pos == ply->end && !fill(ply, 1))
            return false;
        std::size_t take = std::size_t(std::min<unsigned long long>(bytes, ply->end - ply->pos));
        ply->pos += take;
        bytes -= take;
    }
    return true;
}

// Refuses counts that need more bytes than the file has left after the header: in binary
// every value takes its type's size (a list at least its count), in ascii at least one
// character and one separator. The message names the first element that does not fit.
bool counts_fit_file(p_ply ply, std::string& message)
{
    if (ply->unread_in_file < 0)
        return true;
    long long available =
        ply->unread_in_file + static_cast<long long>(ply->end - ply->pos) - ply->hole_bytes;
    // The last ascii value needs no separator.
    long double needed = ply->storage == PLY_ASCII ? -1 : 0;
    for (auto const& e : ply->elements)
    {
        long double per_instance = 0;
        for (auto const& p : e->properties)
        {
            if (ply->storage == PLY_ASCII)
                per_instance += 2;
            else
                per_instance += type_size(p->type == PLY_LIST ? p->length_type : p->type);
        }
        needed += per_instance * static_cast<long double>(e->ninstances);
        if (needed > static_cast<long double>(available))
        {
            message = "element \"" + e->name + "\" claims " + std::to_string(e->ninstances) +
                      " entries but the file holds " + std::to_string(ply->file_size) + " bytes";
            return false;
        }
    }
    return true;
}

// The bytes of a file that hold data: its size less its holes, which read as zeros but
// back no count. The descriptor's offset is put back.
long long data_size(int fd, long long size)
{
    off_t const here = lseek(fd, 0, SEEK_CUR);
    if (here < 0)
        return size;
    long long data = 0;
    off_t pos = 0;
    for (int extents = 0; pos < size; ++extents)
    {
        off_t start = extents < 4096 ? lseek(fd, pos, SEEK_DATA) : -1;
        if (start < 0)
        {
            if (errno != ENXIO)
                data += size - pos; // no answer: the rest counts as data
            break;
        }
        off_t stop = lseek(fd, start, SEEK_HOLE);
        if (stop < 0)
            stop = off_t(size);
        data += stop - start;
        pos = stop;
    }
    lseek(fd, here, SEEK_SET);
    return std::min(data, size);
}

p_ply make_ply(FILE* fp, bool own, p_ply_error_cb error_cb, long idata, void* pdata)
{
    auto* ply = new t_ply_;
    ply->fp = fp;
    ply->own_file = own;
    ply->error_cb = error_cb ? error_cb : print_error;
    ply->idata = idata;
    ply->pdata = pdata;
    ply->buffer.resize(buffer_size);
    struct stat st;
    long here = std::ftell(fp);
    if (fstat(fileno(fp), &st) == 0 && S_ISREG(st.st_mode) && here >= 0)
    {
        ply->unread_in_file = static_cast<long long>(st.st_size) - here;
        ply->file_size = data_size(fileno(fp), static_cast<long long>(st.st_size));
        ply->hole_bytes = static_cast<long long>(st.st_size) - ply->file_size;
    }
    return ply;
}

} // namespace

p_ply ply_open(const char* name, p_ply_error_cb error_cb, long idata, void* pdata)
{
    if (!error_cb)
        error_cb = print_error;
    if (!name)
    {
        error_cb(nullptr, "no file name");
        return nullptr;
    }
    FILE* fp = std::fopen(name, "rb");
    if (!fp)
    {
        error_cb(nullptr, "unable to open file");
        return nullptr;
    }
    struct stat st;
    if (fstat(fileno(fp), &st) != 0 || S_ISDIR(st.st_mode))
    {
        std::fclose(fp);
        error_cb(nullptr, "not a file");
        return nullptr;
    }
    return make_ply(fp, true, error_cb, idata, pdata);
}

p_ply ply_open_from_file(FILE* fp, p_ply_error_cb error_cb, long idata, void* pdata)
{
    if (!error_cb)
        error_cb = print_error;
    if (!fp)
    {
        error_cb(nullptr, "no stream");
        return nullptr;
    }
    return make_ply(fp, false, error_cb, idata, pdata);
}

int ply_read_header(p_ply ply)
{
    if (!ply || ply->header_read)
        return 0;
    std::string line;
    if (!read_header_line(ply, line) || line != "ply")
    {
        report(ply, "not a PLY file");
        return 0;
    }
    bool have_format = false;
    for (;;)
    {
        if (!read_header_line(ply, line))
        {
            report(ply, "unexpected end of header");
            return 0;
        }
        auto words = split_words(line);
        if (words.empty())
            continue;
        std::string_view key = words[0];
        if (key == "end_header")
            break;
        if (key == "comment" || key == "obj_info")
        {
            // The text after the keyword and one separator, as written.
            std::size_t at = line.find(key) + key.size();
            if (at < line.size())
                ++at;
            auto text = std::make_unique<std::string>(line.substr(std::min(at, line.size())));
            (key == "comment" ? ply->comments : ply->obj_infos).push_back(std::move(text));
        }
        else if (key == "format")
        {
            if (words.size() != 3 || words[2] != "1.0" || have_format)
            {
                report(ply, "unsupported format line");
                return 0;
            }
            if (words[1] == "ascii")
                ply->storage = PLY_ASCII;
            else if (words[1] == "binary_little_endian")
                ply->storage = PLY_LITTLE_ENDIAN;
            else if (words[1] == "binary_big_endian")
                ply->storage = PLY_BIG_ENDIAN;
            else
            {
                report(ply, "unknown storage mode");
                return 0;
            }
            have_format = true;
        }
        else if (key == "element")
        {
            long count = -1;
            if (words.size() != 3)
            {
                report(ply, "malformed element line");
                return 0;
            }
            auto [p, ec] =
                std::from_chars(words[2].data(), words[2].data() + words[2].size(), count);
            if (ec != std::errc() || p != words[2].data() + words[2].size() || count < 0)
            {
                report(ply, "malformed element count");
                return 0;
            }
            auto element = std::make_unique<t_ply_element_>();
            element->name = words[1];
            element->ninstances = count;
            ply->elements.push_back(std::move(element));
        }
        else if (key == "property")
        {
            if (ply->elements.empty())
            {
                report(ply, "property before any element");
                return 0;
            }
            auto property = std::make_unique<t_ply_property_>();
            if (words.size() == 5 && words[1] == "list")
            {
                if (!parse_type(words[2], property->length_type) ||
                    !is_integer_type(property->length_type) ||
                    !parse_type(words[3], property->value_type))
                {
                    report(ply, "malformed list property");
                    return 0;
                }
                property->type = PLY_LIST;
                property->name = words[4];
            }
            else if (words.size() == 3 && parse_type(words[1], property->type))
                property->name = words[2];
            else
            {
                report(ply, "malformed property line");
                return 0;
            }
            ply->elements.back()->properties.push_back(std::move(property));
        }
        else
        {
            report(ply, "unknown header line");
            return 0;
        }
    }
    if (!have_format)
    {
        report(ply, "missing format line");
        return 0;
    }
    std::string message;
    if (!counts_fit_file(ply, message))
    {
        report(ply, message.c_str());
        return 0;
    }
    ply->header_read = true;
    return 1;
}

long ply_set_read_cb(p_ply ply, const char* element_name, const char* property_name,
                     p_ply_read_cb read_cb, void* pdata, long idata)
{
    if (!ply || !element_name || !property_name)
        return 0;
    for (auto& e : ply->elements)
    {
        if (e->name != element_name)
            continue;
        for (auto& p : e->properties)
        {
            if (p->name != property_name)
                continue;
            p->read_cb = read_cb;
            p->pdata = pdata;
            p->idata = idata;
            return e->ninstances;
        }
        return 0;
    }
    return 0;
}

int ply_read(p_ply ply)
{
    if (!ply || !ply->header_read)
        return 0;
    t_ply_argument_& arg = ply->argument;
    bool binary = ply->storage != PLY_ASCII;
    for (auto& e : ply->elements)
    {
        arg.element = e.get();
        // An element without properties holds no data and gives no callbacks; walking its
        // instances would only spin through whatever count the header claims.
        if (e->properties.empty())
            continue;
        for (long i = 0; i < e->ninstances; ++i)
        {
            arg.instance_index = i;
            for (auto& p : e->properties)
            {
                arg.property = p.get();
                arg.pdata = p->pdata;
                arg.idata = p->idata;
                if (p->type != PLY_LIST)
                {
                    if (!p->read_cb && binary)
                    {
                        if (!skip_binary(ply, 1, type_size(p->type)))
                            goto truncated;
                        continue;
                    }
                    if (!read_value(ply, p->type, arg.value))
                        goto truncated;
                    arg.length = 1;
                    arg.value_index = 0;
                    if (p->read_cb && !p->read_cb(&arg))
                        goto aborted;
                    continue;
                }
                double count = 0;
                if (!read_value(ply, p->length_type, count) || count < 0)
                    goto truncated;
                arg.length = static_cast<long>(count);
                if (!p->read_cb && binary)
                {
                    if (!skip_binary(ply, static_cast<unsigned long long>(count),
                                     type_size(p->value_type)))
                        goto truncated;
                    continue;
                }
                arg.value_index = -1;
                arg.value = count;
                if (p->read_cb && !p->read_cb(&arg))
                    goto aborted;
                for (long k = 0; k < arg.length; ++k)
                {
                    arg.value_index = k;
                    if (!read_value(ply, p->value_type, arg.value))
                        goto truncated;
                    if (p->read_cb && !p->read_cb(&arg))
                        goto aborted;
                }
            }
        }
    }
    return 1;
truncated:
{
    std::string message = "data ends early or is malformed in element \"" + arg.element->name +
                          "\", entry " + std::to_string(arg.instance_index + 1);
    report(ply, message.c_str());
    return 0;
}
aborted:
    report(ply, "read callback stopped reading");
    return 0;
}

int ply_close(p_ply ply)
{
    if (!ply)
        return 0;
    int ok = 1;
    if (ply->own_file && ply->fp && std::fclose(ply->fp) != 0)
        ok = 0;
    delete ply;
    return ok;
}

p_ply_element ply_get_next_element(p_ply ply, p_ply_element last)
{
    if (!ply)
        return nullptr;
    auto& list = ply->elements;
    if (!last)
        return list.empty() ? nullptr : list.front().get();
    for (std::size_t i = 0; i + 1 < list.size(); ++i)
        if (list[i].get() == last)
            return list[i + 1].get();
    return nullptr;
}

int ply_get_element_info(p_ply_element element, const char** name, long* ninstances)
{
    if (!element)
        return 0;
    if (name)
        *name = element->name.c_str();
    if (ninstances)
        *ninstances = element->ninstances;
    return 1;
}

p_ply_property ply_get_next_property(p_ply_element element, p_ply_property last)
{
    if (!element)
        return nullptr;
    auto& list = element->properties;
    if (!last)
        return list.empty() ? nullptr : list.front().get();
    for (std::size_t i = 0; i + 1 < list.size(); ++i)
        if (list[i].get() == last)
            return list[i + 1].get();
    return nullptr;
}

int ply_get_property_info(p_ply_property property, const char** name, e_ply_type* type,
                          e_ply_type* length_type, e_ply_type* value_type)
{
    if (!property)
        return 0;
    if (name)
        *name = property->name.c_str();
    if (type)
        *type = property->type;
    if (length_type)
        *length_type = property->length_type;
    if (value_type)
        *value_type = property->value_type;
    return 1;
}

namespace
{
const char* next_text(std::vector<std::unique_ptr<std::string>> const& list, const char* last)
{
    if (!last)
        return list.empty() ? nullptr : list.front()->c_str();
    for (std::size_t i = 0; i + 1 < list.size(); ++i)
        if (list[i]->c_str() == last)
            return list[i + 1]->c_str();
    return nullptr;
}
} // namespace

const char* ply_get_next_comment(p_ply ply, const char* last)
{
    return ply ? next_text(ply->comments, last) : nullptr;
}

const char* ply_get_next_obj_info(p_ply ply, const char* last)
{
    return ply ? next_text(ply->obj_infos, last) : nullptr;
}

e_ply_storage_mode ply_get_storage_mode(p_ply ply)
{
    return ply ? ply->storage : PLY_DEFAULT;
}

int ply_get_ply_user_data(p_ply ply, void** pdata, long* idata)
{
    if (!ply)
        return 0;
    if (pdata)
        *pdata = ply->pdata;
    if (idata)
        *idata = ply->idata;
    return 1;
}

int ply_get_argument_element(p_ply_argument argument, p_ply_element* element, long* instance_index)
{
    if (!argument)
        return 0;
    if (element)
        *element = argument->element;
    if (instance_index)
        *instance_index = argument->instance_index;
    return 1;
}

int ply_get_argument_property(p_ply_argument argument, p_ply_property* property, long* length,
                              long* value_index)
{
    if (!argument)
        return 0;
    if (property)
        *property = argument->property;
    if (length)
        *length = argument->length;
    if (value_index)
        *value_index = argument->value_index;
    return 1;
}

int ply_get_argument_user_data(p_ply_argument argument, void** pdata, long* idata)
{
    if (!argument)
        return 0;
    if (pdata)
        *pdata = argument->pdata;
    if (idata)
        *idata = argument->idata;
    return 1;
}

double ply_get_argument_value(p_ply_argument argument)
{
    return argument ? argument->value : 0.0;
}
