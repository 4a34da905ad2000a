/* own_words.c: every general word belongs to the program, with a meaning of
   its own. */
#define OWN(word)                                                \
    void word(void);                                             \
    void word(void) {                                            \
        __builtin_trap(); /* the library calls it by its name */ \
    }

OWN(error)
OWN(usage)
OWN(trim)
OWN(clean)
OWN(function)
OWN(trait)
OWN(zombie)
OWN(protect)
OWN(spread)
OWN(dup2)
OWN(mkstemp)
