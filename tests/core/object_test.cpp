#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

#include <cstdint>

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
