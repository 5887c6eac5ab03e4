#include <ixocore/app/archive.h>

#include <sys/stat.h>

ixo_object_ptr<ixo_archive> ixo_archive::open(ixo_string const& path, mode m)
{
    try
    {
        return ixo_object_ptr<ixo_archive>(new ixo_archive(path, m));
    }
    catch (unable_to_open const&)
    {
        return nullptr;
    }
}

ixo_archive::ixo_archive(ixo_string const& path, mode m) : mode_(m)
{
    std::ios::openmode const how =
        (m == mode_read ? std::ios::in : std::ios::out | std::ios::trunc) | std::ios::binary;
    std::string const name = path.to_utf8();
    // Only plain files (or a new one when writing): a FIFO would block the open, and a
    // device such as /dev/urandom never ends, so its counts could ask for any amount.
    struct stat st;
    bool const exists = !name.empty() && stat(name.c_str(), &st) == 0;
    if (name.empty() || (exists && !S_ISREG(st.st_mode)) || (!exists && m == mode_read))
        throw unable_to_open();
    stream_.open(name, how);
    if (!stream_.is_open())
        throw unable_to_open();
}

ixo_archive::~ixo_archive() = default;

ixo_archive::mode ixo_archive::get_mode() const
{
    return mode_;
}

bool ixo_archive::read(int size, void* data)
{
    if (mode_ != mode_read || size < 0 || (size > 0 && !data))
        return false;
    stream_.read(static_cast<char*>(data), size);
    return !stream_.fail();
}

bool ixo_archive::write(int size, void const* data)
{
    if (mode_ != mode_write || size < 0 || (size > 0 && !data))
        return false;
    stream_.write(static_cast<char const*>(data), size);
    return !stream_.fail();
}

ixo_object_ptr<ixo_archive_manager> ixo_archive_manager::create()
{
    return ixo_object_ptr<ixo_archive_manager>(new ixo_archive_manager());
}

void ixo_archive_manager::write_packet(ixo_object_ptr<ixo_archive_packet>,
                                       ixo_object_ptr<ixo_archive>)
{
}

ixo_object_ptr<ixo_archive_packet> ixo_archive_manager::read_packet(ixo_object_ptr<ixo_archive>)
{
    return nullptr;
}
