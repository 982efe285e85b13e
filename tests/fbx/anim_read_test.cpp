// Reading AnimationCurve records: time units, shared attribute runs, raw data words,
// refusals of mismatched lengths, default value and extrapolation.
#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "fbx/fbx_anim_curve_read.h"
#include "fbx/fbx_anim_eval.h"
#include "fbx/fbx_field_stream.h"
#include "fbx_writer.h"

namespace {

using fbxwriter::Record;
using fbxwriter::Value;

constexpr int64_t kOldSecond = 46186158000LL;
constexpr int64_t kSecond = 141120000;

struct FileKind {
    uint32_t version = 7400;
    int32_t headerVersion = 1003;
    std::optional<int32_t> tcDefinition;
};

struct ReadResult {
    bool ok = false;
    FbxStatus status;
    FbxAnimKeyStore store;
};

// Writes a file whose Objects hold one AnimationCurve with the given fields, opens it the
// way the reader does and reads the curve's keys.
ReadResult ReadCurve(std::vector<Record> fields, FileKind kind = {}) {
    Record objects("Objects");
    Record& curve = objects.Child(fbxwriter::ObjectRecord("AnimationCurve", 7, "", "AnimCurve", ""));
    for (Record& field : fields) curve.Child(std::move(field));
    fbxwriter::Options options;
    options.version = kind.version;
    const std::vector<uint8_t> bytes = fbxwriter::Write(
        {fbxwriter::HeaderExtension(kind.headerVersion, int32_t(kind.version), kind.tcDefinition), objects}, options);

    ReadResult result;
    FbxStatus openStatus;
    auto stream = FbxOpenFieldStream(FbxFileBytes::Copy(bytes.data(), bytes.size()), "curve.fbx", openStatus, true, nullptr);
    EXPECT_TRUE(stream) << openStatus.GetErrorString();
    if (!stream) return result;
    EXPECT_TRUE(stream->BeginField("Objects") && stream->BeginBlock());
    EXPECT_TRUE(stream->BeginField("AnimationCurve") && stream->BeginBlock());
    result.ok = ReadAnimCurveKeyStore(*stream, result.store, result.status);
    return result;
}

Record Field(const char* name, Value value) {
    Record record(name);
    record.Add(std::move(value));
    return record;
}

Record Extrapolation(const char* name, char type, int32_t repetition) {
    Record record(name);
    record.Add("Type").Char(type);
    record.Add("Repetition").Int(repetition);
    return record;
}

// A float's bits as the data words of a file hold them.
int32_t Bits(float value) {
    int32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// Fields of a well-formed curve of 3 keys at 0, 1, 2 old-unit seconds: one linear record
// for key 0, one cubic user record shared by keys 1 and 2.
std::vector<Record> ThreeKeys() {
    return {
        Field("KeyTime", Value::LongArray({0, kOldSecond, 2 * kOldSecond})),
        Field("KeyValueFloat", Value::FloatArray({1.0f, 2.0f, 4.0f})),
        Field("KeyAttrFlags", Value::IntArray({0x4, 0x408})),
        Field("KeyAttrDataFloat", Value::FloatArray({0, 0, 0, 0, 1.5f, 2.5f, 0, 0})),
        Field("KeyAttrRefCount", Value::IntArray({1, 2})),
    };
}

TEST(FbxAnimRead, KeyTimesFollowTheTimeUnitDefinition) {
    struct Row {
        const char* name;
        FileKind kind;
        int64_t oneSecond;  // how the key written as 46186158000 reads
    };
    const Row rows[] = {
        {"no definition (header 1003): old unit", {7400, 1003, std::nullopt}, kSecond},
        {"definition 127", {7700, 1004, 127}, kSecond},
        {"definition 127 in a 7600 file", {7600, 1004, 127}, kOldSecond},
        {"another definition", {7500, 1004, 0}, kOldSecond},
    };
    for (const Row& row : rows) {
        const ReadResult r = ReadCurve(ThreeKeys(), row.kind);
        EXPECT_TRUE(r.ok) << row.name;
        ASSERT_EQ(r.store.KeyCount(), 3) << row.name;
        EXPECT_EQ(r.store.Key(1).time, row.oneSecond) << row.name;
        EXPECT_EQ(r.store.Key(2).time, 2 * row.oneSecond) << row.name;
    }
}

TEST(FbxAnimRead, AttributeRecordsHoldRunsOfKeys) {
    // Counts (3, 2) over 5 keys: keys 0 to 2 share record 0, keys 3 and 4 record 1.
    const ReadResult r = ReadCurve({
        Field("KeyTime", Value::LongArray({0, 1, 2, 3, 4})),
        Field("KeyValueFloat", Value::FloatArray({0, 1, 2, 3, 4})),
        Field("KeyAttrFlags", Value::IntArray({0x2, 0x4})),
        Field("KeyAttrDataFloat", Value::FloatArray({0, 0, 0, 0, 0, 0, 0, 0})),
        Field("KeyAttrRefCount", Value::IntArray({3, 2})),
    });
    ASSERT_TRUE(r.ok);
    ASSERT_EQ(r.store.KeyCount(), 5);
    for (int k = 0; k < 5; ++k) EXPECT_EQ(r.store.Flags(k), k < 3 ? 0x2u : 0x4u) << k;
    EXPECT_EQ(&r.store.Attr(0), &r.store.Attr(2));
    EXPECT_EQ(r.store.Attr(0).refCount, 3);
    EXPECT_EQ(r.store.Attr(4).refCount, 2);

    // A count list of another length than the flags counts one key a record.
    const ReadResult one = ReadCurve({
        Field("KeyTime", Value::LongArray({0, 1})),
        Field("KeyValueFloat", Value::FloatArray({0, 1})),
        Field("KeyAttrFlags", Value::IntArray({0x2, 0x4})),
        Field("KeyAttrDataFloat", Value::FloatArray({0, 0, 0, 0, 0, 0, 0, 0})),
        Field("KeyAttrRefCount", Value::IntArray({2})),
    });
    ASSERT_TRUE(one.ok);
    EXPECT_EQ(one.store.Flags(0), 0x2u);
    EXPECT_EQ(one.store.Flags(1), 0x4u);
}

TEST(FbxAnimRead, DataWordsAreRawFromFloatOrIntArrays) {
    // Word 2 holds two 16-bit weights (3333 each); as a float it is a tiny number whose
    // bits must survive untouched.
    const int32_t weights = (3333 << 16) | 3333;
    float weightsAsFloat;
    std::memcpy(&weightsAsFloat, &weights, sizeof weightsAsFloat);
    const Value asFloats = Value::FloatArray({1.5f, -2.0f, weightsAsFloat, 0.0f});
    const Value asInts = Value::IntArray({Bits(1.5f), Bits(-2.0f), weights, 0});
    for (const Value& words : {asFloats, asInts}) {
        const ReadResult r = ReadCurve({
            Field("KeyTime", Value::LongArray({0})),
            Field("KeyValueFloat", Value::FloatArray({0})),
            Field("KeyAttrFlags", Value::IntArray({0x408})),
            Field("KeyAttrDataFloat", words),
            Field("KeyAttrRefCount", Value::IntArray({1})),
        });
        ASSERT_TRUE(r.ok) << words.code;
        EXPECT_EQ(r.store.Word(0, 0), 1.5f) << words.code;
        EXPECT_EQ(r.store.Word(0, 1), -2.0f) << words.code;
        EXPECT_EQ(r.store.Attr(0).data[2], uint32_t(weights)) << words.code;
    }
}

TEST(FbxAnimRead, LengthMismatchesKeepTheKeysRead) {
    struct Row {
        const char* name;
        size_t field;  // which of ThreeKeys' fields is replaced
        Value value;
        bool valuesKept;
    };
    const Row rows[] = {
        {"two values for three keys", 1, Value::FloatArray({1, 2}), false},
        {"seven data words for two records", 3, Value::FloatArray({0, 0, 0, 0, 0, 0, 0}), true},
        {"counts summing to four", 4, Value::IntArray({2, 2}), true},
        {"a negative count", 4, Value::IntArray({4, -1}), true},
    };
    for (const Row& row : rows) {
        std::vector<Record> fields = ThreeKeys();
        fields[row.field].values = {row.value};
        const ReadResult r = ReadCurve(std::move(fields));
        EXPECT_FALSE(r.ok) << row.name;
        EXPECT_EQ(r.status.GetCode(), kFbxFailure) << row.name;
        EXPECT_EQ(r.status.GetErrorString(), "Corrupted animation data.") << row.name;
        ASSERT_EQ(r.store.KeyCount(), 3) << row.name;
        EXPECT_EQ(r.store.Key(2).time, 2 * kSecond) << row.name;
        EXPECT_EQ(r.store.Value(2), row.valuesKept ? 4.0f : 0.0f) << row.name;
    }
}

TEST(FbxAnimRead, DoubleValuesDefaultAndExtrapolation) {
    const ReadResult r = ReadCurve({
        Field("Default", Value::Double(2.5)),
        Field("KeyTime", Value::LongArray({0, kOldSecond})),
        Field("KeyValueDouble", Value::DoubleArray({0.1, 3.0})),
        Field("KeyAttrFlags", Value::IntArray({0x4})),
        Field("KeyAttrDataFloat", Value::FloatArray({0, 0, 0, 0})),
        Field("KeyAttrRefCount", Value::IntArray({2})),
        Extrapolation("Pre-Extrapolation", 'M', 2),
        Extrapolation("Post-Extrapolation", 'K', -1),
    });
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.store.Value(0), 0.1f);
    EXPECT_EQ(r.store.defaultValue, 2.5f);
    EXPECT_EQ(r.store.preExtrapolation, FbxExtrapolation::MirrorRepetition);
    EXPECT_EQ(r.store.preExtrapolationCount, 2u);
    EXPECT_EQ(r.store.postExtrapolation, FbxExtrapolation::KeepSlope);
    EXPECT_EQ(r.store.postExtrapolationCount, kFbxUnlimited);

    const ReadResult empty = ReadCurve({Field("Default", Value::Double(-4.0))});
    EXPECT_TRUE(empty.ok);
    EXPECT_EQ(empty.store.KeyCount(), 0);
    EXPECT_EQ(EvaluateCurve(empty.store, FbxTime(kSecond)), -4.0f);
}

}  // namespace
