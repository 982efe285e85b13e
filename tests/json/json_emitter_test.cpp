#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <sstream>
#include <string>

#include "json/json.h"
#include "file_contents.h"
#include "scratch_folder.h"
#include "json/json_emitter.h"

namespace {

const JsonFormat kFormats[] = {NoFormat, StandardFormat, {false, true, false, 0}, {true, false, false, 3}};

// Random content, emitted and built as a tree in the same walk. Strings mix in
// backslashes, escape pairs and control bytes so the two escaping paths meet.
class Content {
public:
    explicit Content(uint32_t seed) : random_(seed) {}

    JsonValue EmitAndBuild(JsonEmitter& out, int depth) {
        switch (Pick(depth > 0 ? 8 : 6)) {
            case 0: {
                std::string text = Text();
                out.String(text);
                return JsonValue(text);
            }
            case 1: {
                uint32_t bits = static_cast<uint32_t>(random_());
                float value;
                std::memcpy(&value, &bits, sizeof value);
                out.Number(value);
                return JsonValue(value);
            }
            case 2: {
                int32_t value = static_cast<int32_t>(random_());
                out.Number(value);
                return JsonValue(value);
            }
            case 3: {
                uint32_t value = static_cast<uint32_t>(random_());
                out.Number(value);
                return JsonValue(value);
            }
            case 4:
                out.Bool(depth % 2 == 0);
                return JsonValue(depth % 2 == 0);
            case 5:
                out.Null();
                return JsonValue(kJsonNull, "");
            case 6: {
                JsonValue object = JsonValue::Object();
                out.BeginObject();
                for (int n = Pick(5); n > 0; --n) {
                    std::string name = "n" + std::to_string(Pick(4));
                    out.Name(name);
                    object.Add(name, EmitAndBuild(out, depth - 1));
                }
                out.EndObject();
                return object;
            }
            default: {
                JsonValue array = JsonValue::Array();
                out.BeginArray();
                for (int n = Pick(5); n > 0; --n) array.Add(EmitAndBuild(out, depth - 1));
                out.EndArray();
                return array;
            }
        }
    }

private:
    int Pick(int n) { return static_cast<int>(random_() % static_cast<uint32_t>(n)); }
    std::string Text() {
        static const char kPieces[][4] = {"a", "\\", "\\n", "\\u", "/", "\"", "\x01", "\x1f", "\xe9", " ", "\\\\"};
        std::string text;
        for (int n = Pick(6); n > 0; --n) text += kPieces[Pick(11)];
        return text;
    }

    std::mt19937 random_;
};

TEST(JsonEmitter, SameBytesAsTheWriterForEveryFormat) {
    for (const JsonFormat& format : kFormats) {
        for (uint32_t seed = 1; seed <= 300; ++seed) {
            std::string streamed;
            JsonValue tree;
            {
                JsonStringSink sink(streamed);
                JsonEmitter out(sink, format);
                tree = Content(seed).EmitAndBuild(out, 4);
            }
            ASSERT_EQ(streamed, JsonWriter(format).WriteString(tree)) << "seed " << seed;
        }
    }
}

TEST(JsonEmitter, SubtreesAtAnyPosition) {
    JsonValue extras = JsonValue::Object();
    extras.Add("k", JsonValue::Array());
    std::string text;
    {
        JsonStringSink sink(text);
        JsonEmitter out(sink, StandardFormat);
        out.BeginObject();
        out.Name("list");
        out.BeginArray();
        out.Value(extras);
        out.Number(0.5f);
        out.EndArray();
        out.Name("raw");
        out.Raw("1e5");
        out.EndObject();
    }
    // An empty container holds two line ends.
    EXPECT_EQ(text, "{\n\t\"list\": [\n\t\t{\n\t\t\t\"k\": [\n\n\t\t\t]\n\t\t},\n\t\t0.5\n\t],\n\t\"raw\": 1e5\n}");
}

TEST(JsonEmitter, OutputLargerThanTheBuffers) {
    // Crosses the string sink's and the stream sink's buffer sizes many times,
    // with single writes larger than a whole buffer.
    std::string longText(300000, 'x');
    JsonValue array = JsonValue::Array();
    for (int i = 0; i < 50000; ++i) array.Add(JsonValue(static_cast<float>(i) * 0.25f));
    array.Add(JsonValue(longText));
    std::string expected = "[";
    for (int i = 0; i < 50000; ++i) expected += FormatFloat(static_cast<float>(i) * 0.25f) + ",";
    expected += "\"" + longText + "\"]";

    EXPECT_EQ(JsonWriter(NoFormat).WriteString(array), expected);
    std::ostringstream stream;
    JsonWriter(NoFormat).WriteStream(array, stream);
    EXPECT_EQ(stream.str(), expected);

    testsupport::ScratchFolder folder("json");
    const std::string path = folder.File("emitter.json");
    {
        JsonFileSink sink(path);
        ASSERT_TRUE(sink.IsOpen());
        JsonEmitter out(sink, NoFormat);
        out.Value(array);
        EXPECT_TRUE(sink.Close());
    }
    EXPECT_EQ(testsupport::ReadFileText(path), expected);
}

}  // namespace
