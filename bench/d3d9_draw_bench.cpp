// One indexed mesh of 1,000,000 triangles drawn headless, lit by one point light, through
// the Direct3D 9 stand-in and through plain OpenGL doing the same work (same mesh in GPU
// buffers, same lighting arithmetic, same target size, same read-back), in one run. Prints
// the ratio of the two; the stand-in's overhead should stay within 10%.

#include <ixocore/platform/d3d9.h>

#include <benchmark/benchmark.h>
#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace
{

constexpr UINT k_size = 512;
constexpr int k_columns = 1000; // quads across
constexpr int k_rows = 500;     // quads down: 2 * 1000 * 500 = 1,000,000 triangles
constexpr int k_rounds = 21;

struct vertex
{
    float x, y, z, nx, ny, nz;
};

struct mesh
{
    std::vector<vertex> vertices;
    std::vector<std::uint32_t> indices;
};

const mesh& the_mesh()
{
    static mesh m = []
    {
        mesh r;
        for (int j = 0; j <= k_rows; ++j)
            for (int i = 0; i <= k_columns; ++i)
            {
                float x = -1.f + 2.f * i / k_columns, y = -1.f + 2.f * j / k_rows;
                // A gentle bump so normals vary.
                float z = 0.1f * std::sin(3.f * x) * std::cos(3.f * y);
                float nx = -0.3f * std::cos(3.f * x) * std::cos(3.f * y);
                float ny = 0.3f * std::sin(3.f * x) * std::sin(3.f * y);
                float len = std::sqrt(nx * nx + ny * ny + 1.f);
                r.vertices.push_back({x, y, z, nx / len, ny / len, -1.f / len});
            }
        for (int j = 0; j < k_rows; ++j)
            for (int i = 0; i < k_columns; ++i)
            {
                std::uint32_t a = j * (k_columns + 1) + i, b = a + k_columns + 1;
                r.indices.insert(r.indices.end(), {a, a + 1, b, a + 1, b + 1, b});
            }
        return r;
    }();
    return m;
}

// View at z = -3 looking along +z, perspective; world identity. Row-vector matrices.
D3DMATRIX view_matrix()
{
    D3DMATRIX m{};
    m._11 = m._22 = m._33 = m._44 = 1.f;
    m._43 = 3.f;
    return m;
}

D3DMATRIX projection_matrix()
{
    D3DMATRIX m{};
    float ys = 1.f / std::tan(0.35f);
    m._11 = ys;
    m._22 = ys;
    m._33 = 10.f / 9.f;
    m._34 = 1.f;
    m._43 = -10.f / 9.f;
    return m;
}

D3DMATRIX multiply(const D3DMATRIX& a, const D3DMATRIX& b)
{
    D3DMATRIX r{};
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            for (int k = 0; k < 4; ++k)
                r.m[i][j] += a.m[i][k] * b.m[k][j];
    return r;
}

// --- through the stand-in -----------------------------------------------------------------

class standin_frame
{
public:
    standin_frame()
    {
        d3d = Direct3DCreate9(D3D_SDK_VERSION);
        D3DPRESENT_PARAMETERS pp{};
        pp.BackBufferWidth = pp.BackBufferHeight = 8;
        pp.SwapEffect = D3DSWAPEFFECT_DISCARD;
        pp.Windowed = TRUE;
        if (!d3d || d3d->CreateDevice(0, D3DDEVTYPE_HAL, nullptr,
                                      D3DCREATE_HARDWARE_VERTEXPROCESSING, &pp, &device) != D3D_OK)
            return;
        const mesh& m = the_mesh();
        device->CreateRenderTarget(k_size, k_size, D3DFMT_A8R8G8B8, D3DMULTISAMPLE_NONE, 0, FALSE,
                                   &target, nullptr);
        device->CreateDepthStencilSurface(k_size, k_size, D3DFMT_D24S8, D3DMULTISAMPLE_NONE, 0,
                                          TRUE, &depth, nullptr);
        device->CreateOffscreenPlainSurface(k_size, k_size, D3DFMT_A8R8G8B8, D3DPOOL_SYSTEMMEM,
                                            &copy, nullptr);
        UINT vbytes = static_cast<UINT>(m.vertices.size() * sizeof(vertex));
        UINT ibytes = static_cast<UINT>(m.indices.size() * 4);
        device->CreateVertexBuffer(vbytes, 0, D3DFVF_XYZ | D3DFVF_NORMAL, D3DPOOL_DEFAULT, &vb,
                                   nullptr);
        device->CreateIndexBuffer(ibytes, 0, D3DFMT_INDEX32, D3DPOOL_DEFAULT, &ib, nullptr);
        void* p = nullptr;
        vb->Lock(0, 0, &p, 0);
        std::memcpy(p, m.vertices.data(), vbytes);
        vb->Unlock();
        ib->Lock(0, 0, &p, 0);
        std::memcpy(p, m.indices.data(), ibytes);
        ib->Unlock();
        vertex_count = static_cast<UINT>(m.vertices.size());
        triangles = static_cast<UINT>(m.indices.size() / 3);

        device->SetRenderTarget(0, target);
        device->SetDepthStencilSurface(depth);
        D3DMATRIX world{}, view = view_matrix(), proj = projection_matrix();
        world._11 = world._22 = world._33 = world._44 = 1.f;
        device->SetTransform(D3DTS_WORLD, &world);
        device->SetTransform(D3DTS_VIEW, &view);
        device->SetTransform(D3DTS_PROJECTION, &proj);
        D3DLIGHT9 light{};
        light.Type = D3DLIGHT_POINT;
        light.Position = {1.f, 2.f, -4.f};
        light.Diffuse = {1.f, 1.f, 1.f, 1.f};
        light.Ambient = {0.2f, 0.2f, 0.2f, 1.f};
        light.Attenuation0 = 1.f;
        light.Range = 1000.f;
        device->SetLight(0, &light);
        device->LightEnable(0, TRUE);
        D3DMATERIAL9 material{};
        material.Diffuse = {0.7f, 0.6f, 0.5f, 1.f};
        material.Ambient = {0.3f, 0.3f, 0.3f, 1.f};
        device->SetMaterial(&material);
        device->SetRenderState(D3DRS_LIGHTING, TRUE);
        device->SetRenderState(D3DRS_AMBIENT, 0xff202020);
        device->SetRenderState(D3DRS_ZENABLE, D3DZB_TRUE);
        device->SetRenderState(D3DRS_CULLMODE, D3DCULL_NONE);
        device->SetFVF(D3DFVF_XYZ | D3DFVF_NORMAL);
        device->SetStreamSource(0, vb, 0, sizeof(vertex));
        device->SetIndices(ib);
        draw(); // compiles the program
    }

    ~standin_frame()
    {
        for (IUnknown* u :
             std::initializer_list<IUnknown*>{vb, ib, copy, depth, target, device, d3d})
            if (u)
                u->Release();
    }

    bool ok() const { return device && target && depth && copy && vb && ib; }

    // The last frame, blue, green, red, alpha per pixel.
    std::vector<std::uint8_t> image()
    {
        std::vector<std::uint8_t> out(k_size * k_size * 4);
        D3DLOCKED_RECT lr{};
        if (copy->LockRect(&lr, nullptr, D3DLOCK_READONLY) != D3D_OK)
            return {};
        for (UINT y = 0; y < k_size; ++y)
            std::memcpy(&out[y * k_size * 4], static_cast<std::uint8_t*>(lr.pBits) + y * lr.Pitch,
                        k_size * 4);
        copy->UnlockRect();
        return out;
    }

    // One frame, finished: the image is read back.
    void draw()
    {
        device->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER, 0xff000000, 1.f, 0);
        device->BeginScene();
        device->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, 0, 0, vertex_count, 0, triangles);
        device->EndScene();
        device->GetRenderTargetData(target, copy);
    }

private:
    IDirect3D9* d3d = nullptr;
    IDirect3DDevice9* device = nullptr;
    IDirect3DSurface9* target = nullptr;
    IDirect3DSurface9* depth = nullptr;
    IDirect3DSurface9* copy = nullptr;
    IDirect3DVertexBuffer9* vb = nullptr;
    IDirect3DIndexBuffer9* ib = nullptr;
    UINT vertex_count = 0;
    UINT triangles = 0;
};

// --- plain OpenGL ----------------------------------------------------------------------------

const char* k_vertex = R"(#version 450 core
layout(std140, binding = 0) uniform block
{
    mat4 wvp;
    mat4 wv;
    mat4 normal_matrix;
    vec4 diffuse;
    vec4 ambient;
    vec4 global_ambient;
    vec4 light_position;
    vec4 light_diffuse;
    vec4 light_ambient;
    vec4 attenuation;
};
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
out vec4 color;
void main()
{
    vec4 p = vec4(position, 1.0);
    gl_Position = wvp * p;
    vec3 P = (wv * p).xyz;
    vec3 N = (normal_matrix * vec4(normal, 0.0)).xyz;
    vec3 L = light_position.xyz - P;
    float d = length(L);
    L /= d;
    float att = d <= attenuation.w ? 1.0 / (attenuation.x + attenuation.y * d + attenuation.z * d * d) : 0.0;
    float ndl = max(dot(N, L), 0.0);
    color = vec4(clamp(ambient.rgb * (global_ambient.rgb + att * light_ambient.rgb) +
                       diffuse.rgb * att * ndl * light_diffuse.rgb, 0.0, 1.0), diffuse.a);
}
)";

const char* k_fragment = R"(#version 450 core
in vec4 color;
layout(location = 0) out vec4 o;
void main() { o = color; }
)";

GLuint compile(GLenum type, const char* text)
{
    GLuint s = glCreateShader(type);
    glShaderSource(s, 1, &text, nullptr);
    glCompileShader(s);
    return s;
}

class plain_gl_frame
{
public:
    plain_gl_frame()
    {
        display =
            eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr) ||
            !eglBindAPI(EGL_OPENGL_API))
            return;
        const EGLint attribs[] = {EGL_CONTEXT_MAJOR_VERSION,
                                  4,
                                  EGL_CONTEXT_MINOR_VERSION,
                                  5,
                                  EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                  EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                  EGL_NONE};
        context = eglCreateContext(display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, attribs);
        if (context == EGL_NO_CONTEXT ||
            !eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context))
            return;
        const mesh& m = the_mesh();
        glClipControl(GL_UPPER_LEFT, GL_ZERO_TO_ONE);
        glCreateTextures(GL_TEXTURE_2D, 1, &color);
        glTextureStorage2D(color, 1, GL_RGBA8, k_size, k_size);
        glCreateTextures(GL_TEXTURE_2D, 1, &depth);
        glTextureStorage2D(depth, 1, GL_DEPTH24_STENCIL8, k_size, k_size);
        glCreateFramebuffers(1, &fbo);
        glNamedFramebufferTexture(fbo, GL_COLOR_ATTACHMENT0, color, 0);
        glNamedFramebufferTexture(fbo, GL_DEPTH_STENCIL_ATTACHMENT, depth, 0);
        glBindFramebuffer(GL_FRAMEBUFFER, fbo);
        glCreateBuffers(3, buffers);
        glNamedBufferStorage(buffers[0], m.vertices.size() * sizeof(vertex), m.vertices.data(), 0);
        glNamedBufferStorage(buffers[1], m.indices.size() * 4, m.indices.data(), 0);
        glCreateVertexArrays(1, &vao);
        glEnableVertexArrayAttrib(vao, 0);
        glVertexArrayAttribFormat(vao, 0, 3, GL_FLOAT, GL_FALSE, 0);
        glVertexArrayAttribBinding(vao, 0, 0);
        glEnableVertexArrayAttrib(vao, 1);
        glVertexArrayAttribFormat(vao, 1, 3, GL_FLOAT, GL_FALSE, 12);
        glVertexArrayAttribBinding(vao, 1, 0);
        glVertexArrayVertexBuffer(vao, 0, buffers[0], 0, sizeof(vertex));
        glVertexArrayElementBuffer(vao, buffers[1]);
        glBindVertexArray(vao);
        program = glCreateProgram();
        vs = compile(GL_VERTEX_SHADER, k_vertex);
        fs = compile(GL_FRAGMENT_SHADER, k_fragment);
        glAttachShader(program, vs);
        glAttachShader(program, fs);
        glLinkProgram(program);
        glUseProgram(program);

        // The same matrices, uploaded raw: M * v in GLSL is Direct3D's v * M.
        D3DMATRIX view = view_matrix(), proj = projection_matrix();
        D3DMATRIX wvp = multiply(view, proj);
        float block[16 * 3 + 4 * 7] = {};
        std::memcpy(block, &wvp, 64);
        std::memcpy(block + 16, &view, 64);
        D3DMATRIX normal{};
        normal._11 = normal._22 = normal._33 = normal._44 = 1.f;
        std::memcpy(block + 32, &normal, 64);
        const float values[7][4] = {{0.7f, 0.6f, 0.5f, 1.f},
                                    {0.3f, 0.3f, 0.3f, 1.f},
                                    {0x20 / 255.f, 0x20 / 255.f, 0x20 / 255.f, 1.f},
                                    {1.f, 2.f, -1.f, 1.f},
                                    {1.f, 1.f, 1.f, 1.f},
                                    {0.2f, 0.2f, 0.2f, 1.f},
                                    {1.f, 0.f, 0.f, 1000.f}};
        std::memcpy(block + 48, values, sizeof(values));
        glNamedBufferStorage(buffers[2], sizeof(block), block, 0);
        glBindBufferBase(GL_UNIFORM_BUFFER, 0, buffers[2]);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LEQUAL);
        glDisable(GL_DITHER);
        glViewport(0, 0, k_size, k_size);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        pixels.resize(k_size * k_size * 4);
        count = static_cast<GLsizei>(m.indices.size());
        ready = true;
        draw(); // compiles the program
    }

    ~plain_gl_frame()
    {
        if (context == EGL_NO_CONTEXT)
            return;
        eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context);
        glDeleteProgram(program);
        glDeleteShader(vs);
        glDeleteShader(fs);
        glDeleteVertexArrays(1, &vao);
        glDeleteBuffers(3, buffers);
        glDeleteFramebuffers(1, &fbo);
        glDeleteTextures(1, &color);
        glDeleteTextures(1, &depth);
        eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglDestroyContext(display, context);
    }

    bool ok() const { return ready; }
    const std::vector<std::uint8_t>& image() const { return pixels; }

    void draw()
    {
        if (eglGetCurrentContext() != context)
            eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context);
        const GLfloat black[4] = {0, 0, 0, 1};
        glClearBufferfv(GL_COLOR, 0, black);
        glClearBufferfi(GL_DEPTH_STENCIL, 0, 1.f, 0);
        glDrawElements(GL_TRIANGLES, count, GL_UNSIGNED_INT, nullptr);
        glGetTextureImage(color, 0, GL_BGRA, GL_UNSIGNED_BYTE, static_cast<GLsizei>(pixels.size()),
                          pixels.data());
    }

private:
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
    GLuint color = 0, depth = 0, fbo = 0, vao = 0, program = 0, vs = 0, fs = 0;
    GLuint buffers[3] = {};
    std::vector<std::uint8_t> pixels;
    GLsizei count = 0;
    bool ready = false;
};

template <class Frame> void run(benchmark::State& state)
{
    Frame frame;
    if (!frame.ok())
    {
        state.SkipWithError("no OpenGL 4.5 context");
        return;
    }
    for (auto _ : state)
        frame.draw();
    state.counters["triangles"] = k_rows * k_columns * 2;
}

void draw_standin(benchmark::State& state)
{
    run<standin_frame>(state);
}

void draw_plain_gl(benchmark::State& state)
{
    run<plain_gl_frame>(state);
}

double median(std::vector<double> v)
{
    if (v.empty())
        return 0.0;
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

} // namespace

BENCHMARK(draw_standin)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(draw_plain_gl)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    // The ratio from alternating frames, so that load from elsewhere hits both alike.
    standin_frame standin;
    plain_gl_frame gl;
    if (!standin.ok() || !gl.ok())
        return 1;
    std::vector<double> s, g;
    auto time = [](auto& frame)
    {
        auto t0 = std::chrono::steady_clock::now();
        frame.draw();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    };
    for (int i = 0; i < k_rounds; ++i)
    {
        // Alternate which goes first, so neither always follows the other.
        if (i % 2 == 0)
        {
            s.push_back(time(standin));
            g.push_back(time(gl));
        }
        else
        {
            g.push_back(time(gl));
            s.push_back(time(standin));
        }
    }
    // Both paths must have drawn the same picture.
    std::vector<std::uint8_t> a = standin.image(), b = gl.image();
    int worst = a.size() == b.size() ? 0 : 256;
    for (size_t i = 0; i < a.size() && i < b.size(); ++i)
        worst = std::max(worst, std::abs(int(a[i]) - int(b[i])));
    size_t drawn = 0;
    for (size_t i = 0; i + 3 < a.size(); i += 4)
        drawn += a[i] || a[i + 1] || a[i + 2];
    std::printf("%zu pixels drawn; largest difference between the two images: %d of 255\n", drawn,
                worst);
    double ms = median(s), mg = median(g);
    std::printf("1,000,000 triangles, %u x %u: stand-in %.2f ms, plain OpenGL %.2f ms per frame "
                "(medians of %d alternating frames), ratio %.3f\n",
                k_size, k_size, ms * 1e3, mg * 1e3, k_rounds, ms / mg);
    return 0;
}
