#include "mesh/mesh_test_files.h"

#include <array>
#include <filesystem>

using namespace mesh_test;

namespace
{

using triple = std::array<std::array<float, 3>, 3>;

std::multiset<triple> triangles_by_position(ixo_indexed_mesh const& mesh)
{
    std::multiset<triple> out;
    for (unsigned int t = 0; t < mesh.get_num_triangles(); ++t)
    {
        triple tri;
        for (int k = 0; k < 3; ++k)
        {
            auto const& p = mesh.get_vertex(mesh.get_index(t, k)).position;
            tri[k] = {p[0], p[1], p[2]};
        }
        out.insert(tri);
    }
    return out;
}

} // namespace

TEST(IndexedMesh, CountsAccessorsAndTriangleViews)
{
    auto mesh = make_mesh({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 5}, {0, 1, 2, 2, 1, 3});
    ASSERT_TRUE(mesh);
    EXPECT_EQ(mesh->get_num_vertices(), 4u);
    EXPECT_EQ(mesh->get_num_indices(), 6u);
    EXPECT_EQ(mesh->get_num_triangles(), 2u);
    EXPECT_EQ(mesh->get_index(1, 2), 3u);

    mesh->set_index(1, 0, 0);
    EXPECT_EQ(mesh->get_index_data()[3], 0u);
    mesh->get_index(1, 0) = 2;
    EXPECT_EQ(mesh->get_index(1, 0), 2u);

    ixo_mesh_triangle tri = mesh->get_triangle(0);
    EXPECT_EQ(tri.get_mesh(), mesh);
    expect_vec(tri.get_vertex(1).position, 1, 0, 0);
    expect_vec(tri.compute_normal(), 0, 0, 1);

    // Reversed winding faces the other way.
    ixo_mesh_triangle reversed(0, 2, 1, mesh);
    expect_vec(reversed.compute_normal(), 0, 0, -1);

    // The normal is unit length whatever the triangle's size.
    unsigned int big[3] = {1, 2, 3};
    ixo_mesh_triangle large(big, mesh);
    EXPECT_NEAR(large.compute_normal().length(), 1.0f, 1e-6f);

    // A degenerate triangle keeps its (zero) cross product.
    ixo_mesh_triangle degenerate(0, 1, 1, mesh);
    expect_vec(degenerate.compute_normal(), 0, 0, 0);

    // Vertex edits through the triangle reach the mesh.
    tri.get_vertex(0).position = ixo_vector3<float>(7, 8, 9);
    expect_vec(mesh->get_vertex(0u).position, 7, 8, 9);
    mesh->set_vertex(3, ixo_mesh_vertex(ixo_vector3<float>(1, 2, 3), ixo_vector3<float>(0, 1, 0)));
    expect_vec(mesh->get_vertex(3u).normal, 0, 1, 0);
}

TEST(IndexedMesh, CopyIsDeepAndBuffersNeedADevice)
{
    auto mesh = make_mesh({0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2});
    ASSERT_TRUE(mesh);
    ixo_object_ptr<ixo_indexed_mesh> copy(new ixo_indexed_mesh(*mesh));
    copy->get_vertex(0u).position = ixo_vector3<float>(5, 5, 5);
    copy->set_index(0, 0, 2);
    expect_vec(mesh->get_vertex(0u).position, 0, 0, 0);
    EXPECT_EQ(mesh->get_index(0, 0), 0u);

    *copy = *mesh;
    expect_vec(copy->get_vertex(0u).position, 0, 0, 0);
    EXPECT_EQ(copy->get_index(0, 0), 0u);

    EXPECT_EQ(mesh->get_vertex_buffer(nullptr), nullptr);
    EXPECT_EQ(mesh->get_index_buffer(nullptr), nullptr);
    mesh->release_buffers();
    mesh->release_buffers();
}

TEST(IndexedMesh, ArchiveRecordRoundTripAndRefusals)
{
    auto mesh = make_mesh({0.5f, -1, 2, 1e-30f, 3, 4, -0.0f, 7, 8}, {2, 0, 1});
    ASSERT_TRUE(mesh);
    mesh->get_vertex(1u).normal = ixo_vector3<float>(0.25f, 0.5f, -1);

    std::string path = (temp_dir() / "roundtrip.bin").string();
    {
        auto out = ixo_archive::open(wide(path), ixo_archive::mode_write);
        ASSERT_TRUE(out);
        ixo_indexed_mesh::write(out, mesh);
        ixo_indexed_mesh::write(nullptr, mesh); // ignored
        ixo_indexed_mesh::write(out, nullptr);  // ignored
    }
    EXPECT_EQ(std::filesystem::file_size(path), 8u + 72u + 12u);

    auto back = ixo_indexed_mesh::read(ixo_archive::open(wide(path), ixo_archive::mode_read));
    ASSERT_TRUE(back);
    ASSERT_EQ(back->get_num_vertices(), 3u);
    ASSERT_EQ(back->get_num_indices(), 3u);
    EXPECT_EQ(std::memcmp(back->get_vertex_data(), mesh->get_vertex_data(), 72), 0);
    EXPECT_EQ(std::memcmp(back->get_index_data(), mesh->get_index_data(), 12), 0);

    EXPECT_FALSE(ixo_indexed_mesh::read(nullptr));

    // Zero counts, missing counts and records shorter than their counts are refused.
    auto record = [](std::uint32_t vertices, std::uint32_t indices, std::size_t body)
    {
        std::string s;
        put<std::uint32_t>(s, vertices);
        put<std::uint32_t>(s, indices);
        return s.append(body, '\0');
    };
    for (auto const& bytes : {record(0, 3, 0), record(3, 0, 0), record(3, 3, 24 * 3 + 8),
                              record(0xffffffffu, 0xffffffffu, 100), std::string("\1\0\0", 3)})
    {
        std::string p = write_file("bad_record.bin", bytes);
        EXPECT_FALSE(ixo_indexed_mesh::read(ixo_archive::open(wide(p), ixo_archive::mode_read)))
            << bytes.size();
    }

    // Reading from a write archive fails at the first count.
    auto writer = ixo_archive::open(wide((temp_dir() / "w.bin").string()), ixo_archive::mode_write);
    EXPECT_FALSE(ixo_indexed_mesh::read(writer));

    // Indices beyond the vertex array survive reading but are reported.
    auto broken = make_mesh({0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 7});
    ASSERT_TRUE(broken);
    EXPECT_FALSE(broken->has_valid_indices());
    EXPECT_TRUE(mesh->has_valid_indices());
}

TEST(IndexedMesh, OptimisationKeepsTheTrianglesAndNumbersVerticesByFirstUse)
{
    // A 6 x 6 grid of quads with its vertices listed backwards and triangles shuffled.
    const int n = 7;
    std::vector<float> positions;
    for (int i = n * n - 1; i >= 0; --i)
        positions.insert(positions.end(), {float(i % n), float(i / n), float((i * 7) % 5)});
    auto at = [&](int x, int y) { return unsigned(n * n - 1 - (y * n + x)); };
    std::vector<unsigned int> indices;
    for (int y = 0; y + 1 < n; ++y)
        for (int x = 0; x + 1 < n; ++x)
        {
            indices.insert(indices.end(), {at(x, y), at(x + 1, y), at(x + 1, y + 1)});
            indices.insert(indices.end(), {at(x, y), at(x + 1, y + 1), at(x, y + 1)});
        }
    for (std::size_t t = 0; t + 1 < indices.size() / 3; t += 2)
        std::swap_ranges(indices.begin() + 3 * t, indices.begin() + 3 * t + 3,
                         indices.end() - 3 * (t + 1));
    auto mesh = make_mesh(positions, indices);
    ASSERT_TRUE(mesh);
    auto before = triangles_by_position(*mesh);

    mesh->optimize_index_buffer();
    EXPECT_EQ(triangles_by_position(*mesh), before);
    // Vertex numbers are introduced in order of first use.
    unsigned int next_new = 0;
    for (unsigned int i = 0; i < mesh->get_num_indices(); ++i)
    {
        unsigned int v = mesh->get_index_data()[i];
        ASSERT_LE(v, next_new);
        if (v == next_new)
            ++next_new;
    }
    EXPECT_EQ(next_new, unsigned(n * n));

    mesh->optimize_buffers();
    EXPECT_EQ(triangles_by_position(*mesh), before);
    EXPECT_TRUE(mesh->has_valid_indices());

    // A mesh with an index out of range is left as it is.
    auto broken = make_mesh({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0}, {3, 2, 1, 0, 1, 9});
    ASSERT_TRUE(broken);
    broken->optimize_buffers();
    EXPECT_EQ(broken->get_index(0, 0), 3u);
    EXPECT_EQ(broken->get_index(1, 2), 9u);
}
