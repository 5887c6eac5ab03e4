#pragma once
// Hands fuzz input to readers that take a file name: the bytes go into an anonymous
// in-memory file that is reachable through /proc/self/fd.

#include <ixocore/core/string.h>

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
