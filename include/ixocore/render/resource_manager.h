#pragma once
// ixo_resource_manager: where the host program lives, and the full paths of the resource
// files (the effect file): in the Media folder beside it, or else in the media folder of
// the installed package the library itself was loaded from.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/string.h>

// Resolves resource names against the folder of the running executable. One per
// application; the application creates it when it starts.
class IXO_API ixo_resource_manager : public ixo_object
{
public:
    // A manager for the executable of this process (read once, here). Paths use '/' as
    // separator.
    static ixo_object_ptr<ixo_resource_manager> create();
    // The application's resource manager, or null while the library is not started.
    static ixo_object_ptr<ixo_resource_manager> get_app_resource_manager();

    // The executable's folder + "/Media/" + name, for example /opt/tool/Media/ixo_default.fx
    // for the executable /opt/tool/host. When no such file exists there but the installed
    // package holds it (share/ixocore/Media/name found relative to the library's own file,
    // e.g. /opt/x/share/ixocore/Media/ixo_default.fx for /opt/x/lib/libixocore.so.0), that
    // path instead: a host linked against an installed library needs no copy of the media.
    // Costs up to two file-system look-ups.
    virtual ixo_string get_full_path(const ixo_string& name);
    // The executable's folder without a trailing separator; empty for the root folder and
    // when the executable's path cannot be read.
    virtual ixo_string get_exe_path();

protected:
    ixo_resource_manager(const ixo_resource_manager&) = default;
    ixo_resource_manager& operator=(const ixo_resource_manager&) = default;

private:
    ixo_resource_manager();
    ~ixo_resource_manager() override;

    ixo_string exe_path_;
    ixo_string media_folder_;
    // The installed package's media folder with a trailing separator; empty when the
    // library's own file cannot be found.
    ixo_string package_media_;
};
