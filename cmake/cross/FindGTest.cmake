# SPDX-License-Identifier: Apache-2.0
# GoogleTest for a cross build: built from the sources that Debian's googletest package installs, since there are
# no built libraries for the target. Defines GTest::gtest, GTest::gtest_main and GTest::gmock.

if(NOT TARGET GTest::gtest)
    find_path(GOOGLETEST_SOURCE googletest/src/gtest-all.cc PATHS /usr/src/googletest
              NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    if(GOOGLETEST_SOURCE)
        find_package(Threads REQUIRED)
        set(here ${CMAKE_BINARY_DIR}/googletest)
        function(add_googletest_library name directory source)
            add_library(${name} STATIC EXCLUDE_FROM_ALL ${GOOGLETEST_SOURCE}/${directory}/src/${source})
            target_include_directories(${name} SYSTEM PUBLIC ${GOOGLETEST_SOURCE}/${directory}/include)
            target_include_directories(${name} PRIVATE ${GOOGLETEST_SOURCE}/${directory})
            target_link_libraries(${name} PUBLIC ${ARGN})
            target_compile_options(${name} PRIVATE -w -O1)
            add_library(GTest::${name} ALIAS ${name})
        endfunction()
        add_googletest_library(gtest googletest gtest-all.cc Threads::Threads)
        add_googletest_library(gtest_main googletest gtest_main.cc gtest)
        add_googletest_library(gmock googlemock gmock-all.cc gtest)
    endif()
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(GTest REQUIRED_VARS GOOGLETEST_SOURCE
                                  REASON_FAILURE_MESSAGE "the sources are in Debian's package googletest")
mark_as_advanced(GOOGLETEST_SOURCE)
