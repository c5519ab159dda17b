# SPDX-License-Identifier: Apache-2.0
# Writes the files of the page as a C++ table:  cmake -D OUT=... -D FILES=... -P Page.cmake
set(rows "")
set(arrays "")
set(number 0)
foreach(file IN LISTS FILES)
    cmake_path(GET file FILENAME name)
    cmake_path(GET file EXTENSION LAST_ONLY suffix)
    if(suffix STREQUAL ".html")
        set(type "text/html; charset=utf-8")
    elseif(suffix STREQUAL ".css")
        set(type "text/css; charset=utf-8")
    elseif(suffix STREQUAL ".js")
        set(type "text/javascript; charset=utf-8")
    elseif(suffix STREQUAL ".svg")
        set(type "image/svg+xml")
    else()
        message(FATAL_ERROR "${name}: no type is known for ${suffix}")
    endif()
    file(READ ${file} hex HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
    string(APPEND arrays "constexpr unsigned char file${number}[] = {${bytes}};\n")
    string(APPEND rows "    {\"/${name}\", \"${type}\", file${number}},\n")
    math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUT} "// Made by Page.cmake.
#include \"screen/page.h\"

namespace desk::screen
{
namespace
{
${arrays}
constexpr PageFile files[] = {
${rows}};
} // namespace

std::span<const PageFile> pageFiles()
{
    return files;
}

} // namespace desk::screen
")
