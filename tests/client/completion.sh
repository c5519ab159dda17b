#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# What the shells complete: what the program offers, and that each script, in its shell, takes it.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
DISPLAYCTL=${DISPLAYCTL:-$here/../../build/release/client/displayctl}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
unset DISPLAYCTL_CONFIG DISPLAYCTL_MONITOR DISPLAYCTL_PASSWORD
export XDG_CONFIG_HOME=$scratch XDG_STATE_HOME=$scratch
mkdir "$scratch/bin" "$scratch/displayctl"
ln -s "$(realpath "$DISPLAYCTL")" "$scratch/bin/displayctl"
export PATH=$scratch/bin:$PATH
cat >"$scratch/displayctl/monitors.yaml" <<'FILE'
names: names.yaml
monitors:
  suite4-a: { url: "http://127.0.0.1:1", labels: [suite4, hdr] }
  suite4-b: { url: "http://127.0.0.1:2", labels: [suite4] }
FILE
echo 'osd.language: { 0: English, 4: German }' >"$scratch/displayctl/names.yaml"

checks=0
wrong=0
skipped=0
expect() { # expect WHAT EXPECTED ACTUAL
    checks=$((checks + 1))
    if [ "$2" = "$3" ]; then
        printf '  right: %s\n' "$1"
    else
        wrong=$((wrong + 1))
        printf '  WRONG: %s\n' "$1"
        diff -u --label expected --label actual <(printf '%s\n' "$2") <(printf '%s\n' "$3") || true
    fi
}
offered() { displayctl __complete -- "$@" | paste -sd' '; }

# ---- what the program offers ----

expect 'commands' 'watch' "$(offered wat)"
expect 'commands after options and their values' 'watch' "$(offered --json -m suite4-a --jobs 3 wat)"
expect 'options' '--json --jobs' "$(offered --j | tr ' ' '\n' | sort -r | paste -sd' ')"
expect 'options of a command' '--interval' "$(offered watch --int)"
expect 'monitors' 'all label=hdr label=suite4 suite4-a suite4-b' "$(offered -m '')"
expect 'labels' 'label=suite4' "$(offered get --monitor label=s)"
expect 'monitors of another file' 'all' "$(offered -c /nowhere.yaml -m '')"
expect 'the name of a file' ':files' "$(offered -c '')"
expect 'settings' 'pip.mode' "$(offered get pip.m)"
expect 'settings of the preset in use' 'preset.active.luminance' "$(offered show preset.active.l)"
expect 'settings, shortened' 'luminance' "$(offered get lum)"
expect 'settings to be set' 'pip.mode=' "$(offered set pip.m)"
expect 'values' 'pip.mode=off pip.mode=pbp pip.mode=pip' "$(offered set pip.mode=)"
expect 'values of a shortened name' 'overscan=off overscan=on' "$(offered set picture.mode=1 picture.overscan=o | sed 's/picture\.//g')"
expect 'values that the site has names for' 'osd.language=German' "$(offered set osd.language=G)"
expect 'actions' 'reset-calibration' "$(offered run res)"
expect 'what an action takes' 'factory last' "$(offered run reset-calibration '')"
expect 'actions that may be asked about' 'swap-inputs' "$(offered why swap)"
expect 'actions, settings and commands to be told about' 'power-off power-recall power-saver' "$(offered help power-)"
expect 'shells' 'bash fish zsh' "$(offered completion '')"
expect 'profiles' ':files' "$(offered apply '')"
expect 'nothing for what there is not' '' "$(offered get no-such)"
expect 'nothing for a value of what there is not' '' "$(offered set no-such=)"
expect 'a shell that there is not' 2 "$(displayctl completion csh >/dev/null 2>&1 && echo 0 || echo $?)"

# ---- bash ----

in_bash() { # in_bash LINE: what would be put in the place of the last part of the word
    bash -c 'eval "$(displayctl completion bash)"
        compopt() { echo "option: $*"; }
        COMP_LINE=$1 COMP_POINT=${#1}
        _displayctl
        printf "%s\n" "${COMPREPLY[@]}"' bash "$1" | paste -sd' '
}
expect 'bash: a command' 'watch' "$(in_bash 'displayctl wat')"
expect 'bash: the next word' 'bash fish zsh' "$(in_bash 'displayctl completion ')"
expect 'bash: a setting to be set goes on without a blank' 'option: -o nospace pip.mode=' "$(in_bash 'displayctl set pip.m')"
expect 'bash: a value stands behind the sign that breaks the word' 'pbp pip' "$(in_bash 'displayctl set pip.mode=p')"
expect 'bash: a file' 'option: -o default ' "$(in_bash 'displayctl apply ho')"

# ---- zsh and fish ----

if ! command -v zsh >/dev/null || ! command -v fish >/dev/null; then
    echo 'Skipped: zsh and fish are not both installed.'
    skipped=77
else
    in_zsh() { # in_zsh WORD...: what is handed to compadd
        zsh -fc 'compdef() { :; }; compadd() { print -r -- "$@"; }; _files() { print files; }
            eval "$(displayctl completion zsh)"
            words=("$@") CURRENT=$#
            _displayctl' zsh "$@" | paste -sd' '
    }
    expect 'zsh: a command' '-Q -- watch' "$(in_zsh displayctl wat)"
    expect 'zsh: a setting to be set goes on without a blank' '-Q -S  -- pip.mode=' "$(in_zsh displayctl set pip.m)"
    expect 'zsh: values' '-Q -- pip.mode=pbp pip.mode=pip' "$(in_zsh displayctl set pip.mode=p)"
    expect 'zsh: a file' 'files' "$(in_zsh displayctl apply ho)"

    in_fish() { # in_fish LINE
        HOME=$scratch fish -c 'displayctl completion fish | source; complete -C $argv[1]' "$1" | sort | paste -sd' '
    }
    expect 'fish: a command' 'watch' "$(in_fish 'displayctl wat')"
    expect 'fish: values' 'pip.mode=pbp pip.mode=pip' "$(in_fish 'displayctl set pip.mode=p')"
fi

printf '%d checks, %d wrong\n' "$checks" "$wrong"
[ "$wrong" = 0 ] && [ "$checks" -gt 0 ] && exit $skipped
