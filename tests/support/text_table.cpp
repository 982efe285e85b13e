#include "text_table.h"

#include <cstdlib>

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

// Splits at unescaped '|' and undoes the escapes of each field after trimming it.
std::vector<std::string> Split(const std::string& line) {
    std::vector<std::string> fields;
    std::string raw;
    for (size_t k = 0; k <= line.size(); ++k) {
        if (k == line.size() || line[k] == '|') {
            std::string field, trimmed = Trim(raw);
            for (size_t i = 0; i < trimmed.size(); ++i) {
                if (trimmed[i] != '\\' || i + 1 == trimmed.size()) {
                    field += trimmed[i];
                    continue;
                }
                const char e = trimmed[++i];
                if (e == 'n') field += '\n';
                else if (e == 't') field += '\t';
                else if (e == 'r') field += '\r';
                else if (e == 's') field += ' ';
                else if (e == 'x' && i + 2 < trimmed.size() && HexDigit(trimmed[i + 1]) >= 0 &&
                         HexDigit(trimmed[i + 2]) >= 0) {
                    field += static_cast<char>(HexDigit(trimmed[i + 1]) * 16 + HexDigit(trimmed[i + 2]));
                    i += 2;
                } else {
                    field += e;
                }
            }
            fields.push_back(field);
            raw.clear();
        } else if (line[k] == '\\' && k + 1 < line.size()) {
            raw += line[k];
            raw += line[++k];
        } else {
            raw += line[k];
        }
    }
    return fields;
}

}  // namespace

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
        table.push_back({number, Split(line)});
    }
    return table;
}

double Number(const std::string& field) { return std::strtod(field.c_str(), nullptr); }

}  // namespace testsupport
