# SPDX-License-Identifier: Apache-2.0
# The CMPI interface headers: the system's where it has them, ours otherwise. Target: cmpi_headers.

add_library(cmpi_headers INTERFACE)
find_path(CMPI_INCLUDE_DIR cmpi/cmpidt.h)
if(CMPI_INCLUDE_DIR AND NOT DISPLAY_OWN_CMPI_HEADERS)
    message(STATUS "CMPI headers: ${CMPI_INCLUDE_DIR}/cmpi")
    target_include_directories(cmpi_headers SYSTEM INTERFACE ${CMPI_INCLUDE_DIR} ${CMPI_INCLUDE_DIR}/cmpi)
else()
    message(STATUS "CMPI headers: the project's own")
    target_include_directories(cmpi_headers INTERFACE ${PROJECT_SOURCE_DIR}/include
                                                      ${PROJECT_SOURCE_DIR}/include/cmpi)
endif()
target_compile_definitions(cmpi_headers INTERFACE CMPI_PLATFORM_LINUX_GENERIC_GNU CMPI_VERSION=200)
