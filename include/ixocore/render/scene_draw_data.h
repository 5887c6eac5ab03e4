#pragma once
// ixo_scene_draw_data: the small record handed down a scene tree for one drawing pass. It
// says which pass is drawn (background, foreground, transparent, picking, shadow map, or a
// normal pass that reads the shadow map) and for which render view.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>

#include <cstdint>

class ixo_render_view;

class IXO_API ixo_scene_draw_data
{
public:
    // No pass bit set and no view.
    ixo_scene_draw_data();
    // Copies the pass bits and shares the view.
    ixo_scene_draw_data(const ixo_scene_draw_data& other);
    ixo_scene_draw_data& operator=(const ixo_scene_draw_data& other);
    virtual ~ixo_scene_draw_data();

    // Each setter sets or clears its own bit and leaves the others; each getter tests it.
    void set_background(bool on);
    bool do_background() const;
    void set_foreground(bool on);
    bool do_foreground() const;
    void set_transparent(bool on);
    bool do_transparent() const;
    // The picking pass: every object drawn in the colour of its identifier.
    void set_mapping(bool on);
    bool do_mapping() const;
    // The shadow-map pass: only shadow casters are drawn, from the first light.
    void set_mapping_shadows(bool on);
    bool do_mapping_shadows() const;
    // A normal pass that reads the shadow map drawn before it.
    void set_draw_mapped_shadows(bool on);
    bool do_draw_mapped_shadows() const;

    // The view being drawn (a new reference), or null when the caller drew without one and
    // put view and projection on the device itself.
    void set_render_view(ixo_object_ptr<ixo_render_view> view);
    ixo_object_ptr<ixo_render_view> get_render_view() const;

private:
    enum pass_bit : std::uint32_t
    {
        background_bit = 1u << 0,
        foreground_bit = 1u << 1,
        transparent_bit = 1u << 2,
        mapping_bit = 1u << 3,
        mapping_shadows_bit = 1u << 4,
        draw_mapped_shadows_bit = 1u << 5,
    };

    void set_bit(pass_bit bit, bool on);
    bool has_bit(pass_bit bit) const;

    std::uint32_t flags_ = 0;
    ixo_object_ptr<ixo_render_view> render_view_;
};
