// TEMPORARY: bodies that compile against the public interface; every read
// gives its neutral value and every open fails. Replaced by the real stream.
#include "fbx/fbx_field_stream.h"

struct FbxFieldBlock {};

FbxFileBytes::~FbxFileBytes() { delete[] owned_; }
std::shared_ptr<const FbxFileBytes> FbxFileBytes::ReadFile(const std::string&) { return nullptr; }
std::shared_ptr<const FbxFileBytes> FbxFileBytes::Borrow(const void*, size_t) { return nullptr; }
std::shared_ptr<const FbxFileBytes> FbxFileBytes::Copy(const void*, size_t) { return nullptr; }

FbxFieldStream::FbxFieldStream(int binaryType, FbxStatus& status) : status_(status), binaryType_(binaryType) {}
FbxFieldStream::~FbxFieldStream() = default;
bool FbxFieldStream::OpenFile(const std::string& path, bool, bool, FbxFileHeaderInfo*) {
    status_.SetCode(kFbxFailure, "Unable to open file '" + path + "'");
    return false;
}
bool FbxFieldStream::OpenStream(std::shared_ptr<const FbxFileBytes>, const std::string& name, bool, bool,
                                FbxFileHeaderInfo*) {
    status_.SetCode(kFbxFailure, "File is corrupted: '" + name + "'");
    return false;
}
void FbxFieldStream::Close() {}
bool FbxFieldStream::OpenSection(int) { return false; }
bool FbxFieldStream::CloseSection() { return false; }
int64_t FbxFieldStream::SectionOffset(int) const { return 0; }
int32_t FbxFieldStream::SectionVersion(int) const { return 0; }
int FbxFieldStream::FieldCount(std::string_view) const { return 0; }
bool FbxFieldStream::BeginField(std::string_view) { return false; }
bool FbxFieldStream::BeginField(std::string_view, int) { return false; }
void FbxFieldStream::EndField() {}
void FbxFieldStream::ResetCursors() {}
bool FbxFieldStream::HasBlock() const { return false; }
bool FbxFieldStream::BeginBlock() { return false; }
void FbxFieldStream::EndBlock() {}
int FbxFieldStream::ValueCount() const { return 0; }
int FbxFieldStream::ValuesLeft() const { return 0; }
char FbxFieldStream::ValueCode() const { return 'S'; }
int32_t FbxFieldStream::ReadInt() { return 0; }
int64_t FbxFieldStream::ReadLong() { return 0; }
uint8_t FbxFieldStream::ReadByte() { return 0; }
int16_t FbxFieldStream::ReadShort() { return 0; }
float FbxFieldStream::ReadFloat() { return 0; }
double FbxFieldStream::ReadDouble() { return 0; }
std::string FbxFieldStream::ReadString() { return {}; }
char FbxFieldStream::ReadChar() { return 0; }
bool FbxFieldStream::ReadBool() { return false; }
const uint8_t* FbxFieldStream::ReadBlob(size_t& length) { length = 0; return nullptr; }
const uint8_t* FbxFieldStream::ReadArrayOfBool(size_t& count) { count = 0; return nullptr; }
const uint8_t* FbxFieldStream::ReadArrayOfByte(size_t& count) { count = 0; return nullptr; }
const int16_t* FbxFieldStream::ReadArrayOfShort(size_t& count) { count = 0; return nullptr; }
const int32_t* FbxFieldStream::ReadArrayOfInt(size_t& count) { count = 0; return nullptr; }
const int64_t* FbxFieldStream::ReadArrayOfLong(size_t& count) { count = 0; return nullptr; }
const float* FbxFieldStream::ReadArrayOfFloat(size_t& count) { count = 0; return nullptr; }
const double* FbxFieldStream::ReadArrayOfDouble(size_t& count) { count = 0; return nullptr; }
int32_t FbxFieldStream::ReadInt(std::string_view, int32_t d) { return d; }
int64_t FbxFieldStream::ReadLong(std::string_view, int64_t d) { return d; }
float FbxFieldStream::ReadFloat(std::string_view, float d) { return d; }
double FbxFieldStream::ReadDouble(std::string_view, double d) { return d; }
std::string FbxFieldStream::ReadString(std::string_view, const std::string& d) { return d; }
bool FbxFieldStream::ReadBool(std::string_view, bool d) { return d; }
char FbxFieldStream::ReadChar(std::string_view, char d) { return d; }
void FbxFieldStream::ReadDouble3(std::string_view, double out[3], const double d[3]) {
    for (int i = 0; i < 3; ++i) out[i] = d[i];
}
void FbxFieldStream::ReadFloat3(std::string_view, float out[3], const float d[3]) {
    for (int i = 0; i < 3; ++i) out[i] = d[i];
}
void FbxFieldStream::ReadDoubles(std::string_view, double* out, int count, const double* d) {
    for (int i = 0; i < count; ++i) out[i] = d[i];
}
uint64_t FbxFieldStream::FileSize() const { return 0; }

std::unique_ptr<FbxFieldStream> FbxOpenFieldStream(const std::string& path, FbxStatus& status, bool,
                                                   FbxFileHeaderInfo*) {
    status.SetCode(kFbxFailure, "Unable to open file '" + path + "'");
    return nullptr;
}
std::unique_ptr<FbxFieldStream> FbxOpenFieldStream(std::shared_ptr<const FbxFileBytes>, const std::string& name,
                                                   FbxStatus& status, bool, FbxFileHeaderInfo*) {
    status.SetCode(kFbxFailure, "File is corrupted: '" + name + "'");
    return nullptr;
}
