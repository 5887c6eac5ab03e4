// Frames and picks of a headless 640 × 480 render view over scenes of 10, 1,000 and 10,000
// small boxes in a cubic grid. Reports the time per frame (paint, or map plus one pick)
// and the time per object, so the growth with the scene's size is visible.
//
// Two ratios follow the benchmarks, each from alternating finished frames (painted and
// read back) so that load from elsewhere hits both sides alike:
// - an orbit of the camera around 1,000 shadow-casting boxes under a light, with shadow
//   mapping on against the same orbit with it off, and again with the scene touched every
//   frame so that the shadow map must be drawn anew;
// - a frame of 10,000 boxes through the library against a plain OpenGL peer that draws
//   them the way the library does: one draw per box from its own buffers with its own
//   world matrix and colour, the shared effect's program and parameters, the same target
//   and viewport, and the same read-back. The two pictures are compared.

#include <ixocore/app/application.h>
#include <ixocore/math/matrix.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/light.h>
#include <ixocore/render/render_view.h>
#include <ixocore/render/render_view_manager.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_box.h>
#include <ixocore/scene/scene_object.h>

#include <benchmark/benchmark.h>
#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <time.h>
#include <vector>

namespace
{
constexpr unsigned k_width = 640;
constexpr unsigned k_height = 480;
constexpr int k_rounds = 9;

// Position of box i in a cubic grid of `count` boxes.
ixo_vector3<float> grid_position(int i, int count)
{
    int const side = static_cast<int>(std::ceil(std::cbrt(double(count))));
    return ixo_vector3<float>(float(i % side), float(i / side % side), float(i / (side * side)));
}

ixo_vector4<unsigned char> box_color(int i)
{
    return ixo_vector4<unsigned char>(static_cast<unsigned char>(40 + i % 200), 120, 200, 255);
}

// The library started headless with one view over `count` boxes; ended on destruction.
// With `lit`, a light above the grid and boxes that cast shadows.
struct bench_scene
{
    explicit bench_scene(int count, bool lit = false)
    {
        ok = ixo_application::start(nullptr) == ixo_start_success;
        if (!ok)
            return;
        scene = ixo_scene::create();
        for (int i = 0; i < count; ++i)
        {
            auto box = ixo_scene_box::create(0.8f, 0.8f, 0.8f);
            box->set_color(box_color(i));
            box->set_transform(ixo_translation_transform(grid_position(i, count)));
            box->set_property(ixo_scene_object::cast_shadow, lit);
            scene->get_root()->add_child(box);
        }
        if (lit)
        {
            light = ixo_light::create(1);
            ixo_box3<float> const bounds = scene->get_bounds();
            ixo_vector3<float> const top =
                bounds.middle() + ixo_vector3<float>(-1.f, 3.f, 0.5f) * bounds.extents().length();
            light->set_position(top[0], top[1], top[2]);
            light->compute_shadow_matrices(bounds);
            scene->add_light(light);
        }
        view = ixo_render_view_manager::get_app_render_view_manager()->create();
        ok = view->initialize(nullptr, k_width, k_height, scene);
    }
    ~bench_scene()
    {
        view = nullptr;
        light = nullptr;
        scene = nullptr;
        ixo_application::end();
    }

    // One finished frame: painted and read back.
    void frame()
    {
        view->paint();
        view->capture(pixels);
    }

    bool ok = false;
    ixo_object_ptr<ixo_scene> scene;
    ixo_object_ptr<ixo_light> light;
    ixo_object_ptr<ixo_render_view> view;
    std::vector<ixo_vector4<unsigned char>> pixels;
};

void report(benchmark::State& state, int count)
{
    // Time per object: iterations × count per second, inverted.
    state.counters["per_object"] = benchmark::Counter(
        double(count), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void paint(benchmark::State& state)
{
    int const count = static_cast<int>(state.range(0));
    bench_scene s(count);
    if (!s.ok)
    {
        state.SkipWithError("no headless device");
        return;
    }
    // Headless, Present only flushes: over many frames the device cannot run far ahead,
    // so this is the frame rate a host would see. paint_and_capture waits for every frame.
    for (auto _ : state)
        s.view->paint();
    report(state, count);
}

void paint_and_capture(benchmark::State& state)
{
    int const count = static_cast<int>(state.range(0));
    bench_scene s(count);
    if (!s.ok)
    {
        state.SkipWithError("no headless device");
        return;
    }
    for (auto _ : state)
        s.frame();
    report(state, count);
}

void map_and_pick(benchmark::State& state)
{
    int const count = static_cast<int>(state.range(0));
    bench_scene s(count);
    if (!s.ok)
    {
        state.SkipWithError("no headless device");
        return;
    }
    unsigned long found = 0;
    for (auto _ : state)
    {
        s.view->map();
        s.view->pick_lock();
        found += s.view->pick(ixo_vector2<int>(320, 240));
        s.view->pick_unlock();
    }
    benchmark::DoNotOptimize(found);
    report(state, count);
}

// The camera orbits 1,000 shadow-casting boxes under a light; range(0): 0 shadow mapping
// off, 1 on, 2 on with the shadow map drawn again every frame (as if the scene changed).
void orbit(benchmark::State& state)
{
    bench_scene s(1000, true);
    if (!s.ok)
    {
        state.SkipWithError("no headless device");
        return;
    }
    s.view->set_shadow_mapping(state.range(0) != 0);
    for (auto _ : state)
    {
        if (state.range(0) == 2)
            s.scene->touch();
        s.view->get_camera()->rotate_horizontally(0.02f);
        s.frame();
    }
    report(state, 1000);
}

BENCHMARK(paint)->Arg(10)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(paint_and_capture)
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(map_and_pick)
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(orbit)
    ->ArgName("shadows")
    ->Arg(0)
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// --- the plain OpenGL peer ------------------------------------------------------------------

// The common part and one technique's two stages of the shipped effect file, as GLSL.
bool read_technique(const std::string& path, const std::string& name, std::string& vertex,
                    std::string& fragment)
{
    std::ifstream in(path);
    std::string line, common, *target = nullptr;
    bool wanted = false;
    while (std::getline(in, line))
    {
        std::string t = line;
        t.erase(0, t.find_first_not_of(" \t\r"));
        t.erase(t.find_last_not_of(" \t\r") + 1);
        if (t == "common")
            target = &common;
        else if (t.rfind("technique ", 0) == 0)
            wanted = t.substr(10) == name, target = nullptr;
        else if (t == "vertex" || t == "fragment")
            target = wanted ? (t == "vertex" ? &vertex : &fragment) : nullptr;
        else if (t == "end")
            target = nullptr;
        else if (target)
            *target += line + "\n";
    }
    vertex = "#version 450 core\n" + common + vertex;
    fragment = "#version 450 core\n" + common + fragment;
    return !common.empty() && vertex.size() > common.size() + 20 &&
           fragment.size() > common.size() + 20;
}

GLuint compile(GLenum type, const std::string& text)
{
    GLuint s = glCreateShader(type);
    const char* p = text.c_str();
    glShaderSource(s, 1, &p, nullptr);
    glCompileShader(s);
    return s;
}

// Draws what bench_scene(count) shows with the parameters the library's effect holds after
// a frame: one draw per box, each box from its own buffers, own world matrix and colour.
class plain_gl_boxes
{
public:
    explicit plain_gl_boxes(int count) : count_(count)
    {
        ID3DXEffect* fx = ixo_direct3d::get_effect();
        ID3DXMesh* mesh = nullptr;
        if (!fx ||
            FAILED(D3DXCreateBox(ixo_direct3d::get_device(), 0.8f, 0.8f, 0.8f, &mesh, nullptr)))
            return;
        std::vector<std::uint8_t> vertices(mesh->GetNumVertices() * mesh->GetNumBytesPerVertex());
        std::vector<std::uint16_t> indices(mesh->GetNumFaces() * 3);
        void* p = nullptr;
        if (SUCCEEDED(mesh->LockVertexBuffer(0, &p)))
        {
            std::memcpy(vertices.data(), p, vertices.size());
            mesh->UnlockVertexBuffer();
        }
        if (SUCCEEDED(mesh->LockIndexBuffer(0, &p)))
        {
            std::memcpy(indices.data(), p, indices.size() * 2);
            mesh->UnlockIndexBuffer();
        }
        GLsizei const stride = static_cast<GLsizei>(mesh->GetNumBytesPerVertex());
        mesh->Release();
        index_count_ = static_cast<GLsizei>(indices.size());

        // The parameters of the last frame drawn through the effect.
        D3DXMATRIX view, proj, shadow;
        fx->GetMatrix("g_mView", &view);
        fx->GetMatrix("g_mProj", &proj);
        fx->GetMatrix("g_mShadow", &shadow);
        D3DXVECTOR4 vectors[4];
        const char* vector_names[4] = {"g_headlightDiffuse", "g_lightPos", "g_lightDiffuse",
                                       "g_lightAmbient"};
        for (int i = 0; i < 4; ++i)
            fx->GetVector(vector_names[i], &vectors[i]);
        INT shadow_width = 0, shadow_height = 0;
        fx->GetInt("g_shadowWidth", &shadow_width);
        fx->GetInt("g_shadowHeight", &shadow_height);

        std::string vs_text, fs_text;
        std::error_code ec;
        auto const media = std::filesystem::read_symlink("/proc/self/exe", ec).parent_path() /
                           "Media" / "ixo_default.fx";
        if (!read_technique(media.string(), "MainTechnique", vs_text, fs_text) ||
            shadow_width <= 0 || shadow_height <= 0)
            return;

        display_ =
            eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        const EGLint attribs[] = {EGL_CONTEXT_MAJOR_VERSION,
                                  4,
                                  EGL_CONTEXT_MINOR_VERSION,
                                  5,
                                  EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                  EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                  EGL_NONE};
        if (display_ == EGL_NO_DISPLAY || !eglInitialize(display_, nullptr, nullptr) ||
            !eglBindAPI(EGL_OPENGL_API))
            return;
        context_ = eglCreateContext(display_, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, attribs);
        if (context_ == EGL_NO_CONTEXT || !make_current())
            return;

        glClipControl(GL_UPPER_LEFT, GL_ZERO_TO_ONE);
        glDisable(GL_DITHER);
        glCreateTextures(GL_TEXTURE_2D, 1, &color_);
        glTextureStorage2D(color_, 1, GL_RGBA8, k_width, k_height);
        glCreateTextures(GL_TEXTURE_2D, 1, &depth_);
        glTextureStorage2D(depth_, 1, GL_DEPTH24_STENCIL8, k_width, k_height);
        glCreateFramebuffers(1, &fbo_);
        glNamedFramebufferTexture(fbo_, GL_COLOR_ATTACHMENT0, color_, 0);
        glNamedFramebufferTexture(fbo_, GL_DEPTH_STENCIL_ATTACHMENT, depth_, 0);
        glBindFramebuffer(GL_FRAMEBUFFER, fbo_);

        // The shadow map of a scene without lights: cleared to the far depth, read through a
        // nearest, clamped sampler.
        glCreateTextures(GL_TEXTURE_2D, 1, &shadow_map_);
        glTextureStorage2D(shadow_map_, 1, GL_R32F, shadow_width, shadow_height);
        float const far_depth = 1.0f;
        glClearTexImage(shadow_map_, 0, GL_RED, GL_FLOAT, &far_depth);
        glCreateSamplers(1, &sampler_);
        glSamplerParameteri(sampler_, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glSamplerParameteri(sampler_, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glSamplerParameteri(sampler_, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glSamplerParameteri(sampler_, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        glBindTextureUnit(0, shadow_map_);
        glBindSampler(0, sampler_);

        buffers_.resize(2 * std::size_t(count_));
        glCreateBuffers(static_cast<GLsizei>(buffers_.size()), buffers_.data());
        for (int i = 0; i < count_; ++i)
        {
            glNamedBufferStorage(buffers_[2 * std::size_t(i)], GLsizeiptr(vertices.size()),
                                 vertices.data(), 0);
            glNamedBufferStorage(buffers_[2 * std::size_t(i) + 1], GLsizeiptr(indices.size() * 2),
                                 indices.data(), 0);
        }
        glCreateVertexArrays(1, &vao_);
        glEnableVertexArrayAttrib(vao_, 0);
        glVertexArrayAttribFormat(vao_, 0, 3, GL_FLOAT, GL_FALSE, 0);
        glVertexArrayAttribBinding(vao_, 0, 0);
        glEnableVertexArrayAttrib(vao_, 1);
        glVertexArrayAttribFormat(vao_, 1, 3, GL_FLOAT, GL_FALSE, 12);
        glVertexArrayAttribBinding(vao_, 1, 0);
        glBindVertexArray(vao_);
        stride_ = stride;
        glVertexAttrib4f(2, 1.f, 1.f, 1.f, 1.f);

        program_ = glCreateProgram();
        GLuint vs = compile(GL_VERTEX_SHADER, vs_text), fs = compile(GL_FRAGMENT_SHADER, fs_text);
        glAttachShader(program_, vs);
        glAttachShader(program_, fs);
        glLinkProgram(program_);
        glDeleteShader(vs);
        glDeleteShader(fs);
        GLint linked = GL_FALSE;
        glGetProgramiv(program_, GL_LINK_STATUS, &linked);
        if (!linked)
            return;
        glUseProgram(program_);
        auto at = [this](const char* name) { return glGetUniformLocation(program_, name); };
        D3DXMATRIX identity;
        D3DXMatrixIdentity(&identity);
        glUniformMatrix4fv(at("g_mView"), 1, GL_FALSE, &view._11);
        glUniformMatrix4fv(at("g_mProj"), 1, GL_FALSE, &proj._11);
        glUniformMatrix4fv(at("g_mShadow"), 1, GL_FALSE, &shadow._11);
        glUniformMatrix4fv(at("g_mWorldNoScale"), 1, GL_FALSE, &identity._11);
        for (int i = 0; i < 4; ++i)
            glUniform4fv(at(vector_names[i]), 1, &vectors[i].x);
        glUniform1i(at("g_bEnableLighting"), 1);
        glUniform1i(at("g_shadowWidth"), shadow_width);
        glUniform1i(at("g_shadowHeight"), shadow_height);
        glUniform1i(at("g_shadowTexture"), 0);
        world_at_ = at("g_mWorld");
        color_at_ = at("g_ObjectColor");

        // The library's frame states: depth test, source-alpha blending, clockwise faces
        // culled.
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LEQUAL);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glEnable(GL_CULL_FACE);
        glCullFace(GL_BACK);
        glViewport(0, 0, k_width, k_height);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        pixels_.resize(std::size_t(k_width) * k_height * 4);
        ready_ = true;
    }

    ~plain_gl_boxes()
    {
        if (context_ == EGL_NO_CONTEXT)
            return;
        make_current();
        glDeleteProgram(program_);
        glDeleteVertexArrays(1, &vao_);
        glDeleteBuffers(static_cast<GLsizei>(buffers_.size()), buffers_.data());
        glDeleteSamplers(1, &sampler_);
        glDeleteFramebuffers(1, &fbo_);
        GLuint textures[3] = {color_, depth_, shadow_map_};
        glDeleteTextures(3, textures);
        eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglDestroyContext(display_, context_);
    }

    bool ok() const { return ready_; }

    // One finished frame: cleared to white, every box drawn, the picture read back.
    void frame()
    {
        make_current();
        GLfloat const white[4] = {1, 1, 1, 1};
        glClearBufferfv(GL_COLOR, 0, white);
        glClearBufferfi(GL_DEPTH_STENCIL, 0, 1.f, 0);
        for (int i = 0; i < count_; ++i)
        {
            D3DXMATRIX world;
            ixo_vector3<float> const p = grid_position(i, count_);
            D3DXMatrixTranslation(&world, p[0], p[1], p[2]);
            ixo_vector4<unsigned char> const c = box_color(i);
            GLfloat const color[4] = {c[0] / 255.f, c[1] / 255.f, c[2] / 255.f, c[3] / 255.f};
            glVertexArrayVertexBuffer(vao_, 0, buffers_[2 * std::size_t(i)], 0, stride_);
            glVertexArrayElementBuffer(vao_, buffers_[2 * std::size_t(i) + 1]);
            glProgramUniformMatrix4fv(program_, world_at_, 1, GL_FALSE, &world._11);
            glProgramUniform4fv(program_, color_at_, 1, color);
            glDrawElements(GL_TRIANGLES, index_count_, GL_UNSIGNED_SHORT, nullptr);
        }
        glGetTextureImage(color_, 0, GL_RGBA, GL_UNSIGNED_BYTE, GLsizei(pixels_.size()),
                          pixels_.data());
    }

    const std::vector<std::uint8_t>& pixels() const { return pixels_; }

private:
    bool make_current()
    {
        return eglGetCurrentContext() == context_ ||
               eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_);
    }

    int count_;
    EGLDisplay display_ = EGL_NO_DISPLAY;
    EGLContext context_ = EGL_NO_CONTEXT;
    GLuint color_ = 0, depth_ = 0, fbo_ = 0, shadow_map_ = 0, sampler_ = 0, vao_ = 0, program_ = 0;
    std::vector<GLuint> buffers_;
    GLsizei index_count_ = 0;
    GLsizei stride_ = 0;
    GLint world_at_ = -1, color_at_ = -1;
    std::vector<std::uint8_t> pixels_;
    bool ready_ = false;
};

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0.0 : v[v.size() / 2];
}

double process_seconds()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

// Wall-clock and processor time of one call. The processor time counts the rasteriser's
// threads too, and unlike the wall clock it does not grow with load from other processes.
struct cost
{
    double wall = 0, cpu = 0;
};

template <class F> cost measure(F&& f)
{
    auto const t0 = std::chrono::steady_clock::now();
    double const c0 = process_seconds();
    f();
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count(),
            process_seconds() - c0};
}

// Medians of k_rounds alternating finished frames of a and b, the first of each warmed up.
template <class A, class B> std::pair<cost, cost> alternate(A&& a, B&& b)
{
    a();
    b();
    std::vector<double> wa, wb, ca, cb;
    for (int i = 0; i < k_rounds; ++i)
    {
        // Alternate which goes first, so neither always follows the other.
        cost x, y;
        if (i % 2 == 0)
            x = measure(a), y = measure(b);
        else
            y = measure(b), x = measure(a);
        wa.push_back(x.wall), ca.push_back(x.cpu), wb.push_back(y.wall), cb.push_back(y.cpu);
    }
    return {{median(wa), median(ca)}, {median(wb), median(cb)}};
}

void print_ratio(const char* what, const char* a, const char* b, cost ca, cost cb)
{
    std::printf("%s: %s %.2f ms (processor %.2f ms), %s %.2f ms (processor %.2f ms) per frame, "
                "medians of %d alternating frames; ratio %.3f (processor time %.3f)\n",
                what, a, ca.wall * 1e3, ca.cpu * 1e3, b, cb.wall * 1e3, cb.cpu * 1e3, k_rounds,
                ca.wall / cb.wall, ca.cpu / cb.cpu);
}

int orbit_ratio()
{
    bench_scene on(1000, true);
    if (!on.ok)
        return 1;
    // One library per process: the second view of the same scene orbits without shadows.
    auto off = ixo_render_view_manager::get_app_render_view_manager()->create();
    if (!off->initialize(nullptr, k_width, k_height, on.scene))
        return 1;
    off->set_shadow_mapping(false);
    std::vector<ixo_vector4<unsigned char>> pixels;
    auto const [t_on, t_off] = alternate(
        [&]
        {
            on.view->get_camera()->rotate_horizontally(0.02f);
            on.frame();
        },
        [&]
        {
            off->get_camera()->rotate_horizontally(0.02f);
            off->paint();
            off->capture(pixels);
        });
    print_ratio("orbit around 1,000 boxes", "shadows on", "off", t_on, t_off);
    // What the map costs when a frame must draw it: the scene changes every frame.
    auto const [t_redrawn, t_off2] = alternate(
        [&]
        {
            on.scene->touch();
            on.view->get_camera()->rotate_horizontally(0.02f);
            on.frame();
        },
        [&]
        {
            off->get_camera()->rotate_horizontally(0.02f);
            off->paint();
            off->capture(pixels);
        });
    print_ratio("orbit around 1,000 changing boxes", "shadows on", "off", t_redrawn, t_off2);
    return 0;
}

int per_object_ratio()
{
    int const count = 10000;
    bench_scene library(count);
    if (!library.ok)
        return 1;
    library.frame();
    plain_gl_boxes gl(count);
    if (!gl.ok())
    {
        std::printf("no plain OpenGL peer\n");
        return 1;
    }
    auto const [t_library, t_gl] = alternate([&] { library.frame(); }, [&] { gl.frame(); });
    // Both must have drawn the same picture.
    int worst = library.pixels.size() * 4 == gl.pixels().size() ? 0 : 256;
    for (std::size_t i = 0; worst < 256 && i < library.pixels.size(); ++i)
        for (int c = 0; c < 4; ++c)
            worst = std::max(worst, std::abs(int(library.pixels[i][c]) -
                                             int(gl.pixels()[4 * i + std::size_t(c)])));
    std::printf("largest difference between the library's and the peer's picture: %d of 255\n",
                worst);
    print_ratio("10,000 boxes", "library", "plain OpenGL", t_library, t_gl);
    std::printf("per box: library %.2f us, plain OpenGL %.2f us\n", t_library.wall * 1e6 / count,
                t_gl.wall * 1e6 / count);
    return 0;
}
} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    int const orbit_status = orbit_ratio();
    return per_object_ratio() | orbit_status;
}
