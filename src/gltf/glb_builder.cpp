#include "gltf/glb_builder.h"

#include <cstring>

const AccessorFormat kFormatScalarU16{5123, 2, 1, "SCALAR"};
const AccessorFormat kFormatScalarU32{5125, 4, 1, "SCALAR"};
const AccessorFormat kFormatScalarF32{5126, 4, 1, "SCALAR"};
const AccessorFormat kFormatVec3F32{5126, 4, 3, "VEC3"};
const AccessorFormat kFormatVec4F32{5126, 4, 4, "VEC4"};
const AccessorFormat kFormatMat4F32{5126, 4, 16, "MAT4"};

int32_t AddBufferView(GlbBuilder& builder, uint32_t target) {
    GlbBufferView view;
    view.index = static_cast<int32_t>(builder.bufferViews.size());
    view.buffer = builder.buffer;
    view.byteOffset = static_cast<uint32_t>(builder.data.size());
    view.target = target;
    builder.bufferViews.push_back(view);
    return view.index;
}

int32_t AddAccessor(GlbBuilder& builder, int32_t view, const AccessorFormat& format) {
    GlbAccessor accessor;
    accessor.index = static_cast<int32_t>(builder.accessors.size());
    accessor.bufferView = view;
    accessor.format = format;
    builder.accessors.push_back(std::move(accessor));
    return static_cast<int32_t>(builder.accessors.size() - 1);
}

int32_t AddAccessor(GlbBuilder& builder, const AccessorFormat& format) { return AddAccessor(builder, -1, format); }

uint8_t* GrowView(GlbBuilder& builder, int32_t view, size_t length) {
    size_t old = builder.data.size();
    builder.data.resize((old + length + 3) & ~size_t(3), 0);
    builder.bufferViews[size_t(view)].byteLength = static_cast<uint32_t>(length);
    return builder.data.data() + old;
}

void AppendToView(GlbBuilder& builder, int32_t view, const void* bytes, size_t length) {
    uint8_t* out = GrowView(builder, view, length);
    if (length) std::memcpy(out, bytes, length);
}

int32_t AddDataView(GlbBuilder& builder, const void* bytes, size_t length) {
    int32_t view = AddBufferView(builder, 0);
    AppendToView(builder, view, bytes, length);
    return view;
}
