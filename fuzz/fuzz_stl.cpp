// STL reader on arbitrary bytes: ASCII and binary detection, counts and vertex merging.

#include "fuzz_file.h"

#include <ixocore/mesh/indexed_mesh.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz_file file(data, size);
    if (!file.ok())
        return 0;
    check_read(ixo_indexed_mesh::read_from_stl_file(file.name()));
    return 0;
}
