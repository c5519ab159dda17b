#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The files that are kept, when their disk is full, when they are cut off, full of garbage, or of a newer version: each says what
# is wrong, and nothing is lost that had been acknowledged. (Killed while they are written: client.killed, the tests of
# HistoryFile, JournalFile, Audit and Store, and endtoend.soak.)
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=displayctl.sh
. "$(dirname "$0")/displayctl.sh"
desk_start
host_options=(--audit "$directory/audit")
host_stop
host_start
name=127.0.0.1:$port

# try COMMAND...: what it says, and its exit code at the end. try_full: no file of it can grow, as on a full disk.
try() {
    local code=0 said
    said=$("$@" 2>&1 </dev/null) || code=$?
    answer=${said:+$said }$code
}
without_room() { (
    trap '' XFSZ
    ulimit -f 0
    "$@"
); }
expect_try() { # expect_try WHAT EXPECTED COMMAND...
    local what=$1 expected=$2
    shift 2
    try "$@"
    expect "$what" "$expected" "$answer"
}
garbage() { head -c 300 /dev/zero | tr '\0' '\201'; }
to_full() { displayctl "$@" >/dev/full; }
displayctl() { "$DISPLAYCTL" -m "$(url admin)" --yes "$@"; }
ctl_environment admin

echo 'Accounts'
accounts=$directory/accounts
kept=$(<"$accounts")
add_account() { desk_password | "$DISPLAY_HOST" account add --accounts "$accounts" fresh; }
expect_try 'a full disk takes no account' "display-host: $accounts: File too large 1" without_room add_account
expect 'the others are still there' "$kept" "$(<"$accounts")"
garbage >"$accounts"
expect_try 'garbage is no account' "display-host: $accounts:1: expected \"user:hash\" 1" \
    "$DISPLAY_HOST" account list --accounts "$accounts"
printf '%s\n' "$kept" >"$accounts"

echo 'Profiles'
profile=$scratch/house.yaml
displayctl export -o "$profile"
kept=$(<"$profile")
expect_try 'a full disk takes no profile' "displayctl: the file $profile cannot be written 2" \
    without_room "$DISPLAYCTL" -m "$(url admin)" export -o "$profile"
expect 'the one before is still there' "$kept" "$(<"$profile")"
printf '%s\n' "${kept/#displayctl: 1/displayctl: 2}" >"$profile"
expect_try 'one of a newer version' "displayctl: $profile:1: profiles of this version of displayctl have 'displayctl: 1' 2" \
    displayctl apply "$profile"
: >"$profile"
expect_try 'one that is cut off before its first line' \
    "displayctl: $profile: this is no profile: it does not begin with 'displayctl: 1' 2" displayctl apply "$profile"
printf '%s' "${kept%%overscan*}overscan: o" >"$profile"
try displayctl apply "$profile"
expect 'one that is cut off within a value' "picture.overscan cannot be 'o'; it takes on off 2" "${answer#"displayctl: $profile:"*: }"
expect_try 'one whose reading fails' 'displayctl: the profile /proc/self/mem cannot be read 2' displayctl apply /proc/self/mem
garbage >"$profile"
try displayctl apply "$profile"
expect 'garbage is refused' 2 "${answer##* }"
expect_property ImageAdjustment OverscanFrame FALSE

echo 'History'
state=$scratch/state/displayctl
displayctl set osd.timeout=20 >/dev/null
displayctl set osd.timeout=21 >/dev/null
expect_try 'a full disk takes no change' \
    "displayctl: $state/journal/${name/:/_}_root_cimv2.jsonl cannot be written: File too large 1" \
    without_room "$DISPLAYCTL" -m "$(url admin)" set osd.timeout=22
expect_property OSDMenuAndMessages MenuAndMessageTimeOut 21
whole='lines, none of them altered, removed or added 0'
expect_try 'the history is whole' "2 $whole" displayctl history --verify
mv "$state/history.jsonl" "$scratch/kept"
mkdir "$state/history.jsonl"
expect_try 'where it cannot be written, nothing is sent' "displayctl: $state/history.jsonl cannot be opened: Is a directory 1" \
    displayctl set osd.timeout=23
expect_property OSDMenuAndMessages MenuAndMessageTimeOut 21
rmdir "$state/history.jsonl"
mv "$scratch/kept" "$state/history.jsonl"
expect_try 'where what it prints cannot be written, it says so' 'displayctl: the results cannot be written 1' to_full get osd.timeout
expect_try 'a change is made all the same, and it does not say that it was refused' 'displayctl: the results cannot be written 6' \
    to_full set osd.timeout=22
expect_property OSDMenuAndMessages MenuAndMessageTimeOut 22
expect_try 'and can be taken back' 'osd.timeout  restored: 21 0' displayctl undo
cp "$state/history.jsonl" "$scratch/kept"
truncate -s -20 "$state/history.jsonl"
try displayctl history --verify
expect 'one that is cut off does not verify' 1 "${answer##* }"
garbage >"$state/history.jsonl"
try displayctl history --verify
expect 'nor does garbage' 1 "${answer##* }"
cp "$scratch/kept" "$state/history.jsonl"
expect_try 'as it was it does' "4 $whole" displayctl history --verify
expect_try 'and undo knows the change' 'osd.timeout  restored: 20 0' displayctl undo

echo 'Journal'
cat >"$scratch/two.yaml" <<CONFIG
monitors:
  one: { url: "http://admin@$name" }
  same: { url: "http://admin@localhost:$port" }
CONFIG
journal=$state/journal/${name/:/_}_root_cimv2.jsonl
{ garbage; echo; } >"$journal"
expect_try 'garbage hinders nobody who reads' "displayctl: $journal is damaged
20 0" displayctl get osd.timeout
expect_try 'but who changes something' "displayctl: $journal is damaged
displayctl: $journal is damaged 1" displayctl set osd.timeout=24
try "$DISPLAYCTL" -c "$scratch/two.yaml" -m all set osd.timeout=24
expect 'and nobody who changes another monitor' "displayctl: $journal is damaged
one  $journal is damaged
same  osd.timeout  20 -> 24 5" "$(sort <<<"${answer% 5}") ${answer##* }"
rm "$journal" "$scratch/two.yaml"

echo 'Audit log'
audit=$directory/audit
lines=$(wc -l <"$audit")
host_stop
truncate -s -20 "$audit"
try "$DISPLAY_HOST" audit verify "$audit"
expect 'one that is cut off does not verify' 1 "${answer##* }"
host_start
expect 'the program goes on, and says so' 1 "$(grep -c 'does not end as it did; display-host audit verify tells more' "$directory/host.log")"
ctl_environment admin
displayctl set osd.timeout=25 >/dev/null
expect 'what is done is recorded behind it' 1 "$(tail -n 1 "$audit" | grep -c '"MenuAndMessageTimeOut":"25"')"
expect 'what was recorded before is still there' "$((lines - 1))" "$(head -n "$((lines - 1))" "$audit" | grep -c '"previous":"[0-9a-f]*"}$')"

echo 'Store'
host_stop
engine_stop
store=$directory/monitor.db
cp "$store" "$scratch/kept"
expect_store() { # expect_store WHAT TEXT: with the store as it is now
    expect_try "$1" "desk-monitor: settings store $store $2 1" monitor show menu_timeout
    expect_try "$1, and nothing is set" "desk-monitor: settings store $store $2 1" monitor set menu_timeout 9
    cp "$scratch/kept" "$store"
}
truncate -s 5000 "$store"
expect_store 'one that is cut off' 'cannot be used: database disk image is malformed'
garbage >"$store"
expect_store 'garbage' 'cannot be used: file is not a database'
printf '\0\0\0\143' | dd of="$store" bs=1 seek=60 conv=notrunc status=none # the version of its schema
expect_store 'one of a newer version' 'was made by a newer desk monitor'
try without_room "$DESK_COMMAND" set menu_timeout 9
expect 'a full disk takes no setting' 1 "${answer##* }"
expect_try 'what was acknowledged is still there' '25 0' monitor show menu_timeout
engine_start
host_start
expect_property OSDMenuAndMessages MenuAndMessageTimeOut 25

rm "$profile" "$scratch/kept"
ctl_end
report
