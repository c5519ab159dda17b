#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The units of the object manager, as systemd itself reads and rates them.
#
#   service_test.sh DIRECTORY     where the units are
set -eu
. "$(dirname "$0")/check.sh"
units=$1
command -v systemd-analyze >/dev/null || { echo 'Skipped: there is no systemd-analyze.'; exit 77; }
scratch

# The rating of the whole unit is its last line; 0 is the least exposure.
rated() { systemd-analyze security --offline=yes --no-pager "$@" "$units/display-host.service" 2>&1; }
rated >"$scratch/rating" || true
tail -1 "$scratch/rating"
exposure=$(sed -n 's/.*Overall exposure level for display-host.service: \([0-9.]*\) .*/\1/p' "$scratch/rating")
expect 'it is rated at 1.5 or better' yes "$(awk -v exposure="$exposure" 'BEGIN { print exposure != "" && exposure <= 1.5 ? "yes" : "no: " exposure }')"
expect 'systemd-analyze says so as well' 0 "$(rated --threshold=15 >/dev/null && echo 0)"
expect 'which it would not of anything' 1 "$(rated --threshold=1 >/dev/null || echo 1)"

# All lines are understood. The program and its configuration are not where they are once installed.
mkdir "$scratch/units"
for unit in display-host.service display-host.socket display-host-https.socket; do
    sed 's|^ExecStart=/usr/bin/display-host .*|ExecStart=/bin/true|' "$units/$unit" >"$scratch/units/$unit"
done
expect 'systemd understands all lines of the units' '' "$(SYSTEMD_UNIT_PATH=$scratch/units: systemd-analyze verify --man=no "$scratch"/units/*.service \
    "$scratch"/units/*.socket 2>&1 | grep -E 'display-host' || true)"
report
