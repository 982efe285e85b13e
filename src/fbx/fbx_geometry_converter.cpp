#include "fbx/fbx_geometry_converter.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "fbx/fbx_document.h"
#include "fbx/fbx_geometry.h"

namespace {

// Polygons of a mesh: polygon k covers the polygon vertices start[k] to start[k + 1] - 1.
// An unterminated run at the end of the index array counts as one more polygon.
struct PolygonTable {
    std::vector<uint32_t> start;
    std::vector<uint32_t> controlPoint;  // decoded index per polygon vertex

    size_t PolygonCount() const { return start.size() - 1; }
    uint32_t Size(size_t polygon) const { return start[polygon + 1] - start[polygon]; }
};

PolygonTable ReadPolygons(const std::vector<int32_t>& indices) {
    PolygonTable table;
    table.start.push_back(0);
    table.controlPoint.resize(indices.size());
    for (size_t i = 0; i < indices.size(); ++i) {
        const int32_t v = indices[i];
        table.controlPoint[i] = static_cast<uint32_t>(v < 0 ? ~v : v);
        if (v < 0) table.start.push_back(static_cast<uint32_t>(i + 1));
    }
    if (table.start.back() != indices.size()) table.start.push_back(static_cast<uint32_t>(indices.size()));
    return table;
}

// Writes polygons given as runs of control points, the last of each run complemented.
std::vector<int32_t> WritePolygons(const std::vector<uint32_t>& controlPoints, const std::vector<uint32_t>& start) {
    std::vector<int32_t> out(controlPoints.size());
    for (size_t k = 0; k + 1 < start.size(); ++k) {
        for (uint32_t i = start[k]; i < start[k + 1]; ++i) {
            const auto cp = static_cast<int32_t>(controlPoints[i]);
            out[i] = i + 1 == start[k + 1] ? ~cp : cp;
        }
    }
    return out;
}

// Rebuilds per-item values from their source items; -1 stands for a new item, which gets
// zeros. An array whose length is not a whole multiple of the old item count does not
// follow the mapping it claims and is left alone.
template <class T>
void Gather(std::vector<T>& values, size_t itemCount, const std::vector<int64_t>& sources) {
    if (itemCount == 0 || values.empty() || values.size() % itemCount != 0) return;
    const size_t stride = values.size() / itemCount;
    std::vector<T> out;
    out.reserve(sources.size() * stride);
    for (int64_t item : sources) {
        if (item < 0) {
            out.insert(out.end(), stride, T{});
        } else {
            const auto from = values.begin() + static_cast<std::ptrdiff_t>(static_cast<size_t>(item) * stride);
            out.insert(out.end(), from, from + static_cast<std::ptrdiff_t>(stride));
        }
    }
    values.swap(out);
}

// Makes the elements of one mapping follow a change of their items.
void FollowItems(FbxMesh& mesh, FbxMappingMode mapping, size_t itemCount, const std::vector<int64_t>& sources) {
    for (FbxLayerElement& element : mesh.layerElements) {
        if (element.mapping != mapping) continue;
        if (element.reference == FbxReferenceMode::Direct) {
            Gather(element.directDoubles, itemCount, sources);
            Gather(element.directW, itemCount, sources);
            Gather(element.directInts, itemCount, sources);
        } else {
            Gather(element.indices, itemCount, sources);
        }
    }
}

uint64_t EdgeKey(uint32_t a, uint32_t b) {
    return a < b ? (uint64_t(a) << 32) | b : (uint64_t(b) << 32) | a;
}

// Edge of the polygon vertex p: from its control point to the next one in its polygon.
// `polygonOf` gives the polygon of each polygon vertex.
uint64_t EdgeOf(const PolygonTable& table, const std::vector<uint32_t>& polygonOf, uint32_t p) {
    const uint32_t k = polygonOf[p];
    const uint32_t next = p + 1 < table.start[k + 1] ? p + 1 : table.start[k];
    return EdgeKey(table.controlPoint[p], table.controlPoint[next]);
}

std::vector<uint32_t> PolygonOfEachVertex(const PolygonTable& table) {
    std::vector<uint32_t> polygonOf(table.controlPoint.size());
    for (size_t k = 0; k < table.PolygonCount(); ++k)
        for (uint32_t i = table.start[k]; i < table.start[k + 1]; ++i) polygonOf[i] = static_cast<uint32_t>(k);
    return polygonOf;
}

}  // namespace

bool FbxRemoveBadPolygons(FbxMesh& mesh, int* removedCount) {
    if (removedCount) *removedCount = 0;
    if (mesh.polygonVertexIndex.size() > uint32_t(std::numeric_limits<int32_t>::max())) return false;
    const PolygonTable table = ReadPolygons(mesh.polygonVertexIndex);
    const size_t oldVertexCount = table.controlPoint.size();
    std::vector<int64_t> keptPolygons, keptVertices;
    std::vector<int64_t> newIndexOf(oldVertexCount, -1);
    std::vector<uint32_t> controlPoints, start{0};
    for (size_t k = 0; k < table.PolygonCount(); ++k) {
        if (table.Size(k) < 3) continue;
        keptPolygons.push_back(static_cast<int64_t>(k));
        for (uint32_t i = table.start[k]; i < table.start[k + 1]; ++i) {
            newIndexOf[i] = static_cast<int64_t>(keptVertices.size());
            keptVertices.push_back(i);
            controlPoints.push_back(table.controlPoint[i]);
        }
        start.push_back(static_cast<uint32_t>(controlPoints.size()));
    }
    const size_t removed = table.PolygonCount() - keptPolygons.size();
    if (removed == 0) return true;

    const size_t oldPolygonCount = table.PolygonCount();
    mesh.polygonVertexIndex = WritePolygons(controlPoints, start);
    FollowItems(mesh, FbxMappingMode::ByPolygonVertex, oldVertexCount, keptVertices);
    FollowItems(mesh, FbxMappingMode::ByPolygon, oldPolygonCount, keptPolygons);
    // Edges name a polygon vertex: those of removed polygons go, the others follow.
    std::vector<int64_t> keptEdges;
    std::vector<int32_t> edges;
    for (size_t e = 0; e < mesh.edges.size(); ++e) {
        const int32_t p = mesh.edges[e];
        if (p < 0 || size_t(p) >= oldVertexCount || newIndexOf[size_t(p)] < 0) continue;
        keptEdges.push_back(static_cast<int64_t>(e));
        edges.push_back(static_cast<int32_t>(newIndexOf[size_t(p)]));
    }
    FollowItems(mesh, FbxMappingMode::ByEdge, mesh.edges.size(), keptEdges);
    mesh.edges.swap(edges);
    if (removedCount) *removedCount = static_cast<int>(removed);
    return true;
}

bool FbxTriangulateMesh(FbxMesh& mesh) {
    const PolygonTable table = ReadPolygons(mesh.polygonVertexIndex);
    // A fan from the first corner: a polygon of n >= 3 corners gives n - 2 triangles,
    // smaller polygons stay as they are.
    uint64_t newVertexCount = 0;
    for (size_t k = 0; k < table.PolygonCount(); ++k) {
        const uint64_t n = table.Size(k);
        newVertexCount += n < 3 ? n : 3 * (n - 2);
    }
    if (newVertexCount > uint64_t(std::numeric_limits<int32_t>::max())) return false;

    std::vector<int64_t> vertexSource, polygonSource;
    std::vector<uint32_t> controlPoints, start{0};
    vertexSource.reserve(size_t(newVertexCount));
    controlPoints.reserve(size_t(newVertexCount));
    auto corner = [&](uint32_t p) {
        vertexSource.push_back(p);
        controlPoints.push_back(table.controlPoint[p]);
    };
    for (size_t k = 0; k < table.PolygonCount(); ++k) {
        const uint32_t first = table.start[k], n = table.Size(k);
        if (n < 3) {
            for (uint32_t i = 0; i < n; ++i) corner(first + i);
            polygonSource.push_back(static_cast<int64_t>(k));
            start.push_back(static_cast<uint32_t>(controlPoints.size()));
            continue;
        }
        for (uint32_t i = 1; i + 1 < n; ++i) {
            corner(first);
            corner(first + i);
            corner(first + i + 1);
            polygonSource.push_back(static_cast<int64_t>(k));
            start.push_back(static_cast<uint32_t>(controlPoints.size()));
        }
    }
    if (polygonSource.size() == table.PolygonCount()) return true;  // already triangles

    const size_t oldVertexCount = table.controlPoint.size();
    const size_t oldPolygonCount = table.PolygonCount();
    mesh.polygonVertexIndex = WritePolygons(controlPoints, start);
    FollowItems(mesh, FbxMappingMode::ByPolygonVertex, oldVertexCount, vertexSource);
    FollowItems(mesh, FbxMappingMode::ByPolygon, oldPolygonCount, polygonSource);

    if (mesh.edges.empty()) return true;
    // Edges are rebuilt: every side of the new polygons once, named by its first polygon
    // vertex; values of edges that existed before follow them, new diagonals get zeros.
    // Sorted keys rather than hash tables: sides of neighbouring polygons share control
    // points, which crowds hash buckets.
    const std::vector<uint32_t> polygonOf = PolygonOfEachVertex(table);
    std::vector<std::pair<uint64_t, int64_t>> oldEdges;
    oldEdges.reserve(mesh.edges.size());
    for (size_t e = 0; e < mesh.edges.size(); ++e) {
        const int32_t p = mesh.edges[e];
        if (p < 0 || size_t(p) >= oldVertexCount) continue;
        oldEdges.emplace_back(EdgeOf(table, polygonOf, uint32_t(p)), static_cast<int64_t>(e));
    }
    // Equal keys keep their file order, so that the first edge of a pair is the one found.
    std::stable_sort(oldEdges.begin(), oldEdges.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::pair<uint64_t, uint32_t>> sides;  // key, polygon vertex
    sides.reserve(controlPoints.size());
    for (size_t k = 0; k + 1 < start.size(); ++k) {
        for (uint32_t i = start[k]; i < start[k + 1]; ++i) {
            const uint32_t next = i + 1 < start[k + 1] ? i + 1 : start[k];
            sides.emplace_back(EdgeKey(controlPoints[i], controlPoints[next]), i);
        }
    }
    std::vector<std::pair<uint64_t, uint32_t>> byKey = sides;
    std::sort(byKey.begin(), byKey.end());
    std::vector<bool> firstSide(controlPoints.size(), false);
    for (size_t i = 0; i < byKey.size(); ++i)
        if (i == 0 || byKey[i].first != byKey[i - 1].first) firstSide[byKey[i].second] = true;
    std::vector<int32_t> edges;
    std::vector<int64_t> edgeSource;
    for (const auto& [key, vertex] : sides) {
        if (!firstSide[vertex]) continue;
        edges.push_back(static_cast<int32_t>(vertex));
        const auto found = std::lower_bound(oldEdges.begin(), oldEdges.end(), key,
                                            [](const auto& entry, uint64_t k) { return entry.first < k; });
        edgeSource.push_back(found != oldEdges.end() && found->first == key ? found->second : -1);
    }
    FollowItems(mesh, FbxMappingMode::ByEdge, mesh.edges.size(), edgeSource);
    mesh.edges.swap(edges);
    return true;
}

namespace {
// The scene's objects of one class in source order, gathered in one pass: fetching them one
// index at a time would walk the scene's sources once for each.
template <class T>
std::vector<T*> SceneObjects(const FbxScene& scene) {
    std::vector<T*> objects;
    const FbxCriteria criteria = FbxCriteria::ObjectType(T::ClassId);
    for (const FbxProperty& source : scene.RootProperty.Sources())
        if (source.IsRoot() && criteria.Matches(source.GetFbxObject())) objects.push_back(static_cast<T*>(source.GetFbxObject()));
    return objects;
}
}  // namespace

int FbxGeometryConverter::RemoveBadPolygonsFromMeshes(FbxScene* scene, std::vector<int>* changedMeshes) {
    if (changedMeshes) changedMeshes->clear();
    if (!scene) return 0;
    int total = 0;
    const std::vector<FbxMesh*> meshes = SceneObjects<FbxMesh>(*scene);
    for (int i = 0; i < int(meshes.size()); ++i) {
        FbxMesh* mesh = meshes[size_t(i)];
        int removed = 0;
        if (!mesh || !FbxRemoveBadPolygons(*mesh, &removed) || removed == 0) continue;
        total += removed;
        if (changedMeshes) changedMeshes->push_back(i);
    }
    return total;
}

FbxNodeAttribute* FbxGeometryConverter::Triangulate(FbxNodeAttribute* attribute, bool /*replace*/, bool /*legacy*/) {
    if (!attribute) return nullptr;
    if (attribute->Is<FbxMesh>() && !FbxTriangulateMesh(*static_cast<FbxMesh*>(attribute))) return nullptr;
    return attribute;
}

bool FbxGeometryConverter::Triangulate(FbxScene* scene, bool replace, bool legacy) {
    if (!scene) return false;
    const std::vector<FbxNodeAttribute*> attributes = SceneObjects<FbxNodeAttribute>(*scene);
    std::vector<int> destinations;
    destinations.reserve(attributes.size());
    for (FbxNodeAttribute* attribute : attributes)
        destinations.push_back(replace && attribute ? attribute->GetDstObjectCount() : 0);
    bool ok = true;
    for (size_t i = 0; i < attributes.size(); ++i) {
        FbxNodeAttribute* result = Triangulate(attributes[i], replace, legacy);
        if (!result) {
            ok = false;
            continue;
        }
        if (replace && result == attributes[i] && result->GetDstObjectCount() < 2 && result->GetSrcObjectCount() == 0 &&
            result->GetDstObjectCount() < destinations[i])
            result->Destroy();
    }
    return ok;
}
