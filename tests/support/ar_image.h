// ar_image.h: archives byte by byte, sound ones and damaged ones.
#ifndef TOVAN_TESTS_AR_IMAGE_H
#define TOVAN_TESTS_AR_IMAGE_H

#include <string>
#include <vector>

namespace support {

constexpr char ar_magic[] = "!<arch>\n";

// A header with its fields as texts, which are padded with blanks, or cut, to
// their widths.
struct ar_header {
    std::string name;
    std::string size;
    std::string mtime = "0";
    std::string uid = "0";
    std::string gid = "0";
    std::string mode = "100644";
    std::string mark = "`\n";

    std::string bytes() const;
};

// A header, the data, and the byte that pads it. The name is that of the
// header, with its "/" if it has one.
std::string ar_member(const std::string &name, const std::string &data);

struct ar_file {
    std::string name;
    std::string data;
};

// An archive as it is usually written: a long-name table first where there
// are names of more than 15 characters.
std::string ar_archive(const std::vector<ar_file> &files);

}  // namespace support

#endif
