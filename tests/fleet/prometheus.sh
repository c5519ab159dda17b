#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Debian's Prometheus scrapes desks through the exporter, with the scrape configuration, the rules and the dashboard of
# fleet/prometheus: a change of one desk is seen as value and as alert through its API, and so is a monitor that is dead.
#
#   prometheus.sh COUNT    so many desks
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=../client/displayctl.sh
. "$source_dir/tests/client/displayctl.sh"
# shellcheck source=fleet.sh
. "$(dirname "$0")/fleet.sh"
needs prometheus prometheus promtool prometheus curl curl jq jq
count=$1
fleet_start "$count"

mkdir "$scratch/profiles" "$scratch/prometheus"
printf 'displayctl: 1\nsettings:\n  osd: { timeout: 15 }\n' >"$scratch/profiles/house.yaml"
{
    cat "$DISPLAYCTL_CONFIG"
    echo '  dead: { url: "http://127.0.0.1:1", labels: [suite4] }'
} >"$scratch/monitors.yaml"
exporter_start --profiles "$scratch/profiles"

# The files as they are, but for the exporter's port, for times that a test can wait for.
sed "s|127\.0\.0\.1:9878|${exporter#http://}|; s|_interval: 30s|_interval: 1s|" \
    "$source_dir/fleet/prometheus/prometheus.yml" >"$scratch/prometheus/prometheus.yml"
sed 's|\( for:\) [0-9]*m$|\1 0s|' "$source_dir/fleet/prometheus/displayctl.rules.yml" >"$scratch/prometheus/displayctl.rules.yml"
expect 'promtool takes the configuration' 0 "$(promtool check config "$scratch/prometheus/prometheus.yml" >/dev/null 2>&1; echo $?)"
prometheus --config.file="$scratch/prometheus/prometheus.yml" --storage.tsdb.path="$scratch/prometheus/data" \
    --web.listen-address=127.0.0.1:0 >"$scratch/prometheus.log" 2>&1 &
prometheus=$!
ends_with_the_script "$prometheus"
prometheus_listens() {
    is_alive "$prometheus" || {
        cat "$scratch/prometheus.log"
        give_up 'prometheus has ended'
    }
    api=$(sed -n 's|.*msg="Listening on" address=\(127.0.0.1:[0-9]*\).*|http://\1/api/v1|p' "$scratch/prometheus.log")
    [ -n "$api" ]
}
eventually 'prometheus listens' prometheus_listens

query() { # query EXPRESSION: "LABELS VALUE" a line; labels other than the name, sorted
    curl --silent --noproxy '*' -G "$api/query" --data-urlencode "query=$1" |
        jq -r '.data.result[] | ((.metric | del(.__name__, .job, .labels) | to_entries | map("\(.key)=\(.value)") | join(","))
            + " " + .value[1])' | LC_ALL=C sort
}
alerts() { # alerts NAME: the instances that it fires for
    curl --silent --noproxy '*' "$api/alerts" |
        jq -r --arg name "$1" '.data.alerts[] | select(.labels.alertname == $name and .state == "firing") | .labels.instance' |
        LC_ALL=C sort
}
is_told() { [ "$(query "$2")" = "$1" ]; }       # is_told ANSWER EXPRESSION
is_fired() { [ "$(alerts "$2")" = "$1" ]; }     # is_fired INSTANCES ALERT
expect_told() {
    eventually "$1" is_told "$3" "$2"
    right "$1"
}
expect_fired() {
    eventually "$1" is_fired "$3" "$2"
    right "$1"
}

answers() { [ -n "$(query "$1")" ]; } # answers EXPRESSION

expect_told "all $count desks are up" 'count(displayctl_up == 1)' " $count"
expect_told 'the dead one is not' 'displayctl_up == 0' 'instance=dead 0'
expect_told 'its label is there' 'count by (instance) (displayctl_up{labels=~".*,suite4,.*"})' 'instance=dead 1'
expect_told 'the exporter is scraped' 'displayctl_exporter_targets' "instance=${exporter#http://} $((count + 1))"
expect_fired 'an alert names the dead one' MonitorUnreachable dead
expect_told 'the profile is compared' 'count(displayctl_profile_differences == 0)' " $count"
expect 'nothing differs yet' '' "$(alerts MonitorProfileDrift)"
expect 'the value before' 'instance=desk-1 15' "$(query 'displayctl_osd_timeout_seconds{instance="desk-1"}')"

expect 'one desk is changed' 'osd.timeout  15 -> 20' "$("$DISPLAYCTL" -m desk-1 set osd.timeout=20 2>&1)"
expect_told 'the value is seen' 'displayctl_osd_timeout_seconds{instance="desk-1"}' 'instance=desk-1 20'
expect_told 'the drift is seen' 'displayctl_profile_drift' 'instance=desk-1,profile=house,setting=osd.timeout 1'
expect_fired 'the alert names that desk alone' MonitorProfileDrift desk-1

# Every query of the dashboard has an answer now.
queries=0
while IFS= read -r expression; do
    queries=$((queries + 1))
    eventually "an answer to: $expression" answers "${expression//\$monitor/.*}"
done < <(jq -r '.panels[].targets[].expr' "$source_dir/fleet/prometheus/dashboard.json")
expect 'queries of the dashboard' 16 "$queries"

expect 'the desk is set back' 'osd.timeout  20 -> 15' "$("$DISPLAYCTL" -m desk-1 set osd.timeout=15 2>&1)"
expect_fired 'the alert goes' MonitorProfileDrift ''

kill -TERM "$prometheus"
wait "$prometheus" || failed "prometheus ended with $?"
exporter_stop
fleet_stop
rm -rf "$scratch"/{profiles,prometheus,prometheus.log,monitors.yaml}
report
