#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# shellcheck disable=SC2154 # variables of desk.sh
# The page of the screen in a real browser: a desk with its screen, Chromium with its driver, and the tests that speak with
# both. Skipped where there is no Chromium, no driver or no standard client.
#
#   DESK_SCREEN, SCREEN_TESTS       the programs, beside those that desk.sh is told
#   SCREEN_AXE                      axe.min.js; without it the tests of accessibility are skipped
#   SCREEN_PICTURES                 where screenshots are written; a directory that is gone afterwards, unless set
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
for program in chromium chromedriver; do
    command -v $program >/dev/null || {
        echo "Skipped: $program is not installed (packages chromium, chromium-driver)."
        exit 77
    }
done
# shellcheck source=../../endtoend/desk.sh
. "$here/../../endtoend/desk.sh"

export DESK_MONITOR_RECEIVE_TIMEOUT=1 # replies that never come are not worth waiting for
desk_start
engine=$directory

desk_start_screen "$engine" 0
screen=$desk_process
eventually 'the screen serves' is_ready ready.screen

chromedriver --port=0 --log-level=SEVERE >"$engine/driver.log" 2>&1 &
desk_process=$!
driver=$desk_process
driver_port() { sed -n 's/.*started successfully on port \([0-9]*\).*/\1/p' "$engine/driver.log"; }
driver_is_ready() { [ -n "$(driver_port)" ]; }
eventually 'the driver of the browser serves' driver_is_ready
browser_end() {
    local result=$?
    set +e
    kill "$screen" "$driver" 2>/dev/null
    (exit "$result")
    desk_end
}
trap browser_end EXIT

mkdir -p "$engine/profile" "${SCREEN_PICTURES:=$engine/pictures}"
export HOME=$engine/profile SCREEN_PICTURES DESK_COMMAND
SCREEN_URL=$(<"$engine/ready.screen")
SCREEN_DRIVER=http://127.0.0.1:$(driver_port)
SCREEN_BROWSER=$(command -v chromium)
SCREEN_PROFILE=$engine/profile/chromium
SCREEN_CLIENT_URL="http://admin:$(<"$engine/password.admin")@127.0.0.1:$port/root/cimv2:"
SCREEN_REFERENCE_HOST=127.0.0.1:$port
export SCREEN_URL SCREEN_DRIVER SCREEN_BROWSER SCREEN_PROFILE SCREEN_CLIENT_URL SCREEN_REFERENCE_HOST

checks=1
"$SCREEN_TESTS" "$@" || failed 'the page is not as it should be'
process_stop 'the screen' "$screen" TERM
process_stop 'the driver' "$driver" KILL
report
