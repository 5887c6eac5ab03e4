// The mesh readers' shared pieces and the choice of reader by file name.

#include "indexed_mesh_files.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace ixo_mesh_files
{

namespace
{
thread_local std::string last_failure;
}

void clear_failure()
{
    last_failure.clear();
}

std::string const& failure()
{
    return last_failure;
}

std::nullptr_t fail(std::string reason)
{
    last_failure = std::move(reason);
    return nullptr;
}

file_handle::file_handle(ixo_string const& name, const char* mode)
{
    // The locale's form first; a name that is not found there (a UTF-8 name under the "C"
    // locale) is looked for in UTF-8.
    std::string utf8 = name.to_utf8();
    std::vector<char> narrow(std::size_t(name.length()) * MB_CUR_MAX + 1);
    path = narrow.size() < INT_MAX && name.to_single_byte(int(narrow.size()), narrow.data())
               ? narrow.data()
               : utf8;
    struct stat st;
    if (path.empty())
    {
        why = "no file name";
        return;
    }
    int found = stat(path.c_str(), &st);
    if (found != 0 && path != utf8)
    {
        path = utf8;
        found = stat(path.c_str(), &st);
    }
    if (found != 0)
    {
        why = std::string("cannot open the file (") + std::strerror(errno) + ")";
        return;
    }
    if (!S_ISREG(st.st_mode))
    {
        why = "not a regular file";
        return;
    }
    fp = std::fopen(path.c_str(), mode);
    if (!fp)
    {
        why = std::string("cannot open the file (") + std::strerror(errno) + ")";
        return;
    }
    size = stream_size(fp);
}

long long data_size(int fd, long long size)
{
    // Holes read as zeros but back no count: only the extents that hold data are summed.
    // The stream's offset is put back; a file system without SEEK_DATA counts in full.
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

long long stream_size(FILE* fp)
{
    struct stat st;
    if (!fp || fstat(fileno(fp), &st) != 0 || !S_ISREG(st.st_mode))
        return -1;
    return data_size(fileno(fp), st.st_size);
}

bool parse_float(const char* begin, const char* end, float& out)
{
    if (begin != end && *begin == '+')
        ++begin;
    auto [p, ec] = std::from_chars(begin, end, out);
    if (ec == std::errc::result_out_of_range)
    {
        // Keep the C runtime's answer for overflow and underflow.
        out = std::strtof(std::string(begin, end).c_str(), nullptr);
        return true;
    }
    return ec == std::errc() && p != begin;
}

bool parse_int(const char* begin, const char* end, int& out)
{
    if (begin != end && *begin == '+')
        ++begin;
    auto [p, ec] = std::from_chars(begin, end, out);
    return ec == std::errc() && p != begin;
}

std::size_t buffer_size_for(FILE* fp)
{
    long long size = stream_size(fp);
    if (size < 0 || size >= (1 << 20))
        return 1 << 20;
    return std::max<std::size_t>(4096, std::size_t(size) + 1);
}

} // namespace ixo_mesh_files

using namespace ixo_mesh_files;

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_file(ixo_string const& name)
{
    if (name.length() >= 4)
    {
        ixo_string extension = name.right(4);
        if (extension.compare_no_case(ixo_string(".ply")) == 0)
            return read_from_ply_file(name);
        if (extension.compare_no_case(ixo_string(".stl")) == 0)
            return read_from_stl_file(name);
    }
    clear_failure();
    return fail("the name ends neither in .stl nor in .ply");
}

ixo_string ixo_indexed_mesh::get_last_read_failure()
{
    return ixo_string::from_utf8(last_failure);
}
