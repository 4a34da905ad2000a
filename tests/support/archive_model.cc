// archive_model.cc: a second opinion on archives.
#include "support/archive_model.h"

#include "support/tree.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>
#include <algorithm>
#include <filesystem>
#include <map>
#include <random>

namespace support {

namespace {

std::string formatted(const char *format, unsigned long number) {
    char text[32];
    snprintf(text, sizeof text, format, number);
    return text;
}

std::string six(unsigned long number) {
    return formatted("%.6lo", number);
}

std::string eleven(unsigned long number) {
    return formatted("%.11lo", number);
}

struct named_place {
    size_t offset;
    const char *name;
};

// The last of the places that is not behind `offset`.
std::string name_at(const std::vector<named_place> &places, size_t offset) {
    std::string name = "content";
    for (const named_place &place : places) {
        if (place.offset <= offset) name = place.name;
    }
    return name;
}

size_t first_difference(const std::string &a, const std::string &b) {
    size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; i++) {
        if (a[i] != b[i]) return i;
    }
    return n;
}

std::string difference(const std::string &expected, const std::string &actual,
                       const std::string &where, size_t at) {
    auto shown = [at](const std::string &bytes) {
        std::string text;
        for (char c : bytes.substr(std::min(at, bytes.size()), 16))
            text += c >= ' ' && c <= '~' ? c : '.';
        return text;
    };
    return "offset " + std::to_string(at) + " (" + where + "): expected `" +
           shown(expected) + "' of " + std::to_string(expected.size()) +
           ", got `" + shown(actual) + "' of " + std::to_string(actual.size());
}

}  // namespace

std::string cpio_entry(const std::string &name, const struct stat &status,
                       const std::string &content) {
    return "070707" + six(status.st_dev & 0xffff) +
           six(status.st_ino & 0777777) + six(status.st_mode) +
           six(status.st_uid) + six(status.st_gid) + six(status.st_nlink) +
           six(status.st_rdev & 0xffff) +
           eleven(static_cast<unsigned long>(status.st_mtime)) +
           six(name.size() + 1) + eleven(content.size()) + name + '\0' +
           content;
}

std::string cpio_archive(const std::string &entries) {
    std::string all = entries + cpio_entry("TRAILER!!!", {}, "");
    all.resize(all.size() + 10 * 8192);
    all.resize((all.size() - 1) / 5120 * 5120);
    return all;
}

std::string tar_header(const std::string &name, const struct stat &status,
                       long size, char type, const std::string &link) {
    char block[520] = {};
    memcpy(block, name.data(), std::min<size_t>(name.size(), 100));
    sprintf(block + 100, "%6o ", status.st_mode & 0xfff);
    sprintf(block + 108, "%6o ", status.st_uid);
    sprintf(block + 116, "%6o ", status.st_gid);
    sprintf(block + 124, "%11lo ", static_cast<unsigned long>(size));
    sprintf(block + 136, "%11lo ", static_cast<unsigned long>(status.st_mtime));
    memset(block + 148, ' ', 8);
    block[156] = type;
    memcpy(block + 157, link.c_str(), link.size() + 1);
    int sum = 0;
    for (int i = 0; i < 512; i++)
        sum += static_cast<signed char>(block[i]);
    sprintf(block + 148, "%6o", static_cast<unsigned>(sum));
    return std::string(block, 512);
}

std::string tar_file(const std::string &name, const struct stat &status,
                     const std::string &content) {
    std::string bytes =
        tar_header(name, status, static_cast<long>(content.size())) + content;
    bytes.resize((bytes.size() + 511) / 512 * 512);
    return bytes;
}

std::string tar_archive(const std::string &entries) {
    std::string all = entries;
    all.resize((entries.size() + 1024 + 10239) / 10240 * 10240);
    return all;
}

std::string cpio_difference(const std::string &expected,
                            const std::string &actual) {
    if (expected == actual) return "";
    static const std::vector<named_place> places = {
        {0, "magic"},  {6, "dev"},       {12, "ino"},      {18, "mode"},
        {24, "uid"},   {30, "gid"},      {36, "nlink"},    {42, "rdev"},
        {48, "mtime"}, {59, "namesize"}, {65, "filesize"}, {76, "name"}};
    size_t at = first_difference(expected, actual);
    size_t header = expected.rfind("070707", at);
    if (header == std::string::npos) header = 0;
    return difference(expected, actual, name_at(places, at - header), at);
}

std::string tar_difference(const std::string &expected,
                           const std::string &actual) {
    if (expected == actual) return "";
    static const std::vector<named_place> places = {
        {0, "name"},   {100, "mode"},  {108, "uid"},      {116, "gid"},
        {124, "size"}, {136, "mtime"}, {148, "checksum"}, {156, "type"},
        {157, "link"}, {257, "rest"}};
    size_t at = first_difference(expected, actual);
    return difference(expected, actual, name_at(places, at % 512), at);
}

struct stat status_of(const std::string &path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

struct stat made_up_status() {
    struct stat status {};
    status.st_dev = 0x12345;
    status.st_ino = 0765;
    status.st_mode = S_IFREG | 0644;
    status.st_uid = 01234;
    status.st_gid = 055;
    status.st_nlink = 1;
    status.st_mtime = 1000000000;
    return status;
}

std::string random_bytes(size_t n, unsigned seed) {
    std::mt19937 random(seed + static_cast<unsigned>(n));
    std::string bytes(n, '\0');
    for (char &c : bytes)
        c = static_cast<char>(random());
    return bytes;
}

std::vector<size_t> writes_of(const std::function<void()> &body) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    fflush(stdout);
    int kept = dup(1);
    dup2(ends[1], 1);
    close(ends[1]);
    body();
    dup2(kept, 1);
    close(kept);
    std::vector<size_t> sizes;
    std::vector<char> piece(1 << 20);
    for (ssize_t n; (n = read(ends[0], piece.data(), piece.size())) > 0;)
        sizes.push_back(static_cast<size_t>(n));
    close(ends[0]);
    return sizes;
}

namespace {

std::string line_of(const std::string &path, const struct stat &status) {
    if (S_ISDIR(status.st_mode)) return " directory";
    if (S_ISLNK(status.st_mode))
        return " link " + std::filesystem::read_symlink(path).string();
    if (S_ISFIFO(status.st_mode)) return " pipe";
    if (!S_ISREG(status.st_mode)) return " special";
    std::string content = read_file(path);
    size_t hash = std::hash<std::string>()(content);
    return " file " + std::to_string(content.size()) + " " +
           std::to_string(hash);
}

}  // namespace

std::vector<std::string> tree_lines(const std::string &root) {
    std::vector<std::string> paths;
    for (const auto &entry :
         std::filesystem::recursive_directory_iterator(root))
        paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    std::map<std::pair<dev_t, ino_t>, std::string> first;
    std::vector<std::string> lines;
    for (const std::string &path : paths) {
        struct stat status = status_of(path);
        std::string name = path.substr(root.size() + 1);
        std::string line = name + line_of(path, status);
        line += " " + std::to_string(status.st_mode & 07777);
        if (S_ISREG(status.st_mode))
            line += " " + std::to_string(status.st_mtime);
        bool is_linked = status.st_nlink > 1 && S_ISREG(status.st_mode);
        auto key = std::make_pair(status.st_dev, status.st_ino);
        if (is_linked) line += " as " + first.emplace(key, name).first->second;
        lines.push_back(line);
    }
    return lines;
}

}  // namespace support
