# Flags that all targets of the project share.
#   tovan_warnings   every warning that the project keeps at zero
#   tovan_freestyle  how library and tools are compiled: nothing of the C++
#                    run-time library may be needed to link them, and its
#                    assertions would be
add_library(tovan_warnings INTERFACE)
target_compile_options(tovan_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<COMPILE_LANGUAGE:CXX>:-Wmissing-declarations>)

add_library(tovan_freestyle INTERFACE)
target_compile_options(tovan_freestyle INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti
    -fno-threadsafe-statics -U_GLIBCXX_ASSERTIONS>)

if(TOVAN_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize=vptr
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(TOVAN_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
if(TOVAN_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined
    -fno-sanitize=vptr -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()

# What links the library as C must not get the C++ run-time library from
# CMake; programs in C++ get it from their own compiler driver.
set(CMAKE_CXX_IMPLICIT_LINK_LIBRARIES "")
