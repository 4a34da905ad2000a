// tarout_test.cc: tar archives on standard output.
#include "support/archive_model.h"
#include "support/child.h"
#include "support/doc.h"
#include "support/picture.h"
#include "support/tree.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <tovan/errexit.h>
#include <tovan/tarout.h>
#include <unistd.h>
#include <random>
#include <set>
#include <string>
#include <vector>

using support::made_up_status;
using support::random_bytes;
using support::status_of;
using support::tar_archive;
using support::tar_difference;
using support::tar_file;
using support::tar_header;

namespace {

// What `body` archives, with its end. Standard error has to be `err`.
template <typename Body>
std::string archive_of(Body body, const std::string &err = "", int uid = -1,
                       int gid = -1) {
    std::string archive;
    std::string messages = support::stderr_of([&] {
        archive = support::stdout_of([&] {
            tarinit(uid, gid);
            body();
            tardone();
        });
    });
    EXPECT_EQ(messages, err);
    return archive;
}

#define EXPECT_ARCHIVE(entries, archive) \
    EXPECT_EQ(tar_difference(tar_archive(entries), archive), "")

std::string taken(const char *path, const char *name, const struct stat *status,
                  const std::string &err = "") {
    return archive_of(
        [&] {
            tarout(path, name, status);
            EXPECT_EQ(errno, 0);
        },
        err);
}

// The same for what is not whole, for this reason.
std::string refused(const char *path, const char *name,
                    const struct stat *status, int reason,
                    const std::string &err) {
    return archive_of(
        [&] {
            tarout(path, name, status);
            EXPECT_EQ(errno, reason);
        },
        err);
}

std::string field(const std::string &archive, size_t offset, size_t width) {
    return archive.substr(offset, width);
}

TEST(tarout, header_fields_stand_in_their_places) {
    support::write_file("file", "content\n");
    struct stat status {};
    status.st_mode = S_IFREG | 04750;
    status.st_uid = 0175;
    status.st_gid = 0144;
    status.st_nlink = 1;
    status.st_mtime = 1000000000;
    std::string archive = taken("file", "src/file", &status);
    std::string expected = "src/file" + std::string(92, '\0');
    expected += std::string("  4750 \0   175 \0   144 \0", 24);
    expected += "         10  7346545000 ";
    EXPECT_EQ(archive.substr(0, 148), expected);
    EXPECT_EQ(field(archive, 148, 8), std::string("  5540\0 ", 8));
    EXPECT_EQ(archive.find_first_not_of('\0', 156), 512u);
    EXPECT_EQ(field(archive, 512, 8), "content\n");
    EXPECT_EQ(archive.find_first_not_of('\0', 520), std::string::npos);
    EXPECT_EQ(archive.size(), 10240u);
}

TEST(tarout, empty_archive_is_10240_zeros) {
    EXPECT_EQ(archive_of([] {}), std::string(10240, '\0'));
}

TEST(tarout, documented_archive_is_written) {
    const char page[] = "formats/tar.md";
    support::write_file("hello", support::doc_block(page, "hello"));
    struct stat status {};
    status.st_mode = S_IFREG | 0644;
    status.st_uid = 1000;
    status.st_gid = 100;
    status.st_nlink = 1;
    status.st_mtime = 1000000000;
    std::string shown = support::pictured_bytes("docs/formats/tar.md");
    ASSERT_GT(shown.size(), 512u);
    shown.resize(10240);
    EXPECT_EQ(tar_difference(shown, taken("hello", nullptr, &status)), "");
}

TEST(tarout, documented_fields_touch) {
    size_t end = 0;
    for (const auto &row :
         support::doc_table("formats/tar.md", "| offset | width | field |")) {
        EXPECT_EQ(row[0], std::to_string(end));
        end += std::stoul(row[1]);
    }
    EXPECT_EQ(end, 512u);
}

// Sizes around those of blocks, records and the room behind them.
TEST(tarout, sizes_around_blocks) {
    std::set<size_t> sizes;
    for (size_t edge : {0, 512, 1024, 8192, 10240, 61440, 71680, 81920}) {
        for (size_t d : {0, 1, 2, 511, 512, 513, 1023, 1024, 1025}) {
            sizes.insert(edge + d);
            if (edge >= d) sizes.insert(edge - d);
        }
    }
    struct stat status = made_up_status();
    for (size_t size : sizes) {
        std::string content = random_bytes(size);
        support::write_file("file", content);
        EXPECT_ARCHIVE(tar_file("file", status, content),
                       taken("file", "file", &status))
            << size;
    }
}

TEST(tarout, random_archives_agree_with_the_model) {
    std::mt19937 random(12);
    for (int round = 0; round < 40; round++) {
        std::string expected;
        std::string archive = archive_of([&] {
            for (auto n = static_cast<unsigned>(random() % 40); n > 0; n--) {
                std::string name(1 + random() % 99, 'n');
                size_t size = random() % (random() % 4 == 0 ? 200000 : 2000);
                std::string content = random_bytes(size, n);
                support::write_file(name, content);
                expected += tar_file(name, status_of(name), content);
                tarout(name.c_str(), nullptr, nullptr);
                EXPECT_EQ(errno, 0);
                unlink(name.c_str());
            }
        });
        ASSERT_EQ(tar_difference(tar_archive(expected), archive), "");
    }
}

TEST(tarout, records_are_single_writes_of_10240_bytes) {
    support::write_file("file", random_bytes(50001));
    std::vector<size_t> sizes = support::writes_of([] {
        tarinit(-1, -1);
        tarout("file", nullptr, nullptr);
        tarout("file", nullptr, nullptr);
        tardone();
    });
    EXPECT_EQ(sizes, std::vector<size_t>(10, 10240));
}

TEST(tarout, twentieth_block_writes_the_record) {
    std::string blocks = random_bytes(20 * 512);
    tarinit(-1, -1);
    EXPECT_EQ(support::stdout_of([&] {
                  for (size_t i = 0; i < 19; i++)
                      tarwrite(blocks.data() + i * 512);
              }),
              "");
    EXPECT_EQ(support::stdout_of([&] { tarwrite(blocks.data() + 19 * 512); }),
              blocks);
    EXPECT_EQ(support::stdout_of([] { tardone(); }), std::string(10240, '\0'));
}

TEST(tarout, end_fills_the_record) {
    std::string block(512, 'b');
    for (size_t count : {0, 1, 17, 18, 19, 20, 21, 38, 39}) {
        std::string entries;
        std::string archive = archive_of([&] {
            for (size_t i = 0; i < count; i++)
                tarwrite(block.data());
        });
        for (size_t i = 0; i < count; i++)
            entries += block;
        EXPECT_ARCHIVE(entries, archive) << count;
    }
}

TEST(tarout, names_of_up_to_99_characters) {
    support::write_file("file", "x");
    support::make_folders("folder");
    struct stat status = made_up_status();
    std::string longest(99, 'n');
    EXPECT_ARCHIVE(tar_file(longest, status, "x"),
                   taken("file", longest.c_str(), &status));
    status.st_mode = S_IFDIR | 0755;
    std::string archive = taken("folder", longest.c_str(), &status);
    EXPECT_ARCHIVE(tar_header(longest + "/", status, 0), archive);
    EXPECT_EQ(archive[99], '/');
    for (size_t n : {100, 101, 255, 256, 258, 259, 65536}) {
        std::string name(n, 'n');
        for (const char *path : {"file", "folder"}) {
            EXPECT_ARCHIVE("",
                           refused(path, name.c_str(), &status, ENAMETOOLONG,
                                   "test: " + name + " name too long\n"));
        }
    }
    std::string path = "./" + std::string(95, '/') + "file";
    EXPECT_ARCHIVE("", refused(path.c_str(), nullptr, nullptr, ENAMETOOLONG,
                               "test: " + path + " name too long\n"));
    EXPECT_ARCHIVE(tar_file("f", status_of("file"), "x"),
                   taken(path.c_str(), "f", nullptr));
}

TEST(tarout, status_is_given_or_that_of_the_name_or_of_the_path) {
    support::write_file("path", "content");
    support::write_file("name", "");
    chmod("path", 0600);
    chmod("name", 0755);
    struct stat status = made_up_status();
    EXPECT_ARCHIVE(tar_file("name", status, "content"),
                   taken("path", "name", &status));
    EXPECT_ARCHIVE(tar_file("name", status_of("name"), "content"),
                   taken("path", "name", nullptr));
    EXPECT_ARCHIVE(tar_file("other", status_of("path"), "content"),
                   taken("path", "other", nullptr));
    EXPECT_ARCHIVE(tar_file("path", status_of("path"), "content"),
                   taken("path", nullptr, nullptr));
}

TEST(tarout, directory_is_what_the_status_says) {
    support::make_folders("folder");
    support::write_file("file", "content");
    EXPECT_ARCHIVE(tar_header("folder/", status_of("folder"), 0),
                   taken("folder", nullptr, nullptr));
    struct stat status = made_up_status();
    status.st_mode = S_IFDIR | 01777;
    status.st_nlink = 5;
    EXPECT_ARCHIVE(tar_header("d/", status, 0), taken("file", "d", &status));
}

TEST(tarout, owner_and_group_can_be_forced) {
    support::write_file("file", "x");
    struct stat status = made_up_status();
    struct stat forced = status;
    forced.st_uid = 0;
    forced.st_gid = 0777777;
    EXPECT_ARCHIVE(
        tar_file("f", forced, "x"),
        archive_of([&] { tarout("file", "f", &status); }, "", 0, 0777777));
    forced = status;
    forced.st_gid = 7;
    EXPECT_ARCHIVE(
        tar_file("f", forced, "x"),
        archive_of([&] { tarout("file", "f", &status); }, "", -1, 7));
    EXPECT_ARCHIVE(tar_file("f", status, "x"), taken("file", "f", &status));
}

TEST(tarout, owners_beyond_18_bits_are_cut_and_reported) {
    support::write_file("file", "x");
    for (unsigned number : {01000000u, 01000005u, 0x80000001u, 0xffffffffu}) {
        struct stat status = made_up_status();
        status.st_uid = number;
        struct stat cut = status;
        cut.st_uid = number & 0777777;
        EXPECT_ARCHIVE(
            tar_file("f", cut, "x"),
            taken("file", "f", &status, "test: f owner does not fit\n"));
        std::swap(status.st_uid, status.st_gid);
        std::swap(cut.st_uid, cut.st_gid);
        status.st_uid = cut.st_uid = 65536;
        EXPECT_ARCHIVE(
            tar_file("f", cut, "x"),
            taken("file", "f", &status, "test: f group does not fit\n"));
    }
}

TEST(tarout, files_beyond_11_digits_are_left_out) {
    support::write_file("file", "x");
    struct stat status = made_up_status();
    for (off_t size : {off_t{1} << 33, (off_t{1} << 33) + 1}) {
        ASSERT_EQ(truncate("file", size), 0);
        EXPECT_ARCHIVE("", refused("file", "f", &status, EOVERFLOW,
                                   "test: f size does not fit\n"));
    }
}

TEST(tarout, file_of_one_byte_less_is_taken) {
    support::write_file("file", "x");
    ASSERT_EQ(truncate("file", (off_t{1} << 33) - 1), 0);
    support::outcome end = support::in_child([] {
        int ends[2];
        if (pipe(ends) != 0) _exit(9);
        signal(SIGPIPE, SIG_IGN);
        dup2(ends[1], 1);
        close(ends[1]);
        if (fork() == 0) {
            char block[512];
            close(1);
            if (read(ends[0], block, sizeof block) == 512)
                fprintf(stderr, "%.12s", block + 124);
            fflush(stderr);
            _exit(0);
        }
        close(ends[0]);
        tarinit(-1, -1);
        tarout("file", nullptr, nullptr);
        fprintf(stderr, "%d", errno == EPIPE);
    });
    EXPECT_EQ(end.err, "77777777777 test: standard output: Broken pipe\n1");
}

TEST(tarout, times_beyond_11_digits_leave_the_file_out) {
    support::write_file("file", "x");
    support::make_folders("folder");
    for (time_t time : {time_t{0}, time_t{1} << 32, (time_t{1} << 33) - 1}) {
        struct stat status = made_up_status();
        status.st_mtime = time;
        EXPECT_ARCHIVE(tar_file("f", status, "x"), taken("file", "f", &status));
    }
    for (time_t time : {time_t{-1}, time_t{1} << 33}) {
        struct stat status = made_up_status();
        status.st_mtime = time;
        EXPECT_ARCHIVE("", refused("file", "f", &status, EOVERFLOW,
                                   "test: f modification time does not fit\n"));
        status.st_mode = S_IFDIR | 0700;
        EXPECT_ARCHIVE("", refused("folder", "f", &status, EOVERFLOW,
                                   "test: f modification time does not fit\n"));
    }
}

TEST(tarout, checksum_takes_signed_characters) {
    support::write_file("file", "");
    struct stat status = made_up_status();
    std::string name(5, '\xff');
    EXPECT_ARCHIVE(tar_file(name, status, ""),
                   taken("file", name.c_str(), &status));
    std::string plain = taken("file", "n", &status);
    std::string high = taken("file", name.c_str(), &status);
    EXPECT_EQ(std::stoi(field(plain, 148, 6), nullptr, 8) - 'n' - 5,
              std::stoi(field(high, 148, 6), nullptr, 8));
}

TEST(tarout, checksum_below_zero_becomes_that_of_unsigned_characters) {
    support::write_file("file", "");
    struct stat status = made_up_status();
    std::string name(99, '\x80');
    std::string archive = taken("file", name.c_str(), &status);
    std::string header = archive.substr(0, 512);
    header.replace(148, 8, 8, ' ');
    int sum = 0;
    for (unsigned char c : header)
        sum += c;
    EXPECT_EQ(std::stoi(field(archive, 148, 6), nullptr, 8), sum);
    EXPECT_EQ(field(archive, 154, 3), std::string("\0 \0", 3));
    EXPECT_EQ(field(archive, 0, 100), name + '\0');
}

TEST(tarout, second_name_is_a_link_to_the_path_that_was_read) {
    support::write_file("first", "content");
    ASSERT_EQ(link("first", "second"), 0);
    ASSERT_EQ(link("first", "third"), 0);
    struct stat status = status_of("first");
    std::string archive = archive_of([] {
        tarout("first", "recorded", nullptr);
        tarout("second", nullptr, nullptr);
        tarout("third", "3", nullptr);
    });
    EXPECT_ARCHIVE(tar_file("recorded", status, "content") +
                       tar_header("second", status, 7, '1', "first") +
                       tar_header("3", status, 7, '1', "first"),
                   archive);
}

TEST(tarout, link_entries_keep_their_size) {
    support::write_file("file", std::string(1000, 'x'));
    ASSERT_EQ(link("file", "same"), 0);
    ASSERT_EQ(symlink("some target", "link"), 0);
    std::string archive = archive_of([] {
        tarout("link", nullptr, nullptr);
        tarout("file", nullptr, nullptr);
        tarout("same", nullptr, nullptr);
    });
    EXPECT_EQ(field(archive, 124, 12), "         13 ");
    EXPECT_EQ(field(archive, 512 + 1536 + 124, 12), "       1750 ");
    EXPECT_EQ(field(archive, 512 + 1536 + 156, 5), "1file");
}

TEST(tarout, links_are_told_by_inode_and_device) {
    support::write_file("file", "x");
    struct stat status = made_up_status();
    status.st_nlink = 2;
    struct stat other = status;
    other.st_dev = status.st_dev + (dev_t{1} << 32);
    std::string archive = archive_of([&] {
        tarout("file", "a", &status);
        tarout("file", "b", &other);
        tarout("file", "c", &status);
    });
    EXPECT_ARCHIVE(tar_file("a", status, "x") + tar_file("b", other, "x") +
                       tar_header("c", status, 1, '1', "file"),
                   archive);
}

TEST(tarout, next_archive_knows_no_links) {
    support::write_file("file", "x");
    ASSERT_EQ(link("file", "same"), 0);
    struct stat status = status_of("file");
    taken("file", nullptr, nullptr);
    EXPECT_ARCHIVE(tar_file("same", status, "x"),
                   taken("same", nullptr, nullptr));
    tarinit(-1, -1);
    tarout("file", nullptr, nullptr);
    EXPECT_ARCHIVE(tar_file("same", status, "x"),
                   taken("same", nullptr, nullptr));
}

TEST(tarout, file_that_is_left_out_is_no_target) {
    support::write_file("file", "x");
    ASSERT_EQ(link("file", "same"), 0);
    ASSERT_EQ(truncate("file", off_t{1} << 33), 0);
    struct stat status = status_of("file");
    std::string archive = archive_of(
        [&] {
            tarout("file", nullptr, nullptr);
            ASSERT_EQ(truncate("file", 1), 0);
            tarout("same", nullptr, nullptr);
        },
        "test: file size does not fit\n");
    status = status_of("same");
    EXPECT_ARCHIVE(tar_file("same", status, "x"), archive);
}

TEST(tarout, many_links) {
    support::write_file("file", "");
    struct stat status = made_up_status();
    status.st_nlink = 70000;
    std::string expected = tar_file("0", status, "");
    std::string archive = archive_of([&] {
        tarout("file", "0", &status);
        for (int i = 1; i < 70000; i++) {
            std::string name = std::to_string(i);
            tarout("file", name.c_str(), &status);
            if (i % 1000 == 0)
                expected += tar_header(name, status, 0, '1', "file");
        }
    });
    EXPECT_EQ(archive.size(), (70000u * 512 + 1024 + 10239) / 10240 * 10240);
    for (size_t i = 1; i <= 69; i++) {
        EXPECT_EQ(archive.substr(i * 1000 * 512, 512),
                  expected.substr(i * 512, 512));
    }
}

TEST(tarout, many_files_with_links) {
    support::write_file("file", "");
    struct stat status = made_up_status();
    status.st_nlink = 2;
    std::string archive = archive_of([&] {
        for (unsigned round = 0; round < 2; round++) {
            for (unsigned i = 0; i < 5000; i++) {
                status.st_ino = i;
                tarout("file", "f", &status);
            }
        }
    });
    for (size_t i = 0; i < 10000; i++)
        EXPECT_EQ(archive[i * 512 + 156], i < 5000 ? '\0' : '1') << i;
}

TEST(tarout, symbolic_links_hold_up_to_99_characters) {
    for (size_t n : {1, 98, 99, 100, 4095}) {
        std::string target(n, 't');
        unlink("link");
        ASSERT_EQ(symlink(target.c_str(), "link"), 0);
        bool is_cut = n > 99;
        struct stat status = status_of("link");
        EXPECT_ARCHIVE(
            tar_header("link", status, static_cast<long>(n), '2',
                       target.substr(0, 99)),
            taken("link", nullptr, nullptr,
                  is_cut ? "test: link link target too long\n" : ""));
    }
}

TEST(tarout, target_of_a_hard_link_is_cut_too) {
    support::write_file("file", "x");
    struct stat status = made_up_status();
    status.st_nlink = 2;
    std::string path = std::string(95, '/') + "x/../file";
    path = "." + path;
    support::make_folders("x");
    std::string archive = archive_of(
        [&] {
            tarout(path.c_str(), "a", &status);
            tarout(path.c_str(), "b", &status);
        },
        "test: b link target too long\n");
    EXPECT_ARCHIVE(tar_file("a", status, "x") +
                       tar_header("b", status, 1, '1', path.substr(0, 99)),
                   archive);
}

TEST(tarout, link_that_cannot_be_read_is_followed) {
    support::write_file("file", "12345678");
    ASSERT_EQ(symlink("file", "link"), 0);
    // By its status "other" is a link, and is none: readlink(2) fails.
    support::write_file("other", "content");
    struct stat status = status_of("link");
    EXPECT_ARCHIVE(tar_file("x", status, "content"),
                   taken("other", "x", &status));
}

TEST(tarout, special_files_become_empty_ones) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_ARCHIVE(tar_header("pipe", status_of("pipe"), 0),
                   taken("pipe", nullptr, nullptr));
    EXPECT_ARCHIVE(tar_header("/dev/zero", status_of("/dev/zero"), 0),
                   taken("/dev/zero", nullptr, nullptr));
}

TEST(tarout, what_cannot_be_read_is_named_and_left_out) {
    int server = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{AF_UNIX, "socket"};
    ASSERT_EQ(
        bind(server, reinterpret_cast<sockaddr *>(&address), sizeof address),
        0);
    close(server);
    EXPECT_ARCHIVE("", refused("none", "name", nullptr, ENOENT,
                               "test: none No such file or directory\n"));
    EXPECT_ARCHIVE("", refused("socket", "name", nullptr, ENXIO,
                               "test: socket No such device or address\n"));
    EXPECT_ARCHIVE("", refused(nullptr, "name", nullptr, EINVAL,
                               "test: No input file specified\n"));
}

TEST(tarout, messages_leave_out_a_null_progname) {
    progname = nullptr;
    EXPECT_ARCHIVE("", refused("none", "name", nullptr, ENOENT,
                               "none No such file or directory\n"));
    progname = "test";
}

TEST(tarout, calls_out_of_order_are_fatal) {
    const char message[] = "test: logic error - tarinit() not done\n";
    EXPECT_FATAL(tarout("file", nullptr, nullptr), 255, message);
    EXPECT_FATAL(tarout(nullptr, nullptr, nullptr), 255, message);
    EXPECT_FATAL(tardone(), 255, message);
    archive_of([] {});
    EXPECT_FATAL(tarout("file", nullptr, nullptr), 255, message);
    EXPECT_FATAL(tardone(), 255, message);
}

TEST(tarout, init_forgets_an_unfinished_archive) {
    support::write_file("file", "x");
    EXPECT_ARCHIVE("", archive_of([] {
                       tarout("file", nullptr, nullptr);
                       tarinit(-1, -1);
                   }));
}

TEST(tarout, write_errors_are_reported_once) {
    support::write_file("file", random_bytes(50000));
    support::outcome end = support::in_child([] {
        dup2(open("/dev/full", O_WRONLY), 1);
        tarinit(-1, -1);
        bool is_known = true;
        for (int i = 0; i < 3; i++) {
            tarout("file", nullptr, nullptr);
            is_known &= errno == ENOSPC;
        }
        tarout("none", nullptr, nullptr);
        tardone();
        is_known &= errno == ENOSPC;
        tarinit(-1, -1);
        tarout("none", nullptr, nullptr);
        fprintf(stderr, "%d", is_known && errno == ENOENT);
    });
    EXPECT_EQ(end.err,
              "test: standard output: No space left on device\n"
              "test: none No such file or directory\n1");
    EXPECT_EQ(end.out, "");
}

TEST(tarout, closed_output_is_a_write_error) {
    support::outcome end = support::in_child([] {
        close(1);
        tarinit(-1, -1);
        tardone();
        fprintf(stderr, "%d", errno == EBADF);
    });
    EXPECT_EQ(end.err, "test: standard output: Bad file descriptor\n1");
}

TEST(tarout, closed_pipe_is_a_signal_or_an_error_as_the_process_likes) {
    for (bool ignores : {false, true}) {
        support::outcome end = support::in_child([ignores] {
            int ends[2];
            if (pipe(ends) != 0) _exit(9);
            close(ends[0]);
            dup2(ends[1], 1);
            signal(SIGPIPE, ignores ? SIG_IGN : SIG_DFL);
            tarinit(-1, -1);
            tardone();
            fprintf(stderr, "%d", errno == EPIPE);
        });
        EXPECT_EQ(end.signal, ignores ? 0 : SIGPIPE);
        EXPECT_EQ(end.err,
                  ignores ? "test: standard output: Broken pipe\n1" : "");
    }
}

TEST(tarout, leaves_no_descriptor_open) {
    support::write_file("file", "x");
    ASSERT_EQ(symlink("file", "link"), 0);
    int before = dup(0);
    close(before);
    archive_of(
        [] {
            for (const char *path : {"file", "none", ".", "/dev/null", "link"})
                tarout(path, nullptr, nullptr);
        },
        "test: none No such file or directory\n");
    int after = dup(0);
    close(after);
    EXPECT_EQ(after, before);
}

TEST(tarheader, slash_stands_where_the_length_says) {
    struct stat status = made_up_status();
    const struct {
        const char *name;
        int length;
        std::string field;
    } rows[] = {{"name", 0, "name"},
                {"name", 4, "name/"},
                {"name", 2, "na/e"},
                {"name", -1, "name"},
                {"", 1, std::string("\0/", 2)},
                {"name", 100, "name"},
                {"name", 2147483647, "name"}};
    for (const auto &row : rows) {
        std::string archive = archive_of(
            [&] { tarheader(row.name, row.length, &status, 0, nullptr); });
        std::string name = row.field;
        name.resize(100);
        EXPECT_EQ(field(archive, 0, 100), name) << row.name << row.length;
    }
    std::string longest(150, 'n');
    std::string archive = archive_of(
        [&] { tarheader(longest.c_str(), 100, &status, 0, nullptr); });
    EXPECT_EQ(field(archive, 0, 101), std::string(100, 'n') + ' ');
}

TEST(tarheader, numbers_stay_in_their_fields) {
    struct stat status = made_up_status();
    status.st_mtime = -1;
    std::string archive =
        archive_of([&] { tarheader("f", 0, &status, -1, nullptr); });
    EXPECT_EQ(field(archive, 124, 24), "77777777777 77777777777 ");
}

TEST(tarheader, type_follows_link_and_status) {
    struct stat status = made_up_status();
    status.st_mode = S_IFLNK | 0777;
    EXPECT_ARCHIVE(tar_header("f", status, 0, '2', "to"),
                   archive_of([&] { tarheader("f", 0, &status, 0, "to"); }));
    status.st_mode = S_IFREG | 0777;
    EXPECT_ARCHIVE(tar_header("f", status, 0, '1', "to"),
                   archive_of([&] { tarheader("f", 0, &status, 0, "to"); }));
    EXPECT_ARCHIVE(tar_header("f", status, 0),
                   archive_of([&] { tarheader("f", 0, &status, 0, nullptr); }));
}

TEST(tarcontents, whole_blocks_of_what_is_there) {
    std::string content = random_bytes(3000);
    support::write_file("file", content);
    for (long size : {-1L, 0L, 1L, 511L, 512L, 513L, 1024L, 3000L}) {
        std::string archive = archive_of([size] {
            int descriptor = open("file", O_RDONLY);
            tarcontents(descriptor, size);
            close(descriptor);
        });
        size_t taken = size > 0 ? static_cast<size_t>(size) : 0;
        std::string blocks = content.substr(0, taken);
        blocks.resize((taken + 511) / 512 * 512);
        EXPECT_ARCHIVE(blocks, archive) << size;
    }
}

TEST(tarcontents, what_is_missing_is_zeros) {
    support::write_file("file", "content");
    for (long size : {8L, 512L, 513L, 100000L}) {
        std::string archive = archive_of(
            [size] {
                int descriptor = open("file", O_RDONLY);
                tarcontents(descriptor, size);
                close(descriptor);
            },
            "test: tarout shrank, filled with zeros\n");
        std::string blocks = "content";
        blocks.resize((static_cast<size_t>(size) + 511) / 512 * 512);
        EXPECT_ARCHIVE(blocks, archive) << size;
    }
}

TEST(tarcontents, read_errors_are_reported) {
    std::string archive = archive_of([] { tarcontents(-1, 5); },
                                     "test: tarout Bad file descriptor\n"
                                     "test: tarout shrank, filled with "
                                     "zeros\n");
    EXPECT_ARCHIVE(std::string(512, '\0'), archive);
}

TEST(tarlnname, target_of_links_only) {
    support::write_file("file", "x");
    ASSERT_EQ(symlink("target", "link"), 0);
    tarinit(-1, -1);
    struct stat status = status_of("link");
    EXPECT_STREQ(tarlnname("link", &status), "target");
    EXPECT_EQ(tarlnname("file", &status), nullptr);
    status = status_of("file");
    EXPECT_EQ(tarlnname("file", &status), nullptr);
    EXPECT_EQ(tarlnname("file", &status), nullptr);
    status.st_nlink = 2;
    EXPECT_EQ(tarlnname("path", &status), nullptr);
    EXPECT_STREQ(tarlnname("other", &status), "path");
    EXPECT_STREQ(tarlnname("third", &status), "path");
    tarinit(-1, -1);
    EXPECT_EQ(tarlnname("other", &status), nullptr);
    support::stdout_of([] { tardone(); });
}

}  // namespace
