#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# What a well-known tester of TLS servers finds: nothing above "low" of a certificate that an authority has issued; of one
# that display-host has made and signed itself, only that nobody says whether it was revoked, which nobody can.
#
#   tls.sh          certificate, protocols and preferences
#   tls.sh --full   everything that the tester knows, for both certificates
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"

command -v testssl >/dev/null || {
    echo 'Skipped: testssl is not installed (package testssl.sh).'
    exit 77
}
command -v openssl >/dev/null || {
    echo 'Skipped: openssl is not installed.'
    exit 77
}
tests=(-p -S)
[ "${1-}" != --full ] || tests=()

desk_start
host_stop

# issue NAME: a certificate of an authority, which says where it lists what it has revoked. Nothing fetches that list here.
issue() {
    openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 1000 -subj '/CN=Authority of the test' \
        -keyout "$directory/authority.key" -out "$directory/authority.pem" 2>/dev/null
    openssl req -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -subj '/CN=localhost' \
        -keyout "$directory/$1.key" -out "$directory/request.pem" 2>/dev/null
    cat >"$directory/extensions" <<'END'
subjectAltName = DNS:localhost, IP:127.0.0.1
keyUsage = digitalSignature
extendedKeyUsage = serverAuth
crlDistributionPoints = URI:http://authority.invalid/revoked.crl
END
    openssl x509 -req -in "$directory/request.pem" -CA "$directory/authority.pem" -CAkey "$directory/authority.key" \
        -CAcreateserial -days 300 -extfile "$directory/extensions" -out "$directory/$1.pem" 2>/dev/null
}

# A client that begins a second handshake on its connection, which costs a server more than it costs the client, and then
# waits: the connection ends.
refuses_renegotiation() {
    local input client
    mkfifo "$directory/input"
    openssl s_client -tls1_2 -connect "localhost:$(port_of https)" <"$directory/input" >"$directory/renegotiation.log" 2>&1 &
    client=$!
    exec {input}>"$directory/input"
    echo R >&"$input"
    eventually 'a client that wants to renegotiate loses its connection' has_ended "$client"
    exec {input}>&-
    wait "$client" || true
    rm "$directory/input"
    expect 'it has asked for it' 1 "$(grep -c '^RENEGOTIATING' "$directory/renegotiation.log")"
    expect 'there is no second handshake' '' "$(sed '1,/^RENEGOTIATING/d' "$directory/renegotiation.log" | grep -E 'verify|depth=' || true)"
}
has_ended() { ! kill -0 "$1" 2>/dev/null || [[ $(ps -o stat= -p "$1") == Z* ]]; }

# findings NAME AUTHORITY: what is found above "low", a line each, in $found. $looked is the number of all findings.
findings() {
    host_start --certificate "$directory/$1.pem" --key "$directory/$1.key" --https-port 0
    testssl --quiet --warnings off --color 0 --nodns none --add-ca "$directory/$2" "${tests[@]}" \
        --csvfile "$directory/$1.csv" "localhost:$(port_of https)" >"$directory/$1.log" 2>&1 </dev/null || true
    # Renegotiation is looked at below: the tester sends its request and the end of its input at once, and takes an end in
    # order for consent, as it does when the object manager's closing of the connection comes before its own.
    found=$(tr -d '"' <"$directory/$1.csv" |
        awk -F, 'NR > 1 && $1 != "secure_client_renego" && $4 !~ /^(OK|INFO|LOW|DEBUG)$/ { print $1, $4 }')
    looked=$(grep -cE '^"[^"]+","[^"]*","[0-9]+","(OK|INFO|LOW|MEDIUM|HIGH|CRITICAL)"' "$directory/$1.csv" || true)
    refuses_renegotiation
    if grep -qE '"(WARN|FATAL)"' "$directory/$1.csv"; then failed "the tester could not do all: $(grep -E '"(WARN|FATAL)"' "$directory/$1.csv")"; fi
    host_stop
}

echo 'A certificate that an authority has issued'
issue issued
findings issued authority.pem
expect 'nothing above "low" is found' '' "$found"
expect 'the tester has looked at it' yes "$( ((looked > 30)) && echo yes)"
expect 'it trusts the chain' 'OK' "$(tr -d '"' <"$directory/issued.csv" | awk -F, '$1 == "cert_chain_of_trust" { print $4 }')"
expect 'TLS 1.2 and 1.3 are offered' 'TLS1_2 TLS1_3' "$(tr -d '"' <"$directory/issued.csv" |
    awk -F, '$1 ~ /^(SSLv2|SSLv3|TLS1|TLS1_1|TLS1_2|TLS1_3)$/ && $5 ~ /^offered/ { print $1 }' | tr '\n' ' ' | sed 's/ $//')"
printf '  %d findings\n' "$looked"

if [ "${1-}" = --full ]; then
    echo 'A certificate that display-host has made'
    "$DISPLAY_HOST" certificate --certificate "$directory/made.pem" --key "$directory/made.key"
    findings made made.pem
    # There is no issuer who could revoke it: who does not trust it any more takes it from his list.
    expect 'only that it cannot be revoked' 'cert_revocation HIGH' "$found"
    printf '  %d findings\n' "$looked"
fi

report
