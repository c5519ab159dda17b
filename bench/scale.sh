#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Measures how displayctl grows with the number of monitors, which one responder stands for, and the exporter under
# Prometheus. docs/scale.md has the figures and says what they mean.
#
#   bench/scale.sh BUILD               get, diff and apply on 100, 1,000 and 10,000 monitors
#   bench/scale.sh BUILD exporter      1,000 targets, each read every 30 s, for three minutes
#   bench/scale.sh BUILD --smoke       get, diff and apply on 20 monitors; only whether they succeed counts, no table
set -euo pipefail

build=$(cd "${1:?the build directory is missing}" && pwd)
what=${2:-sizes}
source_dir=$(cd "$(dirname "$0")/.." && pwd)
DISPLAYCTL=${DISPLAYCTL:-$build/client/displayctl}
scratch=$(mktemp -d)
processes=()
trap 'for process in "${processes[@]}"; do kill "$process" 2>/dev/null || true; done; wait; rm -rf "$scratch"' EXIT
export XDG_CONFIG_HOME=$scratch XDG_STATE_HOME=$scratch LC_ALL=C
unset DISPLAYCTL_CONFIG DISPLAYCTL_MONITOR DISPLAYCTL_PASSWORD

fail() { # fail TEXT
    echo "scale: $*" >&2
    exit 1
}
serve() { # serve COUNT: their file of monitors is then $scratch/many.yaml
    rm -f "$scratch/many.yaml"
    mkfifo "$scratch/end.$1"
    "$build/bench/many-monitors" "$1" "$scratch/many.yaml" <"$scratch/end.$1" &
    responder=$!
    processes+=("$responder")
    exec 8>"$scratch/end.$1"
    until [ -s "$scratch/many.yaml" ]; do
        kill -0 "$responder" || fail 'the responder has ended'
        sleep 0.1
    done
}
end_serving() {
    exec 8>&-
    wait "$responder" || true
}
descriptors() { { find "/proc/$1/fd" -mindepth 1 2>/dev/null || true; } | wc -l; } # 0 of a process that is gone
peak_memory() { sed -n 's/^VmHWM:[[:space:]]*\([0-9]*\) kB/\1/p' "/proc/$1/status" 2>/dev/null; }

# measure NAME CODE ARGUMENTS: a line of the table. The processor's time depends less on what else the machine does.
measure() {
    local name=$1 code=$2 begin end process memory=0 most=0 now result=0 ticks used=0
    shift 2
    begin=$(date +%s%N)
    "$DISPLAYCTL" -c "$scratch/many.yaml" --quiet --yes "$@" >"$scratch/out" 2>"$scratch/err" &
    process=$!
    while now=$(peak_memory "$process") && [ -n "$now" ]; do
        memory=$now
        ticks=$(awk '{ print $14 + $15 }' "/proc/$process/stat" 2>/dev/null) || break
        [ -z "$ticks" ] || used=$ticks
        now=$(descriptors "$process")
        ((now <= most)) || most=$now
        sleep 0.02
    done
    wait "$process" || result=$?
    end=$(date +%s%N)
    [ "$result" = "$code" ] || fail "$name ended with $result: $(head -3 "$scratch/err")"
    [ "$what" = --smoke ] ||
        printf '%-28s %10.2f %12.2f %10d %12d\n' "$name" "$(((end - begin) / 10000000))e-2" \
            "$((used * 100 / $(getconf CLK_TCK)))e-2" $((memory / 1024)) "$most"
}

sizes() {
    local size
    printf 'displayctl: 1\nsettings: { preset: { 1: { luminance: 120 } }, osd: { timeout: 15 } }\n' >"$scratch/house.yaml"
    [ "$what" = --smoke ] ||
        printf '%-28s %10s %12s %10s %12s\n' call 'time (s)' 'processor (s)' 'peak (MB)' descriptors
    for size in "$@"; do
        serve "$size"
        measure "get luminance, $size" 0 -m all get luminance
        [ "$(wc -l <"$scratch/out")" = "$size" ] || fail "not all of $size have answered"
        measure "diff, $size" 7 -m all diff "$scratch/house.yaml"
        measure "apply, $size" 0 -m all apply "$scratch/house.yaml"
        measure "apply again, $size" 0 -m all apply "$scratch/house.yaml"
        grep -q "^$size monitors: $size unchanged" "$scratch/out" || fail "not all of $size are as the profile has them"
        rm -rf "$scratch/displayctl"
        end_serving
    done
}

scrape() {
    local targets=1000 seconds=180 exporter prometheus url api
    serve "$targets"
    "$DISPLAYCTL" -c "$scratch/many.yaml" exporter --listen 127.0.0.1:0 >"$scratch/exporter" &
    exporter=$!
    processes+=("$exporter")
    until [ -s "$scratch/exporter" ]; do sleep 0.1; done
    url=$(sed 's|listening on http://\(.*\)/|\1|' "$scratch/exporter")
    sed "s|127\.0\.0\.1:9878|$url|; /profile: /d; /params:/d; /rule_files:/,/rules.yml/d" \
        "$source_dir/fleet/prometheus/prometheus.yml" >"$scratch/prometheus.yml"
    prometheus --config.file="$scratch/prometheus.yml" --storage.tsdb.path="$scratch/data" \
        --web.listen-address=127.0.0.1:0 >"$scratch/prometheus" 2>&1 &
    prometheus=$!
    processes+=("$prometheus")
    sleep "$seconds"
    api=$(sed -n 's|.*msg="Listening on" address=\(127.0.0.1:[0-9]*\).*|http://\1/api/v1/query|p' "$scratch/prometheus")
    for query in 'count(displayctl_up == 1)' 'sum(scrape_samples_scraped{job="displayctl"})' \
        'rate(displayctl_exporter_probes_total{outcome="ok"}[2m])' 'rate(process_cpu_seconds_total{job="displayctl-exporter"}[2m])' \
        'process_resident_memory_bytes{job="displayctl-exporter"} / 1e6' 'max_over_time(process_open_fds{job="displayctl-exporter"}[3m])' \
        'histogram_quantile(0.5, rate(displayctl_exporter_probe_duration_seconds_bucket[2m]))' \
        'histogram_quantile(0.99, rate(displayctl_exporter_probe_duration_seconds_bucket[2m]))' \
        'max(scrape_duration_seconds{job="displayctl"})'; do
        printf '%-90s %s\n' "$query" \
            "$(curl --silent --noproxy '*' -G "$api" --data-urlencode "query=$query" | jq -r '.data.result[0].value[1] // "none"')"
    done
    printf '%-90s %s\n' 'Prometheus itself, peak (MB)' $(($(peak_memory "$prometheus") / 1024))
}

ulimit -n "$(ulimit -H -n)"
case $what in
sizes) sizes 100 1000 10000 ;;
exporter) scrape ;;
--smoke) sizes 20 ;;
*) fail "no such argument: $what" ;;
esac
