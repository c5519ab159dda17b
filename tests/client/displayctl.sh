# shellcheck shell=bash disable=SC2034,SC2154 # variables of the scripts and of desk.sh
# SPDX-License-Identifier: Apache-2.0
# displayctl on the current desk. Sourced after desk.sh and client.sh of tests/endtoend.
#
#   ctl ARGUMENTS                 runs displayctl as admin; its output, errors and exit code are then in $output, $errors
#                                 and $result. Settings and history are the script's own.
#   ctl_as ACCOUNT ARGUMENTS      the same as another user
#   expect_ctl WHAT CODE OUTPUT ARGUMENTS     runs it, and compares exit code and output
#   plain_ctl ARGUMENTS           ctl without naming a monitor
#   url ACCOUNT                   of the current desk

DISPLAYCTL=${DISPLAYCTL:-${DESK_BUILD:-$source_dir/build/release}/client/displayctl}
unset DISPLAYCTL_CONFIG DISPLAYCTL_MONITOR NO_COLOR

url() { printf 'http://%s@127.0.0.1:%s' "$1" "$port"; }

ctl_environment() { # ctl_environment ACCOUNT
    export XDG_CONFIG_HOME=$scratch/config XDG_STATE_HOME=$scratch/state
    DISPLAYCTL_PASSWORD=$(<"$directory/password.$1")
    export DISPLAYCTL_PASSWORD
}

run_ctl() { # run_ctl ARGUMENTS, in the environment there is
    result=0
    output=$(timeout "$patience" "$DISPLAYCTL" "$@" 2>"$scratch/errors" </dev/null) || result=$?
    errors=$(<"$scratch/errors")
    rm -f "$scratch/errors"
}
ctl_as() { # ctl_as ACCOUNT ARGUMENTS
    ctl_environment "$1"
    run_ctl -m "$(url "$1")" "${@:2}"
}
plain_ctl() {
    ctl_environment admin
    run_ctl "$@"
}
ctl() { ctl_as admin "$@"; }

expect_ctl() { # expect_ctl WHAT CODE OUTPUT ARGUMENTS
    local what=$1 code=$2 text=$3
    shift 3
    ctl "$@"
    expect "$what" "$code: $text" "$result: $output"
}
expect_plain_ctl() { # expect_plain_ctl WHAT CODE OUTPUT ARGUMENTS
    local what=$1 code=$2 text=$3
    shift 3
    plain_ctl "$@"
    expect "$what" "$code: $text" "$result: $output"
}

# What displayctl keeps is gone before the desk is.
ctl_end() { rm -rf "$scratch/config" "$scratch/state"; }
