# SPDX-License-Identifier: Apache-2.0
# The two libraries below the seam: the monitor's support library and the shell helper of the CMPI base package. Each is
# the one that is named, else the desk's substitute, else a stand-in to link with; configuring says in plain words which.
#
#   link_below_the_seam(<target>)
#
# sets, as global properties for the tests and the packages,
#   DISPLAY_SUPPORT_LIBRARY_FILE, DISPLAY_SHELL_HELPER_FILE   the files that the target needs
#   DISPLAY_STAND_IN                                          TRUE if one of them is not what a controller has

include(${PROJECT_SOURCE_DIR}/cmake/ElfMachine.cmake)
include(${PROJECT_SOURCE_DIR}/cmake/LinkStub.cmake)

function(link_below_the_seam target)
    set_property(GLOBAL PROPERTY DISPLAY_STAND_IN FALSE)

    if(MONITOR_SUPPORT_LIBRARY)
        require_library_for_target(MONITOR_SUPPORT_LIBRARY "the monitor's support library")
        message(STATUS "support library: ${MONITOR_SUPPORT_LIBRARY}")
        link_file(${target} ${MONITOR_SUPPORT_LIBRARY} DISPLAY_SUPPORT_LIBRARY_FILE)
    elseif(TARGET monitor_support)
        message(STATUS "support library: the desk's substitute, not for shipping")
        link_substitute(${target} monitor_support DISPLAY_SUPPORT_LIBRARY_FILE)
    else()
        message(STATUS "support library: STAND-IN, not for shipping (MONITOR_SUPPORT_LIBRARY names the monitor's own)")
        functions_declared_in(${PROJECT_SOURCE_DIR}/include/monitor_support.h functions)
        add_link_stub(monitor_support_stub monitor_support ${functions})
        link_substitute(${target} monitor_support_stub DISPLAY_SUPPORT_LIBRARY_FILE)
    endif()

    find_library(CMPI_SHELL_HELPER NAMES cmpiOSBase_Common PATH_SUFFIXES cmpi)
    if(CMPI_SHELL_HELPER)
        require_library_for_target(CMPI_SHELL_HELPER "the shell helper of the CMPI base package")
        message(STATUS "shell helper: ${CMPI_SHELL_HELPER}")
        link_file(${target} ${CMPI_SHELL_HELPER} DISPLAY_SHELL_HELPER_FILE)
    elseif(TARGET desk_shell)
        message(STATUS "shell helper: the desk's substitute, not for shipping")
        link_substitute(${target} desk_shell DISPLAY_SHELL_HELPER_FILE)
    else()
        message(STATUS "shell helper: STAND-IN, not for shipping (CMPI_SHELL_HELPER names libcmpiOSBase_Common.so)")
        add_link_stub(shell_helper_stub cmpiOSBase_Common runcommand freeresultbuf)
        link_substitute(${target} shell_helper_stub DISPLAY_SHELL_HELPER_FILE)
    endif()
endfunction()

function(link_file target file property)
    target_link_libraries(${target} PRIVATE ${file})
    set_property(GLOBAL PROPERTY ${property} ${file})
endfunction()

function(link_substitute target library property)
    target_link_libraries(${target} PRIVATE ${library})
    set_property(GLOBAL PROPERTY ${property} $<TARGET_FILE:${library}>)
    set_property(GLOBAL PROPERTY DISPLAY_STAND_IN TRUE)
endfunction()
