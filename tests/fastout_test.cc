// fastout_test.cc: typed items to blocks of a raw descriptor, lists in
// columns, and streams that append.
#include "support/child.h"
#include "support/tree.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <tovan/errexit.h>
#include <tovan/fastout.h>
#include <unistd.h>
#include <string>

namespace {

bool fdopen_fails = false;

}  // namespace

extern "C" FILE *fdopen(int descriptor, const char *mode) noexcept {
    if (fdopen_fails) {
        errno = ENOMEM;
        return nullptr;
    }
    using opener = FILE *(*)(int, const char *);
    static auto real = reinterpret_cast<opener>(dlsym(RTLD_NEXT, "fdopen"));
    return real(descriptor, mode);
}

namespace {

// A record that writes to the file "out".
fo *file_record() {
    int descriptor = open("out", O_RDWR | O_CREAT | O_TRUNC, 0600);
    return fo_init(descriptor, nullptr);
}

void release(fo *out) {
    close(out->descriptor);
    free(out);
}

std::string number(int code, unsigned value) {
    fo *out = file_record();
    EXPECT_EQ(fo_put(out, code, value, 0), 0);
    std::string text(out->buffer, static_cast<size_t>(out->count));
    release(out);
    return text;
}

TEST(fo_put, fo_put_rows) {
    const struct {
        int code;
        unsigned value;
        const char *text;
    } rows[] = {
        {3, 8, "10"},
        {3, 0, "0"},
        {3, UINT_MAX, "37777777777"},
        {5, 0, "0"},
        {5, 511, "777"},
        {5, UINT_MAX, "37777777777"},
        {6, 0, "0"},
        {6, static_cast<unsigned>(-7), "-7"},
        {6, 2147483647u, "2147483647"},
        {6, 2147483648u, "-2147483648"},
        {2, 'x', "x"},
        {2, 0x141, "A"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(number(row.code, row.value), row.text) << row.code;
}

TEST(fo_put, numbers_of_every_length) {
    for (unsigned power = 1; power < 1000000000u; power *= 10) {
        for (unsigned value : {power - 1, power, power + 1}) {
            char octal[16];
            snprintf(octal, sizeof octal, "%o", value);
            EXPECT_EQ(number(6, value), std::to_string(value));
            EXPECT_EQ(number(6, 0 - value),
                      std::to_string(0 - static_cast<int>(value)));
            EXPECT_EQ(number(3, value), octal);
        }
    }
    for (unsigned bit = 0; bit < 32; bit++) {
        char octal[16];
        snprintf(octal, sizeof octal, "%o", 1u << bit);
        EXPECT_EQ(number(3, 1u << bit), octal);
    }
}

TEST(fo_put, takes_items_in_order) {
    fo *out = file_record();
    EXPECT_EQ(fo_put(out, 1, "a=", 6, -1, 2, ',', 4, "bytes", 3, 4, "x", 0, 4,
                     "x", -1, 1, "", 3, 8u, 0),
              0);
    EXPECT_EQ(support::read_file("out"), "");
    EXPECT_EQ(fo_flush(out), 0);
    EXPECT_EQ(out->count, 0);
    EXPECT_EQ(support::read_file("out"), "a=-1,byt10");
    release(out);
}

TEST(fo_put, a_long_string_goes_out_in_blocks_of_2048) {
    fo *out = file_record();
    std::string text(5000, 'x');
    fo_put(out, 1, text.c_str(), 0);
    EXPECT_EQ(support::read_file("out").size(), 4096u);
    EXPECT_EQ(out->count, 904);
    fo_flush(out);
    EXPECT_EQ(support::read_file("out"), text);
    release(out);
}

TEST(fo_put, each_block_is_one_write) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_DIRECT), 0);  // a read gets what one write wrote
    fo *out = fo_init(ends[1], nullptr);
    std::string text(5000, 'x');
    fo_put(out, 1, text.c_str(), 0);
    fo_flush(out);
    release(out);
    char bytes[4096];
    EXPECT_EQ(read(ends[0], bytes, sizeof bytes), 2048);
    EXPECT_EQ(read(ends[0], bytes, sizeof bytes), 2048);
    EXPECT_EQ(read(ends[0], bytes, sizeof bytes), 904);
    EXPECT_EQ(read(ends[0], bytes, sizeof bytes), 0);
    close(ends[0]);
}

// A hook that writes what was collected sees all of it.
TEST(fo_put, counts_everything_when_it_ends_the_process) {
    static fo *out;
    support::outcome end = support::in_child([] {
        out = fo_init(STDOUT_FILENO, nullptr);
        set_exit_rtn([](int) { fo_flush(out); });
        fo_put(out, 1, "text ", 6, -12, 2, '\n', 99, 0);
    });
    EXPECT_EQ(end.out, "text -12\n");
    EXPECT_EQ(end.exit_status, 255);
}

TEST(fo_put, items_across_the_block_end_are_whole) {
    for (int fill = 2030; fill <= 2048; fill++) {
        fo *out = file_record();
        std::string expected(static_cast<size_t>(fill), '.');
        fo_put(out, 4, expected.data(), fill, 6, INT_MIN, 3, UINT_MAX, 2, 'c',
               0);
        expected += "-214748364837777777777c";
        EXPECT_LT(out->count, 2048);
        EXPECT_EQ(
            support::read_file("out").size() + static_cast<size_t>(out->count),
            expected.size());
        fo_flush(out);
        EXPECT_EQ(support::read_file("out"), expected) << fill;
        release(out);
    }
}

TEST(fo_put, descriptor_minus_one_turns_output_off) {
    fo *out = fo_init(-1, "name");
    EXPECT_EQ(fo_put(out, 1, "text", 99, 0), 0);
    EXPECT_EQ(fo_flush(out), 0);
    EXPECT_EQ(out->count, 0);
    free(out);
}

TEST(fo_put, an_unknown_code_is_fatal) {
    EXPECT_FATAL(fo_put(file_record(), 1, "a", 7, 0), 255,
                 "test: Logic error, fo_put op 7 invalid\n");
    EXPECT_FATAL(fo_put(file_record(), -1, 0), 255,
                 "test: Logic error, fo_put op -1 invalid\n");
}

TEST(fo_write, a_failing_write_with_a_name_is_fatal) {
    auto body = [] {
        fo *out = fo_init(open("/dev/full", O_WRONLY), "full");
        fo_put(out, 1, "x", 0);
        fo_flush(out);
    };
    EXPECT_FATAL(body(), 255, "test: full: No space left on device\n");
}

TEST(fo_write, a_failing_write_without_a_name_is_reported) {
    fo *out = fo_init(open("/dev/full", O_WRONLY), nullptr);
    fo_put(out, 1, "x", 0);
    EXPECT_EQ(fo_flush(out), -1);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(out->count, 1);
    EXPECT_EQ(out->buffer[0], 'x');
    release(out);
}

TEST(fo_put, drops_the_block_that_nobody_can_be_told_of) {
    fo *out = fo_init(open("/dev/full", O_WRONLY), nullptr);
    std::string text(5000, 'x');
    EXPECT_EQ(fo_put(out, 1, text.c_str(), 6, INT_MIN, 0), 0);
    EXPECT_EQ(out->count, 904 + 11);
    release(out);
}

TEST(fo_write, moves_what_is_left_to_the_front) {
    fo *out = file_record();
    fo_put(out, 1, "abcdef", 0);
    EXPECT_EQ(fo_write(out, 0), 0);
    EXPECT_EQ(fo_write(out, 4), 0);
    EXPECT_EQ(out->count, 2);
    EXPECT_EQ(std::string(out->buffer, 2), "ef");
    EXPECT_EQ(support::read_file("out"), "abcd");
    release(out);
}

TEST(putstr, pads_or_ends_the_line) {
    EXPECT_EQ(support::stdout_of([] {
                  putstr("ab", 4, 0);
                  putstr("abcd", 4, 0);
                  putstr("abcde", -1, 0);
                  putstr("x", 9, 1);
              }),
              "ab  abcdabcdex\n");
}

std::string columns(const char *prefix, std::vector<const char *> list,
                    int width, int column_width) {
    list.push_back(nullptr);
    return support::stdout_of(
        [&] { putcols(prefix, list.data(), width, column_width); });
}

TEST(putcols, rows_run_down_the_columns) {
    EXPECT_EQ(
        columns(nullptr, {"one", "two", "three", "four", "fiveish"}, 40, 0),
        "one      three    four     fiveish\n"
        "two\n");
    EXPECT_EQ(columns("> ", {"a", "b", "c", "d", "e", "f"}, 9, 1),
              "> a c e\n> b d f\n");
    EXPECT_EQ(columns("", {"a", "b"}, 40, 3), "a   b\n");
}

TEST(putcols, one_column_is_an_entry_a_line) {
    EXPECT_EQ(columns("- ", {"abc", "d"}, 9, 0), "- abc\n- d\n");
    EXPECT_EQ(columns(nullptr, {"abc", "d"}, 3, 0), "abc\nd\n");
    EXPECT_EQ(columns("long prefix ", {"abc"}, -5, 0), "long prefix abc\n");
}

TEST(putcols, an_empty_list_prints_nothing) {
    EXPECT_EQ(columns("x", {}, 40, 0), "");
}

TEST(putlist, newlines_as_asked) {
    static const char *const list[] = {"a", "", "b", nullptr};
    EXPECT_EQ(support::stdout_of([] { putlist(list, stdout, 1); }), "a\n\nb\n");
    EXPECT_EQ(support::stdout_of([] { putlist(list, stdout, 0); }), "ab");
}

TEST(fopenfix, appends_and_creates_with_0666) {
    umask(022);
    for (const char *mode : {"a", "ab", "a+", "a+b"}) {
        support::write_file("f", "one");
        FILE *stream = fopenfix("f", mode);
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(ftell(stream), mode[1] == '+' ? 0 : 3) << mode;
        fputs("two", stream);
        fclose(stream);
        EXPECT_EQ(support::read_file("f"), "onetwo") << mode;
        fclose(fopenfix("new", mode));
        struct stat status;
        ASSERT_EQ(stat("new", &status), 0);
        EXPECT_EQ(status.st_mode & 0777u, 0644u);
        unlink("new");
    }
}

TEST(fopenfix, reads_in_the_plus_modes) {
    support::write_file("f", "one");
    FILE *stream = fopenfix("f", "a+");
    EXPECT_EQ(getc(stream), 'o');
    fclose(stream);
}

TEST(fopenfix, leaves_other_modes_to_fopen) {
    EXPECT_EQ(fopenfix("none", "r"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    FILE *stream = fopenfix("w", "w");
    ASSERT_NE(stream, nullptr);
    fclose(stream);
}

TEST(fopenfix, a_failed_open_gives_null) {
    EXPECT_EQ(fopenfix("none/f", "a"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST(fopenfix, a_failed_fdopen_closes_the_descriptor) {
    int before = dup(0);
    close(before);
    fdopen_fails = true;
    EXPECT_EQ(fopenfix("f", "a"), nullptr);
    EXPECT_EQ(errno, ENOMEM);
    fdopen_fails = false;
    int after = dup(0);
    close(after);
    EXPECT_EQ(after, before);
}

}  // namespace
