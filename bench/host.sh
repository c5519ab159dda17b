#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Measures what the object manager takes: until it serves, of memory, and of a second processor. README.md says how to read
# the table.
#
#   bench/host.sh BUILD [REQUESTS]    the build directory; how many requests come before memory is looked at again (20000)
#   bench/host.sh BUILD --smoke       a few of each; only whether they succeed counts, no table
set -euo pipefail

build=$(cd "${1:?the build directory is missing}" && pwd)
runs=20 requests=${2-20000} reads=5000 quiet=15
[ "$requests" != --smoke ] || runs=1 requests=100 reads=50 quiet=0
export DESK_BUILD=$build
# shellcheck source=../tests/endtoend/desk.sh
. "$(dirname "$0")/../tests/endtoend/desk.sh"
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"

# Kilobytes: of what processes share with others, to each its part.
memory_of_desk() {
    cat "/proc/${desk_host[$desk]}/smaps_rollup" "/proc/${desk_engine[$desk]}/smaps_rollup" |
        awk '/^Pss:/ { sum += $2 } END { print sum }'
}
megabytes() { awk -v kilobytes="$1" 'BEGIN { printf "%.2f MB", kilobytes / 1024 }'; }

call() { # call NAME COUNT
    "$build/bench/host_bench" --calls "$1" "$2" >/dev/null || give_up "$1 has had a wrong answer"
    checks=$((checks + 1))
}

read_by() { # read_by CONNECTIONS: the requests per second of the fastest of several runs
    for _ in 1 2 3 4 5; do
        "$build/bench/host_bench" --readers "$1" $((reads / $1)) || give_up 'a reader has had a wrong answer' >&2
    done | sort -n | tail -n 1
}

row() { [ "${2-}" = '' ] || rows+="$(printf '%-36s %16s' "$1" "$2")"$'\n'; }
rows=

secure_desk_start
idle=$(memory_of_desk)
row memory/idle "$(megabytes "$idle")"
for count in 50 $((requests / 5)); do
    for name in http/get_color_space http/enumerate_color_spaces https/get_color_space wsman/get_color_space \
        http/set_display_luminance; do
        call $name "$count"
    done
    busy=$(memory_of_desk)
    sleep "$quiet" # until both have given back what only requests need
    row "memory/grown_by_$((count * 5))_requests" "$(megabytes $(($(memory_of_desk) - idle)))"
done
row memory/busy "$(megabytes "$busy")"

one=$(read_by 1)
four=$(read_by 4)
checks=$((checks + 2))
row readers/one "$one per second"
row readers/four "$four per second"
row readers/ratio "$(awk -v one="$one" -v four="$four" 'BEGIN { printf "%.2f", four / one }')"

host_stop
desk_host_command "$directory" 0
# shellcheck disable=SC2154 # desk_command: of desk_host_command
result=$("$build/bench/started" $runs "$directory/ready" "${desk_command[@]}" "${host_options[@]}") ||
    give_up 'the object manager has not come to serve'
checks=$((checks + 1))
row start/fastest "${result% *} ms"
row start/median "${result#* } ms"
secure_desk_stop
[ "${2-}" = --smoke ] || printf '%s' "$rows"
report >&2
