#include "fbximport/fbx_context.h"

#include <cmath>

#include "fbx/fbx_document.h"
#include "fbx/fbx_importer.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_version.h"
#include "scene/console.h"

namespace {

// Options of the FBX reader that a load turns on; the reader's own defaults stand for
// the other formats.
constexpr const char* kFbxImportOptions[] = {
    "Import|AdvOptGrp|FileFormat|Fbx|Material",  "Import|AdvOptGrp|FileFormat|Fbx|Texture",
    "Import|AdvOptGrp|FileFormat|Fbx|Link",      "Import|AdvOptGrp|FileFormat|Fbx|Shape",
    "Import|AdvOptGrp|FileFormat|Fbx|Gobo",      "Import|AdvOptGrp|FileFormat|Fbx|Animation",
    "Import|AdvOptGrp|FileFormat|Fbx|Global_Settings",
};
constexpr const char* kPasswordOption = "Import|AdvOptGrp|FileFormat|Fbx|Password";
constexpr const char* kPasswordEnableOption = "Import|AdvOptGrp|FileFormat|Fbx|Password_Enable";

// Longest password word taken from the console; the rest of a longer word is left unread.
constexpr int kPasswordLimit = 1023;

// Progress of an import as a whole percentage, rewritten in place on one console line.
bool PrintProgress(void* /*args*/, float percentage, const char* /*status*/) {
    long whole = 0;
    if (std::isfinite(percentage) && percentage > -1e9f && percentage < 1e9f) whole = static_cast<long>(percentage);
    ConsolePrint("%02ld%%\r", whole);
    std::fflush(stdout);
    return true;
}

std::string ReadPassword(std::FILE* input) {
    char word[kPasswordLimit + 1] = {};
    if (!input || std::fscanf(input, "%1023s", word) != 1) return std::string();
    return word;
}

}  // namespace

FbxContext InitializeFbxContext() {
    FbxContext context;
    context.manager = FbxManager::Create();
    if (!context.manager) {
        ConsolePrint("Error: Unable to create FBX Manager!\n");
        EndRun();
    }
    ConsolePrint("FBX document layer version %s\n", FbxGetVersion(true));

    FbxIOSettings* settings = FbxIOSettings::Create(context.manager, "IOSRoot");
    context.manager->SetIOSettings(settings);
    // Every reader is built in: there are no plug-ins to load from the program's folder.

    context.scene = FbxScene::Create(context.manager, "My Scene");
    if (!context.scene) {
        ConsolePrint("Error: Unable to create FBX scene!\n");
        EndRun();
    }
    return context;
}

bool ImportFbxFile(FbxContext& context, const std::string& fileName, std::FILE* passwordInput) {
    int layerMajor = 0, layerMinor = 0, layerRevision = 0;
    FbxGetFileFormatVersion(layerMajor, layerMinor, layerRevision);
    FbxImporter* importer = FbxImporter::Create(context.manager, "");
    FbxIOSettings* settings = context.manager->GetIOSettings();

    const bool initialized = importer->Initialize(fileName.c_str(), -1, settings);
    int fileMajor = 0, fileMinor = 0, fileRevision = 0;
    importer->GetFileVersion(fileMajor, fileMinor, fileRevision);

    if (!initialized) {
        const FbxStatus& status = importer->GetStatus();
        ConsolePrint("Call to FbxImporter::Initialize() failed.\n");
        ConsolePrint("Error returned: %s\n\n", status.GetErrorString().c_str());
        if (status.GetCode() == kFbxInvalidFileVersion) {
            ConsolePrint("FBX file format version for this reader is %d.%d.%d\n", layerMajor, layerMinor, layerRevision);
            ConsolePrint("FBX file format version for file '%s' is %d.%d.%d\n\n", fileName.c_str(), fileMajor,
                         fileMinor, fileRevision);
        }
        // The importer stays with the manager, which frees it.
        return false;
    }

    ConsolePrint("FBX file format version for this reader is %d.%d.%d\n", layerMajor, layerMinor, layerRevision);
    if (importer->IsFBX()) {
        ConsolePrint("FBX file format version for file '%s' is %d.%d.%d\n\n", fileName.c_str(), fileMajor, fileMinor,
                     fileRevision);
        for (const char* option : kFbxImportOptions) settings->SetBoolProp(option, true);
    }

    importer->SetProgressCallback(PrintProgress);
    ConsolePrint("Importing FBX...\n");
    bool imported = importer->Import(context.scene, false);
    ConsolePrint("Import Complete!\n");

    if (!imported && importer->GetStatus().GetCode() == kFbxPasswordError) {
        ConsolePrint("Please enter password: ");
        std::fflush(stdout);
        settings->SetStringProp(kPasswordOption, ReadPassword(passwordInput));
        settings->SetBoolProp(kPasswordEnableOption, true);
        imported = importer->Import(context.scene, false);
        if (!imported && importer->GetStatus().GetCode() == kFbxPasswordError)
            ConsolePrint("\nPassword is wrong, import aborted.\n");
    }

    importer->Destroy();
    return imported;
}

void DestroyFbxContext(FbxContext& context) {
    if (context.manager) context.manager->Destroy();
    context.manager = nullptr;
    context.scene = nullptr;
}
