// Reading values at the cursor of the current instance: the conversions
// callers rely on, and arrays (raw or zlib) into reusable scratch buffers.
#include <zlib.h>

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "fbx/fbx_field_block.h"
#include "fbx/fbx_field_stream.h"

struct FbxInflater {
    z_stream z{};
    bool ready = false;
};

void FbxInflaterDeleter::operator()(FbxInflater* inflater) const {
    if (inflater->ready) inflateEnd(&inflater->z);
    delete inflater;
}

namespace {

constexpr size_t kFreeScratchKept = 4;
// Deflate cannot expand by more than about 1032:1; an array that claims more
// than that from its stored bytes cannot inflate, so nothing is allocated for it.
constexpr uint64_t kMaxInflateRatio = 1040;

// `size` bytes at p; bytes beyond `room` (outside the value list) count as 0.
uint64_t LoadScalar(const uint8_t* p, uint64_t room, uint64_t size, bool bigEndian) {
    uint8_t bytes[8] = {};
    std::memcpy(bytes, p, room < size ? room : size);
    return FbxLoadWord(bytes, size, bigEndian);
}

float BitsToFloat(uint64_t bits) {
    const auto word = static_cast<uint32_t>(bits);
    float value;
    std::memcpy(&value, &word, 4);
    return value;
}

double BitsToDouble(uint64_t bits) {
    double value;
    std::memcpy(&value, &bits, 8);
    return value;
}

float Narrow(double value) {
    if (value > FLT_MAX) return HUGE_VALF;
    if (value < -FLT_MAX) return -HUGE_VALF;
    return static_cast<float>(value);
}

template <size_t N>
void SwapElements(uint8_t* data, uint64_t count) {
    for (uint64_t i = 0; i < count; ++i, data += N) {
        for (size_t a = 0, b = N - 1; a < b; ++a, --b) std::swap(data[a], data[b]);
    }
}

// Every value takes at least two bytes of its list, so a count beyond the
// list's length is not true; it is bounded by the length, which keeps a
// caller's loop over the values bounded by the file's size.
uint64_t CredibleCount(const FbxFieldInstance& instance) {
    return instance.valueCount < instance.listLength ? instance.valueCount : instance.listLength;
}

int ClampToInt(uint64_t value) { return value > INT32_MAX ? INT32_MAX : static_cast<int>(value); }

}  // namespace

const uint8_t* FbxFieldStream::NextValue(uint8_t& code, uint64_t& room) {
    FbxFieldBlock* block = Current();
    FbxFieldInstance* instance = block ? block->CurrentInstance() : nullptr;
    if (!instance || instance->cursor >= CredibleCount(*instance)) return nullptr;
    const uint64_t index = instance->cursor++;
    if (index >= instance->parsedCount) return nullptr;
    const uint64_t offset = block->PayloadOffset(*instance, index);
    code = instance->values[offset - 1];
    room = instance->listLength - offset;
    return instance->values + offset;
}

int FbxFieldStream::ValueCount() const {
    const FbxFieldBlock* block = Current();
    const FbxFieldInstance* instance = block ? block->CurrentInstance() : nullptr;
    return instance ? ClampToInt(CredibleCount(*instance)) : 0;
}

int FbxFieldStream::ValuesLeft() const {
    const FbxFieldBlock* block = Current();
    const FbxFieldInstance* instance = block ? block->CurrentInstance() : nullptr;
    if (!instance) return 0;
    const uint64_t count = CredibleCount(*instance);
    return instance->cursor < count ? ClampToInt(count - instance->cursor) : 0;
}

char FbxFieldStream::ValueCode() const {
    const FbxFieldBlock* block = Current();
    const FbxFieldInstance* instance = block ? block->CurrentInstance() : nullptr;
    if (!instance || instance->cursor >= instance->parsedCount || instance->cursor >= instance->valueCount) {
        return 'S';
    }
    return static_cast<char>(instance->values[block->PayloadOffset(*instance, instance->cursor) - 1]);
}

uint64_t FbxFieldStream::NextScalar(uint64_t size) {
    uint8_t code = 0;
    uint64_t room = 0;
    const uint8_t* p = NextValue(code, room);
    return p ? LoadScalar(p, room, size, bigEndian_) : 0;
}

int32_t FbxFieldStream::ReadInt() { return static_cast<int32_t>(static_cast<uint32_t>(NextScalar(4))); }

int64_t FbxFieldStream::ReadLong() { return static_cast<int64_t>(NextScalar(8)); }

int16_t FbxFieldStream::ReadShort() { return static_cast<int16_t>(static_cast<uint16_t>(NextScalar(2))); }

uint8_t FbxFieldStream::ReadByte() { return static_cast<uint8_t>(NextScalar(1)); }

float FbxFieldStream::ReadFloat() {
    uint8_t code = 0;
    uint64_t room = 0;
    const uint8_t* p = NextValue(code, room);
    float value = 0;
    if (p && code == 'F') value = BitsToFloat(LoadScalar(p, room, 4, bigEndian_));
    if (p && code == 'D') value = Narrow(BitsToDouble(LoadScalar(p, room, 8, bigEndian_)));
    // Values this small are noise from the authoring tool; they read as 0.
    return std::logb(value) < -125.0f ? 0.0f : value;
}

double FbxFieldStream::ReadDouble() {
    uint8_t code = 0;
    uint64_t room = 0;
    const uint8_t* p = NextValue(code, room);
    double value = 0;
    if (p && code == 'D') value = BitsToDouble(LoadScalar(p, room, 8, bigEndian_));
    if (p && code == 'F') value = BitsToFloat(LoadScalar(p, room, 4, bigEndian_));
    return std::logb(value) < -1021.0 ? 0.0 : value;
}

char FbxFieldStream::ReadChar() {
    uint8_t code = 0;
    uint64_t room = 0;
    const uint8_t* p = NextValue(code, room);
    return p && code == 'C' && room >= 1 ? static_cast<char>(*p) : '\0';
}

bool FbxFieldStream::ReadBool() {
    uint8_t code = 0;
    uint64_t room = 0;
    const uint8_t* p = NextValue(code, room);
    if (!p) return false;
    switch (code) {
    case 'C':
    case 'Z': return LoadScalar(p, room, 1, bigEndian_) != 0;
    case 'Y': return LoadScalar(p, room, 2, bigEndian_) != 0;
    case 'I': return LoadScalar(p, room, 4, bigEndian_) != 0;
    case 'L': return LoadScalar(p, room, 8, bigEndian_) != 0;
    case 'F': return BitsToFloat(LoadScalar(p, room, 4, bigEndian_)) != 0.0f;
    case 'D': return BitsToDouble(LoadScalar(p, room, 8, bigEndian_)) != 0.0;
    default: return false;
    }
}

std::string FbxFieldStream::ReadString() {
    uint8_t code = 0;
    uint64_t room = 0;
    const uint8_t* p = NextValue(code, room);
    if (!p || code != 'S' || room < 4) return std::string();
    uint64_t length = FbxLoadU32(p, bigEndian_);
    if (length == 0) return std::string();
    // A length beyond the value list is cut to what the list holds.
    if (length > room - 4) length = room - 4;
    std::string_view text(reinterpret_cast<const char*>(p + 4), length);
    // "Name\0\x01Class" is an object's name: it reads as "Class::Name".
    const size_t mark = text.find(std::string_view("\0\x01", 2));
    if (mark == std::string_view::npos) return std::string(text);
    std::string name(text.substr(mark + 2));
    name += "::";
    name += text.substr(0, mark);
    return name;
}

const uint8_t* FbxFieldStream::ReadBlob(size_t& length) {
    length = 0;
    FbxFieldBlock* block = Current();
    FbxFieldInstance* instance = block ? block->CurrentInstance() : nullptr;
    uint8_t code = 0;
    uint64_t room = 0;
    const uint8_t* p = NextValue(code, room);
    if (!p || room < 4) return nullptr;
    int64_t size = static_cast<int32_t>(FbxLoadU32(p, bigEndian_));
    if (size > static_cast<int64_t>(instance->listLength)) {
        status_.SetCode(kFbxFailure, "Error decoding binary data chunk. The file may be corrupted.");
        size = static_cast<int64_t>(instance->listLength);
    }
    if (size <= 0) return nullptr;
    if (static_cast<uint64_t>(size) > room - 4) size = static_cast<int64_t>(room - 4);  // never past the value list
    if (size == 0) return nullptr;
    length = static_cast<size_t>(size);
    return p + 4;
}

void FbxFieldStream::ReleaseScratch(FbxFieldBlock& block) {
    for (FbxFieldInstance& instance : block.instances) {
        if (!instance.scratch) continue;
        freeScratch_.push_back({instance.scratch, instance.scratchCapacity});
        instance.scratch = nullptr;
        instance.scratchCapacity = 0;
    }
    // Keep the largest few for the next arrays.
    while (freeScratch_.size() > kFreeScratchKept) {
        size_t smallest = 0;
        for (size_t i = 1; i < freeScratch_.size(); ++i) {
            if (freeScratch_[i].capacity < freeScratch_[smallest].capacity) smallest = i;
        }
        std::free(freeScratch_[smallest].data);
        freeScratch_.erase(freeScratch_.begin() + static_cast<std::ptrdiff_t>(smallest));
    }
}

template <typename T>
const T* FbxFieldStream::ReadArray(char want, size_t& count) {
    count = 0;
    FbxFieldBlock* block = Current();
    FbxFieldInstance* instance = block ? block->CurrentInstance() : nullptr;
    uint8_t code = 0;
    uint64_t room = 0;
    const uint8_t* p = NextValue(code, room);
    if (!p || code != static_cast<uint8_t>(want) || room < 12) return nullptr;
    const uint32_t elements = FbxLoadU32(p, bigEndian_);
    const uint32_t encoding = FbxLoadU32(p + 4, bigEndian_) & 0xFF;
    const uint32_t stored = FbxLoadU32(p + 8, bigEndian_);
    const uint64_t bytes = static_cast<uint64_t>(elements) * sizeof(T);
    if (bytes > UINT32_MAX || encoding >= 2 || elements == 0) return nullptr;  // 32-bit product overflow
    if (stored > room - 12) return nullptr;  // stored bytes run past the value list
    if (encoding == 0 && stored != bytes) return nullptr;
    if (encoding == 1 && bytes > static_cast<uint64_t>(stored) * kMaxInflateRatio + 64) return nullptr;

    if (instance->scratchCapacity < bytes) {
        if (instance->scratch) freeScratch_.push_back({instance->scratch, instance->scratchCapacity});
        instance->scratch = nullptr;
        instance->scratchCapacity = 0;
        size_t best = freeScratch_.size();
        for (size_t i = 0; i < freeScratch_.size(); ++i) {
            if (freeScratch_[i].capacity >= bytes &&
                (best == freeScratch_.size() || freeScratch_[i].capacity < freeScratch_[best].capacity)) {
                best = i;
            }
        }
        if (best < freeScratch_.size()) {
            instance->scratch = freeScratch_[best].data;
            instance->scratchCapacity = freeScratch_[best].capacity;
            freeScratch_.erase(freeScratch_.begin() + static_cast<std::ptrdiff_t>(best));
        } else {
            const uint64_t capacity = (bytes + 15) & ~uint64_t{15};
            instance->scratch = static_cast<uint8_t*>(std::aligned_alloc(16, capacity));
            if (!instance->scratch) return nullptr;
            instance->scratchCapacity = capacity;
        }
    }
    uint8_t* out = instance->scratch;

    if (encoding == 0) {
        std::memcpy(out, p + 12, bytes);
    } else {
        if (!inflater_) inflater_.reset(new FbxInflater);
        z_stream& z = inflater_->z;
        if (!inflater_->ready) {
            if (inflateInit(&z) != Z_OK) return nullptr;
            inflater_->ready = true;
        } else if (inflateReset(&z) != Z_OK) {
            return nullptr;
        }
        z.next_in = const_cast<Bytef*>(p + 12);
        z.avail_in = stored;
        z.next_out = out;
        z.avail_out = static_cast<uInt>(bytes);
        const int result = inflate(&z, Z_FINISH);
        // Exactly the stored bytes consumed and exactly the array produced.
        if ((result != Z_STREAM_END && result != Z_OK && result != Z_BUF_ERROR) || z.total_in != stored ||
            z.total_out != bytes) {
            return nullptr;
        }
    }
    bytes_->Release(p + 12, stored);  // the array lives on in its scratch buffer
    if (bigEndian_ && sizeof(T) > 1) SwapElements<sizeof(T)>(out, elements);
    if (reinterpret_cast<uintptr_t>(out) % 16 != 0) return nullptr;
    count = elements;
    return reinterpret_cast<const T*>(out);
}

const uint8_t* FbxFieldStream::ReadArrayOfBool(size_t& count) { return ReadArray<uint8_t>('b', count); }
const uint8_t* FbxFieldStream::ReadArrayOfByte(size_t& count) { return ReadArray<uint8_t>('c', count); }
const int16_t* FbxFieldStream::ReadArrayOfShort(size_t& count) { return ReadArray<int16_t>('h', count); }
const int32_t* FbxFieldStream::ReadArrayOfInt(size_t& count) { return ReadArray<int32_t>('i', count); }
const int64_t* FbxFieldStream::ReadArrayOfLong(size_t& count) { return ReadArray<int64_t>('l', count); }
const float* FbxFieldStream::ReadArrayOfFloat(size_t& count) { return ReadArray<float>('f', count); }
const double* FbxFieldStream::ReadArrayOfDouble(size_t& count) { return ReadArray<double>('d', count); }

// By-name readers: BeginField, read, EndField.
#define FBX_READ_BY_NAME(Type, Reader)                                   \
    Type FbxFieldStream::Reader(std::string_view name, Type defaultValue) { \
        if (!BeginField(name)) return defaultValue;                      \
        const Type value = Reader();                                     \
        EndField();                                                      \
        return value;                                                    \
    }
FBX_READ_BY_NAME(int32_t, ReadInt)
FBX_READ_BY_NAME(int64_t, ReadLong)
FBX_READ_BY_NAME(float, ReadFloat)
FBX_READ_BY_NAME(double, ReadDouble)
FBX_READ_BY_NAME(bool, ReadBool)
FBX_READ_BY_NAME(char, ReadChar)
#undef FBX_READ_BY_NAME

std::string FbxFieldStream::ReadString(std::string_view name, const std::string& defaultValue) {
    if (!BeginField(name)) return defaultValue;
    std::string value = ReadString();
    EndField();
    return value;
}

void FbxFieldStream::ReadDoubles(std::string_view name, double* out, int count, const double* defaultValue) {
    const bool present = BeginField(name, 0);
    for (int i = 0; i < count; ++i) {
        out[i] = present && ValuesLeft() > 0 ? ReadDouble() : defaultValue[i];
    }
    if (present) EndField();
}

void FbxFieldStream::ReadDouble3(std::string_view name, double out[3], const double defaultValue[3]) {
    ReadDoubles(name, out, 3, defaultValue);
}

void FbxFieldStream::ReadFloat3(std::string_view name, float out[3], const float defaultValue[3]) {
    const bool present = BeginField(name, 0);
    for (int i = 0; i < 3; ++i) out[i] = present && ValuesLeft() > 0 ? ReadFloat() : defaultValue[i];
    if (present) EndField();
}
