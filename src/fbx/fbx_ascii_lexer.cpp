#include "fbx/fbx_ascii_lexer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

enum CharClass : uint8_t { kWordChar = 0, kBlank = 1, kDelimiter = 2 };

constexpr std::array<uint8_t, 256> MakeClasses() {
    std::array<uint8_t, 256> classes{};
    for (char c : {' ', '\t', '\r', '\n', '\v', '\f'}) classes[static_cast<uint8_t>(c)] = kBlank;
    for (char c : {',', '{', '}', ';', '"', ':'}) classes[static_cast<uint8_t>(c)] = kDelimiter;
    return classes;
}
constexpr std::array<uint8_t, 256> kClasses = MakeClasses();

uint8_t ClassOf(char c) { return kClasses[static_cast<uint8_t>(c)]; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
    if (text.size() < prefix.size()) return false;
    for (size_t i = 0; i < prefix.size(); ++i) {
        if (Upper(text[i]) != prefix[i]) return false;
    }
    return true;
}

// "1.#INF", "-1.#IND00" and the like: digits, ".#", a keyword, digits.
bool ParseRuntimeSpecial(std::string_view word, bool negative, double& out) {
    size_t i = 0;
    while (i < word.size() && IsDigit(word[i])) ++i;
    if (i == 0 || word.size() - i < 2 || word[i] != '.' || word[i + 1] != '#') return false;
    std::string_view rest = word.substr(i + 2);
    double value = 0;
    size_t keyword = 0;
    if (StartsWithNoCase(rest, "INF")) {
        value = std::numeric_limits<double>::infinity();
        keyword = 3;
    } else if (StartsWithNoCase(rest, "IND") || StartsWithNoCase(rest, "NAN")) {
        value = std::numeric_limits<double>::quiet_NaN();
        keyword = 3;
    } else if (StartsWithNoCase(rest, "QNAN") || StartsWithNoCase(rest, "SNAN")) {
        value = std::numeric_limits<double>::quiet_NaN();
        keyword = 4;
    } else {
        return false;
    }
    for (size_t k = keyword; k < rest.size(); ++k) {
        if (!IsDigit(rest[k])) return false;
    }
    out = negative ? -value : value;
    return true;
}

// For a real too large or too small for a double: the power of ten of its
// leading digit, positive when it is too large.
int64_t DecimalMagnitude(std::string_view body) {
    int64_t exponent = 0;
    const size_t e = body.find_first_of("eE");
    if (e != std::string_view::npos) {
        std::string_view digits = body.substr(e + 1);
        const bool negative = !digits.empty() && digits[0] == '-';
        if (!digits.empty() && (digits[0] == '-' || digits[0] == '+')) digits.remove_prefix(1);
        for (char c : digits) exponent = exponent < 100000000 ? exponent * 10 + (c - '0') : exponent;
        if (negative) exponent = -exponent;
        body = body.substr(0, e);
    }
    const size_t point = std::min(body.find('.'), body.size());
    const size_t first = body.find_first_of("123456789");
    if (first == std::string_view::npos) return -1;
    const int64_t lead = first < point ? static_cast<int64_t>(point - first) : -static_cast<int64_t>(first - point - 1);
    return lead + exponent;
}

}  // namespace

FbxAsciiToken FbxAsciiLexer::Next() {
    FbxAsciiToken token;
    for (;;) {
        while (at_ < size_ && ClassOf(text_[at_]) == kBlank) ++at_;
        if (at_ < size_ && text_[at_] == ';') {
            const void* end = std::memchr(text_ + at_, '\n', size_ - at_);
            at_ = end ? static_cast<size_t>(static_cast<const char*>(end) - text_) : size_;
            continue;
        }
        break;
    }
    token.offset = at_;
    if (at_ >= size_) return token;
    const char c = text_[at_];
    switch (c) {
    case ',': token.kind = FbxAsciiTokenKind::Comma; ++at_; return token;
    case '{': token.kind = FbxAsciiTokenKind::Open; ++at_; return token;
    case '}': token.kind = FbxAsciiTokenKind::Close; ++at_; return token;
    case '"': {
        const char* begin = text_ + at_ + 1;
        const void* end = std::memchr(begin, '"', size_ - at_ - 1);
        if (!end) {
            token.kind = FbxAsciiTokenKind::Bad;
            at_ = size_;
            return token;
        }
        token.kind = FbxAsciiTokenKind::String;
        token.text = std::string_view(begin, static_cast<size_t>(static_cast<const char*>(end) - begin));
        at_ = static_cast<size_t>(static_cast<const char*>(end) - text_) + 1;
        return token;
    }
    default: break;
    }
    // A word; a lone ':' is a word of its own, which no reader takes.
    const size_t begin = at_;
    while (at_ < size_ && ClassOf(text_[at_]) == kWordChar) ++at_;
    if (at_ == begin) ++at_;
    token.text = std::string_view(text_ + begin, at_ - begin);
    if (at_ < size_ && text_[at_] == ':' && at_ > begin) {
        ++at_;
        token.kind = FbxAsciiTokenKind::Name;
    } else if (token.text[0] == '*') {
        token.kind = FbxAsciiTokenKind::Array;
        token.text.remove_prefix(1);
    } else {
        token.kind = FbxAsciiTokenKind::Word;
    }
    return token;
}

bool FbxParseAsciiNumber(std::string_view word, FbxAsciiNumber& out) {
    if (word.empty()) return false;
    const bool negative = word[0] == '-';
    const bool sign = negative || word[0] == '+';
    std::string_view body = sign ? word.substr(1) : word;
    if (body.empty() || body[0] == '+' || body[0] == '-') return false;

    // Plain integers, the common case, without the general parser.
    size_t digits = 0;
    uint64_t magnitude = 0;
    bool overflow = false;
    while (digits < body.size() && IsDigit(body[digits])) {
        const auto digit = static_cast<uint64_t>(body[digits] - '0');
        if (magnitude > (std::numeric_limits<uint64_t>::max() - digit) / 10) overflow = true;
        magnitude = magnitude * 10 + digit;
        ++digits;
    }
    if (digits == body.size() && !overflow) {
        constexpr uint64_t kNegativeLimit = uint64_t{1} << 63;
        if (!negative || magnitude <= kNegativeLimit) {
            out.integer = true;
            // Beyond the signed range an unsigned value keeps its bits.
            out.i = negative ? static_cast<int64_t>(0 - magnitude) : static_cast<int64_t>(magnitude);
            out.d = negative ? -static_cast<double>(magnitude) : static_cast<double>(magnitude);
            return true;
        }
    }

    out.integer = false;
    if (ParseRuntimeSpecial(body, negative, out.d)) return true;
    double value = 0;
    const char* end = body.data() + body.size();
    const auto result = std::from_chars(body.data(), end, value, std::chars_format::general);
    // Out of range still gives the rounded value (infinity or zero), as a
    // C runtime would read it.
    if (result.ptr != end) return false;
    if (result.ec != std::errc() && result.ec != std::errc::result_out_of_range) return false;
    if (result.ec == std::errc::result_out_of_range) {
        value = DecimalMagnitude(body) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    }
    out.d = negative ? -value : value;
    return true;
}

void FbxDecodeAsciiString(std::string_view raw, std::string& out) {
    out.clear();
    size_t from = 0;
    for (;;) {
        const size_t amp = raw.find('&', from);
        if (amp == std::string_view::npos) break;
        std::string_view rest = raw.substr(amp);
        char replacement = 0;
        size_t length = 0;
        if (rest.substr(0, 6) == "&quot;") {
            replacement = '"';
            length = 6;
        } else if (rest.substr(0, 4) == "&lf;") {
            replacement = '\n';
            length = 4;
        } else if (rest.substr(0, 4) == "&cr;") {
            replacement = '\r';
            length = 4;
        }
        if (length == 0) {
            out.append(raw.substr(from, amp + 1 - from));
            from = amp + 1;
            continue;
        }
        out.append(raw.substr(from, amp - from));
        out += replacement;
        from = amp + length;
    }
    out.append(raw.substr(from));
}
