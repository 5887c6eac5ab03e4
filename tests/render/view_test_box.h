#pragma once
// The library's box for render-view tests, counting its normal-pass and shadow-map-pass
// draws and able to fail in the shadow-map pass.

#include <ixocore/render/scene_draw_data.h>
#include <ixocore/scene/scene_box.h>

namespace ixo_test
{
class view_test_box : public ixo_scene_box
{
public:
    static ixo_object_ptr<view_test_box> create(float width, float height, float depth)
    {
        return ixo_object_ptr<view_test_box>(new view_test_box(width, height, depth));
    }

    bool draw_object(const ixo_scene_draw_data& d) override
    {
        if (d.do_mapping_shadows() && fail_in_shadow_pass)
            return false;
        if (d.do_mapping_shadows())
            ++shadow_draws;
        if (!d.do_mapping() && !d.do_mapping_shadows())
            ++normal_draws;
        return ixo_scene_box::draw_object(d);
    }

    int normal_draws = 0;
    int shadow_draws = 0;
    bool fail_in_shadow_pass = false;

private:
    view_test_box(float width, float height, float depth) : ixo_scene_box(width, height, depth) {}
};
} // namespace ixo_test
