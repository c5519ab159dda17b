#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# get, set, show, run, help and names on a desk monitor.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=displayctl.sh
. "$(dirname "$0")/displayctl.sh"
desk_start
name=127.0.0.1:$port

# ---- get ----

expect_ctl 'values alone, one line each' 0 '250
off
dp2
1688,880
100
2024-01-01
static
255,255,255
3840x2160' get luminance pip.mode pip.input pip.position osd.opacity monitor.deployed network.mode pattern.color monitor.resolution
ctl --json get preset.3.luminance pip.position pattern.color pip.overscan
expect 'numbers, positions, colours, truth in JSON' "0: {\"monitor\":\"$name\",\"outcome\":\"ok\",\"settings\":{\"preset.3.luminance\":{\"value\":100,\"unit\":\"cd/m2\",\"writable\":true,\"min\":48,\"max\":250},\"pip.position\":{\"value\":[1688,880],\"unit\":\"px\",\"writable\":true},\"pattern.color\":{\"value\":[255,255,255],\"writable\":true},\"pip.overscan\":{\"value\":false,\"writable\":true,\"values\":[\"on\",\"off\"]}}}" "$result: $output"

wrong_usage() { # wrong_usage ERRORS ARGUMENTS
    local text=$1
    shift
    ctl "$@"
    expect "$*: wrong usage" "2: displayctl: $text" "$result: $output$errors"
}
wrong_usage "'mode' may be monitor.mode, pip.mode, buttons.mode, network.mode: say which" get mode
wrong_usage "there is no setting 'luminence'; do you mean preset.active.luminance?" get luminence
wrong_usage 'monitor.recalibration-alarm can be set, but no monitor tells it' get recalibration-alarm

# ---- set ----

expect_ctl 'the preset in use' 0 'preset.1.luminance  250 -> 120' set luminance=120
expect_ctl 'again' 0 'preset.1.luminance  unchanged' set luminance=120cd/m2
expect_ctl 'another preset is made active for it, and the former one afterwards' 0 'preset.5.luminance  80 -> 90' set preset.5.luminance=90
expect_ctl 'which is as before' 0 1 get monitor.preset
expect_ctl 'the second picture is switched on for its size' 0 'pip.size  default -> minimum
pip.position  1688,880 -> 2116,1120  (beside it)' set pip.size=minimum
expect_ctl 'and off again' 0 off get pip.mode
ctl set --direct pip.size=default
expect 'a refusal in its layout, and nothing that has not changed' "1: refused: pip.size ($name)
  the monitor says   PIP mode or picture beside picture is off. Unable to set the value for pip size
  the rule           the second picture must be in picture-in-picture mode
  first              displayctl -m $(url admin) set pip.mode=pip" "$result: $output$errors"
expect_ctl 'the order does not matter' 0 'pip.position  2116,1120 -> 200,300
pip.size  minimum -> default
pip.mode  off -> pip' set pip.position=200,300 pip.size=default pip.mode=pip
expect_ctl 'a preset by its name, and what is in use then' 0 'monitor.preset  1 -> 3
preset.3.luminance  100 -> 101' set monitor.preset=rec.709 luminance=101
expect_ctl 'the language is the code of the monitor both ways' 0 'osd.language  1 -> 0' set osd.language=0
expect 'which the method counts differently' 0 "$(monitor show settings | awk '$1 == "menu_language" { gsub(/\*/, " "); print $4 }')"
expect_ctl 'texts, dates, codes, colours, decimals' 0 'monitor.location  - -> Suite 4, left
monitor.deployed  2024-01-01 -> 2026-02-28
pattern.color  255,255,255 -> 1,2,3
osd.opacity  100 -> 37.5
buttons.fade  on -> off
management.hot-plug-detection  on -> off' set 'monitor.location=Suite 4, left' monitor.deployed=2026-02-28 pattern.color=1,2,3 osd.opacity=37.5 buttons.fade=off management.hot-plug-detection=off
expect_ctl 'cannot be read back' 0 'monitor.recalibration-alarm  500: set, cannot be read back' set recalibration-alarm=500
expect_ctl 'a service, that answers before it has changed' 0 'services.wsman  on -> off' set services.wsman=off
expect_ctl 'a new name, under which all is found again' 0 'services.wsman  off -> on
monitor.name  192.168.10.20 -> Grading 1' set services.wsman=on 'monitor.name=Grading 1'
expect_ctl 'with the new name' 0 'services.wsman  on -> off' set services.wsman=off
ctl --json set osd.timeout=20 osd.rotation=1
expect 'changes in JSON' "0: {\"monitor\":\"$name\",\"outcome\":\"ok\",\"changes\":[{\"setting\":\"osd.timeout\",\"old\":15,\"new\":20,\"result\":\"set\"},{\"setting\":\"osd.rotation\",\"old\":0,\"new\":1,\"result\":\"set\"}]}" "$result: $output"
ctl --json set osd.timeout=20
expect 'unchanged in JSON' "0: {\"monitor\":\"$name\",\"outcome\":\"unchanged\",\"changes\":[{\"setting\":\"osd.timeout\",\"old\":20,\"new\":20,\"result\":\"unchanged\"}]}" "$result: $output"
expect_ctl 'a network setting that is already right asks nothing' 0 'network.mode  unchanged' set network.mode=static
ctl --yes set network.address=192.168.10.30
expect 'an address switches to static and saves a profile first' '0: 1' "$result: $(grep -c '^before: .*/before-.*\.yaml$' <<<"$output")"
wrong_usage 'this asks before it changes anything: give --yes where there is no terminal' set network.mode=dhcp

ctl --yes set network.address=192.168.10.31 network.mode=static
expect 'what is so already is unchanged' 'network.address  192.168.10.30 -> 192.168.10.31
network.mode  unchanged' "$(grep -v '^before: ' <<<"$output")"
ctl --yes set network.mode=dhcp
ctl --yes set network.address=192.168.10.30 network.mode=dhcp
expect 'also what another step had changed for a moment' 'network.address  192.168.10.31 -> 192.168.10.30
network.mode  unchanged' "$(grep -v '^before: ' <<<"$output")"
wrong_usage "there is no command 'sett'
Run with --help for more information." sett luminance=120

# What a method would misread, or no monitor takes, is not sent.
for word in pattern.number=abc pattern.number=9 pattern.color=1,2 pattern.color=1,2,256 services.web=2 services.web=abc \
    recalibration-alarm=abc recalibration-alarm=0 recalibration-alarm=1001 luminance=47 luminance=251 luminance=100x \
    osd.opacity=40 buttons.brightness=7 osd.timeout=4 pip.size=3 pip.position=1,1 monitor.deployed=31/01/2026 \
    monitor.deployed=2026-02-30 network.address=1.2.3 monitor.preset=8 osd.rotation=on monitor.name= monitor.power=off preset.1.gamma=2; do
    ctl set "$word"
    expect "$word is wrong usage" 2 "$result"
done
wrong_usage "pattern.number cannot be 'abc'; it takes 0 to 8" set pattern.number=abc
wrong_usage 'monitor.power cannot be changed' set power=off
wrong_usage 'osd.timeout is given twice' set osd.timeout=5 timeout=6

# ---- why ----

ctl --json why osd.timeout=20
expect 'what would be accepted has no rule and nothing first' "0: {\"monitor\":\"$name\",\"outcome\":\"ok\",\"accepted\":true,\"rule\":\"\",\"first\":[]}" "$result: $output"
ctl --json why picture.mode-4k=1
expect 'a refusal without a text says so' "1: {\"monitor\":\"$name\",\"outcome\":\"refused\",\"message\":\"the monitor gives no reason\",\"accepted\":false,\"rule\":\"this monitor does not support it\",\"first\":[]}" "$result: $output"

# ---- help ----

expect_plain_ctl 'all about an action' 0 'swap-inputs
  what it does       Exchanges the inputs of the two pictures.
  calls              PictureInPicture.SwapPrimaryPIPInputs
  asks first         no
  what must hold     the second picture must be on
                     depends on pip.mode
                     the monitor says: PIP mode is off. Unable to set the value for Swap input source
  changes as well    monitor.input
  changes as well    pip.input
  example            displayctl run swap-inputs' help swap-inputs
plain_ctl help reset-calibration
expect 'of an action with its arguments, each' 'reset-calibration last
reset-calibration factory' "$(grep '^[a-z]' <<<"$output")"

# ---- show ----

ctl show pip
expect 'a group' "0: pip
  pip.mode          pip          off pip pbp
  pip.size          default      maximum minimum default
  pip.input         dp2          dp1 dp2 hdmi
  pip.position      200,300  px  x,y of 160 to 2116, 160 to 1120
  pip.overscan      off          on off
  pip.video-levels  off          on off
  pip.dci           0            0 to 2
  pip.dci-region    off" "$result: $output"
printf 'displayctl: 1\nsettings: { pip: { mode: pip, dci: 1 } }\n' >"$scratch/profile.yaml"
ctl show pip.mode pip.dci --against "$scratch/profile.yaml"
expect 'what differs from a profile' '0: pip
  pip.mode  pip  off pip pbp
* pip.dci   0    0 to 2' "$result: $output"
rm "$scratch/profile.yaml"
ctl show --all
all=$output
ctl --json show picture.mode-4k preset.1.luminance
expect 'what no monitor lets be changed is not writable' "0: \"picture.mode-4k\":{\"value\":null,\"writable\":false}" "$result: $(grep -o '"picture.mode-4k":{[^}]*}' <<<"$output")"
ctl --json show --all
expect 'properties in the kinds that the classes declare' 2 "$(grep -oE '"(WSManagementService.AvailableRequestedStates":\{"value":\[2,3\]|IPAssignmentSettingData.AddressOrigin":\{"value":11),' <<<"$output" | wc -l)"
output=$all
expect 'every method' 65 "$(grep -oE '[A-Za-z]+\.(Set[A-Za-z0-9]+|RequestStateChange|FactoryReset|SwapPrimaryPIPInputs|ResetTo[A-Za-z]+|ApplySettingToIPNetworkConnection)$' <<<"$output" | sort -u | wc -l)"

# ---- run ----

expect_ctl 'swapped inputs' 0 'swap-inputs  done
monitor.input  dp1 -> dp2
pip.input  dp2 -> dp1' run swap-inputs
expect_ctl 'a calibration that is as reset' 0 'reset-calibration factory  done
preset.3.luminance  101 -> 100' run reset-calibration factory
expect_ctl 'once more' 0 'reset-calibration factory  unchanged' run reset-calibration factory
ctl run factory-reset
expect 'asks' "2: displayctl: this asks before it changes anything: give --yes where there is no terminal" "$result: $errors"
ctl --yes run factory-reset
expect 'factory reset saves a profile' '0: 1' "$result: $(grep -c '^before: .*/before-.*\.yaml$' <<<"$output")"
saved=$(sed -n 's/^before: //p' <<<"$output")
expect 'of what it was' '    timeout: 20  # s, 5 to 30' "$(grep '^    timeout:' "$saved")"
ctl --yes run power-off
expect 'off' '0: monitor.power  on -> off' "$result: $(tail -n 1 <<<"$output")"
wrong_usage "there is no action 'dance'; there are factory-reset, power-off, swap-inputs, 4k-corner, reset-calibration last, reset-calibration factory" run dance

ctl_end
report
