#include "runtimejson/materials_json.h"

#include <gtest/gtest.h>

#include "expected_file.h"
#include "scene_builder.h"

namespace {

using namespace testing_scene;
using namespace testsupport;

void FlipEverything(Material& m) {
    m.shadingModel = 3;
    m.blendType = 5;
    m.cull = 2;
    m.useLighting = false;
    m.twoSidedLighting = m.useMetalness = m.useMetalnessSpecularColor = true;
    m.depthWrite = false;
    m.emissiveTint = m.glossInvert = m.clearCoatGlossInvert = m.sheenGlossInvert = m.useDynamicRefraction = true;
    m.useSheen = m.diffuseTint = m.specularTint = m.sheenTint = m.useIridescence = true;
    // A distinct value per field, so that a swapped field shows.
    float* floats[] = {&m.metalness,         &m.shininess,         &m.opacity,
                       &m.bumpMapFactor,     &m.reflectivity,      &m.alphaTest,
                       &m.clearCoat,         &m.clearCoatGloss,    &m.clearCoatBumpiness,
                       &m.specularityFactor, &m.refractionIndex,   &m.refraction,
                       &m.sheenGloss,        &m.thickness,         &m.attenuationDistance,
                       &m.emissiveIntensity, &m.iridescence,       &m.iridescenceRefractionIndex,
                       &m.iridescenceThicknessMin, &m.iridescenceThicknessMax};
    for (int i = 0; i < 20; ++i) *floats[i] = float(i + 1) / 100.0f;
    Vec3* colours[] = {&m.ambient, &m.diffuse, &m.emissive, &m.specular, &m.sheen, &m.attenuation};
    for (int i = 0; i < 6; ++i) *colours[i] = {float(3 * i + 1), float(3 * i + 2), float(3 * i + 3)};
}

TEST(MaterialsJson, WholeCompactDocument) {
    SceneBuilder b;
    Texture stray;
    Material outside;
    Texture* albedo = b.AddTexture("albedo", 100, "textures/a/b.png");
    albedo->addressU = 1;
    albedo->addressV = 2;
    albedo->minFilter = 5;
    albedo->magFilter = 0;
    b.scene().textures.items.push_back(nullptr);  // a hole the importer could leave
    Texture* bump = b.AddTexture("bump", 101, "C:\\maps\\n.png");
    bump->addressU = 3;
    bump->minFilter = 2;
    bump->magFilter = 3;
    Texture* dir = b.AddTexture("dir", 102, "folder/");
    dir->addressU = 9;
    dir->addressV = 2;
    dir->minFilter = 4;
    dir->magFilter = 6;
    stray.id = 555;

    Material* full = b.AddMaterial("full", 200);
    FlipEverything(*full);
    for (const MaterialSlotInfo& info : kMaterialSlots) (full->*(info.slot)).texture = albedo;
    b.AddMaterial("plain", 201);
    Material* transforms = b.AddMaterial("transforms", 202);
    transforms->diffuseMap = {bump, "rgb", 1, {2.0f, 3.0f}, {0.25f, 0.0f}, 90.0f};
    transforms->specularMap = {albedo, "", 0, {1.0f, 1.0f}, {-0.0f, 0.0f}, 0.0f};
    transforms->glossMap = {albedo, "", 0, {1.0f, 1.0f}, {0.0f, 0.1f}, 0.0f};
    transforms->lightMap = {albedo, "", 0, {2.0f, 2.0f}, {0.0f, 0.0f}, 0.0f};
    transforms->heightMap.texture = &stray;
    transforms->normalMap = {albedo, "", 0, {2.0f, 2.0f}, {0.0f, 0.0f}, 0.0f};
    transforms->cubeMap = {dir, "a", 0, {1.0f, 1.0f}, {1.0f, 1.0f}, 0.0f};
    transforms->sphereMap = {albedo, "", 2, {1.0f, 1.0f}, {0.0f, 0.0f}, 5.0f};
    transforms->iridescenceThicknessMap = {albedo, "", 0, {1.0f, 1.0f}, {0.0f, 0.0f}, -0.5f};
    outside.name = "outside";

    auto root = b.Root();
    Geometry* g = b.AddGeometry("g", 1);
    b.AddMesh(g).WithMaterial(full);
    b.AddMesh(g);
    b.AddMesh(g).WithMaterial(transforms);
    Geometry* h = b.AddGeometry("h", 2);
    b.AddMesh(h).WithMaterial(&outside);
    root.Child("n1", 1).WithGeometry(g);
    root.Child("n2", 2).WithGeometry(h);
    EXPECT_EQ(JsonWriter(NoFormat).WriteString(BuildMaterialsJson(b.scene())), Expected("materials_compact"));
    EXPECT_EQ(JsonWriter(NoFormat).WriteString(BuildMaterialsJson(SceneBuilder().scene())), Expected("materials_empty"));
}

}  // namespace
