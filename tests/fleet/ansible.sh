#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The Ansible collection, with Debian's ansible-core, on desks: a profile for all of them, a second time, in check mode, with a
# dead and a busy monitor among them; what a refusal takes back; facts and actions.
#
#   ansible.sh COUNT    so many desks, three at least
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=../client/displayctl.sh
. "$source_dir/tests/client/displayctl.sh"
# shellcheck source=fleet.sh
. "$(dirname "$0")/fleet.sh"
needs ansible-playbook ansible-core
count=$1
fleet_start "$count"

mkdir -p "$scratch/ansible/collections/ansible_collections/marovelton" "$scratch/ansible/home" "$scratch/ansible/bin"
ln -s "$source_dir/fleet/ansible" "$scratch/ansible/collections/ansible_collections/marovelton/display"
ln -s "$DISPLAYCTL" "$scratch/ansible/bin/displayctl"
cp "$DISPLAYCTL_CONFIG" "$scratch/ansible/monitors.yaml"
sed -i 's|\(  desk-[12]: .*\) }|\1, labels: [suite-4] }|' "$scratch/ansible/monitors.yaml"
cd "$scratch/ansible"
export DISPLAYCTL_CONFIG=$scratch/ansible/monitors.yaml HOME=$scratch/ansible/home PATH=$scratch/ansible/bin:$PATH
export ANSIBLE_COLLECTIONS_PATH=$scratch/ansible/collections ANSIBLE_NOCOLOR=1 ANSIBLE_FORKS=2 ANSIBLE_NOCOWS=1 \
    ANSIBLE_LOCALHOST_WARNING=false ANSIBLE_CONFIG=$scratch/ansible/ansible.cfg LC_ALL=C.UTF-8 PYTHONDONTWRITEBYTECODE=1
: >ansible.cfg
printf 'plugin: marovelton.display.monitors\n' >displayctl.yml
printf 'displayctl: 1\nsettings:\n  monitor: { name: of one monitor }\n  osd: { timeout: 20 }\n' >house.yaml

# play ARGUMENTS: what it prints is in printed, its exit code in $result. Twenty desks on a small machine are slow.
play() {
    result=0
    ansible-playbook -i displayctl.yml "$@" >printed 2>errors </dev/null || result=$?
}
# One line for each host, of those that count: NAME changed=1 unreachable=0 failed=0.
recap() { sed -n '/^PLAY RECAP/,$s/^\([^ ]*\) *:.*\(changed=[0-9]*\).*\(unreachable=[0-9]*\).*\(failed=[0-9]*\).*/\1 \2 \3 \4/p' printed | sort -V; }
all_desks() { for ((i = 1; i <= count; ++i)); do echo "desk-$i $1 unreachable=0 failed=0"; done; }
expect_play() { # expect_play WHAT CODE RECAP
    expect "$1" "$2"$'\n'"$3" "$result"$'\n'"$(recap)"
    [ "$(recap)" = "$3" ] || cat printed errors
}
timeouts() { displayctl -m all get osd.timeout | sed 's/.* //' | sort | uniq -c | sed 's/^ *//'; }
differences() { grep -E '^[-+ ]( |[-+]{2})' printed | sort | uniq -c; }

# ---- documentation and inventory ----

for each in module:display_profile module:display_facts module:display_action inventory:monitors; do
    expect "ansible-doc renders ${each#*:}" 0 "$(ansible-doc -t "${each%%:*}" "marovelton.display.${each#*:}" >printed 2>errors; echo $?)"
    grep -q 'OPTIONS' printed || failed "the documentation of ${each#*:} names no options"
    expect "and has nothing to warn of" '' "$(cat errors)"
done
ansible-inventory -i displayctl.yml --list >printed 2>errors || failed 'ansible-inventory'
expect 'the inventory has every monitor' "$count" "$(grep -c '"displayctl_url"' printed)"
ansible-inventory -i displayctl.yml --graph suite_4 >printed
expect 'a label is a group' "@suite_4:
  |--desk-1
  |--desk-2" "$(cat printed)"

# ---- a profile ----

house=$source_dir/fleet/ansible/playbooks/house.yml
play --check --diff "$house" -e profile="$scratch/ansible/house.yaml"
expect_play 'check mode says what would be changed' 0 "$(all_desks changed=1)"
differences >differences.check
expect 'and changes nothing' "$count 15" "$(timeouts)"
play --diff "$house" -e profile="$scratch/ansible/house.yaml"
expect_play 'the first run changes every monitor' 0 "$(all_desks changed=1)"
expect 'all are as the profile has it' "$count 20" "$(timeouts)"
expect 'check mode was exact' "$(cat differences.check)" "$(differences)"
[ -s differences.check ] || failed 'there were no differences'
expect 'no monitor has got the name of another' 0 "$(displayctl -m all get monitor.name | grep -c 'of one monitor' || true)"
play "$house" -e profile="$scratch/ansible/house.yaml"
expect_play 'the second run changes none' 0 "$(all_desks changed=0)"
play --check "$house" -e profile="$scratch/ansible/house.yaml"
expect_play 'check mode agrees' 0 "$(all_desks changed=0)"

# ---- one is dead, one is busy, the others are done ----

cat >play.yml <<'YAML'
- hosts: monitors
  gather_facts: false
  module_defaults:
    group/marovelton.display.displayctl: { monitor: "{{ inventory_hostname }}" }
  tasks:
    - marovelton.display.display_profile:
        settings: { osd: { timeout: 25 } }
YAML
echo '  dead: { url: "http://127.0.0.1:1" }' >>monitors.yaml
DESK_MONITOR_STORE=$scratch/fleet/2/monitor.db "$DESK_COMMAND" fault busy on >/dev/null
play play.yml
expect_play 'the dead one is unreachable, the busy one has failed' 4 "$(echo 'dead changed=0 unreachable=1 failed=0'
    all_desks changed=1 | sed 's/^desk-2 .*/desk-2 changed=0 unreachable=0 failed=1/')"
expect 'the busy one is called so' 1 "$(grep -c '^fatal: \[desk-2\]: FAILED! .*"outcome": "busy"' printed || true)"
expect 'and so is the dead one' 1 "$(grep -c '^fatal: \[dead\]: UNREACHABLE! .*"outcome": "unreachable"' printed || true)"
DESK_MONITOR_STORE=$scratch/fleet/2/monitor.db "$DESK_COMMAND" fault clear >/dev/null
sed -i '/^  dead:/d' monitors.yaml
expect 'the others are done' "1 20
$((count - 1)) 25" "$(timeouts)"

# ---- a refusal takes back what was done before it ----

sed "s|user: admin|user: viewer|; s|fleet/password|ansible/password|" monitors.yaml >viewer.yaml
(umask 077 && sed -n "s/^export DESK_VIEWER_PASSWORD='\(.*\)'/\1/p" "$scratch/fleet/env" >password)
task() { # task NAME OPTIONS: on desk-1 alone
    ansible -i displayctl.yml desk-1 -m "marovelton.display.$1" -a "$2" "${@:3}" >printed 2>errors </dev/null || true
}
task display_profile "{\"monitor\": \"desk-1\", \"config\": \"$scratch/ansible/viewer.yaml\",
    \"settings\": {\"osd\": {\"timeout\": 10}, \"picture\": {\"cadence\": false}}}"
expect 'an ordinary user is refused, and all is taken back' 'FAILED "changed": false "outcome": "login" "rolled_back": true' \
    "$(sed -n 's/^desk-1 | \([A-Z]*\)!.*/\1/p' printed) $(grep -oE '"changed": [a-z]*|"outcome": "[a-z]*"|"rolled_back": [a-z]*' printed | tr '\n' ' ' | sed 's/ $//')"
expect 'the value is as before' 25 "$(displayctl -m desk-1 get osd.timeout)"

# ---- facts and actions ----

task display_facts '{"monitor": "desk-1", "settings": ["osd"]}'
expect 'facts' '"osd.timeout": 25' "$(sed -n '/"ansible_facts"/,/}/p' printed | grep -o '"osd.timeout": [0-9]*')"
task display_action '{"monitor": "desk-1", "action": "reset-calibration last"}'
expect 'an action wants to be confirmed' 1 "$(grep -c 'reset-calibration last is done with confirm: true only' printed || true)"
task display_action '{"monitor": "desk-1", "action": "swap-inputs", "confirm": true}'
expect 'a refused action' '"outcome": "refused"' "$(grep -o '"outcome": "[a-z]*"' printed)"
before=$(displayctl -m desk-1 history 2>/dev/null | wc -l)
task display_action '{"monitor": "desk-1", "action": "reset-calibration last", "confirm": true}' --check
expect 'check mode would do it' CHANGED "$(sed -n 's/^desk-1 | \([A-Z]*\).*/\1/p' printed)"
expect 'and does not' "$before" "$(displayctl -m desk-1 history 2>/dev/null | wc -l)"
task display_action '{"monitor": "desk-1", "action": "reset-calibration last", "confirm": true}'
expect 'it is done' CHANGED "$(sed -n 's/^desk-1 | \([A-Z]*\).*/\1/p' printed)"
task display_facts '{"monitor": "label=suite-4"}'
expect 'a task is for one monitor' 1 "$(grep -c 'label=suite-4 is more than one monitor' printed || true)"

cd /
HOME=/ fleet_stop
rm -rf "$scratch/ansible"
report
