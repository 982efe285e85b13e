// Shared helpers of the text FBX tests: text bodies opened the way the reader
// opens files, and the values of a record rendered as text for comparison.
#pragma once

#include <cinttypes>
#include <cstdio>
#include <memory>
#include <string>

#include "fbx/fbx_field_stream.h"

namespace asciitest {

inline const std::string kName = "fixture.fbx";
inline const std::string kVersionLine = "; FBX 7.4.0 project file\n";

inline std::unique_ptr<FbxFieldStream> OpenBytes(const std::string& bytes, FbxStatus& status) {
    return FbxOpenFieldStream(FbxFileBytes::Copy(bytes.data(), bytes.size()), kName, status, true, nullptr);
}

// A text file: the version line, then the body.
inline std::unique_ptr<FbxFieldStream> OpenText(const std::string& body, FbxStatus& status) {
    return OpenBytes(kVersionLine + body, status);
}

inline std::string Real(double v, int digits) {
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%.*g", digits, v);
    return buffer;
}

// The count is taken by pointer: it is set by the array read in the same call's arguments.
template <typename T>
std::string Join(const T* data, const size_t* count, int digits = 0) {
    std::string out;
    for (size_t k = 0; data && k < *count; ++k) {
        if (k > 0) out += ',';
        if constexpr (std::is_floating_point_v<T>) {
            out += Real(data[k], digits);
        } else {
            out += std::to_string(static_cast<int64_t>(data[k]));
        }
    }
    return out;
}

// The values of the current instance as "code value; code value": integers in
// decimal, reals in their shortest exact form, strings and raw values as their
// stored bytes (others than printable ASCII as \xNN), arrays as their elements.
inline std::string Render(FbxFieldStream& s) {
    std::string out;
    while (s.ValuesLeft() > 0) {
        if (!out.empty()) out += "; ";
        const char code = s.ValueCode();
        out += code;
        out += ' ';
        size_t n = 0;
        switch (code) {
        case 'C': out += s.ReadChar(); break;
        case 'Z': out += std::to_string(s.ReadByte()); break;
        case 'Y': out += std::to_string(s.ReadShort()); break;
        case 'I': out += std::to_string(s.ReadInt()); break;
        case 'L': out += std::to_string(s.ReadLong()); break;
        case 'F': out += Real(s.ReadFloat(), 9); break;
        case 'D': out += Real(s.ReadDouble(), 17); break;
        case 'S':
        case 'R': {
            const uint8_t* p = s.ReadBlob(n);
            for (size_t k = 0; p && k < n; ++k) {
                if (p[k] >= 0x20 && p[k] < 0x7f) {
                    out += static_cast<char>(p[k]);
                } else {
                    char hex[8];
                    std::snprintf(hex, sizeof hex, "\\x%02x", p[k]);
                    out += hex;
                }
            }
            break;
        }
        case 'b': out += Join(s.ReadArrayOfBool(n), &n); break;
        case 'c': out += Join(s.ReadArrayOfByte(n), &n); break;
        case 'h': out += Join(s.ReadArrayOfShort(n), &n); break;
        case 'i': out += Join(s.ReadArrayOfInt(n), &n); break;
        case 'l': out += Join(s.ReadArrayOfLong(n), &n); break;
        case 'f': out += Join(s.ReadArrayOfFloat(n), &n, 9); break;
        case 'd': out += Join(s.ReadArrayOfDouble(n), &n, 17); break;
        default: s.ReadByte(); break;
        }
    }
    return out;
}

}  // namespace asciitest
