// The fixed name tables of the rig: sizes, orders, a few entries, the deliberate gaps, and
// the prefix narrowing of group lookups.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "avatar/avatar_tables.h"

namespace {
const std::vector<std::string>& Row(const std::string& group) { return MorphTransferTable.at(group).morphNames; }

bool Contains(const std::vector<std::string>& list, const std::string& name) {
    return std::find(list.begin(), list.end(), name) != list.end();
}

template <size_t N>
size_t DistinctCount(const std::array<std::string_view, N>& names) {
    return std::set<std::string_view>(names.begin(), names.end()).size();
}
}  // namespace

TEST(AvatarTablesTest, JointSetsHoldDistinctNamesInDefinitionOrder) {
    EXPECT_EQ(DistinctCount(FacialAnchorJointNames), 4u);
    EXPECT_EQ(DistinctCount(BindJointNames), 73u);
    EXPECT_EQ(BindJointNames.front(), "C_spine0002_bind_JNT");
    EXPECT_EQ(BindJointNames[15], "R_clavicle_bind_JNT");  // 5 spine/neck/head + 8 mouth + 2 brows
    EXPECT_EQ(BindJointNames.back(), "L_legFront_bind_JNT");
}

TEST(AvatarTablesTest, RowsHaveTheirSourceMeshAndSize) {
    struct Expected {
        const char* group;
        const char* sourceMesh;
        size_t count;
    };
    const Expected rows[] = {
        {"head", "head", 100},       {"headMouth", "headMouth", 9},  {"brow", "brow", 16},
        {"eyelash", "eyelash", 76},  {"facial_hair", "head", 43},    {"earring", "head", 1},
        {"nosering", "head", 31},    {"mouthring", "head", 40},      {"browring", "head", 17},
        {"tonguering", "headMouth", 7},
    };
    EXPECT_EQ(MorphTransferTable.size(), std::size(rows));
    for (const Expected& row : rows) {
        SCOPED_TRACE(row.group);
        ASSERT_TRUE(MorphTransferTable.count(row.group));
        const MorphTransferEntry& entry = MorphTransferTable.at(row.group);
        EXPECT_EQ(entry.sourceMesh, row.sourceMesh);
        EXPECT_EQ(entry.morphNames.size(), row.count);
        EXPECT_EQ(std::set<std::string>(entry.morphNames.begin(), entry.morphNames.end()).size(), row.count)
            << "a name stands twice";
        // Weights are taken from the source mesh's channels of the same name, so a name its
        // mesh's row lacks would point at a channel the rig never animates.
        for (const std::string& name : entry.morphNames)
            EXPECT_TRUE(Contains(Row(entry.sourceMesh), name)) << name;
    }
}

TEST(AvatarTablesTest, HeadRowPutsTheCornerAndEyeShapesBeforeTheJaw) {
    const auto& head = Row("head");
    // Counted by hand along the list: 16 brow, 4 cheek, 16 lip and 20 mouth shapes fill 0..55,
    // then ai_neutral and the two sneers end at index 58; six ca_ names at 59..64; 34 eye
    // shapes at 65..98; the jaw last.
    EXPECT_EQ(head[56], "ai_neutral");
    EXPECT_EQ(head[58], "ai_noseSneer_R");
    EXPECT_EQ(head[59], "ca_lipCornerPinch_L");
    EXPECT_EQ(head[64], "ca_lipCornerSmile_R");
    EXPECT_EQ(head[65], "ai_eyeInUpperClose_L");
    EXPECT_EQ(head[98], "ai_eyeUpperWide_R");
    EXPECT_EQ(head[99], "ai_jawOpen");
}

TEST(AvatarTablesTest, DeliberateGapsStay) {
    const auto& mouthring = Row("mouthring");
    EXPECT_TRUE(Contains(mouthring, "ai_cheekSquint_R"));
    EXPECT_FALSE(Contains(mouthring, "ai_cheekSquint_L"));
    EXPECT_TRUE(Contains(mouthring, "ai_mouthDimple_R"));
    EXPECT_FALSE(Contains(mouthring, "ai_mouthDimple_L"));
    EXPECT_TRUE(Contains(mouthring, "ai_mouthRollUpper"));
    EXPECT_FALSE(Contains(mouthring, "ai_mouthRollLower"));

    std::vector<std::string> browPlusNeutral = Row("brow");
    browPlusNeutral.push_back("ai_neutral");
    EXPECT_EQ(Row("browring"), browPlusNeutral);

    const auto& mouth = Row("headMouth");
    EXPECT_EQ(Row("tonguering"), std::vector<std::string>(mouth.begin(), mouth.end() - 2));
    EXPECT_EQ(Row("earring"), std::vector<std::string>{"ai_jawOpen"});
}

TEST(AvatarTablesTest, AccessoryGroupsAreTheTableRowsInDefinitionOrder) {
    const std::vector<std::string_view> expected = {"head",       "facial_hair", "headMouth", "brow",     "browring",
                                                    "tonguering", "eyelash",     "earring",   "nosering", "mouthring"};
    EXPECT_EQ(std::vector<std::string_view>(AccessoryGroupNames.begin(), AccessoryGroupNames.end()), expected);
    for (std::string_view group : AccessoryGroupNames) EXPECT_TRUE(MorphTransferTable.count(std::string(group)));
}

TEST(AvatarTablesTest, MorphNamesForGroupNarrowsOnlyTheRingPrefixes) {
    struct Case {
        const char* name;
        const char* group;  // row expected, or null for the empty list
    };
    const Case cases[] = {
        {"earringRtragus1", "earring"},
        {"browringLARing", "browring"},  // not brow, although it starts with "brow"
        {"tongueringmid", "tonguering"},
        {"mouthringbottomStudCenter", "mouthring"},
        {"noseringseptum", "nosering"},
        {"earring", "earring"},
        {"head", "head"},
        {"eyelash", "eyelash"},
        {"facial_hair", "facial_hair"},
        {"universal_head_head", nullptr},
        {"eyelashL", nullptr},  // eyelash is no narrowed prefix
        {"browL", nullptr},
        {"Earring", nullptr},   // case-sensitive
        {"earrin", nullptr},
        {"", nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::vector<std::string>& names = MorphNamesForGroup(c.name);
        if (c.group)
            EXPECT_EQ(&names, &Row(c.group));
        else
            EXPECT_TRUE(names.empty());
    }
    EXPECT_EQ(MorphNamesForGroup("earringLlobe1"), std::vector<std::string>{"ai_jawOpen"});
    EXPECT_EQ(MorphNamesForGroup("browringRDTop").back(), "ai_neutral");
}
