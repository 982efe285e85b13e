// One place that knows how the xatlas release at hand takes its options.
#pragma once

#include <cstddef>  // xatlas.h uses size_t without including its header
#include <xatlas.h>

// Makes xatlas allocate through a function that ends the run with the out-of-memory report
// when an allocation fails: xatlas would write through the null pointer, on its own threads too.
void UseRunEndingAllocator();

// Per-face material and polygon data, where the release has them: none here.
void ClearOptionalFaceFields(xatlas::MeshDecl& decl);

// The chart and pack settings of the lightmap unwrap; every field a release lacks is
// left out, every field it has is set.
void SetUnwrapChartOptions(xatlas::ChartOptions& options);
void SetUnwrapPackOptions(xatlas::PackOptions& options, float texelsPerUnit);

// Runs chart generation and packing with the unwrap settings.
void GenerateUnwrapAtlas(xatlas::Atlas* atlas, float texelsPerUnit);
