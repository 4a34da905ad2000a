// expansion_doc_test.cc: docs/expansion.md does what it says: the tables that
// set the tree up are set up, every example is expanded.
#include "support/child.h"
#include "support/expansion.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/lvexpand.h>
#include <map>
#include <set>
#include <sstream>

namespace {

using row = std::vector<std::string>;

struct example {
    std::string section;
    std::string text;
    std::string expected;
};

// The page's tables by their header rows, cells without their backquotes.
struct page {
    std::map<row, std::vector<row>> tables;
    std::vector<example> examples;
    std::vector<example> wrong_texts;
};

// A cell is a code span: `x`, or `` x `` where x holds backquotes.
std::string plain(std::string cell) {
    if (cell == "``") return "";
    if (cell.starts_with("`` ")) return cell.substr(3, cell.size() - 6);
    if (cell.starts_with("`")) return cell.substr(1, cell.size() - 2);
    return cell;
}

row cells_of(const std::string &line) {
    row cells;
    size_t from = 2;
    for (size_t to; (to = line.find(" |", from)) != std::string::npos;
         from = to + 3) {
        cells.push_back(plain(line.substr(from, to - from)));
    }
    return cells;
}

page read_page() {
    std::istringstream lines(
        support::read_file(TOVAN_SOURCE_DIR "/docs/expansion.md"));
    page result;
    std::string section;
    row header;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("### ")) section = line.substr(4);
        if (line.starts_with("## ")) section.clear();
        if (!line.starts_with("| ")) {
            if (!line.starts_with("|--")) header.clear();
            continue;
        }
        row cells = cells_of(line);
        if (header.empty()) {
            header = cells;
            continue;
        }
        result.tables[header].push_back(cells);
        if (header[0] == "text") {
            result.examples.push_back({section, cells[0], cells[1]});
        } else if (header[0] == "wrong text") {
            result.wrong_texts.push_back({section, cells[0], cells[1]});
        }
    }
    return result;
}

class expansion_page : public testing::Test {
  protected:
    void SetUp() override {
        page_ = read_page();
        support::load_variables(pairs({"variable", "value"}));
        set_environment();
        make_files();
        support::write_file("traits",
                            support::heap_of(pairs({"trait", "value"})));
        setenv("TRAITS_FILE", "traits", 1);
        write_root_map();
    }

    std::vector<support::variable> pairs(const row &header) {
        std::vector<support::variable> result;
        for (const row &cells : page_.tables.at(header))
            result.push_back({cells[0], cells[1]});
        return result;
    }

    void set_environment() {
        for (const row &cells :
             page_.tables.at({"environment variable", "value"})) {
            setenv(cells[0].c_str(), cells[1].c_str(), 1);
        }
    }

    void make_files() {
        for (const row &cells : page_.tables.at({"file", "kind"})) {
            support::write_file(cells[0], "");
            if (cells[1] == "program") chmod(cells[0].c_str(), 0755);
        }
    }

    void write_root_map() {
        std::string lines;
        for (const row &cells : page_.tables.at({"line of data/roots.map"}))
            lines += cells[0] + "\n";
        support::write_file("morva/data/roots.map", lines);
    }

    page page_;
};

TEST_F(expansion_page, every_example_gives_what_it_says) {
    support::stderr_of([&] {
        for (const example &e : page_.examples) {
            EXPECT_EQ(support::expansion_of(e.text), e.expected)
                << e.section << ": " << e.text;
        }
    });
    EXPECT_GT(page_.examples.size(), 100u);
}

TEST_F(expansion_page, every_wrong_text_ends_in_its_message) {
    for (const example &e : page_.wrong_texts)
        support::expect_complaints({{e.text, e.expected}});
    EXPECT_EQ(page_.wrong_texts.size(), 16u);
}

TEST_F(expansion_page, every_condition_has_its_value) {
    const auto &rows = page_.tables.at({"condition", "value"});
    for (const row &cells : rows) {
        EXPECT_EQ(lvchksys(cells[0].c_str(), "f", 1), atoi(cells[1].c_str()))
            << cells[0];
    }
    EXPECT_EQ(rows.size(), 3u);
}

TEST_F(expansion_page, every_function_has_an_example_in_its_section) {
    std::set<std::string> shown;
    for (const auto *list : {&page_.examples, &page_.wrong_texts}) {
        for (const example &e : *list) {
            if (e.text.find("@(" + e.section) != std::string::npos)
                shown.insert(e.section);
        }
    }
    for (const funct *f = functs; f->name != nullptr; f++) {
        EXPECT_TRUE(shown.contains(f->name)) << f->name;
    }
}

}  // namespace
