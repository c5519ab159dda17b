#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The files that are kept, against what can become of them: endurance.sh [EVERY]. Each is cut off at each length (large ones at
# each record or page, one byte before it and one behind; with EVERY at every so manyth of these lengths), filled with garbage, of a newer
# version; and it is written on a disk that is full from each write on, and by a program that is killed before each write
# and in the midst of it. Then it is read as before, or the error names the file; nothing that had been acknowledged is lost.
# (displayctl's own files while it changes a monitor: client.sh.)
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

desk_begin
strike_begin
strike_host
host_options=(--audit "$scratch/audit" --audit-size 4096 --audit-files 4)
desk_start
ctl_environment admin
displayctl() { "$DISPLAYCTL" -m "$(url admin)" --yes "$@" </dev/null; }
desk_password >"$scratch/password"

state=$scratch/state/displayctl
accounts=$directory/accounts
audit=$scratch/audit
profile=$scratch/house.yaml
store=$directory/monitor.db
damages=0

# The audit log is the object manager's: a change is asked for while its calls fail. What it says that it has done stands in
# the log afterwards.
value=10
audited() {
    local kind nth begin=$failures acknowledged
    name='audit log'
    for kind in full-disk full-disk+ kill-before kill-after; do
        for nth in {1..8}; do
            value=$((value == 30 ? 5 : value + 1))
            case $kind in
            full-disk) strike_other full-disk "$nth" fail "${change[@]}" "osd.timeout=$value" </dev/null ;;
            full-disk+) strike_other full-disk "$nth+" fail "${change[@]}" "osd.timeout=$value" </dev/null ;;
            *) strike_other writes "$nth" "$kind" "${change[@]}" "osd.timeout=$value" </dev/null ;;
            esac
            [ -n "$struck" ] || continue
            acknowledged=$result
            count_outcome "$name, written, $kind" "$struck: $result"
            damages=$((damages + 1))
            if [[ $kind == kill-* ]]; then
                { wait "${desk_host[$desk]}" || true; } 2>/dev/null # the shell would tell of it
                desk_host[$desk]=
                host_start
                change=("$DISPLAYCTL" -m "$(url admin)" --yes set)
            fi
            value=$((value == 30 ? 5 : value + 1))
            eventually "a change after $kind, $struck" change_is_made
            said=$("$program" audit verify "$audit" 2>&1) || failed "$name, $kind, $struck: it does not verify: $said"
            [ "$acknowledged" != 0 ] || grep -qh "\"MenuAndMessageTimeOut\":\"$((value - 1))\"" "$audit"* ||
                failed "$name, $kind, $struck: what was acknowledged is not in it"
        done
    done
    [ "$begin" != "$failures" ] || right "$name: on a full disk, and killed while it is written"
}
change_is_made() { "${change[@]}" "osd.timeout=$value" </dev/null >/dev/null 2>&1; }
change=("$DISPLAYCTL" -m "$(url admin)" --yes set)
audited
host_stop
rm -rf "$audit"* "$state"
monitor set menu_timeout 15
host_start

# ---- what there is ----

displayctl set osd.timeout=20 >/dev/null
displayctl set osd.timeout=21 preset.3.luminance=110 >/dev/null
displayctl export -o "$profile"
journal=$state/journal/127.0.0.1_${port}_root_cimv2.jsonl
cat >"$scratch/journal" <<'JOURNAL'
{"begin":"set","profile":"","monitor":"house"}
{"step":0,"temporary":false,"changes":[{"setting":"osd.timeout","old":20,"new":21}],"beside":[]}
{"done":0}
JOURNAL


# A line each: the name; the file; where it is cut off; how it is read, what is said of a whole one, and what else may be said, in full
# and with success, of one of which the end is missing (a regular expression, as what is told apart from a line that is
# left out); what the error names. Garbage is never read with success; of a journal it is told.
# shellcheck disable=SC2016
table="
accounts|$accounts|bytes|$program account list --accounts $accounts|admin operator\nviewer operator|(admin operator( locked)?(\nviewer operator( locked)?)?)?|$accounts
history|$state/history.jsonl|lines|displayctl history --verify|3 lines, none of them altered, removed or added|none|history.jsonl, line
head of the history|$state/history.head|bytes|displayctl history --verify|3 lines, none of them altered, removed or added|none|history.head
journal|$journal|bytes|displayctl get osd.timeout|displayctl: a change of 127.0.0.1:$port was interrupted (set ): undo takes it back, apply goes on\n21|(displayctl: a change of .*\n)?21|$journal
profile|$profile|lines|displayctl diff $profile|unchanged|unchanged|$profile
audit log|$audit|lines|$program audit verify $audit|5 lines, each as it was written|none|$audit
head of the audit log|$audit.head|bytes|$program audit verify $audit|5 lines, each as it was written|none|$audit.head
store|$store|pages|$DESK_COMMAND show menu_timeout|21|21|$store
"

read_it() { # read_it COMMAND: what it says, and its exit code
    local code=0
    said=$($1 2>&1 </dev/null) || code=$?
    result=$code
}
shown() { printf '%s' "${said//$'\n'/\\n}" | tr -d '\0' | cut -c1-300; }

lengths_of() { # lengths_of FILE bytes|lines|pages
    local size line
    size=$(stat -c %s "$1")
    case $2 in
    bytes) seq 0 "$((size - 1))" ;;
    lines) awk '{ at += length($0) + 1; print at - 1; print at; print at + 1 }' "$1" | awk -v size="$size" '$1 < size' ;;
    pages) seq 4096 4096 "$size" | awk -v size="$size" '{ for (i = $1 - 1; i <= $1 + 1; ++i) if (i < size) print i }' ;;
    esac | awk -v every="$every" 'NR % every == 0 || NR == 1'
}

damage() { # damage WHAT: judges how the file is read that has been damaged so
    count_outcome "$name, ${1%% *}" "exit code $result"
    damages=$((damages + 1))
    if [ "$result" = 0 ]; then
        [[ $said =~ ^($allowed)$ ]] || failed "$name, $1: it is read as if it were whole: $(shown)"
    elif [ "$name, $result" = 'profile, 7' ]; then
        : # a value of which the end is missing is another one, and that is told
    elif [ "$result" != 1 ] && [ "$result" != 2 ]; then
        failed "$name, $1: the reader ends with $result: $(shown)"
    elif [[ $said != *"$names"* ]]; then
        failed "$name, $1: the error does not name it: $(shown)"
    fi
    cp "$scratch/whole" "$file"
}

each_file() {
    local before size
    while IFS='|' read -r name file lengths reader whole also names; do
        [ -n "$name" ] || continue
        [ "$name" != store ] || desk_rests
        [ "$name" != journal ] || cp "$scratch/journal" "$journal"
        whole=$(printf '%b' "$whole") also=$(printf '%b' "$also")
        before=$failures
        cp "$file" "$scratch/whole"
        read_it "$reader"
        expect "$name, whole" "$whole 0" "$said $result"
        size=$(stat -c %s "$file")
        for length in $(lengths_of "$file" "$lengths"); do
            allowed=$also
            # Where the last newline alone is missing, nothing is.
            [ "$lengths" = pages ] || ((length + 1 < size)) || allowed+="|$whole"
            truncate -s "$length" "$file"
            read_it "$reader"
            damage "cut off at $length"
        done
        allowed=none
        [ "$name" != journal ] || allowed="displayctl: $names is damaged"$'\n21'
        head -c 500 /dev/zero | tr '\0' '\201' >"$file"
        echo >>"$file"
        read_it "$reader"
        damage 'garbage'
        tr '[:print:]\n' '[\0*]' <"$scratch/whole" >"$file"
        echo >>"$file"
        read_it "$reader"
        damage 'zeros'
        read_it "$reader"
        expect "$name, whole again" "$whole 0" "$said $result"
        [ "$name" != journal ] || rm "$journal"
        [ "$before" != "$failures" ] || right "$name: it is read, or the error names it"
    done <<<"$table"
}
# The store is the desk monitor's alone.
desk_rests() {
    host_stop
    engine_stop
}

# ---- written ----

# A line each: the name; the file; how it is written, and read; what is read before, and after.
written="
accounts|$accounts|$program account add --accounts $accounts fresh|$program account list --accounts $accounts|admin operator\nviewer operator|admin operator\nfresh operator\nviewer operator
store|$store|$DESK_COMMAND set menu_timeout 9|$DESK_COMMAND show menu_timeout|21|9
"

stroke() { # stroke ACTION: judges what is left by a writer whose call has failed, or that was killed there
    local ended=$result told=$errors
    count_outcome "$name, written, $kind" "${struck}: $ended"
    damages=$((damages + 1))
    if [[ $kind == kill-* ]]; then
        [ "$ended" = 'signal 9' ] || failed "$name, $kind, $struck: it was to be killed, and ended with $ended"
    elif [ "$ended" != 0 ]; then
        [ "$ended" = 1 ] || failed "$name, $kind, $struck: it ends with $ended"
        [[ $told == *"$file"* ]] || failed "$name, $kind, $struck: the error does not name the file: $told"
    fi
    read_it "$reader"
    case "$ended $said $result" in
    "0 $after 0" | [!0]*" $before 0" | 'signal 9'*" $after 0") ;;
    *) failed "$name, $kind, $struck: the writer ended with $ended ($told), and then there is: $(shown) $result" ;;
    esac
    # Whatever was left does not hinder the next one.
    $writer <"$scratch/password" >/dev/null 2>&1 || failed "$name, $kind, $struck: the next writer is hindered"
    read_it "$reader"
    [ "$said $result" = "$after 0" ] || failed "$name, $kind, $struck: after the next writer there is: $(shown)"
    rm -f "$file-wal" "$file-shm" "$file-journal"
    cp "$scratch/whole" "$file"
}

each_writer() {
    local kind nth begin
    while IFS='|' read -r name file writer reader before after <&3; do
        [ -n "$name" ] || continue
        before=$(printf '%b' "$before") after=$(printf '%b' "$after") begin=$failures
        cp "$file" "$scratch/whole"
        read -ra program_and_arguments <<<"$writer"
        for kind in full-disk full-disk+ kill-before kill-after; do
            for ((nth = 1; ; ++nth)); do
                case $kind in
                full-disk) strike full-disk "$nth" fail "${program_and_arguments[@]}" <"$scratch/password" ;;
                full-disk+) strike full-disk "$nth+" fail "${program_and_arguments[@]}" <"$scratch/password" ;;
                *) strike writes "$nth" "$kind" "${program_and_arguments[@]}" <"$scratch/password" ;;
                esac
                [ -n "$struck" ] || break
                stroke
            done
            rm -f "$file-wal" "$file-shm"
            cp "$scratch/whole" "$file"
        done
        [ "$begin" != "$failures" ] || right "$name: on a full disk, and killed while it is written"
    done 3<<<"$written"
}

each_file
each_writer
strike_table
echo "$damages damages"
rm "$DISPLAY_HOST" "$scratch"/{journal,house.yaml,password,whole} "$audit"*
strike_end
ctl_end
report
