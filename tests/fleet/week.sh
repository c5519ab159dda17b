#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The commands of docs/fleet.md print what it says, on desks of the test's own, in one shell and in the order of the page.
#
#   week.sh COUNT    so many desks, eight at least; the page speaks of fifty
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=../client/displayctl.sh
. "$source_dir/tests/client/displayctl.sh"
# shellcheck source=fleet.sh
. "$(dirname "$0")/fleet.sh"
# shellcheck source=../documentation/blocks.sh
. "$source_dir/tests/documentation/blocks.sh"
needs jq jq curl curl promtool prometheus ansible-playbook ansible-core
count=$1
fleet_start "$count"
mkdir -p "$scratch/week" "$scratch/pages" "$scratch/bin" "$scratch/home" "$scratch/collections/ansible_collections/marovelton"
ln -s "$scratch/fleet" "$scratch/week/.desk"
ln -s "$source_dir/fleet" "$scratch/week/fleet"
ln -s "$source_dir/fleet/ansible" "$scratch/collections/ansible_collections/marovelton/display"
ln -s "$DISPLAYCTL" "$scratch/bin/displayctl"

of_these_desks() {
    sed "s/^49\$/$((count - 1))/; s/^50\$/$count/; s/^50 monitors: 45 ok/$count monitors: $((count - 5)) ok/
        s/^50 monitors: 50/$count monitors: $count/"
}
blocks_of "$source_dir/docs/fleet.md" "$scratch/pages"
{
    printf 'cd %q\n' "$scratch/week"
    for commands in "$scratch/pages"/*.sh; do
        printf '. %q >%q 2>&1 </dev/null\n' "$commands" "${commands%.sh}.printed"
    done
} >"$scratch/pages/all"
# .desk/env names the programs of ./run, which are those of the release build.
sed -i "s|^export PATH=.*|export PATH='$scratch/bin':\"\$PATH\"|" "$scratch/fleet/env"
HOME=$scratch/home ANSIBLE_COLLECTIONS_PATH=$scratch/collections ANSIBLE_NOCOLOR=1 LC_ALL=C.UTF-8 PYTHONDONTWRITEBYTECODE=1 \
    ANSIBLE_FORKS=2 bash "$scratch/pages/all" </dev/null || true
for commands in "$scratch/pages"/*.sh; do
    block=${commands%.sh}
    : >"$block.expected"
    [ ! -e "$block.text" ] || of_these_desks <"$block.text" >"$block.expected"
    if matches "$block.expected" "$block.printed"; then
        right "the commands at line $((10#${block##*/}))"
    else
        failed "the commands at line $((10#${block##*/})) of docs/fleet.md"
        diff -u --label 'the page' --label 'printed' "$block.expected" "$block.printed" || true
    fi
done
expect 'blocks of commands' 15 "$(find "$scratch/pages" -name '*.sh' | wc -l)"
fleet_stop
rm -rf "${scratch:?}"/{week,pages,bin,home,collections}
report
