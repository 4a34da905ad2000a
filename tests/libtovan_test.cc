// libtovan_test.cc: the banner and the list of identification strings.
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <tovan/tovan.h>
#include <vector>

namespace {

std::vector<std::string> source_names() {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(
             std::string(TOVAN_SOURCE_DIR) + "/lib")) {
        if (entry.path().extension() == ".cc") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(libtovan, the_banner_is_exact) {
    EXPECT_STREQ(V_Libtovan,
                 "V@(#)Libtovan 8.4.1(?) Morva(8.4) 2000/06/09 10:29:27 "
                 "Linux-2.2.14-i686");
}

TEST(libtovan, the_list_names_every_source_in_order) {
    std::vector<std::string> names = source_names();
    ASSERT_GT(names.size(), 60u);
    for (size_t i = 0; i < names.size(); i++) {
        std::string pattern =
            "@\\(#\\)-ltovan\\(" + names[i] + "\\)\t8\\.4 - "
            "[0-9]{2}/[0-9]{2}/[0-9]{2}";
        EXPECT_TRUE(std::regex_match(libtovan_list[i], std::regex(pattern)))
            << "entry " << i << " is " << libtovan_list[i] << ", not that of "
            << names[i];
    }
}

}  // namespace
