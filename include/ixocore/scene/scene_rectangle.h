#pragma once
// ixo_scene_rectangle: an outline rectangle in view pixels, drawn over the scene in the
// foreground passes only (the rubber band of the zoom and selection tools). It has no
// extent in the scene.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/math/box.h>
#include <ixocore/scene/scene_object.h>

class IXO_API ixo_scene_rectangle : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // An empty rectangle, in the foreground and not in the background.
    static ixo_object_ptr<ixo_scene_rectangle> create();

    // The rectangle in view pixels (x to the right, y down from the top-left corner).
    void set_rectangle(const ixo_box2<float>& rectangle);
    const ixo_box2<float>& get_rectangle() const;

    // Always empty.
    ixo_box3<float> get_object_bounds() const override;
    // Draws the closed outline with the device's shared line drawer in the diffuse colour of
    // the current material. Without device or line drawer nothing is drawn. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;

    ixo_scene_rectangle& operator=(const ixo_scene_rectangle& other);

protected:
    ixo_scene_rectangle();
    ixo_scene_rectangle(const ixo_scene_rectangle& other);
    ~ixo_scene_rectangle() override;

private:
    ixo_box2<float> rectangle_;
};
