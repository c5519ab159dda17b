# SPDX-License-Identifier: Apache-2.0
# The settings of the build and the flags that every target shares.

option(DISPLAY_DESK "Build the desk monitor" ON)
option(DISPLAY_HOST "Build the object manager" ${DISPLAY_DESK})
option(DISPLAY_CLIENT "Build displayctl, the tool for those who look after monitors" ${DISPLAY_DESK})
option(DISPLAY_TESTS "Build the tests" ON)
option(DISPLAY_BENCH "Build the benchmarks" OFF)
option(DISPLAY_SANITIZE "Address and undefined-behaviour sanitizers" OFF)
option(DISPLAY_SANITIZE_THREADS "Thread sanitizer; not together with the others" OFF)
option(DISPLAY_FUZZ "What libFuzzer needs, beside DISPLAY_SANITIZE; with clang" OFF)
option(DISPLAY_COVERAGE "Line and branch coverage" OFF)
option(DISPLAY_OWN_CMPI_HEADERS "Build the library with include/cmpi even where the system has CMPI headers" OFF)
set(MONITOR_SUPPORT_LIBRARY "" CACHE FILEPATH
    "The monitor's own support library; empty: the desk substitute is built and linked")

find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE})
endif()

# What is parsed once for a target of many files and not for each of them. Every file includes what it uses all the same:
# ./test --full has clang-tidy read each for itself and without these (tools/check --alone tidy), and with
# CMAKE_DISABLE_PRECOMPILE_HEADERS, as displayctl's packages for ARM are made, each file is compiled for itself.
set(STANDARD_HEADERS <algorithm> <array> <atomic> <cerrno> <charconv> <chrono> <cstddef> <cstdint> <cstdio> <cstdlib>
    <cstring> <ctime> <filesystem> <fstream> <functional> <iterator> <map> <memory> <mutex> <optional> <set> <span> <sstream>
    <stdexcept> <string> <string_view> <thread> <utility> <vector> <fcntl.h> <sys/stat.h> <unistd.h>)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat-security -Werror)
if(DISPLAY_SANITIZE)
    # Without optimisation, and with no more debug information than a report needs: what the checks add is slow
    # to optimise, and compiling is most of what ./test does.
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -O0 -g1)
    add_link_options(-fsanitize=address,undefined)
endif()
if(DISPLAY_FUZZ)
    # Here running takes the time, not compiling. The library has no type information, which two of the checks need.
    add_compile_options(-fsanitize=fuzzer-no-link -fno-sanitize=vptr,function -O1)
endif()
if(DISPLAY_SANITIZE_THREADS)
    add_compile_options(-fsanitize=thread -O1 -g1)
    add_link_options(-fsanitize=thread)
endif()
if(DISPLAY_COVERAGE)
    add_compile_options(--coverage -O0)
    add_link_options(--coverage)
endif()
