// child.cc: code that ends the process, and what it leaves behind.
#include "support/child.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

// A child that ends through exit() holds whatever its parent held: a leak
// report there would say nothing.
static bool is_child = false;
extern "C" int __lsan_is_turned_off();
extern "C" int __lsan_is_turned_off() {
    return is_child;
}

namespace support {

namespace {

// An unnamed file: output of any size without a reader.
int scratch_file() {
    FILE *file = tmpfile();
    EXPECT_NE(file, nullptr);
    int descriptor = dup(fileno(file));
    fclose(file);
    return descriptor;
}

std::string content_of(int descriptor) {
    std::string content;
    char buffer[4096];
    lseek(descriptor, 0, SEEK_SET);
    for (ssize_t n; (n = read(descriptor, buffer, sizeof buffer)) > 0;) {
        content.append(buffer, static_cast<size_t>(n));
    }
    close(descriptor);
    return content;
}

int input_file(const std::string &input) {
    int descriptor = scratch_file();
    EXPECT_EQ(write(descriptor, input.data(), input.size()),
              static_cast<ssize_t>(input.size()));
    lseek(descriptor, 0, SEEK_SET);
    return descriptor;
}

std::string captured(int descriptor, const std::function<void()> &body) {
    fflush(nullptr);
    int kept = dup(descriptor);
    int file = scratch_file();
    dup2(file, descriptor);
    body();
    fflush(nullptr);
    dup2(kept, descriptor);
    close(kept);
    return content_of(file);
}

}  // namespace

outcome in_child(const std::function<void()> &body, const std::string &input) {
    int in = input_file(input);
    int out = scratch_file();
    int err = scratch_file();
    fflush(nullptr);
    pid_t child = fork();
    if (child == 0) {
        is_child = true;
        dup2(in, 0);
        dup2(out, 1);
        dup2(err, 2);
        close(in);
        close(out);
        close(err);
        body();
        fflush(nullptr);
        _exit(0);
    }
    outcome result;
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status)) result.exit_status = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    close(in);
    result.out = content_of(out);
    result.err = content_of(err);
    return result;
}

outcome run_program(const std::vector<std::string> &words,
                    const std::string &input) {
    return in_child(
        [&] {
            std::vector<char *> argv;
            for (const std::string &word : words) {
                argv.push_back(const_cast<char *>(word.c_str()));
            }
            argv.push_back(nullptr);
            execvp(argv[0], argv.data());
            _exit(127);
        },
        input);
}

std::string stdout_of(const std::function<void()> &body) {
    return captured(1, body);
}

std::string stderr_of(const std::function<void()> &body) {
    return captured(2, body);
}

}  // namespace support
