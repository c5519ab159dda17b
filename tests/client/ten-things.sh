#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The ten things of docs/displayctl.md, as they stand there, on a desk monitor.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=displayctl.sh
. "$(dirname "$0")/displayctl.sh"
desk_start
ctl_environment admin
DISPLAYCTL_MONITOR=$(url admin)
export DISPLAYCTL_MONITOR
mkdir "$scratch/work"
displayctl() { (cd "$scratch/work" && "$DISPLAYCTL" "$@"); }

# Each command with what it prints: "$ command", then the lines up to the next one, without the indentation of the page.
command='' expected=''
things=0
run_thing() {
    [ -n "$command" ] || return 0
    things=$((things + 1))
    expect "$command" "$expected" "$(eval "$command" 2>&1 </dev/null || true)"
}
while IFS= read -r line; do
    if [[ $line =~ ^\ +\$\ (displayctl.*)$ ]]; then
        run_thing
        command=${BASH_REMATCH[1]}
        indentation=${line%%\$*}
        expected=
    elif [ -n "$command" ] && [ "${line#"$indentation"}" != "$line" ]; then
        expected+=${expected:+$'\n'}${line#"$indentation"}
    elif [ -n "$line" ]; then
        run_thing
        command=
    fi
done < <(sed -n '/^## Ten things/,/^## Which/p' "$source_dir/docs/displayctl.md")
expect 'commands of the page' 14 "$things"

rm -r "$scratch/work"
ctl_end
report
