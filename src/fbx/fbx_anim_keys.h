// Key store of one animation curve: key times, values and attribute indices in arrays of
// their own, attribute records shared by runs of keys, the curve's default value and its
// extrapolation. Evaluation lives in fbx_anim_eval.h.
// Baked curves are most of a big file: evenly spaced times are kept as a start and a step,
// and a single record shared by every key needs no index array. Both turn into arrays at
// the first key that breaks them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fbx/fbx_time.h"

// Bits of a key's attribute flags.
enum FbxAnimKeyFlag : uint32_t {
    kFbxInterpolationConstant = 0x2,
    kFbxInterpolationLinear = 0x4,
    kFbxInterpolationCubic = 0x8,
    kFbxInterpolationMask = 0xE,
    kFbxConstantNext = 0x100,  // on a constant key: hold the next key's value
    kFbxTangentAuto = 0x100,   // on a cubic key
    kFbxTangentTCB = 0x200,
    kFbxTangentUser = 0x400,
    kFbxTangentBreak = 0x800,
    kFbxTangentMask = 0xF00,
    kFbxTangentClamp = 0x1000,
    kFbxTangentTimeIndependent = 0x2000,
    kFbxTangentClampProgressive = 0x4000,
    kFbxWeightedRight = 0x1000000,
    kFbxWeightedNextLeft = 0x2000000,
    kFbxWeightedMask = 0x3000000,
};

// Weight of a cubic tangent when the key carries none.
constexpr float kFbxDefaultWeight = 0.33333334f;

// Attribute record shared by `refCount` consecutive keys. Data words of a cubic key:
// 0 right slope (or TCB tension), 1 next-left slope (or TCB continuity), 2 the right
// weight in the low and the next-left weight in the high 16 bits, each value * 9999
// (or TCB bias as a float), 3 two 16-bit velocities. Words are kept as raw 32 bits.
struct FbxAnimKeyAttr {
    uint32_t flags = 0;
    uint32_t data[4] = {};
    int32_t refCount = 0;
};

struct FbxAnimKey {
    FbxLongLong time = 0;
    uint32_t attr = 0;  // index into the store's attribute records
    float value = 0.0f;
};

// Extrapolation modes; counts are repetitions, kFbxUnlimited for no limit.
enum class FbxExtrapolation : int {
    Constant = 1,
    Repetition = 2,
    MirrorRepetition = 3,
    KeepSlope = 4,
    RelativeRepetition = 5,
};
constexpr uint32_t kFbxUnlimited = 0xFFFFFFFFu;

float FbxBitsToFloat(uint32_t bits);
uint32_t FbxFloatToBits(float value);

class FbxAnimKeyStore {
public:
    float defaultValue = 0.0f;
    FbxExtrapolation preExtrapolation = FbxExtrapolation::Constant;
    uint32_t preExtrapolationCount = kFbxUnlimited;
    FbxExtrapolation postExtrapolation = FbxExtrapolation::Constant;
    uint32_t postExtrapolationCount = kFbxUnlimited;
    // Where a search starts when the caller passes no index of its own.
    mutable int lastSearchIndex = 0;

    int KeyCount() const { return int(values_.size()); }
    // Index must be in 0 to KeyCount() - 1.
    FbxLongLong KeyTime(int index) const {
        if (!evenTimes_) return times_[size_t(index)];
        // Unsigned arithmetic: the step of any two file times is exact modulo 2^64.
        const FbxLongLong time = FbxLongLong(uint64_t(firstTime_) + uint64_t(index) * uint64_t(step_));
        return oldUnitTimes_ ? FbxConvertOldUnitTicks(time) : time;
    }
    uint32_t KeyAttrIndex(int index) const { return keyAttrs_.empty() ? sharedAttr_ : keyAttrs_[size_t(index)]; }
    FbxAnimKey Key(int index) const { return FbxAnimKey{KeyTime(index), KeyAttrIndex(index), values_[size_t(index)]}; }
    const FbxAnimKeyAttr& Attr(int index) const { return attrs_[KeyAttrIndex(index)]; }
    const FbxAnimKeyAttr& AttrRecord(uint32_t attr) const { return attrs_[attr]; }
    FbxTime Time(int index) const { return FbxTime(KeyTime(index)); }
    float Value(int index) const { return values_[size_t(index)]; }
    uint32_t Flags(int index) const { return Attr(index).flags; }
    float Word(int index, int word) const { return FbxBitsToFloat(Attr(index).data[word]); }

    // Bulk loading, in time order: one attribute record for a run of keys, then the keys.
    void Reserve(int keyCount, int attrCount);
    uint32_t AddAttr(const FbxAnimKeyAttr& attr);
    void AppendKey(FbxLongLong time, float value, uint32_t attr);
    // Whole arrays at once: record k holds the next runs[k] keys. The run lengths must add
    // up to the number of times, which must equal the number of values.
    // With oldUnitTimes the times are file ticks of the old unit, converted as they are read.
    void Assign(const std::vector<FbxLongLong>& times, bool oldUnitTimes, std::vector<float>&& values,
                const std::vector<FbxAnimKeyAttr>& attrs, const std::vector<uint32_t>& runs);

    // Editing. KeyAdd inserts a key at its time's place (or returns the key already at that
    // time) with a fresh attribute record of cubic auto flags and default weights.
    int KeyAdd(FbxTime time);
    void SetValue(int index, float value) { values_[size_t(index)] = value; }
    // Gives the key an attribute record of its own before changing it.
    FbxAnimKeyAttr& MutableAttr(int index);
    void KeyRemove(int index);
    void Clear();
    // Every value, the default value and the slopes of cubic non-TCB records times `factor`.
    void Scale(double factor);

private:
    uint32_t NewAttr(const FbxAnimKeyAttr& attr);
    void Release(uint32_t attr);
    void SpreadTimes();
    // Even times from these: true with start and step set, false with times_ to fill.
    bool FindStep(const std::vector<FbxLongLong>& times);
    void SpreadAttrs();

    bool evenTimes_ = true;  // times_ is empty and key k is at firstTime_ + k * step_
    bool oldUnitTimes_ = false;  // even times in the old tick unit, converted on reading
    FbxLongLong firstTime_ = 0;
    FbxLongLong step_ = 0;
    std::vector<FbxLongLong> times_;
    std::vector<float> values_;
    uint32_t sharedAttr_ = 0;        // the record of every key while keyAttrs_ is empty
    std::vector<uint32_t> keyAttrs_;
    std::vector<FbxAnimKeyAttr> attrs_;
    std::vector<uint32_t> freeAttrs_;  // records whose reference count fell to 0
};
