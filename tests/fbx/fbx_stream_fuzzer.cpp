// libFuzzer entry for the field stream: any bytes must open or fail cleanly,
// and every record, value and array of an opened file must read without
// fault, in every section.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fbx/fbx_field_stream.h"

namespace {

void ReadValues(FbxFieldStream& stream) {
    size_t count = 0;
    while (stream.ValuesLeft() > 0) {
        switch (stream.ValueCode()) {
        case 'b': stream.ReadArrayOfBool(count); break;
        case 'c': stream.ReadArrayOfByte(count); break;
        case 'h': stream.ReadArrayOfShort(count); break;
        case 'i': stream.ReadArrayOfInt(count); break;
        case 'l': stream.ReadArrayOfLong(count); break;
        case 'f': stream.ReadArrayOfFloat(count); break;
        case 'd': stream.ReadArrayOfDouble(count); break;
        case 'S': stream.ReadString(); break;
        case 'R': stream.ReadBlob(count); break;
        case 'C': stream.ReadChar(); break;
        case 'F': stream.ReadFloat(); break;
        case 'D': stream.ReadDouble(); break;
        case 'L': stream.ReadLong(); break;
        default: stream.ReadInt(); break;
        }
    }
}

void Walk(FbxFieldStream& stream) {
    struct Level {
        int field = 0;
        int instance = 0;
    };
    std::vector<Level> levels(1);
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.field >= stream.FieldNameCount()) {
            levels.pop_back();
            if (!levels.empty()) {
                stream.EndBlock();
                ++levels.back().instance;
            }
            continue;
        }
        const std::string name = stream.FieldName(level.field);
        if (level.instance >= stream.FieldCount(name)) {
            ++level.field;
            level.instance = 0;
            continue;
        }
        stream.BeginField(name, level.instance);
        ReadValues(stream);
        if (stream.HasBlock() && stream.BeginBlock()) {
            levels.push_back(Level());
            continue;
        }
        ++level.instance;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FbxStatus status;
    FbxFileHeaderInfo info;
    auto stream = FbxOpenFieldStream(FbxFileBytes::Borrow(data, size), "fuzz.fbx", status, true, &info);
    if (!stream) return 0;
    Walk(*stream);
    for (int section = 1; section < stream->SectionCount() && section < 4; ++section) {
        stream->CloseSection();
        if (stream->OpenSection(section)) Walk(*stream);
    }
    return 0;
}
