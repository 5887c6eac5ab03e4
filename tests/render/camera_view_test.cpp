#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <tuple>

namespace
{
using v3 = ixo_vector3<float>;
using v2 = ixo_vector2<float>;
using camera_ptr = ixo_object_ptr<ixo_camera_view>;

constexpr float pi = std::numbers::pi_v<float>;
// tan(15°) and its reciprocal: half the default field of view.
const float tan15 = std::tan(pi / 12.0f);
const float cot15 = 1.0f / tan15;

void expect_near(const v3& actual, const v3& expected, float tolerance = 1e-4f)
{
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "element " << i;
}

void expect_near(const v2& actual, const v2& expected, float tolerance = 1e-3f)
{
    EXPECT_NEAR(actual[0], expected[0], tolerance);
    EXPECT_NEAR(actual[1], expected[1], tolerance);
}

// The camera's eye, focus and up, each element within `tolerance`.
void expect_frame(const ixo_camera_view& camera, const v3& eye, const v3& focus, const v3& up,
                  float tolerance = 1e-4f)
{
    expect_near(camera.get_eye(), eye, tolerance);
    expect_near(camera.get_focus(), focus, tolerance);
    expect_near(camera.get_up(), up, tolerance);
}

// Field of view, near, far, width, height, perspective, head light on, dynamic.
auto settings(const ixo_camera_view& c)
{
    return std::tuple(c.get_fov(), c.get_near(), c.get_far(), c.get_width(), c.get_height(),
                      c.using_perspective(), c.using_light(), c.is_dynamic());
}

camera_ptr camera_sized(int width = 800, int height = 600)
{
    camera_ptr camera = ixo_camera_view::create();
    camera->resize(width, height);
    return camera;
}

// up is a unit vector perpendicular to the view direction.
void expect_orthonormal_up(const ixo_camera_view& camera)
{
    const v3 back = (camera.get_eye() - camera.get_focus()).normalized();
    EXPECT_NEAR(camera.get_up().length(), 1.0f, 1e-5f);
    EXPECT_NEAR(camera.get_up() * back, 0.0f, 1e-5f);
}
} // namespace

TEST(camera_view, defaults_copy_and_frustum)
{
    camera_ptr camera = ixo_camera_view::create();
    EXPECT_EQ(settings(*camera), std::tuple(30.0f, 0.5f, 200.0f, 0, 0, false, true, false));
    expect_frame(*camera, v3(0, 0, 10), v3(0, 0, 0), v3(0, 1, 0), 0.0f);
    ASSERT_NE(camera->get_light(), nullptr);
    EXPECT_EQ(camera->get_light()->get_index(), 0);

    // Height 0: the width uses aspect 1.
    EXPECT_NEAR(camera->frustum_height(), 10.0f * tan15, 1e-5f);
    EXPECT_EQ(camera->frustum_width(), camera->frustum_height());

    camera->resize(800, 600);
    EXPECT_NEAR(camera->frustum_height(), 2.679492f, 1e-5f);
    EXPECT_NEAR(camera->frustum_width(), 3.572656f, 1e-5f);

    // Assignment copies every field and shares the head light.
    camera_ptr other = ixo_camera_view::create();
    EXPECT_NE(other->get_light(), camera->get_light());
    camera->use_perspective(true);
    camera->use_light(false);
    camera->set_dynamic(true);
    camera->set_fov(45.0f);
    *other = *camera;
    EXPECT_EQ(settings(*other), std::tuple(45.0f, 0.5f, 200.0f, 800, 600, true, false, true));
    EXPECT_EQ(other->get_eye(), v3(0, 0, 10));
    EXPECT_EQ(other->get_light(), camera->get_light());
    // The shared light outlives the camera it came from.
    camera.reset();
    other->get_light()->set_position(1, 2, 3);
    EXPECT_EQ(other->get_light()->get_position(), v3(1, 2, 3));
}

TEST(camera_view, pixels_and_points)
{
    camera_ptr camera = camera_sized();
    const float hw = 3.572656f;
    const float hh = 2.679492f;
    expect_near(camera->point_from_pixel(400, 300), v3(0, 0, 0));
    expect_near(camera->point_from_pixel(0, 0), v3(-hw, hh, 0));
    expect_near(camera->point_from_pixel(800, 600), v3(hw, -hh, 0));
    expect_near(camera->pixel_from_point(v3(0, 0, 0)), v2(400, 300));
    expect_near(camera->pixel_from_point(v3(-hw, -hh, 0)), v2(0, 600));

    // Off the focus plane the two projections differ: orthographic ignores the depth,
    // perspective shrinks with it. (1, 0, -10) lies 20 in front of the eye.
    expect_near(camera->pixel_from_point(v3(1, 0, -10)), v2(400.0f + 400.0f / hw, 300));
    camera->use_perspective(true);
    expect_near(camera->pixel_from_point(v3(1, 0, -10)), v2(400.0f + 200.0f / hw, 300));
    expect_near(camera->pixel_from_point(v3(0, 0, 0)), v2(400, 300));

    // Round trips on a slanted camera with a tilted up vector, in both projections.
    camera->set_eye(v3(3, -4, 7));
    camera->set_focus(v3(1, 1, 0));
    camera->set_up(v3(0, 0.2f, 3));
    camera->resize(640, 480);
    const v3 back = (camera->get_eye() - camera->get_focus()).normalized();
    for (bool perspective : {false, true})
    {
        camera->use_perspective(perspective);
        for (const auto& [x, y] : {std::pair{0, 0}, {639, 479}, {100, 400}, {320, 240}, {17, 3}})
        {
            SCOPED_TRACE(testing::Message()
                         << "perspective " << perspective << " pixel " << x << ", " << y);
            const v3 p = camera->point_from_pixel(x, y);
            EXPECT_NEAR((p - camera->get_focus()) * back, 0.0f, 1e-4f);
            expect_near(camera->pixel_from_point(p), v2(float(x), float(y)));
            // Points that share the pixel: along the eye ray in perspective, along the view
            // direction in orthographic.
            const v3 behind =
                perspective ? camera->get_eye() + (p - camera->get_eye()) * 2.5f : p - back * 4.0f;
            expect_near(camera->pixel_from_point(behind), v2(float(x), float(y)));
        }
    }
    // The top of the picture is where up points.
    EXPECT_LT(camera->pixel_from_point(camera->get_focus() + v3(0, 0, 1))[1], 240.0f);

    // Without a viewport size there is nothing to convert.
    camera_ptr empty = ixo_camera_view::create();
    EXPECT_EQ(empty->point_from_pixel(5, 5), empty->get_focus());
    EXPECT_GE(empty->pixel_from_point(v3(0, 0, 0))[0], 1e29f);
    // A point in the eye's plane has no perspective pixel.
    camera->use_perspective(true);
    EXPECT_GE(camera->pixel_from_point(camera->get_eye())[0], 1e29f);
}

TEST(camera_view, rotations)
{
    camera_ptr camera = camera_sized();
    camera->rotate_horizontally(pi / 2);
    expect_frame(*camera, v3(10, 0, 0), v3(0, 0, 0), v3(0, 1, 0));

    camera = camera_sized();
    // About the right axis (1, 0, 0): the eye goes over the top and up turns to -z.
    camera->rotate_vertically(pi / 2);
    expect_frame(*camera, v3(0, 10, 0), v3(0, 0, 0), v3(0, 0, -1));

    camera = camera_sized();
    camera->rotate_around(pi / 2);
    expect_near(camera->get_up(), v3(-1, 0, 0));
    EXPECT_EQ(camera->get_eye(), v3(0, 0, 10));

    // The identity quaternion leaves the frame alone, except that up is made orthonormal.
    camera = camera_sized();
    camera->set_up(v3(0, 2, 2));
    camera->rotate_view(ixo_quaternion<float>());
    expect_frame(*camera, v3(0, 0, 10), v3(0, 0, 0), v3(0, 1, 0));

    // Any sequence keeps the focus distance, the focus, and up orthonormal to the view
    // direction, even from an up vector that was neither.
    camera->set_focus(v3(1, 2, 3));
    camera->set_eye(v3(4, -2, 8));
    camera->set_up(v3(0.3f, 2, 0.5f));
    const float distance = (camera->get_eye() - camera->get_focus()).length();
    camera->rotate_vertically(0.3f);
    expect_orthonormal_up(*camera);
    camera->rotate_horizontally(1.1f);
    expect_orthonormal_up(*camera);
    camera->rotate_around(-0.7f);
    expect_orthonormal_up(*camera);
    camera->rotate_view(ixo_quaternion<float>(2.0f, v3(1, -2, 2).normalized()));
    expect_orthonormal_up(*camera);
    for (int i = 0; i < 200; ++i)
    {
        camera->rotate_vertically(0.05f);
        camera->rotate_horizontally(-0.07f);
        camera->rotate_around(0.01f);
    }
    expect_orthonormal_up(*camera);
    EXPECT_NEAR((camera->get_eye() - camera->get_focus()).length(), distance, 1e-3f);
    EXPECT_EQ(camera->get_focus(), v3(1, 2, 3));
}

TEST(camera_view, matrices)
{
    camera_ptr camera = camera_sized();
    // Left-handed look-at: x = up x f = (-1, 0, 0), y = (0, 1, 0), f = (0, 0, -1).
    const ixo_matrix44<float> view = camera->get_view_matrix();
    const ixo_matrix44<float> expected_view(
        ixo_vector4<float>(-1, 0, 0, 0), ixo_vector4<float>(0, 1, 0, 0),
        ixo_vector4<float>(0, 0, -1, 0), ixo_vector4<float>(0, 0, 10, 1));
    EXPECT_EQ(view, expected_view);

    // Row vectors: p · view · projection. The focus lands in the middle; depth runs from
    // 0 at near to 1 at far in both projections.
    auto clip = [&](const v3& p)
    {
        const ixo_matrix44<float> m = camera->get_view_matrix() * camera->get_projection_matrix();
        const ixo_vector4<float> r = m.transpose() * ixo_vector4<float>(p[0], p[1], p[2], 1.0f);
        return v3(r[0] / r[3], r[1] / r[3], r[2] / r[3]);
    };
    for (bool perspective : {false, true})
    {
        SCOPED_TRACE(perspective ? "perspective" : "orthographic");
        camera->use_perspective(perspective);
        expect_near(clip(v3(0, 0, 0)), v3(0, 0, clip(v3(0, 0, 0))[2]));
        EXPECT_NEAR(clip(v3(0, 0, 10 - 0.5f))[2], 0.0f, 1e-5f);
        EXPECT_NEAR(clip(v3(0, 0, 10 - 200.0f))[2], 1.0f, 1e-5f);
        // The edges of the focus plane's visible area lie on the clip borders.
        EXPECT_NEAR(std::fabs(clip(v3(3.572656f, 0, 0))[0]), 1.0f, 1e-5f);
        EXPECT_NEAR(std::fabs(clip(v3(0, 2.679492f, 0))[1]), 1.0f, 1e-5f);
    }
    const ixo_matrix44<float> p = camera->get_projection_matrix();
    EXPECT_NEAR(p[0][0], cot15 * 0.75f, 1e-5f);
    EXPECT_NEAR(p[1][1], cot15, 1e-5f);
    EXPECT_EQ(p[2][3], 1.0f);
    EXPECT_EQ(p[3][3], 0.0f);
    camera->use_perspective(false);
    EXPECT_EQ(camera->get_projection_matrix()[3][3], 1.0f);
    EXPECT_NEAR(camera->get_projection_matrix()[0][0], 1.0f / 3.572656f, 1e-6f);
}

TEST(camera_view, near_far_to_box)
{
    camera_ptr camera = camera_sized();
    // In front of the eye: distances 9 and 11 along the view direction.
    EXPECT_TRUE(camera->near_far_to_box(ixo_box3<float>(v3(-1, -1, -1), v3(1, 1, 1))));
    EXPECT_NEAR(camera->get_near(), 8.1f, 1e-5f);
    EXPECT_NEAR(camera->get_far(), 12.1f, 1e-5f);
    // Wholly behind the eye: far falls back to 10, near to a tenth of it.
    EXPECT_TRUE(camera->near_far_to_box(ixo_box3<float>(v3(-1, -1, 20), v3(1, 1, 22))));
    EXPECT_NEAR(camera->get_near(), 0.9f, 1e-6f);
    EXPECT_NEAR(camera->get_far(), 11.0f, 1e-5f);
    // Around the eye: near falls back to a tenth of the far side.
    EXPECT_TRUE(camera->near_far_to_box(ixo_box3<float>(v3(-1, -1, 5), v3(1, 1, 15))));
    EXPECT_NEAR(camera->get_near(), 0.45f, 1e-6f);
    EXPECT_NEAR(camera->get_far(), 5.5f, 1e-5f);
    // An empty box changes nothing.
    EXPECT_FALSE(camera->near_far_to_box(ixo_box3<float>()));
    EXPECT_NEAR(camera->get_near(), 0.45f, 1e-6f);
    EXPECT_NEAR(camera->get_far(), 5.5f, 1e-5f);
}

TEST(camera_view, view_to_box)
{
    // View all on the unit cube from the default camera with a square viewport.
    camera_ptr camera = camera_sized(400, 400);
    camera->set_fov(50.0f);
    const ixo_box3<float> cube(v3(-1, -1, -1), v3(1, 1, 1));
    EXPECT_TRUE(camera->view_to_box(cube));
    EXPECT_EQ(camera->get_fov(), 30.0f);
    expect_frame(*camera, v3(0, 0, 1.05f * cot15), v3(0, 0, 0), v3(0, 1, 0), 0.0f);
    EXPECT_NEAR(camera->get_eye()[2], 3.9187f, 1e-4f);
    // Near and far stay until they are fitted separately.
    EXPECT_EQ(camera->get_near(), 0.5f);
    EXPECT_EQ(camera->get_far(), 200.0f);
    EXPECT_TRUE(camera->near_far_to_box(cube));
    EXPECT_NEAR(camera->get_near(), 0.9f * 2.9187f, 1e-4f);
    EXPECT_NEAR(camera->get_far(), 1.1f * 4.9187f, 1e-4f);

    // An empty box changes nothing.
    EXPECT_FALSE(camera->view_to_box(ixo_box3<float>()));
    EXPECT_NEAR(camera->get_eye()[2], 3.9187f, 1e-4f);

    // A wide box in a wide viewport: the horizontal extent decides, divided by the aspect.
    camera = camera_sized(800, 400);
    EXPECT_TRUE(camera->view_to_box(ixo_box3<float>(v3(-4, -1, -1), v3(4, 1, 1))));
    expect_near(camera->get_eye(), v3(0, 0, 1.05f * 4.0f * cot15 / 2.0f));
    // Every corner is then inside the picture.
    for (int i = 0; i < 8; ++i)
    {
        const v2 pixel = camera->pixel_from_point(v3(i & 1 ? 4 : -4, i & 2 ? 1 : -1, 0));
        EXPECT_GE(pixel[0], 0.0f);
        EXPECT_LE(pixel[0], 800.0f);
    }

    // The viewing direction is kept: a slanted camera backs off along its own axis.
    camera = camera_sized(300, 300);
    camera->set_eye(v3(10, 10, 10));
    camera->set_up(v3(0, 0, 1));
    EXPECT_TRUE(camera->view_to_box(ixo_box3<float>(v3(4, -1, -1), v3(6, 1, 1))));
    expect_near(camera->get_focus(), v3(5, 0, 0));
    const v3 direction = (camera->get_eye() - camera->get_focus()).normalized();
    expect_near(direction, v3(1, 1, 1).normalized());
    EXPECT_EQ(camera->get_up(), v3(0, 0, 1));

    // A box of no size is looked at from the minimum distance, leaving a usable frame.
    camera = camera_sized(300, 300);
    EXPECT_TRUE(camera->view_to_box(ixo_box3<float>(v3(1, 2, 3), v3(1, 2, 3))));
    expect_near(camera->get_focus(), v3(1, 2, 3));
    expect_near(camera->get_eye(), v3(1, 2, 3 + ixo_camera_view::m_distance));
    EXPECT_GT(ixo_camera_view::m_distance, 0.0f);
    EXPECT_TRUE(camera->near_far_to_box(ixo_box3<float>(v3(1, 2, 3), v3(1, 2, 3))));
    EXPECT_NEAR(camera->get_near(), 0.9f * ixo_camera_view::m_distance, 1e-5f);
    EXPECT_NEAR(camera->get_far(), 1.1f * ixo_camera_view::m_distance, 1e-5f);
    expect_near(camera->pixel_from_point(v3(1, 2, 3)), v2(150, 150));
    // A segment along the view direction has no extent across it either; the eye stays
    // outside it.
    camera->set_eye(v3(0, 0, 10));
    camera->set_focus(v3(0, 0, 0));
    EXPECT_TRUE(camera->view_to_box(ixo_box3<float>(v3(0, 0, -1), v3(0, 0, 1))));
    expect_near(camera->get_eye(), v3(0, 0, 1 + ixo_camera_view::m_distance));
}

TEST(camera_view, drawing_needs_a_device)
{
    ASSERT_EQ(ixo_application::instance(), nullptr);
    camera_ptr camera = camera_sized();
    EXPECT_FALSE(camera->initiate_draw());
    EXPECT_FALSE(camera->apply_projection());
    EXPECT_FALSE(camera->apply_modelview());
}
