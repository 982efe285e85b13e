// Samples 10,000 curves of 1,000 keys forward, at every key and every midpoint, passing
// the search index back in, and reports the processor time a sample. The keys mix the flag words
// of real files: mostly cubic auto, with linear, user, weighted, TCB and constant keys.
//   bench_fbx_anim_eval [curves] [keys]
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "fbx/fbx_anim_eval.h"

namespace {

// Processor time of this process: the machine may be shared, and wall time would count
// the other processes' turns.
double CpuSeconds() { return double(std::clock()) / CLOCKS_PER_SEC; }

FbxAnimKeyStore MakeCurve(int keys, unsigned seed) {
    static const uint32_t kFlags[] = {0x6108, 0x6108, 0x6108, 0x2108, 0x4, 0x408, 0x3000408, 0x208, 0x2};
    FbxAnimKeyStore store;
    store.Reserve(keys, keys);
    for (int i = 0; i < keys; ++i) {
        seed = seed * 1664525u + 1013904223u;
        FbxAnimKeyAttr attr;
        attr.flags = kFlags[(seed >> 8) % (sizeof kFlags / sizeof kFlags[0])];
        attr.data[0] = FbxFloatToBits(float(int(seed >> 20) % 200 - 100) * 0.05f);
        attr.data[1] = FbxFloatToBits(float(int(seed >> 12) % 200 - 100) * 0.05f);
        attr.data[2] = (2500u << 16) | 4000u;
        const float value = float(int(seed >> 16) % 1000) * 0.01f;
        store.AppendKey(FbxLongLong(i) * 4704000 + FbxLongLong(seed % 1000), value, store.AddAttr(attr));
    }
    return store;
}

}  // namespace

int main(int argc, char** argv) {
    const int curveCount = argc > 1 ? std::atoi(argv[1]) : 10000;
    const int keyCount = argc > 2 ? std::atoi(argv[2]) : 1000;
    if (curveCount <= 0 || keyCount < 2) return 1;

    double start = CpuSeconds();
    std::vector<FbxAnimKeyStore> curves;
    curves.reserve(size_t(curveCount));
    for (int c = 0; c < curveCount; ++c) curves.push_back(MakeCurve(keyCount, unsigned(c) * 2654435761u));
    std::printf("built %d curves of %d keys in %.2f s\n", curveCount, keyCount, CpuSeconds() - start);

    double sum = 0.0;
    start = CpuSeconds();
    for (const FbxAnimKeyStore& curve : curves) {
        int index = 0;
        for (int k = 0; k < keyCount; ++k) {
            const FbxLongLong t = curve.Key(k).time;
            sum += EvaluateCurve(curve, FbxTime(t), &index);
            if (k + 1 < keyCount) sum += EvaluateCurve(curve, FbxTime(t + (curve.Key(k + 1).time - t) / 2), &index);
        }
    }
    const double values = CpuSeconds() - start;
    const double samples = double(curveCount) * (2.0 * keyCount - 1);
    std::printf("values:      %.3f s, %.1f ns a sample (%.0f samples)\n", values, values * 1e9 / samples, samples);

    start = CpuSeconds();
    for (const FbxAnimKeyStore& curve : curves) {
        int index = 0;
        for (int k = 0; k < keyCount; ++k) {
            const FbxTime t(curve.Key(k).time);
            sum += EvaluateCurveLeftDerivative(curve, t, &index) + EvaluateCurveRightDerivative(curve, t, &index);
        }
    }
    const double derivatives = CpuSeconds() - start;
    const double keys = double(curveCount) * keyCount;
    std::printf("derivatives: %.3f s, %.1f ns a key for both sides\n", derivatives, derivatives * 1e9 / keys);
    std::printf("checksum %.6g\n", sum);
    return 0;
}
