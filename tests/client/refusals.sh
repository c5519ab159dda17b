#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Every refusal of the monitor that depends on another setting: provoked, its rule and its way out told, the way out
# followed, and the change accepted then. And those that have no way out.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=displayctl.sh
. "$(dirname "$0")/displayctl.sh"
desk_start

# member NAME: the text of a member of the JSON document in $output that has a text or a list of one text
member() { sed -n "s/.*\"$1\":\[\{0,1\}\"\([^\"]*\)\".*/\1/p" <<<"$output"; }

# follow TEXT WAY COMMAND...: the monitor refuses with the text, the way out is told and helps.
follow() {
    local text=$1 way=$2
    shift 2
    ctl --json "$@"
    expect "$* is refused" "1: refused" "$result: $(member outcome)"
    expect "$*: the monitor's own text" "$text" "$(member message | sed 's/.*"message":"//')"
    expect "$*: the way out" "$way" "$(member first)"
    ctl "$@"
    expect "$*: the way out, to be copied" \
        "  first              displayctl -m $(url admin) $(case $way in *=*) echo set ;; *) echo run ;; esac) $way" \
        "$(grep '^  first' <<<"$errors")"
    case $way in
    *=*) ctl set "$way" ;;
    *) # shellcheck disable=SC2086 # an action and its argument
        ctl run $way ;;
    esac
    expect "$way is accepted" 0 "$result"
    ctl "$@"
    expect "$* is accepted then" 0 "$result"
}

follow 'ResetToLastCalibration allowed for active colorspace only.' monitor.preset=2 run reset-calibration last 2
follow 'Luminance value changing allowed to active colorspace only.' monitor.preset=3 set --direct preset.3.luminance=110
ctl set luminance=99
follow 'Operation not allowed.Current store have user-adjusted luminance' 'reset-calibration factory' run reset-calibration last

follow 'PIP mode or picture beside picture is off. Unable to set the value for pip size' pip.mode=pip set --direct pip.size=minimum
ctl set pip.mode=off
follow 'PIP mode is off. Unable to set the value for PIPInput source' pip.mode=pip set --direct pip.input=dp1
ctl set pip.mode=pbp
follow 'PIP mode or picture in picture is off. Unable to set the value for pip positions' pip.mode=pip set --direct pip.position=200,200
ctl set pip.size=default
follow 'Invalid values, PIP Size is default. Valid Values of PIPPositionX are between 160 and 1688 and Valid values of PIPPositionY are between 160 and 880.' pip.size=minimum set --direct pip.position=2000,1000
ctl set pip.mode=off
follow 'PIP mode is off. Unable to set the value for OverScan' pip.mode=pip set --direct pip.overscan=on
ctl set pip.mode=off
follow 'PIP mode is off. Unable to set the value for Swap input source' pip.mode=pip run swap-inputs
ctl set monitor.input=dp1 pip.input=dp2 pip.mode=off
follow 'PIP mode is off. Unable to set the value' pip.mode=pip set --direct pip.dci=1
ctl set pip.input=dp1
follow 'PIP active resolution does not support DCI. Unable to set the value' pip.input=dp2 set --direct pip.dci=2

follow '4k not supported. (Pixel-for-Pixel should be enabled)' picture.aspect=4 set --direct picture.region-4k=10,10
ctl set picture.aspect=0
follow '4k not supported. (Pixel-for-Pixel should be enabled)' picture.aspect=4 run 4k-corner
ctl set monitor.input=hdmi
follow '4k not supported.(Unsupported Resolution)' monitor.input=dp1 run 4k-corner
ctl set monitor.input=hdmi
follow '4k not supported.(Unsupported Resolution)' monitor.input=dp1 set picture.region-4k=20,20
ctl set monitor.input=hdmi
follow 'SourceScaling4K cannot be modified.(Unsupported Resolution)' monitor.input=dp1 set picture.scaling-4k=2
ctl set monitor.input=dp2 picture.dci-region=1
follow 'Invalid Position4KRegionX value 50 and 1486' picture.dci-region=0 set picture.region-4k=0,0
ctl set picture.dci-region=2
follow 'Invalid Position4KRegionY value. Valid values are between 222 and 498' picture.dci-region=0 set picture.region-4k=0,1

ctl --yes set services.web=off
follow 'Remote management status is disabled.' services.web=on --yes set --direct network.mode=dhcp

# ---- no way out ----

refused_for_ever() { # refused_for_ever TEXT ASSIGNMENT
    ctl set "$2"
    expect "$2 is refused, and there is no way out" "1: refused: ${2%%=*} (127.0.0.1:$port)
  the monitor says   $1
  the rule           this monitor does not support it
  first              nothing: there is no way out" "$result: $errors"
    ctl why "$2"
    expect "why $2" "1: refused: ${2%%=*} (127.0.0.1:$port)" "$result: $(head -n 1 <<<"$output")"
}
refused_for_ever 'nothing: its text is blank' picture.mode-4k=1
refused_for_ever SetShow4KPositionOverlay picture.overlay-4k=on
refused_for_ever RequestStateChange services.network=on

# ---- why changes nothing and says the same ----

ctl set pip.mode=off
expect_ctl 'why pip.size=minimum' 1 "refused: pip.size (127.0.0.1:$port)
  the monitor says   PIP mode or picture beside picture is off. Unable to set the value for pip size
  the rule           the second picture must be in picture-in-picture mode
  first              displayctl -m $(url admin) set pip.mode=pip" why pip.size=minimum
expect_ctl 'the mode is as before' 0 off get pip.mode
expect_ctl 'why, of what is accepted' 0 'pip.mode=pip would be accepted' why pip.mode=pip
ctl set pip.mode=pip
ctl --json why pip.dci=1
expect 'why, of what no class tells' '6: {"monitor":"127.0.0.1:'"$port"'","outcome":"unknown","message":"it cannot be known beforehand: the second picture'"'"'s input must carry a DCI picture (4096 or 2048 wide); no class tells which one does","accepted":null,"rule":"the second picture'"'"'s input must carry a DCI picture (4096 or 2048 wide); no class tells which one does","first":["pip.input=dp1"]}' "$result: $output"

# ---- rights, a busy engine, a lost reply, a silent engine, a monitor that is not there ----

ctl_as viewer set picture.deinterlacer=off
expect 'an ordinary user is told' "4: refused: picture.deinterlacer (127.0.0.1:$port)
  the monitor says   Operation not allowed for non-admin user credentials
  the rule           only administrators of the monitor may do this" "$result: $errors"
ctl_as viewer why picture.deinterlacer=off
expect 'and beforehand' "1: refused: picture.deinterlacer (127.0.0.1:$port)" "$result: $(head -n 1 <<<"$output")"
ctl why picture.deinterlacer=off
expect 'an administrator may' '0: picture.deinterlacer=off would be accepted' "$result: $output"
monitor fault busy on
ctl --json set osd.timeout=21
expect 'a busy engine' '1: busy' "$result: $(member outcome)"
monitor fault busy off
monitor fault lose-reply on 1
expect_ctl 'a lost reply, and the value stands: set' 0 'osd.timeout  15 -> 22' set osd.timeout=22
monitor fault lose-reply on 1
ctl --json --yes set management.dp-compatibility=on
expect 'a lost reply, and nothing can be read back: unknown' '6: unknown' "$result: $(member outcome)"
expect_ctl 'what cannot be read back is set' 0 'management.dp-compatibility  on: set, cannot be read back' set management.dp-compatibility=on
run_ctl -m http://admin@127.0.0.1:1 get luminance
expect 'no monitor there' 3 "$result"
DISPLAYCTL_PASSWORD=wrong run_ctl -m "$(url admin)" get luminance
expect 'a wrong password' 4 "$result"

ctl_end
report
