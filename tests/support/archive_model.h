// archive_model.h: a second opinion on archives: entries as their formats
// spell them, put together without regard to speed.
#ifndef TOVAN_TESTS_ARCHIVE_MODEL_H
#define TOVAN_TESTS_ARCHIVE_MODEL_H

#include <sys/stat.h>
#include <functional>
#include <string>
#include <vector>

namespace support {

// The bytes of one cpio entry: header, name, content.
std::string cpio_entry(const std::string &name, const struct stat &status,
                       const std::string &content);

// What becomes of queued entries: the trailer, 81920 zeros, and of all that
// the blocks behind which more comes.
std::string cpio_archive(const std::string &entries);

// The bytes of one tar header.
//   name      with the "/" of a directory
//   type      NUL, '1' or '2'
std::string tar_header(const std::string &name, const struct stat &status,
                       long size, char type = '\0',
                       const std::string &link = "");

// Header and content in blocks.
std::string tar_file(const std::string &name, const struct stat &status,
                     const std::string &content);

// Entries, two blocks of zeros, and zeros to the end of the record.
std::string tar_archive(const std::string &entries);

// Where two archives differ: "" when they do not. The field is named.
std::string cpio_difference(const std::string &expected,
                            const std::string &actual);
std::string tar_difference(const std::string &expected,
                           const std::string &actual);

// A file's status, not followed.
struct stat status_of(const std::string &path);

// The status of a made-up file that belongs to nobody in particular.
struct stat made_up_status();

// n bytes without a pattern; the same for the same n and seed.
std::string random_bytes(size_t n, unsigned seed = 1);

// The sizes of the pieces that `body` writes to standard output, one a
// write(2). All of them together have to fit a socket's buffer.
std::vector<size_t> writes_of(const std::function<void()> &body);

// A line "PATH TYPE CONTENT LINKS" for each entry of a tree, sorted; names of
// one file have the same LINKS, the first of the names.
std::vector<std::string> tree_lines(const std::string &root);

}  // namespace support

#endif
