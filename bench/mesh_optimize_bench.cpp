// Vertex-cache optimisation of meshes that are worst cases for it (one triangle repeated, a
// fan around one vertex, triangles sharing one edge, degenerate triangles) next to a
// well-formed grid of the same triangle count: the optimiser alone on index arrays, and a
// binary STL file read and optimised through the mesh. After the runs a table gives each
// mesh's time over the grid's.
//
//   ixo_mesh_optimize_bench [--triangles=N] [benchmark options]   (N defaults to 100,000)

#include <ixocore/mesh/indexed_mesh.h>
#include <ixocore/platform/d3dx9.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

struct test_mesh
{
    explicit test_mesh(const char* name) : name(name) {}

    const char* name;
    std::vector<float> positions; // x, y, z per vertex
    std::vector<std::uint32_t> indices;
    std::string stl_path;
};

std::uint32_t add_point(test_mesh& m, float x, float y, float z)
{
    m.positions.insert(m.positions.end(), {x, y, z});
    return std::uint32_t(m.positions.size() / 3 - 1);
}

// A grid of quads, two triangles each, as close to `triangles` as rows of 250 allow.
test_mesh grid(long triangles)
{
    test_mesh m("grid");
    long const cols = 250, rows = std::max(1L, triangles / (2 * cols));
    for (long r = 0; r <= rows; ++r)
        for (long c = 0; c <= cols; ++c)
            add_point(m, float(c), float(r), 0);
    for (long r = 0; r < rows; ++r)
        for (long c = 0; c < cols; ++c)
        {
            std::uint32_t a = std::uint32_t(r * (cols + 1) + c), b = a + 1,
                          d = a + std::uint32_t(cols + 1), e = d + 1;
            m.indices.insert(m.indices.end(), {a, b, e, a, e, d});
        }
    return m;
}

test_mesh repeated(long triangles)
{
    test_mesh m("repeated");
    std::uint32_t a = add_point(m, 0, 0, 0), b = add_point(m, 1, 0, 0), c = add_point(m, 0, 1, 0);
    for (long t = 0; t < triangles; ++t)
        m.indices.insert(m.indices.end(), {a, b, c});
    return m;
}

// Triangles around one centre vertex, their rims on a circle.
test_mesh fan(long triangles)
{
    test_mesh m("fan");
    std::uint32_t centre = add_point(m, 0, 0, 0);
    for (long k = 0; k <= triangles; ++k)
    {
        double a = 6.283185307179586 * double(k) / double(triangles);
        add_point(m, float(std::cos(a)), float(std::sin(a)), 0);
    }
    for (long k = 0; k < triangles; ++k)
        m.indices.insert(m.indices.end(),
                         {centre, centre + 1 + std::uint32_t(k), centre + 2 + std::uint32_t(k)});
    return m;
}

// Every triangle on the edge (a, b), their third corners on a line.
test_mesh book(long triangles)
{
    test_mesh m("book");
    std::uint32_t a = add_point(m, 0, 0, 0), b = add_point(m, 0, 0, 1);
    for (long k = 0; k < triangles; ++k)
        m.indices.insert(m.indices.end(), {a, b, add_point(m, 1, float(k), 0.5f)});
    return m;
}

// The grid with every other triangle collapsed onto one of its corners.
test_mesh degenerate(long triangles)
{
    test_mesh m = grid(triangles);
    m.name = "degenerate";
    for (std::size_t t = 0; t < m.indices.size(); t += 6)
        m.indices[t + 2] = m.indices[t + 1];
    return m;
}

float const* point(test_mesh const& m, std::uint32_t i)
{
    return m.positions.data() + 3 * std::size_t(i);
}

void write_stl(test_mesh& m, std::string const& path)
{
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f)
        return;
    unsigned char header[84] = {};
    std::uint32_t count = std::uint32_t(m.indices.size() / 3);
    std::memcpy(header + 80, &count, 4);
    std::fwrite(header, 1, 84, f);
    for (std::size_t t = 0; t < m.indices.size(); t += 3)
    {
        float facet[12] = {0, 0, 1};
        for (int k = 0; k < 3; ++k)
            std::memcpy(facet + 3 + 3 * k, point(m, m.indices[t + k]), 12);
        std::fwrite(facet, 4, 12, f);
        std::fwrite("\0\0", 1, 2, f);
    }
    std::fclose(f);
    m.stl_path = path;
}

void bm_optimize(benchmark::State& state, test_mesh const* m)
{
    UINT const faces = UINT(m->indices.size() / 3), vertices = UINT(m->positions.size() / 3);
    std::vector<DWORD> vertex_remap(vertices), face_remap(faces);
    for (auto _ : state)
    {
        if (FAILED(D3DXOptimizeVertices(m->indices.data(), faces, vertices, TRUE,
                                        vertex_remap.data())) ||
            FAILED(D3DXOptimizeFaces(m->indices.data(), faces, vertices, TRUE, face_remap.data())))
            return state.SkipWithError("optimisation refused");
        benchmark::DoNotOptimize(face_remap.data());
    }
    state.SetItemsProcessed(std::int64_t(faces) * state.iterations());
}

void bm_read_and_optimize(benchmark::State& state, test_mesh const* m)
{
    ixo_string name = ixo_string::from_utf8(m->stl_path);
    for (auto _ : state)
    {
        auto mesh = ixo_indexed_mesh::read_from_stl_file(name);
        if (!mesh)
            return state.SkipWithError("mesh not read");
        mesh->optimize_buffers();
        benchmark::DoNotOptimize(mesh->get_index_data());
    }
    state.SetItemsProcessed(std::int64_t(m->indices.size() / 3) * state.iterations());
}

// The console output, then every mesh's time over the grid's time in the same benchmark.
class ratio_reporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(std::vector<Run> const& runs) override
    {
        for (Run const& r : runs)
            if (!r.error_occurred && r.run_type == Run::RT_Iteration)
            {
                std::string name = r.benchmark_name();
                auto slash = name.find('/');
                times_[name.substr(0, slash)][name.substr(slash + 1)] = r.GetAdjustedRealTime();
            }
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\ntime / time of the well-formed grid\n");
        for (auto const& [benchmark, meshes] : times_)
        {
            auto grid = meshes.find("grid");
            if (grid == meshes.end())
                continue;
            for (auto const& [mesh, time] : meshes)
                if (mesh != "grid")
                    std::printf("  %-22s %-12s %.2f\n", benchmark.c_str(), mesh.c_str(),
                                time / grid->second);
        }
    }

private:
    std::map<std::string, std::map<std::string, double>> times_;
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    long triangles = 100000;
    for (int i = 1; i < argc; ++i)
    {
        if (std::strncmp(argv[i], "--triangles=", 12) == 0)
            triangles = std::atol(argv[i] + 12);
        else
        {
            std::fprintf(stderr, "%s: unknown argument %s\n", argv[0], argv[i]);
            return 2;
        }
    }
    if (triangles < 500)
    {
        std::fprintf(stderr, "%s: --triangles must be at least 500\n", argv[0]);
        return 2;
    }
    auto dir = std::filesystem::temp_directory_path() /
               ("ixo_mesh_optimize_bench_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    std::vector<test_mesh> meshes;
    // The grid's triangle count sets everyone's, so the comparison is like for like.
    meshes.push_back(grid(triangles));
    long const n = long(meshes[0].indices.size() / 3);
    meshes.push_back(repeated(n));
    meshes.push_back(fan(n));
    meshes.push_back(book(n));
    meshes.push_back(degenerate(n));
    std::printf("%ld triangles per mesh\n", n);
    for (test_mesh& m : meshes)
    {
        write_stl(m, (dir / (std::string(m.name) + ".stl")).string());
        benchmark::RegisterBenchmark((std::string("optimize/") + m.name).c_str(), bm_optimize, &m)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string("read_and_optimize/") + m.name).c_str(),
                                     bm_read_and_optimize, &m)
            ->Unit(benchmark::kMillisecond);
    }
    ratio_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    std::filesystem::remove_all(dir);
    return 0;
}
