// STL meshes, ASCII and binary: equal positions merge into one vertex whose normal sums the
// facet normals of the file. Input is read in large blocks; arrays grow geometrically and
// counts are checked against the file's size before anything is sized from them.

#include "indexed_mesh_files.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
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
// (a CR before the LF does not count). Leaves the stream at its start.
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

bool word_is(const char* begin, const char* end, std::string_view word)
{
    return std::string_view(begin, std::size_t(end - begin)) == word;
}

// Skips the name after "solid" or "endsolid": the rest of its line or, in a file written
// on one line, everything up to one of the `stops` keywords.
void skip_name(token_reader& tokens, std::initializer_list<std::string_view> stops)
{
    const char *b, *e;
    while (tokens.next_on_line(b, e))
        for (std::string_view stop : stops)
            if (word_is(b, e, stop))
                return tokens.put_back(b);
}

ixo_object_ptr<ixo_indexed_mesh> parse_stl_ascii(FILE* fp, long long long_lines)
{
    // Seven lines per facet: a size hint only, as the lines may be joined or blank.
    std::size_t const hint = std::size_t(std::min<long long>(long_lines / 7, 1 << 20));
    ixo_object_ptr<ixo_indexed_mesh> mesh = ixo_mesh_builder::create();
    auto& vertices = ixo_mesh_builder::vertices(*mesh);
    auto& indices = ixo_mesh_builder::indices(*mesh);
    indices.reserve(hint * 3);
    vertex_merger merger(vertices, hint / 2 + 3);
    token_reader tokens(fp);
    const char* word = nullptr;
    const char* word_end = nullptr;
    if (tokens.next(word, word_end))
    {
        if (word_is(word, word_end, "solid"))
            skip_name(tokens, {"facet", "endsolid"});
        else
            tokens.skip_line();
    }
    for (long long facet = 1;; ++facet)
    {
        if (!tokens.next(word, word_end))
            break;
        // "endsolid name" and, in files of several solids, "solid name" between facets.
        if (word_is(word, word_end, "endsolid"))
        {
            skip_name(tokens, {"solid"});
            if (!tokens.next(word, word_end))
                break;
            if (!word_is(word, word_end, "solid"))
                return fail("ASCII STL: something other than a solid follows \"endsolid\"");
            skip_name(tokens, {"facet", "endsolid"});
            --facet;
            continue;
        }
        float normal[3];
        float corners[9];
        // facet normal nx ny nz / outer loop / vertex x y z (three times) / endloop endfacet
        bool complete = tokens.skip(1) && tokens.read_floats(normal, 3) && tokens.skip(2);
        for (int k = 0; k < 3 && complete; ++k)
            complete = tokens.skip(1) && tokens.read_floats(corners + 3 * k, 3);
        if (!complete || !tokens.skip(2))
            return fail("ASCII STL facet " + std::to_string(facet) +
                        " is incomplete or holds something other than a number");
        vec3 n(normal[0], normal[1], normal[2]);
        for (int k = 0; k < 3; ++k)
            indices.push_back(merger.add(corners + 3 * k, n));
    }
    if (std::ferror(fp))
        return fail("the file cannot be read to its end");
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

// What the first bytes say about the other form: whether the size is exactly that of a
// binary file with the facet count at bytes 80..83, and whether the first word is "solid".
struct stl_fit
{
    bool binary = false;
    bool ascii = false;
};

stl_fit stl_fits(FILE* fp, long long size)
{
    stl_fit fit;
    unsigned char head[84];
    std::size_t got = std::fread(head, 1, sizeof head, fp);
    std::rewind(fp);
    if (got == sizeof head)
    {
        std::uint32_t facets = std::uint32_t(head[80]) | std::uint32_t(head[81]) << 8 |
                               std::uint32_t(head[82]) << 16 | std::uint32_t(head[83]) << 24;
        fit.binary = size == 84 + 50 * static_cast<long long>(facets);
    }
    std::size_t i = 0;
    while (i < got && is_space(char(head[i])))
        ++i;
    fit.ascii = got - i >= 5 && std::memcmp(head + i, "solid", 5) == 0 &&
                (got - i == 5 || is_space(char(head[i + 5])));
    return fit;
}

} // namespace

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_stl_file(ixo_string const& name)
{
    return guarded(
        [&]() -> ixo_object_ptr<ixo_indexed_mesh>
        {
            file_handle file(name, "r");
            if (!file.fp)
                return fail(file.why);
            stl_scan scan = scan_stl(file.fp);
            if (std::ferror(file.fp))
                return fail("the file cannot be read to its end");
            stl_fit fit = stl_fits(file.fp, file.size);
            // The form the content suggests first; when it fails, the other where the
            // file fits it. The first form's reason is the one that stays.
            ixo_object_ptr<ixo_indexed_mesh> mesh = scan.binary
                                                        ? read_from_stl_binary(file.fp)
                                                        : parse_stl_ascii(file.fp, scan.long_lines);
            // Text that names no facet may be a binary file whose bytes all stay below 127.
            bool other =
                scan.binary ? !mesh && fit.ascii : fit.binary && (!mesh || mesh->indices_.empty());
            if (!other)
                return mesh;
            ixo_object_ptr<ixo_indexed_mesh> first = mesh;
            std::string why = failure();
            std::rewind(file.fp);
            mesh = scan.binary ? parse_stl_ascii(file.fp, 0) : read_from_stl_binary(file.fp);
            if (!mesh && !first)
                return fail(why);
            clear_failure();
            return mesh ? mesh : first;
        });
}

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_stl_ascii(FILE* file)
{
    if (!file)
        return fail("no stream");
    stl_scan scan = scan_stl(file);
    return parse_stl_ascii(file, scan.long_lines);
}

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_stl_binary(FILE* file)
{
    if (!file)
        return fail("no stream");
    unsigned char header[84];
    if (std::fread(header, 1, 84, file) != 84)
        return fail("binary STL shorter than its 84-byte header");
    std::uint32_t facets = std::uint32_t(header[80]) | std::uint32_t(header[81]) << 8 |
                           std::uint32_t(header[82]) << 16 | std::uint32_t(header[83]) << 24;
    // The count must be backed by data before any array is sized from it.
    long long size = stream_size(file);
    long long needed = 84 + 50 * static_cast<long long>(facets);
    if (size < 0 || needed > size)
        return fail("binary STL claims " + std::to_string(facets) + " facets (" +
                    std::to_string(needed) + " bytes) but the file holds " + std::to_string(size) +
                    " bytes");

    ixo_object_ptr<ixo_indexed_mesh> mesh = create_empty();
    // A sparse file backs any count with holes: the arrays start at most a million facets
    // large and grow with what is read.
    std::size_t const hint = std::min<std::size_t>(facets, 1 << 20);
    mesh->indices_.reserve(hint * 3);
    vertex_merger merger(mesh->vertices_, hint / 2 + 3);
    constexpr std::size_t block_facets = 4096;
    std::vector<unsigned char> block(block_facets * 50);
    std::uint32_t done = 0;
    while (done < facets)
    {
        std::size_t n = std::min<std::size_t>(facets - done, block_facets);
        if (std::fread(block.data(), 50, n, file) != n)
            return fail("binary STL ends inside facet " + std::to_string(done + 1));
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
