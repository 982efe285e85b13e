// Text FBX files: values reach the stream with the codes and bytes a binary file of an
// authoring tool gives them; broken files are refused whole, with the fault found where it
// is; and one document written as text and as binary gives the same field tree, the same
// imported document and byte-identical outputs of the tool.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "../driver/run_tool.h"
#include "avatar_fixture.h"
#include "fbx/fbx_anim.h"
#include "fbx/fbx_ascii_transcode.h"
#include "fbx_fixture.h"
#include "fbx_import_setup.h"
#include "fbx_walk.h"
#include "file_contents.h"
#include "scratch_folder.h"

namespace {

using namespace fbxtest;

TEST(AsciiValues, CodesAndValuesAsInBinaryFiles) {
    const testsupport::Table rows = Table("ascii_values.txt");
    ASSERT_GT(rows.size(), 40u);
    for (const testsupport::TableRow& row : rows) {
        SCOPED_TRACE(testing::Message() << "line " << row.line << ": " << row[0]);
        FbxStatus status;
        auto stream = OpenText(row[1], status);
        ASSERT_TRUE(stream) << status.GetErrorString();
        // The path's records down to the last, whose values are rendered.
        std::stringstream path(row[2]);
        std::string part;
        for (std::getline(path, part, '/'); path.peek() != EOF; std::getline(path, part, '/')) {
            ASSERT_TRUE(stream->BeginField(part) && stream->BeginBlock()) << part;
        }
        ASSERT_TRUE(stream->BeginField(part));
        EXPECT_EQ(Render(*stream), row[3]);
    }
}

TEST(AsciiValues, RecordsBlocksNamesAndReaders) {
    const std::string longName(255, 'N');
    FbxStatus status;
    auto stream = OpenText("A: 1 {\n\tB: 2\n\tB: 3\n}\nA: 4\nEmpty:  {\n}\nNothing:\n" + longName +
                               ": 5\nName: \"Model::Cube\"\nTake: \"A::B::C\"\nDefault: 0.5\nCount: 3\n",
                           status);
    ASSERT_TRUE(stream);
    EXPECT_EQ(stream->FieldCount("A"), 2);
    ASSERT_TRUE(stream->BeginField("A", 0) && stream->BeginBlock());
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
    // Two-part names read back as written; an int is not a string.
    EXPECT_EQ(stream->ReadString("Name", ""), "Model::Cube");
    EXPECT_EQ(stream->ReadString("Take", ""), "A::B::C");
    EXPECT_EQ(stream->ReadFloat("Default", 0), 0.5f);
    EXPECT_EQ(stream->ReadString("Count", "x"), "");
    stream->ResetCursors();
    EXPECT_EQ(stream->ReadInt("Count", 0), 3);
}

TEST(AsciiValues, HeaderAndVersion) {
    FbxStatus status;
    FbxFileHeaderInfo info;
    auto stream = Open("; FBX 7.3.0 project file\r\n"
                       "FBXHeaderExtension:  {\r\n\tFBXHeaderVersion: 1003\r\n\tFBXVersion: 7300\r\n"
                       "\tCreator: \"tool\"\r\n\tOtherFlags:  {\r\n\t\tTCDefinition: 127\r\n\t}\r\n}\r\n"
                       "GlobalSettings:  {\r\n\tVersion: 1000\r\n}\r\n",
                       status, &info);
    ASSERT_TRUE(stream) << status.GetErrorString();
    EXPECT_TRUE(stream->IsText() && !stream->IsBinary());
    EXPECT_EQ(stream->FileVersion(), 7300);
    EXPECT_EQ(info.creator, "tool");
    EXPECT_EQ(stream->TCDefinition(), 127);
    EXPECT_EQ(stream->SectionCount(), 1);
    // The section starts behind the header extension, as in binary files.
    EXPECT_EQ(stream->FieldCount("FBXHeaderExtension"), 0);
    EXPECT_EQ(stream->FieldCount("GlobalSettings"), 1);

    // A version line naming 8.0.0 is refused the way a binary header of 8000 is.
    FbxStatus refused;
    EXPECT_FALSE(Open("; FBX 8.0.0 project file\nA: 1\n", refused));
    EXPECT_EQ(refused.GetCode(), kFbxInvalidFileVersion);
    EXPECT_EQ(refused.GetErrorString(), "FBX file version 8.0.0 is not supported in this product");
    // Without a version line the text is no FBX file.
    EXPECT_FALSE(Open("FBXHeaderExtension:  {\n}\n", refused));
    EXPECT_EQ(refused.GetCode(), kFbxFailure);
    EXPECT_EQ(refused.GetErrorString(), "File is corrupted: 'fixture.fbx'");
}

TEST(AsciiMalformed, RefusedWithTheFaultAndItsLine) {
    const char* const kFaults[] = {"None",      "UnbalancedBrace", "UnclosedBlock", "UnterminatedString",
                                   "BadValue",  "Unexpected",      "MissingComma",  "BadArray",
                                   "ArrayCount", "NameTooLong",    "TooLarge",      "OutOfMemory"};
    const testsupport::Table rows = Table("ascii_malformed.txt");
    ASSERT_GT(rows.size(), 20u);
    for (const testsupport::TableRow& row : rows) {
        SCOPED_TRACE(testing::Message() << "line " << row.line << ": " << row[0]);
        const std::string text = kVersionLine + row[1];
        const FbxAsciiImage image =
            FbxTranscodeAscii(reinterpret_cast<const uint8_t*>(text.data()), text.size(), 7400);
        EXPECT_EQ(kFaults[static_cast<int>(image.fault)], row[2]);
        EXPECT_EQ(image.faultLine, std::stoull(row[3]));
        EXPECT_TRUE(image.bytes.empty());

        // Through the stream: the open fails as a corrupt binary block does.
        FbxStatus status;
        EXPECT_FALSE(OpenText(row[1], status));
        EXPECT_EQ(status.GetCode(), kFbxInvalidFile);
        EXPECT_EQ(status.GetErrorString(), "File is corrupted: 'fixture.fbx'");
    }
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
    auto stream = OpenText(body, status);
    ASSERT_TRUE(stream) << status.GetErrorString();
    int depth = 0;
    while (stream->BeginField("A") && stream->BeginBlock()) ++depth;
    EXPECT_EQ(depth, kDepth);
    EXPECT_EQ(stream->ReadInt("Leaf", 0), 7);

    // One brace short at the end: refused, not read past the text.
    body.resize(body.size() - 2);
    EXPECT_FALSE(OpenText(body, status));
    EXPECT_EQ(status.GetCode(), kFbxInvalidFile);
}

// A small avatar in centimetres at 30 frames a second: below the layout's root joint a head
// joint with a joint orient, two blend-shape channels on the head mesh, and a take that
// turns the head (cubic) and opens the jaw.
fbxwriter::SceneDocument Avatar() {
    fbxwriter::SceneDocument doc;
    doc.SetUnitScale(1.0);
    doc.SetTimeMode(6);
    const testsupport::AvatarIds ids = testsupport::AddAvatarLayout(doc, "C_spine0002_bind_JNT", "Root", 105.0);
    doc.AddAttribute(ids.rig, "Null");
    const int64_t head = doc.AddNode("C_head_bind_JNT", ids.joint, "LimbNode");
    doc.AddAttribute(head, "LimbNode");
    doc.SetLocal(head, "Lcl Translation", 0.0, 39.0, 1.0 / 3.0);
    doc.SetBool(head, "RotationActive", true);
    doc.SetVector(head, "PreRotation", 0.0, 0.0, 5.0);
    const int64_t blendShape = doc.AddBlendShape(ids.geometry, "blendShape1");
    const int64_t jaw = doc.AddBlendShapeChannel(blendShape, "blendShape1.ai_jawOpen");
    doc.AddBlendShapeChannel(blendShape, "blendShape1.ai_browDown_L");
    const int64_t layer = doc.AddLayer(doc.AddStack("talk", 0.0, 2.0));
    doc.AnimateVector(layer, head, "Lcl Rotation", "R", {0.0, 0.0, 0.0},
                      {{{}, {{0.0, 0.0f}, {1.0, -20.5f}, {2.0, 0.1f}}, {}}}, fbxwriter::Interpolation::Cubic);
    doc.AnimateNumber(layer, jaw, "DeformPercent", 0.0, {{0.0, 0.0f}, {0.5, 100.0f}, {2.0, 12.25f}});
    return doc;
}

// The avatar's records with what it lacks of the value kinds: embedded media (raw
// bytes with zeros), skin arrays, a name with a quote and a line break, a user property of
// each numeric type.
std::vector<Record> Records(int32_t version) {
    std::vector<Record> records = Avatar().Records(version);
    auto objects = std::find_if(records.begin(), records.end(), [](const Record& r) { return r.name == "Objects"; });
    Record& video = objects->Child(fbxwriter::ObjectRecord("Video", 990001, "clip \"one\"\nnext", "Video", "Clip"));
    video.Add("Type").String("Clip");
    video.Add("Content").Raw(std::string("\x89PNG\r\n\x1a\n\0\x01\xff", 11));
    Record& skin = objects->Child(fbxwriter::ObjectRecord("Deformer", 990002, "skin", "Deformer", "Skin"));
    skin.Add("Version").Int(101);
    skin.Add("Link_DeformAcuracy").Double(50);
    Record& cluster = objects->Child(fbxwriter::ObjectRecord("Deformer", 990003, "cluster", "SubDeformer", "Cluster"));
    cluster.Add("Indexes").Add(Value::IntArray({0, 1, 2}));
    cluster.Add("Weights").Add(Value::DoubleArray({0.25, 0.5, 1.0 / 3.0}));
    cluster.Add("Transform").Add(Value::DoubleArray({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.1, -2e-7, 3e12, 1}));
    Record& props = cluster.Add("Properties70");
    props.Child(fbxwriter::PropertyRecord("i", "int", "Integer", "U")).Int(-7).Int(-100).Int(100);
    props.Child(fbxwriter::PropertyRecord("t", "KTime", "Time", "U")).Long(46186158000);
    props.Child(fbxwriter::PropertyRecord("f", "float", "", "U")).Float(0.1f);
    props.Child(fbxwriter::PropertyRecord("d", "Number", "", "AU")).Double(-0.0);
    props.Child(fbxwriter::PropertyRecord("s", "KString", "", "U")).String("a&b \"c\"");
    return records;
}

// Every record of the main section with its values, one line each, depth first.
std::vector<std::string> Dump(FbxFieldStream& stream) {
    std::vector<std::string> lines, paths;
    fbxwalk::WalkFields(stream, [&](const std::string& name, int instance, int depth) {
        paths.resize(static_cast<size_t>(depth));
        paths.push_back((depth > 0 ? paths.back() : "") + "/" + name + "[" + std::to_string(instance) + "]");
        lines.push_back(paths.back() + " " + Render(stream) + (stream.HasBlock() ? " {" : ""));
    });
    return lines;
}

// What an import yields, per object in creation order: class, name, property values and
// curve keys, as text.
std::vector<std::string> ImportSummary(const void* data, size_t size, int& curveKeys) {
    std::vector<std::string> out;
    const fbxwalk::ImportSetup setup = fbxwalk::MakeImportSetup(false);
    EXPECT_TRUE(setup.importer->Initialize(data, size, "twin.fbx", setup.settings));
    EXPECT_TRUE(setup.importer->Import(setup.scene)) << setup.importer->GetStatus().GetErrorString();
    setup.manager->ForEachObject([&](FbxObject* object) {
        std::string line = std::string(object->GetClassId().GetName()) + " " + object->GetNameWithNameSpace();
        for (FbxProperty p = object->GetFirstProperty(); p.IsValid(); p = object->GetNextProperty(p)) {
            double v[16] = {};
            std::string s;
            line += std::string(" ") + p.GetName() + "=";
            const int count = p.Get(v, eFbxDouble4x4) ? 16 : p.Get(v, eFbxDouble4) ? 4 : 0;
            for (int k = 0; k < count; ++k) line += Real(v[k], 17) + ",";
            if (count == 0 && p.Get(&s, eFbxString)) line += s;
        }
        if (object->Is<FbxAnimCurve>()) {
            const auto* curve = static_cast<const FbxAnimCurve*>(object);
            for (int k = 0; k < curve->KeyGetCount(); ++k, ++curveKeys) {
                line += " key " + std::to_string(curve->KeyGetTime(k).Get()) + ":" +
                        Real(curve->KeyGetValue(k), 9) + ":" + std::to_string(curve->KeyGetFlags(k));
            }
        }
        out.push_back(line);
    });
    setup.manager->Destroy();
    return out;
}

void ExpectSameLines(const std::vector<std::string>& text, const std::vector<std::string>& binary) {
    EXPECT_EQ(text.size(), binary.size());
    const auto diff = std::mismatch(text.begin(), text.end(), binary.begin(), binary.end());
    if (diff.first != text.end() || diff.second != binary.end()) {
        ADD_FAILURE() << "first difference:\n  text:   " << (diff.first != text.end() ? *diff.first : "(end)")
                      << "\n  binary: " << (diff.second != binary.end() ? *diff.second : "(end)");
    }
}

TEST(AsciiTwin, SameFieldTreeAndImportedDocumentAsBinary) {
    for (const int32_t version : {7400, 7500, 7700}) {
        SCOPED_TRACE(version);
        const std::vector<Record> records = Records(version);
        const std::vector<uint8_t> binary = fbxwriter::Write(records, Version(uint32_t(version)));
        const std::string text = fbxwriter::WriteAscii(records, static_cast<uint32_t>(version));
        FbxStatus textStatus, binaryStatus;
        FbxFileHeaderInfo textInfo, binaryInfo;
        auto fromText = Open(text, textStatus, &textInfo);
        auto fromBinary = Open(binary, binaryStatus, &binaryInfo);
        ASSERT_TRUE(fromText) << textStatus.GetErrorString();
        ASSERT_TRUE(fromBinary) << binaryStatus.GetErrorString();
        EXPECT_EQ(fromText->FileVersion(), version);
        EXPECT_EQ(textInfo.creator, binaryInfo.creator);
        EXPECT_EQ(fromText->TCDefinition(), fromBinary->TCDefinition());
        const std::vector<std::string> lines = Dump(*fromText);
        // Not vacuous: the objects and their arrays are there.
        EXPECT_GT(lines.size(), 100u);
        EXPECT_NE(std::find(lines.begin(), lines.end(), "/Objects[0]/Video[0]/Content[0] R \\x89PNG\\x0d\\x0a\\x1a\\x0a"
                                                        "\\x00\\x01\\xff"),
                  lines.end());
        ExpectSameLines(lines, Dump(*fromBinary));

        int textKeys = 0, binaryKeys = 0;
        ExpectSameLines(ImportSummary(text.data(), text.size(), textKeys),
                        ImportSummary(binary.data(), binary.size(), binaryKeys));
        // The take's curves: one on the rotation's Y channel and one on the jaw channel, 3 keys each.
        EXPECT_EQ(textKeys, 6);
        EXPECT_EQ(binaryKeys, 6);
    }
}

TEST(AsciiTwin, TextContentIsTakenUnderAnotherName) {
    // As with the binary magic, a file whose first line is the version line is FBX
    // whatever its name says; without its ';' the first line is no version line.
    testsupport::ScratchFolder folder("ascii_name");
    const std::string dir = folder.Path().string();
    const std::string text = fbxwriter::WriteAscii(Records(7400), 7400);
    ASSERT_TRUE(fbxwriter::SaveFile(dir + "/scene.dae", std::vector<uint8_t>(text.begin(), text.end())));
    ASSERT_TRUE(fbxwriter::SaveFile(dir + "/other.dae", std::vector<uint8_t>(text.begin() + 1, text.end())));
    FbxManager* manager = FbxManager::Create();
    FbxImporter* importer = FbxImporter::Create(manager, "");
    EXPECT_TRUE(importer->Initialize((dir + "/scene.dae").c_str()));
    EXPECT_TRUE(importer->IsFBX());
    EXPECT_TRUE(importer->Import(FbxScene::Create(manager, "")));
    EXPECT_FALSE(importer->Initialize((dir + "/other.dae").c_str()));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "Unexpected file type");
    manager->Destroy();
}

// The tool's outputs in a folder, but for the input.
std::map<std::string, std::string> OutputFiles(const std::string& dir) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        if (entry.is_regular_file() && name != "avatar.fbx" && name[0] != '.') {
            files[name] = testsupport::ReadFileText(entry.path().string());
        }
    }
    return files;
}

TEST(AsciiTwin, ToolConvertsBothToIdenticalOutputs) {
    const std::vector<Record> records = Avatar().Records(7400);
    const std::string text = fbxwriter::WriteAscii(records, 7400);
    const std::vector<uint8_t> bytes[] = {fbxwriter::Write(records), {text.begin(), text.end()}};
    std::map<std::string, std::string> outputs[2];
    std::string consoles[2];
    for (int k = 0; k < 2; ++k) {
        testsupport::ScratchFolder folder(k == 0 ? "ascii_twin_binary" : "ascii_twin_text");
        const std::string dir = folder.Path().string();
        ASSERT_TRUE(fbxwriter::SaveFile(dir + "/avatar.fbx", bytes[k]));
        // The JSON files in one run; the GLB (model and take together) in another, since with
        // -m given the GLB would keep the take only and -a takes that.
        for (const std::vector<std::string>& args :
             {std::vector<std::string>{"-i", "avatar.fbx", "-m", "model.json", "-a", "anim.json", "-d", "meta.json",
                                       "-g", "scene.json", "-n", "manifest.json"},
              std::vector<std::string>{"-i", "avatar.fbx", "-o", "avatar.glb"}}) {
            const ToolRun run = RunTool(args, dir);
            ASSERT_EQ(run.exitCode, 0) << run.err;
            consoles[k] += run.out;
        }
        outputs[k] = OutputFiles(dir);
    }
    EXPECT_EQ(consoles[1], consoles[0]);
    // GLB, model, animation, metadata, scene metadata, manifest.
    EXPECT_EQ(outputs[0].size(), 6u);
    EXPECT_EQ(outputs[1].size(), outputs[0].size());
    for (const auto& [name, binaryBytes] : outputs[0]) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(binaryBytes.empty());
        EXPECT_TRUE(outputs[1][name] == binaryBytes);
    }
}

}  // namespace
