#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# display-host while its calls fail where it does not serve yet: host-programs.sh [EVERY]. An account that is added or listed, and
# each start of the object manager: it ends by itself, with a message and an exit code, or it serves; the accounts are whole.
# Of the allocations one from each place, or from EVERY places one.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=strike.sh
. "$here/../torture/strike.sh"
every=${1:-1}
desk_start
host_stop
strike_begin
accounts=$directory/accounts
cp "$accounts" "$scratch/accounts"
desk_password >"$scratch/password"
kinds=(files full-disk descriptors sockets interrupted memory)

# Starts it, sees it serve or end, and ends it: a program of its own, of which no call fails.
cat >"$scratch/start" <<'START'
#!/bin/bash
rm -f "$READY"
"${@}" &
host=$!
until [ -s "$READY" ] || ! kill -0 "$host" 2>/dev/null; do
    sleep 0.05
done
[ ! -s "$READY" ] || { echo serves; kill "$host"; }
wait "$host"
START
chmod +x "$scratch/start"
cat >"$scratch/torn-host" <<WRAPPER
#!/bin/sh
FAILING_CALLS=$page LD_PRELOAD=$FAILING_CALLS_LIBRARY exec "$DISPLAY_HOST" "\$@"
WRAPPER
chmod +x "$scratch/torn-host"
export READY=$directory/ready

wrong() { failed "$name, $kind: call $nth, $struck, failed: $*; it ended with $result and said: $output $errors"; }

judge() {
    local listed
    [[ $name != start || $output != *serves ]] || output=serves
    count_outcome "$name, $kind" "$result$([ "$output" != serves ] || echo ' serves')"
    case $name,$result,$output in
    start,0,serves | add,0,* | list,0,"$usual_output") ;;
    *,1,*) [ -n "$errors" ] || wrong 'nothing was said' ;;
    *) wrong 'that is no outcome of it' ;;
    esac
    [ "$name" != start ] || return 0
    listed=$("$DISPLAY_HOST" account list --accounts "$accounts" 2>&1) || wrong "the accounts cannot be read: $listed"
    case $name,$result,$listed in
    add,0,"$new") ;;
    add,0,*) wrong "the account is not there: $listed" ;;
    *,*,"$old") ;;
    *) wrong "the accounts are not as before: $listed" ;;
    esac
    cp "$scratch/accounts" "$accounts"
}

hit() { # hit KIND NTH: one run of the program
    if [ "$name" = start ]; then
        strike_other "$1" "$2" fail "$scratch/start" "${program[@]}" </dev/null
    else
        strike "$1" "$2" fail "${program[@]}" <"$scratch/password"
    fi
}

torture() { # torture NAME PROGRAM...
    local before=$failures number=0 numbers
    name=$1
    program=("${@:2}")
    for kind in "${kinds[@]}"; do
        numbers=({1..3000})
        if [ "$kind" = memory ]; then
            hit memory places
            numbers=()
            for nth in $places; do
                ((number++ % every != 0)) || numbers+=("$nth")
            done
            cp "$scratch/accounts" "$accounts"
        fi
        for nth in "${numbers[@]}"; do
            hit "$kind" "$nth"
            if [ -z "$struck" ]; then
                [ "$kind" = memory ] || break
                continue
            fi
            judge
        done
        cp "$scratch/accounts" "$accounts"
    done
    [ "$before" != "$failures" ] || right "$name: whatever failed, it ends with a reason, or does what it is for"
}

old=$("$DISPLAY_HOST" account list --accounts "$accounts")
new=$(printf '%s\nnext operator\n' "$old" | sort)
usual_output=$old
torture list "$DISPLAY_HOST" account list --accounts "$accounts"
torture add "$DISPLAY_HOST" account add --accounts "$accounts" next
host=$DISPLAY_HOST
DISPLAY_HOST=$scratch/torn-host
desk_host_command "$directory" 0
torture start "${desk_command[@]}"
DISPLAY_HOST=$host
strike_table
strike_end
rm "$scratch"/{accounts,password,start,torn-host}
report
