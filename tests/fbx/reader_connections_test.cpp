// Connections of all types: ids that resolve, ids and property names that do not,
// the root node as id 0, the deliberate duplicates, and graphs that are not trees.
#include <gtest/gtest.h>

#include "fbx/fbx_anim.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_material.h"
#include "model_test_util.h"

namespace modeltest {
namespace {

using fbxwriter::ConnectionOO;
using fbxwriter::ConnectionOP;
using fbxwriter::ConnectionPO;
using fbxwriter::ConnectionPP;

// Two nodes, a curve node, a mesh, a material, a layered texture and a texture.
FileParts Graph() {
    FileParts parts;
    parts.objects.Child(Object("Model", 1, "Parent", "Model", "Null"));
    parts.objects.Child(Object("Model", 2, "Child", "Model", "Mesh"));
    Record curveNode = Object("AnimationCurveNode", 3, "T", "AnimCurveNode", "");
    P(curveNode, "d|X", "Number", "", "A").Double(0);
    parts.objects.Child(curveNode);
    parts.objects.Child(Object("Geometry", 4, "Mesh", "Geometry", "Mesh"));
    parts.objects.Child(Object("Material", 5, "Paint", "Material", ""));
    parts.objects.Child(Object("LayeredTexture", 6, "Layers", "LayeredTexture", ""));
    parts.objects.Child(Object("Texture", 7, "Image", "Texture", ""));
    return parts;
}

TEST(ConnectionTest, EachTypeJoinsTheRightEnds) {
    FileParts parts = Graph();
    Record& c = parts.connections;
    c.Child(ConnectionOO(1, 0));                                 // top-level node under the root
    c.Child(ConnectionOO(2, 1));                                 // child node
    c.Child(ConnectionOP(3, 2, "Lcl Translation"));              // curve node onto a property
    c.Child(ConnectionPO(2, "Lcl Rotation", 1));                 // property onto an object
    c.Child(ConnectionPP(3, "d|X", 1, "Visibility"));            // property onto property
    c.Child(ConnectionOO(4, 2));                                 // attribute of the child
    auto file = Import(parts);
    ASSERT_TRUE(file->ok) << file->Status().GetErrorString();
    FbxNode* parent = file->Find<FbxNode>("Parent");
    FbxNode* child = file->Find<FbxNode>("Child");
    FbxObject* curveNode = file->Find("T");
    ASSERT_TRUE(parent && child && curveNode);
    FbxNode* root = file->scene->GetRootNode();
    ASSERT_EQ(root->GetChildCount(), 1);
    EXPECT_EQ(root->GetChild(0), parent);
    EXPECT_EQ(child->GetParent(), parent);
    EXPECT_EQ(child->LclTranslation.GetSrcObject(0), curveNode);
    EXPECT_EQ(parent->GetSrcPropertyCount(), 1);
    EXPECT_EQ(parent->GetSrcProperty(0), child->LclRotation);
    EXPECT_EQ(parent->Visibility.GetSrcProperty(0), curveNode->FindPropertyHierarchical("d|X"));
    EXPECT_EQ(child->GetNodeAttribute(), file->Find("Mesh"));
    // The curve node has one destination property, so it is bound to it.
    EXPECT_EQ(static_cast<FbxAnimCurveNode*>(curveNode)->GetBoundProperty(), child->LclTranslation);
}

TEST(ConnectionTest, UnknownIdsPropertiesAndTypesAreIgnored) {
    FileParts parts = Graph();
    Record& c = parts.connections;
    c.Child(ConnectionOO(999, 1));                      // unknown source
    c.Child(ConnectionOO(2, 999));                      // unknown destination
    c.Child(ConnectionOP(3, 2, "NoSuchProperty"));      // unknown property
    c.Child(ConnectionPO(2, "NoSuchProperty", 1));
    c.Child(ConnectionPP(3, "d|X", 999, "Visibility"));
    Record odd("C");
    odd.String("XX").Long(2).Long(1);  // not one of the six types
    c.Child(odd);
    Record shortOne("C");
    shortOne.String("OO");  // no ids at all
    c.Child(shortOne);
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    FbxNode* parent = file->Find<FbxNode>("Parent");
    FbxNode* child = file->Find<FbxNode>("Child");
    EXPECT_EQ(parent->GetSrcObjectCount(), 0);
    EXPECT_EQ(parent->GetSrcPropertyCount(), 0);
    EXPECT_EQ(child->GetDstObjectCount(), 1);  // the scene only
    EXPECT_EQ(child->LclTranslation.GetSrcObjectCount(), 0);
}

TEST(ConnectionTest, RepeatedConnectionsStandTwiceOnlyForMaterialsAndLayeredTextures) {
    struct Row {
        int64_t source, destination;
        const char* destinationName;
        int expected;  // connections from source to destination after two records
    };
    const Row rows[] = {
        {5, 2, "Child", 2},   // material on a node
        {7, 6, "Layers", 2},  // texture in a layered texture
        {4, 2, "Child", 1},   // geometry on a node
        {2, 1, "Parent", 1},  // child node
    };
    for (const Row& row : rows) {
        FileParts parts = Graph();
        parts.connections.Child(ConnectionOO(row.source, row.destination));
        parts.connections.Child(ConnectionOO(row.source, row.destination));
        auto file = Import(parts);
        ASSERT_TRUE(file->ok);
        FbxObject* dst = file->Find(row.destinationName);
        EXPECT_EQ(dst->GetSrcObjectCount(), row.expected) << row.source << " -> " << row.destination;
    }
}

TEST(ConnectionTest, SelfConnectionsAndNodeCyclesAreCut) {
    FileParts parts = Graph();
    Record& c = parts.connections;
    c.Child(ConnectionOO(1, 1));  // a node as its own child
    c.Child(ConnectionOO(1, 0));
    c.Child(ConnectionOO(2, 1));
    c.Child(ConnectionOO(1, 2));  // closes the cycle 1 -> 2 -> 1
    c.Child(ConnectionOP(3, 3, "d|X"));  // an object onto its own property
    auto file = Import(parts);
    ASSERT_TRUE(file->ok);
    FbxNode* parent = file->Find<FbxNode>("Parent");
    FbxNode* child = file->Find<FbxNode>("Child");
    // Walking up from any node ends at the root.
    for (FbxNode* n : {parent, child}) {
        int steps = 0;
        for (FbxNode* up = n; up && steps < 10; up = up->GetParent()) ++steps;
        EXPECT_LT(steps, 10) << n->GetName();
    }
    EXPECT_EQ(file->scene->GetRootNode()->GetChildCount(true), 2);
    EXPECT_EQ(file->Find("T")->FindPropertyHierarchical("d|X").GetSrcObjectCount(), 0);
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

}  // namespace
}  // namespace modeltest
