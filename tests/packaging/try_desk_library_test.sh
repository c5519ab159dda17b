#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# tools/try-support-library finds nothing wrong with the desk's support library, while its engine runs; without the engine it
# names what is not answered.
#
#   try_desk_library_test.sh SOURCE_DIR ENGINE LIBRARY HOST PROVIDER COMMAND
set -eu
here=$(dirname "$0")
. "$here/check.sh"
source=$1 engine=$2 library=$3
export DISPLAY_HOST="$4" DISPLAY_LIBRARY="$5"
command=$6
for file in "$engine" "$library" "$DISPLAY_HOST" "$DISPLAY_LIBRARY" "$command"; do
    [ -e "$file" ] || { echo "Skipped: $file is not built."; exit 77; }
done
scratch
export DESK_MONITOR_STORE="$scratch/monitor.db"
export DESK_MONITOR_QUEUE_KEY=$((0x62000000 + $$ * 16))
"$engine" --remove-queues --ready-file "$scratch/ready" >"$scratch/log" 2>&1 &
process=$!
trap 'kill "$process" 2>/dev/null || true; wait "$process" || true; rm -rf "$scratch"' EXIT
tries=0
until [ -s "$scratch/ready" ] || [ "$tries" -gt 600 ]; do
    tries=$((tries + 1))
    sleep 0.1
done
identity() { for each in display_name deployment_location deployment_date; do "$command" show "$each"; done; }
check_only() { # check_only: the table in $scratch/out; what the three functions change is afterwards as it was
    before=$(identity)
    status=0
    "$source/tools/try-support-library" --seconds 120 --check-only "$library" >"$scratch/out" 2>&1 || status=$?
    expect "its status, $1" 0 "$status"
    expect "what is wrong, $1" '' "$(grep '^WRONG' "$scratch/out" || true)"
    expect "what is right, $1" 26 "$(grep -c '^right' "$scratch/out")"
    expect "name, place and date, $1" "$before" "$(identity)"
}
updates() { sed -n 's/^right  \(Update[A-Za-z]*\) */\1: /p' "$scratch/out"; }
check_only 'without a name'
expect 'a name that could not be taken back is not given' 'UpdateDisplayName: none stands, and it takes no empty one: no other was tried, which could not be taken back
UpdateDeploymentDate: 
UpdateDeploymentLocation: ' "$(updates)"
"$command" set display_name 'Grading 1' >/dev/null
check_only 'with a name'
expect 'all three are changed and taken back' 'UpdateDisplayName: 
UpdateDeploymentDate: 
UpdateDeploymentLocation: ' "$(updates)"
expect 'what to set' 1 "$(grep -c '^Set in the object manager: nothing; it may call several at once' "$scratch/out")"

cp "$library" "$scratch/under-test.so"
"$source/tools/try-support-library" --seconds 120 "$scratch/under-test.so" >"$scratch/out" 2>&1 &
trial=$!
trap 'kill "$trial" "$process" 2>/dev/null || true; wait; rm -rf "$scratch"' EXIT
tries=0
until grep -q '^listening on' "$scratch/out" && grep -q '^Serving' "$scratch/out" || [ "$tries" -gt 600 ]; do
    tries=$((tries + 1))
    sleep 0.1
done
host=$(ps -o pid=,comm= --ppid "$trial" | awk '$2 == "display-host" { print $1 }')
url=$(sed -n 's/^listening on //p' "$scratch/out")
password=$(sed -n 's/^Serving .* password //p' "$scratch/out")
printf 'user = "admin:%s"\n' "$password" >"$scratch/login"
curl -s --config "$scratch/login" -H 'CIMOperation: MethodCall' -H 'CIMMethod: EnumerateInstances' -H 'CIMObject: root/cimv2' \
    -H 'Content-Type: application/xml' -o "$scratch/answer" --data-binary '<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME="EnumerateInstances"><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="cimv2"/></LOCALNAMESPACEPATH><IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="ZT_Marovelton_Monitor"/></IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>' "$url" || true
expect 'it serves the monitor' 1 "$(tr -d '\n' <"$scratch/answer" | grep -c '<VALUE>ZT:Marovelton_Monitor</VALUE>')"
expect 'with the library under test alone' "$scratch/under-test.so" "$(awk '/under-test|monitor_support/ { print $6 }' "/proc/$host/maps" | sort -u)"
status=0
kill -TERM "$trial"
wait "$trial" || status=$?
expect 'it ends when told to' '1 gone' "$status $([ -d "/proc/$host" ] || echo gone)"
report
