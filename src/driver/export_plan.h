// Which files a run writes and what each of them holds.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "driver/format_registry.h"
#include "scene/options.h"
#include "scene/scene.h"

struct OutputNames {
    std::string modelFile;
    std::string animationFile;
    std::string materialsFile;
    std::string metadataFile;
    std::string sceneMetadataFile;
    std::string manifestFile;
};

struct WrittenFile {
    std::string name;
    ExportOptions options;
};

using TakesByFile = std::map<std::string, std::set<std::string>>;

// File name of take number `index` under the naming method ("combine", "numbered", "take").
std::string AnimationFileName(const std::string& animationFile, const std::string& animationNaming, size_t index,
                              const std::string& takeName);
TakesByFile MapTakesToFiles(const AnimationDictionary& animations, const std::string& animationFile,
                            const std::string& animationNaming);
std::set<std::string> PlanOutputFiles(const OutputNames& names, const TakesByFile& takesByFile);
ExportOptions MakeExportOptions(const std::string& name, const OutputNames& names, const TakesByFile& takesByFile,
                                bool prettyPrint);

// Announces and writes every planned file in order; returns them in writing order.
std::vector<WrittenFile> WriteOutputs(const FormatRegistry& registry, const Scene& scene, const OutputNames& names,
                                      const std::string& animationNaming, bool prettyPrint);
