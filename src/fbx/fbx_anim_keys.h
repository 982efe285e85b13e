// Key store of one animation curve: keys in blocks of 42 (an insertion moves at most one
// block's worth of keys plus one key a block), attribute records shared by runs of keys,
// the curve's default value and its extrapolation. Evaluation lives in fbx_anim_eval.h.
#pragma once

#include <cstdint>
#include <memory>
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
    static constexpr int kBlockKeys = 42;

    FbxAnimKeyStore() = default;
    FbxAnimKeyStore(const FbxAnimKeyStore& other) { *this = other; }
    FbxAnimKeyStore& operator=(const FbxAnimKeyStore& other);
    FbxAnimKeyStore(FbxAnimKeyStore&&) noexcept = default;
    FbxAnimKeyStore& operator=(FbxAnimKeyStore&&) noexcept = default;

    float defaultValue = 0.0f;
    FbxExtrapolation preExtrapolation = FbxExtrapolation::Constant;
    uint32_t preExtrapolationCount = kFbxUnlimited;
    FbxExtrapolation postExtrapolation = FbxExtrapolation::Constant;
    uint32_t postExtrapolationCount = kFbxUnlimited;
    // Where a search starts when the caller passes no index of its own.
    mutable int lastSearchIndex = 0;

    int KeyCount() const { return count_; }
    // Index must be in 0 to KeyCount() - 1.
    const FbxAnimKey& Key(int index) const { return blocks_[size_t(index) / kBlockKeys]->keys[size_t(index) % kBlockKeys]; }
    const FbxAnimKeyAttr& Attr(int index) const { return attrs_[Key(index).attr]; }
    const FbxAnimKeyAttr& AttrRecord(uint32_t attr) const { return attrs_[attr]; }
    FbxTime Time(int index) const { return FbxTime(Key(index).time); }
    float Value(int index) const { return Key(index).value; }
    uint32_t Flags(int index) const { return Attr(index).flags; }
    float Word(int index, int word) const { return FbxBitsToFloat(Attr(index).data[word]); }

    // Bulk loading, in time order: one attribute record for a run of keys, then the keys.
    void Reserve(int keyCount, int attrCount);
    uint32_t AddAttr(const FbxAnimKeyAttr& attr);
    void AppendKey(FbxLongLong time, float value, uint32_t attr);

    // Editing. KeyAdd inserts a key at its time's place (or returns the key already at that
    // time) with a fresh attribute record of cubic auto flags and default weights.
    int KeyAdd(FbxTime time);
    void SetValue(int index, float value) { Mutable(index).value = value; }
    // Gives the key an attribute record of its own before changing it.
    FbxAnimKeyAttr& MutableAttr(int index);
    void KeyRemove(int index);
    void Clear();

private:
    struct Block {
        FbxAnimKey keys[kBlockKeys];
    };
    FbxAnimKey& Mutable(int index) { return blocks_[size_t(index) / kBlockKeys]->keys[size_t(index) % kBlockKeys]; }
    uint32_t NewAttr(const FbxAnimKeyAttr& attr);
    void Release(uint32_t attr);

    std::vector<std::unique_ptr<Block>> blocks_;  // all full but the last
    int count_ = 0;
    std::vector<FbxAnimKeyAttr> attrs_;
    std::vector<uint32_t> freeAttrs_;  // records whose reference count fell to 0
};
