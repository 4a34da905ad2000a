// u_arlist_fault_test.cc: archives when calls of the system fail, are
// interrupted, or transfer less than was asked for, and archives that change
// while they are read.
#include "support/ar_image.h"
#include "support/ar_listing.h"
#include "support/faults/faults.h"
#include "support/tree.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <tovan/u_arlist.h>
#include <unistd.h>
#include <string>

namespace {

using support::always;
using support::half;
using support::text_of;

const std::string long_name = "a-name-of-20-letters";

// Members that are looked at through many windows.
void write_archive() {
    std::vector<support::ar_file> files;
    for (int i = 0; i < 200; i++)
        files.push_back({"m" + std::to_string(i), std::string(1000, 'd')});
    files.push_back({long_name, "the last"});
    support::write_file("x.a", support::ar_archive(files));
}

void list_archive() {
    std::string lines = support::lines_of(getarlist("x.a", nullptr));
    size_t last = lines.rfind('\n', lines.size() - 2);
    printf("%s", lines.substr(last + 1).c_str());
}

// The last member: its header ends 8 bytes before the end.
const std::string last_line = long_name + " 0 212150 8\n";

TEST(u_arlist_fault, lists) {
    write_archive();
    auto fatal = [](int error) {
        return "test: x.a: " + text_of(error) + "\n";
    };
    const std::string no_magic = "test: x.a: could not read ar(1) magic\n";
    support::check_faults(
        list_archive,
        {{{"pread", EINTR, 1, 3}, last_line, "", 0},
         {{"pread", EINTR, 3, 2}, last_line, "", 0},
         {{"pread", 0, 1, always, 1}, last_line, "", 0},
         {{"pread", 0, 1, always, 59}, last_line, "", 0},
         {{"pread", 0, 1, always, half}, last_line, "", 0},
         {{"open", EINTR, 1, 3}, last_line, "", 0},
         {{"close", EIO}, last_line, "", 0},
         {{"read", EINTR, 1, 3}, last_line, "", 0},  // the long names
         {{"read", 0, 1, always, 1}, last_line, "", 0},
         {{"pread", EIO}, "", no_magic, 255},
         {{"pread", EISDIR}, "", no_magic, 255},
         {{"pread", EIO, 2}, "", fatal(EIO), 255},
         {{"pread", EIO, 4}, "", fatal(EIO), 255},
         {{"pread", 0, 1, always, 0}, "", no_magic, 255},
         {{"read", EIO}, "", fatal(EIO), 255},
         {{"read", EIO, 5, 1, 3}, "", fatal(EIO), 255},
         {{"read", 0, 1, always, 0},
          "",
          "test: x.a: could not read entire long table\n",
          255},
         {{"lseek", EIO, 2}, "", fatal(EIO), 255}});
    for (int error : {EMFILE, ENFILE, EACCES, ENOENT, EIO, ELOOP, ENOMEM}) {
        support::check_faults(list_archive,
                              {{{"open", error}, "", fatal(error), 255}});
    }
}

TEST(u_arlist_fault, an_archive_without_positions_is_as_a_pipe) {
    write_archive();
    support::check_faults(
        list_archive, {{{"lseek", ESPIPE}, "", "test: Seek failed\n", 255}});
}

void read_last_member() {
    int descriptor;
    const armember *member = getarlist("x.a", &descriptor);
    while (member->next != nullptr)
        member = member->next;
    char *data = getarmemb(descriptor, member);
    printf("%.8s", data);
    free(data);
    close(descriptor);
}

TEST(u_arlist_fault, data) {
    write_archive();
    const std::string begin = "test: " + long_name + ": ";
    // The long names are read first.
    support::check_faults(
        read_last_member,
        {{{"read", EINTR, 2, 3}, "the last", "", 0},
         {{"read", 0, 2, always, 1}, "the last", "", 0},
         {{"read", 0, 2, always, half}, "the last", "", 0},
         {{"read", EIO, 2}, "", begin + text_of(EIO) + "\n", 255},
         {{"read", 0, 2, always, 0},
          "",
          begin + "could not read all data\n",
          255},
         {{"lseek", ESPIPE, 3}, "", begin + text_of(ESPIPE) + "\n", 255}});
}

// One more member at the end.
void append_member() {
    int descriptor = open("x.a", O_WRONLY | O_APPEND);
    std::string member = support::ar_member("new/", "added");
    if (write(descriptor, member.data(), member.size()) == -1) abort();
    close(descriptor);
}

TEST(u_arlist_fault, a_growing_archive_is_read_to_its_end) {
    write_archive();
    support::check_faults(
        list_archive,
        {{{"pread", 0, 5, 1, 1, append_member}, "new 0 212218 5\n", "", 0}});
}

void cut_archive() {
    if (truncate("x.a", 100000) != 0) abort();
}

TEST(u_arlist_fault, an_archive_that_is_cut_short_is_listed_to_its_end) {
    write_archive();
    support::outcome end =
        support::with_fault({"pread", 0, 5, 1, 1, cut_archive}, list_archive);
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.err, "");
    EXPECT_EQ(end.out.front(), 'm');  // a member before the last
}

}  // namespace
