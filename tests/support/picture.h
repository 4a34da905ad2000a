// picture.h: the bytes that a page about a format shows.
#ifndef TOVAN_TESTS_PICTURE_H
#define TOVAN_TESTS_PICTURE_H

#include "support/tree.h"

#include <stdio.h>
#include <sstream>
#include <string>

namespace support {

// The file that rows of hexadecimal bytes draw, such as
//     0010:  00 23 ...  text
// What lies between the rows is zero.
inline std::string drawn_bytes(const std::string &text) {
    std::istringstream lines(text);
    std::string bytes;
    for (std::string line; std::getline(lines, line);) {
        unsigned offset = 0;
        int read = 0;
        if (sscanf(line.c_str(), " %x:%n", &offset, &read) != 1) continue;
        if (read == 0) continue;
        bytes.resize(offset);
        std::istringstream row(line.substr(static_cast<size_t>(read), 49));
        for (unsigned byte; row >> std::hex >> byte;) {
            bytes += static_cast<char>(byte);
        }
    }
    return bytes;
}

// The file that a page draws. The page's path starts at the root of the
// sources.
inline std::string pictured_bytes(const std::string &page) {
    return drawn_bytes(read_file(TOVAN_SOURCE_DIR "/" + page));
}

}  // namespace support

#endif
