// Generated GLSL for the fixed-function pipeline.
//
// Lighting follows Direct3D 9 in view space:
//   colour = Ce + Ca * (Ga + sum(atten_i * La_i)) + Cd * sum(atten_i * max(N.L_i, 0) * Ld_i)
//   specular = Cs * sum(atten_i * (N.H_i)^P * Ls_i)            (only where N.L_i > 0)
//   atten = 1 / (a0 + a1 d + a2 d^2) within the range, 0 beyond; 1 for directional lights
// with the output alpha taken from the diffuse source.

#include "fixed_function.h"

#include <sstream>

namespace
{

const char* k_block = R"(layout(std140, binding = 0) uniform ixo_ff
{
    mat4 u_wvp;
    mat4 u_wv;
    mat4 u_normal;
    vec4 u_mat_diffuse;
    vec4 u_mat_ambient;
    vec4 u_mat_specular;
    vec4 u_mat_emissive;
    vec4 u_global_ambient;
    vec4 u_params;
    vec4 u_viewport;
    vec4 u_tfactor;
    vec4 u_lights[48];
};
)";

std::string stage_arg(std::uint8_t arg, bool alpha)
{
    std::string v;
    switch (arg & D3DTA_SELECTMASK)
    {
    case D3DTA_TEXTURE:
        v = "t";
        break;
    case D3DTA_TFACTOR:
        v = "u_tfactor";
        break;
    default: // diffuse and, on stage 0, current
        v = "v_diffuse";
        break;
    }
    if (arg & D3DTA_ALPHAREPLICATE)
        v = "vec4(" + v + ".a)";
    if (arg & D3DTA_COMPLEMENT)
        v = "(vec4(1.0) - " + v + ")";
    return v + (alpha ? ".a" : ".rgb");
}

std::string stage_op(std::uint8_t op, std::uint8_t a1, std::uint8_t a2, bool alpha)
{
    std::string x = stage_arg(a1, alpha);
    std::string y = stage_arg(a2, alpha);
    std::string current = alpha ? "v_diffuse.a" : "v_diffuse.rgb";
    switch (op)
    {
    case D3DTOP_SELECTARG1:
        return x;
    case D3DTOP_SELECTARG2:
        return y;
    case D3DTOP_MODULATE:
        return x + " * " + y;
    case D3DTOP_MODULATE2X:
        return "clamp(2.0 * " + x + " * " + y + ", 0.0, 1.0)";
    case D3DTOP_MODULATE4X:
        return "clamp(4.0 * " + x + " * " + y + ", 0.0, 1.0)";
    case D3DTOP_ADD:
        return "clamp(" + x + " + " + y + ", 0.0, 1.0)";
    default:
        return current;
    }
}

const char* compare(std::uint8_t func)
{
    switch (func)
    {
    case D3DCMP_NEVER:
        return "false";
    case D3DCMP_LESS:
        return "a < r";
    case D3DCMP_EQUAL:
        return "a == r";
    case D3DCMP_LESSEQUAL:
        return "a <= r";
    case D3DCMP_GREATER:
        return "a > r";
    case D3DCMP_NOTEQUAL:
        return "a != r";
    case D3DCMP_GREATEREQUAL:
        return "a >= r";
    default:
        return "true";
    }
}

GLuint compile(GLenum stage, const std::string& source, std::string* error)
{
    GLuint shader = glCreateShader(stage);
    const char* text = source.c_str();
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint ok = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    if (!ok)
    {
        if (error)
        {
            GLint length = 0;
            glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
            std::string log(static_cast<size_t>(length > 0 ? length : 1), '\0');
            glGetShaderInfoLog(shader, length, nullptr, log.data());
            *error += (stage == GL_VERTEX_SHADER ? "vertex: " : "fragment: ") + log;
        }
        glDeleteShader(shader);
        return 0;
    }
    return shader;
}

} // namespace

std::string ixo_d3d9_ff_vertex_source(const ixo_d3d9_ff_key& key)
{
    std::ostringstream s;
    s << "#version 450 core\n" << k_block;
    s << "layout(location = 0) in vec4 a_position;\n"
         "layout(location = 1) in vec3 a_normal;\n"
         "layout(location = 2) in vec4 a_diffuse;\n"
         "layout(location = 3) in vec2 a_texcoord;\n"
         "out vec4 v_diffuse;\nout vec4 v_specular;\nout vec2 v_texcoord;\n"
         "void main()\n{\n";
    if (key.rhw)
    {
        // Screen positions of the render target; pixel centres on integers.
        s << "    float w = a_position.w != 0.0 ? 1.0 / a_position.w : 1.0;\n"
             "    vec2 ndc = vec2((a_position.x + 0.5 - u_viewport.x) / u_viewport.z * 2.0 - "
             "1.0,\n"
             "                    1.0 - (a_position.y + 0.5 - u_viewport.y) / u_viewport.w * "
             "2.0);\n"
             "    gl_Position = vec4(ndc * w, a_position.z * w, w);\n";
    }
    else
    {
        s << "    vec4 p = vec4(a_position.xyz, 1.0);\n"
             "    gl_Position = u_wvp * p;\n";
    }
    s << "    v_texcoord = a_texcoord;\n";
    const char* vertex_diffuse = key.diffuse ? "a_diffuse" : "vec4(1.0)";
    if (!key.lighting || key.rhw)
    {
        s << "    v_diffuse = " << vertex_diffuse << ";\n"
          << "    v_specular = vec4(0.0);\n}\n";
        return s.str();
    }
    s << "    vec4 cd = " << (key.diffuse_source ? "a_diffuse" : "u_mat_diffuse") << ";\n"
      << "    vec4 ca = " << (key.ambient_source ? "a_diffuse" : "u_mat_ambient") << ";\n"
      << "    vec4 cs = " << (key.specular_source ? "a_diffuse" : "u_mat_specular") << ";\n"
      << "    vec4 ce = " << (key.emissive_source ? "a_diffuse" : "u_mat_emissive") << ";\n"
      << "    vec3 P = (u_wv * p).xyz;\n"
      << "    vec3 N = (u_normal * vec4(" << (key.normal ? "a_normal" : "vec3(0.0)")
      << ", 0.0)).xyz;\n";
    if (key.normalize)
        s << "    if (dot(N, N) > 0.0) N = normalize(N);\n";
    s << "    vec3 amb = vec3(0.0);\n    vec3 dif = vec3(0.0);\n    vec3 spe = vec3(0.0);\n"
      << "    vec3 V = " << (key.local_viewer ? "-normalize(P)" : "vec3(0.0, 0.0, -1.0)") << ";\n";
    for (int i = 0; i < key.light_count; ++i)
    {
        int b = i * 6;
        s << "    {\n";
        if (key.light_types[i] == D3DLIGHT_DIRECTIONAL)
        {
            s << "        vec3 L = u_lights[" << b + 4 << "].xyz;\n"
              << "        float att = 1.0;\n";
        }
        else
        {
            s << "        vec3 L = u_lights[" << b + 3 << "].xyz - P;\n"
              << "        float d = length(L);\n"
              << "        L = d > 0.0 ? L / d : vec3(0.0);\n"
              << "        vec4 k = u_lights[" << b + 5 << "];\n"
              << "        float att = d <= k.w ? 1.0 / max(k.x + k.y * d + k.z * d * d, 1e-30) "
                 ": 0.0;\n";
        }
        s << "        amb += att * u_lights[" << b + 2 << "].rgb;\n"
          << "        float ndl = dot(N, L);\n"
          << "        if (ndl > 0.0)\n        {\n"
          << "            dif += att * ndl * u_lights[" << b << "].rgb;\n";
        if (key.specular)
            s << "            float ndh = dot(N, normalize(V + L));\n"
              << "            if (ndh > 0.0)\n"
              << "                spe += att * pow(ndh, u_params.x) * u_lights[" << b + 1
              << "].rgb;\n";
        s << "        }\n    }\n";
    }
    s << "    v_diffuse = vec4(clamp(ce.rgb + ca.rgb * (u_global_ambient.rgb + amb) + cd.rgb * "
         "dif, 0.0, 1.0), cd.a);\n"
      << "    v_specular = vec4(clamp(cs.rgb * spe, 0.0, 1.0), 0.0);\n}\n";
    return s.str();
}

std::string ixo_d3d9_ff_fragment_source(const ixo_d3d9_ff_key& key)
{
    std::ostringstream s;
    s << "#version 450 core\n" << k_block;
    s << "layout(binding = 0) uniform sampler2D s_texture0;\n"
         "in vec4 v_diffuse;\nin vec4 v_specular;\nin vec2 v_texcoord;\n"
         "layout(location = 0) out vec4 o_color;\n"
         "void main()\n{\n";
    if (key.texture && key.color_op != D3DTOP_DISABLE)
    {
        s << "    vec4 t = texture(s_texture0, v_texcoord);\n"
          << "    vec4 c;\n"
          << "    c.rgb = " << stage_op(key.color_op, key.color_arg1, key.color_arg2, false)
          << ";\n"
          << "    c.a = " << stage_op(key.alpha_op, key.alpha_arg1, key.alpha_arg2, true) << ";\n";
    }
    else
        s << "    vec4 c = v_diffuse;\n";
    if (key.specular && key.lighting && !key.rhw)
        s << "    c.rgb = min(c.rgb + v_specular.rgb, vec3(1.0));\n";
    if (key.alpha_func)
        s << "    {\n        float a = floor(c.a * 255.0 + 0.5);\n"
          << "        float r = u_params.y;\n"
          << "        if (!(" << compare(key.alpha_func) << ")) discard;\n    }\n";
    s << "    o_color = c;\n}\n";
    return s.str();
}

GLuint ixo_d3d9_link_program(const std::string& vertex, const std::string& fragment,
                             std::string* error)
{
    GLuint vs = compile(GL_VERTEX_SHADER, vertex, error);
    GLuint fs = compile(GL_FRAGMENT_SHADER, fragment, error);
    if (!vs || !fs)
    {
        if (vs)
            glDeleteShader(vs);
        if (fs)
            glDeleteShader(fs);
        return 0;
    }
    GLuint program = glCreateProgram();
    glAttachShader(program, vs);
    glAttachShader(program, fs);
    glLinkProgram(program);
    glDetachShader(program, vs);
    glDetachShader(program, fs);
    glDeleteShader(vs);
    glDeleteShader(fs);
    GLint ok = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &ok);
    if (!ok)
    {
        if (error)
        {
            GLint length = 0;
            glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
            std::string log(static_cast<size_t>(length > 0 ? length : 1), '\0');
            glGetProgramInfoLog(program, length, nullptr, log.data());
            *error += "link: " + log;
        }
        glDeleteProgram(program);
        return 0;
    }
    return program;
}
