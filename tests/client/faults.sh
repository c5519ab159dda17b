#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Every fault that the desk knows, and what displayctl makes of it: outcome, exit code, the monitor's own text, what it
# means. Then an object manager that is gone, silent, or not to be trusted.
#
# The library waits a second for a reply of the engine: only where none is to come does anything wait so long.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=displayctl.sh
. "$(dirname "$0")/displayctl.sh"

long=$patience
wait_for_replies() { # wait_for_replies SECONDS: so long does the library wait from now on
    host_stop
    DESK_MONITOR_RECEIVE_TIMEOUT=$1 host_start
}
export DESK_MONITOR_RECEIVE_TIMEOUT=$long
desk_start

busy='the display engine is busy with something else; try again in a moment'
silent='the display engine gave no answer in time; see that the monitor is on, and try again'
cut_off='the monitor cannot reach its display engine; its controller has to be started again if this stays'
unreadable='the monitor cannot read its own records; its controller has to be started again if this stays'

# expect_failure WHAT CODE OUTCOME MESSAGE RULE ARGUMENTS: for people and as JSON.
expect_failure() {
    local what=$1 code=$2 outcome=$3 message=$4 rule=$5
    shift 5
    ctl --json "$@"
    expect "$what, in JSON" "$code: {\"monitor\":\"127.0.0.1:$port\",\"outcome\":\"$outcome\",\"message\":\"$message\",\"rule\":\"$rule\"}" \
        "$result: $output"
    ctl "$@"
    expect "$what" "$code: displayctl: $message
  the rule           $rule" "$result: $errors"
}
# expect_refused_change WHAT CODE TEXT RULE SETTING=VALUE
expect_refused_change() {
    ctl set "$5"
    expect "$1" "$2: refused: ${5%%=*} (127.0.0.1:$port)
  the monitor says   $3${4:+
  the rule           $4}" "$result: $errors"
}

echo 'A busy engine'
monitor fault busy on
expect_failure 'what needs the engine is not read' 1 busy 'Device is Busy. Please try after some time..' "$busy" get monitor.power
expect_ctl 'what needs no engine is' 0 15 get osd.timeout
expect_refused_change 'a change is refused' 1 'Device is Busy. Please try after some time.' "$busy" osd.timeout=20
expect_failure 'nobody knows what would be accepted' 1 busy 'Device is Busy. Please try after some time..' "$busy" why pip.mode=pip
monitor fault clear
expect_ctl 'afterwards it is accepted' 0 'osd.timeout  15 -> 20' set osd.timeout=20

echo 'An engine that is slow'
monitor fault slow on 0.3
expect_ctl 'a slow answer is waited for' 0 'osd.timeout  20 -> 25' set osd.timeout=25
monitor fault clear

echo 'A monitor that cannot be read, or written'
monitor fault fail-read on
expect_failure 'nothing is shown' 1 refused "Couldn't build instance" "$unreadable" get osd.timeout
expect_failure 'nothing is changed' 1 refused "Couldn't build instance" "$unreadable" set osd.timeout=30
monitor fault clear
monitor fault fail-update on
expect_refused_change 'a name that cannot be kept' 1 'Failed to update.' \
    'the monitor could not write its records; its controller has to be started again if this stays' monitor.name=Suite
monitor fault clear
monitor fault fail-user on
expect_refused_change 'a user who cannot be looked up' 1 'The user could not be looked up.' '' monitor.name=Suite
monitor fault clear

echo 'No way to the engine'
monitor fault fail-queue on
expect_failure 'no queue: not read' 1 refused 'Unable to create a message queue for sending message.' "$cut_off" get monitor.power
expect_refused_change 'no queue: not changed' 1 'Unable to create a message queue for sending message.' "$cut_off" osd.timeout=30
monitor fault clear
monitor fault fail-send on
expect_failure 'nothing is sent: not read' 1 refused 'Unable to send value to SPEAr.' "$cut_off" get monitor.power
expect_refused_change 'nothing is sent: not changed' 1 'Unable to send value to SPEAr.' "$cut_off" osd.timeout=30
monitor fault clear
expect_ctl 'nothing was changed' 0 25 get osd.timeout

echo 'Replies that do not come'
wait_for_replies 1
monitor fault silent on
expect_ctl 'what was applied is found by reading back' 0 'osd.timeout  25 -> 30' set osd.timeout=30
expect_failure 'what only the engine knows is not read' 1 refused 'Failed to read the value from spear.' "$silent" get monitor.power
ctl set management.dp-compatibility=on
expect 'what cannot be read back, nobody can know' "6: unknown: management.dp-compatibility (127.0.0.1:$port)
  what happened      Failed to set the value to DisplayPortComapatibility.
  the rule           $silent" "$result: $errors"
monitor fault clear
monitor fault lose-reply on 1
expect_ctl 'a reply that was lost' 0 'osd.timeout  30 -> 5' set osd.timeout=5
monitor fault clear
monitor fault fail-receive on
expect_failure 'replies that cannot be received' 1 refused 'Failed to read the value from spear.' "$silent" get monitor.power
monitor fault clear
engine_stop
expect_failure 'no engine at all' 1 refused 'Failed to read the value from spear.' "$silent" get monitor.power
engine_start
wait_for_replies "$long"
expect_ctl 'all is well again' 0 on get monitor.power

echo 'An object manager that is silent, or gone'
kill -s STOP "${desk_host[$desk]}"
ctl --timeout 0.5 get osd.timeout
expect 'no answer in time' "3: displayctl: no answer from 127.0.0.1:$port within 0.5 s" "$result: $errors"
kill -s CONT "${desk_host[$desk]}"
gone=$(url admin)
where=127.0.0.1:$port
host_stop
ctl_environment admin
run_ctl -m "$gone" get osd.timeout
expect 'nobody there' "3: displayctl: no connection to $where: Connection refused" "$result: $errors"
run_ctl -m "$gone" --json get osd.timeout
expect 'nobody there, in JSON' \
    "3: {\"monitor\":\"$where\",\"outcome\":\"unreachable\",\"message\":\"no connection to $where: Connection refused\"}" "$result: $output"

echo 'Login and rights'
host_start
DISPLAYCTL_PASSWORD=wrong run_ctl -m "$(url admin)" get osd.timeout
expect 'a wrong password' "4: displayctl: 127.0.0.1:$port does not accept the login of admin; is the password right?" "$result: $errors"
ctl_as viewer set monitor.name=Suite
expect 'missing rights' "4: refused: monitor.name (127.0.0.1:$port)
  the monitor says   Operation not allowed for non-admin user credentials
  the rule           only administrators of the monitor may do this" "$result: $errors"

echo 'A certificate that is not trusted'
host_stop
"$DISPLAY_HOST" certificate --certificate "$scratch/certificate.pem" --key "$scratch/key.pem" >/dev/null
desk_start_host "$directory" 0 --certificate "$scratch/certificate.pem" --key "$scratch/key.pem" --https-port 0
desk_host[$desk]=$desk_process
eventually 'the object manager listens with TLS' is_ready ready
ctl_environment admin
secure=$(sed -n 's,.*https://\([^/]*\)/.*,\1,p' "$directory/ready" | head -n 1)
run_ctl -m "https://admin@$secure" get osd.timeout
expect 'it is refused, and says how to trust it' \
    "3: displayctl: the certificate of $secure is not trusted (self-signed certificate); ca-file or --ca-file names the authorities to trust" \
    "$result: $errors"
run_ctl -m "https://admin@$secure" --ca-file "$scratch/certificate.pem" get osd.timeout
expect 'with its authority' '0: 5' "$result: $output"
run_ctl -m "https://admin@$secure" --insecure get osd.timeout
expect 'told not to look' '0: 5' "$result: $output"
run_ctl -m "http://admin@$secure" get osd.timeout
expect 'http where https is spoken' 3 "$result"
rm "$scratch/certificate.pem" "$scratch/key.pem"

ctl_end
report
