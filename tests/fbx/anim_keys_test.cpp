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
