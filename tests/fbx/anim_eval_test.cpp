// Curve evaluation: one table of (keys, time, expected) per interpolation family, the
// derivatives, extrapolation, and the search index. Expected values are worked out in the
// comments from the Bezier form B(u) = (1-u)^3 p0 + 3(1-u)^2 u p1 + 3(1-u) u^2 p2 + u^3 p3.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fbx/fbx_anim_eval.h"

namespace {

constexpr FbxLongLong kSecond = 141120000;

constexpr uint32_t kConst = kFbxInterpolationConstant;
constexpr uint32_t kLinear = kFbxInterpolationLinear;
constexpr uint32_t kUser = kFbxInterpolationCubic | kFbxTangentUser;
constexpr uint32_t kAuto = kFbxInterpolationCubic | kFbxTangentAuto;
constexpr uint32_t kAutoTimeIndependent = kAuto | kFbxTangentTimeIndependent;
constexpr uint32_t kTcb = kFbxInterpolationCubic | kFbxTangentTCB;
constexpr uint32_t kWeighted = kUser | kFbxWeightedMask;

struct Key {
    double seconds;
    float value;
    uint32_t flags = kLinear;
    float word0 = 0.0f;  // right slope or tension
    float word1 = 0.0f;  // next-left slope or continuity
    uint32_t word2 = 0;  // weights or bias bits
};

FbxTime At(double seconds) { return FbxTime(FbxLongLong(std::llround(seconds * double(kSecond)))); }

FbxAnimKeyStore Curve(const std::vector<Key>& keys) {
    FbxAnimKeyStore store;
    for (const Key& key : keys) {
        FbxAnimKeyAttr attr;
        attr.flags = key.flags;
        attr.data[0] = FbxFloatToBits(key.word0);
        attr.data[1] = FbxFloatToBits(key.word1);
        attr.data[2] = key.word2;
        store.AppendKey(At(key.seconds).Get(), key.value, store.AddAttr(attr));
    }
    return store;
}

// Weights as stored: right in the low half, next-left in the high half, value * 9999.
uint32_t Weights(uint32_t right, uint32_t nextLeft) { return right | (nextLeft << 16); }

struct Row {
    std::string name;
    std::vector<Key> keys;
    double seconds;
    float expected;
};

void ExpectValues(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        const FbxAnimKeyStore store = Curve(row.keys);
        EXPECT_FLOAT_EQ(EvaluateCurve(store, At(row.seconds)), row.expected) << row.name;
    }
}

TEST(FbxAnimEval, ConstantKeys) {
    const std::vector<Key> keys = {{0, 1, kConst}, {1, 3, kConst | kFbxConstantNext}, {2, 5, kConst}};
    ExpectValues({
        {"holds key 0", keys, 0.5, 1},
        {"exact key", keys, 1, 3},
        {"0x100 takes the next value at once", keys, 1.25, 5},
        {"0x100 just before the next key", keys, 1.999, 5},
        {"last key", keys, 2, 5},
    });
}

TEST(FbxAnimEval, LinearKeys) {
    const std::vector<Key> keys = {{0, 0}, {2, 10}, {3, 4}};
    ExpectValues({
        {"quarter of the first interval: 0 + 0.25 * 10", keys, 0.5, 2.5f},
        {"middle of the first interval", keys, 1, 5},
        {"middle of the second: 10 + 0.5 * (4 - 10)", keys, 2.5, 7},
        {"exact key", keys, 2, 10},
    });
}

TEST(FbxAnimEval, CubicKeys) {
    // Over 2 s from 0 to 4 with right slope 1.5 and next-left slope 3:
    // p1 = 0 + 1.5 * 2 / 3 = 1, p2 = 4 - 3 * 2 / 3 = 2.
    // u = 0.5:  0.375 * 1 + 0.375 * 2 + 0.125 * 4 = 1.625
    // u = 0.25: 3 * 0.5625 * 0.25 * 1 + 3 * 0.75 * 0.0625 * 2 + 0.015625 * 4 = 0.765625
    const std::vector<Key> user = {{0, 0, kUser, 1.5f, 3.0f}, {2, 4, kUser}};
    // Auto slopes stored as 0.005 and 0.004, time independent: below 0.01 they stand for the
    // linear slope 3 / 1 s, so p1 = 1, p2 = 2 and B(0.5) = 0.375 + 0.75 + 0.375 = 1.5.
    const std::vector<Key> autoSmall = {{0, 0, kAutoTimeIndependent, 0.005f, 0.004f}, {1, 3, kAuto}};
    // The same slopes without the time independent bit are used as stored.
    const std::vector<Key> autoStored = {{0, 0, kAuto, 0.005f, 0.004f}, {1, 3, kAuto}};
    const float storedMid = 0.375f * (0.005f / 3) + 0.375f * (3 - 0.004f / 3) + 0.125f * 3;
    // Time independent but 0.5 is not small: stored. p1 = 0.5 / 3, p2 = 3 - 0.5 / 3.
    const std::vector<Key> autoLarge = {{0, 0, kAutoTimeIndependent, 0.5f, 0.5f}, {1, 3, kAuto}};
    const float largeMid = 0.375f * (0.5f / 3) + 0.375f * (3 - 0.5f / 3) + 0.125f * 3;
    // TCB with zero tension, continuity and bias: the tangent at a key is the mean of the
    // slopes around it; at the end keys the one slope. Keys 0, 2, 6 at 0, 1, 2 s: slopes
    // 2 and 4; key 0 right = 2, key 1 left = 3, so over the first second p1 = 2/3, p2 = 1,
    // B(0.5) = 0.375 * 2/3 + 0.375 * 1 + 0.125 * 2 = 0.875.
    const std::vector<Key> tcb = {{0, 0, kTcb}, {1, 2, kTcb}, {2, 6, kTcb}};
    ExpectValues({
        {"user u = 0.5", user, 1, 1.625f},
        {"user u = 0.25", user, 0.5, 0.765625f},
        {"auto below 0.01 time independent", autoSmall, 0.5, 1.5f},
        {"auto without time independence", autoStored, 0.5, storedMid},
        {"auto time independent above 0.01", autoLarge, 0.5, largeMid},
        {"tcb", tcb, 0.5, 0.875f},
    });
}

TEST(FbxAnimEval, WeightedCubicKeys) {
    // Right weight 1 (9999), next-left weight 0: time controls 0, 1, 1, 1, so the time of
    // parameter s is 1 - (1 - s)^3 and s = 1 - cbrt(1 - u). Values 0 -> 4 over 1 s with
    // right slope 2: p1 = 0 + 2 * 1 * 1 = 2, p2 = 4 - l * 1 * 0 = 4.
    const std::vector<Key> keys = {{0, 0, kWeighted, 2.0f, 5.0f, Weights(9999, 0)}, {1, 4, kUser}};
    // u = 0.875: s = 0.5, value 0.375 * 2 + 0.375 * 4 + 0.125 * 4 = 2.75.
    const double s = 1 - std::cbrt(0.5);  // u = 0.5
    const double valueAtHalf = 3 * (1 - s) * (1 - s) * s * 2 + 3 * (1 - s) * s * s * 4 + s * s * s * 4;
    // Only the right weight given (1 = 9999): next-left keeps the default 1/3. Time controls
    // 0, 1, 2/3, 1 give x(0.5) = 0.375 + 0.25 + 0.125 = 0.75; value controls p1 = 2,
    // p2 = 4 - 3 * 1/3 = 3, so at u = 0.75: 0.375 * 2 + 0.375 * 3 + 0.125 * 4 = 2.375.
    const std::vector<Key> rightOnly = {
        {0, 0, kUser | kFbxWeightedRight, 2.0f, 3.0f, Weights(9999, 0)}, {1, 4, kUser}};
    ExpectValues({
        {"root at s = 0.5", keys, 0.875, 2.75f},
        {"root at s = 1 - cbrt(0.5)", keys, 0.5, float(valueAtHalf)},
        {"right weight only", rightOnly, 0.75, 2.375f},
    });
}

TEST(FbxAnimEval, DerivativesAtKeysAndInsideIntervals) {
    const std::vector<Key> linear = {{0, 0}, {2, 10}, {3, 4}};
    const std::vector<Key> user = {{0, 0, kUser, 1.5f, 3.0f}, {2, 4, kUser}};
    const std::vector<Key> weighted = {{0, 0, kWeighted, 2.0f, 5.0f, Weights(9999, 0)}, {1, 4, kUser}};
    auto tcbAt1 = [](float tension, float continuity, float bias) {
        return std::vector<Key>{{0, 0, kTcb}, {1, 2, kTcb, tension, continuity, FbxFloatToBits(bias)}, {2, 6, kTcb}};
    };
    struct DerivativeRow {
        std::string name;
        std::vector<Key> keys;
        double seconds;
        float left, right;
    };
    const DerivativeRow rows[] = {
        // Linear: slopes 10 / 2 s and -6 / 1 s; the outer sides of the end keys are 0.
        {"linear first key", linear, 0, 0, 5},
        {"linear middle key", linear, 2, 5, -6},
        {"linear last key", linear, 3, -6, 0},
        {"linear inside", linear, 2.5, -6, -6},
        // Cubic controls 0, 1, 2, 4 over 2 s: B'(0.5) = 3 (0.25 * 1 + 0.5 * 1 + 0.25 * 2)
        // = 3.75 per interval, 1.875 per second.
        {"user keys", user, 0, 0, 1.5f},
        {"user end key", user, 2, 3, 0},
        {"user inside", user, 1, 1.875f, 1.875f},
        // Weighted at s = 0.5: dV/ds = 3 (0.25 * 2 + 0.5 * 2 + 0) = 4.5, dx/ds =
        // 3 (1 - s)^2 = 0.75, so 6 per second.
        {"weighted inside", weighted, 0.875, 6, 6},
        // Kochanek-Bartels at key 1, slopes in 2 and out 4:
        // left = (1-T)(1+B)(1+C)/2 * 2 + (1-T)(1-B)(1-C)/2 * 4,
        // right = (1-T)(1+B)(1-C)/2 * 2 + (1-T)(1-B)(1+C)/2 * 4.
        {"tcb plain", tcbAt1(0, 0, 0), 1, 3, 3},
        {"tcb tension 0.5", tcbAt1(0.5f, 0, 0), 1, 1.5f, 1.5f},
        {"tcb continuity 0.5", tcbAt1(0, 0.5f, 0), 1, 1.5f * 0.5f * 2 + 0.5f * 0.5f * 4, 0.5f * 0.5f * 2 + 1.5f * 0.5f * 4},
        {"tcb bias 0.5", tcbAt1(0, 0, 0.5f), 1, 2.5f, 2.5f},
        {"tcb first key uses its one slope", tcbAt1(0, 0, 0), 0, 0, 2},
        {"tcb last key uses its one slope", tcbAt1(0, 0, 0), 2, 4, 0},
        {"constant", {{0, 1, kConst}, {1, 2, kConst}}, 0.5, 0, 0},
    };
    for (const DerivativeRow& row : rows) {
        const FbxAnimKeyStore store = Curve(row.keys);
        EXPECT_FLOAT_EQ(EvaluateCurveLeftDerivative(store, At(row.seconds)), row.left) << row.name;
        EXPECT_FLOAT_EQ(EvaluateCurveRightDerivative(store, At(row.seconds)), row.right) << row.name;
    }
}

TEST(FbxAnimEval, Extrapolation) {
    // Linear keys 0 at 1 s and 4 at 3 s: span 2 s, slope 2 a second.
    struct ExtrapolationRow {
        std::string name;
        FbxExtrapolation mode;
        uint32_t count;
        double seconds;
        float value, derivative;
    };
    using E = FbxExtrapolation;
    const ExtrapolationRow after[] = {
        {"constant", E::Constant, kFbxUnlimited, 5, 4, 0},
        // 4 s is repetition 1: folded to 2 s.
        {"repetition", E::Repetition, kFbxUnlimited, 4, 2, 2},
        // The seam folds onto the last key itself, whose right side is 0.
        {"repetition ends on the last value", E::Repetition, kFbxUnlimited, 5, 4, 0},
        {"second repetition: 5.5 s folds to 1.5 s", E::Repetition, kFbxUnlimited, 5.5, 1, 2},
        {"count 1 holds the last value", E::Repetition, 1, 5.5, 4, 0},
        // Mirror: 3.5 s folds to 1.5 s, then runs backwards: 1 + 3 - 1.5 = 2.5 s.
        {"mirror", E::MirrorRepetition, kFbxUnlimited, 3.5, 3, -2},
        {"mirror second repetition runs forwards", E::MirrorRepetition, kFbxUnlimited, 5.5, 1, 2},
        {"mirror count 1 holds the first value", E::MirrorRepetition, 1, 5.5, 0, 0},
        {"keep slope: 4 + 1.5 * 2", E::KeepSlope, kFbxUnlimited, 4.5, 7, 2},
        {"keep slope count 1 stops after one span: 4 + 2 * 2", E::KeepSlope, 1, 6, 8, 0},
        // Relative: repetition k adds k * (4 - 0).
        {"relative", E::RelativeRepetition, kFbxUnlimited, 4, 6, 2},
        {"relative second repetition: 1 + 2 * 4", E::RelativeRepetition, kFbxUnlimited, 5.5, 9, 2},
        {"relative count 1 holds 4 + 4", E::RelativeRepetition, 1, 5.5, 8, 0},
    };
    const ExtrapolationRow before[] = {
        {"constant", E::Constant, kFbxUnlimited, 0, 0, 0},
        // 0 s is repetition 1 before the keys: folded to 2 s.
        {"repetition", E::Repetition, kFbxUnlimited, 0, 2, 2},
        {"repetition count 0 holds the first value", E::Repetition, 0, 0, 0, 0},
        // Mirror: 0.5 s folds to 2.5 s, then backwards: 1 + 3 - 2.5 = 1.5 s.
        {"mirror", E::MirrorRepetition, kFbxUnlimited, 0.5, 1, -2},
        {"keep slope: 0 - 1 * 2", E::KeepSlope, kFbxUnlimited, 0, -2, 2},
        {"relative: 2 - 4", E::RelativeRepetition, kFbxUnlimited, 0, -2, 2},
        {"relative count 1 holds 0 - 4", E::RelativeRepetition, 1, -2, -4, 0},
    };
    for (const ExtrapolationRow& row : after) {
        FbxAnimKeyStore store = Curve({{1, 0}, {3, 4}});
        store.postExtrapolation = row.mode;
        store.postExtrapolationCount = row.count;
        EXPECT_FLOAT_EQ(EvaluateCurve(store, At(row.seconds)), row.value) << "after: " << row.name;
        EXPECT_FLOAT_EQ(EvaluateCurveRightDerivative(store, At(row.seconds)), row.derivative) << "after: " << row.name;
    }
    for (const ExtrapolationRow& row : before) {
        FbxAnimKeyStore store = Curve({{1, 0}, {3, 4}});
        store.preExtrapolation = row.mode;
        store.preExtrapolationCount = row.count;
        EXPECT_FLOAT_EQ(EvaluateCurve(store, At(row.seconds)), row.value) << "before: " << row.name;
        EXPECT_FLOAT_EQ(EvaluateCurveRightDerivative(store, At(row.seconds)), row.derivative) << "before: " << row.name;
    }
}

TEST(FbxAnimEval, CurvesWithoutKeysOrWithOneKey) {
    FbxAnimKeyStore empty;
    empty.defaultValue = 7.5f;
    EXPECT_EQ(EvaluateCurve(empty, At(1)), 7.5f);
    EXPECT_EQ(EvaluateCurveLeftDerivative(empty, At(1)), 0.0f);

    // A lone key's slopes are those of a first and a last key: 0, even when kept.
    FbxAnimKeyStore one = Curve({{1, 3, kUser, 5.0f, 5.0f}});
    one.preExtrapolation = FbxExtrapolation::KeepSlope;
    EXPECT_EQ(EvaluateCurve(one, At(0)), 3.0f);
    EXPECT_EQ(EvaluateCurveRightDerivative(one, At(0)), 0.0f);
}

TEST(FbxAnimEval, SearchStartsAtTheGivenIndexAndReturnsTheInterval) {
    std::vector<Key> keys;
    for (int i = 0; i < 100; ++i) keys.push_back({double(i), float(i)});
    const FbxAnimKeyStore store = Curve(keys);
    int index = 0;
    EXPECT_EQ(EvaluateCurve(store, At(50.5), &index), 50.5f);
    EXPECT_EQ(index, 50);
    index = 99;  // searching downwards
    EXPECT_EQ(EvaluateCurve(store, At(10.25), &index), 10.25f);
    EXPECT_EQ(index, 10);
    index = 1000;  // out of range: only a starting point
    EXPECT_EQ(EvaluateCurve(store, At(98), &index), 98.0f);
    EXPECT_EQ(index, 98);
    // Without an index the store remembers its own.
    EXPECT_EQ(EvaluateCurve(store, At(20.5)), 20.5f);
    EXPECT_EQ(store.lastSearchIndex, 20);
}

TEST(FbxAnimEval, KeysSharingATimeGiveNoInfinity) {
    const FbxAnimKeyStore store = Curve({{0, 0}, {1, 5}, {1, 9, kTcb}, {2, 1}});
    for (double seconds : {0.5, 1.0, 1.5}) {
        EXPECT_TRUE(std::isfinite(EvaluateCurve(store, At(seconds)))) << seconds;
        EXPECT_TRUE(std::isfinite(EvaluateCurveLeftDerivative(store, At(seconds)))) << seconds;
        EXPECT_TRUE(std::isfinite(EvaluateCurveRightDerivative(store, At(seconds)))) << seconds;
    }
}

}  // namespace
