# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2154 # variables of tests/endtoend/desk.sh
# The desk that the benchmarks call: with HTTP and HTTPS. Sourced, after tests/endtoend/desk.sh.

# As the object manager is shipped, it does not keep what providers print.
export DESK_PROVIDER_OUTPUT=

# The programs find the desk by what this exports, and what desk.sh does.
secure_desk_start() {
    [ -n "$scratch" ] || desk_begin
    if [ ! -e "$scratch/key.pem" ]; then
        "$DISPLAY_HOST" certificate --certificate "$scratch/certificate.pem" --key "$scratch/key.pem" >/dev/null
    fi
    # shellcheck disable=SC2034 # read by desk.sh
    host_options=(--certificate "$scratch/certificate.pem" --key "$scratch/key.pem" --https-address 127.0.0.1
        --https-port 0)
    # shellcheck disable=SC2119 # without a name
    desk_start
    export BENCH_PORT=$port
    BENCH_TLS_PORT=$(port_of https)
    BENCH_AUTHORIZATION="Basic $(printf 'admin:%s' "$(cat "$directory/password.admin")" | base64 -w0)"
    export BENCH_TLS_PORT BENCH_AUTHORIZATION
}

secure_desk_stop() {
    # shellcheck disable=SC2119 # without a name
    desk_stop
    rm "$scratch"/{certificate,key}.pem
}
