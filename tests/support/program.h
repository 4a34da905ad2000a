// program.h: programs that a test provides.
#ifndef TOVAN_TESTS_PROGRAM_H
#define TOVAN_TESTS_PROGRAM_H

#include <string>

namespace support {

// Puts a shell script under that name into bin/, and bin/ before the other
// directories of PATH.
void install_program(const std::string &name, const std::string &script);

}  // namespace support

#endif
