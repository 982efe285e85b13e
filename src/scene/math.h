// Single-precision vector math of the scene model and the three conversions
// whose conventions the whole tool relies on.
#pragma once

#include <cstdint>

struct Vec3 {
    float x = 0.0f, y = 0.0f, z = 0.0f;

    Vec3() = default;
    Vec3(float ax, float ay, float az) : x(ax), y(ay), z(az) {}

    void Set(float ax, float ay, float az) { x = ax; y = ay; z = az; }
    void SetZero() { x = y = z = 0.0f; }
    float& operator[](int i) { return i == 0 ? x : (i == 1 ? y : z); }
    float operator[](int i) const { return i == 0 ? x : (i == 1 ? y : z); }
    bool operator!=(const Vec3& o) const { return x != o.x || y != o.y || z != o.z; }
    bool operator==(const Vec3& o) const { return !(*this != o); }
    Vec3& operator*=(float s) { x *= s; y *= s; z *= s; return *this; }
    Vec3 operator-(const Vec3& o) const { return {x - o.x, y - o.y, z - o.z}; }
    Vec3 operator+(const Vec3& o) const { return {x + o.x, y + o.y, z + o.z}; }
    Vec3& operator-=(const Vec3& o) { x -= o.x; y -= o.y; z -= o.z; return *this; }
    Vec3& operator+=(const Vec3& o) { x += o.x; y += o.y; z += o.z; return *this; }
    float LengthSquared() const { return x * x + y * y + z * z; }
    void Normalize();
    // Component-wise maximum / minimum in place.
    void Max(const Vec3& o);
    void Min(const Vec3& o);
};

Vec3 Scaled(const Vec3& v, float s);
float Dot(const Vec3& a, const Vec3& b);
Vec3 Cross(const Vec3& a, const Vec3& b);
float MaxComponent(const Vec3& v);
float MinComponent(const Vec3& v);
Vec3 Abs(const Vec3& v);

struct Quat {
    float x = 0.0f, y = 0.0f, z = 0.0f, w = 0.0f;  // default is all zero, not identity

    Quat() = default;
    Quat(float ax, float ay, float az, float aw) : x(ax), y(ay), z(az), w(aw) {}

    void Set(float ax, float ay, float az, float aw) { x = ax; y = ay; z = az; w = aw; }
    float& operator[](int i) { return i == 0 ? x : (i == 1 ? y : (i == 2 ? z : w)); }
    float operator[](int i) const { return i == 0 ? x : (i == 1 ? y : (i == 2 ? z : w)); }
    Quat operator*(float s) const { return {x * s, y * s, z * s, w * s}; }
    Quat& operator*=(float s) { x *= s; y *= s; z *= s; w *= s; return *this; }
    Quat operator-(const Quat& o) const { return {x - o.x, y - o.y, z - o.z, w - o.w}; }
    Quat operator+(const Quat& o) const { return {x + o.x, y + o.y, z + o.z, w + o.w}; }
    bool operator==(const Quat& o) const { return x == o.x && y == o.y && z == o.z && w == o.w; }
    bool operator!=(const Quat& o) const { return !(*this == o); }
};

// Row-major 4x4; the translation sits in elements 12, 13, 14 (row vectors times matrix).
struct Mat4 {
    float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    float& operator()(int row, int col) { return m[row * 4 + col]; }
    float operator()(int row, int col) const { return m[row * 4 + col]; }
    float& operator[](int i) { return m[i]; }
    float operator[](int i) const { return m[i]; }
    bool operator==(const Mat4& o) const;
    bool operator!=(const Mat4& o) const { return !(*this == o); }
};

float Determinant(const Mat4& m);

struct BoundingBox {
    bool valid = false;
    Vec3 min;
    Vec3 max;

    void Reset() { valid = false; }
    void Extend(const Vec3& point);
};

struct MatrixParts {
    Vec3 scale;
    float shearXY = 0.0f, shearXZ = 0.0f, shearYZ = 0.0f;
    Vec3 rotation;  // radians
    Vec3 translation;
    float perspective[4] = {0, 0, 0, 0};
};

// Single precision: used for animation channels.
Quat EulerToQuat(const Vec3& degrees);
// Double precision with the result stored as f32: used for node rotations written to glTF.
Quat EulerToQuatPrecise(const Vec3& degrees);
Vec3 QuatToEuler(const Quat& q);
MatrixParts Decompose(const Mat4& matrix);
