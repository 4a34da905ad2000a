// io_fault_test.cc: what reads, writes and looks around when calls of the
// system fail, are interrupted, or transfer less than was asked for.
#include "support/child.h"
#include "support/faults/faults.h"
#include "support/tree.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/tovan.h>
#include <unistd.h>
#include <functional>
#include <string>
#include <vector>

namespace {

using support::always;
using support::fault;
using support::half;
using support::no_fault;
using support::text_of;

// The same result for every reading that falls short or is interrupted.
void check_short_reads(const char *call, const std::function<void()> &body,
                       const std::string &out) {
    support::check_faults(body, {{{call, EINTR, 1, 3}, out, "", 0},
                                 {{call, EINTR, 2, 1, 100}, out, "", 0},
                                 {{call, 0, 1, always, 1}, out, "", 0},
                                 {{call, 0, 1, always, 7}, out, "", 0},
                                 {{call, 0, 1, always, half}, out, "", 0}});
}

// What keeps a file from being opened.
constexpr int open_errors[] = {EMFILE, ENFILE,       EACCES, ENOENT,
                               EIO,    ENAMETOOLONG, ELOOP,  ENOTDIR,
                               ENOMEM, ETXTBSY,      ENOSPC};

// ---- the first block -----------------------------------------------------

void print_first_block() {
    blk1 block{};
    if (read1blk("file", &block) == nullptr) {
        printf("%s, %s", strerror(errno), block.name ? block.name : "no name");
    } else {
        fwrite(block.data, 1, static_cast<size_t>(block.end - block.data),
               stdout);
    }
    free(block.name);
}

TEST(io_fault, read1blk_reads_what_there_is) {
    std::string content(3000, 'x');
    content.replace(1000, 24, "end of the block        ");
    support::write_file("file", content);
    std::string block = content.substr(0, 1024);
    check_short_reads("read", print_first_block, block);
    support::check_faults(
        print_first_block,
        {{{"open", EINTR, 1, 5}, block, "", 0},
         {{"close", EIO}, block, "", 0},
         {{"close", EINTR}, block, "", 0},
         {{"read", 0, 1, 1, 0}, "", "", 0},
         {{"read", EIO}, text_of(EIO) + ", no name", "", 0},
         {{"read", EISDIR}, text_of(EISDIR) + ", no name", "", 0}});
    for (int error : open_errors) {
        support::check_faults(
            print_first_block,
            {{{"open", error}, text_of(error) + ", no name", "", 0}});
    }
}

// ---- lines and words of a descriptor -------------------------------------

// Lines of all lengths, some longer than a block.
std::string many_lines() {
    std::string lines;
    for (size_t n : {0, 1, 40, 4095, 4096, 4097, 9000, 3})
        lines += std::string(n, static_cast<char>('a' + n % 26)) + "\n";
    return lines;
}

void print_lines() {
    int descriptor = open("file", O_RDONLY);
    rdy *reader = rdy_init(descriptor);
    dy line{};
    while (rdy_getline(reader, &line, 0) != nullptr)
        puts(line.buffer);
    free(line.buffer);
    free(reader);
    close(descriptor);
}

TEST(io_fault, lines_of_a_descriptor) {
    std::string lines = many_lines();
    support::write_file("file", lines);
    check_short_reads("read", print_lines, lines);
    std::string first = lines.substr(0, 4096) + "\n";
    support::check_faults(print_lines,
                          {{{"read", EIO}, "", "", 0},
                           {{"read", EIO, 2}, first, "", 0},
                           {{"read", 0, 2, always, 0}, first, "", 0}});
}

void print_words() {
    int descriptor = open("file", O_RDONLY);
    dyp words{};
    dypnew(&words, 1);
    rdflist(descriptor, &words, "NAME");
    for (int i = 0; i < words.count; i++)
        printf("%s\n", static_cast<char *>(words.array[i]));
    free(words.array);
    close(descriptor);
}

TEST(io_fault, words_of_an_input) {
    std::string words;
    for (int i = 0; i < 6000; i++)
        words += "word" + std::to_string(i) + "\n";
    support::write_file("file", words);
    check_short_reads("read", print_words, words);
    support::check_faults(
        print_words,
        {{{"read", EIO}, "", "test: NAME: " + text_of(EIO) + "\n", 255},
         {{"read", EISDIR}, "", "test: NAME: " + text_of(EISDIR) + "\n", 255},
         {{"read", EIO, 3}, "", "test: NAME: " + text_of(EIO) + "\n", 255},
         {{"read", EAGAIN}, "", "test: NAME: " + text_of(EAGAIN) + "\n", 255},
         {{"read", 0, 1, always, 0}, "", "", 0}});
}

// ---- lines of a stream ---------------------------------------------------

void print_stream_lines() {
    FILE *stream = fopen("file", "r");
    dy line{};
    while (getdyline(stream, &line, 0) != nullptr)
        puts(line.buffer);
    free(line.buffer);
    fclose(stream);
}

TEST(io_fault, lines_of_a_stream) {
    std::string lines = many_lines();
    support::write_file("file", lines);
    support::check_faults(print_stream_lines,
                          {{{"fread", 0, 1, always, 1}, lines, "", 0},
                           {{"fread", 0, 1, always, half}, lines, "", 0},
                           {{"fread", EIO}, "", "", 0},
                           {{"fread", 0, 1, always, 0}, "", "", 0}});
}

// ---- blocks of output ----------------------------------------------------

// 5000 bytes and a number, into the file "new".
void write_blocks(const char *name) {
    int descriptor = open("new", O_WRONLY | O_CREAT | O_TRUNC, 0600);
    fo *output = fo_init(descriptor, name);
    std::string bytes(5000, 'x');
    fo_put(output, 1, bytes.c_str(), 6, -12, 0);
    int result = fo_flush(output);
    if (result == -1) printf("%s", strerror(errno));
    free(output);
    close(descriptor);
}

TEST(io_fault, blocks_are_written_whole) {
    for (const fault &f :
         {fault{"write", EINTR, 1, 3}, fault{"write", EINTR, 2, 1},
          fault{"write", 0, 1, always, 1}, fault{"write", 0, 1, always, half},
          fault{"write", 0, 2, 1, 1000}}) {
        support::check_faults([] { write_blocks("NAME"); }, {{f, "", "", 0}});
        EXPECT_EQ(support::read_file("new"), std::string(5000, 'x') + "-12")
            << support::name_of(f);
    }
}

TEST(io_fault, a_failing_write_is_told) {
    for (int error : {ENOSPC, EIO, EDQUOT, EFBIG, EPIPE, EAGAIN, EBADF}) {
        std::string message = "test: NAME: " + text_of(error) + "\n";
        for (int first : {1, 2, 3}) {
            support::check_faults(
                [] { write_blocks("NAME"); },
                {{{"write", error, first, always}, "", message, 255}});
        }
        support::check_faults(
            [] { write_blocks(nullptr); },
            {{{"write", error, 1, always}, text_of(error), "", 0},
             {{"write", error, 3, always}, text_of(error), "", 0}});
    }
}

TEST(io_fault, a_write_that_writes_nothing_is_a_full_disk) {
    std::string message = "test: NAME: " + text_of(ENOSPC) + "\n";
    support::check_faults([] { write_blocks("NAME"); },
                          {{{"write", 0, 1, always, 0}, "", message, 255},
                           {{"write", 0, 2, always, 0}, "", message, 255}});
}

TEST(io_fault, out_of_memory_is_told_in_pieces_too) {
    for (const fault &f :
         {fault{"write", 0, 1, always, 1}, fault{"write", EINTR, 1, 2}}) {
        support::outcome end = support::with_fault(f, [] { nocore(); });
        EXPECT_EQ(end.err, "test: Ran out of memory\n");
        EXPECT_EQ(end.signal, SIGABRT);
    }
}

// ---- streams that append -------------------------------------------------

void append(const char *mode) {
    FILE *stream = fopenfix("log", mode);
    if (stream == nullptr) {
        printf("%s", strerror(errno));
        return;
    }
    fputs("more\n", stream);
    fclose(stream);
    printf("appended");
}

TEST(io_fault, streams_that_append) {
    for (const char *mode : {"a", "a+"}) {
        auto body = [mode] { append(mode); };
        support::check_faults(body,
                              {{{"open", EINTR, 1, 3}, "appended", "", 0},

                               {{"fdopen", ENOMEM}, text_of(ENOMEM), "", 0},
                               {{"fdopen", EMFILE}, text_of(EMFILE), "", 0}});
        for (int error : open_errors)
            support::check_faults(body,
                                  {{{"open", error}, text_of(error), "", 0}});
    }
    support::check_faults([] { append("a"); },
                          {{{"lseek", ESPIPE}, "appended", "", 0}});
    EXPECT_EQ(support::read_file("log"), "more\nmore\nmore\n");
}

// ---- the dictionary and the file fixer -----------------------------------

void print_dictionary() {
    printf("status %d\n", sfdict("file"));
    sf_putdict(0);
}

TEST(io_fault, dictionaries) {
    std::string definitions;
    for (int i = 100; i < 400; i++)
        definitions +=
            "N" + std::to_string(i) + " = " + std::string(40, 'v') + "\n";
    support::write_file("file", definitions);
    std::string whole = support::with_fault(no_fault, print_dictionary).out;
    ASSERT_GT(whole.size(), 300 * 40u);
    std::string cannot_open = "test: file: cannot open\n";
    std::string cannot_read = "test: file: " + text_of(EIO) + "\n";
    support::check_faults(print_dictionary,
                          {{{"fread", 0, 1, always, 1}, whole, "", 0},
                           {{"fread", 0, 1, always, half}, whole, "", 0},
                           {{"fread", EIO}, "", cannot_read, 255},
                           {{"fread", EIO, 2}, "", cannot_read, 255},
                           {{"open", EINTR, 1, 3}, whole, "", 0},
                           {{"fdopen", ENOMEM}, "", cannot_open, 255}});
    for (int error : open_errors)
        support::check_faults(print_dictionary,
                              {{{"open", error}, "", cannot_open, 255}});
}

void print_fixed() {
    setsfwrite([](const char *line, int length) {
        fwrite(line, 1, static_cast<size_t>(length), stdout);
    });
    sf_dictext("A", "value", "test", 1, 0);
    printf("status %d\n", sfixfile("file", 0));
}

TEST(io_fault, fixed_files) {
    std::string text_in;
    std::string text_out;
    for (int i = 0; i < 3000; i++) {
        text_in += "line @A@ " + std::to_string(i) + "\n";
    }
    support::write_file("file", text_in);
    std::string whole = support::with_fault(no_fault, print_fixed).out;
    ASSERT_GT(whole.size(), 3000u * 10);
    check_short_reads("read", print_fixed, whole);
    std::string cannot_read = "test: file: " + text_of(EIO) + "\n";
    for (int first : {1, 2}) {
        support::outcome end =
            support::with_fault({"read", EIO, first, always}, print_fixed);
        EXPECT_EQ(end.err, cannot_read);
        EXPECT_EQ(end.exit_status, 255);
    }
    for (int error : open_errors) {
        support::outcome end =
            support::with_fault({"open", error}, print_fixed);
        EXPECT_EQ(end.err, "test: file: cannot open\n");
        EXPECT_EQ(end.exit_status, 255);
    }
}

// ---- paths ---------------------------------------------------------------

TEST(io_fault, the_current_directory_must_be_known) {
    for (int error : {ENOENT, EACCES, ENOMEM, ENAMETOOLONG}) {
        support::check_faults([] { puts(p_resolve("x", nullptr)); },
                              {{{"getcwd", error},
                                "",
                                "test: getcwd: " + text_of(error) + "\n",
                                255}});
    }
}

void print_paths() {
    for (char *path = globber("d/*/x/*.c"); path; path = globber(nullptr))
        puts(path);
    for (char *path = globber("d/*/x/a.c"); path; path = globber(nullptr))
        puts(path);
}

TEST(io_fault, paths_that_cannot_be_read_are_passed_over) {
    for (const char *file : {"d/1/x/a.c", "d/2/x/a.c"})
        support::write_file(file, "");
    const support::outcome whole = support::with_fault(no_fault, print_paths);
    EXPECT_EQ(whole.out.size(), 4 * 10u);
    support::check_faults(print_paths,
                          {{{"opendir", EINTR, 1, 3}, whole.out, "", 0},
                           {{"opendir", EMFILE, 1, always}, "", "", 0},
                           {{"opendir", EACCES, 1, always}, "", "", 0},
                           {{"opendir", ENOMEM, 1, always}, "", "", 0},
                           {{"readdir", EIO, 1, always}, "", "", 0}});
    for (int first = 1; first < 5; first++) {
        for (const char *call : {"opendir", "stat"}) {
            support::outcome end =
                support::with_fault({call, EIO, first}, print_paths);
            EXPECT_EQ(end.exit_status, 0);
            EXPECT_EQ(end.out.find("descriptors"), std::string::npos);
            EXPECT_LT(end.out.size(), whole.out.size() + 1);
        }
    }
    for (int first = 1; first < 20; first++) {
        support::outcome end =
            support::with_fault({"readdir", EIO, first}, print_paths);
        EXPECT_EQ(end.exit_status, 0);
        EXPECT_EQ(end.out.find("descriptors"), std::string::npos);
    }
}

TEST(io_fault, files_that_cannot_be_looked_at_are_not_found) {
    support::write_file("d/file", "");
    auto find = [] {
        char *found = findfile("file", "d", 0);
        puts(found != nullptr ? found : "none");
        free(found);
    };
    support::check_faults(find, {{no_fault, "d/file\n", "", 0}});
    for (int error : {EACCES, EIO, ELOOP, ENAMETOOLONG, ENOTDIR, ENOMEM})
        support::check_faults(
            find, {{{"access", error, 1, always}, "none\n", "", 0}});
}

TEST(io_fault, links_that_cannot_be_looked_at_are_none) {
    EXPECT_EQ(symlink("to", "link"), 0);
    auto tell = [] { printf("%d", issymlink("link")); };
    support::check_faults(tell, {{no_fault, "1", "", 0}});
    for (int error : {EACCES, EIO, ELOOP, ENAMETOOLONG, ENOMEM})
        support::check_faults(tell, {{{"lstat", error}, "0", "", 0}});
}

TEST(io_fault, times_that_cannot_be_set) {
    support::write_file("file", "");
    auto set_times = [] {
        int result = futime("file", 1, 2);
        printf("%d %s", result, result == -1 ? strerror(errno) : "");
    };
    support::check_faults(set_times, {{no_fault, "0 ", "", 0}});
    for (int error : {EACCES, EPERM, EROFS, ENOENT, EIO}) {
        support::check_faults(
            set_times, {{{"utime", error}, "-1 " + text_of(error), "", 0}});
    }
}

}  // namespace
