// tree.h: files and folders of a test's own directory.
#ifndef TOVAN_TESTS_TREE_H
#define TOVAN_TESTS_TREE_H

#include <string>

namespace support {

// Writes a file, making the folders above it.
void write_file(const std::string &path, const std::string &content);

// The whole content; fails the test when the file cannot be read.
std::string read_file(const std::string &path);

// Makes a folder and the folders above it.
void make_folders(const std::string &path);

bool file_exists(const std::string &path);

}  // namespace support

#endif
