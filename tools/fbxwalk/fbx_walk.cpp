#include "fbx_walk.h"

#include <vector>

namespace fbxwalk {

WalkTotals WalkFields(FbxFieldStream& stream, const FieldVisit& visit) {
    struct Level {
        int field = 0;
        int instance = 0;
    };
    WalkTotals totals;
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
        visit(name, level.instance, static_cast<int>(levels.size()) - 1);
        if (stream.HasBlock()) {
            if (stream.BeginBlock()) {
                levels.push_back(Level());
                if (static_cast<int>(levels.size()) > totals.maxDepth) totals.maxDepth = static_cast<int>(levels.size());
                continue;
            }
            ++totals.badBlocks;
        }
        ++level.instance;
    }
    return totals;
}

void ReadEveryValue(FbxFieldStream& stream) {
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

}  // namespace fbxwalk
