#include "json_read.h"

#include <cmath>
#include <sstream>

namespace ixo_scene_file
{
std::string child(const std::string& where, const std::string& key)
{
    std::string escaped;
    for (char c : key)
    {
        if (c == '~')
            escaped += "~0";
        else if (c == '/')
            escaped += "~1";
        else
            escaped += c;
    }
    return where + "/" + escaped;
}

std::string child(const std::string& where, std::size_t index)
{
    return where + "/" + std::to_string(index);
}

const char* kind(const json& j)
{
    switch (j.type())
    {
    case json::value_t::null:
        return "null";
    case json::value_t::boolean:
        return "a boolean";
    case json::value_t::string:
        return "a string";
    case json::value_t::array:
        return "an array";
    case json::value_t::object:
        return "an object";
    case json::value_t::discarded:
        return "nothing";
    default:
        return "a number";
    }
}

[[noreturn]] void fail(const std::string& where, const std::string& what)
{
    throw scene_error(where, what);
}

[[noreturn]] void wrong_type(const json& j, const std::string& where, const std::string& expected)
{
    fail(where, "expected " + expected + ", found " + kind(j));
}

// Every key of `j` must be one of `allowed` ("comment", a string, is allowed everywhere).
// `owner` names what the keys belong to in the message ("a box").
void check_keys(const json& j, const std::string& where, const std::vector<const char*>& allowed,
                const std::string& owner)
{
    for (auto it = j.begin(); it != j.end(); ++it)
    {
        if (it.key() == "comment")
        {
            if (!it.value().is_string())
                wrong_type(it.value(), child(where, it.key()), "a string");
            continue;
        }
        bool known = false;
        for (const char* a : allowed)
            known = known || it.key() == a;
        if (!known)
        {
            std::string list;
            for (const char* a : allowed)
                list += std::string(list.empty() ? "" : ", ") + a;
            fail(child(where, it.key()), "unknown key" + (owner.empty() ? "" : " for " + owner) +
                                             " (expected one of: " + list + ")");
        }
    }
}

const json& expect_object(const json& j, const std::string& where)
{
    if (!j.is_object())
        wrong_type(j, where, "an object");
    return j;
}

const json& expect_array(const json& j, const std::string& where)
{
    if (!j.is_array())
        wrong_type(j, where, "an array");
    return j;
}

bool read_bool(const json& j, const std::string& where)
{
    if (!j.is_boolean())
        wrong_type(j, where, "true or false");
    return j.get<bool>();
}

std::string read_string(const json& j, const std::string& where)
{
    if (!j.is_string())
        wrong_type(j, where, "a string");
    return j.get<std::string>();
}

float read_number(const json& j, const std::string& where, double lo, double hi,
                  const char* expected)
{
    if (!j.is_number())
        wrong_type(j, where, expected);
    double const v = j.get<double>();
    if (!std::isfinite(v) || v < lo || v > hi)
    {
        std::ostringstream s;
        s << "value " << v << " out of range " << lo << " to " << hi;
        fail(where, s.str());
    }
    return static_cast<float>(v);
}

int read_int(const json& j, const std::string& where, int lo, int hi)
{
    if (!j.is_number_integer() && !j.is_number_unsigned())
        wrong_type(j, where, "an integer " + std::to_string(lo) + "-" + std::to_string(hi));
    long long const v = j.get<long long>();
    if (v < lo || v > hi)
        fail(where, "value " + std::to_string(v) + " out of range " + std::to_string(lo) + "-" +
                        std::to_string(hi));
    return static_cast<int>(v);
}

ixo_vector3<float> read_vec3(const json& j, const std::string& where)
{
    if (!j.is_array() || j.size() != 3)
        fail(where, std::string("expected an array of 3 numbers, found ") + kind(j) +
                        (j.is_array() ? " of " + std::to_string(j.size()) : ""));
    ixo_vector3<float> v;
    for (std::size_t i = 0; i < 3; ++i)
        v[int(i)] = read_number(j[i], child(where, i), -coordinate_limit, coordinate_limit);
    return v;
}

ixo_vector4<unsigned char> read_color(const json& j, const std::string& where)
{
    const char* expected = "an array of 3 or 4 integers 0-255";
    if (!j.is_array() || (j.size() != 3 && j.size() != 4))
        wrong_type(j, where, expected);
    ixo_vector4<unsigned char> c(0, 0, 0, 255);
    for (std::size_t i = 0; i < j.size(); ++i)
    {
        if (!j[i].is_number_integer() && !j[i].is_number_unsigned())
            fail(where, "expected " + std::string(expected) + ", element " + std::to_string(i) +
                            " is " + kind(j[i]) + (j[i].is_number() ? " with a fraction" : ""));
        long long const v = j[i].get<long long>();
        if (v < 0 || v > 255)
            fail(where, "expected " + std::string(expected) + ", element " + std::to_string(i) +
                            " is " + std::to_string(v));
        c[int(i)] = static_cast<unsigned char>(v);
    }
    return c;
}

ixo_vector3<float> color_to_float3(const ixo_vector4<unsigned char>& c)
{
    return ixo_vector3<float>(c[0] / 255.0f, c[1] / 255.0f, c[2] / 255.0f);
}

// A path in the file, resolved against the file's folder; the file must exist.
std::string read_file_path(const json& j, const std::string& where,
                           const std::filesystem::path& folder)
{
    std::filesystem::path p(read_string(j, where));
    if (p.empty())
        fail(where, "empty path");
    if (p.is_relative())
        p = folder / p;
    std::error_code ec;
    if (!std::filesystem::is_regular_file(p, ec))
        fail(where, "file not found: " + p.string());
    return p.string();
}

float read_size(const json& j, const std::string& where)
{
    float const v = read_number(j, where, 0, coordinate_limit, "a positive number");
    if (!(v > 0))
        fail(where, "expected a positive number, found 0");
    return v;
}

} // namespace ixo_scene_file
