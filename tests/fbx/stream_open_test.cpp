// Opening files: header, layout gate, header extension, version limit,
// sections, and blocks that cannot be read.
#include "fbx/fbx_ascii_version.h"
#include "stream_test_util.h"

using namespace streamtest;

namespace {

fbxwriter::Options Version(uint32_t version) {
    fbxwriter::Options options;
    options.version = version;
    return options;
}

std::vector<Record> WithExtension(int32_t headerVersion, int32_t fileVersion, std::vector<Record> records) {
    records.insert(records.begin(), fbxwriter::HeaderExtension(headerVersion, fileVersion));
    return records;
}

uint32_t LoadU32(const std::vector<uint8_t>& bytes, size_t at) {
    return uint32_t(bytes[at]) | uint32_t(bytes[at + 1]) << 8 | uint32_t(bytes[at + 2]) << 16 |
           uint32_t(bytes[at + 3]) << 24;
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
    EXPECT_EQ(stream->SectionOffset(0), LoadU32(bytes, 27));
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
    struct Row {
        const char* line;
        int32_t version;  // -1: not a version line
    };
    const Row rows[] = {
        {"; FBX 7.4.0 project file", 7400},
        {";FBX 7.5.1 Project FILE", 7501},
        {"; FBX 6.1 project file", 6100},
        {"; Filmbox 4.5 project file", 4050},
        {"; Filmbox 2.7 project file", 2001},
        {"; Filmbox 3.2 project file", 3200},
        {"; FBX 7.4.0 project", -1},
        {"# FBX 7.4.0 project file", -1},
        {"; FBX 7,4,0 project file", -1},
        {"; FBX 7.4.0 project data", -1},
        {"", -1},
    };
    for (const Row& row : rows) {
        int32_t version = -1;
        const bool scanned = FbxScanAsciiVersionLine(row.line, version);
        EXPECT_EQ(scanned ? version : -1, row.version) << row.line;
    }
}
