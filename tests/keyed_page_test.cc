// keyed_page_test.cc: the examples of docs/formats/keyed-database.md.
#include "support/child.h"
#include "support/doc.h"
#include "support/picture.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <tovan/kdbminit.h>
#include <tovan/ldbminit.h>
#include <sstream>
#include <string>

namespace {

const char page[] = "formats/keyed-database.md";

std::string drawn(const std::string &file) {
    return support::drawn_bytes(support::doc_block(page, file));
}

// Runs the commands of a session; what it should look like, as it is shown.
std::string replayed(const std::string &session) {
    setenv("PATH", TOVAN_BINARY_DIR "/bin:/usr/bin:/bin", 1);
    std::istringstream lines(session);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("$ ", 0) != 0) continue;
        support::outcome end =
            support::run_program({"sh", "-c", line.substr(2)});
        text += line + "\n" + end.out + end.err;
    }
    return text;
}

TEST(keyed_page, sessions_are_as_they_are_shown) {
    for (const char *name : {"texts", "lines"}) {
        std::string session = support::doc_block(page, name);
        EXPECT_EQ(replayed(session), session);
    }
    EXPECT_EQ(support::read_file("k.dir"), "\4");
    EXPECT_EQ(support::read_file("k.pag"), drawn("k.pag"));
    EXPECT_EQ(support::read_file("x.dir"), "\1");
    EXPECT_EQ(support::read_file("x.pag"), drawn("x.pag"));
    EXPECT_EQ(support::read_file("x.data"), support::doc_block(page, "x.data"));
}

TEST(keyed_page, drawn_texts_can_be_read) {
    support::write_file("k.dir", "\4");
    support::write_file("k.pag", drawn("k.pag"));
    kdbm_db db{};
    ASSERT_EQ(kdbminit(&db, "k", 3), nullptr);
    EXPECT_STREQ(kdbmfind(&db, "CC")->data, "gcc");
    EXPECT_STREQ(kdbmfind(&db, "LIBS")->data, "-lm -lc");
    kdbminit(&db, nullptr, 0);
}

std::string found;

TEST(keyed_page, drawn_lines_can_be_read) {
    support::write_file("x.dir", "\1");
    support::write_file("x.pag", drawn("x.pag"));
    support::write_file("x.data", support::doc_block(page, "x.data"));
    ldbm_db db{};
    ASSERT_EQ(ldbminit(&db, "x", 3,
                       [](const char *, const char *line) { found += line; }),
              nullptr);
    EXPECT_EQ(ldbmfind(&db, "main"), 3);
    EXPECT_EQ(ldbmfind(&db, "use"), 1);
    EXPECT_EQ(found, "main.c:10\nmain.c:25\ntest.c:7\nuse.c:3\n");
    ldbminit(&db, nullptr, 0, nullptr);
}

// The bytes of a table's cell, such as "00 04".
std::string bytes_of(const std::string &cell) {
    return support::drawn_bytes("0000:  " + cell);
}

TEST(keyed_page, explained_bytes_are_where_they_are_said_to_be) {
    for (const std::string file : {"k.pag", "x.pag"}) {
        auto rows =
            support::doc_table(page, "| offset | bytes | in " + file + " |");
        EXPECT_GE(rows.size(), 4u) << file;
        for (const auto &row : rows) {
            size_t offset = std::stoul(row[0], nullptr, 16);
            std::string bytes = bytes_of(row[1]);
            EXPECT_EQ(drawn(file).substr(offset, bytes.size()), bytes)
                << file << " at " << row[0];
        }
    }
}

}  // namespace
