// Length unit of a scene, as the length of one unit in centimetres, and the conversion
// of a scene from its unit into another.
#pragma once

class FbxScene;

// Options of a unit conversion.
struct FbxUnitConversionOptions {
    // The root's children absorb the change in their scaling, so that deeper nodes keep
    // their values; otherwise every node's translation is scaled instead.
    bool convertRrsNodes = true;
    bool convertCameraClipPlanes = true;
};

class FbxSystemUnit {
public:
    using ConversionOptions = FbxUnitConversionOptions;

    explicit FbxSystemUnit(double scaleFactor = 1.0, double multiplier = 1.0)
        : scaleFactor_(scaleFactor), multiplier_(multiplier) {}

    static const FbxSystemUnit mm, dm, cm, m, km, Inch, Foot, Mile, Yard;

    double GetScaleFactor() const { return scaleFactor_; }
    double GetMultiplier() const { return multiplier_; }

    // Equal when scale factor and multiplier each differ by at most 1e-6.
    bool operator==(const FbxSystemUnit& o) const;
    bool operator!=(const FbxSystemUnit& o) const { return !(*this == o); }

    // Factor that takes lengths in `source` units to this unit. A source factor within
    // the double epsilon of 0 is replaced by that epsilon with its sign.
    double GetConversionFactorFrom(const FbxSystemUnit& source) const;

    // Scales the scene into this unit when its unit differs: translations (with curves)
    // of the nodes that take the change, the scaling of the root's children, cameras'
    // clip planes and poses; then the scene's UnitScaleFactor. A null scene, or a factor
    // that is not a finite number, leaves the scene alone.
    void ConvertScene(FbxScene* scene, const ConversionOptions& options = ConversionOptions()) const;

private:
    double scaleFactor_;
    double multiplier_;
};
