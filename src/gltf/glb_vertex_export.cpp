#include "gltf/glb_vertex_export.h"

#include <algorithm>
#include <cstring>

#include "gltf/glb_builder.h"

namespace {
const char* const kAttributeNames[] = {"POSITION",   "NORMAL",     "TANGENT",    "BINORMAL",   "COLOR_0",
                                       "JOINTS_0",   "WEIGHTS_0",  "TEXCOORD_0", "TEXCOORD_1", "TEXCOORD_2",
                                       "TEXCOORD_3", "TEXCOORD_4", "TEXCOORD_5", "TEXCOORD_6", "TEXCOORD_7"};

const uint32_t kKindSizes[] = {4, 1, 2, 4, 1, 2, 4};
const uint32_t kKindValues[] = {5126, 5120, 5122, 5124, 5121, 5123, 5125};

template <typename T>
void PushReferenced(std::vector<VertexStream>& streams, uint32_t semantic, uint32_t kind, uint32_t components,
                    bool normalized, const std::vector<T>& source) {
    VertexStream s;
    s.semantic = semantic;
    s.kind = kind;
    s.components = components;
    s.normalized = normalized;
    s.bytes = reinterpret_cast<const uint8_t*>(source.data());
    s.byteCount = source.size() * sizeof(T);
    streams.push_back(std::move(s));
}

void PushConverted(std::vector<VertexStream>& streams, VertexStream s) {
    streams.push_back(std::move(s));
    // The vector's heap block survives moves, so the pointer stays good as streams grows.
    streams.back().bytes = streams.back().converted.data();
    streams.back().byteCount = streams.back().converted.size();
}

uint8_t ColorByte(float value) {
    double v = value * 255.0;
    if (!(v > 0.0)) return 0;  // also NaN
    if (v > 255.0) return 255;
    return static_cast<uint8_t>(v);
}

// Copies element i of a stream to each vertex slot; a short stream leaves the rest zero.
template <size_t N>
void CopyFixed(uint8_t* out, uint32_t stride, const uint8_t* in, size_t whole) {
    for (size_t i = 0; i < whole; ++i) std::memcpy(out + i * stride, in + i * N, N);
}

void CopyStream(uint8_t* block, uint32_t count, uint32_t stride, uint32_t offset, const VertexStream& s) {
    size_t element = size_t(ComponentKindSize(s.kind)) * s.components;
    if (element == 0 || s.byteCount == 0) return;
    size_t whole = std::min<size_t>(count, s.byteCount / element);
    uint8_t* out = block + offset;
    switch (element) {
        case 4: CopyFixed<4>(out, stride, s.bytes, whole); break;
        case 8: CopyFixed<8>(out, stride, s.bytes, whole); break;
        case 12: CopyFixed<12>(out, stride, s.bytes, whole); break;
        case 16: CopyFixed<16>(out, stride, s.bytes, whole); break;
        default:
            for (size_t i = 0; i < whole; ++i) std::memcpy(out + i * stride, s.bytes + i * element, element);
    }
    // A stream whose length is not a whole number of elements gives its last bytes too.
    if (whole < count) {
        size_t rest = s.byteCount - whole * element;
        if (rest) std::memcpy(out + whole * stride, s.bytes + whole * element, std::min(rest, element));
    }
}

void MinMaxVec3(const VertexStream& s, uint32_t count, GlbAccessor& accessor) {
    size_t n = std::min<size_t>(count, s.byteCount / 12);
    if (n == 0) return;
    const uint8_t* p = s.bytes;
    float v[3];
    std::memcpy(v, p, 12);
    float lo[3] = {v[0], v[1], v[2]}, hi[3] = {v[0], v[1], v[2]};
    for (size_t i = 1; i < n; ++i) {
        std::memcpy(v, p + i * 12, 12);
        for (int c = 0; c < 3; ++c) {
            if (v[c] < lo[c]) lo[c] = v[c];
            if (v[c] > hi[c]) hi[c] = v[c];
        }
    }
    accessor.min.assign(lo, lo + 3);
    accessor.max.assign(hi, hi + 3);
}
}  // namespace

const char* AttributeName(uint32_t semantic) { return semantic < 15 ? kAttributeNames[semantic] : ""; }
uint32_t ComponentKindSize(uint32_t kind) { return kind < 7 ? kKindSizes[kind] : 0; }
uint32_t ComponentKindValue(uint32_t kind) { return kind < 7 ? kKindValues[kind] : 0; }

const char* AccessorTypeName(uint32_t components) {
    switch (components) {
        case 1: return "SCALAR";
        case 2: return "VEC2";
        case 3: return "VEC3";
        case 4: return "VEC4";
        case 16: return "MAT4";
        default: return "";
    }
}

AccessorFormat FormatOf(uint32_t kind, uint32_t components) {
    return AccessorFormat{ComponentKindValue(kind), ComponentKindSize(kind), static_cast<uint8_t>(components),
                          AccessorTypeName(components)};
}

std::vector<VertexStream> BuildVertexStreams(const VertexData& v) {
    std::vector<VertexStream> streams;
    streams.reserve(13);
    PushReferenced(streams, kAttributePosition, kComponentFloat, 3, false, v.positions);
    if (!v.normals.empty()) PushReferenced(streams, kAttributeNormal, kComponentFloat, 3, true, v.normals);
    if (!v.colors.empty()) {
        VertexStream s;
        s.semantic = kAttributeColor0;
        s.kind = kComponentUint8;
        s.components = 4;
        s.normalized = true;
        s.converted.resize(v.colors.size());
        for (size_t i = 0; i < v.colors.size(); ++i) s.converted[i] = ColorByte(v.colors[i]);
        PushConverted(streams, std::move(s));
    }
    if (!v.joints.empty()) {
        uint16_t largest = *std::max_element(v.joints.begin(), v.joints.end());
        if (largest < 256) {
            VertexStream s;
            s.semantic = kAttributeJoints0;
            s.kind = kComponentUint8;
            s.components = 4;
            s.converted.resize(v.joints.size());
            for (size_t i = 0; i < v.joints.size(); ++i) s.converted[i] = static_cast<uint8_t>(v.joints[i]);
            PushConverted(streams, std::move(s));
        } else {
            PushReferenced(streams, kAttributeJoints0, kComponentUint16, 4, false, v.joints);
        }
    }
    if (!v.weights.empty()) PushReferenced(streams, kAttributeWeights0, kComponentFloat, 4, true, v.weights);
    for (uint32_t set = 0; set < 8; ++set)
        if (!v.texCoords[set].empty())
            PushReferenced(streams, kAttributeTexCoord0 + set, kComponentFloat, 2, true, v.texCoords[set]);
    return streams;
}

InterleavedVertices LayoutStreams(const std::vector<VertexStream>& streams) {
    InterleavedVertices layout;
    uint32_t sum = 0;
    for (const VertexStream& s : streams) {
        layout.offsets.push_back(sum);
        sum += (ComponentKindSize(s.kind) * s.components + 3) & ~3u;
    }
    layout.stride = sum;
    if (!streams.empty()) {
        const VertexStream& first = streams.front();
        size_t element = size_t(ComponentKindSize(first.kind)) * first.components;
        layout.count = element ? static_cast<uint32_t>(first.byteCount / element) : 0;
    }
    return layout;
}

int32_t ExportIndices(GlbBuilder& builder, const std::vector<uint32_t>& indices) {
    uint32_t largest = indices.empty() ? 0 : *std::max_element(indices.begin(), indices.end());
    int32_t view = AddBufferView(builder, 0);
    int32_t accessor;
    if (largest >= 65536) {
        accessor = AddAccessor(builder, view, kFormatScalarU32);
        AppendToView(builder, view, indices.data(), indices.size() * 4);
    } else {
        accessor = AddAccessor(builder, view, kFormatScalarU16);
        // Narrow straight into the buffer: no temporary copy of a large index list.
        uint8_t* out = GrowView(builder, view, indices.size() * 2);
        for (size_t i = 0; i < indices.size(); ++i) {
            uint16_t narrow = static_cast<uint16_t>(indices[i]);
            std::memcpy(out + i * 2, &narrow, 2);
        }
    }
    builder.accessors[size_t(accessor)].count = static_cast<uint32_t>(indices.size());
    return accessor;
}

std::map<std::string, int32_t> ExportVertexData(GlbBuilder& builder, const VertexData& vertices) {
    std::vector<VertexStream> streams = BuildVertexStreams(vertices);
    InterleavedVertices layout = LayoutStreams(streams);

    size_t old = builder.data.size();
    size_t length = size_t(layout.count) * layout.stride;
    builder.data.resize(old + length, 0);
    for (size_t i = 0; i < streams.size(); ++i)
        CopyStream(builder.data.data() + old, layout.count, layout.stride, layout.offsets[i], streams[i]);

    GlbBufferView view;
    view.index = static_cast<int32_t>(builder.bufferViews.size());
    view.buffer = builder.buffer;
    view.byteOffset = static_cast<uint32_t>(old);
    view.byteStride = layout.stride;
    view.byteLength = static_cast<uint32_t>(length);
    view.target = kTargetArrayBuffer;
    builder.bufferViews.push_back(view);

    std::map<std::string, int32_t> attributes;
    for (size_t i = 0; i < streams.size(); ++i) {
        const VertexStream& s = streams[i];
        int32_t index = AddAccessor(builder, view.index, FormatOf(s.kind, s.components));
        GlbAccessor& accessor = builder.accessors[size_t(index)];
        accessor.byteOffset = layout.offsets[i];
        accessor.count = layout.count;
        accessor.normalized = s.normalized && s.kind != kComponentFloat;
        if (s.kind == kComponentFloat && s.components == 3) MinMaxVec3(s, layout.count, accessor);
        attributes[AttributeName(s.semantic)] = index;
    }
    return attributes;
}
