#include <ixocore/platform/d3dx9.h>

#include <cmath>

namespace
{

D3DXVECTOR3 cross(D3DXVECTOR3 const& a, D3DXVECTOR3 const& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

float dot(D3DXVECTOR3 const& a, D3DXVECTOR3 const& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

D3DXVECTOR3 normalized(D3DXVECTOR3 const& v)
{
    float len = std::sqrt(dot(v, v));
    if (len == 0.0f)
        return v;
    return {v.x / len, v.y / len, v.z / len};
}

// The view matrix of the frame (x, y, z) placed at eye.
D3DXMATRIX view_matrix(D3DXVECTOR3 const& x, D3DXVECTOR3 const& y, D3DXVECTOR3 const& z,
                       D3DXVECTOR3 const& eye)
{
    return D3DXMATRIX(x.x, y.x, z.x, 0, x.y, y.y, z.y, 0, x.z, y.z, z.z, 0, -dot(x, eye),
                      -dot(y, eye), -dot(z, eye), 1);
}

} // namespace

D3DXMATRIX* D3DXMatrixIdentity(D3DXMATRIX* pOut)
{
    if (pOut != nullptr)
        *pOut = D3DXMATRIX(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    return pOut;
}

BOOL D3DXMatrixIsIdentity(const D3DXMATRIX* pM)
{
    if (pM == nullptr)
        return FALSE;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            if (pM->m[r][c] != (r == c ? 1.0f : 0.0f))
                return FALSE;
    return TRUE;
}

D3DXMATRIX* D3DXMatrixMultiply(D3DXMATRIX* pOut, const D3DXMATRIX* pM1, const D3DXMATRIX* pM2)
{
    if (pOut == nullptr || pM1 == nullptr || pM2 == nullptr)
        return pOut;
    D3DXMATRIX r;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            r.m[i][j] = pM1->m[i][0] * pM2->m[0][j] + pM1->m[i][1] * pM2->m[1][j] +
                        pM1->m[i][2] * pM2->m[2][j] + pM1->m[i][3] * pM2->m[3][j];
    *pOut = r;
    return pOut;
}

D3DXMATRIX* D3DXMatrixTranspose(D3DXMATRIX* pOut, const D3DXMATRIX* pM)
{
    if (pOut == nullptr || pM == nullptr)
        return pOut;
    D3DXMATRIX r;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            r.m[i][j] = pM->m[j][i];
    *pOut = r;
    return pOut;
}

namespace
{

// Cofactor expansion in double precision: the adjugate and the determinant.
double adjugate(const D3DXMATRIX& a, double adj[4][4])
{
    double m[16];
    for (int i = 0; i < 16; ++i)
        m[i] = a.m[i / 4][i % 4];
    double inv[16];
    inv[0] = m[5] * m[10] * m[15] - m[5] * m[11] * m[14] - m[9] * m[6] * m[15] +
             m[9] * m[7] * m[14] + m[13] * m[6] * m[11] - m[13] * m[7] * m[10];
    inv[4] = -m[4] * m[10] * m[15] + m[4] * m[11] * m[14] + m[8] * m[6] * m[15] -
             m[8] * m[7] * m[14] - m[12] * m[6] * m[11] + m[12] * m[7] * m[10];
    inv[8] = m[4] * m[9] * m[15] - m[4] * m[11] * m[13] - m[8] * m[5] * m[15] +
             m[8] * m[7] * m[13] + m[12] * m[5] * m[11] - m[12] * m[7] * m[9];
    inv[12] = -m[4] * m[9] * m[14] + m[4] * m[10] * m[13] + m[8] * m[5] * m[14] -
              m[8] * m[6] * m[13] - m[12] * m[5] * m[10] + m[12] * m[6] * m[9];
    inv[1] = -m[1] * m[10] * m[15] + m[1] * m[11] * m[14] + m[9] * m[2] * m[15] -
             m[9] * m[3] * m[14] - m[13] * m[2] * m[11] + m[13] * m[3] * m[10];
    inv[5] = m[0] * m[10] * m[15] - m[0] * m[11] * m[14] - m[8] * m[2] * m[15] +
             m[8] * m[3] * m[14] + m[12] * m[2] * m[11] - m[12] * m[3] * m[10];
    inv[9] = -m[0] * m[9] * m[15] + m[0] * m[11] * m[13] + m[8] * m[1] * m[15] -
             m[8] * m[3] * m[13] - m[12] * m[1] * m[11] + m[12] * m[3] * m[9];
    inv[13] = m[0] * m[9] * m[14] - m[0] * m[10] * m[13] - m[8] * m[1] * m[14] +
              m[8] * m[2] * m[13] + m[12] * m[1] * m[10] - m[12] * m[2] * m[9];
    inv[2] = m[1] * m[6] * m[15] - m[1] * m[7] * m[14] - m[5] * m[2] * m[15] + m[5] * m[3] * m[14] +
             m[13] * m[2] * m[7] - m[13] * m[3] * m[6];
    inv[6] = -m[0] * m[6] * m[15] + m[0] * m[7] * m[14] + m[4] * m[2] * m[15] -
             m[4] * m[3] * m[14] - m[12] * m[2] * m[7] + m[12] * m[3] * m[6];
    inv[10] = m[0] * m[5] * m[15] - m[0] * m[7] * m[13] - m[4] * m[1] * m[15] +
              m[4] * m[3] * m[13] + m[12] * m[1] * m[7] - m[12] * m[3] * m[5];
    inv[14] = -m[0] * m[5] * m[14] + m[0] * m[6] * m[13] + m[4] * m[1] * m[14] -
              m[4] * m[2] * m[13] - m[12] * m[1] * m[6] + m[12] * m[2] * m[5];
    inv[3] = -m[1] * m[6] * m[11] + m[1] * m[7] * m[10] + m[5] * m[2] * m[11] -
             m[5] * m[3] * m[10] - m[9] * m[2] * m[7] + m[9] * m[3] * m[6];
    inv[7] = m[0] * m[6] * m[11] - m[0] * m[7] * m[10] - m[4] * m[2] * m[11] + m[4] * m[3] * m[10] +
             m[8] * m[2] * m[7] - m[8] * m[3] * m[6];
    inv[11] = -m[0] * m[5] * m[11] + m[0] * m[7] * m[9] + m[4] * m[1] * m[11] - m[4] * m[3] * m[9] -
              m[8] * m[1] * m[7] + m[8] * m[3] * m[5];
    inv[15] = m[0] * m[5] * m[10] - m[0] * m[6] * m[9] - m[4] * m[1] * m[10] + m[4] * m[2] * m[9] +
              m[8] * m[1] * m[6] - m[8] * m[2] * m[5];
    for (int i = 0; i < 16; ++i)
        adj[i / 4][i % 4] = inv[i];
    return m[0] * inv[0] + m[1] * inv[4] + m[2] * inv[8] + m[3] * inv[12];
}

} // namespace

FLOAT D3DXMatrixDeterminant(const D3DXMATRIX* pM)
{
    if (pM == nullptr)
        return 0.0f;
    double adj[4][4];
    return float(adjugate(*pM, adj));
}

D3DXMATRIX* D3DXMatrixInverse(D3DXMATRIX* pOut, FLOAT* pDeterminant, const D3DXMATRIX* pM)
{
    if (pOut == nullptr || pM == nullptr)
        return nullptr;
    double adj[4][4];
    double det = adjugate(*pM, adj);
    if (pDeterminant != nullptr)
        *pDeterminant = float(det);
    if (det == 0.0 || !std::isfinite(det))
        return nullptr;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            pOut->m[i][j] = float(adj[i][j] / det);
    return pOut;
}

D3DXMATRIX* D3DXMatrixTranslation(D3DXMATRIX* pOut, FLOAT x, FLOAT y, FLOAT z)
{
    if (D3DXMatrixIdentity(pOut) != nullptr)
    {
        pOut->_41 = x;
        pOut->_42 = y;
        pOut->_43 = z;
    }
    return pOut;
}

D3DXMATRIX* D3DXMatrixScaling(D3DXMATRIX* pOut, FLOAT sx, FLOAT sy, FLOAT sz)
{
    if (D3DXMatrixIdentity(pOut) != nullptr)
    {
        pOut->_11 = sx;
        pOut->_22 = sy;
        pOut->_33 = sz;
    }
    return pOut;
}

D3DXMATRIX* D3DXMatrixRotationX(D3DXMATRIX* pOut, FLOAT Angle)
{
    if (D3DXMatrixIdentity(pOut) != nullptr)
    {
        float c = std::cos(Angle), s = std::sin(Angle);
        pOut->_22 = c, pOut->_23 = s, pOut->_32 = -s, pOut->_33 = c;
    }
    return pOut;
}

D3DXMATRIX* D3DXMatrixRotationY(D3DXMATRIX* pOut, FLOAT Angle)
{
    if (D3DXMatrixIdentity(pOut) != nullptr)
    {
        float c = std::cos(Angle), s = std::sin(Angle);
        pOut->_11 = c, pOut->_13 = -s, pOut->_31 = s, pOut->_33 = c;
    }
    return pOut;
}

D3DXMATRIX* D3DXMatrixRotationZ(D3DXMATRIX* pOut, FLOAT Angle)
{
    if (D3DXMatrixIdentity(pOut) != nullptr)
    {
        float c = std::cos(Angle), s = std::sin(Angle);
        pOut->_11 = c, pOut->_12 = s, pOut->_21 = -s, pOut->_22 = c;
    }
    return pOut;
}

D3DXMATRIX* D3DXMatrixRotationAxis(D3DXMATRIX* pOut, const D3DXVECTOR3* pV, FLOAT Angle)
{
    if (pV == nullptr)
        return pOut;
    D3DXQUATERNION q;
    D3DXQuaternionRotationAxis(&q, pV, Angle);
    return D3DXMatrixRotationQuaternion(pOut, &q);
}

D3DXMATRIX* D3DXMatrixRotationQuaternion(D3DXMATRIX* pOut, const D3DXQUATERNION* pQ)
{
    if (pQ == nullptr || D3DXMatrixIdentity(pOut) == nullptr)
        return pOut;
    float const x = pQ->x, y = pQ->y, z = pQ->z, w = pQ->w;
    pOut->_11 = 1 - 2 * (y * y + z * z);
    pOut->_12 = 2 * (x * y + z * w);
    pOut->_13 = 2 * (x * z - y * w);
    pOut->_21 = 2 * (x * y - z * w);
    pOut->_22 = 1 - 2 * (x * x + z * z);
    pOut->_23 = 2 * (y * z + x * w);
    pOut->_31 = 2 * (x * z + y * w);
    pOut->_32 = 2 * (y * z - x * w);
    pOut->_33 = 1 - 2 * (x * x + y * y);
    return pOut;
}

HRESULT D3DXMatrixDecompose(D3DXVECTOR3* pOutScale, D3DXQUATERNION* pOutRotation,
                            D3DXVECTOR3* pOutTranslation, const D3DXMATRIX* pM)
{
    if (pOutScale == nullptr || pOutRotation == nullptr || pOutTranslation == nullptr ||
        pM == nullptr)
        return D3DERR_INVALIDCALL;
    D3DXVECTOR3 rows[3] = {
        {pM->_11, pM->_12, pM->_13}, {pM->_21, pM->_22, pM->_23}, {pM->_31, pM->_32, pM->_33}};
    *pOutTranslation = D3DXVECTOR3(pM->_41, pM->_42, pM->_43);
    D3DXVECTOR3 scale(std::sqrt(dot(rows[0], rows[0])), std::sqrt(dot(rows[1], rows[1])),
                      std::sqrt(dot(rows[2], rows[2])));
    // A mirroring matrix is read as a rotation after a negative x scale.
    if (dot(cross(rows[0], rows[1]), rows[2]) < 0.0f)
        scale.x = -scale.x;
    *pOutScale = scale;
    if (scale.x == 0.0f || scale.y == 0.0f || scale.z == 0.0f)
        return D3DERR_INVALIDCALL;
    D3DXMATRIX rotation;
    D3DXMatrixIdentity(&rotation);
    float const s[3] = {scale.x, scale.y, scale.z};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            rotation.m[r][c] = pM->m[r][c] / s[r];
    D3DXQuaternionRotationMatrix(pOutRotation, &rotation);
    return D3D_OK;
}

D3DXMATRIX* D3DXMatrixLookAtRH(D3DXMATRIX* pOut, const D3DXVECTOR3* pEye, const D3DXVECTOR3* pAt,
                               const D3DXVECTOR3* pUp)
{
    if (pOut == nullptr || pEye == nullptr || pAt == nullptr || pUp == nullptr)
        return pOut;
    D3DXVECTOR3 const z =
        normalized(D3DXVECTOR3(pEye->x - pAt->x, pEye->y - pAt->y, pEye->z - pAt->z));
    D3DXVECTOR3 const x = normalized(cross(*pUp, z));
    D3DXVECTOR3 const y = cross(z, x);
    *pOut = view_matrix(x, y, z, *pEye);
    return pOut;
}

D3DXMATRIX* D3DXMatrixLookAtLH(D3DXMATRIX* pOut, const D3DXVECTOR3* pEye, const D3DXVECTOR3* pAt,
                               const D3DXVECTOR3* pUp)
{
    if (pOut == nullptr || pEye == nullptr || pAt == nullptr || pUp == nullptr)
        return pOut;
    D3DXVECTOR3 const z =
        normalized(D3DXVECTOR3(pAt->x - pEye->x, pAt->y - pEye->y, pAt->z - pEye->z));
    D3DXVECTOR3 const x = normalized(cross(*pUp, z));
    D3DXVECTOR3 const y = cross(z, x);
    *pOut = view_matrix(x, y, z, *pEye);
    return pOut;
}

D3DXMATRIX* D3DXMatrixPerspectiveFovRH(D3DXMATRIX* pOut, FLOAT fovy, FLOAT Aspect, FLOAT zn,
                                       FLOAT zf)
{
    if (D3DXMatrixIdentity(pOut) == nullptr)
        return pOut;
    float const ys = 1.0f / std::tan(fovy / 2);
    pOut->_11 = ys / Aspect;
    pOut->_22 = ys;
    pOut->_33 = zf / (zn - zf);
    pOut->_34 = -1;
    pOut->_43 = zn * zf / (zn - zf);
    pOut->_44 = 0;
    return pOut;
}

D3DXMATRIX* D3DXMatrixPerspectiveFovLH(D3DXMATRIX* pOut, FLOAT fovy, FLOAT Aspect, FLOAT zn,
                                       FLOAT zf)
{
    if (D3DXMatrixIdentity(pOut) == nullptr)
        return pOut;
    float const ys = 1.0f / std::tan(fovy / 2);
    pOut->_11 = ys / Aspect;
    pOut->_22 = ys;
    pOut->_33 = zf / (zf - zn);
    pOut->_34 = 1;
    pOut->_43 = -zn * zf / (zf - zn);
    pOut->_44 = 0;
    return pOut;
}

D3DXMATRIX* D3DXMatrixOrthoRH(D3DXMATRIX* pOut, FLOAT w, FLOAT h, FLOAT zn, FLOAT zf)
{
    if (D3DXMatrixIdentity(pOut) == nullptr)
        return pOut;
    pOut->_11 = 2 / w;
    pOut->_22 = 2 / h;
    pOut->_33 = 1 / (zn - zf);
    pOut->_43 = zn / (zn - zf);
    return pOut;
}

D3DXMATRIX* D3DXMatrixOrthoLH(D3DXMATRIX* pOut, FLOAT w, FLOAT h, FLOAT zn, FLOAT zf)
{
    if (D3DXMatrixIdentity(pOut) == nullptr)
        return pOut;
    pOut->_11 = 2 / w;
    pOut->_22 = 2 / h;
    pOut->_33 = 1 / (zf - zn);
    pOut->_43 = zn / (zn - zf);
    return pOut;
}

D3DXMATRIX* D3DXMatrixOrthoOffCenterRH(D3DXMATRIX* pOut, FLOAT l, FLOAT r, FLOAT b, FLOAT t,
                                       FLOAT zn, FLOAT zf)
{
    if (D3DXMatrixIdentity(pOut) == nullptr)
        return pOut;
    pOut->_11 = 2 / (r - l);
    pOut->_22 = 2 / (t - b);
    pOut->_33 = 1 / (zn - zf);
    pOut->_41 = (l + r) / (l - r);
    pOut->_42 = (t + b) / (b - t);
    pOut->_43 = zn / (zn - zf);
    return pOut;
}

D3DXQUATERNION* D3DXQuaternionIdentity(D3DXQUATERNION* pOut)
{
    if (pOut != nullptr)
        *pOut = D3DXQUATERNION(0, 0, 0, 1);
    return pOut;
}

D3DXQUATERNION* D3DXQuaternionNormalize(D3DXQUATERNION* pOut, const D3DXQUATERNION* pQ)
{
    if (pOut == nullptr || pQ == nullptr)
        return pOut;
    float len = std::sqrt(pQ->x * pQ->x + pQ->y * pQ->y + pQ->z * pQ->z + pQ->w * pQ->w);
    if (len == 0.0f)
        *pOut = D3DXQUATERNION(0, 0, 0, 0);
    else
        *pOut = D3DXQUATERNION(pQ->x / len, pQ->y / len, pQ->z / len, pQ->w / len);
    return pOut;
}

D3DXQUATERNION* D3DXQuaternionRotationMatrix(D3DXQUATERNION* pOut, const D3DXMATRIX* pM)
{
    if (pOut == nullptr || pM == nullptr)
        return pOut;
    D3DXMATRIX const& m = *pM;
    float const trace = m._11 + m._22 + m._33;
    D3DXQUATERNION q;
    // The largest of w, x, y, z is found from the diagonal; dividing by it stays stable.
    if (trace > 0.0f)
    {
        float s = std::sqrt(trace + 1.0f) * 2;
        q = {(m._23 - m._32) / s, (m._31 - m._13) / s, (m._12 - m._21) / s, s / 4};
    }
    else if (m._11 >= m._22 && m._11 >= m._33)
    {
        float s = std::sqrt(1.0f + m._11 - m._22 - m._33) * 2;
        q = {s / 4, (m._12 + m._21) / s, (m._13 + m._31) / s, (m._23 - m._32) / s};
    }
    else if (m._22 >= m._33)
    {
        float s = std::sqrt(1.0f + m._22 - m._11 - m._33) * 2;
        q = {(m._12 + m._21) / s, s / 4, (m._23 + m._32) / s, (m._31 - m._13) / s};
    }
    else
    {
        float s = std::sqrt(1.0f + m._33 - m._11 - m._22) * 2;
        q = {(m._13 + m._31) / s, (m._23 + m._32) / s, s / 4, (m._12 - m._21) / s};
    }
    return D3DXQuaternionNormalize(pOut, &q);
}

D3DXQUATERNION* D3DXQuaternionRotationAxis(D3DXQUATERNION* pOut, const D3DXVECTOR3* pV, FLOAT Angle)
{
    if (pOut == nullptr || pV == nullptr)
        return pOut;
    D3DXVECTOR3 const axis = normalized(*pV);
    float const s = std::sin(Angle / 2);
    *pOut = D3DXQUATERNION(axis.x * s, axis.y * s, axis.z * s, std::cos(Angle / 2));
    return pOut;
}

FLOAT D3DXVec3Length(const D3DXVECTOR3* pV)
{
    return pV ? std::sqrt(dot(*pV, *pV)) : 0.0f;
}

FLOAT D3DXVec3Dot(const D3DXVECTOR3* pV1, const D3DXVECTOR3* pV2)
{
    return pV1 && pV2 ? dot(*pV1, *pV2) : 0.0f;
}

D3DXVECTOR3* D3DXVec3Cross(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV1, const D3DXVECTOR3* pV2)
{
    if (pOut && pV1 && pV2)
        *pOut = cross(*pV1, *pV2);
    return pOut;
}

D3DXVECTOR3* D3DXVec3Add(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV1, const D3DXVECTOR3* pV2)
{
    if (pOut && pV1 && pV2)
        *pOut = D3DXVECTOR3(pV1->x + pV2->x, pV1->y + pV2->y, pV1->z + pV2->z);
    return pOut;
}

D3DXVECTOR3* D3DXVec3Subtract(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV1, const D3DXVECTOR3* pV2)
{
    if (pOut && pV1 && pV2)
        *pOut = D3DXVECTOR3(pV1->x - pV2->x, pV1->y - pV2->y, pV1->z - pV2->z);
    return pOut;
}

D3DXVECTOR3* D3DXVec3Scale(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV, FLOAT s)
{
    if (pOut && pV)
        *pOut = D3DXVECTOR3(pV->x * s, pV->y * s, pV->z * s);
    return pOut;
}

D3DXVECTOR3* D3DXVec3Normalize(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV)
{
    if (pOut && pV)
        *pOut = normalized(*pV);
    return pOut;
}

D3DXVECTOR4* D3DXVec3Transform(D3DXVECTOR4* pOut, const D3DXVECTOR3* pV, const D3DXMATRIX* pM)
{
    if (pOut && pV)
    {
        D3DXVECTOR4 v(pV->x, pV->y, pV->z, 1);
        D3DXVec4Transform(pOut, &v, pM);
    }
    return pOut;
}

D3DXVECTOR3* D3DXVec3TransformCoord(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV, const D3DXMATRIX* pM)
{
    if (pOut && pV && pM)
    {
        D3DXVECTOR4 r;
        D3DXVec3Transform(&r, pV, pM);
        float const w = r.w != 0.0f ? r.w : 1.0f;
        *pOut = D3DXVECTOR3(r.x / w, r.y / w, r.z / w);
    }
    return pOut;
}

D3DXVECTOR3* D3DXVec3TransformNormal(D3DXVECTOR3* pOut, const D3DXVECTOR3* pV, const D3DXMATRIX* pM)
{
    if (pOut && pV && pM)
    {
        D3DXMATRIX const& m = *pM;
        *pOut = D3DXVECTOR3(pV->x * m._11 + pV->y * m._21 + pV->z * m._31,
                            pV->x * m._12 + pV->y * m._22 + pV->z * m._32,
                            pV->x * m._13 + pV->y * m._23 + pV->z * m._33);
    }
    return pOut;
}

D3DXVECTOR4* D3DXVec4Transform(D3DXVECTOR4* pOut, const D3DXVECTOR4* pV, const D3DXMATRIX* pM)
{
    if (pOut && pV && pM)
    {
        D3DXMATRIX const& m = *pM;
        D3DXVECTOR4 const v = *pV;
        *pOut = D3DXVECTOR4(v.x * m._11 + v.y * m._21 + v.z * m._31 + v.w * m._41,
                            v.x * m._12 + v.y * m._22 + v.z * m._32 + v.w * m._42,
                            v.x * m._13 + v.y * m._23 + v.z * m._33 + v.w * m._43,
                            v.x * m._14 + v.y * m._24 + v.z * m._34 + v.w * m._44);
    }
    return pOut;
}
