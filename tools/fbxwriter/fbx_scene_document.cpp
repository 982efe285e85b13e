#include "fbx_scene_document.h"

#include <cmath>
#include <cstring>
#include <map>
#include <stdexcept>

namespace fbxwriter {

namespace {

constexpr double kFileTicksPerSecond = 46186158000.0;

Record* FindChild(Record& record, std::string_view name) {
    for (Record& child : record.children)
        if (child.name == name) return &child;
    return nullptr;
}

Record& Properties(Record& object) {
    if (Record* p = FindChild(object, "Properties70")) return *p;
    Record& p = object.Add("Properties70");
    p.block = true;
    return p;
}

// Replaces the entry of that name in a Properties70 block, or appends one.
void PutProperty(Record& block, Record property) {
    for (Record& existing : block.children) {
        if (existing.name == "P" && !existing.values.empty() && existing.values[0].bytes == property.values[0].bytes) {
            existing = std::move(property);
            return;
        }
    }
    block.children.push_back(std::move(property));
}

Record MakeProperty(std::string_view name, std::string_view type, std::string_view label, std::string_view flags,
                    const std::vector<Value>& values) {
    Record p = PropertyRecord(name, type, label, flags);
    for (const Value& v : values) p.Add(v);
    return p;
}

std::vector<Value> Doubles(std::initializer_list<double> values) {
    std::vector<Value> out;
    for (double v : values) out.push_back(Value::Double(v));
    return out;
}

float WordAsFloat(uint32_t word) {
    float f;
    std::memcpy(&f, &word, sizeof f);
    return f;
}

}  // namespace

int64_t FileTime(double seconds) { return static_cast<int64_t>(std::llround(seconds * kFileTicksPerSecond)); }

SceneDocument::SceneDocument() {
    const struct {
        const char* name;
        int32_t value;
    } axes[] = {{"UpAxis", 1},    {"UpAxisSign", 1},     {"FrontAxis", 2},      {"FrontAxisSign", 1},
                {"CoordAxis", 0}, {"CoordAxisSign", 1}, {"OriginalUpAxis", 1}, {"OriginalUpAxisSign", 1}};
    for (const auto& axis : axes)
        globalProperties_.push_back(MakeProperty(axis.name, "int", "Integer", "", {Value::Int(axis.value)}));
    globalProperties_.push_back(MakeProperty("UnitScaleFactor", "double", "Number", "", Doubles({1.0})));
    globalProperties_.push_back(MakeProperty("OriginalUnitScaleFactor", "double", "Number", "", Doubles({1.0})));
    globalProperties_.push_back(MakeProperty("AmbientColor", "ColorRGB", "Color", "", Doubles({0.0, 0.0, 0.0})));
    globalProperties_.push_back(
        MakeProperty("DefaultCamera", "KString", "", "", {Value::String("Producer Perspective")}));
    globalProperties_.push_back(MakeProperty("TimeMode", "enum", "", "", {Value::Int(6)}));
    globalProperties_.push_back(MakeProperty("TimeSpanStart", "KTime", "Time", "", {Value::Long(0)}));
    globalProperties_.push_back(MakeProperty("TimeSpanStop", "KTime", "Time", "", {Value::Long(FileTime(1.0))}));
    globalProperties_.push_back(MakeProperty("CustomFrameRate", "double", "Number", "", Doubles({-1.0})));
}

void SceneDocument::SetAxes(int32_t up, int32_t upSign, int32_t front, int32_t frontSign, int32_t coord,
                            int32_t coordSign) {
    Record block("Properties70");
    block.children = std::move(globalProperties_);
    const struct {
        const char* name;
        int32_t value;
    } axes[] = {{"UpAxis", up},       {"UpAxisSign", upSign},       {"FrontAxis", front},
                {"FrontAxisSign", frontSign}, {"CoordAxis", coord}, {"CoordAxisSign", coordSign}};
    for (const auto& axis : axes) PutProperty(block, MakeProperty(axis.name, "int", "Integer", "", {Value::Int(axis.value)}));
    globalProperties_ = std::move(block.children);
}

void SceneDocument::SetUnitScale(double centimetres) {
    Record block("Properties70");
    block.children = std::move(globalProperties_);
    PutProperty(block, MakeProperty("UnitScaleFactor", "double", "Number", "", Doubles({centimetres})));
    PutProperty(block, MakeProperty("OriginalUnitScaleFactor", "double", "Number", "", Doubles({centimetres})));
    globalProperties_ = std::move(block.children);
}

void SceneDocument::SetTimeMode(int32_t mode) {
    Record block("Properties70");
    block.children = std::move(globalProperties_);
    PutProperty(block, MakeProperty("TimeMode", "enum", "", "", {Value::Int(mode)}));
    globalProperties_ = std::move(block.children);
}

int64_t SceneDocument::AddObject(std::string_view record, std::string_view name, std::string_view className,
                                 std::string_view subType) {
    const int64_t id = nextId_++;
    objects_.push_back(ObjectRecord(record, id, name, className, subType));
    objectIds_.push_back(id);
    return id;
}

Record& SceneDocument::Object(int64_t id) {
    // Ids are handed out in order, one object each: the index is the id's offset.
    const int64_t offset = id - kFirstId;
    if (offset >= 0 && size_t(offset) < objectIds_.size() && objectIds_[size_t(offset)] == id)
        return objects_[size_t(offset)];
    for (size_t k = 0; k < objectIds_.size(); ++k)
        if (objectIds_[k] == id) return objects_[k];
    throw std::invalid_argument("no object of that id");
}

int64_t SceneDocument::AddNode(std::string_view name, int64_t parent, std::string_view subType) {
    const int64_t id = AddObject("Model", name, "Model", subType);
    Record& model = Object(id);
    model.Add("Version").Int(232);
    Properties(model);
    model.Add("Shading").Char('Y');
    model.Add("Culling").String("CullingOff");
    connections_.push_back(ConnectionOO(id, parent));
    return id;
}

int64_t SceneDocument::AddAttribute(int64_t node, std::string_view subType, std::string_view name) {
    const int64_t id = AddObject("NodeAttribute", name, "NodeAttribute", subType);
    Record& attribute = Object(id);
    Properties(attribute);
    const bool skeleton = subType == "Root" || subType == "Limb" || subType == "LimbNode" || subType == "Effector";
    attribute.Add("TypeFlags").String(skeleton ? "Skeleton" : subType);
    connections_.push_back(ConnectionOO(id, node));
    return id;
}

int64_t SceneDocument::AddMesh(int64_t node, std::string_view name) {
    const int64_t id = AddObject("Geometry", name, "Geometry", "Mesh");
    Record& mesh = Object(id);
    Properties(mesh);
    mesh.Add("GeometryVersion").Int(124);
    mesh.Add("Vertices").Add(Value::DoubleArray({0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0, 0.0}));
    mesh.Add("PolygonVertexIndex").Add(Value::IntArray({0, 1, -3}));
    connections_.push_back(ConnectionOO(id, node));
    return id;
}

int64_t SceneDocument::AddBlendShape(int64_t geometry, std::string_view name) {
    const int64_t id = AddObject("Deformer", name, "Deformer", "BlendShape");
    Object(id).Add("Version").Int(100);
    connections_.push_back(ConnectionOO(id, geometry));
    return id;
}

int64_t SceneDocument::AddBlendShapeChannel(int64_t blendShape, std::string_view name) {
    const int64_t id = AddObject("Deformer", name, "SubDeformer", "BlendShapeChannel");
    Record& channel = Object(id);
    channel.Add("Version").Int(100);
    Properties(channel).Child(MakeProperty("DeformPercent", "Number", "", "A", Doubles({0.0})));
    channel.Add("DeformPercent").Double(0.0);
    channel.Add("FullWeights").Add(Value::DoubleArray({100.0}));
    connections_.push_back(ConnectionOO(id, blendShape));

    const int64_t shapeId = AddObject("Geometry", name, "Geometry", "Shape");
    Record& shape = Object(shapeId);
    shape.Add("Version").Int(100);
    shape.Add("Indexes").Add(Value::IntArray({2}));
    shape.Add("Vertices").Add(Value::DoubleArray({0.0, 0.0, 0.25}));
    shape.Add("Normals").Add(Value::DoubleArray({0.0, 0.0, 0.0}));
    connections_.push_back(ConnectionOO(shapeId, id));
    return id;
}

void SceneDocument::SetProperty(int64_t object, std::string_view name, std::string_view type, std::string_view label,
                                std::string_view flags, const std::vector<Value>& values) {
    PutProperty(Properties(Object(object)), MakeProperty(name, type, label, flags, values));
}

void SceneDocument::SetLocal(int64_t node, std::string_view name, double x, double y, double z) {
    SetProperty(node, name, name, "", "A", Doubles({x, y, z}));
}

void SceneDocument::SetVector(int64_t object, std::string_view name, double x, double y, double z) {
    SetProperty(object, name, "Vector3D", "Vector", "", Doubles({x, y, z}));
}

void SceneDocument::SetColor(int64_t object, std::string_view name, double r, double g, double b) {
    SetProperty(object, name, "ColorRGB", "Color", "", Doubles({r, g, b}));
}

void SceneDocument::SetBool(int64_t object, std::string_view name, bool value) {
    SetProperty(object, name, "bool", "", "", {Value::Int(value ? 1 : 0)});
}

void SceneDocument::SetInt(int64_t object, std::string_view name, int32_t value) {
    SetProperty(object, name, "int", "Integer", "", {Value::Int(value)});
}

void SceneDocument::SetEnum(int64_t object, std::string_view name, int32_t value) {
    SetProperty(object, name, "enum", "", "", {Value::Int(value)});
}

void SceneDocument::SetNumber(int64_t object, std::string_view name, double value) {
    SetProperty(object, name, "Number", "", "A", Doubles({value}));
}

int64_t SceneDocument::AddStack(std::string_view name, double startSeconds, double stopSeconds) {
    const int64_t id = AddObject("AnimationStack", name, "AnimStack", "");
    Record& block = Properties(Object(id));
    for (const char* p : {"LocalStart", "ReferenceStart"})
        block.Child(MakeProperty(p, "KTime", "Time", "", {Value::Long(FileTime(startSeconds))}));
    for (const char* p : {"LocalStop", "ReferenceStop"})
        block.Child(MakeProperty(p, "KTime", "Time", "", {Value::Long(FileTime(stopSeconds))}));
    takes_.push_back(Take{std::string(name), startSeconds, stopSeconds});
    return id;
}

int64_t SceneDocument::AddLayer(int64_t stack, std::string_view name) {
    const int64_t id = AddObject("AnimationLayer", name, "AnimLayer", "");
    Properties(Object(id));
    connections_.push_back(ConnectionOO(id, stack));
    return id;
}

int64_t SceneDocument::AnimateVector(int64_t layer, int64_t object, std::string_view property,
                                     std::string_view nodeName, const std::array<double, 3>& channelValues,
                                     const std::array<std::vector<Key>, 3>& keys, Interpolation interpolation) {
    const int64_t id = AddObject("AnimationCurveNode", nodeName, "AnimCurveNode", "");
    Record& block = Properties(Object(id));
    static constexpr const char* kChannels[3] = {"d|X", "d|Y", "d|Z"};
    for (int axis = 0; axis < 3; ++axis) block.Child(MakeProperty(kChannels[axis], "Number", "", "A", Doubles({channelValues[size_t(axis)]})));
    connections_.push_back(ConnectionOO(id, layer));
    connections_.push_back(ConnectionOP(id, object, property));
    for (int axis = 0; axis < 3; ++axis)
        if (!keys[size_t(axis)].empty()) AddCurve(id, kChannels[axis], keys[size_t(axis)], interpolation);
    return id;
}

int64_t SceneDocument::AnimateNumber(int64_t layer, int64_t object, std::string_view property, double channelValue,
                                     const std::vector<Key>& keys, Interpolation interpolation) {
    const int64_t id = AddObject("AnimationCurveNode", property, "AnimCurveNode", "");
    const std::string channel = "d|" + std::string(property);
    Properties(Object(id)).Child(MakeProperty(channel, "Number", "", "A", Doubles({channelValue})));
    connections_.push_back(ConnectionOO(id, layer));
    connections_.push_back(ConnectionOP(id, object, property));
    if (!keys.empty()) AddCurve(id, channel, keys, interpolation);
    return id;
}

int64_t SceneDocument::AddCurve(int64_t curveNode, std::string_view channel, const std::vector<Key>& keys,
                                Interpolation interpolation) {
    const int64_t id = AddObject("AnimationCurve", "", "AnimCurve", "");
    Record& curve = Object(id);
    curve.Add("Default").Double(0.0);
    curve.Add("KeyVer").Int(4009);
    std::vector<int64_t> times;
    std::vector<float> values;
    for (const Key& key : keys) {
        times.push_back(FileTime(key.seconds));
        values.push_back(key.value);
    }
    const uint32_t encoding = compressCurves_ ? 1 : 0;
    curve.Add("KeyTime").Add(Value::LongArray(times, encoding));
    curve.Add("KeyValueFloat").Add(Value::FloatArray(values, encoding));
    // One attribute record for all keys: cubic keys with user tangents of slope 0 and the
    // default weights of one third (3333 in each half of the third word).
    int32_t flags = static_cast<int32_t>(interpolation);
    if (interpolation == Interpolation::Cubic) flags |= 0x400;
    curve.Add("KeyAttrFlags").Add(Value::IntArray({flags}));
    curve.Add("KeyAttrDataFloat").Add(Value::FloatArray({0.0f, 0.0f, WordAsFloat(0x0D050D05u), 0.0f}));
    curve.Add("KeyAttrRefCount").Add(Value::IntArray({static_cast<int32_t>(keys.size())}));
    connections_.push_back(ConnectionOP(id, curveNode, channel));
    return id;
}

std::vector<Record> SceneDocument::Records(int32_t fileVersion) const {
    std::vector<Record> records;
    records.push_back(HeaderExtension(1003, fileVersion));

    Record& global = records.emplace_back("GlobalSettings");
    global.Add("Version").Int(1000);
    Record& globalProperties = global.Add("Properties70");
    globalProperties.block = true;
    globalProperties.children = globalProperties_;

    Record& documents = records.emplace_back("Documents");
    documents.Add("Count").Int(1);
    Record& document = documents.Add("Document");
    document.Long(nextId_ + 1).String("").String("Scene");
    Record& documentProperties = document.Add("Properties70");
    documentProperties.block = true;
    documentProperties.Child(MakeProperty("ActiveAnimStackName", "KString", "", "",
                                          {Value::String(takes_.empty() ? "" : takes_.front().name)}));
    document.Add("RootNode").Long(0);

    Record& references = records.emplace_back("References");
    references.block = true;

    Record& definitions = records.emplace_back("Definitions");
    definitions.Add("Version").Int(100);
    std::map<std::string, int32_t> counts;
    for (const Record& object : objects_) ++counts[object.name];
    definitions.Add("Count").Int(static_cast<int32_t>(objects_.size() + 1));
    definitions.Add("ObjectType").String("GlobalSettings").Add("Count").Int(1);
    for (const auto& [type, count] : counts) definitions.Add("ObjectType").String(type).Add("Count").Int(count);

    Record& objects = records.emplace_back("Objects");
    objects.block = true;
    objects.children = objects_;

    Record& connections = records.emplace_back("Connections");
    connections.block = true;
    connections.children = connections_;

    Record& takes = records.emplace_back("Takes");
    takes.Add("Current").String(takes_.empty() ? "" : takes_.front().name);
    for (const Take& take : takes_) {
        Record& record = takes.Add("Take");
        record.String(take.name);
        record.Add("FileName").String(take.name + ".tak");
        record.Add("LocalTime").Long(FileTime(take.start)).Long(FileTime(take.stop));
        record.Add("ReferenceTime").Long(FileTime(take.start)).Long(FileTime(take.stop));
    }
    return records;
}

std::vector<uint8_t> SceneDocument::Bytes(const Options& options) const {
    return Write(Records(static_cast<int32_t>(options.version)), options);
}

}  // namespace fbxwriter
