#include "fbx_writer.h"

#include <zlib.h>

#include <cstdio>
#include <cstring>

namespace fbxwriter {

const uint8_t kTrailerMagic[16] = {0xf8, 0x5a, 0x8c, 0x6a, 0xde, 0xf5, 0xd9, 0x7e,
                                   0xec, 0xe9, 0x0c, 0xe3, 0x75, 0x8f, 0x29, 0x0b};

Value Value::Float(float v) {
    Value value;
    value.code = 'F';
    value.real = v;
    return value;
}

Value Value::Double(double v) {
    Value value;
    value.code = 'D';
    value.real = v;
    return value;
}

Value Value::String(std::string_view text) {
    Value value;
    value.code = 'S';
    value.bytes = std::string(text);
    return value;
}

Value Value::Raw(std::string_view data) {
    Value value;
    value.code = 'R';
    value.bytes = std::string(data);
    return value;
}

Value Value::Verbatim(std::string_view wholeValue) {
    Value value;
    value.verbatim = std::string(wholeValue);
    return value;
}

std::string ObjectName(std::string_view name, std::string_view className) {
    std::string out(name);
    out += '\0';
    out += '\x01';
    out += className;
    return out;
}

Record PropertyRecord(std::string_view name, std::string_view type, std::string_view label,
                      std::string_view flags) {
    Record record("P");
    record.String(name).String(type).String(label).String(flags);
    return record;
}

Record ObjectRecord(std::string_view recordName, int64_t id, std::string_view name, std::string_view className,
                    std::string_view subType) {
    Record record{std::string(recordName)};
    record.Long(id).String(ObjectName(name, className)).String(subType);
    record.block = true;
    return record;
}

Record ConnectionOO(int64_t source, int64_t destination) {
    Record record("C");
    record.String("OO").Long(source).Long(destination);
    return record;
}

Record ConnectionOP(int64_t source, int64_t destination, std::string_view property) {
    Record record("C");
    record.String("OP").Long(source).Long(destination).String(property);
    return record;
}

Record ConnectionPO(int64_t source, std::string_view sourceProperty, int64_t destination) {
    Record record("C");
    record.String("PO").Long(source).String(sourceProperty).Long(destination);
    return record;
}

Record ConnectionPP(int64_t source, std::string_view sourceProperty, int64_t destination,
                    std::string_view destinationProperty) {
    Record record("C");
    record.String("PP").Long(source).String(sourceProperty).Long(destination).String(destinationProperty);
    return record;
}

Record HeaderExtension(int32_t headerVersion, int32_t fbxVersion, std::optional<int32_t> tcDefinition,
                       std::string_view creator) {
    Record ext("FBXHeaderExtension");
    ext.Add("FBXHeaderVersion").Int(headerVersion);
    ext.Add("FBXVersion").Int(fbxVersion);
    Record& stamp = ext.Add("CreationTimeStamp");
    const int32_t date[] = {1000, 2024, 5, 17, 13, 45, 30, 250};
    const char* names[] = {"Version", "Year", "Month", "Day", "Hour", "Minute", "Second", "Millisecond"};
    for (size_t i = 0; i < 8; ++i) stamp.Add(names[i]).Int(date[i]);
    ext.Add("Creator").String(creator);
    if (headerVersion >= 1003) {
        Record& flags = ext.Add("OtherFlags");
        flags.Add("FlagPLE").Int(0);
        if (headerVersion >= 1004 && tcDefinition) flags.Add("TCDefinition").Int(*tcDefinition);
    }
    return ext;
}

namespace {

size_t ElementSize(char code) {
    switch (code) {
    case 'b':
    case 'c': return 1;
    case 'h': return 2;
    case 'i':
    case 'f': return 4;
    case 'l':
    case 'd': return 8;
    default: return 0;
    }
}

class Output {
public:
    Output(bool bigEndian, int layout) : bigEndian_(bigEndian), layout_(layout) {}

    std::vector<uint8_t> bytes;

    void Bytes(const void* data, size_t size) {
        const auto* p = static_cast<const uint8_t*>(data);
        bytes.insert(bytes.end(), p, p + size);
    }
    // An integer of `size` bytes in the file's byte order.
    void Word(uint64_t value, size_t size) {
        for (size_t i = 0; i < size; ++i) {
            const size_t shift = bigEndian_ ? (size - 1 - i) * 8 : i * 8;
            bytes.push_back(static_cast<uint8_t>(value >> shift));
        }
    }
    void PatchWord(size_t at, uint64_t value, size_t size) {
        for (size_t i = 0; i < size; ++i) {
            const size_t shift = bigEndian_ ? (size - 1 - i) * 8 : i * 8;
            bytes[at + i] = static_cast<uint8_t>(value >> shift);
        }
    }
    size_t RecordWord() const { return layout_ == 1 ? 8 : 4; }
    void Terminator() { bytes.insert(bytes.end(), RecordWord() * 3 + 1, 0); }

    void WriteValue(const Value& v) {
        if (v.verbatim) {
            Bytes(v.verbatim->data(), v.verbatim->size());
            return;
        }
        bytes.push_back(static_cast<uint8_t>(v.code));
        switch (v.code) {
        case 'C':
        case 'Z': Word(static_cast<uint64_t>(v.integer), 1); return;
        case 'Y': Word(static_cast<uint64_t>(v.integer), 2); return;
        case 'I': Word(static_cast<uint64_t>(v.integer), 4); return;
        case 'L': Word(static_cast<uint64_t>(v.integer), 8); return;
        case 'F': {
            const float f = static_cast<float>(v.real);
            uint32_t bits;
            std::memcpy(&bits, &f, 4);
            Word(bits, 4);
            return;
        }
        case 'D': {
            uint64_t bits;
            std::memcpy(&bits, &v.real, 8);
            Word(bits, 8);
            return;
        }
        case 'S':
        case 'R':
            Word(v.lengthWord.value_or(static_cast<uint32_t>(v.bytes.size())), 4);
            Bytes(v.bytes.data(), v.bytes.size());
            return;
        default: break;
        }
        const size_t elementSize = ElementSize(v.code);
        std::string stored;
        if (v.stored) {
            stored = *v.stored;
        } else {
            std::string elements = v.bytes;
            if (bigEndian_ && elementSize > 1) {
                for (size_t i = 0; i + elementSize <= elements.size(); i += elementSize) {
                    for (size_t a = 0, b = elementSize - 1; a < b; ++a, --b) std::swap(elements[i + a], elements[i + b]);
                }
            }
            if (v.encoding == 1) {
                uLongf length = compressBound(static_cast<uLong>(elements.size()));
                stored.resize(length);
                compress2(reinterpret_cast<Bytef*>(stored.data()), &length,
                          reinterpret_cast<const Bytef*>(elements.data()), static_cast<uLong>(elements.size()),
                          Z_DEFAULT_COMPRESSION);
                stored.resize(length);
            } else {
                stored = std::move(elements);
            }
        }
        Word(v.countWord.value_or(v.arrayCount), 4);
        Word(v.encoding, 4);
        Word(v.storedLength.value_or(static_cast<uint32_t>(stored.size())), 4);
        Bytes(stored.data(), stored.size());
    }

    // Iterative so that deliberately deep trees do not exhaust the stack.
    void WriteRecord(const Record& root) {
        struct Frame {
            const Record* record;
            size_t start;
            size_t next;  // next child to write
        };
        std::vector<Frame> stack;
        stack.push_back({&root, Begin(root), 0});
        while (!stack.empty()) {
            Frame& top = stack.back();
            if (top.next < top.record->children.size()) {
                const Record& child = top.record->children[top.next++];
                stack.push_back({&child, Begin(child), 0});
                continue;
            }
            End(*top.record, top.start);
            stack.pop_back();
        }
    }

private:
    size_t Begin(const Record& r) {
        const size_t start = bytes.size();
        const size_t w = RecordWord();
        Word(0, w);
        Word(r.valueCount.value_or(r.values.size()), w);
        Word(0, w);
        bytes.push_back(r.nameLength.value_or(static_cast<uint8_t>(r.name.size())));
        Bytes(r.name.data(), r.name.size());
        const size_t listStart = bytes.size();
        for (const Value& v : r.values) WriteValue(v);
        PatchWord(start + 2 * w, r.valueListLength.value_or(bytes.size() - listStart), w);
        return start;
    }
    void End(const Record& r, size_t start) {
        if ((r.block || !r.children.empty()) && !r.omitTerminator) Terminator();
        uint64_t end = bytes.size();
        if (r.endOffsetDelta) end = static_cast<uint64_t>(static_cast<int64_t>(end) + *r.endOffsetDelta);
        if (r.endOffset) end = *r.endOffset;
        PatchWord(start, end, RecordWord());
    }

    bool bigEndian_;
    int layout_;
};

void WriteSectionTail(Output& out, const Options& options, uint32_t backFrom, std::optional<uint32_t> backOffset,
                      uint32_t version) {
    if (options.rootTerminator) out.Terminator();
    if (!options.trailer) return;
    // The 16-byte integrity code; the reader does not check it.
    for (int i = 0; i < 16; ++i) out.bytes.push_back(static_cast<uint8_t>(0xA0 + i));
    while (out.bytes.size() % 16 != 0) out.bytes.push_back(0);
    const uint64_t t = out.bytes.size();
    out.Word(backOffset.value_or(backFrom == 0 ? 0 : static_cast<uint32_t>(t - backFrom)), 4);
    out.Word(version, 4);
    out.bytes.insert(out.bytes.end(), 120, 0);
    out.Bytes(kTrailerMagic, 16);
}

}  // namespace

std::vector<uint8_t> Write(const std::vector<Record>& records, const Options& options,
                           const std::vector<Section>& extraSections) {
    const int layout = options.recordLayout.value_or(options.version >= 7500 ? 1 : 0);
    Output out(options.bigEndian, layout);
    std::string magic = options.magic;
    magic.resize(21, '\0');
    out.Bytes(magic.data(), 21);
    out.bytes.push_back(options.byte21);
    out.bytes.push_back(options.bigEndian ? 1 : 0);
    out.Word(options.version, 4);
    for (const Record& r : records) out.WriteRecord(r);
    WriteSectionTail(out, options, 0, std::nullopt, options.trailerVersion.value_or(options.version));
    for (const Section& section : extraSections) {
        const auto start = static_cast<uint32_t>(out.bytes.size());
        for (const Record& r : section.records) out.WriteRecord(r);
        WriteSectionTail(out, options, start, section.backOffset, section.version);
    }
    return out.bytes;
}

bool SaveFile(const std::string& path, const std::vector<uint8_t>& bytes) {
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    const bool ok = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    return std::fclose(f) == 0 && ok;
}

}  // namespace fbxwriter
