// Case tables kept as text beside the tests (tests/<subsystem>/data/): one case a line,
// fields split at '|' and trimmed, lists inside a field split at ','. Lines starting with
// '#' (the hand derivations) and blank lines are skipped. Escapes: \n \t \s (a space that
// trimming keeps), \\, \| and \, for a line end, a tab, a space, a backslash, a bar, a comma.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "file_contents.h"

namespace testsupport {
// Header-only, in a namespace of its own so that its names never meet those of
// text_table.h at link time.
inline namespace case_tables {

class TableRow {
public:
    explicit TableRow(std::vector<std::string> raw) : raw_(std::move(raw)) {}
    size_t Size() const { return raw_.size(); }
    std::string Text(size_t i) const { return Unescape(Raw(i)); }
    std::vector<std::string> Items(size_t i) const {
        std::vector<std::string> items;
        const std::string& raw = Raw(i);
        if (raw.empty()) return items;
        std::string item;
        for (size_t k = 0; k < raw.size(); ++k) {
            if (raw[k] == ',') items.push_back(Unescape(item)), item.clear();
            else if (raw[k] == '\\' && k + 1 < raw.size()) item += raw.substr(k++, 2);
            else item += raw[k];
        }
        items.push_back(Unescape(item));
        return items;
    }
    std::vector<float> Floats(size_t i) const {
        std::vector<float> values;
        for (const std::string& item : Items(i)) values.push_back(std::stof(item));
        return values;
    }
    float Float(size_t i) const { return std::stof(Raw(i)); }
    int Int(size_t i) const { return std::stoi(Raw(i)); }

private:
    const std::string& Raw(size_t i) const {
        if (i >= raw_.size()) throw std::out_of_range("table row has no field " + std::to_string(i));
        return raw_[i];
    }
    static std::string Unescape(const std::string& raw) {
        std::string text;
        for (size_t k = 0; k < raw.size(); ++k) {
            if (raw[k] != '\\' || k + 1 == raw.size()) {
                text += raw[k];
                continue;
            }
            const char c = raw[++k];
            text += c == 'n' ? '\n' : c == 't' ? '\t' : c == 's' ? ' ' : c;
        }
        return text;
    }
    std::vector<std::string> raw_;
};

// The rows of the file; a missing or empty file throws, so a table can never pass empty.
inline std::vector<TableRow> ReadTable(const std::string& path) {
    const std::string text = ReadFileText(path);
    std::vector<TableRow> rows;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        const size_t first = line.find_first_not_of(" \t");
        if (first == std::string::npos || line[first] == '#') continue;
        std::vector<std::string> fields(1);
        for (size_t k = first; k < line.size(); ++k) {
            if (line[k] == '|') fields.emplace_back();
            else if (line[k] == '\\' && k + 1 < line.size()) fields.back() += line.substr(k++, 2);
            else fields.back() += line[k];
        }
        for (std::string& field : fields) {
            field.erase(0, field.find_first_not_of(" \t"));
            field.erase(field.find_last_not_of(" \t") + 1);
        }
        rows.emplace_back(std::move(fields));
    }
    if (rows.empty()) throw std::runtime_error("no table rows in " + path);
    return rows;
}

// Rows print as their first field (ctest's test names show it).
inline void PrintTo(const TableRow& row, std::ostream* out) { *out << row.Text(0); }

// The first field as the name of a parameterised test.
inline std::string RowName(const testing::TestParamInfo<TableRow>& info) { return info.param.Text(0); }

}  // namespace case_tables
}  // namespace testsupport
