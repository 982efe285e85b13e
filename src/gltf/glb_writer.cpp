#include "gltf/glb_writer.h"

#include "gltf/glb_animation_export.h"
#include "gltf/glb_buffer_estimate.h"
#include "gltf/glb_container_write.h"
#include "gltf/glb_json_write.h"
#include "gltf/glb_mesh_export.h"
#include "gltf/glb_node_export.h"
#include "scene/memory_budget.h"

bool WriteGlb(const std::string& fileName, const Scene& scene, const ExportOptions& options) {
    const size_t estimate = EstimateGlbBufferBytes(scene, options);
    // Refused before anything is built when the buffer alone cannot fit in memory.
    const std::string shortfall = MemoryShortfall(estimate, AvailableMemoryBytes());
    if (!shortfall.empty()) RefuseGlb(fileName, "writing it " + shortfall);
    GlbBuilder builder;
    // Reserved address space that stays unused is never touched, so a generous bound
    // costs no memory, while growing the buffer would copy it several times.
    builder.data.reserve(estimate);
    std::vector<GlbNode> nodes = ExportNodes(scene.root);
    std::vector<GlbMesh> meshes;
    std::vector<GlbSkin> skins;
    std::vector<GlbAnimation> animations;
    if (options.exportModel) ExportMeshes(nodes, builder, meshes, skins);
    if (!options.animations.empty()) ExportAnimations(options.animations, builder, animations, nodes, scene);
    WriteGltfJson(fileName, options, builder, nodes, meshes, skins, animations);
    return true;
}
