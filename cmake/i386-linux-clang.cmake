# Toolchain of the fuzzing build (tests/fuzz/): 32-bit x86 Linux with clang,
# whose libFuzzer and sanitizer runtimes Debian ships for i386
# (libclang-rt-14-dev). The product builds keep using cmake/i386-linux.cmake.
include(${CMAKE_CURRENT_LIST_DIR}/i386-linux.cmake)

set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
