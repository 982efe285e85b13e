// libFuzzer entry for the GLB container and the document reader: any bytes must read or be
// refused cleanly, and a document that reads is imported as far as it goes.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <new>
#include <string>

#include "gltf/glb_container_read.h"
#include "gltf/gltf_decode_cost.h"
#include "gltf/gltf_document_read.h"
#include "gltf/gltf_import.h"

namespace {

// Far below the fuzzer's memory limit: an input that would decode to more is refused before
// its import, as the loader refuses what does not fit.
constexpr uint64_t kDecodeLimit = 256ull << 20;

// The container is read from a file: every input goes through one file of this process.
const std::string& InputPath() {
    static const std::string path = "/tmp/vurl_glb_fuzz_" + std::to_string(getpid()) + ".glb";
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::FILE* file = std::fopen(InputPath().c_str(), "wb");
    if (!file) return 0;
    const bool written = std::fwrite(data, 1, size, file) == size;
    std::fclose(file);
    if (!written) return 0;

    GltfContext context;
    context.path = InputPath();
    if (!ReadGlbContainer(context.path, context)) return 0;
    ReadGltfDocument(context.document, context.json);
    try {
        if (EstimateDecodedBytes(context) > kDecodeLimit) return 0;
        delete ImportGltfScene(context);
    } catch (const GltfError&) {
        // a refusal: the expected end for most inputs
    }
    return 0;
}
