#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <map>
#include <set>

namespace
{
int destroyed = 0;

class base_thing : public ixo_object, public ixo_identifiable_object
{
public:
    static ixo_object_ptr<base_thing> create() { return new base_thing; }
    static ixo_object_ptr<base_thing> create_with_id(unsigned long id)
    {
        return new base_thing(id);
    }
    base_thing* clone() const { return new base_thing(*this); }

protected:
    base_thing() = default;
    explicit base_thing(unsigned long id) : ixo_identifiable_object(id) {}
    base_thing(base_thing const&) = default;
    ~base_thing() override { ++destroyed; }
};

class derived_thing : public base_thing
{
public:
    static ixo_object_ptr<derived_thing> create() { return new derived_thing; }

private:
    ~derived_thing() override = default;
};

class other_thing : public base_thing
{
public:
    static ixo_object_ptr<other_thing> create() { return new other_thing; }
};

class first_kind : public ixo_object, public ixo_typified_object
{
    IXO_TYPIFIED_DECLARE()
};
IXO_TYPIFIED_DEFINE(first_kind, IXO_TEXT("First Kind"))

class second_kind : public ixo_object, public ixo_typified_object
{
    IXO_TYPIFIED_DECLARE()
};
IXO_TYPIFIED_DEFINE(second_kind, "Second Kind")

// The count without changing it.
int count_of(ixo_object* o)
{
    int const count = o->add_ref();
    o->release();
    return count - 1;
}

// The bytes a surface in ARGB layout would hold for a colour: blue, green, red, alpha.
ixo_vector4<unsigned char> surface_bytes(ixo_vector4<float> const& c)
{
    auto byte = [](float v) { return static_cast<unsigned char>(std::lround(v * 255.0f)); };
    return {byte(c[2]), byte(c[1]), byte(c[0]), byte(c[3])};
}
} // namespace

TEST(object, counts_follow_smart_pointers)
{
    int const before = destroyed;
    base_thing* raw = nullptr;
    {
        ixo_object_ptr<base_thing> a = base_thing::create();
        raw = a.get();
        EXPECT_EQ(count_of(raw), 1);
        {
            ixo_object_ptr<base_thing> b = a;
            EXPECT_EQ(count_of(raw), 2);
            b = a; // same object: nothing happens
            EXPECT_EQ(count_of(raw), 2);
            a = a;
            EXPECT_EQ(count_of(raw), 2);
            ixo_object_ptr<base_thing> c(raw); // wrapping the plain pointer again is safe
            EXPECT_EQ(count_of(raw), 3);
            ixo_object_ptr<base_thing> moved = std::move(c);
            EXPECT_FALSE(c);
            EXPECT_EQ(count_of(raw), 3);
        }
        EXPECT_EQ(count_of(raw), 1);
        EXPECT_EQ(destroyed, before);
        ixo_object_ptr<base_thing> other = base_thing::create();
        a = other; // releases the first object
        EXPECT_EQ(destroyed, before + 1);
        EXPECT_EQ(count_of(other.get()), 2);
        a = nullptr;
        EXPECT_EQ(a, nullptr);
        EXPECT_EQ(count_of(other.get()), 1);
    }
    EXPECT_EQ(destroyed, before + 2);

    EXPECT_TRUE(ixo_object::allocation_check(base_thing::create().get()));
    EXPECT_FALSE(ixo_object::allocation_check(nullptr));
    ixo_object_ptr<base_thing> empty;
    EXPECT_FALSE(empty);
    EXPECT_EQ(empty.get(), nullptr);
    EXPECT_TRUE(empty == nullptr && nullptr == empty);
}

TEST(object, casts_between_classes)
{
    ixo_object_ptr<derived_thing> d = derived_thing::create();
    ixo_object_ptr<base_thing> b = d; // implicit up-cast
    ixo_object_ptr<ixo_object> o = b;
    EXPECT_EQ(count_of(d.get()), 3);
    EXPECT_TRUE(o == d);

    ixo_object_ptr<derived_thing> back(o); // run-time down-cast
    EXPECT_EQ(back, d);
    EXPECT_EQ(count_of(d.get()), 4);

    ixo_object_ptr<other_thing> wrong(b); // not an other_thing
    EXPECT_FALSE(wrong);
    EXPECT_EQ(b, d); // the source is untouched
    EXPECT_EQ(count_of(d.get()), 4);

    ixo_object_ptr<base_thing> none;
    EXPECT_FALSE(ixo_object_ptr<derived_thing>(none));

    // An identified object found by number reaches its full class by a down-cast.
    ixo_identifiable_object* found = ixo_object_from_id(d->id());
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(dynamic_cast<derived_thing*>(found), d.get());
    EXPECT_EQ(dynamic_cast<other_thing*>(found), nullptr);
}

TEST(object, smart_pointers_order_as_keys)
{
    ixo_object_ptr<base_thing> a = base_thing::create();
    ixo_object_ptr<base_thing> b = base_thing::create();
    std::set<ixo_object_ptr<base_thing>> set{a, b, a};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_EQ(*set.begin(), std::less<base_thing*>{}(a.get(), b.get()) ? a : b);
    EXPECT_NE(a, b);
    EXPECT_TRUE((a < b) != (b < a));
    std::map<ixo_object_ptr<base_thing>, int> map;
    map[a] = 1;
    map[ixo_object_ptr<base_thing>(a.get())] = 2;
    EXPECT_EQ(map.size(), 1u);
    EXPECT_EQ(map[a], 2);
    EXPECT_EQ(count_of(a.get()), 3); // a, the set, the map
}

TEST(identifiers, generated_in_order_and_never_reused)
{
    ixo_object_ptr<base_thing> a = base_thing::create();
    ixo_object_ptr<base_thing> b = base_thing::create();
    ixo_object_ptr<base_thing> c = base_thing::create();
    EXPECT_NE(a->id(), ixo_invalid_object_id);
    EXPECT_EQ(b->id(), a->id() + 1);
    EXPECT_EQ(c->id(), b->id() + 1);
    EXPECT_EQ(ixo_object_from_id(b->id()), static_cast<ixo_identifiable_object*>(b.get()));

    unsigned long const freed = b->id();
    b = nullptr;
    EXPECT_EQ(ixo_object_from_id(freed), nullptr);
    ixo_object_ptr<base_thing> d = base_thing::create();
    EXPECT_EQ(d->id(), c->id() + 1);
    EXPECT_EQ(ixo_object_from_id(freed), nullptr);

    // A copy is another object with an identifier of its own.
    ixo_object_ptr<base_thing> copy(d->clone());
    EXPECT_EQ(copy->id(), d->id() + 1);
    EXPECT_EQ(ixo_object_from_id(d->id()), static_cast<ixo_identifiable_object*>(d.get()));

    EXPECT_EQ(ixo_object_from_id(ixo_invalid_object_id), nullptr);
}

TEST(identifiers, requested_identifiers)
{
    ixo_object_ptr<base_thing> probe = base_thing::create();
    unsigned long const wanted = probe->id() + 1000;

    ixo_object_ptr<base_thing> fresh = base_thing::create();
    unsigned long const former = fresh->id();
    EXPECT_TRUE(fresh->request_id(wanted));
    EXPECT_EQ(fresh->id(), wanted);
    EXPECT_EQ(ixo_object_from_id(wanted), static_cast<ixo_identifiable_object*>(fresh.get()));
    EXPECT_EQ(ixo_object_from_id(former), nullptr); // released at the change
    EXPECT_EQ(base_thing::create()->id(), wanted + 1);

    // Taken by a living object: refused, nothing changes.
    EXPECT_FALSE(probe->request_id(wanted));
    EXPECT_EQ(ixo_object_from_id(wanted), static_cast<ixo_identifiable_object*>(fresh.get()));
    EXPECT_FALSE(probe->request_id(ixo_invalid_object_id));
    EXPECT_FALSE(probe->request_id(1ul << 40));
    EXPECT_NE(probe->id(), ixo_invalid_object_id);

    // Construction with a taken identifier falls back to a generated one; with a free one
    // takes it.
    ixo_object_ptr<base_thing> clash = base_thing::create_with_id(wanted);
    EXPECT_NE(clash->id(), wanted);
    EXPECT_GT(clash->id(), wanted);
    ixo_object_ptr<base_thing> chosen = base_thing::create_with_id(wanted + 500);
    EXPECT_EQ(chosen->id(), wanted + 500);
    fresh = nullptr;
    EXPECT_EQ(ixo_object_from_id(wanted), nullptr);
    EXPECT_EQ(ixo_object_from_id(former), nullptr);
}

TEST(identifiers, generator_bounds)
{
    // A generator of its own; the objects are listed in the process's generator as well.
    ixo_id_generator g;
    ixo_object_ptr<base_thing> const ox = base_thing::create();
    ixo_object_ptr<base_thing> const oy = base_thing::create();
    ixo_identifiable_object* x = ox.get();
    ixo_identifiable_object* y = oy.get();
    EXPECT_EQ(g.generate_id(x), 1u);
    EXPECT_EQ(g.generate_id(y), 2u);
    EXPECT_EQ(g.object_from_id(2), y);
    EXPECT_TRUE(g.destroy_id(2));
    EXPECT_FALSE(g.destroy_id(2));
    EXPECT_EQ(g.object_from_id(2), nullptr);
    EXPECT_EQ(g.generate_id(y), 3u);

    EXPECT_TRUE(g.request_id(1000, x));
    EXPECT_EQ(g.generate_id(x), 1001u);
    EXPECT_TRUE(g.request_id(500, y)); // below next: next stays
    EXPECT_EQ(g.generate_id(y), 1002u);
    EXPECT_FALSE(g.request_id(500, x));
    EXPECT_EQ(g.object_from_id(500), y);
    EXPECT_FALSE(g.request_id(0, x));
    EXPECT_FALSE(g.request_id(0x100000000ul, x));
    EXPECT_EQ(g.object_from_id(0x100000000ul + 500), nullptr);

    // The last identifier can be taken; after it the generator is spent and answers the
    // invalid identifier rather than wrapping around onto identifiers in use.
    EXPECT_TRUE(g.request_id(0xffffffffu, x));
    EXPECT_EQ(g.generate_id(y), ixo_invalid_object_id);
    EXPECT_EQ(g.object_from_id(1), x);
}

TEST(identifiers, colour_encoding)
{
    // The lowest byte is red, the highest alpha; surfaces hold blue, green, red, alpha.
    ixo_vector4<float> const c = ixo_id_to_color(0x04030201);
    for (int i = 0; i < 4; ++i)
        EXPECT_FLOAT_EQ(c[i], (i + 1) / 255.0f) << i;
    EXPECT_EQ(ixo_id_from_color({3, 2, 1, 4}), 0x04030201u);
    EXPECT_EQ(ixo_id_from_color({0, 0, 0, 0}), ixo_invalid_object_id);

    for (unsigned long id :
         std::initializer_list<unsigned long>{1ul, 255ul, 256ul, 0x10000ul, 0x00ff00ffu,
                                              0x7fffffffu, 0x80000001u, 0xfffffffeu, 0xffffffffu})
        EXPECT_EQ(ixo_id_from_color(surface_bytes(ixo_id_to_color(id))), id) << id;
}

TEST(types, numbers_are_given_lazily_and_kept)
{
    // Neither class has been asked before: the one asked first gets the smaller number, and
    // any number handed out in between lies between them.
    unsigned long const second = second_kind::static_type();
    unsigned long const between = ixo_assign_object_type();
    EXPECT_EQ(ixo_assign_object_type(), between + 1); // each number is new
    unsigned long const first = first_kind::static_type();
    EXPECT_NE(second, ixo_invalid_object_type);
    EXPECT_LT(second, between);
    EXPECT_LT(between, first);
    EXPECT_EQ(first_kind::static_type(), first);
    EXPECT_EQ(second_kind::static_type(), second);

    first_kind f;
    ixo_typified_object const& typed = f;
    EXPECT_EQ(typed.type(), first);
    EXPECT_EQ(typed.type_name().to_utf8(), "First Kind");
    EXPECT_EQ(&typed.type_name(), &first_kind::static_type_name());
    EXPECT_EQ(second_kind::static_type_name().to_utf8(), "Second Kind");
}
