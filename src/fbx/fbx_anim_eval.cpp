#include "fbx/fbx_anim_eval.h"

#include <algorithm>
#include <cmath>

namespace {

// Key times are arbitrary 64-bit values from a file: differences are taken in 128 bits.
using Wide = __int128;

double Seconds(Wide ticks) { return double(ticks) / double(FbxTime::kTicksPerSecond); }

// b - a as a double; the 128-bit conversion is a library call, so it is kept for the rare
// difference that overflows 64 bits.
double Difference(FbxLongLong a, FbxLongLong b) {
    FbxLongLong difference;
    if (!__builtin_sub_overflow(b, a, &difference)) return double(difference);
    return double(Wide(b) - a);
}

double SecondsBetween(FbxLongLong a, FbxLongLong b) { return Difference(a, b) / double(FbxTime::kTicksPerSecond); }

float Lerp(float a, float b, double t) { return float(a + (b - a) * t); }

// A key with its attribute record, fetched once: the block lookup of the store is the
// costliest part of a sample otherwise.
struct KeyView {
    FbxLongLong time;
    float value;
    const FbxAnimKeyAttr* attr;

    uint32_t Flags() const { return attr->flags; }
    float Word(int word) const { return FbxBitsToFloat(attr->data[word]); }
};

KeyView View(const FbxAnimKeyStore& s, int index) {
    return {s.KeyTime(index), s.Value(index), &s.Attr(index)};
}

// Slope from key a to a later key b per second; keys that share a time give 0, not an
// infinity.
float Slope(const KeyView& a, const KeyView& b) {
    if (a.time == b.time) return 0.0f;
    return float((b.value - a.value) / SecondsBetween(a.time, b.time));
}

enum class Interpolation { Constant, Linear, Cubic };

Interpolation InterpolationOf(uint32_t flags) {
    switch (flags & kFbxInterpolationMask) {
        case kFbxInterpolationConstant:
            return Interpolation::Constant;
        case kFbxInterpolationLinear:
            return Interpolation::Linear;
        default:
            return Interpolation::Cubic;
    }
}

// Kochanek-Bartels tangent at key i from the slopes of its two intervals, with the key's
// own tension, continuity and bias (data words 0, 1, 2). An end key uses its one slope.
float TcbTangent(const FbxAnimKeyStore& s, int i, bool incoming) {
    const int n = s.KeyCount();
    const KeyView key = View(s, i);
    const float tension = key.Word(0), continuity = key.Word(1), bias = key.Word(2);
    float in = i > 0 ? Slope(View(s, i - 1), key) : 0.0f;
    float out = i + 1 < n ? Slope(key, View(s, i + 1)) : 0.0f;
    if (i == 0) in = out;
    if (i + 1 == n) out = in;
    const float a = (1 - tension) * (1 + bias) * (incoming ? 1 + continuity : 1 - continuity) / 2;
    const float b = (1 - tension) * (1 - bias) * (incoming ? 1 - continuity : 1 + continuity) / 2;
    return a * in + b * out;
}

// Slope at one end of the interval from key i to key i + 1, by key i's flags: the right
// derivative of key i (data word 0) or the left derivative of key i + 1 (word 1).
float IntervalEndSlope(const FbxAnimKeyStore& s, int i, const KeyView& ki, const KeyView& kj, bool atEnd) {
    const uint32_t flags = ki.Flags();
    switch (InterpolationOf(flags)) {
        case Interpolation::Constant:
            return 0.0f;
        case Interpolation::Linear:
            return Slope(ki, kj);
        case Interpolation::Cubic:
            break;
    }
    const uint32_t tangent = flags & kFbxTangentMask;
    const float stored = ki.Word(atEnd ? 1 : 0);
    if (tangent & (kFbxTangentUser | kFbxTangentBreak)) return stored;
    if (tangent & kFbxTangentTCB) return atEnd ? TcbTangent(s, i + 1, true) : TcbTangent(s, i, false);
    // Auto tangents stored as time independent with a magnitude below 0.01 stand for the
    // interval's linear slope.
    if ((tangent & kFbxTangentAuto) && (flags & kFbxTangentTimeIndependent) && std::fabs(stored) < 0.01f) {
        return Slope(ki, kj);
    }
    return stored;
}

float Weight(uint32_t flags, uint32_t bit, uint32_t half) {
    return (flags & bit) ? float(half & 0xFFFF) / 9999.0f : kFbxDefaultWeight;
}

struct Bezier {
    float p0, p1, p2, p3;

    // Repeated linear interpolation; `slope` receives the derivative by the parameter.
    float At(double t, float* slope = nullptr) const {
        const float a = Lerp(p0, p1, t), b = Lerp(p1, p2, t), c = Lerp(p2, p3, t);
        const float ab = Lerp(a, b, t), bc = Lerp(b, c, t);
        if (slope) *slope = 3.0f * (bc - ab);
        return Lerp(ab, bc, t);
    }
};

// The parameter at which the time Bezier with controls 0, x1, x2, 1 reaches t in 0..1:
// Newton steps kept inside a bracket that always holds a sign change, falling back to
// bisection, until the step is far below a float's resolution.
double SolveBezierTime(double t, double x1, double x2) {
    if (t <= 0.0) return 0.0;
    if (t >= 1.0) return 1.0;
    double low = 0.0, high = 1.0, s = t;
    for (int iteration = 0; iteration < 100; ++iteration) {
        const double u = 1.0 - s;
        const double x = 3.0 * u * u * s * x1 + 3.0 * u * s * s * x2 + s * s * s;
        const double f = x - t;
        if (f == 0.0) break;
        if (f < 0.0) {
            low = s;
        } else {
            high = s;
        }
        const double dx = 3.0 * u * u * x1 + 6.0 * u * s * (x2 - x1) + 3.0 * s * s * (1.0 - x2);
        double next = dx != 0.0 ? s - f / dx : -1.0;
        if (!(next > low && next < high)) next = 0.5 * (low + high);
        const double step = std::fabs(next - s);
        s = next;
        if (step < 1e-13 || high - low < 1e-13) break;
    }
    return s;
}

// The value (and its derivative per second) of the interval that starts at key i at the
// fraction u; keys i and i + 1 have different times.
float IntervalValue(const FbxAnimKeyStore& s, int i, double u, float* derivative) {
    const KeyView ki = View(s, i), kj = View(s, i + 1);
    const uint32_t flags = ki.Flags();
    const float vi = ki.value, vj = kj.value;
    const double d = SecondsBetween(ki.time, kj.time);
    switch (InterpolationOf(flags)) {
        case Interpolation::Constant:
            if (derivative) *derivative = 0.0f;
            return (flags & kFbxConstantNext) ? vj : vi;
        case Interpolation::Linear:
            if (derivative) *derivative = float((vj - vi) / d);
            return Lerp(vi, vj, u);
        case Interpolation::Cubic:
            break;
    }
    const float r = IntervalEndSlope(s, i, ki, kj, false);
    const float l = IntervalEndSlope(s, i, ki, kj, true);
    float slope = 0.0f;
    if ((flags & kFbxWeightedMask) == 0) {
        const Bezier value{vi, float(vi + r * d / 3), float(vj - l * d / 3), vj};
        const float result = value.At(u, derivative ? &slope : nullptr);
        if (derivative) *derivative = float(slope / d);
        return result;
    }
    const uint32_t weights = ki.attr->data[2];
    const float wr = Weight(flags, kFbxWeightedRight, weights);
    const float wl = Weight(flags, kFbxWeightedNextLeft, weights >> 16);
    const Bezier value{vi, float(vi + r * d * wr), float(vj - l * d * wl), vj};
    const Bezier time{0.0f, wr, 1.0f - wl, 1.0f};
    const double parameter = SolveBezierTime(u, time.p1, time.p2);
    const float result = value.At(parameter, derivative ? &slope : nullptr);
    if (derivative) {
        float timeSlope = 0.0f;
        time.At(parameter, &timeSlope);
        *derivative = timeSlope != 0.0f ? float(slope / timeSlope / d) : 0.0f;
    }
    return result;
}

// Where a time lands once extrapolation has had its say: either a fixed value (with its
// derivative), or a time inside the keys, possibly mirrored, plus a count of repetitions
// whose value offsets accumulate.
struct Placement {
    bool fixed = false;
    float value = 0.0f;
    float derivative = 0.0f;
    FbxLongLong time = 0;
    bool mirrored = false;
    Wide repetitions = 0;  // signed, relative repetition only
};

// The value that holds once `count` repetitions are used up, at the far end of the last.
float HoldValue(const FbxAnimKeyStore& s, FbxExtrapolation mode, uint32_t count, bool before) {
    const float first = s.Value(0), last = s.Value(s.KeyCount() - 1);
    const float near = before ? first : last, far = before ? last : first;
    switch (mode) {
        case FbxExtrapolation::MirrorRepetition:
            return (count & 1) ? far : near;
        case FbxExtrapolation::RelativeRepetition:
            return before ? first - float(count) * (last - first) : last + float(count) * (last - first);
        default:
            return near;
    }
}

Placement Place(const FbxAnimKeyStore& s, FbxLongLong time) {
    const int n = s.KeyCount();
    const FbxLongLong first = s.KeyTime(0), last = s.KeyTime(n - 1);
    Placement p;
    p.time = time;
    const bool before = time < first;
    if (!before && time <= last) return p;

    const FbxExtrapolation mode = before ? s.preExtrapolation : s.postExtrapolation;
    const uint32_t count = before ? s.preExtrapolationCount : s.postExtrapolationCount;
    const Wide span = std::max<Wide>(Wide(last) - first, 0);
    const Wide distance = before ? Wide(first) - time : Wide(time) - last;
    const bool limited = count != kFbxUnlimited;
    p.fixed = true;
    switch (mode) {
        case FbxExtrapolation::KeepSlope: {
            const Wide limit = Wide(count) * span;
            const bool within = !limited || distance <= limit;
            const double seconds = Seconds(within ? distance : limit);
            const float slope = before ? KeyRightDerivative(s, 0) : KeyLeftDerivative(s, n - 1);
            p.value = before ? float(s.Value(0) - seconds * slope) : float(s.Value(n - 1) + seconds * slope);
            p.derivative = within ? slope : 0.0f;
            return p;
        }
        case FbxExtrapolation::Repetition:
        case FbxExtrapolation::MirrorRepetition:
        case FbxExtrapolation::RelativeRepetition: {
            if (span == 0) break;
            const Wide k = (distance + span - 1) / span;  // repetition number, from 1
            if (limited && k > Wide(count)) {
                p.value = HoldValue(s, mode, count, before);
                return p;
            }
            // Repetition k before the keys covers [first - k*span, first - (k-1)*span), after
            // them (last + (k-1)*span, last + k*span]; both fold into the keys' own span.
            Wide folded = before ? Wide(time) + k * span : Wide(time) - k * span;
            if (mode == FbxExtrapolation::MirrorRepetition && (k & 1)) {
                folded = Wide(first) + last - folded;
                p.mirrored = true;
            }
            if (mode == FbxExtrapolation::RelativeRepetition) p.repetitions = before ? -k : k;
            p.fixed = false;
            p.time = FbxLongLong(folded);
            return p;
        }
        case FbxExtrapolation::Constant:
            break;
    }
    p.value = before ? s.Value(0) : s.Value(n - 1);
    p.derivative = 0.0f;
    return p;
}

// Fractional key index x of a time within the keys, walking from `cache`, which receives
// the interval's first key; with its floor and ceiling, which x's own rounding can move.
struct Location {
    double x;
    int floor, ceiling;
};

Location Locate(const FbxAnimKeyStore& s, FbxLongLong time, int& cache) {
    const int n = s.KeyCount();
    int i = std::clamp(cache, 0, n - 2);
    while (i > 0 && time < s.KeyTime(i)) --i;
    while (i < n - 2 && time >= s.KeyTime(i + 1)) ++i;
    cache = i;
    const FbxLongLong ti = s.KeyTime(i), tj = s.KeyTime(i + 1);
    if (time >= tj) return {double(i + 1), i + 1, i + 1};
    if (time <= ti) return {double(i), i, i};
    // x lies in [i, i + 1]; the sum can round up to i + 1 itself.
    const double x = double(i) + Difference(ti, time) / Difference(ti, tj);
    if (x >= double(i + 1)) return {x, i + 1, i + 1};
    return {x, i, x > double(i) ? i + 1 : i};
}

enum class Side { Value, Left, Right };

float Evaluate(const FbxAnimKeyStore& s, FbxTime time, int* lastIndex, Side side) {
    const int n = s.KeyCount();
    if (n == 0) return side == Side::Value ? s.defaultValue : 0.0f;
    if (n == 1) return side == Side::Value ? s.Value(0) : 0.0f;

    const Placement p = Place(s, time.Get());
    if (p.fixed) return side == Side::Value ? p.value : p.derivative;
    const Location at = Locate(s, p.time, lastIndex ? *lastIndex : s.lastSearchIndex);
    const double x = at.x;
    if (!(x >= 0.0 && x <= double(n - 1))) return 0.0f;
    const int i = at.floor, j = at.ceiling;

    if (side == Side::Value) {
        float value = i == j ? s.Value(i) : IntervalValue(s, i, x - i, nullptr);
        if (p.repetitions != 0) value += float(p.repetitions) * (s.Value(n - 1) - s.Value(0));
        return value;
    }
    // A mirrored repetition runs the keys backwards: sides swap and slopes change sign.
    const bool left = (side == Side::Left) != p.mirrored;
    float derivative = 0.0f;
    if (i == j) {
        derivative = left ? KeyLeftDerivative(s, i) : KeyRightDerivative(s, i);
    } else {
        IntervalValue(s, i, x - i, &derivative);
    }
    return p.mirrored ? -derivative : derivative;
}

}  // namespace

float KeyRightDerivative(const FbxAnimKeyStore& s, int index) {
    if (index < 0 || index >= s.KeyCount() - 1) return 0.0f;
    return IntervalEndSlope(s, index, View(s, index), View(s, index + 1), false);
}

float KeyLeftDerivative(const FbxAnimKeyStore& s, int index) {
    if (index <= 0 || index >= s.KeyCount()) return 0.0f;
    return IntervalEndSlope(s, index - 1, View(s, index - 1), View(s, index), true);
}

float EvaluateCurve(const FbxAnimKeyStore& store, FbxTime time, int* lastIndex) {
    return Evaluate(store, time, lastIndex, Side::Value);
}

float EvaluateCurveLeftDerivative(const FbxAnimKeyStore& store, FbxTime time, int* lastIndex) {
    return Evaluate(store, time, lastIndex, Side::Left);
}

float EvaluateCurveRightDerivative(const FbxAnimKeyStore& store, FbxTime time, int* lastIndex) {
    return Evaluate(store, time, lastIndex, Side::Right);
}
