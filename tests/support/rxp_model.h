// rxp_model.h: a second opinion on regular expressions: the matching rules,
// sentence by sentence, as a recursive procedure.
#ifndef TOVAN_TESTS_RXP_MODEL_H
#define TOVAN_TESTS_RXP_MODEL_H

#include <string>
#include <utility>

namespace support {

// What an evaluation leaves, with positions as offsets; -1: none.
struct rxp_result {
    int result = 0;  // of rxppeval
    int count = 0;
    std::pair<int, int> pairs[10];  // up to count; meaningless if no match
    bool gave_up = false;           // the model took too many steps
    long steps = 0;
};

// By the rules, in at most `max_steps` steps.
rxp_result rxp_by_the_rules(const std::string &subject,
                            const unsigned char *program,
                            long max_steps = 1000000);

// By the library.
rxp_result rxp_by_the_library(const std::string &subject,
                              const unsigned char *program);

// By the library's own search with its memory switched on from the start (it
// stays off for programs with back-references).
rxp_result rxp_by_the_memory(const std::string &subject,
                             const unsigned char *program);

// By the library's automaton, for programs that it can run; else as the library.
rxp_result rxp_by_the_automaton(const std::string &subject,
                                const unsigned char *program);

// Empty when both agree, else both.
std::string rxp_difference(const rxp_result &rules, const rxp_result &library);

}  // namespace support

#endif
