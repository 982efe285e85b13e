#include "text_table.h"

#include <cstdlib>
#include <stdexcept>

#include "file_contents.h"

namespace testsupport {
namespace {

std::string Trim(const std::string& s) {
    const size_t first = s.find_first_not_of(" \t");
    if (first == std::string::npos) return "";
    return s.substr(first, s.find_last_not_of(" \t") - first + 1);
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string Unescape(const std::string& raw) {
    std::string field;
    for (size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] != '\\' || i + 1 == raw.size()) {
            field += raw[i];
            continue;
        }
        const char e = raw[++i];
        if (e == 'n') field += '\n';
        else if (e == 't') field += '\t';
        else if (e == 'r') field += '\r';
        else if (e == 's') field += ' ';
        else if (e == 'x' && i + 2 < raw.size() && HexDigit(raw[i + 1]) >= 0 && HexDigit(raw[i + 2]) >= 0) {
            field += static_cast<char>(HexDigit(raw[i + 1]) * 16 + HexDigit(raw[i + 2]));
            i += 2;
        } else {
            field += e;
        }
    }
    return field;
}

// Splits at unescaped `separator`, keeping the escapes.
std::vector<std::string> SplitRaw(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (size_t k = 0; k < text.size(); ++k) {
        if (text[k] == separator) parts.emplace_back();
        else if (text[k] == '\\' && k + 1 < text.size()) parts.back() += text.substr(k++, 2);
        else parts.back() += text[k];
    }
    return parts;
}

}  // namespace

std::vector<std::string> TableRow::Items(size_t i) const {
    std::vector<std::string> items;
    if (raw.at(i).empty()) return items;
    for (const std::string& item : SplitRaw(raw[i], ',')) items.push_back(Unescape(item));
    return items;
}

std::vector<float> TableRow::Floats(size_t i) const {
    std::vector<float> values;
    for (const std::string& item : Items(i)) values.push_back(std::stof(item));
    return values;
}

Table ReadTable(const std::string& path) {
    const std::string text = ReadFileText(path);
    Table table;
    int number = 0;
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        ++number;
        const std::string trimmed = Trim(line);
        if (trimmed.empty() || trimmed[0] == '#') continue;
        TableRow row{number, {}, {}};
        for (const std::string& part : SplitRaw(line, '|')) {
            row.raw.push_back(Trim(part));
            row.fields.push_back(Unescape(row.raw.back()));
        }
        table.push_back(std::move(row));
    }
    if (table.empty()) throw std::runtime_error("no table rows in " + path);
    return table;
}

double Number(const std::string& field) { return std::strtod(field.c_str(), nullptr); }

}  // namespace testsupport
