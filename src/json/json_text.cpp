#include <charconv>

#include "json/json.h"
#include "json/json_text.h"

namespace {

using u128 = unsigned __int128;

// Powers of ten up to 10^38, enough for any float scaled to six digits.
struct PowersOfTen {
    u128 value[39];
    constexpr PowersOfTen() : value() {
        value[0] = 1;
        for (int i = 1; i < 39; ++i) value[i] = value[i - 1] * 10;
    }
};
constexpr PowersOfTen kPow10;

template <typename T>
int DecimalDigits(T n) {
    int digits = 1;
    while (digits < 39 && n >= kPow10.value[digits]) ++digits;
    return digits;
}

// Rounds num/den's quotient to even on an exact tie; den = 2*half.
template <typename T>
uint32_t RoundHalfEven(T quotient, T remainder, T half) {
    if (remainder > half || (remainder == half && (quotient & 1) != 0)) ++quotient;
    return static_cast<uint32_t>(quotient);
}

// The float m * 2^e (m < 2^24) rounded to six significant digits: digits in
// [100000, 999999] and the decimal exponent of the first one. Exact integer
// arithmetic, so ties and near-ties round as printf does. False for the
// smallest magnitudes, left to the library routine.
bool RoundToSixDigits(uint32_t m, int e, uint32_t& digits, int& exponent) {
    if (e >= 0) {
        if (e <= 40) {  // below 2^64: 64-bit division is much cheaper
            uint64_t v = static_cast<uint64_t>(m) << e;
            exponent = DecimalDigits(v) - 1;
            if (exponent < 6) {
                digits = static_cast<uint32_t>(v * static_cast<uint64_t>(kPow10.value[5 - exponent]));
                return true;
            }
            uint64_t divisor = static_cast<uint64_t>(kPow10.value[exponent - 5]);
            digits = RoundHalfEven<uint64_t>(v / divisor, v % divisor, divisor / 2);
        } else {
            u128 v = static_cast<u128>(m) << e;
            exponent = DecimalDigits(v) - 1;
            u128 divisor = kPow10.value[exponent - 5];
            digits = RoundHalfEven<u128>(v / divisor, v % divisor, divisor / 2);
        }
    } else {
        int s = -e;
        if (s > 100) return false;
        uint32_t integer = s < 32 ? (m >> s) : 0;
        if (integer > 0) {
            exponent = DecimalDigits(integer) - 1;
            if (exponent <= 5) {
                uint64_t n = static_cast<uint64_t>(m) * static_cast<uint64_t>(kPow10.value[5 - exponent]);
                uint64_t mask = (uint64_t{1} << s) - 1;
                digits = RoundHalfEven<uint64_t>(n >> s, n & mask, uint64_t{1} << (s - 1));
            } else {
                uint64_t divisor = static_cast<uint64_t>(kPow10.value[exponent - 5]) << s;
                digits = RoundHalfEven<uint64_t>(m / divisor, m % divisor, divisor / 2);
            }
        } else {
            // v < 1: find the first j with m * 10^j >= 2^s; the exponent is -j.
            int j = s > 24 ? static_cast<int>((s - 24) * 0.30103) : 1;
            if (j < 1) j = 1;
            if (s <= 44) {
                // Here j <= 7, so m * 10^(5 + j) stays below 2^64.
                uint64_t one = uint64_t{1} << s;
                while (m * static_cast<uint64_t>(kPow10.value[j]) < one) ++j;
                uint64_t n = m * static_cast<uint64_t>(kPow10.value[5 + j]);
                digits = RoundHalfEven<uint64_t>(n >> s, n & (one - 1), one >> 1);
            } else {
                u128 one = u128{1} << s;
                while (static_cast<u128>(m) * kPow10.value[j] < one) ++j;
                u128 n = static_cast<u128>(m) * kPow10.value[5 + j];
                digits = RoundHalfEven<u128>(n >> s, n & (one - 1), one >> 1);
            }
            exponent = -j;
        }
    }
    if (digits == 1000000) {
        digits = 100000;
        ++exponent;
    }
    return true;
}

char* WriteDigits(char* out, uint32_t digits, int count) {
    for (int i = count - 1; i >= 0; --i) {
        out[i] = static_cast<char>('0' + digits % 10);
        digits /= 10;
    }
    return out + count;
}

}  // namespace

size_t FormatFloat(float value, char* buf) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    uint32_t biased = (bits >> 23) & 0xff;
    uint32_t fraction = bits & 0x7fffff;
    uint32_t digits = 0;
    int exponent = 0;
    if (biased == 0 || biased == 0xff ||
        !RoundToSixDigits(fraction | 0x800000, static_cast<int>(biased) - 150, digits, exponent)) {
        // Zero, subnormals, the tiniest normals, infinities and NaN: %g with six
        // digits, which is what a default-state stream prints for a float (it
        // widens to double first, so does this).
        return static_cast<size_t>(std::to_chars(buf, buf + kFloatTextMax, static_cast<double>(value),
                                                 std::chars_format::general, 6)
                                       .ptr -
                                   buf);
    }
    char* out = buf;
    if (bits >> 31) *out++ = '-';
    char six[6];
    WriteDigits(six, digits, 6);
    int kept = 6;  // %g drops trailing zeros of the fraction
    while (kept > 1 && six[kept - 1] == '0') --kept;
    if (exponent < -4 || exponent >= 6) {
        *out++ = six[0];
        if (kept > 1) {
            *out++ = '.';
            for (int i = 1; i < kept; ++i) *out++ = six[i];
        }
        *out++ = 'e';
        *out++ = exponent < 0 ? '-' : '+';
        int magnitude = exponent < 0 ? -exponent : exponent;
        out = WriteDigits(out, static_cast<uint32_t>(magnitude), 2);
    } else if (exponent >= 0) {
        int whole = exponent + 1;
        for (int i = 0; i < whole; ++i) *out++ = six[i];
        if (kept > whole) {
            *out++ = '.';
            for (int i = whole; i < kept; ++i) *out++ = six[i];
        }
    } else {
        *out++ = '0';
        *out++ = '.';
        for (int i = -1; i > exponent; --i) *out++ = '0';
        for (int i = 0; i < kept; ++i) *out++ = six[i];
    }
    return static_cast<size_t>(out - buf);
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
