#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "json/json.h"
#include "text_table.h"
#include "scratch_folder.h"

namespace {

// Each row of data/parser_cases.txt: the text, "gives" and the compact result, or "fails"
// and the error. One parser reads them all, so a stale error would show on the next row.
TEST(JsonParser, CasesOfTheTable) {
    const auto rows = testsupport::ReadTable(std::string(VURL_JSON_DATA_DIR) + "/parser_cases.txt");
    ASSERT_GT(rows.size(), 50u);
    JsonParser parser;
    for (const testsupport::TableRow& row : rows) {
        ASSERT_EQ(row.fields.size(), 3u) << "parser_cases.txt:" << row.line;
        const bool fails = row.fields[1] == "fails";
        JsonValue value = parser.ParseString(row.fields[0]);
        const std::string written = value.IsNullHandle() ? "<null>" : JsonWriter(NoFormat).WriteString(value);
        EXPECT_EQ(written, fails ? "<null>" : row.fields[2]) << "parser_cases.txt:" << row.line;
        EXPECT_EQ(parser.error, fails ? row.fields[2] : "") << "parser_cases.txt:" << row.line;
    }
}

TEST(JsonParser, FilesAndStreams) {
    testsupport::ScratchFolder folder("json");
    const std::string path = folder.File("parse.json");
    {
        std::ofstream out(path, std::ios::binary);
        out << "{\"ignore_node_keys\": [], \"inherit_rrs_nodes\": [\"a\"]}";
    }
    JsonParser parser;
    JsonValue file = parser.ParseFile(path);
    EXPECT_EQ(file.Get("inherit_rrs_nodes").Member(0).Text(), "a");
    std::ifstream in(path, std::ios::binary);
    JsonValue streamed = parser.ParseStream(in);
    EXPECT_EQ(JsonWriter().WriteString(streamed), JsonWriter().WriteString(file));
    std::remove(path.c_str());  // the file is gone for the checks at the end

    // Larger than one read chunk.
    std::string big = "[";
    for (int i = 0; i < 50000; ++i) big += "12345,";
    big += "0]";
    std::istringstream bigStream(big);
    EXPECT_EQ(parser.ParseStream(bigStream).Count(), 50001u);

    parser.error = "stale";
    EXPECT_TRUE(parser.ParseFile(path).IsNullHandle());
    EXPECT_EQ(parser.error, "");
    std::ifstream missing(path);
    EXPECT_TRUE(parser.ParseStream(missing).IsNullHandle());
    EXPECT_EQ(parser.error, "");
}

// Parsing, writing and releasing a deep tree must not recurse once per level.
TEST(JsonParser, DeepNestingNeitherCrashesNorRecurses) {
    const size_t depth = 300000;
    std::string text = std::string(depth, '[') + std::string(depth, ']');
    JsonParser parser;
    JsonValue value = parser.ParseString(text);
    EXPECT_EQ(parser.error, "");
    EXPECT_EQ(value.Count(), 1u);
    EXPECT_EQ(JsonWriter(NoFormat).WriteString(value), text);
    EXPECT_TRUE(parser.ParseString(std::string(depth, '[')).IsNullHandle());
}

}  // namespace
