// Object model: data types by name, property trees and handles, connections in order.
#include <gtest/gtest.h>

#include <string>

#include "fbx/fbx_deformer.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_node.h"

namespace {

struct ManagerFixture : ::testing::Test {
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "My Scene");
    ~ManagerFixture() override { manager->Destroy(); }
};

TEST(FbxDataTypeTest, NamesMapToValueTypes) {
    struct Row {
        const char* name;
        bool valid;
        EFbxType type;
    };
    const Row rows[] = {
        {"Lcl Translation", true, eFbxDouble3}, {"ColorRGB", true, eFbxDouble3}, {"Vector", true, eFbxDouble3},
        {"Number", true, eFbxDouble},          {"Integer", true, eFbxInt},      {"KString", true, eFbxString},
        {"KTime", true, eFbxTime},             {"enum", true, eFbxEnum},        {"object", true, eFbxReference},
        {"lcl translation", false, eFbxUndefined},  // lookup is case sensitive
        {"", false, eFbxUndefined},            {"NoSuchType", false, eFbxUndefined},
    };
    for (const Row& row : rows) {
        FbxDataType t = FbxGetDataTypeFromName(row.name);
        EXPECT_EQ(t.Valid(), row.valid) << row.name;
        EXPECT_EQ(t.GetType(), row.type) << row.name;
    }
}

TEST_F(ManagerFixture, SceneStartsWithRootNodeAndSettings) {
    ASSERT_NE(scene->GetRootNode(), nullptr);
    EXPECT_STREQ(scene->GetRootNode()->GetName(), "RootNode");
    EXPECT_EQ(scene->GetRootNode()->GetScene(), scene);
    EXPECT_EQ(scene->GetGlobalSettings().UnitScaleFactor.Get(), 1.0);
    EXPECT_EQ(scene->GetGlobalSettings().DefaultCamera.Get(), "Producer Perspective");
}

TEST_F(ManagerFixture, NameBehindNamespace) {
    FbxNode* node = FbxNode::Create(scene, "Model::Cube");
    EXPECT_STREQ(node->GetName(), "Cube");
    EXPECT_EQ(node->GetNameWithNameSpace(), "Model::Cube");
    EXPECT_EQ(node->GetNameSpacePrefix(), "Model");
    EXPECT_STREQ(FbxNode::Create(scene, "Plain")->GetName(), "Plain");
}

TEST_F(ManagerFixture, PropertyTreeFindWalksSeparatedNames) {
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

TEST_F(ManagerFixture, InvalidPropertyLeavesOutValueAlone) {
    FbxNode* node = FbxNode::Create(scene, "n");
    FbxProperty missing = node->FindProperty("NotAProperty");
    EXPECT_FALSE(missing.IsValid());
    EXPECT_FALSE(FbxProperty().IsValid());
    double value = 7.5;
    EXPECT_FALSE(missing.Get(&value, eFbxDouble));
    EXPECT_EQ(value, 7.5);
    // A reference property has no value either.
    EXPECT_FALSE(node->LookAtProperty.Get(&value, eFbxDouble));
    EXPECT_EQ(value, 7.5);
}

TEST_F(ManagerFixture, GetConvertsBetweenTypes) {
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
}

TEST_F(ManagerFixture, ConnectionsKeepOrderAndFilterByClass) {
    FbxNode* parent = FbxNode::Create(scene, "parent");
    FbxNode* a = FbxNode::Create(scene, "a");
    FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
    FbxNode* b = FbxNode::Create(scene, "b");
    parent->ConnectSrcObject(a);
    parent->ConnectSrcObject(mesh);
    parent->ConnectSrcObject(b);
    EXPECT_EQ(parent->GetSrcObjectCount(), 3);
    EXPECT_EQ(parent->GetChildCount(), 2);
    EXPECT_EQ(parent->GetChild(0), a);
    EXPECT_EQ(parent->GetChild(1), b);
    EXPECT_EQ(parent->GetChild(2), nullptr);
    EXPECT_EQ(parent->GetChild(-1), nullptr);
    EXPECT_EQ(parent->GetSrcObject<FbxGeometry>(0), mesh);  // a subclass matches
    EXPECT_EQ(parent->GetNodeAttribute(), mesh);            // the first attribute becomes the default one
    EXPECT_EQ(b->GetParent(), parent);
    EXPECT_EQ(mesh->GetNode(), parent);
    b->Destroy();
    EXPECT_EQ(parent->GetChildCount(), 1);
    EXPECT_EQ(parent->GetSrcObject(1), mesh);
}

TEST_F(ManagerFixture, PropertyConnectionsAreNotObjectConnections) {
    FbxNode* node = FbxNode::Create(scene, "n");
    FbxObject* curveNode = FbxObject::Create(scene, "cn");
    node->LclTranslation.ConnectSrcObject(curveNode);
    EXPECT_EQ(node->LclTranslation.GetSrcObjectCount(), 1);
    EXPECT_EQ(node->GetSrcObjectCount(), 0);
    EXPECT_EQ(curveNode->GetDstPropertyCount(), 1);
    EXPECT_EQ(curveNode->GetDstProperty(0), node->LclTranslation);
    EXPECT_EQ(curveNode->GetDstObjectCount(), 1);  // the scene that owns it
}

TEST_F(ManagerFixture, RecursiveChildCountFollowsTheTree) {
    FbxNode* root = scene->GetRootNode();
    FbxNode* a = FbxNode::Create(scene, "a");
    FbxNode* b = FbxNode::Create(scene, "b");
    FbxNode* c = FbxNode::Create(scene, "c");
    root->AddChild(a);
    a->AddChild(b);
    b->AddChild(c);
    EXPECT_EQ(root->GetChildCount(false), 1);
    EXPECT_EQ(root->GetChildCount(true), 3);
    c->AddChild(b);  // AddChild moves a node: b leaves a
    EXPECT_EQ(a->GetChildCount(), 0);
    EXPECT_EQ(b->GetParent(), c);
}

TEST_F(ManagerFixture, ClassRegistryFindsFileRecords) {
    struct Row {
        const char* record;
        const char* subType;
        const FbxClassId* expected;
    };
    const Row rows[] = {
        {"Model", "", &FbxNode::ClassId},
        {"Geometry", "Mesh", &FbxMesh::ClassId},
        {"Geometry", "Shape", &FbxShape::ClassId},
        {"Deformer", "BlendShapeChannel", &FbxBlendShapeChannel::ClassId},
        {"NodeAttribute", "Light", &FbxLight::ClassId},
        {"Geometry", "NoSuchSubType", nullptr},
        {"NoSuchRecord", "", nullptr},
    };
    for (const Row& row : rows) EXPECT_EQ(manager->FindClass(row.record, row.subType), row.expected) << row.record;
    EXPECT_EQ(manager->FindClass("FbxCluster"), &FbxCluster::ClassId);
    EXPECT_EQ(manager->FindClass("FbxNoSuchClass"), nullptr);
    EXPECT_TRUE(FbxCluster::ClassId.Is(FbxSubDeformer::ClassId));
    EXPECT_FALSE(FbxCluster::ClassId.Is(FbxDeformer::ClassId));
}

TEST_F(ManagerFixture, IOSettingsPathsMakeGroups) {
    FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
    const char* path = "Import|AdvOptGrp|FileFormat|Fbx|Animation";
    EXPECT_TRUE(settings->GetBoolProp(path, true));
    settings->SetBoolProp(path, false);
    EXPECT_FALSE(settings->GetBoolProp(path, true));
    settings->SetStringProp("Import|AdvOptGrp|FileFormat|Fbx|Password", "secret");
    EXPECT_EQ(settings->GetStringProp("Import|AdvOptGrp|FileFormat|Fbx|Password", ""), "secret");
    EXPECT_FALSE(settings->GetBoolProp("Import|AdvOptGrp|FileFormat|Fbx|Material", false));
}

}  // namespace

namespace {

// Children by index while the list changes between look-ups: a walk that resumes from
// the last child found must still see removals, insertions and other kinds of sources.
TEST_F(ManagerFixture, ChildrenByIndexFollowRemovalsAndAdditions) {
    FbxNode* parent = FbxNode::Create(scene, "parent");
    FbxNode* kids[4];
    for (int i = 0; i < 4; ++i) {
        kids[i] = FbxNode::Create(scene, ("kid" + std::to_string(i)).c_str());
        parent->AddChild(kids[i]);
        // A source of another kind between children does not count as one.
        parent->ConnectSrcObject(FbxMesh::Create(scene, ""));
    }
    for (int i = 0; i < 4; ++i) EXPECT_EQ(parent->GetChild(i), kids[i]);
    ASSERT_EQ(parent->GetChildCount(), 4);

    parent->RemoveChild(kids[1]);  // kid0 kid2 kid3
    EXPECT_EQ(parent->GetChildCount(), 3);
    EXPECT_EQ(parent->GetChild(1), kids[2]);
    EXPECT_EQ(parent->GetChild(2), kids[3]);
    EXPECT_EQ(parent->GetChild(3), nullptr);
    parent->AddChild(kids[1]);  // kid0 kid2 kid3 kid1
    EXPECT_EQ(parent->GetChildCount(), 4);
    EXPECT_EQ(parent->GetChild(3), kids[1]);
    EXPECT_EQ(parent->GetChild(0), kids[0]);  // backwards from the last look-up
    EXPECT_EQ(parent->GetSrcObjectCount<FbxMesh>(), 4);
}

}  // namespace
