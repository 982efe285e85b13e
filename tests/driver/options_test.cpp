#include <gtest/gtest.h>

#include <stdexcept>

#include "driver/format_registry.h"
#include "driver/options.h"

TEST(OptionLookup, ValueFollowsFirstLongThenShortOccurrence) {
    std::string s = "untouched";
    GetStringOption(s, {"-a", "x"}, "--model", "-m");
    EXPECT_EQ(s, "untouched");
    GetStringOption(s, {"-m", "short", "--model", "long", "--model", "second"}, "--model", "-m");
    EXPECT_EQ(s, "long");
    // Long name standing last falls back to the short name.
    GetStringOption(s, {"-m", "short", "--model"}, "--model", "-m");
    EXPECT_EQ(s, "short");
    GetStringOption(s, {"-m"}, "--model", "-m");
    EXPECT_EQ(s, "");
    // A value is whatever token comes next, even an option.
    GetStringOption(s, {"-m", "-a", "x"}, "--model", "-m");
    EXPECT_EQ(s, "-a");
    EXPECT_FALSE(HasOption({"--MODEL", "-M", "-mm"}, "--model", "-m"));
}

TEST(OptionLookup, BoolNeedsLiteralTrue) {
    bool b = true;
    GetBoolOption(b, {"-p"}, "--pretty-print", "-p");
    EXPECT_FALSE(b);
    b = false;
    GetBoolOption(b, {"-p", "true"}, "--pretty-print", "-p");
    EXPECT_TRUE(b);
    for (const char* text : {"1", "TRUE", "True", "yes", "true "}) {
        GetBoolOption(b, {"-c", text}, "--convert-cameras", "-c");
        EXPECT_FALSE(b) << text;
    }
    b = true;
    GetBoolOption(b, {"-x"}, "--convert-cameras", "-c");
    EXPECT_TRUE(b);  // absent: untouched
}

TEST(OptionLookup, NumbersParseLikeTheCLibrary) {
    int32_t i = 5;
    GetIntOption(i, {"--draco-position-bits", "abc"}, "--draco-position-bits", "");
    EXPECT_EQ(i, 0);
    GetIntOption(i, {"--draco-position-bits", " 12abc"}, "--draco-position-bits", "");
    EXPECT_EQ(i, 12);
    GetIntOption(i, {"--draco-position-bits", "-7"}, "--draco-position-bits", "");
    EXPECT_EQ(i, -7);
    // The empty short name matches an empty token, and the value after it is taken.
    i = 3;
    GetIntOption(i, {"-i", "", "9"}, "--draco-position-bits", "");
    EXPECT_EQ(i, 9);

    float f = 2.0f;
    GetFloatOption(f, {"-s"}, "--animation-start", "-s");
    EXPECT_EQ(f, 0.0f);
    GetFloatOption(f, {"-s", "1.5xyz"}, "--animation-start", "-s");
    EXPECT_EQ(f, 1.5f);
    EXPECT_THROW(GetFloatOption(f, {"-s", "abc"}, "--animation-start", "-s"), std::invalid_argument);
    EXPECT_THROW(GetFloatOption(f, {"-s", "1e60"}, "--animation-start", "-s"), std::out_of_range);
}

namespace {
struct Recorder {
    std::vector<std::string> calls;
    FormatRegistry registry;
    Recorder() {
        for (const char* ext : {".FBX", ".glb", ".gltf", ".obj", ".3ds", ".dae", ".dxf"}) {
            std::string key = ext;
            RegisterLoader(registry, ext, [this, key](const std::string& name, const ConversionOptions&) {
                calls.push_back(key + " " + name);
                return nullptr;
            });
        }
        for (const char* ext : {".json", ".GLB"}) {
            std::string key = ext;
            RegisterWriter(registry, ext, [this, key](const std::string& name, const Scene&, const ExportOptions&) {
                calls.push_back(key + " " + name);
                return true;
            });
        }
    }
};
}  // namespace

TEST(FormatRegistryTest, KeyOrderDecidesNotPosition) {
    Recorder r;
    ConversionOptions options;
    for (const char* name : {"a.obj.fbx", "a.fbx.backup", "dir.glb/x.fbx", "SCENE.FBX", "x.gltf", "m.glb",
                             "noext", "x.txt"})
        LoadScene(r.registry, name, options);
    // Keys are stored lower-cased; the loader sees the name unchanged.
    std::vector<std::string> expected = {".FBX a.obj.fbx", ".FBX a.fbx.backup", ".FBX dir.glb/x.fbx",
                                         ".FBX SCENE.FBX", ".gltf x.gltf", ".glb m.glb"};
    EXPECT_EQ(r.calls, expected);
    EXPECT_EQ(r.registry.loaders.begin()->first, ".3ds");

    r.calls.clear();
    Scene scene;
    EXPECT_TRUE(WriteScene(r.registry, "Out.JSON.glb", scene, ExportOptions()));
    EXPECT_FALSE(WriteScene(r.registry, "out.txt", scene, ExportOptions()));
    EXPECT_EQ(r.calls, std::vector<std::string>{".GLB Out.JSON.glb"});
}
