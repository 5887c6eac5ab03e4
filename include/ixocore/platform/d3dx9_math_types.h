#pragma once
// The D3DX value types shared by the effect and the other D3DX helpers: D3DXMATRIX
// (row-vector convention, as D3DMATRIX), D3DXVECTOR2/3/4 and D3DXQUATERNION.

#include <ixocore/platform/d3d9.h>

struct D3DXVECTOR2
{
    D3DXVECTOR2() = default;
    D3DXVECTOR2(float fx, float fy) : x(fx), y(fy) {}
    explicit D3DXVECTOR2(const float* f) : x(f[0]), y(f[1]) {}
    operator float*() { return &x; }
    operator const float*() const { return &x; }
    bool operator==(const D3DXVECTOR2& o) const { return x == o.x && y == o.y; }

    float x = 0.f;
    float y = 0.f;
};

struct D3DXVECTOR3 : D3DVECTOR
{
    D3DXVECTOR3() : D3DVECTOR{0.f, 0.f, 0.f} {}
    D3DXVECTOR3(float fx, float fy, float fz) : D3DVECTOR{fx, fy, fz} {}
    explicit D3DXVECTOR3(const float* f) : D3DVECTOR{f[0], f[1], f[2]} {}
    D3DXVECTOR3(const D3DVECTOR& v) : D3DVECTOR(v) {}
    operator float*() { return &x; }
    operator const float*() const { return &x; }
    bool operator==(const D3DXVECTOR3& o) const { return x == o.x && y == o.y && z == o.z; }
};

struct D3DXVECTOR4
{
    D3DXVECTOR4() = default;
    D3DXVECTOR4(float fx, float fy, float fz, float fw) : x(fx), y(fy), z(fz), w(fw) {}
    explicit D3DXVECTOR4(const float* f) : x(f[0]), y(f[1]), z(f[2]), w(f[3]) {}
    operator float*() { return &x; }
    operator const float*() const { return &x; }
    bool operator==(const D3DXVECTOR4& o) const
    {
        return x == o.x && y == o.y && z == o.z && w == o.w;
    }

    float x = 0.f;
    float y = 0.f;
    float z = 0.f;
    float w = 0.f;
};

struct D3DXQUATERNION
{
    D3DXQUATERNION() = default;
    D3DXQUATERNION(float fx, float fy, float fz, float fw) : x(fx), y(fy), z(fz), w(fw) {}
    explicit D3DXQUATERNION(const float* f) : x(f[0]), y(f[1]), z(f[2]), w(f[3]) {}
    operator float*() { return &x; }
    operator const float*() const { return &x; }

    float x = 0.f;
    float y = 0.f;
    float z = 0.f;
    float w = 1.f;
};

// A D3DMATRIX with constructors and element access; m[row][column], row vectors.
struct D3DXMATRIX : D3DMATRIX
{
    D3DXMATRIX() : D3DMATRIX{} {}
    D3DXMATRIX(const D3DMATRIX& mat) : D3DMATRIX(mat) {}
    explicit D3DXMATRIX(const float* f) : D3DMATRIX{}
    {
        for (int i = 0; i < 16; ++i)
            m[i / 4][i % 4] = f[i];
    }
    D3DXMATRIX(float f11, float f12, float f13, float f14, float f21, float f22, float f23,
               float f24, float f31, float f32, float f33, float f34, float f41, float f42,
               float f43, float f44)
        : D3DMATRIX{}
    {
        _11 = f11, _12 = f12, _13 = f13, _14 = f14;
        _21 = f21, _22 = f22, _23 = f23, _24 = f24;
        _31 = f31, _32 = f32, _33 = f33, _34 = f34;
        _41 = f41, _42 = f42, _43 = f43, _44 = f44;
    }
    float& operator()(UINT row, UINT col) { return m[row][col]; }
    float operator()(UINT row, UINT col) const { return m[row][col]; }
    operator float*() { return &_11; }
    operator const float*() const { return &_11; }
    bool operator==(const D3DXMATRIX& o) const
    {
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
                if (m[r][c] != o.m[r][c])
                    return false;
        return true;
    }
    bool operator!=(const D3DXMATRIX& o) const { return !(*this == o); }
};

typedef D3DXMATRIX* LPD3DXMATRIX;
