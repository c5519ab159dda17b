# SPDX-License-Identifier: Apache-2.0
# Writes the names that the header of the seam gives to numbers:  cmake -D OUT=... -D HEADER=... -P Names.cmake
file(READ ${HEADER} text)
set(tables "")
foreach(pair RegisterId:registerNames InformationGroup:groupNames ProcessCommand:commandNames MessageSource:sourceNames)
    string(REPLACE ":" ";" pair ${pair})
    list(GET pair 0 enumeration)
    list(GET pair 1 function)
    string(REGEX MATCH "enum ${enumeration} {[^}]*}" body "${text}")
    string(REGEX MATCHALL "[A-Z][A-Za-z0-9_]* = [0-9]+" entries "${body}")
    if(NOT entries)
        message(FATAL_ERROR "${HEADER} has no enum ${enumeration}")
    endif()
    set(rows "")
    foreach(entry IN LISTS entries)
        string(REGEX REPLACE "(.*) = (.*)" "        {\\2, \"\\1\"},\n" row ${entry})
        string(APPEND rows "${row}")
    endforeach()
    string(APPEND tables "
std::span<const NamedNumber> ${function}()
{
    static constexpr NamedNumber names[] = {
${rows}    };
    return names;
}
")
endforeach()
file(WRITE ${OUT} "// Made by Names.cmake.
#include \"screen/names.h\"

namespace desk::screen
{
${tables}
} // namespace desk::screen
")
