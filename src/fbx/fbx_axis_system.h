// Axis system of a scene: which axis points up, which to the front, which to the side,
// each with a sign; and the conversion of a scene from one system to another.
#pragma once

#include <cstdint>

#include "fbx/fbx_matrix.h"

class FbxScene;

class FbxAxisSystem {
public:
    // Signed: a negative value points along the negative axis.
    enum EUpVector : int { eXAxis = 1, eYAxis = 2, eZAxis = 3 };
    // Of the two axes that are not up, in increasing order: even takes the first, odd the second.
    enum EFrontVector : int { eParityEven = 1, eParityOdd = 2 };
    enum ECoordSystem : int { eRightHanded = 0, eLeftHanded = 1 };

    // Y up, front along +z, side along +x: the scene default.
    FbxAxisSystem() = default;
    // Values outside their enums read as Y up, odd parity, right handed.
    FbxAxisSystem(EUpVector up, EFrontVector front, ECoordSystem coord);
    // Raw words, taken as they are; x = 0, y = 1, z = 2, signs 1 or -1.
    FbxAxisSystem(int32_t upAxis, int32_t upSign, int32_t frontAxis, int32_t frontSign, int32_t coordAxis,
                  int32_t coordSign);

    int32_t UpAxis() const { return upAxis_; }
    int32_t UpSign() const { return upSign_; }
    int32_t FrontAxis() const { return frontAxis_; }
    int32_t FrontSign() const { return frontSign_; }
    int32_t CoordAxis() const { return coordAxis_; }
    int32_t CoordSign() const { return coordSign_; }

    // No tolerance: any of the six words differing makes two systems differ.
    bool operator==(const FbxAxisSystem& o) const;
    bool operator!=(const FbxAxisSystem& o) const { return !(*this == o); }

    // Maps the canonical frame (x side, y up, z front) into this system's axes: row 0 is
    // the coord sign at the coord axis' column, row 1 the up sign at the up axis' column,
    // row 2 the front sign at the front axis' column. Axis words outside 0 to 2 leave
    // their row zero.
    FbxAMatrix GetBasis() const;
    // Matrix that takes coordinates of `source` to coordinates of this system.
    FbxAMatrix GetConversionMatrixFrom(const FbxAxisSystem& source) const;

    // Rotates the scene into this system: the root's children and their translation and
    // rotation curves, so that every global transform is pre-multiplied by the conversion
    // matrix; then the scene's settings take this system. A null scene does nothing.
    void ConvertScene(FbxScene* scene) const;

private:
    int32_t upAxis_ = 1, upSign_ = 1;
    int32_t frontAxis_ = 2, frontSign_ = 1;
    int32_t coordAxis_ = 0, coordSign_ = 1;
};
