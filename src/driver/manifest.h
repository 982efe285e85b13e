#pragma once

#include <string>
#include <vector>

#include "driver/export_plan.h"
#include "json/json.h"

// One member per written file, in writing order, listing its roles.
JsonValue BuildManifest(const std::vector<WrittenFile>& writtenFiles);
// Always in the standard (pretty) layout, whatever the pretty-print option says.
void WriteManifest(const std::vector<WrittenFile>& writtenFiles, const std::string& fileName);
