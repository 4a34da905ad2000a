/* over_layer.c: a program that links the layer and means the C library's
   error(), or loads the layer as a plugin. */
#include <dlfcn.h>
#include <error.h>

#ifdef PLUGIN
static void layer_speaks(void) {
    void *plugin = dlopen(PLUGIN, RTLD_NOW | RTLD_LOCAL);

    if (plugin == 0) error(1, 0, "%s", dlerror());
    ((void (*)(void))dlsym(plugin, "layer_speaks"))();
}
#else
void layer_speaks(void);
#endif

int main(void) {
    layer_speaks();
    error(0, 0, "from %s", "program");
    return 0;
}
