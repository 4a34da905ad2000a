// ident.h (private): the identification string that every source exports.
// Builds on: nothing.
#ifndef TOVAN_IDENT_H
#define TOVAN_IDENT_H

extern "C" {
extern const char V_Libtovan[];
}

// Defines SID_NAME for the source NAME.cc, with the version and the date
// (yy/mm/dd) of that source, and a private pointer to the library banner, so
// that a program that links the source carries both texts. `retain` keeps
// them where the linker drops unreferenced sections.
#define TOVAN_IDENT(name, version, date)                            \
    extern "C" {                                                    \
    extern const char SID_##name[];                                 \
    [[gnu::used, gnu::retain]] constinit const char SID_##name[] =  \
        "@(#)-ltovan(" #name ")\t" version " - " date;              \
    }                                                               \
    namespace {                                                     \
    [[gnu::used, gnu::retain]] constinit const char *const banner = \
        V_Libtovan;                                                 \
    }

#endif
