// The morph weight transfer: source meshes and their channels as read from a document, the
// bindings of the ten groups with their console lines, and the weight tracks and Morphs of
// the slots.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "avatar/avatar_tables.h"
#include "avatar/morph_transfer.h"
#include "avatar/placeholder.h"
#include "fbx/fbx_anim.h"
#include "fbx/fbx_deformer.h"
#include "fbx/fbx_geometry.h"
#include "fbx_test_scene.h"

namespace {

// A document whose meshes carry blend shapes, one per list of channel names.
class SourceDocument : public FbxTestScene {
public:
    FbxMesh* Mesh(FbxNode* node, const std::vector<std::vector<std::string>>& blendShapes) const {
        FbxMesh* mesh = FbxMesh::Create(Scene(), "");
        node->SetNodeAttribute(mesh);
        for (const std::vector<std::string>& channels : blendShapes) {
            FbxBlendShape* blendShape = FbxBlendShape::Create(Scene(), "");
            mesh->ConnectSrcObject(blendShape);
            for (const std::string& name : channels)
                blendShape->ConnectSrcObject(FbxBlendShapeChannel::Create(Scene(), name.c_str()));
        }
        return mesh;
    }
};

std::vector<std::string> Keys(const ChannelCurves& channels) {
    std::vector<std::string> names;
    for (const auto& [name, curve] : channels) names.push_back(name);
    return names;
}

TEST(CollectSourceChannels, MeshesNamedCGeoWithTheirChannelsCutAtTheFirstDot) {
    SourceDocument doc;
    FbxAnimLayer* layer = doc.AddStack("take");
    FbxMesh* head = doc.Mesh(doc.Node("C_head_GEO"),
                             {{"blendShape1.ai_jawOpen", "ai_noseSneer_L", "a.b.c"}, {"second.ai_jawOpen"}});
    doc.Mesh(doc.Node("universal_head_eyelash_GEO"), {{"x.ai_eyeIrisUp_L"}});  // no C_ prefix
    doc.Mesh(doc.Node("C_GEO"), {});                                           // no blend shape
    doc.Node("C_face_GEO");                                                    // not a mesh
    doc.Mesh(doc.Node("C_brow_GEO"), {{"b.ai_browDown_L"}});
    // A keyed channel: its curve is the one found.
    FbxAnimCurve* keyed = head->GetShapeChannel(0, 0, layer, true);
    keyed->KeySetValue(keyed->KeyAdd(FbxTime(0)), 50.0f);

    testing::internal::CaptureStdout();
    const SourceChannels sources = CollectSourceChannels(doc.Scene());
    const std::string out = testing::internal::GetCapturedStdout();

    EXPECT_EQ(out,
              "SOURCE MESH NAME: head\n  ai_jawOpen\n  ai_noseSneer_L\n  b.c\n  ai_jawOpen\n"
              "SOURCE MESH NAME: GEO\n"
              "SOURCE MESH NAME: brow\n  ai_browDown_L\n");
    ASSERT_EQ(sources.size(), 2u);
    ASSERT_NE(sources.Find("head"), nullptr);
    ASSERT_NE(sources.Find("brow"), nullptr);
    EXPECT_EQ(sources.Find("GEO"), nullptr);
    // ai_jawOpen keeps its first place; the second blend shape's curve replaces the first.
    const ChannelCurves& channels = *sources.Find("head");
    EXPECT_EQ(Keys(channels), (std::vector<std::string>{"ai_jawOpen", "ai_noseSneer_L", "b.c"}));
    EXPECT_EQ(*channels.Find("ai_jawOpen"), head->GetShapeChannel(1, 0, layer, false));
    EXPECT_NE(*channels.Find("ai_jawOpen"), keyed);
    // Channels without animation get an empty curve on the layer, never null.
    FbxAnimCurve* const* sneer = channels.Find("ai_noseSneer_L");
    ASSERT_NE(*sneer, nullptr);
    EXPECT_EQ((*sneer)->KeyGetCount(), 0);
    EXPECT_EQ(*sneer, head->GetShapeChannel(0, 1, layer, false));
}

TEST(BindGroupChannels, ChannelsOfTheSourceMeshOrOfHead) {
    SourceDocument doc;
    FbxAnimCurve* jaw = FbxAnimCurve::Create(doc.Scene(), "");
    FbxAnimCurve* headBrow = FbxAnimCurve::Create(doc.Scene(), "");
    FbxAnimCurve* ownBrow = FbxAnimCurve::Create(doc.Scene(), "");
    SourceChannels sources;
    sources["head"]["ai_jawOpen"] = jaw;
    sources["head"]["ai_browDown_L"] = headBrow;
    sources["brow"]["ai_browDown_L"] = ownBrow;
    testing::internal::CaptureStdout();
    const GroupChannelBindings bindings = BindGroupChannels(sources);
    const std::string out = testing::internal::GetCapturedStdout();
    // The lines of one group, from its TargetName line to the next one.
    const auto block = [&out](const std::string& group) {
        const size_t start = out.find("TargetName : " + group + "\n");
        return start == std::string::npos ? "" : out.substr(start, out.find("TargetName : ", start + 1) - start);
    };

    EXPECT_EQ(block("earring"),
              "TargetName : earring\nSourceName : head\ntargetMorphTargets size: 1\nsourceMorphTargets size: 2\n"
              "  ai_jawOpen  FOUND\n");
    EXPECT_EQ(bindings.at("earring").names, (std::vector<std::string>{"ai_jawOpen"}));
    EXPECT_EQ(bindings.at("earring").curves, (std::vector<FbxAnimCurve*>{jaw}));

    // No C_headMouth_GEO: the head's map stands in, and none of the names is in it.
    std::string expected =
        "TargetName : headMouth\nSourceName : headMouth\ntargetMorphTargets size: 9\n"
        "Trying to use head\nhead 2\nbrow 1\n2\nsourceMorphTargets size: 2\n";
    for (const char* name : {"ai_tongueDn", "ai_tongueLeft", "ai_tongueOut", "ai_tongueRaise", "ai_tongueRight",
                             "ai_tongueUp", "ca_jawOpen", "ca_teethLowerFlat", "ca_teethUpperFlat"})
        expected += std::string("  ") + name + "  NOT FOUND\n";
    EXPECT_EQ(block("headMouth"), expected);
    EXPECT_EQ(bindings.at("headMouth").names.size(), 9u);
    EXPECT_EQ(bindings.at("headMouth").curves, std::vector<FbxAnimCurve*>(9, nullptr));

    EXPECT_EQ(bindings.at("brow").curves.at(0), ownBrow);      // ai_browDown_L of C_brow_GEO
    EXPECT_EQ(bindings.at("browring").curves.at(0), headBrow);  // ai_browDown_L of C_head_GEO
    EXPECT_EQ(bindings.at("browring").names.back(), "ai_neutral");
    EXPECT_EQ(bindings.at("browring").curves.back(), nullptr);
    // Names and curves run in the order of the morph list, found or not.
    EXPECT_EQ(bindings.at("head").names, MorphNamesForGroup("head"));
    EXPECT_EQ(bindings.at("head").curves.back(), jaw);  // ai_jawOpen ends the head's list
}

// -- Weight tracks and Morphs -------------------------------------------------------------

// Percentages as the curves give them; the tangents in percent a second.
WeightsChannel Sampled(std::span<FbxAnimCurve* const> curves) {
    WeightsChannel w;
    w.defaults.assign(curves.size(), 50.0f);
    w.interpolation = 2;
    w.times = {0.0f, 1.0f};
    w.values = {std::vector<float>(curves.size(), 10.0f), std::vector<float>(curves.size(), 100.0f)};
    w.inTangents = {std::vector<float>(curves.size(), 0.0f), std::vector<float>(curves.size(), 30.0f)};
    w.outTangents = w.inTangents;
    return w;
}

TEST(TransferMorphAnimation, EverySlotGetsItsGroupsWeightsInOutputUnitsAndAMorphOfItsOwn) {
    // Slots 11 and 12 of the earring group with placeholders, 13 of the brow group without.
    Scene scene;
    scene.root = new GraphNode;
    std::vector<GraphNode*> slots;
    for (uint64_t id : {11u, 12u, 13u}) {
        slots.push_back(new GraphNode);
        slots.back()->id = id;
        if (id != 13u) slots.back()->geometry = MakePlaceholderGeometry(scene);
        scene.root->AddChild(slots.back());
    }
    GroupChannelBindings bindings;
    bindings["earring"] = GroupChannelBinding{{"ai_jawOpen"}, {nullptr}};
    bindings["brow"] = GroupChannelBinding{{"ai_browDown_L", "ai_browUp_L"}, {nullptr, nullptr}};
    const GroupNodes groups = {SlotGroup{"earring", {slots[0], slots[1]}}, SlotGroup{"brow", {slots[2]}}};
    TakeTracks take;
    take.TrackFor(99).rotation.times = {0.0f};  // a node track made before
    take.TrackFor(12);                          // a slot that already has a track keeps it
    TransferMorphAnimation(scene, groups, bindings, take, Sampled);

    std::vector<uint64_t> ids;
    for (const AnimationTrack& track : take.tracks) ids.push_back(track.nodeId);
    EXPECT_EQ(ids, (std::vector<uint64_t>{99, 12, 11, 13}));
    const WeightsChannel& w = take.tracks[take.index.at(11)].weights;
    // 10 % and 100 % are 0.1 and 1: 10 * 0.01 in double rounds to 0.1f (in float it would
    // give 0.099999994). 30 % a second is 0.3 a second, 0.30000001192 as a float.
    EXPECT_EQ(w.values, (std::vector<std::vector<float>>{{0.1f}, {1.0f}}));
    EXPECT_EQ(w.inTangents, (std::vector<std::vector<float>>{{0.0f}, {0.3f}}));
    EXPECT_EQ(w.outTangents, w.inTangents);
    EXPECT_EQ(w.defaults, (std::vector<float>{50.0f}));  // defaults stay as sampled
    EXPECT_EQ(take.tracks[take.index.at(13)].weights.values[0].size(), 2u);  // no geometry: a track all the same

    Morph* a = slots[0]->geometry->meshInstances.at(0)->morph;
    Morph* b = slots[1]->geometry->meshInstances.at(0)->morph;
    ASSERT_TRUE(a && b && a != b);
    ASSERT_EQ(a->targets.size(), 1u);
    EXPECT_EQ(a->targets[0]->name, "face_shapes.ai_jawOpen");
    // A later take replaces the Morphs.
    TakeTracks second;
    TransferMorphAnimation(scene, groups, bindings, second, Sampled);
    EXPECT_NE(slots[0]->geometry->meshInstances.at(0)->morph, a);
}

}  // namespace
