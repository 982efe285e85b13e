// The rig's name tables: sizes, orders, the deliberate gaps, and the prefix narrowing of
// group lookups.
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
    const testsupport::Table rows = testsupport::ReadTable(VURL_AVATAR_TEST_DATA "/avatar_tables.txt");
    ASSERT_EQ(MorphTransferTable.size(), rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE(rows[i].Text(0));
        EXPECT_EQ(AccessoryGroupNames[i], rows[i].Text(0));
        const MorphTransferEntry& entry = MorphTransferTable.at(rows[i].Text(0));
        EXPECT_EQ(entry.sourceMesh, rows[i].Text(1));
        const std::set<std::string> distinct(entry.morphNames.begin(), entry.morphNames.end());
        EXPECT_EQ(distinct.size(), size_t(rows[i].Int(2)));
        EXPECT_EQ(entry.morphNames.size(), distinct.size());
        // A name its source mesh's row lacks would ask for a channel the rig never animates.
        for (const std::string& name : distinct) EXPECT_TRUE(Contains(Row(entry.sourceMesh), name.c_str())) << name;
    }
}

TEST(AvatarTablesTest, OrdersAndDeliberateGapsStay) {
    // Counted by hand: 16 brow, 4 cheek, 16 lip and 20 mouth shapes fill 0..55, ai_neutral and
    // the sneers 56..58, six ca_ names 59..64, 34 eye shapes 65..98, the jaw last.
    const auto& head = Row("head");
    EXPECT_EQ(head[56] + " " + head[59] + " " + head[65] + " " + head[99],
              "ai_neutral ca_lipCornerPinch_L ai_eyeInUpperClose_L ai_jawOpen");
    const auto& mouthring = Row("mouthring");
    for (const auto& [kept, left] : {std::pair{"ai_cheekSquint_R", "ai_cheekSquint_L"},
                                     {"ai_mouthDimple_R", "ai_mouthDimple_L"},
                                     {"ai_mouthRollUpper", "ai_mouthRollLower"}}) {
        EXPECT_TRUE(Contains(mouthring, kept) && !Contains(mouthring, left)) << kept;
    }
    std::vector<std::string> browPlusNeutral = Row("brow");
    browPlusNeutral.push_back("ai_neutral");
    EXPECT_EQ(Row("browring"), browPlusNeutral);
    EXPECT_EQ(Row("tonguering"), std::vector<std::string>(Row("headMouth").begin(), Row("headMouth").end() - 2));
}

TEST(AvatarTablesTest, MorphNamesForGroupNarrowsOnlyTheRingPrefixes) {
    for (const testsupport::TableRow& row : testsupport::ReadTable(VURL_AVATAR_TEST_DATA "/group_prefixes.txt")) {
        const std::vector<std::string>& names = MorphNamesForGroup(row.Text(0));
        EXPECT_EQ(&names, row.Text(1) == "none" ? &names : &Row(row.Text(1))) << row.Text(0);
        EXPECT_EQ(names.empty(), row.Text(1) == "none") << row.Text(0);
    }
    EXPECT_EQ(MorphNamesForGroup("earringLlobe1"), std::vector<std::string>{"ai_jawOpen"});
}
