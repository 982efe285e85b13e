// Vertex-carrying records: one Geometry per source mesh, one MeshInstance per primitive.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "scene/base_object.h"
#include "scene/math.h"

struct Material;

// Codes of MeshInstance::primitiveType.
enum PrimitiveType : uint32_t {
    kPrimitivePoints = 0,
    kPrimitiveLines = 1,
    kPrimitiveLineStrip = 2,
    kPrimitiveTriangles = 3,
    kPrimitiveTriangleStrip = 4,
};

// Codes of the vertex attributes, as DracoAttributeInfo::semantic records them. Tangent
// and binormal have codes but no array in VertexData.
enum VertexAttribute : uint32_t {
    kAttributePosition = 0,
    kAttributeNormal = 1,
    kAttributeTangent = 2,
    kAttributeBinormal = 3,
    kAttributeColor0 = 4,
    kAttributeJoints0 = 5,
    kAttributeWeights0 = 6,
    kAttributeTexCoord0 = 7,  // set i is kAttributeTexCoord0 + i, up to 14 for set 7
};

// Codes of the element type of attribute values (DracoAttributeInfo::componentType).
enum ComponentKind : uint32_t {
    kComponentFloat = 0,
    kComponentInt8 = 1,
    kComponentInt16 = 2,
    kComponentInt32 = 3,
    kComponentUint8 = 4,
    kComponentUint16 = 5,
    kComponentUint32 = 6,
};

struct VertexData {
    std::vector<float> positions;  // 3 per vertex
    std::vector<float> normals;    // 3 per vertex
    std::vector<float> colors;     // as many as the source had per vertex
    std::vector<uint16_t> joints;  // 4 per vertex
    std::vector<float> weights;    // 4 per vertex
    std::vector<float> texCoords[8];  // 2 per vertex, each set possibly empty
};

struct Skin {
    std::vector<Mat4> inverseBindMatrices;
    std::vector<int64_t> joints;  // source node indices
};

// A sparse set of vertex deltas once compacted; dense (count == vertex count) before.
struct MorphTarget {
    std::vector<uint32_t> indices;  // empty before compaction
    uint32_t count = 0;
    uint32_t sourceVertexCount = 0;
    std::vector<float> deltaPositions;
    std::vector<float> deltaNormals;
    std::string name;
    BoundingBox boundingBox;
    float defaultWeight = 0.0f;

    MorphTarget() = default;
    // A dense target for n vertices; the caller fills the zeroed delta arrays.
    explicit MorphTarget(uint32_t n) : count(n), deltaPositions(size_t(n) * 3, 0.0f), deltaNormals(size_t(n) * 3, 0.0f) {}
};

// Keeps the vertices with any delta component strictly above threshold in magnitude.
void Compact(MorphTarget& target, float threshold);

class Morph {
public:
    std::vector<MorphTarget*> targets;
    virtual ~Morph() = default;  // the targets are not owned
};

struct DracoAttributeInfo {
    int32_t semantic = kAttributePosition;   // a VertexAttribute code
    int32_t componentType = kComponentFloat;  // a ComponentKind code: float, or unsigned 16-bit for joints
    int32_t components = 0;
    uint8_t normalized = 0;
    uint32_t byteOffset = 0;
    int32_t attributeId = 0;
    std::vector<float> min;
    std::vector<float> max;
};

struct DracoPayload {
    int32_t vertexCount = 0;
    int32_t indexCount = 0;
    std::vector<uint8_t> data;
    std::vector<DracoAttributeInfo> attributes;
};

struct MeshInstance {
    uint32_t primitiveType = kPrimitiveTriangles;  // a PrimitiveType code
    Material* material = nullptr;
    std::vector<uint32_t>* indices = nullptr;  // null: not indexed
    VertexData* vertices = nullptr;
    Skin* skin = nullptr;
    Morph* morph = nullptr;
    std::optional<DracoPayload> compressed;
    BoundingBox boundingBox;
};

struct Geometry : BaseObject {
    std::vector<MeshInstance*> meshInstances;  // owned by the scene (Scene::Own), not by the geometry
};
