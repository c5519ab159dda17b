#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Every script and program tells its use and its version and does nothing else then, and ends with 2 when it is called
# wrongly, saying so on standard error alone.
#
#   usage_test.sh SOURCE_DIR VERSION PROGRAM...
set -eu
here=$(dirname "$0")
. "$here/../packaging/check.sh"
source=$(cd "$1" && pwd) version=$2
shift 2
scratch
mkdir "$scratch/empty"

# ask PROGRAM ARGUMENT: in an empty directory that is its home as well.
ask() {
    status=0
    (cd "$scratch/empty" && HOME=$scratch/empty "$1" "$2" >"$scratch/out" 2>"$scratch/err" </dev/null) || status=$?
    expect "$1 $2: leaves nothing" '' "$(ls -A "$scratch/empty")"
}

# Scripts that are sourced have no use of their own; the rest of what can be run is found here.
scripts=$(cd "$source" && find run test .ci/run tools packaging -maxdepth 1 -type f -perm -u+x ! -name '*.sh' \
    ! -name deepest-path)
count=0
for program in $(echo "$scripts" | sed "s|^|$source/|") "$@"; do
    count=$((count + 1))
    ask "$program" --help
    expect "$program --help: its status" 0 "$status"
    expect "$program --help: nothing on standard error" '' "$(cat "$scratch/err")"
    [ "$(wc -l <"$scratch/out")" -ge 1 ] || failed "$program --help says nothing"
    if grep -q SPDX-License "$scratch/out"; then failed "$program --help tells its licence line"; fi
    ask "$program" --version
    expect "$program --version: its status" 0 "$status"
    expect "$program --version: one line with the version" 1 "$(grep -cF "$version" "$scratch/out")"
    expect "$program --version: nothing else" 1 "$(cat "$scratch/out" "$scratch/err" | wc -l)"
    ask "$program" --no-such-option
    expect "$program --no-such-option: its status" 2 "$status"
    expect "$program --no-such-option: nothing on standard output" '' "$(cat "$scratch/out")"
    [ -s "$scratch/err" ] || failed "$program --no-such-option: says nothing"
done
echo "$count scripts and programs"
[ "$count" -ge 10 ] || failed 'hardly anything was found'
report
