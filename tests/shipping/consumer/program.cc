// program.cc: a program in C++, with all headers of the library.
#include <tovan/tovan.h>
#include <iostream>
#include <string>

int main() {
    std::string text = "seven is ";
    char digits[16];

    progname = "program";
    text += itoa(7, digits, 10);
    std::cout << text << '\n';
}
