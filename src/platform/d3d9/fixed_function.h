#pragma once
// GLSL generation for the fixed-function pipeline: transforms, Direct3D 9's lighting
// equation with the material-source states, texture stage 0 and the alpha test.

#include "d3d9_internal.h"

#include <string>

// What selects a generated program. Plain bytes so that it can key a hash map.
struct ixo_d3d9_ff_key
{
    std::uint8_t rhw = 0;     // pre-transformed positions
    std::uint8_t normal = 0;  // the vertex has a normal
    std::uint8_t diffuse = 0; // the vertex has a diffuse colour
    std::uint8_t texcoord = 0;
    std::uint8_t lighting = 0;
    std::uint8_t normalize = 0;
    std::uint8_t specular = 0;
    std::uint8_t local_viewer = 0;
    // Effective sources (after COLORVERTEX and the vertex format): 0 material, 1 vertex
    std::uint8_t diffuse_source = 0;
    std::uint8_t ambient_source = 0;
    std::uint8_t specular_source = 0;
    std::uint8_t emissive_source = 0;
    std::uint8_t light_count = 0;
    std::uint8_t light_types[8] = {};
    std::uint8_t texture = 0; // stage 0 has a texture and coordinates
    std::uint8_t color_op = 0, color_arg1 = 0, color_arg2 = 0;
    std::uint8_t alpha_op = 0, alpha_arg1 = 0, alpha_arg2 = 0;
    std::uint8_t alpha_func = 0; // 0: no alpha test, else D3DCMPFUNC

    std::string bytes() const
    {
        return std::string(reinterpret_cast<const char*>(this), sizeof(*this));
    }
};

// The uniform block shared by every generated program (std140, binding 0).
struct ixo_d3d9_ff_light
{
    float diffuse[4];
    float specular[4];
    float ambient[4];
    float position[4];    // view space
    float direction[4];   // view space, towards the light for directional lights
    float attenuation[4]; // a0, a1, a2, range
};

struct ixo_d3d9_ff_uniforms
{
    float world_view_proj[16];
    float world_view[16];
    float normal_matrix[16];
    float material_diffuse[4];
    float material_ambient[4];
    float material_specular[4];
    float material_emissive[4];
    float global_ambient[4];
    float params[4];   // power, alpha reference (0..255)
    float viewport[4]; // x, y, width, height
    float texture_factor[4];
    ixo_d3d9_ff_light lights[8];
};

std::string ixo_d3d9_ff_vertex_source(const ixo_d3d9_ff_key& key);
std::string ixo_d3d9_ff_fragment_source(const ixo_d3d9_ff_key& key);

// Compiles and links a vertex and fragment pair; 0 with the log in error on failure.
GLuint ixo_d3d9_link_program(const std::string& vertex, const std::string& fragment,
                             std::string* error);
