// The indexed-mesh archive record on arbitrary bytes, then the operations a restored mesh
// must survive: optimisation and normals of whatever indices it holds.

#include "fuzz_file.h"

#include <ixocore/app/archive.h>
#include <ixocore/mesh/indexed_mesh.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz_file file(data, size);
    if (!file.ok())
        return 0;
    auto mesh = ixo_indexed_mesh::read(ixo_archive::open(file.name(), ixo_archive::mode_read));
    if (!mesh)
        return 0;
    mesh->optimize_buffers();
    if (mesh->has_valid_indices() && mesh->get_num_triangles() > 0)
        mesh->get_triangle(0).compute_normal();
    return 0;
}
