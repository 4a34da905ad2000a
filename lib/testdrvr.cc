// testdrvr.cc: programs that run named tests.
#include "testdrvr.h"

#include "dypadd.h"
#include "errexit.h"
#include "fastout.h"
#include "ident.h"
#include "private_usage.h"
#include "strutil.h"
#include "usage.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace {

constexpr char synopsis[] = "[-xvX] [-V dflags] [test <flags>]";

// The first line is the program's, put in when the list is registered.
constinit const char *explanation[] = {
    nullptr,
    "",
    "-x\t\tdisplay this explanation",
    "-v\t\tverbosely report beginning and end of each test",
    "-X\t\texplain the named tests (default all)",
    "test <flags>\trun test with flags - use `--' to",
    "\t\tterminate flags for test",
    "\t\tuse all to do all tests",
    nullptr,
};

// Stands for every test of a table.
__extension__ constinit const testrec all_tests{"all", nullptr, nullptr, {}};

// Filled as options are taken and tests run; holds for the process, but for
// the vector, which testdriver() releases.
struct driver_state {
    bool is_verbose;
    int result;  // the bits of all results
    dyp vector;  // of the current test
    int explained;
};
constinit driver_state driver{};

// Arguments that are still to be looked at.
struct words {
    char **next;
    char **end;
};

const char *program() {
    return progname != nullptr ? progname : "";
}

const char *summary(const testrec *test) {
    return test->explanation[0] != nullptr ? test->explanation[0] : "";
}

[[noreturn]] void explain_driver(const testrec *const *table) {
    explflags();
    listtests(table);
    lclexit(0);
}

// Takes an option letter; returns whether tests are to be explained.
// Deliberate: -V is invalid, although the synopsis shows it (test
// refuses_other_letters).
bool take_letter(char letter, const testrec *const *table) {
    if (letter == 'x' || letter == '?') explain_driver(table);
    if (letter != 'v' && letter != 'X')
        tovan::usage("-%c: invalid flag", letter);
    if (letter == 'v') driver.is_verbose = true;
    return letter == 'X';
}

// Takes the groups of letters in front; returns the same.
bool take_options(words *left, const testrec *const *table) {
    bool explains = false;
    for (; left->next < left->end && **left->next == '-'; left->next++) {
        for (const char *letter = *left->next + 1; *letter != '\0'; letter++)
            explains |= take_letter(*letter, table);
    }
    return explains;
}

void explain_tests(words names, const testrec *const *table) {
    if (names.next == names.end) expltest(&all_tests, table);
    for (; names.next < names.end; names.next++) {
        const testrec *test = findtest(*names.next, table);
        if (test != nullptr)
            expltest(test, table);
        else
            printf("-X %s: unknown test\n", *names.next);
    }
}

// Runs the test that comes next, with the words up to "--".
void run_next(words *left, const testrec *const *table) {
    const testrec *test = findtest(*left->next, table);
    if (test == nullptr) errexit("%s: unknown test", *left->next);
    dypreuse(&driver.vector);
    while (left->next < left->end) {
        const char *word = *left->next++;
        if (strcmp(word, "--") == 0) break;
        dypadd(&driver.vector, word);
    }
    runtest(test, table);
}

void run_all(const testrec *const *table) {
    dypreuse(&driver.vector);
    dypadd(&driver.vector, all_tests.name);
    runtest(&all_tests, table);
}

void report_begin() {
    eprintf("%s: Begin ", program());
    for (int i = 0; i < driver.vector.count; i++)
        eprintf(" %s", static_cast<char *>(driver.vector.array[i]));
    eprintf(" {\n");
}

void report_end(const testrec *test, int result) {
    if (driver.is_verbose) eprintf("} ");
    if (driver.is_verbose || result != 0)
        eprintf("%s: End %s, result = %d\n", program(), test->name, result);
}

}  // namespace

int testdriver(int argc, char **argv, const testrec *const *table) {
    explanation[0] = progdesc;
    usestrs(synopsis, explanation);
    words left = {argv, argv + argc};
    if (argc > 0) progname = leafnm(*left.next++);
    if (take_options(&left, table)) {
        explain_tests(left, table);
        return 0;
    }
    if (left.next == left.end) run_all(table);
    while (left.next < left.end)
        run_next(&left, table);
    free(driver.vector.array);
    driver.vector = {};
    return driver.result;
}

void listtests(const testrec *const *table) {
    puts("\nSupported tests");
    for (; *table != nullptr; table++)
        printf("%s\t%s\n", (*table)->name, summary(*table));
}

void expltest(const testrec *test, const testrec *const *table) {
    if (test == &all_tests) {
        for (; *table != nullptr; table++)
            expltest(*table, table);
        return;
    }
    if (driver.explained++ > 0) putchar('\n');
    printf("Test %s:\n", test->name);
    putlist(test->explanation, stdout, 1);
}

const testrec *findtest(const char *name, const testrec *const *table) {
    if (strcmp(name, all_tests.name) == 0) return &all_tests;
    for (; *table != nullptr; table++) {
        if (strcmp(name, (*table)->name) == 0) return *table;
    }
    return nullptr;
}

void runtest(const testrec *test, const testrec *const *table) {
    if (test == &all_tests) {
        for (; *table != nullptr; table++)
            runtest(*table, table);
        return;
    }
    dypseti(&driver.vector, test->name, 0);
    if (driver.is_verbose) report_begin();
    int result = test->function(driver.vector.count,
                                reinterpret_cast<char **>(driver.vector.array));
    fflush(stdout);
    report_end(test, result);
    driver.result |= result;
}

void testexit(void) {
}

TOVAN_IDENT(testdrvr, "8.4", "26/11/21")
