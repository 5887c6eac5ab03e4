// ixocore's shared effect: GLSL 4.50 stages in ixocore's effect-file format.
//
// Matrices arrive as the library sets them (row-vector form), so M * v in GLSL applies them
// as v * M: clip = g_mProj * g_mView * g_mWorld * p. Vertex inputs: location 0 position,
// 1 normal, 2 diffuse colour (white when the vertex has none).

common
uniform mat4 g_mWorld;
uniform mat4 g_mView;
uniform mat4 g_mProj;
uniform mat4 g_mWorldNoScale;
uniform mat4 g_mShadow;
uniform vec4 g_ObjectColor;
uniform bool g_bEnableLighting;
uniform vec4 g_headlightDiffuse;
uniform vec4 g_lightPos;
uniform vec4 g_lightDiffuse;
uniform vec4 g_lightAmbient;
uniform sampler2D g_shadowTexture;
uniform int g_shadowWidth;
uniform int g_shadowHeight;

technique MainTechnique
vertex
layout(location = 0) in vec3 a_position;
layout(location = 1) in vec3 a_normal;
layout(location = 2) in vec4 a_diffuse;
out vec3 v_view_position;
out vec3 v_view_normal;
out vec3 v_view_light;
out vec4 v_color;
out vec4 v_shadow;
void main()
{
    vec4 world = g_mWorld * vec4(a_position, 1.0);
    vec4 view = g_mView * world;
    v_view_position = view.xyz;
    v_view_normal = (g_mView * (g_mWorldNoScale * vec4(a_normal, 0.0))).xyz;
    v_view_light = (g_mView * vec4(g_lightPos.xyz, 1.0)).xyz;
    v_color = a_diffuse;
    v_shadow = g_mShadow * world;
    gl_Position = g_mProj * view;
}
fragment
in vec3 v_view_position;
in vec3 v_view_normal;
in vec3 v_view_light;
in vec4 v_color;
in vec4 v_shadow;
layout(location = 0) out vec4 o_color;

// 1 where the scene light reaches the point, 0 in its shadow: the 2 x 2 texels around the
// point, fetched in one gather rather than four reads.
float lit_by_scene_light()
{
    if (g_shadowWidth <= 0 || g_shadowHeight <= 0 || v_shadow.w <= 0.0)
        return 1.0;
    vec3 ndc = v_shadow.xyz / v_shadow.w;
    if (any(greaterThan(abs(ndc.xy), vec2(1.0))) || ndc.z < 0.0 || ndc.z > 1.0)
        return 1.0;
    // Row 0 of the map is its top (clip y = +1).
    vec2 uv = vec2(0.5 + 0.5 * ndc.x, 0.5 - 0.5 * ndc.y);
    float bias = 0.002;
    vec4 depths = textureGather(g_shadowTexture, uv, 0);
    return dot(step(vec4(ndc.z - bias), depths), vec4(0.25));
}

void main()
{
    if (!g_bEnableLighting)
    {
        // Picking: the identifier colour, untouched.
        o_color = g_ObjectColor;
        return;
    }
    vec4 base = g_ObjectColor * v_color;
    vec3 n = normalize(v_view_normal);
    vec3 to_eye = normalize(-v_view_position);
    // Two-sided: faces seen from behind are lit as if turned to the eye.
    if (dot(n, to_eye) < 0.0)
        n = -n;
    float head = max(dot(n, to_eye), 0.0);
    vec3 to_light = normalize(v_view_light - v_view_position);
    // The map is read only where the scene light can reach the point at all.
    float direct = max(dot(n, to_light), 0.0);
    if (direct > 0.0 && any(notEqual(g_lightDiffuse.rgb, vec3(0.0))))
        direct *= lit_by_scene_light();
    vec3 light = g_lightAmbient.rgb + head * g_headlightDiffuse.rgb + direct * g_lightDiffuse.rgb;
    o_color = vec4(clamp(base.rgb * light, 0.0, 1.0), base.a);
}
end

technique ShadowTechnique
vertex
layout(location = 0) in vec3 a_position;
out float v_depth;
void main()
{
    gl_Position = g_mProj * (g_mView * (g_mWorld * vec4(a_position, 1.0)));
    v_depth = gl_Position.z / gl_Position.w;
}
fragment
in float v_depth;
layout(location = 0) out vec4 o_depth;
void main()
{
    // Light-space depth into the red channel of the R32F map.
    o_depth = vec4(v_depth, 0.0, 0.0, 1.0);
}
end
