// ldbminit_test.cc: lists of lines under names, on disk.
#include "support/child.h"
#include "support/database.h"
#include "support/database_model.h"
#include "support/tree.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tovan/ldbminit.h>
#include <unistd.h>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using support::page_of;
using support::read_file;
using support::write_file;
using texts = std::vector<std::string>;

std::string stored(const std::string &text) {
    return text + '\0';
}

// Offsets as they are stored.
std::string record(const std::vector<uint32_t> &offsets) {
    std::string bytes;
    for (uint32_t offset : offsets) {
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>(offset >> shift);
    }
    return bytes;
}

// What the callback got.
texts keys;
texts lines;

void keep(const char *key, const char *line) {
    keys.push_back(key);
    lines.push_back(line);
}

// An open index that closes itself; fails the test when it did not open.
struct open_ldbm : ldbm_db {
    explicit open_ldbm(const char *base, int mode = 1) : ldbm_db{} {
        const char *message = ldbminit(this, base, mode, keep);
        EXPECT_EQ(message, nullptr) << message;
    }
    ~open_ldbm() {
        ldbminit(this, nullptr, 0, nullptr);
    }
    open_ldbm(const open_ldbm &) = delete;
    open_ldbm &operator=(const open_ldbm &) = delete;
};

texts lines_of(ldbm_db *db, const std::string &key) {
    keys.clear();
    lines.clear();
    int count = ldbmfind(db, key.c_str());
    EXPECT_EQ(static_cast<size_t>(count), lines.size());
    EXPECT_EQ(keys, texts(lines.size(), key));
    return lines;
}

bool is_closed(const ldbm_db &db) {
    return db.handle == nullptr && db.name == nullptr && db.data == nullptr &&
           db.callback == nullptr;
}

unsigned permissions_of(const char *path) {
    struct stat status = {};
    EXPECT_EQ(stat(path, &status), 0) << path;
    return status.st_mode & 07777;
}

TEST(ldbminit, mode_1_makes_three_files) {
    umask(0);
    ldbm_db db{};
    ASSERT_EQ(ldbminit(&db, "x", 1, keep), nullptr);
    EXPECT_EQ(read_file("x.dir"), "\1");
    EXPECT_EQ(read_file("x.pag"), "");
    EXPECT_EQ(read_file("x.data"), "");
    EXPECT_EQ(permissions_of("x.dir"), 0644u);
    EXPECT_EQ(permissions_of("x.pag"), 0644u);
    EXPECT_EQ(permissions_of("x.data"), 0666u);
    EXPECT_STREQ(db.name, "x");
    EXPECT_EQ(db.handle->page_size, 1024);
    EXPECT_EQ(fcntl(fileno(db.data), F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(ldbminit(&db, "x", 0, keep), nullptr);
    EXPECT_TRUE(is_closed(db));
    umask(022);
}

TEST(ldbminit, mode_1_empties_what_is_there) {
    {
        open_ldbm db("x");
        EXPECT_EQ(ldbmadd(&db, "a", "line"), 0);
    }
    open_ldbm db("x");
    EXPECT_EQ(read_file("x.data"), "");
    EXPECT_EQ(lines_of(&db, "a"), texts());
}

TEST(ldbminit, mode_2_keeps_what_is_there) {
    {
        open_ldbm db("x", 2);
        EXPECT_EQ(ldbmadd(&db, "a", "one"), 0) << "made where nothing was";
    }
    {
        open_ldbm db("x", 2);
        EXPECT_EQ(ldbmadd(&db, "a", "two"), 0);
        EXPECT_EQ(lines_of(&db, "a"), (texts{"one\n", "two\n"}));
    }
    EXPECT_EQ(read_file("x.data"), "one\ntwo\n");
}

TEST(ldbminit, mode_2_without_a_data_file_makes_one) {
    write_file("x.dir", "\1");
    write_file("x.pag", "");
    open_ldbm db("x", 2);
    EXPECT_EQ(read_file("x.data"), "");
}

TEST(ldbminit, other_modes_read) {
    {
        open_ldbm db("x");
        ldbmadd(&db, "a", "one");
    }
    for (int mode : {3, -1, 100}) {
        open_ldbm db("x", mode);
        EXPECT_EQ(db.handle->flags, 1) << mode;
        EXPECT_EQ(lines_of(&db, "a"), texts{"one\n"});
        EXPECT_EQ(fcntl(fileno(db.data), F_GETFL) & O_ACCMODE, O_RDONLY);
    }
}

TEST(ldbminit, an_open_index_is_closed_first) {
    ldbm_db db{};
    ASSERT_EQ(ldbminit(&db, "x", 1, keep), nullptr);
    ASSERT_EQ(ldbmadd(&db, "a", "one"), 0);
    int descriptor = db.handle->dir_fd;
    ASSERT_EQ(ldbminit(&db, db.name, 2, keep), nullptr) << "by its own name";
    EXPECT_EQ(db.handle->dir_fd, descriptor);
    EXPECT_STREQ(db.name, "x");
    EXPECT_EQ(lines_of(&db, "a"), texts{"one\n"});
    EXPECT_STREQ(ldbminit(&db, "none", 3, keep), "dbminit failed");
    EXPECT_TRUE(is_closed(db));
}

TEST(ldbminit, says_what_cannot_be_opened) {
    ASSERT_EQ(mkdir("d.dir", 0755), 0);
    ASSERT_EQ(mkdir("p.pag", 0755), 0);
    ASSERT_EQ(mkdir("l.data", 0755), 0);
    write_file("o.dir", "");
    write_file("o.pag", "");
    write_file("n.dir", "\1");
    write_file("n.pag", "");
    const struct {
        const char *name;
        int mode;
        const char *message;
        int reason;
    } rows[] = {
        {"none/x", 1, "Cannot create new '.dir' file", ENOENT},
        {"none/x", 2, "Cannot create new '.dir' file", ENOENT},
        {"d", 1, "Cannot create new '.dir' file", EISDIR},
        {"p", 1, "Cannot create new '.pag' file", EISDIR},
        {"l", 1, "open of data file failed", EISDIR},
        {"n", 3, "open of data file failed", ENOENT},
        {"o", 2, "dbminit failed", EINVAL},
        {"none", 3, "dbminit failed", ENOENT},
    };
    for (const auto &row : rows) {
        ldbm_db db{};
        errno = 0;
        const char *message = ldbminit(&db, row.name, row.mode, keep);
        int reason = errno;
        EXPECT_STREQ(message, row.message) << row.name << row.mode;
        EXPECT_EQ(reason, row.reason) << row.name << row.mode;
        EXPECT_TRUE(is_closed(db)) << row.name << row.mode;
    }
}

TEST(ldbmadd, lines_go_to_their_file_and_offsets_to_the_database) {
    open_ldbm db("x");
    EXPECT_EQ(ldbmadd(&db, "a", "first"), 0);
    EXPECT_EQ(ldbmadd(&db, "b", ""), 0);
    EXPECT_EQ(ldbmadd(&db, "a", "third line"), 0);
    EXPECT_EQ(read_file("x.data"), "first\n\nthird line\n") << "not buffered";
    EXPECT_EQ(read_file("x.pag"), page_of({{stored("b"), record({6})},
                                           {stored("a"), record({0, 7})}}));
    EXPECT_EQ(read_file("x.dir"), "\1");
}

TEST(ldbmadd, offsets_are_big_endian) {
    write_file("x.dir", "\1");
    write_file("x.pag", "");
    write_file("x.data", std::string(0x010203, '\n'));
    open_ldbm db("x", 2);
    EXPECT_EQ(ldbmadd(&db, "a", "line"), 0);
    EXPECT_EQ(read_file("x.pag"),
              page_of({{stored("a"), std::string("\0\1\2\3", 4)}}));
    EXPECT_EQ(lines_of(&db, "a"), texts{"line\n"});
}

TEST(ldbmadd, offsets_go_to_4_gib) {
    write_file("x.dir", "\1");
    write_file("x.pag", "");
    write_file("x.data", "");
    const off_t last = 0xffffffff;
    ASSERT_EQ(truncate("x.data", last), 0);
    open_ldbm db("x", 2);
    EXPECT_EQ(ldbmadd(&db, "a", "last"), 0);
    EXPECT_EQ(read_file("x.pag"), page_of({{stored("a"), "\xff\xff\xff\xff"}}));
    EXPECT_EQ(lines_of(&db, "a"), texts{"last\n"});
    errno = 0;
    EXPECT_EQ(ldbmadd(&db, "a", "lost"), -1);
    EXPECT_EQ(errno, EFBIG);
    struct stat status = {};
    ASSERT_EQ(stat("x.data", &status), 0);
    EXPECT_EQ(status.st_size, last + 5) << "nothing was written";
    EXPECT_EQ(lines_of(&db, "a"), texts{"last\n"});
    unlink("x.data");
}

TEST(ldbmadd, key_and_offsets_have_1024_bytes) {
    // Pages that could hold more.
    write_file("x.dir", "\4");
    write_file("x.pag", "");
    open_ldbm db("x", 2);
    const std::string key(1024 - 5 * 4 - 1, 'k');
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(ldbmadd(&db, key.c_str(), "line"), 0);
    std::string pages = read_file("x.pag");
    int result = 0;
    std::string said = support::stderr_of(
        [&] { result = ldbmadd(&db, key.c_str(), "sixth"); });
    EXPECT_EQ(said, key + ": too many entries\n");
    EXPECT_EQ(static_cast<size_t>(result), said.size());
    EXPECT_EQ(read_file("x.pag"), pages);
    EXPECT_EQ(read_file("x.data"), "line\nline\nline\nline\nline\nsixth\n")
        << "the line stays";
    EXPECT_EQ(lines_of(&db, key), texts(5, "line\n"));
}

TEST(ldbmadd, a_page_takes_6_bytes_of_them) {
    open_ldbm db("x");
    const std::string key(1018 - 5 * 4 - 1, 'k');
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(ldbmadd(&db, key.c_str(), "line"), 0);
    errno = 0;
    EXPECT_EQ(ldbmadd(&db, key.c_str(), "sixth"), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(lines_of(&db, key), texts(5, "line\n"));
    errno = 0;
    EXPECT_EQ(ldbmadd(&db, std::string(2000, 'k').c_str(), "line"), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST(ldbmadd, says_what_is_wrong) {
    ldbm_db db{};
    std::string said = support::stderr_of([&] {
        EXPECT_EQ(ldbmadd(&db, "a", "line"), 23);
        EXPECT_EQ(ldbmfind(&db, "a"), 0);
    });
    EXPECT_EQ(said, "database not updatable\ndatabase not open\n");
    open_ldbm("x");
    open_ldbm reader("x", 3);
    said = support::stderr_of(
        [&] { EXPECT_EQ(ldbmadd(&reader, "a", "line"), 23); });
    EXPECT_EQ(said, "database not updatable\n");
    EXPECT_EQ(read_file("x.data"), "");
}

TEST(ldbmadd, a_line_that_cannot_be_written_has_no_place) {
    ASSERT_EQ(symlink("/dev/full", "x.data"), 0);
    open_ldbm db("x");
    for (int i = 0; i < 3; ++i) {
        errno = 0;
        EXPECT_EQ(ldbmadd(&db, "a", "line"), -1);
        EXPECT_EQ(errno, ENOSPC);
    }
    EXPECT_EQ(read_file("x.pag"), "");
    EXPECT_EQ(ldbmfind(&db, "a"), 0);
}

TEST(ldbmadd, a_data_file_without_positions_takes_no_line) {
    ASSERT_EQ(mkfifo("x.data", 0600), 0);
    open_ldbm db("x");
    errno = 0;
    EXPECT_EQ(ldbmadd(&db, "a", "line"), -1);
    EXPECT_EQ(errno, ESPIPE);
    write_file("x.pag", page_of({{stored("a"), record({0})}}));
    EXPECT_EQ(ldbmfind(&db, "a"), 0);
}

TEST(ldbmadd, a_page_that_cannot_be_read_is_not_replaced) {
    write_file("x.dir", "\1");
    std::string wrong = support::raw_page({3, 1, 2, 3});
    write_file("x.pag", wrong);
    open_ldbm db("x", 2);
    errno = 0;
    EXPECT_EQ(ldbmadd(&db, "a", "line"), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(read_file("x.pag"), wrong);
    EXPECT_EQ(ldbmfind(&db, "a"), 0);
}

TEST(ldbmfind, lines_come_in_the_order_added) {
    open_ldbm db("x");
    for (const char *line : {"c", "a", "b"})
        ldbmadd(&db, "k", line);
    EXPECT_EQ(lines_of(&db, "k"), (texts{"c\n", "a\n", "b\n"}));
    EXPECT_EQ(lines_of(&db, "none"), texts());
    EXPECT_EQ(lines_of(&db, ""), texts());
}

TEST(ldbmfind, long_lines_are_cut_to_511_characters) {
    open_ldbm db("x");
    for (size_t length : {510, 511, 5000})
        ldbmadd(&db, "k", std::string(length, 'x').c_str());
    EXPECT_EQ(lines_of(&db, "k"),
              (texts{std::string(510, 'x') + "\n", std::string(511, 'x'),
                     std::string(511, 'x')}));
}

TEST(ldbmfind, of_a_value_with_newlines_the_first_line_is_found) {
    open_ldbm db("x");
    ldbmadd(&db, "k", "one\ntwo");
    ldbmadd(&db, "k", "three");
    EXPECT_EQ(lines_of(&db, "k"), (texts{"one\n", "three\n"}));
}

TEST(ldbmfind, without_a_callback_lines_are_counted) {
    ldbm_db db{};
    ASSERT_EQ(ldbminit(&db, "x", 1, nullptr), nullptr);
    ldbmadd(&db, "k", "one");
    ldbmadd(&db, "k", "two");
    EXPECT_EQ(ldbmfind(&db, "k"), 2);
    ldbminit(&db, nullptr, 0, nullptr);
}

// What the callback of the next test uses.
ldbm_db *in_use = nullptr;

TEST(ldbmfind, the_callback_may_use_the_index) {
    open_ldbm db("x");
    for (int i = 0; i < 30; ++i) {
        ldbmadd(&db, "k", ("line " + std::to_string(i)).c_str());
        ldbmadd(&db, ("other" + std::to_string(i)).c_str(), "o");
    }
    in_use = &db;
    db.callback = [](const char *key, const char *line) {
        lines.push_back(line);
        if (strcmp(key, "k") != 0) return;
        ldbmadd(in_use, "new", line);
        ldbmfind(in_use, "other3");
    };
    lines.clear();
    EXPECT_EQ(ldbmfind(&db, "k"), 30);
    ASSERT_EQ(lines.size(), 60u);
    for (size_t i = 0; i < 30; ++i) {
        EXPECT_EQ(lines[2 * i], "line " + std::to_string(i) + "\n");
        EXPECT_EQ(lines[2 * i + 1], "o\n");
    }
}

TEST(ldbmfind, damaged_records_deliver_what_is_there) {
    const struct {
        std::string record;
        texts found;
    } rows[] = {
        {"", {}},
        {std::string("\0\0\0", 3), {}},
        {std::string("\0\0\0\0\0", 5), {"one\n"}},
        {record({4, 0}), {"two\n", "one\n"}},
        {record({7}), {"\n"}},
        {record({8}), {}},
        {record({5, 99, 0}), {"wo\n", "one\n"}},
        {record({0x80000000, 0xffffffff, 0}), {"one\n"}},
    };
    write_file("x.data", "one\ntwo\n");
    write_file("x.dir", "\1");
    for (const auto &row : rows) {
        write_file("x.pag", page_of({{stored("a"), row.record}}));
        open_ldbm db("x", 3);
        EXPECT_EQ(lines_of(&db, "a"), row.found);
    }
}

TEST(ldbmfind, a_record_may_be_longer_than_any_that_is_written) {
    std::string all;
    for (int i = 0; i < 700; ++i)
        all += record({0});
    write_file("x.data", "one\n");
    write_file("x.dir", "\4");
    write_file("x.pag", page_of({{stored("a"), all}}, 4096));
    open_ldbm db("x", 2);
    EXPECT_EQ(lines_of(&db, "a"), texts(700, "one\n"));
    std::string said =
        support::stderr_of([&] { EXPECT_GT(ldbmadd(&db, "a", "x"), 0); });
    EXPECT_EQ(said, "a: too many entries\n");
}

TEST(ldbmadd, a_record_of_odd_length_grows_by_4) {
    write_file("x.data", "one\n");
    write_file("x.dir", "\1");
    write_file("x.pag", page_of({{stored("a"), "xyz"}}));
    open_ldbm db("x", 2);
    EXPECT_EQ(ldbmadd(&db, "a", "two"), 0);
    EXPECT_EQ(read_file("x.pag"),
              page_of({{stored("a"), "xyz" + record({4})}}));
}

TEST(ldbmfind, a_shorter_data_file_has_fewer_lines) {
    {
        open_ldbm db("x");
        for (const char *line : {"one", "two", "three"})
            ldbmadd(&db, "a", line);
    }
    ASSERT_EQ(truncate("x.data", 6), 0);
    open_ldbm db("x", 3);
    EXPECT_EQ(lines_of(&db, "a"), (texts{"one\n", "tw"}));
}

// Everything beside a map, and the files beside the model.
TEST(ldbmadd, files_are_those_of_the_model) {
    open_ldbm db("x");
    support::database_model model(1);
    std::map<std::string, texts> known;
    std::map<std::string, std::vector<uint32_t>> offsets;
    std::string data;
    std::mt19937 random(20261122);
    for (int step = 1; step <= 10000; ++step) {
        std::string key = "key" + std::to_string(random() % 400);
        std::string line(random() % 80, 'l');
        EXPECT_EQ(ldbmadd(&db, key.c_str(), line.c_str()), 0);
        known[key].push_back(line + "\n");
        offsets[key].push_back(static_cast<uint32_t>(data.size()));
        data += line + "\n";
        EXPECT_EQ(model.store(stored(key), record(offsets[key]), true), 0);
        if (step % 2500 != 0) continue;
        EXPECT_EQ(read_file("x.dir"), model.directory());
        EXPECT_EQ(model.flaw_of_pages("x.pag"), "");
        EXPECT_EQ(read_file("x.data"), data);
    }
    for (const auto &[key, expected] : known)
        EXPECT_EQ(lines_of(&db, key), expected);
}

// A process that adds line after line until it is killed; its last number
// comes through the pipe.
pid_t start_adding(const char *name, int first, int out) {
    pid_t child = fork();
    if (child != 0) return child;
    ldbm_db db{};
    if (ldbminit(&db, name, 2, nullptr) != nullptr) _exit(1);
    for (int i = first;; ++i) {
        std::string key = "key" + std::to_string(i % 97);
        std::string line = "line " + std::to_string(i);
        if (ldbmadd(&db, key.c_str(), line.c_str()) != 0) _exit(2);
        if (write(out, &i, sizeof i) != sizeof i) _exit(3);
    }
}

TEST(ldbmadd, a_process_that_dies_loses_no_line) {
    open_ldbm("x");
    std::mt19937 random(4711);
    std::map<std::string, texts> known;
    int next = 0;
    for (int round = 0; round < 100; ++round) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        pid_t child = start_adding("x", next, ends[1]);
        close(ends[1]);
        usleep(static_cast<useconds_t>(random() % 3000));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << status;
        for (int number; read(ends[0], &number, sizeof number) > 0;) {
            known["key" + std::to_string(number % 97)].push_back(
                "line " + std::to_string(number) + "\n");
            next = number + 1;
        }
        close(ends[0]);
        // The one that was added and not told of may be there too.
        next += 1;
        if (next > 20000) break;
    }
    open_ldbm db("x", 3);
    for (const auto &[key, expected] : known) {
        texts found = lines_of(&db, key);
        size_t at = 0;
        for (const std::string &line : found)
            at += at < expected.size() && line == expected[at];
        EXPECT_EQ(at, expected.size()) << key;
    }
}

}  // namespace
