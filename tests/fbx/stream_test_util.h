// Shared helpers of the field stream tests: files made by the fixture writer,
// opened from memory the way the reader opens them.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "fbx/fbx_field_stream.h"
#include "fbx_writer.h"

namespace streamtest {

using fbxwriter::Record;
using fbxwriter::Value;

inline const std::string kName = "fixture.fbx";

// Opens with the type-1-then-type-0 helper and the main section open.
inline std::unique_ptr<FbxFieldStream> Open(const std::vector<uint8_t>& bytes, FbxStatus& status,
                                            FbxFileHeaderInfo* info = nullptr) {
    return FbxOpenFieldStream(FbxFileBytes::Copy(bytes.data(), bytes.size()), kName, status, true, info);
}

// A file of one top-level record "V" holding the given values.
inline std::vector<uint8_t> OneRecord(std::vector<Value> values, fbxwriter::Options options = {}) {
    Record record("V");
    record.values = std::move(values);
    return fbxwriter::Write({record}, options);
}

}  // namespace streamtest
