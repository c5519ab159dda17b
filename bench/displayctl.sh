#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Measures displayctl as it is called: the whole program from start to end, on a desk monitor, and on many monitors that one
# responder stands for. README.md says how to read the table.
#
#   bench/displayctl.sh BUILD            the build directory; less than a minute
#   bench/displayctl.sh BUILD --smoke    a few runs on a few monitors; only whether they succeed counts, no table
# shellcheck disable=SC2119 # the functions of desk.sh, without arguments
set -euo pipefail

build=$(cd "${1:?the build directory is missing}" && pwd)
smoke=${2-}
export DESK_BUILD=$build
# shellcheck source=../tests/endtoend/desk.sh
. "$(dirname "$0")/../tests/endtoend/desk.sh"
desk_start
DISPLAYCTL=${DISPLAYCTL:-$build/client/displayctl}
DISPLAYCTL_PASSWORD=$(<"$directory/password.admin")
export DISPLAYCTL_PASSWORD XDG_CONFIG_HOME=$directory XDG_STATE_HOME=$directory
unset DISPLAYCTL_CONFIG DISPLAYCTL_MONITOR

runs=20 sizes=(1000 10000)
[ -z "$smoke" ] || runs=2 sizes=(20)

rows=()
measure() { # measure NAME RUNS ARGUMENTS of displayctl
    local name=$1 count=$2 result
    shift 2
    result=$("$build/bench/timed" "$count" "$DISPLAYCTL" "$@") || give_up "$name has failed"
    checks=$((checks + 1))
    rows+=("$name $result")
}

measure start $runs --version
measure show $runs -m "http://admin@127.0.0.1:$port" show
measure show_all $runs -m "http://admin@127.0.0.1:$port" show --all
measure get_luminance $runs -m "http://admin@127.0.0.1:$port" get luminance

for size in "${sizes[@]}"; do
    # shellcheck disable=SC2034 # it is stopped by its process, and nothing is read from it
    coproc many { exec "$build/bench/many-monitors" "$size" "$directory/many.yaml"; }
    many_process=$!
    eventually "$size monitors listen" test -s "$directory/many.yaml"
    measure "get_luminance_of_$size" $((size > 1000 ? 3 : runs / 2)) -c "$directory/many.yaml" get luminance -m all
    kill "$many_process"
    wait "$many_process" 2>/dev/null || true
    rm "$directory/many.yaml"
done

if [ -z "$smoke" ]; then
    printf '%-28s %12s %12s %12s\n' call 'fastest (ms)' 'median (ms)' 'memory (MB)'
    # shellcheck disable=SC2046,SC2183 # a row is four words
    printf '%-28s %12s %12s %12s\n' $(printf '%s ' "${rows[@]}")
fi
report
