#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# export, diff, apply and undo on a desk monitor.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=displayctl.sh
. "$(dirname "$0")/displayctl.sh"
desk_start
name=127.0.0.1:$port
profile=$scratch/house.yaml
cat >"$profile" <<'PROFILE'
displayctl: 1
settings:
  pip: { size: minimum, position: [200, 300] }
  preset: { 3: { luminance: 110 } }      # cd/m2, 48 to 250
  osd: { timeout: 20 }
PROFILE

expect_ctl 'what differs' 7 'pip.size            profile minimum  monitor default
pip.position        profile 200,300  monitor 1688,880
preset.3.luminance  profile 110      monitor 100
osd.timeout         profile 20       monitor 15' diff "$profile"
ctl --json diff "$profile"
expect 'in JSON' "7: {\"monitor\":\"$name\",\"outcome\":\"different\",\"message\":\"4 settings differ\",\"differences\":[{\"setting\":\"pip.size\",\"profile\":\"minimum\",\"monitor\":\"default\"},{\"setting\":\"pip.position\",\"profile\":[200,300],\"monitor\":[1688,880]},{\"setting\":\"preset.3.luminance\",\"profile\":110,\"monitor\":100},{\"setting\":\"osd.timeout\",\"profile\":20,\"monitor\":15}]}" "$result: $output"
plan='  pip.mode            pip      temporary
  pip.size            minimum
  pip.position        200,300
  monitor.preset      3        temporary
  preset.3.luminance  110
  osd.timeout         20
  monitor.preset      1        temporary
  pip.mode            off      temporary'
expect_ctl 'the plan' 0 "$plan" apply --dry-run "$profile"
ctl apply "$profile"
expect 'it asks' 2 "$result"
expect_ctl 'nothing was sent' 0 15 get osd.timeout
expect_ctl 'applied' 0 "The plan:
$plan
pip.size  default -> minimum
pip.position  1688,880 -> 200,300
preset.3.luminance  100 -> 110
osd.timeout  15 -> 20" --yes apply "$profile"
expect_ctl 'a second time, without asking' 0 unchanged apply "$profile"
expect_ctl 'nothing differs' 0 unchanged diff "$profile"
expect_ctl 'what was switched for a moment is as before' 0 '1
off' get monitor.preset pip.mode

ctl export -o "$scratch/all.yaml"
expect 'the exported profile is what the monitor is' '0: ' "$result: $output"
expect_ctl 'no difference' 0 unchanged diff "$scratch/all.yaml"
expect 'units and ranges are comments' '      luminance: 110  # cd/m2, 48 to 250' "$(grep 'luminance: 110' "$scratch/all.yaml")"
rm "$scratch/all.yaml"

# ---- undo ----

expect_ctl 'the last change' 0 'osd.timeout  restored: 15' --yes undo
expect_ctl 'the second last of those that stand' 0 'pip.position  restored: 2116,1120' --yes undo 2
ctl --yes undo
expect 'then the last one' '0: preset.3.luminance  restored: 100' "$result: $output"
ctl set osd.timeout=25
monitor set menu_timeout 7
ctl undo
expect 'something else has changed it since' "1: displayctl: something else has changed it since: osd.timeout was set to 25 and is 7 now (--yes takes it back all the same)" "$result: $errors"
expect_ctl 'all the same' 0 'osd.timeout  restored: 15' --yes undo

# ---- on a terminal ----

cat >"$scratch/long.yaml" <<'PROFILE'
displayctl: 1
settings:
  osd: { timeout: 9, rotation: 1, show-on-preset: off, show-on-input: off, show-on-power: off }
  buttons: { color: 1, mode: 1, fade: off }
PROFILE
ctl export -o "$scratch/before.yaml"
monitor fault slow on 0.3
ctl_environment admin
shown=$(script -qec "$(printf '%q ' "$DISPLAYCTL" -m "$(url admin)" --yes apply "$scratch/long.yaml")" /dev/null </dev/null)
monitor fault clear
expect 'long work shows how far it is' yes "$(tr '\r' '\n' <<<"$shown" | grep -q '^\[#*\.*\] 7/8$' && echo yes)"
expect_ctl 'and is done' 0 unchanged diff "$scratch/long.yaml"
ctl --yes apply "$scratch/before.yaml"
expect 'nothing of it without a terminal' '0: ' "$result: $errors"
rm "$scratch/long.yaml" "$scratch/before.yaml"
declined=$(script -qec "$(printf '%q ' "$DISPLAYCTL" -m "$(url admin)" run power-off)" /dev/null <<<n) || true
expect 'what is not agreed to is not done' 'displayctl: nothing was changed' "$(tr -d '\r' <<<"$declined" | grep -o 'displayctl: .*')"
expect_ctl 'the monitor is on' 0 on get monitor.power

# ---- all or nothing ----

cat >"$scratch/refused.yaml" <<'PROFILE'
displayctl: 1
settings:
  osd: { timeout: 28, rotation: 1 }
  picture: { scaling-4k: 2 }
PROFILE
ctl set monitor.input=hdmi
ctl --yes apply "$scratch/refused.yaml"
expect 'a refusal takes all back' '1: restored' "$result: $(tail -n 1 <<<"$output")"
expect_ctl 'as it was' 0 '15
0' get osd.timeout osd.rotation
ctl --yes apply --keep-going "$scratch/refused.yaml"
expect 'or goes on' 1 "$result"
expect_ctl 'with the others' 0 '28
1' get osd.timeout osd.rotation
rm "$scratch/refused.yaml"

wrong_profile() { # wrong_profile TEXT PROFILE
    printf '%s\n' "$2" >"$scratch/wrong.yaml"
    ctl --yes apply "$scratch/wrong.yaml"
    expect "a profile: $1" "2: displayctl: $scratch/wrong.yaml$1" "$result: $errors"
    rm "$scratch/wrong.yaml"
}
wrong_profile ": this is no profile: it does not begin with 'displayctl: 1'" ''
wrong_profile ":2: there is no setting 'osd.timout'; do you mean osd.timeout?" $'displayctl: 1\nsettings: { osd: { timout: 3 } }'
wrong_profile ":3: osd.timeout cannot be '300'; it takes 5 to 30" $'displayctl: 1\nsettings:\n  osd: { timeout: 300 }'

rm "$profile"
ctl_end
report
