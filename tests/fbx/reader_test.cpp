// The object model (data types, property trees, connections in order) and the file reader:
// properties and templates, the class each record makes, connections of every type, and the
// outcomes of Initialize and Import.
#include <filesystem>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_material.h"
#include "fbx/fbx_properties70.h"
#include "fbx_fixture.h"
#include "file_contents.h"
#include "scratch_folder.h"

namespace {

using namespace fbxtest;
using fbxwriter::ConnectionOO;

TEST_F(SceneTest, NameBehindNamespace) {
    FbxNode* node = FbxNode::Create(scene, "Model::Cube");
    EXPECT_STREQ(node->GetName(), "Cube");
    EXPECT_EQ(node->GetNameWithNameSpace(), "Model::Cube");
    EXPECT_EQ(node->GetNameSpacePrefix(), "Model");
    EXPECT_STREQ(FbxNode::Create(scene, "Plain")->GetName(), "Plain");
}

TEST_F(SceneTest, PropertyTreeFindWalksSeparatedNames) {
    FbxNode* node = FbxNode::Create(scene, "n");
    FbxProperty d = FbxProperty::Create(node, FbxCompoundDT, "d");
    FbxProperty x = FbxProperty::Create(d, FbxNumberDT, "X");
    ASSERT_TRUE(x.IsValid());
    EXPECT_EQ(node->FindPropertyHierarchical("d|X"), x);
    EXPECT_EQ(node->RootProperty.Find("d|X"), x);
    EXPECT_FALSE(node->FindProperty("d|X").IsValid());  // a direct child of that name does not exist
    EXPECT_FALSE(node->FindPropertyHierarchical("D|x").IsValid());
    EXPECT_EQ(node->FindPropertyHierarchical("D|x", false), x);
    EXPECT_FALSE(node->FindPropertyHierarchical("d|Y").IsValid());
    EXPECT_EQ(x.GetHierarchicalName(), "d|X");
    EXPECT_STREQ(x.GetName(), "X");
    EXPECT_STREQ(node->RootProperty.GetName(), "n");
    bool found = false;
    EXPECT_EQ(FbxProperty::Create(d, FbxNumberDT, "X", "", true, &found), x);
    EXPECT_TRUE(found);
}

TEST_F(SceneTest, GetConvertsOrLeavesTheOutValueAlone) {
    FbxNode* node = FbxNode::Create(scene, "n");
    node->LclScaling.Set(FbxDouble3{2, 3, 4});
    EXPECT_EQ(node->LclScaling.FbxProperty::Get<double>(), 2.0);  // first component
    node->Visibility.Set(0.0);
    EXPECT_FALSE(node->Visibility.FbxProperty::Get<bool>());
    node->RotationOrder.Set(5);
    EXPECT_EQ(node->RotationOrder.FbxProperty::Get<double>(), 5.0);
    std::string text = "unchanged";
    EXPECT_FALSE(node->RotationOrder.FbxProperty::Get(&text, eFbxString));
    EXPECT_EQ(text, "unchanged");
    // Missing and reference properties have no value.
    FbxProperty missing = node->FindProperty("NotAProperty");
    EXPECT_FALSE(missing.IsValid() || FbxProperty().IsValid());
    double value = 7.5;
    EXPECT_FALSE(missing.Get(&value, eFbxDouble));
    EXPECT_FALSE(node->LookAtProperty.Get(&value, eFbxDouble));
    EXPECT_EQ(value, 7.5);
}

TEST_F(SceneTest, ConnectionsKeepOrderAndFilterByClass) {
    FbxNode* parent = FbxNode::Create(scene, "parent");
    FbxNode* kids[4];
    FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
    for (int i = 0; i < 4; ++i) {
        kids[i] = FbxNode::Create(scene, ("kid" + std::to_string(i)).c_str());
        parent->AddChild(kids[i]);
        // A source of another kind between children does not count as one.
        parent->ConnectSrcObject(i == 0 ? mesh : FbxMesh::Create(scene, ""));
    }
    EXPECT_EQ(parent->GetSrcObjectCount(), 8);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(parent->GetChild(i), kids[i]);
    EXPECT_EQ(parent->GetChild(-1), nullptr);
    EXPECT_EQ(parent->GetSrcObject<FbxGeometry>(0), mesh);  // a subclass matches
    EXPECT_EQ(parent->GetNodeAttribute(), mesh);            // the first attribute becomes the default one
    EXPECT_EQ(kids[1]->GetParent(), parent);
    EXPECT_EQ(mesh->GetNode(), parent);

    // Children by index while the list changes between look-ups: a walk that resumes from
    // the last child found must still see removals and insertions.
    parent->RemoveChild(kids[1]);  // kid0 kid2 kid3
    EXPECT_EQ(parent->GetChildCount(), 3);
    EXPECT_EQ(parent->GetChild(1), kids[2]);
    EXPECT_EQ(parent->GetChild(2), kids[3]);
    EXPECT_EQ(parent->GetChild(3), nullptr);
    parent->AddChild(kids[1]);  // kid0 kid2 kid3 kid1
    EXPECT_EQ(parent->GetChild(3), kids[1]);
    EXPECT_EQ(parent->GetChild(0), kids[0]);  // backwards from the last look-up
    kids[2]->Destroy();
    EXPECT_EQ(parent->GetChildCount(), 3);
    EXPECT_EQ(parent->GetSrcObject(1), mesh);

    // Property connections are not object connections.
    FbxObject* curveNode = FbxObject::Create(scene, "cn");
    parent->LclTranslation.ConnectSrcObject(curveNode);
    EXPECT_EQ(parent->LclTranslation.GetSrcObjectCount(), 1);
    EXPECT_EQ(parent->GetSrcObjectCount(), 7);
    EXPECT_EQ(curveNode->GetDstPropertyCount(), 1);
    EXPECT_EQ(curveNode->GetDstProperty(0), parent->LclTranslation);
    EXPECT_EQ(curveNode->GetDstObjectCount(), 1);  // the scene that owns it
}

TEST(PropertyFlagsTest, LettersAndDigits) {
    const testsupport::Table rows = Table("property_flags.txt");
    ASSERT_GT(rows.size(), 10u);
    for (const testsupport::TableRow& row : rows) {
        EXPECT_EQ(FbxParsePropertyFlags(row[0]), uint32_t(std::stoul(row[1]))) << "line " << row.line;
    }
}

// The objects of data/reader_scene.fbx and the connections of data/reader_connections.fbx,
// text files, imported once for the tests that only look at them.
struct ReaderScene : ::testing::Test {
    static inline std::unique_ptr<Imported> file, graph;
    static void SetUpTestSuite() {
        file = Import(testsupport::ReadFileBytes(VURL_FBX_DATA "/reader_scene.fbx"));
        graph = Import(testsupport::ReadFileBytes(VURL_FBX_DATA "/reader_connections.fbx"));
    }
    static void TearDownTestSuite() { file.reset(), graph.reset(); }
    void SetUp() override {
        ASSERT_TRUE(file->ok) << file->Status().GetErrorString();
        ASSERT_TRUE(graph->ok) << graph->Status().GetErrorString();
    }
};

// A property looked at as the rows of data/reader_properties.txt name it; rows that look
// at the class or the layers of an object have "-" for the property.
std::string Probe(const FbxProperty& p, const std::string& what) {
    const std::pair<const char*, uint32_t> kFlags[] = {{"flag Imported", FbxPropertyFlag::Imported},
                                                       {"flag UserDefined", FbxPropertyFlag::UserDefined},
                                                       {"flag Animated", FbxPropertyFlag::Animated}};
    for (const auto& [name, bit] : kFlags)
        if (what == name) return p.GetFlag(bit) ? "1" : "0";
    if (what == "valid") return p.IsValid() ? "1" : "0";
    if (what == "valueset") return p.IsValueSet() ? "1" : "0";
    if (what == "flags") return std::to_string(p.GetFlags());
    if (what == "min") return p.HasMinLimit() ? Real(p.GetMinLimit(), 17) : "none";
    if (what == "max") return Real(p.GetMaxLimit(), 17);
    if (what == "type") return p.GetType() == eFbxFloat ? "float" : p.GetType() == eFbxDouble ? "double" : "other";
    if (what == "time") {
        int64_t ticks = -1;
        p.Get(&ticks, eFbxTime);
        return std::to_string(ticks);
    }
    std::string out;
    if (what == "enum") {
        for (int k = 0; k < p.GetEnumCount(); ++k) out += (k > 0 ? " " : "") + std::string(p.GetEnumValue(k));
    } else if (p.GetType() == eFbxString) {
        out = p.Get<std::string>();
    } else if (p.GetType() == eFbxFloat) {
        out = Real(p.Get<float>(), 9);
    } else if (p.GetType() == eFbxInt || p.GetType() == eFbxEnum) {
        out = std::to_string(p.Get<int>());
    } else if (p.GetType() == eFbxBool) {
        out = p.Get<bool>() ? "true" : "false";
    } else if (p.GetType() == eFbxDouble3) {
        const FbxDouble3 v = p.Get<FbxDouble3>();
        out = Real(v[0], 17) + " " + Real(v[1], 17) + " " + Real(v[2], 17);
    } else {
        out = Real(p.Get<double>(), 17);
    }
    return out;
}

TEST_F(ReaderScene, ClassesPropertyValuesFlagsLimitsAndTemplates) {
    for (const testsupport::TableRow& row : Table("reader_properties.txt")) {
        FbxObject* object = file->Find(row[0].c_str());
        std::string got = object ? object->GetClassId().GetName() : "none";
        if (row[2] == "layers" && object) {
            got.clear();
            for (int k = 0; k < object->GetSrcObjectCount<FbxAnimLayer>(); ++k)
                got += (k > 0 ? " " : "") + std::string(object->GetSrcObject<FbxAnimLayer>(k)->GetName());
        } else if (row[2] != "class") {
            ASSERT_NE(object, nullptr) << "line " << row.line;
            got = Probe(object->FindPropertyHierarchical(row[1].c_str()), row[2]);
        }
        EXPECT_EQ(got, row[3]) << "line " << row.line;
    }
}

TEST_F(ReaderScene, MeshArraysAndLayersAreKept) {
    FbxMesh* mesh = file->Find<FbxMesh>("Quad");
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->GetControlPointsCount(), 4);
    EXPECT_EQ(mesh->GetPolygonCount(), 2);
    ASSERT_EQ(mesh->layerElements.size(), 1u);
    EXPECT_EQ(mesh->layerElements[0].kind, FbxLayerElementKind::UV);
    EXPECT_EQ(mesh->layerElements[0].mapping, FbxMappingMode::ByPolygonVertex);
    EXPECT_EQ(mesh->layerElements[0].indices.size(), 6u);
    ASSERT_EQ(mesh->layers.size(), 1u);
    EXPECT_EQ(mesh->layers[0].entries.size(), 1u);
}

TEST_F(ReaderScene, ManyPropertiesOfAPlainObjectStayDistinct) {
    FbxObject* hero = file->Find("Hero");
    ASSERT_NE(hero, nullptr);
    EXPECT_EQ(hero->GetPropertyCount(), 40);
    for (int k = 0; k < 40; ++k) {
        std::string name = "u" + std::to_string(k);
        EXPECT_EQ(hero->FindProperty(name.c_str()).Get<int>(), k == 7 ? 700 : k) << name;
    }
    EXPECT_TRUE(hero->FindProperty("U39", false).IsValid());  // case-insensitive walks the list
}

TEST(ObjectDispatchTest, RecordAndSubTypeChooseTheClass) {
    const testsupport::Table rows = Table("object_classes.txt");
    ASSERT_GT(rows.size(), 15u);
    FileParts parts;
    int64_t id = 100;
    for (const testsupport::TableRow& row : rows) {
        const std::string name = row[0] + "_" + row[1];
        parts.objects.Child(Object(row[0].c_str(), id++, name.c_str(), row[0].c_str(), row[1].c_str()));
    }
    // Definitions name two of the types (Character stands for Constraint records): the
    // others are still read.
    parts.definitions.Add("ObjectType").String("Model");
    parts.definitions.Add("ObjectType").String("Character");
    auto file = Import(parts);
    ASSERT_TRUE(file->ok) << file->Status().GetErrorString();
    for (const testsupport::TableRow& row : rows) {
        const std::string name = row[0] + "_" + row[1];
        FbxObject* o = file->Find(name.c_str());
        ASSERT_NE(o, nullptr) << name;
        EXPECT_EQ(o->GetClassId().GetName(), row[2]) << name;
    }
    EXPECT_EQ(file->Find<FbxSkeleton>("NodeAttribute_LimbNode")->GetSkeletonType(), FbxSkeleton::eLimbNode);
}

// A mesh of two triangles over four points, with a UV element.
Record Mesh(std::vector<int32_t> polygons, std::vector<int32_t> edges, std::vector<int32_t> uvIndex) {
    Record mesh = Object("Geometry", 40, "Quad", "Geometry", "Mesh");
    mesh.Add("Vertices").Add(Value::DoubleArray({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, 1));
    mesh.Add("PolygonVertexIndex").Add(Value::IntArray(polygons));
    mesh.Add("Edges").Add(Value::IntArray(edges));
    Record& uv = mesh.Add("LayerElementUV");
    uv.Int(0);
    uv.Add("MappingInformationType").String("ByPolygonVertex");
    uv.Add("ReferenceInformationType").String("IndexToDirect");
    uv.Add("UV").Add(Value::DoubleArray({0, 0, 1, 0, 1, 1}));  // three UVs
    uv.Add("UVIndex").Add(Value::IntArray(uvIndex));
    Record& layer = mesh.Add("Layer");
    layer.Int(0);
    Record& entry = layer.Add("LayerElement");
    entry.Add("Type").String("LayerElementUV");
    entry.Add("TypedIndex").Int(0);
    return mesh;
}

TEST(MeshTest, IndicesOutOfBoundsFailTheImportUnlessRelaxed) {
    struct Row {
        std::vector<int32_t> polygons, edges, uvIndex;
        const char* message;  // empty: the file reads
    };
    // Four points (0-3), six polygon vertices (0-5), three UVs (0-2). The last index
    // of a polygon is stored as -index - 1, so -5 stands for point 4.
    const Row rows[] = {
        {{0, 1, -3, 0, 2, -4}, {0, 5}, {0, 1, 2, 2, 1, 0}, ""},
        {{0, 1, -3, 0, 2, 4, -1}, {}, {}, "[Mesh] Bad value in array (PolygonVertexIndex) would cause an out of bounds access"},
        {{0, 1, -3, 0, 2, -5}, {}, {}, "[Mesh] Bad value in array (PolygonVertexIndex) would cause an out of bounds access"},
        {{0, 1, -3, 0, 2, -4}, {6}, {}, "[Mesh] Bad value in array (Edges) would cause an out of bounds access"},
        {{0, 1, -3, 0, 2, -4}, {}, {0, 1, 3}, "[LayerElement] Bad value in array (UVIndex) would cause an out of bounds access"},
    };
    for (const Row& row : rows) {
        FileParts parts;
        parts.objects.Child(Mesh(row.polygons, row.edges, row.uvIndex));
        auto strict = Import(parts);
        std::string message = row.message;
        EXPECT_EQ(strict->ok, message.empty()) << message;
        if (!message.empty()) {
            EXPECT_EQ(strict->Status().GetCode(), kFbxInvalidFile);
            EXPECT_EQ(strict->Status().GetErrorString(), message);
        }
        auto relaxed = Import(parts, Relaxed());
        EXPECT_TRUE(relaxed->ok) << message;
        EXPECT_NE(relaxed->Find<FbxMesh>("Quad"), nullptr);
    }
}

TEST_F(ReaderScene, ClustersShapesAndChannelWeights) {
    FbxCluster* c = file->Find<FbxCluster>("Cluster1");
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->indexes, (std::vector<int32_t>{0, 2, 3}));
    EXPECT_EQ(c->weights[1], 0.25);
    EXPECT_EQ(c->transformLink[0], 2.0);
    EXPECT_EQ(c->transform[0], 1.0);  // absent: identity
    FbxBlendShapeChannel* smile = file->Find<FbxBlendShapeChannel>("Smile");
    ASSERT_NE(smile, nullptr);
    EXPECT_EQ(smile->GetTargetShapeFullWeights(), (std::vector<double>{50, 100}));
    // The channel whose weights do not read stays out of the document, but its id
    // still takes connections.
    EXPECT_EQ(file->Find("Frown"), nullptr);
    FbxBlendShape* blend = file->Find<FbxBlendShape>("Blend");
    ASSERT_NE(blend, nullptr);
    ASSERT_EQ(blend->GetBlendShapeChannelCount(), 1);
    FbxBlendShapeChannel* frown = blend->GetBlendShapeChannel(0);
    EXPECT_STREQ(frown->GetName(), "Frown");
    EXPECT_EQ(frown->GetTargetShapeCount(), 1);
    EXPECT_EQ(frown->GetTargetShape(0)->indexes, (std::vector<int32_t>{1}));
}

TEST(PostPassTest, ProducerCamerasLeaveTheTree) {
    FileParts parts;
    parts.objects.Child(Object("Model", 70, "Producer Perspective", "Model", "Camera"));
    parts.objects.Child(Object("NodeAttribute", 71, "Producer Perspective", "NodeAttribute", "Camera"));
    parts.objects.Child(Object("Model", 72, "Shot", "Model", "Camera"));
    parts.objects.Child(Object("NodeAttribute", 73, "ShotCam", "NodeAttribute", "Camera"));
    for (auto [src, dst] : {std::pair{70, 0}, {71, 70}, {72, 0}, {73, 72}})
        parts.connections.Child(ConnectionOO(src, dst));
    for (bool keep : {false, true}) {
        auto file = Import(parts, [keep](FbxIOSettings& s) {
            s.SetBoolProp(Option("KeepProducerCamSrcObj").c_str(), keep);
        });
        ASSERT_TRUE(file->ok);
        FbxNode* root = file->scene->GetRootNode();
        ASSERT_EQ(root->GetChildCount(), keep ? 2 : 1) << keep;
        EXPECT_STREQ(root->GetChild(keep ? 1 : 0)->GetName(), "Shot");
        EXPECT_EQ(file->Find("Producer Perspective") != nullptr, keep);
    }
}

TEST(EmbeddedMediaTest, ContentGoesIntoTheFolderNamedAfterTheFile) {
    namespace fs = std::filesystem;
    testsupport::ScratchFolder folder("media");
    const fs::path& dir = folder.Path();
    FileParts parts;
    Record video = Object("Video", 80, "Image", "Video", "Clip");
    video.Add("RelativeFilename").String("..\\textures/../../skin.png");  // only the last part counts
    video.Add("Content").Raw("PNGDATA");
    parts.objects.Child(video);
    std::string name = (dir / "avatar.fbx").string();
    auto file = Import(parts, {}, name.c_str());
    ASSERT_TRUE(file->ok);
    fs::path written = dir / "avatar.fbm" / "skin.png";
    EXPECT_EQ(testsupport::ReadFileText(written.string()), "PNGDATA");
    FbxVideo* v = file->Find<FbxVideo>("Image");
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->fileName, written.string());
    EXPECT_FALSE(fs::exists(dir / "skin.png"));
}


TEST_F(ReaderScene, EachConnectionTypeJoinsTheRightEnds) {
    FbxNode* parent = graph->Find<FbxNode>("Parent");
    FbxNode* child = graph->Find<FbxNode>("Child");
    FbxObject* curveNode = graph->Find("T");
    ASSERT_TRUE(parent && child && curveNode);
    EXPECT_EQ(parent->GetParent(), graph->scene->GetRootNode());
    EXPECT_EQ(child->GetParent(), parent);
    EXPECT_EQ(child->LclTranslation.GetSrcObject(0), curveNode);
    EXPECT_EQ(parent->GetSrcPropertyCount(), 1);
    EXPECT_EQ(parent->GetSrcProperty(0), child->LclRotation);
    EXPECT_EQ(parent->Visibility.GetSrcProperty(0), curveNode->FindPropertyHierarchical("d|X"));
    EXPECT_EQ(child->GetNodeAttribute(), graph->Find("Mesh"));
    // The curve node has one destination property, so it is bound to it.
    EXPECT_EQ(static_cast<FbxAnimCurveNode*>(curveNode)->GetBoundProperty(), child->LclTranslation);
}

TEST_F(ReaderScene, UnknownIdsPropertiesAndTypesAreIgnored) {
    FbxNode* parent = graph->Find<FbxNode>("UParent");
    FbxNode* child = graph->Find<FbxNode>("UChild");
    ASSERT_TRUE(parent && child);
    EXPECT_EQ(parent->GetSrcObjectCount(), 0);
    EXPECT_EQ(parent->GetSrcPropertyCount(), 0);
    EXPECT_EQ(child->GetDstObjectCount(), 1);  // the scene only
    EXPECT_EQ(child->LclTranslation.GetSrcObjectCount(), 0);
}

TEST_F(ReaderScene, RepeatedConnectionsStandTwiceOnlyForMaterialsAndLayeredTextures) {
    // Sources of each destination after two records: a material on a node, a texture in a
    // layered texture, a geometry on a node, a child node.
    for (auto [destination, expected] : {std::pair{"Painted", 2}, {"Layers", 2}, {"Shaped", 1}, {"Dad", 1}}) {
        ASSERT_NE(graph->Find(destination), nullptr);
        EXPECT_EQ(graph->Find(destination)->GetSrcObjectCount(), expected) << destination;
    }
}

TEST_F(ReaderScene, SelfConnectionsAndNodeCyclesAreCut) {
    FbxNode* parent = graph->Find<FbxNode>("CParent");
    FbxNode* child = graph->Find<FbxNode>("CChild");
    ASSERT_TRUE(parent && child);
    EXPECT_EQ(parent->GetParent(), graph->scene->GetRootNode());
    EXPECT_EQ(child->GetParent(), parent);
    EXPECT_EQ(parent->GetChildCount(true), 1);
    EXPECT_EQ(graph->Find("CT")->FindPropertyHierarchical("d|X").GetSrcObjectCount(), 0);
}

TEST(ConnectionTest, LongChainsAreWalkedWithoutRecursion) {
    FileParts parts;
    const int depth = 20000;
    for (int k = 1; k <= depth; ++k) {
        std::string name = "n" + std::to_string(k);
        parts.objects.Child(Object("Model", k, name.c_str(), "Model", "Null"));
        parts.connections.Child(ConnectionOO(k, k - 1));  // n1 under the root, each next below
    }
    parts.connections.Child(ConnectionOO(1, depth));  // and the root child below the deepest
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    EXPECT_EQ(file->scene->GetRootNode()->GetChildCount(true), depth);
}

using ImporterStatusTest = SceneTest;

TEST_F(ImporterStatusTest, RefusalsCarryCodeAndText) {
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
        {"external reference", [] { return testsupport::ReadFileBytes(VURL_FBX_DATA "/external_reference.fbx"); },
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

TEST_F(ImporterStatusTest, AnUnreadableObjectBlockEndsTheObjectLoop) {
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
        auto file = Import(parts, Relaxed(relaxed));
        EXPECT_EQ(file->ok, relaxed);
        EXPECT_EQ(file->Status().GetCode(), kFbxInvalidFile);
        EXPECT_EQ(file->Status().GetErrorString(), "File is corrupted: 'fixture.fbx'");
        EXPECT_NE(file->Find("First"), nullptr);
        EXPECT_EQ(file->Find("Broken"), nullptr);
        EXPECT_EQ(file->Find("Third"), nullptr);
    }
}

TEST_F(ImporterStatusTest, InitializeNeedsANameOfAKnownKind) {
    FbxImporter* importer = FbxImporter::Create(manager, "");
    EXPECT_FALSE(importer->Initialize(static_cast<const char*>(nullptr)));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "Uninitialized filename");
    EXPECT_FALSE(importer->Initialize(""));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "Uninitialized filename");
    EXPECT_FALSE(importer->Initialize("/nonexistent/scene.obj"));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "Unexpected file type");
    EXPECT_FALSE(importer->Import(nullptr));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "Invalid document handle");
    EXPECT_FALSE(importer->Import(scene));
    EXPECT_EQ(importer->GetStatus().GetErrorString(), "File not opened");
}

TEST_F(ImporterStatusTest, ProgressRunsToOneHundredAndCanStopTheObjectLoop) {
    FileParts parts;
    for (int k = 1; k <= 10; ++k)
        parts.objects.Child(Object("Model", k, ("n" + std::to_string(k)).c_str(), "Model", "Null"));
    const std::vector<uint8_t> bytes = Build(parts);
    struct Seen {
        float last = -1;
        bool stopAtHalf = false;
    };
    auto callback = [](void* args, float percentage, const char*) {
        Seen& s = *static_cast<Seen*>(args);
        s.last = percentage;
        return !(s.stopAtHalf && percentage >= 50);
    };
    for (bool stopAtHalf : {false, true}) {
        FbxScene* target = FbxScene::Create(manager, "");
        FbxImporter* importer = FbxImporter::Create(manager, "");
        Seen seen{-1, stopAtHalf};
        importer->SetProgressCallback(callback, &seen);
        ASSERT_TRUE(importer->Initialize(bytes.data(), bytes.size(), "p.fbx"));
        EXPECT_TRUE(importer->Import(target));
        EXPECT_EQ(seen.last, 100.0f);
        EXPECT_EQ(target->GetSrcObjectCount<FbxNode>() - 1, stopAtHalf ? 5 : 10);  // less the root
    }
}

}  // namespace
