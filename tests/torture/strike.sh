# shellcheck shell=bash disable=SC2034,SC2154 # variables of the scripts and of desk.sh
# SPDX-License-Identifier: Apache-2.0
# Programs whose calls fail one after the other. Sourced after desk.sh and client.sh of tests/endtoend.
#
#   strike_begin                  once, when there is a desk
#   strike_host                   before the desk's start: its object manager has the page, too; the program itself is in $program
#   strike KIND NTH ACTION PROGRAM...     runs it, with this standard input, and that call failing, or killed there (program_torture.cpp tells more): what it
#                                 said is then in $output and $errors, its exit code, "signal N" or "silent" in $result, the
#                                 function in $struck, empty when there was no such call
#   strike_other KIND NTH ACTION PROGRAM...     the same while it is the calls of another process that fail, which has that page
#   strike_places KIND PROGRAM... its calls from new places, in $places; more often the same places are not new
#   count_outcome WHAT OUTCOME    for strike_table, which prints how often each was seen
#   strike_end                    removes what these have made

strike_begin() {
    page=$scratch/page
    strike_said=$scratch/said
    mkdir "$strike_said"
    strikes=0
    declare -gA outcomes=()
}

strike_host() {
    truncate -s 1M "$page" # as large as what is mapped of it
    program=$DISPLAY_HOST
    DISPLAY_HOST=$scratch/display-host
    cat >"$DISPLAY_HOST" <<WRAPPER
#!/bin/sh
case \$1 in
account | audit) exec "$program" "\$@" ;;
esac
FAILING_CALLS=$page LD_PRELOAD=$FAILING_CALLS_LIBRARY exec "$program" "\$@"
WRAPPER
    chmod +x "$DISPLAY_HOST"
}

strike() {
    local line
    line=$("$PROGRAM_TORTURE" "$page" "$1" "$2" "$3" "$strike_said/output" "$strike_said/errors" "${@:4}")
    IFS=$'\t' read -r result _ _ struck <<<"$line"
    [ "$2" != places ] || places=${line#*$'\n'}
    output=$(tr -d '\0' <"$strike_said/output")
    errors=$(tr -d '\0' <"$strike_said/errors")
    [ -z "$struck" ] || strikes=$((strikes + 1))
}

strike_other() { FAILING_CALLS_OTHER=yes strike "$@"; }

strike_places() { strike "$1" places fail "${@:2}"; }

count_outcome() { outcomes[$1|$2]=$((${outcomes[$1|$2]-0} + 1)); }

strike_table() {
    local row
    for row in "${!outcomes[@]}"; do
        printf '%s|%s\n' "$row" "${outcomes[$row]}"
    done | sort | awk -F '|' '
        $1 != last { if (last != "") print line; last = $1; line = sprintf("  %-32s", $1) }
        { line = line sprintf("  %s: %s", $2, $3) }
        END { print line }'
    echo "$strikes calls failed"
}

strike_end() { rm -rf "$strike_said" "$page"; }
