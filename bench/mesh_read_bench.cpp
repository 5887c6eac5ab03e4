// Mesh file reading: ixocore's readers against Assimp (identical-vertex joining on) and
// against reading the file's bytes, on generated files of one mesh in four formats.
//
//   ixo_mesh_read_bench [--facets=N] [benchmark flags]      (N defaults to 1000000)
//
// Each benchmark reads one file with one reader; its "peak_MiB" counter is the peak
// resident memory of a child process that does one read and nothing else. After the runs
// a table gives the time and memory ratios, Assimp / ixocore and ixocore / bytes. Without
// Assimp at build time its benchmarks are left out.

#include <ixocore/mesh/indexed_mesh.h>

#if defined(IXO_HAVE_ASSIMP)
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#endif

#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

struct vec
{
    float x, y, z;
};

// A wavy grid of quads split into triangles: about facets / 2 shared vertices.
struct grid
{
    int nx, ny;
    std::vector<vec> points;
    std::vector<unsigned> triangles;

    explicit grid(long facets)
    {
        nx = std::max(1, int(std::sqrt(double(facets))));
        ny = std::max(1, int(facets / 2 / nx));
        for (int j = 0; j <= ny; ++j)
            for (int i = 0; i <= nx; ++i)
                points.push_back({float(i) * 0.01f, float(j) * 0.01f,
                                  0.1f * std::sin(i * 0.05f) * std::cos(j * 0.07f)});
        for (int j = 0; j < ny; ++j)
            for (int i = 0; i < nx; ++i)
            {
                unsigned a = unsigned(j * (nx + 1) + i), b = a + 1, c = a + unsigned(nx) + 1,
                         d = c + 1;
                triangles.insert(triangles.end(), {a, b, d, a, d, c});
            }
    }
    long facet_count() const { return long(triangles.size() / 3); }
    vec normal(long t) const
    {
        vec const& p0 = points[triangles[3 * t]];
        vec const& p1 = points[triangles[3 * t + 1]];
        vec const& p2 = points[triangles[3 * t + 2]];
        vec u{p1.x - p0.x, p1.y - p0.y, p1.z - p0.z}, v{p2.x - p0.x, p2.y - p0.y, p2.z - p0.z};
        vec n{u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x};
        float l = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
        return {n.x / l, n.y / l, n.z / l};
    }
};

class writer
{
public:
    explicit writer(std::string const& path) : f_(std::fopen(path.c_str(), "wb")) {}
    ~writer()
    {
        flush();
        if (f_)
            std::fclose(f_);
    }
    void text(const char* s) { bytes(s, std::strlen(s)); }
    void bytes(const void* p, std::size_t n)
    {
        if (buf_.size() + n > (1 << 20))
            flush();
        buf_.append(static_cast<const char*>(p), n);
    }
    // %e-style numbers as common exporters write them.
    void number(float v, bool scientific)
    {
        char tmp[64];
        auto r = scientific ? std::to_chars(tmp, tmp + 64, v, std::chars_format::scientific, 6)
                            : std::to_chars(tmp, tmp + 64, v);
        bytes(tmp, std::size_t(r.ptr - tmp));
    }
    template <typename T> void binary(T v) { bytes(&v, sizeof v); }

private:
    void flush()
    {
        if (f_ && !buf_.empty())
            std::fwrite(buf_.data(), 1, buf_.size(), f_);
        buf_.clear();
    }
    FILE* f_;
    std::string buf_;
};

void write_stl_binary(grid const& g, std::string const& path)
{
    writer w(path);
    std::string header(80, ' ');
    header.replace(0, 12, "binary grid\xff");
    w.bytes(header.data(), 80);
    w.binary<std::uint32_t>(std::uint32_t(g.facet_count()));
    for (long t = 0; t < g.facet_count(); ++t)
    {
        vec n = g.normal(t);
        w.bytes(&n, 12);
        for (int k = 0; k < 3; ++k)
            w.bytes(&g.points[g.triangles[3 * t + k]], 12);
        w.binary<std::uint16_t>(0);
    }
}

void write_stl_ascii(grid const& g, std::string const& path)
{
    writer w(path);
    w.text("solid grid\n");
    for (long t = 0; t < g.facet_count(); ++t)
    {
        vec n = g.normal(t);
        w.text("  facet normal ");
        for (float c : {n.x, n.y, n.z})
        {
            w.number(c, true);
            w.text(" ");
        }
        w.text("\n    outer loop\n");
        for (int k = 0; k < 3; ++k)
        {
            vec const& p = g.points[g.triangles[3 * t + k]];
            w.text("      vertex ");
            for (float c : {p.x, p.y, p.z})
            {
                w.number(c, true);
                w.text(" ");
            }
            w.text("\n");
        }
        w.text("    endloop\n  endfacet\n");
    }
    w.text("endsolid grid\n");
}

void write_ply(grid const& g, std::string const& path, bool ascii)
{
    writer w(path);
    std::string header = std::string("ply\nformat ") + (ascii ? "ascii" : "binary_little_endian") +
                         " 1.0\nelement vertex " + std::to_string(g.points.size()) +
                         "\nproperty float x\nproperty float y\nproperty float z\n"
                         "element face " +
                         std::to_string(g.facet_count()) +
                         "\nproperty list uchar int vertex_indices\nend_header\n";
    w.text(header.c_str());
    for (vec const& p : g.points)
    {
        if (!ascii)
        {
            w.bytes(&p, 12);
            continue;
        }
        w.number(p.x, false);
        w.text(" ");
        w.number(p.y, false);
        w.text(" ");
        w.number(p.z, false);
        w.text("\n");
    }
    for (long t = 0; t < g.facet_count(); ++t)
    {
        if (!ascii)
        {
            w.binary<std::uint8_t>(3);
            for (int k = 0; k < 3; ++k)
                w.binary<std::int32_t>(std::int32_t(g.triangles[3 * t + k]));
            continue;
        }
        std::string line = "3 " + std::to_string(g.triangles[3 * t]) + " " +
                           std::to_string(g.triangles[3 * t + 1]) + " " +
                           std::to_string(g.triangles[3 * t + 2]) + "\n";
        w.text(line.c_str());
    }
}

using reader = bool (*)(std::string const& path, long& vertices, long& triangles);

// Peak resident memory (KiB) of a fresh process (this program again, see main) that does
// one read and nothing else: 0 when it fails. The child reports its own high-water mark
// (VmHWM), which starts afresh with the new program; the rusage figure would not, as it
// carries the parent's mark across fork and exec.
long peak_memory_kib(const char* reader_name, std::string const& path)
{
    int fds[2];
    if (pipe(fds) != 0)
        return 0;
    pid_t pid = fork();
    if (pid == 0)
    {
        close(fds[0]);
        dup2(fds[1], STDOUT_FILENO);
        execl("/proc/self/exe", "ixo_mesh_read_bench", "--read-once", reader_name, path.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    close(fds[1]);
    char text[64] = {};
    ssize_t const n = pid < 0 ? -1 : read(fds[0], text, sizeof text - 1);
    close(fds[0]);
    int status = 0;
    if (pid < 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0 || n <= 0)
        return 0;
    return std::atol(text);
}

// This process's peak resident memory in KiB, from /proc/self/status.
long own_peak_kib()
{
    FILE* f = std::fopen("/proc/self/status", "r");
    if (!f)
        return 0;
    char line[256];
    long kib = 0;
    while (std::fgets(line, sizeof line, f))
        if (std::strncmp(line, "VmHWM:", 6) == 0)
            kib = std::atol(line + 6);
    std::fclose(f);
    return kib;
}

// The floor for any reader: every byte of the file through one reused 1 MiB buffer (a
// buffer the size of the file would mostly measure page faults on fresh memory).
bool read_bytes(std::string const& path, long& vertices, long& triangles)
{
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        return false;
    std::vector<char> buffer(std::size_t(1) << 20);
    unsigned char sum = 0; // touches the bytes so the copy cannot be skipped
    std::size_t n;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), f)) > 0)
        sum = static_cast<unsigned char>(sum + buffer[n - 1]);
    bool const ok = !std::ferror(f);
    std::fclose(f);
    benchmark::DoNotOptimize(sum);
    vertices = triangles = 0;
    return ok;
}

bool read_ixo(std::string const& path, long& vertices, long& triangles)
{
    auto mesh = ixo_indexed_mesh::read_from_file(ixo_string::from_utf8(path));
    if (!mesh)
        return false;
    vertices = mesh->get_num_vertices();
    triangles = mesh->get_num_triangles();
    return true;
}

bool read_assimp([[maybe_unused]] std::string const& path, [[maybe_unused]] long& vertices,
                 [[maybe_unused]] long& triangles)
{
#if defined(IXO_HAVE_ASSIMP)
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(path, aiProcess_JoinIdenticalVertices);
    if (!scene || scene->mNumMeshes == 0)
        return false;
    vertices = triangles = 0;
    for (unsigned m = 0; m < scene->mNumMeshes; ++m)
    {
        vertices += scene->mMeshes[m]->mNumVertices;
        triangles += scene->mMeshes[m]->mNumFaces;
    }
    return true;
#else
    return false;
#endif
}

struct format
{
    const char* name;
    std::string path;
};

struct expected_mesh
{
    long vertices = 0, triangles = 0;
};

struct named_reader
{
    const char* name;
    reader read;
};

const named_reader readers[] = {
    {"bytes", read_bytes},
    {"ixocore", read_ixo},
#if defined(IXO_HAVE_ASSIMP)
    {"assimp", read_assimp},
#endif
};

void bm_read(benchmark::State& state, format const& f, named_reader r, expected_mesh want)
{
    reader const read = r.read;
    long const peak = peak_memory_kib(r.name, f.path);
    long vertices = 0, triangles = 0;
    for (auto _ : state)
        if (!read(f.path, vertices, triangles))
        {
            state.SkipWithError("the reader failed");
            return;
        }
    // Assimp may join fewer or more vertices; ixocore must give the grid exactly.
    if (want.vertices && (vertices != want.vertices || triangles != want.triangles))
    {
        state.SkipWithError("the mesh read has the wrong size");
        return;
    }
    auto const bytes = std::filesystem::file_size(f.path);
    state.SetBytesProcessed(std::int64_t(bytes) * state.iterations());
    state.counters["peak_MiB"] = double(peak) / 1024.0;
    state.counters["vertices"] = double(vertices);
}

// The console output, then one line per format with the ratios of its readers' times and
// peak memory.
class ratio_reporter : public benchmark::ConsoleReporter
{
public:
    explicit ratio_reporter(std::vector<format> const& formats) : formats_(formats) {}

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& r : runs)
            if (!r.error_occurred && r.run_type == Run::RT_Iteration)
            {
                auto peak = r.counters.find("peak_MiB");
                results_[r.run_name.function_name] = {
                    r.GetAdjustedRealTime(), peak == r.counters.end() ? 0.0 : double(peak->second)};
            }
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\n%-11s | %11s %11s | %10s %10s %10s\n", "format", "assimp/ixo", "ixo/bytes",
                    "ixo MiB", "assimp MiB", "bytes MiB");
        for (format const& f : formats_)
        {
            auto find = [&](const char* reader) -> const std::pair<double, double>*
            {
                auto it = results_.find(std::string("read/") + f.name + "/" + reader);
                return it == results_.end() ? nullptr : &it->second;
            };
            auto const *ixo = find("ixocore"), *assimp = find("assimp"), *bytes = find("bytes");
            if (!ixo)
                continue;
            auto cell = [](double v) { return v < 0 ? std::string("-") : std::to_string(v); };
            std::printf("%-11s | %11.7s %11.7s | %10.1f %10.7s %10.7s\n", f.name,
                        cell(assimp ? assimp->first / ixo->first : -1).c_str(),
                        cell(bytes ? ixo->first / bytes->first : -1).c_str(), ixo->second,
                        cell(assimp ? assimp->second : -1).c_str(),
                        cell(bytes ? bytes->second : -1).c_str());
        }
    }

private:
    std::vector<format> const& formats_;
    std::map<std::string, std::pair<double, double>> results_; // time, peak MiB
};

} // namespace

int main(int argc, char** argv)
{
    // One read for peak_memory_kib: --read-once READER PATH.
    if (argc == 4 && std::strcmp(argv[1], "--read-once") == 0)
    {
        for (named_reader const& r : readers)
            if (std::strcmp(r.name, argv[2]) == 0)
            {
                long v = 0, t = 0;
                if (!r.read(argv[3], v, t))
                    return 1;
                std::printf("%ld\n", own_peak_kib());
                return 0;
            }
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    long facets = 1000000;
    for (int i = 1; i < argc; ++i)
    {
        if (std::strncmp(argv[i], "--facets=", 9) == 0)
            facets = std::atol(argv[i] + 9);
        else
        {
            std::fprintf(stderr, "%s: unknown argument %s\n", argv[0], argv[i]);
            return 2;
        }
    }
    if (facets < 2)
    {
        std::fprintf(stderr, "%s: --facets must be at least 2\n", argv[0]);
        return 2;
    }
    auto dir = std::filesystem::temp_directory_path() /
               ("ixo_mesh_read_bench_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);

    std::vector<format> formats = {
        {"binary_STL", (dir / "grid_binary.stl").string()},
        {"ASCII_STL", (dir / "grid_ascii.stl").string()},
        {"binary_PLY", (dir / "grid_binary.ply").string()},
        {"ascii_PLY", (dir / "grid_ascii.ply").string()},
    };
    expected_mesh want;
    {
        // The grid goes before anything is measured, so the children do not carry it.
        grid g(facets);
        write_stl_binary(g, formats[0].path);
        write_stl_ascii(g, formats[1].path);
        write_ply(g, formats[2].path, false);
        write_ply(g, formats[3].path, true);
        want = {long(g.points.size()), g.facet_count()};
        std::printf("%ld facets, %ld distinct vertices\n", want.triangles, want.vertices);
    }

    for (format const& f : formats)
    {
        for (named_reader const& r : readers)
            benchmark::RegisterBenchmark((std::string("read/") + f.name + "/" + r.name).c_str(),
                                         bm_read, f, r, r.read == read_ixo ? want : expected_mesh{})
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
    }

    ratio_reporter reporter(formats);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
    return 0;
}
