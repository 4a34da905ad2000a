// whichsig.cc: signal names and numbers.
#include "wait4pid.h"

#include "ident.h"

#include <limits.h>
#include <stdio.h>
#include <string.h>

namespace {

struct signal_row {
    const char *name;
    int number;
};

// Names without "SIG", in their order; of two names of one number the first
// is the one that is shown.
constexpr signal_row sigmap[] = {
    {"ABRT", 6},  {"ALRM", 14}, {"BUS", 7},     {"CHLD", 17},  {"CONT", 18},
    {"FPE", 8},   {"HUP", 1},   {"ILL", 4},     {"INT", 2},    {"IO", 29},
    {"IOT", 6},   {"KILL", 9},  {"PIPE", 13},   {"POLL", 29},  {"PROF", 27},
    {"PWR", 30},  {"QUIT", 3},  {"SEGV", 11},   {"STOP", 19},  {"TERM", 15},
    {"TRAP", 5},  {"TSTP", 20}, {"TTIN", 21},   {"TTOU", 22},  {"URG", 23},
    {"USR1", 10}, {"USR2", 12}, {"VTALRM", 26}, {"WINCH", 28}, {"XCPU", 24},
    {"XFSZ", 25},
};

consteval int largest_number() {
    int largest = -1;
    for (const signal_row &row : sigmap) {
        if (row.number > largest) largest = row.number;
    }
    return largest;
}
static_assert(largest_number() == 30);

constexpr int terminal_stop = 20;

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

int number_of_name(const char *text) {
    for (const signal_row &row : sigmap) {
        if (strcmp(text, row.name) == 0) return row.number;
    }
    return -1;
}

// Chosen: a number beyond an int is no signal; wrapped round it could be one.
int number_in_digits(const char *text) {
    int number = 0;
    for (; is_digit(*text); text++) {
        int digit = *text - '0';
        if (number > (INT_MAX - digit) / 10) return -1;
        number = number * 10 + digit;
    }
    return *text == '\0' && number >= 1 ? number : -1;
}

}  // namespace

int whichsig(const char *text) {
    if (*text >= 'A' && *text <= 'Z') return number_of_name(text);
    if (is_digit(*text)) return number_in_digits(text);
    return -1;
}

const char *signame(int number) {
    for (const signal_row &row : sigmap) {
        if (row.number == number) return row.name;
    }
    static char unnamed[20];  // "#-2147483648" takes 13
    snprintf(unnamed, sizeof unnamed, "#%d", number);
    return unnamed;
}

int highest_sig(void) {
    return largest_number();
}

int stopsignum(void) {
    return terminal_stop;
}

TOVAN_IDENT(whichsig, "8.4", "26/11/21")
