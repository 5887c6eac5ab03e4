#include <ixocore/platform/d3dx9.h>

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

namespace
{

void expect_matrix_near(D3DXMATRIX const& a, D3DXMATRIX const& b, float tol = 1e-5f)
{
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(a.m[r][c], b.m[r][c], tol) << "element " << r << "," << c;
}

// Expects the first components of a vector or quaternion within `tol` of `want`.
void expect_near(float const* got, std::initializer_list<float> want, float tol = 1e-6f)
{
    int i = 0;
    for (float w : want)
    {
        EXPECT_NEAR(got[i], w, tol) << "component " << i;
        ++i;
    }
}

D3DXVECTOR4 transform(D3DXVECTOR3 p, D3DXMATRIX const& m)
{
    D3DXVECTOR4 out;
    D3DXVec3Transform(&out, &p, &m);
    return out;
}

D3DXVECTOR3 transform_coord(D3DXVECTOR3 p, D3DXMATRIX const& m)
{
    D3DXVECTOR3 out;
    D3DXVec3TransformCoord(&out, &p, &m);
    return out;
}

} // namespace

TEST(d3dx_math, views_and_projections_map_known_points)
{
    D3DXVECTOR3 eye(0, 0, 5), at(0, 0, 0), up(0, 1, 0);
    D3DXMATRIX view;
    D3DXMatrixLookAtRH(&view, &eye, &at, &up);
    expect_matrix_near(view, D3DXMATRIX(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -5, 1));

    // Looking down -x from (3, 0, 0) with y up: world +z lies on the left (view -x) in a
    // right-handed frame and on the right in a left-handed one.
    eye = {3, 0, 0};
    D3DXMatrixLookAtRH(&view, &eye, &at, &up);
    expect_near(transform({0, 0, 1}, view), {-1, 0, -3, 1});
    D3DXMatrixLookAtLH(&view, &eye, &at, &up);
    expect_near(transform({0, 0, 1}, view), {1, 0, 3, 1});

    D3DXMATRIX proj;
    D3DXMatrixPerspectiveFovRH(&proj, D3DX_PI / 2, 2.0f, 1.0f, 101.0f);
    expect_matrix_near(
        proj, D3DXMATRIX(0.5f, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1.01f, -1, 0, 0, -1.01f, 0), 1e-6f);
    EXPECT_EQ(proj._34, -1.0f);
    EXPECT_EQ(proj._44, 0.0f);
    // Near plane to depth 0, far plane to depth 1, the frustum's corner to (1, 1).
    expect_near(transform_coord({0, 0, -1}, proj), {0, 0, 0});
    expect_near(transform_coord({202, 101, -101}, proj), {1, 1, 1}, 1e-5f);
    D3DXMatrixPerspectiveFovLH(&proj, D3DX_PI / 2, 1.0f, 1.0f, 101.0f);
    expect_near(transform_coord({0, 0, 101}, proj), {0, 0, 1}, 1e-5f);

    D3DXMATRIX ortho;
    D3DXMatrixOrthoRH(&ortho, 4, 2, 0, 1);
    expect_near(transform({2, -1, -1}, ortho), {1, -1, 1, 1});
    expect_near(transform({0, 0, 0}, ortho), {0, 0, 0, 1});
    D3DXMatrixOrthoLH(&ortho, 4, 2, 1, 3);
    expect_near(transform({0, 0, 3}, ortho), {0, 0, 1, 1});
    D3DXMatrixOrthoOffCenterRH(&ortho, 0, 10, 0, 20, 0, 1);
    expect_near(transform({10, 20, -1}, ortho), {1, 1, 1, 1});
}

TEST(d3dx_math, rotations_products_and_inverse)
{
    D3DXMATRIX r;
    D3DXMatrixRotationZ(&r, D3DX_PI / 2);
    expect_near(transform({1, 0, 0}, r), {0, 1, 0, 1});
    D3DXMatrixRotationX(&r, D3DX_PI / 2);
    expect_near(transform({0, 1, 0}, r), {0, 0, 1, 1});
    D3DXMatrixRotationY(&r, D3DX_PI / 2);
    expect_near(transform({0, 0, 1}, r), {1, 0, 0, 1});

    // The quaternion form agrees with the axis form.
    D3DXVECTOR3 axis(1, 2, 3);
    D3DXQUATERNION q;
    D3DXQuaternionRotationAxis(&q, &axis, 0.7f);
    D3DXMATRIX from_q, from_axis;
    D3DXMatrixRotationQuaternion(&from_q, &q);
    D3DXMatrixRotationAxis(&from_axis, &axis, 0.7f);
    expect_matrix_near(from_q, from_axis);
    D3DXVECTOR3 x_axis(1, 0, 0);
    D3DXMatrixRotationAxis(&from_axis, &x_axis, 0.3f);
    D3DXMatrixRotationX(&r, 0.3f);
    expect_matrix_near(from_axis, r);
    D3DXQUATERNION back;
    D3DXQuaternionRotationMatrix(&back, &from_q);
    float sign = back.w * q.w < 0 ? -1.0f : 1.0f;
    expect_near(D3DXQUATERNION(back.x * sign, back.y * sign, back.z * sign, back.w * sign),
                {q.x, q.y, q.z, q.w}, 1e-5f);
    // A half turn (trace -1) goes through the diagonal branches.
    for (D3DXVECTOR3 a : {D3DXVECTOR3(1, 0, 0), D3DXVECTOR3(0, 1, 0), D3DXVECTOR3(0, 0, 1)})
    {
        D3DXMatrixRotationAxis(&r, &a, D3DX_PI);
        D3DXQuaternionRotationMatrix(&back, &r);
        expect_near(D3DXVECTOR3(std::abs(back.x), std::abs(back.y), std::abs(back.z)),
                    {a.x, a.y, a.z}, 1e-5f);
    }

    // Row vectors: S * T scales first, then moves.
    D3DXMATRIX s, t, st;
    D3DXMatrixScaling(&s, 2, 3, 4);
    D3DXMatrixTranslation(&t, 1, 2, 3);
    D3DXMatrixMultiply(&st, &s, &t);
    D3DXVECTOR4 p = transform({1, 1, 1}, st);
    EXPECT_FLOAT_EQ(p.x, 3);
    EXPECT_FLOAT_EQ(p.y, 5);
    EXPECT_FLOAT_EQ(p.z, 7);
    // The output may be an input.
    D3DXMATRIX alias = s;
    D3DXMatrixMultiply(&alias, &alias, &t);
    expect_matrix_near(alias, st, 0);

    D3DXMATRIX m, inv, id, identity;
    D3DXMatrixMultiply(&m, &st, &from_q);
    FLOAT det = 0;
    ASSERT_NE(D3DXMatrixInverse(&inv, &det, &m), nullptr);
    EXPECT_NEAR(det, 24.0f, 1e-4f);
    EXPECT_NEAR(D3DXMatrixDeterminant(&m), 24.0f, 1e-4f);
    D3DXMatrixMultiply(&id, &m, &inv);
    D3DXMatrixIdentity(&identity);
    expect_matrix_near(id, identity);
    EXPECT_TRUE(D3DXMatrixIsIdentity(&identity));
    EXPECT_FALSE(D3DXMatrixIsIdentity(&m));

    D3DXMATRIX singular;
    D3DXMatrixScaling(&singular, 1, 0, 1);
    D3DXMATRIX untouched = st;
    EXPECT_EQ(D3DXMatrixInverse(&untouched, nullptr, &singular), nullptr);
    expect_matrix_near(untouched, st, 0);

    D3DXMATRIX tr;
    D3DXMatrixTranspose(&tr, &st);
    EXPECT_EQ(tr._14, 1.0f);
    EXPECT_EQ(tr._34, 3.0f);
}

TEST(d3dx_math, decompose_splits_scale_rotation_translation)
{
    D3DXMATRIX s, r, t, m, tmp;
    D3DXMatrixRotationZ(&r, D3DX_PI / 2);
    D3DXMatrixTranslation(&t, 1, 2, 3);
    D3DXVECTOR3 scale, translation;
    D3DXQUATERNION rotation;
    // A mirror keeps a proper rotation and a negative scale; recomposing gives M back.
    for (float sx : {2.f, -2.f})
    {
        D3DXMatrixScaling(&s, sx, 3, 4);
        D3DXMatrixMultiply(&tmp, &s, &r);
        D3DXMatrixMultiply(&m, &tmp, &t);
        ASSERT_EQ(D3DXMatrixDecompose(&scale, &rotation, &translation, &m), D3D_OK);
        expect_near(scale, {sx, 3, 4}, 1e-5f);
        EXPECT_EQ(translation, D3DXVECTOR3(1, 2, 3));
        D3DXMATRIX rebuilt, turn;
        D3DXMatrixScaling(&s, scale.x, scale.y, scale.z);
        D3DXMatrixRotationQuaternion(&turn, &rotation);
        D3DXMatrixMultiply(&tmp, &s, &turn);
        D3DXMatrixMultiply(&rebuilt, &tmp, &t);
        expect_matrix_near(rebuilt, m);
    }
    // Without the mirror the rotation is the quarter turn about z itself.
    D3DXMatrixScaling(&s, 2, 3, 4);
    D3DXMatrixMultiply(&tmp, &s, &r);
    D3DXMatrixMultiply(&m, &tmp, &t);
    ASSERT_EQ(D3DXMatrixDecompose(&scale, &rotation, &translation, &m), D3D_OK);
    float const h = std::sqrt(0.5f), sign = rotation.w < 0 ? -1.0f : 1.0f;
    expect_near(
        D3DXQUATERNION(rotation.x * sign, rotation.y * sign, rotation.z * sign, rotation.w * sign),
        {0, 0, h, h}, 1e-5f);

    D3DXMatrixScaling(&s, 1, 0, 1);
    EXPECT_EQ(D3DXMatrixDecompose(&scale, &rotation, &translation, &s), D3DERR_INVALIDCALL);
    EXPECT_EQ(D3DXMatrixDecompose(nullptr, &rotation, &translation, &m), D3DERR_INVALIDCALL);
}

TEST(d3dx_math, vectors)
{
    D3DXVECTOR3 a(1, 0, 0), b(0, 1, 0), out;
    D3DXVec3Cross(&out, &a, &b);
    EXPECT_EQ(out, D3DXVECTOR3(0, 0, 1));
    EXPECT_EQ(D3DXVec3Dot(&a, &b), 0.0f);
    D3DXVECTOR3 v(3, 4, 0);
    EXPECT_FLOAT_EQ(D3DXVec3Length(&v), 5);
    D3DXVec3Normalize(&out, &v);
    EXPECT_FLOAT_EQ(out.x, 0.6f);
    EXPECT_FLOAT_EQ(out.y, 0.8f);
    D3DXVECTOR3 zero(0, 0, 0);
    D3DXVec3Normalize(&out, &zero);
    EXPECT_EQ(out, zero);
    D3DXVec3Subtract(&out, &v, &a);
    EXPECT_EQ(out, D3DXVECTOR3(2, 4, 0));
    D3DXVec3Add(&out, &v, &a);
    EXPECT_EQ(out, D3DXVECTOR3(4, 4, 0));
    D3DXVec3Scale(&out, &v, 2);
    EXPECT_EQ(out, D3DXVECTOR3(6, 8, 0));
    D3DXMATRIX t;
    D3DXMatrixTranslation(&t, 5, 5, 5);
    D3DXVec3TransformNormal(&out, &v, &t);
    EXPECT_EQ(out, v);
    D3DXVec3TransformCoord(&out, &v, &t);
    EXPECT_EQ(out, D3DXVECTOR3(8, 9, 5));
}
