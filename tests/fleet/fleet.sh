# shellcheck shell=bash disable=SC2034,SC2154 # variables of the scripts and of desk.sh
# SPDX-License-Identifier: Apache-2.0
# What the scripts of this directory share. Sourced after desk.sh and client.sh of tests/endtoend and displayctl.sh of
# tests/client.
#
#   needs PROGRAM PACKAGE...          skips the test where one of the programs is not installed
#   monitors_file NAME=URL...         the file of monitors, for admin, in $scratch/monitors.yaml
#   exporter_start ARGUMENTS          the exporter's URL is then in $exporter; its process is stopped when the script ends
#   exporter_stop
#   fleet_start COUNT                 as many desks as ./run --monitors starts, in $scratch/fleet, which has their env
#   fleet_stop

processes_to_end=()
exporter=
exporter_process=
fleet_process=

needs() {
    while [ $# -gt 0 ]; do
        command -v "$1" >/dev/null || {
            echo "Skipped: $1 is not installed (package $2)."
            exit 77
        }
        shift 2
    done
}

monitors_file() {
    local each
    {
        printf 'defaults: { user: admin }\nmonitors:\n'
        for each; do printf '  %s: { url: "%s" }\n' "${each%%=*}" "${each#*=}"; done
    } >"$scratch/monitors.yaml"
}

# ends_with_the_script PROCESS: however it ends, also before desk_end, which waits for nothing of it.
ends_with_the_script() {
    processes_to_end+=("$1")
    trap 'for each in "${processes_to_end[@]}"; do kill -TERM "$each" 2>/dev/null || true; done; desk_end' EXIT
}

exporter_start() {
    : >"$scratch/exporter.out"
    "$DISPLAYCTL" -c "$scratch/monitors.yaml" exporter --listen 127.0.0.1:0 "$@" >"$scratch/exporter.out" \
        2>"$scratch/exporter.err" &
    exporter_process=$!
    ends_with_the_script "$exporter_process"
    eventually 'the exporter listens' exporter_listens
    exporter=$(sed -n 's|^listening on \(http.*\)/$|\1|p' "$scratch/exporter.out")
}
exporter_listens() {
    [ ! -s "$scratch/exporter.out" ] || return 0
    is_alive "$exporter_process" || {
        cat "$scratch/exporter.err"
        give_up 'the exporter has ended'
    }
    return 1
}
exporter_stop() {
    local result=0
    kill -TERM "$exporter_process"
    wait "$exporter_process" || result=$?
    expect 'the exporter ends when it is asked to' 0 "$result"
    if grep -E 'Sanitizer|runtime error:' "$scratch/exporter.err"; then failed 'a sanitizer has found the above'; fi
    rm -f "$scratch/exporter.out" "$scratch/exporter.err"
}

fleet_start() {
    [ -n "$scratch" ] || desk_begin
    DESK_DIR=$scratch/fleet DESK_PORT=0 DISPLAY_HOST=$DISPLAY_HOST DESK_ENGINE=$DESK_ENGINE DESK_COMMAND=$DESK_COMMAND \
        DESK_SCREEN=$DESK_SCREEN DESK_LIBRARY=$DESK_LIBRARY setsid "$source_dir/run" --monitors "$1" >"$scratch/fleet.log" 2>&1 </dev/null &
    fleet_process=$!
    ends_with_the_script "$fleet_process"
    eventually "$1 desks serve" fleet_serves
    expect "$1 desks are in the file of monitors" "$1" "$(grep -c '^  desk-' "$scratch/fleet/monitors.yaml")"
    export DISPLAYCTL_CONFIG=$scratch/fleet/monitors.yaml XDG_CONFIG_HOME=$scratch/config XDG_STATE_HOME=$scratch/state
}
fleet_serves() {
    ! grep -q '^== Serving until' "$scratch/fleet.log" || return 0
    is_alive "$fleet_process" || {
        cat "$scratch/fleet.log"
        give_up 'the desks have not started'
    }
    return 1
}
fleet_stop() {
    kill -TERM "$fleet_process"
    wait "$fleet_process" 2>/dev/null || true
    rm -rf "$scratch/fleet" "$scratch/fleet.log" "$scratch/config" "$scratch/state"
}
