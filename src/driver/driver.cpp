#include "driver/driver.h"

#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <new>
#include <system_error>

#include "driver/export_plan.h"
#include "driver/format_registry.h"
#include "driver/help.h"
#include "driver/manifest.h"
#include "driver/options.h"
#include "driver/output_guard.h"
#include "meshpost/meshpost.h"
#include "scene/console.h"
#include "scene/memory_budget.h"
#include "scene/options.h"

namespace {

// An option error: the report, a blank line, then the options on standard output.
int Fail(const std::string& message) {
    ConsoleError("%s", message.c_str());
    ConsoleErrorText("\n");
    PrintHelp();
    return 1;
}

// One option read into one destination; rows of a kind are read in the order given.
template <typename T>
struct OptionRow {
    T& destination;
    const char* longName;
    const char* shortName;
};

template <typename T, typename Getter>
void GetOptions(const Args& args, Getter get, std::initializer_list<OptionRow<T>> rows) {
    for (const OptionRow<T>& row : rows) get(row.destination, args, row.longName, row.shortName);
}

bool InputReadable(const std::string& fileName) {
    std::ifstream stream(fileName, std::ios::in | std::ios::binary);
    return stream.good();
}

}  // namespace

int RunVurl(const Args& args) {
    if (HasOption(args, "--help", "-h")) {
        std::printf("Pennoki VURL Version %s\n\n", kVurlVersion);
        std::printf("Example usage:\n  vurl -i robot.fbx -m robot.json -a robot_walk.json\n\n");
        PrintHelp();
        return 0;
    }
    if (HasOption(args, "--version", "-v")) {
        std::printf("Fernbright Variable Uniform Rendering Loader (VURL) Version %s\n\n", kVurlVersion);
        return 0;
    }

    ConversionOptions options;
    OutputNames names;
    std::string inputFile;
    bool unwrapUv = false;
    float unwrapUvTexelsPerMeter = 16.0f;
    bool prettyPrint = false;
    std::string meshCompress = "none";
    std::string animationNaming = "combine";

    if (!HasOption(args, "--input", "-i")) return Fail("No input file specified.");
    GetStringOption(inputFile, args, "--input", "-i");
    if (!InputReadable(inputFile)) {
        return Fail("Input file '" + inputFile + "' does not exist.");
    }

    if (HasOption(args, "--output", "-o")) {
        GetStringOption(names.modelFile, args, "--output", "-o");
        names.animationFile = names.modelFile;
    }
    GetOptions<std::string>(args, GetStringOption, {
        {names.modelFile, "--model", "-m"},
        {names.animationFile, "--animation", "-a"},
        {names.materialsFile, "--materials", "-r"},
        {names.metadataFile, "--metadata", "-d"},
        {names.sceneMetadataFile, "--scene-metadata", "-g"},
        {names.manifestFile, "--manifest", "-n"},
    });
    if (names.modelFile.empty() && names.animationFile.empty() && names.materialsFile.empty() &&
        names.metadataFile.empty() && names.sceneMetadataFile.empty())
        return Fail(
            "No output filenames specified. Specify -m (to output a model), -a (to output an animation) or "
            "both.");

    if (HasOption(args, "--curve-tolerance", "-t")) {
        float tolerance = 0.0f;
        GetFloatOption(tolerance, args, "--curve-tolerance", "-t");
        options.positionTolerance = options.rotationTolerance = options.scaleTolerance = tolerance;
    }
    GetStringOption(animationNaming, args, "--animation-naming", "-f");
    GetOptions<bool>(args, GetBoolOption, {
        {prettyPrint, "--pretty-print", "-p"},
        {options.cubicCurves, "--cubic-curves", "-b"},
        {options.convertCameras, "--convert-cameras", "-c"},
        {options.convertLights, "--convert-lights", "-l"},
        {unwrapUv, "--unwrap-uv", "-u"},
    });
    // Only the float reads can throw (unparsable text): their order decides which error ends the run.
    GetOptions<float>(args, GetFloatOption, {
        {options.animationStart, "--animation-start", "-s"},
        {options.animationEnd, "--animation-end", "-e"},
        {options.positionTolerance, "--position-tolerance", "-x"},
        {options.rotationTolerance, "--rotation-tolerance", "-y"},
        {options.scaleTolerance, "--scale-tolerance", "-z"},
        {options.keyframeInterval, "--keyframe-interval", "-k"},
        {unwrapUvTexelsPerMeter, "--unwrap-uv-texels-per-meter", "-q"},
    });

    if (animationNaming.empty()) animationNaming = "combine";
    else if (animationNaming != "combine" && animationNaming != "numbered" && animationNaming != "take")
        return Fail("animation-naming must be one of: combine, numbered, take.");

    GetStringOption(meshCompress, args, "--mesh-compress", "-C");
    if (meshCompress.empty()) meshCompress = "none";
    else if (meshCompress != "none" && meshCompress != "draco")
        return Fail("mesh-compress must be one of: none, draco.");

    DracoOptions& draco = options.draco;
    GetOptions<int32_t>(args, GetIntOption, {
        {draco.encodeSpeed, "--draco-encode-speed", ""},
        {draco.decodeSpeed, "--draco-decode-speed", ""},
        {draco.positionBits, "--draco-position-bits", ""},
        {draco.normalBits, "--draco-normal-bits", ""},
        {draco.colorBits, "--draco-color-bits", ""},
        {draco.texcoordBits, "--draco-texcoord-bits", ""},
        {draco.genericBits, "--draco-generic-bits", ""},
    });

    const FormatRegistry registry = BuildFormatRegistry();

    // From here on, running out of memory in any stage ends the run with one line that names
    // the stage; a writer cut short leaves no half-written file (WriteOutputs sees to that).
    SetRunInput(inputFile);
    try {
        ConsolePrint("Loading scene...\n");
        SetRunStage("loading the scene");
        std::unique_ptr<Scene> scene(LoadScene(registry, inputFile, options));
        if (!scene) {
            ConsolePrint("Failed to load scene.\n");
            return 1;
        }

        ConsolePrint("Processing scene...\n");
        if (unwrapUv) {
            ConsolePrint("Unwrapping UVs...\n");
            SetRunStage("unwrapping UVs");
            UnwrapScene(*scene, unwrapUvTexelsPerMeter);
        }
        if (meshCompress == "draco") {
            ConsolePrint("Compressing to draco...\n");
            SetRunStage("compressing to draco");
            CompressScene(*scene, options.draco);
        }

        ConsolePrint("Exporting...\n");
        SetRunStage("exporting");
        std::vector<WrittenFile> writtenFiles = WriteOutputs(registry, *scene, names, animationNaming, prettyPrint);
        if (!names.manifestFile.empty()) {
            ConsolePrint("Writing %s...\n", names.manifestFile.c_str());
            SetRunStage("writing " + names.manifestFile);
            GuardOutput(names.manifestFile, [&] { WriteManifest(writtenFiles, names.manifestFile); });
        }
        ConsolePrint("Export Complete!\n");
        return 0;
    } catch (const std::bad_alloc&) {
        EndRunOutOfMemory();
    } catch (const std::system_error& error) {
        // A thread (xatlas starts some) that cannot get memory for its stack.
        if (error.code() != std::errc::resource_unavailable_try_again && error.code() != std::errc::not_enough_memory)
            throw;
        EndRunOutOfMemory();
    }
}
