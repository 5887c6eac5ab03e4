#include <ixocore/math/matrix.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace
{

using m44 = ixo_matrix44<float>;
using v3 = ixo_vector3<float>;
using v4 = ixo_vector4<float>;

m44 rows(v4 r0, v4 r1, v4 r2, v4 r3)
{
    return m44(r0, r1, r2, r3);
}

template <typename T>
void expect_near(const ixo_matrix44<T>& a, const ixo_matrix44<T>& b, T tolerance)
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            EXPECT_NEAR(a[i][j], b[i][j], tolerance) << "element " << i << "," << j;
}

// Expects the 16 values an array() call writes.
template <typename M> void expect_array(const M& m, const std::array<float, 16>& expected)
{
    float out[16];
    std::fill(out, out + 16, -1.0f);
    m.array(out);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(out[i], expected[i]) << i;
    m.array(nullptr); // writes nothing, must not fault
}

} // namespace

TEST(matrix, builders_and_row_major_array)
{
    const m44 t = ixo_translation_transform(v3(1, 2, 3));
    EXPECT_EQ(t * v3(0, 0, 0), v3(1, 2, 3));
    EXPECT_EQ(t * v3(1, 1, 1), v3(2, 3, 4));
    expect_array(t, {1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1});
    // A 3 x 3 matrix writes itself as the upper-left block of a 4 x 4 one.
    expect_array(ixo_matrix33<float>(v3(1, 2, 3), v3(4, 5, 6), v3(7, 8, 9)),
                 {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 0, 0, 0, 1});

    EXPECT_EQ(ixo_zero_matrix() * v3(1, 2, 3), v3(0, 0, 0)); // W = 0
    EXPECT_EQ(ixo_identity_transform<double>()[3][3], 1.0);
    EXPECT_TRUE(ixo_identity_transform().is_identity());
    EXPECT_TRUE(m44::ixo_identity_transform() == ixo_identity_transform<float>());

    const m44 s = ixo_scale_transform(2.0f);
    EXPECT_EQ(s * v4(1, 2, 3, 1), v4(2, 4, 6, 1));
    const m44 a = ixo_anisotropic_transform(v3(2, 3, 4));
    EXPECT_EQ(a * v3(1, 1, 1), v3(2, 3, 4));
    EXPECT_EQ(a[3][3], 1.0f);

    // B acts first in A * B.
    EXPECT_EQ((t * s) * v3(1, 1, 1), v3(3, 4, 5));
    EXPECT_EQ((s * t) * v3(1, 1, 1), v3(4, 6, 8));
    m44 ts = t;
    ts *= s;
    EXPECT_EQ(ts, t * s);
}

TEST(matrix, rotation_table)
{
    const float half_pi = std::numbers::pi_v<float> / 2;
    // Turns by -angle: x goes to -y about +z.
    const m44 rz = ixo_rotation_transform(half_pi, ixo_z_axisf);
    EXPECT_EQ(rz * v4(1, 0, 0, 1), v4(0, -1, 0, 1));
    EXPECT_EQ(rz * v4(0, 1, 0, 1), v4(1, 0, 0, 1));

    // pi/3 about y: c = 1/2, s = sqrt(3)/2.
    const double h = std::sqrt(3.0) / 2;
    const ixo_matrix44<double> ry =
        ixo_rotation_transform<double>(std::numbers::pi / 3, ixo_y_axisd);
    const ixo_matrix44<double> expected_ry(
        ixo_vector4<double>(0.5, 0, -h, 0), ixo_vector4<double>(0, 1, 0, 0),
        ixo_vector4<double>(h, 0, 0.5, 0), ixo_vector4<double>(0, 0, 0, 1));
    expect_near(ry, expected_ry, 1e-12);

    // The axis is not normalised: (0, 0, 2) at a quarter turn puts 2 and t·z·z + c = 4 in.
    const m44 r2 = ixo_rotation_transform(half_pi, v3(0, 0, 2));
    expect_near(r2, rows(v4(0, 2, 0, 0), v4(-2, 0, 0, 0), v4(0, 0, 4, 0), v4(0, 0, 0, 1)), 1e-6f);
    EXPECT_TRUE(m44::ixo_rotation_transform(half_pi, ixo_z_axisf) == rz);
}

TEST(matrix, homogeneous_divide_and_division_guard)
{
    // Row 3 = (0, 0, 1, 0): W is the point's z.
    const m44 p = rows(v4(1, 0, 0, 0), v4(0, 1, 0, 0), v4(0, 0, 1, 0), v4(0, 0, 1, 0));
    EXPECT_EQ(p * v3(2, 4, 2), v3(1, 2, 1));
    EXPECT_EQ(p * v3(2, 4, -4), v3(-0.5f, -1, 1));
    EXPECT_EQ(p * v3(2, 4, 5e-7f), v3(0, 0, 0));

    const m44 m = ixo_translation_transform(v3(2, 4, 6));
    const m44 halved = m / -2.0f;
    EXPECT_EQ(halved[0][3], -1.0f);
    EXPECT_EQ(halved[0][0], -0.5f);
    EXPECT_EQ(halved[1][0], 0.0f);
    const v4 huge(1e30f, 1e30f, 1e30f, 1e30f);
    EXPECT_EQ(m / 1e-7f, m44(huge, huge, huge, huge));
    ixo_matrix33<double> m3(ixo_vector3<double>(1, 2, 3), ixo_vector3<double>(4, 5, 6),
                            ixo_vector3<double>(7, 8, 9));
    m3 /= -5e-7;
    EXPECT_EQ(m3[2][1], 1e30);
}

TEST(matrix, arithmetic_and_tolerant_equality)
{
    const m44 a = rows(v4(1, 2, 3, 4), v4(5, 6, 7, 8), v4(9, 10, 11, 12), v4(13, 14, 15, 16));
    m44 b = a;
    EXPECT_TRUE(a == b);
    b[2][1] += 0.01f;
    EXPECT_TRUE(a != b);
    b[2][1] = 10.0000005f;
    EXPECT_TRUE(a == b);

    EXPECT_EQ((a + a)[3][2], 30.0f);
    EXPECT_EQ((a - a * 3.0f)[0][1], -4.0f);
    EXPECT_EQ((-a)[1][0], -5.0f);
    EXPECT_EQ(a.transpose()[0][3], 13.0f);
    // Row 1 of a times column 2 of a: 5*3 + 6*7 + 7*11 + 8*15
    EXPECT_EQ((a * a)[1][2], 254.0f);
    EXPECT_EQ(a * v4(1, 0, -1, 0), v4(-2, -2, -2, -2));

    m44 c = a;
    c.swap_row(0, 3);
    EXPECT_EQ(c[0], v4(13, 14, 15, 16));
    c.swap_column(0, 1);
    EXPECT_EQ(c[0], v4(14, 13, 15, 16));
    c.scale_row(2, 1);
    EXPECT_EQ(c[1], v4(12, 10, 14, 16));
    c.add_scaled_row(-1, 1, 0);
    EXPECT_EQ(c[0], v4(2, 3, 1, 0));
    const m44 before = c;
    c.swap_row(0, 4);
    c.swap_column(-1, 2);
    c.scale_row(5, 7);
    c.add_scaled_row(1, 0, 100);
    EXPECT_EQ(c, before);

    m44 near_identity = ixo_identity_transform();
    near_identity[1][2] = 5e-7f;
    EXPECT_TRUE(near_identity.is_identity());
    near_identity[1][2] = 2e-6f;
    EXPECT_FALSE(near_identity.is_identity());
}

TEST(matrix, determinants)
{
    using m33 = ixo_matrix33<double>;
    using d3 = ixo_vector3<double>;
    const m33 m(d3(2, 0, 1), d3(1, 3, 2), d3(1, 1, 2));
    EXPECT_DOUBLE_EQ(m.determinant(), 6.0);
    EXPECT_DOUBLE_EQ(m33(d3(2, 0, 1), d3(1, 3, 2), d3(1, 1, 1)).determinant(), 0.0);

    // Block diagonal: (1*4 - 2*3) * (2*3 - 1*1)
    const m44 b = rows(v4(1, 2, 0, 0), v4(3, 4, 0, 0), v4(0, 0, 2, 1), v4(0, 0, 1, 3));
    EXPECT_FLOAT_EQ(b.determinant(), -10.0f);
    m44 swapped = b;
    swapped.swap_row(0, 2);
    EXPECT_FLOAT_EQ(swapped.determinant(), 10.0f);
    const m44 upper = rows(v4(2, 7, -1, 3), v4(0, 3, 5, 1), v4(0, 0, -1, 8), v4(0, 0, 0, 4));
    EXPECT_FLOAT_EQ(upper.determinant(), -24.0f);
    EXPECT_FLOAT_EQ(upper.transpose().determinant(), -24.0f);
    EXPECT_NEAR((upper * b).determinant(), 240.0f, 1e-3f);
}

TEST(matrix, inverse_3x3_both_ways)
{
    using m33 = ixo_matrix33<double>;
    using d3 = ixo_vector3<double>;
    // The largest element, 3, sits off the first row and column, so Gauss-Jordan
    // exchanges both a row and a column first.
    const m33 m(d3(2, 0, 1), d3(1, 3, 2), d3(1, 1, 2));
    const m33 expected(d3(4.0 / 6, 1.0 / 6, -3.0 / 6), d3(0, 3.0 / 6, -3.0 / 6),
                       d3(-2.0 / 6, -2.0 / 6, 1));
    EXPECT_EQ(m.inverse(), expected);
    EXPECT_EQ(m.inverse_matrix_jordan_gauss(), expected);

    const m33 identity(d3(1, 0, 0), d3(0, 1, 0), d3(0, 0, 1));
    const m33 singular(d3(2, 0, 1), d3(1, 3, 2), d3(1, 1, 1));
    EXPECT_EQ(singular.inverse(), identity);
    EXPECT_EQ(singular.inverse_matrix_jordan_gauss(), identity);

    const ixo_matrix33<float> f(ixo_vector3<float>(0, 1, 0.5f), ixo_vector3<float>(-3, 0.25f, 2),
                                ixo_vector3<float>(1, 1, 7));
    for (const ixo_matrix33<float>& inv : {f.inverse(), f.inverse_matrix_jordan_gauss()})
    {
        const ixo_matrix33<float> p = inv * f;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                EXPECT_NEAR(p[i][j], i == j ? 1.0f : 0.0f, 1e-5f);
    }
    EXPECT_EQ(f * ixo_vector3<float>(1, 2, 2), ixo_vector3<float>(3, 1.5f, 17));
    EXPECT_EQ((f * f.transpose())[0][1], 0.0f * -3 + 1 * 0.25f + 0.5f * 2);
}

TEST(matrix, inverse_4x4_gauss_jordan)
{
    // The largest element lies at row 3, column 2: the first step exchanges rows 0 and 3
    // and columns 0 and 2.
    const m44 m = rows(v4(0, 2, 0, 0), v4(1, 0, 0, 0), v4(0, 0, 0, 4), v4(0, 0, 5, 0));
    const m44 expected =
        rows(v4(0, 1, 0, 0), v4(0.5f, 0, 0, 0), v4(0, 0, 0, 0.2f), v4(0, 0, 0.25f, 0));
    EXPECT_EQ(m.inverse(), expected);

    // An affine transform against its inverse built from the inverse steps.
    const ixo_vector3<double> axis = ixo_vector3<double>(1, 2, 2) / 3.0;
    const ixo_matrix44<double> a = ixo_translation_transform(ixo_vector3<double>(1, -2, 3)) *
                                   ixo_rotation_transform<double>(0.7, axis) *
                                   ixo_scale_transform(2.0);
    const ixo_matrix44<double> a_inverse =
        ixo_scale_transform(0.5) * ixo_rotation_transform<double>(-0.7, axis) *
        ixo_translation_transform(ixo_vector3<double>(-1, 2, -3));
    expect_near(a.inverse(), a_inverse, 1e-12);

    // A dense matrix with a tiny leading element.
    const m44 d = rows(v4(1e-3f, 2, 3, 4), v4(2, -1, 0.5f, 1), v4(3, 0, 1, -2), v4(1, 1, 1, 1));
    expect_near(d.inverse() * d, ixo_identity_transform(), 1e-5f);
    expect_near(d * d.inverse(), ixo_identity_transform(), 1e-5f);

    // Elements within 1e-6 of the pivot's magnitude are not eliminated.
    ixo_matrix44<double> tiny = ixo_identity_transform<double>();
    tiny[1][0] = 1e-8;
    EXPECT_EQ(tiny.inverse()[1][0], 0.0);
    tiny[1][0] = 1e-4;
    EXPECT_DOUBLE_EQ(tiny.inverse()[1][0], -1e-4);
}

TEST(matrix, inverse_4x4_singular)
{
    // No error is reported; the result is the accumulator where the elimination stopped.
    EXPECT_TRUE(ixo_zero_matrix().inverse().is_identity());
    const m44 diagonal = rows(v4(2, 0, 0, 0), v4(0, 0, 0, 0), v4(0, 0, 0, 0), v4(0, 0, 0, 0));
    EXPECT_EQ(diagonal.inverse(),
              rows(v4(0.5f, 0, 0, 0), v4(0, 1, 0, 0), v4(0, 0, 1, 0), v4(0, 0, 0, 1)));
    m44 single = ixo_zero_matrix();
    single[1][2] = 4;
    EXPECT_EQ(single.inverse(),
              rows(v4(0, 0.25f, 0, 0), v4(1, 0, 0, 0), v4(0, 0, 1, 0), v4(0, 0, 0, 1)));
    const m44 rank3 = rows(v4(1, 2, 3, 4), v4(2, 4, 6, 8), v4(0, 1, 0, 1), v4(1, 0, 1, 0));
    const m44 r = rank3.inverse();
    for (int i = 0; i < 16; ++i)
        EXPECT_TRUE(std::isfinite(r[i / 4][i % 4])) << i;
}

TEST(matrix, box_transform)
{
    const ixo_box3<float> cube(v3(0, 0, 0), v3(1, 1, 1));
    EXPECT_EQ((ixo_identity_transform() * cube).minimum(), cube.minimum());
    EXPECT_EQ((ixo_identity_transform() * cube).maximum(), cube.maximum());

    // A quarter of a half turn about z: (1, 0) goes to (c, -c), (0, 1) to (c, c),
    // (1, 1) to (2c, 0).
    const float c = std::sqrt(0.5f);
    const ixo_box3<float> r =
        ixo_rotation_transform(std::numbers::pi_v<float> / 4, ixo_z_axisf) * cube;
    const float want[] = {0, 2 * c, -c, c, 0, 1};
    for (int axis = 0; axis < 3; ++axis)
    {
        EXPECT_NEAR(r.minimum()[axis], want[2 * axis], 1e-6f) << axis;
        EXPECT_NEAR(r.maximum()[axis], want[2 * axis + 1], 1e-6f) << axis;
    }

    // A mirror swaps the corners' roles; the result is still ordered.
    const ixo_box3<float> m =
        (ixo_translation_transform(v3(10, 0, 0)) * ixo_anisotropic_transform(v3(-2, 1, 3))) * cube;
    EXPECT_EQ(m.minimum(), v3(8, 0, 0));
    EXPECT_EQ(m.maximum(), v3(10, 1, 3));

    const ixo_box3<float> empty;
    const ixo_box3<float> moved = ixo_translation_transform(v3(1, 2, 3)) * empty;
    EXPECT_TRUE(moved.empty());
    EXPECT_EQ(moved.minimum(), v3(1e30f, 1e30f, 1e30f));
}
