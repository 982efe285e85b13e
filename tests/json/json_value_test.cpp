#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "json/json.h"

namespace {

TEST(JsonValue, MakersAndSettersStoreText) {
    EXPECT_EQ(JsonValue(int32_t{INT32_MIN}).Text(), "-2147483648");
    EXPECT_EQ(JsonValue(uint32_t{UINT32_MAX}).Text(), "4294967295");
    EXPECT_EQ(JsonValue(false).Text(), "false");
    // String makers and setters store the unescaped text.
    EXPECT_EQ(JsonValue("a\\tb\\/c").Text(), "a\tb/c");
    JsonValue v(int32_t{1});
    v.Set("line\\nfeed and a much longer tail");
    EXPECT_EQ(v.Kind(), kJsonString);
    EXPECT_EQ(v.Text(), "line\nfeed and a much longer tail");
    v.Set(16.0f);
    EXPECT_EQ(v.Kind(), kJsonNumber);
    EXPECT_EQ(v.Text(), "16");
    const char* none = nullptr;
    EXPECT_EQ(JsonValue(none).Text(), "");
}

TEST(JsonValue, KindAndTextMaker) {
    EXPECT_EQ(JsonValue(kJsonString, "a\\nb").Text(), "a\nb");
    // Other kinds keep the text exactly, even when it is not a number.
    JsonValue number(kJsonNumber, "1e-+x");
    EXPECT_EQ(number.Kind(), kJsonNumber);
    EXPECT_EQ(number.Text(), "1e-+x");
    EXPECT_EQ(JsonValue(kJsonBool, "TRUE").Text(), "TRUE");
    for (uint32_t kind : {0u, 1u, 2u, 7u}) EXPECT_TRUE(JsonValue(kind, "x").IsNullHandle());
}

std::string Written(const JsonValue& value) { return JsonWriter(NoFormat).WriteString(value); }

TEST(JsonValue, SettersAndAddsIgnoreTheWrongKind) {
    JsonValue object = JsonValue::Object();
    object.Set("x");
    object.Set(1.0f);
    object.Add(JsonValue(int32_t{1}));  // unnamed add on an object
    JsonValue array = JsonValue::Array();
    array.Set(true);
    array.Add("a", JsonValue(int32_t{1}));  // named add on an array
    JsonValue none;
    none.Set(int32_t{1});
    none.Add(JsonValue(int32_t{1}));
    JsonValue null(kJsonNull, "");
    null.Set(uint32_t{3});
    EXPECT_EQ(Written(object) + Written(array) + Written(none) + Written(null), "{}[]3");
    EXPECT_EQ(null.Kind(), kJsonNumber);
}

TEST(JsonValue, LookupFindsFirstOfDuplicatesByExactBytes) {
    JsonValue object = JsonValue::Object();
    object.Add("k", JsonValue(int32_t{1}));
    object.Add("K", JsonValue(int32_t{2}));
    object.Add("k", JsonValue(int32_t{3}));
    EXPECT_EQ(object.Count(), 3u);
    EXPECT_EQ(object.Get("k").Text(), "1");
    EXPECT_EQ(object.Get("K").Text(), "2");
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
}

TEST(JsonValue, ToStringFallsBackForContainersAndNullHandles) {
    EXPECT_EQ(JsonValue(kJsonNull, "").ToString("fb"), "null");
    EXPECT_EQ(JsonValue("a\\nb").ToString("fb"), "a\nb");
    EXPECT_EQ(JsonValue(2.5f).ToString("fb"), "2.5");
    EXPECT_EQ(JsonValue::Object().ToString("fb"), "fb");
    EXPECT_EQ(JsonValue::Array().ToString("fb"), "fb");
    EXPECT_EQ(JsonValue().ToString("fb"), "fb");
}

TEST(JsonValue, CopiesBehaveAsValues) {
    JsonValue child = JsonValue::Object();
    child.Add("x", JsonValue(int32_t{1}));
    JsonValue parent = JsonValue::Object();
    parent.Add("child", child);
    // Changing the original after sharing leaves the shared copy alone, and the other way
    // round; a member fetched with Get is a copy too.
    child.Add("y", JsonValue(int32_t{2}));
    JsonValue copy = parent;
    copy.Add("z", JsonValue("zzzzzzzzzzzzzzzzzzzzzzzzz"));
    JsonValue fetched = parent.Get("child");
    fetched.Add("w", JsonValue(int32_t{0}));
    EXPECT_EQ(Written(parent), R"({"child":{"x":1}})");
    EXPECT_EQ(Written(copy), R"({"child":{"x":1},"z":"zzzzzzzzzzzzzzzzzzzzzzzzz"})");
    JsonValue text("a string too long to sit in the handle");
    JsonValue textCopy = text;
    textCopy.Set("other");
    EXPECT_EQ(text.Text(), "a string too long to sit in the handle");
}

TEST(JsonValue, AssignmentFromOwnMember) {
    JsonValue outer = JsonValue::Array();
    JsonValue inner = JsonValue::Array();
    inner.Add(JsonValue("inner text longer than fourteen"));
    outer.Add(std::move(inner));
    // outer holds the only reference to the tree that holds the member.
    outer = outer.Member(0);
    ASSERT_EQ(outer.Count(), 1u);
    EXPECT_EQ(outer.Member(0).Text(), "inner text longer than fourteen");
}

}  // namespace
