// Initialize and Import outcomes: status codes and texts of files the reader refuses,
// takes applied to stacks, progress.
#include <gtest/gtest.h>

#include "fbx/fbx_anim.h"
#include "model_test_util.h"

namespace modeltest {
namespace {

TEST(ImporterStatusTest, RefusalsCarryCodeAndText) {
    struct Row {
        const char* what;
        std::function<std::vector<uint8_t>()> bytes;
        bool initialized;
        FbxStatusCode code;
        std::string text;
    };
    const std::string corrupted = "File is corrupted: 'fixture.fbx'";
    const Row rows[] = {
        {"no document", [] { FileParts p; p.documentCount = 0; return Build(p); }, true, kFbxInvalidFile, corrupted},
        {"external reference",
         [] {
             FileParts p;
             std::vector<uint8_t> bytes;
             Record refs("References");
             refs.Add("Reference").String("Ref1").String("External");
             p.more.push_back(refs);  // a second References field is not read: put it first instead
             Record header = fbxwriter::HeaderExtension(1003, 7400);
             Record documents("Documents");
             documents.Add("Count").Int(1);
             documents.Add("Document").Long(1).String("").String("Scene").Add("RootNode").Long(0);
             return fbxwriter::Write({header, documents, refs});
         },
         true, kFbxFailure, "Unresolved external references"},
        {"encrypted", [] { FileParts p; p.encrypted = true; return Build(p); }, true, kFbxPasswordError,
         "Wrong password"},
        {"not FBX", [] { return std::vector<uint8_t>{'h', 'e', 'l', 'l', 'o'}; }, false, kFbxFailure,
         corrupted},
    };
    for (const Row& row : rows) {
        auto file = Import(row.bytes());
        EXPECT_EQ(file->initialized, row.initialized) << row.what;
        EXPECT_FALSE(file->ok) << row.what;
        EXPECT_EQ(file->Status().GetCode(), row.code) << row.what;
        EXPECT_EQ(file->Status().GetErrorString(), row.text) << row.what;
    }
}

TEST(ImporterStatusTest, AnUnreadableObjectBlockEndsTheObjectLoop) {
    // Models are read in file order; the second one's block holds a record that claims
    // to end far past the file. The first stays, the loop stops, and the status makes
    // the import fail unless the check is relaxed.
    FileParts parts;
    parts.objects.Child(Object("Model", 1, "First", "Model", "Null"));
    Record broken = Object("Model", 2, "Broken", "Model", "Null");
    broken.Add("Version").Int(232).endOffset = 1u << 30;
    parts.objects.Child(broken);
    parts.objects.Child(Object("Model", 3, "Third", "Model", "Null"));
    for (bool relaxed : {false, true}) {
        auto file = Import(parts, [relaxed](FbxIOSettings& s) { s.SetBoolProp(Option("RelaxedFbxCheck").c_str(), relaxed); });
        EXPECT_EQ(file->ok, relaxed);
        EXPECT_EQ(file->Status().GetCode(), kFbxInvalidFile);
        EXPECT_EQ(file->Status().GetErrorString(), "File is corrupted: 'fixture.fbx'");
        EXPECT_NE(file->Find("First"), nullptr);
        EXPECT_EQ(file->Find("Broken"), nullptr);
        EXPECT_EQ(file->Find("Third"), nullptr);
    }
}

TEST(ImporterStatusTest, InitializeNeedsANameOfAKnownKind) {
    FbxManager* manager = FbxManager::Create();
    FbxImporter* importer = FbxImporter::Create(manager, "");
    EXPECT_FALSE(importer->Initialize(static_cast<const char*>(nullptr)));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "Uninitialized filename");
    EXPECT_FALSE(importer->Initialize(""));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "Uninitialized filename");
    EXPECT_FALSE(importer->Initialize("/nonexistent/scene.obj"));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "Unexpected file type");
    EXPECT_FALSE(importer->Import(nullptr));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "Invalid document handle");
    FbxScene* scene = FbxScene::Create(manager, "s");
    EXPECT_FALSE(importer->Import(scene));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "File not opened");
    int major = 0, minor = 0, revision = 0;
    FbxGetFileFormatVersion(major, minor, revision);
    EXPECT_EQ(major * 1000 + minor * 100 + revision, 7700);
    manager->Destroy();
}

TEST(ImporterStatusTest, FileVersionParts) {
    FileParts parts;
    parts.version = 7500;
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    int major = 0, minor = 0, revision = 0;
    file->importer->GetFileVersion(major, minor, revision);
    EXPECT_EQ(major, 7);
    EXPECT_EQ(minor, 5);
    EXPECT_EQ(revision, 0);
    EXPECT_TRUE(file->importer->IsFBX());
}

TEST(ImporterStatusTest, TakesGiveTheStacksTheirSpans) {
    // The fixture states no TCDefinition, so its times count 46,186,158,000 a second:
    // n seconds read as n * 141,120,000 ticks (the remainder term (0 + 164) * 141120 /
    // 46186158 truncates to 0).
    const int64_t second = 46186158000;
    FileParts parts;
    parts.objects.Child(Object("AnimationStack", 5, "Take 001", "AnimStack", ""));
    Record takes("Takes");
    takes.Add("Current").String("Take 001");
    Record& take = takes.Add("Take");
    take.String("Take 001");
    take.Add("LocalTime").Long(second).Long(2 * second);
    take.Add("ReferenceTime").Long(0).Long(3 * second);
    Record& other = takes.Add("Take");
    other.String("No such stack");
    other.Add("LocalTime").Long(1).Long(2);
    parts.more.push_back(takes);
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    FbxAnimStack* stack = file->Find<FbxAnimStack>("Take 001");
    ASSERT_NE(stack, nullptr);
    int64_t start = -1, stop = -1, refStart = -1, refStop = -1;
    stack->LocalStart.Get(&start, eFbxTime);
    stack->LocalStop.Get(&stop, eFbxTime);
    stack->ReferenceStart.Get(&refStart, eFbxTime);
    stack->ReferenceStop.Get(&refStop, eFbxTime);
    EXPECT_EQ(start, 141120000);
    EXPECT_EQ(stop, 2 * 141120000);
    EXPECT_EQ(refStart, 0);
    EXPECT_EQ(refStop, 3 * 141120000);
}

TEST(ImporterStatusTest, ProgressRunsToOneHundredAndCanStopTheObjectLoop) {
    FileParts parts;
    for (int k = 1; k <= 10; ++k) {
        std::string name = "n" + std::to_string(k);
        parts.objects.Child(Object("Model", k, name.c_str(), "Model", "Null"));
    }
    struct Seen {
        float last = -1;
        int calls = 0;
        bool stopAtHalf = false;
    };
    auto callback = [](void* args, float percentage, const char*) {
        Seen& s = *static_cast<Seen*>(args);
        s.last = percentage;
        ++s.calls;
        return !(s.stopAtHalf && percentage >= 50);
    };
    for (bool stopAtHalf : {false, true}) {
        auto file = std::make_unique<Imported>();
        file->bytes = Build(parts);
        Seen seen;
        seen.stopAtHalf = stopAtHalf;
        file->importer->SetProgressCallback(callback, &seen);
        ASSERT_TRUE(file->importer->Initialize(file->bytes.data(), file->bytes.size(), "p.fbx"));
        EXPECT_TRUE(file->importer->Import(file->scene));
        EXPECT_EQ(seen.last, 100.0f);
        int nodes = file->scene->GetSrcObjectCount<FbxNode>() - 1;  // less the root
        EXPECT_EQ(nodes, stopAtHalf ? 5 : 10);
    }
}

}  // namespace
}  // namespace modeltest
