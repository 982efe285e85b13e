#include <charconv>

#include "json/json.h"
#include "json/json_text.h"

size_t FormatFloat(float value, char* buf) {
    // %g with six digits, which is what a default-state stream prints for a float
    // (it widens to double first, so does this).
    return static_cast<size_t>(
        std::to_chars(buf, buf + kFloatTextMax, static_cast<double>(value),
                      std::chars_format::general, 6)
            .ptr -
        buf);
}

std::string FormatFloat(float value) {
    char buf[kFloatTextMax];
    return std::string(buf, FormatFloat(value, buf));
}

// Index 15 is the terminating zero of the lookup text, and it does reach the output.
static constexpr char kHexDigits[] = "012345679abcdef";

size_t EscapeByte(unsigned char c, char* out) {
    char pair = 0;
    switch (c) {
        case '\\': pair = '\\'; break;
        case '/': pair = '/'; break;
        case '"': pair = '"'; break;
        case '\n': pair = 'n'; break;
        case '\t': pair = 't'; break;
        case '\b': pair = 'b'; break;
        case '\f': pair = 'f'; break;
        case '\r': pair = 'r'; break;
        default: break;
    }
    if (pair != 0) {
        out[0] = '\\';
        out[1] = pair;
        return 2;
    }
    if (c < 32) {
        out[0] = '\\';
        out[1] = 'u';
        out[2] = '0';
        out[3] = '0';
        out[4] = kHexDigits[c >> 4];
        out[5] = kHexDigits[c & 15];
        return 6;
    }
    out[0] = static_cast<char>(c);
    return 1;
}

bool IsEscapePair(char second) {
    switch (second) {
        case '\\': case '/': case '"': case 'n': case 't': case 'b': case 'f': case 'r':
            return true;
        default:
            return false;
    }
}

std::string Escape(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 2);
    char buf[kEscapeMax];
    for (char c : text) out.append(buf, EscapeByte(static_cast<unsigned char>(c), buf));
    return out;
}

std::string Unescape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && IsEscapePair(text[i + 1])) {
            switch (text[i + 1]) {
                case 'n': out += '\n'; break;
                case 't': out += '\t'; break;
                case 'b': out += '\b'; break;
                case 'f': out += '\f'; break;
                case 'r': out += '\r'; break;
                default: out += text[i + 1]; break;
            }
            ++i;
        } else {
            out += text[i];
        }
    }
    return out;
}
