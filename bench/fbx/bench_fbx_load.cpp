// Load of FBX files through the document layer (open + import, no conversion), against
// what the same bytes cost at the least: reading them from the page cache, and reading
// them plus inflating every array once. Each measurement runs in a child process, so
// that its peak memory is its own. When `assimp` is on the PATH, `assimp info FILE`
// is timed as a peer on the same files.
//   bench_fbx_load [FILE...]
// Without files: the five largest files of $VURL_CORPUS/fbx/binary (default
// ../shared/corpus) and a generated 100 MB file, made once by vurl_make_big_fbx beside
// this program into $TMPDIR.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "fbx/fbx_document.h"
#include "fbx/fbx_field_stream.h"
#include "fbx/fbx_importer.h"
#include "fbx/fbx_manager.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Every byte copied out of the page cache once (the document layer maps big files instead).
void ReadFile(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) std::exit(2);
    std::vector<char> bytes(size_t(1) << 20);
    while (std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size()) {
    }
    std::fclose(file);
}

// Bytes of the largest array met by ReadAndInflate in this process.
double largestArrayBytes = 0;

// Every array of every record, inflated once; the stream reads the file once.
void ReadAndInflate(const std::string& path) {
    FbxStatus status;
    auto stream = FbxOpenFieldStream(path, status, true, nullptr);
    if (!stream) std::exit(2);
    struct Level {
        int field = 0;
        int instance = 0;
    };
    std::vector<Level> levels(1);
    size_t count = 0;
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.field >= stream->FieldNameCount()) {
            levels.pop_back();
            if (!levels.empty()) {
                stream->EndBlock();
                ++levels.back().instance;
            }
            continue;
        }
        const std::string name = stream->FieldName(level.field);
        if (level.instance >= stream->FieldCount(name)) {
            ++level.field;
            level.instance = 0;
            continue;
        }
        stream->BeginField(name, level.instance);
        while (stream->ValuesLeft() > 0) {
            size_t elementSize = 0;
            switch (stream->ValueCode()) {
            case 'b': stream->ReadArrayOfBool(count); elementSize = 1; break;
            case 'c': stream->ReadArrayOfByte(count); elementSize = 1; break;
            case 'h': stream->ReadArrayOfShort(count); elementSize = 2; break;
            case 'i': stream->ReadArrayOfInt(count); elementSize = 4; break;
            case 'l': stream->ReadArrayOfLong(count); elementSize = 8; break;
            case 'f': stream->ReadArrayOfFloat(count); elementSize = 4; break;
            case 'd': stream->ReadArrayOfDouble(count); elementSize = 8; break;
            default: stream->ReadInt(); break;
            }
            largestArrayBytes = std::max(largestArrayBytes, static_cast<double>(count * elementSize));
        }
        if (stream->HasBlock() && stream->BeginBlock()) {
            levels.push_back(Level());
            continue;
        }
        ++level.instance;
    }
}

bool Load(const std::string& path) {
    FbxManager* manager = FbxManager::Create();
    FbxIOSettings* settings = FbxIOSettings::Create(manager, "IOSRoot");
    settings->SetBoolProp("Import|AdvOptGrp|FileFormat|Fbx|ExtractEmbeddedData", false);
    FbxScene* scene = FbxScene::Create(manager, "My Scene");
    FbxImporter* importer = FbxImporter::Create(manager, "");
    bool ok = importer->Initialize(path.c_str(), -1, settings) && importer->Import(scene);
    manager->Destroy();
    return ok;
}

struct Run {
    double seconds = -1;  // best of the repeats; -1 when it failed
    double largestArrayMiB = 0;  // as the child saw it
    double cpuSeconds = -1;  // processor time (user + system) of the best repeat by that measure
    double peakMiB = 0;
};

double CpuSeconds(const rusage& usage) {
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + 1e-6 * double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

void Keep(Run& run, double seconds, const rusage& usage) {
    const double cpu = CpuSeconds(usage);
    run.seconds = run.seconds < 0 ? seconds : std::min(run.seconds, seconds);
    run.cpuSeconds = run.cpuSeconds < 0 ? cpu : std::min(run.cpuSeconds, cpu);
    run.peakMiB = std::max(run.peakMiB, static_cast<double>(usage.ru_maxrss) / 1024.0);
}

// Runs f in a child process `repeats` times; the best time and the largest peak.
template <class F> Run InChild(F f, int repeats) {
    Run run;
    for (int r = 0; r < repeats; ++r) {
        int pipeFds[2];
        if (pipe(pipeFds) != 0) return run;
        pid_t pid = fork();
        if (pid == 0) {
            close(pipeFds[0]);
            double start = Now();
            bool ok = f();
            const double report[2] = {ok ? Now() - start : -1, largestArrayBytes / (1024.0 * 1024.0)};
            if (write(pipeFds[1], report, sizeof report) != sizeof report) _exit(3);
            _exit(0);
        }
        close(pipeFds[1]);
        double report[2] = {-1, 0};
        if (read(pipeFds[0], report, sizeof report) != sizeof report) report[0] = -1;
        close(pipeFds[0]);
        const double seconds = report[0];
        run.largestArrayMiB = report[1];
        int status = 0;
        rusage usage{};
        wait4(pid, &status, 0, &usage);
        if (seconds < 0) return Run();
        Keep(run, seconds, usage);
    }
    return run;
}

// `assimp info FILE`, wall time and peak memory of the process.
Run Assimp(const std::string& assimp, const std::string& path, int repeats) {
    Run run;
    for (int r = 0; r < repeats; ++r) {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        std::string info = "info";
        std::vector<char*> args{const_cast<char*>(assimp.c_str()), info.data(), const_cast<char*>(path.c_str()), nullptr};
        pid_t pid = 0;
        double start = Now();
        int failed = posix_spawn(&pid, assimp.c_str(), &actions, nullptr, args.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (failed) return Run();
        int status = 0;
        rusage usage{};
        wait4(pid, &status, 0, &usage);
        double seconds = Now() - start;
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return Run();
        Keep(run, seconds, usage);
    }
    return run;
}

std::string FindOnPath(const char* name) {
    const char* path = std::getenv("PATH");
    if (!path) return {};
    std::string all = path;
    size_t start = 0;
    while (start <= all.size()) {
        size_t cut = all.find(':', start);
        std::string dir = all.substr(start, cut == std::string::npos ? std::string::npos : cut - start);
        fs::path candidate = fs::path(dir) / name;
        if (!dir.empty() && access(candidate.c_str(), X_OK) == 0) return candidate.string();
        if (cut == std::string::npos) break;
        start = cut + 1;
    }
    return {};
}

std::vector<std::string> DefaultFiles(const char* self) {
    std::vector<std::string> files;
    const char* corpusEnv = std::getenv("VURL_CORPUS");
    fs::path corpus = fs::path(corpusEnv ? corpusEnv : "../shared/corpus") / "fbx" / "binary";
    std::error_code error;
    if (fs::is_directory(corpus, error)) {
        std::vector<std::pair<uintmax_t, std::string>> sized;
        for (const auto& entry : fs::directory_iterator(corpus, error))
            if (entry.is_regular_file()) sized.emplace_back(entry.file_size(), entry.path().string());
        std::sort(sized.rbegin(), sized.rend());
        for (size_t k = 0; k < sized.size() && k < 5; ++k) files.push_back(sized[k].second);
    } else {
        std::printf("corpus %s not found: only the generated file\n", corpus.c_str());
    }
    fs::path big = fs::temp_directory_path() / "vurl_bench_big_100mb.fbx";
    if (!fs::exists(big, error)) {
        fs::path maker = fs::canonical(fs::path(self), error).parent_path() / "vurl_make_big_fbx";
        std::string command = maker.string() + " " + big.string() + " 100 >/dev/null";
        if (std::system(command.c_str()) != 0) {
            std::printf("cannot make %s with %s\n", big.c_str(), maker.c_str());
            return files;
        }
    }
    files.push_back(big.string());
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> files(argv + 1, argv + argc);
    if (files.empty()) files = DefaultFiles(argv[0]);
    std::string assimp = FindOnPath("assimp");
    // Wall times, then processor times, which a machine shared with other work disturbs less.
    // The peak memory a load may reach: twice the file and its largest inflated array.
    std::printf("%-44s %8s %8s %9s %8s %9s %9s %9s %8s %9s %8s | %8s %8s %8s %8s %8s\n", "file", "MB", "read s", "+infl s",
                "load s", "load MiB", "tgt MiB", "load/inf", "assimp s", "asmp MiB", "asmp/ld", "infl cpu", "load cpu", "load/inf", "asmp cpu",
                "asmp/ld");
    for (const std::string& file : files) {
        std::error_code error;
        double mb = static_cast<double>(fs::file_size(file, error)) / 1e6;
        if (error) continue;
        int repeats = mb < 10 ? 5 : 2;
        ReadFile(file);  // into the page cache
        Run read = InChild([&] { ReadFile(file); return true; }, repeats);
        Run inflate = InChild([&] { ReadAndInflate(file); return true; }, repeats);
        Run load = InChild([&] { return Load(file); }, repeats);
        Run peer = assimp.empty() ? Run() : Assimp(assimp, file, repeats);
        std::string name = fs::path(file).filename().string();
        if (name.size() > 44) name = name.substr(0, 41) + "...";
        const double targetMiB = 2 * mb * 1e6 / (1024.0 * 1024.0) + inflate.largestArrayMiB;
        std::printf("%-44s %8.2f %8.4f %9.4f %8.4f %9.1f %9.1f %9.2f", name.c_str(), mb, read.seconds, inflate.seconds,
                    load.seconds, load.peakMiB, targetMiB,
                    load.seconds > 0 && inflate.seconds > 0 ? load.seconds / inflate.seconds : 0.0);
        if (peer.seconds > 0)
            std::printf(" %8.4f %9.1f %8.2f", peer.seconds, peer.peakMiB, load.seconds > 0 ? peer.seconds / load.seconds : 0.0);
        else
            std::printf(" %8s %9s %8s", "-", "-", "-");
        std::printf(" | %8.4f %8.4f %8.2f", inflate.cpuSeconds, load.cpuSeconds,
                    load.cpuSeconds > 0 && inflate.cpuSeconds > 0 ? load.cpuSeconds / inflate.cpuSeconds : 0.0);
        if (peer.seconds > 0)
            std::printf(" %8.4f %8.2f\n", peer.cpuSeconds, load.cpuSeconds > 0 ? peer.cpuSeconds / load.cpuSeconds : 0.0);
        else
            std::printf(" %8s %8s\n", "-", "-");
    }
    return 0;
}
