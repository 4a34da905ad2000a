// faults.h: system calls that fail, fall short or come late, on demand.
//
// Tests that include this are linked with calls of its own in the place of the C library's (ld's --wrap): what the library and the test call
// goes through them, what the C library calls itself does not. Streams are
// reached through fdopen and fopen: a fault of "fread" is met when they read.
#ifndef TOVAN_TESTS_FAULTS_H
#define TOVAN_TESTS_FAULTS_H

#include "support/child.h"

#include <functional>
#include <string>
#include <vector>

namespace support {

constexpr int always = -1;  // as `times`
constexpr long half = -2;   // as `most`

// What happens to calls of one function. Those that ask for memory are met by
// the name "malloc", whichever they are.
struct fault {
    const char *call;  // its name, as in "read"
    int error = 0;     // errno of the failure; 0: there is none
    int first = 1;     // the first call that is met, counted from now
    int times = 1;     // how many calls are met
    // read, write and their kin transfer so many bytes at most, or half of
    // what is asked for; with an error that holds for the calls before it.
    long most = -1;
    void (*before)() = nullptr;  // called first
};

constexpr fault no_fault = {"nothing"};

// Sets the fault of a function; it has no other. Counting starts.
void inject(const fault &wanted);

// Calls of all functions are as they were.
void heal();

// How often a function was called since its fault was set, or since heal().
int calls_of(const char *call);

// Runs `body` in a child with a fault, which children of the child inherit.
// A body that returns with other descriptors open than at its start adds
// "(descriptors: N more)" to the output.
outcome with_fault(const fault &wanted, const std::function<void()> &body);

// Whether the last with_fault() met it.
bool was_met();

struct fault_row {
    fault what;
    std::string out;
    std::string err;
    int status;
};

// Each of the faults in a child of its own, which no signal may end and which
// must meet the fault.
//   adjust    null, or applied to how the child ended before it is compared
void check_faults(const std::function<void()> &body,
                  const std::vector<fault_row> &rows,
                  const std::function<void(outcome *)> &adjust = nullptr);

// As "read: EIO, calls 2 to 3".
std::string name_of(const fault &f);

// The system's text.
std::string text_of(int error);

}  // namespace support

#endif
