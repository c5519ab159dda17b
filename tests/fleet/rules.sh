#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The rules and the dashboard of fleet/prometheus: promtool's tests of the alerts, and no metric that the exporter has not.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=../client/displayctl.sh
. "$source_dir/tests/client/displayctl.sh"
# shellcheck source=fleet.sh
. "$(dirname "$0")/fleet.sh"
needs promtool prometheus curl curl jq jq
files=$source_dir/fleet/prometheus
desk_begin

expect 'the rules are well formed' 0 "$(promtool check rules "$files/displayctl.rules.yml" >"$scratch/out" 2>&1; echo $?)"
expect 'the tests of the rules' 0 "$(cd "$files" && promtool test rules displayctl.rules.test.yml >"$scratch/out" 2>&1; echo $?)"
expect 'every alert has a test' "$(sed -n 's/.* alert: //p' "$files/displayctl.rules.yml" | LC_ALL=C sort)" \
    "$(grep -o 'alertname: [A-Za-z]*' "$files/displayctl.rules.test.yml" | sed 's/.* //' | LC_ALL=C sort -u)"
# The tests can fail: with another limit they do.
mkdir "$scratch/other"
sed 's/vector(1000)/vector(2000)/' "$files/displayctl.rules.yml" >"$scratch/other/displayctl.rules.yml"
cp "$files/displayctl.rules.test.yml" "$scratch/other"
expect 'another limit is noticed' 1 "$(cd "$scratch/other" && promtool test rules displayctl.rules.test.yml >"$scratch/out" 2>&1; echo $?)"

# ---- the metrics that there are ----

monitors_file none=http://127.0.0.1:1
DISPLAYCTL_PASSWORD=none XDG_STATE_HOME=$scratch/state exporter_start
{
    cat "$source_dir/tests/fleet/data/probe.txt"
    curl --silent --noproxy '*' "$exporter/metrics"
    # Of HTTPS alone, and what Prometheus adds.
    echo '# TYPE displayctl_certificate_expiry_timestamp_seconds gauge'
    echo '# TYPE up gauge'
    echo '# TYPE ALERTS gauge'
} | sed -n 's/^# TYPE \([^ ]*\) .*/\1/p' | LC_ALL=C sort -u >"$scratch/known"
exporter_stop
names_in() { grep -oE '\b(displayctl|process)_[a-z_0-9]+|\bup\b|\bALERTS\b' | LC_ALL=C sort -u; }
expect_known() { # expect_known WHAT: the names on standard input
    names_in >"$scratch/used"
    [ -s "$scratch/used" ] || failed "$1 uses no metric"
    expect "$1 asks for nothing else" '' "$(LC_ALL=C comm -23 "$scratch/used" "$scratch/known")"
}
expect_known 'the dashboard' < <(jq -r '.panels[].targets[].expr, (.templating.list[] | select(.type == "query").query)' "$files/dashboard.json")
expect_known 'the rules' < <(sed -n 's/.*expr: //p' "$files/displayctl.rules.yml" | sed 's/displayctl:[a-z_:]*//g')
expect 'each panel has a title and a query' '' \
    "$(jq -r '.panels[] | select((.title // "") == "" or (.targets | length) == 0) | .id' "$files/dashboard.json")"

rm -rf "$scratch"/{out,other,known,used,monitors.yaml,state}
report
