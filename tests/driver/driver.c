// driver.c: a test program on the driver: functions of the library under the
// arguments that its user gives, or under some of its own.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/tovan.h>

// What the tests return when they fail: bits, so that the status of the
// program tells which did.
enum { wrong_number = 1, wrong_words = 2, no_match = 4 };

const char *progdesc = "Tries functions of libtovan on arguments.";

static char **given_or(int argc, char **argv, char **others) {
    return argc > 1 ? argv + 1 : others;
}

static int try_numbers(int argc, char **argv) {
    static char *own[] = {"0", "-1", "2147483647", "-2147483648", NULL};
    int result = 0;
    for (char **text = given_or(argc, argv, own); *text != NULL; text++) {
        char back[12];
        itoa(atoin(*text, 12), back, 10);
        printf("%s\n", back);
        if (strcmp(back, *text) != 0) result = wrong_number;
    }
    return result;
}

// Joins the words of a line with one blank between two of them; returns how
// many there are.
static int join_words(const char *line, dy *joined) {
    char *copy = savestr(line);
    dyp words = {0};
    dypreuse(&words);
    dypsplit(&words, copy, 0);
    dyreuse(joined, 0);
    for (int i = 0; i < words.count; i++) {
        dyaddspace(joined);
        dystr(joined, words.array[i]);
    }
    free(words.array);
    free(copy);
    return words.count;
}

static int try_words(int argc, char **argv) {
    static char *own[] = {"", "one", "one two  \tthree\n", NULL};
    int result = 0;
    dy text = {0};
    dy again = {0};
    for (char **line = given_or(argc, argv, own); *line != NULL; line++) {
        int count = join_words(*line, &text);
        printf("%d: %s\n", count, text.buffer);
        if (join_words(text.buffer, &again) != count ||
            strcmp(again.buffer, text.buffer) != 0)
            result = wrong_words;
    }
    free(text.buffer);
    free(again.buffer);
    return result;
}

static int try_match(int argc, char **argv) {
    static char *own[] = {"main.c", "*.{c,h}", NULL};
    const char *const *words = (const char *const *)given_or(argc, argv, own);
    return patmatch(words) ? 0 : no_match;
}

static int fail(int argc, char **argv) {
    return argc > 1 ? atoi(argv[1]) : 0;
}

__extension__ static const testrec numbers = {
    "numbers",
    NULL,
    try_numbers,
    {"Reads and writes numbers.", "numbers [NUMBER...]",
     "Each must come back as it was written; result 1 otherwise.", NULL}};

__extension__ static const testrec words = {
    "words",
    NULL,
    try_words,
    {"Splits lines into words.", "words [LINE...]",
     "The words, joined, must split the same way; result 2 otherwise.", NULL}};

__extension__ static const testrec match = {
    "match",
    NULL,
    try_match,
    {"Matches a name.", "match [-rxp | -exact] [-reverse] [NAME PATTERN...]",
     "Result 4 when no pattern matches.", NULL}};

__extension__ static const testrec failing = {
    "fail", NULL, fail, {"Fails on request.", "fail [RESULT]", NULL}};

static const testrec *const tests[] = {&numbers, &words, &match, &failing,
                                       NULL};

int main(int argc, char **argv) {
    return testdriver(argc, argv, tests);
}
