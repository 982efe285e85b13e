#include "scene/math.h"

#include <cmath>

void Vec3::Normalize() {
    float len = std::sqrt(LengthSquared());
    if (len == 0.0f) return;
    float inv = 1.0f / len;
    x *= inv; y *= inv; z *= inv;
}

void Vec3::Max(const Vec3& o) {
    if (o.x > x) x = o.x;
    if (o.y > y) y = o.y;
    if (o.z > z) z = o.z;
}

void Vec3::Min(const Vec3& o) {
    if (o.x < x) x = o.x;
    if (o.y < y) y = o.y;
    if (o.z < z) z = o.z;
}

Vec3 Scaled(const Vec3& v, float s) { return {v.x * s, v.y * s, v.z * s}; }
float Dot(const Vec3& a, const Vec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Vec3 Cross(const Vec3& a, const Vec3& b) {
    return {a.y * b.z - b.y * a.z, b.x * a.z - a.x * b.z, a.x * b.y - b.x * a.y};
}

float MaxComponent(const Vec3& v) {
    float r = v.x > v.y ? v.x : v.y;
    return r > v.z ? r : v.z;
}

float MinComponent(const Vec3& v) {
    float r = v.x < v.y ? v.x : v.y;
    return r < v.z ? r : v.z;
}

Vec3 Abs(const Vec3& v) { return {std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)}; }

bool Mat4::operator==(const Mat4& o) const {
    for (int i = 0; i < 16; ++i)
        if (m[i] != o.m[i]) return false;
    return true;
}

float Determinant(const Mat4& a) {
    const float* m = a.m;
    float s0 = m[0] * m[5] - m[4] * m[1];
    float s1 = m[0] * m[6] - m[4] * m[2];
    float s2 = m[0] * m[7] - m[4] * m[3];
    float s3 = m[1] * m[6] - m[5] * m[2];
    float s4 = m[1] * m[7] - m[5] * m[3];
    float s5 = m[2] * m[7] - m[6] * m[3];
    float c5 = m[10] * m[15] - m[14] * m[11];
    float c4 = m[9] * m[15] - m[13] * m[11];
    float c3 = m[9] * m[14] - m[13] * m[10];
    float c2 = m[8] * m[15] - m[12] * m[11];
    float c1 = m[8] * m[14] - m[12] * m[10];
    float c0 = m[8] * m[13] - m[12] * m[9];
    return s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
}

void BoundingBox::Extend(const Vec3& point) {
    if (!valid) {
        min = point;
        max = point;
        valid = true;
        return;
    }
    min.Min(point);
    max.Max(point);
}

Quat EulerToQuat(const Vec3& degrees) {
    const float k = 0.008726646f;
    float hx = degrees.x * k, hy = degrees.y * k, hz = degrees.z * k;
    float sx = sinf(hx), cx = cosf(hx);
    float sy = sinf(hy), cy = cosf(hy);
    float sz = sinf(hz), cz = cosf(hz);
    return {cy * sx * cz - sy * cx * sz, cy * sx * sz + sy * cx * cz, cy * cx * sz - sy * sx * cz,
            sy * sx * sz + cy * cx * cz};
}

Quat EulerToQuatPrecise(const Vec3& degrees) {
    const double k = 0.008726646192371845;
    double hx = degrees.x * k, hy = degrees.y * k, hz = degrees.z * k;
    double sx = std::sin(hx), cx = std::cos(hx);
    double sy = std::sin(hy), cy = std::cos(hy);
    double sz = std::sin(hz), cz = std::cos(hz);
    return {static_cast<float>(cy * sx * cz - sy * cx * sz), static_cast<float>(cy * sx * sz + sy * cx * cz),
            static_cast<float>(cy * cx * sz - sy * sx * cz), static_cast<float>(sy * sx * sz + cy * cx * cz)};
}

Vec3 QuatToEuler(const Quat& q) {
    const float toDegrees = 57.295776f;
    float t = 2.0f * (q.w * q.y - q.z * q.x);
    Vec3 r;
    if (t <= -0.99999f) {
        r.x = 2.0f * atan2f(q.x, q.w);
        r.y = -1.5707964f;
        r.z = 0.0f;
    } else if (t >= 0.99999f) {
        r.x = 2.0f * atan2f(q.x, q.w);
        r.y = 1.5707964f;
        r.z = 0.0f;
    } else {
        r.x = atan2f(2.0f * (q.z * q.y + q.w * q.x), 1.0f - 2.0f * (q.x * q.x + q.y * q.y));
        r.y = asinf(t);
        r.z = atan2f(2.0f * (q.w * q.z + q.y * q.x), 1.0f - 2.0f * (q.z * q.z + q.y * q.y));
    }
    return {r.x * toDegrees, r.y * toDegrees, r.z * toDegrees};
}

static float Length(const Vec3& v) { return std::sqrt(v.LengthSquared()); }

MatrixParts Decompose(const Mat4& matrix) {
    MatrixParts out;
    Mat4 m = matrix;
    if (m(3, 3) == 0.0f) return out;
    // The divisor is re-read for every element, so the last row is divided by a
    // value that changes as it goes, and m[3][3] itself ends up 1.
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) m(r, c) /= m(3, 3);

    Mat4 p = m;
    p(0, 3) = 0.0f;
    p(1, 3) = 0.0f;
    p(2, 3) = 0.0f;
    p(3, 3) = 1.0f;
    if (Determinant(p) == 0.0f) return out;

    if (m(0, 3) != 0.0f || m(1, 3) != 0.0f || m(2, 3) != 0.0f) {
        m(0, 3) = 0.0f;
        m(1, 3) = 0.0f;
        m(2, 3) = 0.0f;
        m(3, 3) = 1.0f;
    }

    out.translation = {m(3, 0), m(3, 1), m(3, 2)};

    Vec3 row[3];
    for (int r = 0; r < 3; ++r) row[r] = {m(r, 0), m(r, 1), m(r, 2)};

    out.scale.x = Length(row[0]);
    row[0].Normalize();

    out.shearXY = Dot(row[0], row[1]);
    row[1] -= Scaled(row[0], out.shearXY);
    out.scale.y = Length(row[1]);
    row[1].Normalize();
    out.shearXY /= out.scale.y;

    out.shearXZ = Dot(row[0], row[2]);
    row[2] -= Scaled(row[0], out.shearXZ);
    out.shearYZ = Dot(row[1], row[2]);
    row[2] -= Scaled(row[1], out.shearYZ);
    out.scale.z = Length(row[2]);
    row[2].Normalize();
    out.shearXZ /= out.scale.z;
    out.shearYZ /= out.scale.z;

    if (Dot(row[0], Cross(row[1], row[2])) < 0.0f) {
        out.scale *= -1.0f;
        for (auto& r : row) r *= -1.0f;
    }

    out.rotation.y = std::asin(-row[0][2]);
    if (std::cos(out.rotation.y) == 0.0f) {
        out.rotation.x = std::atan2(row[1][0], row[1][1]);
        out.rotation.z = 0.0f;
    } else {
        out.rotation.x = std::atan2(row[1][2], row[2][2]);
        out.rotation.z = std::atan2(row[0][1], row[0][0]);
    }
    return out;
}
