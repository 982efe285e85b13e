#include "fbx/fbx_system_unit.h"

#include <cmath>

const FbxSystemUnit FbxSystemUnit::mm(0.1);
const FbxSystemUnit FbxSystemUnit::dm(10.0);
const FbxSystemUnit FbxSystemUnit::cm(1.0);
const FbxSystemUnit FbxSystemUnit::m(100.0);
const FbxSystemUnit FbxSystemUnit::km(100000.0);
const FbxSystemUnit FbxSystemUnit::Inch(2.54);
const FbxSystemUnit FbxSystemUnit::Foot(30.48);
const FbxSystemUnit FbxSystemUnit::Mile(160934.4);
const FbxSystemUnit FbxSystemUnit::Yard(91.44);

bool FbxSystemUnit::operator==(const FbxSystemUnit& o) const {
    return std::fabs(scaleFactor_ - o.scaleFactor_) <= 1e-6 && std::fabs(multiplier_ - o.multiplier_) <= 1e-6;
}

double FbxSystemUnit::GetConversionFactorFrom(const FbxSystemUnit& source) const {
    constexpr double kEpsilon = 2.220446049250313e-16;
    double sourceFactor = source.scaleFactor_ * source.multiplier_;
    if (std::fabs(sourceFactor) <= kEpsilon) sourceFactor = std::copysign(kEpsilon, sourceFactor);
    return sourceFactor / (scaleFactor_ * multiplier_);
}
