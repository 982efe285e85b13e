#include "meshpost/unwrap.h"

#include <cstdio>
#include <memory>
#include <unordered_set>

#include <cstddef>  // xatlas.h uses size_t without including its header
#include <xatlas.h>

#include "meshpost/meshpost.h"
#include "meshpost/xatlas_adapter.h"

namespace {

void CollectWorldScales(const GraphNode* node, std::unordered_map<const Geometry*, float>& scales) {
    if (node->geometry) {
        const Vec3 scale = Decompose(node->worldMatrix).scale;
        const float s = MaxComponent(scale);
        auto [it, inserted] = scales.emplace(node->geometry, s);
        if (!inserted && s > it->second) it->second = s;
    }
    for (const GraphNode* child : node->children)
        if (child) CollectWorldScales(child, scales);
}

bool SuitableForUnwrap(const MeshInstance* mi) {
    return mi && mi->primitiveType == 3 && mi->vertices && mi->vertices->texCoords[1].empty() && mi->indices;
}

struct AtlasDeleter {
    void operator()(xatlas::Atlas* atlas) const { xatlas::Destroy(atlas); }
};

// Copies `components` values of vertex `from` to the end of `to`. A source shorter than the
// vertex count (a malformed input) gives zeros rather than a read past its end.
template <typename T>
void AppendVertex(const std::vector<T>& from, std::vector<T>& to, size_t components, uint32_t vertex) {
    const size_t begin = size_t(vertex) * components;
    for (size_t c = 0; c < components; ++c) to.push_back(begin + c < from.size() ? from[begin + c] : T(0));
}

// Every vertex data and index list that the scene reaches, as the scene's teardown sees them.
void CollectRecords(const Scene& scene, std::unordered_set<VertexData*>& vertexData,
                    std::unordered_set<std::vector<uint32_t>*>& indexLists) {
    auto addGeometry = [&](const Geometry* g) {
        if (!g) return;
        for (const MeshInstance* mi : g->meshInstances) {
            if (!mi) continue;
            if (mi->vertices) vertexData.insert(mi->vertices);
            if (mi->indices) indexLists.insert(mi->indices);
        }
    };
    for (const Geometry* g : scene.geometries.items) addGeometry(g);
    for (const Geometry* g : scene.ownedGeometries) addGeometry(g);
    std::vector<const GraphNode*> stack;
    if (scene.root) stack.push_back(scene.root);
    while (!stack.empty()) {
        const GraphNode* node = stack.back();
        stack.pop_back();
        addGeometry(node->geometry);
        for (const GraphNode* child : node->children)
            if (child) stack.push_back(child);
    }
}

}  // namespace

std::unordered_map<const Geometry*, float> GeometryWorldScales(const GraphNode* root) {
    std::unordered_map<const Geometry*, float> scales;
    if (root) CollectWorldScales(root, scales);
    return scales;
}

AtlasSize UnwrapGeometry(const std::vector<MeshInstance*>& instances, float worldScale, float texelsPerMeter) {
    std::unique_ptr<xatlas::Atlas, AtlasDeleter> atlas(xatlas::Create());

    for (const MeshInstance* mi : instances) {
        if (!SuitableForUnwrap(mi)) return {};
        const VertexData& vd = *mi->vertices;
        const uint32_t vertexCount = uint32_t(vd.positions.size() / 3);
        const std::vector<float>& uv0 = vd.texCoords[0];

        xatlas::MeshDecl decl;
        decl.vertexPositionData = vd.positions.data();
        // Shorter normal or UV arrays than the positions would be read past their end.
        decl.vertexNormalData = vd.normals.size() >= size_t(vertexCount) * 3 ? vd.normals.data() : nullptr;
        decl.vertexUvData = !uv0.empty() && uv0.size() >= size_t(vertexCount) * 2 ? uv0.data() : nullptr;
        decl.indexData = mi->indices->data();
        decl.faceIgnoreData = nullptr;
        decl.vertexCount = vertexCount;
        decl.vertexPositionStride = 12;
        decl.vertexNormalStride = 12;
        decl.vertexUvStride = uv0.empty() ? 0 : 8;
        decl.indexCount = uint32_t(mi->indices->size());
        decl.indexOffset = 0;
        decl.indexFormat = xatlas::IndexFormat::UInt32;
        decl.epsilon = 1.192092896e-07f;
        ClearOptionalFaceFields(decl);

        const auto err = xatlas::AddMesh(atlas.get(), decl, 0);
        if (err != xatlas::AddMeshError::Success) {
            std::fprintf(stderr, "failed to add the xatlas mesh err=%d\n", int(err));
            return {};
        }
    }

    GenerateUnwrapAtlas(atlas.get(), worldScale * texelsPerMeter);

    const xatlas::Atlas& result = *atlas;
    // Nothing to apply unless xatlas produced one mesh per instance.
    if (!result.meshes || result.meshCount != instances.size()) return {};
    const float width = float(result.width);
    const float height = float(result.height);
    for (size_t i = 0; i < instances.size(); ++i) ApplyUnwrap(*instances[i], result.meshes[i], width, height);
    return {result.width, result.height};
}

void ApplyUnwrap(MeshInstance& instance, const xatlas::Mesh& mesh, float width, float height) {
    const VertexData& old = *instance.vertices;
    const size_t n = mesh.vertexCount;
    auto* fresh = new VertexData;

    auto reserve = [n](const auto& from, auto& to, size_t components) {
        if (!from.empty()) to.reserve(n * components);
    };
    reserve(old.positions, fresh->positions, 3);
    reserve(old.normals, fresh->normals, 3);
    reserve(old.colors, fresh->colors, 4);
    reserve(old.joints, fresh->joints, 4);
    reserve(old.weights, fresh->weights, 4);
    reserve(old.texCoords[0], fresh->texCoords[0], 2);

    const bool hasSet0 = !old.texCoords[0].empty();
    std::vector<float>& target = fresh->texCoords[hasSet0 ? 1 : 0];
    target.reserve(n * 2);

    for (size_t v = 0; v < n; ++v) {
        const xatlas::Vertex& out = mesh.vertexArray[v];
        const uint32_t x = out.xref;
        if (!old.positions.empty()) AppendVertex(old.positions, fresh->positions, 3, x);
        if (!old.normals.empty()) AppendVertex(old.normals, fresh->normals, 3, x);
        if (!old.colors.empty()) AppendVertex(old.colors, fresh->colors, 4, x);
        if (!old.joints.empty()) AppendVertex(old.joints, fresh->joints, 4, x);
        if (!old.weights.empty()) AppendVertex(old.weights, fresh->weights, 4, x);
        if (hasSet0) AppendVertex(old.texCoords[0], fresh->texCoords[0], 2, x);
        target.push_back(out.uv[0] / width);
        target.push_back(out.uv[1] / height);
    }

    instance.vertices = fresh;
    instance.indices = new std::vector<uint32_t>(mesh.indexArray, mesh.indexArray + mesh.indexCount);
}

void UnwrapScene(Scene& scene, float texelsPerMeter) {
    std::unordered_set<VertexData*> vertexBefore;
    std::unordered_set<std::vector<uint32_t>*> indicesBefore;
    CollectRecords(scene, vertexBefore, indicesBefore);

    const auto scales = GeometryWorldScales(scene.root);
    for (Geometry* geometry : scene.geometries.items) {
        if (!geometry) continue;
        auto it = scales.find(geometry);
        const float worldScale = it != scales.end() ? it->second : 1.0f;
        UnwrapGeometry(geometry->meshInstances, worldScale, texelsPerMeter);
    }

    // Records that no instance refers to any more were replaced above; the scene's teardown
    // would not reach them, so they go now.
    std::unordered_set<VertexData*> vertexAfter;
    std::unordered_set<std::vector<uint32_t>*> indicesAfter;
    CollectRecords(scene, vertexAfter, indicesAfter);
    for (VertexData* vd : vertexBefore)
        if (!vertexAfter.count(vd)) delete vd;
    for (std::vector<uint32_t>* list : indicesBefore)
        if (!indicesAfter.count(list)) delete list;
}
