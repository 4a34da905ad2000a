// r64tol.cc: numbers in base 64.
#include "convert.h"

#include "ident.h"

namespace {

constexpr int digit_bits = 6;
constexpr uint32_t digit_mask = (1 << digit_bits) - 1;

// Deliberate: not the alphabet of identifiers, which has capitals first (test
// every_digit_of_the_alphabet_in_order).
constexpr char alphabet[] =
    "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ@/";
static_assert(sizeof alphabet == digit_mask + 2);

// From characters to digits, each increased by one so that 0 means none.
// Filled by r64_init(), on first use; holds for the process.
struct reverse_map {
    bool is_built;
    unsigned char digits[256];
};
constinit reverse_map reverse{};

uint32_t digit_plus_one(char character) {
    return reverse.digits[static_cast<unsigned char>(character)];
}

}  // namespace

uint32_t r64tol(const char *text, const char **end) {
    if (!reverse.is_built) r64_init();
    uint32_t value = 0;
    for (; digit_plus_one(*text) != 0; text++)
        value = (value << digit_bits) + digit_plus_one(*text) - 1;
    if (end != nullptr) *end = text;
    return value;
}

char *ltor64(uint32_t value) {
    if (!reverse.is_built) r64_init();
    static constinit char buffer[16] = "";
    char *digit = buffer + sizeof buffer - 1;
    do {
        *--digit = alphabet[value & digit_mask];
        value >>= digit_bits;
    } while (value != 0);
    return digit;
}

void r64_init(void) {
    for (unsigned char digit = 0; digit <= digit_mask; digit++) {
        reverse.digits[static_cast<unsigned char>(alphabet[digit])] =
            static_cast<unsigned char>(digit + 1);
    }
    reverse.is_built = true;
}

TOVAN_IDENT(r64tol, "8.4", "26/11/21")
