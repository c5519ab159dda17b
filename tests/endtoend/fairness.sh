#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Nobody keeps an administrator out: many writers against an engine that does not answer, many connections that read
# slowly, sockets that are idle or slow, connections that are all busy, and requests that want too much memory.
#
# What is compared is an order or a number, never a time; the times are shown.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"
# shellcheck source=wire.sh
. "$here/wire.sh"

# What the library waits for an answer of the engine: longer than this script.
export DESK_MONITOR_RECEIVE_TIMEOUT=3600
desk_start
desk_password >"$directory/password.boss"
desk_account "$directory" boss --administrator <"$directory/password.boss"
request_files

restart() { # restart [OPTION...]
    host_stop KILL # a writer that waits for the engine has no end
    kill -s CONT "${desk_engine[$desk]}"
    engine_stop
    engine_start
    # No limit of time counts here: a machine may be slow.
    host_start --login-timeout 3600 --idle-timeout 3600 --transfer-timeout 3600 "$@"
    expect 'the reader logs in' 200 "$(send boss read)"
}
# An engine that sees no request.
engine_pauses() { kill -s STOP "${desk_engine[$desk]}"; }
established() { # how many connections the object manager has
    awk -v port="$(printf ':%04X' "$port")" '$4 == "01" && substr($2, length($2) - 4) == port' /proc/net/tcp | wc -l
}
has_connections() { (($(established) >= $1)); }

echo '30 writers of one user, and an engine that does not answer'
restart
engine_pauses
for i in {1..30}; do
    begin "writer$i" admin write 1
done
eventually 'all writers are connected' has_connections 30
eventually 'half of the places with the library are theirs' queue_holds 0 4
for what in read endpoints; do
    expect "an administrator's request ($what) is answered while they wait" 200 \
        "$(send boss $what -w "%{stderr}  in %{time_total} s\n%{stdout}%{http_code}\n")"
    expect 'they still wait' 0 "$(lines "$directory"/writer*.done)"
done
end_clients
rm "$directory"/writer*

# Each writer sets another value, so that what a reader finds tells which of them were before him. Who comes when is
# known of the first two: one is with the library, the other one waits; then come the rest, then the readers.
readers_come_behind() { # readers_come_behind WRITERS
    local socket writers=() reader other i
    echo "One call at a time: $1 writers of one user, then two readers"
    DESK_PROVIDER_CALLS=1 restart
    send admin read >/dev/null
    send viewer read >/dev/null
    engine_pauses
    for ((i = 1; i <= $1; ++i)); do
        request_file_luminance $((100 + i))
        open_request admin luminance-$((100 + i))
        writers+=("$socket")
        [ "$i" -gt 2 ] || eventually "writer $i has come" all_wait
    done
    expect 'one of them is with the library' 0 "$(queue_holds 0 1; echo $?)"
    eventually 'all have come' all_wait
    open_request boss read
    reader=$socket
    eventually 'a reader has come' all_wait
    open_request viewer read
    other=$socket
    eventually 'another one has come' all_wait
    kill -s CONT "${desk_engine[$desk]}"
    for i in "$reader" "$other"; do
        # Of the first preset, which is the first in the answer.
        expect 'he has waited for the two who were there, and for no more' 102 \
            "$(timeout "$patience" cat <&"$i" | tr -d '\n' | grep -o 'NAME="DisplayLuminance"[^>]*><VALUE>[0-9]*' | sed -n '1s/.*>//p')"
    done
    expect 'all writers are answered' "$1" "$(for i in "${writers[@]}"; do timeout "$patience" cat <&"$i"; done | grep -c '^<VALUE>0</VALUE>')"
    for i in "${writers[@]}" "$reader" "$other"; do
        exec {i}>&-
    done
}
readers_come_behind 2
readers_come_behind 30

echo '40 connections of one user that enumerate the endpoints'
restart
for i in {1..40}; do
    begin "enumerator$i" admin endpoints 100000
done
more_than() { (($(lines "$directory"/enumerator*.done) > $1)); }
eventually 'all enumerators are connected' has_connections 40
before=$(lines "$directory"/enumerator*.done)
begin reader boss read 20 -w '%{http_code} %{time_total}\n'
wait "$client"
after=$(lines "$directory"/enumerator*.done)
eventually 'enumerations go on' more_than "$after"
expect '20 reads of an administrator are answered' 20 "$(grep -c '^200 ' "$directory/reader.done")"
printf '  the slowest in %s s; meanwhile %d enumerations\n' "$(sort -k2 -n "$directory/reader.done" | tail -1 | cut -d' ' -f2)" $((after - before))
# Behind those of the other user he would have waited for 32 each time, the 40 less the 8 that are with the library.
expect 'fewer than 16 enumerations for each of them' yes "$( ((after - before < 20 * 16)) && echo yes)"
expect 'no enumeration has failed' '' "$(grep -hv '^200$' "$directory"/enumerator*.done || true)"
end_clients
rm "$directory"/enumerator* "$directory/reader.done"

echo 'Sockets that are idle or slow, and limits of time that do not help'
restart
trap '' PIPE # a socket that was closed
sockets=()
for i in {1..100}; do
    exec {socket}<>"/dev/tcp/127.0.0.1/$port"
    sockets+=("$socket")
    ((i % 2)) || printf 'POST /cimom HTTP/1.1\r\nHost: loc' >&"$socket"
done
for i in {1..10}; do
    expect "a good client is answered ($i)" 200 "$(send boss read)"
    for socket in "${sockets[@]}"; do
        { printf a >&"$socket"; } 2>/dev/null || true
    done
done
for socket in "${sockets[@]}"; do
    exec {socket}>&-
done
trap - PIPE

echo 'All connections are busy'
DESK_PROVIDER_CALLS=4 restart --max-connections 3
engine_pauses
for i in {1..3}; do
    begin "writer$i" admin write 1
done
eventually 'all connections are taken' has_connections 3
eventually 'two are with the library, one waits for its turn' queue_holds 0 2
head=$(send boss read -D - | tr -d '\r')
expect 'a further one is told so' 'HTTP/1.1 503 Service Unavailable' "$(head -1 <<<"$head")"
expect 'and when to come again' 'Retry-After: 1' "$(grep '^Retry-After' <<<"$head")"
printf 'wrong' >"$directory/password.nobody"
expect 'nor is it said that the password is wrong' 503 "$(send nobody read)"
end_clients
rm "$directory"/writer*

echo '60 connections with 284 kB each'
# Connections that are about to be closed count as well.
restart --max-connections 200 --max-connections-per-address 200 --max-anonymous 200
# To hash a password takes 16 MB, once for a password that is right.
expect 'the user logs in' 200 "$(send admin read)"
resident() { sed -n "s/^$1:[[:space:]]*\([0-9]*\) kB/\1/p" "/proc/${desk_host[$desk]}/status"; }
idle=$(resident VmRSS)
for i in {1..60}; do
    begin "sender$i" admin large 3
done
wait "${clients[@]}" || true
peak=$(resident VmHWM)
expect 'all are answered, or told to come again' '' "$(grep -hvE '^(200|503)$' "$directory"/sender*.done || true)"
printf '  %d answered, %d told to come again; %d kB resident before, %d kB at most\n' \
    "$(cat "$directory"/sender*.done | grep -c 200)" "$(cat "$directory"/sender*.done | grep -c 503 || true)" "$idle" "$peak"
# The sanitizers keep memory that is given back. Besides the budget each connection has the stack of its thread and the
# buffers of the HTTP library.
if [ "${SANITIZED:-}" != 1 ]; then
    expect 'within the budget of 64 MB, and 128 kB for each connection' yes "$( ((peak - idle < 64 * 1024 + 60 * 128)) && echo yes)"
    small_again() { (($(resident VmRSS) - idle < 4096)); }
    eventually 'all but 4 MB of it goes back to the system' small_again
fi
end_clients
rm "$directory"/sender*

echo 'A budget that is used up'
restart --max-memory 8388608
sockets=()
for i in {1..7}; do # each with the memory for what it is going to send
    exec {socket}<>"/dev/tcp/127.0.0.1/$port"
    sockets+=("$socket")
    printf '%s\r\n' 'POST /cimom HTTP/1.1' 'Host: localhost' 'CIMOperation: MethodCall' 'Content-Type: application/xml' \
        'Expect: 100-continue' 'Content-Length: 1048576' \
        "Authorization: Basic $(printf 'admin:%s' "$(<"$directory/password.admin")" | base64 -w0)" '' >&"$socket"
    read -r line <&"$socket"
    expect "a large request has its memory ($i)" 'HTTP/1.1 100 Continue' "${line%$'\r'}"
done
head=$(send boss large -D - | tr -d '\r')
expect 'there is none for another one' 'HTTP/1.1 503 Service Unavailable' "$(head -1 <<<"$head")"
expect 'it is to come again' 'Retry-After: 1' "$(grep '^Retry-After' <<<"$head")"
expect 'a wrong password is one nevertheless' 401 "$(send nobody large)"
for socket in "${sockets[@]}"; do
    exec {socket}>&-
done
has_room() { [ "$(send boss large)" = 200 ]; }
eventually 'there is room when the others have gone' has_room

kill -s CONT "${desk_engine[$desk]}"
report
