#include "gltf/glb_skin_export.h"

#include <cinttypes>

#include "gltf/glb_builder.h"
#include "scene/console.h"

static_assert(sizeof(Mat4) == 64, "inverse bind matrices are copied as 16 floats");

std::unordered_map<uint64_t, int32_t> MapNodeIds(const std::vector<GlbNode>& nodes) {
    std::unordered_map<uint64_t, int32_t> map;
    map.reserve(nodes.size());
    for (const GlbNode& node : nodes) map[node.id] = node.index;
    return map;
}

GlbSkin ExportSkin(const Skin& skin, GlbBuilder& builder, const std::unordered_map<uint64_t, int32_t>& nodeIndexById) {
    GlbSkin out;
    std::vector<Mat4> matrices;
    matrices.reserve(skin.joints.size());
    for (size_t i = 0; i < skin.joints.size(); ++i) {
        auto found = nodeIndexById.find(static_cast<uint64_t>(skin.joints[i]));
        if (found == nodeIndexById.end()) {
            ConsolePrint("GLB skin convertion error - failed to find a node %" PRId64 "\n", skin.joints[i]);
            continue;
        }
        out.joints.push_back(found->second);
        // A skin with fewer matrices than joints gets the identity for the missing ones.
        matrices.push_back(i < skin.inverseBindMatrices.size() ? skin.inverseBindMatrices[i] : Mat4{});
    }
    // Mat4 keeps the translation in elements 12..14, which is glTF's column order.
    int32_t view = AddDataView(builder, matrices.data(), matrices.size() * sizeof(Mat4));
    out.inverseBindMatrices = AddAccessor(builder, view, kFormatMat4F32);
    builder.accessors[size_t(out.inverseBindMatrices)].count = static_cast<uint32_t>(matrices.size());
    return out;
}
