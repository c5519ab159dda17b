#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The Markdown pages: every relative link leads to a file, every anchor to a heading, and every path of the repository
# that a page names is there.
#
#   links_test.sh SOURCE_DIR
set -eu
here=$(dirname "$0")
. "$here/../packaging/check.sh"
cd "$1"
scratch
links=0 paths=0

without_code() { awk '/^```/ { code = !code; next } !code && !/^    /' "$1"; }

# The anchors of a page, as they are made from its headings, and those that it sets itself.
anchors() {
    awk '/^```/ { code = !code; next } !code' "$1" | sed -n 's/^#\{1,6\} \{1,\}//p' | tr '[:upper:]' '[:lower:]' |
        sed 's/[^a-z0-9 _-]//g; s/ /-/g'
    sed -n 's/.*<a \(id\|name\)="\([^"]*\)".*/\2/p' "$1"
}

check_link() { # check_link PAGE TARGET
    target=${2%%#*}
    case $target in
    '') file=$1 ;;
    *) file=$(dirname "$1")/$target ;;
    esac
    [ -e "$file" ] || { failed "$1: the link $2 leads nowhere"; return; }
    case $2 in
    *'#'*)
        known=$scratch/$(printf '%s' "$file" | tr / _)
        [ -e "$known" ] || anchors "$file" >"$known"
        grep -qxF -- "${2#*#}" "$known" || failed "$1: $2: there is no such heading in $file"
        ;;
    esac
}

# A name may have a placeholder, <Class>, or be cut by the end of a line after an underscore.
check_path() { # check_path PAGE PATH
    pattern=$(printf '%s' "$2" | sed 's/<[A-Za-z]*>/*/g; s/_$/_*/')
    # shellcheck disable=SC2086 # the pattern is expanded on purpose
    for found in $pattern; do
        [ -e "$found" ] && return
    done
    failed "$1: there is no $2"
}

pages=$(ls README.md CONTRIBUTING.md CHANGELOG.md docs/*.md)
[ ! -e bench/README.md ] || pages="$pages bench/README.md"
for page in $pages; do
    without_code "$page" | grep -oE '\]\([^) ]+\)' | sed 's/^](//; s/)$//' | grep -vE '^[a-z]+:' |
        LC_ALL=C sort -u >"$scratch/links" || true
    while IFS= read -r link; do
        links=$((links + 1))
        check_link "$page" "$link"
    done <"$scratch/links"

    grep -oE '(^|[^A-Za-z0-9_./<-])((tools|src|desk|include|mof|tests|docs|packaging|cmake|bench)/[A-Za-z0-9_./<>*-]*|\./(run|test))' "$page" |
        sed 's/^[^A-Za-z.]//; s/[.,]*$//' | LC_ALL=C sort -u >"$scratch/paths" || true
    while IFS= read -r path; do
        paths=$((paths + 1))
        check_path "$page" "$path"
    done <"$scratch/paths"
done
echo "$links links, $paths paths"
if [ "$links" -eq 0 ] || [ "$paths" -eq 0 ]; then failed 'nothing was found to check'; fi

# ---- drawings ----
for drawing in docs/*.svg; do
    grep -qF "($(basename "$drawing"))" docs/*.md || failed "$drawing is shown nowhere"
    # It has a light ground of its own, so that it can be read in dark mode, and fetches nothing.
    grep -q '<rect x="0.5" y="0.5" .*fill="#ffffff"' "$drawing" || failed "$drawing has no ground"
    expect "$drawing fetches nothing" '' "$(grep -nE '(href|src)="[^#]|url\([^#]|@import|@font-face' "$drawing" || true)"
done

report
