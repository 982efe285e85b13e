// Geometry: control points, meshes with their polygon arrays and layer elements, shapes
// of blend-shape channels, and the other geometry classes, kept as they were read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fbx/fbx_node.h"

class FbxDeformer;
class FbxStatus;
class FbxAnimLayer;
class FbxAnimCurve;

enum class FbxMappingMode : uint8_t { None, ByControlPoint, ByPolygonVertex, ByPolygon, ByEdge, AllSame };
enum class FbxReferenceMode : uint8_t { Direct, Index, IndexToDirect };

// Kinds of layer element, by their record name without "LayerElement".
enum class FbxLayerElementKind : uint8_t {
    Normal, Binormal, Tangent, UV, Color, Material, Smoothing, PolygonGroup, Visibility, EdgeCrease,
    VertexCrease, Hole, UserData, Texture, Count
};

// One layer element as read: the direct values (doubles for vectors, UVs, colours and
// creases, integers for materials, smoothing, groups and flags) and the index array.
struct FbxLayerElement {
    FbxLayerElementKind kind = FbxLayerElementKind::Normal;
    int32_t layerIndex = 0;  // first value of the record
    int32_t version = 0;
    std::string name;
    FbxMappingMode mapping = FbxMappingMode::None;
    FbxReferenceMode reference = FbxReferenceMode::Direct;
    std::vector<double> directDoubles;
    std::vector<double> directW;  // NormalsW, BinormalsW, TangentsW
    std::vector<int32_t> directInts;
    std::vector<int32_t> indices;
};

// Which element of which kind a layer holds.
struct FbxLayerEntry {
    FbxLayerElementKind kind = FbxLayerElementKind::Normal;
    int32_t typedIndex = 0;
};

struct FbxLayer {
    int32_t index = 0;
    std::vector<FbxLayerEntry> entries;
};

class FbxLayerContainer : public FbxNodeAttribute {
    FBX_OBJECT_DECLARE(FbxLayerContainer, FbxNodeAttribute)
public:
    std::vector<FbxLayerElement> layerElements;  // in file order
    std::vector<FbxLayer> layers;
    int GetLayerCount() const { return static_cast<int>(layers.size()); }
};

class FbxGeometryBase : public FbxLayerContainer {
    FBX_OBJECT_DECLARE(FbxGeometryBase, FbxLayerContainer)
public:
    // Control points, three doubles each.
    std::vector<double> controlPoints;
    int GetControlPointsCount() const { return static_cast<int>(controlPoints.size() / 3); }

    FbxPropertyT<bool> PrimaryVisibility;
    FbxPropertyT<bool> CastShadow;
    FbxPropertyT<bool> ReceiveShadow;

protected:
    void ConstructProperties(bool forceSet) override;
};

class FbxGeometry : public FbxGeometryBase {
    FBX_OBJECT_DECLARE(FbxGeometry, FbxGeometryBase)
public:
    // Deformers are the FbxDeformer sources. Type 0 counts all, otherwise those whose
    // GetDeformerType is the type.
    int GetDeformerCount(int type = 0) const;
    FbxDeformer* GetDeformer(int index, int type = 0, FbxStatus* status = nullptr) const;
    // The curve of a blend-shape channel's DeformPercent on a layer (animation classes).
    FbxAnimCurve* GetShapeChannel(int blendShapeIndex, int channelIndex, FbxAnimLayer* layer, bool create = false,
                                  FbxStatus* status = nullptr);
};

class FbxMesh : public FbxGeometry {
    FBX_OBJECT_DECLARE(FbxMesh, FbxGeometry)
public:
    EType GetAttributeType() const override { return eMesh; }

    // Control-point indices; the last index of each polygon is stored as ~index.
    std::vector<int32_t> polygonVertexIndex;
    std::vector<int32_t> edges;  // polygon-vertex indices
    int32_t geometryVersion = 0;

    int GetPolygonCount() const;
};

// A blend-shape target: indices into the base geometry's control points and the
// positions (and normals) of those points.
class FbxShape : public FbxGeometryBase {
    FBX_OBJECT_DECLARE(FbxShape, FbxGeometryBase)
public:
    EType GetAttributeType() const override { return eShape; }
    std::vector<int32_t> indexes;
    std::vector<double> normals;
    int32_t version = 100;
};

// Geometry classes the program never reads: they keep their properties only.
#define FBX_PLAIN_GEOMETRY(Class, Parent, attributeType) \
    class Class : public Parent {                         \
        FBX_OBJECT_DECLARE(Class, Parent)                 \
    public:                                               \
        EType GetAttributeType() const override { return attributeType; } \
    };
FBX_PLAIN_GEOMETRY(FbxNurbs, FbxGeometry, eNurbs)
FBX_PLAIN_GEOMETRY(FbxNurbsSurface, FbxGeometry, eNurbsSurface)
FBX_PLAIN_GEOMETRY(FbxPatch, FbxGeometry, ePatch)
FBX_PLAIN_GEOMETRY(FbxNurbsCurve, FbxGeometry, eNurbsCurve)
FBX_PLAIN_GEOMETRY(FbxTrimNurbsSurface, FbxGeometry, eTrimNurbsSurface)
FBX_PLAIN_GEOMETRY(FbxBoundary, FbxGeometry, eBoundary)
FBX_PLAIN_GEOMETRY(FbxLine, FbxGeometry, eLine)
#undef FBX_PLAIN_GEOMETRY
