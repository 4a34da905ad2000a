// options.cc: flags of a command line.
#include "shared/options.h"

#include "shared/manners.h"

#include <string.h>
#include <tovan/ddt.h>
#include <tovan/usage.h>

namespace {

constexpr char trace_flag[] = "V:";
constexpr char trace_letter = trace_flag[0];

[[noreturn]] void explain() {
    explflags();
    tools::finish(0);
}

[[noreturn]] void show_version() {
    tools::print_version();
    tools::finish(0);
}

const char *take_value(tools::options *flags, const char *known) {
    bool is_joined = *flags->rest != '\0' || known[2] == ':';
    const char *value = is_joined ? flags->rest : *flags->next++;
    if (value == nullptr) usage("-%c: value missing", *known);
    flags->rest = nullptr;
    return value;
}

// Where a letter stands among those that are known; null when it is not.
const char *known_letter(char letter, const char *letters) {
    if (letter == trace_letter) return trace_flag;
    return letter != ':' ? strchr(letters, letter) : nullptr;
}

// The value of a long flag that takes one: behind its "=", or the next argument.
const char *take_long_value(tools::options *flags, const char *word) {
    const char *equals = strchr(word, '=');
    const char *value = equals != nullptr ? equals + 1 : *flags->next++;
    if (value == nullptr) usage("%s: value missing", word);
    return value;
}

bool is_named(const char *word, const char *name) {
    size_t length = strlen(name);
    return strncmp(word, name, length) == 0 &&
           (word[length] == '\0' || word[length] == '=');
}

int long_letter(tools::options *flags, const char *word,
                const tools::long_flag *names) {
    if (strcmp(word, "--help") == 0) explain();
    if (strcmp(word, "--version") == 0) show_version();
    for (; names != nullptr && names->name != nullptr; names++) {
        if (!is_named(word, names->name)) continue;
        if (!names->takes_value && strchr(word, '=') != nullptr) break;
        if (names->takes_value) flags->value = take_long_value(flags, word);
        return names->letter;
    }
    usage("%s: invalid flag", word);
}

int short_letter(tools::options *flags, const char *letters) {
    char letter = *flags->rest++;
    if (letter == 'x') explain();
    const char *known = known_letter(letter, letters);
    if (known == nullptr) usage("-%c: invalid flag", letter);
    if (known[1] == ':') flags->value = take_value(flags, known);
    return letter;
}

// The letter of the next flag of any kind, or 0.
int any_flag(tools::options *flags, const char *letters,
             const tools::long_flag *names) {
    if (flags->rest != nullptr && *flags->rest != '\0')
        return short_letter(flags, letters);
    flags->rest = nullptr;
    const char *word = *flags->next;
    if (word == nullptr || word[0] != '-' || word[1] == '\0') return 0;
    flags->next++;
    if (strcmp(word, "--") == 0) return 0;
    if (word[1] == '-') return long_letter(flags, word, names);
    flags->rest = word + 1;
    return short_letter(flags, letters);
}

}  // namespace

tools::options tools::options_of(char **arguments) {
    return {arguments, nullptr, nullptr};
}

int tools::next_flag(options *flags, const char *letters,
                     const long_flag *names) {
    for (;;) {
        int letter = any_flag(flags, letters, names);
        if (letter != trace_letter) return letter;
        ddt_Vflags(flags->value);
    }
}
