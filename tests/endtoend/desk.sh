# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2034 # variables of client.sh
# A desk of the script's own: store, accounts, queues, engine and object manager, all gone when the script ends.
# Sourced by the scripts of this directory. The programs are named by the environment (see CMakeLists.txt); without,
# those of the build directory DESK_BUILD are taken, and without that, those of build/release.
#
#   desk_start [NAME]             a desk on a free port and on free queue keys; it becomes the current one
#   desk_use NAME                 makes another desk of this script the current one
#   desk_stop [NAME]              ends it and checks that no queue and no process is left of it
#   engine_start, engine_stop [SIGNAL], host_start [OPTION...], host_stop [SIGNAL]    the processes of the current desk
#   host_options                  an array: more options of the object managers that are started from now on
#   port_of SCHEME                where the current one listens for http or https
#   monitor ARGUMENTS             the command desk-monitor on the current desk
#   eventually WHAT COMMAND...    waits until the command succeeds
#   report                        the end of every script
#
# Every desk has the accounts admin (an administrator) and viewer (an ordinary user), with generated passwords.

export LC_ALL=C
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source_dir=$(cd "$here/../.." && pwd)
# shellcheck source=../../tools/desk-start.sh
. "$source_dir/tools/desk-start.sh"
desk_programs "${DESK_BUILD:-$source_dir/build/release}"

# Seconds: enough for a machine that has much else to do. Nothing waits so long where all is well.
patience=120

command -v wbemcli >/dev/null || {
    echo 'Skipped: wbemcli is not installed (package sblim-wbemcli).'
    exit 77
}

# In a sanitizer build every process also looks for leaks when it ends, and its exit code tells what was found.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:exitcode=99}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}

scratch=
desk=
directory=
port=
declare -A desk_key=() desk_engine=() desk_host=() desk_port=()

checks=0
failures=0
failed() {
    failures=$((failures + 1))
    printf '  WRONG: %s\n' "$*"
}

give_up() {
    failed "$@"
    exit 1
}

eventually() { # eventually WHAT COMMAND...
    local what=$1 end=$((SECONDS + patience))
    shift
    until "$@"; do
        ((SECONDS < end)) || give_up "$what: not within $patience seconds"
        sleep 0.05
    done
}

is_alive() { kill -0 "$1" 2>/dev/null; }

# ---- queues ----

# Of the shared memory and the semaphore of a base key: what exists.
memory_of() {
    awk -v key="$1" 'FNR > 1 && $1 == key { print FILENAME }' /proc/sysvipc/shm /proc/sysvipc/sem
}

# The queues, of the four that a base key stands for, that exist: one key and the number of messages per line.
queues_of() {
    awk -v base="$1" 'NR > 1 && $1 >= base && $1 < base + 4 { print $1, $5 }' /proc/sysvipc/msg
}
no_queue_of() { [ -z "$(queues_of "$1")" ]; }

# queue_holds NUMBER COUNT: the queue of the current desk holds so many messages.
queue_holds() {
    queues_of "${desk_key[$desk]}" | grep -qx "$((desk_key[$desk] + $1)) $2"
}

# A base key from this process and the number of the desk: sixteen keys belong to one process.
free_queue_key() {
    local number=${#desk_key[@]} attempt key
    ((number < 4)) || give_up 'a script has four desks at most'
    for attempt in {0..15}; do
        key=$((0x30000000 + attempt * 0x04000000 + $$ * 16 + number * 4))
        if no_queue_of "$key"; then
            echo "$key"
            return
        fi
    done
    give_up 'no free queue keys'
}

# ---- the desk ----

monitor() { "$DESK_COMMAND" "$@"; }

desk_use() {
    desk=$1
    directory=$scratch/$desk
    known_object= # by client.sh
    port=${desk_port[$desk]-}
    desk_settings "$directory" "${desk_key[$desk]}"
}

engine_start() {
    desk_start_engine "$directory"
    desk_engine[$desk]=$desk_process
    eventually "the engine of desk $desk is ready" is_ready ready.engine
}
engine_stop() { # engine_stop [SIGNAL]
    process_stop "the engine of desk $desk" "${desk_engine[$desk]-}" "${1-TERM}"
    desk_engine[$desk]=
}

host_options=()
port_of() { sed -n "s|.* $1://.*:\([0-9]*\)/.*|\1|p" "$directory/ready"; }
host_start() { # host_start [OPTION...]
    desk_start_host "$directory" 0 "${host_options[@]}" "$@"
    desk_host[$desk]=$desk_process
    eventually "the object manager of desk $desk listens" is_ready ready
    port=$(port_of http)
    desk_port[$desk]=$port
}
# The process that was started last. One that ends is not waited for.
is_ready() { # is_ready FILE
    local result=0
    desk_is_ready "$directory/$1" "$desk_process" || result=$?
    [ $result != 2 ] || give_up "a process of desk $desk has ended"
    return $result
}
host_stop() { # host_stop [SIGNAL]
    process_stop "the object manager of desk $desk" "${desk_host[$desk]-}" "${1-TERM}"
    desk_host[$desk]=
    desk_port[$desk]=
    port=
}

# A process that is asked to end by TERM does so, and with exit code 0.
process_stop() { # process_stop WHAT PROCESS SIGNAL
    local result=0
    [ -n "$2" ] || return 0
    { # the shell itself would tell of a killed process
        kill -s "$3" "$2" || failed "$1 had ended before"
        wait "$2" || result=$?
    } 2>/dev/null
    [ "$3" != TERM ] || [ "$result" = 0 ] || failed "$1 ended with $result"
}

desk_start() {
    local name=${1-desk} user
    [ -n "$scratch" ] || desk_begin
    desk_key[$name]=$(free_queue_key)
    mkdir "$scratch/$name"
    desk_use "$name"
    for user in admin viewer; do
        desk_password >"$directory/password.$user"
    done
    desk_account "$directory" admin --administrator <"$directory/password.admin"
    desk_account "$directory" viewer <"$directory/password.viewer"
    engine_start
    host_start
}

desk_stop() { # desk_stop [NAME]
    desk_use "${1-$desk}"
    host_stop
    engine_stop
    no_queue_of "${desk_key[$desk]}" || failed "queues of desk $desk are left: $(queues_of "${desk_key[$desk]}")"
    [ -z "$(memory_of "${desk_key[$desk]}")" ] || failed "of desk $desk is left: $(memory_of "${desk_key[$desk]}")"
    if grep -hE 'ERROR: (Address|Leak)Sanitizer|runtime error:' "$directory"/*.log; then
        failed "a sanitizer has found the above on desk $desk"
        show_logs
    fi
    rm -r "$directory"
}

# What the processes had to say, where it matters. The trace of the providers is left out: it tells every call.
show_logs() {
    local log
    for log in "$scratch"/*/*.log; do
        if [ -s "$log" ] && [ "${log##*/}" != provider.log ]; then
            printf -- '---- the end of %s ----\n' "${log#"$scratch/"}"
            tail -n 60 "$log"
        fi
    done
}

desk_begin() {
    scratch=$(mktemp -d "${TMPDIR:-/tmp}/desk.XXXXXX")
    trap desk_end EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

# However the script ends, nothing stays behind.
desk_end() {
    local result=$? process name
    trap - EXIT HUP INT TERM
    set +e
    for process in "${desk_host[@]}" "${desk_engine[@]}"; do
        [ -n "$process" ] || continue
        kill -KILL "$process" 2>/dev/null
        wait "$process" 2>/dev/null
    done
    [ "$result" = 0 ] || show_logs
    for name in "${!desk_key[@]}"; do
        "$DESK_COMMAND" --queue-key "${desk_key[$name]}" queues remove >/dev/null
    done
    rm -rf "$scratch"
    exit "$result"
}

# Ends the desks that still stand, and tells how it went. No check at all is no success.
report() {
    local name left
    for name in "${!desk_key[@]}"; do
        [ ! -d "$scratch/$name" ] || desk_stop "$name"
    done
    left=$(jobs -p)
    [ -z "$left" ] || failed "processes are left: $left"
    rmdir "$scratch" || failed "files are left: $(find "$scratch")"
    ((checks > 0)) || failed 'nothing was checked'
    if ((failures > 0)); then
        printf '%d WRONG\n' "$failures"
        exit 1
    fi
    printf 'All right: %d checks.\n' "$checks"
    exit 0
}
