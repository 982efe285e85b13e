// Tables of test cases kept in text files beside the tests: one row a line, fields
// separated by '|' and trimmed; blank lines and lines starting with '#' (the worked-out
// reasons for the expected values) are skipped. Escapes in fields: \n \t \r \s (space,
// for one at a field's end) \| \\ and \xNN.
#pragma once

#include <string>
#include <vector>

namespace testsupport {

struct TableRow {
    int line = 0;  // in the file, for failure messages
    std::vector<std::string> fields;
    const std::string& operator[](size_t i) const { return fields.at(i); }
};
using Table = std::vector<TableRow>;

// The rows of the file; a file that cannot be read gives a table of no rows, so a test
// over it should check that it found some.
Table ReadTable(const std::string& path);

// A field as a number (strtod: "inf", "nan", hex floats and "0x1p-125" included).
double Number(const std::string& field);

}  // namespace testsupport
