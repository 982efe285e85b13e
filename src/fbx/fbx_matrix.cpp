#include "fbx/fbx_matrix.h"

#include <cmath>

namespace {

// Below this determinant the 3x3 part counts as singular.
constexpr double kSingularDeterminant = 2.220446049250313e-16;
// Below this cosine of the middle angle the decomposition is in gimbal lock.
constexpr double kGimbalLimit = 1.9073486328125e-06;
constexpr double kHalfDegreesToRadians = 0.008726646259971648;

// Axes taken first, second and third, and whether that triple is an even permutation.
struct OrderAxes {
    int first, second, third;
    double parity;
};

constexpr OrderAxes kOrderAxes[6] = {
    {0, 1, 2, 1.0},   // XYZ
    {0, 2, 1, -1.0},  // XZY
    {1, 2, 0, 1.0},   // YZX
    {1, 0, 2, -1.0},  // YXZ
    {2, 0, 1, 1.0},   // ZXY
    {2, 1, 0, -1.0},  // ZYX
};

struct CosSin {
    double cos;
    double sin;
};

CosSin Trig(double radians) { return {std::cos(radians), std::sin(radians)}; }

// Rotation about one axis by an angle in degrees.
FbxAMatrix AxisRotation(int axis, double degrees) {
    FbxVector4 euler(0.0, 0.0, 0.0);
    euler[axis] = degrees;
    return FbxEulerToMatrix(euler, eFbxEulerXYZ);
}

// Matrix of the quaternion (x, y, z, w), normalised first so that the result is a
// rotation even when the components are not of unit length.
FbxAMatrix QuaternionMatrix(double x, double y, double z, double w) {
    const double n = std::sqrt(x * x + y * y + z * z + w * w);
    FbxAMatrix m;
    if (!(n > 0.0) || !std::isfinite(n)) return m;
    x /= n; y /= n; z /= n; w /= n;
    // Row i is the image of axis i.
    m.data[0][0] = 1.0 - 2.0 * (y * y + z * z);
    m.data[0][1] = 2.0 * (x * y + w * z);
    m.data[0][2] = 2.0 * (x * z - w * y);
    m.data[1][0] = 2.0 * (x * y - w * z);
    m.data[1][1] = 1.0 - 2.0 * (x * x + z * z);
    m.data[1][2] = 2.0 * (y * z + w * x);
    m.data[2][0] = 2.0 * (x * z + w * y);
    m.data[2][1] = 2.0 * (y * z - w * x);
    m.data[2][2] = 1.0 - 2.0 * (x * x + y * y);
    return m;
}

}  // namespace

FbxVector4 FbxVector4::operator+(const FbxVector4& o) const {
    return {data[0] + o.data[0], data[1] + o.data[1], data[2] + o.data[2], data[3] + o.data[3]};
}

FbxVector4 FbxVector4::operator-(const FbxVector4& o) const {
    return {data[0] - o.data[0], data[1] - o.data[1], data[2] - o.data[2], data[3] - o.data[3]};
}

FbxVector4 FbxVector4::operator-() const { return {-data[0], -data[1], -data[2], -data[3]}; }

FbxVector4 FbxVector4::operator*(double s) const { return {data[0] * s, data[1] * s, data[2] * s, data[3] * s}; }

FbxVector4 FbxVector4::operator*(const FbxVector4& o) const {
    return {data[0] * o.data[0], data[1] * o.data[1], data[2] * o.data[2], data[3] * o.data[3]};
}

bool FbxVector4::operator==(const FbxVector4& o) const {
    return data[0] == o.data[0] && data[1] == o.data[1] && data[2] == o.data[2] && data[3] == o.data[3];
}

double FbxVector4::Length() const { return std::sqrt(data[0] * data[0] + data[1] * data[1] + data[2] * data[2]); }

void FbxAMatrix::SetIdentity() {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) data[r][c] = r == c ? 1.0 : 0.0;
}

void FbxAMatrix::SetRow(int row, const FbxVector4& v) {
    for (int c = 0; c < 4; ++c) data[row][c] = v[c];
}

void FbxAMatrix::SetT(const FbxVector4& t) {
    data[3][0] = t[0];
    data[3][1] = t[1];
    data[3][2] = t[2];
    data[3][3] = 1.0;
}

void FbxAMatrix::SetR(const FbxVector4& degrees) {
    const FbxVector4 s = GetS();
    const FbxAMatrix r = FbxEulerToMatrix(degrees, eFbxEulerXYZ);
    for (int row = 0; row < 3; ++row)
        for (int c = 0; c < 3; ++c) data[row][c] = r.data[row][c] * s[row];
}

void FbxAMatrix::SetS(const FbxVector4& s) {
    const FbxAMatrix r = FbxEulerToMatrix(GetR(), eFbxEulerXYZ);
    for (int row = 0; row < 3; ++row)
        for (int c = 0; c < 3; ++c) data[row][c] = r.data[row][c] * s[row];
}

void FbxAMatrix::SetTRS(const FbxVector4& t, const FbxVector4& degrees, const FbxVector4& s) {
    *this = FbxEulerToMatrix(degrees, eFbxEulerXYZ);
    for (int row = 0; row < 3; ++row)
        for (int c = 0; c < 3; ++c) data[row][c] *= s[row];
    SetT(t);
}

FbxVector4 FbxAMatrix::GetT() const { return {data[3][0], data[3][1], data[3][2], 1.0}; }

FbxVector4 FbxAMatrix::GetS() const {
    FbxVector4 s(GetRow(0).Length(), GetRow(1).Length(), GetRow(2).Length(), 1.0);
    if (Determinant() < 0.0) {
        s[0] = -s[0];
        s[1] = -s[1];
        s[2] = -s[2];
    }
    return s;
}

FbxVector4 FbxAMatrix::GetR() const {
    const FbxVector4 s = GetS();
    FbxAMatrix rotation;
    for (int row = 0; row < 3; ++row)
        for (int c = 0; c < 3; ++c) rotation.data[row][c] = s[row] != 0.0 ? data[row][c] / s[row] : data[row][c];
    return FbxMatrixToEuler(rotation, eFbxEulerXYZ);
}

double FbxAMatrix::Determinant() const {
    const auto& m = data;
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

FbxAMatrix FbxAMatrix::Inverse() const {
    FbxAMatrix inv;
    const double det = Determinant();
    if (std::fabs(det) <= kSingularDeterminant) return inv;
    const auto& m = data;
    const double k = 1.0 / det;
    inv.data[0][0] = (m[1][1] * m[2][2] - m[1][2] * m[2][1]) * k;
    inv.data[0][1] = (m[0][2] * m[2][1] - m[0][1] * m[2][2]) * k;
    inv.data[0][2] = (m[0][1] * m[1][2] - m[0][2] * m[1][1]) * k;
    inv.data[1][0] = (m[1][2] * m[2][0] - m[1][0] * m[2][2]) * k;
    inv.data[1][1] = (m[0][0] * m[2][2] - m[0][2] * m[2][0]) * k;
    inv.data[1][2] = (m[0][2] * m[1][0] - m[0][0] * m[1][2]) * k;
    inv.data[2][0] = (m[1][0] * m[2][1] - m[1][1] * m[2][0]) * k;
    inv.data[2][1] = (m[0][1] * m[2][0] - m[0][0] * m[2][1]) * k;
    inv.data[2][2] = (m[0][0] * m[1][1] - m[0][1] * m[1][0]) * k;
    // The translation goes back through the inverted 3x3 part: -t * inverse.
    for (int c = 0; c < 3; ++c)
        inv.data[3][c] = -(m[3][0] * inv.data[0][c] + m[3][1] * inv.data[1][c] + m[3][2] * inv.data[2][c]);
    return inv;
}

FbxAMatrix FbxAMatrix::operator*(const FbxAMatrix& b) const {
    // In stored rows, A * B is B's rows mapped through A.
    FbxAMatrix c;
    for (int r = 0; r < 4; ++r) {
        for (int col = 0; col < 3; ++col) {
            double v = b.data[r][0] * data[0][col] + b.data[r][1] * data[1][col] + b.data[r][2] * data[2][col];
            if (r == 3) v += data[3][col];
            c.data[r][col] = v;
        }
        c.data[r][3] = r == 3 ? 1.0 : 0.0;
    }
    return c;
}

FbxVector4 FbxAMatrix::MultT(const FbxVector4& p) const {
    FbxVector4 out(0.0, 0.0, 0.0, 1.0);
    for (int c = 0; c < 3; ++c) out[c] = p[0] * data[0][c] + p[1] * data[1][c] + p[2] * data[2][c] + data[3][c];
    return out;
}

FbxVector4 FbxAMatrix::MultR(const FbxVector4& v) const {
    FbxVector4 out(0.0, 0.0, 0.0, 0.0);
    for (int c = 0; c < 3; ++c) out[c] = v[0] * data[0][c] + v[1] * data[1][c] + v[2] * data[2][c];
    return out;
}

bool FbxAMatrix::operator==(const FbxAMatrix& o) const {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            if (data[r][c] != o.data[r][c]) return false;
    return true;
}

FbxAMatrix FbxEulerToMatrix(const FbxVector4& degrees, int order) {
    if (order == eFbxSphericXYZ) {
        const auto [ca, sa] = Trig(degrees[0] * kHalfDegreesToRadians);
        const auto [cb, sb] = Trig(degrees[1] * kHalfDegreesToRadians);
        const auto [cc, sc] = Trig(degrees[2] * kHalfDegreesToRadians);
        return QuaternionMatrix(cb * sa * cc, sb * ca + sc * sa, sc * ca - sb * sa, cb * ca * cc);
    }
    if (order > eFbxEulerXYZ && order < eFbxSphericXYZ) {
        const OrderAxes& axes = kOrderAxes[order];
        return AxisRotation(axes.third, degrees[axes.third]) * AxisRotation(axes.second, degrees[axes.second]) *
               AxisRotation(axes.first, degrees[axes.first]);
    }
    const auto [cx, sx] = Trig(degrees[0] * kFbxDegreesToRadians);
    const auto [cy, sy] = Trig(degrees[1] * kFbxDegreesToRadians);
    const auto [cz, sz] = Trig(degrees[2] * kFbxDegreesToRadians);
    FbxAMatrix m;
    m.data[0][0] = cz * cy;
    m.data[0][1] = sz * cy;
    m.data[0][2] = -sy;
    m.data[1][0] = sy * sx * cz - sz * cx;
    m.data[1][1] = sy * sx * sz + cz * cx;
    m.data[1][2] = cy * sx;
    m.data[2][0] = sy * cx * cz + sz * sx;
    m.data[2][1] = sy * cx * sz - cz * sx;
    m.data[2][2] = cy * cx;
    return m;
}

FbxVector4 FbxMatrixToEuler(const FbxAMatrix& rotation, int order) {
    const OrderAxes& axes = kOrderAxes[order > eFbxEulerXYZ && order < eFbxSphericXYZ ? order : 0];
    const int i = axes.first, j = axes.second, k = axes.third;
    const double p = axes.parity;
    // m(r, c) in column-vector terms: row r of the image of axis c.
    auto m = [&rotation](int r, int c) { return rotation.data[c][r]; };
    const double h = std::sqrt(m(i, i) * m(i, i) + m(j, i) * m(j, i));
    double first, second, third;
    if (h > kGimbalLimit) {
        first = std::atan2(p * m(k, j), m(k, k));
        second = std::atan2(-p * m(k, i), h);
        third = std::atan2(p * m(j, i), m(i, i));
    } else {
        first = std::atan2(-p * m(j, k), m(j, j));
        second = std::atan2(-p * m(k, i), h);
        third = 0.0;
    }
    FbxVector4 euler(0.0, 0.0, 0.0);
    euler[i] = first * kFbxRadiansToDegrees;
    euler[j] = second * kFbxRadiansToDegrees;
    euler[k] = third * kFbxRadiansToDegrees;
    return euler;
}

FbxAMatrix FbxScaleMatrix(const FbxVector4& s) {
    FbxAMatrix m;
    m.data[0][0] = s[0];
    m.data[1][1] = s[1];
    m.data[2][2] = s[2];
    return m;
}

FbxAMatrix FbxTranslationMatrix(const FbxVector4& t) {
    FbxAMatrix m;
    m.SetT(t);
    return m;
}
