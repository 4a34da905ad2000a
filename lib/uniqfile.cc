// uniqfile.cc: templates of names, and files that are certainly new.
#include "opentmp.h"

#include "ident.h"
#include "private_io.h"
#include "private_opentmp.h"

#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <string.h>
#include <sys/random.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr char characters[] =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr unsigned character_count = sizeof characters - 1;

constexpr int most_tries = 26;
constexpr int permissions = 0600;

// Numbers taken from the clock so far, which may be slower than we are. Holds
// for the process.
constinit uint64_t clock_numbers = 0;

// What stands in for the system's randomness. A name that somebody foresees
// is passed over when it is taken: that a file is ours, O_EXCL sees to.
uint64_t number_from_the_clock() {
    constexpr uint64_t odd = 0x9e3779b97f4a7c15;  // spreads neighbours
    struct timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    auto time = static_cast<uint64_t>(now.tv_sec) << 30 ^
                static_cast<uint64_t>(now.tv_nsec);
    auto process = static_cast<uint64_t>(getpid());
    uint64_t spread = (time + process + ++clock_numbers) * odd;
    return spread ^ spread >> 29;
}

uint64_t random_number() {
    uint64_t number;
    ssize_t got = getrandom(&number, sizeof number, GRND_NONBLOCK);
    return got == sizeof number ? number : number_from_the_clock();
}

}  // namespace

char *tovan::base_of(char *pattern) {
    size_t length = strlen(pattern);
    if (length < base_length) return nullptr;
    char *base = pattern + length - base_length;
    return strcmp(base, unknown_base) == 0 ? base : nullptr;
}

void tovan::put_five_digits(char *place, unsigned number) {
    for (int i = 4; i >= 0; i--) {
        place[i] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
}

void tovan::put_random_base(char *base) {
    uint64_t number = random_number();
    for (size_t i = 0; i < base_length; i++) {
        base[i] = characters[number % character_count];
        number /= character_count;
    }
}

// Chosen: a random base is tried without asking first whether the name is
// taken: only creating the file can tell, whatever others do meanwhile.
int tovan::make_unique(char *pattern) {
    char *base = base_of(pattern);
    if (base == nullptr) {
        errno = EINVAL;
        return -1;
    }
    for (int tries = 0; tries < most_tries; tries++) {
        put_random_base(base);
        int descriptor =
            open_for_caller(pattern, O_RDWR | O_CREAT | O_EXCL, permissions);
        if (descriptor != -1) return descriptor;
    }
    memcpy(base, unknown_base, base_length);
    return -1;
}

TOVAN_IDENT(uniqfile, "8.4", "26/11/22")
