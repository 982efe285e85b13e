// The rig's name tables: sizes, orders, a few entries, the deliberate gaps, and the prefix
// narrowing of group lookups.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "avatar/avatar_tables.h"
#include "text_table.h"

namespace {
const std::vector<std::string>& Row(const std::string& group) { return MorphTransferTable.at(group).morphNames; }
bool Contains(const std::vector<std::string>& list, const char* name) {
    return std::find(list.begin(), list.end(), name) != list.end();
}
}  // namespace

TEST(AvatarTablesTest, RowsHoldDistinctNamesThatTheirSourceMeshCarries) {
    EXPECT_EQ(std::set<std::string_view>(BindJointNames.begin(), BindJointNames.end()).size(), 73u);
    EXPECT_EQ(std::set<std::string_view>(FacialAnchorJointNames.begin(), FacialAnchorJointNames.end()).size(), 4u);
    // Group order of the morph binding, and the rows: source mesh and number of names.
    const std::vector<testsupport::TableRow> rows = testsupport::ReadTable(VURL_AVATAR_TEST_DATA "/avatar_tables.txt");
    ASSERT_EQ(MorphTransferTable.size(), rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        const std::string group = rows[i].Text(0), source = rows[i].Text(1);
        const size_t count = size_t(rows[i].Int(2));
        SCOPED_TRACE(group);
        EXPECT_EQ(AccessoryGroupNames[i], group);
        const MorphTransferEntry& entry = MorphTransferTable.at(group);
        EXPECT_EQ(entry.sourceMesh, source);
        EXPECT_EQ(std::set<std::string>(entry.morphNames.begin(), entry.morphNames.end()).size(), count);
        EXPECT_EQ(entry.morphNames.size(), count);
        // A name its source mesh's row lacks would ask for a channel the rig never animates.
        for (const std::string& name : entry.morphNames) EXPECT_TRUE(Contains(Row(source), name.c_str())) << name;
    }
}

TEST(AvatarTablesTest, OrdersAndDeliberateGapsStay) {
    // Counted by hand: 16 brow, 4 cheek, 16 lip and 20 mouth shapes fill 0..55, ai_neutral and
    // the sneers 56..58, six ca_ names 59..64, 34 eye shapes 65..98, the jaw last.
    const auto& head = Row("head");
    EXPECT_EQ(head[56], "ai_neutral");
    EXPECT_EQ(head[59], "ca_lipCornerPinch_L");
    EXPECT_EQ(head[65], "ai_eyeInUpperClose_L");
    EXPECT_EQ(head[99], "ai_jawOpen");

    const auto& mouthring = Row("mouthring");
    EXPECT_TRUE(Contains(mouthring, "ai_cheekSquint_R") && !Contains(mouthring, "ai_cheekSquint_L"));
    EXPECT_TRUE(Contains(mouthring, "ai_mouthDimple_R") && !Contains(mouthring, "ai_mouthDimple_L"));
    EXPECT_TRUE(Contains(mouthring, "ai_mouthRollUpper") && !Contains(mouthring, "ai_mouthRollLower"));
    std::vector<std::string> browPlusNeutral = Row("brow");
    browPlusNeutral.push_back("ai_neutral");
    EXPECT_EQ(Row("browring"), browPlusNeutral);
    EXPECT_EQ(Row("tonguering"), std::vector<std::string>(Row("headMouth").begin(), Row("headMouth").end() - 2));
}

TEST(AvatarTablesTest, MorphNamesForGroupNarrowsOnlyTheRingPrefixes) {
    for (const testsupport::TableRow& row : testsupport::ReadTable(VURL_AVATAR_TEST_DATA "/group_prefixes.txt")) {
        const std::string name = row.Text(0), group = row.Text(1);
        const std::vector<std::string>& names = MorphNamesForGroup(name);
        if (group != "none")
            EXPECT_EQ(&names, &Row(group)) << name;
        else
            EXPECT_TRUE(names.empty()) << name;
    }
    EXPECT_EQ(MorphNamesForGroup("earringLlobe1"), std::vector<std::string>{"ai_jawOpen"});
}
