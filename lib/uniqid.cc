// uniqid.cc: identifiers that are unique to a process.
//
//     01234 567 hhhhh s
//     |     |   |     +-- count within the second
//     |     |   +-------- host name, padded with "_"
//     |     +------------ last two bits of the time, then the process id
//     +------------------ the rest of the time
#include "convert.h"

#include "ident.h"

#include <string.h>
#include <unistd.h>

namespace {

constexpr int digit_bits = 6;

// Deliberate: not the alphabet of base-64 numbers, which has small letters
// first (test sequence_counts_within_a_second_and_wraps_after_64).
constexpr char alphabet[] =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz@%";
static_assert(sizeof alphabet == (1 << digit_bits) + 1);

constexpr int time_width = 5;
constexpr int process_width = 3;
constexpr int host_width = 5;
constexpr int sequence_width = 1;
constexpr int identifier_width =
    time_width + process_width + host_width + sequence_width;
static_assert(identifier_width == 14);

// What all identifiers of a process share, and the last second's count.
// The first uniqid() asks for process and host; holds for the process.
struct identity {
    bool is_known;
    pid_t process;
    char host[host_width];
    time_t last_time;
    uint32_t sequence;
};
constinit identity self{};

void learn_identity() {
    char name[64] = "";
    self.is_known = true;
    self.process = getpid();
    gethostname(name, sizeof name);  // a name cut short serves as well
    memset(self.host, '_', host_width);
    memcpy(self.host, name, strnlen(name, host_width));
}

void count_within_second(time_t now) {
    self.sequence = now == self.last_time ? self.sequence + 1 : 0;
    self.last_time = now;
}

}  // namespace

char *uniqid(void) {
    static constinit char identifier[identifier_width + 1] = "";
    if (!self.is_known) learn_identity();
    time_t now = time(nullptr);
    count_within_second(now);
    uint32_t process = static_cast<uint32_t>(now & 3) << 16 |
                       static_cast<uint32_t>(self.process);
    char *to = identifier;
    stuffnum(to, static_cast<uint32_t>(now >> 2), time_width);
    to += time_width;
    stuffnum(to, process, process_width);
    to += process_width;
    memcpy(to, self.host, host_width);
    to += host_width;
    stuffnum(to, self.sequence, sequence_width);
    return identifier;
}

void stuffnum(char *buffer, uint32_t value, int width) {
    while (width-- > 0) {
        buffer[width] = alphabet[value & ((1 << digit_bits) - 1)];
        value >>= digit_bits;
    }
}

TOVAN_IDENT(uniqid, "8.4", "26/11/21")
