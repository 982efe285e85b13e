// Per-node transform state (the two pivot sets, the working record and the cached
// evaluation) and the evaluator that owns a scene's cache of evaluated transforms.
#pragma once

#include <cstdint>

#include "fbx/fbx_time.h"
#include "fbx/fbx_transform.h"

// One evaluator per scene (and one for nodes outside any scene). It keeps the time of
// the cached entries; a node's entry counts only while it carries the evaluator's
// current generation, so clearing the whole cache is one increment.
class FbxTransformEvaluator {
public:
    FbxTransformEvaluator() : generation_(NextGeneration()) {}

    // Drops every cached entry; callers of a conversion that changes nodes call this.
    void Reset() { generation_ = NextGeneration(); }
    // Makes `time` the current one; a different time drops the cache.
    void SetTime(FbxTime time) {
        if (time != time_) {
            time_ = time;
            Reset();
        }
    }
    FbxTime Time() const { return time_; }
    uint64_t Generation() const { return generation_; }

private:
    // Unique over the whole process, so that an entry of a destroyed evaluator can never
    // pass for one of a new evaluator.
    static uint64_t NextGeneration();

    FbxTime time_ = FbxTime::Infinite();
    uint64_t generation_;
};

struct FbxNodeTransformState {
    FbxPivotSet pivotSets[2];
    // Pivot set 0 and the limits in the form the evaluation uses; rotation order and
    // inherit type are refreshed from the properties at each evaluation.
    FbxTransformRecord record;
    // Pivot set 0 has been taken from the properties once.
    bool pivotsRead = false;

    // Cached evaluation, valid while `generation` is the evaluator's.
    uint64_t generation = 0;
    FbxVector4 t, r, s;
    FbxAMatrix local, global;
    // Marks the node while an evaluation walks up its ancestors, to cut parent cycles.
    uint64_t walkMark = 0;
};
