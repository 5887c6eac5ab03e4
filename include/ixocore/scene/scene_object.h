#pragma once
// ixo_scene_object: the base of everything drawn. Keeps a local transform relative to its
// parent, a colour, sixteen boolean properties, a link to its parent and its ordered
// children, and implements the per-object drawing step: world matrix, material and depth
// states, then the subclass's draw_object, then the children.
//
// Every change of the tree under an object that belongs to a scene is bracketed by one
// scene-changing and one scene-changed event for that scene.
//
// Ownership: an object holds counted references to its children; the link to its parent
// does not hold the parent, so that a tree is never kept alive by its own links. An object
// that goes away detaches its children first, so a parent link never dangles.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/selectable_object.h>
#include <ixocore/math/box.h>
#include <ixocore/math/matrix.h>
#include <ixocore/math/vector.h>

#include <bitset>
#include <vector>

class ixo_scene;
class ixo_scene_draw_data;

class IXO_API ixo_scene_object : public ixo_selectable_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // The boolean properties. Values 1 and 5 are not used by the system.
    enum property : int
    {
        visible = 0,
        in_background = 2,
        in_foreground = 3,
        transparent = 4,
        pickable = 6,
        depth_test = 7,
        depth_write = 8,
        cast_shadow = 9,
        inherit_visible = 10,
        inherit_transparent = 11,
        inherit_color = 12,
        inherit_alpha = 13,
        inherit_depth_test = 14,
        inherit_depth_write = 15,
    };
    static constexpr int property_count = 16;

    // A detached object: identity transform, colour (196, 196, 196, 255), visible, drawn in
    // the foreground, depth test and depth write on, every other property off.
    static ixo_object_ptr<ixo_scene_object> create();

    // Properties. A value outside 0..15 throws std::out_of_range ("invalid bitset<N>
    // position").
    virtual void set_property(property p, bool on);
    virtual bool get_property(property p) const;

    // Colours, red, green, blue, alpha. flash overwrites the colour.
    virtual void set_color(const ixo_vector4<unsigned char>& color);
    virtual void set_flash_color(const ixo_vector4<unsigned char>& color);
    virtual const ixo_vector4<unsigned char>& get_flash_color() const;
    virtual void set_flash_color1(const ixo_vector4<unsigned char>& color);
    virtual const ixo_vector4<unsigned char>& get_flash_color1() const;
    virtual const ixo_vector4<unsigned char>& get_color() const;

    // Attributes as drawn: each follows the parent when its inherit property is set and
    // there is a parent, else the object's own value. Colour (0..1 per channel) and alpha
    // are inherited separately. Cost O(depth).
    virtual ixo_vector3<float> get_actual_color() const;
    virtual float get_actual_alpha() const;
    virtual bool get_actual_depth_test() const;
    virtual bool get_actual_depth_write() const;
    virtual bool get_actual_visible() const;
    virtual bool get_actual_transparent() const;

    // The box of the object and its children in the parent's frame: the object's own box
    // (only while it is visible) joined with the children's, transformed by the local
    // transform. A hidden object's box still covers its children. Cost O(subtree).
    virtual ixo_box3<float> get_bounds() const;
    // The object's own geometry in its own frame; empty here.
    virtual ixo_box3<float> get_object_bounds() const;
    // The union of the children's get_bounds, in this object's frame.
    virtual ixo_box3<float> get_children_bounds() const;

    // Draws the object and its subtree for the pass `d` describes, on the application's
    // device (nothing but the traversal happens without one). Leaves the device's world
    // transform as it found it. False when a draw_object below failed.
    virtual bool draw(const ixo_scene_draw_data& d);

    // The local transform, relative to the parent.
    virtual const ixo_matrix44<float>& get_transform() const;
    // Parent's total transform times the local one (the local one alone at the top).
    virtual ixo_matrix44<float> get_total_transform() const;
    virtual void set_transform(const ixo_matrix44<float>& transform);

    // The scene the object belongs to and its parent; null when unset.
    virtual ixo_object_ptr<ixo_scene> get_scene() const;
    virtual ixo_object_ptr<ixo_scene_object> get_parent() const;
    virtual int get_num_children() const;
    // The child at `index`, or null when `index` is outside 0 .. get_num_children() - 1.
    virtual ixo_object_ptr<ixo_scene_object> get_child(int index) const;
    // Appends `child`, first taking it from a former parent. Nothing happens (and no event
    // is raised) for a null child, a child already under this object, this object itself
    // or one of its ancestors.
    virtual void add_child(ixo_object_ptr<ixo_scene_object> child);
    // As add_child, but the child goes before all others.
    virtual void add_child_front(ixo_object_ptr<ixo_scene_object> child);
    // Detaches `child`; a null pointer or an object that is not a child is ignored without
    // events.
    virtual void remove_child(ixo_object_ptr<ixo_scene_object> child);
    // Detaches every child; the events are raised even when there are none.
    virtual void remove_all_children();

    // Draws the children in order, stopping at the first that fails.
    virtual bool draw_children(const ixo_scene_draw_data& d);
    // The object's own geometry, drawn with the world matrix and material already set.
    // Draws nothing here and answers true.
    virtual bool draw_object(const ixo_scene_draw_data& d);

    // Device-reset protocol: pre_reset releases device resources (children first, then the
    // object), post_reset rebuilds them (the object first, then the children). Both always
    // visit everything and answer the conjunction.
    virtual bool pre_reset();
    virtual bool post_reset();
    // The object's own device resources; nothing here (true).
    virtual bool pre_reset_object();
    virtual bool post_reset_object();
    // Visit the children in order, stopping at the first that fails.
    virtual bool pre_reset_children();
    virtual bool post_reset_children();

    // Flashing: with a period above 0, every flash toggles the phase and takes the second
    // flash colour on the phase's true half, the first on its false half; with 0 or less
    // flash changes nothing. The library keeps no timer: the host calls flash.
    virtual void set_flash_time(long milliseconds);
    virtual long get_flash_time() const;
    virtual void flash();

    // Copies the attributes (transform, properties, colours, flash state); the tree links
    // stay as they are.
    ixo_scene_object& operator=(const ixo_scene_object& other);

protected:
    ixo_scene_object();
    // A copy takes the attributes of `other` and starts detached: no parent, no scene, no
    // children (a child has one parent).
    ixo_scene_object(const ixo_scene_object& other);
    ~ixo_scene_object() override;

private:
    friend class ixo_scene;

    // Stores the scene link in the whole subtree.
    void set_scene(ixo_scene* scene);
    // Reports a scene-changing (false) or scene-changed (true) event when the object
    // belongs to a scene.
    void report(bool changed);
    // Shared by add_child and add_child_front.
    void insert_child(ixo_object_ptr<ixo_scene_object> child, bool front);
    // Clears the child's links to this object.
    void detach(ixo_scene_object& child);

    ixo_matrix44<float> transform_;
    ixo_scene_object* parent_ = nullptr;
    ixo_scene* scene_ = nullptr;
    std::vector<ixo_object_ptr<ixo_scene_object>> children_;
    std::bitset<property_count> properties_;
    ixo_vector4<unsigned char> color_{196, 196, 196, 255};
    ixo_vector4<unsigned char> flash_color_{255, 0, 0, 255};
    ixo_vector4<unsigned char> flash_color1_{0, 0, 255, 255};
    long flash_time_ = -1;
    bool flash_phase_ = true;
};
