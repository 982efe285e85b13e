// Values, arrays and field navigation of the field stream.
#include <zlib.h>

#include <cmath>
#include <cstring>
#include <functional>

#include "stream_test_util.h"

using namespace streamtest;

namespace {

std::string Deflate(const std::string& data) {
    uLongf length = compressBound(static_cast<uLong>(data.size()));
    std::string out(length, '\0');
    compress(reinterpret_cast<Bytef*>(out.data()), &length, reinterpret_cast<const Bytef*>(data.data()),
             static_cast<uLong>(data.size()));
    out.resize(length);
    return out;
}

std::string IntBytes(std::vector<int32_t> v) {
    return std::string(reinterpret_cast<const char*>(v.data()), v.size() * 4);
}

}  // namespace

// Every value code written in both record layouts and both byte orders reads back.
TEST(StreamValues, EveryCodeInBothLayoutsAndByteOrders) {
    for (int layout : {0, 1}) {
        for (bool bigEndian : {false, true}) {
            SCOPED_TRACE(testing::Message() << "layout " << layout << (bigEndian ? " big" : " little"));
            fbxwriter::Options options;
            options.version = layout == 1 ? 7500 : 7400;
            options.bigEndian = bigEndian;
            Record scalars("S");
            scalars.Char('Y').Byte(200).Short(-1234).Int(-123456789).Long(0x123456789ABCDEF0).Float(1.5f);
            scalars.Double(-2.25).String("text").String(fbxwriter::ObjectName("Cube", "Model")).Raw("\x01\x02\x03");
            // One array per record: the value behind an array is not found where it lies.
            std::vector<Record> records = {scalars};
            for (Value v : {Value::IntArray({1, -2, 3}), Value::DoubleArray({0.5, -4}, 1),
                            Value::ShortArray({-7, 300}, 1), Value::LongArray({-1, int64_t{1} << 40}),
                            Value::FloatArray({0.25f}, 1), Value::BoolArray({1, 0, 1}), Value::ByteArray({9, 255}, 1)}) {
                records.emplace_back("A").Add(v);
            }
            FbxStatus status;
            auto stream = Open(fbxwriter::Write(records, options), status);
            ASSERT_TRUE(stream) << status.GetErrorString();
            EXPECT_EQ(stream->BinaryType(), layout);
            EXPECT_EQ(stream->IsBigEndian(), bigEndian);

            ASSERT_TRUE(stream->BeginField("S"));
            EXPECT_EQ(stream->ValueCount(), 10);
            EXPECT_EQ(stream->ReadChar(), 'Y');
            EXPECT_EQ(stream->ReadByte(), 200);
            EXPECT_EQ(stream->ReadShort(), -1234);
            EXPECT_EQ(stream->ReadInt(), -123456789);
            EXPECT_EQ(stream->ReadLong(), 0x123456789ABCDEF0);
            EXPECT_EQ(stream->ReadFloat(), 1.5f);
            EXPECT_EQ(stream->ReadDouble(), -2.25);
            EXPECT_EQ(stream->ReadString(), "text");
            EXPECT_EQ(stream->ReadString(), "Model::Cube");
            size_t length = 0;
            const uint8_t* blob = stream->ReadBlob(length);
            ASSERT_EQ(length, 3u);
            EXPECT_EQ(std::memcmp(blob, "\x01\x02\x03", 3), 0);
            stream->EndField();

            size_t n = 0;
            ASSERT_TRUE(stream->BeginField("A"));
            const int32_t* ints = stream->ReadArrayOfInt(n);
            ASSERT_EQ(n, 3u);
            EXPECT_EQ(std::vector<int32_t>(ints, ints + n), (std::vector<int32_t>{1, -2, 3}));
            stream->EndField();
            ASSERT_TRUE(stream->BeginField("A"));
            const double* doubles = stream->ReadArrayOfDouble(n);
            ASSERT_EQ(n, 2u);
            EXPECT_EQ(std::vector<double>(doubles, doubles + n), (std::vector<double>{0.5, -4}));
            stream->EndField();
            ASSERT_TRUE(stream->BeginField("A"));
            const int16_t* shorts = stream->ReadArrayOfShort(n);
            ASSERT_EQ(n, 2u);
            EXPECT_EQ(std::vector<int16_t>(shorts, shorts + n), (std::vector<int16_t>{-7, 300}));
            stream->EndField();
            ASSERT_TRUE(stream->BeginField("A"));
            const int64_t* longs = stream->ReadArrayOfLong(n);
            ASSERT_EQ(n, 2u);
            EXPECT_EQ(std::vector<int64_t>(longs, longs + n), (std::vector<int64_t>{-1, int64_t{1} << 40}));
            stream->EndField();
            ASSERT_TRUE(stream->BeginField("A"));
            const float* floats = stream->ReadArrayOfFloat(n);
            ASSERT_EQ(n, 1u);
            EXPECT_EQ(floats[0], 0.25f);
            stream->EndField();
            ASSERT_TRUE(stream->BeginField("A"));
            const uint8_t* bools = stream->ReadArrayOfBool(n);
            ASSERT_EQ(n, 3u);
            EXPECT_EQ(std::vector<uint8_t>(bools, bools + n), (std::vector<uint8_t>{1, 0, 1}));
            stream->EndField();
            ASSERT_TRUE(stream->BeginField("A"));
            const uint8_t* bytes = stream->ReadArrayOfByte(n);
            ASSERT_EQ(n, 2u);
            EXPECT_EQ(std::vector<uint8_t>(bytes, bytes + n), (std::vector<uint8_t>{9, 255}));
            EXPECT_EQ(status.GetCode(), kFbxSuccess);
        }
    }
}

// Readers convert by the value's code, or take the payload bytes without
// looking at it.
TEST(StreamValues, Conversions) {
    enum Reader { kFloat, kDouble, kInt, kShort, kChar, kBool };
    struct Row {
        const char* what;
        Value value;
        Reader reader;
        double expected;
    };
    const Row rows[] = {
        {"F as float", Value::Float(1.5f), kFloat, 1.5},
        {"D narrowed", Value::Double(-0.75), kFloat, -0.75},
        {"D 1e-40 narrows to a denormal, logb -133", Value::Double(1e-40), kFloat, 0},
        {"logb -125 is kept", Value::Double(0x1p-125), kFloat, 0x1p-125},
        {"logb -126 reads 0", Value::Float(0x1p-126f), kFloat, 0},
        {"I is no float", Value::Int(5), kFloat, 0},
        {"F widened", Value::Float(0.25f), kDouble, 0.25},
        {"logb -1021 is kept", Value::Double(0x1p-1021), kDouble, 0x1p-1021},
        {"logb -1022 reads 0", Value::Double(0x1p-1022), kDouble, 0},
        {"L is no double", Value::Long(3), kDouble, 0},
        {"S gives its length word", Value::String("abc"), kInt, 3},
        {"L gives its low word", Value::Long(0x100000002), kInt, 2},
        {"I gives its low half", Value::Int(0x12345678), kShort, 0x5678},
        {"C as char", Value::Char('Y'), kChar, 'Y'},
        {"I is no char", Value::Int(89), kChar, 0},
        {"Y -2 is true", Value::Short(-2), kBool, 1},
        {"I 0 is false", Value::Int(0), kBool, 0},
        {"C 0 is false", Value::Char('\0'), kBool, 0},
        // The only value, one byte long: the three bytes behind the list count as 0.
        {"C read as int", Value::Char(7), kInt, 7},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        FbxStatus status;
        auto stream = Open(OneRecord({row.value}), status);
        ASSERT_TRUE(stream && stream->BeginField("V"));
        double got = -1;
        switch (row.reader) {
        case kFloat: got = stream->ReadFloat(); break;
        case kDouble: got = stream->ReadDouble(); break;
        case kInt: got = stream->ReadInt(); break;
        case kShort: got = stream->ReadShort(); break;
        case kChar: got = stream->ReadChar(); break;
        case kBool: got = stream->ReadBool(); break;
        }
        EXPECT_EQ(got, row.expected);
    }
}

TEST(StreamValues, Strings) {
    Value longWord = Value::String("abc");
    longWord.lengthWord = 100;  // list is 8 bytes: cut to what the list holds
    struct Row {
        const char* what;
        Value value;
        std::string expected;
    };
    const Row rows[] = {
        {"plain", Value::String("Properties70"), "Properties70"},
        {"empty", Value::String(""), ""},
        {"not a string", Value::Int(5), ""},
        {"two-part name", Value::String(fbxwriter::ObjectName("Cube", "Model")), "Model::Cube"},
        {"empty class", Value::String(std::string("Take\0\x01", 6)), "::Take"},
        {"length beyond the list", longWord, "abc"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        FbxStatus status;
        auto stream = Open(OneRecord({row.value}), status);
        ASSERT_TRUE(stream && stream->BeginField("V"));
        EXPECT_EQ(stream->ReadString(), row.expected);
    }
}

TEST(StreamValues, BlobLongerThanItsRecordIsCutWithAnError) {
    Value raw = Value::Raw("abc");
    raw.lengthWord = 50;
    FbxStatus status;
    auto stream = Open(OneRecord({raw, Value::Raw("")}), status);
    ASSERT_TRUE(stream && stream->BeginField("V"));
    size_t length = 0;
    const uint8_t* data = stream->ReadBlob(length);
    EXPECT_EQ(status.GetCode(), kFbxFailure);
    EXPECT_EQ(status.GetErrorString(), "Error decoding binary data chunk. The file may be corrupted.");
    // Never past the list: the 3 bytes behind the length word, then the next value's code.
    ASSERT_EQ(length, 3u + 1 + 4);
    EXPECT_EQ(std::memcmp(data, "abcR", 4), 0);
}

TEST(StreamValues, Arrays) {
    const std::string three = IntBytes({4, 5, 6});
    auto with = [](Value v, std::function<void(Value&)> change) {
        change(v);
        return v;
    };
    const Value ints = Value::IntArray({4, 5, 6});
    const Value packed = Value::IntArray({4, 5, 6}, 1);
    struct Row {
        const char* what;
        Value value;
        size_t expectedCount;
    };
    const Row rows[] = {
        {"raw", ints, 3},
        {"zlib", packed, 3},
        {"raw with count 0", Value::IntArray({}), 0},
        {"zlib with count 0", Value::IntArray({}, 1), 0},
        {"raw length not count*4", with(ints, [](Value& v) { v.storedLength = 11; }), 0},
        {"zlib garbage", with(packed, [](Value& v) { v.stored = "garbage!"; }), 0},
        {"zlib with a byte to spare", with(packed, [&](Value& v) { v.stored = Deflate(three) + '\0'; }), 0},
        {"zlib short of the count", with(packed, [&](Value& v) { v.stored = Deflate(IntBytes({4, 5})); }), 0},
        {"encoding 2", with(ints, [](Value& v) { v.encoding = 2; }), 0},
        {"only the low byte of the encoding counts",
         with(ints, [&](Value& v) { v.encoding = 0x101; v.stored = Deflate(three); }), 3},
        // 0x40000000 * 4 is 2^32: the 32-bit product wraps to 0.
        {"count*size beyond 32 bits", with(ints, [](Value& v) { v.countWord = 0x40000000; }), 0},
        {"stored length past the list", with(ints, [](Value& v) { v.storedLength = 1000; }), 0},
        {"float code", Value::FloatArray({1, 2, 3}), 0},
        // A few stored bytes cannot inflate to 4 GB; nothing is allocated for it.
        {"huge inflate claim", with(packed, [](Value& v) { v.countWord = 0x3FFFFFFF; }), 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        FbxStatus status;
        auto stream = Open(OneRecord({row.value}), status);
        ASSERT_TRUE(stream && stream->BeginField("V"));
        size_t count = 99;
        const int32_t* data = stream->ReadArrayOfInt(count);
        EXPECT_EQ(count, row.expectedCount);
        EXPECT_EQ(data != nullptr, row.expectedCount != 0);
        if (data && count == 3) {
            EXPECT_EQ(std::vector<int32_t>(data, data + 3), (std::vector<int32_t>{4, 5, 6}));
        }
        EXPECT_EQ(status.GetCode(), kFbxSuccess);
    }
}

// The value behind an array is looked for at the array's code position + 9 +
// its encoding word: for a raw array of 73 bytes that is the stored length
// word, whose low byte 73 is the code 'I'; its payload is the word's other
// three bytes (0) and the first element (5), so 5 << 24.
TEST(StreamValues, ValueBehindAnArrayIsFoundAtTheOldPosition) {
    std::vector<uint8_t> elements(73, 0);
    elements[0] = 5;
    FbxStatus status;
    auto stream = Open(OneRecord({Value::ByteArray(elements), Value::Int(77)}), status);
    ASSERT_TRUE(stream && stream->BeginField("V"));
    size_t count = 0;
    ASSERT_TRUE(stream->ReadArrayOfByte(count));
    EXPECT_EQ(count, 73u);
    EXPECT_EQ(stream->ValueCode(), 'I');
    EXPECT_EQ(stream->ReadInt(), 5 << 24);
}

TEST(StreamValues, ArrayPointerLivesUntilTheNextReadOfItsInstance) {
    Record x("X"), y("Y");
    x.Add(Value::IntArray({1, 2}));
    y.Add(Value::IntArray({3, 4}, 1));
    FbxStatus status;
    auto stream = Open(fbxwriter::Write({x, y}), status);
    ASSERT_TRUE(stream);
    size_t n = 0;
    ASSERT_TRUE(stream->BeginField("X"));
    const int32_t* first = stream->ReadArrayOfInt(n);
    ASSERT_TRUE(stream->BeginField("Y"));
    const int32_t* second = stream->ReadArrayOfInt(n);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first[0] + first[1] * 10 + second[0] * 100 + second[1] * 1000, 1 + 20 + 300 + 4000);
}

// Records of up to 8 values below 256 bytes keep their offsets inline, others
// on the heap; every value must read back either way.
TEST(StreamValues, ValueOffsetsOfSmallAndLargeRecords) {
    struct Row {
        int ints;
        size_t listLength;  // string first, then the ints: 5 bytes each
    };
    const Row rows[] = {{7, 255}, {7, 256}, {8, 60}, {3, 3000}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.ints << " ints, list " << row.listLength);
        std::vector<Value> values;
        const size_t text = row.listLength - 5 * static_cast<size_t>(row.ints) - 5;
        values.push_back(Value::String(std::string(text, 'x')));
        for (int i = 0; i < row.ints; ++i) values.push_back(Value::Int(i * 11));
        FbxStatus status;
        auto stream = Open(OneRecord(values), status);
        ASSERT_TRUE(stream && stream->BeginField("V"));
        EXPECT_EQ(stream->ReadString().size(), text);
        for (int i = 0; i < row.ints; ++i) EXPECT_EQ(stream->ReadInt(), i * 11);
    }
}

TEST(StreamValues, UnknownCodeEndsTheRecordsValues) {
    FbxStatus status;
    auto stream = Open(OneRecord({Value::Int(1), Value::Verbatim("Q1234"), Value::Int(3)}), status);
    ASSERT_TRUE(stream && stream->BeginField("V"));
    EXPECT_EQ(stream->ValueCount(), 3);
    EXPECT_EQ(stream->ReadInt(), 1);
    EXPECT_EQ(stream->ValueCode(), 'S');  // nothing readable at the cursor
    EXPECT_EQ(stream->ReadInt(), 0);
    EXPECT_EQ(stream->ReadInt(), 0);
    EXPECT_EQ(stream->ValuesLeft(), 0);
    EXPECT_EQ(status.GetCode(), kFbxSuccess);
}

TEST(StreamFields, Navigation) {
    Record obj("Obj");  // no values, a nested block
    obj.Child("P").Int(0);
    obj.Child("Q").Int(9);
    obj.Child("P").Int(1);
    obj.Child("P").Int(2);
    obj.Child("M").Int(1).String("s");
    obj.Child("T").Double(1).Double(2);
    Record second("Obj");
    second.Child("P").Int(100);
    FbxStatus status;
    auto stream = Open(fbxwriter::Write({obj, second}), status);
    ASSERT_TRUE(stream);
    ASSERT_EQ(stream->FieldCount("Obj"), 2);
    ASSERT_TRUE(stream->BeginField("Obj"));
    EXPECT_EQ(stream->ValueCount(), 0);
    EXPECT_EQ(stream->ReadInt(), 0);
    ASSERT_TRUE(stream->HasBlock());
    ASSERT_TRUE(stream->BeginBlock());

    ASSERT_EQ(stream->FieldNameCount(), 4);
    EXPECT_EQ(stream->FieldName(0) + stream->FieldName(1) + stream->FieldName(2) + stream->FieldName(3), "PQMT");
    EXPECT_EQ(stream->FieldCount("P"), 3);
    EXPECT_EQ(stream->FieldCount("Missing"), 0);
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(stream->BeginField("P"));
        EXPECT_EQ(stream->ReadInt(), i);
        stream->EndField();
    }
    EXPECT_FALSE(stream->BeginField("P"));
    EXPECT_EQ(stream->ReadInt(), 0);  // no current field
    ASSERT_TRUE(stream->BeginField("P", 0));
    EXPECT_EQ(stream->ReadInt(), 0);
    EXPECT_FALSE(stream->BeginField("P", 3));
    stream->ResetCursors();
    ASSERT_TRUE(stream->BeginField("P"));
    EXPECT_EQ(stream->ReadInt(), 0);

    EXPECT_EQ(stream->ReadInt("Q", -1), 9);
    EXPECT_EQ(stream->ReadInt("Q", -1), -1);  // its only instance is used up
    EXPECT_EQ(stream->ReadInt("Missing", 42), 42);
    EXPECT_EQ(stream->ReadString("Missing", "dflt"), "dflt");

    ASSERT_TRUE(stream->BeginField("M"));
    EXPECT_EQ(stream->ValueCount(), 2);
    EXPECT_EQ(stream->ValueCode(), 'I');
    EXPECT_EQ(stream->ReadInt(), 1);
    EXPECT_EQ(stream->ValuesLeft(), 1);
    EXPECT_EQ(stream->ValueCode(), 'S');
    EXPECT_EQ(stream->ReadString(), "s");
    EXPECT_EQ(stream->ValuesLeft(), 0);
    EXPECT_EQ(stream->ReadInt(), 0);

    const double fallback[3] = {7, 8, 9};
    double out[3];
    stream->ReadDouble3("T", out, fallback);
    EXPECT_EQ(std::vector<double>(out, out + 3), (std::vector<double>{1, 2, 9}));
    stream->ReadDouble3("Missing", out, fallback);
    EXPECT_EQ(std::vector<double>(out, out + 3), (std::vector<double>{7, 8, 9}));

    // Back in the parent, the next BeginField goes on with the second Obj.
    stream->EndBlock();
    stream->EndField();
    ASSERT_TRUE(stream->BeginField("Obj"));
    ASSERT_TRUE(stream->BeginBlock());
    EXPECT_EQ(stream->ReadInt("P", -1), 100);
}

TEST(StreamFields, NameOf255BytesAndNamesCutAtNul) {
    const std::string longName(255, 'n');
    Record cut(std::string("Cut\0tail", 8));
    FbxStatus status;
    auto stream = Open(fbxwriter::Write({Record(longName), cut}), status);
    ASSERT_TRUE(stream);
    EXPECT_EQ(stream->FieldCount(longName), 1);
    EXPECT_EQ(stream->FieldCount("Cut"), 1);
}

// A count no list could hold is bounded by the list's length (5 bytes here:
// code and payload of one int), so loops over the values stay short.
TEST(StreamValues, CountBeyondTheListIsBounded) {
    Record record("V");
    record.Int(7);
    record.valueCount = 0xFFFFFFFFu;
    FbxStatus status;
    auto stream = Open(fbxwriter::Write({record}), status);
    ASSERT_TRUE(stream && stream->BeginField("V"));
    EXPECT_EQ(stream->ValueCount(), 5);
    EXPECT_EQ(stream->ReadInt(), 7);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(stream->ReadInt(), 0);
    EXPECT_EQ(stream->ValuesLeft(), 0);
}
