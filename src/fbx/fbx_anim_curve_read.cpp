#include "fbx/fbx_anim_curve_read.h"

#include <cstring>
#include <limits>
#include <vector>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_field_stream.h"
#include "fbx/fbx_status.h"

namespace {

constexpr char kCorrupted[] = "Corrupted animation data.";

FbxExtrapolation ExtrapolationOf(char type) {
    switch (type) {
        case 'R':
            return FbxExtrapolation::Repetition;
        case 'M':
            return FbxExtrapolation::MirrorRepetition;
        case 'K':
            return FbxExtrapolation::KeepSlope;
        case 'A':
            return FbxExtrapolation::RelativeRepetition;
        default:
            return FbxExtrapolation::Constant;
    }
}

// `Pre-Extrapolation` / `Post-Extrapolation`: a block with `Type` (a character) and
// `Repetition` (a count, -1 for no limit). Absent: constant, no limit.
void ReadExtrapolation(FbxFieldStream& stream, const char* name, FbxExtrapolation& mode, uint32_t& count) {
    if (!stream.BeginField(name)) return;
    if (stream.BeginBlock()) {
        mode = ExtrapolationOf(stream.ReadChar("Type", 'C'));
        count = uint32_t(stream.ReadInt("Repetition", -1));
        stream.EndBlock();
    }
    stream.EndField();
}

// The array of a field as 32-bit words, from an 'i' or an 'f' array alike: files of every
// authoring tool store the key data as floats, older writers as integers.
const uint32_t* ReadWords(FbxFieldStream& stream, const char* name, size_t& count) {
    count = 0;
    if (!stream.BeginField(name)) return nullptr;
    const void* words = nullptr;
    if (stream.ValueCode() == 'f') {
        words = stream.ReadArrayOfFloat(count);
    } else {
        words = stream.ReadArrayOfInt(count);
    }
    stream.EndField();
    return static_cast<const uint32_t*>(words);
}

}  // namespace

int64_t ConvertFileTime(const FbxFieldStream& stream, int64_t fileTime) {
    return FbxFileTimesInOldUnit(stream.TCDefinition(), stream.FileVersion()) ? FbxConvertOldUnitTicks(fileTime) : fileTime;
}

bool ReadAnimCurveKeys(FbxFieldStream& stream, FbxAnimCurve& curve, FbxStatus& status) {
    return ReadAnimCurveKeyStore(stream, curve.KeyStore(), status);
}

bool ReadAnimCurveKeyStore(FbxFieldStream& stream, FbxAnimKeyStore& store, FbxStatus& status) {
    store = FbxAnimKeyStore();
    store.defaultValue = float(stream.ReadDouble("Default", 0.0));
    ReadExtrapolation(stream, "Pre-Extrapolation", store.preExtrapolation, store.preExtrapolationCount);
    ReadExtrapolation(stream, "Post-Extrapolation", store.postExtrapolation, store.postExtrapolationCount);

    // Arrays of one record stay valid only until the next array read on that record, and
    // each field below is its own record: every array is used before the next is read.
    // File ticks; the store converts old-unit ones.
    std::vector<FbxLongLong> times;
    const bool oldUnit = FbxFileTimesInOldUnit(stream.TCDefinition(), stream.FileVersion());
    if (stream.BeginField("KeyTime")) {
        size_t count = 0;
        const int64_t* data = stream.ReadArrayOfLong(count);
        stream.EndField();
        if (count > size_t(std::numeric_limits<int32_t>::max())) {
            status.SetCode(kFbxFailure, kCorrupted);
            return false;
        }
        times.assign(data, data + count);
    }
    const size_t keyCount = times.size();
    std::vector<float> values(keyCount, 0.0f);
    std::vector<uint32_t> runs;  // per attribute record: the number of keys it holds
    std::vector<FbxAnimKeyAttr> attrs;
    bool good = true;

    // Values: floats, or doubles narrowed.
    {
        size_t count = 0;
        if (stream.BeginField("KeyValueFloat")) {
            const float* data = stream.ReadArrayOfFloat(count);
            if (count == keyCount && count > 0) std::memcpy(values.data(), data, count * sizeof(float));
            stream.EndField();
        } else if (stream.BeginField("KeyValueDouble")) {
            const double* data = stream.ReadArrayOfDouble(count);
            if (count == keyCount) {
                for (size_t k = 0; k < count; ++k) values[k] = float(data[k]);
            }
            stream.EndField();
        }
        good = count == keyCount;
    }
    if (good) {
        size_t flagCount = 0;
        if (stream.BeginField("KeyAttrFlags")) {
            const int32_t* flags = stream.ReadArrayOfInt(flagCount);
            attrs.resize(flagCount);
            for (size_t k = 0; k < flagCount; ++k) attrs[k].flags = uint32_t(flags[k]);
            stream.EndField();
        }
        size_t wordCount = 0;
        const uint32_t* words = ReadWords(stream, "KeyAttrDataFloat", wordCount);
        good = wordCount == 4 * flagCount;
        if (good) {
            for (size_t k = 0; k < flagCount; ++k) std::memcpy(attrs[k].data, words + 4 * k, 4 * sizeof(uint32_t));
        }
    }
    if (good) {
        // Run lengths: record k holds the next runs[k] keys. A list of the wrong length
        // counts one key a record.
        size_t count = 0;
        const int32_t* data = nullptr;
        if (stream.BeginField("KeyAttrRefCount")) data = stream.ReadArrayOfInt(count);
        runs.assign(attrs.size(), 1);
        int64_t sum = 0;
        if (count == attrs.size()) {
            for (size_t k = 0; k < count; ++k) {
                if (data[k] < 0) good = false;
                runs[k] = uint32_t(data[k]);
                sum += data[k];
            }
        } else {
            sum = int64_t(attrs.size());
        }
        if (data) stream.EndField();
        good = good && sum == int64_t(keyCount);
    }

    if (good) {
        store.Assign(times, oldUnit, std::move(values), attrs, runs);
        return true;
    }
    status.SetCode(kFbxFailure, kCorrupted);
    // The keys read so far stay, with the attributes of a key made in memory.
    if (keyCount > 0) {
        FbxAnimKeyAttr fallback;
        fallback.flags = kFbxInterpolationCubic | kFbxTangentAuto;
        fallback.data[2] = (3333u << 16) | 3333u;
        const std::vector<uint32_t> all(1, uint32_t(keyCount));
        store.Assign(times, oldUnit, std::move(values), std::vector<FbxAnimKeyAttr>(1, fallback), all);
    }
    return false;
}
