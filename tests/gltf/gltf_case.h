// Reading cases kept as glTF text in tests/gltf/data/*.json: each case is
//   {"case": name, "why": reasons, "gltf": {...}, "expect": {"field": "value", ...}}
// The input is a glTF document in which an object that carries "values" (a buffer view,
// an accessor, a sparse accessor's "indices" or "values") is given those numbers as bytes
// of its component type in the binary chunk. After reading, every accessor, the decode
// cost and the import are described as named fields (see CaseFields); a case checks the
// fields it lists. A value starting with '~' compares its numbers to within 1e-6 (relative
// above 1; '*' for a number not checked), any other value compares as text.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "gltf/gltf_context.h"

namespace gltftest {

using Fields = std::map<std::string, std::string>;

// The cases of data/<file>.json for each file, each as its JSON text, named by its "case".
struct Case {
    std::string name;
    std::string json;
};
void PrintTo(const Case& c, std::ostream* out);
std::vector<Case> CasesOf(std::initializer_list<const char*> files);
std::string CaseName(const testing::TestParamInfo<Case>& row);

// The GLB file of a case's "gltf" member; "buffers" defaults to the one binary chunk.
std::vector<uint8_t> GlbFromCase(const rapidjson::Value& gltf);

// Fields of a read document:
//   "accessor I float|index|joint"  the values read, or "refused"
//   "decoded bytes"                 the estimated cost of the import
//   "image names"                   the file names of the images, or "refused"
//   "import"                        "ok" or "refused"; when ok, the scene's fields:
//   "root", "root/0", ... <name|id|position|rotation|scale|children|camera|light|mesh>
//   "<node> mesh I <type|indices|vertices|positions|normals|colors|joints|weights|uvN|skin|
//                   skin joints|skin matrices|targets|target K name|...>"
//   "geometries", "lights", "light I <field>", "animations", "animation I <name|duration|
//   tracks|track T node|track T <translation|rotation|euler|scale|weights> <times|
//   interpolation|values|in|out>>", "textures", "texture URI <field>", "material ID <field>" (a texture slot
//   shows its texture's uri)
// Floats are written with nine significant digits; list items are separated by ',',
// records of a list (vectors, matrices, keys) by ' '.
Fields CaseFields(GltfContext& context);

void ExpectField(const Fields& fields, const std::string& name, const std::string& expected);

}  // namespace gltftest
