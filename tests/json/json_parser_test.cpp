#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "json/json.h"
#include "scratch_folder.h"

namespace {

// Parses text and writes the result back compactly; "<null>" for a null handle.
struct Parsed {
    std::string json;
    std::string error;
};

Parsed Parse(std::string_view text) {
    JsonParser parser;
    JsonValue value = parser.ParseString(text);
    return {value.IsNullHandle() ? "<null>" : JsonWriter(NoFormat).WriteString(value), parser.error};
}

void ExpectFailure(std::string_view text, const std::string& message) {
    Parsed parsed = Parse(text);
    EXPECT_EQ(parsed.json, "<null>") << text;
    EXPECT_EQ(parsed.error, message) << text;
}

void ExpectResult(std::string_view text, const std::string& json) {
    Parsed parsed = Parse(text);
    EXPECT_EQ(parsed.json, json) << text;
    EXPECT_EQ(parsed.error, "") << text;
}

TEST(JsonParser, OrdinaryDocuments) {
    ExpectResult("{}", "{}");
    ExpectResult("[]", "[]");
    ExpectResult(" {\"a\": [1, -2.5e+3, true, false, null, \"s\"], \"b\": {\"c\": {}}}\n",
                 "{\"a\":[1,-2.5e+3,true,false,null,\"s\"],\"b\":{\"c\":{}}}");
    JsonParser parser;
    JsonValue value = parser.ParseString("{\"a\":1,\"a\":2}");
    EXPECT_EQ(value.Count(), 2u);
    EXPECT_EQ(value.Get("a").Text(), "1");
}

TEST(JsonParser, CommaTolerance) {
    ExpectResult("{\"a\":1,}", "{\"a\":1}");
    ExpectResult("[1,,2]", "[1,2]");
    ExpectResult("{,\"a\":1}", "{\"a\":1}");
    ExpectFailure("[1,]", "Extra comma in array");
    // The check looks only at the next token, whatever is open.
    ExpectFailure("{\"a\":1,]", "Extra comma in array");
}

TEST(JsonParser, WhitespaceInsideBareWords) {
    ExpectResult("[1 2]", "[12]");
    ExpectResult("[tr\tue, n u\nl l]", "[true,null]");
    ExpectResult("[- 1]", "[-1]");
}

TEST(JsonParser, BareWordClassification) {
    ExpectResult("[NuLL, TRUE, fAlSe]", "[null,true,false]");
    ExpectFailure("[nul]", "Unknown token: nul");
    ExpectFailure("[1e]", "Unknown token: 1e");
    ExpectFailure("{a:1}", "Unknown token: a");
    // Numbers keep their text as written; the scan is lax.
    ExpectResult("[1e5, 2E-3, -, ., 1-2, 1E+5, .5e-1, 1e5-]", "[1e5,2E-3,-,.,1-2,1E+5,.5e-1,1e5-]");
    ExpectFailure("[+1]", "Unknown token: +1");
    ExpectFailure("[1e-+5]", "Unknown token: 1e-+5");
    ExpectFailure("[1e+-5]", "Unknown token: 1e+-5");
    ExpectFailure("[--1]", "Unknown token: --1");
    ExpectFailure("[1..2]", "Unknown token: 1..2");
    ExpectFailure("[1e2e3]", "Unknown token: 1e2e3");
    ExpectFailure("[\x0b" "1]", "Unknown token: \x0b" "1");  // vertical tab is not skipped
}

TEST(JsonParser, Strings) {
    JsonParser parser;
    JsonValue value = parser.ParseString("{\"k\\\"ey\": \"v\\\\al\\u0041\\n\"}");
    ASSERT_EQ(value.Count(), 1u);
    EXPECT_EQ(value.MemberName(0), "k\\\"ey");  // names stay raw
    EXPECT_EQ(value.Member(0).Text(), "v\\al\\u0041\n");
    // Written back, the raw name goes out as it came in.
    EXPECT_EQ(JsonWriter(NoFormat).WriteString(value), "{\"k\\\"ey\":\"v\\\\al\\\\u0041\\n\"}");
}

TEST(JsonParser, EscapedBackslashDoesNotCloseAString) {
    // The string runs on to the end of the text, so the array is never closed.
    ExpectResult("[\"a\\\\\"]", "<null>");
    ExpectResult("[\"a\\\\\"]\"]", "[\"a\\\\\\\"]\"]");
    ExpectResult("[\"unterminated", "<null>");
}

TEST(JsonParser, WordBeforeStringTakesTheStringsData) {
    // The string's datum is queued before the word's, while the word's token comes first.
    ExpectResult("[1\"x\"]", "[\"x\",1]");
    ExpectFailure("[abc\"x\"]", "Unknown token: x");
}

TEST(JsonParser, Comments) {
    ExpectResult("/* head */ {\"a\": // note\n 1 /* in between */}", "{\"a\":1}");
    ExpectResult("[1/**/2]", "[12]");
    ExpectResult("[1/*/2*/]", "[1]");  // the opening star does not close the comment
    ExpectFailure("[1, 2/ 3]", "Unknown token: 2/3");  // a lone slash is a bare character
    ExpectFailure("[/]", "Unknown token: /");
    ExpectResult("[1] /* unterminated", "[1]");
    ExpectResult("[1] // to the end", "[1]");
}

TEST(JsonParser, StructuralErrors) {
    ExpectFailure("]", "Found end of object or array without beginning");
    ExpectFailure("{\"a\":1}}", "Found end of object or array without beginning");
    ExpectFailure("[1}", "Mismatched end and beginning of object");
    ExpectFailure("{]", "Mismatched end and beginning of array");
    ExpectFailure("[1:2]", "A name has to be a string");
    ExpectFailure("[true:2]", "A name has to be a string");
    ExpectFailure("\"a\"", "Outermost node must be an object or array");
    ExpectFailure("{} 5", "Outermost node must be an object or array");
}

TEST(JsonParser, TruncatedAndRepeatedDocuments) {
    ExpectResult("", "<null>");
    ExpectResult("{\"a\":[1,2", "<null>");
    ExpectResult("{\"a\":1} {\"b\":", "{\"a\":1}");
    ExpectResult("[1] [2]", "[2]");
}

TEST(JsonParser, WordLeftAtTheEnd) {
    // Counted when the text ends on a bare byte or a comment, dropped after whitespace.
    ExpectFailure("1", "Outermost node must be an object or array");
    ExpectFailure("1//c", "Outermost node must be an object or array");
    ExpectFailure("[1]x", "Unknown token: x");
    ExpectResult("1\n", "<null>");
    ExpectResult("[1]x ", "[1]");
    ExpectResult("[1]x//c\n", "[1]");
}

TEST(JsonParser, ColonsAndNamesOutsideTheirPlace) {
    // Without a colon a string is a value, added under the empty name.
    ExpectResult("{\"a\" 1}", "{\"\":\"a\",\"\":1}");
    ExpectResult("[\"n\":1]", "[1]");         // a name in an array is dropped
    ExpectResult("{:\"a\":1}", "{\"a\":1}");
    // A name left unused when its object closes waits for the next value.
    ExpectResult("{\"x\":{\"a\":},3}", "{\"x\":{},\"a\":3}");
    ExpectResult("{\"x\":[\"a\":]}", "{\"x\":[]}");
}

TEST(JsonParser, ErrorClearedOnEachParse) {
    JsonParser parser;
    parser.ParseString("[1,]");
    EXPECT_EQ(parser.error, "Extra comma in array");
    EXPECT_EQ(parser.ParseString("[1]").Count(), 1u);
    EXPECT_EQ(parser.error, "");
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
