// One walk over every record of an FBX file's open section, shared by the dump tool, the
// stream fuzzer and the tests that compare field trees. Test tooling only.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "fbx/fbx_field_stream.h"

namespace fbxwalk {

struct WalkTotals {
    uint64_t badBlocks = 0;  // blocks that could not be entered
    int maxDepth = 0;        // levels open at the deepest point, the top one counted; 0 without blocks
};

// Called once per record instance, depth first, with the stream's current field set to it
// and its block not yet entered; it may read the record's values.
using FieldVisit = std::function<void(const std::string& name, int instance, int depth)>;

// Iterative, so that the nesting of a file costs no stack.
WalkTotals WalkFields(FbxFieldStream& stream, const FieldVisit& visit);

// Reads every value left in the current record with the reader its code calls for.
void ReadEveryValue(FbxFieldStream& stream);

}  // namespace fbxwalk
