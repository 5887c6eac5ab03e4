#include <ixocore/render/resource_manager.h>

#include <ixocore/app/application.h>
#include <ixocore/platform/win32.h>

#include <filesystem>
#include <vector>

#ifndef IXO_PACKAGE_MEDIA_FROM_LIBRARY
#define IXO_PACKAGE_MEDIA_FROM_LIBRARY "../share/ixocore/Media"
#endif

namespace
{
constexpr DWORD initial_path_length = 256;

// The folder of a module's file (the executable for a null module), '/'-separated and
// without a trailing separator; empty when the path cannot be read.
ixo_string module_folder(HMODULE module)
{
    std::vector<WCHAR> buffer(initial_path_length);
    DWORD length = GetModuleFileNameW(module, buffer.data(), DWORD(buffer.size()));
    // A full buffer means the path was cut: ask again with room for it. Linux paths are
    // bounded (PATH_MAX), so one larger buffer is always enough.
    if (length >= buffer.size())
    {
        buffer.assign(std::size_t(length) * 16, WCHAR(0));
        length = GetModuleFileNameW(module, buffer.data(), DWORD(buffer.size()));
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
    return ixo_string(buffer.data());
}

// Any address inside the library identifies its module.
void library_marker() {}

bool file_exists(const ixo_string& path)
{
    std::error_code ec;
    return std::filesystem::is_regular_file(ixo_native_path(path.c_str()), ec);
}
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

ixo_resource_manager::ixo_resource_manager()
    : exe_path_(module_folder(nullptr)), media_folder_(IXO_TEXT("/Media/"))
{
    HMODULE library = nullptr;
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCWSTR>(&library_marker), &library))
    {
        ixo_string const folder = module_folder(library);
        if (!folder.is_empty())
            package_media_ =
                folder + ixo_string("/") + ixo_string(IXO_PACKAGE_MEDIA_FROM_LIBRARY "/");
    }
}

ixo_resource_manager::~ixo_resource_manager() = default;

ixo_string ixo_resource_manager::get_full_path(const ixo_string& name)
{
    ixo_string const beside = exe_path_ + media_folder_ + name;
    if (package_media_.is_empty() || name.is_empty() || file_exists(beside))
        return beside;
    ixo_string const installed = package_media_ + name;
    return file_exists(installed) ? installed : beside;
}

ixo_string ixo_resource_manager::get_exe_path()
{
    return exe_path_;
}
