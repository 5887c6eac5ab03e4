#include <ixocore/math/box.h>

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using v3 = ixo_vector3<float>;
using v2 = ixo_vector2<float>;

template <typename B, typename V> void expect_corners(const B& b, const V& min, const V& max)
{
    EXPECT_EQ(b.minimum(), min);
    EXPECT_EQ(b.maximum(), max);
}
} // namespace

TEST(box, empty_state_and_growing)
{
    ixo_box3<float> b;
    EXPECT_TRUE(b.empty());
    expect_corners(b, v3(1e30f, 1e30f, 1e30f), v3(-1e30f, -1e30f, -1e30f));
    EXPECT_EQ(b.middle(), v3(1e30f, 1e30f, 1e30f));
    EXPECT_EQ(b.extents(), v3(0, 0, 0));
    EXPECT_EQ(b.length(1), 0.0f);

    b += v3(1, 2, 3);
    EXPECT_FALSE(b.empty()); // a single point is a box
    expect_corners(b, v3(1, 2, 3), v3(1, 2, 3));
    b += v3(-1, 5, 3);
    expect_corners(b, v3(-1, 2, 3), v3(1, 5, 3));
    EXPECT_EQ(b.middle(), v3(0, 3.5f, 3));
    EXPECT_EQ(b.extents(), v3(2, 3, 0));
    EXPECT_EQ(b.length(0), 2.0f);
    EXPECT_EQ(b.length(3), 0.0f);
    EXPECT_EQ(b.length(-1), 0.0f);

    // An empty box adds nothing; a box added to an empty one is copied.
    const ixo_box3<float> before = b;
    b += ixo_box3<float>();
    expect_corners(b, before.minimum(), before.maximum());
    ixo_box3<float> copy;
    copy += before;
    expect_corners(copy, before.minimum(), before.maximum());
    b += ixo_box3<float>(v3(0, 0, 10), v3(0.5f, 1, 11));
    expect_corners(b, v3(-1, 0, 3), v3(1, 5, 11));

    b.clear();
    EXPECT_TRUE(b.empty());

    // The corners are taken as given: an inverted box counts as empty.
    const ixo_box3<float> inverted(v3(0, 2, 0), v3(1, 1, 1));
    EXPECT_TRUE(inverted.empty());
    EXPECT_EQ(inverted.minimum(), v3(0, 2, 0));
    ixo_box3<float> set;
    set.set_minimum(v3(0, 0, 0));
    EXPECT_TRUE(set.empty());
    set.set_maximum(v3(4, 4, 4));
    EXPECT_FALSE(set.empty());
    EXPECT_EQ(set.middle(), v3(2, 2, 2));
}

TEST(box, grow_and_corners)
{
    ixo_box3<double> b(ixo_vector3<double>(0, 0, 0), ixo_vector3<double>(1, 1, 1));
    b.grow(1);
    expect_corners(b, ixo_vector3<double>(-1, -1, -1), ixo_vector3<double>(2, 2, 2));
    b.grow(-0.5);
    EXPECT_EQ(b.extents(), ixo_vector3<double>(2, 2, 2));

    ixo_box3<double> e;
    e.grow(1); // also on an empty box
    EXPECT_EQ(e.minimum()[0], 1e30 - 1);
    EXPECT_TRUE(e.empty());

    const ixo_box3<float> c(v3(1, 2, 3), v3(4, 5, 6));
    EXPECT_EQ(c.corner(false, false, false), v3(1, 2, 3));
    EXPECT_EQ(c.corner(true, false, true), v3(4, 2, 6));
    EXPECT_EQ(c.corner(false, true, false), v3(1, 5, 3));
    const ixo_box2<float> r(v2(-1, 0), v2(3, 2));
    EXPECT_EQ(r.corner(true, false), v2(3, 0));
    EXPECT_EQ(r.corner(false, true), v2(-1, 2));
}

TEST(box, box2)
{
    ixo_box2<float> r;
    EXPECT_TRUE(r.empty());
    EXPECT_EQ(r.middle(), v2(1e30f, 1e30f));
    EXPECT_FALSE(r.contains(v2(0, 0)));
    r += v2(0, 0);
    r += v2(10, 5);
    EXPECT_EQ(r.middle(), v2(5, 2.5f));
    EXPECT_TRUE(r.contains(v2(10, 5))); // bounds inclusive
    EXPECT_TRUE(r.contains(v2(0, 2)));
    EXPECT_FALSE(r.contains(v2(10.001f, 5)));
    EXPECT_FALSE(r.contains(v2(3, -0.001f)));
    ixo_box2<double> d(ixo_vector2<double>(0, 0), ixo_vector2<double>(1, 1));
    d += ixo_box2<double>(ixo_vector2<double>(-2, 0.5), ixo_vector2<double>(0, 3));
    expect_corners(d, ixo_vector2<double>(-2, 0), ixo_vector2<double>(1, 3));

    // Pixel rectangles: the empty state needs no out-of-range conversion, and an empty box
    // contains nothing, not even the extreme pixel.
    using v2i = ixo_vector2<int>;
    ixo_box2<int> p;
    EXPECT_TRUE(p.empty());
    EXPECT_FALSE(p.contains(v2i(0, 0)));
    EXPECT_EQ(p.extents(), v2i(0, 0));
    p += v2i(3, 4);
    p += v2i(8, 9);
    EXPECT_EQ(p.middle(), v2i(5, 6));
    EXPECT_TRUE(p.contains(v2i(8, 4)));
    EXPECT_FALSE(p.contains(v2i(9, 4)));
}

TEST(box, distances_along_a_ray)
{
    const ixo_box3<float> cube(v3(0, 0, 0), v3(1, 1, 1));
    EXPECT_FLOAT_EQ(ixo_min_dist_box_on_ray(v3(0.5f, 0.5f, -10), v3(0, 0, 1), cube), 10.0f);
    EXPECT_FLOAT_EQ(ixo_max_dist_box_on_ray(v3(0.5f, 0.5f, -10), v3(0, 0, 1), cube), 11.0f);
    // Looking away: both negative.
    EXPECT_FLOAT_EQ(ixo_min_dist_box_on_ray(v3(0.5f, 0.5f, -10), v3(0, 0, -1), cube), -11.0f);
    EXPECT_FLOAT_EQ(ixo_max_dist_box_on_ray(v3(0.5f, 0.5f, -10), v3(0, 0, -1), cube), -10.0f);

    // Along the diagonal the box [-1, 1]³ reaches sqrt(3) either side of its middle.
    const ixo_vector3<double> d = ixo_vector3<double>(1, 1, 1).normalized();
    const ixo_box3<double> b(ixo_vector3<double>(-1, -1, -1), ixo_vector3<double>(1, 1, 1));
    const ixo_vector3<double> o = d * -5.0;
    EXPECT_NEAR(ixo_min_dist_box_on_ray(o, d, b), 5 - std::sqrt(3.0), 1e-12);
    EXPECT_NEAR(ixo_max_dist_box_on_ray(o, d, b), 5 + std::sqrt(3.0), 1e-12);

    // The direction is used as given: middle (2, 2, 1), extents (2, 2, 2), direction
    // (1, 1, 0): tc = 4, h = (2 + 2 + 0) / 2.
    const ixo_box3<float> a(v3(1, 1, 0), v3(3, 3, 2));
    EXPECT_FLOAT_EQ(ixo_min_dist_box_on_ray(v3(0, 0, 0), v3(1, 1, 0), a), 2.0f);
    EXPECT_FLOAT_EQ(ixo_max_dist_box_on_ray(v3(0, 0, 0), v3(1, 1, 0), a), 6.0f);

    // An empty box is not special-cased: its middle is 1e30 and its extents 0.
    EXPECT_FLOAT_EQ(ixo_min_dist_box_on_ray(v3(0, 0, 0), v3(0, 0, 1), ixo_box3<float>()), 1e30f);
}
