// Objects: the class each record makes, what meshes and deformers keep, the scene
// post-pass (base layers, producer cameras) and embedded media.
#include <gtest/gtest.h>

#include <filesystem>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_material.h"
#include "file_contents.h"
#include "model_test_util.h"
#include "scratch_folder.h"

namespace modeltest {
namespace {

TEST(ObjectDispatchTest, RecordAndSubTypeChooseTheClass) {
    struct Row {
        const char* record;
        const char* subType;
        const char* className;  // expected class of the object
    };
    const Row rows[] = {
        {"Model", "Mesh", "FbxNode"},
        {"NodeAttribute", "LimbNode", "FbxSkeleton"},
        {"NodeAttribute", "Camera", "FbxCamera"},
        {"NodeAttribute", "Light", "FbxLight"},
        {"NodeAttribute", "IKEffector", "FbxMarker"},
        {"NodeAttribute", "SomethingNew", "FbxNodeAttribute"},
        {"Geometry", "Mesh", "FbxMesh"},
        {"Geometry", "NurbsCurve", "FbxNurbsCurve"},
        {"Geometry", "SomethingNew", "FbxObject"},  // an unknown geometry is a plain object
        {"Deformer", "Skin", "FbxSkin"},
        {"Deformer", "Cluster", "FbxCluster"},
        {"Deformer", "BlendShape", "FbxBlendShape"},
        {"Pose", "BindPose", "FbxPose"},
        {"Texture", "", "FbxFileTexture"},
        {"Video", "Clip", "FbxVideo"},
        {"AnimationStack", "", "FbxAnimStack"},
        {"AnimationCurve", "", "FbxAnimCurveKFCurve"},
        {"Constraint", "Character", "FbxConstraint"},
        {"CollectionExclusive", "DisplayLayer", "FbxObject"},
    };
    FileParts parts;
    int64_t id = 100;
    for (const Row& row : rows) {
        std::string name = std::string(row.record) + "_" + row.subType;
        parts.objects.Child(Object(row.record, id++, name.c_str(), row.record, row.subType));
    }
    // Definitions name only one of the types: the others are still read.
    parts.definitions.Add("ObjectType").String("Model");
    auto file = Import(parts);
    ASSERT_TRUE(file->ok) << file->Status().GetErrorString();
    for (const Row& row : rows) {
        std::string name = std::string(row.record) + "_" + row.subType;
        FbxObject* o = file->Find(name.c_str());
        ASSERT_NE(o, nullptr) << name;
        EXPECT_STREQ(o->GetClassId().GetName(), row.className) << name;
    }
    EXPECT_EQ(file->Find<FbxSkeleton>("NodeAttribute_LimbNode")->GetSkeletonType(), FbxSkeleton::eLimbNode);
}

TEST(ObjectDispatchTest, CharacterTypeReadsConstraintRecords) {
    FileParts parts;
    parts.definitions.Add("ObjectType").String("Character");
    parts.objects.Child(Object("Constraint", 5, "Hero", "Character", "Character"));
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    EXPECT_NE(file->Find("Hero"), nullptr);
}

TEST(ObjectDispatchTest, MaterialsByShadingModelAndFirstOfAnIdWins) {
    FileParts parts;
    Record phong = Object("Material", 7, "Shiny", "Material", "");
    phong.Add("ShadingModel").String("Phong");
    Record again = Object("Material", 7, "Again", "Material", "");
    Record lambert = Object("Material", 8, "Matte", "Material", "");
    lambert.Add("ShadingModel").String("lambert");
    parts.objects.Child(phong);
    parts.objects.Child(again);
    parts.objects.Child(lambert);
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    EXPECT_NE(file->Find<FbxSurfacePhong>("Shiny"), nullptr);
    EXPECT_EQ(file->Find("Again"), nullptr);
    FbxSurfaceLambert* matte = file->Find<FbxSurfaceLambert>("Matte");
    ASSERT_NE(matte, nullptr);
    EXPECT_FALSE(matte->Is<FbxSurfacePhong>());
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

TEST(MeshTest, ArraysAndLayersAreKept) {
    FileParts parts;
    parts.objects.Child(Mesh({0, 1, -3, 0, 2, -4}, {0, 1, 2, 4}, {0, 1, 2, 0, 2, 1}));
    auto file = Import(parts);
    ASSERT_TRUE(file->ok) << file->Status().GetErrorString();
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
        auto relaxed = Import(parts, [](FbxIOSettings& s) { s.SetBoolProp(Option("RelaxedFbxCheck").c_str(), true); });
        EXPECT_TRUE(relaxed->ok) << message;
        EXPECT_NE(relaxed->Find<FbxMesh>("Quad"), nullptr);
    }
}

TEST(DeformerTest, ClustersShapesAndChannelWeights) {
    FileParts parts;
    Record cluster = Object("Deformer", 50, "Cluster1", "SubDeformer", "Cluster");
    cluster.Add("Indexes").Add(Value::IntArray({0, 2, 3}));
    cluster.Add("Weights").Add(Value::DoubleArray({0.5, 0.25, 1}));
    std::vector<double> identityTimesTwo{2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    cluster.Add("TransformLink").Add(Value::DoubleArray(identityTimesTwo));
    parts.objects.Child(cluster);
    Record channel = Object("Deformer", 51, "Smile", "SubDeformer", "BlendShapeChannel");
    channel.Add("FullWeights").Add(Value::DoubleArray({50, 100}));
    parts.objects.Child(channel);
    Record broken = Object("Deformer", 52, "Frown", "SubDeformer", "BlendShapeChannel");
    broken.Add("FullWeights").Add(Value::IntArray({100}));  // not a double array
    parts.objects.Child(broken);
    Record shape = Object("Geometry", 53, "SmileShape", "Geometry", "Shape");
    shape.Add("Indexes").Add(Value::IntArray({1}));
    shape.Add("Vertices").Add(Value::DoubleArray({0, 0.5, 0}));
    parts.objects.Child(shape);
    parts.objects.Child(Object("Deformer", 54, "Blend", "Deformer", "BlendShape"));
    parts.connections.Child(fbxwriter::ConnectionOO(53, 52));  // a shape onto the unlisted channel
    parts.connections.Child(fbxwriter::ConnectionOO(52, 54));
    auto file = Import(parts);
    ASSERT_TRUE(file->ok) << file->Status().GetErrorString();
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

TEST(PostPassTest, StacksWithoutLayersGetABaseLayer) {
    FileParts parts;
    parts.objects.Child(Object("AnimationStack", 60, "Walk", "AnimStack", ""));
    parts.objects.Child(Object("AnimationStack", 61, "Run", "AnimStack", ""));
    parts.objects.Child(Object("AnimationLayer", 62, "RunLayer", "AnimLayer", ""));
    parts.connections.Child(fbxwriter::ConnectionOO(62, 61));
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    FbxAnimStack* walk = file->Find<FbxAnimStack>("Walk");
    FbxAnimStack* run = file->Find<FbxAnimStack>("Run");
    ASSERT_TRUE(walk && run);
    ASSERT_EQ(walk->GetSrcObjectCount<FbxAnimLayer>(), 1);
    EXPECT_STREQ(walk->GetSrcObject<FbxAnimLayer>()->GetName(), "Base Layer");
    ASSERT_EQ(run->GetSrcObjectCount<FbxAnimLayer>(), 1);
    EXPECT_STREQ(run->GetSrcObject<FbxAnimLayer>()->GetName(), "RunLayer");
}

TEST(PostPassTest, ProducerCamerasLeaveTheTree) {
    FileParts parts;
    parts.objects.Child(Object("Model", 70, "Producer Perspective", "Model", "Camera"));
    parts.objects.Child(Object("NodeAttribute", 71, "Producer Perspective", "NodeAttribute", "Camera"));
    parts.objects.Child(Object("Model", 72, "Shot", "Model", "Camera"));
    parts.objects.Child(Object("NodeAttribute", 73, "ShotCam", "NodeAttribute", "Camera"));
    for (auto [src, dst] : {std::pair{70, 0}, {71, 70}, {72, 0}, {73, 72}})
        parts.connections.Child(fbxwriter::ConnectionOO(src, dst));
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

}  // namespace
}  // namespace modeltest
