#include "driver/manifest.h"

JsonValue BuildManifest(const std::vector<WrittenFile>& writtenFiles) {
    JsonValue manifest = JsonValue::Object();
    for (const WrittenFile& file : writtenFiles) {
        JsonValue roles = JsonValue::Array();
        if (file.options.exportModel) roles.Add(JsonValue("model"));
        if (file.options.exportSceneMetadata) roles.Add(JsonValue("scene"));
        if (file.options.exportMaterials) roles.Add(JsonValue("materials"));
        if (file.options.exportMetadata) roles.Add(JsonValue("metadata"));
        if (!file.options.animations.empty()) roles.Add(JsonValue("animation"));
        manifest.Add(file.name, roles);
    }
    return manifest;
}

void WriteManifest(const std::vector<WrittenFile>& writtenFiles, const std::string& fileName) {
    JsonWriter writer(NoFormat);
    writer.SetFormat(StandardFormat);
    writer.WriteFile(BuildManifest(writtenFiles), fileName);
}
