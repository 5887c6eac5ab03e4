#include "mesh/mesh_test_files.h"

#include <clocale>
#include <cmath>
#include <cstdio>
#include <map>
#include <sstream>
#include <thread>
#include <unistd.h>

using namespace mesh_test;

namespace
{
// The unit cube as 12 facets, two per face, with outward normals.
std::vector<facet> cube_facets()
{
    // Each face: normal, then its four corners counter-clockwise seen from outside.
    const float faces[6][5][3] = {
        {{0, 0, -1}, {0, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0}},
        {{0, 0, 1}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}},
        {{0, -1, 0}, {0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}},
        {{0, 1, 0}, {0, 1, 0}, {0, 1, 1}, {1, 1, 1}, {1, 1, 0}},
        {{-1, 0, 0}, {0, 0, 0}, {0, 0, 1}, {0, 1, 1}, {0, 1, 0}},
        {{1, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 1}, {1, 0, 1}},
    };
    std::vector<facet> out;
    for (auto const& f : faces)
        for (int tri : {0, 1})
        {
            int const corners[3] = {1, tri ? 3 : 2, tri ? 4 : 3};
            facet t;
            std::copy(f[0], f[0] + 3, t.n);
            for (int k = 0; k < 3; ++k)
                std::copy(f[corners[k]], f[corners[k]] + 3, t.v + 3 * k);
            out.push_back(t);
        }
    return out;
}

std::string ascii_stl(std::vector<facet> const& facets, const char* eol = "\n")
{
    std::ostringstream s;
    s << "solid cube" << eol;
    for (facet const& f : facets)
    {
        s << "  facet normal " << f.n[0] << ' ' << f.n[1] << ' ' << f.n[2] << eol;
        s << "    outer loop" << eol;
        for (int k = 0; k < 3; ++k)
            s << "      vertex " << f.v[3 * k] << ' ' << f.v[3 * k + 1] << ' ' << f.v[3 * k + 2]
              << eol;
        s << "    endloop" << eol << "  endfacet" << eol;
    }
    s << "endsolid cube" << eol;
    return s.str();
}

// An ASCII PLY header: float x, y, z vertices, and faces (when > 0) of int index lists.
std::string ply_head(int vertices, int faces, std::string const& list = "vertex_indices")
{
    std::string s = "ply\nformat ascii 1.0\nelement vertex " + std::to_string(vertices) +
                    "\nproperty float x\nproperty float y\nproperty float z\n";
    if (faces > 0)
        s += "element face " + std::to_string(faces) + "\nproperty list uchar int " + list + "\n";
    return s + "end_header\n";
}

// Expected STL result: positions in order of first use, each with its normalised normal sum.
void expect_merged(ixo_indexed_mesh const& mesh, std::vector<facet> const& facets)
{
    std::map<std::array<float, 3>, unsigned> seen;
    std::vector<ixo_vector3<float>> normals;
    std::vector<unsigned> indices;
    for (facet const& f : facets)
        for (int k = 0; k < 3; ++k)
        {
            std::array<float, 3> p{f.v[3 * k], f.v[3 * k + 1], f.v[3 * k + 2]};
            auto [it, fresh] = seen.emplace(p, unsigned(normals.size()));
            if (fresh)
                normals.emplace_back(0, 0, 0);
            normals[it->second] += ixo_vector3<float>(f.n[0], f.n[1], f.n[2]);
            indices.push_back(it->second);
        }
    ASSERT_EQ(mesh.get_num_vertices(), normals.size());
    ASSERT_EQ(mesh.get_num_indices(), indices.size());
    for (std::size_t i = 0; i < indices.size(); ++i)
        EXPECT_EQ(mesh.get_index_data()[i], indices[i]) << i;
    for (auto const& [p, i] : seen)
    {
        expect_vec(mesh.get_vertex(i).position, p[0], p[1], p[2], 0);
        ixo_vector3<float> n = normals[i];
        n.normalize();
        expect_vec(mesh.get_vertex(i).normal, n[0], n[1], n[2]);
    }
}

void expect_indices(ixo_indexed_mesh const& mesh, std::vector<unsigned> const& expected)
{
    ASSERT_EQ(mesh.get_num_indices(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(mesh.get_index_data()[i], expected[i]) << i;
}
} // namespace

// Refusals by extension, missing files and folders are in FailedReadsSayWhy.
TEST(MeshFiles, ReaderChosenByExtension)
{
    auto upper =
        ixo_indexed_mesh::read_from_file(wide(write_file("cube.STL", ascii_stl(cube_facets()))));
    ASSERT_TRUE(upper);
    EXPECT_EQ(upper->get_num_vertices(), 8u);
    std::string const ply = ply_head(3, 1) + "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
    auto mixed = ixo_indexed_mesh::read_from_file(wide(write_file("tri.Ply", ply)));
    ASSERT_TRUE(mixed);
    EXPECT_EQ(mixed->get_num_indices(), 3u);
    EXPECT_FALSE(ixo_indexed_mesh::read_from_file(wide("stl")));
    EXPECT_FALSE(ixo_indexed_mesh::read_from_file(ixo_string()));
}

TEST(MeshFiles, AsciiStlCubeMergesCornersAndAccumulatesNormals)
{
    auto facets = cube_facets();
    auto mesh = read_stl("cube.stl", ascii_stl(facets));
    ASSERT_TRUE(mesh);
    EXPECT_EQ(mesh->get_num_vertices(), 8u);
    EXPECT_EQ(mesh->get_num_indices(), 36u);
    expect_merged(*mesh, facets);
    // Corner (0,0,0) is used by both facets of the bottom, front and left faces.
    EXPECT_EQ(mesh->get_index(0, 0), 0u);
    const float s = 1.0f / std::sqrt(3.0f);
    expect_vec(mesh->get_vertex(0u).normal, -s, -s, -s);
    expect_vec(mesh->get_vertex(mesh->get_index(0, 2)).position, 1, 1, 0);

    auto crlf = read_stl("crlf.stl", ascii_stl(facets, "\r\n"));
    ASSERT_TRUE(crlf);
    expect_merged(*crlf, facets);

    // Several solids (assemblies) and blank lines read as one mesh; junk between them does not.
    std::string const part = ascii_stl(facets);
    auto two = read_stl("two_solids.stl", part + part + std::string(20, '\n'));
    ASSERT_TRUE(two);
    EXPECT_EQ(two->get_num_vertices(), 8u);
    EXPECT_EQ(two->get_num_indices(), 72u);
    EXPECT_FALSE(read_stl("junk_between.stl", part + "garbage here\n" + part));

    // Fewer than seven lines, or an empty file: no facet, an empty mesh.
    auto empty = read_stl("e.stl", "solid x\nendsolid x\n");
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->get_num_vertices(), 0u);
    auto nothing = read_stl("n.stl", "");
    ASSERT_TRUE(nothing);
    EXPECT_EQ(nothing->get_num_indices(), 0u);
}

TEST(MeshFiles, BinaryStlDetectionCountsAndMerging)
{
    // Two facets sharing an edge; -0 and +0 are the same position.
    std::vector<facet> facets = {
        {{0, 0, 1}, {0, 0, 0, 1, 0, 0, 0, 1, 0}},
        {{1, 0, 0}, {1, 0, 0, 0, 1, 0, -0.0f, 2, 3}},
        {{0, 1, 0}, {0, -0.0f, 0, 0, 1, 0, 0, 2, 3}},
    };
    auto mesh = read_stl("two.stl", binary_stl(facets, char(200)));
    ASSERT_TRUE(mesh);
    EXPECT_EQ(mesh->get_num_vertices(), 4u);
    expect_merged(*mesh, facets);
    expect_vec(mesh->get_vertex(1u).normal, std::sqrt(0.5f), 0, std::sqrt(0.5f));

    auto none = read_stl("none.stl", binary_stl({}, char(128)));
    ASSERT_TRUE(none);
    EXPECT_EQ(none->get_num_vertices(), 0u);
    EXPECT_EQ(none->get_num_indices(), 0u);

    // Refused: a count past 32 bits of bytes, less than a header, text with a byte of 200.
    EXPECT_FALSE(read_stl("huge.stl", binary_stl(facets, char(255), 0xffffffffu)));
    EXPECT_FALSE(read_stl("tiny.stl", "\xff\x01"));
    std::string text = ascii_stl(cube_facets());
    text[text.size() / 2] = char(200);
    EXPECT_FALSE(read_stl("stray.stl", text));

    // Non-finite coordinates give a mesh, not a crash.
    float inf = INFINITY, nan = NAN;
    auto strange = read_stl(
        "odd.stl", binary_stl({{{nan, 0, 0}, {inf, 0, 0, nan, 1, 0, nan, 1, 0}}}, char(200)));
    ASSERT_TRUE(strange);
    EXPECT_EQ(strange->get_num_indices(), 3u);
    EXPECT_TRUE(strange->has_valid_indices());
}

TEST(MeshFiles, PlyPolygonsBecomeFansAndBadFilesAreRefused)
{
    std::string const head =
        ply_head(5, 3, "vertex_index") + "0 0 0\n1 0 0\n1 1 0\n0 1 0\n0.5 2 0\n";
    auto quad = read_ply("quad.ply", head + "4 0 1 2 3\n2 0 1\n5 0 1 2 4 3\n");
    ASSERT_TRUE(quad);
    // The quad gives (0,1,2) (0,2,3); the line is dropped; the pentagon gives three.
    expect_indices(*quad, {0, 1, 2, 0, 2, 3, 0, 1, 2, 0, 2, 4, 0, 4, 3});
    expect_vec(quad->get_vertex(4u).normal, 0, 0, 1);

    // Refused: a negative index, a cut body, a count past the file, not PLY, nothing.
    for (std::string body : {"3 0 -1 2\n3 0 1 2\n3 0 1 2\n", "3 0 1 2\n3 0 1"})
        EXPECT_FALSE(read_ply("bad.ply", head + body)) << body;
    std::string huge = "ply\nformat binary_little_endian 1.0\nelement vertex 2000000000\n"
                       "property float x\nproperty float y\nproperty float z\nend_header\n";
    huge.append(120, '\0');
    EXPECT_FALSE(read_ply("huge.ply", huge));
    EXPECT_FALSE(read_ply("text.ply", "solid x\n"));
    EXPECT_FALSE(read_ply("empty.ply", ""));
    // A coordinate missing: no mesh, whatever the count promises (one byte per vertex here).
    std::string only_x = "ply\nformat binary_little_endian 1.0\nelement vertex 4000000\n"
                         "property char x\nend_header\n";
    only_x.append(4000000, '\0');
    EXPECT_FALSE(read_ply("only_x.ply", only_x));

    // Millions of empty faces (one byte each) read as no triangles.
    std::string empty_faces = "ply\nformat binary_little_endian 1.0\nelement vertex 1\n"
                              "property char x\nproperty char y\nproperty char z\n"
                              "element face 3000000\nproperty list uchar int vertex_indices\n"
                              "end_header\n";
    empty_faces.append(3 + 3000000, '\0');
    auto no_faces = read_ply("empty_faces.ply", empty_faces);
    ASSERT_TRUE(no_faces);
    EXPECT_EQ(no_faces->get_num_vertices(), 1u);
    EXPECT_EQ(no_faces->get_num_indices(), 0u);

    // Points without faces: vertices, no triangles.
    auto points = read_ply("cloud.ply", ply_head(2, 0) + "1 2 3\n4 5 6\n");
    ASSERT_TRUE(points);
    EXPECT_EQ(points->get_num_vertices(), 2u);
    EXPECT_EQ(points->get_num_indices(), 0u);
    expect_vec(points->get_vertex(1u).position, 4, 5, 6);
}

namespace
{
// Three sections; the second has a quad, a normal list and a face naming a missing point.
const char* const vrml_text = R"(#VRML V1.0 ascii
Separator {
  Material { diffuseColor 1 0 0 }
  Coordinate3 {
    point [
      0 0 0, 1 0 0,
      0 1 0,
    ]
  }
  IndexedFaceSet {
    coordIndex [
      0, 1, 2, -1,
    ]
  }
  Material { diffuseColor 0 1 0 }
  Coordinate3 {
    point [
      0 0 5, 2 0 5, 2 2 5, 0 2 5, # a comment 9 9 9
    ]
  }
  Normal {
    vector [
      0 0 -1,
      0 0 1,
    ]
  }
  IndexedFaceSet {
    coordIndex [
      0, 1, 2, 3, -1,
      0, 1, 9, -1,
    ]
    normalIndex [
      0, 1, 0, 1, -1,
      0, 0, 0, -1,
    ]
  }
  Material { diffuseColor 0 0 1 }
  Coordinate3 {
    point [ 0 0 0, 0 1 0, 0 0 1 ]
  }
  IndexedFaceSet {
    coordIndex [ 0, 1, 2, -1 ]
  }
}
)";

} // namespace

TEST(MeshFiles, VrmlSectionsAndAllSections)
{
    std::string path = write_file("three.wrl", vrml_text);
    EXPECT_EQ(ixo_indexed_mesh::calculate_meshes_in_vrml_file(wide(path)), 3);
    EXPECT_EQ(ixo_indexed_mesh::calculate_meshes_in_vrml_file(wide(path + ".missing")), 0);

    auto second = ixo_indexed_mesh::read_from_vrml_file(wide(path), 1);
    ASSERT_TRUE(second);
    ASSERT_EQ(second->get_num_vertices(), 4u);
    expect_indices(*second, {0, 1, 2, 0, 2, 3}); // the quad as a fan; the bad face dropped
    expect_vec(second->get_vertex(2u).position, 2, 2, 5);
    // Normals as the normal list gives them, without flipping.
    expect_vec(second->get_vertex(0u).normal, 0, 0, -1);
    expect_vec(second->get_vertex(1u).normal, 0, 0, 1);

    auto third = ixo_indexed_mesh::read_from_vrml_file(wide(path), 2);
    ASSERT_TRUE(third);
    ASSERT_EQ(third->get_num_vertices(), 3u);
    // (0,1,0) x (0,0,1) = (1,0,0), computed because the section has no normal list.
    expect_vec(third->get_vertex(0u).normal, 1, 0, 0);

    EXPECT_FALSE(ixo_indexed_mesh::read_from_vrml_file(wide(path), 3));
    EXPECT_FALSE(ixo_indexed_mesh::read_from_vrml_file(wide(path), -1));
    EXPECT_FALSE(ixo_indexed_mesh::read_from_vrml_file(wide(path + ".missing"), 0));

    auto all = ixo_indexed_mesh::read_all_meshes_from_vrml_file(wide(path), false);
    ASSERT_TRUE(all);
    ASSERT_EQ(all->get_num_vertices(), 10u);
    ASSERT_EQ(all->get_num_indices(), 12u);
    // The third section's triangle is offset by the seven points before it.
    EXPECT_EQ(all->get_index(3, 0), 7u);
    EXPECT_EQ(all->get_index(1, 2), 5u);
    expect_vec(all->get_vertex(3u).normal, 0, 0, -1);

    // Flipping turns the file normal that points away from its face (0,0,1).
    auto flipped = ixo_indexed_mesh::read_all_meshes_from_vrml_file(wide(path), true);
    ASSERT_TRUE(flipped);
    expect_vec(flipped->get_vertex(3u).normal, 0, 0, 1);
    expect_vec(flipped->get_vertex(5u).normal, 0, 0, 1);

    // The in-memory reader gives the same mesh and leaves the pointer alone.
    std::string copy = vrml_text;
    char* text = copy.data();
    auto from_buffer = ixo_indexed_mesh::read_all_meshes_from_vrml_file_buffer(&text, true);
    ASSERT_TRUE(from_buffer);
    EXPECT_EQ(text, copy.data());
    ASSERT_EQ(from_buffer->get_num_vertices(), flipped->get_num_vertices());
    ASSERT_EQ(from_buffer->get_num_indices(), flipped->get_num_indices());
    EXPECT_EQ(std::memcmp(from_buffer->get_vertex_data(), flipped->get_vertex_data(),
                          10 * sizeof(ixo_mesh_vertex)),
              0);
    EXPECT_EQ(std::memcmp(from_buffer->get_index_data(), flipped->get_index_data(), 12 * 4), 0);

    EXPECT_FALSE(ixo_indexed_mesh::read_all_meshes_from_vrml_file_buffer(nullptr, false));
    char* null_text = nullptr;
    EXPECT_FALSE(ixo_indexed_mesh::read_all_meshes_from_vrml_file_buffer(&null_text, false));
}

TEST(MeshFiles, VrmlLongLinesAndGarbageStaySafe)
{
    // 600 numbers "1.25 " on one line: byte 1,023 falls inside a number, which stays whole.
    std::string numbers;
    for (int i = 0; i < 600; ++i)
        numbers += "1.25 ";
    std::string text = "Material {\nCoordinate3 {\npoint [ " + numbers +
                       "]\n}\nIndexedFaceSet {\ncoordIndex [\n0, 1, 2, -1, 2, 1, -5, -1\n]\n}\n";
    std::string buffer = text;
    char* p = buffer.data();
    for (auto mesh : {ixo_indexed_mesh::read_all_meshes_from_vrml_file_buffer(&p, false),
                      ixo_indexed_mesh::read_from_vrml_file(wide(write_file("long.wrl", text)), 0)})
    {
        ASSERT_TRUE(mesh);
        ASSERT_EQ(mesh->get_num_vertices(), 200u);
        for (unsigned v = 0; v < 200; ++v)
            expect_vec(mesh->get_vertex(v).position, 1.25f, 1.25f, 1.25f, 0);
        EXPECT_EQ(mesh->get_num_indices(), 3u);
    }

    // Text without sections gives an empty mesh.
    char plain[] = "point [ 1 2 3 ]\n";
    char* q = plain;
    auto empty = ixo_indexed_mesh::read_all_meshes_from_vrml_file_buffer(&q, false);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->get_num_vertices(), 0u);
}

// Forms the detection alone gets wrong are read by trying the other where it fits.
TEST(MeshFiles, StlFormsTheDetectionMissesAreRead)
{
    // Every byte below 127: the coordinates 0, 2 and 3 and a header that starts "solid".
    std::vector<facet> low = {{{0, 0, 2}, {0, 0, 0, 2, 0, 0, 0, 2, 0}},
                              {{0, 0, 3}, {2, 0, 0, 2, 2, 0, 0, 2, 0}}};
    std::string binary = binary_stl(low);
    binary.replace(0, 11, "solid cube ");
    auto cube = cube_facets();
    std::string utf8_name = ascii_stl(cube);
    utf8_name.replace(0, 10, "solid W\xc3\xbcrfel");
    struct
    {
        const char* name;
        std::string bytes;
        std::vector<facet> const* facets;
    } const cases[] = {
        {"low_bytes.stl", binary, &low},
        {"utf8_name.stl", utf8_name, &cube},
        {"one_line.stl", ascii_stl(cube, " "), &cube},
        {"cr_only.stl", ascii_stl(cube, "\r"), &cube},
    };
    for (auto const& c : cases)
    {
        auto mesh = read_stl(c.name, c.bytes);
        ASSERT_TRUE(mesh) << c.name << ": " << ixo_indexed_mesh::get_last_read_failure().to_utf8();
        expect_merged(*mesh, *c.facets);
        EXPECT_EQ(ixo_indexed_mesh::get_last_read_failure().length(), 0) << c.name;
    }
    // A name the "C" locale cannot convert opens through UTF-8.
    std::string path = write_file("w\xc3\xbcrfel.stl", ascii_stl(cube));
    std::string const locale = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "C");
    auto named = ixo_indexed_mesh::read_from_file(wide(path));
    std::setlocale(LC_ALL, locale.c_str());
    EXPECT_TRUE(named);
}

// Null results keep their reason per thread; a read that succeeds clears it.
TEST(MeshFiles, FailedReadsSayWhy)
{
    std::string ply_huge = "ply\nformat binary_little_endian 1.0\nelement vertex 2147483648\n"
                           "property float x\nproperty float y\nproperty float z\nend_header\n";
    ply_huge.resize(312, '\0');
    std::string ascii = ascii_stl(cube_facets());
    ascii.replace(ascii.find("vertex 0 1 0"), 12, "vertex 0 x 0");
    using reader = ixo_object_ptr<ixo_indexed_mesh> (*)(ixo_string const&);
    reader const vrml_second = [](ixo_string const& n)
    { return ixo_indexed_mesh::read_from_vrml_file(n, 1); };
    reader const any = ixo_indexed_mesh::read_from_file;
    struct
    {
        reader read;
        std::string name;
        std::string reason;
    } const cases[] = {
        {any, write_file("v.ply", ply_huge),
         "PLY element \"vertex\" claims 2147483648 entries but the file holds 312 bytes"},
        {any, write_file("b.stl", binary_stl(cube_facets(), 'x', 13)),
         "binary STL claims 13 facets (734 bytes) but the file holds 684 bytes"},
        {any, write_file("a.stl", ascii),
         "ASCII STL facet 1 is incomplete or holds something other than a number"},
        {any, write_file("i.ply", ply_head(3, 1) + "0 0 0\n1 0 0\n0 1 0\n3 0 1 7\n"),
         "PLY face 1 names vertex 7 of 3"},
        {any, write_file("m.obj", ""), "the name ends neither in .stl nor in .ply"},
        {any, (temp_dir() / "missing.stl").string(),
         "cannot open the file (No such file or directory)"},
        {ixo_indexed_mesh::read_from_ply_file, temp_dir().string(), "not a regular file"},
        {vrml_second, write_file("one.wrl", "Material {\n"),
         "VRML file without section 1 (sections start at lines holding \"Material {\", "
         "counted from 0)"},
    };
    for (auto const& c : cases)
    {
        EXPECT_FALSE(c.read(wide(c.name))) << c.name;
        EXPECT_EQ(ixo_indexed_mesh::get_last_read_failure().to_utf8(), c.reason);
    }
    std::string other;
    std::thread([&] { other = ixo_indexed_mesh::get_last_read_failure().to_utf8(); }).join();
    EXPECT_EQ(other, "");
    EXPECT_TRUE(ixo_indexed_mesh::read_from_file(wide(write_file("c.stl", ascii_stl({})))));
    EXPECT_EQ(ixo_indexed_mesh::get_last_read_failure().to_utf8(), "");
}

// Sparse files: holes back no count, so the readers refuse at once.
TEST(MeshFiles, SparseFilesAreRefusedAtOnce)
{
    std::string ply = "ply\nformat binary_little_endian 1.0\nelement vertex 1000000000\n"
                      "property char x\nproperty char y\nproperty char z\nend_header\n";
    struct
    {
        const char* name;
        std::string head;
        long long size;
        const char* reason;
    } const cases[] = {
        {"sparse.ply", ply, 3LL << 30, "PLY element \"vertex\" claims 1000000000 entries"},
        {"sparse.stl", binary_stl({}, char(200), 20000000), 1000000084LL,
         "binary STL claims 20000000 facets"},
    };
    for (auto const& c : cases)
    {
        std::string path = write_file(c.name, c.head);
        ASSERT_EQ(::truncate(path.c_str(), c.size), 0);
        EXPECT_FALSE(ixo_indexed_mesh::read_from_file(wide(path))) << c.name;
        EXPECT_EQ(ixo_indexed_mesh::get_last_read_failure().to_utf8().rfind(c.reason, 0), 0u)
            << ixo_indexed_mesh::get_last_read_failure().to_utf8();
        std::filesystem::remove(path);
    }
}
