#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The manual pages against the programs: the options of --help are those of the page, the environment variables that the
# program reads are those of the page, and the page is formatted without a warning.
#
#   man_pages_test.sh SOURCE_DIR VERSION [NAME=PROGRAM]...
#
# Programs that are scripts of the source directory need not be named.
set -eu
here=$(dirname "$0")
. "$here/../packaging/check.sh"
source=$1 version=$2
shift 2
scratch

program_of() { # program_of NAME: empty when it is not built
    case $1 in
    register-providers) echo "$source/packaging/register-providers" ;;
    object-graph) echo "$source/tools/object-graph" ;;
    *)
        for pair in $programs; do
            [ "${pair%%=*}" != "$1" ] || echo "${pair#*=}"
        done
        ;;
    esac
}
programs=$*

# What follows .TP in a page, up to the next line, as it is printed.
entries() { sed -n '/^\.T[PQ]/{n;s/^\.[BIR]* //;s/\\-/-/g;s/\\f[A-Z]//g;p;}' "$@"; }
options_in() { { grep -oE '(^|[][ ",])--?[a-z][a-z-]*' || true; } | sed 's/^[^-]*//' | LC_ALL=C sort -u; }
help_options() { sed -n 's/^ *\(-[^ ].*\)$/\1/p' | sed 's/  .*//' | options_in; }

# page NAME SECTION "COMMAND..." SOURCE...: the commands are those of the program that have a --help of their own.
pages=
page() {
    name=$1 file=$source/docs/man/$1.$2 commands=$3
    shift 3
    pages="$pages $(basename "$file")"
    [ -r "$file" ] || { failed "there is no $file"; return; }
    expect "$name: its title" "\"libcmpiDisplayManagement $version\"" \
        "$(sed -n 's/^\.TH .* \("libcmpi[^"]*"\) .*/\1/p' "$file")"

    # ---- options ----
    program=$(program_of "$name")
    if [ -n "$program" ]; then
        "$program" --help >"$scratch/help" || failed "$name --help"
        help_options <"$scratch/help" >"$scratch/options"
        for command in $commands; do
            # shellcheck disable=SC2046 # a command is words with commas between
            "$program" $(echo "$command" | tr , ' ') --help >"$scratch/help.$command" || failed "$name $command --help"
            help_options <"$scratch/help.$command" >>"$scratch/options"
        done
        # What has just worked need not stand in its own list.
        expect "$name: its options" "$( (cat "$scratch/options"; echo --help) | grep -vx -- -h | LC_ALL=C sort -u)" \
            "$(entries "$file" | options_in | grep -vx -- -h)"
        if entries "$file" | options_in | grep -qx -- -h; then
            "$program" -h >/dev/null || failed "$name -h"
        fi
    else
        echo "Not compared: $name is not built."
    fi

    # ---- environment ----
    sed -n '/^\.SH ENVIRONMENT/,/^\.SH [^E]/p' "$file" | entries |
        { grep -oE '[A-Z][A-Z_]+' || true; } | LC_ALL=C sort -u >"$scratch/told"
    # shellcheck disable=SC2016 # patterns of the scripts' own text
    for code in "$@"; do
        grep -ohE '(getenv|variable)\("[A-Z_]+"' "$source/$code" || true
        grep -ohE '\$\{[A-Z][A-Z_]+:?-' "$source/$code" || true
    done | { grep -oE '[A-Z][A-Z_]+' || true; } | LC_ALL=C sort -u >"$scratch/read"
    expect "$name: the environment that it reads" "$(cat "$scratch/read")" "$(cat "$scratch/told")"

    # ---- form ----
    if command -v groff >/dev/null; then
        expect "$name: warnings of groff" '' "$(groff -ww -man -Tutf8 "$file" 2>&1 >/dev/null)"
    fi
    if command -v man >/dev/null; then
        expect "$name: warnings of man" '' "$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$file" 2>&1 >/dev/null)"
    fi
}

host=$(cd "$source" && echo host/*.cpp host/*/*.cpp)
# shellcheck disable=SC2086 # lists of names
page display-host 8 'account account,add account,remove account,list certificate audit audit,verify' $host desk/support/environment.cpp
page desk-engine 8 '' desk/engine/main.cpp desk/engine/engine.cpp desk/support/environment.cpp
page desk-monitor 1 'show set fault user user,add user,remove reset queues queues,remove' \
    desk/support/desk_monitor.cpp desk/support/environment.cpp
page desk-screen 1 '' desk/screen/main.cpp desk/support/environment.cpp
page object-graph 1 '' tools/object-graph
displayctl=$(program_of displayctl)
page displayctl 1 "$([ -z "$displayctl" ] || "$displayctl" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')" \
    client/site/configuration.cpp client/site/credentials.cpp client/site/selection.cpp client/command/command.cpp
page register-providers 8 '' packaging/register-providers

if [ -n "$(program_of desk-monitor)" ]; then
    expect 'desk-monitor: its faults' \
        "$(sed -n '/^Faults:/,/^$/s/^  \([a-z-]*\)[: ].*/\1/p' "$scratch/help.fault")" \
        "$(sed -n '/^\.SH FAULTS/,/^\.SH OPTIONS/p' "$source/docs/man/desk-monitor.1" | entries | sed 's/ .*//')"
    for function in $(sed -n '/ Functions\[\]/,/};/p' "$source/desk/support/desk_monitor.cpp" | grep -oE '"[A-Za-z]+"' | tr -d '"'); do
        grep -q "$function" "$source/docs/man/desk-monitor.1" || failed "desk-monitor: $function is not in the page"
    done
fi

# shellcheck disable=SC2086
expect 'every page is looked at' "$(cd "$source/docs/man" && ls)" "$(printf '%s\n' $pages | LC_ALL=C sort)"

if [ "$failures" -eq 0 ] && ! command -v groff >/dev/null; then
    echo 'Skipped: groff is not installed, so the form of the pages was not checked; all else is right.'
    exit 77
fi
report
