#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The commands of docs/administrator.md print what it says: each block "sh" is run, in the order of the page and in one
# shell, on a desk of the test's own, and what it prints is compared with the block "text" that follows it. There, a line
# "..." stands for any lines, and "..." within a line for any text.
#
# The programs are named by the environment, as for the scripts of tests/endtoend.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=blocks.sh
. "$(dirname "$0")/blocks.sh"
for program in curl wsl xmllint uuidgen; do
    command -v "$program" >/dev/null || {
        echo "Skipped: $program is not installed (packages curl, wsl, libxml2-utils, uuid-runtime)."
        exit 77
    }
done
# Once the page lets the engine be silent: then the time passes. Everywhere else it is there for slow machines.
export DESK_MONITOR_RECEIVE_TIMEOUT=15
DISPLAYCTL=${DISPLAYCTL:-${DESK_BUILD:-$source_dir/build/release}/client/displayctl}
desk_start
host_stop
"$DISPLAY_HOST" certificate --certificate "$directory/certificate.pem" --key "$directory/key.pem" 127.0.0.1 >/dev/null
host_start --certificate "$directory/certificate.pem" --key "$directory/key.pem" --https-port 0
https_port=$(port_of https)
cd "$source_dir"

# The page speaks of the desk of ./run.
of_this_desk() {
    sed "s|127\.0\.0\.1:5988|127.0.0.1:$port|g
         s|127\.0\.0\.1:5989|127.0.0.1:$https_port|g
         s|ADMIN_PASSWORD|$(cat "$directory/password.admin")|g
         s|VIEWER_PASSWORD|$(cat "$directory/password.viewer")|g
         s|build/release/desk/support/desk-monitor|$DESK_COMMAND|g
         s|build/release/host/display-host|$DISPLAY_HOST|g
         s|\.desk/|$directory/|g
         s|read\.xml|$directory/read.xml|g"
}

pages=$scratch/pages
mkdir "$pages"
blocks_of docs/administrator.md "$pages"

# One shell runs them all; what each of them prints goes to a file of its own. Where the page waits for the engine, which
# takes requests in their order, another request that is answered tells that it is done, however slow the machine is.
{
    # shellcheck disable=SC2016 # for the other shell
    echo 'sleep() { wbemcli ei "$viewer:ZT_Marovelton_VideoInput" >/dev/null; command sleep "$1"; }'
    # What displayctl keeps is of this test alone.
    printf 'displayctl() { XDG_CONFIG_HOME=%q XDG_STATE_HOME=%q %q "$@"; }\n' \
        "$pages/config" "$pages/state" "$DISPLAYCTL"
    for commands in "$pages"/*.sh; do
        of_this_desk <"$commands" >"$commands.here"
        printf '. %q >%q 2>&1\n' "$commands.here" "${commands%.sh}.printed"
    done
} >"$pages/all"
bash "$pages/all" </dev/null || true

for commands in "$pages"/*.sh; do
    block=${commands%.sh}
    number=$((10#${block##*/}))
    checks=$((checks + 1))
    if [ -e "$block.text" ]; then
        of_this_desk <"$block.text" >"$block.expected"
    else
        : >"$block.expected" # without a block of output nothing is printed
    fi
    if matches "$block.expected" "$block.printed"; then
        echo "  right: the commands at line $number"
    else
        failed "the commands at line $number of docs/administrator.md"
        diff -u --label 'the page' --label 'printed' "$block.expected" "$block.printed" || true
    fi
done
rm -r "$pages"
report
