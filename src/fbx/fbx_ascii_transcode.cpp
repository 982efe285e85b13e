#include "fbx/fbx_ascii_transcode.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

#include "fbx/fbx_ascii_codes.h"
#include "fbx/fbx_ascii_lexer.h"

namespace {

using Kind = FbxAsciiTokenKind;

constexpr uint64_t kWord = 8;                    // record words of the layout written
constexpr uint64_t kRecordHeader = 3 * kWord + 1;  // end, count, list length, name length
constexpr char kMagic[21] = "Kaydara FBX Binary  ";

size_t ElementSize(char code) {
    switch (code) {
    case 'b':
    case 'c': return 1;
    case 'i':
    case 'f': return 4;
    default: return 8;
    }
}

bool FitsInt32(int64_t v) { return v >= std::numeric_limits<int32_t>::min() && v <= std::numeric_limits<int32_t>::max(); }

// An integer as written fits 32 bits; values beyond the signed 64-bit range
// hold their bits in i, so the written value is judged by d.
bool WrittenFitsInt32(const FbxAsciiNumber& n) { return n.d >= -2147483648.0 && n.d <= 2147483647.0; }

// A real as a 64-bit integer, truncated, when it has one.
bool RealToInt(double d, int64_t& out) {
    if (!std::isfinite(d) || d <= -9223372036854775808.0 || d >= 9223372036854775808.0) return false;
    out = static_cast<int64_t>(d);
    return true;
}

bool AsInt(const FbxAsciiNumber& n, int64_t& out) {
    if (n.integer) {
        out = n.i;
        return true;
    }
    return RealToInt(n.d, out);
}

// The number's integer part when the written value lies in [low, high].
bool AsIntIn(const FbxAsciiNumber& n, int64_t low, int64_t high, int64_t& out) {
    if (!AsInt(n, out)) return false;
    const double written = n.integer ? n.d : static_cast<double>(out);
    return written >= static_cast<double>(low) && written <= static_cast<double>(high);
}

int Base64Digit(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return -1;
}

// Standard base64 with '=' padding into out; false (out unspecified) when the
// text is not such base64.
bool DecodeBase64(std::string_view text, std::string& out) {
    out.clear();
    if (text.size() % 4 != 0) return false;
    size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') ++padding;
    const size_t digits = text.size() - padding;
    out.reserve(text.size() / 4 * 3);
    uint32_t group = 0;
    for (size_t i = 0; i < digits; ++i) {
        const int d = Base64Digit(text[i]);
        if (d < 0) return false;
        group = (group << 6) | static_cast<uint32_t>(d);
        if (i % 4 == 3) {
            out += static_cast<char>(group >> 16);
            out += static_cast<char>(group >> 8);
            out += static_cast<char>(group);
            group = 0;
        }
    }
    if (padding == 1) {  // three digits: two bytes
        out += static_cast<char>(group >> 10);
        out += static_cast<char>(group >> 2);
    } else if (padding == 2) {  // two digits: one byte
        out += static_cast<char>(group >> 4);
    }
    return true;
}

class Transcoder {
public:
    Transcoder(const uint8_t* text, size_t size, std::vector<uint8_t>& out)
        : text_(reinterpret_cast<const char*>(text)), lexer_(text_, size), out_(out) {}

    FbxAsciiFault Run(int32_t version, uint64_t& faultLine);

private:
    struct OpenRecord {
        size_t header;
        std::string_view name;
    };

    bool Fail(FbxAsciiFault fault, const FbxAsciiToken& at) {
        fault_ = fault;
        faultOffset_ = at.offset;
        return false;
    }
    bool Record(const FbxAsciiToken& name);
    bool Values(const FbxAsciiRecordRule& rule, uint64_t& count);
    bool Word(const FbxAsciiRecordRule& rule, uint64_t index, const FbxAsciiToken& word);
    bool Array(const FbxAsciiRecordRule& rule, const FbxAsciiToken& star);
    bool ArrayElements(char code, bool direct, size_t dataAt, uint64_t count, uint64_t& seen);
    bool StoreElement(char code, const FbxAsciiNumber& n, uint8_t* at);
    bool String(const FbxAsciiToken& token);
    bool RawValue(const FbxAsciiToken& token);
    char ScalarCode(const FbxAsciiRecordRule& rule, uint64_t index, const FbxAsciiNumber& n) const;

    void Put(const void* data, size_t size) {
        if (size == 0) return;
        const size_t at = out_.size();
        out_.resize(at + size);
        std::memcpy(out_.data() + at, data, size);
    }
    void PutByte(uint8_t b) { out_.push_back(b); }
    void PutU32(uint32_t v) { Put(&v, 4); }
    void PutZeros(size_t n) { out_.resize(out_.size() + n); }
    void Patch(size_t at, uint64_t v) { std::memcpy(out_.data() + at, &v, 8); }
    void Terminator() { PutZeros(kRecordHeader); }

    const char* text_;
    FbxAsciiLexer lexer_;
    std::vector<uint8_t>& out_;
    std::vector<OpenRecord> open_;
    FbxAsciiFault fault_ = FbxAsciiFault::None;
    size_t faultOffset_ = 0;
    std::string decoded_;       // the current string with its escapes undone
    std::string propertyType_;  // second string of a P record
    std::string raw_;           // strings of a raw value, joined as written
    std::string rawBytes_;      // the same strings decoded from base64, while they all are
    std::string piece_;
    bool base64_ = true;
    bool hasRaw_ = false;
    FbxAsciiToken rawToken_;
    std::vector<FbxAsciiNumber> numbers_;  // elements of arrays whose code depends on them
};

FbxAsciiFault Transcoder::Run(int32_t version, uint64_t& faultLine) {
    Put(kMagic, 21);
    PutByte(0x1A);
    PutByte(0);  // little endian
    const auto v = static_cast<uint32_t>(version);
    PutU32(v);
    bool ok = true;
    for (bool done = false; ok && !done;) {
        const FbxAsciiToken token = lexer_.Take();
        switch (token.kind) {
        case Kind::End:
            if (!open_.empty()) {
                ok = Fail(FbxAsciiFault::UnclosedBlock, token);
                break;
            }
            Terminator();
            done = true;
            break;
        case Kind::Close:
            if (open_.empty()) {
                ok = Fail(FbxAsciiFault::UnbalancedBrace, token);
                break;
            }
            Terminator();
            Patch(open_.back().header, out_.size());
            open_.pop_back();
            break;
        case Kind::Name: ok = Record(token); break;
        case Kind::Bad: ok = Fail(FbxAsciiFault::UnterminatedString, token); break;
        default: ok = Fail(FbxAsciiFault::Unexpected, token); break;
        }
    }
    if (ok) return FbxAsciiFault::None;
    faultLine = 1 + static_cast<uint64_t>(std::count(text_, text_ + faultOffset_, '\n'));
    return fault_;
}

bool Transcoder::Record(const FbxAsciiToken& name) {
    if (name.text.size() > 255) return Fail(FbxAsciiFault::NameTooLong, name);
    const size_t header = out_.size();
    PutZeros(3 * kWord);
    PutByte(static_cast<uint8_t>(name.text.size()));
    Put(name.text.data(), name.text.size());
    const size_t list = out_.size();
    const FbxAsciiRecordRule rule = FbxAsciiRuleFor(name.text, open_.empty() ? std::string_view() : open_.back().name);
    uint64_t count = 0;
    if (!Values(rule, count)) return false;
    Patch(header + kWord, count);
    Patch(header + 2 * kWord, out_.size() - list);
    if (lexer_.Peek().kind == Kind::Open) {
        lexer_.Take();
        open_.push_back({header, name.text});
    } else {
        Patch(header, out_.size());
    }
    return true;
}

bool Transcoder::Values(const FbxAsciiRecordRule& rule, uint64_t& count) {
    bool expectValue = true;  // behind the name or a comma; empty values are skipped
    hasRaw_ = false;
    base64_ = true;
    raw_.clear();
    rawBytes_.clear();
    propertyType_.clear();
    for (;;) {
        const FbxAsciiToken& next = lexer_.Peek();
        if (next.kind == Kind::Comma) {
            lexer_.Take();
            expectValue = true;
            continue;
        }
        if (next.kind == Kind::Bad) return Fail(FbxAsciiFault::UnterminatedString, next);
        if (next.kind != Kind::String && next.kind != Kind::Word && next.kind != Kind::Array) break;
        if (!expectValue) return Fail(FbxAsciiFault::MissingComma, next);
        const FbxAsciiToken token = lexer_.Take();
        expectValue = false;
        if (token.kind == Kind::String) {
            if (rule.kind == FbxAsciiRecordKind::Raw) {
                // Writers split long base64 data over several strings, each padded
                // on its own: each piece is decoded by itself.
                FbxDecodeAsciiString(token.text, decoded_);
                raw_ += decoded_;
                if (base64_ && DecodeBase64(decoded_, piece_)) {
                    rawBytes_ += piece_;
                } else {
                    base64_ = false;
                }
                if (!hasRaw_) rawToken_ = token;
                hasRaw_ = true;
                continue;
            }
            if (!String(token)) return false;
            if (rule.kind == FbxAsciiRecordKind::Property && count == 1) propertyType_ = decoded_;
        } else if (token.kind == Kind::Word) {
            if (!Word(rule, count, token)) return false;
        } else {
            if (!Array(rule, token)) return false;
            ++count;
            break;  // an array ends its value list, as it does in binary files
        }
        ++count;
    }
    if (hasRaw_) {
        if (!RawValue(rawToken_)) return false;
        ++count;
    }
    return true;
}

bool Transcoder::String(const FbxAsciiToken& token) {
    FbxDecodeAsciiString(token.text, decoded_);
    std::string_view text = decoded_;
    if (text.size() > std::numeric_limits<uint32_t>::max()) return Fail(FbxAsciiFault::TooLarge, token);
    // "Class::Name" is stored the binary way, "Name\0\x01Class"; it reads back the same.
    const size_t mark = text.find("::");
    PutByte('S');
    PutU32(static_cast<uint32_t>(text.size()));
    if (mark == std::string_view::npos) {
        Put(text.data(), text.size());
        return true;
    }
    Put(text.data() + mark + 2, text.size() - mark - 2);
    PutByte(0);
    PutByte(1);
    Put(text.data(), mark);
    return true;
}

bool Transcoder::RawValue(const FbxAsciiToken& token) {
    // Embedded media are base64; other raw values may stand as written.
    const std::string& bytes = base64_ ? rawBytes_ : raw_;
    if (bytes.size() > std::numeric_limits<uint32_t>::max()) return Fail(FbxAsciiFault::TooLarge, token);
    PutByte('R');
    PutU32(static_cast<uint32_t>(bytes.size()));
    Put(bytes.data(), bytes.size());
    return true;
}

char Transcoder::ScalarCode(const FbxAsciiRecordRule& rule, uint64_t index, const FbxAsciiNumber& n) const {
    switch (rule.kind) {
    case FbxAsciiRecordKind::Ids: return 'L';
    case FbxAsciiRecordKind::FirstId:
        if (index == 0) return 'L';
        break;
    case FbxAsciiRecordKind::Reals: return 'D';
    case FbxAsciiRecordKind::Property:
        if (index >= 4) return FbxAsciiPropertyCode(propertyType_);
        break;
    default: break;
    }
    if (!n.integer) return 'D';
    return WrittenFitsInt32(n) ? 'I' : 'L';
}

bool Transcoder::Word(const FbxAsciiRecordRule& rule, uint64_t index, const FbxAsciiToken& word) {
    FbxAsciiNumber n;
    if (!FbxParseAsciiNumber(word.text, n)) {
        // Single letters are characters: Shading: T, Type: C.
        const char c = word.text[0];
        if (word.text.size() != 1 || !((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'))) {
            return Fail(FbxAsciiFault::BadValue, word);
        }
        PutByte('C');
        PutByte(static_cast<uint8_t>(c));
        return true;
    }
    char code = ScalarCode(rule, index, n);
    int64_t whole = 0;
    // A real where an integer is due keeps its integer part; one without (NaN,
    // infinity, out of range) stays a real.
    if ((code == 'I' || code == 'L' || code == 'Z') && !AsInt(n, whole)) code = 'D';
    if (code == 'I' && !FitsInt32(whole)) code = 'L';
    PutByte(static_cast<uint8_t>(code));
    switch (code) {
    case 'I': PutU32(static_cast<uint32_t>(whole)); break;
    case 'L': Put(&whole, 8); break;
    case 'Z': PutByte(static_cast<uint8_t>(whole)); break;
    case 'F': {
        const auto f = static_cast<float>(n.d);
        Put(&f, 4);
        break;
    }
    default: Put(&n.d, 8); break;
    }
    return true;
}

bool Transcoder::StoreElement(char code, const FbxAsciiNumber& n, uint8_t* at) {
    int64_t whole = 0;
    switch (code) {
    case 'd': std::memcpy(at, &n.d, 8); return true;
    case 'f': {
        const auto f = static_cast<float>(n.d);
        std::memcpy(at, &f, 4);
        return true;
    }
    case 'l':
        if (!AsInt(n, whole)) return false;
        std::memcpy(at, &whole, 8);
        return true;
    case 'i': {
        if (!AsIntIn(n, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max(), whole)) return false;
        const auto v = static_cast<int32_t>(whole);
        std::memcpy(at, &v, 4);
        return true;
    }
    case 'b':
        if (!AsIntIn(n, 0, 255, whole)) return false;
        *at = static_cast<uint8_t>(whole);
        return true;
    default:  // 'c'
        if (!AsIntIn(n, -128, 255, whole)) return false;
        *at = static_cast<uint8_t>(whole);
        return true;
    }
}

bool Transcoder::Array(const FbxAsciiRecordRule& rule, const FbxAsciiToken& star) {
    // The count: digits only, and no more elements than the rest of the text
    // could hold, so that nothing is reserved for a count the text cannot back.
    uint64_t count = 0;
    if (star.text.empty() || star.text.size() > 19) return Fail(FbxAsciiFault::ArrayCount, star);
    for (char c : star.text) {
        if (c < '0' || c > '9') return Fail(FbxAsciiFault::ArrayCount, star);
        count = count * 10 + static_cast<uint64_t>(c - '0');
    }
    if (count > lexer_.Remaining()) return Fail(FbxAsciiFault::ArrayCount, star);
    const FbxAsciiToken open = lexer_.Take();
    if (open.kind != Kind::Open) return Fail(FbxAsciiFault::BadArray, open);
    if (lexer_.Peek().kind == Kind::Name) {
        const FbxAsciiToken a = lexer_.Take();
        if (a.text != "a") return Fail(FbxAsciiFault::BadArray, a);
    }

    const bool direct = rule.arrayCode != 0 && !rule.floatBits;
    const char directCode = direct ? rule.arrayCode : 'd';
    if (count * ElementSize(directCode) > std::numeric_limits<uint32_t>::max()) {
        return Fail(FbxAsciiFault::TooLarge, star);
    }
    size_t dataAt = 0;
    if (direct) {
        PutByte(static_cast<uint8_t>(directCode));
        const auto elements = static_cast<uint32_t>(count);
        PutU32(elements);
        PutU32(0);  // raw
        PutU32(static_cast<uint32_t>(count * ElementSize(directCode)));
        dataAt = out_.size();
        PutZeros(static_cast<size_t>(count * ElementSize(directCode)));
    } else {
        numbers_.clear();
    }
    uint64_t seen = 0;
    if (!ArrayElements(directCode, direct, dataAt, count, seen)) return false;
    if (direct) return true;

    // The code from the elements: reals make a double array, integers an int
    // array unless one needs 64 bits. Key attribute data keeps float bits.
    char code = rule.arrayCode;
    const bool reals = std::any_of(numbers_.begin(), numbers_.end(), [](const FbxAsciiNumber& n) { return !n.integer; });
    if (code == 0) {
        code = reals ? 'd' : std::all_of(numbers_.begin(), numbers_.end(),
                                         [](const FbxAsciiNumber& n) { return WrittenFitsInt32(n); })
                                 ? 'i'
                                 : 'l';
    }
    const size_t size = ElementSize(code);
    PutByte(static_cast<uint8_t>(code));
    PutU32(static_cast<uint32_t>(count));
    PutU32(0);
    PutU32(static_cast<uint32_t>(count * size));
    dataAt = out_.size();
    PutZeros(static_cast<size_t>(count * size));
    for (size_t k = 0; k < numbers_.size(); ++k) {
        uint8_t* at = out_.data() + dataAt + k * size;
        if (rule.floatBits && !reals) {
            const int64_t bits = numbers_[k].i;
            if (bits < std::numeric_limits<int32_t>::min() || bits > std::numeric_limits<uint32_t>::max()) {
                return Fail(FbxAsciiFault::BadValue, star);
            }
            const auto word = static_cast<uint32_t>(bits);
            std::memcpy(at, &word, 4);
        } else if (!StoreElement(code, numbers_[k], at)) {
            return Fail(FbxAsciiFault::BadValue, star);
        }
    }
    return true;
}

bool Transcoder::ArrayElements(char code, bool direct, size_t dataAt, uint64_t count, uint64_t& seen) {
    const size_t size = ElementSize(code);
    bool expectValue = true;
    for (;;) {
        const FbxAsciiToken token = lexer_.Take();
        switch (token.kind) {
        case Kind::Comma: expectValue = true; continue;
        case Kind::Close:
            if (seen != count) return Fail(FbxAsciiFault::ArrayCount, token);
            return true;
        case Kind::Word: break;
        case Kind::End: return Fail(FbxAsciiFault::UnclosedBlock, token);
        case Kind::Bad: return Fail(FbxAsciiFault::UnterminatedString, token);
        default: return Fail(FbxAsciiFault::BadArray, token);
        }
        if (!expectValue) return Fail(FbxAsciiFault::MissingComma, token);
        expectValue = false;
        FbxAsciiNumber n;
        if (!FbxParseAsciiNumber(token.text, n)) return Fail(FbxAsciiFault::BadValue, token);
        if (seen == count) return Fail(FbxAsciiFault::ArrayCount, token);
        if (direct) {
            if (!StoreElement(code, n, out_.data() + dataAt + seen * size)) return Fail(FbxAsciiFault::BadValue, token);
        } else {
            numbers_.push_back(n);
        }
        ++seen;
    }
}

}  // namespace

FbxAsciiImage FbxTranscodeAscii(const uint8_t* text, size_t size, int32_t version) {
    FbxAsciiImage image;
    try {
        // Most text shrinks or stays the size it was; room for a quarter more
        // saves the first regrowths.
        image.bytes.reserve(size + size / 4 + 64);
        Transcoder transcoder(text, size, image.bytes);
        image.fault = transcoder.Run(version, image.faultLine);
    } catch (const std::bad_alloc&) {
        image.fault = FbxAsciiFault::OutOfMemory;
    } catch (const std::length_error&) {
        image.fault = FbxAsciiFault::OutOfMemory;
    }
    if (image.fault != FbxAsciiFault::None) {
        image.bytes.clear();
        image.bytes.shrink_to_fit();
    }
    return image;
}
