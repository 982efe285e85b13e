#include "runtimejson/metadata_json.h"

#include <gtest/gtest.h>

#include "scene_builder.h"

namespace {

using namespace testsupport;

TEST(MetadataJson, CountsDistinctRecordsAndEveryPair) {
    SceneBuilder b;
    auto root = b.Root();
    VertexData* quad = b.NewVertices();
    quad->positions.assign(12, 0.0f);
    quad->normals.assign(12, 0.0f);
    quad->weights.assign(16, 0.25f);  // weights without joint indices: only blendWeight counts
    VertexData* tri = b.NewVertices();
    tri->positions.assign(9, 0.0f);
    tri->colors.assign(9, 1.0f);
    tri->texCoords[1].assign(6, 0.0f);
    tri->texCoords[2].assign(6, 0.0f);  // sets above 1 are not counted
    Skin* skin = b.NewSkin({1});
    Geometry* g = b.AddGeometry("g", 1);
    b.AddMesh(g).Vertices(quad).Indices({0, 1, 2, 0, 2, 3}).WithSkin(skin);
    b.AddMesh(g).Vertices(quad).WithMorph(b.NewMorph({}));  // 4 vertices, no indices: 1 triangle
    Geometry* h = b.AddGeometry("h", 2);
    b.AddMesh(h).Vertices(tri).WithSkin(skin);
    b.AddMesh(h).Indices({0, 1, 2});  // no vertex data at all
    root.Child("a", 1).WithGeometry(g);
    root.Child("b", 2).WithGeometry(g);
    root.Child("c", 3).WithGeometry(h);

    EXPECT_EQ(JsonWriter(NoFormat).WriteString(BuildMetadataJson(b.scene())),
              R"({"meshes":4,"meshInstances":6,"nodes":4,"skins":1,"morphs":1,"vertices":7,"triangles":5,)"
              R"("attributes":{"position":2,"normal":1,"color":1,"blendWeight":1,"texCoord1":1}})");
}

}  // namespace
