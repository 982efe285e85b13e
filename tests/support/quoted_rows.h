// Tables of test cases kept in text files: one row a line, each field a bare word or a
// quoted string with the escapes \\ \" \n \t and \xHH (exactly two hex digits). Blank
// lines and lines starting with '#' are skipped.
#pragma once

#include <string>
#include <vector>

namespace testsupport {

struct QuotedRow {
    int line = 0;  // in the file, for failure messages
    std::vector<std::string> fields;  // empty when the line cannot be read
};

std::vector<QuotedRow> ReadQuotedRows(const std::string& path);

}  // namespace testsupport
