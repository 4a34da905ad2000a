// strutil.h: small string and memory functions.
// Builds on: errexit.h, chkalloc.h, istype.h.
#ifndef TOVAN_STRUTIL_H
#define TOVAN_STRUTIL_H

#include "attrs.h"

#include <stddef.h>
#include <stdint.h>

TOVAN_BEGIN_C

extern const unsigned char fhash_tab[256];
extern const unsigned char p_table[256];

typedef struct svnode {
    struct svnode *next;
    char *key;
    char *value;
} svnode;

char *str_chr(const char *text, int character);
char *str_rchr(const char *text, int character);
int strindex(const char *text, const char *pattern);
int strrindex(const char *text, const char *pattern);
int strhash(const char *text, int *length, const unsigned char *table);
int strnhash(const char *bytes, int n, const unsigned char *table);
int strpcmp(const void *a, const void *b); /* each points at a const char *; fits qsort */
int lenmatch(const char *a, const char *b);
char *leafnm(const char *path);
int p_rootlen(const char *path);
char *trim(char *text);
char *overwhite(const char *text);
char *nextwhite(const char *text);
char *clean(char *text, int fold);
char *closing_bracket(const char *text, int open, int close);
void lexless(int n, int *length, int *last, char *token, void (*give_back)(int character));
const char *svstr(svnode *head, const char *key, const char *value);
const char *fndsvstr(const svnode *head, const char *key);
void *mem_chr(const void *area, int byte, size_t n);
int mem_cmp(const void *a, const void *b, size_t n);
void *mem_cpy(void *destination, const void *source, size_t n);
void *mem_move(void *destination, const void *source, size_t n);
void *mem_set(void *area, int byte, size_t n);
void *mem_zero(void *area, size_t n);
uintptr_t wordalign(uintptr_t number);

TOVAN_END_C

#endif
