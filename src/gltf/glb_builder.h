// Growing the one binary buffer of a GLB: views, accessors and the 4-byte append rule.
// Private to the glTF library.
#pragma once

#include <cstddef>
#include <cstdint>

#include "gltf/glb_export_records.h"

// A view starting at the current end of the data, with length 0 until data is appended.
int32_t AddBufferView(GlbBuilder& builder, uint32_t target);
// An accessor on a view, or without one (bufferView -1).
int32_t AddAccessor(GlbBuilder& builder, int32_t view, const AccessorFormat& format);
int32_t AddAccessor(GlbBuilder& builder, const AccessorFormat& format);

// Grows the data by length zero bytes, padded to a multiple of 4, and gives the view the
// unpadded length, so that the next view starts 4-aligned. Returns where the length bytes
// start, for the caller to fill.
uint8_t* GrowView(GlbBuilder& builder, int32_t view, size_t length);
// GrowView filled with a copy of the bytes.
void AppendToView(GlbBuilder& builder, int32_t view, const void* bytes, size_t length);
// A view of target 0 holding the bytes; gives the view's index.
int32_t AddDataView(GlbBuilder& builder, const void* bytes, size_t length);
