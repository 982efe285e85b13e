// The JSON chunk of a GLB, made from the export records, and the call that writes it
// with the binary buffer into one file.
// Private to the glTF library.
#pragma once

#include <string>
#include <vector>

#include "gltf/glb_export_records.h"
#include "json/json.h"
#include "scene/options.h"

// The text of one "min" / "max" entry: ten significant digits of the float's value.
std::string FormatBoundValue(float value);

JsonValue BuildGltfJson(const ExportOptions& options, const GlbBuilder& builder, const std::vector<GlbNode>& nodes,
                        const std::vector<GlbMesh>& meshes, const std::vector<GlbSkin>& skins,
                        const std::vector<GlbAnimation>& animations);

void WriteGltfJson(const std::string& path, const ExportOptions& options, const GlbBuilder& builder,
                   const std::vector<GlbNode>& nodes, const std::vector<GlbMesh>& meshes,
                   const std::vector<GlbSkin>& skins, const std::vector<GlbAnimation>& animations);
