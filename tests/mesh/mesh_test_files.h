#pragma once
// Helpers for the mesh tests: temporary files, byte writers and meshes built from records.

#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace mesh_test
{

// A fresh folder per test process, removed at exit.
inline std::filesystem::path temp_dir()
{
    static struct holder
    {
        std::filesystem::path path;
        holder()
        {
            path = std::filesystem::temp_directory_path() /
                   ("ixo_mesh_test_" + std::to_string(::getpid()));
            std::filesystem::create_directories(path);
        }
        ~holder()
        {
            std::error_code ec;
            std::filesystem::remove_all(path, ec);
        }
    } dir;
    return dir.path;
}

inline std::string write_file(std::string const& name, std::string const& bytes)
{
    std::filesystem::path path = temp_dir() / name;
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), std::streamsize(bytes.size()));
    return path.string();
}

inline ixo_string wide(std::string const& path)
{
    return ixo_string::from_utf8(path);
}

// Little- or big-endian bytes of a value.
template <typename T> void put(std::string& out, T value, bool big_endian = false)
{
    unsigned char bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof(T));
    for (std::size_t i = 0; i < sizeof(T); ++i)
        out.push_back(char(bytes[big_endian ? sizeof(T) - 1 - i : i]));
}

// A mesh read back from a hand-made archive record.
inline ixo_object_ptr<ixo_indexed_mesh> make_mesh(std::vector<float> const& positions,
                                                  std::vector<unsigned int> const& indices)
{
    std::string record;
    put<std::uint32_t>(record, std::uint32_t(positions.size() / 3));
    put<std::uint32_t>(record, std::uint32_t(indices.size()));
    for (std::size_t v = 0; v + 2 < positions.size(); v += 3)
    {
        for (int k = 0; k < 3; ++k)
            put<float>(record, positions[v + k]);
        for (int k = 0; k < 3; ++k)
            put<float>(record, 0.0f);
    }
    for (unsigned int i : indices)
        put<std::uint32_t>(record, i);
    static int counter = 0;
    std::string path = write_file("record" + std::to_string(counter++) + ".bin", record);
    return ixo_indexed_mesh::read(ixo_archive::open(wide(path), ixo_archive::mode_read));
}

struct facet
{
    float n[3];
    float v[9];
};

// A binary STL of `facets`; `count` overrides the facet count in the header.
inline std::string binary_stl(std::vector<facet> const& facets, char header_byte = 'x',
                              long long count = -1)
{
    std::string s(80, ' ');
    s[5] = header_byte;
    put<std::uint32_t>(s, count < 0 ? std::uint32_t(facets.size()) : std::uint32_t(count));
    for (facet const& f : facets)
    {
        for (float x : f.n)
            put<float>(s, x);
        for (float x : f.v)
            put<float>(s, x);
        s.append(2, '\0');
    }
    return s;
}

// The mesh an STL or PLY reader makes of `bytes` written to the file `name`.
inline ixo_object_ptr<ixo_indexed_mesh> read_stl(std::string const& name, std::string const& bytes)
{
    return ixo_indexed_mesh::read_from_stl_file(wide(write_file(name, bytes)));
}
inline ixo_object_ptr<ixo_indexed_mesh> read_ply(std::string const& name, std::string const& bytes)
{
    return ixo_indexed_mesh::read_from_ply_file(wide(write_file(name, bytes)));
}

// Asserts a vector equals (x, y, z) within `tolerance`.
inline void expect_vec(ixo_vector3<float> const& v, float x, float y, float z,
                       float tolerance = 1e-5f)
{
    EXPECT_NEAR(v[0], x, tolerance);
    EXPECT_NEAR(v[1], y, tolerance);
    EXPECT_NEAR(v[2], z, tolerance);
}

} // namespace mesh_test
