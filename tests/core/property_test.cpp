#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

namespace
{

// A second concrete property, to check that type numbers tell properties apart.
class length_property : public ixo_property
{
public:
    static ixo_object_ptr<length_property> create() { return new length_property; }
    unsigned long type() const override
    {
        static unsigned long const t = ixo_assign_object_type();
        return t;
    }
    ixo_string const& type_name() const override
    {
        static ixo_string const name(IXO_TEXT("Length Property"));
        return name;
    }
};

} // namespace

TEST(unique_name_manager, registers_each_name_once)
{
    auto names = ixo_unique_name_manager::create();
    ASSERT_NE(names, nullptr);
    ixo_string const rotor(IXO_TEXT("Rotor 1"));
    EXPECT_FALSE(names->is_name_taken(rotor));
    EXPECT_TRUE(names->add_name(rotor));
    EXPECT_FALSE(names->add_name(ixo_string("Rotor 1")));
    EXPECT_TRUE(names->is_name_taken(rotor));

    // Case and every code unit count.
    EXPECT_FALSE(names->is_name_taken(ixo_string(IXO_TEXT("rotor 1"))));
    EXPECT_FALSE(names->is_name_taken(ixo_string(IXO_TEXT("Rotor 1 "))));
    EXPECT_TRUE(names->add_name(ixo_string(IXO_TEXT("ROTOR 1"))));

    // The empty name is a name like any other; a string without buffer is the same one.
    EXPECT_TRUE(names->add_name(ixo_string(IXO_TEXT(""))));
    EXPECT_TRUE(names->is_name_taken(ixo_string()));

    EXPECT_TRUE(names->remove_name(rotor));
    EXPECT_FALSE(names->is_name_taken(rotor));
    EXPECT_FALSE(names->remove_name(rotor));
    EXPECT_TRUE(names->is_name_taken(ixo_string(IXO_TEXT("ROTOR 1"))));
    EXPECT_TRUE(names->add_name(rotor));
}

TEST(name_property, default_name_type_and_copies)
{
    auto p = ixo_name_property::create();
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->get_name(), IXO_TEXT("Unnamed Object"));
    EXPECT_EQ(ixo_name_property::default_name(), IXO_TEXT("Unnamed Object"));
    EXPECT_EQ(p->type_name(), IXO_TEXT("Name Property"));
    EXPECT_EQ(ixo_name_property::static_type_name(), IXO_TEXT("Name Property"));

    p->set_name(ixo_string(IXO_TEXT("Shaft")));
    EXPECT_EQ(p->get_name(), IXO_TEXT("Shaft"));
    // Renaming one property leaves the default and other properties alone.
    EXPECT_EQ(ixo_name_property::default_name(), IXO_TEXT("Unnamed Object"));
    EXPECT_EQ(ixo_name_property::create()->get_name(), IXO_TEXT("Unnamed Object"));

    auto q = ixo_name_property::create();
    *q = *p;
    EXPECT_EQ(q->get_name(), IXO_TEXT("Shaft"));
    q->set_name(ixo_string(IXO_TEXT("Stator")));
    EXPECT_EQ(p->get_name(), IXO_TEXT("Shaft"));

    // Through the base: the type number is the class's, stable, valid and distinct.
    ixo_object_ptr<ixo_property> base = p;
    unsigned long const t = base->type();
    EXPECT_NE(t, ixo_invalid_object_type);
    EXPECT_EQ(t, ixo_name_property::static_type());
    EXPECT_EQ(q->type(), t);
    ixo_object_ptr<ixo_property> other = length_property::create();
    EXPECT_NE(other->type(), t);
    EXPECT_NE(other->type(), ixo_invalid_object_type);
    EXPECT_EQ(other->type_name(), IXO_TEXT("Length Property"));
    EXPECT_EQ(ixo_object_ptr<ixo_name_property>(other), nullptr);
    EXPECT_EQ(ixo_object_ptr<ixo_name_property>(base), p);
}
