#include "fbx/fbx_field_stream.h"

#include <cstring>

#include "fbx/fbx_ascii_transcode.h"
#include "fbx/fbx_ascii_version.h"
#include "fbx/fbx_field_block.h"

namespace {

constexpr uint64_t kHeaderSize = 27;
constexpr uint64_t kTrailerSize = 144;
const char kMagicKaydara[21] = "Kaydara FBX Binary  ";
const char kMagicAutodesk[21] = "Autodesk FBX Binary ";
const uint8_t kTrailerMagic[16] = {0xf8, 0x5a, 0x8c, 0x6a, 0xde, 0xf5, 0xd9, 0x7e,
                                   0xec, 0xe9, 0x0c, 0xe3, 0x75, 0x8f, 0x29, 0x0b};

std::string Corrupted(const std::string& name) { return "File is corrupted: '" + name + "'"; }

}  // namespace

FbxFieldStream::FbxFieldStream(int binaryType, FbxStatus& status)
    : status_(status), binaryType_(binaryType == 1 ? 1 : 0) {}

FbxFieldStream::~FbxFieldStream() { Close(); }

uint64_t FbxFieldStream::FileSize() const { return bytes_ ? bytes_->Size() : 0; }

FbxByteView FbxFieldStream::View() const {
    FbxByteView view;
    if (bytes_) {
        view.data = bytes_->Data();
        view.size = bytes_->Size();
    }
    view.wordSize = binaryType_ == 1 ? 8 : 4;
    view.bigEndian = bigEndian_;
    return view;
}

bool FbxFieldStream::OpenFile(const std::string& path, bool checkCrc, bool openMainSection,
                              FbxFileHeaderInfo* headerInfo) {
    Close();
    std::shared_ptr<const FbxFileBytes> bytes = FbxFileBytes::ReadFile(path);
    if (!bytes) {
        status_.SetCode(kFbxFailure, "Unable to open file '" + path + "'");
        return false;
    }
    return OpenStream(std::move(bytes), path, checkCrc, openMainSection, headerInfo);
}

bool FbxFieldStream::OpenStream(std::shared_ptr<const FbxFileBytes> bytes, const std::string& name, bool,
                                bool openMainSection, FbxFileHeaderInfo* headerInfo) {
    Close();
    if (!bytes) {
        status_.SetCode(kFbxFailure, "Unable to open file '" + name + "'");
        return false;
    }
    bytes_ = std::move(bytes);
    doneTo_ = givenTo_ = 0;
    fileName_ = name;
    if (!OpenBytes(openMainSection, headerInfo)) {
        // Keep the name for the caller's messages, drop everything else.
        std::string keptName = fileName_;
        const int32_t keptVersion = version_;
        Close();
        fileName_ = keptName;
        version_ = keptVersion;
        return false;
    }
    return true;
}

bool FbxFieldStream::OpenBytes(bool openMainSection, FbxFileHeaderInfo* headerInfo) {
    const uint8_t* data = bytes_->Data();
    const uint64_t size = bytes_->Size();
    header_ = FbxFileHeaderInfo();
    if (headerInfo) *headerInfo = header_;

    // 1. Header, or the version line of a text file.
    const bool magic = size >= kHeaderSize && (std::memcmp(data, kMagicKaydara, 21) == 0 ||
                                               std::memcmp(data, kMagicAutodesk, 21) == 0);
    uint32_t headerVersion = 0;
    if (!magic) {
        int32_t version = 0;
        if (!FbxScanAsciiVersion(data, size, version)) {
            status_.SetCode(kFbxFailure, Corrupted(fileName_));
            return false;
        }
        version_ = version;
        // A text file is read into the 64-bit record layout, which a stream of
        // the 32-bit layout refuses like any file of the other layout.
        if (binaryType_ != 1) return false;
        if (!ReadText()) return false;
    } else {
        // 2. Version and byte order.
        binary_ = true;
        bigEndian_ = data[22] != 0;
        headerVersion = FbxLoadU32(data + 23, bigEndian_);
        version_ = static_cast<int32_t>(headerVersion);

        // 3. Record layout gate: 7500 on has 64-bit words, 7400 and below 32-bit.
        // A refusal here is no fault of the file: it sets no status.
        if ((binaryType_ == 0 && headerVersion >= 7500) || (binaryType_ == 1 && headerVersion <= 7400)) return false;
    }

    // 4, 5. FBXHeaderExtension, when it is the first record.
    headerEnd_ = kHeaderSize;
    uint64_t sectionStart = kHeaderSize;
    bool extension = false;
    if (!ReadHeaderExtension(sectionStart, extension)) return false;
    // Between 7400 and 7500 both layouts may apply; the one that finds the
    // header extension is the file's.
    if (binary_ && binaryType_ == 1 && headerVersion < 7500 && !extension) return false;
    if (headerInfo) *headerInfo = header_;
    if (header_.fbxVersion != 0) version_ = header_.fbxVersion;

    // 6. Version limit.
    const int64_t major = version_ / 1000;
    if (major >= 8 || (major == 7 && !acceptVersion7_)) {
        status_.SetCode(kFbxInvalidFileVersion, "FBX file version " + std::to_string(major) + "." +
                                                    std::to_string((version_ % 1000) / 100) + "." +
                                                    std::to_string(version_ % 100) +
                                                    " is not supported in this product");
        return false;
    }

    // 7. Sections, from the trailers at the end of the file backwards.
    BuildSectionList(sectionStart);

    // 8.
    return !openMainSection || OpenSection(0);
}

bool FbxFieldStream::ReadText() {
    FbxAsciiImage image = FbxTranscodeAscii(bytes_->Data(), bytes_->Size(), version_);
    if (image.fault == FbxAsciiFault::OutOfMemory) {
        status_.SetCode(kFbxInsufficientMemory);
        return false;
    }
    if (image.fault != FbxAsciiFault::None) {
        status_.SetCode(kFbxInvalidFile, Corrupted(fileName_));
        return false;
    }
    // From here on the text's records are the file; the text itself is not kept.
    bytes_ = FbxFileBytes::Adopt(std::move(image.bytes));
    text_ = true;
    return true;
}

bool FbxFieldStream::ReadHeaderExtension(uint64_t& sectionStart, bool& found) {
    const FbxByteView view = View();
    const uint64_t w = view.wordSize;
    uint64_t end = 0, count = 0, listLength = 0, nameLength = 0;
    if (!FbxReadWord(view, kHeaderSize, w, end) || !FbxReadWord(view, kHeaderSize + w, w, count) ||
        !FbxReadWord(view, kHeaderSize + 2 * w, w, listLength) ||
        !FbxReadWord(view, kHeaderSize + 3 * w, 1, nameLength)) {
        return true;  // no first record at all: the section read will judge
    }
    const uint64_t namePos = kHeaderSize + 3 * w + 1;
    static constexpr std::string_view kName = "FBXHeaderExtension";
    if (nameLength != kName.size() || view.size - namePos < nameLength ||
        std::memcmp(view.data + namePos, kName.data(), kName.size()) != 0) {
        return true;  // absent
    }
    found = true;
    const uint64_t behindList = namePos + nameLength + listLength;
    if (listLength > view.size || end <= behindList || end >= view.size) {
        status_.SetCode(kFbxInvalidFile, Corrupted(fileName_));
        return false;
    }

    // Read it with the field machinery, as a root block of its own.
    FbxFieldBlock* block = PushBlock();
    block->start = behindList;
    if (!FbxReadBlock(view, *block, nullptr)) {
        FreeBlocks();
        status_.SetCode(kFbxInvalidFile, Corrupted(fileName_));
        return false;
    }
    const bool ok = ReadHeaderFields();
    FreeBlocks();
    if (!ok) return false;
    sectionStart = end;
    return true;
}

bool FbxFieldStream::ReadHeaderFields() {
    FbxFileHeaderInfo& info = header_;
    info.fbxHeaderVersion = ReadInt("FBXHeaderVersion", 0);
    info.fbxVersion = ReadInt("FBXVersion", 0);
    info.encryptionType = ReadInt("EncryptionType", 0);
    if (info.encryptionType != 0 && info.encryptionType != 1) {
        status_.SetCode(kFbxFailure, "Encryption type is not supported");
        return false;
    }
    const int32_t headerVersion = info.fbxHeaderVersion;
    // A nested block that can't be read leaves code 7 and stops the open.
    auto enter = [this](std::string_view name, bool& failed) {
        if (!BeginField(name)) return false;
        if (!HasBlock()) {
            EndField();
            return false;
        }
        if (!BeginBlock()) {
            failed = true;
            return false;
        }
        return true;
    };
    auto leave = [this]() {
        EndBlock();
        EndField();
    };
    bool failed = false;
    if (headerVersion >= 1001 && enter("CurrentCameraResolution", failed)) {
        info.cameraName = ReadString("CameraName", "");
        info.cameraResolutionMode = ReadInt("CameraResolutionMode", 0);
        info.cameraResolutionW = ReadInt("CameraResolutionW", 0);
        info.cameraResolutionH = ReadInt("CameraResolutionH", 0);
        leave();
    }
    if (headerVersion >= 1002) {
        if (enter("CreationTimeStamp", failed)) {
            info.creationTimeStampVersion = ReadInt("Version", 0);
            if (info.creationTimeStampVersion >= 1000) {
                info.year = ReadInt("Year", 0);
                info.month = ReadInt("Month", 0);
                info.day = ReadInt("Day", 0);
                info.hour = ReadInt("Hour", 0);
                info.minute = ReadInt("Minute", 0);
                info.second = ReadInt("Second", 0);
                info.millisecond = ReadInt("Millisecond", 0);
            }
            leave();
        }
        info.creator = ReadString("Creator", "");
    }
    if (headerVersion >= 1003 && enter("OtherFlags", failed)) {
        info.flagPLE = ReadInt("FlagPLE", 0) != 0;
        info.flagIOPlugin = ReadInt("FlagIOPlugin", 0) != 0;
        // Authoring tools write the time-unit definition among the other flags.
        if (headerVersion >= 1004 && FieldCount("TCDefinition") > 0) {
            info.hasTCDefinition = true;
            info.tcDefinition = ReadInt("TCDefinition", kDefaultTCDefinition);
        }
        leave();
    }
    if (headerVersion >= 1004 && !info.hasTCDefinition && FieldCount("TCDefinition") > 0) {
        info.hasTCDefinition = true;
        info.tcDefinition = ReadInt("TCDefinition", kDefaultTCDefinition);
    }
    return !failed;
}

bool FbxFieldStream::ReadTrailer(uint64_t limit, uint32_t& backOffset, uint32_t& sectionVersion) const {
    if (limit > FileSize() || limit - limit % 16 < kTrailerSize) return false;
    const uint64_t t = limit - limit % 16 - kTrailerSize;
    const uint8_t* p = bytes_->Data() + t;
    if (std::memcmp(p + 128, kTrailerMagic, 16) != 0) return false;
    backOffset = FbxLoadU32(p, bigEndian_);
    sectionVersion = FbxLoadU32(p + 4, bigEndian_);
    return true;
}

void FbxFieldStream::BuildSectionList(uint64_t mainStart) {
    sectionOffsets_.assign(1, static_cast<int64_t>(mainStart));
    sectionVersions_.assign(1, version_);
    uint64_t limit = FileSize();
    for (;;) {
        uint32_t backOffset = 0, sectionVersion = 0;
        if (!ReadTrailer(limit, backOffset, sectionVersion)) break;
        const uint64_t t = limit - limit % 16 - kTrailerSize;
        if (backOffset == 0) {
            if (sectionVersion != 0) sectionVersions_[0] = static_cast<int32_t>(sectionVersion);
            break;
        }
        // A back offset reaching before the file start names no section.
        if (backOffset > t) break;
        const uint64_t p = t - backOffset;
        if (p >= limit) break;
        if (p == 0) {
            if (sectionVersion != 0) sectionVersions_[0] = static_cast<int32_t>(sectionVersion);
            break;
        }
        sectionOffsets_.insert(sectionOffsets_.begin() + 1, static_cast<int64_t>(p));
        sectionVersions_.insert(sectionVersions_.begin() + 1,
                                sectionVersion != 0 ? static_cast<int32_t>(sectionVersion) : 4000);
        limit = p;
    }
}

void FbxFieldStream::Close() {
    FreeBlocks();
    for (auto& block : blocks_) ReleaseScratch(*block);
    blocks_.clear();
    for (const Scratch& s : freeScratch_) std::free(s.data);
    freeScratch_.clear();
    mainRootCached_ = false;
    currentSection_ = -1;
    sectionNodeId_.clear();
    sectionOffsets_.clear();
    sectionVersions_.clear();
    bytes_.reset();
    fileName_.clear();
    binary_ = false;
    text_ = false;
    bigEndian_ = false;
    version_ = 0;
    header_ = FbxFileHeaderInfo();
}

int64_t FbxFieldStream::SectionOffset(int index) const {
    return index >= 0 && index < SectionCount() ? sectionOffsets_[static_cast<size_t>(index)] : 0;
}

int32_t FbxFieldStream::SectionVersion(int index) const {
    return index >= 0 && index < SectionCount() ? sectionVersions_[static_cast<size_t>(index)] : 0;
}

bool FbxFieldStream::OpenSection(int index) {
    if (!bytes_ || currentSection_ >= 0) return false;
    if (index < 0 || index >= SectionCount()) {
        status_.SetCode(kFbxFailure);
        return false;
    }
    if (index == 0 && mainRootCached_) {
        depth_ = 0;
        ResetCursors();
        blocks_[0]->currentField = -1;
    } else {
        mainRootCached_ = false;
        FbxFieldBlock* root = PushBlock();
        root->start = static_cast<uint64_t>(sectionOffsets_[static_cast<size_t>(index)]);
        if (!FbxReadBlock(View(), *root, nullptr)) {
            FreeBlocks();
            status_.SetCode(kFbxInvalidFile, Corrupted(fileName_));
            return false;
        }
        mainRootCached_ = index == 0;
    }
    currentSection_ = index;
    sectionNodeId_ = FieldCount("NodeId") > 0 ? ReadString("NodeId", "") : ReadString("Param2a", "");
    ResetCursors();
    return true;
}

bool FbxFieldStream::CloseSection() {
    if (currentSection_ < 0) return false;
    if (currentSection_ == 0 && mainRootCached_) {
        // The main section's root stays for a later open; its children go.
        while (depth_ > 0) EndBlock();
        depth_ = -1;
    } else {
        FreeBlocks();
    }
    currentSection_ = -1;
    sectionNodeId_.clear();
    return true;
}

FbxFieldBlock* FbxFieldStream::Current() const {
    return depth_ >= 0 ? blocks_[static_cast<size_t>(depth_)].get() : nullptr;
}

FbxFieldBlock* FbxFieldStream::PushBlock() {
    ++depth_;
    if (static_cast<size_t>(depth_) == blocks_.size()) blocks_.push_back(std::make_unique<FbxFieldBlock>());
    FbxFieldBlock* block = blocks_[static_cast<size_t>(depth_)].get();
    ReleaseScratch(*block);
    block->Clear();
    return block;
}

void FbxFieldStream::PopBlock() {
    if (depth_ < 0) return;
    FbxFieldBlock& block = *blocks_[static_cast<size_t>(depth_)];
    ReleaseScratch(block);
    block.Clear();
    --depth_;
}

void FbxFieldStream::FreeBlocks() {
    while (depth_ >= 0) PopBlock();
    mainRootCached_ = false;
}

int FbxFieldStream::FieldNameCount() const {
    const FbxFieldBlock* block = Current();
    return block ? static_cast<int>(block->fields.size()) : 0;
}

std::string FbxFieldStream::FieldName(int index) const {
    const FbxFieldBlock* block = Current();
    if (!block || index < 0 || static_cast<size_t>(index) >= block->fields.size()) return std::string();
    return std::string(block->fields[static_cast<size_t>(index)].name);
}

int FbxFieldStream::FieldCount(std::string_view name) const {
    const FbxFieldBlock* block = Current();
    if (!block) return 0;
    const int field = block->Find(name);
    return field < 0 ? 0 : static_cast<int>(block->fields[static_cast<size_t>(field)].count);
}

bool FbxFieldStream::BeginField(std::string_view name) {
    FbxFieldBlock* block = Current();
    if (!block) return false;
    block->currentField = block->Find(name);
    FbxFieldInstance* instance = block->CurrentInstance();
    if (!instance) {
        block->currentField = -1;
        return false;
    }
    instance->cursor = 0;
    return true;
}

bool FbxFieldStream::BeginField(std::string_view name, int index) {
    FbxFieldBlock* block = Current();
    if (!block) return false;
    const int field = block->Find(name);
    if (field < 0 || index < 0 || static_cast<uint32_t>(index) >= block->fields[static_cast<size_t>(field)].count) {
        block->currentField = -1;
        return false;
    }
    block->currentField = field;
    block->fields[static_cast<size_t>(field)].current = static_cast<uint32_t>(index);
    block->CurrentInstance()->cursor = 0;
    return true;
}

void FbxFieldStream::EndField() {
    FbxFieldBlock* block = Current();
    if (!block || block->currentField < 0) return;
    FbxField& field = block->fields[static_cast<size_t>(block->currentField)];
    if (field.current < field.count) ++field.current;
}

void FbxFieldStream::ResetCursors() {
    FbxFieldBlock* block = Current();
    if (!block) return;
    for (FbxField& field : block->fields) field.current = 0;
}

bool FbxFieldStream::HasBlock() const {
    const FbxFieldBlock* block = Current();
    const FbxFieldInstance* instance = block ? block->CurrentInstance() : nullptr;
    return instance && instance->nestedBlock != 0;
}

bool FbxFieldStream::BeginBlock() {
    if (!HasBlock()) return false;
    const uint64_t start = Current()->CurrentInstance()->nestedBlock;
    FbxFieldBlock* child = PushBlock();
    child->start = start;
    const FbxFieldBlock* parent = blocks_[static_cast<size_t>(depth_ - 1)].get();
    if (!FbxReadBlock(View(), *child, parent)) {
        PopBlock();
        status_.SetCode(kFbxInvalidFile, Corrupted(fileName_));
        return false;
    }
    return true;
}

void FbxFieldStream::EndBlock() {
    if (depth_ <= 0) return;
    const FbxFieldBlock& block = *Current();
    if (block.end > block.start) DoneWith(block.start, block.end);
    PopBlock();
}

void FbxFieldStream::DoneWith(uint64_t start, uint64_t end) {
    // A block read to its end is seldom read again: its bytes go back to the file. Readers
    // go forward through a block of records one record name at a time, so all that lies
    // behind the block just read goes back a stretch at a time, the records between
    // included: those were read by an earlier pass or come back from the page cache for a
    // later one. Giving back only the blocks read would keep nearly all of a file of small
    // records, as touching one record maps the pages around it.
    constexpr uint64_t kStretch = 256 * 1024, kPage = 4096;
    if (start < givenTo_) {
        // A new pass from further back, or a block around the ones just read.
        givenTo_ = start - start % kPage;
        doneTo_ = end;
    } else {
        doneTo_ = std::max(doneTo_, end);
    }
    if (doneTo_ - givenTo_ < kStretch) return;
    bytes_->Release(bytes_->Data() + givenTo_, doneTo_ - givenTo_);
    givenTo_ = doneTo_ - doneTo_ % kPage;
}

std::unique_ptr<FbxFieldStream> FbxOpenFieldStream(std::shared_ptr<const FbxFileBytes> bytes,
                                                   const std::string& name, FbxStatus& status,
                                                   bool openMainSection, FbxFileHeaderInfo* headerInfo) {
    status.Clear();
    auto stream = std::make_unique<FbxFieldStream>(1, status);
    FbxFileHeaderInfo firstInfo;
    if (stream->OpenStream(bytes, name, false, openMainSection, headerInfo ? &firstInfo : nullptr)) {
        if (headerInfo) *headerInfo = firstInfo;
        return stream;
    }
    // The first attempt leaves nothing behind: a new stream, a clean status.
    stream.reset();
    const FbxStatus first = status;
    status.Clear();
    stream = std::make_unique<FbxFieldStream>(0, status);
    if (stream->OpenStream(std::move(bytes), name, false, openMainSection, headerInfo)) return stream;
    // The second refused the layout without a fault of its own: the first
    // attempt's finding (a version too high, a corrupt block) is the answer, with
    // what it read of the header (the version a caller reports).
    if (!status.Error()) {
        status = first;
        if (headerInfo) *headerInfo = firstInfo;
    }
    return nullptr;
}

std::unique_ptr<FbxFieldStream> FbxOpenFieldStream(const std::string& path, FbxStatus& status,
                                                   bool openMainSection, FbxFileHeaderInfo* headerInfo) {
    std::shared_ptr<const FbxFileBytes> bytes = FbxFileBytes::ReadFile(path);
    if (!bytes) {
        status.SetCode(kFbxFailure, "Unable to open file '" + path + "'");
        return nullptr;
    }
    return FbxOpenFieldStream(std::move(bytes), path, status, openMainSection, headerInfo);
}
