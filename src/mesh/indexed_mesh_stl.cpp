// STL meshes, ASCII and binary: equal positions merge into one vertex whose normal sums the
// facet normals of the file. Input is read in large blocks; arrays grow geometrically and
// counts are checked against the file's size before anything is sized from them.

#include "indexed_mesh_files.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

using namespace ixo_mesh_files;

namespace
{

// Merges equal positions into one vertex. The key is the exact bit pattern of the three
// coordinates (with -0 read as +0, which compares equal), so the result is the same as
// that of an ordered map under exact comparison: one vertex per distinct position,
// numbered in order of first appearance, accumulating the normal of every facet corner.
class vertex_merger
{
public:
    explicit vertex_merger(std::vector<ixo_mesh_vertex>& vertices, std::size_t expected)
        : vertices_(vertices)
    {
        std::size_t capacity = 64;
        while (capacity < expected * 2 && capacity < (std::size_t(1) << 30))
            capacity *= 2;
        table_.assign(capacity, 0);
        vertices_.reserve(expected);
    }

    unsigned int add(float const* position, vec3 const& normal)
    {
        std::uint32_t key[3] = {bits(position[0]), bits(position[1]), bits(position[2])};
        std::size_t mask = table_.size() - 1;
        std::size_t slot = hash(key) & mask;
        for (;;)
        {
            std::uint32_t entry = table_[slot];
            if (entry == 0)
                break;
            ixo_mesh_vertex& v = vertices_[entry - 1];
            if (bits(v.position[0]) == key[0] && bits(v.position[1]) == key[1] &&
                bits(v.position[2]) == key[2])
            {
                v.normal += normal;
                return entry - 1;
            }
            slot = (slot + 1) & mask;
        }
        vertices_.emplace_back(vec3(position[0], position[1], position[2]), normal);
        unsigned int index = static_cast<unsigned int>(vertices_.size() - 1);
        table_[slot] = index + 1;
        if (vertices_.size() * 2 > table_.size())
            grow();
        return index;
    }

    // Normalises every accumulated normal and releases the spare capacity.
    void finish()
    {
        for (ixo_mesh_vertex& v : vertices_)
            v.normal.normalize();
        vertices_.shrink_to_fit();
        std::vector<std::uint32_t>().swap(table_);
    }

private:
    static std::uint32_t bits(float f)
    {
        std::uint32_t b;
        std::memcpy(&b, &f, 4);
        return (b & 0x7fffffffu) == 0 ? 0 : b;
    }
    static std::size_t hash(std::uint32_t const* key)
    {
        std::uint64_t h = key[0] * 0x9E3779B97F4A7C15ull;
        h ^= key[1] * 0xC2B2AE3D27D4EB4Full + (h >> 29);
        h ^= key[2] * 0x165667B19E3779F9ull + (h >> 32);
        h ^= h >> 31;
        return static_cast<std::size_t>(h * 0xD6E8FEB86659FD93ull >> 20);
    }
    void grow()
    {
        std::vector<std::uint32_t> bigger(table_.size() * 2, 0);
        std::size_t mask = bigger.size() - 1;
        for (std::size_t i = 0; i < vertices_.size(); ++i)
        {
            ixo_mesh_vertex const& v = vertices_[i];
            std::uint32_t key[3] = {bits(v.position[0]), bits(v.position[1]), bits(v.position[2])};
            std::size_t slot = hash(key) & mask;
            while (bigger[slot] != 0)
                slot = (slot + 1) & mask;
            bigger[slot] = static_cast<std::uint32_t>(i + 1);
        }
        table_.swap(bigger);
    }

    std::vector<ixo_mesh_vertex>& vertices_;
    std::vector<std::uint32_t> table_;
};

// Scans the whole stream once: whether it holds a byte of 127 or more (then it is binary
// STL) and, for text, how many lines hold at least four characters before their line end

struct stl_scan
{
    bool binary = false;
    long long long_lines = 0;
};

stl_scan scan_stl(FILE* fp)
{
    stl_scan result;
    std::vector<unsigned char> block(buffer_size_for(fp));
    long long line_length = 0;
    for (;;)
    {
        std::size_t got = std::fread(block.data(), 1, block.size(), fp);
        if (got == 0)
            break;
        for (std::size_t i = 0; i < got; ++i)
        {
            unsigned char c = block[i];
            if (c >= 127)
            {
                result.binary = true;
                std::rewind(fp);
                return result;
            }
            if (c == '\n')
            {
                if (line_length >= 4)
                    ++result.long_lines;
                line_length = 0;
            }
            else if (c != '\r')
                ++line_length;
        }
    }
    if (line_length >= 4)
        ++result.long_lines;
    std::rewind(fp);
    return result;
}

// White-space separated tokens from a stream through a 1 MiB window. A token is valid

ixo_object_ptr<ixo_indexed_mesh> parse_stl_ascii(FILE* fp, long long long_lines)
{
    // Seven lines per facet; the solid's opening and closing lines fall away in the rounding.
    long long facets = long_lines / 7;
    ixo_object_ptr<ixo_indexed_mesh> mesh = ixo_mesh_builder::create();
    auto& vertices = ixo_mesh_builder::vertices(*mesh);
    auto& indices = ixo_mesh_builder::indices(*mesh);
    indices.reserve(std::size_t(facets) * 3);
    vertex_merger merger(vertices, std::size_t(facets) / 2 + 3);
    token_reader tokens(fp);
    tokens.skip_line();
    // The line count can only overestimate the facets (blank lines, several solids), so
    // the end of the stream between facets ends the mesh.
    for (long long f = 0; f < facets;)
    {
        const char* word = nullptr;
        const char* word_end = nullptr;
        if (!tokens.next(word, word_end))
            break;
        // "endsolid name" and, in files of several solids, "solid name" between facets.
        if (std::string_view(word, std::size_t(word_end - word)) == "endsolid")
        {
            tokens.skip_line();
            if (!tokens.next(word, word_end))
                break;
            if (std::string_view(word, std::size_t(word_end - word)) != "solid")
                return nullptr;
            tokens.skip_line();
            continue;
        }
        ++f;
        float normal[3];
        float corners[9];
        // facet normal nx ny nz / outer loop / vertex x y z (three times) / endloop endfacet
        if (!tokens.skip(1) || !tokens.read_floats(normal, 3) || !tokens.skip(2))
            return nullptr;
        for (int k = 0; k < 3; ++k)
            if (!tokens.skip(1) || !tokens.read_floats(corners + 3 * k, 3))
                return nullptr;
        if (!tokens.skip(2))
            return nullptr;
        vec3 n(normal[0], normal[1], normal[2]);
        for (int k = 0; k < 3; ++k)
            indices.push_back(merger.add(corners + 3 * k, n));
    }
    if (std::ferror(fp))
        return nullptr;
    merger.finish();
    return mesh;
}

float little_endian_float(const unsigned char* p)
{
    std::uint32_t b = std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
                      std::uint32_t(p[3]) << 24;
    float f;
    std::memcpy(&f, &b, 4);
    return f;
}

} // namespace

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_stl_file(ixo_string const& name)
{
    std::string path = name.to_utf8();
    file_handle file(path, "r");
    if (!file.fp)
        return nullptr;
    stl_scan scan = scan_stl(file.fp);
    if (std::ferror(file.fp))
        return nullptr;
    if (!scan.binary)
        return parse_stl_ascii(file.fp, scan.long_lines);
    file_handle binary(path, "rb");
    if (!binary.fp)
        return nullptr;
    return read_from_stl_binary(binary.fp);
}

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_stl_ascii(FILE* file)
{
    if (!file)
        return nullptr;
    stl_scan scan = scan_stl(file);
    return parse_stl_ascii(file, scan.long_lines);
}

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_stl_binary(FILE* file)
{
    if (!file)
        return nullptr;
    unsigned char header[84];
    if (std::fread(header, 1, 84, file) != 84)
        return nullptr;
    std::uint32_t facets = std::uint32_t(header[80]) | std::uint32_t(header[81]) << 8 |
                           std::uint32_t(header[82]) << 16 | std::uint32_t(header[83]) << 24;
    // The count must be backed by data before any array is sized from it.
    long long size = stream_size(file);
    if (size < 0 || 84 + 50 * static_cast<long long>(facets) > size)
        return nullptr;

    ixo_object_ptr<ixo_indexed_mesh> mesh = create_empty();
    mesh->indices_.reserve(std::size_t(facets) * 3);
    vertex_merger merger(mesh->vertices_, std::size_t(facets) / 2 + 3);
    constexpr std::size_t block_facets = 4096;
    std::vector<unsigned char> block(block_facets * 50);
    std::uint32_t done = 0;
    while (done < facets)
    {
        std::size_t n = std::min<std::size_t>(facets - done, block_facets);
        if (std::fread(block.data(), 50, n, file) != n)
            return nullptr;
        for (std::size_t f = 0; f < n; ++f)
        {
            const unsigned char* p = block.data() + 50 * f;
            float values[12];
            for (int i = 0; i < 12; ++i)
                values[i] = little_endian_float(p + 4 * i);
            vec3 normal(values[0], values[1], values[2]);
            for (int k = 0; k < 3; ++k)
                mesh->indices_.push_back(merger.add(values + 3 + 3 * k, normal));
        }
        done += std::uint32_t(n);
    }
    merger.finish();
    return mesh;
}
