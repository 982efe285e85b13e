#include "meshpost/unwrap.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include <cstddef>  // xatlas.h uses size_t without including its header
#include <xatlas.h>

#include "meshpost/meshpost.h"
#include "meshpost/xatlas_adapter.h"
#include "scene/console.h"

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

// An instance with an empty position or index list counts as having none: xatlas would
// otherwise be handed a mesh of 0 vertices, which it cannot build (it clears null arrays).
bool SuitableForUnwrap(const MeshInstance* mi) {
    return mi && mi->primitiveType == kPrimitiveTriangles && mi->vertices && !mi->vertices->positions.empty() &&
           mi->vertices->texCoords[1].empty() && mi->indices && !mi->indices->empty();
}

// Beyond any texture size a GPU takes, and far below the sizes at which xatlas's 32-bit
// image arithmetic overflows and its packer crashes.
constexpr double kMaxMeshTexels = 32768.0;
// xatlas squares areas in single precision: meshes wider than this overflow them to
// infinity, and at low densities its packer then never finishes.
constexpr double kMaxMeshExtent = 1e10;

// Why a mesh cannot go into an atlas at this density, or null. Coordinates so far apart that
// the mesh spans more texels than any atlas can hold, and positions that are not numbers,
// make xatlas fail, crash or rasterise for hours instead of unwrapping.
const char* UnfitForAtlas(const std::vector<float>& positions, size_t vertexCount,
                          const std::vector<uint32_t>& indices, float texelsPerUnit) {
    double lo[3] = {0, 0, 0}, hi[3] = {0, 0, 0};
    for (size_t v = 0; v < vertexCount; ++v) {
        for (size_t c = 0; c < 3; ++c) {
            const double x = positions[v * 3 + c];
            if (!std::isfinite(x)) return "its positions are not all finite numbers";
            if (v == 0 || x < lo[c]) lo[c] = x;
            if (v == 0 || x > hi[c]) hi[c] = x;
        }
    }
    // xatlas takes a density that is not a number for a positive one and never finishes packing.
    if (std::isnan(texelsPerUnit)) return "its texel density is not a number";
    double density = texelsPerUnit;
    if (!(density > 0.0)) {
        // Zero and negative densities let xatlas pick one for a 1024-texel atlas at 75% use;
        // this mesh alone gives an upper bound of what it picks for the whole geometry.
        double area = 0.0;
        for (size_t t = 0; t + 2 < indices.size(); t += 3) {
            if (indices[t] >= vertexCount || indices[t + 1] >= vertexCount || indices[t + 2] >= vertexCount)
                continue;
            const float* a = &positions[size_t(indices[t]) * 3];
            const float* b = &positions[size_t(indices[t + 1]) * 3];
            const float* c = &positions[size_t(indices[t + 2]) * 3];
            const double u[3] = {double(b[0]) - a[0], double(b[1]) - a[1], double(b[2]) - a[2]};
            const double w[3] = {double(c[0]) - a[0], double(c[1]) - a[1], double(c[2]) - a[2]};
            const double x = u[1] * w[2] - u[2] * w[1], y = u[2] * w[0] - u[0] * w[2], z = u[0] * w[1] - u[1] * w[0];
            area += 0.5 * std::sqrt(x * x + y * y + z * z);
        }
        density = 1024.0 / std::sqrt(std::max(1.0, area / 0.75));
    }
    const double diagonal = std::sqrt((hi[0] - lo[0]) * (hi[0] - lo[0]) + (hi[1] - lo[1]) * (hi[1] - lo[1]) +
                                      (hi[2] - lo[2]) * (hi[2] - lo[2]));
    if (!(diagonal <= kMaxMeshExtent)) return "its coordinates span too far for single-precision unwrapping";
    if (!(diagonal * density <= kMaxMeshTexels)) return "it spans more texels than an atlas can hold";
    return nullptr;
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

// A target's deltas moved onto the unwrapped vertices: new vertex v takes the delta of the
// old vertex it came from. A dense target stays dense; a sparse one keeps an entry for each
// new vertex whose old vertex had one.
std::unique_ptr<MorphTarget> RemapTarget(const MorphTarget& old, const xatlas::Mesh& mesh, size_t oldVertexCount) {
    auto target = std::make_unique<MorphTarget>();
    target->name = old.name;
    target->defaultWeight = old.defaultWeight;
    target->sourceVertexCount = old.sourceVertexCount;
    auto appendDeltas = [&](size_t entry) {
        for (size_t c = 0; c < 3; ++c) {
            const size_t i = entry * 3 + c;
            target->deltaPositions.push_back(i < old.deltaPositions.size() ? old.deltaPositions[i] : 0.0f);
            target->deltaNormals.push_back(i < old.deltaNormals.size() ? old.deltaNormals[i] : 0.0f);
        }
    };

    if (old.indices.empty()) {
        for (uint32_t v = 0; v < mesh.vertexCount; ++v) appendDeltas(mesh.vertexArray[v].xref);
        target->count = mesh.vertexCount;
    } else {
        const size_t entries = std::min<size_t>(old.count, old.indices.size());
        // Every xref names an old vertex, so entries past the old vertices can never be
        // reached; sizing the table by the highest stored index would let one stray index
        // ask for gigabytes.
        std::vector<int64_t> entryOf(oldVertexCount, -1);
        for (size_t e = 0; e < entries; ++e)
            if (old.indices[e] < oldVertexCount) entryOf[old.indices[e]] = int64_t(e);
        for (uint32_t v = 0; v < mesh.vertexCount; ++v) {
            const uint32_t x = mesh.vertexArray[v].xref;
            if (x >= entryOf.size() || entryOf[x] < 0) continue;
            target->indices.push_back(v);
            appendDeltas(size_t(entryOf[x]));
        }
        target->count = uint32_t(target->indices.size());
        target->sourceVertexCount = mesh.vertexCount;
    }

    target->boundingBox.Reset();
    target->boundingBox.Extend(Vec3(0.0f, 0.0f, 0.0f));
    for (size_t i = 0; i + 2 < target->deltaPositions.size(); i += 3)
        target->boundingBox.Extend(
            Vec3(target->deltaPositions[i], target->deltaPositions[i + 1], target->deltaPositions[i + 2]));
    return target;
}

}  // namespace

std::unordered_map<const Geometry*, float> GeometryWorldScales(const GraphNode* root) {
    std::unordered_map<const Geometry*, float> scales;
    if (root) CollectWorldScales(root, scales);
    return scales;
}

AtlasSize UnwrapGeometry(Scene& scene, const std::vector<MeshInstance*>& instances, float worldScale,
                         float texelsPerMeter) {
    UseRunEndingAllocator();
    std::unique_ptr<xatlas::Atlas, AtlasDeleter> atlas(xatlas::Create());

    for (const MeshInstance* mi : instances) {
        if (!SuitableForUnwrap(mi)) return {};
        const VertexData& vd = *mi->vertices;
        const uint32_t vertexCount = uint32_t(vd.positions.size() / 3);
        const std::vector<float>& uv0 = vd.texCoords[0];

        if (const char* why = UnfitForAtlas(vd.positions, vertexCount, *mi->indices, worldScale * texelsPerMeter)) {
            ConsoleErrorText("UV unwrapping skipped for a mesh of %u vertices at %g texels per unit: %s\n",
                             vertexCount, double(worldScale * texelsPerMeter), why);
            return {};
        }

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
            ConsoleErrorText("failed to add the xatlas mesh err=%d\n", int(err));
            return {};
        }
    }

    GenerateUnwrapAtlas(atlas.get(), worldScale * texelsPerMeter);

    const xatlas::Atlas& result = *atlas;
    // Nothing to apply unless xatlas produced one mesh per instance.
    if (!result.meshes || result.meshCount != instances.size()) return {};
    const float width = float(result.width);
    const float height = float(result.height);
    for (size_t i = 0; i < instances.size(); ++i) ApplyUnwrap(scene, *instances[i], result.meshes[i], width, height);
    return {result.width, result.height};
}

void ApplyUnwrap(Scene& scene, MeshInstance& instance, const xatlas::Mesh& mesh, float width, float height) {
    const VertexData& old = *instance.vertices;
    const size_t n = mesh.vertexCount;
    VertexData* fresh = scene.Own(std::make_unique<VertexData>());

    auto reserve = [n](const auto& from, auto& to, size_t components) {
        if (!from.empty()) to.reserve(n * components);
    };
    reserve(old.positions, fresh->positions, 3);
    reserve(old.normals, fresh->normals, 3);
    reserve(old.colors, fresh->colors, 4);
    reserve(old.joints, fresh->joints, 4);
    reserve(old.weights, fresh->weights, 4);
    reserve(old.texCoords[0], fresh->texCoords[0], 2);

    // An atlas without charts (only zero-area faces) has size 0; its coordinates are all 0.
    if (!(width > 0.0f)) width = 1.0f;
    if (!(height > 0.0f)) height = 1.0f;

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
    instance.indices =
        scene.Own(std::make_unique<std::vector<uint32_t>>(mesh.indexArray, mesh.indexArray + mesh.indexCount));

    // Morph deltas follow their vertices like every other attribute. The instance gets a
    // morph of its own, since other instances may share the old one with other vertices.
    if (instance.morph) {
        Morph* morph = scene.Own(std::make_unique<Morph>());
        morph->targets.reserve(instance.morph->targets.size());
        for (const MorphTarget* t : instance.morph->targets)
            morph->targets.push_back(t ? scene.Own(RemapTarget(*t, mesh, old.positions.size() / 3)) : nullptr);
        instance.morph = morph;
    }
}

void UnwrapScene(Scene& scene, float texelsPerMeter) {
    const auto scales = GeometryWorldScales(scene.root);
    for (Geometry* geometry : scene.geometries.items) {
        if (!geometry) continue;
        auto it = scales.find(geometry);
        const float worldScale = it != scales.end() ? it->second : 1.0f;
        UnwrapGeometry(scene, geometry->meshInstances, worldScale, texelsPerMeter);
    }
}
