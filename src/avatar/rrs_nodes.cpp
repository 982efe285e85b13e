#include "avatar/rrs_nodes.h"

#include <filesystem>
#include <system_error>

#include "json/json.h"
#include "scene/console.h"

namespace {
// The folder of the running executable, or a stand-in that names no real folder, so that a
// failure never falls back on the working directory.
std::filesystem::path ExecutableFolder() {
    std::error_code error;
    std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error || exe.empty()) return "unknown executable path";
    return exe.parent_path();
}

// Array elements by the library's string rule: scalars give their text, null gives
// "null", a nested array or object gives the empty string. Nothing is refused.
void InsertTexts(const JsonValue& array, std::unordered_set<std::string>& set) {
    for (size_t i = 0; i < array.Count(); ++i) set.insert(array.Member(i).ToString(""));
}

// Checks one required member; prints the first fault found.
bool IsNameArray(const JsonValue& root, const char* key, const char* missing, const char* invalid) {
    if (!root.Has(key)) {
        ConsoleErrorText("%s\n", missing);
        return false;
    }
    if (root.Get(key).Kind() != kJsonArray) {
        ConsoleErrorText("%s\n", invalid);
        return false;
    }
    return true;
}
}  // namespace

bool LoadRrsNodes(RrsNodeSets& sets) {
    const std::filesystem::path path = ExecutableFolder() / "resources" / "rrs_nodes.json";
    const std::string pathText = path.string();
    ConsolePrint("Path to rrs nodes json file: %s\n", pathText.c_str());

    JsonParser parser;
    const JsonValue root = parser.ParseFile(pathText);
    if (root.IsNullHandle() || root.Kind() == kJsonNull) {
        ConsoleErrorText("Invalid rrs nodes json file\n");
        return false;
    }
    if (!IsNameArray(root, "ignore_node_keys", "ignore_node_keys not found in json",
                     "ignore_node_keys not valid in json"))
        return false;
    if (!IsNameArray(root, "inherit_rrs_nodes", "inherit_rrs_nodes not found in json",
                     "inherit_rrs_nodes not valid in json"))
        return false;

    InsertTexts(root.Get("ignore_node_keys"), sets.ignoreNodeKeys);
    InsertTexts(root.Get("inherit_rrs_nodes"), sets.inheritRrsNodes);
    return true;
}

RrsNodeSets RequireRrsNodes() {
    RrsNodeSets sets;
    if (!LoadRrsNodes(sets)) EndRun();
    return sets;
}
