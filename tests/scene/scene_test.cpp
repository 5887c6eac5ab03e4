#include "events/event_probe.h"
#include "scene/scene_probe.h"

#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

#include <string>

namespace
{
// Logs the scene-changing and scene-changed events of one scene.
struct scene_events : ixo_test::change_log
{
    void watch(const ixo_object_ptr<ixo_scene>& scene)
    {
        change_log::watch<ixo_event_scene_changing, ixo_event_scene_changed>(scene);
    }
};

} // namespace

TEST(scene, root_settings_lights_and_flags)
{
    auto scene = ixo_scene::create();
    auto root = scene->get_root();
    ASSERT_TRUE(root);
    EXPECT_EQ(root->get_scene(), scene);
    EXPECT_EQ(root->get_parent(), nullptr);
    EXPECT_TRUE(root->get_property(ixo_scene_object::in_foreground));
    EXPECT_TRUE(root->get_property(ixo_scene_object::in_background));
    EXPECT_TRUE(root->get_property(ixo_scene_object::inherit_color));
    EXPECT_TRUE(root->get_property(ixo_scene_object::visible));
    EXPECT_TRUE(scene->do_full_update());
    scene->set_full_update(false);
    EXPECT_FALSE(scene->do_full_update());

    auto l1 = ixo_light::create(0);
    auto l2 = ixo_light::create(1);
    scene->add_light(l1);
    scene->add_light(l2);
    scene->add_light(l1);
    scene->add_light(nullptr);
    ASSERT_EQ(scene->get_num_lights(), 3);
    scene->remove_light(l1); // the first entry only
    ASSERT_EQ(scene->get_num_lights(), 2);
    EXPECT_EQ(scene->get_light(0), l2);
    EXPECT_EQ(scene->get_light(1), l1);
    EXPECT_EQ(scene->get_light(2), nullptr);
    scene->remove_light(ixo_light::create(3));
    EXPECT_EQ(scene->get_num_lights(), 2);
    scene->remove_all_lights();
    EXPECT_EQ(scene->get_num_lights(), 0);
}

TEST(scene, tree_changes_raise_one_event_pair_in_order)
{
    scene_events events;
    probe_log log;
    auto scene = ixo_scene::create();
    auto other = ixo_scene::create();
    events.watch(scene);
    auto root = scene->get_root();

    auto a = probe::create(log, "a");
    auto a1 = probe::create(log, "a1");
    // Building a detached subtree raises nothing.
    a->add_child(a1);
    EXPECT_EQ(events.take(), "");

    root->add_child(a);
    EXPECT_EQ(events.take(), "<>");
    EXPECT_EQ(a1->get_scene(), scene);
    root->add_child(a); // already a child: nothing
    EXPECT_EQ(events.take(), "");

    auto b = probe::create(log, "b");
    root->add_child_front(b);
    EXPECT_EQ(events.take(), "<>");
    EXPECT_EQ(root->get_child(0), b);

    // Moving a1 from a to b: the outer pair brackets the pair of the removal.
    b->add_child(a1);
    EXPECT_EQ(events.take(), "<<>>");
    EXPECT_EQ(a1->get_parent(), b);

    // Moving into another scene: this scene sees the removal only.
    other->get_root()->add_child(a1);
    EXPECT_EQ(events.take(), "<>");
    EXPECT_EQ(a1->get_scene(), other);

    root->remove_child(a1); // not a child
    EXPECT_EQ(events.take(), "");
    root->remove_child(a);
    EXPECT_EQ(events.take(), "<>");
    EXPECT_EQ(a->get_scene(), nullptr);

    root->remove_all_children();
    EXPECT_EQ(events.take(), "<>");
    EXPECT_EQ(b->get_scene(), nullptr);
    EXPECT_EQ(b->get_parent(), nullptr);
    root->remove_all_children(); // raised even when empty
    EXPECT_EQ(events.take(), "<>");

    // While the manager holds, the events queue in order.
    auto manager = ixo_event_manager::get_app_event_manager();
    manager->hold(true);
    root->add_child(a);
    root->add_child(b);
    EXPECT_EQ(events.take(), "");
    manager->hold(false);
    EXPECT_EQ(events.take(), "<><>");
}

TEST(scene, destroying_the_scene_frees_the_tree_and_detaches_what_others_hold)
{
    scene_events events;
    probe_log log;
    auto kept = probe::create(log, "kept");
    {
        auto scene = ixo_scene::create();
        events.watch(scene);
        ixo_object_ptr<ixo_scene_object> at = scene->get_root();
        for (int i = 0; i < 20; ++i)
        {
            auto next = probe::create(log, "n");
            at->add_child(next);
            at = next;
            if (i == 5)
                at->add_child(kept);
        }
        events.take();
        ixo_application::instance()->get_event_manager()->unsubscribe_all();
    }
    EXPECT_EQ(log.destroyed, 20);
    EXPECT_EQ(kept->get_scene(), nullptr);
    EXPECT_EQ(kept->get_parent(), nullptr);
}

TEST(scene, passes_without_device_and_reset_forwarding)
{
    probe_log log;
    auto scene = ixo_scene::create();
    auto p = probe::create(log, "p");
    auto q = probe::create(log, "q");
    scene->get_root()->add_child(p);
    p->add_child(q);

    EXPECT_TRUE(scene->pre_reset());
    EXPECT_EQ(log.take(), "pre q pre p");
    EXPECT_TRUE(scene->post_reset());
    EXPECT_EQ(log.take(), "post p post q");
    q->reset_answer = false;
    EXPECT_FALSE(scene->post_reset());
    log.take();

    // Without lights the shadow pass has nothing to do and succeeds at once.
    ixo_scene_draw_data shadows;
    shadows.set_mapping_shadows(true);
    long const before = static_cast<long>(GetTickCount());
    EXPECT_TRUE(scene->draw(shadows));
    EXPECT_GE(scene->get_last_render_time(), before);
    EXPECT_LE(scene->get_last_render_time(), static_cast<long>(GetTickCount()));
    // Without an application there is no device to draw on.
    ixo_scene_draw_data normal;
    EXPECT_FALSE(scene->draw(normal));
    ixo_scene_draw_data picking;
    picking.set_mapping(true);
    EXPECT_FALSE(scene->draw(picking));
    EXPECT_EQ(log.take(), "");
}
