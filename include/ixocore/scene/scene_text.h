#pragma once
// ixo_scene_text: a string written in view pixels, centred on the screen position of a model
// point, in the object's colour with the device's shared font. It takes no space in the
// scene: its bounds are the single point at the origin.

#include <ixocore/core/api.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/string.h>
#include <ixocore/math/vector.h>
#include <ixocore/scene/scene_object.h>

class IXO_API ixo_scene_text : public ixo_scene_object
{
    IXO_TYPIFIED_DECLARE()

public:
    // A text at the origin, or at the model point (x, y, z).
    static ixo_object_ptr<ixo_scene_text> create(const ixo_string& text);
    static ixo_object_ptr<ixo_scene_text> create(const ixo_string& text, float x, float y, float z);

    void update_text(const ixo_string& text);
    const ixo_string& get_text() const { return text_; }
    // The model point the text is centred on, in world coordinates (the object's own
    // transform does not move it).
    void update_position(float x, float y, float z);
    const ixo_vector3<float>& get_position() const { return position_; }

    // The point (0, 0, 0) to (0, 0, 0).
    ixo_box3<float> get_object_bounds() const override;
    // Measures the text (w × h pixels) and draws it from (trunc(p.x - w/2), trunc(p.y - h/2))
    // unclipped, p being the camera's pixel of the position, in get_color() (alpha
    // included). Needs the draw data's render view; without one, or without device or font,
    // nothing is drawn. In the picking pass the text's rectangle is filled with the
    // identifier colour, and only when the object has the pickable property. Nothing goes into
    // a shadow map. Always true.
    bool draw_object(const ixo_scene_draw_data& d) override;

    ixo_scene_text& operator=(const ixo_scene_text& other);

protected:
    ixo_scene_text(const ixo_string& text, const ixo_vector3<float>& position);
    ixo_scene_text(const ixo_scene_text& other);
    ~ixo_scene_text() override;

private:
    ixo_string text_;
    ixo_vector3<float> position_;
};
