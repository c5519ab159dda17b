# SPDX-License-Identifier: Apache-2.0
# A library to link with where the real one stands only on the controller: it has the real one's name and
# functions, and nothing runs in it. It is not installed.
#
#   add_link_stub(<target> <output name> <function>...)

function(add_link_stub target name)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}.c)
    set(text "/* Generated: names to link with. Nothing of this is ever called. */\n")
    foreach(function IN LISTS ARGN)
        string(APPEND text "void ${function}(void);\nvoid ${function}(void)\n{\n}\n")
    endforeach()
    file(CONFIGURE OUTPUT ${source} CONTENT "${text}" @ONLY)
    add_library(${target} SHARED ${source})
    set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name}
                                               LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/link-stubs)
endfunction()

# The functions that a header declares, one "int name(" at the start of a line each.
function(functions_declared_in header result)
    file(STRINGS ${header} lines REGEX "^int [A-Za-z0-9]+\\(")
    list(TRANSFORM lines REPLACE "^int ([A-Za-z0-9]+)\\(.*" "\\1")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
    set(${result} ${lines} PARENT_SCOPE)
endfunction()
