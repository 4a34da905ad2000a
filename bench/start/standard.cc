// standard.cc: the same tool on the standard C++ library, linked dynamically.
#include <iostream>
#include <string>

int main(int argc, char **argv) {
    std::string text = "hello ";
    text += argc > 1 ? argv[1] : "world";
    std::cout << text << '\n';
}
