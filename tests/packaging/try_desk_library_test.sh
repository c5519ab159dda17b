#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# tools/try-support-library finds nothing wrong with the desk's support library, while its engine runs; without the engine it
# names what is not answered.
#
#   try_desk_library_test.sh SOURCE_DIR ENGINE LIBRARY
set -eu
here=$(dirname "$0")
. "$here/check.sh"
source=$1 engine=$2 library=$3
for file in "$engine" "$library"; do
    [ -e "$file" ] || { echo "Skipped: $file is not built."; exit 77; }
done
scratch
export DESK_MONITOR_STORE="$scratch/monitor.db"
export DESK_MONITOR_QUEUE_KEY=$((0x62000000 + $$ * 16))
"$engine" --remove-queues --ready-file "$scratch/ready" >"$scratch/log" 2>&1 &
process=$!
trap 'kill "$process" 2>/dev/null || true; wait "$process" || true; rm -rf "$scratch"' EXIT
tries=0
until [ -s "$scratch/ready" ] || [ "$tries" -gt 600 ]; do
    tries=$((tries + 1))
    sleep 0.1
done
status=0
"$source/tools/try-support-library" --seconds 120 "$library" >"$scratch/out" 2>&1 || status=$?
expect 'its status' 0 "$status"
expect 'what is wrong' '' "$(grep '^WRONG' "$scratch/out" || true)"
expect 'what is right' 23 "$(grep -c '^right' "$scratch/out")"
report
