#pragma once
// ixo_scene_shadow: a scene object that draws another scene object flattened onto a plane
// as seen from a light (a planar projected shadow), in the shadow object's own colour and
// properties.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/matrix.h>
#include <ixocore/math/plane.h>
#include <ixocore/math/vector.h>
#include <ixocore/render/light.h>
#include <ixocore/scene/scene_object.h>

// The transform that moves a point along the ray from a point light at `light` onto
// `plane` (root and normal; the normal need not be unit length). Projective: its row 3
// is not (0, 0, 0, 1), so results need the homogeneous divide. The overall sign is chosen
// so that points between the light and the plane keep a positive w (the clipper keeps
// them). For a light on the plane the map collapses everything onto the light.
IXO_API ixo_matrix44<float> ixo_planar_shadow_transform(const ixo_vector3<float>& light,
                                                        const ixo_plane<float>& plane);

class IXO_API ixo_scene_shadow : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // The shadow of `object` cast by `light` onto `plane`. The object is not adopted: it
    // stays where it is in the tree and is drawn a second time through the shadow. The
    // shadow holds the object; a shadow placed under its own object draws it once (no
    // recursion) but the two then hold each other until the shadow is taken off.
    static ixo_object_ptr<ixo_scene_shadow> create(ixo_object_ptr<ixo_scene_object> object,
                                                   ixo_object_ptr<ixo_light> light,
                                                   const ixo_plane<float>& plane);

    // Empty: the shadow does not enlarge the scene's bounds.
    ixo_box3<float> get_object_bounds() const override;
    // Draws the object through the planar shadow transform of the light's current
    // position; the device's world transform is restored afterwards. True without an
    // object or light (nothing to draw).
    bool draw_object(const ixo_scene_draw_data& d) override;

    ixo_object_ptr<ixo_scene_object> get_object() const { return object_; }
    ixo_object_ptr<ixo_light> get_light() const { return light_; }
    const ixo_plane<float>& get_plane() const { return plane_; }

protected:
    ixo_scene_shadow(const ixo_scene_shadow& other) = default;
    ixo_scene_shadow& operator=(const ixo_scene_shadow& other) = default;

private:
    ixo_scene_shadow(ixo_object_ptr<ixo_scene_object> object, ixo_object_ptr<ixo_light> light,
                     const ixo_plane<float>& plane);
    ~ixo_scene_shadow() override;

    ixo_object_ptr<ixo_scene_object> object_;
    ixo_object_ptr<ixo_light> light_;
    ixo_plane<float> plane_;
    // Set while the shadowed object draws: a shadow inside its own object's subtree would
    // otherwise draw itself without end.
    bool drawing_ = false;
};
