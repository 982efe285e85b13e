// Unique node names: breadth first from the root, ".NNN" counters, names already taken
// skipped, the first occurrence nearest the root keeping its name.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbximport/fbx_node_walk.h"
#include "import_test_support.h"

namespace {

struct TreeNode {
    const char* name;
    int parent;  // index of an earlier entry; -1 for a child of the root node
};

struct NamesCase {
    const char* label;
    std::vector<TreeNode> tree;
    std::vector<std::string> expected;  // names after the pass, in the order of `tree`
};

class MakeNodeNamesUniqueTest : public testing::TestWithParam<NamesCase> {};

TEST_P(MakeNodeNamesUniqueTest, RenamesLaterOccurrences) {
    const NamesCase& c = GetParam();
    FbxTestScene doc;
    std::vector<FbxNode*> nodes;
    for (const TreeNode& entry : c.tree)
        nodes.push_back(doc.Node(entry.name, entry.parent < 0 ? nullptr : nodes[size_t(entry.parent)]));

    MakeNodeNamesUnique(doc.Root());

    ASSERT_EQ(nodes.size(), c.expected.size());
    for (size_t k = 0; k < nodes.size(); ++k) EXPECT_EQ(nodes[k]->GetName(), c.expected[k]) << "node " << k;
    EXPECT_STREQ(doc.Root()->GetName(), "RootNode");
}

INSTANTIATE_TEST_SUITE_P(
    Trees, MakeNodeNamesUniqueTest,
    testing::Values(
        NamesCase{"TwoSiblings", {{"a", -1}, {"a", -1}}, {"a", "a.001"}},
        NamesCase{"ThirdOccurrence", {{"foot", -1}, {"foot", -1}, {"foot", -1}}, {"foot", "foot.001", "foot.002"}},
        // "a.001" stands before the second "a": that "a" tries "a.001", finds it taken, takes "a.002".
        NamesCase{"SuffixSeenFirst", {{"a.001", -1}, {"a", -1}, {"a", -1}}, {"a.001", "a", "a.002"}},
        // The second "a" takes "a.001" first; the real "a.001", deeper, is then renamed in turn.
        NamesCase{"SuffixSeenLater", {{"a", -1}, {"a", -1}, {"b", -1}, {"a.001", 2}},
                  {"a", "a.001", "b", "a.001.001"}},
        // Breadth first: the "dup" directly below the root is met before the one below "p",
        // although a depth-first walk would reach the deeper one first.
        NamesCase{"BreadthFirst", {{"p", -1}, {"dup", 0}, {"dup", -1}}, {"p", "dup.001", "dup"}},
        // The root's name is in the set like any other.
        NamesCase{"RootNameTaken", {{"RootNode", -1}}, {"RootNode.001"}},
        NamesCase{"CountersSkipTakenNames", {{"x", -1}, {"x.001", -1}, {"x.002", -1}, {"x", -1}},
                  {"x", "x.001", "x.002", "x.003"}},
        NamesCase{"EmptyNames", {{"", -1}, {"", 0}}, {"", ".001"}},
        NamesCase{"BytesNotLetters", {{"A", -1}, {"a", -1}, {"a ", -1}}, {"A", "a", "a "}}),
    [](const testing::TestParamInfo<NamesCase>& row) { return row.param.label; });

TEST(MakeNodeNamesUnique, CountersGrowPastThreeDigits) {
    FbxTestScene doc;
    std::vector<FbxNode*> nodes;
    for (int k = 0; k < 1002; ++k) nodes.push_back(doc.Node("x"));
    MakeNodeNamesUnique(doc.Root());
    EXPECT_STREQ(nodes[0]->GetName(), "x");
    EXPECT_STREQ(nodes[7]->GetName(), "x.007");
    EXPECT_STREQ(nodes[999]->GetName(), "x.999");
    EXPECT_STREQ(nodes[1000]->GetName(), "x.1000");
    EXPECT_STREQ(nodes[1001]->GetName(), "x.1001");
}

TEST(MakeNodeNamesUnique, OtherObjectsKeepTheirNames) {
    FbxTestScene doc;
    FbxNode* node = doc.Node("shape");
    FbxNode* twin = doc.Node("shape");
    FbxNull* attribute = FbxNull::Create(doc.Scene(), "shape");
    twin->SetNodeAttribute(attribute);
    MakeNodeNamesUnique(doc.Root());
    EXPECT_STREQ(node->GetName(), "shape");
    EXPECT_STREQ(twin->GetName(), "shape.001");
    EXPECT_STREQ(attribute->GetName(), "shape");
}

}  // namespace
