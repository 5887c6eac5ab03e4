#pragma once
// Hands fuzz input to readers that take a file name: the bytes go into an anonymous
// in-memory file that is reachable through /proc/self/fd. check_read() holds what every
// mesh reader's result must satisfy.

#include <ixocore/core/string.h>
#include <ixocore/mesh/indexed_mesh.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

class fuzz_file
{
public:
    fuzz_file(const std::uint8_t* data, std::size_t size)
    {
        fd_ = memfd_create("ixo_fuzz", 0);
        if (fd_ < 0)
            return;
        std::size_t done = 0;
        while (done < size)
        {
            ssize_t n = ::write(fd_, data + done, size - done);
            if (n <= 0)
                break;
            done += std::size_t(n);
        }
        path_ = "/proc/self/fd/" + std::to_string(fd_);
    }
    ~fuzz_file()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    fuzz_file(fuzz_file const&) = delete;
    fuzz_file& operator=(fuzz_file const&) = delete;

    bool ok() const { return fd_ >= 0; }
    ixo_string name() const { return ixo_string::from_utf8(path_); }
    std::string const& path() const { return path_; }

private:
    int fd_ = -1;
    std::string path_;
};

// A null result always says why; a mesh leaves no reason behind. The vertex-cache
// optimisation keeps every index inside the vertex array.
inline void check_read(ixo_object_ptr<ixo_indexed_mesh> const& mesh)
{
    if (mesh ? ixo_indexed_mesh::get_last_read_failure().length() != 0
             : ixo_indexed_mesh::get_last_read_failure().length() == 0)
        __builtin_trap();
    if (!mesh)
        return;
    if (!mesh->has_valid_indices())
        __builtin_trap(); // the reader must only produce indices inside its vertex array
    unsigned int indices = mesh->get_num_indices();
    mesh->optimize_buffers();
    if (!mesh->has_valid_indices() || mesh->get_num_indices() != indices)
        __builtin_trap();
}
