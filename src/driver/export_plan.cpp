#include "driver/export_plan.h"

#include <cstring>

#include "driver/output_guard.h"
#include "scene/console.h"
#include "scene/memory_budget.h"

namespace {

void SplitAtLastDot(const std::string& name, std::string& stem, std::string& suffix) {
    size_t dot = name.rfind('.');
    if (dot == std::string::npos) {
        stem = name;
        suffix.clear();
    } else {
        stem = name.substr(0, dot);
        suffix = name.substr(dot);
    }
}

// Characters that cannot stand in a file name on the engine's target platforms.
std::string CleanTakeName(const std::string& takeName) {
    std::string cleaned = takeName;
    for (char& c : cleaned) {
        unsigned char u = static_cast<unsigned char>(c);
        if (u < 32 || (u < 128 && std::strchr("/?<>\\:*|\" ", c) != nullptr)) c = '_';
    }
    return cleaned;
}

}  // namespace

std::string AnimationFileName(const std::string& animationFile, const std::string& animationNaming, size_t index,
                              const std::string& takeName) {
    if (animationNaming == "combine") return animationFile;
    std::string stem, suffix;
    SplitAtLastDot(animationFile, stem, suffix);
    if (animationNaming == "numbered") {
        std::string digits = std::to_string(index);
        if (digits.size() < 3) digits.insert(0, 3 - digits.size(), '0');
        return stem + digits + suffix;
    }
    return stem + CleanTakeName(takeName) + suffix;
}

TakesByFile MapTakesToFiles(const AnimationDictionary& animations, const std::string& animationFile,
                            const std::string& animationNaming) {
    TakesByFile takesByFile;
    if (animationFile.empty()) return takesByFile;
    for (size_t i = 0; i < animations.animations.size(); ++i) {
        const Animation* animation = animations.animations[i];
        if (!animation) continue;
        takesByFile[AnimationFileName(animationFile, animationNaming, i, animation->name)].insert(animation->name);
    }
    return takesByFile;
}

std::set<std::string> PlanOutputFiles(const OutputNames& names, const TakesByFile& takesByFile) {
    std::set<std::string> outputFiles;
    for (const std::string* name : {&names.modelFile, &names.materialsFile, &names.metadataFile,
                                    &names.sceneMetadataFile})
        if (!name->empty()) outputFiles.insert(*name);
    for (const auto& entry : takesByFile) outputFiles.insert(entry.first);
    return outputFiles;
}

ExportOptions MakeExportOptions(const std::string& name, const OutputNames& names, const TakesByFile& takesByFile,
                                bool prettyPrint) {
    ExportOptions options;
    options.version = kVurlVersion;
    options.exportModel = name == names.modelFile;
    options.exportMaterials = name == names.materialsFile;
    options.exportMetadata = name == names.metadataFile;
    options.prettyPrint = prettyPrint;
    options.exportSceneMetadata = name == names.sceneMetadataFile;
    auto it = takesByFile.find(name);
    if (it != takesByFile.end()) options.animations = it->second;
    return options;
}

std::vector<WrittenFile> WriteOutputs(const FormatRegistry& registry, const Scene& scene, const OutputNames& names,
                                      const std::string& animationNaming, bool prettyPrint) {
    const TakesByFile takesByFile = MapTakesToFiles(scene, names.animationFile, animationNaming);
    std::vector<WrittenFile> writtenFiles;
    for (const std::string& name : PlanOutputFiles(names, takesByFile)) {
        ConsolePrint("Writing %s...\n", name.c_str());
        SetRunStage("writing " + name);
        ExportOptions options = MakeExportOptions(name, names, takesByFile, prettyPrint);
        // A failed write does not change the run's result.
        GuardOutput(name, [&] { return WriteScene(registry, name, scene, options); });
        writtenFiles.push_back({name, std::move(options)});
    }
    return writtenFiles;
}
