// Times the glTF load (container and parse, document, import) of a large skinned GLB and
// reports peak memory. Without an argument the file is generated in the temp folder and
// removed afterwards.
//   bench_gltf_load [file.glb]
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "gltf/glb_container_read.h"
#include "gltf/gltf_document_read.h"
#include "gltf/gltf_import.h"

namespace {

double Seconds(std::chrono::steady_clock::time_point from) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - from).count();
}

long PeakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

}  // namespace

int main(int argc, char** argv) {
    std::string path;
    bool generated = false;
    if (argc > 1) {
        path = argv[1];
    } else {
        path = (std::filesystem::temp_directory_path() / "vurl_bench_gltf_load.glb").string();
        const auto start = std::chrono::steady_clock::now();
        const std::string command = std::string(VURL_BIG_GLB_GENERATOR) + " '" + path + "'";
        if (std::system(command.c_str()) != 0) {
            std::fprintf(stderr, "could not generate %s\n", path.c_str());
            return 1;
        }
        generated = true;
        std::printf("generated %s in %.2f s\n", path.c_str(), Seconds(start));
    }
    const double fileMegabytes = double(std::filesystem::file_size(path)) / (1024.0 * 1024.0);
    const long baseKilobytes = PeakKilobytes();

    const auto start = std::chrono::steady_clock::now();
    GltfContext context;
    context.path = path;
    if (!ReadGlbContainer(path, context)) return 1;
    const double container = Seconds(start);
    auto step = std::chrono::steady_clock::now();
    ReadGltfDocument(context.document, context.json);
    const double document = Seconds(step);
    step = std::chrono::steady_clock::now();
    Scene* scene = ImportGltfScene(context);
    const double import = Seconds(step);
    const double total = Seconds(start);
    const long peakKilobytes = PeakKilobytes();

    size_t vertices = 0;
    for (Geometry* geometry : scene->geometries.items)
        for (MeshInstance* instance : geometry->meshInstances)
            if (instance->vertices) vertices += instance->vertices->positions.size() / 3;
    std::printf("file: %.1f MB, %zu meshes, %zu vertices\n", fileMegabytes, scene->geometries.Size(), vertices);
    std::printf("container + JSON parse: %.3f s\ndocument: %.3f s\nimport (accessors, scene): %.3f s\n", container,
                document, import);
    std::printf("load total: %.3f s\n", total);
    std::printf("peak memory: %.1f MB (%.2f x file size; %.1f MB before the load)\n", double(peakKilobytes) / 1024.0,
                double(peakKilobytes) / 1024.0 / fileMegabytes, double(baseKilobytes) / 1024.0);
    delete scene;
    if (generated) std::filesystem::remove(path);
    return 0;
}
