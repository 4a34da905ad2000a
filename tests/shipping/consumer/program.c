/* program.c: a program in C, with one header of the library. */
#include <stdio.h>
#include <stdlib.h>
#include <tovan/dystr.h>

int main(void) {
    dy text = {0};

    dynew(&text, 0);
    puts(dyfmt(&text, "@s @d", "seven is", 7));
    free(text.buffer);
    return 0;
}
