// Walks every record and value of binary FBX files through the field stream
// and prints a summary per file (or, with -v, the whole tree; with -n arrays
// are skipped, not inflated). Exit 0 when every file opened and every block
// could be read.
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>

#include "fbx_walk.h"

namespace {

struct Totals {
    uint64_t records = 0;
    uint64_t values = 0;
    uint64_t arrays = 0;
    uint64_t arrayElements = 0;
    uint64_t emptyArrays = 0;
    uint64_t badBlocks = 0;
    int maxDepth = 0;
};

bool skipArrays = false;

void ReadValues(FbxFieldStream& stream, Totals& totals, bool verbose, int depth) {
    while (stream.ValuesLeft() > 0) {
        const char code = stream.ValueCode();
        ++totals.values;
        if (skipArrays && code >= 'a') {
            stream.ReadByte();
            continue;
        }
        size_t count = 0;
        const void* array = nullptr;
        switch (code) {
        case 'b': array = stream.ReadArrayOfBool(count); break;
        case 'c': array = stream.ReadArrayOfByte(count); break;
        case 'h': array = stream.ReadArrayOfShort(count); break;
        case 'i': array = stream.ReadArrayOfInt(count); break;
        case 'l': array = stream.ReadArrayOfLong(count); break;
        case 'f': array = stream.ReadArrayOfFloat(count); break;
        case 'd': array = stream.ReadArrayOfDouble(count); break;
        case 'S': {
            const std::string text = stream.ReadString();
            if (verbose) std::printf("%*s  S \"%s\"\n", depth * 2, "", text.c_str());
            continue;
        }
        case 'R': {
            size_t length = 0;
            stream.ReadBlob(length);
            if (verbose) std::printf("%*s  R %zu bytes\n", depth * 2, "", length);
            continue;
        }
        case 'F':
        case 'D': {
            const double value = stream.ReadDouble();
            if (verbose) std::printf("%*s  %c %g\n", depth * 2, "", code, value);
            continue;
        }
        default: {
            const int64_t value = code == 'L' ? stream.ReadLong() : stream.ReadInt();
            if (verbose) std::printf("%*s  %c %" PRId64 "\n", depth * 2, "", code, value);
            continue;
        }
        }
        ++totals.arrays;
        totals.arrayElements += count;
        if (!array) ++totals.emptyArrays;
        if (verbose) std::printf("%*s  %c[%zu]%s\n", depth * 2, "", code, count, array ? "" : " (empty)");
    }
}

void Walk(FbxFieldStream& stream, Totals& totals, bool verbose) {
    const fbxwalk::WalkTotals walk = fbxwalk::WalkFields(stream, [&](const std::string& name, int, int depth) {
        ++totals.records;
        if (verbose) std::printf("%*s%s (%d values)\n", depth * 2, "", name.c_str(), stream.ValueCount());
        ReadValues(stream, totals, verbose, depth);
    });
    totals.badBlocks = walk.badBlocks;
    totals.maxDepth = walk.maxDepth;
}

}  // namespace

int main(int argc, char** argv) {
    bool verbose = false;
    int failures = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "-v") == 0) {
            verbose = true;
            continue;
        }
        if (std::strcmp(argv[i], "-n") == 0) {
            skipArrays = true;
            continue;
        }
        FbxStatus status;
        FbxFileHeaderInfo info;
        auto stream = FbxOpenFieldStream(argv[i], status, true, &info);
        if (!stream) {
            std::printf("%s: open failed, code %d: %s\n", argv[i], status.GetCode(), status.GetErrorString().c_str());
            ++failures;
            continue;
        }
        Totals totals;
        Walk(*stream, totals, verbose);
        std::printf("%s: version %d type %d%s header %d tc %d sections %d records %" PRIu64 " values %" PRIu64
                    " arrays %" PRIu64 " (%" PRIu64 " elements, %" PRIu64 " empty) depth %d bad blocks %" PRIu64
                    " status %d\n",
                    argv[i], stream->FileVersion(), stream->BinaryType(), stream->IsBigEndian() ? " BE" : "",
                    info.fbxHeaderVersion, stream->TCDefinition(), stream->SectionCount(), totals.records,
                    totals.values, totals.arrays, totals.arrayElements, totals.emptyArrays, totals.maxDepth,
                    totals.badBlocks, stream->Status().GetCode());
        if (totals.badBlocks != 0) ++failures;
    }
    return failures == 0 ? 0 : 1;
}
