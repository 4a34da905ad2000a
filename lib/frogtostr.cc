// frogtostr.cc: two-character mnemonics of the characters of code page 437.
#include "istype.h"

#include "chkalloc.h"
#include "ident.h"
#include "private_table.h"
#include "strutil.h"

#include <stddef.h>
#include <string.h>

namespace {

struct named_code {
    unsigned char code;
    char text[3];
};

// clang-format off
constexpr named_code mnemonics[] = {
    { 16, "^>"}, { 17, "^<"}, { 24, "^^"}, { 25, "^v"},
    {128, "C,"}, {129, "u:"}, {130, "e'"}, {131, "a^"},
    {132, "a:"}, {133, "a`"}, {134, "a."}, {135, "c,"},
    {136, "e^"}, {137, "e:"}, {138, "e`"}, {139, "i:"},
    {140, "i^"}, {141, "i`"}, {142, "A:"}, {143, "A."},
    {144, "E'"}, {145, "ae"}, {146, "AE"}, {147, "o^"},
    {148, "o:"}, {149, "o`"}, {150, "u^"}, {151, "u`"},
    {152, "y:"}, {153, "O:"}, {154, "U:"}, {155, "c$"},
    {156, "lb"}, {157, "ye"}, {158, "Pt"}, {159, "f$"},
    {160, "a'"}, {161, "i'"}, {162, "o'"}, {163, "u'"},
    {164, "n~"}, {165, "N~"}, {166, "a_"}, {167, "o_"},
    {168, "?^"}, {169, ":-"}, {170, "-:"}, {171, "/2"},
    {172, "/4"}, {173, "!^"}, {174, "<<"}, {175, ">>"},
    {224, "al"}, {225, "ss"}, {226, "gm"}, {227, "pi"},
    {228, "sm"}, {229, "sg"}, {230, "mo"}, {231, "to"},
    {232, "Fi"}, {233, "ta"}, {234, "Om"}, {235, "dt"},
    {236, "in"}, {237, "NL"}, {238, "el"}, {239, "iN"},
    {240, "=-"}, {241, "+-"}, {242, ">="}, {243, "<="},
    {244, "it"}, {245, "ib"}, {246, "di"}, {247, "ap"},
    {248, "dg"}, {249, "Bu"}, {250, "bu"}, {251, "sr"},
    {252, "n?"}, {253, "sq"}, {254, "bx"},
};
// clang-format on

constexpr int mnemonic_count = sizeof mnemonics / sizeof *mnemonics;
constexpr unsigned char no_row = 255;
static_assert(mnemonic_count < no_row);

consteval bool codes_rise() {
    for (int i = 1; i < mnemonic_count; i++) {
        if (mnemonics[i - 1].code >= mnemonics[i].code) return false;
    }
    return true;
}
static_assert(codes_rise());

consteval bool texts_differ() {
    for (int i = 0; i < mnemonic_count; i++) {
        for (int j = 0; j < i; j++) {
            if (mnemonics[i].text[0] == mnemonics[j].text[0] &&
                mnemonics[i].text[1] == mnemonics[j].text[1]) {
                return false;
            }
        }
    }
    return true;
}
static_assert(texts_differ());

consteval unsigned char row_of(int code) {
    for (int i = 0; i < mnemonic_count; i++) {
        if (mnemonics[i].code == code) return static_cast<unsigned char>(i);
    }
    return no_row;
}
constexpr unsigned char rows[256] = {TOVAN_TABLE_256(row_of)};

// Any permutation serves, the hash is never stored: an odd factor makes one.
consteval unsigned char permuted(int value) {
    return static_cast<unsigned char>(value * 167 + 13);
}
constexpr unsigned char hash_table[256] = {TOVAN_TABLE_256(permuted)};

struct chain_link {
    const named_code *row;
    chain_link *next;
};

// The way back from texts to codes. Filled by the first strtofrog(); holds
// for the process, never released.
struct reverse_map {
    bool is_built;
    chain_link *buckets[256];
};
constinit reverse_map reverse{};

void build_reverse_map() {
    void *block = chkalloc(mnemonic_count * sizeof(chain_link));
    chain_link *free_link = static_cast<chain_link *>(block);
    for (const named_code &row : mnemonics) {
        chain_link **bucket =
            &reverse.buckets[strhash(row.text, nullptr, hash_table)];
        *free_link = {&row, *bucket};
        *bucket = free_link++;
    }
    reverse.is_built = true;
}

}  // namespace

const char *frogtostr(int code) {
    if (code < 0 || code > 255 || rows[code] == no_row) return nullptr;
    return mnemonics[rows[code]].text;
}

int strtofrog(const char *mnemonic) {
    if (!reverse.is_built) build_reverse_map();
    int hash = strhash(mnemonic, nullptr, hash_table);
    const chain_link *at = reverse.buckets[hash];
    for (; at != nullptr; at = at->next) {
        if (strcmp(at->row->text, mnemonic) == 0) return at->row->code;
    }
    return -1;
}

TOVAN_IDENT(frogtostr, "8.4", "26/11/21")
