#include "fbx/fbx_ascii_version.h"

#include <cctype>
#include <cstring>
#include <string>

namespace {

// A cursor over the line with the matching rules of the C scanf family: a
// blank in the pattern skips any white space, %c takes the next character
// as it is, %s a run of non-blanks, %d an optionally signed decimal number
// after white space.
class LineScanner {
public:
    explicit LineScanner(std::string_view line) : line_(line) {}

    void SkipBlanks() {
        while (at_ < line_.size() && std::isspace(static_cast<unsigned char>(line_[at_]))) ++at_;
    }
    bool Char(char& out) {
        if (at_ >= line_.size()) return false;
        out = line_[at_++];
        return true;
    }
    bool Word(std::string& out) {
        SkipBlanks();
        const size_t from = at_;
        while (at_ < line_.size() && !std::isspace(static_cast<unsigned char>(line_[at_]))) ++at_;
        out.assign(line_.substr(from, at_ - from));
        return at_ > from;
    }
    bool Number(int32_t& out) {
        SkipBlanks();
        size_t i = at_;
        bool negative = false;
        if (i < line_.size() && (line_[i] == '+' || line_[i] == '-')) negative = line_[i++] == '-';
        const size_t digits = i;
        int64_t value = 0;
        while (i < line_.size() && std::isdigit(static_cast<unsigned char>(line_[i]))) {
            if (value < 100000000) value = value * 10 + (line_[i] - '0');
            ++i;
        }
        if (i == digits) return false;
        at_ = i;
        out = static_cast<int32_t>(negative ? -value : value);
        return true;
    }

private:
    std::string_view line_;
    size_t at_ = 0;
};

bool EqualsNoCase(const std::string& a, const char* b) {
    size_t i = 0;
    for (; i < a.size() && b[i]; ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) {
            return false;
        }
    }
    return i == a.size() && b[i] == 0;
}

// "%c %s %d%c%d%c%d %s %s" when withRevision, else "%c %s %d%c%d %s %s".
bool ScanForm(std::string_view line, bool withRevision, std::string& product, int32_t numbers[3]) {
    LineScanner scan(line);
    char lead = 0, dot1 = 0, dot2 = '.';
    std::string project, file;
    if (!scan.Char(lead)) return false;
    scan.SkipBlanks();
    if (!scan.Word(product) || !scan.Number(numbers[0]) || !scan.Char(dot1) || !scan.Number(numbers[1])) return false;
    if (withRevision && (!scan.Char(dot2) || !scan.Number(numbers[2]))) return false;
    if (!scan.Word(project) || !scan.Word(file)) return false;
    return lead == ';' && dot1 == '.' && dot2 == '.' && EqualsNoCase(project, "project") && EqualsNoCase(file, "file");
}

}  // namespace

bool FbxScanAsciiVersionLine(std::string_view line, int32_t& version) {
    std::string product;
    int32_t numbers[3] = {0, 0, 0};
    if (ScanForm(line, true, product, numbers)) {
        version = numbers[0] * 1000 + numbers[1] * 100 + numbers[2];
        return true;
    }
    numbers[2] = 0;
    if (!ScanForm(line, false, product, numbers)) return false;
    // The product's first releases numbered their files by hand.
    if (product == "Filmbox") {
        static const int32_t kOld[][3] = {{1, 5, 1000}, {2, 7, 2001}, {3, 0, 3000},
                                          {4, 0, 4000}, {4, 1, 4001}, {4, 5, 4050}};
        for (const auto& old : kOld) {
            if (numbers[0] == old[0] && numbers[1] == old[1]) {
                version = old[2];
                return true;
            }
        }
    }
    version = numbers[0] * 1000 + numbers[1] * 100;
    return true;
}

bool FbxScanAsciiVersion(const uint8_t* data, size_t size, int32_t& version) {
    const auto* text = reinterpret_cast<const char*>(data);
    const void* newline = std::memchr(text, '\n', size);
    std::string_view line(text, newline ? static_cast<size_t>(static_cast<const char*>(newline) - text) : size);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return FbxScanAsciiVersionLine(line, version);
}
