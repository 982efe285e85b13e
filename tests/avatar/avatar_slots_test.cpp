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
    NewNodeId newId = [this] { return ++idsIssued, nextId++; };

    SourceTree() { scene.root = new GraphNode; }
    GraphNode* Add(GraphNode* parent, const std::string& name) {
        auto* node = new GraphNode;
        node->name = name;
        node->id = nextId++;
        parent->AddChild(node);
        return nodesByName[name] = node;
    }
    GroupNodes Build() { return BuildAvatarSlots(scene, newId, nodesByName); }
};

// The nodes' names, one space after each.
std::string Names(const std::vector<GraphNode*>& nodes, size_t from = 0, size_t count = 100) {
    std::string names;
    for (size_t k = from; k < nodes.size() && k < from + count; ++k) names += nodes[k]->name + " ";
    return names;
}
int CountNamed(const GraphNode* node, const std::string& name) {
    int count = node->name == name;
    for (const GraphNode* child : node->children) count += CountNamed(child, name);
    return count;
}

TEST(AvatarSlotsTest, BuildsTheSixtyTwoSlotsInTheirGroups) {
    SourceTree tree;
    GraphNode* geo = tree.Add(tree.scene.root, "geo_GRP");
    tree.Add(tree.Add(geo, "head_GRP"), "C_head_GEO");  // the source's own head mesh goes

    const GroupNodes groups = tree.Build();
    // Order of first filling; 2 sides x 4 letters x 3 parts brow rings, 2 sides x 8 positions
    // ear rings, 3 + 4 + 3 + 1 mouth rings.
    std::string sizes;
    for (const SlotGroup& group : groups) sizes += group.name + " " + std::to_string(group.nodes.size()) + ",";
    EXPECT_EQ(sizes, "head 1,headMouth 1,brow 1,eyelash 1,facial_hair 1,browring 24,earring 16,nosering 5,"
                     "mouthring 11,tonguering 1,");
    EXPECT_EQ(Names(geo->children), "universal_head_head_GRP universal_head_mouth_GRP universal_head_facial_hair_GRP "
                                    "browringL_GRP browringR_GRP earringL_GRP earringR_GRP nosering_GRP "
                                    "mouthring_GRP tonguering_GRP ");
    EXPECT_EQ(Names(geo->children[0]->children), "C_head_GEO C_brow_GEO universal_head_eyelash_GEO ");
    EXPECT_EQ(Names(geo->children[1]->children), "C_headMouth_GEO ");
    EXPECT_EQ(Names(groups[5].nodes, 0, 4),
              "C_browringLARing_GEO C_browringLATop_GEO C_browringLABottom_GEO C_browringLBRing_GEO ");
    EXPECT_EQ(Names(groups[5].nodes, 12, 1), "C_browringRARing_GEO ");  // the left side's 4 x 3 first
    EXPECT_EQ(Names(groups[6].nodes, 7, 2), "C_earringLhearingAid_GEO C_earringRcartilage1_GEO ");
    EXPECT_EQ(Names(groups[8].nodes),
              "C_mouthringtopL_GEO C_mouthringtopCenter_GEO C_mouthringtopR_GEO C_mouthringbottomRing1L_GEO "
              "C_mouthringbottomRing1R_GEO C_mouthringbottomRing2L_GEO C_mouthringbottomRing2R_GEO "
              "C_mouthringbottomStudL_GEO C_mouthringbottomStudCenter_GEO C_mouthringbottomStudR_GEO "
              "C_mouthringbottomRingC1_GEO ");

    // Every new node, group nodes too, has a placeholder, an id of its own and an entry in
    // nodesByName, which now names the new C_head_GEO rather than the removed one.
    std::set<uint64_t> ids;
    for (const GraphNode* groupNode : geo->children) {
        std::vector<const GraphNode*> made(groupNode->children.begin(), groupNode->children.end());
        made.push_back(groupNode);
        for (const GraphNode* node : made) {
            EXPECT_TRUE(node->geometry && node->geometry->name == "dummy_mesh") << node->name;
            EXPECT_EQ(tree.nodesByName.at(node->name), node) << node->name;
            ids.insert(node->id);
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
    tree.Add(headMesh, "nosering_GRP");  // not directly below geo_GRP: no match

    const GroupNodes groups = tree.Build();
    EXPECT_EQ(groups[0].nodes, std::vector<GraphNode*>{headMesh});
    EXPECT_TRUE(headMesh->geometry == nullptr && faceGroup->geometry == nullptr);
    EXPECT_EQ(Names(faceGroup->children), "C_head_GEO C_brow_GEO universal_head_eyelash_GEO ");
    EXPECT_EQ(CountNamed(geo, "nosering_GRP"), 2);
    EXPECT_EQ(tree.idsIssued, 70);  // two of the 72 nodes were there already

    // A second pass finds every node in place and makes nothing.
    const GroupNodes again = tree.Build();
    EXPECT_EQ(tree.idsIssued, 70);
    for (size_t i = 0; i < groups.size(); ++i) EXPECT_EQ(again.at(i).nodes, groups[i].nodes) << groups[i].name;
}

TEST(AvatarSlotsTest, RemovesHeadGroupOnlyDirectlyBelowGeoGroup) {
    // Where head_GRP stands: 0 below geo_GRP, 1 below the root, 2 below body_GRP, 3 nowhere.
    for (int where = 0; where < 4; ++where) {
        SourceTree tree;
        GraphNode* geo = tree.Add(tree.scene.root, "geo_GRP");
        GraphNode* parents[] = {geo, tree.scene.root, tree.Add(geo, "body_GRP")};
        if (where < 3) tree.Add(tree.Add(parents[where], "head_GRP"), "C_eyes_GEO");
        EXPECT_EQ(tree.Build().size(), 10u);
        const int stays = where == 1 || where == 2;
        EXPECT_EQ(CountNamed(tree.scene.root, "head_GRP") + CountNamed(tree.scene.root, "C_eyes_GEO"), 2 * stays);
        EXPECT_EQ(CountNamed(tree.scene.root, "body_GRP"), 1) << where;
    }
}

}  // namespace
