// ar_image.cc: archives byte by byte, sound ones and damaged ones.
#include "support/ar_image.h"

namespace support {

namespace {

std::string field(std::string text, size_t width) {
    text.resize(width, ' ');
    return text;
}

}  // namespace

std::string ar_header::bytes() const {
    return field(name, 16) + field(mtime, 12) + field(uid, 6) + field(gid, 6) +
           field(mode, 8) + field(size, 10) + field(mark, 2);
}

std::string ar_member(const std::string &name, const std::string &data) {
    ar_header header{name, std::to_string(data.size())};
    return header.bytes() + data + (data.size() % 2 != 0 ? "\n" : "");
}

std::string ar_archive(const std::vector<ar_file> &files) {
    std::string table;
    std::string members;
    for (const ar_file &file : files) {
        std::string name = file.name + "/";
        if (name.size() > 16) {
            table += name + "\n";
            name = "/" + std::to_string(table.size() - name.size() - 1);
        }
        members += ar_member(name, file.data);
    }
    return ar_magic + (table.empty() ? "" : ar_member("//", table)) + members;
}

}  // namespace support
