// VRML 1.0 readers on arbitrary text: sections, lists, long lines, fans and normals.

#include "fuzz_file.h"

#include <ixocore/mesh/indexed_mesh.h>

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<char> text(data, data + size);
    text.push_back('\0');
    char* buffer = text.data();
    bool flip = size > 0 && (data[0] & 1);
    check_read(ixo_indexed_mesh::read_all_meshes_from_vrml_file_buffer(&buffer, flip));

    fuzz_file file(data, size);
    if (!file.ok())
        return 0;
    int sections = ixo_indexed_mesh::calculate_meshes_in_vrml_file(file.name());
    if (sections > 0)
    {
        auto last = ixo_indexed_mesh::read_from_vrml_file(file.name(), sections - 1);
        if (!last)
            __builtin_trap();
        check_read(last);
    }
    return 0;
}
