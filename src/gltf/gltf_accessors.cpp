#include "gltf/gltf_accessors.h"

#include <cstring>
#include <type_traits>

#include "gltf/gltf_convert.h"

namespace {

template <typename T, typename S>
std::vector<T> ReadTyped(const GltfAccessor& accessor, GltfContext& context);

template <typename T>
std::vector<T> Dispatch(const GltfAccessor& accessor, GltfContext& context) {
    switch (accessor.componentType) {
        case ComponentType::BYTE: return ReadTyped<T, int8_t>(accessor, context);
        case ComponentType::UNSIGNED_BYTE: return ReadTyped<T, uint8_t>(accessor, context);
        case ComponentType::SHORT: return ReadTyped<T, int16_t>(accessor, context);
        case ComponentType::UNSIGNED_SHORT: return ReadTyped<T, uint16_t>(accessor, context);
        case ComponentType::INT: return ReadTyped<T, int32_t>(accessor, context);
        case ComponentType::UNSIGNED_INT: return ReadTyped<T, uint32_t>(accessor, context);
        case ComponentType::FLOAT: return ReadTyped<T, float>(accessor, context);
    }
    return {};
}

template <typename T, typename S>
std::vector<T> ReadDense(const GltfAccessor& accessor, GltfContext& context, bool normalized) {
    std::vector<T> out;
    if (accessor.bufferView < 0) return out;
    const ByteRange bytes = ViewBytes(context, accessor.bufferView);
    const GltfBufferView& view = context.document.bufferViews[size_t(accessor.bufferView)];
    const uint32_t comps = ElementComponents(accessor.type);
    const uint64_t elementSize = uint64_t(comps) * sizeof(S);
    const uint64_t stride = view.byteStride ? view.byteStride : elementSize;
    const uint64_t count = accessor.count;
    if (count == 0 || comps == 0) return out;
    const uint64_t last = uint64_t(accessor.byteOffset) + (count - 1) * stride + elementSize;
    if (last > bytes.size)
        throw GltfError("accessor over buffer view " + std::to_string(accessor.bufferView) + " reads " +
                        std::to_string(last) + " bytes where its buffer holds " + std::to_string(bytes.size));
    out.resize(size_t(count * comps));
    const uint8_t* element = bytes.data + accessor.byteOffset;
    T* dst = out.data();
    if constexpr (std::is_same_v<T, S>) {
        // Same type on both sides is a plain copy: one block when tightly packed.
        if (stride == elementSize) {
            std::memcpy(dst, element, size_t(count * elementSize));
            return out;
        }
        for (uint64_t i = 0; i < count; ++i, element += stride, dst += comps) std::memcpy(dst, element, size_t(elementSize));
        return out;
    }
    for (uint64_t i = 0; i < count; ++i, element += stride) {
        for (uint32_t c = 0; c < comps; ++c) {
            S value;
            std::memcpy(&value, element + size_t(c) * sizeof(S), sizeof(S));
            *dst++ = gltfconvert::Convert<T, S>(value, normalized);
        }
    }
    return out;
}

template <typename T, typename S>
std::vector<T> ReadTyped(const GltfAccessor& accessor, GltfContext& context) {
    if (accessor.bufferView < 0) return {};  // sparse data needs a real base view
    if (!accessor.sparse) return ReadDense<T, S>(accessor, context, accessor.normalized);

    const GltfSparse& sparse = *accessor.sparse;
    GltfAccessor indexAccessor;
    indexAccessor.bufferView = sparse.indices.bufferView;
    indexAccessor.byteOffset = sparse.indices.byteOffset;
    indexAccessor.componentType = sparse.indices.componentType;
    indexAccessor.count = uint32_t(sparse.count);
    indexAccessor.type = ElementType::SCALAR;
    const std::vector<uint32_t> indices = ReadAccessorAsIndex(indexAccessor, context);

    GltfAccessor valueAccessor;
    valueAccessor.bufferView = sparse.values.bufferView;
    valueAccessor.byteOffset = sparse.values.byteOffset;
    valueAccessor.componentType = accessor.componentType;
    valueAccessor.count = uint32_t(sparse.count);
    valueAccessor.type = accessor.type;
    const std::vector<T> values = ReadDense<T, S>(valueAccessor, context, false);

    // Sparse data drops normalisation in base and values alike.
    std::vector<T> result = ReadDense<T, S>(accessor, context, false);

    const size_t comps = ElementComponents(accessor.type);
    for (int32_t i = 0; i < sparse.count; ++i) {
        if (size_t(i) >= indices.size()) throw GltfError("sparse accessor has fewer indices than its count");
        const uint64_t index = indices[size_t(i)];
        for (size_t c = 0; c < comps; ++c) {
            // The value position comps + i + c is the established reading of sparse lists;
            // for scalars it skips the first value and runs out at the last entry.
            const size_t position = comps + size_t(i) + c;
            if (position >= values.size())
                throw GltfError("sparse accessor value position " + std::to_string(position) +
                                " is past the end of its " + std::to_string(values.size()) + " values");
            const uint64_t target = index * comps + c;
            if (target >= result.size())
                throw GltfError("sparse accessor index " + std::to_string(index) + " is past the end of the accessor");
            result[size_t(target)] = values[position];
        }
    }
    return result;
}

}  // namespace

std::vector<float> ReadAccessorAsFloat(const GltfAccessor& accessor, GltfContext& context) {
    return Dispatch<float>(accessor, context);
}

std::vector<uint32_t> ReadAccessorAsIndex(const GltfAccessor& accessor, GltfContext& context) {
    return Dispatch<uint32_t>(accessor, context);
}

std::vector<uint16_t> ReadAccessorAsJoint(const GltfAccessor& accessor, GltfContext& context) {
    return Dispatch<uint16_t>(accessor, context);
}

const GltfAccessor& AccessorAt(const GltfContext& context, int32_t index) {
    if (index < 0 || size_t(index) >= context.document.accessors.size())
        throw GltfError("accessor " + std::to_string(index) + " does not exist");
    return context.document.accessors[size_t(index)];
}

std::vector<float> ReadAttribute(const std::string& name, const GltfAttributeMap& attributes, GltfContext& context) {
    auto it = attributes.find(name);
    if (it == attributes.end()) return {};
    GltfAccessor copy = AccessorAt(context, it->second);
    if (name == "COLOR_0") copy.normalized = true;
    return ReadAccessorAsFloat(copy, context);
}
