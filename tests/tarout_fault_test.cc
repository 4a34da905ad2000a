// tarout_fault_test.cc: tar archives when calls of the system fail, are
// interrupted, or transfer less than was asked for, and when files change
// while they are read.
#include "support/archive_faults.h"
#include "support/faults/faults.h"

#include <signal.h>
#include <tovan/tarout.h>

namespace {

using support::fault;
using support::outcome;
using support::status_of;
using support::tar_archive;
using support::tar_file;
using support::text_of;

const support::archive_writer writer = {
    [] { tarinit(-1, -1); }, tarout, tardone, tar_file, tar_archive,
    support::tar_difference, 10240};

// What `body` archives with a fault.
template <typename Body>
void expect_archive(const fault &what, Body body, const std::string &entries,
                    const std::string &err) {
    outcome end = support::with_fault(what, [&] {
        tarinit(-1, -1);
        body();
        tardone();
    });
    support::archive_faults(writer).expect_end(end, tar_archive(entries), err,
                                               what);
}

TEST(tarout_fault, interruptions_and_short_counts_change_nothing) {
    support::archive_faults(writer).expect_whole();
}

TEST(tarout_fault, every_write_may_fail) {
    support::archive_faults(writer).expect_write_failures([](int error) {
        return "test: standard output: " + text_of(error) + "\n";
    });
}

TEST(tarout_fault, every_read_may_fail_or_be_the_last) {
    support::archive_faults(writer).expect_read_failures([](int error) {
        std::string text = "test: tarout " + text_of(error) + "\n";
        return (error != 0 ? text : "") + "test: b shrank, filled with zeros\n";
    });
}

TEST(tarout_fault, every_open_and_lstat_may_fail) {
    support::archive_faults faults(writer);
    auto message = [](const std::string &name, int error) {
        return "test: " + name + " " + text_of(error) + "\n";
    };
    faults.expect_left_out(
        "open", [](int file) { return file + 1; }, message);
    // The path's; then the name's, which the path's stands in for.
    faults.expect_left_out(
        "lstat", [](int file) { return 2 * file + 1; }, message);
    for (int nth : {2, 4, 6})
        faults.expect({"lstat", EIO, nth}, faults.whole_archive(), "0 0 0 0\n");
}

TEST(tarout_fault, link_that_cannot_be_read_is_followed) {
    support::write_file("file", "1234");
    ASSERT_EQ(symlink("file", "link"), 0);
    for (int error : {EACCES, EIO, EINVAL}) {
        expect_archive(
            {"readlink", error}, [] { tarout("link", nullptr, nullptr); },
            tar_file("link", status_of("link"), "1234"), "");
    }
}

TEST(tarout_fault, file_that_cannot_be_opened_is_no_target) {
    support::write_file("file", "x");
    ASSERT_EQ(link("file", "same"), 0);
    expect_archive(
        {"open", EACCES},
        [] {
            tarout("file", nullptr, nullptr);
            tarout("same", nullptr, nullptr);
        },
        tar_file("same", status_of("same"), "x"),
        "test: file " + text_of(EACCES) + "\n");
}

TEST(tarout_fault, files_may_change_while_they_are_read) {
    support::archive_faults(writer).expect_changes(
        "test: b shrank, filled with zeros\n");
}

TEST(tarout_fault, file_may_vanish_before_it_is_opened) {
    support::archive_faults faults(writer);
    faults.expect({"open", 0, 2, 1, -1, [] { unlink("b"); }},
                  faults.archive_without("b"),
                  "test: b " + text_of(ENOENT) + "\n0 " +
                      std::to_string(ENOENT) + " 0 0\n");
}

TEST(tarout_fault, without_memory_for_links_the_process_ends) {
    support::write_file("file", "x");
    for (int nth = 1; nth <= 3; nth++) {
        outcome end = support::with_fault({"malloc", ENOMEM, nth}, [] {
            struct stat status = support::made_up_status();
            status.st_nlink = 2;
            tarinit(-1, -1);
            tarout("file", nullptr, &status);
        });
        EXPECT_EQ(end.signal, SIGABRT) << nth;
        EXPECT_EQ(end.err, "test: Ran out of memory\n") << nth;
    }
}

}  // namespace
