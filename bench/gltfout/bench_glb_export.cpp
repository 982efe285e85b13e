// Converts a large skinned GLB with `vurl -i in.glb -o out.glb` and, in the same run,
// with `gltfpack -i in.glb -o out.glb -noq`, and reports wall time and peak memory of
// each process; then times the GLB writer alone on the loaded scene. Without an argument
// the input is generated in the temp folder and removed afterwards.
//   bench_glb_export [in.glb]
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "gltf/glb_animation_export.h"
#include "gltf/glb_buffer_estimate.h"
#include "gltf/glb_json_write.h"
#include "gltf/glb_mesh_export.h"
#include "gltf/glb_node_export.h"
#include "gltf/gltf_loader.h"

namespace fs = std::filesystem;

namespace {
double Seconds(std::chrono::steady_clock::time_point from) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - from).count();
}

struct RunResult {
    bool ok = false;
    double seconds = 0;
    double peakMegabytes = 0;
};

// Runs a program with its output discarded; wait4 gives the child's own peak memory.
RunResult Run(const std::vector<std::string>& args) {
    RunResult r;
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    std::fflush(stdout);  // the child must not inherit buffered text
    auto start = std::chrono::steady_clock::now();
    pid_t pid = fork();
    if (pid < 0) return r;
    if (pid == 0) {
        if (!freopen("/dev/null", "w", stdout)) _exit(127);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid) return r;
    r.seconds = Seconds(start);
    r.peakMegabytes = double(usage.ru_maxrss) / 1024.0;
    r.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return r;
}

double FileMegabytes(const std::string& path) {
    std::error_code ec;
    auto size = fs::file_size(path, ec);
    return ec ? 0.0 : double(size) / (1024.0 * 1024.0);
}
}  // namespace

int main(int argc, char** argv) {
    fs::path dir = fs::temp_directory_path() / "vurl_bench_glb_export";
    fs::create_directories(dir);
    std::string input;
    bool generated = false;
    if (argc > 1) {
        input = argv[1];
    } else {
#ifdef VURL_BIG_GLB_GENERATOR
        input = (dir / "big.glb").string();
        auto start = std::chrono::steady_clock::now();
        if (std::system((std::string(VURL_BIG_GLB_GENERATOR) + " '" + input + "'").c_str()) != 0) {
            std::fprintf(stderr, "could not generate %s\n", input.c_str());
            return 1;
        }
        generated = true;
        std::printf("generated %s in %.2f s\n", input.c_str(), Seconds(start));
#else
        std::fprintf(stderr, "usage: %s in.glb (no generator for a large GLB was built)\n", argv[0]);
        return 1;
#endif
    }
    const double inputMegabytes = FileMegabytes(input);
    std::printf("input: %.1f MB\n", inputMegabytes);

    const std::string ours = (dir / "vurl_out.glb").string();
    RunResult vurl = Run({VURL_EXECUTABLE, "-i", input, "-o", ours});
    if (!vurl.ok) {
        std::fprintf(stderr, "vurl failed on %s\n", input.c_str());
        return 1;
    }
    std::printf("vurl -o:      wall %.2f s, peak %.1f MB (%.2f x input), output %.1f MB\n", vurl.seconds,
                vurl.peakMegabytes, vurl.peakMegabytes / inputMegabytes, FileMegabytes(ours));

    const std::string theirs = (dir / "gltfpack_out.glb").string();
    RunResult pack = Run({"gltfpack", "-i", input, "-o", theirs, "-noq"});
    if (pack.ok) {
        std::printf("gltfpack -noq: wall %.2f s, peak %.1f MB (%.2f x input), output %.1f MB\n", pack.seconds,
                    pack.peakMegabytes, pack.peakMegabytes / inputMegabytes, FileMegabytes(theirs));
        std::printf("vurl / gltfpack wall time: %.2f\n", vurl.seconds / pack.seconds);
    } else {
        std::printf("gltfpack: not run (not installed or failed)\n");
    }

    // The writer alone, on a scene loaded in this process.
    std::unique_ptr<Scene> scene(LoadGltf(input, ConversionOptions()));
    if (!scene) return 1;
    ExportOptions options;
    options.exportModel = true;
    for (const Animation* a : scene->animations) options.animations.insert(a->name);
    const std::string written = (dir / "writer_out.glb").string();
    auto start = std::chrono::steady_clock::now();
    GlbBuilder builder;
    builder.data.reserve(EstimateGlbBufferBytes(*scene, options));
    std::vector<GlbNode> nodes = ExportNodes(scene->root);
    std::vector<GlbMesh> meshes;
    std::vector<GlbSkin> skins;
    std::vector<GlbAnimation> animations;
    ExportMeshes(nodes, builder, meshes, skins);
    ExportAnimations(options.animations, builder, animations, nodes, *scene);
    const double lowering = Seconds(start);
    auto step = std::chrono::steady_clock::now();
    WriteGltfJson(written, options, builder, nodes, meshes, skins, animations);
    const double writing = Seconds(step);
    std::printf("GLB writer alone: %.2f s (export records and buffer %.2f s, JSON and file %.2f s) for %.1f MB\n",
                lowering + writing, lowering, writing, FileMegabytes(written));

    for (const std::string& f : {ours, theirs, written}) fs::remove(f);
    if (generated) fs::remove(input);
    fs::remove_all(input + ".fbm");
    return 0;
}
