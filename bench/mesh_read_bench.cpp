// Mesh file reading: ixocore's readers against Assimp (identical-vertex joining on) and
// against reading the file's bytes, on generated files of one mesh in four formats.
//
//   ixo_mesh_read_bench [facets] [repetitions]      (defaults 1000000 and 3)
//
// Every measurement runs in a child process of its own so that its peak resident memory
// can be reported; the time is the best of the repetitions. Without Assimp at build time
// its columns stay empty.

#include <ixocore/mesh/indexed_mesh.h>

#if defined(IXO_HAVE_ASSIMP)
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#endif

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/resource.h>
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

struct result
{
    double seconds = -1;
    long peak_kib = 0;
    long vertices = 0;
    long triangles = 0;
};

// Runs `job` `repetitions` times in a child process; the best time, the child's peak
// resident memory and the mesh size the job reported.
result measure(std::function<bool(long&, long&)> const& job, int repetitions)
{
    int fds[2];
    if (pipe(fds) != 0)
        return {};
    pid_t pid = fork();
    if (pid == 0)
    {
        close(fds[0]);
        result r;
        for (int i = 0; i < repetitions; ++i)
        {
            auto t0 = std::chrono::steady_clock::now();
            bool ok = job(r.vertices, r.triangles);
            double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
            if (!ok)
            {
                r.seconds = -1;
                break;
            }
            if (r.seconds < 0 || s < r.seconds)
                r.seconds = s;
        }
        ssize_t n = write(fds[1], &r, sizeof r);
        _exit(n == ssize_t(sizeof r) ? 0 : 1);
    }
    close(fds[1]);
    result r;
    if (read(fds[0], &r, sizeof r) != ssize_t(sizeof r))
        r.seconds = -1;
    close(fds[0]);
    int status = 0;
    struct rusage usage;
    wait4(pid, &status, 0, &usage);
    r.peak_kib = usage.ru_maxrss;
    return r;
}

bool read_bytes(std::string const& path, long& vertices, long& triangles)
{
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        return false;
    std::fseek(f, 0, SEEK_END);
    long size = std::ftell(f);
    std::fseek(f, 0, SEEK_SET);
    std::vector<char> data(std::size_t(size) + 1);
    bool ok = std::fread(data.data(), 1, std::size_t(size), f) == std::size_t(size);
    std::fclose(f);
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

} // namespace

int main(int argc, char** argv)
{
    long facets = argc > 1 ? std::atol(argv[1]) : 1000000;
    int repetitions = argc > 2 ? std::atoi(argv[2]) : 3;
    if (facets < 2 || repetitions < 1)
    {
        std::fprintf(stderr, "usage: %s [facets >= 2] [repetitions >= 1]\n", argv[0]);
        return 2;
    }
    auto dir = std::filesystem::temp_directory_path() /
               ("ixo_mesh_read_bench_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);

    grid g(facets);
    struct format
    {
        const char* name;
        std::string path;
    };
    std::vector<format> formats = {
        {"binary STL", (dir / "grid_binary.stl").string()},
        {"ASCII STL", (dir / "grid_ascii.stl").string()},
        {"binary PLY", (dir / "grid_binary.ply").string()},
        {"ascii PLY", (dir / "grid_ascii.ply").string()},
    };
    write_stl_binary(g, formats[0].path);
    write_stl_ascii(g, formats[1].path);
    write_ply(g, formats[2].path, false);
    write_ply(g, formats[3].path, true);

    std::printf("%ld facets, %zu distinct vertices, best of %d\n\n", g.facet_count(),
                g.points.size(), repetitions);
    std::printf("%-11s %9s | %9s %9s %9s | %9s %9s | %9s %9s %9s\n", "format", "file MiB",
                "bytes s", "ixo s", "assimp s", "ixo/bytes", "assimp/ixo", "ixo MiB", "assimp MiB",
                "bytes MiB");
    int status = 0;
    for (format const& f : formats)
    {
        auto path = f.path;
        double mib = double(std::filesystem::file_size(path)) / (1 << 20);
        result bytes =
            measure([&](long& v, long& t) { return read_bytes(path, v, t); }, repetitions);
        result ixo = measure([&](long& v, long& t) { return read_ixo(path, v, t); }, repetitions);
        result assimp =
            measure([&](long& v, long& t) { return read_assimp(path, v, t); }, repetitions);
        if (ixo.seconds < 0 || ixo.vertices != long(g.points.size()) ||
            ixo.triangles != g.facet_count())
        {
            std::printf("%-11s ixocore read failed or gave %ld vertices, %ld triangles\n", f.name,
                        ixo.vertices, ixo.triangles);
            status = 1;
            continue;
        }
        auto cell = [](double v)
        { return v < 0 ? std::string("-") : std::to_string(v).substr(0, 7); };
        std::printf("%-11s %9.1f | %9.4f %9.4f %9s | %9.2f %9s | %9.1f %9s %9.1f\n", f.name, mib,
                    bytes.seconds, ixo.seconds, cell(assimp.seconds).c_str(),
                    ixo.seconds / bytes.seconds,
                    assimp.seconds < 0 ? "-" : cell(assimp.seconds / ixo.seconds).c_str(),
                    ixo.peak_kib / 1024.0,
                    assimp.seconds < 0 ? "-" : cell(assimp.peak_kib / 1024.0).c_str(),
                    bytes.peak_kib / 1024.0);
        if (assimp.seconds >= 0 && assimp.vertices != ixo.vertices)
            std::printf("%-11s   (assimp joined to %ld vertices)\n", "", assimp.vertices);
    }
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
    return status;
}
