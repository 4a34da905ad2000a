#include "config.h"
#include "util.h"

#include <stdio.h>

int main(void) {
    printf("%s %s: %d\n%s\n", NAME, VERSION, twice(21), GREETING);
    return 0;
}
