#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The exporter as a program: HTTP and HTTPS, logging in, reading its files again, wrong calls; and that promtool has nothing
# to say about what it answers.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=../client/displayctl.sh
. "$source_dir/tests/client/displayctl.sh"
# shellcheck source=fleet.sh
. "$(dirname "$0")/fleet.sh"
needs promtool prometheus curl curl openssl openssl
desk_start
ctl_environment admin

get() { curl --silent --show-error --noproxy '*' "$@"; }
status() { get --output /dev/null --write-out '%{http_code}' "$@"; }
expect_lint() { # expect_lint WHAT URL
    get "$2" >"$scratch/answer"
    [ -s "$scratch/answer" ] || failed "$1: there is no answer"
    expect "promtool has nothing to say about $1" '' "$(promtool check metrics <"$scratch/answer" 2>&1)"
}
line() { grep -E "^$1 " "$scratch/answer" || true; } # of the last answer that was linted

# ---- metrics ----

mkdir "$scratch/profiles"
printf 'displayctl: 1\nsettings:\n  osd: { timeout: 20 }\n  monitor: { name: elsewhere }\n' >"$scratch/profiles/house.yaml"
printf 'displayctl: 1\nsettings: { osd: { timeout: 99 } }\n' >"$scratch/profiles/wrong.yaml"
cp "$scratch/profiles/house.yaml" "$scratch/secret.yaml"
monitors_file "desk=$(url admin)" dead=http://127.0.0.1:1
exporter_start --profiles "$scratch/profiles"
expect_lint 'a probe' "$exporter/probe?target=desk"
expect 'the monitor is up' 'displayctl_up 1' "$(line displayctl_up)"
expect 'its luminance' 'displayctl_preset_luminance_candelas_per_square_meter{preset="1"} 250' \
    "$(line 'displayctl_preset_luminance_candelas_per_square_meter.preset="1".')"
expect 'no profile was asked for' '' "$(grep profile "$scratch/answer" || true)"
expect_lint 'a probe with a profile' "$exporter/probe?target=desk&profile=house"
expect 'what differs' 'displayctl_profile_differences{profile="house"} 1
displayctl_profile_drift{profile="house",setting="osd.timeout"} 1' "$(grep '^displayctl_profile' "$scratch/answer")"
ctl set osd.timeout=20
expect_lint 'a probe after the change' "$exporter/probe?target=desk&profile=house"
expect 'nothing differs' 'displayctl_profile_differences{profile="house"} 0' "$(grep '^displayctl_profile' "$scratch/answer")"
expect 'the new value' 'displayctl_osd_timeout_seconds 20' "$(line displayctl_osd_timeout_seconds)"
expect 'a dead monitor is answered' 200 "$(status "$exporter/probe?target=dead&profile=house")"
expect_lint 'a dead monitor' "$exporter/probe?target=dead&profile=house"
expect 'it is down' 'displayctl_up 0' "$(line displayctl_up)"
expect 'and why' 'displayctl_probe_outcome{outcome="unreachable"} 1' "$(line 'displayctl_probe_outcome.outcome="unreachable".')"
expect_lint 'the exporter itself' "$exporter/metrics"
expect 'it counts its probes' 'displayctl_exporter_probes_total{outcome="ok"} 3
displayctl_exporter_probes_total{outcome="unreachable"} 2' \
    "$(grep -E '^displayctl_exporter_probes_total.*"(ok|unreachable)"' "$scratch/answer" | LC_ALL=C sort)"
expect 'its build' 'displayctl_build_info{version="1.0.0"} 1' "$(grep '^displayctl_build_info' "$scratch/answer")"

# ---- what is not there ----

expect 'no target' '400 which monitor? /probe?target=NAME, with a name of the file of monitors' \
    "$(status "$exporter/probe") $(get "$exporter/probe")"
for target in other all "$(url admin)" 127.0.0.1:1 'label=x' '../desk'; do
    expect "no such target: ${target//$port/PORT}" 404 "$(status -G "$exporter/probe" --data-urlencode "target=$target")"
done
for profile in other ../secret house.yaml '' .; do
    expect "no such profile: '$profile'" 404 "$(status -G "$exporter/probe" -d target=desk --data-urlencode "profile=$profile")"
done
expect 'a profile that is none' 500 "$(status "$exporter/probe?target=desk&profile=wrong")"
expect 'another page' 404 "$(status "$exporter/else")"
expect 'another method' 405 "$(status --data x=1 "$exporter/probe?target=desk")"
expect 'the head alone' 200 "$(status --head "$exporter/metrics")"
expect 'the first page' 200 "$(status "$exporter/")"

# ---- reading the files again ----

reload() { # reload WHAT TEXT: what it says then on standard error
    : >"$scratch/exporter.err"
    kill -HUP "$exporter_process"
    eventually "$1" test -s "$scratch/exporter.err"
    expect "$1" "$2" "$(sed "s|$scratch/||g" "$scratch/exporter.err")"
}
monitors_file "desk=$(url admin)" "new=$(url admin)"
reload 'the files are read again' 'displayctl: the files were read again'
expect 'a new monitor' 200 "$(status "$exporter/probe?target=new")"
expect 'a monitor that is gone' 404 "$(status "$exporter/probe?target=dead")"
printf 'monitors: [\n' >"$scratch/monitors.yaml"
: >"$scratch/exporter.err"
kill -HUP "$exporter_process"
eventually 'the mistake is told' grep -q 'what was there before stays' "$scratch/exporter.err"
expect 'what was there stays' 200 "$(status "$exporter/probe?target=new")"
get "$exporter/metrics" >"$scratch/answer"
expect 'and that is told' 'displayctl_exporter_config_last_reload_successful 0' \
    "$(line displayctl_exporter_config_last_reload_successful)"
exporter_stop

# ---- HTTPS and logging in; the monitor has HTTPS, too ----

for name in exporter monitor; do
    "$DISPLAY_HOST" certificate --certificate "$scratch/$name.pem" --key "$scratch/$name.key" 127.0.0.1 >/dev/null
done
host_stop
desk_start_host "$directory" 0 --certificate "$scratch/monitor.pem" --key "$scratch/monitor.key" \
    --https-address 127.0.0.1 --https-port 0
desk_host[$desk]=$desk_process
eventually 'the object manager listens' is_ready ready
secure=$(sed -n 's|.* https://.*:\([0-9]*\)/.*|\1|p' "$directory/ready")
monitors_file "desk=https://127.0.0.1:$secure"
cat >"$scratch/web.yaml" <<'YAML'
tls_server_config: { cert_file: exporter.pem, key_file: exporter.key }
basic_auth_users:
  prometheus: $2b$04$abcdefghijklmnopqrstuuiVCzFsXDxj.p4bGeq16wbp33kcq4Noi # scrape me
YAML
XDG_STATE_HOME=$scratch/state exporter_start --web-config "$scratch/web.yaml"
secured=(--cacert "$scratch/exporter.pem")
expect 'it is HTTPS' https "${exporter%%:*}"
expect 'nobody' 401 "$(status "${secured[@]}" "$exporter/metrics")"
expect 'a wrong password' 401 "$(status "${secured[@]}" --user 'prometheus:scrape you' "$exporter/metrics")"
expect 'a wrong user' 401 "$(status "${secured[@]}" --user 'admin:scrape me' "$exporter/metrics")"
expect 'the right ones' '200 200' "$(status "${secured[@]}" --user 'prometheus:scrape me' "$exporter/metrics") $(
    status "${secured[@]}" --user 'prometheus:scrape me' "$exporter/metrics")"
expect 'a wrong password after a right one' 401 "$(status "${secured[@]}" --user 'prometheus:scrape you' "$exporter/metrics")"
expect 'without TLS there is no answer' 000 "$(status "http://${exporter#https://}/metrics" 2>/dev/null || true)"
get "${secured[@]}" --user 'prometheus:scrape me' "$exporter/probe?target=desk" >"$scratch/answer"
expect 'a certificate that is not trusted' 'displayctl_up 0' "$(line displayctl_up)"
exporter_stop
sed -i "s|user: admin|user: admin, ca-file: monitor.pem|" "$scratch/monitors.yaml"
exporter_start
get "$exporter/probe?target=desk" >"$scratch/answer"
expect 'a certificate that is trusted' 'displayctl_up 1' "$(line displayctl_up)"
ends=$(date -d "$(openssl x509 -in "$scratch/monitor.pem" -noout -enddate | cut -d= -f2)" +%s)
expect 'when it expires' "displayctl_certificate_expiry_timestamp_seconds $ends" \
    "$(line displayctl_certificate_expiry_timestamp_seconds)"
exporter_stop

# ---- wrong calls ----

wrong() { # wrong WHAT TEXT ARGUMENTS
    local what=$1 text=$2
    shift 2
    run_ctl -c "$scratch/monitors.yaml" "$@"
    expect "$what" "2: displayctl: $text" "$result: ${errors//"$scratch/"/}"
}
wrong 'no address' '--listen here is no ADDRESS:PORT; 127.0.0.1:9878 and [::1]:9878 are' exporter --listen here
wrong 'beyond this machine' 'beyond this machine the exporter serves with TLS and a login only: name a --web-config with tls_server_config and basic_auth_users' \
    exporter --listen 0.0.0.0:0
wrong 'a URL' 'the exporter serves monitors of the file of monitors, none by URL' \
    -m http://127.0.0.1:1 exporter --listen 127.0.0.1:0
wrong 'no directory' '--profiles nowhere is no directory' exporter --profiles "$scratch/nowhere"
wrong_web() { # wrong_web WHAT YAML TEXT
    printf '%b' "$2" >"$scratch/web.yaml"
    wrong "$1" "web.yaml:$3" exporter --listen 127.0.0.1:0 --web-config "$scratch/web.yaml"
}
wrong_web 'an unknown word' 'tls: 1\n' '1: the file has no "tls"; there are: tls_server_config, basic_auth_users'
wrong_web 'no key' 'tls_server_config: { cert_file: exporter.pem }\n' '1: tls_server_config needs cert_file and key_file'
wrong_web 'no certificate' '\ntls_server_config: { cert_file: none.pem, key_file: exporter.key }\n' \
    '2: cert_file: none.pem cannot be read'
wrong_web 'no PEM' 'tls_server_config: { cert_file: web.yaml, key_file: exporter.key }\n' '1: cert_file: web.yaml is not PEM'
wrong_web 'a password' 'basic_auth_users: { me: secret }\n' \
    '1: what stands for the password of me is no hash of it; `mkpasswd -m bcrypt` makes one'
printf 'tls_server_config: { cert_file: exporter.pem, key_file: monitor.key }\n' >"$scratch/web.yaml"
wrong 'no pair' 'the server cannot start: certificate and key are not a pair' \
    exporter --listen 127.0.0.1:0 --web-config "$scratch/web.yaml"

rm -rf "$scratch"/{profiles,secret.yaml,answer,monitors.yaml,web.yaml,*.pem,*.key,config,state}
report
