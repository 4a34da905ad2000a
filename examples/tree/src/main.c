#include "config.h"
#include "util.h"

#include <stdio.h>

int main(void) {
    printf("%s: %d\n", NAME, twice(21));
    return 0;
}
