// The whole conversion of a big writer-made avatar animation source, as the tool runs it:
//   vurl -i avatar.fbx -o out.glb -m model.json -a anim.json -d meta.json
// The avatar has 150 joints with their nine local curves and 69 blend-shape channels, in
// each of [takes] takes of 300 frames baked at every frame. Reports the tool's processor
// time, wall time and peak memory (median of three runs, each a process of its own), then
// where the time goes: the same steps run in this process, one clock each.
//   bench_avatar_conversion [takes=10]
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "avatar/avatar_slots.h"
#include "avatar/rrs_nodes.h"
#include "big_avatar.h"
#include "fbx/fbx_anim.h"
#include "fbx/fbx_axis_system.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_geometry_converter.h"
#include "fbx/fbx_node.h"
#include "fbx/fbx_system_unit.h"
#include "fbximport/animation_extraction.h"
#include "fbximport/fbx_context.h"
#include "fbximport/fbx_node_walk.h"
#include "fbximport/fbx_scene_conversion.h"
#include "gltf/glb_writer.h"
#include "runtimejson/json_scene_writer.h"

#ifndef VURL_EXECUTABLE
#error "VURL_EXECUTABLE must name the built tool"
#endif

namespace {

double CpuSeconds() { return double(std::clock()) / CLOCKS_PER_SEC; }

struct ChildRun {
    double wall = 0, cpu = 0;
    long peakKiB = 0;
    int status = -1;
};

ChildRun RunTool(const std::string& dir) {
    ChildRun run;
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        if (chdir(dir.c_str()) != 0) _exit(127);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, 1);
        dup2(null, 2);
        execl(VURL_EXECUTABLE, VURL_EXECUTABLE, "-i", "avatar.fbx", "-o", "out.glb", "-m", "model.json", "-a", "anim.json",
              "-d", "meta.json", static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    run.wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    run.cpu = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + 1e-6 * double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
    run.peakKiB = usage.ru_maxrss;
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

// Runs a step with standard output silenced (the steps print their progress lines).
double Timed(const std::function<void()>& step) {
    std::fflush(stdout);
    const int saved = dup(1);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, 1);
    const double start = CpuSeconds();
    step();
    const double seconds = CpuSeconds() - start;
    std::fflush(stdout);
    dup2(saved, 1);
    close(saved);
    close(null);
    return seconds;
}

}  // namespace

int main(int argc, char** argv) {
    fbxwriter::BigAvatarSize size;
    if (argc > 1) size.takes = std::max(1, std::atoi(argv[1]));
    const std::string dir = (std::filesystem::temp_directory_path() / "vurl_bench_avatar").string();
    std::filesystem::create_directories(dir);
    const std::string input = dir + "/avatar.fbx";

    // Written by a process of its own: the tool's runs are forked from this one, and a
    // fork's peak memory starts from what its parent holds.
    std::fflush(stdout);
    const pid_t writer = fork();
    if (writer == 0) {
        fbxwriter::BigAvatarCounts counts;
        const std::vector<uint8_t> bytes = fbxwriter::MakeBigAvatar(size, &counts).Bytes();
        if (!fbxwriter::SaveFile(input, bytes)) _exit(1);
        std::printf("avatar: %.1f MB, %d joints, %d blend-shape channels, %d takes x %d frames, %lld curves, %lld keys\n",
                    double(bytes.size()) / 1e6, size.joints, counts.blendShapeChannels, size.takes, size.frames,
                    static_cast<long long>(counts.curves), static_cast<long long>(counts.keys));
        std::fflush(stdout);
        _exit(0);
    }
    int written = 0;
    waitpid(writer, &written, 0);
    if (!WIFEXITED(written) || WEXITSTATUS(written) != 0) return 1;

    std::vector<ChildRun> runs;
    for (int k = 0; k < 3; ++k) runs.push_back(RunTool(dir));
    std::sort(runs.begin(), runs.end(), [](const ChildRun& a, const ChildRun& b) { return a.cpu < b.cpu; });
    const ChildRun& median = runs[1];
    if (median.status != 0) {
        std::printf("the tool failed (status %d)\n", median.status);
        return 1;
    }
    std::printf("whole run (median of 3): processor %.2f s, wall %.2f s, peak %.1f MiB\n", median.cpu, median.wall,
                double(median.peakKiB) / 1024.0);

    // The loader's steps one by one, as FbxLoadScene and FbxSceneConversion take them.
    ConversionOptions options;
    FbxContext context{};
    Scene* scene = nullptr;
    float unitScale = 1.0f;
    std::vector<std::pair<const char*, double>> steps;
    steps.emplace_back("read and inflate", Timed([&] {
        context = InitializeFbxContext();
        ImportFbxFile(context, input);
    }));
    FbxScene* document = context.scene;
    steps.emplace_back("axes, units, polygons", Timed([&] {
        const FbxAxisSystem axes(FbxAxisSystem::eYAxis, FbxAxisSystem::eParityOdd, FbxAxisSystem::eRightHanded);
        if (document->GetGlobalSettings().GetAxisSystem() != axes) axes.ConvertScene(document);
        unitScale = float(document->GetGlobalSettings().GetSystemUnit().GetScaleFactor());
        if (unitScale != 100.0f) FbxSystemUnit::m.ConvertScene(document);
        FbxGeometryConverter converter(context.manager);
        converter.RemoveBadPolygonsFromMeshes(document, nullptr);
        converter.Triangulate(document, true, false);
    }));
    FbxNode* fbxRoot = document->GetRootNode();
    RrsNodeSets rrs;
    steps.emplace_back("names, pivot reset", Timed([&] {
        rrs = RequireRrsNodes();
        MakeNodeNamesUnique(fbxRoot);
        if (!document->GetCurrentAnimationStack()) document->SetCurrentAnimationStack(document->GetSrcObject<FbxAnimStack>(0));
        fbxRoot->ResetPivotSetAndConvertAnimation(30.0, false, true, false);
    }));
    SscNodes sscNodes;
    NodesByName nodesByName;
    GroupNodes groupNodes;
    SscLinks sscLinks;
    steps.emplace_back("node walk, slots", Timed([&] {
        scene = new Scene;
        auto* root = new GraphNode;
        root->name = fbxRoot->GetName();
        root->id = fbxRoot->GetUniqueID();
        NodeConversion conversion{*scene, document, options, rrs, sscNodes, nodesByName};
        conversion.visited.insert(fbxRoot);
        for (FbxNode* child : ChildNodes(*fbxRoot)) ConvertNode(child, root, conversion);
        scene->root = root;
        sscLinks = LinkSscNodes(sscNodes);
        groupNodes = BuildAvatarSlots(*scene, [document] { return FbxNode::Create(document, "empty")->GetUniqueID(); },
                                      nodesByName);
    }));
    steps.emplace_back("animation extraction, morph transfer",
                       Timed([&] { ExtractAnimations(document, *scene, options, sscLinks, groupNodes); }));
    steps.emplace_back("unit scale, document teardown", Timed([&] {
        ApplyUnitScale(*scene, unitScale);
        DestroyFbxContext(context);
    }));
    ExportOptions model;
    model.exportModel = true;
    ExportOptions animation;
    for (const Animation* take : scene->animations) animation.animations.insert(take->name);
    ExportOptions metadata;
    metadata.exportMetadata = true;
    steps.emplace_back("writing out.glb", Timed([&] { WriteGlb(dir + "/out.glb", *scene, model); }));
    steps.emplace_back("writing model.json", Timed([&] { WriteJsonScene(dir + "/model.json", *scene, model); }));
    steps.emplace_back("writing anim.json", Timed([&] { WriteJsonScene(dir + "/anim.json", *scene, animation); }));
    steps.emplace_back("writing meta.json", Timed([&] { WriteJsonScene(dir + "/meta.json", *scene, metadata); }));
    steps.emplace_back("scene teardown", Timed([&] { delete scene; }));

    double total = 0;
    for (const auto& [name, seconds] : steps) total += seconds;
    for (const auto& [name, seconds] : steps)
        std::printf("  %-38s %6.3f s  %4.1f %%\n", name, seconds, total > 0 ? 100.0 * seconds / total : 0.0);
    std::printf("  %-38s %6.3f s\n", "in-process total", total);
    std::filesystem::remove_all(dir);
    return 0;
}
