#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# displayctl while its calls fail, one after the other: client.sh [EVERY [CASE...]]. Each call of files and sockets, each kind with
# each of its errors; of the thousands of allocations one from each place, or from EVERY places one. What must hold: it ends
# by itself, with an exit code of its own that is true, and says why; the history verifies and has what was acknowledged;
# undo takes back what was cut off.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=../client/displayctl.sh
. "$here/../client/displayctl.sh"
# shellcheck source=strike.sh
. "$here/../torture/strike.sh"
every=${1:-1}
chosen=("${@:2}")
# With a +: all calls after it, too. The last two: it is killed before it writes, or when half of it is written.
kinds=(files full-disk full-disk+ descriptors sockets reset interrupted memory memory+ kill-before kill-after)

desk_start other
other_port=$port
desk_start
strike_begin
ctl_environment admin
chmod 600 "$directory/password.admin" "$scratch/other/password.admin"
config=$scratch/monitors.yaml
cat >"$config" <<CONFIG
defaults: { user: admin }
monitors:
  one: { url: "http://127.0.0.1:$port", password-file: $directory/password.admin }
  other: { url: "http://127.0.0.1:$other_port", password-file: $scratch/other/password.admin }
CONFIG
profile=$scratch/house.yaml
cat >"$profile" <<'PROFILE'
displayctl: 1
settings:
  pip: { mode: pip, size: minimum }
  osd: { timeout: 20 }
PROFILE
stranger=$scratch/stranger
desk_password >"$stranger"
chmod 600 "$stranger"
cat >"$scratch/wrong.yaml" <<CONFIG
monitors:
  one: { url: "http://admin@127.0.0.1:$port", password-file: $stranger }
CONFIG

# What is tried: a name; the settings of the desk that it changes, with what they are before and after; its arguments.
cases=(
    'get                          |-m one get osd.timeout'
    'set      menu_timeout:15:20  |-m one set osd.timeout=20'
    'login                        |-c @wrong.yaml -m one get osd.timeout'
    'all                          |-m all get osd.timeout'
    'show                         |-m one --json show'
    'export                       |-m one export'
    'save                         |-m one export -o @saved.yaml'
    'diff                         |-m one diff @house.yaml'
    'history                      |history'
    'verify                       |history --verify'
    'undo     menu_opacity:5000:10000 |-m one --yes undo'
    'several  menu_timeout:15:20 pip_mode:0:1 pip_size:2:1 |-m one set pip.size=minimum osd.timeout=20 pip.mode=pip'
    'apply    menu_timeout:15:20 pip_mode:0:1 pip_size:2:1 |-m one --yes apply @house.yaml'
)

state=$scratch/state/displayctl
unset DISPLAYCTL_PASSWORD
ours() { "$DISPLAYCTL" -c "$config" "$@" </dev/null; }
ours --yes -m one set osd.opacity=50 >/dev/null
cp -r "$state" "$scratch/kept"
lines=1
for change in menu_timeout=15 pip_mode=0 pip_size=2; do
    monitor set "${change%=*}" "${change#*=}"
done
values() { monitor show settings | awk '{ sub(/^\*/, "", $4); print $1, $4 }'; }
begin=$(values)
back() { # the history and the settings as they were, whatever has happened
    local setting value
    rm -rf "$state"
    cp -r "$scratch/kept" "$state"
    while read -r setting value; do
        [ -z "$setting" ] || monitor set "$setting" "$value"
    done < <(comm -13 <(sort <<<"$now") <(sort <<<"$begin"))
}

# Which values the settings of the case have: $stands is old, new or neither.
look() {
    local change parts value
    stands=
    now=$(values)
    for change in $changes; do
        IFS=: read -ra parts <<<"$change"
        value=neither
        [[ $'\n'$now$'\n' != *$'\n'"${parts[0]} ${parts[1]}"$'\n'* ]] || value=old
        [[ $'\n'$now$'\n' != *$'\n'"${parts[0]} ${parts[2]}"$'\n'* ]] || value=new
        [ "${stands:-$value}" = "$value" ] || value=neither
        stands=$value
    done
}

back_to_begin() {
    [ -n "$changes" ] || return 0
    look
    back
}

is_one_of() { [[ " ${*:2} " == *" $1 "* ]]; }
is_whole() { [ "$(<"$1")" = before ] || diff -q <(sed 3d "$1") <(sed 3d <<<"$whole") >/dev/null; } # but for its date
wrong() { failed "$name, $kind: call $nth, $struck, failed: $*; it ended with $result and said: $errors"; }

# After the n-th call has failed.
judge() {
    local verified undone journal
    count_outcome "$name, $kind" "$result"
    if [[ $kind == kill-* ]]; then
        [ "$result" = 'signal 9' ] || wrong 'it was to be killed'
    else
        is_one_of "$result" 0 1 2 3 4 5 6 7 || wrong 'that is no exit code of displayctl'
    fi
    if [ "$name" = save ]; then
        is_whole "$scratch/saved.yaml" || wrong 'the file is neither the old nor the new one'
        [ "$result" != 0 ] || [ "$(<"$scratch/saved.yaml")" != before ] || wrong 'the file is the old one'
        echo before >"$scratch/saved.yaml"
    fi
    if [[ $kind == kill-* ]]; then
        :
    elif [ "$result" = "$usual" ]; then
        [ "$name" != all ] || output=$(sort <<<"$output") # they come as they finish
        [ "$output" = "$usual_output" ] || wrong "the output is not as usual: $output"
    elif [ -z "$errors" ] && [[ $output != *'"message":'* ]]; then
        wrong 'nothing was said'
    fi
    [ -n "$changes" ] || return 0
    look
    case $result in
    0) [ "$stands" = new ] || wrong "the settings are not the new ones: $stands" ;;
    5 | 6 | signal*) ;;
    *) [ "$stands" = old ] || wrong "the settings are not the old ones: $stands" ;;
    esac
    verified=$(ours history --verify 2>&1) || wrong "the history does not verify: $verified"
    ((${verified%% *} >= lines + $([ "$result" = 0 ] && echo 1 || echo 0))) || wrong "lines of the history are lost: $verified"
    journal=$(cat "$state"/journal/* 2>/dev/null || true)
    [[ $journal == *$'\n'* || $journal == *'}' ]] || journal= # the beginning of a line: nothing was sent yet
    if [ "$stands" = new ] && [ "$result" = 'signal 9' ] && [ -z "$journal" ] && ((${verified%% *} <= lines)); then
        wrong 'the change is neither in the history nor in the journal'
    elif [ "$stands" = neither ] && [[ $result != 6 && -z $journal ]]; then
        wrong 'it is half done, and there is no journal'
    fi
    if [ -n "$journal" ]; then
        undone=$(ours --yes -m one undo 2>&1) || wrong "undo ends with an error: $undone"
        look
        [ "$stands" = old ] || wrong "undo has not taken it back: $undone"
    fi
    back_to_begin
}

numbers_of() { # numbers_of KIND: which calls are to fail, in $numbers; of files and sockets one after the other
    numbers=()
    case $1 in
    memory)
        strike_places memory "$DISPLAYCTL" "${arguments[@]}" </dev/null
        for nth in $places; do
            ((new_places++ % every != 0)) || numbers+=("$nth")
        done
        places=${numbers[*]}
        ;;
    memory+) read -ra numbers <<<"$places" ;;
    *) numbers=({1..2000}) ;;
    esac
}

torture() { # torture CASE: every call of each kind
    local arguments before=$failures
    read -r name changes <<<"${1%%|*}"
    read -ra arguments <<<"${1#*|}"
    arguments=("${arguments[@]//@/$scratch/}")
    [ "${arguments[0]}" = -c ] || arguments=(-c "$config" "${arguments[@]}")
    back_to_begin
    strike files 0 fail "$DISPLAYCTL" "${arguments[@]}" </dev/null
    usual=$result usual_output=$output
    [ "$usual" != 2 ] || failed "$name: it is not even tried: $errors"
    [ "$name" != all ] || usual_output=$(sort <<<"$output")
    for kind in "${kinds[@]}"; do
        back_to_begin
        numbers_of "$kind"
        back_to_begin
        for nth in "${numbers[@]}"; do
            if [[ $kind == kill-* ]]; then
                strike writes "$nth" "$kind" "$DISPLAYCTL" "${arguments[@]}" </dev/null
            elif [[ $kind == *+ ]]; then
                strike "${kind%+}" "$nth+" fail "$DISPLAYCTL" "${arguments[@]}" </dev/null
            else
                strike "$kind" "$nth" fail "$DISPLAYCTL" "${arguments[@]}" </dev/null
            fi
            if [ -z "$struck" ]; then
                [[ $kind == memory* ]] || break
                continue # as it was another order of events, there were fewer
            fi
            judge
        done
    done
    back_to_begin
    [ "$before" != "$failures" ] || right "$name: an exit code that is true, a reason, and nothing lost, whatever failed"
}

new_places=0
whole=$(ours -m one export)
echo before >"$scratch/saved.yaml"
for case in "${cases[@]}"; do
    [ ${#chosen[@]} = 0 ] || is_one_of "${case%% *}" "${chosen[@]}" || continue
    torture "$case"
done

# What is saved is on the disk before it takes the place of the old file.
name=save kind=kill-before order=
for nth in {1..20}; do
    strike writes "$nth" "$kind" "$DISPLAYCTL" -c "$config" -m one export -o "$scratch/saved.yaml" </dev/null
    [ -n "$struck" ] || break
    order+="$struck "
done
expect 'what is saved is flushed, and then takes its place' 'writev fsync rename ' "$order"
strike_table
strike_end
rm -rf "$config" "$profile" "$stranger" "$scratch/wrong.yaml" "$scratch"/saved.yaml* "$scratch/kept"
ctl_end
report
