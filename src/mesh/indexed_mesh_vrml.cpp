// The Coordinate3 / Normal / IndexedFaceSet geometry of VRML 1.0 files, one section or all.

#include "indexed_mesh_files.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace ixo_mesh_files;

namespace
{

// Lines read whole, without their line end and with NUL bytes read as spaces, so that a
// number is never cut in two. Only a line longer than max_line is cut, after its last
// separator before that length (no number is that long), the rest coming as the next line.
class vrml_lines
{
public:
    static constexpr std::size_t max_line = std::size_t(16) << 20;

    explicit vrml_lines(FILE* fp) : tokens_(std::in_place, fp) {}
    explicit vrml_lines(const char* text) : text_(text) {}

    const char* next()
    {
        line_.swap(rest_);
        rest_.clear();
        int read = tokens_ ? tokens_->append_line(line_, max_line) : append_text_line();
        if (read < 0 && line_.empty())
            return nullptr;
        if (read == 0)
        {
            std::size_t cut = line_.find_last_of(" \t\r,");
            if (cut != std::string::npos && cut > 0)
            {
                rest_.assign(line_, cut + 1, std::string::npos);
                line_.resize(cut + 1);
            }
        }
        std::replace(line_.begin(), line_.end(), '\0', ' ');
        return line_.c_str();
    }

private:
    // append_line() on the text in memory.
    int append_text_line()
    {
        if (!text_ || *text_ == '\0')
            return -1;
        std::size_t take = std::strcspn(text_, "\n");
        if (take >= max_line - line_.size())
        {
            take = max_line - line_.size();
            line_.append(text_, take);
            text_ += take;
            return 0;
        }
        line_.append(text_, take);
        text_ += take;
        if (*text_ == '\n')
            ++text_;
        return 1;
    }

    std::optional<token_reader> tokens_;
    const char* text_ = nullptr;
    std::string line_;
    std::string rest_;
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
    int sections = 0;
    vrml_parser parser;
    parser.run(lines, wanted,
               [&](vrml_section const& section)
               {
                   ++sections;
                   append_section(*mesh, section, flip_normals);
               });
    if (wanted >= 0 && sections == 0)
        return fail("VRML file without section " + std::to_string(wanted) +
                    " (sections start at lines holding \"Material {\", counted from 0)");
    return mesh;
}

} // namespace

int ixo_indexed_mesh::calculate_meshes_in_vrml_file(ixo_string const& name)
{
    clear_failure();
    try
    {
        file_handle file(name, "r");
        if (!file.fp)
            return fail(file.why), 0;
        vrml_lines lines(file.fp);
        int count = 0;
        while (const char* line = lines.next())
            if (std::strstr(line, "Material {") && count < INT_MAX)
                ++count;
        return count;
    }
    catch (std::bad_alloc const&)
    {
        return fail("not enough memory for the mesh"), 0;
    }
}

ixo_object_ptr<ixo_indexed_mesh> ixo_indexed_mesh::read_from_vrml_file(ixo_string const& name,
                                                                       int index)
{
    return guarded(
        [&]() -> ixo_object_ptr<ixo_indexed_mesh>
        {
            if (index < 0)
                return fail("a negative VRML section number");
            file_handle file(name, "r");
            if (!file.fp)
                return fail(file.why);
            vrml_lines lines(file.fp);
            return read_vrml(lines, index, false);
        });
}

ixo_object_ptr<ixo_indexed_mesh>
ixo_indexed_mesh::read_all_meshes_from_vrml_file(ixo_string const& name, bool flip_normals)
{
    return guarded(
        [&]() -> ixo_object_ptr<ixo_indexed_mesh>
        {
            file_handle file(name, "r");
            if (!file.fp)
                return fail(file.why);
            vrml_lines lines(file.fp);
            return read_vrml(lines, -1, flip_normals);
        });
}

ixo_object_ptr<ixo_indexed_mesh>
ixo_indexed_mesh::read_all_meshes_from_vrml_file_buffer(char** buffer, bool flip_normals)
{
    return guarded(
        [&]() -> ixo_object_ptr<ixo_indexed_mesh>
        {
            if (!buffer || !*buffer)
                return fail("no text");
            vrml_lines lines(static_cast<const char*>(*buffer));
            return read_vrml(lines, -1, flip_normals);
        });
}
