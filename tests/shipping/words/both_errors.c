/* both_errors.c: <error.h> and our header, in the order that is asked for. */
#ifdef OURS_FIRST
#include <tovan/tovan.h>
#endif
#include <error.h>
#ifndef OURS_FIRST
#include <tovan/tovan.h>
#endif

int main(void) {
    error(0, 0, "from %s", "C");
    tovan_error("from %s", "tovan");
    return 0;
}
