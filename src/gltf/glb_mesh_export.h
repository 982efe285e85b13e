// Meshes of a GLB: primitives with shared index and vertex blocks, sparse morph
// targets, Draco primitives, and the skins of the nodes that use them.
// Private to the glTF library.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "gltf/glb_export_records.h"
#include "scene/geometry.h"

// Pointer identity decides sharing, for the whole file.
struct MeshExportCaches {
    std::unordered_map<const Geometry*, int32_t> meshes;
    std::unordered_map<const Skin*, int32_t> skins;
    std::unordered_map<const MeshInstance*, GlbPrimitive> primitives;
    std::unordered_map<const std::vector<uint32_t>*, int32_t> indices;
    std::unordered_map<const VertexData*, std::map<std::string, int32_t>> vertexData;
    std::unordered_map<const MorphTarget*, GlbTargetPair> targets;
};

// Gives every node with a geometry its mesh, and its skin; a skin's skeleton is the
// last node that uses it.
void ExportMeshes(std::vector<GlbNode>& nodes, GlbBuilder& builder, std::vector<GlbMesh>& meshes,
                  std::vector<GlbSkin>& skins);
GlbMesh ExportMesh(const Geometry& geometry, GlbBuilder& builder, MeshExportCaches& caches);
GlbTargetPair ExportMorphTarget(const MorphTarget& target, GlbBuilder& builder);
GlbPrimitive ExportDracoPrimitive(const DracoPayload& payload, GlbBuilder& builder);
