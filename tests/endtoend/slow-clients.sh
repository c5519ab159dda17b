#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# A well-known tester that opens connections and sends their headers or bodies slowly, or reads the answers slowly: the
# service is available throughout. The three ways go on at once, each against an object manager of its own.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"

command -v slowhttptest >/dev/null || {
    echo 'Skipped: slowhttptest is not installed (package slowhttptest).'
    exit 77
}
export COLUMNS=200 TERM=dumb

# A second between the pieces, for ten seconds, over 150 connections, which is more than there may be. The tester takes a
# service for available when it answers within so many seconds, which is much, so that a busy machine is no reason.
common=(-c 150 -r 100 -l 10 -i 1 -p 60 -g)
declare -A options=([headers]='-H' [body]='-B -s 8192' [read]='-X -w 1 -y 4 -n 1 -z 1 -k 3')
declare -A tester=()
for way in headers body read; do
    desk_start "$way"
    # shellcheck disable=SC2086 # a list of options
    setpriv --pdeathsig KILL slowhttptest "${common[@]}" ${options[$way]} -u "http://127.0.0.1:$port/" \
        -o "$directory/slow" >"$directory/slow.log" 2>&1 9>&- </dev/null &
    tester[$way]=$!
done

# Who sends no login is answered before the body comes, and the connection is closed. When that was so for every one that
# the tester had opened by then, the tester ends on its own, before it has opened the others.
opened_or_sent_away() { # opened_or_sent_away ROWS
    awk -F, '$2 + $3 + $4 >= 100' <<<"$1" | grep -q . ||
        { grep -q 'No open connections left' "$directory/slow.log" && awk -F, '$2 >= 1' <<<"$1" | grep -q .; }
}

for way in headers body read; do
    desk_use "$way"
    wait "${tester[$way]}" || true
    # Seconds, connections: closed, pending, connected; service available: as many as there may be, or 0.
    rows=$(tail -n +2 "$directory/slow.csv")
    expect "$way: the tester has looked at it" yes "$( (($(wc -l <<<"$rows") >= 2)) && echo yes)"
    expect "$way: it has opened its connections" yes "$(opened_or_sent_away "$rows" && echo yes)"
    expect "$way: the service is available throughout" '' "$(awk -F, '$NF == 0' <<<"$rows")"
    expect "$way: a good client is answered" 0 "$(ask viewer ein ZT_Marovelton_Monitor && [[ $answer == *ZT_Marovelton_Monitor* ]] && echo 0)"
    tail -n 2 "$directory/slow.csv"
done
report
