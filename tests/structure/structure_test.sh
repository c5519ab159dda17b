#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The rooms of the library, of the object manager and of the desk monitor: who includes whom. How long the files and the
# functions are of all that is shipped or helps to make it.
#
#   structure_test.sh SOURCE_DIR    holds the sources to rooms.txt and to the limits
#   structure_test.sh --itself      shows that each check can fail
set -euo pipefail
shopt -s nullglob
here=$(cd "$(dirname "$0")" && pwd)
failed=0

fail() {
    echo "$*"
    failed=1
}

room_of() { # room_of FILE: its directory
    echo "${1%/*}"
}

# "FILE INCLUDED" per line, both from the root, for each include in quotation marks below src, host, desk and process.
includes() {
    local file name target
    for file in src/*.{h,cpp} src/*/*.{h,cpp} host/*.{h,cpp} host/*/*.{h,cpp} desk/*/*.{h,cpp} process/*.{h,cpp}; do
        sed -n 's/^#include "\([^"]*\)".*/\1/p' "$file" | while read -r name; do
            for target in "${file%%/*}/$name" "$(room_of "$file")/$name" "include/$name" "$name"; do
                if [ -e "$target" ]; then
                    echo "$file $target"
                    continue 2
                fi
            done
            echo "$file unknown/$name"
        done
    done
}

check_arrows() {
    local from to room target
    while read -r from to; do
        room=$(room_of "$from") target=$(room_of "$to")
        if [ "$room" != "$target" ] &&
            ! awk -v room="$room" '$1 == room { $1 = ""; print $0 " " }' "$here/rooms.txt" |
                grep -qF -e " $target " -e " $to "; then
            fail "$from includes $to: $room may not know $target"
        fi
    done < <(includes)
}

check_circles() {
    local circle
    circle=$(includes | awk '$1 != $2' | tsort 2>&1 >/dev/null) || fail "files that include each other: ${circle//tsort: /}"
}

# No class of the library has its name in what serves all of them.
check_class_names() {
    local found
    found=$(grep -rnE 'ZT_Marovelton_[A-Z]' src/frame src/engine) && fail "a class is named: $found"
    return 0
}

# A function is at most 60 lines long, also one that stands in its class; a file 700.
check_lengths() {
    local found
    found=$(find src host desk process client tools bench \( -name '*.h' -o -name '*.cpp' \) -exec awk '
        FNR == 1 { delete begin }
        /^ *\{$/ { match($0, /^ */); begin[RLENGTH] = FNR }
        /^ *\}$/ {
            match($0, /^ */)
            if (begin[RLENGTH] && FNR - begin[RLENGTH] > 60)
                print FILENAME ":" begin[RLENGTH] ": a function of " FNR - begin[RLENGTH] " lines"
            delete begin[RLENGTH]
        }
        FNR == 701 { print FILENAME ": more than 700 lines" }' {} +)
    [ -z "$found" ] || fail "$found"
}

check_all() {
    failed=0
    check_arrows
    check_circles
    check_class_names
    check_lengths
}

# ---- the checks themselves ----

# expect_failure WORDS FILE LINE...: with these lines added to the file, the checks fail with these words.
expect_failure() {
    local words=$1 file=$2
    shift 2
    mkdir -p "$scratch"/src/{engine,frame,display} "$scratch"/host/{core,cmpi} "$scratch"/{client,tools,bench}/deep/er
    mkdir -p "$scratch"/desk/{support,screen} "$scratch"/process
    cd "$scratch"
    printf '#include "engine/b.h"\n' >src/frame/a.h
    printf '// nothing\n' | tee src/engine/b.h src/display/c.cpp src/engine/d.h host/core/e.h host/cmpi/h.cpp >/dev/null
    printf '// nothing\n' | tee desk/support/f.h desk/screen/g.h {client,tools,bench}/deep/er/g.h >/dev/null
    check_all >report
    [ "$failed" -eq 0 ] || { cat report; echo "sound sources are refused"; exit 1; }
    printf '%s\n' "$@" >>"$file"
    check_all >report
    if [ "$failed" -ne 1 ] || ! grep -qF "$words" report; then
        cat report
        echo "not refused: $words"
        exit 1
    fi
    cd "$here"
}

if [ "${1:?the directory of the sources is missing}" = --itself ]; then
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
    expect_failure 'src/engine may not know src/frame' src/engine/b.h '#include "frame/a.h"'
    expect_failure 'files that include each other' src/engine/b.h '#include "engine/d.h"' '#include "frame/a.h"'
    expect_failure 'host/core may not know unknown' host/core/e.h '#include "nowhere.h"'
    expect_failure 'desk/support may not know desk/screen' desk/support/f.h '#include "screen/g.h"'
    expect_failure 'host/cmpi may not know host/core' host/cmpi/h.cpp '#include "core/e.h"'
    expect_failure 'a class is named' src/frame/a.h '// ZT_Marovelton_Monitor'
    mapfile -t lines < <(seq 701)
    expect_failure 'more than 700 lines' src/display/c.cpp "${lines[@]}"
    expect_failure 'a function of 61 lines' src/display/c.cpp 'void f()' '{' "${lines[@]:0:60}" '}'
    for room in desk/screen client/deep/er tools/deep/er bench/deep/er; do
        expect_failure 'more than 700 lines' $room/g.h "${lines[@]}"
        expect_failure 'a function of 61 lines' $room/g.h 'class A' '{' '    void f()' '    {' "${lines[@]:0:60}" '    }' '};'
    done
    echo 'each check fails where it must'
    exit 0
fi
cd "$1"
[ "$(includes | wc -l)" -gt 100 ] || fail 'hardly any includes were found'
check_all
exit $failed
