// FBX files as a tree of named fields. The reader walks it by name:
// begin the field "Objects", begin its block, begin a field "Model", read a
// string, end the field. It never sees a byte offset.
//
// The whole file is held in memory once (FbxFileBytes); value lists are read
// in place from it, nested blocks are parsed only when a caller descends into
// them, and arrays are inflated on demand. A text file is read once into the
// binary record layout at open and then served the same way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/fbx_status.h"

// Immutable bytes of one input file. Owned (read from disk) or borrowed (the
// caller keeps them alive for as long as any stream uses them).
class FbxFileBytes {
public:
    FbxFileBytes(const FbxFileBytes&) = delete;
    FbxFileBytes& operator=(const FbxFileBytes&) = delete;
    ~FbxFileBytes();

    // Reads the whole file once. Null when it cannot be opened or read.
    static std::shared_ptr<const FbxFileBytes> ReadFile(const std::string& path);
    static std::shared_ptr<const FbxFileBytes> Borrow(const void* data, size_t size);
    static std::shared_ptr<const FbxFileBytes> Copy(const void* data, size_t size);
    static std::shared_ptr<const FbxFileBytes> Adopt(std::vector<uint8_t>&& bytes);

    const uint8_t* Data() const { return data_; }
    size_t Size() const { return size_; }
    // Tells that a range is read and unlikely to be read again: a mapped file gives its
    // pages back (a later read still sees the same bytes).
    void Release(const uint8_t* from, size_t length) const;

private:
    FbxFileBytes() = default;
    // Null for files below the mapping size, other than regular files, or when mapping fails.
    static std::shared_ptr<const FbxFileBytes> MapFile(const std::string& path);
    const uint8_t* data_ = nullptr;
    size_t size_ = 0;
    bool mapped_ = false;
    uint8_t* owned_ = nullptr;
    std::vector<uint8_t> adopted_;
};

// What FBXHeaderExtension tells about the file. Zero/empty for fields that the
// file does not carry.
struct FbxFileHeaderInfo {
    int32_t fbxHeaderVersion = 0;
    int32_t fbxVersion = 0;
    int32_t encryptionType = 0;
    // CurrentCameraResolution, header version 1001 on.
    std::string cameraName;
    int32_t cameraResolutionMode = 0;
    int32_t cameraResolutionW = 0;
    int32_t cameraResolutionH = 0;
    // CreationTimeStamp, header version 1002 on; the date fields from its
    // Version 1000 on.
    int32_t creationTimeStampVersion = 0;
    int32_t year = 0;
    int32_t month = 0;
    int32_t day = 0;
    int32_t hour = 0;
    int32_t minute = 0;
    int32_t second = 0;
    int32_t millisecond = 0;
    std::string creator;
    // OtherFlags, header version 1003 on.
    bool flagPLE = false;
    bool flagIOPlugin = false;
    // Time-unit definition, header version 1004 on; see FbxFieldStream::TCDefinition.
    bool hasTCDefinition = false;
    int32_t tcDefinition = 0;
};

struct FbxFieldBlock;
struct FbxByteView;
struct FbxInflater;
struct FbxInflaterDeleter {
    void operator()(FbxInflater* inflater) const;
};

class FbxFieldStream {
public:
    // The time-unit definition reported for files that do not state one.
    static constexpr int32_t kDefaultTCDefinition = 127;
    // Blocks at or above this size read one value list at a time.
    static constexpr uint64_t kSharedBufferLimit = 0xFA00001;

    // binaryType 1: 64-bit record words (files of version 7500 on);
    // 0: 32-bit words (7400 and below). The status record must outlive the
    // stream; failures are reported there. An open refused because the file
    // has the other layout returns false with the status untouched: open
    // through FbxOpenFieldStream, which tries both.
    FbxFieldStream(int binaryType, FbxStatus& status);
    ~FbxFieldStream();
    FbxFieldStream(const FbxFieldStream&) = delete;
    FbxFieldStream& operator=(const FbxFieldStream&) = delete;

    // Header, version check, section list, FBXHeaderExtension. checkCrc is
    // accepted for callers of encrypted files; plain files have nothing to check.
    bool OpenFile(const std::string& path, bool checkCrc, bool openMainSection, FbxFileHeaderInfo* headerInfo);
    // The same over bytes already in memory; name is used in messages.
    bool OpenStream(std::shared_ptr<const FbxFileBytes> bytes, const std::string& name, bool checkCrc,
                    bool openMainSection, FbxFileHeaderInfo* headerInfo);
    void Close();
    bool IsOpen() const { return bytes_ != nullptr; }

    // A stream used by a reader of older files refuses major version 7 too.
    void SetAcceptVersion7(bool accept) { acceptVersion7_ = accept; }

    // Sections. Index 0 is the main section; its root block stays cached when
    // closed.
    bool OpenSection(int index);
    bool CloseSection();
    int SectionCount() const { return static_cast<int>(sectionOffsets_.size()); }
    int64_t SectionOffset(int index) const;
    int32_t SectionVersion(int index) const;
    int CurrentSection() const { return currentSection_; }
    // NodeId (or Param2a) of the open section; empty when it has neither.
    const std::string& SectionNodeId() const { return sectionNodeId_; }

    // Fields of the current block. Names are listed in the order of their
    // first appearance.
    int FieldNameCount() const;
    std::string FieldName(int index) const;
    int FieldCount(std::string_view name) const;
    bool BeginField(std::string_view name);
    bool BeginField(std::string_view name, int instance);
    void EndField();
    void ResetCursors();

    bool HasBlock() const;
    bool BeginBlock();
    void EndBlock();
    // 0 for the root block of a section, -1 when no section is open.
    int BlockDepth() const { return depth_; }

    // Values of the current instance of the current field.
    int ValueCount() const;
    int ValuesLeft() const;
    char ValueCode() const;

    // Readers at the cursor; each advances it. See the .cpp for the conversions.
    int32_t ReadInt();
    int64_t ReadLong();
    uint8_t ReadByte();
    int16_t ReadShort();
    float ReadFloat();
    double ReadDouble();
    std::string ReadString();
    char ReadChar();
    bool ReadBool();
    // Raw value: pointer into the file's bytes, valid while the stream is open.
    // Null with length 0 when the value is empty.
    const uint8_t* ReadBlob(size_t& length);

    // Array values. The pointer lives until the next array read on the same
    // instance or until its block ends. A value of another code, a bad encoding,
    // size or zlib stream gives null and a count of 0.
    const uint8_t* ReadArrayOfBool(size_t& count);
    const uint8_t* ReadArrayOfByte(size_t& count);
    const int16_t* ReadArrayOfShort(size_t& count);
    const int32_t* ReadArrayOfInt(size_t& count);
    const int64_t* ReadArrayOfLong(size_t& count);
    const float* ReadArrayOfFloat(size_t& count);
    const double* ReadArrayOfDouble(size_t& count);

    // BeginField(name), one read, EndField(); the default when the field is
    // absent or used up.
    int32_t ReadInt(std::string_view name, int32_t defaultValue);
    int64_t ReadLong(std::string_view name, int64_t defaultValue);
    float ReadFloat(std::string_view name, float defaultValue);
    double ReadDouble(std::string_view name, double defaultValue);
    std::string ReadString(std::string_view name, const std::string& defaultValue);
    bool ReadBool(std::string_view name, bool defaultValue);
    char ReadChar(std::string_view name, char defaultValue);
    // The first values of the first instance of a field; from the default when
    // the field is absent, and for the positions the record does not hold.
    void ReadDouble3(std::string_view name, double out[3], const double defaultValue[3]);
    void ReadFloat3(std::string_view name, float out[3], const float defaultValue[3]);
    void ReadDoubles(std::string_view name, double* out, int count, const double* defaultValue);

    // File facts, valid once open.
    int32_t FileVersion() const { return version_; }
    int BinaryType() const { return binaryType_; }
    bool IsBinary() const { return binary_; }
    // A text file, served from its records read once into the 64-bit layout.
    bool IsText() const { return text_; }
    bool IsBigEndian() const { return bigEndian_; }
    bool IsEncrypted() const { return header_.encryptionType == 1; }
    const FbxFileHeaderInfo& HeaderInfo() const { return header_; }
    // TCDefinition of the header extension, kDefaultTCDefinition when absent.
    int32_t TCDefinition() const { return header_.hasTCDefinition ? header_.tcDefinition : kDefaultTCDefinition; }
    const std::string& FileName() const { return fileName_; }
    uint64_t FileSize() const;
    FbxStatus& Status() { return status_; }
    const FbxStatus& Status() const { return status_; }

private:
    // Array buffers handed out, kept for reuse when their block ends.
    struct Scratch {
        uint8_t* data;
        uint64_t capacity;
    };
    bool OpenBytes(bool openMainSection, FbxFileHeaderInfo* headerInfo);
    bool ReadText();
    bool ReadHeaderExtension(uint64_t& sectionStart, bool& found);
    bool ReadHeaderFields();
    void BuildSectionList(uint64_t mainStart);
    bool ReadTrailer(uint64_t limit, uint32_t& backOffset, uint32_t& sectionVersion) const;
    FbxByteView View() const;
    FbxFieldBlock* Current() const;
    FbxFieldBlock* PushBlock();
    void PopBlock();
    void FreeBlocks();
    void ReleaseScratch(FbxFieldBlock& block);
    // Payload of the value at the cursor, or null; advances the cursor.
    const uint8_t* NextValue(uint8_t& code, uint64_t& room);
    // The low `size` bytes of the value at the cursor, whatever its type; 0 past the end.
    uint64_t NextScalar(uint64_t size);
    void DoneWith(uint64_t start, uint64_t end);

    template <typename T>
    const T* ReadArray(char code, size_t& count);

    FbxStatus& status_;
    int binaryType_;
    bool acceptVersion7_ = true;
    std::shared_ptr<const FbxFileBytes> bytes_;
    // How far the blocks read to their end reach, and how far the file was given back.
    uint64_t doneTo_ = 0, givenTo_ = 0;
    std::string fileName_;
    bool binary_ = false;
    bool text_ = false;
    bool bigEndian_ = false;
    int32_t version_ = 0;
    FbxFileHeaderInfo header_;
    uint64_t headerEnd_ = 0;
    std::vector<int64_t> sectionOffsets_;
    std::vector<int32_t> sectionVersions_;
    int currentSection_ = -1;
    std::string sectionNodeId_;
    // Blocks from the root (index 0) to the current one (index depth_); the
    // entries above depth_ are kept for reuse of their tables.
    std::vector<std::unique_ptr<FbxFieldBlock>> blocks_;
    int depth_ = -1;
    bool mainRootCached_ = false;
    std::vector<Scratch> freeScratch_;
    std::unique_ptr<FbxInflater, FbxInflaterDeleter> inflater_;
};

// Opens a file the way the reader must: with binary type 1 first and, when that
// fails at the type gate or any later step of the open, with a fresh stream of
// binary type 0 whose status starts clean. Null when both fail; status then
// holds the second attempt's outcome, or the first's when the second only
// refused the layout. The file is read from disk once.
std::unique_ptr<FbxFieldStream> FbxOpenFieldStream(const std::string& path, FbxStatus& status,
                                                   bool openMainSection, FbxFileHeaderInfo* headerInfo);
std::unique_ptr<FbxFieldStream> FbxOpenFieldStream(std::shared_ptr<const FbxFileBytes> bytes,
                                                   const std::string& name, FbxStatus& status,
                                                   bool openMainSection, FbxFileHeaderInfo* headerInfo);
