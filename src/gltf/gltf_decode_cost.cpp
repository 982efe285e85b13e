#include "gltf/gltf_decode_cost.h"

#include <vector>

namespace {

class DecodeCost {
public:
    explicit DecodeCost(GltfContext& context) : context_(context) {}

    // Bytes of one read of accessor `index` into values of `targetSize` bytes.
    uint64_t Read(int32_t index, uint64_t targetSize) {
        const auto& accessors = context_.document.accessors;
        if (index < 0 || size_t(index) >= accessors.size()) return 0;
        return Read(accessors[size_t(index)], targetSize);
    }

    uint64_t Read(const GltfAccessor& accessor, uint64_t targetSize) {
        if (accessor.bufferView < 0) return 0;
        const uint64_t comps = ElementComponents(accessor.type);
        const uint64_t base = Dense(accessor.bufferView, accessor.byteOffset, accessor.componentType, accessor.count,
                                    comps, targetSize);
        if (!accessor.sparse) return base;
        const GltfSparse& sparse = *accessor.sparse;
        const uint64_t count = uint32_t(sparse.count);
        return base +
               Dense(sparse.indices.bufferView, sparse.indices.byteOffset, sparse.indices.componentType, count, 1, 4) +
               Dense(sparse.values.bufferView, sparse.values.byteOffset, accessor.componentType, count, comps,
                     targetSize);
    }

    uint64_t Attribute(const GltfAttributeMap& attributes, const char* name, uint64_t targetSize) {
        auto it = attributes.find(name);
        return it == attributes.end() ? 0 : Read(it->second, targetSize);
    }

private:
    // The same bound the accessor reader applies: all `count` elements must lie between the
    // view's start and the end of its buffer.
    uint64_t Dense(int32_t viewIndex, uint32_t byteOffset, ComponentType componentType, uint64_t count,
                   uint64_t comps, uint64_t targetSize) {
        const auto& views = context_.document.bufferViews;
        if (viewIndex < 0 || size_t(viewIndex) >= views.size() || count == 0 || comps == 0) return 0;
        const GltfBufferView& view = views[size_t(viewIndex)];
        ByteRange buffer;
        try {
            buffer = BufferBytes(context_, view.buffer);
        } catch (const GltfError&) {
            return 0;
        }
        if (view.byteOffset > buffer.size) return 0;
        const uint64_t span = buffer.size - view.byteOffset;
        const uint64_t elementSize = comps * ComponentSize(componentType);
        const uint64_t stride = view.byteStride ? view.byteStride : elementSize;
        if (uint64_t(byteOffset) + (count - 1) * stride + elementSize > span) return 0;
        return count * comps * targetSize;
    }

    GltfContext& context_;
};

bool IsDecodedByDraco(const GltfDocument& document, const GltfPrimitive& primitive) {
    if (!primitive.extensionsPresent || !primitive.dracoPresent || primitive.draco.bufferView < 0) return false;
    const size_t view = size_t(primitive.draco.bufferView);
    return view < document.bufferViews.size() && document.bufferViews[view].buffer == 0;
}

}  // namespace

uint64_t EstimateDecodedBytes(GltfContext& context) {
    const GltfDocument& document = context.document;
    DecodeCost cost(context);
    uint64_t bytes = 0;

    for (const GltfSkin& skin : document.skins) bytes += cost.Read(skin.inverseBindMatrices, 4);

    std::vector<bool> meshRead(document.meshes.size(), false);
    for (const GltfNode& node : document.nodes) {
        if (node.mesh < 0 || size_t(node.mesh) >= meshRead.size() || meshRead[size_t(node.mesh)]) continue;
        meshRead[size_t(node.mesh)] = true;
        for (const GltfPrimitive& primitive : document.meshes[size_t(node.mesh)].primitives) {
            if (!IsDecodedByDraco(document, primitive) && !primitive.attributes.empty()) {
                for (const char* name : {"POSITION", "NORMAL", "COLOR_0", "WEIGHTS_0", "TEXCOORD_0", "TEXCOORD_1",
                                         "TEXCOORD_2", "TEXCOORD_3", "TEXCOORD_4", "TEXCOORD_5", "TEXCOORD_6",
                                         "TEXCOORD_7"})
                    bytes += cost.Attribute(primitive.attributes, name, 4);
                bytes += cost.Attribute(primitive.attributes, "JOINTS_0", 2);
                bytes += cost.Read(primitive.indices, 4);
            }
            for (const GltfAttributeMap& target : primitive.targets) {
                // Read as floats, then copied into position and normal deltas of the same size.
                const uint64_t positions = cost.Attribute(target, "POSITION", 4);
                bytes += positions + cost.Attribute(target, "NORMAL", 4) + 2 * positions;
            }
        }
    }

    const size_t nodeCount = document.nodes.size();
    for (const GltfAnimation& animation : document.animations) {
        for (const GltfChannel& channel : animation.channels) {
            if (channel.target.node < 0 || size_t(channel.target.node) >= nodeCount) continue;
            if (channel.sampler < 0 || size_t(channel.sampler) >= animation.samplers.size()) continue;
            const std::string& path = channel.target.path;
            if (path != "translation" && path != "rotation" && path != "scale" && path != "weights") continue;
            const GltfAnimationSampler& sampler = animation.samplers[size_t(channel.sampler)];
            bytes += cost.Read(sampler.input, 4) + cost.Read(sampler.output, 4);
        }
    }
    return bytes;
}
