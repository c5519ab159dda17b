# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Starts the processes of a desk: the display engine, the object manager and, for who wants it, the screen. Sourced: by ./run, by the end-to-end
# tests and by the benchmarks, so that all of them have the same desk.
#
#   desk_programs BUILD                 takes the programs of a build directory, but for those that the environment names:
#                                       DISPLAY_HOST, DESK_ENGINE, DESK_COMMAND (desk-monitor), DESK_SCREEN,
#                                       DESK_LIBRARY
#   desk_settings DIRECTORY KEY         exports where the desk keeps its settings, and the base key of its queues
#   desk_password                       prints a new password
#   desk_account DIRECTORY NAME [--administrator]
#                                       an account of the object manager, its password on standard input, and a user of
#                                       the monitor of that name
#   desk_start_engine DIRECTORY         the process is then in desk_process; what it says, in DIRECTORY/engine.log;
#                                       DIRECTORY/ready.engine has a line as soon as it serves
#   desk_start_host DIRECTORY PORT [OPTION...]
#                                       the same with host.log and ready, whose lines have the URLs; port 0 is a free one;
#                                       DESK_PROVIDER_CALLS at a time are with the library (8)
#   desk_host_command DIRECTORY PORT    that object manager as a command, in the array desk_command; what its providers
#                                       print is in provider.log, or in the file DESK_PROVIDER_OUTPUT (empty: nowhere)
#   desk_start_screen DIRECTORY PORT [OPTION...]
#                                       the same with screen.log and ready.screen, whose line is the URL
#   desk_is_ready FILE PROCESS          0: the line is there; 1: not yet; 2: the process has ended before
#
# All of them end with the shell that has started them, however it ends, and the engine takes the queues with it.
# A directory belongs to one desk at a time: the caller sees to that.

desk_source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck disable=SC2034 # read by those who source this
desk_process=
desk_command=()

desk_programs() {
    DISPLAY_HOST=${DISPLAY_HOST:-$1/host/display-host}
    DESK_ENGINE=${DESK_ENGINE:-$1/desk/engine/desk-engine}
    DESK_COMMAND=${DESK_COMMAND:-$1/desk/support/desk-monitor}
    DESK_SCREEN=${DESK_SCREEN:-$1/desk/screen/desk-screen}
    DESK_LIBRARY=${DESK_LIBRARY:-$1/src/libcmpiDisplayManagement.so}
}

desk_settings() {
    export DESK_MONITOR_STORE=$1/monitor.db
    export DESK_MONITOR_QUEUE_KEY=$2
}

desk_password() { od -An -N12 -tx1 /dev/urandom | tr -d ' \n'; }

desk_account() {
    "$DISPLAY_HOST" account add --accounts "$1/accounts" "$2" >/dev/null &&
        "$DESK_COMMAND" user add "${@:2}" >/dev/null
}

desk_start_engine() {
    rm -f "$1/ready.engine"
    setpriv --pdeathsig TERM "$DESK_ENGINE" --remove-queues --ready-file "$1/ready.engine" >>"$1/engine.log" 2>&1 &
    # shellcheck disable=SC2034
    desk_process=$!
}

desk_host_command() {
    desk_command=("$DISPLAY_HOST" --mof "$desk_source/mof/desk.mof"
        --registration "$desk_source/mof/libcmpiDisplayManagement.reg" --library "$DESK_LIBRARY"
        --accounts "$1/accounts" --address 127.0.0.1 --port "$2" --provider-calls "${DESK_PROVIDER_CALLS:-8}"
        --provider-output "${DESK_PROVIDER_OUTPUT-$1/provider.log}" --ready-file "$1/ready")
}

desk_start_host() {
    rm -f "$1/ready"
    desk_host_command "$1" "$2"
    setpriv --pdeathsig TERM "${desk_command[@]}" "${@:3}" >>"$1/host.log" 2>&1 &
    # shellcheck disable=SC2034
    desk_process=$!
}

desk_start_screen() {
    rm -f "$1/ready.screen"
    setpriv --pdeathsig TERM "$DESK_SCREEN" --port "$2" --ready-file "$1/ready.screen" "${@:3}" >/dev/null 2>>"$1/screen.log" &
    # shellcheck disable=SC2034
    desk_process=$!
}

desk_is_ready() {
    [ ! -s "$1" ] || return 0
    kill -0 "$2" 2>/dev/null || return 2
    return 1
}
