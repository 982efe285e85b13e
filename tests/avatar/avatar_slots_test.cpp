// The slot layout below geo_GRP: names, order, grouping, reuse of the source's own nodes and
// the removal of head_GRP.
#include <gtest/gtest.h>

#include <set>

#include "avatar/avatar_slots.h"

namespace {
// A converted source tree as the node walk leaves it: every node in nodesByName.
struct SourceTree {
    Scene scene;
    NodesByName nodesByName;
    uint64_t nextId = 1000;
    int idsIssued = 0;
    NewNodeId newId = [this] {
        ++idsIssued;
        return nextId++;
    };

    SourceTree() {
        scene.root = new GraphNode;
        scene.root->name = "RootNode";
    }
    GraphNode* Add(GraphNode* parent, const std::string& name) {
        auto* node = new GraphNode;
        node->name = name;
        node->id = nextId++;
        parent->AddChild(node);
        nodesByName[name] = node;
        return node;
    }
    GroupNodes Build() { return BuildAvatarSlots(scene, newId, nodesByName); }
};

std::vector<std::string> Names(const std::vector<GraphNode*>& nodes) {
    std::vector<std::string> names;
    for (const GraphNode* node : nodes) names.push_back(node->name);
    return names;
}

const std::vector<GraphNode*>& Group(const GroupNodes& groups, std::string_view name) {
    const SlotGroup* group = FindSlotGroup(groups, name);
    EXPECT_NE(group, nullptr) << name;
    static const std::vector<GraphNode*> none;
    return group ? group->nodes : none;
}

int CountNamed(const GraphNode* node, const std::string& name) {
    int count = node->name == name ? 1 : 0;
    for (const GraphNode* child : node->children) count += CountNamed(child, name);
    return count;
}

bool HasPlaceholder(const GraphNode* node) { return node->geometry && node->geometry->name == "dummy_mesh"; }

const std::vector<std::string> kGroupNodeNames = {
    "universal_head_head_GRP", "universal_head_mouth_GRP", "universal_head_facial_hair_GRP",
    "browringL_GRP", "browringR_GRP", "earringL_GRP", "earringR_GRP", "nosering_GRP", "mouthring_GRP",
    "tonguering_GRP",
};
}  // namespace

TEST(AvatarSlotsTest, BuildsTheSixtyTwoSlotsInTheirGroupsAndDropsHeadGroup) {
    SourceTree tree;
    GraphNode* geo = tree.Add(tree.scene.root, "geo_GRP");
    GraphNode* head = tree.Add(geo, "head_GRP");
    tree.Add(head, "C_head_GEO");  // the source's own head mesh, soon replaced
    tree.Add(tree.scene.root, "rig_GRP");

    const GroupNodes groups = tree.Build();

    // Groups in order of first filling, with the slot counts of the layout:
    // 2 sides x 4 letters x 3 parts = 24 brow rings, 2 sides x 8 positions = 16 ear rings,
    // 3 + 4 + 3 + 1 = 11 mouth rings.
    const std::vector<std::pair<std::string, size_t>> expected = {
        {"head", 1},     {"headMouth", 1}, {"brow", 1},     {"eyelash", 1},     {"facial_hair", 1},
        {"browring", 24}, {"earring", 16},  {"nosering", 5}, {"mouthring", 11}, {"tonguering", 1},
    };
    std::vector<std::pair<std::string, size_t>> actual;
    for (const SlotGroup& group : groups) actual.emplace_back(group.name, group.nodes.size());
    EXPECT_EQ(actual, expected);

    EXPECT_EQ(Names(geo->children), kGroupNodeNames);  // head_GRP is gone
    EXPECT_EQ(Names(geo->children[0]->children),
              (std::vector<std::string>{"C_head_GEO", "C_brow_GEO", "universal_head_eyelash_GEO"}));
    EXPECT_EQ(Names(Group(groups, "headMouth")), std::vector<std::string>{"C_headMouth_GEO"});
    EXPECT_EQ(Names(Group(groups, "facial_hair")), std::vector<std::string>{"C_facial_hair_GEO"});
    EXPECT_EQ(Names(Group(groups, "tonguering")), std::vector<std::string>{"C_tongueringmid_GEO"});

    const auto browrings = Names(Group(groups, "browring"));
    ASSERT_EQ(browrings.size(), 24u);
    EXPECT_EQ(std::vector<std::string>(browrings.begin(), browrings.begin() + 4),
              (std::vector<std::string>{"C_browringLARing_GEO", "C_browringLATop_GEO", "C_browringLABottom_GEO",
                                        "C_browringLBRing_GEO"}));
    EXPECT_EQ(browrings[12], "C_browringRARing_GEO");  // 4 letters x 3 parts on the left first
    EXPECT_EQ(browrings[23], "C_browringRDBottom_GEO");

    const auto earrings = Names(Group(groups, "earring"));
    ASSERT_EQ(earrings.size(), 16u);
    EXPECT_EQ(earrings[0], "C_earringLcartilage1_GEO");
    EXPECT_EQ(earrings[7], "C_earringLhearingAid_GEO");
    EXPECT_EQ(earrings[8], "C_earringRcartilage1_GEO");
    EXPECT_EQ(earrings[13], "C_earringRtragus1_GEO");

    EXPECT_EQ(Names(Group(groups, "nosering")),
              (std::vector<std::string>{"C_noseringseptum_GEO", "C_noseringnostrilL_GEO", "C_noseringnostrilR_GEO",
                                        "C_noseringnostrilHighL_GEO", "C_noseringnostrilHighR_GEO"}));
    EXPECT_EQ(Names(Group(groups, "mouthring")),
              (std::vector<std::string>{
                  "C_mouthringtopL_GEO", "C_mouthringtopCenter_GEO", "C_mouthringtopR_GEO",
                  "C_mouthringbottomRing1L_GEO", "C_mouthringbottomRing1R_GEO", "C_mouthringbottomRing2L_GEO",
                  "C_mouthringbottomRing2R_GEO", "C_mouthringbottomStudL_GEO", "C_mouthringbottomStudCenter_GEO",
                  "C_mouthringbottomStudR_GEO", "C_mouthringbottomRingC1_GEO"}));

    // Every new node, group nodes included, has a placeholder, an id of its own from the
    // document and an entry in nodesByName (which now names the slot, not the removed mesh).
    std::set<uint64_t> ids;
    for (const GraphNode* groupNode : geo->children) {
        EXPECT_TRUE(HasPlaceholder(groupNode)) << groupNode->name;
        ids.insert(groupNode->id);
        EXPECT_EQ(tree.nodesByName.at(groupNode->name), groupNode);
    }
    for (const SlotGroup& group : groups) {
        for (const GraphNode* slot : group.nodes) {
            EXPECT_TRUE(HasPlaceholder(slot)) << slot->name;
            EXPECT_EQ(slot->parent->parent, geo) << slot->name;
            EXPECT_EQ(tree.nodesByName.at(slot->name), slot);
            ids.insert(slot->id);
        }
    }
    EXPECT_EQ(tree.idsIssued, 72);  // 62 slots and 10 group nodes
    EXPECT_EQ(ids.size(), 72u);
}

TEST(AvatarSlotsTest, ReusesTheSourceNodesOfTheLayoutWithoutPlaceholders) {
    SourceTree tree;
    GraphNode* geo = tree.Add(tree.scene.root, "geo_GRP");
    GraphNode* faceGroup = tree.Add(geo, "universal_head_head_GRP");
    GraphNode* headMesh = tree.Add(faceGroup, "C_head_GEO");
    // Only direct children count: a nose ring group deeper down is not the slot's group.
    GraphNode* deepNoseGroup = tree.Add(headMesh, "nosering_GRP");

    const GroupNodes groups = tree.Build();
    EXPECT_EQ(Group(groups, "head"), std::vector<GraphNode*>{headMesh});
    EXPECT_EQ(headMesh->geometry, nullptr);
    EXPECT_EQ(faceGroup->geometry, nullptr);
    EXPECT_EQ(Names(faceGroup->children),
              (std::vector<std::string>{"C_head_GEO", "C_brow_GEO", "universal_head_eyelash_GEO"}));
    EXPECT_TRUE(HasPlaceholder(faceGroup->children[1]));
    EXPECT_EQ(geo->children.size(), kGroupNodeNames.size());
    EXPECT_NE(Group(groups, "nosering").front()->parent, deepNoseGroup);
    EXPECT_EQ(tree.idsIssued, 70);  // two of the 72 nodes were there already

    // A second pass finds every node in place and makes nothing.
    const GroupNodes again = tree.Build();
    EXPECT_EQ(tree.idsIssued, 70);
    ASSERT_EQ(again.size(), groups.size());
    for (size_t i = 0; i < groups.size(); ++i) EXPECT_EQ(again[i].nodes, groups[i].nodes) << groups[i].name;
}

TEST(AvatarSlotsTest, RemovesHeadGroupOnlyDirectlyBelowGeoGroup) {
    enum Where { kBelowGeo, kBelowRoot, kDeeperBelowGeo, kAbsent };
    struct Case {
        const char* label;
        Where where;
        bool removed;
    };
    const Case cases[] = {
        {"below geo_GRP", kBelowGeo, true},
        {"below the root", kBelowRoot, false},
        {"below a child of geo_GRP", kDeeperBelowGeo, false},
        {"absent", kAbsent, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        SourceTree tree;
        GraphNode* geo = tree.Add(tree.scene.root, "geo_GRP");
        GraphNode* body = tree.Add(geo, "body_GRP");
        GraphNode* parent = c.where == kBelowGeo ? geo : c.where == kBelowRoot ? tree.scene.root : body;
        if (c.where != kAbsent) tree.Add(tree.Add(parent, "head_GRP"), "C_eyes_GEO");

        const GroupNodes groups = tree.Build();
        size_t slots = 0;
        for (const SlotGroup& group : groups) slots += group.nodes.size();
        EXPECT_EQ(slots, 62u);
        EXPECT_EQ(CountNamed(tree.scene.root, "head_GRP"), c.where == kAbsent || c.removed ? 0 : 1);
        EXPECT_EQ(CountNamed(tree.scene.root, "C_eyes_GEO"), c.where == kAbsent || c.removed ? 0 : 1);
        EXPECT_EQ(CountNamed(tree.scene.root, "body_GRP"), 1);
    }
}

TEST(AvatarSlotsTest, MissingGeoGroupIsFatal) {
    SourceTree tree;
    GraphNode* other = tree.Add(tree.scene.root, "rig_GRP");

    testing::internal::CaptureStderr();
    EXPECT_EQ(EnsureSlot(tree.scene, tree.newId, tree.nodesByName, "nosering", "noseringseptum"), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: Couldn't find 'geo_GRP' node?\n");
    EXPECT_TRUE(other->children.empty());
    EXPECT_EQ(tree.idsIssued, 0);

    EXPECT_EXIT(tree.Build(), testing::ExitedWithCode(1), "^ERROR: Couldn't find 'geo_GRP' node\\?\n$");
}
