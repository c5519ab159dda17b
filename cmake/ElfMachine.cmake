# SPDX-License-Identifier: Apache-2.0
# Whether a shared library is for the machine that the compiler makes code for, from the head of its file (ELF).
#
#   require_library_for_target(<variable> <what it is>)    ends the configuration if the file that the variable names is
#                                                          not there, no shared library, or for another machine

function(require_library_for_target variable what)
    set(file ${${variable}})
    if(NOT EXISTS "${file}" OR IS_DIRECTORY "${file}")
        message(FATAL_ERROR "${variable}: there is no file ${file}; it names ${what}")
    endif()
    elf_machine("${file}" machine type)
    if(NOT type STREQUAL "0300")
        message(FATAL_ERROR "${variable}: ${file} is no shared library; it names ${what}")
    endif()
    machine_of_compiler(wanted)
    if(NOT machine STREQUAL wanted)
        message(FATAL_ERROR "${variable}: ${file} is for ${machine}, and what is built here is for ${wanted}; "
                            "it names ${what}")
    endif()
endfunction()

# The machine in words, and the type of the file as the two bytes of its head (0300: a shared library).
function(elf_machine file machine type)
    file(READ "${file}" head LIMIT 52 HEX)
    if(NOT head MATCHES "^7f454c46")
        set(${type} "" PARENT_SCOPE)
        set(${machine} "no machine" PARENT_SCOPE)
        return()
    endif()
    string(SUBSTRING "${head}" 8 2 class)
    string(SUBSTRING "${head}" 32 4 kind)
    string(SUBSTRING "${head}" 36 4 code)
    string(SUBSTRING "${head}" 74 2 float_abi) # the second byte of the flags of a 32-bit file
    if(code STREQUAL "3e00")
        set(name "x86-64")
    elseif(code STREQUAL "0300")
        set(name "x86, 32 bit")
    elseif(code STREQUAL "b700")
        set(name "ARM, 64 bit")
    elseif(code STREQUAL "2800" AND float_abi STREQUAL "04")
        set(name "ARM with hard float")
    elseif(code STREQUAL "2800")
        set(name "ARM with soft float")
    else()
        set(name "the machine with the ELF number ${code} (class ${class})")
    endif()
    set(${type} "${kind}" PARENT_SCOPE)
    set(${machine} "${name}" PARENT_SCOPE)
endfunction()

# From a library that the compiler makes: what it is called or was told need not be known.
function(machine_of_compiler machine)
    if(NOT DISPLAY_COMPILER_MACHINE)
        set(sample ${CMAKE_BINARY_DIR}/CMakeFiles/machine)
        file(CONFIGURE OUTPUT ${sample}.c CONTENT "int machine;\n" @ONLY)
        separate_arguments(flags UNIX_COMMAND "${CMAKE_C_FLAGS}")
        execute_process(COMMAND ${CMAKE_C_COMPILER} ${flags} -shared -fPIC -nostdlib -o ${sample}.so ${sample}.c
                        COMMAND_ERROR_IS_FATAL ANY)
        elf_machine(${sample}.so name type)
        set(DISPLAY_COMPILER_MACHINE "${name}" CACHE INTERNAL "The machine that the compiler makes code for")
    endif()
    set(${machine} "${DISPLAY_COMPILER_MACHINE}" PARENT_SCOPE)
endfunction()
