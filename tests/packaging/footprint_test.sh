#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The library stays as small as the controller needs it: file, memory that every process has for itself, stack.
#
#   footprint_test.sh STRIP SIZE LIBRARY BUILD_DIR SOURCE_DIR
set -eu
here=$(dirname "$0")
. "$here/check.sh"
strip=$1 size=$2 library=$3 build=$4 source=$5
scratch

# at_most WHAT LIMIT VALUE
at_most() {
    echo "$1: $3 bytes, at most $2"
    if [ -z "$3" ] || [ "$3" -lt 1 ] || [ "$3" -gt "$2" ]; then
        failed "$1"
    fi
}

"$strip" -o "$scratch/library.so" "$library"
at_most 'stripped file' 112640 "$(wc -c <"$scratch/library.so")"
at_most 'writable memory' 12288 "$("$size" -A "$scratch/library.so" |
    awk '$1 ~ /^\.(data\.rel\.ro|data|dynamic|got|bss|init_array|fini_array)/ { bytes += $2 } END { print bytes }')"
find "$build" -name '*.ltrans.ci' -exec cat {} + >"$scratch/calls"
"$source/tools/deepest-path" "$scratch/calls" >"$scratch/path" || failed 'no deepest path'
# An association leads to a second call, of another class.
at_most 'stack' 16384 "$((2 * $(head -1 "$scratch/path")))"

report
