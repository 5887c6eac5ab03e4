// Drawing: vertex formats, GL state from the render states, the fixed-function programs
// (cached by state key) and their uniform block, and the draw calls.
//
// Nothing here queries GL: every binding is remembered, so an unchanged draw costs a few
// comparisons on top of the GL draw itself.

#include "d3d9_internal.h"
#include "fixed_function.h"

#include <algorithm>
#include <cmath>

namespace
{

struct fvf_layout
{
    bool ok = false;
    bool rhw = false;
    bool normal = false;
    bool diffuse = false;
    bool texcoord = false;
    UINT size = 0;
    UINT normal_offset = 0;
    UINT diffuse_offset = 0;
    UINT texcoord_offset = 0;
};

fvf_layout parse_fvf(DWORD fvf)
{
    fvf_layout l;
    const DWORD allowed =
        D3DFVF_POSITION_MASK | D3DFVF_NORMAL | D3DFVF_DIFFUSE | D3DFVF_TEXCOUNT_MASK;
    DWORD position = fvf & D3DFVF_POSITION_MASK;
    DWORD textures = (fvf & D3DFVF_TEXCOUNT_MASK) >> D3DFVF_TEXCOUNT_SHIFT;
    if ((fvf & ~allowed) || (position != D3DFVF_XYZ && position != D3DFVF_XYZRHW) || textures > 1)
        return l;
    l.rhw = position == D3DFVF_XYZRHW;
    l.size = l.rhw ? 16 : 12;
    if (fvf & D3DFVF_NORMAL)
    {
        if (l.rhw)
            return l;
        l.normal = true;
        l.normal_offset = l.size;
        l.size += 12;
    }
    if (fvf & D3DFVF_DIFFUSE)
    {
        l.diffuse = true;
        l.diffuse_offset = l.size;
        l.size += 4;
    }
    if (textures == 1)
    {
        l.texcoord = true;
        l.texcoord_offset = l.size;
        l.size += 8;
    }
    l.ok = true;
    return l;
}

bool primitive(D3DPRIMITIVETYPE type, UINT count, GLenum* mode, UINT* vertices)
{
    std::uint64_t n = count;
    std::uint64_t v = 0;
    switch (type)
    {
    case D3DPT_POINTLIST:
        *mode = GL_POINTS, v = n;
        break;
    case D3DPT_LINELIST:
        *mode = GL_LINES, v = 2 * n;
        break;
    case D3DPT_LINESTRIP:
        *mode = GL_LINE_STRIP, v = n + 1;
        break;
    case D3DPT_TRIANGLELIST:
        *mode = GL_TRIANGLES, v = 3 * n;
        break;
    case D3DPT_TRIANGLESTRIP:
        *mode = GL_TRIANGLE_STRIP, v = n + 2;
        break;
    case D3DPT_TRIANGLEFAN:
        *mode = GL_TRIANGLE_FAN, v = n + 2;
        break;
    default:
        return false;
    }
    if (count == 0 || v > 0x7fffffffu)
        return false;
    *vertices = static_cast<UINT>(v);
    return true;
}

GLenum compare_func(DWORD f)
{
    switch (f)
    {
    case D3DCMP_NEVER:
        return GL_NEVER;
    case D3DCMP_LESS:
        return GL_LESS;
    case D3DCMP_EQUAL:
        return GL_EQUAL;
    case D3DCMP_LESSEQUAL:
        return GL_LEQUAL;
    case D3DCMP_GREATER:
        return GL_GREATER;
    case D3DCMP_NOTEQUAL:
        return GL_NOTEQUAL;
    case D3DCMP_GREATEREQUAL:
        return GL_GEQUAL;
    default:
        return GL_ALWAYS;
    }
}

GLenum blend_factor(DWORD b)
{
    switch (b)
    {
    case D3DBLEND_ZERO:
        return GL_ZERO;
    case D3DBLEND_SRCCOLOR:
        return GL_SRC_COLOR;
    case D3DBLEND_INVSRCCOLOR:
        return GL_ONE_MINUS_SRC_COLOR;
    case D3DBLEND_SRCALPHA:
        return GL_SRC_ALPHA;
    case D3DBLEND_INVSRCALPHA:
        return GL_ONE_MINUS_SRC_ALPHA;
    case D3DBLEND_DESTALPHA:
        return GL_DST_ALPHA;
    case D3DBLEND_INVDESTALPHA:
        return GL_ONE_MINUS_DST_ALPHA;
    case D3DBLEND_DESTCOLOR:
        return GL_DST_COLOR;
    case D3DBLEND_INVDESTCOLOR:
        return GL_ONE_MINUS_DST_COLOR;
    case D3DBLEND_SRCALPHASAT:
        return GL_SRC_ALPHA_SATURATE;
    default:
        return GL_ONE;
    }
}

GLenum blend_op(DWORD op)
{
    switch (op)
    {
    case D3DBLENDOP_SUBTRACT:
        return GL_FUNC_SUBTRACT;
    case D3DBLENDOP_REVSUBTRACT:
        return GL_FUNC_REVERSE_SUBTRACT;
    case D3DBLENDOP_MIN:
        return GL_MIN;
    case D3DBLENDOP_MAX:
        return GL_MAX;
    default:
        return GL_FUNC_ADD;
    }
}

GLenum stencil_op(DWORD op)
{
    switch (op)
    {
    case D3DSTENCILOP_ZERO:
        return GL_ZERO;
    case D3DSTENCILOP_REPLACE:
        return GL_REPLACE;
    case D3DSTENCILOP_INCRSAT:
        return GL_INCR;
    case D3DSTENCILOP_DECRSAT:
        return GL_DECR;
    case D3DSTENCILOP_INVERT:
        return GL_INVERT;
    case D3DSTENCILOP_INCR:
        return GL_INCR_WRAP;
    case D3DSTENCILOP_DECR:
        return GL_DECR_WRAP;
    default:
        return GL_KEEP;
    }
}

GLint address_mode(DWORD a)
{
    switch (a)
    {
    case D3DTADDRESS_MIRROR:
        return GL_MIRRORED_REPEAT;
    case D3DTADDRESS_CLAMP:
        return GL_CLAMP_TO_EDGE;
    case D3DTADDRESS_BORDER:
        return GL_CLAMP_TO_BORDER;
    default:
        return GL_REPEAT;
    }
}

void color_of(D3DCOLOR c, float* out)
{
    out[0] = ((c >> 16) & 0xff) / 255.f;
    out[1] = ((c >> 8) & 0xff) / 255.f;
    out[2] = (c & 0xff) / 255.f;
    out[3] = ((c >> 24) & 0xff) / 255.f;
}

void value_of(const D3DCOLORVALUE& c, float* out)
{
    out[0] = c.r, out[1] = c.g, out[2] = c.b, out[3] = c.a;
}

// Transposed inverse of the upper 3 x 3 block: what carries normals (row vectors).
D3DMATRIX normal_matrix(const D3DMATRIX& m)
{
    const float a = m._11, b = m._12, c = m._13, d = m._21, e = m._22, f = m._23, g = m._31,
                h = m._32, i = m._33;
    float A = e * i - f * h, B = -(d * i - f * g), C = d * h - e * g;
    float det = a * A + b * B + c * C;
    D3DMATRIX n{};
    n._44 = 1.f;
    if (det == 0.f)
        return n;
    float s = 1.f / det;
    // Cofactor matrix over det = transpose of the inverse.
    n._11 = A * s, n._12 = B * s, n._13 = C * s;
    n._21 = -(b * i - c * h) * s, n._22 = (a * i - c * g) * s, n._23 = -(a * h - b * g) * s;
    n._31 = (b * f - c * e) * s, n._32 = -(a * f - c * d) * s, n._33 = (a * e - b * d) * s;
    return n;
}

} // namespace

// ---------------------------------------------------------------------------------------
// GL state

void ixo_d3d9_device::use_program(GLuint program)
{
    if (program != m_current_program)
    {
        glUseProgram(program);
        m_current_program = program;
    }
}

void ixo_d3d9_device::apply_framebuffer()
{
    if (!m_fbo_dirty)
        return;
    glNamedFramebufferTexture(m_fbo, GL_COLOR_ATTACHMENT0, 0, 0);
    glNamedFramebufferTexture(m_fbo, GL_DEPTH_STENCIL_ATTACHMENT, 0, 0);
    if (m_render_target)
        glNamedFramebufferTexture(m_fbo, GL_COLOR_ATTACHMENT0, m_render_target->texture(),
                                  m_render_target->level());
    if (m_depth_stencil)
    {
        GLenum point = m_depth_stencil->format()->format == D3DFMT_D16
                           ? GL_DEPTH_ATTACHMENT
                           : GL_DEPTH_STENCIL_ATTACHMENT;
        glNamedFramebufferTexture(m_fbo, point, m_depth_stencil->texture(),
                                  m_depth_stencil->level());
    }
    glNamedFramebufferDrawBuffer(m_fbo, GL_COLOR_ATTACHMENT0);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_fbo);
    m_fbo_dirty = false;
}

void ixo_d3d9_device::apply_render_states()
{
    if (m_depth_stencil && m_rs[D3DRS_ZENABLE] != D3DZB_FALSE)
    {
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(compare_func(m_rs[D3DRS_ZFUNC]));
    }
    else
        glDisable(GL_DEPTH_TEST);
    glDepthMask(m_rs[D3DRS_ZWRITEENABLE] ? GL_TRUE : GL_FALSE);

    if (m_rs[D3DRS_ALPHABLENDENABLE])
    {
        glEnable(GL_BLEND);
        glBlendFunc(blend_factor(m_rs[D3DRS_SRCBLEND]), blend_factor(m_rs[D3DRS_DESTBLEND]));
        glBlendEquation(blend_op(m_rs[D3DRS_BLENDOP]));
    }
    else
        glDisable(GL_BLEND);

    // Direct3D's clockwise is clockwise on the screen, which is GL's clockwise in normalised
    // device coordinates (y up in both); GL's front faces are counter-clockwise.
    switch (m_rs[D3DRS_CULLMODE])
    {
    case D3DCULL_CW:
        glEnable(GL_CULL_FACE);
        glCullFace(GL_BACK);
        break;
    case D3DCULL_CCW:
        glEnable(GL_CULL_FACE);
        glCullFace(GL_FRONT);
        break;
    default:
        glDisable(GL_CULL_FACE);
        break;
    }
    switch (m_rs[D3DRS_FILLMODE])
    {
    case D3DFILL_POINT:
        glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
        break;
    case D3DFILL_WIREFRAME:
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        break;
    default:
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        break;
    }
    DWORD mask = m_rs[D3DRS_COLORWRITEENABLE];
    glColorMask((mask & 1) ? GL_TRUE : GL_FALSE, (mask & 2) ? GL_TRUE : GL_FALSE,
                (mask & 4) ? GL_TRUE : GL_FALSE, (mask & 8) ? GL_TRUE : GL_FALSE);
    if (m_rs[D3DRS_SCISSORTESTENABLE])
    {
        glEnable(GL_SCISSOR_TEST);
        glScissor(m_scissor.left, m_scissor.top, std::max(0, m_scissor.right - m_scissor.left),
                  std::max(0, m_scissor.bottom - m_scissor.top));
    }
    else
        glDisable(GL_SCISSOR_TEST);
    if (m_depth_stencil && m_rs[D3DRS_STENCILENABLE])
    {
        glEnable(GL_STENCIL_TEST);
        glStencilFunc(compare_func(m_rs[D3DRS_STENCILFUNC]),
                      static_cast<GLint>(m_rs[D3DRS_STENCILREF] & 0xff), m_rs[D3DRS_STENCILMASK]);
        glStencilOp(stencil_op(m_rs[D3DRS_STENCILFAIL]), stencil_op(m_rs[D3DRS_STENCILZFAIL]),
                    stencil_op(m_rs[D3DRS_STENCILPASS]));
        glStencilMask(m_rs[D3DRS_STENCILWRITEMASK]);
    }
    else
        glDisable(GL_STENCIL_TEST);
    m_render_states_dirty = false;
}

GLuint ixo_d3d9_device::vertex_array(DWORD fvf)
{
    auto it = m_vaos.find(fvf);
    if (it != m_vaos.end())
        return it->second;
    fvf_layout l = parse_fvf(fvf);
    GLuint vao = 0;
    glCreateVertexArrays(1, &vao);
    glEnableVertexArrayAttrib(vao, 0);
    glVertexArrayAttribFormat(vao, 0, l.rhw ? 4 : 3, GL_FLOAT, GL_FALSE, 0);
    glVertexArrayAttribBinding(vao, 0, 0);
    if (l.normal)
    {
        glEnableVertexArrayAttrib(vao, 1);
        glVertexArrayAttribFormat(vao, 1, 3, GL_FLOAT, GL_FALSE, l.normal_offset);
        glVertexArrayAttribBinding(vao, 1, 0);
    }
    if (l.diffuse)
    {
        // A D3DCOLOR lies in memory as blue, green, red, alpha.
        glEnableVertexArrayAttrib(vao, 2);
        glVertexArrayAttribFormat(vao, 2, GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE, l.diffuse_offset);
        glVertexArrayAttribBinding(vao, 2, 0);
    }
    if (l.texcoord)
    {
        glEnableVertexArrayAttrib(vao, 3);
        glVertexArrayAttribFormat(vao, 3, 2, GL_FLOAT, GL_FALSE, l.texcoord_offset);
        glVertexArrayAttribBinding(vao, 3, 0);
    }
    m_vaos.emplace(fvf, vao);
    return vao;
}

GLuint ixo_d3d9_device::fixed_function_program(DWORD fvf)
{
    if (!m_program_dirty && m_ff_fvf == fvf && m_ff_program)
        return m_ff_program;
    fvf_layout l = parse_fvf(fvf);
    ixo_d3d9_ff_key key;
    key.rhw = l.rhw;
    key.normal = l.normal;
    key.diffuse = l.diffuse;
    key.texcoord = l.texcoord;
    key.lighting = m_rs[D3DRS_LIGHTING] && !l.rhw;
    if (key.lighting)
    {
        key.normalize = m_rs[D3DRS_NORMALIZENORMALS] != 0;
        key.specular = m_rs[D3DRS_SPECULARENABLE] != 0;
        key.local_viewer = m_rs[D3DRS_LOCALVIEWER] != 0;
        auto source = [&](DWORD state) -> std::uint8_t
        { return m_rs[D3DRS_COLORVERTEX] && l.diffuse && m_rs[state] == D3DMCS_COLOR1; };
        key.diffuse_source = source(D3DRS_DIFFUSEMATERIALSOURCE);
        key.ambient_source = source(D3DRS_AMBIENTMATERIALSOURCE);
        key.specular_source = source(D3DRS_SPECULARMATERIALSOURCE);
        key.emissive_source = source(D3DRS_EMISSIVEMATERIALSOURCE);
        for (const light_slot& s : m_lights)
        {
            if (s.enabled && key.light_count < 8)
                key.light_types[key.light_count++] =
                    s.light.Type == D3DLIGHT_DIRECTIONAL ? D3DLIGHT_DIRECTIONAL : D3DLIGHT_POINT;
        }
    }
    const stage_state& s0 = m_stages[0];
    if (l.texcoord && s0.texture && s0.tss[D3DTSS_COLOROP] != D3DTOP_DISABLE)
    {
        key.texture = 1;
        key.color_op = static_cast<std::uint8_t>(s0.tss[D3DTSS_COLOROP]);
        key.color_arg1 = static_cast<std::uint8_t>(s0.tss[D3DTSS_COLORARG1]);
        key.color_arg2 = static_cast<std::uint8_t>(s0.tss[D3DTSS_COLORARG2]);
        key.alpha_op = static_cast<std::uint8_t>(s0.tss[D3DTSS_ALPHAOP]);
        key.alpha_arg1 = static_cast<std::uint8_t>(s0.tss[D3DTSS_ALPHAARG1]);
        key.alpha_arg2 = static_cast<std::uint8_t>(s0.tss[D3DTSS_ALPHAARG2]);
    }
    if (m_rs[D3DRS_ALPHATESTENABLE])
        key.alpha_func = static_cast<std::uint8_t>(std::clamp<DWORD>(m_rs[D3DRS_ALPHAFUNC], 1, 8));
    std::string bytes = key.bytes();
    auto it = m_programs.find(bytes);
    GLuint program = 0;
    if (it != m_programs.end())
        program = it->second;
    else
    {
        // A failure is remembered too (as 0), so that it is not compiled again every draw.
        program = ixo_d3d9_link_program(ixo_d3d9_ff_vertex_source(key),
                                        ixo_d3d9_ff_fragment_source(key), nullptr);
        m_programs.emplace(std::move(bytes), program);
    }
    if (!program)
        return 0;
    // The uniform block is shared by every program, so a change of program alone does not
    // need it written again.
    m_ff_program = program;
    m_ff_fvf = fvf;
    m_program_dirty = false;
    return program;
}

void ixo_d3d9_device::upload_fixed_function_uniforms()
{
    ixo_d3d9_ff_uniforms u{};
    D3DMATRIX wv = ixo_d3d9_multiply(m_world, m_view);
    D3DMATRIX wvp = ixo_d3d9_multiply(wv, m_proj);
    D3DMATRIX n = normal_matrix(wv);
    std::memcpy(u.world_view_proj, &wvp, sizeof(wvp));
    std::memcpy(u.world_view, &wv, sizeof(wv));
    std::memcpy(u.normal_matrix, &n, sizeof(n));
    value_of(m_material.Diffuse, u.material_diffuse);
    value_of(m_material.Ambient, u.material_ambient);
    value_of(m_material.Specular, u.material_specular);
    value_of(m_material.Emissive, u.material_emissive);
    color_of(m_rs[D3DRS_AMBIENT], u.global_ambient);
    u.params[0] = m_material.Power;
    u.params[1] = static_cast<float>(m_rs[D3DRS_ALPHAREF] & 0xff);
    u.viewport[0] = static_cast<float>(m_viewport.X);
    u.viewport[1] = static_cast<float>(m_viewport.Y);
    u.viewport[2] = static_cast<float>(m_viewport.Width);
    u.viewport[3] = static_cast<float>(m_viewport.Height);
    color_of(m_rs[D3DRS_TEXTUREFACTOR], u.texture_factor);
    int count = 0;
    for (const light_slot& s : m_lights)
    {
        if (!s.enabled || count >= 8)
            continue;
        const D3DLIGHT9& l = s.light;
        ixo_d3d9_ff_light& o = u.lights[count++];
        value_of(l.Diffuse, o.diffuse);
        value_of(l.Specular, o.specular);
        value_of(l.Ambient, o.ambient);
        // Lights are given in world space and lit in view space.
        const D3DMATRIX& v = m_view;
        const D3DVECTOR& p = l.Position;
        o.position[0] = p.x * v._11 + p.y * v._21 + p.z * v._31 + v._41;
        o.position[1] = p.x * v._12 + p.y * v._22 + p.z * v._32 + v._42;
        o.position[2] = p.x * v._13 + p.y * v._23 + p.z * v._33 + v._43;
        o.position[3] = 1.f;
        const D3DVECTOR& d = l.Direction;
        float dx = d.x * v._11 + d.y * v._21 + d.z * v._31;
        float dy = d.x * v._12 + d.y * v._22 + d.z * v._32;
        float dz = d.x * v._13 + d.y * v._23 + d.z * v._33;
        float len = std::sqrt(dx * dx + dy * dy + dz * dz);
        if (len > 0.f)
        {
            o.direction[0] = -dx / len;
            o.direction[1] = -dy / len;
            o.direction[2] = -dz / len;
        }
        o.attenuation[0] = l.Attenuation0;
        o.attenuation[1] = l.Attenuation1;
        o.attenuation[2] = l.Attenuation2;
        o.attenuation[3] = l.Range;
    }
    // Only the bytes that differ from the last upload go to the buffer: from object to
    // object usually the matrices and the material, never the lights.
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&u);
    if (m_ff_uploaded.size() != sizeof(u))
    {
        m_ff_uploaded.assign(bytes, bytes + sizeof(u));
        glNamedBufferSubData(m_ubo, 0, sizeof(u), &u);
    }
    else
    {
        std::size_t first = 0, last = sizeof(u);
        while (first < last && bytes[first] == m_ff_uploaded[first])
            ++first;
        while (last > first && bytes[last - 1] == m_ff_uploaded[last - 1])
            --last;
        if (first < last)
        {
            std::memcpy(m_ff_uploaded.data() + first, bytes + first, last - first);
            glNamedBufferSubData(m_ubo, static_cast<GLintptr>(first),
                                 static_cast<GLsizeiptr>(last - first), bytes + first);
        }
    }
    m_uniforms_dirty = false;
}

void ixo_d3d9_device::apply_samplers()
{
    stage_state& s = m_stages[0];
    if (!s.sampler_dirty)
        return;
    DWORD mip = s.samp[D3DSAMP_MIPFILTER];
    bool linear = s.samp[D3DSAMP_MINFILTER] >= D3DTEXF_LINEAR;
    GLint min = linear ? GL_LINEAR : GL_NEAREST;
    if (mip == D3DTEXF_POINT)
        min = linear ? GL_LINEAR_MIPMAP_NEAREST : GL_NEAREST_MIPMAP_NEAREST;
    else if (mip >= D3DTEXF_LINEAR)
        min = linear ? GL_LINEAR_MIPMAP_LINEAR : GL_NEAREST_MIPMAP_LINEAR;
    glSamplerParameteri(s.sampler, GL_TEXTURE_MIN_FILTER, min);
    glSamplerParameteri(s.sampler, GL_TEXTURE_MAG_FILTER,
                        s.samp[D3DSAMP_MAGFILTER] >= D3DTEXF_LINEAR ? GL_LINEAR : GL_NEAREST);
    glSamplerParameteri(s.sampler, GL_TEXTURE_WRAP_S, address_mode(s.samp[D3DSAMP_ADDRESSU]));
    glSamplerParameteri(s.sampler, GL_TEXTURE_WRAP_T, address_mode(s.samp[D3DSAMP_ADDRESSV]));
    float border[4];
    color_of(s.samp[D3DSAMP_BORDERCOLOR], border);
    glSamplerParameterfv(s.sampler, GL_TEXTURE_BORDER_COLOR, border);
    s.sampler_dirty = false;
}

// ---------------------------------------------------------------------------------------
// Draw calls

HRESULT ixo_d3d9_device::draw(GLenum mode, UINT vertex_count, DWORD fvf, bool indexed,
                              GLenum index_type, UINT first, INT base_vertex, GLuint vertex_buffer,
                              UINT offset, UINT stride, GLuint index_buffer)
{
    if (!m_render_target)
        return D3DERR_INVALIDCALL;
    apply_framebuffer();
    if (m_viewport_dirty)
    {
        glViewport(static_cast<GLint>(m_viewport.X), static_cast<GLint>(m_viewport.Y),
                   static_cast<GLsizei>(m_viewport.Width), static_cast<GLsizei>(m_viewport.Height));
        glDepthRangef(m_viewport.MinZ, m_viewport.MaxZ);
        m_viewport_dirty = false;
    }
    if (m_render_states_dirty)
        apply_render_states();
    GLuint vao = vertex_array(fvf);
    if (m_override)
        m_override->prepare_draw();
    else
    {
        GLuint program = fixed_function_program(fvf);
        if (!program)
            return D3DERR_DRIVERINTERNALERROR;
        use_program(program);
        if (m_uniforms_dirty)
            upload_fixed_function_uniforms();
        if (m_stages[0].texture && parse_fvf(fvf).texcoord)
        {
            apply_samplers();
            auto* t = static_cast<ixo_d3d9_texture*>(
                static_cast<IDirect3DTexture9*>(m_stages[0].texture));
            bind_texture_unit(0, t->texture());
        }
    }
    if (vao != m_bound_vao)
    {
        glBindVertexArray(vao);
        m_bound_vao = vao;
        m_bound_vertex_buffer = 0;
        m_bound_index_buffer = 0;
    }
    if (vertex_buffer != m_bound_vertex_buffer || offset != m_bound_offset ||
        stride != m_bound_stride)
    {
        glVertexArrayVertexBuffer(vao, 0, vertex_buffer, offset, static_cast<GLsizei>(stride));
        m_bound_vertex_buffer = vertex_buffer;
        m_bound_offset = offset;
        m_bound_stride = stride;
    }
    if (indexed)
    {
        if (index_buffer != m_bound_index_buffer)
        {
            glVertexArrayElementBuffer(vao, index_buffer);
            m_bound_index_buffer = index_buffer;
        }
        std::uintptr_t byte_offset =
            static_cast<std::uintptr_t>(first) * (index_type == GL_UNSIGNED_SHORT ? 2u : 4u);
        glDrawElementsBaseVertex(mode, static_cast<GLsizei>(vertex_count), index_type,
                                 reinterpret_cast<const void*>(byte_offset), base_vertex);
    }
    else
        glDrawArrays(mode, static_cast<GLint>(first), static_cast<GLsizei>(vertex_count));
    return D3D_OK;
}

HRESULT ixo_d3d9_device::DrawPrimitive(D3DPRIMITIVETYPE PrimitiveType, UINT StartVertex,
                                       UINT PrimitiveCount)
{
    GLenum mode;
    UINT count;
    if (!m_stream || !primitive(PrimitiveType, PrimitiveCount, &mode, &count))
        return D3DERR_INVALIDCALL;
    fvf_layout l = parse_fvf(m_fvf);
    if (!l.ok || m_stream_stride < l.size)
        return D3DERR_INVALIDCALL;
    std::uint64_t end = std::uint64_t(m_stream_offset) +
                        (std::uint64_t(StartVertex) + count - 1) * m_stream_stride + l.size;
    if (end > m_stream->m_data.length || StartVertex > 0x7fffffffu)
        return D3DERR_INVALIDCALL;
    make_current();
    return draw(mode, count, m_fvf, false, 0, StartVertex, 0, m_stream->m_data.buffer,
                m_stream_offset, m_stream_stride, 0);
}

HRESULT ixo_d3d9_device::DrawIndexedPrimitive(D3DPRIMITIVETYPE PrimitiveType, INT BaseVertexIndex,
                                              UINT, UINT, UINT startIndex, UINT primCount)
{
    GLenum mode;
    UINT count;
    if (!m_stream || !m_indices || BaseVertexIndex < 0 ||
        !primitive(PrimitiveType, primCount, &mode, &count))
        return D3DERR_INVALIDCALL;
    fvf_layout l = parse_fvf(m_fvf);
    if (!l.ok || m_stream_stride < l.size)
        return D3DERR_INVALIDCALL;
    UINT index_size = m_indices->index_size();
    if (std::uint64_t(startIndex) + count > m_indices->m_data.length / index_size)
        return D3DERR_INVALIDCALL;
    std::uint64_t top = std::uint64_t(BaseVertexIndex) + m_indices->max_index(startIndex, count);
    std::uint64_t end = std::uint64_t(m_stream_offset) + top * m_stream_stride + l.size;
    if (end > m_stream->m_data.length)
        return D3DERR_INVALIDCALL;
    make_current();
    return draw(mode, count, m_fvf, true, index_size == 2 ? GL_UNSIGNED_SHORT : GL_UNSIGNED_INT,
                startIndex, BaseVertexIndex, m_stream->m_data.buffer, m_stream_offset,
                m_stream_stride, m_indices->m_data.buffer);
}

HRESULT ixo_d3d9_device::DrawPrimitiveUP(D3DPRIMITIVETYPE PrimitiveType, UINT PrimitiveCount,
                                         const void* pVertexStreamZeroData,
                                         UINT VertexStreamZeroStride)
{
    GLenum mode;
    UINT count;
    fvf_layout l = parse_fvf(m_fvf);
    if (!pVertexStreamZeroData || !l.ok || VertexStreamZeroStride < l.size ||
        VertexStreamZeroStride > 255 || !primitive(PrimitiveType, PrimitiveCount, &mode, &count))
        return D3DERR_INVALIDCALL;
    std::uint64_t bytes = std::uint64_t(count) * VertexStreamZeroStride;
    if (bytes > (1u << 30))
        return D3DERR_INVALIDCALL;
    make_current();
    glNamedBufferData(m_up_buffer, static_cast<GLsizeiptr>(bytes), pVertexStreamZeroData,
                      GL_STREAM_DRAW);
    HRESULT hr =
        draw(mode, count, m_fvf, false, 0, 0, 0, m_up_buffer, 0, VertexStreamZeroStride, 0);
    m_stream = nullptr;
    m_stream_offset = m_stream_stride = 0;
    return hr;
}

HRESULT ixo_d3d9_device::DrawIndexedPrimitiveUP(D3DPRIMITIVETYPE PrimitiveType, UINT MinVertexIndex,
                                                UINT NumVertices, UINT PrimitiveCount,
                                                const void* pIndexData, D3DFORMAT IndexDataFormat,
                                                const void* pVertexStreamZeroData,
                                                UINT VertexStreamZeroStride)
{
    GLenum mode;
    UINT count;
    fvf_layout l = parse_fvf(m_fvf);
    if (!pIndexData || !pVertexStreamZeroData || !l.ok || VertexStreamZeroStride < l.size ||
        VertexStreamZeroStride > 255 || NumVertices == 0 ||
        (IndexDataFormat != D3DFMT_INDEX16 && IndexDataFormat != D3DFMT_INDEX32) ||
        !primitive(PrimitiveType, PrimitiveCount, &mode, &count))
        return D3DERR_INVALIDCALL;
    std::uint64_t vertices = std::uint64_t(MinVertexIndex) + NumVertices;
    std::uint64_t bytes = vertices * VertexStreamZeroStride;
    UINT index_size = IndexDataFormat == D3DFMT_INDEX16 ? 2 : 4;
    if (bytes > (1u << 30) || std::uint64_t(count) * index_size > (1u << 30))
        return D3DERR_INVALIDCALL;
    const auto* idx = static_cast<const std::uint8_t*>(pIndexData);
    for (UINT i = 0; i < count; ++i)
    {
        std::uint32_t v = 0;
        std::memcpy(&v, idx + std::size_t(i) * index_size, index_size);
        if (v >= vertices)
            return D3DERR_INVALIDCALL;
    }
    make_current();
    glNamedBufferData(m_up_buffer, static_cast<GLsizeiptr>(bytes), pVertexStreamZeroData,
                      GL_STREAM_DRAW);
    glNamedBufferData(m_up_index_buffer, static_cast<GLsizeiptr>(count) * index_size, pIndexData,
                      GL_STREAM_DRAW);
    HRESULT hr =
        draw(mode, count, m_fvf, true, index_size == 2 ? GL_UNSIGNED_SHORT : GL_UNSIGNED_INT, 0, 0,
             m_up_buffer, 0, VertexStreamZeroStride, m_up_index_buffer);
    m_stream = nullptr;
    m_stream_offset = m_stream_stride = 0;
    m_indices = nullptr;
    return hr;
}
