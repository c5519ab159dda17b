# SPDX-License-Identifier: Apache-2.0
# Where a whole ./test runs a test: once, under the sanitizers (preset asan), unless the room says otherwise by
#
#   runs_plain(<test>...)       without sanitizers alone: what is not there with them, and what is about packages, documents or
#                               the programs of others, and would show the sanitizers nothing of ours that other tests do not
#   runs_plain_too(<test>...)   without sanitizers as well: what measures or traces what they change
#
# which is the label `plain` or `plain-too` of the test, and
#
#   plain_tests_need(<target>...)   what is to be built for tests with one of the labels
#
# ./test asks both builds for their tests and does not pass when one of them is left out by both.

add_custom_target(plain_tests)

function(runs_plain)
    set_property(TEST ${ARGN} APPEND PROPERTY LABELS plain)
endfunction()

function(runs_plain_too)
    set_property(TEST ${ARGN} APPEND PROPERTY LABELS plain-too)
endfunction()

function(plain_tests_need)
    add_dependencies(plain_tests ${ARGN})
endfunction()
