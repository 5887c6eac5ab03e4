#include <ixocore/render/resource_manager.h>

#include <ixocore/app/application.h>
#include <ixocore/platform/win32.h>

#include <vector>

namespace
{
constexpr DWORD initial_path_length = 256;
} // namespace

ixo_object_ptr<ixo_resource_manager> ixo_resource_manager::create()
{
    return new ixo_resource_manager;
}

ixo_object_ptr<ixo_resource_manager> ixo_resource_manager::get_app_resource_manager()
{
    ixo_application* app = ixo_application::instance();
    return app ? app->get_resource_manager() : nullptr;
}

ixo_resource_manager::ixo_resource_manager() : media_folder_(IXO_TEXT("/Media/"))
{
    std::vector<WCHAR> buffer(initial_path_length);
    DWORD length = GetModuleFileNameW(nullptr, buffer.data(), DWORD(buffer.size()));
    // A full buffer means the path was cut: ask again with room for it. Linux paths are
    // bounded (PATH_MAX), so one larger buffer is always enough.
    if (length >= buffer.size())
    {
        buffer.assign(std::size_t(length) * 16, WCHAR(0));
        length = GetModuleFileNameW(nullptr, buffer.data(), DWORD(buffer.size()));
        if (length >= buffer.size())
            length = 0;
    }
    buffer.resize(std::size_t(length));
    // The path arrives in the Windows form; files are opened with the native separator.
    for (WCHAR& c : buffer)
        if (c == u'\\')
            c = u'/';
    std::size_t cut = 0;
    for (std::size_t i = 0; i < buffer.size(); ++i)
        if (buffer[i] == u'/')
            cut = i;
    buffer.resize(cut);
    buffer.push_back(0);
    exe_path_ = buffer.data();
}

ixo_resource_manager::~ixo_resource_manager() = default;

ixo_string ixo_resource_manager::get_full_path(const ixo_string& name)
{
    return exe_path_ + media_folder_ + name;
}

ixo_string ixo_resource_manager::get_exe_path()
{
    return exe_path_;
}
