#include <cstdio>
#include <istream>
#include <vector>

#include "json/json.h"

// Parsing runs in two passes: the tokenizer turns the whole text into a queue of
// token kinds and a queue of scalar data, then the builder assembles the tree.
// The two queues are separate on purpose: a bare word that ends at a string is
// queued after the string's data but ahead of its token, and documents depend
// on exactly that pairing.

namespace {

enum Token : uint8_t {
    kTokenUnknown = 0,
    kTokenObjectBegin = 1,
    kTokenObjectEnd = 2,
    kTokenArrayBegin = 3,
    kTokenArrayEnd = 4,
    kTokenComma = 5,
    kTokenColon = 6,
    kTokenValue = 7,
};

struct Datum {
    uint32_t kind;
    bool inWords;  // text lies in Tokens::words, else in the input
    size_t offset;
    size_t size;
};

struct Tokens {
    std::vector<uint8_t> kinds;
    std::vector<Datum> data;
    std::string words;  // bare words, stored back to back
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Digits, one ".", one "E", one "-" before the "E" and one sign after it, with
// a digit somewhere after the "E". Lax on purpose: "-", "." and "1-2" pass.
bool ScansAsNumber(std::string_view upper) {
    bool dot = false, exponent = false, minus = false, signAfterExponent = false;
    bool digitAfterExponent = false;
    for (char c : upper) {
        if (IsDigit(c)) {
            if (exponent) digitAfterExponent = true;
        } else if (c == '.') {
            if (dot) return false;
            dot = true;
        } else if (c == 'E') {
            if (exponent) return false;
            exponent = true;
        } else if (c == '-') {
            if (!exponent) {
                if (minus) return false;
                minus = true;
            } else {
                if (signAfterExponent) return false;
                signAfterExponent = true;
            }
        } else if (c == '+') {
            if (!exponent || signAfterExponent) return false;
            signAfterExponent = true;
        } else {
            return false;
        }
    }
    return !exponent || digitAfterExponent;
}

void PushWordDatum(Tokens& tokens, uint32_t kind, std::string_view text) {
    tokens.data.push_back({kind, true, tokens.words.size(), text.size()});
    tokens.words.append(text);
}

void ClassifyWord(Tokens& tokens, const std::string& word) {
    std::string upper(word);
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    if (upper == "NULL") {
        PushWordDatum(tokens, kJsonNull, "null");
    } else if (upper == "TRUE") {
        PushWordDatum(tokens, kJsonBool, "true");
    } else if (upper == "FALSE") {
        PushWordDatum(tokens, kJsonBool, "false");
    } else if (ScansAsNumber(upper)) {
        PushWordDatum(tokens, kJsonNumber, word);
    } else {
        PushWordDatum(tokens, kJsonString, word);
        tokens.kinds.push_back(kTokenUnknown);
        return;
    }
    tokens.kinds.push_back(kTokenValue);
}

Tokens Tokenize(std::string_view in) {
    Tokens tokens;
    std::string word;
    // Whether the last thing read was a bare byte or a comment: only then does a
    // word left at the end of the input count.
    bool bareLast = false;
    auto flushWord = [&] {
        if (!word.empty()) {
            ClassifyWord(tokens, word);
            word.clear();
        }
    };
    size_t i = 0;
    const size_t n = in.size();
    while (i < n) {
        char c = in[i++];
        switch (c) {
            case '\t':
            case '\n':
            case '\f':
            case '\r':
            case ' ':
                // Skipped without ending the word: "1 2" is the word "12".
                bareLast = false;
                break;
            case '"': {
                // Ends at a quote not preceded by a backslash, so "a\\" runs on.
                size_t end = i;
                while (end < n && !(in[end] == '"' && in[end - 1] != '\\')) ++end;
                tokens.data.push_back({kJsonString, false, i, end - i});
                i = end < n ? end + 1 : n;
                flushWord();
                tokens.kinds.push_back(kTokenValue);
                bareLast = false;
                break;
            }
            case ',':
            case ':':
            case '[':
            case ']':
            case '{':
            case '}': {
                flushWord();
                Token token = c == ',' ? kTokenComma
                              : c == ':' ? kTokenColon
                              : c == '[' ? kTokenArrayBegin
                              : c == ']' ? kTokenArrayEnd
                              : c == '{' ? kTokenObjectBegin
                                         : kTokenObjectEnd;
                tokens.kinds.push_back(token);
                bareLast = false;
                break;
            }
            case '/':
                if (i < n && in[i] == '*') {
                    size_t close = in.find("*/", i + 1);
                    i = close == std::string_view::npos ? n : close + 2;
                } else if (i < n && in[i] == '/') {
                    // The line feed stays in the input and is skipped as whitespace.
                    size_t lineEnd = in.find('\n', i + 1);
                    i = lineEnd == std::string_view::npos ? n : lineEnd;
                } else {
                    word += c;
                }
                bareLast = true;
                break;
            default:
                word += c;
                bareLast = true;
                break;
        }
    }
    if (bareLast) flushWord();
    return tokens;
}

class Builder {
public:
    Builder(const Tokens& tokens, std::string_view input, std::string& error)
        : tokens_(tokens), input_(input), error_(error) {}

    JsonValue Build() {
        const std::vector<uint8_t>& kinds = tokens_.kinds;
        size_t t = 0;
        while (t < kinds.size()) {
            uint8_t token = kinds[t++];
            switch (token) {
                case kTokenObjectBegin:
                case kTokenArrayBegin:
                    stack_.push_back({token == kTokenObjectBegin ? JsonValue::Object()
                                                                 : JsonValue::Array(),
                                      std::move(name_)});
                    name_.clear();
                    break;
                case kTokenObjectEnd:
                case kTokenArrayEnd: {
                    if (stack_.empty()) return Fail("Found end of object or array without beginning");
                    uint32_t expected = token == kTokenObjectEnd ? kJsonObject : kJsonArray;
                    if (stack_.back().value.Kind() != expected) {
                        return Fail(token == kTokenObjectEnd ? "Mismatched end and beginning of object"
                                                             : "Mismatched end and beginning of array");
                    }
                    Open done = std::move(stack_.back());
                    stack_.pop_back();
                    if (stack_.empty()) {
                        result_ = std::move(done.value);
                    } else if (!AddToTop(done.name, std::move(done.value))) {
                        return Fail("Can only add elements to objects and arrays");
                    }
                    break;
                }
                case kTokenComma:
                    if (t < kinds.size() && kinds[t] == kTokenArrayEnd) return Fail("Extra comma in array");
                    break;
                case kTokenColon:
                    break;
                case kTokenValue: {
                    if (d_ >= tokens_.data.size()) return Fail("Missing data for value");
                    const Datum& datum = tokens_.data[d_];
                    if (t < kinds.size() && kinds[t] == kTokenColon) {
                        ++t;
                        if (datum.kind != kJsonString) return Fail("A name has to be a string");
                        name_.assign(Text(datum));  // names stay raw, escapes and all
                        ++d_;
                        break;
                    }
                    JsonValue value(datum.kind, Text(datum));
                    ++d_;
                    if (stack_.empty()) return Fail("Outermost node must be an object or array");
                    if (!AddToTop(name_, std::move(value))) {
                        return Fail("Can only add elements to objects and arrays");
                    }
                    name_.clear();
                    break;
                }
                default: {
                    std::string message = "Unknown token: ";
                    if (d_ < tokens_.data.size()) message.append(Text(tokens_.data[d_]));
                    return Fail(message);
                }
            }
        }
        // Containers still open at the end are dropped without a message.
        return std::move(result_);
    }

private:
    struct Open {
        JsonValue value;
        std::string name;
    };

    std::string_view Text(const Datum& datum) const {
        std::string_view source = datum.inWords ? std::string_view(tokens_.words) : input_;
        return source.substr(datum.offset, datum.size);
    }

    bool AddToTop(const std::string& name, JsonValue value) {
        JsonValue& top = stack_.back().value;
        if (top.Kind() == kJsonObject) {
            top.Add(name, std::move(value));
        } else if (top.Kind() == kJsonArray) {
            top.Add(std::move(value));
        } else {
            return false;
        }
        return true;
    }

    JsonValue Fail(const std::string& message) {
        error_ = message;
        return JsonValue();
    }

    const Tokens& tokens_;
    std::string_view input_;
    std::string& error_;
    std::vector<Open> stack_;
    std::string name_;
    JsonValue result_;
    size_t d_ = 0;
};

}  // namespace

JsonValue JsonParser::ParseString(std::string_view text) {
    error.clear();
    Tokens tokens = Tokenize(text);
    return Builder(tokens, text, error).Build();
}

JsonValue JsonParser::ParseStream(std::istream& stream) {
    error.clear();
    std::string text;
    if (stream) {
        char chunk[1 << 16];
        while (stream.read(chunk, sizeof chunk) || stream.gcount() > 0) {
            text.append(chunk, static_cast<size_t>(stream.gcount()));
        }
    }
    return ParseString(text);
}

JsonValue JsonParser::ParseFile(const std::string& fileName) {
    error.clear();
    std::FILE* file = std::fopen(fileName.c_str(), "rb");
    if (!file) return JsonValue();
    std::string text;
    char chunk[1 << 16];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) text.append(chunk, got);
    std::fclose(file);
    return ParseString(text);
}
