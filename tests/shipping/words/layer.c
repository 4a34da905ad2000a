/* layer.c: a library, or a plugin, that is built on libtovan. */
#include <tovan/tovan.h>

void layer_speaks(void);

void layer_speaks(void) {
    error("from %s", "layer");
}
