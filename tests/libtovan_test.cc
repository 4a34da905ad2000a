// libtovan_test.cc: the banner and the list of identification strings.
#include <ctype.h>
#include <gtest/gtest.h>
#include <tovan/tovan.h>
#include <algorithm>
#include <filesystem>
#include <string>
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

// The form of a text whose numbers may change.
std::string with_digits_as_nines(std::string text) {
    for (char &c : text) {
        if (isdigit(static_cast<unsigned char>(c))) c = '9';
    }
    return text;
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
        EXPECT_EQ(with_digits_as_nines(libtovan_list[i]),
                  "@(#)-ltovan(" + with_digits_as_nines(names[i]) +
                      ")\t9.9 - 99/99/99")
            << "entry " << i << " is not that of " << names[i];
        EXPECT_NE(std::string(libtovan_list[i]).find("(" + names[i] + ")"),
                  std::string::npos);
    }
}

}  // namespace
