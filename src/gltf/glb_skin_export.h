// Skins of a GLB: joints as node indices and one inverse bind matrix block.
// Private to the glTF library.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "gltf/glb_export_records.h"
#include "scene/geometry.h"

// Node id -> node index; of two nodes with one id the later wins.
std::unordered_map<uint64_t, int32_t> MapNodeIds(const std::vector<GlbNode>& nodes);

// A joint whose node is unknown is reported and left out with its matrix. The skeleton
// is left for the caller to set.
GlbSkin ExportSkin(const Skin& skin, GlbBuilder& builder, const std::unordered_map<uint64_t, int32_t>& nodeIndexById);
