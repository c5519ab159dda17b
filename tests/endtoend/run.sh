#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The script ./run as its user has it: what it prints and keeps, what it restarts, what it says when something is wrong,
# and that nothing is left when it ends. It runs the programs that the environment names (see CMakeLists.txt), and
# builds none.
#
#   run.sh [MONITORS]     with a number: that many monitors at once, and nothing else
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source_dir=$(cd "$here/../.." && pwd)
# shellcheck source=../packaging/check.sh
. "$source_dir/tests/packaging/check.sh"
command -v curl >/dev/null || { echo 'Skipped: curl is not installed.'; exit 77; }
scratch
trap 'end_run KILL; rm -rf "$scratch"' EXIT
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:exitcode=99}

running=
eventually() { # eventually WHAT COMMAND...
    local what=$1 end=$((SECONDS + 120))
    shift
    until "$@"; do
        ((SECONDS < end)) || { failed "$what: not within 120 seconds"; cat "$scratch/output"; exit 1; }
        sleep 0.05
    done
}
# A process group of its own, in which Ctrl-C counts as in a terminal.
begin_run() { # begin_run [SETTING=VALUE...] [-- ARGUMENT...]
    local settings=()
    while [ $# -gt 0 ] && [ "$1" != -- ]; do
        settings+=("$1")
        shift
    done
    : >"$scratch/output"
    DESK_DIR=$scratch/desk DESK_PORT=0 setsid env --default-signal=INT "${settings[@]}" "$source_dir/run" "${@:2}" \
        >"$scratch/output" 2>&1 &
    running=$!
    eventually 'it serves' serves_or_ended
}
serves_or_ended() { grep -q '^  displayctl .*why' "$scratch/output" || ! kill -0 "$running" 2>/dev/null; }
end_run() { # end_run SIGNAL: its exit code in $ended
    [ -n "$running" ] || return 0
    ended=0
    { kill -s "$1" "$running" || true; wait "$running" || ended=$?; } 2>/dev/null
    eventually 'no process of it is left' group_is_gone
    running=
}
group_is_gone() { ! kill -0 -- "-$running" 2>/dev/null; }
password_of() { sed -n "s/^export DESK_${1}_PASSWORD='\(.*\)'\$/\1/p" "$scratch/desk/env"; }
url() { sed -n 's|.*url: "\(http[^"]*\)".*|\1|p' "$scratch/desk/monitors.yaml" | sed -n "${1-1}p"; }
answers() { # answers URL PASSWORD: the status of a request as the administrator
    curl -sk -o "$scratch/answer" -w '%{http_code}' --config <(printf 'user = "admin:%s"\n' "$2") -H 'CIMOperation: MethodCall' \
        -H 'CIMMethod: EnumerateInstanceNames' -H 'CIMObject: root/cimv2' -H 'Content-Type: application/xml' \
        --data-binary '<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME="EnumerateInstanceNames"><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="cimv2"/></LOCALNAMESPACEPATH><IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="ZT_Marovelton_Monitor"/></IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>' \
        "$1/cimom" || true
}
process_of() { # process_of NAME: the youngest of the group with that program
    local process
    for process in $(ps -o pid= --ppid "$running"); do
        [[ $(tr '\0' ' ' <"/proc/$process/cmdline" 2>/dev/null) != *"$1"* ]] || echo "$process"
    done | tail -1
}

# What belongs to the processes of the desks, what several share split among them; the screen is one, not one of each desk.
kilobytes_of_each() { # kilobytes_of_each COUNT
    local process
    for process in $(ps -o pid= --ppid "$running"); do
        [[ $(tr '\0' ' ' <"/proc/$process/cmdline") == *desk-screen* ]] || awk '/^Pss:/ { print $2 }' "/proc/$process/smaps_rollup"
    done | awk -v count="$1" '{ sum += $1 } END { print int(sum / count) }'
}
many() { # many COUNT: so many monitors at once
    local each
    begin_run DESK_PASSWORD='a new one' -- --monitors "$1"
    expect "$1 monitors: all answer" "$1" "$(for ((each = 1; each <= $1; ++each)); do answers "$(url "$each")" 'a new one'; echo; done | grep -cx 200)"
    expect 'all are in the list' "$(seq -f 'desk-%g' -s ' ' "$1")" "$(sed -n 's/^  \(desk-[0-9]*\): .*/\1/p' "$scratch/desk/monitors.yaml" | paste -sd' ')"
    expect 'each has a store of its own' "$1" "$(find "$scratch"/desk/[0-9]*/monitor.db | wc -l)"
    expect 'all are one process group' "$running" "$(ps -o pgid= --ppid "$running" | sort -u | tr -d ' ')"
    expect 'two processes each, and the screen of the first' $((2 * $1 + 1)) "$(ps -o pid= --ppid "$running" | wc -l)"
    # The sanitizers' own memory is no measure.
    if [ "${SANITIZED:-}" != 1 ]; then
        memory=$(kilobytes_of_each "$1")
        echo "memory of each desk: $memory KB, less than 12288"
        expect 'which is measured, and less' yes "$([ "$memory" -gt 0 ] && [ "$memory" -lt 12288 ] && echo yes)"
    fi
    end_run INT
}
if [ $# -gt 0 ]; then
    many "$1"
    report
fi

echo '== one desk'
begin_run
expect 'it has counted what is wrong' 0 "$(grep -c WRONG "$scratch/output" || true)"
expect 'and what is right' 17 "$(grep -c '^  right: ' "$scratch/output")"
admin=$(password_of ADMIN)
viewer=$(password_of VIEWER)
expect 'its last lines are the commands to copy' "  . $scratch/desk/env
  displayctl show
  displayctl set luminance=120
  displayctl why pip.size=minimum" "$(tail -4 "$scratch/output")"
expect 'the administrator and the password are told' 1 "$(grep -c "^  admin   $admin   (administrator)\$" "$scratch/output")"
expect 'the passwords differ' yes "$([ "$admin" != "$viewer" ] && echo yes)"
screen=$(sed -n '1s|^\(http://127.0.0.1:[0-9]*/#[0-9a-f]*\)   the monitor in a browser, as soon as it serves$|\1|p' "$scratch/output")
expect 'its first line has the URL of the screen' yes "$([ -n "$screen" ] && echo yes)"
expect 'which is told at the end again, and in env' "  $screen $screen" \
    "$(grep "^  http://127.0.0.1:[0-9]*/#" "$scratch/output") $(sed -n "s/^export DESK_SCREEN_URL='\(.*\)'\$/\1/p" "$scratch/desk/env")"
expect 'the screen changes what the store holds' 'done 0' "$(curl -s -H "X-Desk-Token: ${screen#*#}" -H 'Content-Type: application/json' \
    -d '{"power": false}' "${screen%#*}change") $("$DESK_COMMAND" --store "$scratch/desk/monitor.db" show soft_power_state)"
curl -s -o "$scratch/answer" -H "X-Desk-Token: ${screen#*#}" -H 'Content-Type: application/json' -d '{"power": true}' "${screen%#*}change"
for file in env password monitors.yaml accounts key.pem screen.token ready.screen; do
    expect "$file is for its owner alone" 600 "$(stat -c %a "$scratch/desk/$file")"
done
expect 'the accounts answer' 200 "$(answers "$(url)" "$admin")"
secure=$(sed -n 's|^http://127.0.0.1:[0-9]* and \(https://127.0.0.1:[0-9]*\)   (CIM-XML at /cimom, WS-Management at /wsman, .*|\1|p' "$scratch/output")
expect 'its first line there has both URLs' "$(url)" "$(sed -n 's|^\(http://127.0.0.1:[0-9]*\) and https:.*|\1|p' "$scratch/output")"
expect 'they answer over HTTPS, too' 200 "$(answers "$secure" "$admin")"
expect 'the certificate is the one told' ok "$(curl -s --cacert "$scratch/desk/certificate.pem" -o "$scratch/answer" "$secure/" && echo ok)"
expect 'a wrong password does not' 401 "$(answers "$(url)" "not-$admin")"
# Written down first: the search itself has them on its command line.
cat /proc/[0-9]*/cmdline >"$scratch/commands" 2>/dev/null || true
expect 'no password stands on a command line' '' "$(grep -aoE "$admin|$viewer|${screen#*#}" "$scratch/commands" || true)"
expect 'and the command lines were read' yes "$(grep -aq display-host "$scratch/commands" && echo yes)"
# shellcheck source=/dev/null
store=$(. "$scratch/desk/env" && echo "$DESK_MONITOR_STORE $DESK_MONITOR_QUEUE_KEY $DISPLAYCTL_CONFIG")
key=${store#* }
expect 'the file env names store and list' "$scratch/desk/monitor.db $scratch/desk/monitors.yaml" "${store%% *} ${store##* }"
expect 'its queues are there' 2 "$(awk -v base="${key%% *}" '$1 >= base && $1 < base + 4' /proc/sysvipc/msg | wc -l)"

echo '== what it changed, it has taken back'
expect 'the place is empty as before' '' "$("$DESK_COMMAND" --store "$scratch/desk/monitor.db" show settings |
    awk '$1 == "deployment_location" { print $4 }')"
expect 'the preset is the first as before' 0 "$("$DESK_COMMAND" --store "$scratch/desk/monitor.db" show settings |
    awk '$1 == "active_color_space" { print $4 }')"

echo '== a process that dies'
host=$(process_of display-host)
kill -KILL "$host"
ended_told() { grep -q "the host of desk 1 has ended with 137 (its log: $scratch/desk/host.log); it is started again in 0 s" "$scratch/output"; }
eventually 'it tells' ended_told
answers_again() { [ "$(answers "$(url)" "$admin")" = 200 ]; }
eventually 'it is started again, on the same port' answers_again
expect 'and on the same for HTTPS' 200 "$(answers "$secure" "$admin")"
kill -KILL "$(process_of display-host)"
told_second() { grep -q 'the host of desk 1 has ended with 137 .* started again in 1 s' "$scratch/output"; }
eventually 'the second time it waits' told_second
eventually 'and starts it again' answers_again
kill -KILL "$(process_of desk-engine)"
engine_told() { grep -q 'the engine of desk 1 has ended with 137' "$scratch/output"; }
eventually 'the engine is missed as well' engine_told

echo '== a second one beside it'
port=$(url)
port=${port##*:}
result=0
said=$(DESK_DIR=$scratch/second DESK_PORT=$port "$source_dir/run" --check 2>&1) || result=$?
expect 'a busy port: its status' 1 "$result"
expect 'a busy port: who has it, and what to set' \
    "run: port $port is in use by display-host (process $(process_of display-host)); set DESK_PORT to another, or to 0 for a free one" "$said"
result=0
said=$(DESK_DIR=$scratch/second DESK_PORT=0 DESK_SCREEN_PORT=$port "$source_dir/run" --check 2>&1) || result=$?
expect 'a busy port of the screen: what to set' \
    "1 run: port $port is in use by display-host (process $(process_of display-host)); set DESK_SCREEN_PORT to another, or to 0 for a free one" \
    "$result $said"
result=0
said=$(DESK_DIR=$scratch/desk DESK_PORT=0 "$source_dir/run" --check 2>&1) || result=$?
expect 'a busy directory: what it says' "1 run: another ./run is using $scratch/desk; stop it, or set DESK_DIR and DESK_PORT for a second desk" "$result $said"

echo '== goodbye'
end_run INT
expect 'Ctrl-C: its status' 130 "$ended"
expect 'Ctrl-C: its last line' "Goodbye: nothing runs any more; settings and accounts stay in $scratch/desk." "$(tail -1 "$scratch/output")"
expect 'Ctrl-C: no queue is left' '' "$(awk -v base="${key%% *}" '$1 >= base && $1 < base + 4' /proc/sysvipc/msg)"

echo '== the next start'
certificate=$(cksum <"$scratch/desk/certificate.pem")
begin_run
expect 'the certificate is kept' "$certificate" "$(cksum <"$scratch/desk/certificate.pem")"
expect 'the token of the screen is kept' "${screen#*#}" "$(sed -n '1s|.*#\([0-9a-f]*\) .*|\1|p' "$scratch/output")"
expect 'the passwords are kept' "$admin $viewer" "$(password_of ADMIN) $(password_of VIEWER)"
end_run TERM
expect 'TERM: its status' 143 "$ended"
begin_run DESK_PASSWORD='a new one'
expect 'DESK_PASSWORD sets one' 'a new one' "$(password_of ADMIN)"
expect 'and it counts' 200 "$(answers "$(url)" 'a new one')"
end_run INT

echo '== three monitors'
many 3

echo '== what it is told wrongly'
wrongly() { # wrongly MESSAGE [SETTING=VALUE...] [-- ARGUMENT...]
    local message=$1 settings=() result=0 said
    shift
    while [ $# -gt 0 ] && [ "$1" != -- ]; do
        settings+=("$1")
        shift
    done
    said=$(env "${settings[@]}" "$source_dir/run" "${@:2}" 2>&1) || result=$?
    expect "${settings[*]} ${*:2}" "2 run: $message; see run --help" "$result $said"
}
wrongly 'no such option: --nothing' -- --nothing
wrongly "DESK_PORT is '70000', which is no port for 1 monitor(s): a number from 0 to 65535" DESK_PORT=70000
wrongly "DESK_PORT is '65534', which is no port for 3 monitor(s): a number from 0 to 65533" DESK_PORT=65534 -- --monitors 3
wrongly "DESK_PORT is 'http', which is no port for 1 monitor(s): a number from 0 to 65535" DESK_PORT=http
wrongly "DESK_SCREEN_PORT is 'web', which is no port: a number from 0 to 65535" DESK_SCREEN_PORT=web
wrongly "DESK_QUEUE_KEY is '0x', which is no key: a number, decimal or 0x..." DESK_QUEUE_KEY=0x
wrongly 'DESK_PASSWORD holds a quote, a backslash or a control character; use others' "DESK_PASSWORD=it's"
wrongly "--monitors needs a number from 1 to 999, not '0'" -- --monitors 0
wrongly "--monitors needs a number from 1 to 999, not ''" -- --monitors
expect 'a preset that is none' 1 "$(DESK_PRESET=fast "$source_dir/run" 2>&1 | grep -c "^run: DESK_PRESET is 'fast', which is no preset; those there are: dev release ")"

echo '== a checkout that was moved'
mkdir -p "$scratch/moved/build/release"
cp -r "$source_dir/run" "$source_dir/tools" "$source_dir/CMakePresets.json" "$source_dir/CMakeLists.txt" "$scratch/moved/"
echo 'CMAKE_HOME_DIRECTORY:INTERNAL=/where/it/was' >"$scratch/moved/build/release/CMakeCache.txt"
printf '#!/bin/sh\n' >"$scratch/moved/tools/install-packages"
result=0
said=$(env -u DISPLAY_HOST DESK_PORT=0 "$scratch/moved/run" 2>&1) || result=$?
expect 'it names what to remove' \
    "1 run: build/ was made when this directory was /where/it/was; remove it (rm -r build) and start again" "$result $(tail -1 <<<"$said")"
report
