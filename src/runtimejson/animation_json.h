// The animation file: one take's position, rotation and scale keys by node.
// Private to the runtime JSON library.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "json/json.h"
#include "scene/scene.h"

// The document of one animation as a value tree; nodeNames maps node ids to names.
JsonValue BuildAnimationJson(const Animation& animation, const std::map<uint64_t, std::string>& nodeNames);

// Streams, in archive order, each animation whose name is in animationNames to path,
// each replacing the file, so the last one stays. Nothing is written when none matches.
// False if a file could not be written.
bool WriteAnimationsJson(const std::string& path, const Scene& scene, const std::set<std::string>& animationNames,
                         bool prettyPrint);
