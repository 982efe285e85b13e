// Key store: insertion and removal across the 42-key blocks, shared attribute records.
#include <gtest/gtest.h>

#include "fbx/fbx_anim_keys.h"

namespace {

// Keys must come out sorted by time, each with the value that was given to its time.
void ExpectSortedKeys(const FbxAnimKeyStore& store, int count) {
    ASSERT_EQ(store.KeyCount(), count);
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(store.Key(i).time, FbxLongLong(i) * 10) << i;
        EXPECT_EQ(store.Value(i), float(i)) << i;
    }
}

TEST(FbxAnimKeyStore, InsertionsAndRemovalsAcrossBlocksKeepTheOrder) {
    // Keys 0..199 inserted in an interleaved order: odd times first (descending), then the
    // even ones, so that every insertion lands inside a full block and carries keys over.
    FbxAnimKeyStore store;
    for (int i = 199; i >= 1; i -= 2) store.SetValue(store.KeyAdd(FbxTime(FbxLongLong(i) * 10)), float(i));
    for (int i = 0; i < 200; i += 2) store.SetValue(store.KeyAdd(FbxTime(FbxLongLong(i) * 10)), float(i));
    ExpectSortedKeys(store, 200);

    // A time already present returns its key instead of adding one.
    EXPECT_EQ(store.KeyAdd(FbxTime(420)), 42);
    EXPECT_EQ(store.KeyCount(), 200);

    // Key 84 is the first of the third block: removing it pulls one key back from each
    // later block; adding it again pushes them out. Then shrink to exactly one full block.
    store.KeyRemove(84);
    EXPECT_EQ(store.KeyCount(), 199);
    EXPECT_EQ(store.Key(84).time, 850);
    EXPECT_EQ(store.Key(83).time, 830);
    store.SetValue(store.KeyAdd(FbxTime(840)), 84.0f);
    ExpectSortedKeys(store, 200);
    while (store.KeyCount() > 42) store.KeyRemove(store.KeyCount() - 1);
    ExpectSortedKeys(store, 42);
    store.SetValue(store.KeyAdd(FbxTime(420)), 42.0f);
    ExpectSortedKeys(store, 43);
}

TEST(FbxAnimKeyStore, ChangingASharedAttributeGivesTheKeyItsOwnRecord) {
    FbxAnimKeyStore store;
    FbxAnimKeyAttr linear;
    linear.flags = kFbxInterpolationLinear;
    const uint32_t shared = store.AddAttr(linear);
    for (int i = 0; i < 3; ++i) store.AppendKey(i, 0.0f, shared);
    EXPECT_EQ(store.Attr(0).refCount, 3);

    store.MutableAttr(1).flags = kFbxInterpolationConstant;
    EXPECT_EQ(store.Flags(0), uint32_t(kFbxInterpolationLinear));
    EXPECT_EQ(store.Flags(1), uint32_t(kFbxInterpolationConstant));
    EXPECT_EQ(store.Flags(2), uint32_t(kFbxInterpolationLinear));
    EXPECT_EQ(store.Attr(0).refCount, 2);
    EXPECT_EQ(store.Attr(1).refCount, 1);

    // A copy is independent of its source.
    FbxAnimKeyStore copy = store;
    copy.MutableAttr(0).flags = kFbxInterpolationCubic;
    EXPECT_EQ(store.Flags(0), uint32_t(kFbxInterpolationLinear));
    EXPECT_EQ(store.Flags(2), uint32_t(kFbxInterpolationLinear));
}

}  // namespace

namespace {

// Evenly spaced keys are kept as a start and a step until an edit breaks the spacing;
// every state must read back the same times. Old-unit ticks: one old second is
// 46186158000 ticks and reads as 141120000 (the rest, (0 + 164) * 141120 / 46186158,
// rounds to 0).
TEST(FbxAnimKeyStore, EvenTimesSurviveEveryEdit) {
    constexpr FbxLongLong kOld = 46186158000LL, kNew = 141120000LL;
    struct Row {
        const char* name;
        bool oldUnit;
        FbxLongLong step;  // in file ticks
        FbxLongLong read;  // the step as read
    };
    const Row rows[] = {{"new unit", false, 10, 10}, {"old unit", true, kOld, kNew}};
    for (const Row& row : rows) {
        FbxAnimKeyStore store;
        FbxAnimKeyAttr linear;
        linear.flags = kFbxInterpolationLinear;
        store.Assign({0, row.step, 2 * row.step, 3 * row.step}, row.oldUnit, {0, 1, 2, 3}, {linear}, {4});
        ASSERT_EQ(store.KeyCount(), 4) << row.name;
        for (int i = 0; i < 4; ++i) EXPECT_EQ(store.KeyTime(i), i * row.read) << row.name;

        store.KeyRemove(0);  // 1 2 3
        EXPECT_EQ(store.KeyTime(0), row.read) << row.name;
        store.AppendKey(4 * row.read, 4.0f, store.AddAttr(linear));  // 1 2 3 4
        store.AppendKey(6 * row.read, 6.0f, store.AddAttr(linear));  // spacing broken: 1 2 3 4 6
        const int at = store.KeyAdd(FbxTime(5 * row.read));           // 1 2 3 4 5 6
        EXPECT_EQ(at, 4) << row.name;
        store.SetValue(at, 5.0f);
        ASSERT_EQ(store.KeyCount(), 6) << row.name;
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(store.KeyTime(i), (i + 1) * row.read) << row.name << " " << i;
            EXPECT_EQ(store.Value(i), float(i + 1)) << row.name << " " << i;
        }
        // The key added in the middle has a cubic record of its own; the first keys share theirs.
        EXPECT_EQ(store.Flags(4), uint32_t(kFbxInterpolationCubic | kFbxTangentAuto)) << row.name;
        EXPECT_EQ(store.Attr(0).refCount, 3) << row.name;
    }
}

}  // namespace
