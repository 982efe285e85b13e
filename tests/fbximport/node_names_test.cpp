// Unique node names (cases in data/node_names.txt), counters past three digits, and node
// attributes that keep their names.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbximport/fbx_node_walk.h"
#include "import_test_support.h"

namespace {

class MakeNodeNamesUniqueTest : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(MakeNodeNamesUniqueTest, RenamesLaterOccurrences) {
    const std::vector<std::string> names = GetParam().Items(1), expected = GetParam().Items(3);
    const std::vector<float> parents = GetParam().Floats(2);
    FbxTestScene doc;
    std::vector<FbxNode*> nodes;
    for (size_t k = 0; k < names.size(); ++k)
        nodes.push_back(doc.Node(names[k], parents.at(k) < 0 ? nullptr : nodes.at(size_t(parents[k]))));

    MakeNodeNamesUnique(doc.Root());

    ASSERT_EQ(nodes.size(), expected.size());
    for (size_t k = 0; k < nodes.size(); ++k) EXPECT_EQ(nodes[k]->GetName(), expected[k]) << "node " << k;
    EXPECT_STREQ(doc.Root()->GetName(), "RootNode");
}

INSTANTIATE_TEST_SUITE_P(Trees, MakeNodeNamesUniqueTest, testing::ValuesIn(Table("node_names.txt")), RowName);

TEST(MakeNodeNamesUnique, CountersGrowPastThreeDigitsAndAttributesKeepTheirNames) {
    FbxTestScene doc;
    std::vector<FbxNode*> nodes;
    for (int k = 0; k < 1002; ++k) nodes.push_back(doc.Node("x"));
    FbxNull* attribute = FbxNull::Create(doc.Scene(), "x");
    nodes[1]->SetNodeAttribute(attribute);
    MakeNodeNamesUnique(doc.Root());
    EXPECT_STREQ(nodes[0]->GetName(), "x");
    EXPECT_STREQ(nodes[7]->GetName(), "x.007");
    EXPECT_STREQ(nodes[999]->GetName(), "x.999");
    EXPECT_STREQ(nodes[1000]->GetName(), "x.1000");
    EXPECT_STREQ(nodes[1001]->GetName(), "x.1001");
    EXPECT_STREQ(attribute->GetName(), "x");
}

}  // namespace
