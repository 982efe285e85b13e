#include <gtest/gtest.h>

#include <vector>

#include "fbx/fbx_document.h"
#include "fbx/fbx_geometry.h"
#include "fbx/fbx_geometry_converter.h"
#include "fbx/fbx_manager.h"

namespace {

struct GeometryConverterTest : ::testing::Test {
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "My Scene");
    ~GeometryConverterTest() override { manager->Destroy(); }

    FbxLayerElement& Element(FbxMesh* mesh, FbxMappingMode mapping, FbxReferenceMode reference) {
        FbxLayerElement e;
        e.mapping = mapping;
        e.reference = reference;
        mesh->layerElements.push_back(e);
        return mesh->layerElements.back();
    }

    // A triangle (control points 0 1 2), a two-corner polygon (3 4) and a quad (5 6 7 8):
    // polygon vertices 0 to 8. Each layer element names its items so that their new
    // order can be read off: materials 10 11 12 per polygon, normals (pv, 0, 0) per
    // polygon vertex, UV indices pv, edge smoothing 100 + edge.
    FbxMesh* ThreePolygons() {
        FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
        mesh->polygonVertexIndex = {0, 1, ~2, 3, ~4, 5, 6, 7, ~8};
        // One edge per side, named by its first polygon vertex.
        mesh->edges = {0, 1, 2, 3, 5, 6, 7, 8};
        Element(mesh, FbxMappingMode::ByPolygon, FbxReferenceMode::IndexToDirect).indices = {10, 11, 12};
        std::vector<double>& normals =
            Element(mesh, FbxMappingMode::ByPolygonVertex, FbxReferenceMode::Direct).directDoubles;
        for (int pv = 0; pv < 9; ++pv) normals.insert(normals.end(), {double(pv), 0.0, 0.0});
        FbxLayerElement& uv = Element(mesh, FbxMappingMode::ByPolygonVertex, FbxReferenceMode::IndexToDirect);
        uv.indices = {0, 1, 2, 3, 4, 5, 6, 7, 8};
        uv.directDoubles = {0.5, 0.5};  // the value pool never moves
        Element(mesh, FbxMappingMode::ByEdge, FbxReferenceMode::Direct).directInts = {100, 101, 102, 103,
                                                                                        104, 105, 106, 107};
        // Five values for nine polygon vertices follow no mapping and are left alone.
        Element(mesh, FbxMappingMode::ByPolygonVertex, FbxReferenceMode::Direct).directDoubles = {1, 2, 3, 4, 5};
        return mesh;
    }

    static std::vector<double> NormalX(const FbxMesh* mesh) {
        std::vector<double> x;
        const std::vector<double>& n = mesh->layerElements[1].directDoubles;
        for (size_t i = 0; i < n.size(); i += 3) x.push_back(n[i]);
        return x;
    }
};

TEST_F(GeometryConverterTest, RemoveThenTriangulate) {
    FbxMesh* mesh = ThreePolygons();
    FbxGeometryConverter converter(manager);
    std::vector<int> changed{42};
    EXPECT_EQ(converter.RemoveBadPolygonsFromMeshes(scene, &changed), 1);
    EXPECT_EQ(changed, std::vector<int>{0});
    // The two-corner polygon (vertices 3, 4) goes: the quad's vertices 5 to 8 become 3 to 6.
    EXPECT_EQ(mesh->polygonVertexIndex, (std::vector<int32_t>{0, 1, ~2, 5, 6, 7, ~8}));
    EXPECT_EQ(mesh->layerElements[0].indices, (std::vector<int32_t>{10, 12}));
    EXPECT_EQ(NormalX(mesh), (std::vector<double>{0, 1, 2, 5, 6, 7, 8}));
    EXPECT_EQ(mesh->layerElements[2].indices, (std::vector<int32_t>{0, 1, 2, 5, 6, 7, 8}));
    EXPECT_EQ(mesh->layerElements[2].directDoubles, (std::vector<double>{0.5, 0.5}));
    // Edge 3 lay on the removed polygon; the others follow their vertices.
    EXPECT_EQ(mesh->edges, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(mesh->layerElements[3].directInts, (std::vector<int32_t>{100, 101, 102, 104, 105, 106, 107}));
    EXPECT_EQ(mesh->layerElements[4].directDoubles, (std::vector<double>{1, 2, 3, 4, 5}));

    EXPECT_TRUE(converter.Triangulate(scene, true, false));
    // The quad (control points 5 6 7 8, vertices 3 to 6) fans into 5 6 7 and 5 7 8.
    EXPECT_EQ(mesh->polygonVertexIndex, (std::vector<int32_t>{0, 1, ~2, 5, 6, ~7, 5, 7, ~8}));
    EXPECT_EQ(mesh->layerElements[0].indices, (std::vector<int32_t>{10, 12, 12}));
    EXPECT_EQ(NormalX(mesh), (std::vector<double>{0, 1, 2, 5, 6, 7, 5, 7, 8}));
    // Sides in order of the new polygons: 0-1, 1-2, 2-0, 5-6, 6-7, the new diagonal 7-5,
    // (5-7 again), 7-8, 8-5. The diagonal has no smoothing of its own.
    EXPECT_EQ(mesh->edges, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 7, 8}));
    EXPECT_EQ(mesh->layerElements[3].directInts, (std::vector<int32_t>{100, 101, 102, 104, 105, 0, 106, 107}));
    EXPECT_EQ(converter.RemoveBadPolygonsFromMeshes(scene, &changed), 0);
    EXPECT_TRUE(changed.empty());
}

TEST_F(GeometryConverterTest, PolygonShapes) {
    struct Case {
        const char* what;
        std::vector<int32_t> in;
        std::vector<int32_t> removed;      // after RemoveBadPolygons
        std::vector<int32_t> triangulated;  // after Triangulate of the original
    };
    const Case cases[] = {
        {"empty", {}, {}, {}},
        // An unterminated run at the end counts as a polygon; nothing removed leaves the
        // array as it is, a triangulation writes it terminated.
        {"unterminated quad", {0, 1, 2, 3}, {0, 1, 2, 3}, {0, 1, ~2, 0, 2, ~3}},
        {"unterminated pair", {4, 5}, {}, {4, 5}},
        {"single corners", {~0, ~1, 2, 3, ~4}, {2, 3, ~4}, {~0, ~1, 2, 3, ~4}},
        // A pentagon fans into three triangles from its first corner.
        {"pentagon", {9, 8, 7, 6, ~5}, {9, 8, 7, 6, ~5}, {9, 8, ~7, 9, 7, ~6, 9, 6, ~5}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FbxMesh* mesh = FbxMesh::Create(scene, c.what);
        mesh->polygonVertexIndex = c.in;
        EXPECT_TRUE(FbxRemoveBadPolygons(*mesh));
        EXPECT_EQ(mesh->polygonVertexIndex, c.removed);
        mesh->polygonVertexIndex = c.in;
        EXPECT_TRUE(FbxTriangulateMesh(*mesh));
        EXPECT_EQ(mesh->polygonVertexIndex, c.triangulated);
    }
}

TEST_F(GeometryConverterTest, SceneLevelResults) {
    FbxGeometryConverter converter(manager);
    EXPECT_FALSE(converter.Triangulate(static_cast<FbxScene*>(nullptr), true, false));
    EXPECT_EQ(converter.RemoveBadPolygonsFromMeshes(nullptr), 0);
    EXPECT_TRUE(converter.Triangulate(scene, true, false));  // nothing to do

    // Attributes other than meshes come back as they are and stay on their nodes.
    FbxNode* node = FbxNode::Create(scene, "camera");
    scene->GetRootNode()->AddChild(node);
    FbxCamera* camera = FbxCamera::Create(scene, "camera");
    node->SetNodeAttribute(camera);
    FbxMesh* mesh = FbxMesh::Create(scene, "mesh");
    FbxNode* meshNode = FbxNode::Create(scene, "meshNode");
    meshNode->SetNodeAttribute(mesh);
    mesh->polygonVertexIndex = {0, 1, 2, ~3};
    EXPECT_TRUE(converter.Triangulate(scene, true, false));
    EXPECT_EQ(node->GetNodeAttribute(), camera);
    EXPECT_EQ(meshNode->GetNodeAttribute(), mesh);
    EXPECT_EQ(mesh->GetPolygonCount(), 2);
}

}  // namespace
