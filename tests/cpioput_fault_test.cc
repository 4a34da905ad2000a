// cpioput_fault_test.cc: cpio archives when calls of the system fail, are
// interrupted, or transfer less than was asked for, and when files change
// while they are read.
#include "support/archive_faults.h"
#include "support/faults/faults.h"

#include <signal.h>
#include <tovan/cpioput.h>

namespace {

using support::always;
using support::archived_files;
using support::fault;
using support::outcome;

const support::archive_writer writer = {[] { cpiosetup(0); },
                                        cpioput,
                                        cpiofin,
                                        support::cpio_entry,
                                        support::cpio_archive,
                                        support::cpio_difference,
                                        5120};

const char write_message[] = "Can't write to std out!\n";

TEST(cpioput_fault, interruptions_and_short_counts_change_nothing) {
    support::archive_faults(writer).expect_whole();
}

TEST(cpioput_fault, every_write_may_fail) {
    support::archive_faults(writer).expect_write_failures(
        [](int) { return std::string(write_message); });
}

TEST(cpioput_fault, half_a_block_may_be_the_last_that_fits) {
    support::archive_faults faults(writer);
    outcome end = support::with_fault({"write", ENOSPC, 3, always, 2000},
                                      [&] { faults.archive_files(); });
    EXPECT_EQ(support::cpio_difference(faults.whole_archive().substr(0, 4000),
                                       end.out),
              "");
    EXPECT_EQ(end.err.rfind(write_message, 0), 0u);
}

TEST(cpioput_fault, every_read_may_fail_or_be_the_last) {
    support::archive_faults faults(writer);
    faults.expect_read_failures([](int error) {
        return std::string(error != 0 ? "Cannot read temp file\n" : "") +
               "`b' shrank, filled with zeros\n";
    });
    std::string zeros(archived_files[0].content.size(), '\0');
    faults.expect(
        {"read", EIO},
        support::cpio_archive(faults.entry("a", zeros) +
                              faults.entry("b", archived_files[1].content) +
                              faults.entry("c", archived_files[2].content)),
        "Cannot read temp file\n`a' shrank, filled with zeros\n" +
            std::to_string(EIO) + " 0 0 0\n");
}

TEST(cpioput_fault, every_open_and_fstat_may_fail) {
    support::archive_faults faults(writer);
    auto each = [](int file) { return file + 1; };
    faults.expect_left_out("open", each, [](const std::string &name, int) {
        return "Can't open `" + name + "'\n";
    });
    faults.expect_left_out("fstat", each, [](const std::string &name, int) {
        return "Cannot stat `" + name + "'\n";
    });
}

TEST(cpioput_fault, files_may_change_while_they_are_read) {
    support::archive_faults(writer).expect_changes(
        "`b' shrank, filled with zeros\n");
}

TEST(cpioput_fault, link_that_cannot_be_looked_at_has_no_content) {
    support::write_file("target", "t");
    struct stat status = support::made_up_status();
    status.st_mode = S_IFLNK | 0777;
    fault what{"lstat", EIO};
    outcome end = support::with_fault(what, [&] {
        cpiosetup(0);
        cpioput("target", "link", &status);
        cpiofin();
    });
    support::archive_faults(writer).expect_end(
        end, support::cpio_archive(support::cpio_entry("link", status, "")), "",
        what);
}

TEST(cpioput_fault, without_memory_for_links_the_process_ends) {
    support::write_file("file", "x");
    for (int nth = 1; nth <= 4; nth++) {
        outcome end = support::with_fault({"malloc", ENOMEM, nth}, [] {
            struct stat status = support::made_up_status();
            status.st_nlink = 2;
            cpiosetup(0);
            cpioput("file", "file", &status);
        });
        EXPECT_EQ(end.signal, SIGABRT) << nth;
        EXPECT_EQ(end.err, "test: Ran out of memory\n") << nth;
    }
}

}  // namespace
