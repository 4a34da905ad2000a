// testdrvr.h: programs that run named tests.
// Builds on: errexit.h, dypadd.h, strutil.h, fastout.h, usage.h.
//
// A test program has a record for each test, a table of them, and a main
// function of one line:
//
//     static int adds(int argc, char **argv) { return 1 + 1 != 2; }
//     __extension__ static const testrec t_adds = {
//         "adds", NULL, adds, {"Adds numbers.", NULL}};
//     static const testrec *const tests[] = {&t_adds, NULL};
//     int main(int argc, char **argv) {
//         return testdriver(argc, argv, tests);
//     }
//
// Its user names the tests and gives them arguments, or names none:
//
//     program [-xvX] [-V dflags] [test <flags>]
//     program -v parse a.txt -- print -w 80
//
// Always: the word "all" stands for every test of the table, in its order.
// Order: testdriver alone; or any of the others.
// Errors: wrong arguments end the process, by usage() or errexit().
#ifndef TOVAN_TESTDRVR_H
#define TOVAN_TESTDRVR_H

#include "attrs.h"

TOVAN_BEGIN_C

// A test. (A growing last member is an extension in C++.)
__extension__ typedef struct testrec {
    const char *name;
    void *reserved;  // the test program's own
    // Gets the test's name and its arguments, null-terminated. The result is
    // 0 for success; the driver collects the bits of all results.
    int (*function)(int argc, char **argv);
    // Null-terminated; the first line is the summary as well.
    const char *explanation[];
} testrec;

// Does what the arguments of a program ask for; progname becomes the last
// component of the first one (not copied), and the driver's usage text is
// registered.
//     -x, -?   writes that text and the tests; ends with lclexit(0)
//     -v       frames each test by lines on standard error
//     -X       explains the tests that are named, or all
//   argv      a test's name, what it gets, "--", the next test's name, ...;
//             nothing: "all"
//   table     null-terminated
//   result    the bits of all results of this process's tests; 0 with -X
//   fails     another letter: usage("-%c: invalid flag"); a name that is not
//             in the table, when its turn comes: errexit("%s: unknown test"),
//             with -X a line on standard output
//   edge      -V is another letter; a first "--" is the letter "-"; "all a b"
//             gives a and b to every test
int testdriver(int argc, char **argv, const testrec *const *table);

// Writes the names with their summaries to standard output.
void listtests(const testrec *const *table);

// Writes the explanation of a test to standard output, an empty line before
// all but the first of the process.
//   test      of the table, or what findtest() gives for "all"
void expltest(const testrec *test, const testrec *const *table);

// The first test of that name.
//   result    null when there is none
//   edge      "all" gives a record for expltest() and runtest() alone, even
//             when a test has that name
const testrec *findtest(const char *name, const testrec *const *table);

// Runs a test with the arguments that testdriver() is at, outside of it with
// none, and flushes standard output. A result other than 0 is reported on
// standard error.
//   test      as for expltest()
//   edge      what a test changes in its vector stays changed for the next
//             test of "all", but for the name
void runtest(const testrec *test, const testrec *const *table);

// Does nothing: a place to stop at.
void testexit(void);

TOVAN_END_C

#endif
