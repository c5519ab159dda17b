#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# apply, killed at random moments: killed.sh [COUNT [SEED]]. The next call says so; undo brings back what was, and apply
# goes on to the end. The seed is printed: with it the moments are the same again.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=displayctl.sh
. "$(dirname "$0")/displayctl.sh"
count=${1:-40}
seed=${2:-$$}
echo "$count moments, seed $seed"
RANDOM=$seed
desk_start
name=127.0.0.1:$port
profile=$scratch/house.yaml
cat >"$profile" <<'PROFILE'
displayctl: 1
settings:
  pip: { size: minimum, position: [200, 300] }
  preset: { 3: { luminance: 110 } }
  osd: { timeout: 20 }
PROFILE

# The settings, without the header with its date.
settings() { ctl export && sed 1,3d <<<"$output"; }
milliseconds() { echo $((${EPOCHREALTIME/[.,]/} / 1000)); }

ctl export -o "$scratch/before.yaml"
before=$(settings)
begin=$(milliseconds)
ctl --yes apply "$profile"
lasts=$(($(milliseconds) - begin)) # as long as it takes on this machine when nothing stops it
expect 'applied' 0 "$result"
ctl --yes apply "$scratch/before.yaml"
expect 'and back' "$before" "$(settings)"

interrupted=0
for number in $(seq "$count"); do
    moment=$((RANDOM % (lasts + lasts / 5 + 1)))
    what="$number: killed after $moment of $lasts ms"
    ctl_environment admin
    "$DISPLAYCTL" -m "$(url admin)" --yes apply "$profile" >/dev/null 2>&1 </dev/null &
    process=$!
    sleep "$(printf '%d.%03d' $((moment / 1000)) $((moment % 1000)))"
    kill -KILL "$process" 2>/dev/null || true
    { wait "$process" || true; } 2>/dev/null
    ctl get osd.timeout
    if [ -n "$errors" ]; then
        interrupted=$((interrupted + 1))
        expect "$what: the next call says so" \
            "displayctl: a change of $name was interrupted (apply $profile): undo takes it back, apply goes on" "$errors"
        if ((interrupted % 2 == 0)); then
            ctl --yes apply "$profile"
            expect "$what: apply goes on" 0 "$result"
            expect_ctl "$what: to the end" 0 '200,300
110
1
off' get pip.position preset.3.luminance monitor.preset pip.mode
        else
            ctl --yes undo
            expect "$what: undo" 0 "$result"
            expect "$what: all is as before" "$before" "$(settings)"
        fi
    fi
    if [ "$(settings)" != "$before" ]; then
        expect_ctl "$what: all was done" 0 unchanged diff "$profile"
        ctl --yes apply "$scratch/before.yaml"
        expect "$what: the profile from before" "$before" "$(settings)"
    fi
    ctl history --verify
    expect "$what: the history verifies" 0 "$result"
done
echo "$interrupted of $count were interrupted between the first step and the last"
expect 'some were interrupted' yes "$( ((interrupted > 0)) && echo yes)"

rm "$profile" "$scratch/before.yaml"
ctl_end
report
