#include <ixocore/tools/spin_object_tool.h>

#include <ixocore/events/event.h>
#include <ixocore/math/matrix.h>
#include <ixocore/platform/win32.h>
#include <ixocore/render/camera_view.h>
#include <ixocore/render/render_view.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{
// Below this angular speed (radians per second) a spin counts as stopped.
constexpr float min_angular_speed = 0.01f;

std::int64_t performance_counter()
{
    LARGE_INTEGER now{};
    QueryPerformanceCounter(&now);
    return now.QuadPart;
}

float seconds_between(std::int64_t from, std::int64_t to)
{
    LARGE_INTEGER frequency{};
    if (!QueryPerformanceFrequency(&frequency) || frequency.QuadPart <= 0)
        return 0.0f;
    return static_cast<float>(static_cast<double>(to - from) /
                              static_cast<double>(frequency.QuadPart));
}

void turn_about_z(ixo_scene_object& object, float angle)
{
    object.set_transform(ixo_rotation_transform<float>(angle, ixo_z_axisf) *
                         object.get_transform());
}

void refit(ixo_render_view& view)
{
    ixo_object_ptr<ixo_scene> scene = view.get_scene();
    if (scene)
        view.get_camera()->near_far_to_box(scene->get_bounds());
}

// Keeps a released object turning on idle events, slowing with a time constant of one
// second. Lives in the application's event manager until the next spin gesture begins.
class ixo_spin_object_handler : public ixo_event_handler
{
public:
    static ixo_object_ptr<ixo_spin_object_handler> create(ixo_object_ptr<ixo_scene_object> object,
                                                          float angular_speed,
                                                          std::int64_t last_time,
                                                          ixo_object_ptr<ixo_render_view> view)
    {
        return new ixo_spin_object_handler(std::move(object), angular_speed, last_time,
                                           std::move(view));
    }

    // The handler of the spin that runs now, if any; it is gone when its subscription is.
    static ixo_spin_object_handler* m_current;

    bool is_turning() const { return std::fabs(angular_speed_) >= min_angular_speed; }

    void on_event(ixo_object_ptr<ixo_event>) override
    {
        if (!is_turning())
            return;
        std::int64_t const now = performance_counter();
        float const dt = seconds_between(last_time_, now);
        if (object_)
            turn_about_z(*object_, dt * angular_speed_);
        if (view_)
        {
            refit(*view_);
            view_->paint();
        }
        angular_speed_ *= std::exp(-dt);
        last_time_ = now;
    }

private:
    ixo_spin_object_handler(ixo_object_ptr<ixo_scene_object> object, float angular_speed,
                            std::int64_t last_time, ixo_object_ptr<ixo_render_view> view)
        : object_(std::move(object)), angular_speed_(angular_speed), last_time_(last_time),
          view_(std::move(view))
    {
    }
    ~ixo_spin_object_handler() override
    {
        if (m_current == this)
            m_current = nullptr;
    }

    ixo_object_ptr<ixo_scene_object> object_;
    float angular_speed_;
    std::int64_t last_time_;
    ixo_object_ptr<ixo_render_view> view_;
};

ixo_spin_object_handler* ixo_spin_object_handler::m_current = nullptr;
} // namespace

float ixo_spin_object_tool::m_speed = 1.0f;
ixo_vector3<float> ixo_spin_object_tool::m_origin{0.0f, 0.0f, 0.0f};
ixo_event_key ixo_spin_object_tool::m_event_key;

ixo_object_ptr<ixo_spin_object_tool>
ixo_spin_object_tool::create(ixo_object_ptr<ixo_scene_object> object)
{
    return new ixo_spin_object_tool(std::move(object));
}

ixo_spin_object_tool::ixo_spin_object_tool(ixo_object_ptr<ixo_scene_object> object)
    : object_(std::move(object))
{
}

ixo_spin_object_tool::ixo_spin_object_tool(const ixo_spin_object_tool& other) = default;
ixo_spin_object_tool& ixo_spin_object_tool::operator=(const ixo_spin_object_tool& other) = default;
ixo_spin_object_tool::~ixo_spin_object_tool() = default;

bool ixo_spin_object_tool::set_speed(float speed)
{
    if (!std::isfinite(speed) || speed <= 0.0f)
        return false;
    m_speed = speed;
    return true;
}

float ixo_spin_object_tool::get_speed()
{
    return m_speed;
}

void ixo_spin_object_tool::set_origin(const ixo_vector3<float>& origin)
{
    m_origin = origin;
}

ixo_vector3<float> ixo_spin_object_tool::get_origin()
{
    return m_origin;
}

bool ixo_spin_object_tool::is_spinning()
{
    return ixo_spin_object_handler::m_current && ixo_spin_object_handler::m_current->is_turning();
}

void ixo_spin_object_tool::start() {}
void ixo_spin_object_tool::stop() {}

bool ixo_spin_object_tool::on_mouse_down(ixo_object_ptr<ixo_render_view> view, int x, int y, bool,
                                         bool)
{
    if (!view)
        return false;
    view_ = std::move(view);
    ixo_object_ptr<ixo_camera_view> camera = view_->get_camera();
    camera->set_dynamic(true);
    last_x_ = x;
    last_y_ = y;
    orientation_ = camera->get_orientation();
    last_time_ = performance_counter();
    last_step_time_ = 0.0f;
    last_step_angle_ = 0.0f;
    if (ixo_object_ptr<ixo_event_manager> events = ixo_event_manager::get_app_event_manager())
        events->unsubscribe(m_event_key);
    m_event_key = ixo_event_key();
    return false;
}

bool ixo_spin_object_tool::on_mouse_move(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}

bool ixo_spin_object_tool::on_mouse_drag(ixo_object_ptr<ixo_render_view>, int x, int y, bool, bool)
{
    if (!view_)
        return false;
    ixo_object_ptr<ixo_camera_view> camera = view_->get_camera();
    int const h = camera->get_height();
    // Without a size every pixel is the focus: there is no angle to measure.
    if (camera->get_width() <= 0 || h <= 0)
        return false;
    camera->set_dynamic(true);
    ixo_vector3<float> const a =
        (camera->point_from_pixel(last_x_, h - last_y_) - m_origin).normalized();
    ixo_vector3<float> const b = (camera->point_from_pixel(x, h - y) - m_origin).normalized();
    float phi = std::acos(std::clamp(a * b, -1.0f, 1.0f));
    if (ixo_z_axisf * (a ^ b) > 0.0f)
        phi = -phi;
    if (object_)
        turn_about_z(*object_, phi);
    refit(*view_);
    last_x_ = x;
    last_y_ = y;
    std::int64_t const now = performance_counter();
    last_step_time_ = seconds_between(last_time_, now);
    last_time_ = now;
    last_step_angle_ = phi;
    view_->paint();
    return true;
}

bool ixo_spin_object_tool::on_mouse_up(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    if (!view_)
        return false;
    view_->get_camera()->set_dynamic(false);
    // A step that took no measurable time gives no speed to go on with.
    float const omega = last_step_time_ > 0.0f ? last_step_angle_ / last_step_time_ : 0.0f;
    ixo_object_ptr<ixo_event_manager> events = ixo_event_manager::get_app_event_manager();
    if (std::fabs(omega) > min_angular_speed && std::isfinite(omega) && events)
    {
        ixo_object_ptr<ixo_spin_object_handler> handler =
            ixo_spin_object_handler::create(object_, omega, last_time_, view_);
        m_event_key = events->subscribe(ixo_event_application_idle::create(), handler);
        if (!m_event_key.is_empty())
            ixo_spin_object_handler::m_current = handler.get();
    }
    return true;
}

bool ixo_spin_object_tool::on_mouse_dbl_click(ixo_object_ptr<ixo_render_view>, int, int, bool, bool)
{
    return false;
}
