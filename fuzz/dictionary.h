// dictionary.h: targets that start with an empty dictionary each time.
#ifndef TOVAN_FUZZ_DICTIONARY_H
#define TOVAN_FUZZ_DICTIONARY_H

#include <stdio.h>
#include <stdlib.h>
#include <tovan/sfdict.h>
#include <sstream>
#include <string>
#include <vector>

namespace fuzz {

// What sf_putdict() writes.
inline std::string listing() {
    FILE *kept = stdout;
    char *text = nullptr;
    size_t size = 0;
    stdout = open_memstream(&text, &size);
    sf_putdict(0);
    fclose(stdout);
    stdout = kept;
    std::string result(text, size);
    free(text);
    return result;
}

inline std::vector<std::string> names_in(const std::string &listing) {
    std::vector<std::string> names;
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) {
        if (line[0] != '\t') names.push_back(line.substr(0, line.find('\t')));
    }
    return names;
}

inline void forget(const std::vector<std::string> &names) {
    for (const std::string &name : names)
        sf_dictext(name.c_str(), nullptr, "", 0, 0);
}

}  // namespace fuzz

#endif
