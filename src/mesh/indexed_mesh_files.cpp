// Mesh file readers: STL (ASCII and binary), PLY (through the RPly interface) and the
// Coordinate3 / Normal / IndexedFaceSet geometry of VRML 1.0 files.
//
// Input is read in large blocks and numbers are parsed with std::from_chars; arrays grow
// geometrically, never per vertex. Counts read from a file are checked against the file's
// size before anything is sized from them.

#include <ixocore/mesh/indexed_mesh.h>

#include <ixocore/platform/rply.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

// Reaches the private arrays of a mesh for the readers' helpers.
class ixo_mesh_builder
{
public:
    static std::vector<ixo_mesh_vertex>& vertices(ixo_indexed_mesh& m) { return m.vertices_; }
    static std::vector<unsigned int>& indices(ixo_indexed_mesh& m) { return m.indices_; }
    static ixo_object_ptr<ixo_indexed_mesh> create() { return ixo_indexed_mesh::create_empty(); }
};

namespace
{

using vec3 = ixo_vector3<float>;

// A file that is open and regular (directories, devices and sockets are refused).
struct file_handle
{
    FILE* fp = nullptr;
    long long size = 0;

    file_handle(std::string const& name, const char* mode)
    {
        struct stat st;
        if (name.empty() || stat(name.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
            return;
        fp = std::fopen(name.c_str(), mode);
        size = st.st_size;
    }
    ~file_handle()
    {
        if (fp)
            std::fclose(fp);
    }
    file_handle(file_handle const&) = delete;
    file_handle& operator=(file_handle const&) = delete;
};

long long stream_size(FILE* fp)
{
    struct stat st;
    if (!fp || fstat(fileno(fp), &st) != 0 || !S_ISREG(st.st_mode))
        return -1;
    return st.st_size;
}

bool is_space(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Parses a float as the C runtime's %f would take a whole token: an optional sign
// (including '+'), decimal or exponent form, inf and nan. False when the token does not
// start with a number.
bool parse_float(const char* begin, const char* end, float& out)
{
    if (begin != end && *begin == '+')
        ++begin;
    auto [p, ec] = std::from_chars(begin, end, out);
    if (ec == std::errc::result_out_of_range)
    {
        // Keep the C runtime's answer for overflow and underflow.
        out = std::strtof(std::string(begin, end).c_str(), nullptr);
        return true;
    }
    return ec == std::errc() && p != begin;
}

bool parse_int(const char* begin, const char* end, int& out)
{
    if (begin != end && *begin == '+')
        ++begin;
    auto [p, ec] = std::from_chars(begin, end, out);
    return ec == std::errc() && p != begin;
}

// ---------------------------------------------------------------------------------------
// STL

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

// A read buffer of up to 1 MiB, no larger than the file needs.
std::size_t buffer_size_for(FILE* fp)
{
    long long size = stream_size(fp);
    if (size < 0 || size >= (1 << 20))
        return 1 << 20;
    return std::max<std::size_t>(4096, std::size_t(size) + 1);
}

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
// until the next call.
class token_reader
{
public:
    explicit token_reader(FILE* fp) : fp_(fp), buffer_(buffer_size_for(fp)) {}

    // Skips the rest of the current line, line end included.
    void skip_line()
    {
        for (;;)
        {
            if (pos_ == end_ && !refill())
                return;
            const char* start = buffer_.data() + pos_;
            const void* nl = std::memchr(start, '\n', end_ - pos_);
            if (nl)
            {
                pos_ += static_cast<const char*>(nl) - start + 1;
                return;
            }
            pos_ = end_;
        }
    }

    // The next token; false at the end of the stream.
    bool next(const char*& begin, const char*& end)
    {
        for (;;)
        {
            if (pos_ == end_ && !refill())
                return false;
            if (!is_space(buffer_[pos_]))
                break;
            ++pos_;
        }
        for (;;)
        {
            const char* start = buffer_.data() + pos_;
            const char* stop = buffer_.data() + end_;
            const char* p = start;
            while (p != stop && !is_space(*p))
                ++p;
            if (p != stop || eof_ || (pos_ == 0 && end_ == buffer_.size()))
            {
                // A token longer than the window is cut there; no number is that long.
                begin = start;
                end = p;
                pos_ += p - start;
                return true;
            }
            if (!refill())
                eof_ = true;
        }
    }

    bool skip(int n)
    {
        const char *b, *e;
        for (int i = 0; i < n; ++i)
            if (!next(b, e))
                return false;
        return true;
    }

    bool read_floats(float* out, int n)
    {
        const char *b, *e;
        for (int i = 0; i < n; ++i)
            if (!next(b, e) || !parse_float(b, e, out[i]))
                return false;
        return true;
    }

private:
    // Moves the unread bytes to the front and reads more; false when nothing was added.
    bool refill()
    {
        if (eof_)
            return false;
        std::size_t keep = end_ - pos_;
        std::memmove(buffer_.data(), buffer_.data() + pos_, keep);
        pos_ = 0;
        end_ = keep;
        std::size_t got = std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, fp_);
        if (got == 0)
        {
            eof_ = true;
            return false;
        }
        end_ += got;
        return true;
    }

    FILE* fp_;
    std::vector<char> buffer_;
    std::size_t pos_ = 0;
    std::size_t end_ = 0;
    bool eof_ = false;
};

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

// ---------------------------------------------------------------------------------------
// PLY

struct ply_context
{
    ixo_indexed_mesh* mesh = nullptr;
    std::size_t vertex_count = 0;
    std::size_t next_vertex[3] = {0, 0, 0};
    // The current face: its first and previous corner, and how many corners were seen.
    unsigned int first = 0;
    unsigned int previous = 0;
    long corners = 0;
};

void ignore_ply_message(p_ply, const char*) {}

int on_ply_vertex(p_ply_argument argument)
{
    void* data = nullptr;
    long axis = 0;
    ply_get_argument_user_data(argument, &data, &axis);
    auto* context = static_cast<ply_context*>(data);
    std::size_t& next = context->next_vertex[axis];
    if (next < context->vertex_count)
        ixo_mesh_builder::vertices(*context->mesh)[next].position[int(axis)] =
            static_cast<float>(ply_get_argument_value(argument));
    ++next;
    return 1;
}

// Faces arrive one list entry at a time; triangles are emitted as a fan.
int on_ply_face(p_ply_argument argument)
{
    void* data = nullptr;
    ply_get_argument_user_data(argument, &data, nullptr);
    auto* context = static_cast<ply_context*>(data);
    long length = 0, value_index = 0;
    ply_get_argument_property(argument, nullptr, &length, &value_index);
    if (value_index < 0)
    {
        context->corners = 0;
        return 1;
    }
    double value = ply_get_argument_value(argument);
    if (!(value >= 0) || value >= double(context->vertex_count) || value != std::floor(value))
        return 0; // an index outside the vertex array: the file is refused
    unsigned int index = static_cast<unsigned int>(value);
    if (context->corners == 0)
        context->first = index;
    else if (context->corners >= 2)
    {
        auto& indices = ixo_mesh_builder::indices(*context->mesh);
        indices.push_back(context->first);
        indices.push_back(context->previous);
        indices.push_back(index);
    }
    context->previous = index;
    ++context->corners;
    return 1;
}

// ---------------------------------------------------------------------------------------
// VRML 1.0

constexpr int vrml_line_size = 1024;

// Lines as fgets(buffer, 1024, file) returns them: at most 1,023 bytes, a longer line
// continuing in the next call.
class vrml_lines
{
public:
    explicit vrml_lines(FILE* fp) : fp_(fp) {}
    explicit vrml_lines(const char* text) : text_(text) {}

    const char* next()
    {
        if (fp_)
            return std::fgets(line_, vrml_line_size, fp_);
        if (!text_ || *text_ == '\0')
            return nullptr;
        int n = 0;
        while (n < vrml_line_size - 1 && text_[n] != '\0')
        {
            line_[n] = text_[n];
            if (text_[n++] == '\n')
                break;
        }
        line_[n] = '\0';
        text_ += n;
        return line_;
    }

private:
    FILE* fp_ = nullptr;
    const char* text_ = nullptr;
    char line_[vrml_line_size];
};

struct vrml_section
{
    std::vector<vec3> points;
    std::vector<vec3> normals;
    std::vector<int> coord_index;
    std::vector<int> normal_index;

    void clear()
    {
        points.clear();
        normals.clear();
        coord_index.clear();
        normal_index.clear();
    }
};

// Reads the line-oriented geometry of VRML 1.0 files. Sections start at lines containing
// "Material {"; `wanted` selects one section (-1: all of them). Each finished section is
// handed to the consumer.
class vrml_parser
{
public:
    enum list_kind
    {
        list_none,
        list_points,
        list_vectors,
        list_coord_index,
        list_normal_index,
    };

    template <typename Consumer> void run(vrml_lines& lines, int wanted, Consumer&& consume)
    {
        int section = -1;
        while (const char* line = lines.next())
        {
            if (std::strstr(line, "Material {"))
            {
                if (section >= 0 && (wanted < 0 || section == wanted))
                    consume(current_);
                // The one section asked for is complete: the rest of the file is not read.
                if (wanted >= 0 && section == wanted)
                    return;
                ++section;
                current_.clear();
                reset_state();
                continue;
            }
            if (section < 0 || (wanted >= 0 && section != wanted))
                continue;
            handle_line(line);
        }
        if (section >= 0 && (wanted < 0 || section == wanted))
            consume(current_);
    }

private:
    void reset_state()
    {
        active_ = list_none;
        await_point_ = await_vector_ = in_face_set_ = false;
        pending_count_ = 0;
    }

    void handle_line(const char* line)
    {
        if (active_ != list_none)
        {
            if (parse_numbers(line, true))
                return;
            active_ = list_none;
        }
        if (std::strstr(line, "Coordinate3 {"))
            await_point_ = true;
        if (std::strstr(line, "Normal {"))
            await_vector_ = true;
        if (std::strstr(line, "IndexedFaceSet {"))
            in_face_set_ = true;
        const char* open = nullptr;
        if (await_point_ && (open = std::strstr(line, "point [")))
        {
            await_point_ = false;
            start_list(list_points, open);
        }
        else if (await_vector_ && (open = std::strstr(line, "vector [")))
        {
            await_vector_ = false;
            start_list(list_vectors, open);
        }
        else if (in_face_set_ && (open = std::strstr(line, "coordIndex [")))
            start_list(list_coord_index, open);
        else if (in_face_set_ && (open = std::strstr(line, "normalIndex [")))
            start_list(list_normal_index, open);
    }

    // Numbers may follow the opening bracket on the same line.
    void start_list(list_kind kind, const char* open)
    {
        active_ = kind;
        pending_count_ = 0;
        const char* rest = std::strchr(open, '[') + 1;
        parse_numbers(rest, false);
    }

    static bool is_separator(char c) { return is_space(c) || c == ','; }

    // Adds the numbers of one list line. With `must_start_with_number`, a line whose first
    // item is not a number ends the list and answers false (blank and comment lines are
    // passed over). A closing bracket ends the list after the numbers before it.
    bool parse_numbers(const char* line, bool must_start_with_number)
    {
        const char* end = line + std::strlen(line);
        if (const char* hash = std::strchr(line, '#'))
            end = hash;
        const char* p = line;
        bool first = true;
        while (p < end)
        {
            while (p < end && is_separator(*p))
                ++p;
            if (p == end)
                break;
            if (*p == ']')
            {
                active_ = list_none;
                return true;
            }
            const char* token_end = p;
            while (token_end < end && !is_separator(*token_end) && *token_end != ']')
                ++token_end;
            if (!add_number(p, token_end))
            {
                if (first && must_start_with_number)
                    return false;
                active_ = list_none;
                return true;
            }
            first = false;
            p = token_end;
        }
        return true;
    }

    bool add_number(const char* begin, const char* end)
    {
        if (active_ == list_coord_index || active_ == list_normal_index)
        {
            int value;
            if (!parse_int(begin, end, value))
                return false;
            (active_ == list_coord_index ? current_.coord_index : current_.normal_index)
                .push_back(value);
            return true;
        }
        float value;
        if (!parse_float(begin, end, value))
            return false;
        pending_[pending_count_++] = value;
        if (pending_count_ == 3)
        {
            (active_ == list_points ? current_.points : current_.normals)
                .emplace_back(pending_[0], pending_[1], pending_[2]);
            pending_count_ = 0;
        }
        return true;
    }

    vrml_section current_;
    list_kind active_ = list_none;
    bool await_point_ = false;
    bool await_vector_ = false;
    bool in_face_set_ = false;
    float pending_[3] = {0, 0, 0};
    int pending_count_ = 0;
};

vec3 triangle_normal(vec3 const& p0, vec3 const& p1, vec3 const& p2)
{
    vec3 n = (p1 - p0) ^ (p2 - p0);
    n.normalize();
    return n;
}

// Appends one section to the mesh: its points as vertices, its faces as fans (faces with
// an index outside the section's points are dropped), and the normals: from the normal
// index list where it names a normal, otherwise the normalised sum of the unit normals
// of the vertex's triangles.
void append_section(ixo_indexed_mesh& mesh, vrml_section const& s, bool flip_normals)
{
    auto& vertices = ixo_mesh_builder::vertices(mesh);
    auto& indices = ixo_mesh_builder::indices(mesh);
    std::size_t base = vertices.size();
    std::size_t count = s.points.size();
    if (base + count > 0xffffffffu)
        return;
    vec3 zero(0, 0, 0);
    for (vec3 const& p : s.points)
        vertices.emplace_back(p, zero);
    std::vector<vec3> given(s.normal_index.empty() ? 0 : count, zero);
    std::size_t first_index = indices.size();

    std::size_t k = 0;
    while (k < s.coord_index.size())
    {
        std::size_t start = k;
        bool valid = true;
        while (k < s.coord_index.size() && s.coord_index[k] != -1)
        {
            int c = s.coord_index[k];
            if (c < 0 || std::size_t(c) >= count)
                valid = false;
            ++k;
        }
        std::size_t stop = k;
        ++k; // past the -1
        if (!valid || stop - start < 3)
            continue;
        vec3 face_normal = zero;
        for (std::size_t j = start + 2; j < stop; ++j)
        {
            unsigned int a = unsigned(s.coord_index[start]), b = unsigned(s.coord_index[j - 1]),
                         c = unsigned(s.coord_index[j]);
            indices.push_back(unsigned(base) + a);
            indices.push_back(unsigned(base) + b);
            indices.push_back(unsigned(base) + c);
            vec3 n = triangle_normal(s.points[a], s.points[b], s.points[c]);
            face_normal += n;
            if (given.empty())
                for (unsigned int v : {a, b, c})
                    vertices[base + v].normal += n;
        }
        if (given.empty())
            continue;
        for (std::size_t j = start; j < stop && j < s.normal_index.size(); ++j)
        {
            int ni = s.normal_index[j];
            if (ni < 0 || std::size_t(ni) >= s.normals.size())
                continue;
            vec3 n = s.normals[ni];
            if (flip_normals && n * face_normal < 0)
                n = -n;
            given[std::size_t(s.coord_index[j])] += n;
        }
    }
    if (given.empty())
    {
        for (std::size_t v = base; v < vertices.size(); ++v)
            vertices[v].normal.normalize();
        return;
    }
    // Vertices the normal list left out take their triangles' normals.
    for (std::size_t t = first_index; t < indices.size(); t += 3)
    {
        std::size_t a = indices[t], b = indices[t + 1], c = indices[t + 2];
        vec3 n = triangle_normal(vertices[a].position, vertices[b].position, vertices[c].position);
        for (std::size_t v : {a, b, c})
            if (given[v - base].length_squared() == 0)
                vertices[v].normal += n;
    }
    for (std::size_t v = 0; v < count; ++v)
    {
        ixo_mesh_vertex& vertex = vertices[base + v];
        if (given[v].length_squared() != 0)
            vertex.normal = given[v];
        vertex.normal.normalize();
    }
}

ixo_object_ptr<ixo_indexed_mesh> read_vrml(vrml_lines& lines, int wanted, bool flip_normals)
{
    ixo_object_ptr<ixo_indexed_mesh> mesh = ixo_mesh_builder::create();
    bool found = false;
    vrml_parser parser;
    parser.run(lines, wanted,
               [&](vrml_section const& section)
               {
                   found = true;
                   append_section(*mesh, section, flip_normals);
               });
    if (wanted >= 0 && !found)
        return nullptr;
    return mesh;
}

} // namespace

// ---------------------------------------------------------------------------------------

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_file(ixo_string const& name)
{
    if (name.length() < 4)
        return nullptr;
    ixo_string extension = name.right(4);
    if (extension.compare_no_case(ixo_string(".ply")) == 0)
        return read_from_ply_file(name);
    if (extension.compare_no_case(ixo_string(".stl")) == 0)
        return read_from_stl_file(name);
    return nullptr;
}

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

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_ply_file(ixo_string const& name)
{
    std::string path = name.to_utf8();
    struct stat st;
    if (path.empty() || stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
        return nullptr;
    // Closed on every way out, exceptions included.
    std::unique_ptr<t_ply_, int (*)(p_ply)> ply(
        ply_open(path.c_str(), ignore_ply_message, 0, nullptr), ply_close);
    if (!ply || !ply_read_header(ply.get()))
        return nullptr;
    ixo_object_ptr<ixo_indexed_mesh> mesh = create_empty();
    ply_context context;
    context.mesh = mesh.get();
    long const vertices = ply_set_read_cb(ply.get(), "vertex", "x", on_ply_vertex, &context, 0);
    long const ys = ply_set_read_cb(ply.get(), "vertex", "y", on_ply_vertex, &context, 1);
    long const zs = ply_set_read_cb(ply.get(), "vertex", "z", on_ply_vertex, &context, 2);
    // Without all three coordinates there is no mesh; with them every vertex holds at least
    // three bytes of the file, so the vertex array stays within 8 times the file's size.
    if (vertices == 0 || ys == 0 || zs == 0)
        return nullptr;
    long faces = ply_set_read_cb(ply.get(), "face", "vertex_indices", on_ply_face, &context, 0);
    if (faces == 0)
        faces = ply_set_read_cb(ply.get(), "face", "vertex_index", on_ply_face, &context, 0);
    try
    {
        // The header has checked that the file holds data for these counts.
        context.vertex_count = std::size_t(vertices);
        mesh->vertices_.assign(context.vertex_count, ixo_mesh_vertex(vec3(0, 0, 0), vec3(0, 0, 0)));
        // A face of zero corners takes one byte: reserve only what triangles of at least
        // four bytes each could fill; anything beyond grows as it is read.
        std::size_t const triangles = std::min(std::size_t(faces), std::size_t(st.st_size) / 4);
        mesh->indices_.reserve(triangles * 3);
        if (!ply_read(ply.get()))
            return nullptr;
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
    mesh->indices_.shrink_to_fit();
    mesh->make_normals_from_positions();
    return mesh;
}

int ixo_indexed_mesh::calculate_meshes_in_vrml_file(ixo_string const& name)
{
    file_handle file(name.to_utf8(), "r");
    if (!file.fp)
        return 0;
    vrml_lines lines(file.fp);
    int count = 0;
    while (const char* line = lines.next())
        if (std::strstr(line, "Material {"))
            ++count;
    return count;
}

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_vrml_file(ixo_string const& name,
                                                                       int index)
{
    if (index < 0)
        return nullptr;
    file_handle file(name.to_utf8(), "r");
    if (!file.fp)
        return nullptr;
    vrml_lines lines(file.fp);
    return read_vrml(lines, index, false);
}

ixo_object_ptr<ixo_indexed_mesh>
ixo_indexed_mesh::read_all_meshes_from_vrml_file(ixo_string const& name, bool flip_normals)
{
    file_handle file(name.to_utf8(), "r");
    if (!file.fp)
        return nullptr;
    vrml_lines lines(file.fp);
    return read_vrml(lines, -1, flip_normals);
}

ixo_object_ptr<ixo_indexed_mesh>
ixo_indexed_mesh::read_all_meshes_from_vrml_file_buffer(char** buffer, bool flip_normals)
{
    if (!buffer || !*buffer)
        return nullptr;
    vrml_lines lines(static_cast<const char*>(*buffer));
    return read_vrml(lines, -1, flip_normals);
}
