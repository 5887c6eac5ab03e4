#include "scene/scene_probe.h"

#include <ixocore/ixocore.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace
{
using color = ixo_vector4<unsigned char>;
using prop = ixo_scene_object::property;
using v3 = ixo_vector3<float>;
using ixo_test::box_is;
using ixo_test::near;

} // namespace

TEST(scene_object, defaults_property_range_and_flashing)
{
    auto o = ixo_scene_object::create();
    EXPECT_EQ(o->type_name(), ixo_string(IXO_TEXT("Generic Object")));
    EXPECT_EQ(o->type(), ixo_scene_object::static_type());
    EXPECT_NE(o->type(), ixo_invalid_object_type);

    for (int p = 0; p < 16; ++p)
    {
        bool const on = p == ixo_scene_object::visible || p == ixo_scene_object::in_foreground ||
                        p == ixo_scene_object::depth_test || p == ixo_scene_object::depth_write;
        EXPECT_EQ(o->get_property(static_cast<prop>(p)), on) << "property " << p;
    }
    EXPECT_TRUE(near(o->get_actual_color(), v3(196 / 255.0f, 196 / 255.0f, 196 / 255.0f)));
    EXPECT_FLOAT_EQ(o->get_actual_alpha(), 1.0f);
    EXPECT_EQ(o->get_color(), color(196, 196, 196, 255));
    EXPECT_EQ(o->get_flash_color(), color(255, 0, 0, 255));
    EXPECT_EQ(o->get_flash_color1(), color(0, 0, 255, 255));
    EXPECT_EQ(o->get_flash_time(), -1);
    EXPECT_TRUE(o->get_transform().is_identity());
    EXPECT_TRUE(o->get_object_bounds().empty());
    EXPECT_TRUE(o->get_bounds().empty());
    EXPECT_EQ(o->get_child(0), nullptr);
    EXPECT_EQ(o->get_child(-1), nullptr);

    // The unused values still hold a bit; 16 and above are refused.
    o->set_property(static_cast<prop>(5), true);
    EXPECT_TRUE(o->get_property(static_cast<prop>(5)));
    EXPECT_THAT(
        [&] { o->set_property(static_cast<prop>(16), true); },
        ::testing::ThrowsMessage<std::out_of_range>(::testing::HasSubstr("invalid bitset")));
    EXPECT_THROW(o->get_property(static_cast<prop>(40)), std::out_of_range);
    EXPECT_THROW(o->get_property(static_cast<prop>(-1)), std::out_of_range);

    // Flashing alternates the two flash colours only with a positive period.
    o = ixo_scene_object::create();
    color const own(10, 20, 30, 40);
    o->set_color(own);
    o->flash();
    EXPECT_EQ(o->get_color(), own);
    o->set_flash_time(0);
    o->flash();
    EXPECT_EQ(o->get_color(), own);

    o->set_flash_time(500);
    o->set_flash_color(color(1, 2, 3, 4));
    o->set_flash_color1(color(5, 6, 7, 8));
    o->flash();
    EXPECT_EQ(o->get_color(), color(1, 2, 3, 4));
    o->flash();
    EXPECT_EQ(o->get_color(), color(5, 6, 7, 8));
    o->flash();
    EXPECT_EQ(o->get_color(), color(1, 2, 3, 4));
    EXPECT_EQ(o->get_flash_time(), 500);
}

TEST(scene_object, inherited_attributes_follow_the_parent_only_when_asked)
{
    auto top = ixo_scene_object::create();
    auto mid = ixo_scene_object::create();
    auto leaf = ixo_scene_object::create();
    top->add_child(mid);
    mid->add_child(leaf);
    top->set_color(color(255, 0, 51, 102));
    mid->set_color(color(0, 255, 0, 255));
    leaf->set_color(color(0, 0, 255, 51));

    // Alpha from above, own colour.
    leaf->set_property(ixo_scene_object::inherit_alpha, true);
    EXPECT_TRUE(near(leaf->get_actual_color(), v3(0.0f, 0.0f, 1.0f)));
    EXPECT_FLOAT_EQ(leaf->get_actual_alpha(), 1.0f);
    // The chain goes as far up as the inherit properties reach.
    mid->set_property(ixo_scene_object::inherit_alpha, true);
    EXPECT_FLOAT_EQ(leaf->get_actual_alpha(), 0.4f);
    leaf->set_property(ixo_scene_object::inherit_color, true);
    EXPECT_TRUE(near(leaf->get_actual_color(), v3(0.0f, 1.0f, 0.0f)));
    mid->set_property(ixo_scene_object::inherit_color, true);
    EXPECT_TRUE(near(leaf->get_actual_color(), v3(1.0f, 0.0f, 0.2f)));
    // Without a parent an inherit property falls back on the object's own value.
    EXPECT_TRUE(near(top->get_actual_color(), v3(1.0f, 0.0f, 0.2f)));
    top->set_property(ixo_scene_object::inherit_color, true);
    EXPECT_TRUE(near(leaf->get_actual_color(), v3(1.0f, 0.0f, 0.2f)));

    top->set_property(ixo_scene_object::visible, false);
    top->set_property(ixo_scene_object::transparent, true);
    top->set_property(ixo_scene_object::depth_test, false);
    top->set_property(ixo_scene_object::depth_write, false);
    EXPECT_TRUE(mid->get_actual_visible());
    EXPECT_FALSE(mid->get_actual_transparent());
    EXPECT_TRUE(mid->get_actual_depth_test());
    EXPECT_TRUE(mid->get_actual_depth_write());
    for (prop p : {ixo_scene_object::inherit_visible, ixo_scene_object::inherit_transparent,
                   ixo_scene_object::inherit_depth_test, ixo_scene_object::inherit_depth_write})
    {
        mid->set_property(p, true);
        leaf->set_property(p, true);
    }
    EXPECT_FALSE(leaf->get_actual_visible());
    EXPECT_TRUE(leaf->get_actual_transparent());
    EXPECT_FALSE(leaf->get_actual_depth_test());
    EXPECT_FALSE(leaf->get_actual_depth_write());
    // Breaking the chain in the middle takes the middle's own values.
    mid->set_property(ixo_scene_object::inherit_visible, false);
    mid->set_property(ixo_scene_object::inherit_depth_write, false);
    EXPECT_TRUE(leaf->get_actual_visible());
    EXPECT_TRUE(leaf->get_actual_depth_write());
    EXPECT_FALSE(leaf->get_actual_depth_test());
}

TEST(scene_object, tree_links_and_lifetime)
{
    probe_log log;
    auto a = ixo_scene_object::create();
    auto b = ixo_scene_object::create();
    auto x = probe::create(log, "x");
    auto y = probe::create(log, "y");

    a->add_child(x);
    a->add_child(x); // already there: not duplicated
    a->add_child_front(y);
    ASSERT_EQ(a->get_num_children(), 2);
    EXPECT_EQ(a->get_child(0), y);
    EXPECT_EQ(a->get_child(1), x);
    EXPECT_EQ(x->get_parent(), a);

    // Moving to another parent takes the child from the first.
    b->add_child(x);
    EXPECT_EQ(a->get_num_children(), 1);
    EXPECT_EQ(x->get_parent(), b);

    // No cycles: an ancestor or the object itself cannot become a child.
    b->add_child(b);
    x->add_child(b);
    EXPECT_EQ(b->get_parent(), nullptr);
    EXPECT_EQ(x->get_num_children(), 0);
    b->add_child(nullptr);
    b->remove_child(nullptr);
    b->remove_child(y); // not a child of b
    EXPECT_EQ(y->get_parent(), a);

    a->remove_child(y);
    EXPECT_EQ(y->get_parent(), nullptr);
    EXPECT_EQ(a->get_num_children(), 0);

    // A subtree goes as a whole when its last outside reference goes.
    auto deep = ixo_scene_object::create();
    {
        ixo_object_ptr<ixo_scene_object> at = deep;
        for (int i = 0; i < 50; ++i)
        {
            auto next = probe::create(log, "d");
            at->add_child(next);
            at = next;
        }
    }
    deep = nullptr;
    EXPECT_EQ(log.destroyed, 50);

    // A parent that goes detaches the children others still hold.
    b = nullptr;
    EXPECT_EQ(x->get_parent(), nullptr);
    EXPECT_EQ(log.destroyed, 50);
}

TEST(scene_object, draw_rules_for_passes_visibility_and_transparency)
{
    probe_log log;
    auto root = probe::create(log, "root");
    root->set_property(ixo_scene_object::in_background, true);
    auto back = probe::create(log, "back");
    back->set_property(ixo_scene_object::in_background, true);
    back->set_property(ixo_scene_object::in_foreground, false);
    auto hidden = probe::create(log, "hidden");
    hidden->set_property(ixo_scene_object::visible, false);
    auto shown = probe::create(log, "shown");
    auto glass = probe::create(log, "glass");
    glass->set_property(ixo_scene_object::transparent, true);
    glass->set_property(ixo_scene_object::cast_shadow, true);
    auto under_back = probe::create(log, "under_back");
    under_back->set_property(ixo_scene_object::in_background, true);
    root->add_child(back);
    back->add_child(under_back);
    root->add_child(hidden);
    hidden->add_child(shown);
    root->add_child(glass);

    ixo_scene_draw_data d;
    d.set_background(true);
    EXPECT_TRUE(root->draw(d));
    EXPECT_EQ(log.take(), "root/b back/b under_back/b");

    d.set_background(false);
    d.set_foreground(true);
    EXPECT_TRUE(root->draw(d));
    // Not in the foreground: neither back nor its child. The hidden object's child is drawn.
    EXPECT_EQ(log.take(), "root/f shown/f");
    d.set_transparent(true);
    EXPECT_TRUE(root->draw(d));
    EXPECT_EQ(log.take(), "glass/t");

    // The shadow pass draws the casters only, opaque or not as the pass says.
    ixo_scene_draw_data s;
    s.set_mapping_shadows(true);
    EXPECT_TRUE(root->draw(s));
    EXPECT_EQ(log.take(), "");
    shown->set_property(ixo_scene_object::cast_shadow, true);
    EXPECT_TRUE(root->draw(s));
    EXPECT_EQ(log.take(), "shown/f");

    // A transparent parent passes it on only to children that inherit it.
    shown->set_property(ixo_scene_object::inherit_transparent, true);
    hidden->set_property(ixo_scene_object::transparent, true);
    d.set_transparent(false);
    EXPECT_TRUE(root->draw(d));
    EXPECT_EQ(log.take(), "root/f");

    // A failing object fails the draw; its children are still drawn, its later siblings not.
    d.set_transparent(true);
    hidden->set_property(ixo_scene_object::visible, true);
    hidden->draw_answer = false;
    EXPECT_FALSE(root->draw(d));
    EXPECT_EQ(log.take(), "hidden/t shown/t");
}

TEST(scene_object, reset_hooks_visit_children_and_object_in_order)
{
    probe_log log;
    auto root = probe::create(log, "r");
    auto a = probe::create(log, "a");
    auto b = probe::create(log, "b");
    auto a1 = probe::create(log, "a1");
    root->add_child(a);
    root->add_child(b);
    a->add_child(a1);

    EXPECT_TRUE(root->pre_reset());
    EXPECT_EQ(log.take(), "pre a1 pre a pre b pre r");
    EXPECT_TRUE(root->post_reset());
    EXPECT_EQ(log.take(), "post r post a post a1 post b");

    // A failing child stops its later siblings but not its parent's own hook.
    a->reset_answer = false;
    EXPECT_FALSE(root->pre_reset());
    EXPECT_EQ(log.take(), "pre a1 pre a pre r");
    EXPECT_FALSE(root->post_reset());
    EXPECT_EQ(log.take(), "post r post a post a1");
}
