#include "fbx/fbx_importer.h"

#include <clocale>
#include <cstring>
#include <string>

#include "fbx/fbx_ascii_version.h"
#include "fbx/fbx_document.h"
#include "fbx/fbx_manager.h"
#include "fbx/fbx_reader.h"

FBX_OBJECT_IMPLEMENT(FbxImporter, FbxIOBase, "", "")

namespace {

constexpr int kLayerVersion = 7700;

bool HasFbxExtension(const std::string& name) {
    size_t dot = name.rfind('.');
    if (dot == std::string::npos) return false;
    std::string ext = name.substr(dot + 1);
    for (char& c : ext)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return ext == "fbx";
}

// The binary magic, or the version line of a text file.
bool HasFbxContent(const FbxFileBytes& bytes) {
    static const char kKaydara[] = "Kaydara FBX Binary  ";
    static const char kAutodesk[] = "Autodesk FBX Binary ";
    if (bytes.Size() >= 21 && (std::memcmp(bytes.Data(), kKaydara, 21) == 0 ||
                               std::memcmp(bytes.Data(), kAutodesk, 21) == 0)) {
        return true;
    }
    int32_t version = 0;
    return FbxScanAsciiVersion(bytes.Data(), bytes.Size(), version);
}

// Sets the numeric locale to "C" for the life of the guard, so that text values read
// the same whatever the process's locale is.
class NumericLocaleGuard {
public:
    NumericLocaleGuard() {
        const char* current = std::setlocale(LC_NUMERIC, nullptr);
        if (current) saved_ = current;
        std::setlocale(LC_NUMERIC, "C");
    }
    ~NumericLocaleGuard() {
        if (!saved_.empty()) std::setlocale(LC_NUMERIC, saved_.c_str());
    }

private:
    std::string saved_;
};

}  // namespace

void FbxGetFileFormatVersion(int& major, int& minor, int& revision) {
    major = kLayerVersion / 1000;
    minor = (kLayerVersion % 1000) / 100;
    revision = kLayerVersion % 100;
}

FbxImporter::~FbxImporter() = default;

bool FbxImporter::Initialize(const char* fileName, int /*fileFormat*/, FbxIOSettings* settings) {
    status_.Clear();
    stream_.reset();
    isFbx_ = false;
    settings_ = settings;
    if (!fileName || !*fileName) {
        status_.SetCode(kFbxFailure, "Uninitialized filename");
        return false;
    }
    fileName_ = fileName;
    std::shared_ptr<const FbxFileBytes> bytes;
    if (!HasFbxExtension(fileName_)) {
        // Only FBX has a reader here; a file of another name is taken when its
        // content says FBX, and the bytes read for that test are the ones imported.
        bytes = FbxFileBytes::ReadFile(fileName_);
        if (!bytes || !HasFbxContent(*bytes)) {
            status_.SetCode(kFbxFailure, "Unexpected file type");
            return false;
        }
    }
    return Open(bytes);
}

bool FbxImporter::Initialize(const void* data, size_t size, const char* name, FbxIOSettings* settings) {
    status_.Clear();
    stream_.reset();
    isFbx_ = false;
    settings_ = settings;
    fileName_ = name ? name : "";
    if (!data) {
        status_.SetCode(kFbxFailure, "Uninitialized filename");
        return false;
    }
    return Open(FbxFileBytes::Borrow(data, size));
}

bool FbxImporter::Open(std::shared_ptr<const FbxFileBytes> bytes) {
    headerInfo_ = FbxFileHeaderInfo();
    if (bytes)
        stream_ = FbxOpenFieldStream(bytes, fileName_, status_, false, &headerInfo_);
    else
        stream_ = FbxOpenFieldStream(fileName_, status_, false, &headerInfo_);
    if (!stream_) {
        // A file refused for its version still tells that version, for the caller's message.
        fileVersion_ = headerInfo_.fbxVersion;
        return false;
    }
    isFbx_ = true;
    fileVersion_ = stream_->FileVersion();
    if (fileVersion_ / 1000 >= 8) {
        status_.SetCode(kFbxInvalidFileVersion,
                        "FBX File version " + std::to_string(fileVersion_ / 1000) + " is not supported in this product");
        stream_.reset();
        return false;
    }
    return true;
}

void FbxImporter::GetFileVersion(int& major, int& minor, int& revision) const {
    major = fileVersion_ / 1000;
    minor = (fileVersion_ % 1000) / 100;
    revision = fileVersion_ % 100;
    if (major >= 1 && major <= 4) {
        major = 5;
        minor = 0;
        revision = 0;
    }
}

bool FbxImporter::Import(FbxDocument* document, bool /*nonBlocking*/) {
    if (!document) {
        status_.SetCode(kFbxFailure, "Invalid document handle");
        return false;
    }
    if (!stream_ || !stream_->IsOpen()) {
        status_.SetCode(kFbxFailure, "File not opened");
        return false;
    }
    NumericLocaleGuard locale;
    FbxReaderOptions options = FbxReaderOptions::FromSettings(settings_ ? settings_ : GetFbxManager()->GetIOSettings());
    if (stream_->CurrentSection() < 0 && !stream_->OpenSection(0)) {
        status_.SetCode(kFbxInvalidFile, "File is corrupted: '" + fileName_ + "'");
        return false;
    }
    if (stream_->IsEncrypted()) {
        // Encrypted files cannot be deciphered here: every password is a wrong one.
        status_.SetCode(kFbxPasswordError, "Wrong password");
        return false;
    }
    status_.Clear();
    FbxReader reader(*stream_, status_, fileName_, progress_, progressArgs_);
    bool ok = reader.Read(*document, options);
    stream_->CloseSection();
    return ok;
}
