// u_arlist_reader_test.cc: archives that the system's ar writes are listed as
// it lists them.
#include "support/ar_listing.h"
#include "support/child.h"
#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/u_arlist.h>
#include <unistd.h>
#include <string>
#include <utility>
#include <vector>

namespace {

std::string output_of(const std::vector<std::string> &words) {
    support::outcome end = support::run_program(words);
    EXPECT_EQ(end.exit_status, 0) << words[0] << ": " << end.err;
    return end.out;
}

// Names and data of all members, as we read them.
std::vector<std::pair<std::string, std::string>> content_of(
    const std::string &archive) {
    std::vector<std::pair<std::string, std::string>> content;
    int descriptor = -1;
    const armember *list = getarlist(archive.c_str(), &descriptor);
    EXPECT_EQ(support::flaw_of(list), "");
    for (const armember *m = list; m != nullptr; m = m->next) {
        char *data = getarmemb(descriptor, m);
        content.emplace_back(m->name,
                             std::string(data, static_cast<size_t>(m->size)));
        free(data);
    }
    close(descriptor);
    return content;
}

// That is what ar says, too.
void check_against_ar(const std::string &archive) {
    std::string names;
    std::string all_data;
    for (const auto &[name, data] : content_of(archive)) {
        names += name + "\n";
        all_data += data;
    }
    EXPECT_EQ(names, output_of({"ar", "t", archive})) << archive;
    EXPECT_EQ(all_data, output_of({"ar", "p", archive})) << archive;
}

const std::vector<std::string> files = {
    "a.o",
    "fifteen-letters",
    "sixteen-letters.",
    "seventeen-letters",
    "with blank",
    "with blank and more than that",
    std::string(255, 'n'),
};

TEST(u_arlist_reader, short_and_long_names) {
    for (const char *operation : {"qc", "rc", "rcs", "rcD", "rcU"}) {
        std::vector<std::string> words = {"ar", operation, "x.a"};
        for (size_t i = 0; i < files.size(); i++) {
            support::write_file(files[i], std::string(i, 'd'));
            words.push_back(files[i]);
        }
        output_of(words);
        check_against_ar("x.a");
        std::vector<std::pair<std::string, std::string>> content =
            content_of("x.a");
        ASSERT_EQ(content.size(), files.size());
        for (size_t i = 0; i < files.size(); i++) {
            EXPECT_EQ(content[i].first, files[i]);
            EXPECT_EQ(content[i].second, std::string(i, 'd'));
        }
        unlink("x.a");
    }
}

TEST(u_arlist_reader, members_are_added_replaced_and_deleted) {
    for (const std::string &file : files)
        support::write_file(file, "first " + file);
    output_of({"ar", "qc", "x.a", files[0], files[3]});
    check_against_ar("x.a");
    output_of({"ar", "q", "x.a", files[4], files[5], files[3]});
    check_against_ar("x.a");
    support::write_file(files[3], "second");
    output_of({"ar", "r", "x.a", files[3], files[6]});
    check_against_ar("x.a");
    output_of({"ar", "d", "x.a", files[0], files[5]});
    check_against_ar("x.a");
    output_of({"ar", "d", "x.a", files[3], files[3], files[4], files[6]});
    EXPECT_EQ(support::listing_of("x.a").out, "");
}

TEST(u_arlist_reader, times_and_sizes) {
    support::write_file("a", "12345");
    output_of({"touch", "-d", "@86400", "a"});
    output_of({"ar", "qcU", "x.a", "a"});
    EXPECT_EQ(support::listing_of("x.a").out, "a 86400 68 5\n");
}

TEST(u_arlist_reader, libraries_with_symbol_tables) {
    check_against_ar(TOVAN_BINARY_DIR "/lib/libtovan.a");
}

TEST(u_arlist_reader, thin_archives_are_refused) {
    support::write_file("a", "x");
    output_of({"ar", "rcT", "thin.a", "a"});
    EXPECT_EQ(support::listing_of("thin.a").err,
              "test: thin.a: does not contain ar(1) magic\n");
}

}  // namespace
