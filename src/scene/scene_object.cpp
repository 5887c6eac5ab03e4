#include <ixocore/scene/scene_object.h>

#include <ixocore/app/application.h>
#include <ixocore/core/identifiable_object.h>
#include <ixocore/core/string.h>
#include <ixocore/events/event.h>
#include <ixocore/events/event_manager.h>
#include <ixocore/platform/d3d9.h>
#include <ixocore/platform/d3dx9.h>
#include <ixocore/platform/d3dx9_effect.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/scene_draw_data.h>
#include <ixocore/scene/scene.h>

#include <algorithm>
#include <stdexcept>

IXO_TYPIFIED_DEFINE(ixo_scene_object, IXO_TEXT("Generic Object"))

namespace
{
// The application's device, or null while there is no application or no device.
IDirect3DDevice9* current_device()
{
    return ixo_application::instance() ? ixo_direct3d::get_device() : nullptr;
}

ID3DXEffect* current_effect()
{
    return ixo_application::instance() ? ixo_direct3d::get_effect() : nullptr;
}

// The device keeps row-vector matrices: it receives the transpose.
D3DXMATRIX to_device(const ixo_matrix44<float>& m)
{
    D3DXMATRIX out;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            out.m[r][c] = m[c][r];
    return out;
}

D3DCOLORVALUE color_value(float r, float g, float b, float a)
{
    return D3DCOLORVALUE{r, g, b, a};
}

void check_property(int p)
{
    if (p < 0 || p >= ixo_scene_object::property_count)
        throw std::out_of_range("invalid bitset<N> position");
}
} // namespace

ixo_object_ptr<ixo_scene_object> ixo_scene_object::create()
{
    return new ixo_scene_object;
}

ixo_scene_object::ixo_scene_object() : transform_(ixo_identity_transform<float>())
{
    properties_.set(visible);
    properties_.set(in_foreground);
    properties_.set(depth_test);
    properties_.set(depth_write);
}

ixo_scene_object::ixo_scene_object(const ixo_scene_object& other)
    : ixo_selectable_object(other), transform_(other.transform_), properties_(other.properties_),
      color_(other.color_), flash_color_(other.flash_color_), flash_color1_(other.flash_color1_),
      flash_time_(other.flash_time_), flash_phase_(other.flash_phase_)
{
}

ixo_scene_object& ixo_scene_object::operator=(const ixo_scene_object& other)
{
    if (this == &other)
        return *this;
    ixo_selectable_object::operator=(other);
    transform_ = other.transform_;
    properties_ = other.properties_;
    color_ = other.color_;
    flash_color_ = other.flash_color_;
    flash_color1_ = other.flash_color1_;
    flash_time_ = other.flash_time_;
    flash_phase_ = other.flash_phase_;
    return *this;
}

ixo_scene_object::~ixo_scene_object()
{
    // A parent holds its children, so an object that goes away is detached already; only
    // the root of a scene that has gone may still carry its links, and no event may name a
    // scene that is being destroyed.
    scene_ = nullptr;
    remove_all_children();
    parent_ = nullptr;
}

// ---------------------------------------------------------------------------------------
// Properties and colours

void ixo_scene_object::set_property(property p, bool on)
{
    check_property(p);
    if (properties_.test(static_cast<std::size_t>(p)) == on)
        return;
    properties_.set(static_cast<std::size_t>(p), on);
    if (scene_)
        scene_->touch();
}

bool ixo_scene_object::get_property(property p) const
{
    check_property(p);
    return properties_.test(static_cast<std::size_t>(p));
}

void ixo_scene_object::set_color(const ixo_vector4<unsigned char>& color)
{
    color_ = color;
}

void ixo_scene_object::set_flash_color(const ixo_vector4<unsigned char>& color)
{
    flash_color_ = color;
}

const ixo_vector4<unsigned char>& ixo_scene_object::get_flash_color() const
{
    return flash_color_;
}

void ixo_scene_object::set_flash_color1(const ixo_vector4<unsigned char>& color)
{
    flash_color1_ = color;
}

const ixo_vector4<unsigned char>& ixo_scene_object::get_flash_color1() const
{
    return flash_color1_;
}

const ixo_vector4<unsigned char>& ixo_scene_object::get_color() const
{
    return color_;
}

void ixo_scene_object::set_flash_time(long milliseconds)
{
    flash_time_ = milliseconds;
}

long ixo_scene_object::get_flash_time() const
{
    return flash_time_;
}

void ixo_scene_object::flash()
{
    if (flash_time_ <= 0)
        return;
    flash_phase_ = !flash_phase_;
    color_ = flash_phase_ ? flash_color1_ : flash_color_;
}

// ---------------------------------------------------------------------------------------
// Inherited attributes

ixo_vector3<float> ixo_scene_object::get_actual_color() const
{
    if (properties_.test(inherit_color) && parent_)
        return parent_->get_actual_color();
    return ixo_vector3<float>(color_[0] / 255.0f, color_[1] / 255.0f, color_[2] / 255.0f);
}

float ixo_scene_object::get_actual_alpha() const
{
    if (properties_.test(inherit_alpha) && parent_)
        return parent_->get_actual_alpha();
    return color_[3] / 255.0f;
}

bool ixo_scene_object::get_actual_depth_test() const
{
    if (properties_.test(inherit_depth_test) && parent_)
        return parent_->get_actual_depth_test();
    return properties_.test(depth_test);
}

bool ixo_scene_object::get_actual_depth_write() const
{
    if (properties_.test(inherit_depth_write) && parent_)
        return parent_->get_actual_depth_write();
    return properties_.test(depth_write);
}

bool ixo_scene_object::get_actual_visible() const
{
    if (properties_.test(inherit_visible) && parent_)
        return parent_->get_actual_visible();
    return properties_.test(visible);
}

bool ixo_scene_object::get_actual_transparent() const
{
    if (properties_.test(inherit_transparent) && parent_)
        return parent_->get_actual_transparent();
    return properties_.test(transparent);
}

// ---------------------------------------------------------------------------------------
// Bounds and transforms

ixo_box3<float> ixo_scene_object::get_bounds() const
{
    ixo_box3<float> box;
    if (get_actual_visible())
        box += get_object_bounds();
    box += get_children_bounds();
    return transform_ * box;
}

ixo_box3<float> ixo_scene_object::get_object_bounds() const
{
    return ixo_box3<float>();
}

ixo_box3<float> ixo_scene_object::get_children_bounds() const
{
    ixo_box3<float> box;
    for (const auto& child : children_)
        box += child->get_bounds();
    return box;
}

const ixo_matrix44<float>& ixo_scene_object::get_transform() const
{
    return transform_;
}

ixo_matrix44<float> ixo_scene_object::get_total_transform() const
{
    if (!parent_)
        return transform_;
    return parent_->get_total_transform() * transform_;
}

void ixo_scene_object::set_transform(const ixo_matrix44<float>& transform)
{
    transform_ = transform;
    if (scene_)
        scene_->touch();
}

// ---------------------------------------------------------------------------------------
// Tree

ixo_object_ptr<ixo_scene> ixo_scene_object::get_scene() const
{
    return scene_;
}

ixo_object_ptr<ixo_scene_object> ixo_scene_object::get_parent() const
{
    return parent_;
}

int ixo_scene_object::get_num_children() const
{
    return static_cast<int>(children_.size());
}

ixo_object_ptr<ixo_scene_object> ixo_scene_object::get_child(int index) const
{
    if (index < 0 || index >= get_num_children())
        return nullptr;
    return children_[static_cast<std::size_t>(index)];
}

void ixo_scene_object::report(bool changed)
{
    if (!scene_)
        return;
    if (changed)
        scene_->touch();
    ixo_object_ptr<ixo_event_manager> const manager = ixo_event_manager::get_app_event_manager();
    if (!manager)
        return;
    ixo_object_ptr<ixo_scene> const scene(scene_);
    if (changed)
        manager->report(ixo_event_scene_changed::create(scene));
    else
        manager->report(ixo_event_scene_changing::create(scene));
}

void ixo_scene_object::set_scene(ixo_scene* scene)
{
    scene_ = scene;
    for (const auto& child : children_)
        child->set_scene(scene);
}

void ixo_scene_object::detach(ixo_scene_object& child)
{
    child.parent_ = nullptr;
    child.set_scene(nullptr);
}

void ixo_scene_object::insert_child(ixo_object_ptr<ixo_scene_object> child, bool front)
{
    if (!child || child->parent_ == this)
        return;
    // An object cannot become its own descendant.
    for (const ixo_scene_object* up = this; up; up = up->parent_)
        if (up == child.get())
            return;

    report(false);
    if (child->parent_)
    {
        // Held for the call: the former parent may have no other owner than the caller.
        ixo_object_ptr<ixo_scene_object> const former(child->parent_);
        former->remove_child(child);
    }
    child->parent_ = this;
    child->set_scene(scene_);
    if (front)
        children_.insert(children_.begin(), child);
    else
        children_.push_back(child);
    report(true);
}

void ixo_scene_object::add_child(ixo_object_ptr<ixo_scene_object> child)
{
    insert_child(std::move(child), false);
}

void ixo_scene_object::add_child_front(ixo_object_ptr<ixo_scene_object> child)
{
    insert_child(std::move(child), true);
}

void ixo_scene_object::remove_child(ixo_object_ptr<ixo_scene_object> child)
{
    if (!child)
        return;
    auto const it = std::find(children_.begin(), children_.end(), child);
    if (it == children_.end())
        return;
    report(false);
    detach(*child);
    // Looked up again: a handler of the changing event may have changed the children.
    auto const at = std::find(children_.begin(), children_.end(), child);
    if (at != children_.end())
        children_.erase(at);
    report(true);
}

void ixo_scene_object::remove_all_children()
{
    report(false);
    // Moved out first: releasing a child may run code that looks at this object.
    std::vector<ixo_object_ptr<ixo_scene_object>> old;
    old.swap(children_);
    for (const auto& child : old)
        if (child->parent_ == this)
            detach(*child);
    old.clear();
    report(true);
}

// ---------------------------------------------------------------------------------------
// Drawing

bool ixo_scene_object::draw(const ixo_scene_draw_data& d)
{
    if (d.do_foreground() && !properties_.test(in_foreground))
        return true;
    if (d.do_background() && !properties_.test(in_background))
        return true;

    IDirect3DDevice9* const device = current_device();
    ID3DXEffect* const effect = device ? current_effect() : nullptr;

    // Whether this pass draws the object itself. Hidden objects still draw their children;
    // the shadow-map pass draws only casters; the opaque and transparent passes each draw
    // their own kind.
    bool const drawn = get_actual_visible() &&
                       !(d.do_mapping_shadows() && !properties_.test(cast_shadow)) &&
                       get_actual_transparent() == d.do_transparent();

    D3DMATRIX saved{};
    if (device)
    {
        // The device's world matrix becomes parent world times local transform; the
        // children draw in it whether or not the object does.
        device->GetTransform(D3DTS_WORLD, &saved);
        D3DXMATRIX const local = to_device(transform_);
        device->MultiplyTransform(D3DTS_WORLD, &local);
    }
    // Effect parameters, material and depth states only for a pass that draws the object:
    // every object sets its own before it draws.
    if (device && drawn)
    {
        if (effect)
        {
            D3DXMATRIX world;
            device->GetTransform(D3DTS_WORLD, &world);
            effect->SetMatrix("g_mWorld", &world);
            D3DXVECTOR3 scale;
            D3DXQUATERNION rotation;
            D3DXVECTOR3 translation;
            if (SUCCEEDED(D3DXMatrixDecompose(&scale, &rotation, &translation, &world)))
            {
                D3DXMATRIX no_scale;
                D3DXMatrixRotationQuaternion(&no_scale, &rotation);
                effect->SetMatrix("g_mWorldNoScale", &no_scale);
            }
            else
            {
                effect->SetMatrix("g_mWorldNoScale", &world);
            }
        }

        ixo_vector3<float> const c = get_actual_color();
        float const alpha = get_actual_alpha();
        D3DMATERIAL9 material{};
        D3DXVECTOR4 object_color;
        if (d.do_mapping())
        {
            // Only the emissive term: with no diffuse, ambient or specular reflection every
            // pixel carries exactly the identifier's colour.
            ixo_vector4<float> const id_color = ixo_id_to_color(id());
            material.Emissive = color_value(id_color[0], id_color[1], id_color[2], id_color[3]);
            object_color = D3DXVECTOR4(id_color[0], id_color[1], id_color[2], id_color[3]);
        }
        else
        {
            material.Diffuse = color_value(c[0], c[1], c[2], alpha);
            material.Ambient = color_value(0.3f * c[0], 0.3f * c[1], 0.3f * c[2], alpha);
            material.Specular = color_value(1.0f, 1.0f, 1.0f, alpha);
            material.Power = 100.0f;
            object_color = D3DXVECTOR4(c[0], c[1], c[2], alpha);
        }
        device->SetMaterial(&material);
        if (effect)
        {
            effect->SetVector("g_ObjectColor", &object_color);
            effect->SetBool("g_bEnableLighting", d.do_mapping() ? FALSE : TRUE);
        }

        device->SetRenderState(D3DRS_ZENABLE, get_actual_depth_test() ? TRUE : FALSE);
        device->SetRenderState(D3DRS_ZWRITEENABLE, get_actual_depth_write() ? TRUE : FALSE);
    }

    bool ok = true;
    if (drawn)
        ok = draw_object(d);
    ok = draw_children(d) && ok;

    if (device)
        device->SetTransform(D3DTS_WORLD, &saved);
    return ok;
}

bool ixo_scene_object::draw_children(const ixo_scene_draw_data& d)
{
    // Each child is held for its call: drawing code may change the tree.
    for (std::size_t i = 0; i < children_.size(); ++i)
    {
        ixo_object_ptr<ixo_scene_object> const child = children_[i];
        if (!child->draw(d))
            return false;
    }
    return true;
}

bool ixo_scene_object::draw_object(const ixo_scene_draw_data&)
{
    return true;
}

// ---------------------------------------------------------------------------------------
// Device reset

bool ixo_scene_object::pre_reset()
{
    bool const children = pre_reset_children();
    bool const object = pre_reset_object();
    return children && object;
}

bool ixo_scene_object::post_reset()
{
    bool const object = post_reset_object();
    bool const children = post_reset_children();
    return object && children;
}

bool ixo_scene_object::pre_reset_object()
{
    return true;
}

bool ixo_scene_object::post_reset_object()
{
    return true;
}

bool ixo_scene_object::pre_reset_children()
{
    for (std::size_t i = 0; i < children_.size(); ++i)
    {
        ixo_object_ptr<ixo_scene_object> const child = children_[i];
        if (!child->pre_reset())
            return false;
    }
    return true;
}

bool ixo_scene_object::post_reset_children()
{
    for (std::size_t i = 0; i < children_.size(); ++i)
    {
        ixo_object_ptr<ixo_scene_object> const child = children_[i];
        if (!child->post_reset())
            return false;
    }
    return true;
}
