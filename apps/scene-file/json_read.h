#pragma once
// Checked reading of JSON values for scene files. Every reader names the place it reads as
// a JSON pointer ("/objects/2/color") and throws scene_error with that place on anything
// it does not accept, so a message always says where the problem is.

#include <ixocore/math/vector.h>

#include <nlohmann/json.hpp>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace ixo_scene_file
{
using json = nlohmann::json;

// A problem in a scene file: where (a JSON pointer, empty for the whole file) and what.
class scene_error : public std::runtime_error
{
public:
    scene_error(std::string where, const std::string& what)
        : std::runtime_error(what), where_(std::move(where))
    {
    }
    const std::string& where() const { return where_; }

private:
    std::string where_;
};

// Coordinates are finite and kept well inside float range.
constexpr double coordinate_limit = 1e15;

// The pointer of member `key` (escaped as JSON pointers want) or element `index`.
std::string child(const std::string& where, const std::string& key);
std::string child(const std::string& where, std::size_t index);

// "a number", "an array", ... for messages.
const char* kind(const json& j);

[[noreturn]] void fail(const std::string& where, const std::string& what);
[[noreturn]] void wrong_type(const json& j, const std::string& where, const std::string& expected);

// Every key of `j` must be one of `allowed` ("comment", a string, is allowed everywhere).
// `owner` names what the keys belong to in the message ("a box").
void check_keys(const json& j, const std::string& where, const std::vector<const char*>& allowed,
                const std::string& owner = "");

const json& expect_object(const json& j, const std::string& where);
const json& expect_array(const json& j, const std::string& where);
bool read_bool(const json& j, const std::string& where);
std::string read_string(const json& j, const std::string& where);
// A finite number in lo..hi.
float read_number(const json& j, const std::string& where, double lo, double hi,
                  const char* expected = "a number");
int read_int(const json& j, const std::string& where, int lo, int hi);
// A number greater than 0 and at most coordinate_limit.
float read_size(const json& j, const std::string& where);
ixo_vector3<float> read_vec3(const json& j, const std::string& where);
// [r, g, b] or [r, g, b, a], integers 0-255; alpha defaults to 255.
ixo_vector4<unsigned char> read_color(const json& j, const std::string& where);
ixo_vector3<float> color_to_float3(const ixo_vector4<unsigned char>& c);
// A path in the file, resolved against the file's folder; the file must exist.
std::string read_file_path(const json& j, const std::string& where,
                           const std::filesystem::path& folder);
} // namespace ixo_scene_file
