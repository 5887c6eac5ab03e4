#pragma once
// ixo_camera_view: the camera of one render view.
//
// The camera is its eye, the focus it looks at (the centre of rotation and zoom), an up
// direction, a vertical field of view in degrees, near and far clipping distances and the
// projection mode (orthographic by default). The orthographic view shows the same area as
// the perspective one at the focus distance, so switching modes keeps the focus plane's
// framing.
//
// Every operation shares one camera frame, built from the stored vectors:
//   back = normalize(eye - focus), right = normalize(normalize(up) x back),
//   true_up = normalize(back x right); the view direction is -back.
// Pixels count x to the right and y downwards from the top-left corner of the viewport.
//
// Two matrix families exist side by side: the device receives right-handed matrices
// (look-at, perspective and orthographic from D3DX) in initiate_draw, while
// get_view_matrix() and get_projection_matrix() give left-handed row-vector forms for the
// shadow and picking computations.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/box.h>
#include <ixocore/math/matrix.h>
#include <ixocore/math/quaternion.h>
#include <ixocore/math/vector.h>

class ixo_light;

class IXO_API ixo_camera_view : public ixo_object
{
public:
    // A camera with fov 30, eye (0, 0, 10), focus (0, 0, 0), up (0, 1, 0), near 0.5,
    // far 200, viewport 0 × 0, orthographic, not dynamic, and a new head light (slot 0)
    // that shines.
    static ixo_object_ptr<ixo_camera_view> create();

    // Copies every field; the head light is shared, not duplicated.
    ixo_camera_view& operator=(ixo_camera_view const& other);

    // Viewport size in pixels. Operations that divide by it (pan, pixel conversions,
    // fitting) do nothing useful until both are positive: see each one.
    virtual void set_width(int width);
    virtual int get_width() const;
    virtual void set_height(int height);
    virtual int get_height() const;
    virtual void resize(int width, int height);

    // Plain field access without range checks; fov is the vertical field of view in
    // degrees, near and far are distances from the eye.
    virtual void set_fov(float fov);
    virtual float get_fov() const;
    virtual void set_near(float near_distance);
    virtual float get_near() const;
    virtual void set_far(float far_distance);
    virtual float get_far() const;

    // Plain field access; nothing is normalised on the way in.
    virtual void set_eye(const ixo_vector3<float>& eye);
    virtual ixo_vector3<float> get_eye() const;
    virtual void set_focus(const ixo_vector3<float>& focus);
    virtual ixo_vector3<float> get_focus() const;
    virtual void set_up(const ixo_vector3<float>& up);
    virtual ixo_vector3<float> get_up() const;

    // Turns the camera frame by q about the focus: with M the matrix whose rows are
    // right, true_up and back, R = (quaternion(M) ^ q).matrix(); up becomes row 1 of R and
    // the eye goes to focus + row 2 of R times the focus distance. The focus stays.
    virtual void rotate_view(ixo_quaternion<float> q);
    // Rolls the up vector by angle (radians) about the view axis; eye and focus stay.
    virtual void rotate_around(float angle);
    // Orbits the eye by angle (radians) about the stored up vector through the focus;
    // up stays.
    virtual void rotate_horizontally(float angle);
    // Orbits by angle (radians) about the right axis through the focus (through
    // rotate_view, so up turns with the eye).
    virtual void rotate_vertically(float angle);
    // Pans eye and focus together by a pixel offset (y downwards): dragging across the full
    // viewport width shifts the view by its full visible width at the focus distance. Does
    // nothing while the viewport has no size.
    virtual void move(int dx, int dy);

    // The camera frame as a quaternion: that of the matrix with rows right, true_up, back.
    virtual ixo_quaternion<float> get_orientation() const;
    // Sets the frame from q, keeping the focus and the focus distance: up becomes row 1 of
    // q.matrix() and the eye goes to focus + row 2 times the distance.
    virtual void set_orientation(const ixo_quaternion<float>& q);

    // Left-handed view matrix in row-vector form (as D3DXMatrixLookAtLH): with
    // f = normalize(focus - eye), x = normalize(up x f), y = normalize(f x x), rows 0..2
    // hold x, y and f in columns 0, 1 and 2, row 3 is (-x·eye, -y·eye, -f·eye, 1).
    virtual ixo_matrix44<float> get_view_matrix() const;
    // Left-handed row-vector projection: perspective (as D3DXMatrixPerspectiveFovLH) when
    // the perspective flag is set, otherwise orthographic over the visible area at the
    // focus distance (2·frustum_width() × 2·frustum_height()), depth near → 0, far → 1.
    virtual ixo_matrix44<float> get_projection_matrix() const;

    // Fits near and far to the box's extent along the view direction: 0.9 times the
    // nearest and 1.1 times the farthest distance, with fallbacks for a box partly or
    // wholly behind the eye (far 10 · near, or 10 when the far side is behind too).
    // An empty box changes nothing and gives false.
    virtual bool near_far_to_box(const ixo_box3<float>& box);
    // Frames the box without changing the viewing direction: fov becomes 30, the focus
    // the box middle, and the eye backs off until every corner lies within the view, plus
    // 5 %. Near and far are left alone (call near_far_to_box afterwards). A box with no
    // extent across the view (a point, or a segment along the view direction) is looked at
    // from m_distance beyond its bounding sphere. An empty box changes nothing and gives
    // false.
    virtual bool view_to_box(const ixo_box3<float>& box);

    // Projection mode: perspective when true, orthographic when false.
    virtual void use_perspective(bool perspective);
    virtual bool using_perspective() const;
    // Whether the head light shines (its diffuse colour reaches the effect).
    virtual void use_light(bool on);
    virtual bool using_light() const;
    // The head light, without a reference of its own.
    virtual ixo_light* get_light() const;

    // Prepares the device for a frame: viewport (0, 0, width, height, depth 0..1), the
    // projection, the head light placed at the eye, the effect's head-light colour and the
    // view matrix. Effect parameters are set only when the effect exists. False when there
    // is no device.
    virtual bool initiate_draw();
    // Hand the right-handed device matrices to the device ("g_mProj"/"g_mView" on the
    // effect too, when it exists). False when there is no device.
    virtual bool apply_perspective();
    bool apply_orthographic();
    bool apply_projection();
    bool apply_modelview();

    // The point of the focus plane (through the focus, perpendicular to the view
    // direction) under pixel (x, y), in both projections. The focus while the viewport has
    // no size.
    virtual ixo_vector3<float> point_from_pixel(int x, int y) const;
    // The pixel position (x right, y down, fractional) where the point appears; inverts
    // point_from_pixel on the focus plane. (1e30, 1e30) when it cannot be projected (no
    // viewport size, or a perspective point in the eye's plane).
    virtual ixo_vector2<float> pixel_from_point(ixo_vector3<float> point) const;

    // A mark kept for the camera's users; the camera itself does not read it.
    virtual void set_dynamic(bool dynamic);
    virtual bool is_dynamic() const;

    // Half the visible width and height at the focus distance:
    // frustum_height() = tan(fov / 2) · |eye - focus|, frustum_width() = that times
    // width / height (times 1 while height <= 0).
    virtual float frustum_width() const;
    virtual float frustum_height() const;

    // How far outside its bounding sphere view_to_box puts the eye for a box too small
    // to frame.
    static constexpr float m_distance = 1.0f;

protected:
    ixo_camera_view();
    ixo_camera_view(ixo_camera_view const& other);
    // Releases the head light.
    ~ixo_camera_view() override;

private:
    int width_ = 0;
    int height_ = 0;
    float fov_ = 30.0f;
    ixo_vector3<float> focus_{0.0f, 0.0f, 0.0f};
    ixo_vector3<float> eye_{0.0f, 0.0f, 10.0f};
    ixo_vector3<float> up_{0.0f, 1.0f, 0.0f};
    float near_ = 0.5f;
    float far_ = 200.0f;
    ixo_object_ptr<ixo_light> light_;
    bool light_on_ = true;
    bool perspective_ = false;
    bool dynamic_ = false;
};
