// tarout_fault_test.cc: tar archives when calls of the system fail, are
// interrupted, or transfer less than was asked for, and when files change
// while they are read.
#include "support/archive_model.h"
#include "support/faults/faults.h"
#include "support/tree.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <sys/stat.h>
#include <tovan/tarout.h>
#include <unistd.h>
#include <algorithm>
#include <string>
#include <vector>

namespace {

using support::always;
using support::fault;
using support::half;
using support::outcome;
using support::status_of;
using support::tar_archive;
using support::tar_difference;
using support::tar_file;
using support::tar_header;
using support::text_of;

constexpr size_t large = 200000;  // read in several pieces

struct file {
    std::string name;
    std::string content;
};
const std::vector<file> files = {{"a", support::random_bytes(3000)},
                                 {"b", support::random_bytes(large)},
                                 {"c", support::random_bytes(700)}};

void write_files() {
    timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
    for (const file &each : files) {
        support::write_file(each.name, each.content);
        utimensat(AT_FDCWD, each.name.c_str(), times, 0);
    }
}

// Archives the files under their names. Standard error ends with the errno of
// each and of the end.
void archive_files() {
    tarinit(-1, -1);
    std::string reasons;
    for (const file &each : files) {
        tarout(each.name.c_str(), each.name.c_str(), nullptr);
        reasons += std::to_string(errno) + " ";
    }
    tardone();
    fprintf(stderr, "%s%d\n", reasons.c_str(), errno);
}

std::string entry(const std::string &name, const std::string &content) {
    return tar_file(name, status_of(name), content);
}

std::string whole_archive() {
    std::string entries;
    for (const file &each : files)
        entries += entry(each.name, each.content);
    return tar_archive(entries);
}

void expect_end(const outcome &end, const std::string &archive,
                const std::string &err, const fault &what) {
    std::string name = support::name_of(what);
    EXPECT_EQ(tar_difference(archive, end.out), "") << name;
    EXPECT_EQ(end.err, err) << name;
    EXPECT_EQ(end.exit_status, 0) << name;
}

void expect(const fault &what, const std::string &archive,
            const std::string &err) {
    expect_end(support::with_fault(what, archive_files), archive, err, what);
}

// How often the archive takes a call.
int calls(const char *call) {
    outcome end = support::in_child([call] {
        support::heal();
        archive_files();
        fprintf(stderr, "%d", support::calls_of(call));
    });
    return std::stoi(end.err.substr(end.err.find('\n') + 1));
}

TEST(tarout_fault, interruptions_and_short_counts_change_nothing) {
    write_files();
    std::string whole = whole_archive();
    for (const fault &what :
         {fault{"write", EINTR, 1, 5}, fault{"write", 0, 1, always, 1},
          fault{"write", 0, 1, always, half}, fault{"read", EINTR, 1, 5},
          fault{"read", 0, 1, always, 1}, fault{"read", 0, 1, always, half},
          fault{"open", EINTR, 1, 5}, fault{"close", EIO, 1, 3},
          fault{"close", EINTR, 1, 3}}) {
        expect(what, whole, "0 0 0 0\n");
    }
}

TEST(tarout_fault, every_write_may_fail) {
    write_files();
    std::string whole = whole_archive();
    int count = calls("write");
    EXPECT_EQ(static_cast<size_t>(count) * 10240, whole.size());
    for (int error : {EIO, ENOSPC, EDQUOT, EFBIG, EAGAIN, EPIPE}) {
        for (int nth = 1; nth <= count; nth++) {
            fault what{"write", error, nth};
            outcome end = support::with_fault(what, archive_files);
            std::string written =
                whole.substr(0, static_cast<size_t>(nth - 1) * 10240);
            EXPECT_EQ(tar_difference(written, end.out), "")
                << support::name_of(what);
            // Reported once; the end knows the reason.
            std::string message =
                "test: standard output: " + text_of(error) + "\n";
            EXPECT_EQ(end.err.rfind(message, 0), 0u) << end.err;
            std::string last = " " + std::to_string(error) + "\n";
            EXPECT_EQ(end.err.substr(end.err.size() - last.size()), last);
            EXPECT_EQ(std::count(end.err.begin(), end.err.end(), '\n'), 2);
            EXPECT_EQ(end.exit_status, 0);
        }
    }
}

TEST(tarout_fault, write_without_progress_is_a_full_disk) {
    write_files();
    std::string reason = std::to_string(ENOSPC);
    expect({"write", 0, 3, always, 0}, whole_archive().substr(0, 2 * 10240),
           "test: standard output: " + text_of(ENOSPC) + "\n0 " + reason + " " +
               reason + " " + reason + "\n");
}

// "b" may have ended after any number of blocks of zeros and content.
void expect_zeros_behind(const outcome &end) {
    size_t start = 512 + 3072 + 512;
    std::string content = end.out.substr(start, large);
    size_t good = 0;
    while (good < large && content[good] == files[1].content[good])
        good++;
    EXPECT_LT(good, large);
    EXPECT_EQ(content.find_first_not_of('\0', good), std::string::npos);
    std::string expected = files[1].content.substr(0, good);
    expected.resize(large);
    EXPECT_EQ(tar_difference(tar_archive(entry("a", files[0].content) +
                                         entry("b", expected) +
                                         entry("c", files[2].content)),
                             end.out),
              "");
}

TEST(tarout_fault, every_read_may_fail) {
    write_files();
    int count = calls("read");
    EXPECT_GE(count, 5);
    for (int error : {EIO, EISDIR, EAGAIN}) {
        for (int nth = 2; nth < count; nth++) {
            outcome end =
                support::with_fault({"read", error, nth}, archive_files);
            EXPECT_EQ(end.err, "test: tarout " + text_of(error) +
                                   "\ntest: b shrank, filled with zeros\n0 " +
                                   std::to_string(error) + " 0 0\n");
            expect_zeros_behind(end);
        }
    }
}

TEST(tarout_fault, every_read_may_be_the_end) {
    write_files();
    int count = calls("read");
    for (int nth = 2; nth < count; nth++) {
        outcome end =
            support::with_fault({"read", 0, nth, 1, 0}, archive_files);
        EXPECT_EQ(end.err, "test: b shrank, filled with zeros\n0 " +
                               std::to_string(EIO) + " 0 0\n");
        expect_zeros_behind(end);
    }
}

constexpr int look_errors[] = {EACCES, EMFILE, ENFILE,  ENOENT,      ELOOP,
                               ENOMEM, EIO,    ENOTDIR, ENAMETOOLONG};

// The archive without the nth file, which has failed with `error`.
void expect_without(const char *call, int nth_call, size_t nth_file,
                    int error) {
    std::string entries;
    std::string err =
        "test: " + files[nth_file].name + " " + text_of(error) + "\n";
    for (size_t i = 0; i < files.size(); i++) {
        if (i != nth_file) entries += entry(files[i].name, files[i].content);
        err += (i == nth_file ? std::to_string(error) : "0") + " ";
    }
    expect({call, error, nth_call}, tar_archive(entries), err + "0\n");
}

TEST(tarout_fault, every_open_and_lstat_may_fail) {
    write_files();
    std::string whole = whole_archive();
    for (int error : look_errors) {
        for (int nth = 0; nth < 3; nth++) {
            expect_without("open", nth + 1, static_cast<size_t>(nth), error);
            // The path's; then the name's, which the path's stands in for.
            expect_without("lstat", 2 * nth + 1, static_cast<size_t>(nth),
                           error);
            expect({"lstat", error, 2 * nth + 2}, whole, "0 0 0 0\n");
        }
    }
}

TEST(tarout_fault, link_that_cannot_be_read_is_followed) {
    support::write_file("file", "1234");
    ASSERT_EQ(symlink("file", "link"), 0);
    struct stat status = status_of("link");
    for (int error : {EACCES, EIO, EINVAL}) {
        fault what{"readlink", error};
        outcome end = support::with_fault(what, [] {
            tarinit(-1, -1);
            tarout("link", nullptr, nullptr);
            tardone();
        });
        expect_end(end, tar_archive(tar_file("link", status, "1234")), "",
                   what);
    }
}

TEST(tarout_fault, file_that_cannot_be_opened_is_no_target) {
    support::write_file("file", "x");
    ASSERT_EQ(link("file", "same"), 0);
    fault what{"open", EACCES};
    outcome end = support::with_fault(what, [] {
        tarinit(-1, -1);
        tarout("file", nullptr, nullptr);
        tarout("same", nullptr, nullptr);
        tardone();
    });
    expect_end(end, tar_archive(tar_file("same", status_of("same"), "x")),
               "test: file " + text_of(EACCES) + "\n", what);
}

// "b" changes when it was looked at and before it is read.
void expect_with_change(const char *call, int nth, void (*change)(),
                        const std::string &archive, const std::string &err) {
    write_files();
    fault what{call, 0, nth, 1, -1, change};
    expect_end(support::with_fault(what, archive_files), archive, err, what);
}

TEST(tarout_fault, files_may_change_while_they_are_read) {
    write_files();
    std::string shrank = "test: b shrank, filled with zeros\n0 " +
                         std::to_string(EIO) + " 0 0\n";
    auto with_b = [](size_t bytes) {
        std::string content = files[1].content.substr(0, bytes);
        content.resize(large);
        return tar_archive(entry("a", files[0].content) + entry("b", content) +
                           entry("c", files[2].content));
    };
    std::string empty = with_b(0);
    std::string some = with_b(100000);
    std::string whole = whole_archive();
    expect_with_change(
        "read", 2,
        [] {
            if (truncate("b", 0) != 0) _exit(9);
        },
        empty, shrank);
    expect_with_change(
        "read", 2,
        [] {
            if (truncate("b", 100000) != 0) _exit(9);
        },
        some, shrank);
    expect_with_change(
        "read", 2,
        [] {
            if (truncate("b", 3 * large) != 0) _exit(9);
        },
        whole, "0 0 0 0\n");
    expect_with_change(
        "read", 2, [] { unlink("b"); }, whole, "0 0 0 0\n");
    // Vanished between lstat(2) and open(2).
    std::string without_b = tar_archive(entry("a", files[0].content) +
                                        entry("c", files[2].content));
    expect_with_change(
        "open", 2, [] { unlink("b"); }, without_b,
        "test: b " + text_of(ENOENT) + "\n0 " + std::to_string(ENOENT) +
            " 0 0\n");
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
