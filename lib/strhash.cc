// strhash.cc: the 8-bit hash of strings.
#include "strutil.h"

#include "ident.h"

// A permutation of 0 to 255. Callers may keep hash values: do not change.
// clang-format off
constinit const unsigned char fhash_tab[256] = {
    /* 0x00 */ 133,  68,  34, 142, 143, 170,  67, 208, 225, 151,  85,  19,  14, 223,  77,  61,
    /* 0x10 */ 157,  27, 158, 122,  26,  90,  60, 195, 138,  30,   0, 243,   3, 215, 141, 245,
    /* 0x20 */ 239,  74, 171,  88,  22,  63, 145, 241,  43, 248,  58, 178, 187, 182, 232, 101,
    /* 0x30 */  89, 221, 214, 177,  71, 136, 188,  45, 253, 116,  72, 140, 166, 238, 189, 168,
    /* 0x40 */   9,   8,  11,   2, 236, 112,  51, 242, 103,  96, 123, 224, 231, 150,  57, 251,
    /* 0x50 */ 137,  53,  23, 249,  40,  36, 115, 202, 209,  82, 230,  41, 185, 180, 113, 147,
    /* 0x60 */  35,  15, 226,  76, 119, 117, 203,  13, 176,  75, 120,  32, 254,  97,  16, 190,
    /* 0x70 */   1, 219, 148,  93,   5, 229, 211, 109, 164, 107,  94,  39,  84, 128, 255, 218,
    /* 0x80 */ 154, 179, 110, 152,  25,  50, 250,   7,  20,  17, 135,  66, 105, 149, 172,  59,
    /* 0x90 */ 127, 183, 108, 196, 114,  10, 235,  56, 204,   6, 162, 146,  31, 201,  69, 125,
    /* 0xa0 */  29, 192,  54, 244, 234, 106,  79,  46, 174,   4,  73, 213, 210, 167, 198, 197,
    /* 0xb0 */  52,  80, 124, 237, 155, 161,  33,  42, 100, 193,  24, 205,  21,  87, 111, 132,
    /* 0xc0 */ 216, 246,  38, 233, 144, 131, 175,  83, 129,  48, 121, 227,  92, 104, 118, 159,
    /* 0xd0 */  65,  64, 156, 153, 247, 184, 212, 139, 130,  95, 194,  91, 160, 207,  37, 191,
    /* 0xe0 */ 240,  99,  47, 200,  49, 173,  81, 102, 165, 134,  28, 228,  44,  12,  70, 169,
    /* 0xf0 */ 181,  62,  18,  98, 206, 217, 163, 220, 222,  55,  78,  86, 199, 126, 252, 186,
};
// clang-format on

int strhash(const char *text, int *length, const unsigned char *table) {
    unsigned hash = 0;
    const char *next = text;
    for (; *next != '\0'; next++) {
        hash = table[hash ^ static_cast<unsigned char>(*next)];
    }
    if (length != nullptr) *length = static_cast<int>(next - text);
    return static_cast<int>(hash);
}

int strnhash(const char *bytes, int n, const unsigned char *table) {
    unsigned hash = 0;
    for (int i = 0; i < n; i++) {
        hash = table[hash ^ static_cast<unsigned char>(bytes[i])];
    }
    return static_cast<int>(hash);
}

TOVAN_IDENT(strhash, "8.4", "26/11/21")
