// Reads every AnimationCurve of binary FBX files and evaluates it, values and both
// derivatives, at each key, at each midpoint between keys and half a span outside both
// ends. Reports per file the curves, keys and samples, the curves refused as corrupted,
// and every NaN that comes from a curve whose keys are finite; a forward walk with a
// passed search index must also agree with a fresh search at every sample.
//   vurl_fbx_anim_check FILE...
// Exit 0 when no file shows a NaN from finite keys or a disagreement.
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "fbx/fbx_anim_curve_read.h"
#include "fbx/fbx_anim_eval.h"
#include "fbx/fbx_field_stream.h"

namespace {

struct Totals {
    uint64_t curves = 0;
    uint64_t keys = 0;
    uint64_t samples = 0;
    uint64_t corrupted = 0;
    uint64_t nonFinite = 0;  // curves skipped from the NaN count: their own keys are not finite
    uint64_t nans = 0;
    uint64_t disagreements = 0;
};

bool FiniteKeys(const FbxAnimKeyStore& store) {
    for (int k = 0; k < store.KeyCount(); ++k) {
        if (!std::isfinite(store.Value(k))) return false;
        const bool tcb = (store.Flags(k) & kFbxTangentTCB) != 0;
        for (int w = 0; w < (tcb ? 3 : 2); ++w) {
            if (!std::isfinite(store.Word(k, w))) return false;
        }
    }
    return std::isfinite(store.defaultValue);
}

// Sample times in rising order: half a span before the first key, every key and every
// midpoint, half a span after the last key.
std::vector<FbxLongLong> SampleTimes(const FbxAnimKeyStore& store) {
    std::vector<FbxLongLong> times;
    const int n = store.KeyCount();
    if (n == 0) return {0};
    const FbxLongLong first = store.Key(0).time, last = store.Key(n - 1).time;
    const FbxLongLong half = (last / 2 - first / 2) > 0 ? (last / 2 - first / 2) : FbxTime::kTicksPerSecond;
    times.push_back(first - half);
    for (int k = 0; k < n; ++k) {
        const FbxLongLong t = store.Key(k).time;
        times.push_back(t);
        if (k + 1 < n) times.push_back(t + (store.Key(k + 1).time / 2 - t / 2));
    }
    times.push_back(last + half);
    return times;
}

void CheckCurve(const std::string& file, int index, const FbxAnimKeyStore& store, Totals& totals) {
    ++totals.curves;
    totals.keys += uint64_t(store.KeyCount());
    const bool finite = FiniteKeys(store);
    if (!finite) ++totals.nonFinite;
    int walk = 0;
    for (FbxLongLong t : SampleTimes(store)) {
        const FbxTime time(t);
        const float walked[3] = {EvaluateCurve(store, time, &walk), EvaluateCurveLeftDerivative(store, time, &walk),
                                 EvaluateCurveRightDerivative(store, time, &walk)};
        int fresh = 0;
        const float searched = EvaluateCurve(store, time, &fresh);
        ++totals.samples;
        if (!(walked[0] == searched || (std::isnan(walked[0]) && std::isnan(searched)))) {
            ++totals.disagreements;
            std::printf("%s: curve %d: walk and search differ at %" PRId64 " ticks (%g, %g)\n", file.c_str(), index, t,
                        double(walked[0]), double(searched));
        }
        if (!finite) continue;
        for (int s = 0; s < 3; ++s) {
            if (!std::isnan(walked[s])) continue;
            ++totals.nans;
            static const char* const kWhat[] = {"value", "left derivative", "right derivative"};
            std::printf("%s: curve %d: NaN %s at %" PRId64 " ticks\n", file.c_str(), index, kWhat[s], t);
        }
    }
}

// False when the file could not be opened.
bool CheckFile(const std::string& file, Totals& totals) {
    FbxStatus status;
    std::unique_ptr<FbxFieldStream> stream = FbxOpenFieldStream(file, status, true, nullptr);
    if (!stream) {
        std::printf("%s: not opened: %s\n", file.c_str(), status.GetErrorString().c_str());
        return false;
    }
    if (!stream->BeginField("Objects") || !stream->BeginBlock()) return true;
    const int count = stream->FieldCount("AnimationCurve");
    for (int i = 0; i < count; ++i) {
        if (!stream->BeginField("AnimationCurve", i)) continue;
        if (stream->BeginBlock()) {
            FbxAnimKeyStore store;
            FbxStatus curveStatus;
            if (!ReadAnimCurveKeyStore(*stream, store, curveStatus)) {
                ++totals.corrupted;
                std::printf("%s: curve %d: %s\n", file.c_str(), i, curveStatus.GetErrorString().c_str());
            }
            CheckCurve(file, i, store, totals);
            stream->EndBlock();
        }
        stream->EndField();
    }
    stream->EndBlock();
    stream->EndField();
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: vurl_fbx_anim_check FILE...\n");
        return 2;
    }
    Totals all;
    int unopened = 0;
    for (int a = 1; a < argc; ++a) {
        Totals file;
        if (!CheckFile(argv[a], file)) {
            ++unopened;
            continue;
        }
        if (file.curves > 0) {
            std::printf("%s: %" PRIu64 " curves, %" PRIu64 " keys, %" PRIu64 " samples, %" PRIu64 " NaN\n", argv[a],
                        file.curves, file.keys, file.samples, file.nans);
        }
        all.curves += file.curves;
        all.keys += file.keys;
        all.samples += file.samples;
        all.corrupted += file.corrupted;
        all.nonFinite += file.nonFinite;
        all.nans += file.nans;
        all.disagreements += file.disagreements;
    }
    std::printf("files %d (not opened %d), curves %" PRIu64 ", keys %" PRIu64 ", samples %" PRIu64
                ", corrupted %" PRIu64 ", curves with non-finite keys %" PRIu64 ", NaN from finite keys %" PRIu64
                ", walk/search disagreements %" PRIu64 "\n",
                argc - 1, unopened, all.curves, all.keys, all.samples, all.corrupted, all.nonFinite, all.nans,
                all.disagreements);
    return all.nans == 0 && all.disagreements == 0 ? 0 : 1;
}
