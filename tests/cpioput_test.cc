// cpioput_test.cc: cpio archives on standard output.
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
#include <time.h>
#include <tovan/cpioput.h>
#include <unistd.h>
#include <random>
#include <set>
#include <string>
#include <vector>

using support::cpio_archive;
using support::cpio_difference;
using support::cpio_entry;
using support::made_up_status;
using support::random_bytes;
using support::status_of;

namespace {

// What `body` archives, with its end. Standard error has to be `err`.
template <typename Body>
std::string archive_of(Body body, const std::string &err = "",
                       int use_now = 0) {
    std::string archive;
    std::string messages = support::stderr_of([&] {
        archive = support::stdout_of([&] {
            cpiosetup(use_now);
            body();
            cpiofin();
        });
    });
    EXPECT_EQ(messages, err);
    return archive;
}

#define EXPECT_ARCHIVE(entries, archive) \
    EXPECT_EQ(cpio_difference(cpio_archive(entries), archive), "")

// The field of the first header.
std::string field(const std::string &archive, size_t offset, size_t width) {
    return archive.substr(offset, width);
}
std::string inode_in(const std::string &archive) {
    return field(archive, 12, 6);
}

TEST(cpioput, header_fields_stand_in_their_places) {
    support::write_file("a file", "content\n");
    struct stat status {};
    status.st_dev = 0x10801;
    status.st_ino = 01234;
    status.st_mode = S_IFREG | 0640;
    status.st_uid = 0175;
    status.st_gid = 0144;
    status.st_nlink = 1;
    status.st_rdev = 0x20007;
    status.st_mtime = 1000000000;
    std::string archive =
        archive_of([&] { cpioput("a file", "./src/file", &status); });
    EXPECT_EQ(archive.substr(0, 76 + 9 + 8),
              "070707"
              "004001"
              "001234"
              "100640"
              "000175"
              "000144"
              "000001"
              "000007"
              "07346545000"
              "000011"
              "00000000010"
              "src/file" +
                  std::string(1, '\0') + "content\n");
    EXPECT_EQ(archive.size() % 5120, 0u);
}

TEST(cpioput, empty_archive_is_the_trailer_and_whole_blocks_of_zeros) {
    std::string archive = archive_of([] {});
    std::string trailer =
        "070707"
        "000000"
        "000000"
        "000000"
        "000000"
        "000000"
        "000000"
        "000000"
        "00000000000"
        "000013"
        "00000000000"
        "TRAILER!!!";
    EXPECT_EQ(archive, trailer + std::string(81920 - trailer.size(), '\0'));
}

TEST(cpioput, documented_archive_is_written) {
    const char page[] = "formats/cpio.md";
    support::write_file("hello", support::doc_block(page, "hello"));
    struct stat status {};
    status.st_dev = 0x801;
    status.st_ino = 0x5dc1e8;
    status.st_mode = S_IFREG | 0644;
    status.st_uid = 1000;
    status.st_gid = 100;
    status.st_nlink = 1;
    status.st_mtime = 1000000000;
    std::string archive =
        archive_of([&] { cpioput("hello", "./hello", &status); });
    std::string shown = support::pictured_bytes("docs/formats/cpio.md");
    ASSERT_GT(shown.size(), 76u);
    EXPECT_EQ(cpio_difference(shown, archive.substr(0, shown.size())), "");
    EXPECT_EQ(archive.find_first_not_of('\0', shown.size()), std::string::npos);
    EXPECT_EQ(archive.size(), 81920u);
}

TEST(cpioput, documented_fields_touch) {
    size_t end = 0;
    for (const auto &row :
         support::doc_table("formats/cpio.md", "| offset | width | field |")) {
        EXPECT_EQ(row[0], std::to_string(end));
        if (end < 76) end += std::stoul(row[1]);
    }
    EXPECT_EQ(end, 76u);
}

// Sizes around those of the blocks and of the room behind them.
TEST(cpioput, sizes_around_blocks) {
    std::set<size_t> sizes;
    for (size_t edge : {0, 512, 4096, 5120, 10240, 66560, 71680, 76800}) {
        for (size_t d : {0, 1, 2, 75, 80, 81, 82, 83, 161, 167, 168, 169}) {
            sizes.insert(edge + d);
            if (edge >= d) sizes.insert(edge - d);
        }
    }
    struct stat status = made_up_status();
    for (size_t size : sizes) {
        std::string content = random_bytes(size);
        support::write_file("file", content);
        std::string archive =
            archive_of([&] { cpioput("file", "file", &status); });
        EXPECT_ARCHIVE(cpio_entry("file", status, content), archive) << size;
    }
}

TEST(cpioput, random_archives_agree_with_the_model) {
    std::mt19937 random(11);
    for (int round = 0; round < 40; round++) {
        std::string expected;
        std::string archive = archive_of([&] {
            for (auto n = static_cast<unsigned>(random() % 12); n > 0; n--) {
                std::string name(1 + random() % 100, 'n');
                size_t size = random() % (random() % 4 == 0 ? 200000 : 6000);
                std::string content = random_bytes(size, n);
                support::write_file(name, content);
                expected += cpio_entry(name, status_of(name), content);
                cpioput(name.c_str(), name.c_str(), nullptr);
                EXPECT_EQ(errno, 0);
                unlink(name.c_str());
            }
        });
        ASSERT_EQ(cpio_difference(cpio_archive(expected), archive), "");
    }
}

TEST(cpioput, blocks_are_single_writes_of_5120_bytes) {
    support::write_file("file", random_bytes(30000));
    std::vector<size_t> sizes = support::writes_of([] {
        cpiosetup(0);
        cpioput("file", "file", nullptr);
        cpioput("file", "file", nullptr);
    });
    EXPECT_EQ(sizes, std::vector<size_t>(60162 / 5120, 5120));
}

TEST(cpioput, full_block_waits_for_the_next_byte) {
    std::string block = random_bytes(5120);
    EXPECT_EQ(support::stdout_of([&] {
                  cpiosetup(0);
                  writehdr(block.data(), 5120);
                  writehdr(block.data(), 0);
                  writehdr(block.data(), -1);
              }),
              "");
    EXPECT_EQ(support::stdout_of([] { writehdr("", 1); }), block);
    EXPECT_EQ(support::stdout_of([&] { writehdr(block.data(), 5119); }), "");
}

TEST(cpioput, trailer_that_fills_a_block_stays_in_80_blocks) {
    // The padding alone ends with a block then, which nothing follows.
    std::string filler(5120 - 87, 'f');
    std::string archive = archive_of(
        [&] { writehdr(filler.data(), static_cast<int>(filler.size())); });
    EXPECT_EQ(archive.size(), 81920u);
    EXPECT_ARCHIVE(filler, archive);
}

TEST(cpioput, setup_forgets_an_unfinished_archive) {
    support::write_file("file", "content");
    std::string archive = archive_of([] {
        cpioput("file", "file", nullptr);
        cpiosetup(0);
    });
    EXPECT_ARCHIVE("", archive);
}

TEST(cpioput, dot_and_slash_in_front_of_a_name_are_dropped_once) {
    const struct {
        const char *name;
        const char *recorded;
        const char *name_size;
    } rows[] = {
        {"./a/b", "a/b", "000004"}, {"a/b", "a/b", "000004"},
        {"././a", "./a", "000004"}, {".", ".", "000002"},
        {"./", "", "000001"},       {"..", "..", "000003"},
        {".a", ".a", "000003"},     {"../a", "../a", "000005"},
        {"", "", "000001"},         {"a/./b", "a/./b", "000006"},
    };
    support::write_file("file", "x");
    struct stat status = made_up_status();
    for (const auto &row : rows) {
        std::string archive =
            archive_of([&] { cpioput("file", row.name, &status); });
        EXPECT_ARCHIVE(cpio_entry(row.recorded, status, "x"), archive);
        EXPECT_EQ(field(archive, 59, 6), row.name_size) << row.name;
    }
}

TEST(cpioput, empty_file_is_a_header_only) {
    support::write_file("file", "");
    std::string archive = archive_of([] { cpioput("file", "f", nullptr); });
    EXPECT_EQ(archive.substr(76, 8), std::string("f\0", 2) + "070707");
    EXPECT_EQ(field(archive, 65, 11), "00000000000");
}

TEST(cpioput, now_is_the_time_of_the_setup_everywhere) {
    support::write_file("file", "");
    struct stat status = made_up_status();
    time_t before = time(nullptr);
    std::string archive = archive_of(
        [&] {
            cpioput("file", "f", nullptr);
            cpioput("file", "f", &status);
        },
        "", 1);
    time_t after = time(nullptr);
    std::string now = field(archive, 48, 11);
    long value = std::stol(now, nullptr, 8);
    EXPECT_GE(value, before);
    EXPECT_LE(value, after);
    EXPECT_EQ(field(archive, 78 + 48, 11), now);
    EXPECT_EQ(archive.substr(78 + 78 + 76, 10), "TRAILER!!!");
    EXPECT_EQ(field(archive, 78 + 78 + 48, 11), now);
}

TEST(cpioput, entry_without_a_path_has_no_content_and_ends_the_archive) {
    struct stat status = made_up_status();
    status.st_size = 100;
    std::string archive = support::stdout_of([&] {
        cpiosetup(0);
        cpioput(nullptr, "./end", &status);
    });
    std::string entry = cpio_entry("end", status, "");
    EXPECT_EQ(archive, entry + std::string(81920 - entry.size(), '\0'));
}

TEST(cpioput, what_is_no_regular_file_has_no_content) {
    support::make_folders("folder");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    ASSERT_EQ(symlink("folder", "link"), 0);
    for (const char *path : {"folder", "pipe", "/dev/null", "link"}) {
        struct stat status {};
        ASSERT_EQ(stat(path, &status), 0);
        // The number of a directory is cut, too.
        std::string archive = archive_of([&] { cpioput(path, "x", nullptr); });
        EXPECT_ARCHIVE(cpio_entry("x", status, ""), archive) << path;
    }
}

// Readers do not look for content behind the headers of such files.
TEST(cpioput, status_of_something_else_takes_the_content_away) {
    support::write_file("file", "content");
    ASSERT_EQ(symlink("file", "link"), 0);
    struct stat status = made_up_status();
    for (mode_t type : {S_IFDIR, S_IFIFO, S_IFCHR, S_IFBLK, S_IFSOCK}) {
        status.st_mode = type | 0700;
        std::string archive =
            archive_of([&] { cpioput("file", "x", &status); });
        EXPECT_ARCHIVE(cpio_entry("x", status, ""), archive);
    }
    status.st_mode = S_IFLNK | 0777;
    EXPECT_ARCHIVE(cpio_entry("x", status, "content"),
                   archive_of([&] { cpioput("file", "x", &status); }));
    EXPECT_ARCHIVE(cpio_entry("x", status, ""),
                   archive_of([&] { cpioput("link", "x", &status); }));
    EXPECT_ARCHIVE(cpio_entry("x", status_of("file"), "content"),
                   archive_of([&] { cpioput("link", "x", nullptr); }));
}

TEST(cpioput, what_cannot_be_opened_is_named_and_left_out) {
    int server = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{AF_UNIX, "socket"};
    ASSERT_EQ(
        bind(server, reinterpret_cast<sockaddr *>(&address), sizeof address),
        0);
    std::string archive = archive_of(
        [] {
            cpioput("none", "./its name", nullptr);
            EXPECT_EQ(errno, ENOENT);
            cpioput("socket", "socket", nullptr);
            EXPECT_EQ(errno, ENXIO);
        },
        "Can't open `./its name'\nCan't open `socket'\n");
    EXPECT_ARCHIVE("", archive);
    close(server);
}

TEST(cpioput, longest_name_has_257_characters) {
    support::write_file("file", "x");
    struct stat status = made_up_status();
    for (size_t n : {99, 100, 255, 256, 257}) {
        std::string name(n, 'n');
        EXPECT_ARCHIVE(cpio_entry(name, status, "x"), archive_of([&] {
                           cpioput("file", name.c_str(), &status);
                       }));
        name = "./" + name;
        EXPECT_ARCHIVE(cpio_entry(name.substr(2), status, "x"), archive_of([&] {
                           cpioput("file", name.c_str(), &status);
                       }));
    }
    for (size_t n : {258, 259, 65536}) {
        std::string name(n, 'n');
        std::string archive = archive_of(
            [&] {
                cpioput("file", name.c_str(), &status);
                EXPECT_EQ(errno, EOVERFLOW);
                cpioput("file", "next", &status);
            },
            "Can't archive `" + name + "': name does not fit\n");
        EXPECT_ARCHIVE(cpio_entry("next", status, "x"), archive);
    }
}

TEST(cpioput, files_of_4_gigabytes_are_left_out) {
    support::write_file("file", "x");
    struct stat status = made_up_status();
    for (off_t size : {off_t{1} << 32, (off_t{1} << 32) + 1, off_t{8} << 30}) {
        ASSERT_EQ(truncate("file", size), 0);
        std::string archive = archive_of(
            [&] {
                cpioput("file", "./big", &status);
                EXPECT_EQ(errno, EOVERFLOW);
            },
            "Can't archive `./big': file size does not fit\n");
        EXPECT_ARCHIVE("", archive);
    }
}

TEST(cpioput, file_of_one_byte_less_is_taken) {
    support::write_file("file", "x");
    ASSERT_EQ(truncate("file", (off_t{1} << 32) - 1), 0);
    support::outcome end = support::in_child([] {
        int ends[2];
        if (pipe(ends) != 0) _exit(9);
        signal(SIGPIPE, SIG_IGN);
        dup2(ends[1], 1);
        close(ends[1]);
        if (fork() == 0) {
            char block[5120];
            close(1);
            if (read(ends[0], block, sizeof block) > 76)
                fprintf(stderr, "%.11s ", block + 65);
            fflush(stderr);
            _exit(0);
        }
        close(ends[0]);
        cpiosetup(0);
        cpioput("file", "file", nullptr);
        fprintf(stderr, "%d", errno == EPIPE);
    });
    EXPECT_EQ(end.err, "37777777777 Can't write to std out!\n1");
}

TEST(cpioput, numbers_that_fit_are_written_whole) {
    support::write_file("file", "x");
    const unsigned numbers[] = {0, 65535, 65536, 70000, 0777777};
    for (unsigned number : numbers) {
        struct stat status = made_up_status();
        status.st_uid = number;
        status.st_gid = number;
        status.st_nlink = number;
        EXPECT_ARCHIVE(cpio_entry("f", status, "x"),
                       archive_of([&] { cpioput("file", "f", &status); }));
    }
    for (time_t time : {time_t{0}, time_t{0x7fffffff}, time_t{0x80000000},
                        time_t{0xffffffff}}) {
        struct stat status = made_up_status();
        status.st_mtime = time;
        EXPECT_ARCHIVE(cpio_entry("f", status, "x"),
                       archive_of([&] { cpioput("file", "f", &status); }));
    }
}

TEST(cpioput, numbers_that_do_not_fit_leave_the_file_out) {
    support::write_file("file", "x");
    const struct {
        const char *what;
        void (*change)(struct stat *status);
    } rows[] = {
        {"owner", [](struct stat *s) { s->st_uid = 01000000; }},
        {"owner", [](struct stat *s) { s->st_uid = 0x80000000; }},
        {"owner", [](struct stat *s) { s->st_uid = 0xffffffff; }},
        {"group", [](struct stat *s) { s->st_gid = 01000000; }},
        {"link count", [](struct stat *s) { s->st_nlink = 01000000; }},
        {"modification time", [](struct stat *s) { s->st_mtime = -1; }},
        {"modification time",
         [](struct stat *s) { s->st_mtime = time_t{1} << 32; }},
        {"modification time",
         [](struct stat *s) { s->st_mtime = (time_t{1} << 33) + 5; }},
    };
    for (const auto &row : rows) {
        struct stat status = made_up_status();
        row.change(&status);
        std::string archive = archive_of(
            [&] {
                cpioput("file", "its name", &status);
                EXPECT_EQ(errno, EOVERFLOW);
            },
            std::string("Can't archive `its name': ") + row.what +
                " does not fit\n");
        EXPECT_ARCHIVE("", archive);
    }
}

TEST(cpioput, now_fits_whatever_the_file_says) {
    support::write_file("file", "x");
    struct stat status = made_up_status();
    status.st_mtime = -1;
    archive_of([&] { cpioput("file", "f", &status); }, "", 1);
}

TEST(cpioput, devices_are_cut_to_16_bits) {
    support::write_file("file", "");
    struct stat status = made_up_status();
    status.st_dev = 0x123456789;
    status.st_rdev = 0xfedcba98;
    EXPECT_ARCHIVE(cpio_entry("f", status, ""),
                   archive_of([&] { cpioput("file", "f", &status); }));
}

// The inode fields of files with these inodes and numbers of links, in order.
struct file_row {
    ino_t inode;
    nlink_t links;
    dev_t device = 1;
    mode_t type = S_IFREG;
};
std::vector<std::string> inode_fields(const std::vector<file_row> &rows) {
    support::write_file("file", "");
    std::string archive = archive_of([&] {
        for (const file_row &row : rows) {
            struct stat status = made_up_status();
            status.st_ino = row.inode;
            status.st_nlink = row.links;
            status.st_dev = row.device;
            status.st_mode = row.type | 0755;
            cpioput("file", "f", &status);
        }
    });
    std::vector<std::string> fields;
    for (size_t i = 0; i < rows.size(); i++)
        fields.push_back(inode_in(archive.substr(i * 78)));
    return fields;
}

using texts = std::vector<std::string>;

TEST(cpioput, inodes_that_fit_are_written_and_others_cut) {
    EXPECT_EQ(inode_fields({{0, 1},
                            {1, 1},
                            {0777777, 1},
                            {01000000, 1},
                            {01000001, 1},
                            {0x100000005, 1},
                            {0xffffffffffffffff, 1}}),
              (texts{"000000", "000001", "777777", "000000", "000001", "000005",
                     "777777"}));
}

TEST(cpioput, names_of_one_file_have_one_number) {
    EXPECT_EQ(inode_fields({{05, 2}, {01000007, 3}, {05, 2}, {01000007, 3}}),
              (texts{"000005", "000007", "000005", "000007"}));
}

TEST(cpioput, numbers_of_linked_files_are_not_used_again) {
    EXPECT_EQ(
        inode_fields({{01000005, 2},
                      {02000005, 2},
                      {03000005, 1},
                      {02000005, 2},
                      {01000005, 2},
                      {04777776, 2}}),
        (texts{"000005", "777777", "777776", "777777", "000005", "777776"}));
}

TEST(cpioput, single_files_and_directories_take_no_number) {
    EXPECT_EQ(
        inode_fields(
            {{01000005, 1}, {02000005, 9, 1, S_IFDIR}, {03000005, 2}, {05, 1}}),
        (texts{"000005", "000005", "000005", "000005"}));
}

TEST(cpioput, linked_file_whose_number_was_given_away_gets_another) {
    EXPECT_EQ(inode_fields({{01000005, 2}, {05, 2}, {05, 2}}),
              (texts{"000005", "777777", "777777"}));
}

TEST(cpioput, devices_that_read_differently_share_no_numbers) {
    EXPECT_EQ(inode_fields({{05, 2, 1}, {05, 2, 2}, {05, 2, 0x10001}}),
              (texts{"000005", "000005", "777777"}));
}

TEST(cpioput, setup_forgets_linked_files) {
    inode_fields({{01000005, 2}});
    EXPECT_EQ(inode_fields({{02000005, 2}}), texts{"000005"});
}

TEST(cpioput, without_a_number_left_files_count_as_not_linked) {
    support::write_file("file", "");
    struct stat status = made_up_status();
    status.st_nlink = 2;
    std::string archive = archive_of([&] {
        for (ino_t inode = 0; inode <= 0777777; inode++) {
            status.st_ino = inode;
            bintochar(0, &status);
        }
        cpioput("file", "f", &status);
        status.st_ino = 01000000;
        cpioput("file", "f", &status);
        cpioput("file", "f", &status);
    });
    EXPECT_EQ(inode_in(archive), "777777");
    EXPECT_EQ(field(archive, 36, 6), "000002");
    for (size_t at : {78, 156}) {
        EXPECT_EQ(field(archive, at + 12, 6), "000000");
        EXPECT_EQ(field(archive, at + 36, 6), "000001");
    }
}

TEST(cpioput, write_errors_are_reported_once) {
    support::write_file("file", random_bytes(50000));
    support::outcome end = support::in_child([] {
        dup2(open("/dev/full", O_WRONLY), 1);
        cpiosetup(0);
        bool is_known = true;
        for (int i = 0; i < 3; i++) {
            cpioput("file", "file", nullptr);
            is_known &= errno == ENOSPC;
        }
        cpioput("none", "none", nullptr);
        cpiofin();
        is_known &= errno == ENOSPC;
        cpiosetup(0);
        cpioput("none", "none", nullptr);
        fprintf(stderr, "%d", is_known && errno == ENOENT);
    });
    EXPECT_EQ(end.err, "Can't write to std out!\nCan't open `none'\n1");
    EXPECT_EQ(end.out, "");
}

TEST(cpioput, closed_output_is_a_write_error) {
    support::outcome end = support::in_child([] {
        close(1);
        cpiosetup(0);
        cpiofin();
        fprintf(stderr, "%d", errno == EBADF);
    });
    EXPECT_EQ(end.err, "Can't write to std out!\n1");
}

TEST(cpioput, closed_pipe_is_a_signal_or_an_error_as_the_process_likes) {
    for (bool ignores : {false, true}) {
        support::outcome end = support::in_child([ignores] {
            int ends[2];
            if (pipe(ends) != 0) _exit(9);
            close(ends[0]);
            dup2(ends[1], 1);
            signal(SIGPIPE, ignores ? SIG_IGN : SIG_DFL);
            cpiosetup(0);
            cpiofin();
            fprintf(stderr, "%d", errno == EPIPE);
        });
        EXPECT_EQ(end.signal, ignores ? 0 : SIGPIPE);
        EXPECT_EQ(end.err, ignores ? "Can't write to std out!\n1" : "");
    }
}

TEST(cpioput, leaves_no_descriptor_open) {
    support::write_file("file", "x");
    int before = dup(0);
    close(before);
    archive_of(
        [] {
            for (const char *path : {"file", "none", ".", "/dev/null"})
                cpioput(path, path, nullptr);
        },
        "Can't open `none'\n");
    int after = dup(0);
    close(after);
    EXPECT_EQ(after, before);
}

TEST(bintochar, accepts_everything) {
    cpiosetup(0);
    bintochar(0, nullptr);
    bintochar(-1, nullptr);
    struct stat status;
    memset(&status, 0xff, sizeof status);
    bintochar(0x7fffffffffffffff, &status);
    cpiosetup(0);
}

TEST(mklong, more_significant_half_comes_first) {
    const struct {
        unsigned short halves[2];
        long value;
    } rows[] = {{{0, 0}, 0},
                {{0, 1}, 1},
                {{1, 0}, 65536},
                {{1, 2}, 65538},
                {{0x7fff, 0xffff}, 2147483647},
                {{0x8000, 0}, 2147483648},
                {{0xffff, 0xffff}, 4294967295}};
    for (const auto &row : rows)
        EXPECT_EQ(mklong(row.halves), row.value);
}

}  // namespace
