// Text values reach the stream with the codes and bytes a binary file of an authoring tool
// gives them, so that every reader (ReadDouble wants 'D'/'F', array reads want their exact
// code, ids are read as longs) sees what it would see in the binary twin.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ascii_test_util.h"

namespace {

using asciitest::OpenText;
using asciitest::Render;

struct ValueRow {
    const char* what;
    std::string body;
    std::vector<const char*> path;  // enclosing records, then the record rendered
    std::string expected;
};

TEST(AsciiValues, CodesAndValuesAsInBinaryFiles) {
    const std::string s4 = "S ; ";  // an empty string value, as Render shows it
    const ValueRow rows[] = {
        // Scalars: integers that fit take 'I', the others 'L'; reals 'D'.
        {"int", "Version: 232\n", {"Version"}, "I 232"},
        {"lowest int", "Low: -2147483648\n", {"Low"}, "I -2147483648"},
        {"one past the highest int", "Big: 2147483648\n", {"Big"}, "L 2147483648"},
        {"unsigned beyond the signed range keeps its bits", "U: 18446744073709551615\n", {"U"}, "L -1"},
        {"real with an exponent", "R: -0.375e1\n", {"R"}, "D -3.75"},
        {"curve default is a double even when written whole", "Default: 1\n", {"Default"}, "D 1"},
        {"constraint offsets are doubles", "TOFFSETX: 2\n", {"TOFFSETX"}, "D 2"},
        {"letter", "Shading: T\n", {"Shading"}, "C T"},
        // Ids are longs wherever the reader reads them as longs.
        {"connection ids", "Connections:  {\n\tC: \"OO\",5,0\n}\n", {"Connections", "C"}, "S OO; L 5; L 0"},
        {"object id and two-part name",
         "Objects:  {\n\tModel: 7, \"Model::A\", \"Null\" {\n\t}\n}\n",
         {"Objects", "Model"},
         "L 7; S A\\x00\\x01Model; S Null"},
        {"document id and root node", "Documents:  {\n\tDocument: 9, \"\", \"Scene\" {\n\t\tRootNode: 0\n\t}\n}\n",
         {"Documents", "Document"}, "L 9; S ; S Scene"},
        {"take times", "LocalTime: 0,46186158000\n", {"LocalTime"}, "L 0; L 46186158000"},
        // Strings: escapes undone, every "::" stored the binary way (it reads back the same).
        {"escapes", "Q: \"a&quot;b&lf;c&cr;&amp;\"\n", {"Q"}, "S a\"b\\x0ac\\x0d&amp;"},
        {"backslashes stay", "Path: \"D:\\dir\\x.fbx\"\n", {"Path"}, "S D:\\dir\\x.fbx"},
        {"empty first part of a name", "N: \"::Cube\"\n", {"N"}, "S Cube\\x00\\x01"},
        {"leading comma", "Creator: , \"x\"\n", {"Creator"}, "S x"},
        // P records: numbers behind the four strings by the property's type.
        {"P double written whole", "P: \"U\", \"double\", \"Number\", \"\",1\n", {"P"}, "S U; S double; S Number; " + s4 + "D 1"},
        {"P int", "P: \"A\", \"int\", \"Integer\", \"\",2\n", {"P"}, "S A; S int; S Integer; " + s4 + "I 2"},
        {"P bool", "P: \"B\", \"bool\", \"\", \"\",1\n", {"P"}, "S B; S bool; S ; " + s4 + "I 1"},
        {"P time", "P: \"T\", \"KTime\", \"Time\", \"\",1924423250\n", {"P"}, "S T; S KTime; S Time; " + s4 + "L 1924423250"},
        {"P float", "P: \"F\", \"float\", \"\", \"\",1.5\n", {"P"}, "S F; S float; S ; " + s4 + "F 1.5"},
        {"P byte", "P: \"Z\", \"UByte\", \"\", \"\",7\n", {"P"}, "S Z; S UByte; S ; " + s4 + "Z 7"},
        {"P vector", "P: \"Lcl Translation\", \"Lcl Translation\", \"\", \"A\",1,-2,0.5\n", {"P"},
         "S Lcl Translation; S Lcl Translation; S ; S A; D 1; D -2; D 0.5"},
        {"P user int with limits", "P: \"K\", \"Integer\", \"\", \"AU\",3,0,10\n", {"P"},
         "S K; S Integer; S ; S AU; I 3; I 0; I 10"},
        // Non-finite forms of two C runtimes.
        {"runtime infinity", "V: 1.#INF\n", {"V"}, "D inf"},
        {"runtime indeterminate with digits", "V: -1.#IND00\n", {"V"}, "D -nan"},
        {"C99 forms", "V: -Infinity,nan(ind),+INF\n", {"V"}, "D -inf; D nan; D inf"},
        {"reals beyond a double", "V: 1e999,-1e999,1e-999\n", {"V"}, "D inf; D -inf; D 0"},
        // Raw values: base64 pieces decoded one by one; text that is no base64 as written.
        {"base64 pieces", "Content: ,\n\t\"aGk=\",\n\t\"IQ==\"\n", {"Content"}, "R hi!"},
        {"raw value as written", "BinaryData: \"Yes\"\n", {"BinaryData"}, "R Yes"},
        // Arrays: the code by field name, else by the elements.
        {"vertices are doubles", "Vertices: *3 {\n\ta: 1,2,3.5\n}\n", {"Vertices"}, "d 1,2,3.5"},
        {"polygon indices are ints", "PolygonVertexIndex: *3 {\n\ta: 0,1,-3\n}\n", {"PolygonVertexIndex"}, "i 0,1,-3"},
        {"key times are longs", "KeyTime: *2 {\n\ta: 0,46186158000\n}\n", {"KeyTime"}, "l 0,46186158000"},
        {"key values are floats", "KeyValueFloat: *2 {\n\ta: 0,1.5\n}\n", {"KeyValueFloat"}, "f 0,1.5"},
        // 1128792064 = 0x43480000: exponent 0x86 (2^7), mantissa 1.5625; 128 * 1.5625 = 200.
        {"key data written as float bits", "KeyAttrDataFloat: *2 {\n\ta: 1128792064,0\n}\n", {"KeyAttrDataFloat"},
         "f 200,0"},
        {"key data written as float values", "KeyAttrDataFloat: *2 {\n\ta: 200,0.25\n}\n", {"KeyAttrDataFloat"},
         "f 200,0.25"},
        {"visibility is booleans", "Visibility: *2 {\n\ta: 1,0\n}\n", {"Visibility"}, "b 1,0"},
        {"thumbnail pixels are bytes", "ImageData: *2 {\n\ta: 42,255\n}\n", {"ImageData"}, "c 42,255"},
        {"other name, small integers", "Other: *2 {\n\ta: 1,2\n}\n", {"Other"}, "i 1,2"},
        {"other name, an integer beyond 32 bits", "Other: *2 {\n\ta: 1,3000000000\n}\n", {"Other"}, "l 1,3000000000"},
        {"other name, a real", "Other: *2 {\n\ta: 1,2.5\n}\n", {"Other"}, "d 1,2.5"},
        {"comments and line breaks among the elements", "Vertices: *4 {\n\ta: 1, ; note\n\t2\n\t,3,4 ; end\n}\n",
         {"Vertices"}, "d 1,2,3,4"},
        {"empty array reads as empty", "Materials: *0 {\n\ta: \n}\n", {"Materials"}, "i "},
    };
    for (const ValueRow& row : rows) {
        SCOPED_TRACE(row.what);
        FbxStatus status;
        auto stream = OpenText(row.body, status);
        ASSERT_TRUE(stream) << status.GetErrorString();
        for (size_t k = 0; k + 1 < row.path.size(); ++k) {
            ASSERT_TRUE(stream->BeginField(row.path[k]));
            ASSERT_TRUE(stream->BeginBlock());
        }
        ASSERT_TRUE(stream->BeginField(row.path.back()));
        EXPECT_EQ(Render(*stream), row.expected);
    }
}

TEST(AsciiValues, ReadersSeeTheBinaryConversions) {
    FbxStatus status;
    auto stream = OpenText("Name: \"Model::Cube\"\nCount: 3\nDefault: 0.5\nTake: \"A::B::C\"\n", status);
    ASSERT_TRUE(stream);
    // The two-part name reads back as written; the string is not an int, the int not a string.
    EXPECT_EQ(stream->ReadString("Name", ""), "Model::Cube");
    EXPECT_EQ(stream->ReadString("Count", "x"), "");
    stream->ResetCursors();
    EXPECT_EQ(stream->ReadInt("Count", 0), 3);
    EXPECT_EQ(stream->ReadFloat("Default", 0), 0.5f);
    EXPECT_EQ(stream->ReadString("Take", ""), "A::B::C");
}

TEST(AsciiValues, RecordsBlocksAndNames) {
    const std::string longName(255, 'N');
    FbxStatus status;
    auto stream = OpenText("A: 1 {\n\tB: 2\n\tB: 3\n}\nA: 4\nEmpty:  {\n}\nNothing:\n" + longName + ": 5\n", status);
    ASSERT_TRUE(stream);
    EXPECT_EQ(stream->FieldCount("A"), 2);
    ASSERT_TRUE(stream->BeginField("A", 0));
    ASSERT_TRUE(stream->BeginBlock());
    EXPECT_EQ(stream->FieldCount("B"), 2);
    EXPECT_EQ(stream->ReadInt("B", 0), 2);
    EXPECT_EQ(stream->ReadInt("B", 0), 3);
    stream->EndBlock();
    ASSERT_TRUE(stream->BeginField("A", 1));
    EXPECT_FALSE(stream->HasBlock());
    EXPECT_EQ(stream->ReadInt(), 4);
    // "{ }" is a block of no records, as binary writers give it a terminator.
    ASSERT_TRUE(stream->BeginField("Empty"));
    EXPECT_EQ(stream->ValueCount(), 0);
    ASSERT_TRUE(stream->BeginBlock());
    EXPECT_EQ(stream->FieldNameCount(), 0);
    stream->EndBlock();
    ASSERT_TRUE(stream->BeginField("Nothing"));
    EXPECT_EQ(stream->ValueCount(), 0);
    EXPECT_FALSE(stream->HasBlock());
    EXPECT_EQ(stream->ReadInt(longName, 0), 5);
}

TEST(AsciiValues, HeaderAndVersion) {
    FbxStatus status;
    FbxFileHeaderInfo info;
    const std::string text = "; FBX 7.3.0 project file\r\n"
                             "FBXHeaderExtension:  {\r\n\tFBXHeaderVersion: 1003\r\n\tFBXVersion: 7300\r\n"
                             "\tCreator: \"tool\"\r\n\tOtherFlags:  {\r\n\t\tTCDefinition: 127\r\n\t}\r\n}\r\n"
                             "GlobalSettings:  {\r\n\tVersion: 1000\r\n}\r\n";
    auto stream = FbxOpenFieldStream(FbxFileBytes::Copy(text.data(), text.size()), "t.fbx", status, true, &info);
    ASSERT_TRUE(stream) << status.GetErrorString();
    EXPECT_TRUE(stream->IsText());
    EXPECT_FALSE(stream->IsBinary());
    EXPECT_EQ(stream->FileVersion(), 7300);
    EXPECT_EQ(info.creator, "tool");
    EXPECT_EQ(stream->TCDefinition(), 127);
    EXPECT_EQ(stream->SectionCount(), 1);
    // The section starts behind the header extension, as in binary files.
    EXPECT_EQ(stream->FieldCount("FBXHeaderExtension"), 0);
    EXPECT_EQ(stream->FieldCount("GlobalSettings"), 1);

    // A version line naming 8.0.0 is refused the way a binary header of 8000 is.
    FbxStatus refused;
    EXPECT_FALSE(asciitest::OpenBytes("; FBX 8.0.0 project file\nA: 1\n", refused));
    EXPECT_EQ(refused.GetCode(), kFbxInvalidFileVersion);
    EXPECT_EQ(refused.GetErrorString(), "FBX file version 8.0.0 is not supported in this product");
}

}  // namespace
