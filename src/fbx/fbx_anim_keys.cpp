#include "fbx/fbx_anim_keys.h"

#include <cstring>

float FbxBitsToFloat(uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

uint32_t FbxFloatToBits(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

FbxAnimKeyStore& FbxAnimKeyStore::operator=(const FbxAnimKeyStore& other) {
    if (this == &other) return *this;
    defaultValue = other.defaultValue;
    preExtrapolation = other.preExtrapolation;
    preExtrapolationCount = other.preExtrapolationCount;
    postExtrapolation = other.postExtrapolation;
    postExtrapolationCount = other.postExtrapolationCount;
    lastSearchIndex = other.lastSearchIndex;
    blocks_.clear();
    blocks_.reserve(other.blocks_.size());
    for (const auto& block : other.blocks_) blocks_.push_back(std::make_unique<Block>(*block));
    count_ = other.count_;
    attrs_ = other.attrs_;
    freeAttrs_ = other.freeAttrs_;
    return *this;
}

void FbxAnimKeyStore::Reserve(int keyCount, int attrCount) {
    if (keyCount > 0) blocks_.reserve(size_t(keyCount) / kBlockKeys + 1);
    if (attrCount > 0) attrs_.reserve(size_t(attrCount));
}

uint32_t FbxAnimKeyStore::AddAttr(const FbxAnimKeyAttr& attr) {
    FbxAnimKeyAttr record = attr;
    record.refCount = 0;
    return NewAttr(record);
}

uint32_t FbxAnimKeyStore::NewAttr(const FbxAnimKeyAttr& attr) {
    if (!freeAttrs_.empty()) {
        const uint32_t index = freeAttrs_.back();
        freeAttrs_.pop_back();
        attrs_[index] = attr;
        return index;
    }
    attrs_.push_back(attr);
    return uint32_t(attrs_.size() - 1);
}

void FbxAnimKeyStore::Release(uint32_t attr) {
    if (--attrs_[attr].refCount <= 0) {
        attrs_[attr].refCount = 0;
        freeAttrs_.push_back(attr);
    }
}

void FbxAnimKeyStore::AppendKey(FbxLongLong time, float value, uint32_t attr) {
    if (size_t(count_) == blocks_.size() * kBlockKeys) blocks_.push_back(std::make_unique<Block>());
    Mutable(count_) = FbxAnimKey{time, attr, value};
    ++attrs_[attr].refCount;
    ++count_;
}

int FbxAnimKeyStore::KeyAdd(FbxTime time) {
    // Binary search for the first key at or after the time.
    int low = 0, high = count_;
    while (low < high) {
        const int mid = low + (high - low) / 2;
        if (Key(mid).time < time.Get()) {
            low = mid + 1;
        } else {
            high = mid;
        }
    }
    if (low < count_ && Key(low).time == time.Get()) return low;

    FbxAnimKeyAttr fresh;
    fresh.flags = kFbxInterpolationCubic | kFbxTangentAuto;
    fresh.data[2] = (3333u << 16) | 3333u;  // both weights 1/3
    const uint32_t attr = NewAttr(fresh);
    if (size_t(count_) == blocks_.size() * kBlockKeys) blocks_.push_back(std::make_unique<Block>());
    // Carry the last key of each block over into the next, from the end down to the
    // block of the insertion, then open the slot inside that block.
    const size_t target = size_t(low) / kBlockKeys;
    for (size_t b = size_t(count_) / kBlockKeys; b > target; --b) {
        FbxAnimKey* keys = blocks_[b]->keys;
        std::memmove(keys + 1, keys, sizeof(FbxAnimKey) * (kBlockKeys - 1));
        keys[0] = blocks_[b - 1]->keys[kBlockKeys - 1];
    }
    FbxAnimKey* keys = blocks_[target]->keys;
    const size_t slot = size_t(low) % kBlockKeys;
    std::memmove(keys + slot + 1, keys + slot, sizeof(FbxAnimKey) * (kBlockKeys - 1 - slot));
    keys[slot] = FbxAnimKey{time.Get(), attr, 0.0f};
    ++attrs_[attr].refCount;
    ++count_;
    return low;
}

FbxAnimKeyAttr& FbxAnimKeyStore::MutableAttr(int index) {
    FbxAnimKey& key = Mutable(index);
    if (attrs_[key.attr].refCount > 1) {
        FbxAnimKeyAttr copy = attrs_[key.attr];
        copy.refCount = 1;
        --attrs_[key.attr].refCount;
        key.attr = NewAttr(copy);
    }
    return attrs_[key.attr];
}

void FbxAnimKeyStore::KeyRemove(int index) {
    Release(Key(index).attr);
    const size_t first = size_t(index) / kBlockKeys;
    const size_t last = size_t(count_ - 1) / kBlockKeys;
    FbxAnimKey* keys = blocks_[first]->keys;
    const size_t slot = size_t(index) % kBlockKeys;
    std::memmove(keys + slot, keys + slot + 1, sizeof(FbxAnimKey) * (kBlockKeys - 1 - slot));
    for (size_t b = first + 1; b <= last; ++b) {
        blocks_[b - 1]->keys[kBlockKeys - 1] = blocks_[b]->keys[0];
        std::memmove(blocks_[b]->keys, blocks_[b]->keys + 1, sizeof(FbxAnimKey) * (kBlockKeys - 1));
    }
    --count_;
    if (size_t(count_) <= (blocks_.size() - 1) * kBlockKeys) blocks_.pop_back();
    if (lastSearchIndex >= count_) lastSearchIndex = 0;
}

void FbxAnimKeyStore::Clear() {
    blocks_.clear();
    count_ = 0;
    attrs_.clear();
    freeAttrs_.clear();
    lastSearchIndex = 0;
}
