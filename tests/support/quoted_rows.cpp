#include "quoted_rows.h"

#include <fstream>

namespace testsupport {
namespace {

// Reads the quoted string that starts at text[at] and moves past it; false when it is broken.
bool ReadQuoted(const std::string& text, size_t& at, std::string& out) {
    while (++at < text.size() && text[at] != '"') {
        if (text[at] != '\\') {
            out += text[at];
        } else if (++at >= text.size()) {
            return false;
        } else if (text[at] == 'x') {
            if (at + 2 >= text.size()) return false;
            size_t used = 0;
            out += char(std::stoi(text.substr(at + 1, 2), &used, 16));
            if (used != 2) return false;
            at += 2;
        } else {
            const std::string from = "nt\\\"", to = "\n\t\\\"";
            const size_t which = from.find(text[at]);
            if (which == std::string::npos) return false;
            out += to[which];
        }
    }
    return at++ < text.size();
}

}  // namespace

std::vector<QuotedRow> ReadQuotedRows(const std::string& path) {
    std::vector<QuotedRow> rows;
    std::ifstream in(path);
    int number = 0;
    for (std::string text; std::getline(in, text);) {
        ++number;
        size_t at = text.find_first_not_of(' ');
        if (at == std::string::npos || text[at] == '#') continue;
        QuotedRow row{number, {}};
        while (at < text.size()) {
            std::string field;
            if (text[at] != '"') {
                const size_t end = text.find(' ', at);
                field = text.substr(at, end - at);
                at = end;
            } else if (!ReadQuoted(text, at, field)) {
                row.fields.clear();
                break;
            }
            row.fields.push_back(field);
            at = text.find_first_not_of(' ', at);
        }
        rows.push_back(row);
    }
    return rows;
}

}  // namespace testsupport
