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

void FbxAnimKeyStore::Reserve(int keyCount, int attrCount) {
    if (keyCount > 0) values_.reserve(size_t(keyCount));
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

void FbxAnimKeyStore::SpreadTimes() {
    if (!evenTimes_) return;
    const size_t count = values_.size();
    times_.resize(count);
    for (size_t k = 0; k < count; ++k) times_[k] = KeyTime(int(k));
    evenTimes_ = false;
    oldUnitTimes_ = false;
}

void FbxAnimKeyStore::SpreadAttrs() {
    if (keyAttrs_.empty()) keyAttrs_.assign(values_.size(), sharedAttr_);
}

void FbxAnimKeyStore::AppendKey(FbxLongLong time, float value, uint32_t attr) {
    const size_t count = values_.size();
    if (oldUnitTimes_) SpreadTimes();
    if (!evenTimes_) {
        times_.push_back(time);
    } else if (count == 0) {
        firstTime_ = time;
        step_ = 0;
    } else if (count == 1) {
        step_ = FbxLongLong(uint64_t(time) - uint64_t(firstTime_));
    } else if (time != KeyTime(int(count))) {
        SpreadTimes();
        times_.reserve(values_.capacity());
        times_.push_back(time);
    }
    if (count == 0 && keyAttrs_.empty()) {
        sharedAttr_ = attr;
    } else if (!keyAttrs_.empty() || attr != sharedAttr_) {
        SpreadAttrs();
        keyAttrs_.reserve(values_.capacity());
        keyAttrs_.push_back(attr);
    }
    values_.push_back(value);
    ++attrs_[attr].refCount;
}

void FbxAnimKeyStore::Assign(const std::vector<FbxLongLong>& times, bool oldUnitTimes, std::vector<float>&& values,
                             const std::vector<FbxAnimKeyAttr>& attrs, const std::vector<uint32_t>& runs) {
    Clear();
    const size_t count = times.size();
    if (!oldUnitTimes) {
        if (!FindStep(times)) times_ = times;
    } else {
        // Old ticks that are even once converted keep no array and need no conversion when
        // read; even old ticks whose conversion rounds unevenly are converted when read.
        const bool evenOld = FindStep(times);
        const FbxLongLong oldFirst = firstTime_, oldStep = step_;
        times_.resize(count);
        for (size_t k = 0; k < count; ++k) times_[k] = FbxConvertOldUnitTicks(times[k]);
        if (FindStep(times_)) {
            std::vector<FbxLongLong>().swap(times_);
        } else if (evenOld) {
            std::vector<FbxLongLong>().swap(times_);
            evenTimes_ = true;
            oldUnitTimes_ = true;
            firstTime_ = oldFirst;
            step_ = oldStep;
        }
    }
    values_ = std::move(values);

    attrs_.reserve(attrs.size());
    size_t filled = 0;
    bool shared = true;
    for (size_t k = 0; k < attrs.size(); ++k) {
        const uint32_t attr = AddAttr(attrs[k]);
        attrs_[attr].refCount = int32_t(runs[k]);
        if (runs[k] == 0) continue;
        if (filled == 0) {
            sharedAttr_ = attr;
        } else if (shared) {
            shared = false;
            keyAttrs_.reserve(count);
            keyAttrs_.assign(filled, sharedAttr_);
        }
        if (!shared) keyAttrs_.insert(keyAttrs_.end(), runs[k], attr);
        filled += runs[k];
    }
}

bool FbxAnimKeyStore::FindStep(const std::vector<FbxLongLong>& times) {
    const size_t count = times.size();
    evenTimes_ = true;
    oldUnitTimes_ = false;
    firstTime_ = count > 0 ? times[0] : 0;
    step_ = count > 1 ? FbxLongLong(uint64_t(times[1]) - uint64_t(firstTime_)) : 0;
    for (size_t k = 2; k < count && evenTimes_; ++k) evenTimes_ = times[k] == KeyTime(int(k));
    return evenTimes_;
}

int FbxAnimKeyStore::KeyAdd(FbxTime time) {
    // Binary search for the first key at or after the time.
    const int count = KeyCount();
    int low = 0, high = count;
    while (low < high) {
        const int mid = low + (high - low) / 2;
        if (KeyTime(mid) < time.Get()) {
            low = mid + 1;
        } else {
            high = mid;
        }
    }
    if (low < count && KeyTime(low) == time.Get()) return low;

    FbxAnimKeyAttr fresh;
    fresh.flags = kFbxInterpolationCubic | kFbxTangentAuto;
    fresh.data[2] = (3333u << 16) | 3333u;  // both weights 1/3
    const uint32_t attr = NewAttr(fresh);
    if (low == count) {
        AppendKey(time.Get(), 0.0f, attr);
        return low;
    }
    SpreadTimes();
    SpreadAttrs();
    times_.insert(times_.begin() + low, time.Get());
    keyAttrs_.insert(keyAttrs_.begin() + low, attr);
    values_.insert(values_.begin() + low, 0.0f);
    ++attrs_[attr].refCount;
    return low;
}

FbxAnimKeyAttr& FbxAnimKeyStore::MutableAttr(int index) {
    const uint32_t current = KeyAttrIndex(index);
    if (attrs_[current].refCount > 1) {
        FbxAnimKeyAttr copy = attrs_[current];
        copy.refCount = 1;
        --attrs_[current].refCount;
        SpreadAttrs();
        keyAttrs_[size_t(index)] = NewAttr(copy);
    }
    return attrs_[KeyAttrIndex(index)];
}

void FbxAnimKeyStore::KeyRemove(int index) {
    Release(KeyAttrIndex(index));
    const size_t at = size_t(index);
    const bool last = at + 1 == values_.size();
    if (oldUnitTimes_) SpreadTimes();
    if (evenTimes_ && at == 0) {
        firstTime_ = KeyTime(1 % KeyCount());
    } else if (!last) {
        SpreadTimes();
    }
    if (!evenTimes_) times_.erase(times_.begin() + index);
    if (!keyAttrs_.empty()) keyAttrs_.erase(keyAttrs_.begin() + index);
    values_.erase(values_.begin() + index);
    if (lastSearchIndex >= KeyCount()) lastSearchIndex = 0;
}

void FbxAnimKeyStore::Clear() {
    evenTimes_ = true;
    oldUnitTimes_ = false;
    firstTime_ = 0;
    step_ = 0;
    times_.clear();
    values_.clear();
    sharedAttr_ = 0;
    keyAttrs_.clear();
    attrs_.clear();
    freeAttrs_.clear();
    lastSearchIndex = 0;
}

void FbxAnimKeyStore::Scale(double factor) {
    for (float& value : values_) value = static_cast<float>(double(value) * factor);
    defaultValue = static_cast<float>(double(defaultValue) * factor);
    for (FbxAnimKeyAttr& attr : attrs_) {
        // Slopes are words 0 and 1 of a cubic key; a TCB key keeps tension and continuity there.
        const bool slopes = (attr.flags & kFbxInterpolationMask) == kFbxInterpolationCubic &&
                            (attr.flags & kFbxTangentMask) != kFbxTangentTCB;
        if (!slopes || attr.refCount <= 0) continue;
        for (int w = 0; w < 2; ++w)
            attr.data[w] = FbxFloatToBits(static_cast<float>(double(FbxBitsToFloat(attr.data[w])) * factor));
    }
    lastSearchIndex = 0;
}
