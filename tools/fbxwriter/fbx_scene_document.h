// A whole FBX scene document as an authoring tool writes it: header, global settings,
// documents, definitions, objects (nodes, attributes, meshes, blend shapes, takes with
// layers, curve nodes and curves) and the connections between them. Builds the record tree
// that fbx_writer.h writes. Test tooling only.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fbx_writer.h"

namespace fbxwriter {

// Key times in files with TCDefinition 127 count 46,186,158,000 a second.
int64_t FileTime(double seconds);

struct Key {
    double seconds = 0.0;
    float value = 0.0f;
};

// Interpolation of a key as the file's attribute flags spell it.
enum class Interpolation : int32_t { Constant = 2, Linear = 4, Cubic = 8 };

class SceneDocument {
public:
    SceneDocument();

    // Global settings.
    void SetAxes(int32_t up, int32_t upSign, int32_t front, int32_t frontSign, int32_t coord, int32_t coordSign);
    // Length of the file's unit in centimetres (1 centimetres, 100 metres).
    void SetUnitScale(double centimetres);
    void SetTimeMode(int32_t mode);

    // A Model under parent (0: the scene's root node). subType is the Model's sub type in the
    // file ("Null", "LimbNode", "Mesh", "Camera", "Light"); no attribute is made here.
    int64_t AddNode(std::string_view name, int64_t parent = 0, std::string_view subType = "Null");
    // A NodeAttribute of the sub type ("Null", "Root", "LimbNode", "Camera", "Light"...)
    // connected to the node.
    int64_t AddAttribute(int64_t node, std::string_view subType, std::string_view name = "");
    // A one-triangle Mesh geometry connected to the node.
    int64_t AddMesh(int64_t node, std::string_view name = "");
    // A BlendShape deformer on a geometry, and its channels, each with one Shape target.
    int64_t AddBlendShape(int64_t geometry, std::string_view name);
    int64_t AddBlendShapeChannel(int64_t blendShape, std::string_view name);

    // Properties70 entries of any object; each replaces an earlier entry of its name.
    void SetProperty(int64_t object, std::string_view name, std::string_view type, std::string_view label,
                     std::string_view flags, const std::vector<Value>& values);
    // "Lcl Translation", "Lcl Rotation", "Lcl Scaling": animatable double3.
    void SetLocal(int64_t node, std::string_view name, double x, double y, double z);
    // Vector3D properties such as "RotationPivot", "PreRotation", "PostRotation".
    void SetVector(int64_t object, std::string_view name, double x, double y, double z);
    void SetColor(int64_t object, std::string_view name, double r, double g, double b);
    void SetBool(int64_t object, std::string_view name, bool value);
    void SetInt(int64_t object, std::string_view name, int32_t value);
    void SetEnum(int64_t object, std::string_view name, int32_t value);
    void SetNumber(int64_t object, std::string_view name, double value);

    // Takes.
    int64_t AddStack(std::string_view name, double startSeconds, double stopSeconds);
    int64_t AddLayer(int64_t stack, std::string_view name = "BaseLayer");
    // A curve node on a double3 property of an object (channels d|X, d|Y, d|Z with the
    // values given) and a curve on each channel whose key list is not empty.
    int64_t AnimateVector(int64_t layer, int64_t object, std::string_view property, std::string_view nodeName,
                          const std::array<double, 3>& channelValues, const std::array<std::vector<Key>, 3>& keys,
                          Interpolation interpolation = Interpolation::Linear);
    // A curve node on a number property (one channel, d|<property>) with one curve.
    int64_t AnimateNumber(int64_t layer, int64_t object, std::string_view property, double channelValue,
                          const std::vector<Key>& keys, Interpolation interpolation = Interpolation::Linear);

    // Curve key arrays written zlib-compressed, as exporters do with long arrays.
    void SetCompressCurves(bool compress) { compressCurves_ = compress; }

    // The records of the file, in the order an authoring tool writes them; the header
    // extension names fileVersion.
    std::vector<Record> Records(int32_t fileVersion = 7400) const;
    std::vector<uint8_t> Bytes(const Options& options = {}) const;

private:
    int64_t AddObject(std::string_view record, std::string_view name, std::string_view className,
                      std::string_view subType);
    Record& Object(int64_t id);
    int64_t AddCurve(int64_t curveNode, std::string_view channel, const std::vector<Key>& keys,
                     Interpolation interpolation);

    static constexpr int64_t kFirstId = 1000000;
    int64_t nextId_ = kFirstId;
    bool compressCurves_ = false;
    std::vector<Record> globalProperties_;
    std::vector<Record> objects_;
    std::vector<int64_t> objectIds_;
    std::vector<Record> connections_;
    struct Take {
        std::string name;
        double start, stop;
    };
    std::vector<Take> takes_;
};

}  // namespace fbxwriter
