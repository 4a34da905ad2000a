// rxpcomp_fuzz.cc: any pattern is compiled or refused, and what comes out is a
// program that ends where it says.
//   input   delimiter, fold, pattern
#include "fuzz.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <tovan/private_rxp.h>
#include <tovan/rxpcomp.h>

namespace {

void expect(bool holds) {
    if (!holds) abort();
}

void check_state(const unsigned char *program, int number) {
    const tovan::rxp_state &state = tovan::rxp_states(program)[number];
    int end = tovan::rxp_end_state(program);
    expect(state.opcode > 0 && state.opcode < tovan::rxp_opcodes);
    expect(state.opcode != tovan::rxp_end);
    expect(state.next >= 1 && state.next <= end);
    if (state.opcode == tovan::rxp_branch)
        expect(state.alternative >= 1 && state.alternative <= end);
}

void check_program(int length) {
    expect(tovan::rxp_is_program(rxpbuf));
    int end = tovan::rxp_end_state(rxpbuf);
    expect(tovan::rxp_states(rxpbuf)[end].opcode == tovan::rxp_end);
    for (int i = 1; i < end; i++)
        check_state(rxpbuf, i);
    const unsigned char *ranges = tovan::rxp_summary(rxpbuf) + 2;
    size_t pairs = strlen(reinterpret_cast<const char *>(ranges));
    expect(pairs % 2 == 0);
    expect(ranges + pairs == rxpbuf + length);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2) return 0;
    std::string pattern(reinterpret_cast<const char *>(data + 2), size - 2);
    int length = rxpcomp(pattern.c_str(), data[0], data[1] & 1);
    if (length < 0) {
        expect(length >= -10 && length != -2 && length != -3);
        return 0;
    }
    expect(rxpeof >= pattern.c_str() &&
           rxpeof <= pattern.c_str() + pattern.size());
    check_program(length);
    rxpdump(rxpbuf);
    return 0;
}
