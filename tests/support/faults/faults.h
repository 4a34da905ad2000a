// faults.h: system calls that fail, fall short or come late, on demand.
//
// Tests whose names end in _fault_test are linked with these calls in the
// place of the C library's (ld's --wrap): what the library and the test call
// goes through them, what the C library calls itself does not. Streams are
// reached through fdopen and fopen: a fault of "fread" is met when they read.
#ifndef TOVAN_TESTS_FAULTS_H
#define TOVAN_TESTS_FAULTS_H

#include <functional>
#include <string>

namespace support {

constexpr int always = -1;  // as `times`
constexpr long half = -2;   // as `most`

// What happens to calls of one function.
struct fault {
    const char *call;  // its name, as in "read"
    int error = 0;     // errno of the failure; 0: there is none
    int first = 1;     // the first call that is met, counted from now
    int times = 1;     // how many calls are met
    long most = -1;    // read, write and their kin: transfers so many bytes
                       // at most, or half of what is asked for
    void (*before)() = nullptr;  // called first
};

// Sets the fault of a function; it has no other. Counting starts.
void inject(const fault &wanted);

// Calls of all functions are as they were.
void heal();

// How often a function was called since its fault was set, or since heal().
int calls_of(const char *call);

// Descriptors below 256 that are open.
int open_descriptors();

}  // namespace support

#endif
