#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The filter of system calls in display-host.service lets through what the object manager needs from its start to its end:
# reads and changes in both protocols, over HTTP and HTTPS, wrong passwords, an audit log, a new certificate.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"
# shellcheck source=wire.sh
. "$here/wire.sh"

if [ "${SANITIZED:-}" = 1 ]; then
    echo 'Skipped: the sanitizers have calls of their own, and cannot be traced.'
    exit 77
fi
for program in systemd-analyze strace curl; do
    command -v "$program" >/dev/null || {
        echo "Skipped: $program is not installed (packages systemd, strace, curl)."
        exit 77
    }
done
strace -qq -o /dev/null true 2>/dev/null || {
    echo 'Skipped: nothing can be traced here.'
    exit 77
}

# calls_of SET...: the system calls of the sets, a line each.
calls_of() {
    local set name
    for set; do
        for name in $(systemd-analyze syscall-filter --no-pager "$set" | sed '1d; /#/d'); do
            case $name in @*) calls_of "$name" ;; *) echo "$name" ;; esac
        done
    done
}
# The lines of the filter in their order; what is not the first one takes away.
# shellcheck disable=SC2046 # lists of sets
filter() {
    sed -n 's/^SystemCallFilter=//p' "$source_dir/packaging/host/display-host.service" >"$directory/filter"
    expect 'the filter is an allowance and what is taken from it' '2 1' \
        "$(wc -l <"$directory/filter") $(grep -c '^~' "$directory/filter")"
    calls_of $(grep -v '^~' "$directory/filter") | sort -u >"$directory/allowed"
    calls_of $(sed -n 's/^~//p' "$directory/filter") | sort -u >"$directory/taken"
    # SQLite gives its files the owner of the database, but only as root, which the service is not.
    if [ "$(id -u)" = 0 ]; then sed -i '/^fchown$/d' "$directory/taken"; fi
    grep -vxF -f "$directory/taken" "$directory/allowed" >"$directory/passes"
    expect 'it lets read pass' 1 "$(grep -cx read "$directory/passes")"
    expect 'it does not let reboot pass' 0 "$(grep -cx reboot "$directory/passes" || true)"
}

certificate() { "$DISPLAY_HOST" certificate --certificate "$directory/certificate.pem" --key "$directory/key.pem" "$@" >/dev/null; }
post() { # post URL FILE [OPTION...]: the status
    curl -s -o "$directory/answer" -w '%{http_code}\n' --cacert "$directory/certificate.pem" -H 'CIMOperation: MethodCall' \
        -H 'Content-Type: application/xml' --data-binary @"$2" "${@:3}" "$1/cimom"
}
identifies() { # identifies URL
    curl -s --cacert "$directory/certificate.pem" -u "viewer:$(<"$directory/password.viewer")" -H 'Content-Type: application/soap+xml' --data-binary \
        '<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope"><s:Header/><s:Body><i:Identify xmlns:i="http://schemas.dmtf.org/wbem/wsman/identity/1/wsmanidentity.xsd"/></s:Body></s:Envelope>' \
        "$1/wsman" | grep -c ProtocolVersion
}
is_new() { [ "$(openssl s_client -connect "${secure#https://}" </dev/null 2>/dev/null | openssl x509 -noout -serial)" != "$serial" ]; }

desk_start
host_stop
filter
certificate 127.0.0.1
# Traced from beside: the process that is started is the object manager itself, which is asked to end as always.
program=$DISPLAY_HOST
printf '#!/bin/sh\nexec strace -D -f -qq -o %q %q "$@"\n' "$directory/trace" "$program" >"$directory/traced"
chmod +x "$directory/traced"
DISPLAY_HOST=$directory/traced
host_start --certificate "$directory/certificate.pem" --key "$directory/key.pem" --https-port 0 --audit "$directory/audit"
DISPLAY_HOST=$program
secure=https://127.0.0.1:$(port_of https)
request_files
for url in "http://127.0.0.1:$port" "$secure"; do
    expect "a read at $url" 200 "$(post "$url" "$directory/request.read" -u "viewer:$(<"$directory/password.viewer")")"
    expect "a change at $url" 200 "$(post "$url" "$directory/request.write" -u "admin:$(<"$directory/password.admin")")"
    expect "a wrong password at $url" 401 "$(post "$url" "$directory/request.read" -u viewer:wrong)"
    expect "WS-Management at $url" 1 "$(identifies "$url")"
done
expect 'the changes are in the audit log' 2 "$(wc -l <"$directory/audit")"
serial=$(openssl x509 -noout -serial -in "$directory/certificate.pem")
certificate --replace 127.0.0.1
eventually 'a new certificate is taken' is_new
host_stop
sed -n 's/^[0-9]* *\([a-z_0-9]*\)(.*/\1/p' "$directory/trace" | sort -u >"$directory/used"
expect 'the calls were seen' yes "$( (($(wc -l <"$directory/used") >= 40)) && echo yes)"
expect 'all of them pass' '' "$(grep -vxF -f "$directory/passes" "$directory/used" | tr '\n' ' ' || true)"
report
