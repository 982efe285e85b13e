// FbxImporter: opens a file, tells its version and fills a document from it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "fbx/fbx_field_stream.h"
#include "fbx/fbx_misc_objects.h"
#include "fbx/fbx_status.h"

class FbxDocument;
class FbxIOSettings;

class FbxImporter : public FbxIOBase {
    FBX_OBJECT_DECLARE(FbxImporter, FbxIOBase)
public:
    // Told of the progress of an import; returning false stops the object loop.
    using ProgressCallback = bool (*)(void* args, float percentage, const char* status);

    // fileFormat -1 lets the importer find the format. Opens the file and reads its
    // header; on failure the status tells why.
    bool Initialize(const char* fileName, int fileFormat = -1, FbxIOSettings* settings = nullptr);
    // The same over bytes in memory (tests, fuzzing); name stands for the file in
    // messages and for the folder of embedded media.
    bool Initialize(const void* data, size_t size, const char* name, FbxIOSettings* settings = nullptr);

    // Version of the file; a format of major version 1 to 4 reports 5.0.0.
    void GetFileVersion(int& major, int& minor, int& revision) const;
    bool IsFBX() const { return isFbx_; }
    const FbxFileHeaderInfo& GetFileHeaderInfo() const { return headerInfo_; }
    const std::string& GetFileName() const { return fileName_; }

    void SetProgressCallback(ProgressCallback callback, void* args = nullptr) {
        progress_ = callback;
        progressArgs_ = args;
    }

    // Fills the document from a file of major version 7. Only the blocking form exists.
    bool Import(FbxDocument* document, bool nonBlocking = false);

    FbxStatus& GetStatus() { return status_; }
    const FbxStatus& GetStatus() const { return status_; }

    ~FbxImporter() override;

private:
    bool Open(std::shared_ptr<const FbxFileBytes> bytes);

    FbxStatus status_;
    std::unique_ptr<FbxFieldStream> stream_;
    FbxFileHeaderInfo headerInfo_;
    std::string fileName_;
    FbxIOSettings* settings_ = nullptr;
    bool isFbx_ = false;
    int32_t fileVersion_ = 0;
    ProgressCallback progress_ = nullptr;
    void* progressArgs_ = nullptr;
};

// The newest file version this layer knows: 7.7.0.
void FbxGetFileFormatVersion(int& major, int& minor, int& revision);
