#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# tree, watch and history on a desk monitor.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=displayctl.sh
. "$(dirname "$0")/displayctl.sh"
desk_start

# ---- tree ----

expect_ctl 'the tree to depth 1' 0 "Monitor \"ZT:Marovelton_Monitor\"
|-- TestPattern (Monitor -> TestPatternGenerator)
|   \`-- TestPatternGenerator \"ZT:Marovelton_TestPatternGenerator\"
|-- PIPFunctionality (Monitor -> PictureInPicture)
|   \`-- PictureInPicture \"ZT:Marovelton_PictureInPicture\"
|-- OnScreenDisplay (Monitor -> OSDMenuAndMessages)
|   \`-- OSDMenuAndMessages \"ZT:Marovelton_OSDMenuAndMessages\"
|-- Management (Monitor -> DisplayManagement)
|   \`-- DisplayManagement \"ZT:Marovelton_DisplayManagement\"
|-- InputSource (Monitor -> VideoInput)
|   |-- VideoInput \"ZT:Marovelton_VideoInput:1\"
|   |-- VideoInput \"ZT:Marovelton_VideoInput:2\"
|   \`-- VideoInput \"ZT:Marovelton_VideoInput:3\"
|-- ImageAdjustmentModel (Monitor -> ImageAdjustment)
|   \`-- ImageAdjustment \"ZT:Marovelton_ImageAdjustment\"
|-- ColorModel (Monitor -> ColorSpace)
|   |-- ColorSpace \"ZT:Marovelton_ColorSpace:1\"
|   |-- ColorSpace \"ZT:Marovelton_ColorSpace:2\"
|   |-- ColorSpace \"ZT:Marovelton_ColorSpace:3\"
|   |-- ColorSpace \"ZT:Marovelton_ColorSpace:4\"
|   |-- ColorSpace \"ZT:Marovelton_ColorSpace:5\"
|   |-- ColorSpace \"ZT:Marovelton_ColorSpace:6\"
|   \`-- ColorSpace \"ZT:Marovelton_ColorSpace:7\"
|-- Button (Antecedent -> Dependent)
|   |-- FunctionButton \"ZT:Marovelton_FunctionButton:1\"
|   |-- FunctionButton \"ZT:Marovelton_FunctionButton:2\"
|   |-- FunctionButton \"ZT:Marovelton_FunctionButton:3\"
|   |-- FunctionButton \"ZT:Marovelton_FunctionButton:4\"
|   \`-- BezelButton \"ZT:Marovelton_BezelButton\"
\`-- SystemDevice (PartComponent -> GroupComponent)
    \`-- Linux_ComputerSystem \"$(hostname)\"
22 objects, 21 associations" tree --depth 1

expect_ctl 'the tree to depth 0' 0 'Monitor "ZT:Marovelton_Monitor"
1 objects, 0 associations' tree --depth 0

# Another client's walk over the same objects counts the same.
ctl tree
expect 'the whole tree counts as the standard client does' \
    "$("$source_dir/tools/object-graph" "http://admin:$(<"$directory/password.admin")@127.0.0.1:$port" | tail -n 1)" \
    "$(tail -n 1 <<<"$output")."
expect 'what an association says stands behind its end' 1 \
    "$(grep -c -- '-- IPAssignmentSettingData "ZT:Marovelton_IPAssignmentSettingData" \[IsCurrent=1, IsNext=2\]$' <<<"$output")"
ctl --json tree --depth 0
expect 'the tree as JSON' "0: {\"monitor\":\"127.0.0.1:$port\",\"outcome\":\"ok\",\"tree\":[{\"object\":\"ZT_Marovelton_Monitor.CreationClassName=\\\"ZT_Marovelton_Monitor\\\",DeviceID=\\\"ZT:Marovelton_Monitor\\\",SystemCreationClassName=\\\"Linux_ComputerSystem\\\",SystemName=\\\"$system\\\"\"}]}" "$result: $output"

# ---- watch ----

watch_start() { # watch_start ARGUMENTS
    ctl_environment admin
    timeout "$patience" "$DISPLAYCTL" -m "$(url admin)" "$@" >"$scratch/watched" 2>"$scratch/watching" </dev/null &
    watching=$!
    eventually 'the first look is over' grep -qs '^watching ' "$scratch/watching"
}
watch_stop() {
    kill -TERM "$watching"
    wait "$watching" 2>/dev/null || true
    rm -f "$scratch/watched" "$scratch/watching"
}
# With the time of day before it.
has_watched() { grep -Eqx "([0-9]{2}:[0-9]{2}:[0-9]{2}  )?$1" "$scratch/watched"; }

watch_start watch pip active.luminance --interval 0.05
expect 'watch says what it watches' 'watching 9 settings of 1 monitor; Ctrl-C ends it' "$(<"$scratch/watching")"
expect_ctl 'a change while it watches' 0 'pip.mode  off -> pip' set pip.mode=pip
eventually 'the change is printed' has_watched 'pip\.mode  off -> pip'
expect_ctl 'a change beside what is watched' 0 'osd.timeout  15 -> 20' set osd.timeout=20
expect_ctl 'another change' 0 'preset.1.luminance  250 -> 120' set preset.1.luminance=120
eventually 'the other change is printed' has_watched 'preset\.active\.luminance  250 -> 120'
expect 'what is not watched is not printed, what is, once' 2 "$(wc -l <"$scratch/watched")"
host_stop
eventually 'a monitor that is lost is named' grep -q '127.0.0.1:.*  no connection to 127.0.0.1:' "$scratch/watching"
watch_stop
host_start

watch_start --json watch pip.mode --interval 0.05
ctl set pip.mode=off
eventually 'a change is printed as JSON' \
    has_watched "\{\"monitor\":\"127.0.0.1:$port\",\"outcome\":\"ok\",\"changes\":\[\{\"setting\":\"pip.mode\",\"old\":\"pip\",\"new\":\"off\"\}\]\}"
right 'a change is printed as JSON'
watch_stop

expect_ctl 'watch ends after so many looks' 0 '' watch --count 2 --interval 0.01
expect_ctl 'what nobody can read cannot be watched' 2 '' watch recalibration-alarm
gone=$(url admin)
host_stop
plain_ctl -m "$gone" watch pip.mode --count 3 --interval 0.01
expect 'a monitor that does not answer is named once' "3: : 1" "$result: $output: $(grep -c 'no connection' <<<"$errors")"
host_start

# ---- history ----

lines=$scratch/state/displayctl/history.jsonl
expect_plain_ctl 'the history as JSON is what is stored' 0 "$(<"$lines")" --json history
plain_ctl history
# shellcheck disable=SC2001 # a pattern, line by line
expect 'the history as a table' \
    'pip.mode            off -> pip  set
osd.timeout         15 -> 20    set
preset.1.luminance  250 -> 120  set
pip.mode            pip -> off  set' "$(sed 's/^[-0-9]* [:0-9]*  [^ ]*  127[^ ]*  //' <<<"$output")"
expect 'the user of this machine is named' 4 "$(grep -c "  $(id -un)  127.0.0.1" <<<"$output")"
expect_plain_ctl 'nothing is later than tomorrow' 0 '' history --since "$(date -d tomorrow +%Y-%m-%d)"
plain_ctl history --since 2h
expect 'all of it is of the last two hours' 4 "$(wc -l <<<"$output")"
expect_plain_ctl 'nothing was changed on another monitor' 0 '' -m http://127.0.0.2:1 history
expect_plain_ctl 'a time that is none' 2 '' history --since yesterday

expect_plain_ctl 'the history is whole' 0 '4 lines, none of them altered, removed or added' history --verify
expect_plain_ctl 'the same as JSON' 0 '{"monitor":null,"outcome":"ok","lines":4}' --json history --verify
cp "$lines" "$scratch/kept"
sed -i '2s/"new":20/"new":21/' "$lines"
expect_plain_ctl 'an altered line is found' 1 'history.jsonl, line 2: the line was altered' history --verify
expect_plain_ctl 'the same as JSON' 1 '{"monitor":null,"outcome":"different","message":"the line was altered","line":2,"lines":4}' \
    --json history --verify
sed -i '$d' "$lines"
sed '$d' "$scratch/kept" >"$lines"
expect_plain_ctl 'a removed last line is found' 1 'history.jsonl, line 4: a line was removed here' history --verify
rm "$scratch/kept"

ctl_end
report
