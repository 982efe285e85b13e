#include <gtest/gtest.h>

#include <stdexcept>

#include "driver/format_registry.h"
#include "driver/options.h"
#include "text_table.h"

class OptionLookupTest : public testing::TestWithParam<testsupport::TableRow> {};

TEST_P(OptionLookupTest, ReadsTheValueAsTheToolDoes) {
    const testsupport::TableRow& c = GetParam();
    const std::vector<std::string> args = c.Items(2);
    const std::string kind = c.Text(1), longName = c.Text(3), shortName = c.Text(4), expected = c.Text(6);
    if (kind == "string") {
        std::string s = c.Text(5);
        GetStringOption(s, args, longName, shortName);
        EXPECT_EQ(s, expected);
    } else if (kind == "has") {
        EXPECT_EQ(HasOption(args, longName, shortName), expected == "true");
    } else if (kind == "bool") {
        bool b = c.Text(5) == "true";
        GetBoolOption(b, args, longName, shortName);
        EXPECT_EQ(b, expected == "true");
    } else if (kind == "int") {
        int32_t i = c.Int(5);
        GetIntOption(i, args, longName, shortName);
        EXPECT_EQ(i, c.Int(6));
    } else {
        float f = c.Float(5);
        if (expected == "invalid_argument") {
            EXPECT_THROW(GetFloatOption(f, args, longName, shortName), std::invalid_argument);
        } else if (expected == "out_of_range") {
            EXPECT_THROW(GetFloatOption(f, args, longName, shortName), std::out_of_range);
        } else {
            GetFloatOption(f, args, longName, shortName);
            EXPECT_EQ(f, c.Float(6));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Options, OptionLookupTest,
                         testing::ValuesIn(testsupport::ReadTable(VURL_TEST_DATA "/options.txt")), testsupport::RowName);

TEST(FormatRegistryTest, KeyOrderDecidesNotPosition) {
    std::vector<std::string> calls;
    FormatRegistry registry;
    for (std::string ext : {".FBX", ".glb", ".gltf", ".obj", ".3ds", ".dae", ".dxf"})
        RegisterLoader(registry, ext, [&calls, ext](const std::string& name, const ConversionOptions&) {
            calls.push_back(ext + " " + name);
            return nullptr;
        });
    for (std::string ext : {".json", ".GLB"})
        RegisterWriter(registry, ext, [&calls, ext](const std::string& name, const Scene&, const ExportOptions&) {
            calls.push_back(ext + " " + name);
            return true;
        });
    for (const char* name : {"a.obj.fbx", "a.fbx.backup", "dir.glb/x.fbx", "SCENE.FBX", "x.gltf", "m.glb",
                             "noext", "x.txt"})
        LoadScene(registry, name, ConversionOptions());
    // Keys are stored lower-cased; the loader sees the name unchanged.
    EXPECT_EQ(calls, (std::vector<std::string>{".FBX a.obj.fbx", ".FBX a.fbx.backup", ".FBX dir.glb/x.fbx",
                                               ".FBX SCENE.FBX", ".gltf x.gltf", ".glb m.glb"}));
    EXPECT_EQ(registry.loaders.begin()->first, ".3ds");

    calls.clear();
    Scene scene;
    EXPECT_TRUE(WriteScene(registry, "Out.JSON.glb", scene, ExportOptions()));
    EXPECT_FALSE(WriteScene(registry, "out.txt", scene, ExportOptions()));
    EXPECT_EQ(calls, std::vector<std::string>{".GLB Out.JSON.glb"});
}
