#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# What docs/integrator.md says of the library's needs is what the code has: the functions of the object manager that it
# calls, the functions of the support library, and the sizes of the records.
#
#   names_test.sh SOURCE_DIR
set -eu
here=$(dirname "$0")
. "$here/../packaging/check.sh"
cd "$1"
guide=docs/integrator.md

part() { sed -n "/^##* $1\$/,/^##* /p" "$guide"; }

# Each line of the table and each row of frame/cmpi.h as "OBJECT FUNCTION", where the broker's tables are objects.
expect 'the functions of the object manager' \
    "$(sed -n 's/^CMPI_FUNCTION(CMPIBroker, \([a-z]*\), \([A-Za-z]*\))$/broker->\1 \2/p; s/^CMPI_FUNCTION(\(CMPI[A-Za-z]*\), ft, \([A-Za-z]*\))$/\1 \2/p' \
        src/frame/cmpi.h | LC_ALL=C sort)" \
    "$(part 'What the library calls' | grep '^| `' | while IFS='|' read -r _ object functions; do
        for function in $(echo "$functions" | grep -oE '`[A-Za-z]+`' | tr -d '`'); do echo "$object $function"; done
    done | tr -d '`' | tr -s ' ' | sed 's/^ //' | LC_ALL=C sort)"
expect 'calls past frame/cmpi.h' '' \
    "$(grep -rnE 'ft->|cmpimacs|(^|[^"A-Za-z_])C[MB][A-Z][a-z][A-Za-z]*\(' src --include='*.cpp' --include='*.h' | grep -v '^src/frame/cmpi\.h:')"

expect 'the functions of the support library' \
    "$(sed -n 's/^int \([A-Za-z0-9]*\)(.*/\1/p' include/monitor_support.h | LC_ALL=C sort)" \
    "$(part 'The support library' | sed -n 's/^| \(`[A-Z].*`\) |.*/\1/p' | grep -oE '[A-Za-z0-9]+' | LC_ALL=C sort)"
expect 'their number' "$(grep -c '^int ' include/monitor_support.h)" \
    "$(sed -n 's/.*declares everything: \([0-9]*\) functions.*/\1/p' "$guide")"

# A record and its size stand twice in a line of the table.
expect 'the sizes of the records' \
    "$(sed -n 's/^static_assert(sizeof(\([A-Za-z]*\)) == \([0-9]*\));/\1 \2/p' include/monitor_support.h |
        grep -vE '^(RegisterDetails|WebCmd|ProcessData) ' | LC_ALL=C sort)" \
    "$(part 'Packing and sizes' | grep -oE '`[A-Za-z]+`( \(packed\))? \| [0-9]+' | sed 's/ (packed)//; s/`//g; s/ |//' | LC_ALL=C sort)"

report
