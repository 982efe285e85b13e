// Double-precision vector and affine matrix of the FBX document layer, and the Euler
// angle conversions in every rotation order that node transforms are built from.
#pragma once

#include <array>

class FbxVector4 {
public:
    double data[4] = {0.0, 0.0, 0.0, 0.0};  // x, y, z, w

    FbxVector4() = default;
    // From three values the vector is a point: w = 1.
    FbxVector4(double x, double y, double z, double w = 1.0) : data{x, y, z, w} {}
    explicit FbxVector4(const std::array<double, 3>& v) : data{v[0], v[1], v[2], 1.0} {}

    double& operator[](int i) { return data[i]; }
    double operator[](int i) const { return data[i]; }

    // Arithmetic acts on all four components, as a plain four-vector.
    FbxVector4 operator+(const FbxVector4& o) const;
    FbxVector4 operator-(const FbxVector4& o) const;
    FbxVector4 operator-() const;
    FbxVector4 operator*(double s) const;
    // Component by component.
    FbxVector4 operator*(const FbxVector4& o) const;
    bool operator==(const FbxVector4& o) const;
    bool operator!=(const FbxVector4& o) const { return !(*this == o); }

    // Over x, y and z only.
    double Length() const;
    bool IsZero3() const { return data[0] == 0.0 && data[1] == 0.0 && data[2] == 0.0; }
    std::array<double, 3> ToDouble3() const { return {data[0], data[1], data[2]}; }
};

// Affine 4x4 matrix: rows 0, 1, 2 are the images of the x, y and z axes, row 3 the
// translation, the last column (0, 0, 0, 1). A * B applies B first, so that
// A p = p.x * row0 + p.y * row1 + p.z * row2 + row3 for a point p.
class FbxAMatrix {
public:
    double data[4][4];

    FbxAMatrix() { SetIdentity(); }
    FbxAMatrix(const FbxVector4& t, const FbxVector4& r, const FbxVector4& s) { SetTRS(t, r, s); }

    void SetIdentity();
    double Get(int row, int column) const { return data[row][column]; }
    FbxVector4 GetRow(int row) const { return {data[row][0], data[row][1], data[row][2], data[row][3]}; }
    void SetRow(int row, const FbxVector4& v);

    // Translation: replaces row 3, keeps rotation and scale.
    void SetT(const FbxVector4& t);
    // Rotation as Euler XYZ degrees (x turns first); keeps translation and scale.
    void SetR(const FbxVector4& degrees);
    // Scale; keeps translation and rotation.
    void SetS(const FbxVector4& s);
    // T * R * S in one go.
    void SetTRS(const FbxVector4& t, const FbxVector4& degrees, const FbxVector4& s);

    FbxVector4 GetT() const;
    // Euler XYZ degrees of the matrix with its scale taken out.
    FbxVector4 GetR() const;
    // Lengths of rows 0, 1, 2; all three negated when the determinant is negative.
    FbxVector4 GetS() const;

    // Determinant of the 3x3 part.
    double Determinant() const;
    // Affine inverse; the identity when the 3x3 part is singular.
    FbxAMatrix Inverse() const;
    FbxAMatrix operator*(const FbxAMatrix& b) const;
    // The point p mapped by this matrix (w of p is ignored, the result has w = 1).
    FbxVector4 MultT(const FbxVector4& p) const;
    // The direction v mapped by the 3x3 part only (w = 0).
    FbxVector4 MultR(const FbxVector4& v) const;

    bool operator==(const FbxAMatrix& o) const;
    bool operator!=(const FbxAMatrix& o) const { return !(*this == o); }
    operator double*() { return &data[0][0]; }
    operator const double*() const { return &data[0][0]; }
};

// Rotation orders of a node: the axis taken first, second and third.
enum FbxRotationOrder {
    eFbxEulerXYZ = 0,
    eFbxEulerXZY = 1,
    eFbxEulerYZX = 2,
    eFbxEulerYXZ = 3,
    eFbxEulerZXY = 4,
    eFbxEulerZYX = 5,
    eFbxSphericXYZ = 6,
};

inline constexpr double kFbxDegreesToRadians = 0.017453292519943295;
inline constexpr double kFbxRadiansToDegrees = 57.29577951308232;

// Pure rotation matrix of Euler angles in degrees in the given order: with axes (a, b, c)
// taken first to third, R = Rc * Rb * Ra. Order 6 goes through its half-angle quaternion.
// An order outside 0 to 6 reads as 0.
FbxAMatrix FbxEulerToMatrix(const FbxVector4& degrees, int order);

// Euler angles in degrees of a pure rotation matrix in the given order. Order 0 is the
// formula of GetR. Order 6 has no closed inverse and is decomposed as order 0.
FbxVector4 FbxMatrixToEuler(const FbxAMatrix& rotation, int order);

// Diagonal scale matrix.
FbxAMatrix FbxScaleMatrix(const FbxVector4& s);
// Pure translation matrix.
FbxAMatrix FbxTranslationMatrix(const FbxVector4& t);
