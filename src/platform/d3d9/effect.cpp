// ID3DXEffect over GLSL programs: the effect file format is described in
// <ixocore/platform/d3dx9_effect.h>. Parameter values live in the effect and reach a
// technique's program when it draws (only values changed since its last draw are sent).

#include "d3d9_internal.h"
#include "fixed_function.h"

#include <ixocore/platform/d3dx9_effect.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string_view>

namespace
{

// Texture units of effect samplers, above the fixed-function stages.
constexpr GLuint k_first_unit = 8;
constexpr GLuint k_units = 8;

class buffer final : public ixo_d3d9_counted<ID3DXBuffer>
{
public:
    explicit buffer(DWORD size) : m_data(size, 0) {}
    LPVOID GetBufferPointer() override { return m_data.data(); }
    DWORD GetBufferSize() override { return static_cast<DWORD>(m_data.size()); }

private:
    std::vector<std::uint8_t> m_data;
};

void hand_out_text(const std::string& text, LPD3DXBUFFER* out)
{
    if (!out)
        return;
    auto* b = new buffer(static_cast<DWORD>(text.size() + 1));
    std::memcpy(b->GetBufferPointer(), text.c_str(), text.size() + 1);
    *out = b;
}

std::string trim(const std::string& s)
{
    size_t a = s.find_first_not_of(" \t\r");
    if (a == std::string::npos)
        return {};
    size_t b = s.find_last_not_of(" \t\r");
    return s.substr(a, b - a + 1);
}

struct parsed_technique
{
    std::string name;
    std::string vertex;
    std::string fragment;
};

// Splits the file into its common part and techniques; false with a message on error.
bool parse(const std::string& text, std::string& common, std::vector<parsed_technique>& out,
           std::string& error)
{
    enum class section
    {
        top,
        common,
        technique,
        vertex,
        fragment
    } where = section::top;
    std::istringstream in(text);
    std::string line;
    int number = 0;
    while (std::getline(in, line))
    {
        ++number;
        std::string t = trim(line);
        bool code =
            where == section::common || where == section::vertex || where == section::fragment;
        if (t == "common" && where == section::top)
        {
            where = section::common;
            continue;
        }
        if (t.rfind("technique ", 0) == 0 && (where == section::top || where == section::common))
        {
            std::string name = trim(t.substr(10));
            if (name.empty())
            {
                error = "line " + std::to_string(number) + ": technique without a name";
                return false;
            }
            for (const parsed_technique& p : out)
                if (p.name == name)
                {
                    error = "line " + std::to_string(number) + ": technique " + name + " twice";
                    return false;
                }
            out.push_back({name, {}, {}});
            where = section::technique;
            continue;
        }
        if (where != section::top && where != section::common)
        {
            if (t == "vertex")
            {
                where = section::vertex;
                continue;
            }
            if (t == "fragment")
            {
                where = section::fragment;
                continue;
            }
            if (t == "end")
            {
                if (out.back().vertex.empty() || out.back().fragment.empty())
                {
                    error = "technique " + out.back().name + " lacks a vertex or fragment stage";
                    return false;
                }
                where = section::top;
                continue;
            }
        }
        if (code)
        {
            std::string& target = where == section::common   ? common
                                  : where == section::vertex ? out.back().vertex
                                                             : out.back().fragment;
            target += line + "\n";
            continue;
        }
        if (t.empty() || t.rfind("//", 0) == 0)
            continue;
        error = "line " + std::to_string(number) + ": unexpected \"" + t + "\"";
        return false;
    }
    if (where != section::top && where != section::common)
    {
        error = "technique " + out.back().name + " is not closed with end";
        return false;
    }
    if (out.empty())
    {
        error = "no technique";
        return false;
    }
    return true;
}

bool is_sampler(GLenum type)
{
    return type == GL_SAMPLER_2D;
}

bool supported_type(GLenum type)
{
    switch (type)
    {
    case GL_BOOL:
    case GL_INT:
    case GL_FLOAT:
    case GL_FLOAT_VEC2:
    case GL_FLOAT_VEC3:
    case GL_FLOAT_VEC4:
    case GL_FLOAT_MAT4:
    case GL_SAMPLER_2D:
        return true;
    default:
        return false;
    }
}

class effect final : public ixo_d3d9_counted<ID3DXEffect>, public ixo_d3d9_program_override
{
public:
    explicit effect(ixo_d3d9_device* device) : m_device(device)
    {
        m_device->AddRef();
        m_device->add_effect(this);
    }

    ~effect() override
    {
        m_device->remove_effect(this);
        m_device->make_current();
        for (technique& t : m_techniques)
            glDeleteProgram(t.program);
        if (m_sampler)
        {
            // GL unbinds a deleted sampler; the device's record of the units must follow.
            m_device->forget_sampler(m_sampler);
            glDeleteSamplers(1, &m_sampler);
        }
        m_device->Release();
    }

    bool build(const std::string& text, std::string& error)
    {
        std::string common;
        std::vector<parsed_technique> parsed;
        if (!parse(text, common, parsed, error))
            return false;
        m_device->make_current();
        glCreateSamplers(1, &m_sampler);
        glSamplerParameteri(m_sampler, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glSamplerParameteri(m_sampler, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glSamplerParameteri(m_sampler, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glSamplerParameteri(m_sampler, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        const std::string head = "#version 450 core\n" + common;
        m_techniques.reserve(parsed.size());
        for (const parsed_technique& p : parsed)
        {
            std::string log;
            GLuint program = ixo_d3d9_link_program(head + p.vertex, head + p.fragment, &log);
            if (!program)
            {
                error = "technique " + p.name + ": " + log;
                return false;
            }
            m_techniques.push_back({p.name, program, {}, {}});
            if (!collect_parameters(m_techniques.back(), error))
                return false;
        }
        for (technique& t : m_techniques)
        {
            t.locations.resize(m_parameters.size(), -1);
            t.uploaded.resize(m_parameters.size(), 0);
            for (size_t i = 0; i < m_parameters.size(); ++i)
            {
                t.locations[i] = glGetUniformLocation(t.program, m_parameters[i].name.c_str());
                if (t.locations[i] >= 0 && is_sampler(m_parameters[i].type))
                    glProgramUniform1i(t.program, t.locations[i],
                                       static_cast<GLint>(m_parameters[i].unit));
            }
        }
        m_current = 0;
        return true;
    }

    // --- ID3DXEffect
    D3DXHANDLE GetParameterByName(D3DXHANDLE hParameter, LPCSTR pName) override
    {
        if (hParameter || !pName)
            return nullptr;
        int i = find_parameter(pName);
        return i < 0 ? nullptr : m_parameters[static_cast<size_t>(i)].name.c_str();
    }

    D3DXHANDLE GetTechniqueByName(LPCSTR pName) override
    {
        int i = find_technique(pName);
        return i < 0 ? nullptr : m_techniques[static_cast<size_t>(i)].name.c_str();
    }

    HRESULT SetBool(D3DXHANDLE h, BOOL b) override
    {
        parameter* p = numeric(h);
        if (!p)
            return D3DERR_INVALIDCALL;
        int const i = b ? 1 : 0;
        return assign(*p, {static_cast<float>(i)}, i);
    }
    HRESULT GetBool(D3DXHANDLE h, BOOL* pb) override
    {
        parameter* p = numeric(h);
        if (!p || !pb)
            return D3DERR_INVALIDCALL;
        *pb = p->i != 0 ? TRUE : FALSE;
        return D3D_OK;
    }
    HRESULT SetInt(D3DXHANDLE h, INT n) override
    {
        parameter* p = numeric(h);
        if (!p)
            return D3DERR_INVALIDCALL;
        return assign(*p, {static_cast<float>(n)}, n);
    }
    HRESULT GetInt(D3DXHANDLE h, INT* pn) override
    {
        parameter* p = numeric(h);
        if (!p || !pn)
            return D3DERR_INVALIDCALL;
        *pn = p->i;
        return D3D_OK;
    }
    HRESULT SetFloat(D3DXHANDLE h, FLOAT f) override
    {
        parameter* p = numeric(h);
        if (!p)
            return D3DERR_INVALIDCALL;
        return assign(*p, {f}, static_cast<int>(f));
    }
    HRESULT GetFloat(D3DXHANDLE h, FLOAT* pf) override
    {
        parameter* p = numeric(h);
        if (!p || !pf)
            return D3DERR_INVALIDCALL;
        *pf = p->f[0];
        return D3D_OK;
    }
    HRESULT SetVector(D3DXHANDLE h, const D3DXVECTOR4* v) override
    {
        parameter* p = numeric(h);
        if (!p || !v || p->type == GL_FLOAT_MAT4)
            return D3DERR_INVALIDCALL;
        return assign(*p, {v->x, v->y, v->z, v->w}, static_cast<int>(v->x));
    }
    HRESULT GetVector(D3DXHANDLE h, D3DXVECTOR4* v) override
    {
        parameter* p = numeric(h);
        if (!p || !v || p->type == GL_FLOAT_MAT4)
            return D3DERR_INVALIDCALL;
        *v = D3DXVECTOR4(p->f[0], p->f[1], p->f[2], p->f[3]);
        return D3D_OK;
    }
    HRESULT SetMatrix(D3DXHANDLE h, const D3DXMATRIX* m) override
    {
        parameter* p = find(h);
        if (!p || !m || p->type != GL_FLOAT_MAT4)
            return D3DERR_INVALIDCALL;
        std::array<float, 16> f;
        std::memcpy(f.data(), &m->_11, sizeof(float) * 16);
        return assign(*p, f, p->i);
    }
    HRESULT GetMatrix(D3DXHANDLE h, D3DXMATRIX* m) override
    {
        parameter* p = find(h);
        if (!p || !m || p->type != GL_FLOAT_MAT4)
            return D3DERR_INVALIDCALL;
        *m = D3DXMATRIX(p->f.data());
        return D3D_OK;
    }
    HRESULT SetTexture(D3DXHANDLE h, LPDIRECT3DBASETEXTURE9 t) override
    {
        parameter* p = find(h);
        if (!p || !is_sampler(p->type) ||
            (t && (t->GetType() != D3DRTYPE_TEXTURE ||
                   static_cast<ixo_d3d9_texture*>(static_cast<IDirect3DTexture9*>(t))->device() !=
                       m_device)))
            return D3DERR_INVALIDCALL;
        if (p->texture != t)
        {
            p->texture = t;
            p->version = ++m_version;
        }
        return D3D_OK;
    }
    HRESULT GetTexture(D3DXHANDLE h, LPDIRECT3DBASETEXTURE9* t) override
    {
        parameter* p = find(h);
        if (!p || !t || !is_sampler(p->type))
            return D3DERR_INVALIDCALL;
        *t = p->texture;
        if (*t)
            (*t)->AddRef();
        return D3D_OK;
    }

    HRESULT SetTechnique(D3DXHANDLE h) override
    {
        int i = find_technique(h);
        if (i < 0 || m_begun)
            return D3DERR_INVALIDCALL;
        m_current = i;
        return D3D_OK;
    }
    D3DXHANDLE GetCurrentTechnique() override
    {
        return m_techniques[static_cast<size_t>(m_current)].name.c_str();
    }
    HRESULT Begin(UINT* pPasses, DWORD) override
    {
        if (m_begun)
            return D3DERR_INVALIDCALL;
        m_begun = true;
        if (pPasses)
            *pPasses = 1;
        return D3D_OK;
    }
    HRESULT BeginPass(UINT Pass) override
    {
        if (!m_begun || m_in_pass || Pass != 0)
            return D3DERR_INVALIDCALL;
        m_in_pass = true;
        m_device->set_program_override(this);
        return D3D_OK;
    }
    HRESULT CommitChanges() override
    {
        if (m_in_pass)
        {
            m_device->make_current();
            prepare_draw();
        }
        return D3D_OK;
    }
    HRESULT EndPass() override
    {
        if (!m_in_pass)
            return D3DERR_INVALIDCALL;
        m_in_pass = false;
        if (m_device->program_override() == this)
            m_device->set_program_override(nullptr);
        return D3D_OK;
    }
    HRESULT End() override
    {
        if (!m_begun)
            return D3DERR_INVALIDCALL;
        if (m_in_pass)
            EndPass();
        m_begun = false;
        return D3D_OK;
    }
    HRESULT GetDevice(LPDIRECT3DDEVICE9* ppDevice) override
    {
        if (!ppDevice)
            return D3DERR_INVALIDCALL;
        m_device->AddRef();
        *ppDevice = m_device;
        return D3D_OK;
    }
    // Programs survive a device reset; nothing to release or rebuild.
    HRESULT OnLostDevice() override { return D3D_OK; }
    HRESULT OnResetDevice() override { return D3D_OK; }

    // --- ixo_d3d9_program_override
    void prepare_draw() override
    {
        technique& t = m_techniques[static_cast<size_t>(m_current)];
        m_device->use_program(t.program);
        for (size_t i = 0; i < m_parameters.size(); ++i)
        {
            const parameter& p = m_parameters[i];
            GLint loc = t.locations[i];
            if (loc < 0)
                continue;
            if (is_sampler(p.type))
            {
                auto* texture =
                    p.texture
                        ? static_cast<ixo_d3d9_texture*>(static_cast<IDirect3DTexture9*>(p.texture))
                        : nullptr;
                m_device->bind_texture_unit(p.unit, texture ? texture->texture() : 0);
                m_device->bind_sampler_unit(p.unit, m_sampler);
                continue;
            }
            if (t.uploaded[i] == p.version)
                continue;
            t.uploaded[i] = p.version;
            switch (p.type)
            {
            case GL_BOOL:
            case GL_INT:
                glProgramUniform1i(t.program, loc, p.i);
                break;
            case GL_FLOAT:
                glProgramUniform1f(t.program, loc, p.f[0]);
                break;
            case GL_FLOAT_VEC2:
                glProgramUniform2fv(t.program, loc, 1, p.f.data());
                break;
            case GL_FLOAT_VEC3:
                glProgramUniform3fv(t.program, loc, 1, p.f.data());
                break;
            case GL_FLOAT_VEC4:
                glProgramUniform4fv(t.program, loc, 1, p.f.data());
                break;
            case GL_FLOAT_MAT4:
                // D3DX's row-vector matrix as stored: the shader's M * v is v * M.
                glProgramUniformMatrix4fv(t.program, loc, 1, GL_FALSE, p.f.data());
                break;
            default:
                break;
            }
        }
    }

    void forget_texture(IDirect3DBaseTexture9* texture) override
    {
        for (parameter& p : m_parameters)
            if (p.texture == texture)
                p.texture = nullptr;
    }

private:
    struct parameter
    {
        std::string name;
        GLenum type = 0;
        std::array<float, 16> f{};
        int i = 0;
        IDirect3DBaseTexture9* texture = nullptr;
        std::uint64_t version = 1;
        GLuint unit = 0;
    };
    struct technique
    {
        std::string name;
        GLuint program = 0;
        std::vector<GLint> locations;
        std::vector<std::uint64_t> uploaded;
    };

    bool collect_parameters(const technique& t, std::string& error)
    {
        GLint count = 0;
        glGetProgramInterfaceiv(t.program, GL_UNIFORM, GL_ACTIVE_RESOURCES, &count);
        for (GLint r = 0; r < count; ++r)
        {
            const GLenum props[3] = {GL_TYPE, GL_LOCATION, GL_ARRAY_SIZE};
            GLint values[3] = {};
            glGetProgramResourceiv(t.program, GL_UNIFORM, static_cast<GLuint>(r), 3, props, 3,
                                   nullptr, values);
            if (values[1] < 0)
                continue; // in a block
            char name[256] = {};
            glGetProgramResourceName(t.program, GL_UNIFORM, static_cast<GLuint>(r), sizeof(name),
                                     nullptr, name);
            GLenum type = static_cast<GLenum>(values[0]);
            if (!supported_type(type) || values[2] != 1)
            {
                error = "technique " + t.name + ": parameter " + name + " has an unsupported type";
                return false;
            }
            int existing = find_parameter(name);
            if (existing >= 0)
            {
                if (m_parameters[static_cast<size_t>(existing)].type != type)
                {
                    error = std::string("parameter ") + name + " has two types";
                    return false;
                }
                continue;
            }
            parameter p;
            p.name = name;
            p.type = type;
            if (is_sampler(type))
            {
                if (m_next_unit >= k_first_unit + k_units)
                {
                    error = "too many textures";
                    return false;
                }
                p.unit = m_next_unit++;
            }
            m_index.emplace(p.name, static_cast<int>(m_parameters.size()));
            m_parameters.push_back(std::move(p));
        }
        return true;
    }

    int find_parameter(const char* name) const
    {
        if (!name)
            return -1;
        auto it = m_index.find(std::string_view(name));
        return it == m_index.end() ? -1 : it->second;
    }

    int find_technique(const char* name) const
    {
        if (!name)
            return -1;
        for (size_t i = 0; i < m_techniques.size(); ++i)
            if (m_techniques[i].name.c_str() == name || m_techniques[i].name == name)
                return static_cast<int>(i);
        return -1;
    }

    parameter* find(D3DXHANDLE h)
    {
        int i = find_parameter(h);
        return i < 0 ? nullptr : &m_parameters[static_cast<size_t>(i)];
    }

    parameter* numeric(D3DXHANDLE h)
    {
        parameter* p = find(h);
        return p && !is_sampler(p->type) ? p : nullptr;
    }

    // Stores a value; only a different one counts as a change that the programs upload
    // (the scene sets the same flags and matrices for object after object).
    HRESULT assign(parameter& p, const std::array<float, 16>& f, int i)
    {
        if (p.f == f && p.i == i)
            return D3D_OK;
        p.f = f;
        p.i = i;
        p.version = ++m_version;
        return D3D_OK;
    }

    ixo_d3d9_device* m_device;
    std::vector<technique> m_techniques;
    std::vector<parameter> m_parameters;
    // Looked up by the caller's C string without making a std::string of it: the scene asks
    // for parameters by name for every object it draws.
    struct name_hash
    {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const
        {
            return std::hash<std::string_view>{}(name);
        }
    };
    std::unordered_map<std::string, int, name_hash, std::equal_to<>> m_index;
    int m_current = 0;
    bool m_begun = false;
    bool m_in_pass = false;
    GLuint m_sampler = 0;
    GLuint m_next_unit = k_first_unit;
    std::uint64_t m_version = 1;
};

} // namespace

HRESULT D3DXCreateBuffer(DWORD NumBytes, LPD3DXBUFFER* ppBuffer)
{
    if (!ppBuffer || NumBytes > (1u << 30))
        return D3DERR_INVALIDCALL;
    *ppBuffer = new buffer(NumBytes);
    return D3D_OK;
}

HRESULT D3DXCreateEffect(LPDIRECT3DDEVICE9 pDevice, LPCVOID pSrcData, UINT SrcDataLen,
                         const D3DXMACRO*, LPD3DXINCLUDE, DWORD, LPD3DXEFFECTPOOL,
                         LPD3DXEFFECT* ppEffect, LPD3DXBUFFER* ppCompilationErrors)
{
    if (ppCompilationErrors)
        *ppCompilationErrors = nullptr;
    if (!ppEffect)
        return D3DERR_INVALIDCALL;
    *ppEffect = nullptr;
    if (!pDevice || !pSrcData || SrcDataLen == 0)
        return D3DERR_INVALIDCALL;
    std::string text(static_cast<const char*>(pSrcData), SrcDataLen);
    auto* e = new effect(static_cast<ixo_d3d9_device*>(pDevice));
    std::string error;
    if (!e->build(text, error))
    {
        hand_out_text(error, ppCompilationErrors);
        e->Release();
        return D3DXERR_INVALIDDATA;
    }
    *ppEffect = e;
    return D3D_OK;
}

HRESULT D3DXCreateEffectFromFileW(LPDIRECT3DDEVICE9 pDevice, LPCWSTR pSrcFile,
                                  const D3DXMACRO* pDefines, LPD3DXINCLUDE pInclude, DWORD Flags,
                                  LPD3DXEFFECTPOOL pPool, LPD3DXEFFECT* ppEffect,
                                  LPD3DXBUFFER* ppCompilationErrors)
{
    if (ppCompilationErrors)
        *ppCompilationErrors = nullptr;
    if (!ppEffect)
        return D3DERR_INVALIDCALL;
    *ppEffect = nullptr;
    if (!pDevice || !pSrcFile)
        return D3DERR_INVALIDCALL;
    std::ifstream in(ixo_native_path(pSrcFile), std::ios::binary);
    if (!in)
        return D3DERR_NOTFOUND;
    std::ostringstream text;
    text << in.rdbuf();
    std::string s = text.str();
    if (s.empty())
        return D3DXERR_INVALIDDATA;
    return D3DXCreateEffect(pDevice, s.data(), static_cast<UINT>(s.size()), pDefines, pInclude,
                            Flags, pPool, ppEffect, ppCompilationErrors);
}
