#pragma once
// What the mesh file readers share: regular files opened safely, a block-wise token reader
// and number parsing that takes whole tokens. Internal to the mesh subsystem.

#include <ixocore/mesh/indexed_mesh.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <vector>

// Reaches the private arrays of a mesh for the readers.
class ixo_mesh_builder
{
public:
    static std::vector<ixo_mesh_vertex>& vertices(ixo_indexed_mesh& m) { return m.vertices_; }
    static std::vector<unsigned int>& indices(ixo_indexed_mesh& m) { return m.indices_; }
    static ixo_object_ptr<ixo_indexed_mesh> create() { return ixo_indexed_mesh::create_empty(); }
};

namespace ixo_mesh_files
{

using vec3 = ixo_vector3<float>;

// Why the last read on this thread failed, for ixo_indexed_mesh::get_last_read_failure().
// fail() records a reason and answers null, so a reader can `return fail(...)`.
void clear_failure();
std::nullptr_t fail(std::string reason);
std::string const& failure();
// Runs a reader, turning a failed allocation into its null result: counts are checked
// against the file's size, but a sparse file is large on almost no disk.
template <typename Read> ixo_object_ptr<ixo_indexed_mesh> guarded(Read&& read)
{
    clear_failure();
    try
    {
        return read();
    }
    catch (std::bad_alloc const&)
    {
        return fail("not enough memory for the mesh");
    }
    catch (std::length_error const&)
    {
        return fail("not enough memory for the mesh");
    }
}

// A file that is open and regular (directories, devices and sockets are refused); when
// it is not, fp is null and `why` says what went wrong. The name goes to the operating
// system in the current locale's multibyte form, or in UTF-8 when it has no such form or
// names no file in it.
struct file_handle
{
    FILE* fp = nullptr;
    std::string path;   // the name as it was opened
    long long size = 0; // stream_size(fp)
    std::string why;

    file_handle(ixo_string const& name, const char* mode);
    ~file_handle()
    {
        if (fp)
            std::fclose(fp);
    }
    file_handle(file_handle const&) = delete;
    file_handle& operator=(file_handle const&) = delete;
};

// The bytes of data in the regular file behind a stream: its size less its holes (a
// sparse file is large on almost no disk); -1 for anything else.
long long stream_size(FILE* fp);

inline bool is_space(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Parses a float as the C runtime's %f would take a whole token: an optional sign
// (including '+'), decimal or exponent form, inf and nan. False when the token does not
// start with a number.
bool parse_float(const char* begin, const char* end, float& out);
// A decimal int, optionally signed; false when the token does not start with one.
bool parse_int(const char* begin, const char* end, int& out);

// A read buffer of up to 1 MiB, no larger than the file needs.
std::size_t buffer_size_for(FILE* fp);

// White-space separated tokens from a stream through a 1 MiB window. A token is valid
// until the next call.
class token_reader
{
public:
    explicit token_reader(FILE* fp) : fp_(fp), buffer_(buffer_size_for(fp)) {}

    // Skips the rest of the current line, line end included.
    void skip_line()
    {
        for (;;)
        {
            if (pos_ == end_ && !refill())
                return;
            const char* start = buffer_.data() + pos_;
            const void* nl = std::memchr(start, '\n', end_ - pos_);
            if (nl)
            {
                pos_ += static_cast<const char*>(nl) - start + 1;
                return;
            }
            pos_ = end_;
        }
    }

    // The next token; false at the end of the stream.
    bool next(const char*& begin, const char*& end)
    {
        for (;;)
        {
            if (pos_ == end_ && !refill())
                return false;
            if (!is_space(buffer_[pos_]))
                break;
            ++pos_;
        }
        for (;;)
        {
            const char* start = buffer_.data() + pos_;
            const char* stop = buffer_.data() + end_;
            const char* p = start;
            while (p != stop && !is_space(*p))
                ++p;
            if (p != stop || eof_ || (pos_ == 0 && end_ == buffer_.size()))
            {
                // A token longer than the window is cut there; no number is that long.
                begin = start;
                end = p;
                pos_ += p - start;
                return true;
            }
            if (!refill())
                eof_ = true;
        }
    }

    // The next token when it is on the current line (a CR or LF comes first otherwise).
    bool next_on_line(const char*& begin, const char*& end)
    {
        for (;;)
        {
            if (pos_ == end_ && !refill())
                return false;
            char c = buffer_[pos_];
            if (c == '\n' || c == '\r')
                return false;
            if (!is_space(c))
                return next(begin, end);
            ++pos_;
        }
    }

    // Appends the rest of the current line, without its LF, to `line` until it holds
    // `limit` bytes. 1 when the line's end (or the stream's) was reached, 0 when the limit
    // stopped it, -1 when the stream had ended before.
    int append_line(std::string& line, std::size_t limit)
    {
        if (pos_ == end_ && !refill())
            return -1;
        for (;;)
        {
            const char* start = buffer_.data() + pos_;
            const void* nl = std::memchr(start, '\n', end_ - pos_);
            std::size_t take = nl ? std::size_t(static_cast<const char*>(nl) - start) : end_ - pos_;
            if (take >= limit - line.size())
            {
                take = limit - line.size();
                line.append(start, take);
                pos_ += take;
                return 0;
            }
            line.append(start, take);
            pos_ += take;
            if (nl)
            {
                ++pos_;
                return 1;
            }
            if (!refill())
                return 1;
        }
    }

    // Makes the token last returned, starting at `begin`, the next one again.
    void put_back(const char* begin) { pos_ = std::size_t(begin - buffer_.data()); }

    bool skip(int n)
    {
        const char *b, *e;
        for (int i = 0; i < n; ++i)
            if (!next(b, e))
                return false;
        return true;
    }

    bool read_floats(float* out, int n)
    {
        const char *b, *e;
        for (int i = 0; i < n; ++i)
            if (!next(b, e) || !parse_float(b, e, out[i]))
                return false;
        return true;
    }

private:
    // Moves the unread bytes to the front and reads more; false when nothing was added.
    bool refill()
    {
        if (eof_)
            return false;
        std::size_t keep = end_ - pos_;
        std::memmove(buffer_.data(), buffer_.data() + pos_, keep);
        pos_ = 0;
        end_ = keep;
        std::size_t got = std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, fp_);
        if (got == 0)
        {
            eof_ = true;
            return false;
        }
        end_ += got;
        return true;
    }

    FILE* fp_;
    std::vector<char> buffer_;
    std::size_t pos_ = 0;
    std::size_t end_ = 0;
    bool eof_ = false;
};

} // namespace ixo_mesh_files
