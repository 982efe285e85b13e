#include "fbx/fbx_axis_system.h"

namespace {

// Sign of the permutation (a, b, c) of (0, 1, 2).
int PermutationSign(int a, int b, int c) {
    if ((a == 0 && b == 1 && c == 2) || (a == 1 && b == 2 && c == 0) || (a == 2 && b == 0 && c == 1)) return 1;
    return -1;
}

}  // namespace

FbxAxisSystem::FbxAxisSystem(EUpVector up, EFrontVector front, ECoordSystem coord) {
    const int upValue = static_cast<int>(up);
    const int frontValue = static_cast<int>(front);
    const int upMagnitude = upValue < 0 ? -upValue : upValue;
    const int frontMagnitude = frontValue < 0 ? -frontValue : frontValue;
    if (upMagnitude < 1 || upMagnitude > 3 || frontMagnitude < 1 || frontMagnitude > 2 ||
        (coord != eRightHanded && coord != eLeftHanded))
        return;  // the defaults: Y up, odd parity, right handed
    upAxis_ = upMagnitude - 1;
    upSign_ = upValue < 0 ? -1 : 1;
    const int low = upAxis_ == 0 ? 1 : 0;
    const int high = upAxis_ == 2 ? 1 : 2;
    frontAxis_ = frontMagnitude == eParityEven ? low : high;
    frontSign_ = frontValue < 0 ? -1 : 1;
    coordAxis_ = frontAxis_ == low ? high : low;
    // Right handed: side x up points along front.
    const int handed = PermutationSign(coordAxis_, upAxis_, frontAxis_) * upSign_ * frontSign_;
    coordSign_ = coord == eRightHanded ? handed : -handed;
}

FbxAxisSystem::FbxAxisSystem(int32_t upAxis, int32_t upSign, int32_t frontAxis, int32_t frontSign,
                             int32_t coordAxis, int32_t coordSign)
    : upAxis_(upAxis), upSign_(upSign), frontAxis_(frontAxis), frontSign_(frontSign), coordAxis_(coordAxis),
      coordSign_(coordSign) {}

bool FbxAxisSystem::operator==(const FbxAxisSystem& o) const {
    return upAxis_ == o.upAxis_ && upSign_ == o.upSign_ && frontAxis_ == o.frontAxis_ && frontSign_ == o.frontSign_ &&
           coordAxis_ == o.coordAxis_ && coordSign_ == o.coordSign_;
}

FbxAMatrix FbxAxisSystem::GetBasis() const {
    FbxAMatrix m;
    const int32_t axes[3] = {coordAxis_, upAxis_, frontAxis_};
    const int32_t signs[3] = {coordSign_, upSign_, frontSign_};
    for (int row = 0; row < 3; ++row) {
        for (int c = 0; c < 3; ++c) m.data[row][c] = 0.0;
        if (axes[row] >= 0 && axes[row] <= 2) m.data[row][axes[row]] = static_cast<double>(signs[row]);
    }
    return m;
}

FbxAMatrix FbxAxisSystem::GetConversionMatrixFrom(const FbxAxisSystem& source) const {
    return GetBasis() * source.GetBasis().Inverse();
}
