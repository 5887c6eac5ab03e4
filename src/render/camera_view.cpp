#include <ixocore/render/camera_view.h>

#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/light.h>

#include <algorithm>
#include <cmath>

namespace
{

// Single-precision pi: every angle conversion of the camera goes through it.
constexpr float pi = 3.14159265358979323846f;

// The camera frame: unit vectors pointing right, up and back (from the focus toward the
// eye) on the screen, and the focus distance.
struct frame
{
    ixo_vector3<float> right;
    ixo_vector3<float> true_up;
    ixo_vector3<float> back;
    float distance;
};

frame camera_frame(const ixo_vector3<float>& eye, const ixo_vector3<float>& focus,
                   const ixo_vector3<float>& up)
{
    frame f;
    f.back = eye - focus;
    f.distance = f.back.normalize();
    f.right = (up.normalized() ^ f.back).normalized();
    f.true_up = (f.back ^ f.right).normalized();
    return f;
}

// tan of half the field of view, fov in degrees.
float half_fov_tan(float fov)
{
    return std::tan(pi * 0.5f * fov / 180.0f);
}

D3DXVECTOR3 d3dx(const ixo_vector3<float>& v)
{
    return D3DXVECTOR3(v[0], v[1], v[2]);
}

constexpr ixo_vector2<float> unprojectable{float(ixo_huge), float(ixo_huge)};

} // namespace

ixo_object_ptr<ixo_camera_view> ixo_camera_view::create()
{
    return ixo_object_ptr<ixo_camera_view>(new ixo_camera_view());
}

ixo_camera_view::ixo_camera_view() : light_(ixo_light::create(0)) {}

ixo_camera_view::ixo_camera_view(ixo_camera_view const& other)
    : ixo_object(other), width_(other.width_), height_(other.height_), fov_(other.fov_),
      focus_(other.focus_), eye_(other.eye_), up_(other.up_), near_(other.near_), far_(other.far_),
      light_(other.light_), light_on_(other.light_on_), perspective_(other.perspective_),
      dynamic_(other.dynamic_)
{
}

ixo_camera_view& ixo_camera_view::operator=(ixo_camera_view const& other)
{
    if (this == &other)
        return *this;
    ixo_object::operator=(other);
    width_ = other.width_;
    height_ = other.height_;
    fov_ = other.fov_;
    focus_ = other.focus_;
    eye_ = other.eye_;
    up_ = other.up_;
    near_ = other.near_;
    far_ = other.far_;
    light_ = other.light_;
    light_on_ = other.light_on_;
    perspective_ = other.perspective_;
    dynamic_ = other.dynamic_;
    return *this;
}

ixo_camera_view::~ixo_camera_view() = default;

void ixo_camera_view::set_width(int width)
{
    width_ = width;
}

int ixo_camera_view::get_width() const
{
    return width_;
}

void ixo_camera_view::set_height(int height)
{
    height_ = height;
}

int ixo_camera_view::get_height() const
{
    return height_;
}

void ixo_camera_view::resize(int width, int height)
{
    width_ = width;
    height_ = height;
}

void ixo_camera_view::set_fov(float fov)
{
    fov_ = fov;
}

float ixo_camera_view::get_fov() const
{
    return fov_;
}

void ixo_camera_view::set_near(float near_distance)
{
    near_ = near_distance;
}

float ixo_camera_view::get_near() const
{
    return near_;
}

void ixo_camera_view::set_far(float far_distance)
{
    far_ = far_distance;
}

float ixo_camera_view::get_far() const
{
    return far_;
}

void ixo_camera_view::set_eye(const ixo_vector3<float>& eye)
{
    eye_ = eye;
}

ixo_vector3<float> ixo_camera_view::get_eye() const
{
    return eye_;
}

void ixo_camera_view::set_focus(const ixo_vector3<float>& focus)
{
    focus_ = focus;
}

ixo_vector3<float> ixo_camera_view::get_focus() const
{
    return focus_;
}

void ixo_camera_view::set_up(const ixo_vector3<float>& up)
{
    up_ = up;
}

ixo_vector3<float> ixo_camera_view::get_up() const
{
    return up_;
}

void ixo_camera_view::rotate_view(ixo_quaternion<float> q)
{
    const frame f = camera_frame(eye_, focus_, up_);
    const ixo_matrix33<float> m(f.right, f.true_up, f.back);
    const ixo_matrix33<float> r = (ixo_quaternion<float>(m) ^ q).matrix();
    up_ = r[1];
    eye_ = focus_ + r[2] * f.distance;
}

void ixo_camera_view::rotate_around(float angle)
{
    const ixo_matrix33<float> r =
        ixo_quaternion<float>(angle, (eye_ - focus_).normalized()).matrix();
    up_ = r * up_;
}

void ixo_camera_view::rotate_horizontally(float angle)
{
    const ixo_matrix33<float> r = ixo_quaternion<float>(angle, up_).matrix();
    eye_ = focus_ + r * (eye_ - focus_);
}

void ixo_camera_view::rotate_vertically(float angle)
{
    const ixo_vector3<float> axis = (up_ ^ (eye_ - focus_)).normalized();
    rotate_view(ixo_quaternion<float>(angle, axis));
}

void ixo_camera_view::move(int dx, int dy)
{
    if (width_ <= 0 || height_ <= 0)
        return;
    const float fx = float(dx) / float(width_);
    const float fy = float(dy) / float(height_);
    const float sx = -2.0f * frustum_width() * fx;
    const float sy = -2.0f * frustum_height() * fy;
    const frame f = camera_frame(eye_, focus_, up_);
    const ixo_vector3<float> offset = f.right * sx + f.true_up * sy;
    focus_ += offset;
    eye_ += offset;
}

ixo_quaternion<float> ixo_camera_view::get_orientation() const
{
    const frame f = camera_frame(eye_, focus_, up_);
    return ixo_quaternion<float>(ixo_matrix33<float>(f.right, f.true_up, f.back));
}

void ixo_camera_view::set_orientation(const ixo_quaternion<float>& q)
{
    const float distance = (eye_ - focus_).length();
    const ixo_matrix33<float> r = q.matrix();
    up_ = r[1];
    eye_ = focus_ + r[2] * distance;
}

ixo_matrix44<float> ixo_camera_view::get_view_matrix() const
{
    const ixo_vector3<float> f = (focus_ - eye_).normalized();
    const ixo_vector3<float> x = (up_ ^ f).normalized();
    const ixo_vector3<float> y = (f ^ x).normalized();
    ixo_matrix44<float> m = ixo_identity_transform<float>();
    for (int i = 0; i < 3; ++i)
    {
        m[i][0] = x[i];
        m[i][1] = y[i];
        m[i][2] = f[i];
        m[i][3] = 0.0f;
    }
    m[3] = ixo_vector4<float>(-(x * eye_), -(y * eye_), -(f * eye_), 1.0f);
    return m;
}

ixo_matrix44<float> ixo_camera_view::get_projection_matrix() const
{
    const float depth = far_ - near_;
    if (perspective_)
    {
        const float aspect = height_ > 0 ? float(width_) / float(height_) : 1.0f;
        const float ys = 1.0f / half_fov_tan(fov_);
        ixo_matrix44<float> m = ixo_zero_matrix<float>();
        m[0][0] = ys / aspect;
        m[1][1] = ys;
        m[2][2] = far_ / depth;
        m[2][3] = 1.0f;
        m[3][2] = -near_ * far_ / depth;
        return m;
    }
    ixo_matrix44<float> m = ixo_identity_transform<float>();
    m[0][0] = 2.0f / (2.0f * frustum_width());
    m[1][1] = 2.0f / (2.0f * frustum_height());
    m[2][2] = 1.0f / depth;
    m[3][2] = near_ / (near_ - far_);
    return m;
}

bool ixo_camera_view::near_far_to_box(const ixo_box3<float>& box)
{
    if (box.empty())
        return false;
    const ixo_vector3<float> d = (focus_ - eye_).normalized();
    float mn = ixo_min_dist_box_on_ray(eye_, d, box);
    float mx = ixo_max_dist_box_on_ray(eye_, d, box);
    // Parts of the box behind the eye cannot be shown; keep the clip range in front of it.
    if (mx < ixo_tolerance_single)
        mx = 10.0f;
    if (mn < ixo_tolerance_single)
        mn = 0.1f * mx;
    if (mn > mx)
        mx = 10.0f * mn;
    near_ = 0.9f * mn;
    far_ = 1.1f * mx;
    return true;
}

bool ixo_camera_view::view_to_box(const ixo_box3<float>& box)
{
    if (box.empty())
        return false;
    fov_ = 30.0f;
    const ixo_vector3<float> c = box.middle();
    const ixo_vector3<float> f = (focus_ - eye_).normalized();
    const ixo_vector3<float> x = (up_ ^ f).normalized();
    const ixo_vector3<float> y = (f ^ x).normalized();
    // The box in a frame centred on its middle with the view axes as its axes.
    const ixo_matrix44<float> t(ixo_vector4<float>(x[0], x[1], x[2], -(x * c)),
                                ixo_vector4<float>(y[0], y[1], y[2], -(y * c)),
                                ixo_vector4<float>(f[0], f[1], f[2], -(f * c)),
                                ixo_vector4<float>(0.0f, 0.0f, 0.0f, 1.0f));
    const ixo_box3<float> b = t * box;
    const float k = 1.0f / std::tan(pi * 15.0f / 180.0f);
    const float aspect = width_ > 0 && height_ > 0 ? float(width_) / float(height_) : 1.0f;
    float d = 0.0f;
    for (int i = 0; i < 8; ++i)
    {
        const ixo_vector3<float> corner = b.corner(i & 1, i & 2, i & 4);
        d = std::max(d, std::fabs(corner[1]) * k);
        d = std::max(d, std::fabs(corner[0]) * k / aspect);
    }
    float distance = 1.05f * d;
    // A box with no extent across the view would put the eye on the focus (or inside the
    // box), where the camera frame is lost: step back m_distance beyond its bounding sphere.
    if (!(distance >= ixo_tolerance_single))
        distance = m_distance + 0.5f * box.extents().length();
    focus_ = c;
    eye_ = c - f * distance;
    fov_ = 30.0f;
    return true;
}

void ixo_camera_view::use_perspective(bool perspective)
{
    perspective_ = perspective;
}

bool ixo_camera_view::using_perspective() const
{
    return perspective_;
}

void ixo_camera_view::use_light(bool on)
{
    light_on_ = on;
}

bool ixo_camera_view::using_light() const
{
    return light_on_;
}

ixo_light* ixo_camera_view::get_light() const
{
    return light_.get();
}

bool ixo_camera_view::initiate_draw()
{
    IDirect3DDevice9* device = ixo_direct3d::get_device();
    if (!device)
        return false;
    D3DVIEWPORT9 viewport{};
    viewport.X = 0;
    viewport.Y = 0;
    viewport.Width = DWORD(std::max(width_, 0));
    viewport.Height = DWORD(std::max(height_, 0));
    viewport.MinZ = 0.0f;
    viewport.MaxZ = 1.0f;
    device->SetViewport(&viewport);
    apply_projection();
    if (light_)
    {
        light_->set_position(eye_[0], eye_[1], eye_[2]);
        light_->draw(nullptr);
        // Switched off, the head light must not light the fixed-function passes either.
        if (!light_on_)
            device->LightEnable(DWORD(std::max(light_->get_index(), 0)), FALSE);
    }
    if (ID3DXEffect* effect = ixo_direct3d::get_effect())
    {
        ixo_vector4<float> diffuse(0.0f, 0.0f, 0.0f, 0.0f);
        if (light_on_ && light_)
            diffuse = light_->get_diffuse();
        const D3DXVECTOR4 value(diffuse[0], diffuse[1], diffuse[2], diffuse[3]);
        effect->SetVector("g_headlightDiffuse", &value);
    }
    apply_modelview();
    return true;
}

bool ixo_camera_view::apply_perspective()
{
    IDirect3DDevice9* device = ixo_direct3d::get_device();
    if (!device)
        return false;
    const float aspect = height_ > 0 ? float(width_) / float(height_) : 1.0f;
    D3DXMATRIX m;
    D3DXMatrixPerspectiveFovRH(&m, fov_ * pi / 180.0f, aspect, near_, far_);
    if (ID3DXEffect* effect = ixo_direct3d::get_effect())
        effect->SetMatrix("g_mProj", &m);
    device->SetTransform(D3DTS_PROJECTION, &m);
    return true;
}

bool ixo_camera_view::apply_orthographic()
{
    IDirect3DDevice9* device = ixo_direct3d::get_device();
    if (!device)
        return false;
    D3DXMATRIX m;
    D3DXMatrixOrthoRH(&m, 2.0f * frustum_width(), 2.0f * frustum_height(), near_, far_);
    device->SetTransform(D3DTS_PROJECTION, &m);
    if (ID3DXEffect* effect = ixo_direct3d::get_effect())
        effect->SetMatrix("g_mProj", &m);
    return true;
}

bool ixo_camera_view::apply_projection()
{
    return perspective_ ? apply_perspective() : apply_orthographic();
}

bool ixo_camera_view::apply_modelview()
{
    IDirect3DDevice9* device = ixo_direct3d::get_device();
    if (!device)
        return false;
    const D3DXVECTOR3 eye = d3dx(eye_);
    const D3DXVECTOR3 focus = d3dx(focus_);
    const D3DXVECTOR3 up = d3dx(up_);
    D3DXMATRIX m;
    D3DXMatrixLookAtRH(&m, &eye, &focus, &up);
    device->SetTransform(D3DTS_VIEW, &m);
    if (ID3DXEffect* effect = ixo_direct3d::get_effect())
        effect->SetMatrix("g_mView", &m);
    return true;
}

ixo_vector3<float> ixo_camera_view::point_from_pixel(int x, int y) const
{
    if (width_ <= 0 || height_ <= 0)
        return focus_;
    const float nx = 2.0f * float(x) / float(width_) - 1.0f;
    const float ny = 1.0f - 2.0f * float(y) / float(height_);
    const frame f = camera_frame(eye_, focus_, up_);
    const float px = nx * frustum_width();
    const float py = ny * frustum_height();
    const float pz = -f.distance;
    return eye_ + f.right * px + f.true_up * py + f.back * pz;
}

ixo_vector2<float> ixo_camera_view::pixel_from_point(ixo_vector3<float> point) const
{
    if (width_ <= 0 || height_ <= 0)
        return unprojectable;
    const frame f = camera_frame(eye_, focus_, up_);
    // Camera coordinates: the frame's columns map camera to world, so its inverse maps back.
    const ixo_matrix33<float> to_world =
        ixo_matrix33<float>(f.right, f.true_up, f.back).transpose();
    const ixo_vector3<float> q = to_world.inverse_matrix_jordan_gauss() * (point - eye_);
    const float depth = perspective_ ? -q[2] : f.distance;
    const float hh = half_fov_tan(fov_) * depth;
    const float hw = hh * (float(width_) / float(height_));
    if (std::fabs(hh) < ixo_tolerance_single || std::fabs(hw) < ixo_tolerance_single)
        return unprojectable;
    const float sx = q[0] / hw;
    const float sy = q[1] / hh;
    return ixo_vector2<float>((sx + 1.0f) * 0.5f * float(width_),
                              (sy - 1.0f) * -0.5f * float(height_));
}

void ixo_camera_view::set_dynamic(bool dynamic)
{
    dynamic_ = dynamic;
}

bool ixo_camera_view::is_dynamic() const
{
    return dynamic_;
}

float ixo_camera_view::frustum_width() const
{
    const float aspect = height_ > 0 ? float(width_) / float(height_) : 1.0f;
    return frustum_height() * aspect;
}

float ixo_camera_view::frustum_height() const
{
    return half_fov_tan(fov_) * (eye_ - focus_).length();
}
