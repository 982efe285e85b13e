// Building a Scene from a parsed glTF document.
// Private to the glTF library.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gltf/gltf_context.h"
#include "scene/scene.h"

// Work lists of one import. Records are handed to the Scene as they are made, so that a
// GltfError part way through leaves nothing behind once the Scene is deleted.
class GltfImporter {
public:
    GltfImporter(GltfContext& context, Scene& scene) : context_(context), scene_(scene) {}
    GltfImporter(const GltfImporter&) = delete;
    GltfImporter& operator=(const GltfImporter&) = delete;

    void ImportSkins();
    void ImportCameras();
    void ImportLights();
    // Makes every node, links children and sets the Scene's root.
    void ImportNodes();
    Geometry* ImportMesh(int32_t index);
    // True when the primitive is Draco-compressed (whether or not decoding gave data).
    bool DecodeDracoPrimitive(const GltfPrimitive& primitive, MeshInstance& instance);
    std::unique_ptr<Animation> ImportAnimation(size_t index);

    Material* ImportMaterial(int32_t index);
    Texture* ImportTexture(int32_t index);

private:
    GraphNode* ImportNode(size_t index);
    void SetSlot(TextureSlot& slot, int32_t index, int32_t texCoord, const GltfTransformSlot& transform);
    template <typename TextureRef>
    void Slot(TextureSlot& slot, const TextureRef& ref) {
        SetSlot(slot, ref.index, ref.texCoord, ref.transform);
    }
    // An extension's optional texture: the channel is set whether or not it is there.
    template <typename TextureRef>
    void Slot(TextureSlot& slot, const std::optional<TextureRef>& ref, const char* channel) {
        if (ref) Slot(slot, *ref);
        slot.channel = channel;
    }
    void ImportUnlit(Material& m, const GltfMaterial& record);
    void ImportMetallicRoughness(Material& m, const GltfMaterial& record);
    void ImportClearcoat(Material& m, const GltfClearcoat& clearcoat);
    void ImportSpecular(Material& m, const GltfSpecular& specular);
    void ImportTransmission(Material& m, const GltfTransmission& transmission);
    void ImportSheen(Material& m, const GltfSheen& sheen);
    void ImportVolume(Material& m, const GltfVolume& volume);
    void ImportIridescence(Material& m, const GltfIridescence& iridescence);
    void ImportMorphTargets(const GltfMesh& mesh, const GltfPrimitive& primitive, MeshInstance& instance,
                            const std::string& where);

    GltfContext& context_;
    Scene& scene_;
    std::vector<Skin*> skins_;
    std::vector<Camera*> cameras_;
    std::vector<Light*> lights_;
    std::optional<std::vector<std::string>> imageNames_;
};

// Fills the vertex arrays the Scene keeps, by attribute name, from accessors or from a
// decoded Draco mesh; other attributes ("TANGENT" among them) are not read.
template <typename ReadFloats, typename ReadJoints>
void FillVertexData(VertexData& vertices, ReadFloats readFloats, ReadJoints readJoints) {
    static const char* const kTexCoords[8] = {"TEXCOORD_0", "TEXCOORD_1", "TEXCOORD_2", "TEXCOORD_3",
                                              "TEXCOORD_4", "TEXCOORD_5", "TEXCOORD_6", "TEXCOORD_7"};
    vertices.positions = readFloats("POSITION");
    vertices.normals = readFloats("NORMAL");
    vertices.colors = readFloats("COLOR_0");
    vertices.joints = readJoints("JOINTS_0");
    vertices.weights = readFloats("WEIGHTS_0");
    for (int set = 0; set < 8; ++set) vertices.texCoords[set] = readFloats(kTexCoords[set]);
}

// The whole import; throws GltfError for a file that cannot be imported safely. With
// `deferred`, the animations are handed back instead of added, so that the caller can
// save the embedded images first and add them with AddImportedAnimations.
Scene* ImportGltfScene(GltfContext& context, std::vector<std::unique_ptr<Animation>>* deferred = nullptr);
void AddImportedAnimations(Scene& scene, std::vector<std::unique_ptr<Animation>>& animations);
