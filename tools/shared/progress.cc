// progress.cc: a line on the terminal about work that takes long.
#include "shared/progress.h"

#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr suseconds_t refresh_time = 250000;
constexpr long long megabyte = 1 << 20;
constexpr size_t name_width = 40;
constexpr char erase_line[] = "\r\033[K";

// The work so far. Filled by note_progress(), read by the signal handler,
// which may see a name half written: its last byte stays NUL.
struct work {
    bool is_watched;
    bool is_shown;
    long long items;
    long long bytes;
    char name[name_width + 1];
};
constinit work current{};

// A text that a signal handler can put together.
struct line {
    char text[160];
    size_t length;
};

void add(line *out, const char *text) {
    size_t n = strnlen(text, sizeof out->text - out->length);
    memcpy(out->text + out->length, text, n);
    out->length += n;
}

void add(line *out, long long number) {
    char digits[24];
    char *at = digits + sizeof digits;
    *--at = '\0';
    do {
        *--at = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number > 0);
    add(out, at);
}

void write_out(const line *out) {
    // A terminal that is gone is nothing to complain about.
    ssize_t ignored = write(STDERR_FILENO, out->text, out->length);
    static_cast<void>(ignored);
}

// The cursor goes back to the start: a message replaces the line.
void show(int) {
    int kept = errno;
    line out{};
    add(&out, erase_line);
    add(&out, current.items);
    add(&out, current.items == 1 ? " entry, " : " entries, ");
    add(&out, current.bytes / megabyte);
    add(&out, " MB: ");
    add(&out, current.name);
    add(&out, "\r");
    write_out(&out);
    current.is_shown = true;
    errno = kept;
}

bool has_terminal() {
    const char *kind = getenv("TERM");
    bool is_dumb = kind != nullptr && strcmp(kind, "dumb") == 0;
    const char *no_color = getenv("NO_COLOR");
    bool is_plain = no_color != nullptr && *no_color != '\0';
    return !is_dumb && !is_plain && isatty(STDERR_FILENO) == 1;
}

void set_timer(const itimerval *times) {
    setitimer(ITIMER_REAL, times, nullptr);
}

}  // namespace

void tools::start_progress() {
    if (!has_terminal()) return;
    current.is_watched = true;
    struct sigaction action {};
    action.sa_handler = show;
    action.sa_flags = SA_RESTART;
    sigaction(SIGALRM, &action, nullptr);
    constexpr itimerval times{{0, refresh_time}, {1, 0}};
    set_timer(&times);
}

void tools::note_progress(const char *name, long long size) {
    if (!current.is_watched) return;
    current.items++;
    current.bytes += size;
    strncpy(current.name, name, name_width);
}

void tools::end_progress() {
    if (!current.is_watched) return;
    constexpr itimerval never{};
    set_timer(&never);
    if (current.is_shown) {
        line out{};
        add(&out, erase_line);
        write_out(&out);
    }
    current = {};
}
