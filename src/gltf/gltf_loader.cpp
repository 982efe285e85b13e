#include "gltf/gltf_loader.h"

#include <exception>
#include <new>

#include "gltf/glb_container_read.h"
#include "gltf/gltf_decode_cost.h"
#include "gltf/gltf_document_read.h"
#include "gltf/gltf_images.h"
#include "gltf/gltf_import.h"
#include "scene/console.h"
#include "scene/memory_budget.h"

Scene* LoadGltf(const std::string& fileName, const ConversionOptions& /*options*/) {
    GltfContext context;
    context.path = fileName;
    if (!ReadGlbContainer(fileName, context)) return nullptr;
    ReadGltfDocument(context.document, context.json);

    // The import runs before the images are saved so that a refused file leaves no output;
    // animations are added after them, where their console lines belong.
    Scene* scene = nullptr;
    try {
        // Decoded data can be thousands of times the file (one accessor named by thousands of
        // morph targets): what cannot fit in memory is refused before any of it is decoded.
        const std::string shortfall = MemoryShortfall(EstimateDecodedBytes(context), AvailableMemoryBytes());
        if (!shortfall.empty()) {
            ConsoleError("'%s': decoding the file %s", fileName.c_str(), shortfall.c_str());
            return nullptr;
        }
        std::vector<std::unique_ptr<Animation>> animations;
        scene = ImportGltfScene(context, &animations);
        ExtractEmbeddedImages(context);
        AddImportedAnimations(*scene, animations);
        return scene;
    } catch (const GltfError& error) {
        delete scene;
        ConsoleError("'%s': %s", fileName.c_str(), error.what());
    } catch (const std::bad_alloc&) {
        // The run ends with the report of its stage (the driver's).
        delete scene;
        throw;
    } catch (const std::exception& error) {
        delete scene;
        ConsoleError("'%s': %s", fileName.c_str(), error.what());
    }
    return nullptr;
}
