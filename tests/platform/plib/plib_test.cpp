// The closed quadratic interpolation checked against properties it must have exactly:
// it passes through its points at their parameters, joins up at u = 0/1 with a continuous
// tangent, and refuses input it cannot interpolate.

#include <ixocore/platform/plib.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace
{
using hpoint = PLib::HPoint_nD<float, 3>;

struct closed_input
{
    PLib::Vector<hpoint> points;
    PLib::Vector<float> params;
};

// The points p at the parameters u, closed by repeating p[0] at parameter 1.
closed_input closed(const std::vector<std::array<float, 3>>& p, const std::vector<float>& u)
{
    closed_input in{PLib::Vector<hpoint>(int(p.size()) + 1),
                    PLib::Vector<float>(int(u.size()) + 1)};
    for (int i = 0; i < int(p.size()); ++i)
    {
        in.points[i] = hpoint(p[std::size_t(i)][0], p[std::size_t(i)][1], p[std::size_t(i)][2], 1);
        in.params[i] = u[std::size_t(i)];
    }
    in.points[int(p.size())] = in.points[0];
    in.params[int(u.size())] = 1;
    return in;
}

bool interpolate(const closed_input& in, PLib::NurbsCurve<float, 3>& curve, int degree = 2)
{
    PLib::Vector<float> knots;
    return PLib::knotAveragingClosed(in.params, degree, knots) &&
           curve.globalInterpClosedH(in.points, in.params, knots, degree);
}

const std::vector<std::array<float, 3>> zigzag = {{1, 0, 0},  {3, 1, -1},  {0.5f, 4, 2},
                                                  {-2, 2, 0}, {-1, -3, 1}, {2, -2, 0.5f}};
const std::vector<float> uneven = {0, 0.05f, 0.3f, 0.42f, 0.7f, 0.9f};
} // namespace

TEST(plib_closed_interpolation, passes_through_every_point_and_closes_with_a_continuous_tangent)
{
    PLib::NurbsCurve<float, 3> curve;
    ASSERT_TRUE(interpolate(closed(zigzag, uneven), curve));
    EXPECT_EQ(curve.degree(), 2);
    EXPECT_EQ(curve.ctrlPnts().n(), 8); // six distinct control points, the first two again
    EXPECT_EQ(curve.knot().n(), 11);
    for (std::size_t i = 0; i < zigzag.size(); ++i)
    {
        auto p = curve.pointAt(uneven[i]);
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(p.data[c], zigzag[i][std::size_t(c)], 1e-5) << "point " << i;
    }
    // Closing: parameter 1 and any whole turn later give the first point again.
    EXPECT_NEAR(curve.pointAt(1).x(), 1, 1e-5);
    EXPECT_NEAR(curve.pointAt(2.3f).y(), curve.pointAt(0.3f).y(), 1e-5);

    // Second-order one-sided difference quotients on both sides of u = 0; the curve is
    // one quadratic piece across u = 0 (knots lie between parameters), so both are exact
    // up to rounding and agree only if the tangent is continuous there.
    float const h = 1e-3f;
    auto at = [&](float u, int c) { return double(curve.pointAt(u).data[c]); };
    for (int c = 0; c < 3; ++c)
    {
        double const right = (-3 * at(0, c) + 4 * at(h, c) - at(2 * h, c)) / (2 * h);
        double const left = (3 * at(1, c) - 4 * at(1 - h, c) + at(1 - 2 * h, c)) / (2 * h);
        EXPECT_NEAR(right, left, 0.02) << "axis " << c;
    }
    EXPECT_GT(std::abs(curve.pointAt(h).x() - curve.pointAt(0).x()), 1e-4);
}

TEST(plib_closed_interpolation, refuses_what_it_cannot_interpolate)
{
    PLib::NurbsCurve<float, 3> curve;
    EXPECT_FALSE(interpolate(closed(zigzag, uneven), curve, 3));
    EXPECT_FALSE(interpolate(closed({{1, 0, 0}, {2, 0, 0}}, {0, 0.5f}), curve));
    EXPECT_FALSE(interpolate(closed(zigzag, {0, 0.3f, 0.3f, 0.42f, 0.7f, 0.9f}), curve));
    EXPECT_FALSE(interpolate(closed(zigzag, {0, 0.5f, 0.3f, 0.42f, 0.7f, 0.9f}), curve));
    // Knots that do not belong to the points.
    auto in = closed(zigzag, uneven);
    PLib::Vector<float> knots(5);
    EXPECT_FALSE(curve.globalInterpClosedH(in.points, in.params, knots, 2));
    EXPECT_EQ(curve.ctrlPnts().n(), 0);
    EXPECT_EQ(curve.pointAt(0.5f).x(), 0); // an empty curve is the zero point
}
