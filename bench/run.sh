#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Runs the benchmarks of a build and prints one table; README.md says how to read it.
#
#   bench/run.sh BUILD            the build directory; about a minute
#   bench/run.sh BUILD --smoke    makes each call a few times, looks at the answers alone, and prints no table
# shellcheck disable=SC2119 # the functions of desk.sh, without arguments
set -euo pipefail

build=$(cd "${1:?the build directory is missing}" && pwd)
smoke=${2-}
export DESK_BUILD=$build
# shellcheck source=../tests/endtoend/desk.sh
. "$(dirname "$0")/../tests/endtoend/desk.sh"
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
programs=$build/bench

# ---- the two servers ----

fixed=
fixed_start() { # fixed_start COMMAND...
    coproc fixed_server { exec setpriv --pdeathsig TERM "$@" "$scratch"/{certificate,key}.pem 2>/dev/null; }
    fixed=$!
    read -r BENCH_FIXED_PORT <&"${fixed_server[0]}"
    read -r BENCH_FIXED_TLS_PORT <&"${fixed_server[0]}"
    export BENCH_FIXED_PORT BENCH_FIXED_TLS_PORT
}
fixed_stop() {
    kill "$fixed"
    wait "$fixed" 2>/dev/null || true
}

# ---- times ----

times() { # times PROGRAM OPTION...: into PROGRAM.csv
    local program=$1
    shift
    "$programs/$program" --benchmark_out="$scratch/$program.csv" --benchmark_out_format=csv "$@" \
        >/dev/null 2>"$scratch/$program.txt" || {
        cat "$scratch/$program.txt"
        give_up "$program has had a wrong answer"
    }
    checks=$((checks + 1))
}

# "call nanoseconds" per line, of the fastest repetition.
fastest() {
    cat "$scratch"/{library,engine,host}_bench.csv | tr -d '"' |
        awk -F, '/_fastest,/ { sub("/real_time_fastest", "", $1); print $1, $3 }'
}

# ---- instructions ----

counted=(valgrind --tool=callgrind --log-file=/dev/null)

calls() { # calls PROGRAM NAME COUNT
    "$programs/$1" --calls "$2" "$3" >/dev/null || give_up "$1: $2 has had a wrong answer" >&2
}

# count_here PROGRAM NAME: the instructions of a call in the program itself. What happens once drops out as the
# difference of two runs.
count_here() {
    local calls result=()
    for calls in 1000 2000; do
        "${counted[@]}" --callgrind-out-file="$scratch/counts" "$programs/$1" --calls "$2" $calls >/dev/null ||
            give_up "$1: $2 has had a wrong answer" >&2
        result+=("$(awk '/^totals:/ { print $2 }' "$scratch/counts")")
    done
    echo "$2 $(((result[1] - result[0]) / 1000))"
}

# count_in PROCESS PROGRAM NAME: the instructions of a call in a server, which runs under the counter.
count_in() {
    local calls=200
    calls "$2" "$3" 10
    callgrind_control --zero "$1" >/dev/null 2>&1
    calls "$2" "$3" $calls
    rm -f "$scratch"/counts.*
    callgrind_control --dump="$3" "$1" >/dev/null 2>&1
    echo "$3 $(($(awk '/^totals:/ { print $2 }' "$scratch/counts.$1."*) / calls))"
}

# A program that runs under the counter in the place of another.
wrapper() { # wrapper PROGRAM
    local name=$scratch/counted-${1##*/}
    cat >"$name" <<TEXT
#!/bin/bash
[ "\$1" != account ] || exec $1 "\$@"
exec ${counted[*]} --callgrind-out-file=$scratch/counts.%p $1 "\$@"
TEXT
    chmod +x "$name"
    echo "$name"
}

# ---- the run ----

# All processes on one core: an exchange between two would also measure how long an idle core takes to wake up, which
# on some machines is longer than all the rest.
[ "$smoke" = --smoke ] || taskset -cp "$(taskset -cp $$ | grep -o '[0-9]*$')" $$ >/dev/null
secure_desk_start
fixed_start "$programs/fixed_server"
if [ "$smoke" = --smoke ]; then
    for program in library_bench engine_bench host_bench; do
        times $program --benchmark_min_time=0.001
    done
    fixed_stop
    secure_desk_stop
    rm -f "$scratch"/*_bench.*
    report
fi

echo 'Times ...' >&2
for program in library_bench engine_bench; do
    times $program --benchmark_min_time=0.05 --benchmark_repetitions=20 \
        --benchmark_report_aggregates_only=true
done
# What other work on the machine disturbs is the same for each call and for the yardstick, when their runs are short and
# stand between one another.
times host_bench --benchmark_min_time=0.002 --benchmark_repetitions=400 --benchmark_report_aggregates_only=true \
    --benchmark_enable_random_interleaving=true
fixed_stop
desk_stop

echo 'Instructions ...' >&2
{
    for call in $(fastest | awk '/^library/ { print $1 }'); do
        count_here library_bench "$call"
    done
    DISPLAY_HOST=$(wrapper "$DISPLAY_HOST")
    secure_desk_start
    fixed_start "${counted[@]}" --callgrind-out-file="$scratch/counts.%p" "$programs/fixed_server"
    for call in $(fastest | awk '/^(https?|wsman)/ { print $1 }'); do
        process=${desk_host[$desk]}
        [[ $call != */fixed_* ]] || process=$fixed
        count_in "$process" host_bench "$call"
    done
    fixed_stop
    engine_stop
    DESK_ENGINE=$(wrapper "$DESK_ENGINE")
    engine_start
    count_in "${desk_engine[$desk]}" engine_bench engine/set_display_luminance
    secure_desk_stop
} >"$scratch/instructions"

fastest >"$scratch/times"
awk '
    NR == FNR { instructions[$1] = $2; next }
    { calls[++count] = $1; time[$1] = $2 }
    END {
        base = time["http/fixed_30_kB"]
        printf "%-34s %12s %14s %12s %10s\n", "call", "time (us)", "instructions", "per second", "ratio"
        for (i = 1; i <= count; ++i) {
            call = calls[i]
            printf "%-34s %12.2f %14d %12.0f %10.3f\n", call, time[call] / 1000, instructions[call],
                1e9 / time[call], time[call] / base
        }
    }' "$scratch/instructions" "$scratch/times"
rm -f "$scratch"/*_bench.* "$scratch"/counts* "$scratch"/counted-* "$scratch/instructions" "$scratch/times"
report >&2
