#include "runtimejson/json_scene_writer.h"

#include "runtimejson/animation_json.h"
#include "runtimejson/materials_json.h"
#include "runtimejson/metadata_json.h"
#include "runtimejson/model_json.h"
#include "runtimejson/scene_metadata_json.h"

// Each role replaces the file in turn, so with several roles on one name the last
// one's content stays.
bool WriteJsonScene(const std::string& fileName, const Scene& scene, const ExportOptions& options) {
    bool ok = true;
    if (options.exportModel) ok = WriteModelJson(fileName, scene, options.prettyPrint) && ok;
    if (options.exportMaterials) ok = WriteMaterialsJson(fileName, scene, options.prettyPrint) && ok;
    if (!options.animations.empty())
        ok = WriteAnimationsJson(fileName, scene, options.animations, options.prettyPrint) && ok;
    if (options.exportMetadata) ok = WriteMetadataJson(fileName, scene, options.prettyPrint) && ok;
    if (options.exportSceneMetadata) ok = WriteSceneMetadataJson(fileName, scene) && ok;
    return ok;
}
