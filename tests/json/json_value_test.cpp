#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "json/json.h"

namespace {

TEST(JsonValue, MakersStoreTheirText) {
    EXPECT_EQ(JsonValue(int32_t{INT32_MIN}).Text(), "-2147483648");
    EXPECT_EQ(JsonValue(uint32_t{UINT32_MAX}).Text(), "4294967295");
    EXPECT_EQ(JsonValue(0.1f).Text(), "0.1");
    EXPECT_EQ(JsonValue(true).Text(), "true");
    EXPECT_EQ(JsonValue(false).Kind(), kJsonBool);
    EXPECT_EQ(JsonValue(int32_t{7}).Kind(), kJsonNumber);
    EXPECT_EQ(JsonValue("abc").Kind(), kJsonString);
    EXPECT_EQ(JsonValue::Object().Kind(), kJsonObject);
    EXPECT_EQ(JsonValue::Array().Kind(), kJsonArray);
    EXPECT_TRUE(JsonValue().IsNullHandle());
    EXPECT_EQ(JsonValue().Kind(), 0u);
}

TEST(JsonValue, StringMakersAndSettersUnescape) {
    EXPECT_EQ(JsonValue("a\\tb\\/c").Text(), "a\tb/c");
    EXPECT_EQ(JsonValue(std::string("x\\\"y")).Text(), "x\"y");
    JsonValue v(int32_t{1});
    v.Set("line\\nfeed and a much longer tail");
    EXPECT_EQ(v.Kind(), kJsonString);
    EXPECT_EQ(v.Text(), "line\nfeed and a much longer tail");
}

TEST(JsonValue, KindAndTextMaker) {
    EXPECT_EQ(JsonValue(kJsonString, "a\\nb").Text(), "a\nb");
    // Other kinds keep the text exactly, even when it is not a number.
    JsonValue number(kJsonNumber, "1e-+x");
    EXPECT_EQ(number.Kind(), kJsonNumber);
    EXPECT_EQ(number.Text(), "1e-+x");
    EXPECT_EQ(JsonValue(kJsonBool, "TRUE").Text(), "TRUE");
    EXPECT_EQ(JsonValue(kJsonNull, "").Kind(), kJsonNull);
    EXPECT_TRUE(JsonValue(kJsonObject, "x").IsNullHandle());
    EXPECT_TRUE(JsonValue(kJsonArray, "x").IsNullHandle());
    EXPECT_TRUE(JsonValue(7u, "x").IsNullHandle());
    EXPECT_TRUE(JsonValue(0u, "x").IsNullHandle());
}

TEST(JsonValue, SettersChangeScalarsOnly) {
    JsonValue s("text");
    s.Set(int32_t{-5});
    EXPECT_EQ(s.Kind(), kJsonNumber);
    EXPECT_EQ(s.Text(), "-5");
    s.Set(16.0f);
    EXPECT_EQ(s.Text(), "16");
    s.Set(true);
    EXPECT_EQ(s.Kind(), kJsonBool);
    JsonValue n(kJsonNull, "");
    n.Set(uint32_t{3});
    EXPECT_EQ(n.Kind(), kJsonNumber);

    JsonValue object = JsonValue::Object();
    object.Set("x");
    object.Set(1.0f);
    EXPECT_EQ(object.Kind(), kJsonObject);
    JsonValue array = JsonValue::Array();
    array.Set(true);
    EXPECT_EQ(array.Kind(), kJsonArray);
    JsonValue none;
    none.Set("x");
    none.Set(int32_t{1});
    EXPECT_TRUE(none.IsNullHandle());
}

TEST(JsonValue, AddOnlyOnTheRightKind) {
    JsonValue object = JsonValue::Object();
    object.Add(JsonValue(int32_t{1}));  // unnamed add ignored on an object
    object.Add("a", JsonValue(int32_t{1}));
    EXPECT_EQ(object.Count(), 1u);

    JsonValue array = JsonValue::Array();
    array.Add("a", JsonValue(int32_t{1}));  // named add ignored on an array
    array.Add(JsonValue(int32_t{2}));
    ASSERT_EQ(array.Count(), 1u);
    EXPECT_EQ(array.Member(0).Text(), "2");
    EXPECT_EQ(array.MemberName(0), "");

    JsonValue scalar("s");
    scalar.Add("a", JsonValue(int32_t{1}));
    scalar.Add(JsonValue(int32_t{1}));
    EXPECT_EQ(scalar.Count(), 0u);
    JsonValue none;
    none.Add(JsonValue(int32_t{1}));
    EXPECT_TRUE(none.IsNullHandle());
}

TEST(JsonValue, LookupFindsFirstOfDuplicatesByExactBytes) {
    JsonValue object = JsonValue::Object();
    object.Add("k", JsonValue(int32_t{1}));
    object.Add("K", JsonValue(int32_t{2}));
    object.Add("k", JsonValue(int32_t{3}));
    EXPECT_EQ(object.Count(), 3u);
    EXPECT_EQ(object.Get("k").Text(), "1");
    EXPECT_EQ(object.Get("K").Text(), "2");
    EXPECT_TRUE(object.Has("K"));
    EXPECT_FALSE(object.Has("k "));
    EXPECT_TRUE(object.Get("missing").IsNullHandle());
    EXPECT_EQ(object.MemberName(2), "k");
    EXPECT_EQ(object.Member(2).Text(), "3");

    // Only objects answer lookups.
    JsonValue array = JsonValue::Array();
    array.Add(JsonValue("k"));
    EXPECT_FALSE(array.Has("k"));
    EXPECT_TRUE(array.Get("k").IsNullHandle());
    EXPECT_FALSE(JsonValue().Has("k"));
    EXPECT_TRUE(JsonValue().Get("k").IsNullHandle());
    EXPECT_EQ(JsonValue().Count(), 0u);
    EXPECT_EQ(JsonValue("x").Count(), 0u);
}

TEST(JsonValue, ToStringFallsBackForContainersAndNullHandles) {
    EXPECT_EQ(JsonValue(kJsonNull, "").ToString("fb"), "null");
    EXPECT_EQ(JsonValue("a\\nb").ToString("fb"), "a\nb");
    EXPECT_EQ(JsonValue(2.5f).ToString("fb"), "2.5");
    EXPECT_EQ(JsonValue(false).ToString("fb"), "false");
    EXPECT_EQ(JsonValue::Object().ToString("fb"), "fb");
    EXPECT_EQ(JsonValue::Array().ToString("fb"), "fb");
    EXPECT_EQ(JsonValue().ToString("fb"), "fb");
}

TEST(JsonValue, CopiesBehaveAsValues) {
    JsonValue child = JsonValue::Object();
    child.Add("x", JsonValue(int32_t{1}));
    JsonValue parent = JsonValue::Object();
    parent.Add("child", child);

    // Changing the original after sharing leaves the shared copy alone...
    child.Add("y", JsonValue(int32_t{2}));
    EXPECT_EQ(child.Count(), 2u);
    EXPECT_EQ(parent.Get("child").Count(), 1u);

    // ...and the other way round.
    JsonValue copy = parent;
    copy.Add("z", JsonValue("zzzzzzzzzzzzzzzzzzzzzzzzz"));
    EXPECT_EQ(parent.Count(), 1u);
    EXPECT_EQ(copy.Count(), 2u);

    JsonValue text("a string too long to sit in the handle");
    JsonValue textCopy = text;
    textCopy.Set("other");
    EXPECT_EQ(text.Text(), "a string too long to sit in the handle");
    EXPECT_EQ(textCopy.Text(), "other");

    // A member fetched with Get is a copy too.
    JsonValue fetched = parent.Get("child");
    fetched.Add("w", JsonValue(int32_t{0}));
    EXPECT_EQ(parent.Get("child").Count(), 1u);
}

TEST(JsonValue, AssignmentFromOwnMember) {
    JsonValue outer = JsonValue::Array();
    JsonValue inner = JsonValue::Array();
    inner.Add(JsonValue("inner text longer than fourteen"));
    outer.Add(inner);
    inner = JsonValue();
    // outer holds the only reference to the tree that holds the member.
    outer = outer.Member(0);
    ASSERT_EQ(outer.Count(), 1u);
    EXPECT_EQ(outer.Member(0).Text(), "inner text longer than fourteen");
    JsonValue again = outer;
    JsonValue& alias = again;
    again = alias;
    EXPECT_EQ(again.Count(), 1u);
}

TEST(JsonValue, DeepTreesAreReleasedWithoutRecursion) {
    JsonValue root = JsonValue::Array();
    {
        // Built bottom-up so each level shares the level below.
        JsonValue level = JsonValue::Array();
        for (int i = 0; i < 1000000; ++i) {
            JsonValue up = JsonValue::Array();
            up.Add(std::move(level));
            level = std::move(up);
        }
        root = std::move(level);
    }
    EXPECT_EQ(root.Count(), 1u);
    root = JsonValue();  // would overflow the stack if released recursively
    EXPECT_TRUE(root.IsNullHandle());
}

}  // namespace
