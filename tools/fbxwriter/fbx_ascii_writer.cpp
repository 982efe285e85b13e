#include <charconv>
#include <cstring>

#include "fbx_writer.h"

namespace fbxwriter {

namespace {

template <typename T>
void Number(std::string& out, T value) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    out.append(buffer, result.ptr);
}

void Quoted(std::string& out, std::string_view bytes) {
    // Two-part names are written "Class::Name".
    std::string text;
    const size_t mark = bytes.find(std::string_view("\0\x01", 2));
    if (mark == std::string_view::npos) {
        text = bytes;
    } else {
        text = std::string(bytes.substr(mark + 2)) + "::" + std::string(bytes.substr(0, mark));
    }
    out += '"';
    for (char c : text) {
        if (c == '"') {
            out += "&quot;";
        } else if (c == '\n') {
            out += "&lf;";
        } else if (c == '\r') {
            out += "&cr;";
        } else {
            out += c;
        }
    }
    out += '"';
}

void Base64(std::string& out, std::string_view bytes) {
    static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    out += '"';
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t n = std::min<size_t>(3, bytes.size() - i);
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k) group = (group << 8) | (k < n ? static_cast<uint8_t>(bytes[i + k]) : 0u);
        for (size_t k = 0; k < 4; ++k) out += k <= n ? kDigits[(group >> (18 - 6 * k)) & 63] : '=';
    }
    out += '"';
}

template <typename T>
T Element(const std::string& bytes, size_t index) {
    T value;
    std::memcpy(&value, bytes.data() + index * sizeof(T), sizeof(T));
    return value;
}

void ArrayValue(std::string& out, const Record& record, const Value& v, const std::string& indent) {
    out += '*';
    Number(out, v.arrayCount);
    out += " {\n" + indent + "\ta: ";
    for (uint32_t k = 0; k < v.arrayCount; ++k) {
        if (k > 0) out += ',';
        switch (v.code) {
        case 'b':
        case 'c': Number(out, static_cast<unsigned>(Element<uint8_t>(v.bytes, k))); break;
        case 'h': Number(out, Element<int16_t>(v.bytes, k)); break;
        case 'i': Number(out, Element<int32_t>(v.bytes, k)); break;
        case 'l': Number(out, Element<int64_t>(v.bytes, k)); break;
        case 'f':
            // Tools write key attribute data as the bits of its floats.
            if (record.name == "KeyAttrDataFloat") {
                Number(out, Element<int32_t>(v.bytes, k));
            } else {
                Number(out, Element<float>(v.bytes, k));
            }
            break;
        default: Number(out, Element<double>(v.bytes, k)); break;
        }
    }
    out += "\n" + indent + "} ";
}

void ScalarValue(std::string& out, const Value& v) {
    switch (v.code) {
    case 'C': {
        const char c = static_cast<char>(v.integer);
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) {
            out += c;
        } else {
            Number(out, v.integer);
        }
        break;
    }
    case 'F': Number(out, static_cast<float>(v.real)); break;
    case 'D': Number(out, v.real); break;
    case 'S': Quoted(out, v.bytes); break;
    case 'R': Base64(out, v.bytes); break;
    default: Number(out, v.integer); break;
    }
}

}  // namespace

std::string WriteAscii(const std::vector<Record>& records, uint32_t version) {
    std::string out = "; FBX " + std::to_string(version / 1000) + "." + std::to_string(version % 1000 / 100) + "." +
                      std::to_string(version % 100) + " project file\n";
    out += "; ----------------------------------------------------\n\n";
    // Iterative, like the binary writer, so deep trees cost no stack.
    struct Frame {
        const Record* record;
        size_t next;
    };
    std::vector<Frame> stack;
    auto begin = [&](const Record& r) {
        const std::string indent(stack.size(), '\t');
        out += indent + r.name + ": ";
        for (size_t k = 0; k < r.values.size(); ++k) {
            const Value& v = r.values[k];
            if (k > 0) out += v.code == 'S' ? ", " : ",";
            if (v.code >= 'a') {
                ArrayValue(out, r, v, indent);
            } else {
                ScalarValue(out, v);
            }
        }
        const bool block = r.block || !r.children.empty();
        out += block ? " {\n" : "\n";
        stack.push_back({&r, 0});
    };
    for (const Record& root : records) {
        begin(root);
        while (!stack.empty()) {
            Frame& top = stack.back();
            if (top.next < top.record->children.size()) {
                begin(top.record->children[top.next++]);
                continue;
            }
            const bool block = top.record->block || !top.record->children.empty();
            stack.pop_back();
            if (block) out += std::string(stack.size(), '\t') + "}\n";
        }
    }
    return out;
}

}  // namespace fbxwriter
