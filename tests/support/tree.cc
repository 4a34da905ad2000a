// tree.cc: files and folders of a test's own directory.
#include "support/tree.h"

#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace support {

void make_folders(const std::string &path) {
    std::filesystem::create_directories(path);
}

void write_file(const std::string &path, const std::string &content) {
    auto folder = std::filesystem::path(path).parent_path();
    if (!folder.empty()) std::filesystem::create_directories(folder);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
    ASSERT_TRUE(out.flush().good()) << "cannot write " << path;
}

std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in.good()) << "cannot read " << path;
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

bool file_exists(const std::string &path) {
    return std::filesystem::exists(path);
}

}  // namespace support
