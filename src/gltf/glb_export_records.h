// Records into which a Scene is lowered before the GLB's JSON chunk is made, and the
// builder that owns the one binary buffer they point into.
// Private to the glTF library.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class GraphNode;

struct AccessorFormat {
    uint32_t componentType = 0;  // the JSON value, e.g. 5126
    uint32_t componentSize = 0;  // bytes of one component
    uint8_t components = 0;
    const char* type = "";  // "SCALAR", "VEC2", ...
};

extern const AccessorFormat kFormatScalarU16;
extern const AccessorFormat kFormatScalarU32;
extern const AccessorFormat kFormatScalarF32;
extern const AccessorFormat kFormatVec3F32;
extern const AccessorFormat kFormatVec4F32;
extern const AccessorFormat kFormatMat4F32;

inline constexpr uint32_t kTargetArrayBuffer = 34962;

struct GlbBufferView {
    int32_t index = 0;
    int32_t buffer = 0;
    uint32_t byteOffset = 0;
    uint32_t byteStride = 0;
    uint32_t byteLength = 0;
    uint32_t target = 0;
};

struct GlbAccessor {
    int32_t index = 0;
    int32_t bufferView = -1;
    AccessorFormat format;
    uint32_t byteOffset = 0;
    uint32_t count = 0;
    std::vector<float> min;
    std::vector<float> max;
    bool normalized = false;
    int32_t sparseIndicesView = -1;
    uint32_t sparseTotal = 0;  // full element count of a sparse accessor
};

struct GlbBuilder {
    int32_t buffer = 0;  // the only buffer: the GLB binary chunk
    std::vector<GlbBufferView> bufferViews;
    std::vector<GlbAccessor> accessors;
    std::vector<uint8_t> data;
};

struct GlbNode {
    int32_t index = 0;
    uint64_t id = 0;
    std::string name;
    uint8_t flag = 0;
    float translation[3] = {0, 0, 0};
    float rotation[4] = {0, 0, 0, 1};
    float scale[3] = {1, 1, 1};
    std::vector<int32_t> children;
    int32_t mesh = -1;
    int32_t camera = -1;
    int32_t light = -1;
    int32_t skin = -1;
    std::vector<std::string> skeletons;
    std::vector<std::string> userProperties;  // each entry a JSON object text
    const GraphNode* graphNode = nullptr;
};

struct GlbTargetPair {
    int32_t position = -1;
    int32_t normal = -1;
};

struct GlbPrimitive {
    int32_t indices = -1;
    int32_t mode = 4;
    int32_t dracoView = -1;
    std::map<std::string, int32_t> dracoAttributes;
    std::map<std::string, int32_t> attributes;  // ordered by byte-wise name
    std::vector<GlbTargetPair> targets;
};

struct GlbMesh {
    std::vector<GlbPrimitive> primitives;
    std::vector<float> weights;
    std::vector<std::string> targetNames;
};

struct GlbSkin {
    std::vector<int32_t> joints;
    int32_t inverseBindMatrices = -1;
    int32_t skeleton = -1;
};

struct GlbChannel {
    int32_t sampler = -1;
    int32_t node = -1;
    std::string path;
};

struct GlbSampler {
    int32_t input = -1;
    int32_t output = -1;
    std::string interpolation;
};

struct GlbAnimation {
    std::string name;
    std::vector<GlbChannel> channels;
    std::vector<GlbSampler> samplers;
};
