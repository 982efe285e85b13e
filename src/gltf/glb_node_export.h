// The flattened node list of a GLB: depth first, parents before their children.
// Private to the glTF library.
#pragma once

#include <vector>

#include "gltf/glb_export_records.h"
#include "scene/scene.h"

// Node 0 is the root; a null root gives an empty list.
std::vector<GlbNode> ExportNodes(const GraphNode* root);
