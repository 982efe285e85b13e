#include "meshpost/xatlas_adapter.h"

#include <cstdlib>

#include "scene/memory_budget.h"

namespace {

// Fields that only some xatlas releases have are set through these, so one source works
// with each of them.
template <typename Options>
void SetOptionalChartFields(Options& o) {
    if constexpr (requires { o.paramFunc; }) o.paramFunc = nullptr;
    if constexpr (requires { o.useInputMeshUvs; }) o.useInputMeshUvs = false;
    if constexpr (requires { o.fixWinding; }) o.fixWinding = false;
}

template <typename Options>
void SetOptionalPackFields(Options& o) {
    if constexpr (requires { o.rotateChartsToAxis; }) o.rotateChartsToAxis = true;
    if constexpr (requires { o.rotateCharts; }) o.rotateCharts = true;
}

template <typename Decl>
void ClearFaceFields(Decl& d) {
    if constexpr (requires { d.faceMaterialData; }) d.faceMaterialData = nullptr;
    if constexpr (requires { d.faceVertexCount; }) d.faceVertexCount = nullptr;
    if constexpr (requires { d.faceCount; }) d.faceCount = 0;
}

void* ReallocOrEndRun(void* memory, size_t size) {
    void* result = std::realloc(memory, size);
    if (!result && size != 0) EndRunOutOfMemory();
    return result;
}

}  // namespace

void UseRunEndingAllocator() { xatlas::SetAlloc(ReallocOrEndRun, std::free); }

void ClearOptionalFaceFields(xatlas::MeshDecl& decl) { ClearFaceFields(decl); }

void SetUnwrapChartOptions(xatlas::ChartOptions& options) {
    SetOptionalChartFields(options);
    options.maxChartArea = 0.0f;
    options.maxBoundaryLength = 0.0f;
    options.normalDeviationWeight = 2.0f;
    options.roundnessWeight = 0.01f;
    options.straightnessWeight = 6.0f;
    options.normalSeamWeight = 4.0f;
    options.textureSeamWeight = 0.5f;
    options.maxCost = 2.0f;
    options.maxIterations = 1;
}

void SetUnwrapPackOptions(xatlas::PackOptions& options, float texelsPerUnit) {
    options.maxChartSize = 0;
    options.padding = 2;
    options.texelsPerUnit = texelsPerUnit;
    options.resolution = 0;
    options.bilinear = true;
    options.blockAlign = false;
    options.bruteForce = false;
    options.createImage = false;
    SetOptionalPackFields(options);
}

void GenerateUnwrapAtlas(xatlas::Atlas* atlas, float texelsPerUnit) {
    xatlas::ChartOptions chart;
    SetUnwrapChartOptions(chart);
    xatlas::PackOptions pack;
    SetUnwrapPackOptions(pack, texelsPerUnit);
#if VURL_XATLAS_TWO_OPTION_GENERATE
    xatlas::Generate(atlas, chart, pack);
#else
    // Older releases keep the custom parameterisation in its own record.
    xatlas::ParameterizeOptions parameterize;
    parameterize.func = nullptr;
    xatlas::Generate(atlas, chart, parameterize, pack);
#endif
}
