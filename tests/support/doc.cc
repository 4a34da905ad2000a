// doc.cc: worked examples of the documents.
#include "support/doc.h"

#include "support/tree.h"

#include <gtest/gtest.h>
#include <sstream>

namespace support {

namespace {

std::istringstream open_page(const std::string &page) {
    return std::istringstream(
        read_file(std::string(TOVAN_SOURCE_DIR "/docs/") + page));
}

// Moves behind the line; false at the end of the page.
bool skip_to(std::istream &page, const std::string &wanted) {
    std::string line;
    while (std::getline(page, line)) {
        if (line == wanted) return true;
    }
    return false;
}

std::string plain(const std::string &cell) {
    std::string text;
    for (char c : cell) {
        if (c != '`') text += c;
    }
    size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> cells_of(const std::string &row) {
    std::vector<std::string> cells;
    std::istringstream in(row.substr(1));
    for (std::string cell; std::getline(in, cell, '|');) {
        cells.push_back(plain(cell));
    }
    return cells;
}

}  // namespace

std::string doc_block(const std::string &page, const std::string &name) {
    std::istringstream in = open_page(page);
    EXPECT_TRUE(skip_to(in, "```" + name)) << "no ```" << name << page;
    std::string block;
    for (std::string line; std::getline(in, line) && line != "```";) {
        block += line + "\n";
    }
    return block;
}

std::vector<std::vector<std::string>> doc_table(const std::string &page,
                                                const std::string &head) {
    std::istringstream in = open_page(page);
    EXPECT_TRUE(skip_to(in, head)) << "no table " << head << " in " << page;
    std::vector<std::vector<std::string>> rows;
    std::string line;
    std::getline(in, line);  // the rule below the head
    while (std::getline(in, line) && !line.empty() && line[0] == '|') {
        rows.push_back(cells_of(line));
    }
    EXPECT_FALSE(rows.empty()) << "no rows below " << head;
    return rows;
}

}  // namespace support
