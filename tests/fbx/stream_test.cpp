// The field stream: opening files (header, layout gate, header extension, version limit,
// sections, unreadable blocks), values and arrays of every code, field navigation.
#include <zlib.h>

#include <fstream>

#include "fbx/fbx_ascii_version.h"
#include "fbx_fixture.h"
#include "scratch_folder.h"

using namespace fbxtest;

namespace {

std::vector<Record> WithExtension(int32_t headerVersion, int32_t fileVersion, std::vector<Record> records) {
    records.insert(records.begin(), fbxwriter::HeaderExtension(headerVersion, fileVersion));
    return records;
}

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

// Files of 7400 and below have 32-bit record words, 7500 on 64-bit; between
// the two the layout that finds the header extension wins.
TEST(StreamOpen, LayoutGateAndRetry) {
    struct Row {
        uint32_t version;
        int layout;
        bool typeOneOpens, typeZeroOpens;
    };
    // A layout-1 file of 7450 may pass with type 0 too, reading garbage: not checked.
    const Row rows[] = {
        {7400, 0, false, true}, {7100, 0, false, true}, {7500, 1, true, false},
        {7700, 1, true, false}, {7450, 0, false, true}, {7450, 1, true, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.version << " layout " << row.layout);
        fbxwriter::Options options = Version(row.version);
        options.recordLayout = row.layout;
        const std::vector<uint8_t> bytes =
            fbxwriter::Write(WithExtension(1003, static_cast<int32_t>(row.version), {Record("Mark")}), options);
        for (int type : {1, 0}) {
            if (row.version == 7450 && row.layout == 1 && type == 0) continue;
            FbxStatus status;
            FbxFieldStream stream(type, status);
            const bool opened = stream.OpenStream(FbxFileBytes::Copy(bytes.data(), bytes.size()), kName, false,
                                                  true, nullptr);
            EXPECT_EQ(opened, type == 1 ? row.typeOneOpens : row.typeZeroOpens) << "type " << type;
            if (opened) {
                EXPECT_EQ(stream.FieldCount("Mark"), 1);
            }
        }
        FbxStatus status;
        auto stream = Open(bytes, status);
        ASSERT_TRUE(stream);
        EXPECT_EQ(stream->BinaryType(), row.layout);
        EXPECT_EQ(status.GetCode(), kFbxSuccess);  // the failed first try leaves no trace
    }
}

TEST(StreamOpen, RefusedFiles) {
    std::vector<uint8_t> badMagic = fbxwriter::Write({Record("A")});
    badMagic[19] = 'X';
    const std::string asciiText = "; FBX 7.4.0 project file\nFBXHeaderExtension:  {\n";
    struct Row {
        const char* what;
        std::vector<uint8_t> bytes;
        FbxStatusCode code;
        std::string text;
    };
    const Row rows[] = {
        {"bad magic", badMagic, kFbxFailure, "File is corrupted: 'fixture.fbx'"},
        {"text file with a block never closed", std::vector<uint8_t>(asciiText.begin(), asciiText.end()),
         kFbxInvalidFile, "File is corrupted: 'fixture.fbx'"},
        {"shorter than a header", std::vector<uint8_t>(badMagic.begin(), badMagic.begin() + 20), kFbxFailure,
         "File is corrupted: 'fixture.fbx'"},
        {"version 8000", fbxwriter::Write({Record("A")}, Version(8000)), kFbxInvalidFileVersion,
         "FBX file version 8.0.0 is not supported in this product"},
        {"FBXVersion 8123 replaces 7400", fbxwriter::Write(WithExtension(1003, 8123, {})), kFbxInvalidFileVersion,
         "FBX file version 8.1.23 is not supported in this product"},
        {"top-level end offset past the file",
         [] {
             Record r("A");
             r.endOffset = 1u << 30;
             return fbxwriter::Write({r});
         }(),
         kFbxInvalidFile, "File is corrupted: 'fixture.fbx'"},
        {"encryption type 2",
         [] {
             Record ext = fbxwriter::HeaderExtension(1003, 7400);
             ext.Add("EncryptionType").Int(2);
             return fbxwriter::Write({ext});
         }(),
         kFbxFailure, "Encryption type is not supported"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        FbxStatus status;
        EXPECT_FALSE(Open(row.bytes, status));
        EXPECT_EQ(status.GetCode(), row.code);
        EXPECT_EQ(status.GetErrorString(), row.text);
    }

    FbxStatus status;
    EXPECT_FALSE(FbxOpenFieldStream("/nonexistent/dir/x.fbx", status, true, nullptr));
    EXPECT_EQ(status.GetErrorString(), "Unable to open file '/nonexistent/dir/x.fbx'");

    // A stream of a reader for older files refuses major version 7 as well.
    const std::vector<uint8_t> bytes = fbxwriter::Write({Record("A")});
    FbxFieldStream old(0, status);
    old.SetAcceptVersion7(false);
    EXPECT_FALSE(old.OpenStream(FbxFileBytes::Copy(bytes.data(), bytes.size()), kName, false, true, nullptr));
    EXPECT_EQ(status.GetErrorString(), "FBX file version 7.4.0 is not supported in this product");
}

TEST(StreamOpen, HeaderExtension) {
    Record ext = fbxwriter::HeaderExtension(1004, 7100, 24, "Exporter 1.0");
    ext.Add("EncryptionType").Int(1);
    Record camera("CurrentCameraResolution");
    camera.Child("CameraName").String("Producer Perspective");
    camera.Child("CameraResolutionW").Int(640);
    ext.Child(camera);
    fbxwriter::Options options = Version(7400);
    options.magic = "Autodesk FBX Binary ";
    const std::vector<uint8_t> bytes = fbxwriter::Write({ext, Record("Body")}, options);
    FbxStatus status;
    FbxFileHeaderInfo info;
    auto stream = Open(bytes, status, &info);
    ASSERT_TRUE(stream) << status.GetErrorString();
    EXPECT_EQ(stream->FileVersion(), 7100);  // FBXVersion replaces the header's 7400
    EXPECT_TRUE(stream->IsEncrypted());
    EXPECT_EQ(stream->TCDefinition(), 24);
    EXPECT_EQ(info.fbxHeaderVersion, 1004);
    EXPECT_EQ(info.cameraName, "Producer Perspective");
    EXPECT_EQ(info.cameraResolutionW, 640);
    EXPECT_EQ(info.creationTimeStampVersion, 1000);
    EXPECT_EQ(info.year * 10000 + info.month * 100 + info.day, 20240517);
    EXPECT_EQ(info.millisecond, 250);
    EXPECT_EQ(info.creator, "Exporter 1.0");
    // The main section starts behind the extension, whose end offset is the first word at 27.
    EXPECT_EQ(stream->SectionOffset(0), bytes[27] | bytes[28] << 8 | bytes[29] << 16 | bytes[30] << 24);
    EXPECT_EQ(stream->FieldCount("FBXHeaderExtension"), 0);
    EXPECT_EQ(stream->FieldCount("Body"), 1);

    // Before header version 1004 the time-unit definition is not looked at.
    Record older = fbxwriter::HeaderExtension(1003, 7400);
    older.children.back().Child("TCDefinition").Int(24);
    stream = Open(fbxwriter::Write({older}), status, &info);
    ASSERT_TRUE(stream);
    EXPECT_FALSE(info.hasTCDefinition);
    EXPECT_EQ(stream->TCDefinition(), 127);
}

TEST(StreamOpen, SectionsFromTrailers) {
    struct Row {
        const char* what;
        bool trailer, bigEndian;
        std::optional<uint32_t> trailerVersion;
        int32_t expectedVersion;
    };
    const Row rows[] = {
        {"no trailer", false, false, std::nullopt, 7400},
        {"trailer version 0 leaves the header's", true, false, 0u, 7400},
        {"trailer version replaces it", true, false, 7300u, 7300},
        {"big endian trailer", true, true, 7300u, 7300},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        fbxwriter::Options options;
        options.trailer = row.trailer;
        options.bigEndian = row.bigEndian;
        options.trailerVersion = row.trailerVersion;
        FbxStatus status;
        auto stream = Open(fbxwriter::Write({Record("A")}, options), status);
        ASSERT_TRUE(stream);
        EXPECT_EQ(stream->SectionCount(), 1);
        EXPECT_EQ(stream->SectionOffset(0), 27);
        EXPECT_EQ(stream->SectionVersion(0), row.expectedVersion);
        EXPECT_EQ(stream->FieldCount("A"), 1);
    }

    fbxwriter::Section second, third;
    second.records = {Record("Second")};
    second.version = 7200;
    third.records = {Record("Third")};
    third.version = 0;  // an extra section without a version counts as 4000
    third.records[0].Child("NodeId").String("node 3");
    FbxStatus status;
    auto stream = Open(fbxwriter::Write({Record("Main")}, {}, {second, third}), status);
    ASSERT_TRUE(stream);
    ASSERT_EQ(stream->SectionCount(), 3);
    EXPECT_EQ(stream->SectionVersion(1), 7200);
    EXPECT_EQ(stream->SectionVersion(2), 4000);
    EXPECT_FALSE(stream->OpenSection(1));  // the main section is still open
    ASSERT_TRUE(stream->CloseSection());
    ASSERT_TRUE(stream->OpenSection(1));
    EXPECT_EQ(stream->FieldCount("Second"), 1);
    EXPECT_EQ(stream->FieldCount("Main"), 0);
    ASSERT_TRUE(stream->CloseSection());
    EXPECT_FALSE(stream->OpenSection(3));
    EXPECT_EQ(status.GetCode(), kFbxFailure);
    ASSERT_TRUE(stream->OpenSection(0));
    EXPECT_EQ(stream->FieldCount("Main"), 1);
}

// A block that cannot be read fails BeginBlock with code 7 and leaves the
// parent current.
TEST(StreamBlocks, UnreadableNestedBlocks) {
    struct Row {
        const char* what;
        int layout;
        std::function<void(Record&)> breakChild;
    };
    const Row rows[] = {
        {"end offset before its record", 0, [](Record& r) { r.endOffset = 30; }},
        {"end offset past the file", 0, [](Record& r) { r.endOffset = 1u << 30; }},
        {"value list past the file", 0, [](Record& r) { r.valueListLength = 1u << 30; }},
        {"negative value list length", 1, [](Record& r) { r.valueListLength = uint64_t{1} << 63; }},
        // Inside the file, but beyond the room the parent's value lists leave.
        {"value list beyond the shared buffer", 0, [](Record& r) { r.valueListLength = 5000; }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Record obj("Obj");
        obj.Child("Ok").Int(1);
        row.breakChild(obj.Child("Bad").Int(2));
        Record big("Big");
        big.Raw(std::string(20000, 'r'));
        fbxwriter::Options options = Version(row.layout == 1 ? 7500 : 7400);
        FbxStatus status;
        auto stream = Open(fbxwriter::Write({obj, big}, options), status);
        ASSERT_TRUE(stream);
        ASSERT_TRUE(stream->BeginField("Obj"));
        EXPECT_FALSE(stream->BeginBlock());
        EXPECT_EQ(status.GetCode(), kFbxInvalidFile);
        EXPECT_EQ(status.GetErrorString(), "File is corrupted: 'fixture.fbx'");
        EXPECT_EQ(stream->BlockDepth(), 0);
        EXPECT_EQ(stream->FieldCount("Big"), 1);
    }
}

// Nesting costs no stack: 5000 levels down and back up.
TEST(StreamBlocks, DeepNesting) {
    const int depth = 5000;
    Record root("N");
    Record* level = &root;
    for (int i = 1; i <= depth; ++i) level = &level->Child("N").Int(i);
    FbxStatus status;
    auto stream = Open(fbxwriter::Write({root}), status);
    ASSERT_TRUE(stream);
    for (int i = 1; i <= depth; ++i) {
        ASSERT_TRUE(stream->BeginField("N"));
        ASSERT_TRUE(stream->BeginBlock()) << i;
    }
    EXPECT_EQ(stream->ReadInt("N", 0), depth);
    for (int i = 0; i < depth; ++i) stream->EndBlock();
    EXPECT_EQ(stream->BlockDepth(), 0);
    EXPECT_EQ(status.GetCode(), kFbxSuccess);
}

TEST(StreamOpen, TextVersionLine) {
    const testsupport::Table rows = Table("text_version_lines.txt");
    ASSERT_GT(rows.size(), 8u);
    for (const testsupport::TableRow& row : rows) {
        int32_t version = -1;
        const bool scanned = FbxScanAsciiVersionLine(row[0], version);
        EXPECT_EQ(scanned ? version : -1, std::stoi(row[1])) << row[0];
    }
}

// Every value code written in both record layouts and both byte orders reads back.
TEST(StreamValues, EveryCodeInBothLayoutsAndByteOrders) {
    Record scalars("S");
    scalars.Char('Y').Byte(200).Short(-1234).Int(-123456789).Long(0x123456789ABCDEF0).Float(1.5f);
    scalars.Double(-2.25).String("text").Raw("\x01\x02\x03");
    // One array per record: the value behind an array is not found where it lies.
    std::vector<Record> records = {scalars};
    for (Value v : {Value::IntArray({1, -2, 3}), Value::DoubleArray({0.5, -4}, 1), Value::ShortArray({-7, 300}, 1),
                    Value::LongArray({-1, int64_t{1} << 40}), Value::FloatArray({0.25f}, 1),
                    Value::BoolArray({1, 0, 1}), Value::ByteArray({9, 255}, 1)}) {
        records.emplace_back("A").Add(v);
    }
    const std::vector<std::string> expected = {
        "C Y; Z 200; Y -1234; I -123456789; L " + std::to_string(0x123456789ABCDEF0) +
            "; F 1.5; D -2.25; S text; R \\x01\\x02\\x03",
        "i 1,-2,3", "d 0.5,-4", "h -7,300", "l -1," + std::to_string(int64_t{1} << 40), "f 0.25", "b 1,0,1", "c 9,255"};
    for (int layout : {0, 1}) {
        for (bool bigEndian : {false, true}) {
            SCOPED_TRACE(testing::Message() << "layout " << layout << (bigEndian ? " big" : " little"));
            fbxwriter::Options options = Version(layout == 1 ? 7500 : 7400);
            options.bigEndian = bigEndian;
            FbxStatus status;
            auto stream = Open(fbxwriter::Write(records, options), status);
            ASSERT_TRUE(stream) << status.GetErrorString();
            EXPECT_EQ(stream->BinaryType(), layout);
            EXPECT_EQ(stream->IsBigEndian(), bigEndian);
            ASSERT_TRUE(stream->BeginField("S"));
            EXPECT_EQ(stream->ValueCount(), 9);
            EXPECT_EQ(Render(*stream), expected[0]);
            for (size_t k = 1; k < expected.size(); ++k) {
                stream->EndField();
                ASSERT_TRUE(stream->BeginField("A"));
                EXPECT_EQ(Render(*stream), expected[k]);
            }
            EXPECT_EQ(status.GetCode(), kFbxSuccess);
        }
    }
}

// A scalar value written as its code, a space and its text.
Value ScalarValue(const std::string& field) {
    const std::string text = field.size() > 2 ? field.substr(2) : "";
    if (field[0] == 'F') return Value::Float(float(testsupport::Number(text)));
    if (field[0] == 'D') return Value::Double(testsupport::Number(text));
    if (field[0] == 'S') return Value::String(text);
    Value v = Value::Long(field[0] == 'C' ? text[0] : std::stoll(text, nullptr, 0));
    v.code = field[0];
    return v;
}

TEST(StreamValues, ConversionsOfTheReaders) {
    for (const testsupport::TableRow& row : Table("stream_conversions.txt")) {
        SCOPED_TRACE(testing::Message() << "line " << row.line << ": " << row[0]);
        FbxStatus status;
        auto stream = Open(OneRecord({ScalarValue(row[1])}), status);
        ASSERT_TRUE(stream && stream->BeginField("V"));
        const std::string& reader = row[2];
        if (reader == "string") {
            EXPECT_EQ(stream->ReadString(), row[3]);
            continue;
        }
        const double got = reader == "float"    ? stream->ReadFloat()
                           : reader == "double" ? stream->ReadDouble()
                           : reader == "int"    ? stream->ReadInt()
                           : reader == "short"  ? stream->ReadShort()
                           : reader == "char"   ? stream->ReadChar()
                                                : stream->ReadBool();
        EXPECT_EQ(got, testsupport::Number(row[3]));
    }
}

TEST(StreamValues, LengthsLongerThanTheirRecordAreCut) {
    Value text = Value::String("abc");
    text.lengthWord = 100;  // list is 8 bytes: cut to what the list holds
    FbxStatus status;
    auto stream = Open(OneRecord({text}), status);
    ASSERT_TRUE(stream && stream->BeginField("V"));
    EXPECT_EQ(stream->ReadString(), "abc");

    // A blob is cut with an error.
    Value raw = Value::Raw("abc");
    raw.lengthWord = 50;
    stream = Open(OneRecord({raw, Value::Raw("")}), status);
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

namespace {

// Resident bytes of this process's mapping of `path` (its "Rss:" in /proc/self/smaps), or
// -1 when the file is not mapped.
int64_t MappedResidentBytes(const std::string& path) {
    std::ifstream smaps("/proc/self/smaps");
    bool inside = false;
    for (std::string line; std::getline(smaps, line);) {
        if (line.find('-') < line.find(' ')) {  // a mapping's first line: "start-end perms ... path"
            inside = line.size() >= path.size() && line.compare(line.size() - path.size(), path.size(), path) == 0;
        } else if (inside && line.rfind("Rss:", 0) == 0) {
            return std::stoll(line.substr(4)) * 1024;
        }
    }
    return -1;
}

}  // namespace

// A big file is mapped, and a reader that goes through its objects one record name at a
// time keeps little of it: small records of one name lie between big ones of another, so
// each small one read maps the pages around it, which must go back with the rest.
TEST(StreamMappedFile, PassesByNameKeepLittleOfTheFileMapped) {
    constexpr int kGroups = 3000;
    const std::string padding(3000, 'x');
    Record objects("Objects");
    for (int i = 0; i < kGroups; ++i) {
        objects.Add("Small").Long(i).Add("P").Int(i);
        for (int k = 0; k < 2; ++k) objects.Add("Big").Long(2 * i + k).Raw(padding).Add("P").Int(i);
    }
    const std::vector<uint8_t> bytes = fbxwriter::Write({objects});
    ASSERT_GT(bytes.size(), size_t{kGroups} * 2 * padding.size());  // far above where mapping starts
    testsupport::ScratchFolder folder("mapped");
    const std::string path = folder.File("objects.fbx");
    std::FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_TRUE(file);
    ASSERT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file), bytes.size());
    std::fclose(file);

    for (const auto& order : {std::array<std::string, 2>{"Small", "Big"}, std::array<std::string, 2>{"Big", "Small"}}) {
        SCOPED_TRACE(order[0] + " first");
        FbxStatus status;
        auto stream = FbxOpenFieldStream(path, status, true, nullptr);
        ASSERT_TRUE(stream && stream->BeginField("Objects") && stream->BeginBlock());
        for (const std::string& name : order) {
            const int count = stream->FieldCount(name);
            ASSERT_EQ(count, name == "Big" ? 2 * kGroups : kGroups);
            for (int i = 0; i < count; ++i) {
                ASSERT_TRUE(stream->BeginField(name, i) && stream->BeginBlock());
                // What was given back reads the same when read again.
                EXPECT_EQ(stream->ReadInt("P", -1), name == "Big" ? i / 2 : i);
                stream->EndBlock();
                stream->EndField();
            }
            const int64_t resident = MappedResidentBytes(path);
            ASSERT_GE(resident, 0) << "not mapped";
            // Pages are mapped in folios of up to 2 MiB around the record touched, whatever the
            // reader gives back: the bound leaves room for a few.
            EXPECT_LT(resident, static_cast<int64_t>(bytes.size() / 4)) << "after the pass over " << name;
        }
    }
}
