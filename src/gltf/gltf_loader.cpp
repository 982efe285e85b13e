#include "gltf/gltf_loader.h"

#include <exception>
#include <new>

#include "gltf/glb_container_read.h"
#include "gltf/gltf_document_read.h"
#include "gltf/gltf_images.h"
#include "gltf/gltf_import.h"
#include "scene/console.h"

Scene* LoadGltf(const std::string& fileName, const ConversionOptions& /*options*/) {
    GltfContext context;
    context.path = fileName;
    if (!ReadGlbContainer(fileName, context)) return nullptr;
    ReadGltfDocument(context.document, context.json);

    // The import runs before the images are saved so that a refused file leaves no output;
    // animations are added after them, where their console lines belong.
    Scene* scene = nullptr;
    try {
        std::vector<std::unique_ptr<Animation>> animations;
        scene = ImportGltfScene(context, &animations);
        ExtractEmbeddedImages(context);
        AddImportedAnimations(*scene, animations);
        return scene;
    } catch (const GltfError& error) {
        delete scene;
        ConsoleError("'%s': %s", fileName.c_str(), error.what());
    } catch (const std::bad_alloc&) {
        delete scene;
        ConsoleError("'%s': not enough memory to load the file", fileName.c_str());
    } catch (const std::exception& error) {
        delete scene;
        ConsoleError("'%s': %s", fileName.c_str(), error.what());
    }
    return nullptr;
}
