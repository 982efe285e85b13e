// Broken text files are refused whole, with the fault found where it is, never read past
// their end, and never allowed to claim memory their text cannot back. Deep nesting costs
// no stack.
#include <gtest/gtest.h>

#include <string>

#include "ascii_test_util.h"
#include "fbx/fbx_ascii_transcode.h"

namespace {

using asciitest::kVersionLine;

struct BrokenRow {
    const char* what;
    std::string body;
    FbxAsciiFault fault;
    uint64_t line;  // counting the version line as line 1
};

TEST(AsciiMalformed, RefusedWithTheFaultAndItsLine) {
    const BrokenRow rows[] = {
        {"block never closed", "A:  {\n\tB: 1\n", FbxAsciiFault::UnclosedBlock, 4},
        {"closing brace with nothing open", "A: 1\n}\n", FbxAsciiFault::UnbalancedBrace, 3},
        {"string never closed", "A: 1\nB: \"abc\nC: 2\n", FbxAsciiFault::UnterminatedString, 3},
        {"string cut inside an escape", "N: \"Model::Mod&quo", FbxAsciiFault::UnterminatedString, 2},
        {"junk number", "A: 1.2.3\n", FbxAsciiFault::BadValue, 2},
        {"junk word", "A: 1\nB: infty\n", FbxAsciiFault::BadValue, 3},
        {"runtime form with letters behind", "A: 1.#INDIE\n", FbxAsciiFault::BadValue, 2},
        {"values without a comma", "A: 1 2\n", FbxAsciiFault::MissingComma, 2},
        {"brace without a record", "{\n}\n", FbxAsciiFault::Unexpected, 2},
        {"comma behind an array", "A: *1 {\n\ta: 1\n}, 2\n", FbxAsciiFault::Unexpected, 4},
        {"count above the elements", "A: *3 {\n\ta: 1,2\n}\n", FbxAsciiFault::ArrayCount, 4},
        {"count below the elements", "A: *1 {\n\ta: 1,2\n}\n", FbxAsciiFault::ArrayCount, 3},
        {"count the text cannot hold", "A: *99999999999 {\n\ta: 1\n}\n", FbxAsciiFault::ArrayCount, 2},
        {"count that is no number", "A: *x {\n\ta: 1\n}\n", FbxAsciiFault::ArrayCount, 2},
        {"array without braces", "A: *3 a: 1,2,3\n", FbxAsciiFault::BadArray, 2},
        {"string among the elements", "A: *2 {\n\ta: 1,\"x\"\n}\n", FbxAsciiFault::BadArray, 3},
        {"elements without a comma", "A: *2 {\n\ta: 1 2\n}\n", FbxAsciiFault::MissingComma, 3},
        {"array cut off", "A: *2 {\n\ta: 1,2", FbxAsciiFault::UnclosedBlock, 3},
        {"int element beyond 32 bits", "PolygonVertexIndex: *1 {\n\ta: 3000000000\n}\n", FbxAsciiFault::BadValue, 3},
        {"infinite index", "Indexes: *1 {\n\ta: inf\n}\n", FbxAsciiFault::BadValue, 3},
        {"name of 256 bytes", std::string(256, 'N') + ": 1\n", FbxAsciiFault::NameTooLong, 2},
        {"control byte as a value", "A: 1\nB: \x01\n", FbxAsciiFault::BadValue, 3},
    };
    for (const BrokenRow& row : rows) {
        SCOPED_TRACE(row.what);
        const std::string text = kVersionLine + row.body;
        const FbxAsciiImage image =
            FbxTranscodeAscii(reinterpret_cast<const uint8_t*>(text.data()), text.size(), 7400);
        EXPECT_EQ(image.fault, row.fault);
        EXPECT_EQ(image.faultLine, row.line);
        EXPECT_TRUE(image.bytes.empty());

        // Through the stream: the open fails as a corrupt binary block does.
        FbxStatus status;
        EXPECT_FALSE(asciitest::OpenText(row.body, status));
        EXPECT_EQ(status.GetCode(), kFbxInvalidFile);
        EXPECT_EQ(status.GetErrorString(), "File is corrupted: 'fixture.fbx'");
    }
}

TEST(AsciiMalformed, NoVersionLineIsNoTextFile) {
    FbxStatus status;
    EXPECT_FALSE(asciitest::OpenBytes("FBXHeaderExtension:  {\n}\n", status));
    EXPECT_EQ(status.GetCode(), kFbxFailure);
    EXPECT_EQ(status.GetErrorString(), "File is corrupted: 'fixture.fbx'");
}

TEST(AsciiMalformed, DeepNestingCostsNoStack) {
    // Far deeper than a recursive reader could go on an 8 MB stack.
    constexpr int kDepth = 50000;
    std::string body;
    body.reserve(kDepth * 8);
    for (int k = 0; k < kDepth; ++k) body += "A: {\n";
    body += "Leaf: 7\n";
    for (int k = 0; k < kDepth; ++k) body += "}\n";
    FbxStatus status;
    auto stream = asciitest::OpenText(body, status);
    ASSERT_TRUE(stream) << status.GetErrorString();
    int depth = 0;
    while (stream->BeginField("A") && stream->BeginBlock()) ++depth;
    EXPECT_EQ(depth, kDepth);
    EXPECT_EQ(stream->ReadInt("Leaf", 0), 7);

    // One brace short at the end: refused, not read past the text.
    body.resize(body.size() - 2);
    EXPECT_FALSE(asciitest::OpenText(body, status));
    EXPECT_EQ(status.GetCode(), kFbxInvalidFile);
}

}  // namespace
