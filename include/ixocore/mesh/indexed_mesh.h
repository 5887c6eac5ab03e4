#pragma once
// Indexed triangle meshes: ixo_mesh_vertex, ixo_indexed_mesh and the triangle view
// ixo_mesh_triangle.
//
// A mesh is a vertex array (position and normal) and an index array with three vertex
// numbers per triangle; triangle (p0, p1, p2) faces the side of (p1 - p0) x (p2 - p0).
// Meshes come from the file readers (STL, PLY, VRML 1.0) and from archives; they can be
// reordered for the vertex cache and are uploaded to the device as one vertex buffer
// (24-byte vertices, position then normal) and one 32-bit index buffer.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/string.h>
#include <ixocore/math/vector.h>

#include <cstdio>
#include <vector>

class ixo_archive;
class ixo_indexed_mesh;
struct IDirect3DDevice9;
struct IDirect3DVertexBuffer9;
struct IDirect3DIndexBuffer9;

// One vertex: position then normal, six floats, the layout of the device vertex buffer.
struct IXO_API ixo_mesh_vertex
{
    // Leaves both vectors uninitialised.
    ixo_mesh_vertex() = default;
    ixo_mesh_vertex(ixo_vector3<float> const& position, ixo_vector3<float> const& normal)
        : position(position), normal(normal)
    {
    }

    ixo_vector3<float> position;
    ixo_vector3<float> normal;
};
static_assert(sizeof(ixo_mesh_vertex) == 24, "the device vertex is six floats");

// A light view of one triangle: three vertex numbers and the mesh they index.
class IXO_API ixo_mesh_triangle
{
public:
    ixo_mesh_triangle();
    ixo_mesh_triangle(unsigned int i0, unsigned int i1, unsigned int i2,
                      ixo_object_ptr<ixo_indexed_mesh> mesh);
    // Takes three consecutive indices from `indices`.
    ixo_mesh_triangle(unsigned int const* indices, ixo_object_ptr<ixo_indexed_mesh> mesh);
    ixo_mesh_triangle(ixo_mesh_triangle const& other) = default;
    ixo_mesh_triangle& operator=(ixo_mesh_triangle const& other) = default;

    // The mesh's vertex at the triangle's k-th index (k in 0..2; the triangle must have a
    // mesh and its indices must be in range).
    ixo_mesh_vertex& get_vertex(int k);
    ixo_mesh_vertex const& get_vertex(int k) const;
    // The vertex number at corner k.
    unsigned int get_index(int k) const { return indices_[k]; }
    ixo_object_ptr<ixo_indexed_mesh> get_mesh() const { return mesh_; }
    // normalize((p1 - p0) x (p2 - p0)); a degenerate triangle keeps its near-zero cross
    // product.
    ixo_vector3<float> compute_normal() const;

private:
    unsigned int indices_[3];
    ixo_object_ptr<ixo_indexed_mesh> mesh_;
};

class IXO_API ixo_indexed_mesh : public ixo_object
{
public:
    ixo_indexed_mesh(ixo_indexed_mesh const& other);
    ixo_indexed_mesh& operator=(ixo_indexed_mesh const& other);

    unsigned int get_num_vertices() const;
    unsigned int get_num_indices() const;
    // get_num_indices() / 3.
    unsigned int get_num_triangles() const;

    // Element access; i must be below the vertex count (unchecked).
    ixo_mesh_vertex& get_vertex(unsigned int i);
    ixo_mesh_vertex const& get_vertex(unsigned int i) const;
    void set_vertex(unsigned int i, ixo_mesh_vertex const& vertex);
    // Index 3 * triangle + corner (unchecked).
    unsigned int& get_index(unsigned int triangle, int corner);
    unsigned int get_index(unsigned int triangle, int corner) const;
    void set_index(unsigned int triangle, int corner, unsigned int value);
    // A view of triangle t (indices 3t .. 3t + 2) on this mesh.
    ixo_mesh_triangle get_triangle(int t);
    // The arrays themselves: get_num_vertices() vertices and get_num_indices() indices.
    ixo_mesh_vertex const* get_vertex_data() const;
    unsigned int const* get_index_data() const;
    // True when every index is below the vertex count. A mesh read from an archive may
    // break this; such a mesh is never drawn. O(indices).
    bool has_valid_indices() const;

    // Renumbers the vertices in the order the triangles first use them, for the
    // post-transform vertex cache (D3DXOptimizeVertices). Existing device buffers are not
    // touched: release them first. Does nothing when an index is out of range.
    void optimize_index_buffer();
    // Reorders the triangles for the vertex cache (D3DXOptimizeFaces); each triangle keeps
    // its corners in order. Same preconditions as optimize_index_buffer().
    void optimize_vertex_buffer();
    // optimize_index_buffer(), then optimize_vertex_buffer().
    void optimize_buffers();

    // The device vertex buffer (vertex count * 24 bytes, FVF XYZ | NORMAL, default pool),
    // created and filled on first use. Null when there are no vertices, no device, or the
    // device refuses. The mesh owns it; it lives until release_buffers().
    IDirect3DVertexBuffer9* get_vertex_buffer(IDirect3DDevice9* device);
    // The device index buffer (32-bit indices), likewise; also null when an index is not
    // below the vertex count (checked once, O(indices), until release_buffers()).
    IDirect3DIndexBuffer9* get_index_buffer(IDirect3DDevice9* device);
    // Releases both device buffers and forgets them.
    void release_buffers();

    // Writes the archive record: vertex count, index count (unsigned 32-bit), the 24-byte
    // vertices, the 32-bit indices, all in native byte order. Does nothing for a null
    // archive or mesh; the archive's answers are not checked.
    static void write(ixo_object_ptr<ixo_archive> archive, ixo_object_ptr<ixo_indexed_mesh> mesh);
    // Reads a record written by write(). Null when either count is 0 or unreadable, and
    // when the archive ends before the counts are satisfied (memory grows only with data
    // actually read). Index values are not checked against the vertex count.
    static ixo_object_ptr<ixo_indexed_mesh> read(ixo_object_ptr<ixo_archive> archive);

    // Mesh files. Every reader answers null when the file cannot be opened or read, and
    // then leaves the reason for get_last_read_failure(). Names are converted to the current
    // locale's multibyte encoding for the operating system, or to UTF-8 when they have no
    // form there (a UTF-8 name under the "C" locale). A failed allocation (a sparse file
    // that claims more than memory holds) gives null too; arrays grow with the data read.

    // Why the last mesh file read on this thread gave null, as one English sentence
    // without the file's name, for example "PLY element \"vertex\" claims 2147483648
    // entries but the file holds 312 bytes". Empty after a read that gave a mesh and on a
    // thread that has read none. Each thread has its own. O(length of the reason).
    static ixo_string get_last_read_failure();

    // By the last four characters of the name, ignoring case: ".ply" or ".stl"; any other
    // name gives null.
    static ixo_object_ptr<ixo_indexed_mesh> read_from_file(ixo_string const& name);
    // STL: ASCII when the file holds no byte of 127 or more, binary otherwise; when that
    // form fails, the other is tried where it fits: binary when the size is exactly
    // 84 + 50 * the facet count, ASCII when the first word is "solid". ASCII files may
    // end their lines in LF, CR LF or CR, or hold everything on one line. Equal positions
    // are merged into one vertex (numbered in order of first appearance) whose normal is
    // the normalised sum of the facet normals given in the file. A binary file whose facet
    // count promises more bytes than it holds gives null, as does an ASCII facet without
    // its three numbers per line. O(size of the file).
    static ixo_object_ptr<ixo_indexed_mesh> read_from_stl_file(ixo_string const& name);
    // PLY (ascii or binary): "x", "y", "z" of element "vertex" and the list
    // "vertex_indices" (or "vertex_index") of element "face". Faces of more than three
    // vertices become fans (v0, vk, vk+1); faces of fewer are dropped. An index outside
    // the vertex array gives null. Normals are computed from the positions.
    static ixo_object_ptr<ixo_indexed_mesh> read_from_ply_file(ixo_string const& name);
    // VRML 1.0: the number of lines containing "Material {" (each starts a section); 0
    // when the file cannot be opened. Lines are read whole, however long (a line of more
    // than 16 MiB is cut at a separator, so no number is split).
    static int calculate_meshes_in_vrml_file(ixo_string const& name);
    // The Coordinate3 / Normal / IndexedFaceSet geometry of section `index` (0-based):
    // null when the file cannot be opened or has no such section. Faces are fans; faces
    // naming a point that does not exist are dropped. Vertices that get no normal from a
    // normalIndex list get the normalised sum of their triangles' normals.
    static ixo_object_ptr<ixo_indexed_mesh> read_from_vrml_file(ixo_string const& name, int index);
    // Every section as one mesh, each section's indices offset by the points before it.
    // With `flip_normals`, a file normal pointing away from its face's computed normal is
    // reversed before use.
    static ixo_object_ptr<ixo_indexed_mesh> read_all_meshes_from_vrml_file(ixo_string const& name,
                                                                           bool flip_normals);
    // The same on VRML text in memory: `buffer` is the address of a pointer to one
    // NUL-terminated text, read as the file reader reads a file. Null for a null `buffer`
    // or `*buffer`; the pointer is left unchanged.
    static ixo_object_ptr<ixo_indexed_mesh>
    read_all_meshes_from_vrml_file_buffer(char** buffer, bool flip_normals);

private:
    friend class ixo_mesh_builder;

    ixo_indexed_mesh();
    ~ixo_indexed_mesh() override;

    static ixo_object_ptr<ixo_indexed_mesh> create_empty();
    // Sets every normal to the normalised sum of the unit normals of the triangles that use
    // the vertex (each face counts once). Triangles with an index out of range are ignored.
    void make_normals_from_positions();
    static ixo_object_ptr<ixo_indexed_mesh> read_from_stl_ascii(FILE* file);
    static ixo_object_ptr<ixo_indexed_mesh> read_from_stl_binary(FILE* file);

    std::vector<ixo_mesh_vertex> vertices_;
    std::vector<unsigned int> indices_;
    IDirect3DVertexBuffer9* vertex_buffer_ = nullptr;
    IDirect3DIndexBuffer9* index_buffer_ = nullptr;
    // Set when get_index_buffer found an index out of range; cleared by release_buffers().
    bool indices_refused_ = false;
};
