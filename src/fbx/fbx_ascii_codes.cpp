#include "fbx/fbx_ascii_codes.h"

#include <algorithm>
#include <array>

namespace {

using Kind = FbxAsciiRecordKind;

struct Entry {
    std::string_view name;
    FbxAsciiRecordRule rule;
};

constexpr FbxAsciiRecordRule Array(char code) { return {Kind::Plain, code, false}; }
constexpr FbxAsciiRecordRule Of(Kind kind) { return {kind, 0, false}; }

// Record names whose values the binary files of the authoring tools give a
// fixed code. Names not listed take the plain rule.
constexpr Entry kEntries[] = {
    // Geometry, layer elements, deformers, poses, NURBS.
    {"Vertices", Array('d')},
    {"PolygonVertexIndex", Array('i')},
    {"Edges", Array('i')},
    {"Normals", Array('d')},
    {"NormalsW", Array('d')},
    {"NormalsIndex", Array('i')},
    {"Binormals", Array('d')},
    {"BinormalsW", Array('d')},
    {"BinormalsIndex", Array('i')},
    {"Tangents", Array('d')},
    {"TangentsW", Array('d')},
    {"TangentsIndex", Array('i')},
    {"UV", Array('d')},
    {"UVIndex", Array('i')},
    {"Colors", Array('d')},
    {"ColorIndex", Array('i')},
    {"Materials", Array('i')},
    {"TextureId", Array('i')},
    {"Smoothing", Array('i')},
    {"PolygonGroup", Array('i')},
    {"Visibility", Array('b')},
    {"Hole", Array('b')},
    {"EdgeCrease", Array('d')},
    {"VertexCrease", Array('d')},
    {"UserData", Array('i')},
    {"Indexes", Array('i')},
    {"Weights", Array('d')},
    {"Transform", Array('d')},
    {"TransformLink", Array('d')},
    {"TransformAssociateModel", Array('d')},
    {"FullWeights", Array('d')},
    {"Matrix", Array('d')},
    {"KnotVector", Array('d')},
    {"KnotVectorU", Array('d')},
    {"KnotVectorV", Array('d')},
    {"Points", Array('d')},
    {"PointsIndex", Array('i')},
    {"ImageData", Array('c')},
    // Animation curves.
    {"KeyTime", Array('l')},
    {"KeyValueFloat", Array('f')},
    {"KeyValueDouble", Array('d')},
    {"KeyAttrFlags", Array('i')},
    {"KeyAttrDataFloat", {Kind::Plain, 'f', true}},
    {"KeyAttrRefCount", Array('i')},
    // Scalars: ids and times, doubles.
    {"RootNode", Of(Kind::Ids)},
    {"Node", Of(Kind::Ids)},
    {"LocalTime", Of(Kind::Ids)},
    {"ReferenceTime", Of(Kind::Ids)},
    {"Default", Of(Kind::Reals)},
    {"DeformPercent", Of(Kind::Reals)},
    {"Link_DeformAcuracy", Of(Kind::Reals)},
    {"Alphas", Of(Kind::Reals)},
    {"AudioColor", Of(Kind::Reals)},
    {"CameraOrthoZoom", Of(Kind::Reals)},
    {"Position", Of(Kind::Reals)},
    {"LookAt", Of(Kind::Reals)},
    {"Up", Of(Kind::Reals)},
    {"ModelUVScaling", Of(Kind::Reals)},
    {"ModelUVTranslation", Of(Kind::Reals)},
    // Properties and embedded media.
    {"P", Of(Kind::Property)},
    {"Content", Of(Kind::Raw)},
    {"BinaryData", Of(Kind::Raw)},
};

constexpr size_t kEntryCount = std::size(kEntries);

std::array<Entry, kEntryCount> SortedEntries() {
    std::array<Entry, kEntryCount> sorted;
    std::copy(std::begin(kEntries), std::end(kEntries), sorted.begin());
    std::sort(sorted.begin(), sorted.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return sorted;
}

bool EndsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

}  // namespace

FbxAsciiRecordRule FbxAsciiRuleFor(std::string_view name, std::string_view parent) {
    // Object records and documents open with their id.
    if (parent == "Objects" || (parent == "Documents" && name == "Document")) return Of(Kind::FirstId);
    if (parent == "Connections" && name == "C") return Of(Kind::Ids);
    static const std::array<Entry, kEntryCount> sorted = SortedEntries();
    const auto it = std::lower_bound(sorted.begin(), sorted.end(), name,
                                     [](const Entry& e, std::string_view n) { return e.name < n; });
    if (it != sorted.end() && it->name == name) return it->rule;
    // Constraint offsets: TOFFSETX, PARENTROFFSETY and so on.
    if (EndsWith(name, "OFFSETX") || EndsWith(name, "OFFSETY") || EndsWith(name, "OFFSETZ")) return Of(Kind::Reals);
    return Of(Kind::Plain);
}

char FbxAsciiPropertyCode(std::string_view type) {
    static constexpr std::string_view kInts[] = {"int",  "Integer", "enum",   "Enum",  "bool",   "Bool",
                                                 "Visibility Inheritance", "Action", "Blob", "Short", "UShort",
                                                 "UInt"};
    static constexpr std::string_view kLongs[] = {"KTime", "ULongLong", "LongLong"};
    static constexpr std::string_view kFloats[] = {"float", "Float", "HalfFloat"};
    static constexpr std::string_view kBytes[] = {"UByte", "UChar"};
    auto in = [&type](const auto& list) { return std::find(std::begin(list), std::end(list), type) != std::end(list); };
    if (in(kInts)) return 'I';
    if (in(kLongs)) return 'L';
    if (in(kFloats)) return 'F';
    if (in(kBytes)) return 'Z';
    return 'D';
}
