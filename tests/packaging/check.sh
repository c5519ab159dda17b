# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=sh
# For the scripts of this directory: failures are counted and told, and decide how the script ends.

failures=0

failed() {
    failures=$((failures + 1))
    echo "FAILED: $*"
}

# expect WHAT EXPECTED ACTUAL
expect() {
    [ "$2" = "$3" ] && return
    failed "$1"
    differences=$(mktemp)
    printf '%s\n' "$2" >"$differences"
    printf '%s\n' "$3" | diff -u --label expected --label actual "$differences" - || true
    rm "$differences"
}

# A directory of the test's own, gone at its end.
scratch() {
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
    trap 'exit 1' HUP INT TERM
}

# The end of every script.
report() {
    [ "$failures" -eq 0 ] || { echo "$failures failed"; exit 1; }
    echo 'All right.'
    exit 0
}
