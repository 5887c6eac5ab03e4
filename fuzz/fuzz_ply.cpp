// PLY reader on arbitrary bytes: header, every storage mode, lists, fans and index checks.

#include "fuzz_file.h"

#include <ixocore/mesh/indexed_mesh.h>
#include <ixocore/platform/rply.h>

namespace
{
void quiet(p_ply, const char*) {}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz_file file(data, size);
    if (!file.ok())
        return 0;
    check_read(ixo_indexed_mesh::read_from_ply_file(file.name()));

    // The header enumeration of the PLY layer itself.
    if (p_ply ply = ply_open(file.path().c_str(), quiet, 0, nullptr))
    {
        if (ply_read_header(ply))
        {
            for (const char* c = ply_get_next_comment(ply, nullptr); c;
                 c = ply_get_next_comment(ply, c))
            {
            }
            for (p_ply_element e = ply_get_next_element(ply, nullptr); e;
                 e = ply_get_next_element(ply, e))
                for (p_ply_property p = ply_get_next_property(e, nullptr); p;
                     p = ply_get_next_property(e, p))
                    ply_get_property_info(p, nullptr, nullptr, nullptr, nullptr);
            ply_read(ply);
        }
        ply_close(ply);
    }
    return 0;
}
