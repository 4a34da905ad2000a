// cpioput_fault_test.cc: cpio archives when calls of the system fail, are
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
#include <tovan/cpioput.h>
#include <unistd.h>
#include <algorithm>
#include <string>
#include <vector>

namespace {

using support::always;
using support::cpio_archive;
using support::cpio_difference;
using support::fault;
using support::half;
using support::outcome;

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

// Archives the files. Standard error ends with the errno of each and of the
// end.
void archive_files() {
    cpiosetup(0);
    std::string reasons;
    for (const file &each : files) {
        cpioput(each.name.c_str(), each.name.c_str(), nullptr);
        reasons += std::to_string(errno) + " ";
    }
    cpiofin();
    fprintf(stderr, "%s%d\n", reasons.c_str(), errno);
}

std::string entry(const std::string &name, const std::string &content) {
    return support::cpio_entry(name, support::status_of(name), content);
}

std::string whole_archive() {
    std::string entries;
    for (const file &each : files)
        entries += entry(each.name, each.content);
    return cpio_archive(entries);
}

void expect_end(const outcome &end, const std::string &archive,
                const std::string &err, const fault &what) {
    std::string name = support::name_of(what);
    EXPECT_EQ(cpio_difference(archive, end.out), "") << name;
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

TEST(cpioput_fault, interruptions_and_short_counts_change_nothing) {
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

TEST(cpioput_fault, every_write_may_fail) {
    write_files();
    std::string whole = whole_archive();
    int count = calls("write");
    EXPECT_EQ(static_cast<size_t>(count) * 5120, whole.size());
    for (int error : {EIO, ENOSPC, EDQUOT, EFBIG, EAGAIN, EPIPE}) {
        for (int nth = 1; nth <= count; nth++) {
            fault what{"write", error, nth};
            outcome end = support::with_fault(what, archive_files);
            std::string written =
                whole.substr(0, static_cast<size_t>(nth - 1) * 5120);
            EXPECT_EQ(cpio_difference(written, end.out), "")
                << support::name_of(what);
            // Reported once; the end knows the reason.
            std::string last = " " + std::to_string(error) + "\n";
            EXPECT_EQ(end.err.rfind("Can't write to std out!\n", 0), 0u)
                << end.err;
            EXPECT_EQ(end.err.substr(end.err.size() - last.size()), last);
            EXPECT_EQ(std::count(end.err.begin(), end.err.end(), '\n'), 2);
            EXPECT_EQ(end.exit_status, 0);
        }
    }
}

TEST(cpioput_fault, write_without_progress_is_a_full_disk) {
    write_files();
    std::string reason = std::to_string(ENOSPC);
    expect({"write", 0, 3, always, 0}, whole_archive().substr(0, 2 * 5120),
           "Can't write to std out!\n0 " + reason + " " + reason + " " +
               reason + "\n");
}

TEST(cpioput_fault, half_a_block_may_be_the_last_that_fits) {
    write_files();
    outcome end =
        support::with_fault({"write", ENOSPC, 3, always, 2000}, archive_files);
    EXPECT_EQ(cpio_difference(whole_archive().substr(0, 4000), end.out), "");
    EXPECT_EQ(end.err.rfind("Can't write to std out!\n", 0), 0u);
}

// The archive when "b" has only so many bytes left of its content.
std::string archive_with_b(size_t bytes) {
    std::string content = files[1].content.substr(0, bytes);
    content.resize(large);
    return cpio_archive(entry("a", files[0].content) + entry("b", content) +
                        entry("c", files[2].content));
}

// As archive_with_b(), the count taken from what the archive holds.
void expect_zeros_behind(const outcome &end) {
    size_t start = entry("a", files[0].content).size() + 78;
    std::string content = end.out.substr(start, large);
    size_t good = 0;
    while (good < large && content[good] == files[1].content[good])
        good++;
    EXPECT_LT(good, large);
    EXPECT_EQ(content.find_first_not_of('\0', good), std::string::npos);
    EXPECT_EQ(cpio_difference(archive_with_b(good), end.out), "");
}

TEST(cpioput_fault, every_read_may_fail) {
    write_files();
    int count = calls("read");
    EXPECT_GE(count, 5);
    for (int error : {EIO, EISDIR, EAGAIN}) {
        for (int nth = 2; nth < count; nth++) {
            outcome end =
                support::with_fault({"read", error, nth}, archive_files);
            EXPECT_EQ(end.err,
                      "Cannot read temp file\n"
                      "`b' shrank, filled with zeros\n0 " +
                          std::to_string(error) + " 0 0\n");
            expect_zeros_behind(end);
        }
    }
    std::string zeros(3000, '\0');
    expect({"read", EIO},
           cpio_archive(entry("a", zeros) + entry("b", files[1].content) +
                        entry("c", files[2].content)),
           "Cannot read temp file\n`a' shrank, filled with zeros\n" +
               std::to_string(EIO) + " 0 0 0\n");
}

TEST(cpioput_fault, every_read_may_be_the_end) {
    write_files();
    int count = calls("read");
    for (int nth = 2; nth < count; nth++) {
        outcome end =
            support::with_fault({"read", 0, nth, 1, 0}, archive_files);
        EXPECT_EQ(end.err, "`b' shrank, filled with zeros\n0 " +
                               std::to_string(EIO) + " 0 0\n");
        expect_zeros_behind(end);
    }
}

TEST(cpioput_fault, every_open_and_fstat_may_fail) {
    write_files();
    for (int nth = 1; nth <= 3; nth++) {
        std::string entries;
        std::string reasons;
        const std::string &name = files[static_cast<size_t>(nth - 1)].name;
        for (int error : {EACCES, EMFILE, ENFILE, ENOENT, ELOOP, ENOMEM, EIO,
                          ENAMETOOLONG, ENOTDIR}) {
            entries.clear();
            reasons.clear();
            for (const file &each : files) {
                if (each.name != name)
                    entries += entry(each.name, each.content);
                reasons +=
                    (each.name == name ? std::to_string(error) : "0") + " ";
            }
            std::string archive = cpio_archive(entries);
            expect({"open", error, nth}, archive,
                   "Can't open `" + name + "'\n" + reasons + "0\n");
            expect({"fstat", error, nth}, archive,
                   "Cannot stat `" + name + "'\n" + reasons + "0\n");
        }
    }
}

// A file that changes when it was looked at and before it is read.
void expect_with_change(void (*change)(), const std::string &archive,
                        const std::string &err) {
    write_files();
    fault what{"read", 0, 2, 1, -1, change};
    expect_end(support::with_fault(what, archive_files), archive, err, what);
}

TEST(cpioput_fault, files_may_change_while_they_are_read) {
    write_files();
    std::string shrank =
        "`b' shrank, filled with zeros\n0 " + std::to_string(EIO) + " 0 0\n";
    std::string empty = archive_with_b(0);
    std::string some = archive_with_b(100000);
    std::string whole = whole_archive();
    expect_with_change(
        [] {
            if (truncate("b", 0) != 0) _exit(9);
        },
        empty, shrank);
    expect_with_change(
        [] {
            if (truncate("b", 100000) != 0) _exit(9);
        },
        some, shrank);
    expect_with_change(
        [] {
            if (truncate("b", 3 * large) != 0) _exit(9);
        },
        whole, "0 0 0 0\n");
    expect_with_change([] { unlink("b"); }, whole, "0 0 0 0\n");
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
    expect_end(end, cpio_archive(support::cpio_entry("link", status, "")), "",
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
