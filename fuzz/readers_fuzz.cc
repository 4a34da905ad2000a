// readers_fuzz.cc: every reader of lines and words on the same bytes, beside
// plain splitting of the text.
#include "fuzz.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <tovan/getdylin.h>
#include <unistd.h>
#include <string>
#include <vector>

namespace {

using texts = std::vector<std::string>;

void require(bool holds) {
    if (!holds) abort();
}

std::string text_of(const dy &string) {
    require(string.length < string.capacity);
    require(string.buffer[string.length] == '\0');
    return std::string(string.buffer, static_cast<size_t>(string.length));
}

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

bool is_space(char c) {
    return c != '\0' && strchr(" \t\n\v\f\r", c) != nullptr;
}

void drop_last(std::string *line, char c) {
    if (!line->empty() && line->back() == c) line->pop_back();
}

// The lines with their newlines, and what is behind the last one.
texts split_lines(const std::string &bytes) {
    texts all;
    for (size_t at = 0; at < bytes.size();) {
        size_t end = bytes.find('\n', at);
        end = end == std::string::npos ? bytes.size() : end + 1;
        all.push_back(bytes.substr(at, end - at));
        at = end;
    }
    return all;
}

void skip_blanks(std::string *line) {
    size_t n = 0;
    while (n < line->size() && is_blank((*line)[n]))
        n++;
    line->erase(0, n);
}

texts stream_lines(const std::string &bytes, bool skip) {
    texts all;
    for (std::string &line : split_lines(bytes)) {
        if (skip) skip_blanks(&line);
        bool is_whole = !line.empty() && line.back() == '\n';
        drop_last(&line, is_whole ? '\n' : '\x1a');
        if (!is_whole && line.empty()) break;
        drop_last(&line, '\r');
        all.push_back(line);
    }
    return all;
}

texts descriptor_lines(const std::string &bytes, int flags) {
    texts all;
    for (std::string &line : split_lines(bytes)) {
        if (flags & 1) skip_blanks(&line);
        bool is_whole = !line.empty() && line.back() == '\n';
        if (!is_whole && line.empty()) break;
        if (is_whole) {
            line.pop_back();
            drop_last(&line, '\r');
            while ((flags & 2) && !line.empty() && is_blank(line.back()))
                line.pop_back();
        }
        all.push_back(line);
    }
    return all;
}

texts words(const std::string &bytes, bool with_comments) {
    texts all;
    for (size_t at = 0; at < bytes.size(); at++) {
        if (is_space(bytes[at])) continue;
        size_t end = at;
        if (with_comments && bytes[at] == '#') {
            at = bytes.find('\n', at);
            if (at == std::string::npos) break;
            continue;
        }
        while (end < bytes.size() && !is_space(bytes[end]))
            end++;
        all.push_back(bytes.substr(at, end - at));
        at = end;
    }
    return all;
}

// A file in memory that holds the bytes, at its start.
int descriptor_of(const std::string &bytes) {
    static const int descriptor = memfd_create("input", 0);
    require(ftruncate(descriptor, 0) == 0);
    ssize_t put = pwrite(descriptor, bytes.data(), bytes.size(), 0);
    require(put == static_cast<ssize_t>(bytes.size()));
    lseek(descriptor, 0, SEEK_SET);
    return descriptor;
}

template <typename Read>
texts by_stream(const std::string &bytes, Read read) {
    char nothing = '\n';
    char *data = bytes.empty() ? &nothing : const_cast<char *>(bytes.data());
    FILE *stream = fmemopen(data, bytes.empty() ? 1 : bytes.size(), "r");
    if (bytes.empty()) getc(stream);
    texts all;
    dy text{};
    while (read(stream, &text) != nullptr)
        all.push_back(text_of(text));
    free(text.buffer);
    fclose(stream);
    return all;
}

texts by_descriptor(const std::string &bytes, int flags) {
    rdy *reader = rdy_init(descriptor_of(bytes));
    texts all;
    dy line{};
    while (rdy_getline(reader, &line, flags) != nullptr)
        all.push_back(text_of(line));
    free(line.buffer);
    free(reader);
    return all;
}

// The words as strings: up to their first NUL. A word that begins with one
// is an empty string.
texts listed_words(const std::string &bytes) {
    texts all = words(bytes, false);
    for (std::string &word : all)
        word = word.c_str();
    return all;
}

void check_list(const std::string &bytes) {
    dyp array{};
    dypreuse(&array);
    int descriptor = descriptor_of(bytes);
    if (fuzz::survives([&] { rdflist(descriptor, &array, "list"); })) {
        texts expected = listed_words(bytes);
        require(array.count == static_cast<int>(expected.size()));
        for (size_t i = 0; i < expected.size(); i++)
            require(static_cast<char *>(array.array[i]) == expected[i]);
    } else {
        size_t longest = 0;
        for (const std::string &word : words(bytes, false))
            longest = std::max(longest, word.size());
        require(longest > 16256);
    }
    free(array.array);
}

// All appended to one string: each call adds its line.
void check_appending(const std::string &bytes) {
    std::string expected;
    for (const std::string &line : stream_lines(bytes, false))
        expected += line;
    std::string held;
    by_stream(bytes, [&](FILE *stream, dy *text) {
        char *result = getdycline(stream, text, 0);
        if (text->capacity != 0) held = text_of(*text);
        return result;
    });
    require(held == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string bytes(reinterpret_cast<const char *>(data), size);
    for (int flag : {0, 1}) {
        require(by_stream(bytes, [&](FILE *stream, dy *text) {
                    return getdyline(stream, text, flag);
                }) == stream_lines(bytes, flag != 0));
        require(by_stream(bytes, [&](FILE *stream, dy *text) {
                    return getdyword(stream, text, flag);
                }) == words(bytes, flag != 0));
    }
    for (int flags = 0; flags < 4; flags++)
        require(by_descriptor(bytes, flags) == descriptor_lines(bytes, flags));
    check_appending(bytes);
    check_list(bytes);
    return 0;
}
