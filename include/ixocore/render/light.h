#pragma once
// ixo_light: a point light of the scene (and the camera's head light). It sets the device
// light and the effect's light parameters, and owns the light-space matrices of the shadow
// map drawn from it.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/box.h>
#include <ixocore/math/matrix.h>
#include <ixocore/math/vector.h>

class ixo_scene_draw_data;

class IXO_API ixo_light : public ixo_object
{
public:
    // A white point light at the origin for device light slot `index`: ambient 0.2,
    // diffuse 1.0, specular 0.5, both terms enabled, identity shadow matrices.
    static ixo_object_ptr<ixo_light> create(int index);

    // Position of the point light; w stays 1. The pointer forms read or write three floats
    // (a null pointer is ignored).
    virtual void set_position(float x, float y, float z);
    virtual void set_position(const float* p);
    virtual ixo_vector3<float> get_position() const;
    virtual void get_position(float* p) const;
    // Colours: the three-float setters write red, green and blue and keep alpha.
    virtual void set_ambient(float r, float g, float b);
    virtual void set_ambient(const float* c);
    virtual void get_ambient(float* c) const;
    virtual void set_diffuse(float r, float g, float b);
    virtual void set_diffuse(const float* c);
    virtual ixo_vector4<float> get_diffuse() const;
    virtual void get_diffuse(float* c) const;
    virtual void set_specular(const float* c);
    virtual void get_specular(float* c) const;

    // Sets and enables the device light of slot `index` and the effect's light parameters
    // ("g_lightPos", "g_lightAmbient", "g_lightDiffuse"); with the direct term enabled
    // also the shadow lookup matrix. The draw data may be null. False without a device.
    virtual bool draw(ixo_scene_draw_data* d) const;
    // Fits the shadow matrices to `box`: a look-at from the light toward the box's middle
    // and an off-centre perspective projection, so that projection · view maps every point
    // of the box into the clip volume (x, y in [-1, 1], depth in [0, 1]). False, with the
    // matrices left as they were, for an empty box or a light at the box's middle; false
    // too (matrices set, near depth clamped) when the light lies within the box's depth
    // range, where one perspective map cannot hold the whole box.
    virtual bool compute_shadow_matrices(const ixo_box3<float>& box);
    // The shadow matrices for the view drawn with `d`. A point light's shadow map is already
    // a perspective projection from the light, fitted to the box as tightly as the box
    // allows, so this answers the same matrices as compute_shadow_matrices.
    virtual bool compute_psm_shadow_matrices(ixo_scene_draw_data& d, const ixo_box3<float>& box);
    // Prepares the shadow-map pass: the light-space view and projection go to the device
    // and to the effect ("g_mView", "g_mProj"). False (nothing set) when the direct term is
    // disabled: such a light casts no shadow.
    virtual bool initiate_create_shadows(ixo_scene_draw_data* d);
    // Sets "g_mShadow", the matrix that maps a world point to the shadow map, when the
    // effect exists.
    virtual bool initiate_draw_shadows(ixo_scene_draw_data* d) const;
    virtual bool get_ambient_light_enabled() const;
    virtual void set_ambient_light_enabled(bool enabled);
    // The direct term also decides whether the light casts shadows.
    virtual bool get_direct_light_enabled() const;
    virtual void set_direct_light_enabled(bool enabled);

    // The light-space matrices (column-vector convention) and the box they were fitted to.
    const ixo_matrix44<float>& get_shadow_view() const { return shadow_view_; }
    const ixo_matrix44<float>& get_shadow_projection() const { return shadow_projection_; }
    const ixo_box3<float>& get_shadow_bounds() const { return shadow_bounds_; }
    int get_index() const { return index_; }

protected:
    explicit ixo_light(int index);
    ixo_light(const ixo_light&) = default;
    ixo_light& operator=(const ixo_light&) = default;
    ~ixo_light() override;

private:
    float position_[4] = {0.f, 0.f, 0.f, 1.f};
    float ambient_[4] = {0.2f, 0.2f, 0.2f, 1.f};
    float diffuse_[4] = {1.f, 1.f, 1.f, 1.f};
    float specular_[4] = {0.5f, 0.5f, 0.5f, 1.f};
    int index_ = 0;
    bool ambient_light_enabled_ = true;
    bool direct_light_enabled_ = true;
    ixo_matrix44<float> shadow_view_;
    ixo_matrix44<float> shadow_projection_;
    ixo_box3<float> shadow_bounds_;
};
