// Scenes drawn headless with identity view and projection (world = clip space), read back.

#include "render/scene_render.h"

#include <cmath>

namespace
{
using ixo_test::pixel;

// What the device held when an object's draw_object ran.
struct draw_state
{
    D3DMATERIAL9 material{};
    D3DMATRIX world{};
    DWORD z_enable = 99;
    DWORD z_write = 99;
    bool drawn = false;
};

// A rectangle facing the viewer at depth z: unlit in its actual colour, lit when picking.
class quad : public ixo_scene_object
{
public:
    static ixo_object_ptr<quad> create(float x0, float y0, float x1, float y1, float z)
    {
        return new quad(x0, y0, x1, y1, z);
    }

    bool draw_object(const ixo_scene_draw_data& d) override
    {
        IDirect3DDevice9* device = ixo_direct3d::get_device();
        if (!device)
            return false;
        state.drawn = true;
        device->GetMaterial(&state.material);
        device->GetTransform(D3DTS_WORLD, &state.world);
        device->GetRenderState(D3DRS_ZENABLE, &state.z_enable);
        device->GetRenderState(D3DRS_ZWRITEENABLE, &state.z_write);

        // Counter-clockwise on the screen: survives the scene's clockwise culling.
        float const p[6][2] = {{x0_, y0_}, {x1_, y0_}, {x1_, y1_},
                               {x0_, y0_}, {x1_, y1_}, {x0_, y1_}};
        if (d.do_mapping())
        {
            struct vertex
            {
                float x, y, z, nx, ny, nz;
            } v[6];
            for (int i = 0; i < 6; ++i)
                v[i] = {p[i][0], p[i][1], z_, 0.0f, 0.0f, -1.0f};
            device->SetFVF(D3DFVF_XYZ | D3DFVF_NORMAL);
            return SUCCEEDED(device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 2, v, sizeof(vertex)));
        }
        ixo_vector3<float> const c = get_actual_color();
        auto const byte = [](float f) { return static_cast<int>(std::lround(f * 255.0f)); };
        D3DCOLOR const color =
            D3DCOLOR_ARGB(byte(get_actual_alpha()), byte(c[0]), byte(c[1]), byte(c[2]));
        struct vertex
        {
            float x, y, z;
            D3DCOLOR c;
        } v[6];
        for (int i = 0; i < 6; ++i)
            v[i] = {p[i][0], p[i][1], z_, color};
        device->SetRenderState(D3DRS_LIGHTING, FALSE);
        device->SetFVF(D3DFVF_XYZ | D3DFVF_DIFFUSE);
        HRESULT const hr = device->DrawPrimitiveUP(D3DPT_TRIANGLELIST, 2, v, sizeof(vertex));
        device->SetRenderState(D3DRS_LIGHTING, TRUE);
        return SUCCEEDED(hr);
    }

    draw_state state;

private:
    quad(float x0, float y0, float x1, float y1, float z)
        : x0_(x0), y0_(y0), x1_(x1), y1_(y1), z_(z)
    {
    }
    float x0_, y0_, x1_, y1_, z_;
};

using color = ixo_vector4<unsigned char>;

class scene_draw : public ixo_test::scene_render<64, 48>
{
protected:
    void SetUp() override
    {
        ixo_test::scene_render<64, 48>::SetUp();
        ASSERT_TRUE(target->bind(0xFFFFFFFF));
        D3DXMATRIX identity;
        D3DXMatrixIdentity(&identity);
        device->SetTransform(D3DTS_VIEW, &identity);
        device->SetTransform(D3DTS_PROJECTION, &identity);
        if (ID3DXEffect* effect = ixo_direct3d::get_effect())
        {
            effect->SetMatrix("g_mView", &identity);
            effect->SetMatrix("g_mProj", &identity);
        }
    }

    // The pixel at column x, row y counted from the top.
    pixel at(UINT x, UINT y) { return scene_render::at(target->read(), x, y); }

    unsigned long picked(UINT x, UINT y) { return ixo_test::id_of(at(x, y)); }

    // A normal frame as a render view draws it, after clearing to white.
    bool draw_frame()
    {
        device->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER, 0xFFFFFFFF, 1.0f, 0);
        ixo_scene_draw_data d;
        return scene->draw(d);
    }

    ixo_object_ptr<quad> add(float x0, float y0, float x1, float y1, float z, color c,
                             ixo_object_ptr<ixo_scene_object> parent = nullptr)
    {
        auto q = quad::create(x0, y0, x1, y1, z);
        q->set_color(c);
        (parent ? parent : scene->get_root())->add_child(q);
        return q;
    }
};

::testing::AssertionResult is(const pixel& p, int r, int g, int b, int tolerance = 2)
{
    auto close = [&](int x, int y) { return std::abs(x - y) <= tolerance; };
    if (close(p.r, r) && close(p.g, g) && close(p.b, b))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "pixel (" << int(p.r) << ", " << int(p.g) << ", " << int(p.b) << "), expected (" << r
           << ", " << g << ", " << b << ")";
}

// Left and right halves, and the middle rows.
constexpr UINT W = 64, H = 48, left_x = W / 4, right_x = 3 * W / 4, mid_y = H / 2;
} // namespace

TEST_F(scene_draw, background_pass_lies_under_the_foreground)
{
    // Red, near, everywhere, background only; green, far, left half, foreground.
    auto back = add(-1, -1, 1, 1, 0.1f, color(255, 0, 0, 255));
    back->set_property(ixo_scene_object::in_background, true);
    back->set_property(ixo_scene_object::in_foreground, false);
    add(-1, -1, 0, 1, 0.9f, color(0, 255, 0, 255));

    ASSERT_TRUE(draw_frame());
    // Depth is cleared between the passes: the far foreground covers the near background.
    EXPECT_TRUE(is(at(left_x, mid_y), 0, 255, 0));
    EXPECT_TRUE(is(at(right_x, mid_y), 255, 0, 0));

    // A record that starts in the background pass clears to white first.
    back->set_property(ixo_scene_object::visible, false);
    ixo_scene_draw_data d;
    d.set_background(true);
    device->Clear(0, nullptr, D3DCLEAR_TARGET, 0xFF000000, 1.0f, 0);
    ASSERT_TRUE(scene->draw(d));
    EXPECT_TRUE(is(at(right_x, mid_y), 255, 255, 255));
    EXPECT_FALSE(d.do_foreground());
}

TEST_F(scene_draw, opaque_objects_come_before_transparent_ones)
{
    // Tree order puts the near glass first; the opaque green is drawn first all the same.
    auto glass = add(-1, -1, 1, 1, 0.2f, color(0, 0, 255, 128));
    glass->set_property(ixo_scene_object::transparent, true);
    add(-1, -1, 0, 1, 0.8f, color(0, 255, 0, 255));

    ASSERT_TRUE(draw_frame());
    float const a = 128 / 255.0f;
    EXPECT_TRUE(
        is(at(left_x, mid_y), 0, int(std::lround(255 * (1 - a))), int(std::lround(255 * a))));
    EXPECT_TRUE(is(at(right_x, mid_y), int(std::lround(255 * (1 - a))),
                   int(std::lround(255 * (1 - a))), 255));
}

TEST_F(scene_draw, hidden_parent_draws_its_visible_children_in_its_frame)
{
    auto parent = add(-1, -1, 0, 1, 0.5f, color(255, 0, 0, 255));
    parent->set_property(ixo_scene_object::visible, false);
    // The child's own rectangle is the left half; the parent moves it to the right half.
    parent->set_transform(ixo_translation_transform(ixo_vector3<float>(1.0f, 0.0f, 0.0f)));
    auto child = add(-1, -1, 0, 1, 0.5f, color(0, 255, 0, 255), parent);
    // A child that takes its visibility from the parent stays hidden.
    auto hidden_child = add(-1, 0, 0, 1, 0.4f, color(0, 0, 255, 255), parent);
    hidden_child->set_property(ixo_scene_object::inherit_visible, true);

    ASSERT_TRUE(draw_frame());
    EXPECT_TRUE(is(at(left_x, mid_y), 255, 255, 255));
    EXPECT_TRUE(is(at(right_x, mid_y), 0, 255, 0));
    EXPECT_TRUE(is(at(right_x, 4), 0, 255, 0));
    EXPECT_FALSE(parent->state.drawn);
    EXPECT_FALSE(hidden_child->state.drawn);

    // The child saw the parent's translation (row vectors); the device is back to identity.
    EXPECT_FLOAT_EQ(child->state.world._41, 1.0f);
    EXPECT_FLOAT_EQ(child->state.world._14, 0.0f);
    D3DMATRIX world{};
    device->GetTransform(D3DTS_WORLD, &world);
    EXPECT_FLOAT_EQ(world._41, 0.0f);
    EXPECT_FLOAT_EQ(world._11, 1.0f);
}

TEST_F(scene_draw, material_and_depth_states_per_object)
{
    auto q = add(-1, -1, 1, 1, 0.5f, color(255, 51, 0, 102));
    q->set_property(ixo_scene_object::depth_write, false);
    q->set_transform(ixo_translation_transform(ixo_vector3<float>(0.0f, 0.0f, 0.1f)) *
                     ixo_scale_transform(2.0f));
    ASSERT_TRUE(draw_frame());
    ASSERT_TRUE(q->state.drawn);
    D3DMATERIAL9 const& m = q->state.material;
    EXPECT_FLOAT_EQ(m.Diffuse.r, 1.0f);
    EXPECT_FLOAT_EQ(m.Diffuse.g, 0.2f);
    EXPECT_FLOAT_EQ(m.Diffuse.a, 0.4f);
    EXPECT_FLOAT_EQ(m.Ambient.r, 0.3f);
    EXPECT_FLOAT_EQ(m.Ambient.g, 0.06f);
    EXPECT_FLOAT_EQ(m.Ambient.a, 0.4f);
    EXPECT_FLOAT_EQ(m.Specular.g, 1.0f);
    EXPECT_FLOAT_EQ(m.Specular.a, 0.4f);
    EXPECT_FLOAT_EQ(m.Emissive.r, 0.0f);
    EXPECT_FLOAT_EQ(m.Power, 100.0f);
    EXPECT_EQ(q->state.z_enable, 1u);
    EXPECT_EQ(q->state.z_write, 0u);
    EXPECT_FLOAT_EQ(q->state.world._11, 2.0f);
    EXPECT_FLOAT_EQ(q->state.world._43, 0.1f);

    if (ID3DXEffect* effect = ixo_direct3d::get_effect())
    {
        D3DXMATRIX world, no_scale;
        effect->GetMatrix("g_mWorld", &world);
        effect->GetMatrix("g_mWorldNoScale", &no_scale);
        EXPECT_FLOAT_EQ(world._11, 2.0f);
        EXPECT_FLOAT_EQ(world._43, 0.1f);
        // Scale and translation dropped.
        EXPECT_FLOAT_EQ(no_scale._11, 1.0f);
        EXPECT_FLOAT_EQ(no_scale._43, 0.0f);
        D3DXVECTOR4 c;
        effect->GetVector("g_ObjectColor", &c);
        EXPECT_FLOAT_EQ(c.y, 0.2f);
        EXPECT_FLOAT_EQ(c.w, 0.4f);
        BOOL lighting = FALSE;
        effect->GetBool("g_bEnableLighting", &lighting);
        EXPECT_TRUE(lighting);
    }

    // Depth test taken from the parent through the inherit property.
    scene->get_root()->set_property(ixo_scene_object::depth_test, false);
    q->set_property(ixo_scene_object::inherit_depth_test, true);
    ASSERT_TRUE(draw_frame());
    EXPECT_EQ(q->state.z_enable, 0u);

    // The picking pass puts the identifier's colour into the emissive term only.
    ixo_scene_draw_data pick;
    pick.set_mapping(true);
    ASSERT_TRUE(scene->draw(pick));
    ixo_vector4<float> const id = ixo_id_to_color(q->id());
    EXPECT_FLOAT_EQ(q->state.material.Emissive.r, id[0]);
    EXPECT_FLOAT_EQ(q->state.material.Emissive.g, id[1]);
    EXPECT_FLOAT_EQ(q->state.material.Diffuse.r, 0.0f);
    EXPECT_FLOAT_EQ(q->state.material.Ambient.a, 0.0f);
    EXPECT_FLOAT_EQ(q->state.material.Power, 0.0f);
    if (ID3DXEffect* effect = ixo_direct3d::get_effect())
    {
        BOOL lighting = TRUE;
        effect->GetBool("g_bEnableLighting", &lighting);
        EXPECT_FALSE(lighting);
    }
}

TEST_F(scene_draw, picking_pass_gives_exact_identifiers_and_skips_transparent_objects)
{
    // Enough identifiers that the second byte is in use too.
    std::vector<ixo_object_ptr<ixo_scene_object>> spare;
    for (int i = 0; i < 300; ++i)
        spare.push_back(ixo_scene_object::create());

    auto left = add(-1, -1, 0, 0, 0.5f, color(10, 20, 30, 255));
    auto parent = add(0, -1, 1, 0, 0.5f, color(200, 0, 0, 255));
    parent->set_property(ixo_scene_object::visible, false);
    auto child = add(0, 0, 1, 1, 0.5f, color(0, 0, 0, 255), parent);
    auto glass = add(-1, 0, 0, 1, 0.5f, color(0, 0, 200, 100));
    glass->set_property(ixo_scene_object::transparent, true);
    auto back = add(-1, -1, 1, 1, 0.1f, color(5, 5, 5, 255));
    back->set_property(ixo_scene_object::in_background, true);
    back->set_property(ixo_scene_object::in_foreground, false);
    back->set_property(ixo_scene_object::visible, false);
    scene->add_light(ixo_light::create(0));

    device->Clear(0, nullptr, D3DCLEAR_TARGET, 0xFF808080, 1.0f, 0);
    ixo_scene_draw_data d;
    d.set_mapping(true);
    ASSERT_TRUE(scene->draw(d));
    EXPECT_FALSE(d.do_foreground());

    // Rows from the top: y = 0 in world is the middle row.
    EXPECT_EQ(picked(left_x, 3 * H / 4), left->id());
    EXPECT_EQ(picked(right_x, H / 4), child->id());
    EXPECT_EQ(picked(right_x, 3 * H / 4), ixo_invalid_object_id); // hidden parent
    EXPECT_EQ(picked(left_x, H / 4), ixo_invalid_object_id);      // transparent
    EXPECT_FALSE(glass->state.drawn);
    EXPECT_GT(left->id(), 255u);
}

TEST_F(scene_draw, shadow_pass_draws_only_casters_of_the_first_light)
{
    auto caster = add(-1, -1, 0, 1, 0.5f, color(255, 0, 0, 255));
    caster->set_property(ixo_scene_object::cast_shadow, true);
    auto other = add(0, -1, 1, 1, 0.5f, color(0, 255, 0, 255));

    ixo_scene_draw_data d;
    d.set_mapping_shadows(true);
    device->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER, 0xFFFFFFFF, 1.0f, 0);
    // Without lights nothing is drawn.
    ASSERT_TRUE(scene->draw(d));
    EXPECT_FALSE(caster->state.drawn);

    // A first light without its direct term casts no shadow, whatever the lights after it.
    auto first = ixo_light::create(0);
    first->set_direct_light_enabled(false);
    scene->add_light(first);
    scene->add_light(ixo_light::create(1));
    ASSERT_TRUE(scene->draw(d));
    EXPECT_FALSE(caster->state.drawn);

    // Nor does one whose shadow matrices were never fitted to anything.
    first->set_direct_light_enabled(true);
    ASSERT_TRUE(scene->draw(d));
    EXPECT_FALSE(caster->state.drawn);

    // Fitted, its shadow matrices become view and projection, and only the caster is drawn.
    first->set_position(0, 0, 5);
    ASSERT_TRUE(first->compute_shadow_matrices(
        ixo_box3<float>(ixo_vector3<float>(-1, -1, 0.5f), ixo_vector3<float>(1, 1, 0.5f))));
    device->Clear(0, nullptr, D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER, 0xFFFFFFFF, 1.0f, 0);
    ASSERT_TRUE(scene->draw(d));
    EXPECT_TRUE(caster->state.drawn);
    EXPECT_FALSE(other->state.drawn);
    D3DMATRIX view{};
    device->GetTransform(D3DTS_VIEW, &view);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_FLOAT_EQ(view.m[r][c], first->get_shadow_view()[c][r]);
    // Something landed in the target, but not over all of it: only the caster drew.
    int touched = 0;
    for (pixel const& p : target->read())
        touched += p.r == 255 && p.g == 255 && p.b == 255 ? 0 : 1;
    EXPECT_GT(touched, 0);
    EXPECT_LT(touched, int(W * H));
}

// The shadow map is drawn from the first light, so objects look it up with its matrix.
TEST_F(scene_draw, shadow_lookup_matrix_is_the_first_lights)
{
    ID3DXEffect* effect = ixo_direct3d::get_effect();
    ASSERT_NE(effect, nullptr);
    ixo_box3<float> const box(ixo_vector3<float>(-1, -1, -1), ixo_vector3<float>(1, 1, 1));
    auto first = ixo_light::create(0);
    first->set_position(0, 10, 0);
    ASSERT_TRUE(first->compute_shadow_matrices(box));
    auto second = ixo_light::create(1);
    second->set_position(10, 0, 0);
    ASSERT_TRUE(second->compute_shadow_matrices(box));
    scene->add_light(first);
    scene->add_light(second);

    ASSERT_TRUE(draw_frame());
    D3DXMATRIX used;
    ASSERT_EQ(effect->GetMatrix("g_mShadow", &used), D3D_OK);
    ixo_matrix44<float> const m = first->get_shadow_projection() * first->get_shadow_view();
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(used.m[r][c], m[c][r], 1e-5f) << r << ", " << c;
}
