#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "json/json.h"
#include "file_contents.h"
#include "scratch_folder.h"

namespace {

// {"a":1,"b":[true,null],"c":{}}
JsonValue Sample() {
    JsonValue b = JsonValue::Array();
    b.Add(JsonValue(true));
    b.Add(JsonValue(kJsonNull, ""));
    JsonValue root = JsonValue::Object();
    root.Add("a", JsonValue(int32_t{1}));
    root.Add("b", b);
    root.Add("c", JsonValue::Object());
    return root;
}

TEST(JsonWriter, LayoutsOfEveryFormat) {
    const std::pair<JsonFormat, const char*> rows[] = {
        {NoFormat, "{\"a\":1,\"b\":[true,null],\"c\":{}}"},
        // One tab per level; an empty container holds two line ends.
        {StandardFormat, "{\n\t\"a\": 1,\n\t\"b\": [\n\t\ttrue,\n\t\tnull\n\t],\n\t\"c\": {\n\n\t}\n}"},
        // Spacing without line ends puts blanks for them.
        {{false, true, true, 1}, "{ \"a\": 1, \"b\": [ true, null ], \"c\": {  } }"},
        {{true, false, false, 2}, "{\n  \"a\":1,\n  \"b\":[\n    true,\n    null\n  ],\n  \"c\":{\n\n  }\n}"},
        // Indentation needs line ends: without them the width is ignored.
        {{false, false, true, 4}, "{\"a\":1,\"b\":[true,null],\"c\":{}}"}};
    for (const auto& [format, text] : rows) EXPECT_EQ(JsonWriter(format).WriteString(Sample()), text);
    EXPECT_EQ(JsonWriter(StandardFormat).WriteString(JsonValue::Array()), "[\n\n]");
}

TEST(JsonWriter, StringsEscapedNamesVerbatim) {
    JsonValue root = JsonValue::Object();
    root.Add("na\"me/", JsonValue("a/b\\tc\x18"));
    EXPECT_EQ(JsonWriter(NoFormat).WriteString(root), "{\"na\"me/\":\"a\\/b\\tc\\u0019\"}");
}

TEST(JsonWriter, ScalarsAndNullHandlesAtTopLevel) {
    JsonWriter writer(StandardFormat);
    EXPECT_EQ(writer.WriteString(JsonValue(1234567.0f)), "1.23457e+06");
    EXPECT_EQ(writer.WriteString(JsonValue("x")), "\"x\"");
    EXPECT_EQ(writer.WriteString(JsonValue(kJsonNull, "ignored")), "null");
    EXPECT_EQ(writer.WriteString(JsonValue()), "");
    // A null handle inside a container leaves only its place.
    JsonValue root = JsonValue::Object();
    root.Add("gap", JsonValue());
    root.Add("next", JsonValue(int32_t{1}));
    EXPECT_EQ(JsonWriter(NoFormat).WriteString(root), "{\"gap\":,\"next\":1}");
}

using testsupport::ReadFileText;

TEST(JsonWriter, WriteFileTruncatesAndIgnoresUnopenablePaths) {
    testsupport::ScratchFolder folder("json");
    const std::string path = folder.File("writer.json");
    JsonWriter writer(NoFormat);
    JsonValue big = JsonValue::Array();
    for (int i = 0; i < 1000; ++i) big.Add(JsonValue(int32_t{i}));
    ASSERT_TRUE(writer.WriteFile(big, path));
    ASSERT_TRUE(writer.WriteFile(Sample(), path));
    EXPECT_EQ(ReadFileText(path), "{\"a\":1,\"b\":[true,null],\"c\":{}}");
    EXPECT_TRUE(writer.WriteFile(JsonValue(), path));
    EXPECT_EQ(ReadFileText(path), "");

    const std::string missingDir = folder.File("no_such_dir");
    EXPECT_FALSE(writer.WriteFile(Sample(), missingDir + "/x.json"));
    EXPECT_FALSE(std::ifstream(missingDir + "/x.json").good());
}

TEST(JsonWriter, ZeroByteFromEscapeReachesTheFile) {
    testsupport::ScratchFolder folder("json");
    const std::string path = folder.File("zero.json");
    JsonValue array = JsonValue::Array();
    array.Add(JsonValue("\x1f"));
    ASSERT_TRUE(JsonWriter(NoFormat).WriteFile(array, path));
    EXPECT_EQ(ReadFileText(path), std::string("[\"\\u001\0\"]", 10));
}

}  // namespace
