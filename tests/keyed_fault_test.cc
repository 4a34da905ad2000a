// keyed_fault_test.cc: keyed databases where system calls fail, one after
// another.
#include "support/tree.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/syscall.h>
#include <tovan/kdbminit.h>
#include <tovan/ldbminit.h>
#include <unistd.h>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

// What happens to the calls that are counted.
enum class trouble { none, once, from_then_on, interrupted, halved };
trouble kind = trouble::none;
int troubled_call = 0;  // from 1
int reason = 0;
int calls = 0;

// Whether this call fails, with errno.
bool fails() {
    if (kind == trouble::none) return false;
    ++calls;
    errno = reason;
    if (kind == trouble::once) return calls == troubled_call;
    if (kind == trouble::from_then_on) return calls >= troubled_call;
    errno = EINTR;
    return kind == trouble::interrupted && calls % 2 != 0;
}

// How much of a transfer is done.
size_t part_of(size_t count) {
    return kind == trouble::halved && count > 1 ? count / 2 : count;
}

}  // namespace

extern "C" int open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (fails()) return -1;
    return openat(AT_FDCWD, path, flags, mode);
}

extern "C" FILE *fopen(const char *path, const char *mode) {
    if (fails()) return nullptr;
    int access = mode[0] == 'r' ? O_RDONLY : O_RDWR | O_CREAT;
    if (mode[0] == 'w') access |= O_TRUNC;
    if (mode[0] == 'a') access |= O_APPEND;
    return fdopen(openat(AT_FDCWD, path, access | O_CLOEXEC, 0666), mode);
}

extern "C" ssize_t write(int descriptor, const void *bytes, size_t count) {
    if (fails()) return -1;
    return syscall(SYS_write, descriptor, bytes, part_of(count));
}

extern "C" ssize_t pread(int descriptor, void *bytes, size_t count,
                         off_t offset) {
    if (fails()) return -1;
    return syscall(SYS_pread64, descriptor, bytes, part_of(count), offset);
}

extern "C" ssize_t pwrite(int descriptor, const void *bytes, size_t count,
                          off_t offset) {
    if (fails()) return -1;
    return syscall(SYS_pwrite64, descriptor, bytes, part_of(count), offset);
}

namespace {

using texts = std::map<std::string, std::string>;

constexpr int key_count = 250;

std::string key_of(int number) {
    return "key" + std::to_string(number);
}

std::string line_of(int number) {
    return "line " + std::to_string(number) + std::string(30, '.');
}

int open_descriptors() {
    int count = 0;
    for (int i = 0; i < 100; ++i)
        count += fcntl(i, F_GETFD) != -1;
    return count;
}

void add_to(texts *known, const std::string &key, const std::string &text) {
    std::string &old = (*known)[key];
    old = old.empty() ? text : old + "," + text;
}

// Texts are joined and removed; what may be there afterwards: the texts of
// calls that went well, and of those that failed either side.
struct expectation {
    texts sure;
    std::map<std::string, std::vector<std::string>> possible;
};

void add_texts(kdbm_db *db, expectation *expected) {
    for (int i = 0; i < key_count; ++i) {
        std::string key = key_of(i % 200);
        std::string before = expected->sure[key];
        bool removes = i % 7 == 6;
        const std::string line = line_of(i);
        int result =
            kdbmadd(db, key.c_str(), removes ? nullptr : line.c_str(), ',');
        if (removes)
            expected->sure[key].clear();
        else
            add_to(&expected->sure, key, line);
        if (result == 0 || (removes && before.empty())) continue;
        EXPECT_EQ(result, -1);
        expected->possible[key].push_back(expected->sure[key]);
        expected->sure[key] = before;
        // Nothing goes on with a text that may be either.
        return;
    }
}

std::string text_of(kdbm_db *db, const std::string &key) {
    const dbm_datum *found = kdbmfind(db, key.c_str());
    return found != nullptr ? found->data : "";
}

void check_texts(const expectation &expected) {
    kdbm_db db{};
    ASSERT_EQ(kdbminit(&db, "k", 3), nullptr);
    for (const auto &[key, text] : expected.sure) {
        std::string found = text_of(&db, key);
        auto other = expected.possible.find(key);
        if (other != expected.possible.end() && found == other->second[0])
            continue;
        EXPECT_EQ(found, text) << key << " at call " << troubled_call;
    }
    kdbminit(&db, nullptr, 0);
}

// Adds in one go, with trouble; then looks without.
void run_texts() {
    remove("k.dir");
    kdbm_db db{};
    int before = open_descriptors();
    expectation expected;
    calls = 0;
    const trouble wanted = kind;
    const char *message = kdbminit(&db, "k", 2);
    if (message == nullptr) add_texts(&db, &expected);
    kind = trouble::none;
    if (message == nullptr) check_texts(expected);
    kdbminit(&db, nullptr, 0);
    EXPECT_EQ(open_descriptors(), before) << "at call " << troubled_call;
    kind = wanted;
}

texts found_lines;

void keep(const char *key, const char *line) {
    found_lines[key] += line;
}

// The same for lines. One that failed may be found after all.
void run_lines() {
    remove("k.dir");
    ldbm_db db{};
    int before = open_descriptors();
    texts sure;
    std::string failed;
    calls = 0;
    const trouble wanted = kind;
    const char *message = ldbminit(&db, "k", 2, keep);
    for (int i = 0; message == nullptr && i < key_count; ++i) {
        std::string key = key_of(i % 200);
        int result = ldbmadd(&db, key.c_str(), line_of(i).c_str());
        if (result == 0) sure[key] += line_of(i) + "\n";
        if (result == 0) continue;
        EXPECT_EQ(result, -1);
        failed = key;
        found_lines[key] = line_of(i) + "\n";
        break;
    }
    kind = trouble::none;
    ldbminit(&db, nullptr, 0, nullptr);
    EXPECT_EQ(open_descriptors(), before) << "at call " << troubled_call;
    if (message == nullptr) {
        std::string possible = sure[failed] + found_lines[failed];
        ASSERT_EQ(ldbminit(&db, "k", 3, keep), nullptr);
        for (const auto &[key, lines] : sure) {
            found_lines.clear();
            ldbmfind(&db, key.c_str());
            if (key == failed && found_lines[key] == possible) continue;
            EXPECT_EQ(found_lines[key], lines)
                << key << " at call " << troubled_call;
        }
        ldbminit(&db, nullptr, 0, nullptr);
    }
    kind = wanted;
}

// Lets each call fail in turn.
void fail_each_call(trouble how, int error, const std::function<void()> &run) {
    reason = error;
    kind = how;
    for (troubled_call = 1;; ++troubled_call) {
        run();
        if (calls < troubled_call) break;
    }
    EXPECT_GT(troubled_call, key_count);
}

TEST(keyed_fault, each_call_fails_under_texts) {
    fail_each_call(trouble::once, EIO, run_texts);
    fail_each_call(trouble::from_then_on, ENOSPC, run_texts);
}

TEST(keyed_fault, each_call_fails_under_lines) {
    fail_each_call(trouble::once, EIO, run_lines);
    fail_each_call(trouble::from_then_on, ENOSPC, run_lines);
}

std::string all_files() {
    return support::read_file("k.dir") + support::read_file("k.pag");
}

// Signals and short transfers change nothing.
TEST(keyed_fault, interrupted_and_short_calls_are_finished) {
    for (const auto &run : {run_texts, run_lines}) {
        run();
        std::string expected = all_files();
        for (trouble how : {trouble::interrupted, trouble::halved}) {
            kind = how;
            run();
            EXPECT_GT(calls, key_count);
            kind = trouble::none;
            EXPECT_TRUE(all_files() == expected);
        }
    }
}

TEST(keyed_fault, what_fails_first_is_named) {
    const struct {
        int call;
        const char *message;
    } rows[] = {
        {1, "Cannot create new '.dir' file"},
        {2, "Cannot create new '.dir' file"},
        {3, "Cannot create new '.pag' file"},
        {4, "dbminit failed"},
    };
    for (const auto &row : rows) {
        for (int mode : {1, 2}) {
            remove("k.dir");
            kind = trouble::once;
            troubled_call = row.call;
            reason = ENOSPC;
            calls = 0;
            kdbm_db db{};
            errno = 0;
            EXPECT_STREQ(kdbminit(&db, "k", mode), row.message) << row.call;
            EXPECT_EQ(errno, ENOSPC);
            EXPECT_EQ(db.handle, nullptr);
            EXPECT_EQ(db.path, nullptr);
            kind = trouble::none;
        }
    }
}

}  // namespace
