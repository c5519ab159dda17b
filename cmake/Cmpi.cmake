# SPDX-License-Identifier: Apache-2.0
# The CMPI interface headers. The object manager and all tests take the project's own, whatever the system has; the
# library takes those that CMPI_INCLUDE_DIR names, else the system's where it has them, else the project's own.
#
#   cmpi_headers           the project's own
#   library_cmpi_headers   those for the library itself

# The two folders that a program includes from: headers are asked for with and without "cmpi/".
function(add_cmpi_headers target kind directory)
    add_library(${target} INTERFACE)
    target_include_directories(${target} ${kind} INTERFACE ${directory} ${directory}/cmpi)
    target_compile_definitions(${target} INTERFACE CMPI_PLATFORM_LINUX_GENERIC_GNU CMPI_VERSION=200)
endfunction()

add_cmpi_headers(cmpi_headers "" ${PROJECT_SOURCE_DIR}/include)

find_path(CMPI_INCLUDE_DIR cmpi/cmpidt.h DOC "The directory with cmpi/cmpidt.h and cmpi/cmpift.h to build the library with")
if(CMPI_INCLUDE_DIR AND NOT DISPLAY_OWN_CMPI_HEADERS)
    foreach(header cmpidt.h cmpift.h)
        if(NOT EXISTS ${CMPI_INCLUDE_DIR}/cmpi/${header})
            message(FATAL_ERROR "CMPI_INCLUDE_DIR: there is no file ${CMPI_INCLUDE_DIR}/cmpi/${header}; "
                                "it names the directory that the CMPI headers' own directory cmpi is in")
        endif()
    endforeach()
    message(STATUS "CMPI headers: ${CMPI_INCLUDE_DIR}/cmpi for the library, the project's own for the rest")
    add_cmpi_headers(library_cmpi_headers SYSTEM ${CMPI_INCLUDE_DIR})
else()
    message(STATUS "CMPI headers: the project's own")
    add_library(library_cmpi_headers ALIAS cmpi_headers)
endif()
