// dictionary.cc: the dictionary of a test.
#include "support/dictionary.h"

#include "support/child.h"
#include "support/tree.h"

#include <stdlib.h>
#include <tovan/sfdict.h>
#include <sstream>

namespace support {

std::string listing(int uflag) {
    return stdout_of([uflag] { sf_putdict(uflag); });
}

void empty_dictionary() {
    std::istringstream lines(listing());
    for (std::string line; std::getline(lines, line);) {
        if (line[0] == '\t') continue;
        sf_dictext(line.substr(0, line.find('\t')).c_str(), nullptr, "", 0, 0);
    }
    sf_setnotset("");
    sf_splitchar = '\\';
    sf_uflag = 0;
}

std::string read_dictionary(const std::string &content) {
    write_file("dict", content);
    return stderr_of([] { sfdict("dict"); });
}

std::string value_of(const std::string &name) {
    const char *where = nullptr;
    const char *value = sf_valvar(name.c_str(), -1, &where, nullptr);
    return where != nullptr ? value : "(undefined)";
}

std::string place_of(const std::string &name) {
    const char *where = nullptr;
    int line = 0;
    sf_valvar(name.c_str(), -1, &where, &line);
    if (where == nullptr) return "(undefined)";
    return where + (":" + std::to_string(line));
}

std::string expanded(const std::string &text) {
    dy output{};
    int had_error = -1;
    std::string result =
        sf_proc(text.c_str(), &output, 1, &had_error, "text", 7);
    EXPECT_EQ(static_cast<size_t>(output.length), result.size()) << text;
    EXPECT_TRUE(had_error == 0 || had_error == 1) << had_error;
    free(output.buffer);
    return result;
}

std::string fault_of(const std::string &text) {
    return stderr_of([&] { expanded(text); });
}

}  // namespace support
