// Indexed mesh: data, normals, cache optimisation, device buffers and the archive record.
// The file readers live in indexed_mesh_files.cpp.

#include <ixocore/mesh/indexed_mesh.h>

#include <ixocore/app/archive.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

// ---------------------------------------------------------------------------------------
// ixo_mesh_triangle

ixo_mesh_triangle::ixo_mesh_triangle() : indices_{0, 0, 0} {}

ixo_mesh_triangle::ixo_mesh_triangle(unsigned int i0, unsigned int i1, unsigned int i2,
                                     ixo_object_ptr<ixo_indexed_mesh> mesh)
    : indices_{i0, i1, i2}, mesh_(std::move(mesh))
{
}

ixo_mesh_triangle::ixo_mesh_triangle(unsigned int const* indices,
                                     ixo_object_ptr<ixo_indexed_mesh> mesh)
    : indices_{indices[0], indices[1], indices[2]}, mesh_(std::move(mesh))
{
}

ixo_mesh_vertex& ixo_mesh_triangle::get_vertex(int k)
{
    return mesh_->get_vertex(indices_[k]);
}

ixo_mesh_vertex const& ixo_mesh_triangle::get_vertex(int k) const
{
    return mesh_->get_vertex(indices_[k]);
}

ixo_vector3<float> ixo_mesh_triangle::compute_normal() const
{
    ixo_vector3<float> const& p0 = get_vertex(0).position;
    ixo_vector3<float> n = (get_vertex(1).position - p0) ^ (get_vertex(2).position - p0);
    n.normalize();
    return n;
}

// ---------------------------------------------------------------------------------------
// ixo_indexed_mesh

ixo_indexed_mesh::ixo_indexed_mesh() = default;

// A copy shares the device buffers of the original, each with its own reference.
ixo_indexed_mesh::ixo_indexed_mesh(ixo_indexed_mesh const& other)
    : ixo_object(other), vertices_(other.vertices_), indices_(other.indices_),
      vertex_buffer_(other.vertex_buffer_), index_buffer_(other.index_buffer_)
{
    if (vertex_buffer_)
        vertex_buffer_->AddRef();
    if (index_buffer_)
        index_buffer_->AddRef();
}

ixo_indexed_mesh& ixo_indexed_mesh::operator=(ixo_indexed_mesh const& other)
{
    if (this == &other)
        return *this;
    if (other.vertex_buffer_)
        other.vertex_buffer_->AddRef();
    if (other.index_buffer_)
        other.index_buffer_->AddRef();
    release_buffers();
    vertices_ = other.vertices_;
    indices_ = other.indices_;
    vertex_buffer_ = other.vertex_buffer_;
    index_buffer_ = other.index_buffer_;
    return *this;
}

ixo_indexed_mesh::~ixo_indexed_mesh()
{
    release_buffers();
}

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::create_empty()
{
    return ixo_object_ptr<ixo_indexed_mesh>(new ixo_indexed_mesh());
}

unsigned int ixo_indexed_mesh::get_num_vertices() const
{
    return static_cast<unsigned int>(vertices_.size());
}

unsigned int ixo_indexed_mesh::get_num_indices() const
{
    return static_cast<unsigned int>(indices_.size());
}

unsigned int ixo_indexed_mesh::get_num_triangles() const
{
    return get_num_indices() / 3;
}

ixo_mesh_vertex& ixo_indexed_mesh::get_vertex(unsigned int i)
{
    return vertices_[i];
}

ixo_mesh_vertex const& ixo_indexed_mesh::get_vertex(unsigned int i) const
{
    return vertices_[i];
}

void ixo_indexed_mesh::set_vertex(unsigned int i, ixo_mesh_vertex const& vertex)
{
    vertices_[i] = vertex;
}

unsigned int& ixo_indexed_mesh::get_index(unsigned int triangle, int corner)
{
    return indices_[3 * std::size_t(triangle) + corner];
}

unsigned int ixo_indexed_mesh::get_index(unsigned int triangle, int corner) const
{
    return indices_[3 * std::size_t(triangle) + corner];
}

void ixo_indexed_mesh::set_index(unsigned int triangle, int corner, unsigned int value)
{
    indices_[3 * std::size_t(triangle) + corner] = value;
}

ixo_mesh_triangle ixo_indexed_mesh::get_triangle(int t)
{
    return ixo_mesh_triangle(&indices_[3 * std::size_t(t)], ixo_object_ptr<ixo_indexed_mesh>(this));
}

ixo_mesh_vertex const* ixo_indexed_mesh::get_vertex_data() const
{
    return vertices_.data();
}

unsigned int const* ixo_indexed_mesh::get_index_data() const
{
    return indices_.data();
}

bool ixo_indexed_mesh::has_valid_indices() const
{
    std::size_t n = vertices_.size();
    return std::all_of(indices_.begin(), indices_.end(), [n](unsigned int i) { return i < n; });
}

void ixo_indexed_mesh::make_normals_from_positions()
{
    for (ixo_mesh_vertex& v : vertices_)
        v.normal = ixo_vector3<float>(0, 0, 0);
    std::size_t n = vertices_.size();
    for (std::size_t t = 0; t + 2 < indices_.size(); t += 3)
    {
        unsigned int a = indices_[t], b = indices_[t + 1], c = indices_[t + 2];
        if (a >= n || b >= n || c >= n)
            continue;
        ixo_vector3<float> const& p0 = vertices_[a].position;
        ixo_vector3<float> normal = (vertices_[b].position - p0) ^ (vertices_[c].position - p0);
        normal.normalize();
        vertices_[a].normal += normal;
        vertices_[b].normal += normal;
        vertices_[c].normal += normal;
    }
    for (ixo_mesh_vertex& v : vertices_)
        v.normal.normalize();
}

// ---------------------------------------------------------------------------------------
// Vertex cache optimisation

void ixo_indexed_mesh::optimize_index_buffer()
{
    if (vertices_.empty() || indices_.size() < 3 || !has_valid_indices())
        return;
    std::vector<DWORD> remap(vertices_.size());
    if (FAILED(D3DXOptimizeVertices(indices_.data(), get_num_triangles(), get_num_vertices(), TRUE,
                                    remap.data())))
        return;
    std::vector<ixo_mesh_vertex> old = vertices_;
    for (std::size_t i = 0; i < old.size(); ++i)
        if (remap[i] < vertices_.size())
            vertices_[remap[i]] = old[i];
    for (unsigned int& index : indices_)
        index = remap[index];
}

void ixo_indexed_mesh::optimize_vertex_buffer()
{
    if (vertices_.empty() || indices_.size() < 3 || !has_valid_indices())
        return;
    unsigned int triangles = get_num_triangles();
    std::vector<DWORD> remap(triangles);
    if (FAILED(
            D3DXOptimizeFaces(indices_.data(), triangles, get_num_vertices(), TRUE, remap.data())))
        return;
    // remap[i] names the old triangle that goes to position i; it is a permutation, so
    // the set of triangles is unchanged.
    std::vector<unsigned int> old = indices_;
    for (std::size_t f = 0; f < triangles; ++f)
    {
        if (remap[f] >= triangles)
            return void(indices_.swap(old));
        std::memcpy(&indices_[3 * f], &old[3 * std::size_t(remap[f])], 3 * sizeof(unsigned int));
    }
}

void ixo_indexed_mesh::optimize_buffers()
{
    optimize_index_buffer();
    optimize_vertex_buffer();
}

// ---------------------------------------------------------------------------------------
// Device buffers

IDirect3DVertexBuffer9* ixo_indexed_mesh::get_vertex_buffer(IDirect3DDevice9* device)
{
    if (vertex_buffer_)
        return vertex_buffer_;
    std::size_t bytes = vertices_.size() * sizeof(ixo_mesh_vertex);
    if (!device || bytes == 0 || bytes > 0xffffffffu)
        return nullptr;
    IDirect3DVertexBuffer9* buffer = nullptr;
    if (FAILED(device->CreateVertexBuffer(UINT(bytes), 0, D3DFVF_XYZ | D3DFVF_NORMAL,
                                          D3DPOOL_DEFAULT, &buffer, nullptr)) ||
        !buffer)
        return nullptr;
    void* data = nullptr;
    if (FAILED(buffer->Lock(0, 0, &data, 0)) || !data)
    {
        buffer->Release();
        return nullptr;
    }
    std::memcpy(data, vertices_.data(), bytes);
    buffer->Unlock();
    vertex_buffer_ = buffer;
    return vertex_buffer_;
}

IDirect3DIndexBuffer9* ixo_indexed_mesh::get_index_buffer(IDirect3DDevice9* device)
{
    if (index_buffer_)
        return index_buffer_;
    std::size_t bytes = indices_.size() * sizeof(unsigned int);
    if (!device || bytes == 0 || bytes > 0xffffffffu || indices_refused_)
        return nullptr;
    // Indices beyond the vertices would make every draw read outside the vertex buffer.
    if (!has_valid_indices())
    {
        indices_refused_ = true;
        return nullptr;
    }
    IDirect3DIndexBuffer9* buffer = nullptr;
    if (FAILED(device->CreateIndexBuffer(UINT(bytes), 0, D3DFMT_INDEX32, D3DPOOL_DEFAULT, &buffer,
                                         nullptr)) ||
        !buffer)
        return nullptr;
    void* data = nullptr;
    if (FAILED(buffer->Lock(0, 0, &data, 0)) || !data)
    {
        buffer->Release();
        return nullptr;
    }
    std::memcpy(data, indices_.data(), bytes);
    buffer->Unlock();
    index_buffer_ = buffer;
    return index_buffer_;
}

void ixo_indexed_mesh::release_buffers()
{
    if (vertex_buffer_)
        vertex_buffer_->Release();
    if (index_buffer_)
        index_buffer_->Release();
    vertex_buffer_ = nullptr;
    index_buffer_ = nullptr;
    indices_refused_ = false;
}

// ---------------------------------------------------------------------------------------
// Archive record

void ixo_indexed_mesh::write(ixo_object_ptr<ixo_archive> archive,
                             ixo_object_ptr<ixo_indexed_mesh> mesh)
{
    if (!archive || !mesh)
        return;
    unsigned int vertex_count = mesh->get_num_vertices();
    unsigned int index_count = mesh->get_num_indices();
    archive->write(4, &vertex_count);
    archive->write(4, &index_count);
    for (ixo_mesh_vertex const& v : mesh->vertices_)
        archive->write(int(sizeof(ixo_mesh_vertex)), &v);
    for (unsigned int const& i : mesh->indices_)
        archive->write(4, &i);
}

namespace
{
// Reads `count` items of T in blocks that double in size, so that a count larger than the
// data allocates no more than about twice what the archive actually holds.
template <typename T>
bool read_array(ixo_archive& archive, std::uint32_t count, std::vector<T>& out)
{
    std::size_t block = 1024;
    out.clear();
    std::size_t done = 0;
    while (done < count)
    {
        std::size_t n = std::min<std::size_t>(count - done, block);
        block = std::min<std::size_t>(block * 2, std::size_t(1) << 20);
        out.resize(done + n);
        if (!archive.read(int(n * sizeof(T)), out.data() + done))
            return false;
        done += n;
    }
    return true;
}
} // namespace

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read(ixo_object_ptr<ixo_archive> archive)
{
    if (!archive)
        return nullptr;
    std::uint32_t vertex_count = 0, index_count = 0;
    if (!archive->read(4, &vertex_count) || vertex_count == 0)
        return nullptr;
    if (!archive->read(4, &index_count) || index_count == 0)
        return nullptr;
    ixo_object_ptr<ixo_indexed_mesh> mesh = create_empty();
    if (!read_array(*archive, vertex_count, mesh->vertices_) ||
        !read_array(*archive, index_count, mesh->indices_))
        return nullptr;
    return mesh;
}
