// The morph binding's name table: each group's source mesh and distinct names, all of which
// that mesh carries; and the prefix narrowing of group lookups.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "avatar/avatar_tables.h"
#include "text_table.h"

namespace {
const std::vector<std::string>& Row(const std::string& group) { return MorphTransferTable.at(group).morphNames; }
}  // namespace

TEST(AvatarTablesTest, RowsHoldDistinctNamesThatTheirSourceMeshCarries) {
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
        const std::vector<std::string>& source = Row(entry.sourceMesh);
        for (const std::string& name : distinct)
            EXPECT_NE(std::find(source.begin(), source.end(), name), source.end()) << name;
    }
}

TEST(AvatarTablesTest, MorphNamesForGroupNarrowsOnlyTheRingPrefixes) {
    for (const testsupport::TableRow& row : testsupport::ReadTable(VURL_AVATAR_TEST_DATA "/group_prefixes.txt")) {
        const std::vector<std::string>& names = MorphNamesForGroup(row.Text(0));
        EXPECT_EQ(&names, row.Text(1) == "none" ? &names : &Row(row.Text(1))) << row.Text(0);
        EXPECT_EQ(names.empty(), row.Text(1) == "none") << row.Text(0);
    }
}
