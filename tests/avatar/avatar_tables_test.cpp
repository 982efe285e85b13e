// The rig's name tables: sizes, orders, a few entries, the deliberate gaps, and the prefix
// narrowing of group lookups.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "avatar/avatar_tables.h"

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
    const std::tuple<const char*, const char*, size_t> rows[] = {
        {"head", "head", 100},        {"facial_hair", "head", 43}, {"headMouth", "headMouth", 9},
        {"brow", "brow", 16},         {"browring", "head", 17},    {"tonguering", "headMouth", 7},
        {"eyelash", "eyelash", 76},   {"earring", "head", 1},      {"nosering", "head", 31},
        {"mouthring", "head", 40},
    };
    ASSERT_EQ(MorphTransferTable.size(), std::size(rows));
    for (size_t i = 0; i < std::size(rows); ++i) {
        const auto& [group, source, count] = rows[i];
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
    const std::pair<const char*, const char*> cases[] = {
        {"earringRtragus1", "earring"},  {"browringLARing", "browring"},  // not brow
        {"tongueringmid", "tonguering"}, {"mouthringbottomStudCenter", "mouthring"},
        {"noseringseptum", "nosering"},  {"eyelash", "eyelash"},
        {"universal_head_head", nullptr}, {"eyelashL", nullptr},  // eyelash does not narrow
        {"Earring", nullptr},            {"earrin", nullptr},
    };
    for (const auto& [name, group] : cases) {
        const std::vector<std::string>& names = MorphNamesForGroup(name);
        if (group)
            EXPECT_EQ(&names, &Row(group)) << name;
        else
            EXPECT_TRUE(names.empty()) << name;
    }
    EXPECT_EQ(MorphNamesForGroup("earringLlobe1"), std::vector<std::string>{"ai_jawOpen"});
}
