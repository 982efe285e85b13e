// Tables of test cases kept in text files beside the tests (tests/<subsystem>/data/): one
// case a line, fields separated by '|' and trimmed; blank lines and lines starting with '#'
// (the worked-out reasons for the expected values) are skipped. Escapes in fields: \n \t \r
// \s (a space that trimming keeps) \xNN, and a backslash before any other character keeps
// that character (\| \\ \,). `Items` splits a field at unescaped ',' for lists.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace testsupport {

struct TableRow {
    int line = 0;                     // in the file, for failure messages
    std::vector<std::string> fields;  // unescaped
    std::vector<std::string> raw;     // as written, trimmed, escapes kept

    const std::string& operator[](size_t i) const { return fields.at(i); }
    size_t Size() const { return fields.size(); }
    const std::string& Text(size_t i) const { return fields.at(i); }
    std::vector<std::string> Items(size_t i) const;
    std::vector<float> Floats(size_t i) const;
    float Float(size_t i) const { return std::stof(fields.at(i)); }
    int Int(size_t i) const { return std::stoi(fields.at(i)); }
};
using Table = std::vector<TableRow>;

// The rows of the file; a missing file or one without rows throws, so a table never
// passes empty.
Table ReadTable(const std::string& path);

// A field as a number (strtod: "inf", "nan", hex floats and "0x1p-125" included).
double Number(const std::string& field);

// Rows print as their first field, and name parameterised tests by it.
inline void PrintTo(const TableRow& row, std::ostream* out) { *out << row.Text(0); }
inline std::string RowName(const testing::TestParamInfo<TableRow>& info) { return info.param.Text(0); }

}  // namespace testsupport
