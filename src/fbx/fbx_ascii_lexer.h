// Tokens and number forms of text FBX files. Private to the FBX library.
//
// A text file is a sequence of records `Name: value, value { ... }`; values are
// quoted strings, numbers, single letters and arrays `*count { a: ... }`.
// A ';' starts a comment that runs to the end of the line; line ends are
// otherwise blanks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

enum class FbxAsciiTokenKind : uint8_t {
    End,     // end of the text
    Name,    // a word directly followed by ':' (the ':' is not part of the text)
    String,  // text between double quotes, escapes not yet decoded
    Word,    // a number or a letter
    Array,   // '*' and the count that follows it (text: the count)
    Comma,
    Open,    // '{'
    Close,   // '}'
    Bad,     // a string without its closing quote
};

struct FbxAsciiToken {
    FbxAsciiTokenKind kind = FbxAsciiTokenKind::End;
    std::string_view text;
    size_t offset = 0;  // where the token starts in the text
};

class FbxAsciiLexer {
public:
    FbxAsciiLexer(const char* text, size_t size) : text_(text), size_(size) {}
    FbxAsciiToken Next();
    const FbxAsciiToken& Peek() {
        if (!peeked_) {
            peek_ = Next();
            peeked_ = true;
        }
        return peek_;
    }
    FbxAsciiToken Take() {
        if (peeked_) {
            peeked_ = false;
            return peek_;
        }
        return Next();
    }
    // Bytes not yet read, for bounding counts the text claims.
    size_t Remaining() const { return size_ - at_; }

private:
    const char* text_;
    size_t size_;
    size_t at_ = 0;
    bool peeked_ = false;
    FbxAsciiToken peek_;
};

// A number as written: integers keep their exact value (unsigned values above
// the signed range keep their bits), everything else is a double.
struct FbxAsciiNumber {
    bool integer = false;
    int64_t i = 0;
    double d = 0;
};

// Decimal integers and reals with exponents, "inf"/"infinity"/"nan"/"nan(...)"
// in any case with an optional sign, and the forms of one runtime library that
// authoring tools on Windows write: "1.#INF", "-1.#IND", "1.#QNAN", "1.#SNAN",
// each optionally followed by digits. False for anything else.
bool FbxParseAsciiNumber(std::string_view word, FbxAsciiNumber& out);

// Undoes the escapes that writers put in strings: "&quot;" for a double quote,
// "&lf;" and "&cr;" for line breaks. Other '&' sequences stay as they are.
void FbxDecodeAsciiString(std::string_view raw, std::string& out);
