#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The tests that docs/security.md names are there: security_test.sh SOURCE_DIR
set -eu
here=$(dirname "$0")
. "$here/../packaging/check.sh"
source=$1

named=$(grep -oE '`[A-Z][A-Za-z]+\.[A-Z][A-Za-z0-9]+`' "$source/docs/security.md" | tr -d '`' | LC_ALL=C sort -u)
[ "$(echo "$named" | wc -l)" -ge 20 ] || failed "docs/security.md names too few tests"
for name in $named; do
    grep -rqE "TEST(_F)?\(${name%.*}, ${name#*.}\)" "$source/tests/host" || failed "there is no test $name"
done
report
