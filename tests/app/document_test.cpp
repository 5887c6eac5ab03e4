#include "events/event_probe.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace
{
std::vector<std::string> hooks; // "add <id>", "remove <id>", "gone <id>"

// Logs its hooks; the two kinds below differ only in their type.
class part : public ixo_document_object
{
public:
    void on_add(ixo_object_ptr<ixo_document> doc) override
    {
        hooks.push_back("add " + std::to_string(id()));
        last_doc = doc.get();
    }
    void on_remove(ixo_object_ptr<ixo_document> doc) override
    {
        hooks.push_back("remove " + std::to_string(id()));
        last_doc = doc.get();
        if (also_on_remove)
            also_on_remove(doc);
    }

    ixo_document* last_doc = nullptr;
    std::function<void(ixo_object_ptr<ixo_document>)> also_on_remove;

protected:
    part() = default;
    ~part() override { hooks.push_back("gone " + std::to_string(id())); }
};

class part_a : public part
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<part_a> create() { return new part_a; }
};
IXO_TYPIFIED_DEFINE(part_a, "Part A")

class part_b : public part
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<part_b> create() { return new part_b; }
};
IXO_TYPIFIED_DEFINE(part_b, "Part B")

using ixo_test::started;

std::string tag(char const* what, ixo_object_ptr<ixo_document_object> const& o)
{
    return std::string(what) + " " + std::to_string(o->id());
}
} // namespace

TEST(document, starts_empty_and_stores_nothing)
{
    started s;
    ixo_object_ptr<ixo_document> doc = s.app().create_document();
    EXPECT_EQ(doc->get_first_type(), ixo_invalid_object_type);
    EXPECT_EQ(doc->get_first_object_of_type(part_a::static_type()), nullptr);
    EXPECT_TRUE(doc->get_file_name().is_empty());
    EXPECT_FALSE(doc->is_modified());
    ASSERT_TRUE(doc->get_selection());
    EXPECT_TRUE(doc->get_selection()->is_empty());
    EXPECT_EQ(doc->get_selection(), doc->get_selection());

    doc->set_file_name(IXO_TEXT("rotor.ixo"));
    doc->set_modified(true);
    EXPECT_EQ(doc->get_file_name(), ixo_string(IXO_TEXT("rotor.ixo")));
    EXPECT_TRUE(doc->is_modified());
    doc->add(part_a::create());
    EXPECT_TRUE(doc->is_modified()); // the flag is the host's
    doc->set_modified(false);

    // Saving writes nothing and loading reads nothing, objects or not.
    std::string const path = ::testing::TempDir() + "ixo_document_test.bin";
    EXPECT_TRUE(doc->save(ixo_archive::open(path.c_str(), ixo_archive::mode_write)));
    auto in = ixo_archive::open(path.c_str(), ixo_archive::mode_read);
    ASSERT_TRUE(in);
    EXPECT_TRUE(doc->load(in));
    char byte = 0;
    EXPECT_FALSE(in->read(1, &byte));
    std::remove(path.c_str());
    EXPECT_FALSE(doc->save(nullptr));
    EXPECT_FALSE(doc->load(nullptr));
    EXPECT_EQ(doc->get_first_object_of_type(part_a::static_type())->type_name().to_utf8(),
              "Part A");
    doc->clear();
    EXPECT_FALSE(doc->is_modified());
}

TEST(document, objects_by_type)
{
    started s;
    ixo_object_ptr<ixo_document> doc = s.app().create_document();
    ixo_object_ptr<part_a> a1 = part_a::create();
    ixo_object_ptr<part_a> a2 = part_a::create();
    ixo_object_ptr<part_b> b1 = part_b::create();
    unsigned long const ta = part_a::static_type();
    unsigned long const tb = part_b::static_type();
    ASSERT_NE(ta, tb);

    EXPECT_TRUE(doc->add(b1));
    EXPECT_TRUE(doc->add(a1));
    EXPECT_TRUE(doc->add(a2));
    EXPECT_EQ(a1->last_doc, doc.get());

    // Types in ascending order, each once, then 0.
    unsigned long const lo = std::min(ta, tb);
    unsigned long const hi = std::max(ta, tb);
    EXPECT_EQ(doc->get_first_type(), lo);
    EXPECT_EQ(doc->get_next_type(lo), hi);
    EXPECT_EQ(doc->get_next_type(hi), ixo_invalid_object_type);
    EXPECT_EQ(doc->get_next_type(hi + lo + 1000), ixo_invalid_object_type);

    // Appends without clearing.
    std::vector<ixo_object_ptr<ixo_document_object>> out{b1};
    doc->get_objects_of_type(ta, out);
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0], b1);
    EXPECT_TRUE((out[1] == a1 && out[2] == a2) || (out[1] == a2 && out[2] == a1));
    doc->get_objects_of_type(hi + lo + 1000, out);
    EXPECT_EQ(out.size(), 3u);

    // The walk within a type follows the same order as get_objects_of_type.
    ixo_object_ptr<ixo_document_object> first = doc->get_first_object_of_type(ta);
    EXPECT_EQ(first, out[1]);
    EXPECT_EQ(doc->get_next_object_of_type(first), out[2]);
    EXPECT_EQ(doc->get_next_object_of_type(out[2]), nullptr);
    EXPECT_EQ(doc->get_next_object_of_type(part_a::create()), nullptr);
    EXPECT_EQ(doc->get_next_object_of_type(nullptr), nullptr);
    EXPECT_EQ(doc->get_first_object_of_type(tb), b1);
    EXPECT_EQ(doc->get_next_object_of_type(b1), nullptr);

    // Removing one of two keeps the type; removing the second drops it.
    hooks.clear();
    EXPECT_TRUE(doc->remove(a1));
    EXPECT_EQ(hooks, std::vector<std::string>{tag("remove", a1)});
    EXPECT_EQ(doc->get_first_object_of_type(ta), a2);
    EXPECT_EQ(doc->get_next_type(lo), hi);
    EXPECT_TRUE(doc->remove(a2));
    EXPECT_EQ(doc->get_first_type(), tb);
    EXPECT_EQ(doc->get_next_type(tb), ixo_invalid_object_type);
    EXPECT_EQ(doc->get_next_type(ta), ixo_invalid_object_type);
    out.clear();
    doc->get_objects_of_type(ta, out);
    EXPECT_TRUE(out.empty());

    // Not in the document: false. on_remove only runs when the object's type is present.
    hooks.clear();
    EXPECT_FALSE(doc->remove(a1));
    ixo_object_ptr<part_b> b2 = part_b::create();
    EXPECT_FALSE(doc->remove(b2));
    EXPECT_EQ(hooks, std::vector<std::string>{tag("remove", b2)});
    EXPECT_FALSE(doc->remove(nullptr));
    EXPECT_FALSE(doc->add(nullptr));
    EXPECT_EQ(doc->get_first_object_of_type(tb), b1);
}

TEST(document, changes_are_bracketed_by_events)
{
    started s;
    ixo_object_ptr<ixo_document> doc = s.app().create_document();
    ixo_object_ptr<ixo_document> other = s.app().create_document();
    ixo_object_ptr<ixo_event_manager> m = s.app().get_event_manager();
    std::string log;
    // The changing handler sees the set before the change, the changed handler after it.
    auto count = [&]
    {
        std::vector<ixo_object_ptr<ixo_document_object>> all;
        for (unsigned long t = doc->get_first_type(); t; t = doc->get_next_type(t))
            doc->get_objects_of_type(t, all);
        return std::to_string(all.size());
    };
    m->subscribe(ixo_event_document_changing::create(doc),
                 ixo_test::event_function::create([&](auto) { log += "<" + count(); }));
    m->subscribe(ixo_event_document_changed::create(doc),
                 ixo_test::event_function::create([&](auto) { log += ">" + count(); }));
    ixo_object_ptr<part_a> a = part_a::create();
    ixo_object_ptr<part_b> b = part_b::create();

    hooks.clear();
    EXPECT_TRUE(doc->add(a));
    EXPECT_FALSE(doc->add(a)); // once only, but both events and on_add again
    EXPECT_EQ(log, "<0>1<1>1");
    EXPECT_EQ(hooks, (std::vector<std::string>{tag("add", a), tag("add", a)}));

    log.clear();
    doc->add(b);
    EXPECT_FALSE(doc->remove(part_a::create()));
    EXPECT_EQ(log, "<1>2<2>2");

    // Another document's events do not reach these subscriptions.
    log.clear();
    other->add(a);
    other->clear();
    EXPECT_EQ(log, "");

    hooks.clear();
    doc->clear();
    EXPECT_EQ(log, "<2>0");
    ASSERT_EQ(hooks.size(), 2u);
    EXPECT_EQ(std::count(hooks.begin(), hooks.end(), tag("remove", a)), 1);
    EXPECT_EQ(std::count(hooks.begin(), hooks.end(), tag("remove", b)), 1);
    EXPECT_EQ(a->last_doc, doc.get());

    // A hook that changes the document while it is being cleared.
    doc->add(a);
    doc->add(b);
    a->also_on_remove = [&](ixo_object_ptr<ixo_document> d) { d->remove(b); };
    b->also_on_remove = [&](ixo_object_ptr<ixo_document> d) { d->remove(a); };
    doc->clear();
    a->also_on_remove = nullptr;
    b->also_on_remove = nullptr;
    EXPECT_EQ(doc->get_first_type(), ixo_invalid_object_type);

    // While the manager holds, the bracketing events wait and then arrive in order.
    log.clear();
    m->hold(true);
    doc->add(a);
    doc->remove(a);
    EXPECT_EQ(log, "");
    m->hold(false);
    EXPECT_EQ(log, "<0>0<0>0");
}

namespace
{
class colour_property : public ixo_property
{
    IXO_TYPIFIED_DECLARE()

public:
    static ixo_object_ptr<colour_property> create() { return new colour_property; }

private:
    colour_property() = default;
    ~colour_property() override = default;
};
IXO_TYPIFIED_DEFINE(colour_property, "Colour Property")
} // namespace

TEST(document_object, properties)
{
    ixo_object_ptr<part_a> o = part_a::create();
    unsigned long const name_type = ixo_name_property::static_type();
    unsigned long const colour_type = colour_property::static_type();
    EXPECT_FALSE(o->has_property(name_type));
    EXPECT_EQ(o->get_property(name_type), nullptr);

    ixo_object_ptr<ixo_name_property> first = ixo_name_property::create();
    ixo_name_property* raw_first = first.get();
    first->set_name(IXO_TEXT("shaft"));
    o->add_property(first);
    first = nullptr; // the object holds it
    EXPECT_EQ(raw_first->get_name(), ixo_string(IXO_TEXT("shaft")));

    ixo_object_ptr<ixo_name_property> second = ixo_name_property::create();
    o->add_property(second); // same type: replaces the first
    EXPECT_EQ(o->get_property(name_type), second);
    o->add_property(colour_property::create());
    o->add_property(nullptr);
    EXPECT_TRUE(o->has_property(name_type));
    EXPECT_TRUE(o->has_property(colour_type));
    EXPECT_FALSE(o->has_property(ixo_assign_object_type()));

    ixo_object_ptr<ixo_name_property> found(o->get_property(name_type));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->get_name(), ixo_name_property::default_name());
    EXPECT_FALSE(ixo_object_ptr<colour_property>(o->get_property(name_type)));

    o->remove_property(name_type);
    o->remove_property(name_type); // absent: nothing happens
    EXPECT_FALSE(o->has_property(name_type));
    EXPECT_TRUE(o->has_property(colour_type));
}
