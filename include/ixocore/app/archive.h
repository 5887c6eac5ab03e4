#pragma once
// Archives: files through which raw blocks of bytes are written and read.
//
// An archive carries no format of its own (no header, tags or lengths); whoever writes a
// record defines its layout, and the reader must read it back in the same order. An
// archive is opened either for reading or for writing, stays open until its last reference
// is released, and cannot switch between the two.
//
// Files are opened in binary mode, so every byte round-trips exactly on every platform: no
// line-end translation ever inserts or drops a 0x0D byte. Paths are handed to the
// operating system in UTF-8. Other processes may read and write the file at the same time
// (nothing is locked).

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/string.h>

#include <fstream>

class IXO_API ixo_archive : public ixo_object
{
public:
    enum mode : int
    {
        mode_read = 0,
        mode_write = 1,
    };

    // Thrown by the constructor when the file cannot be opened; open() catches it.
    class unable_to_open
    {
    };

    // Opens `path` for reading (mode_read) or for writing (any other mode; the file is
    // created, or truncated when it exists). Null when the file cannot be opened.
    static ixo_object_ptr<ixo_archive> open(ixo_string const& path, mode m);

    virtual mode get_mode() const;
    // Reads `size` bytes into `data`. False without reading in a write archive, for a
    // negative size or null data; false when the stream fails (a short read at the end of
    // the file), and then for every later call.
    virtual bool read(int size, void* data);
    // Writes `size` bytes from `data`. False without writing in a read archive, for a
    // negative size or null data; false when the stream fails, and then for every later call.
    virtual bool write(int size, void const* data);

private:
    ixo_archive(ixo_string const& path, mode m);
    ~ixo_archive() override;
    ixo_archive(ixo_archive const&) = delete;
    ixo_archive& operator=(ixo_archive const&) = delete;

    std::fstream stream_;
    mode mode_;
};

// The unit of structured document storage. No layout is defined yet: the class exists so
// that the archive manager's operations have their final shape.
class IXO_API ixo_archive_packet : public ixo_object
{
protected:
    ixo_archive_packet() = default;
    ~ixo_archive_packet() override = default;
};

// Reads and writes packets through archives. Both operations are empty until a packet
// layout exists.
class IXO_API ixo_archive_manager : public ixo_object
{
public:
    ixo_archive_manager() = default;
    ~ixo_archive_manager() override = default;

    static ixo_object_ptr<ixo_archive_manager> create();

    // Does nothing.
    virtual void write_packet(ixo_object_ptr<ixo_archive_packet> packet,
                              ixo_object_ptr<ixo_archive> archive);
    // Always null.
    virtual ixo_object_ptr<ixo_archive_packet> read_packet(ixo_object_ptr<ixo_archive> archive);
};
