// Geometry clean-up of a scene: removal of degenerate polygons and triangulation of
// meshes, with their edges and layer elements following the polygons.
#pragma once

#include <vector>

class FbxManager;
class FbxScene;
class FbxMesh;
class FbxNodeAttribute;

class FbxGeometryConverter {
public:
    explicit FbxGeometryConverter(FbxManager* manager) : manager_(manager) {}

    // Removes the polygons of fewer than three vertices from every mesh of the scene.
    // When `changedMeshes` is given it is cleared first, then receives the index (among
    // the scene's meshes) of each mesh that lost polygons. Returns the number of
    // polygons removed; a null scene removes none.
    int RemoveBadPolygonsFromMeshes(FbxScene* scene, std::vector<int>* changedMeshes = nullptr);

    // Triangulates every node attribute of the scene in order. An attribute that ends up
    // connected to no node any more (fewer than two destinations, the scene being one,
    // no source, and fewer destinations than before) is destroyed. False for a null
    // scene or when an attribute fails; true for a scene without attributes.
    bool Triangulate(FbxScene* scene, bool replace, bool legacy = false);

    // Triangulates one attribute in place and returns it; attributes that are not meshes
    // come back unchanged. Null when the attribute is null or cannot be triangulated.
    FbxNodeAttribute* Triangulate(FbxNodeAttribute* attribute, bool replace, bool legacy = false);

private:
    FbxManager* manager_;
};

// One mesh's share of the work, also usable on its own. Both return false and leave the
// mesh as it was when the result would not fit its 32-bit indices.
bool FbxRemoveBadPolygons(FbxMesh& mesh, int* removedCount = nullptr);
bool FbxTriangulateMesh(FbxMesh& mesh);
