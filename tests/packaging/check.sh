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

# The classes that are registered, a line each: class, namespace, provider, location, kinds of provider.
registered() {
    # shellcheck disable=SC2154 # the script that has read this file names its own directory
    awk 'BEGIN { RS = ""; FS = "\n" }
    {
        class = substr($1, 2, length($1) - 2)
        split("", value)
        for (i = 2; i <= NF; ++i) {
            name = $i
            sub(/^ */, "", name)
            sub(/: .*/, "", name)
            value[name] = substr($i, index($i, ": ") + 2)
        }
        print class, value["namespace"], value["provider"], value["location"], value["type"]
    }' "$here/../../mof/libcmpiDisplayManagement.reg"
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
