/* copies.c: a program that is linked at a fixed address has copies of the
   library's variables, and the library has to mean those. */
#include <stdio.h>
#include <tovan/tovan.h>

int main(void) {
    unsigned short before = _istype['x'];

    progname = "copies";
    applistype("x");
    puts(_istype['x'] != before ? "one table" : "two tables");
    fflush(stdout);
    errexit("one name");
}
