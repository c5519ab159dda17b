# SPDX-License-Identifier: Apache-2.0
# What the Debian packages need to know of this machine and of the libraries below the seam.

if(NOT DISPLAY_DEBIAN_ARCHITECTURE)
    find_program(DPKG dpkg)
    mark_as_advanced(DPKG)
    if(DPKG)
        execute_process(COMMAND ${DPKG} --print-architecture OUTPUT_VARIABLE architecture
                        OUTPUT_STRIP_TRAILING_WHITESPACE)
        set(DISPLAY_DEBIAN_ARCHITECTURE ${architecture} CACHE STRING "The architecture of the Debian packages")
    endif()
endif()

# The package that a library comes from: the one that dpkg knows it of, else what Debian's rules make of its name.
function(package_of_library file result)
    if(DPKG)
        file(REAL_PATH ${file} real)
        execute_process(COMMAND ${DPKG} --search ${real} OUTPUT_VARIABLE owner ERROR_QUIET)
        if(owner MATCHES "^([a-z0-9][a-z0-9+.-]*)(:[a-z0-9]+)?: ")
            set(${result} ${CMAKE_MATCH_1} PARENT_SCOPE)
            return()
        endif()
    endif()
    execute_process(COMMAND ${CMAKE_READELF} -dW ${file} OUTPUT_VARIABLE dynamic ERROR_QUIET)
    if(dynamic MATCHES "Library soname: \\[([^]]*)\\]")
        set(name ${CMAKE_MATCH_1})
    else()
        cmake_path(GET file FILENAME name)
    endif()
    string(TOLOWER ${name} name)
    string(REPLACE "_" "-" name ${name})
    string(REGEX REPLACE "([0-9])\\.so\\.([0-9]+).*$" "\\1-\\2" name ${name})
    string(REGEX REPLACE "\\.so\\.([0-9]+).*$" "\\1" name ${name})
    string(REGEX REPLACE "\\.so$" "" name ${name})
    set(${result} ${name} PARENT_SCOPE)
endfunction()

# install_man(<component> <page>...): compressed, as systems have them; ready when the build is configured, since nothing
# has to be built for it.
function(install_man component)
    find_program(GZIP gzip REQUIRED)
    mark_as_advanced(GZIP)
    foreach(page IN LISTS ARGN)
        cmake_path(GET page FILENAME name)
        cmake_path(GET page EXTENSION LAST_ONLY section)
        string(SUBSTRING ${section} 1 1 section)
        compress(${page} ${CMAKE_BINARY_DIR}/man/${name}.gz)
        install(FILES ${CMAKE_BINARY_DIR}/man/${name}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section}
                COMPONENT ${component})
    endforeach()
endfunction()

# The same bytes from the same file, whenever it is made.
function(compress file to)
    find_program(GZIP gzip REQUIRED)
    cmake_path(GET to PARENT_PATH directory)
    file(MAKE_DIRECTORY ${directory})
    execute_process(COMMAND ${GZIP} -9nc ${file} OUTPUT_FILE ${to} COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
endfunction()
