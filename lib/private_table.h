// private_table.h (private): tables of 256 entries that follow a rule.
// Builds on: nothing.
#ifndef TOVAN_PRIVATE_TABLE_H
#define TOVAN_PRIVATE_TABLE_H

// TOVAN_TABLE_256(rule) is the initialiser list rule(0), rule(1) to rule(255).
// An exported table is a plain array, which no constexpr function can return.
#define TOVAN_TABLE_4(rule, n) rule(n), rule(n + 1), rule(n + 2), rule(n + 3)
#define TOVAN_TABLE_16(rule, n)                           \
    TOVAN_TABLE_4(rule, n), TOVAN_TABLE_4(rule, (n + 4)), \
        TOVAN_TABLE_4(rule, (n + 8)), TOVAN_TABLE_4(rule, (n + 12))
#define TOVAN_TABLE_64(rule, n)                              \
    TOVAN_TABLE_16(rule, n), TOVAN_TABLE_16(rule, (n + 16)), \
        TOVAN_TABLE_16(rule, (n + 32)), TOVAN_TABLE_16(rule, (n + 48))
#define TOVAN_TABLE_256(rule)                          \
    TOVAN_TABLE_64(rule, 0), TOVAN_TABLE_64(rule, 64), \
        TOVAN_TABLE_64(rule, 128), TOVAN_TABLE_64(rule, 192)

namespace [[gnu::visibility("hidden")]] tovan {

// What rules are made of.
consteval bool is_between(int character, int first, int last) {
    return first <= character && character <= last;
}

consteval bool is_one_of(int character, const char *members) {
    while (*members != '\0' && *members != character)
        members++;
    return *members != '\0';
}

}  // namespace tovan

#endif
