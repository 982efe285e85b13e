#include "gltf/gltf_loader.h"

#include <cstdio>
#include <iostream>
#include <exception>
#include <new>

#include "gltf/glb_container_read.h"
#include "gltf/gltf_decode_cost.h"
#include "gltf/gltf_document_read.h"
#include "gltf/gltf_images.h"
#include "gltf/gltf_import.h"
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
            std::fflush(stdout);
            std::cerr << "ERROR: '" << fileName << "': decoding the file " << shortfall << std::endl;
            return nullptr;
        }
        std::vector<std::unique_ptr<Animation>> animations;
        scene = ImportGltfScene(context, &animations);
        ExtractEmbeddedImages(context);
        AddImportedAnimations(*scene, animations);
        return scene;
    } catch (const GltfError& error) {
        delete scene;
        std::cerr << "ERROR: '" << fileName << "': " << error.what() << std::endl;
    } catch (const std::bad_alloc&) {
        // The run ends with the report of its stage (the driver's).
        delete scene;
        throw;
    } catch (const std::exception& error) {
        delete scene;
        std::cerr << "ERROR: '" << fileName << "': " << error.what() << std::endl;
    }
    return nullptr;
}
