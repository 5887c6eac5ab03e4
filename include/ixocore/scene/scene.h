#pragma once
// ixo_scene: a document's tree of scene objects under one root, plus an ordered list of
// lights. Draws the tree in the normal passes (background, opaque foreground, transparent
// foreground), in the picking pass or in the shadow-map pass, caches the tree's bounding
// box and forwards device resets into the tree.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/box.h>

#include <cstdint>
#include <vector>

class ixo_light;
class ixo_scene_draw_data;
class ixo_scene_object;

class IXO_API ixo_scene : public ixo_object
{
public:
    // A scene with an empty root that is drawn in both the background and the foreground
    // passes and passes its colour on to its children.
    static ixo_object_ptr<ixo_scene> create();

    // Shares the root of `other` and copies its lights and settings.
    ixo_scene& operator=(const ixo_scene& other);

    // The cached bounding box of the tree; computed from the root when the cache is empty.
    // An empty tree gives the box (-10, -10, -10)-(10, 10, 10), which is not cached. Nothing
    // clears the cache but reset_cached_bounds: whoever changes geometry calls it.
    virtual ixo_box3<float> get_bounds();
    // Draws the pass that `d` asks for: the picking pass when do_mapping, the shadow-map pass
    // when do_mapping_shadows, else the normal passes. When `d` names a render view its
    // camera prepares viewport, view and projection; without a view the caller has put them
    // on the device. False when there is no device, the camera refuses, or an object or
    // light fails to draw.
    virtual bool draw(ixo_scene_draw_data& d);
    virtual ixo_object_ptr<ixo_scene_object> get_root();
    // A flag kept for the render views.
    virtual void set_full_update(bool full);
    virtual bool do_full_update() const;
    // Appends a light (duplicates allowed; null ignored). No event is raised.
    virtual void add_light(ixo_object_ptr<ixo_light> light);
    // Removes the first entry holding `light`; nothing when absent.
    virtual void remove_light(ixo_object_ptr<ixo_light> light);
    virtual void remove_all_lights();
    // The root's pre_reset / post_reset: release and rebuild the tree's device resources.
    virtual bool pre_reset();
    virtual bool post_reset();
    virtual void reset_cached_bounds();
    // Milliseconds tick count taken when the last draw began.
    virtual long get_last_render_time();

    // The lights in the order they were added.
    int get_num_lights() const;
    ixo_object_ptr<ixo_light> get_light(int index) const;

    // A count that grows with every change to what the scene draws: tree changes, object
    // transforms and properties, lights added or removed, and touch(). Render views compare
    // it to tell whether their shadow map still holds. Constant time.
    std::uint64_t get_revision() const;
    // Counts a change the scene cannot see by itself (geometry rebuilt in place by a host).
    void touch();

private:
    ixo_scene();
    ixo_scene(const ixo_scene& other);
    // Detaches the tree from the scene and from the root: a subtree nobody else holds goes
    // with the scene.
    ~ixo_scene() override;

    virtual bool draw_normal(ixo_scene_draw_data& d);
    virtual bool draw_mapping(ixo_scene_draw_data& d);
    virtual bool map_shadows(ixo_scene_draw_data& d);
    // Inside a device scene: the lights, the background objects, a fresh depth buffer, the
    // opaque foreground objects and, with `transparent_pass`, the transparent ones. Stops at
    // the first failure; always leaves the foreground flag off.
    bool draw_passes(ixo_scene_draw_data& d, bool transparent_pass);

    ixo_object_ptr<ixo_scene_object> root_;
    std::vector<ixo_object_ptr<ixo_light>> lights_;
    bool full_update_ = true;
    ixo_box3<float> cached_bounds_;
    long last_render_time_ = 0;
    std::uint64_t revision_ = 0;
};
