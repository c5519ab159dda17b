# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=sh
# For the scripts of this repository, which source it before they do anything: what each of them answers to --help and
# --version, and how it ends when it is called wrongly.
#
#   asked_for_help "$@"          prints the help or the version and ends, if an argument asks for it
#   wrong_usage MESSAGE          ends with 2

# The comment at the head of a script is its help.
usage() { sed -n '2,/^[^#]/{/^[^#]/d;/SPDX-License-Identifier/d;s/^# \{0,1\}//;p;}' "$script"; }

asked_for_help() {
    for argument; do
        case $argument in
        -h | --help) usage; exit 0 ;;
        --version) echo "${script##*/} ($(sed -n 's/^project(\(.*\) VERSION \([0-9.]*\).*/\1 \2/p' "$root/CMakeLists.txt"))"; exit 0 ;;
        esac
    done
}

wrong_usage() {
    echo "${script##*/}: $*; see ${script##*/} --help" >&2
    exit 2
}

script=$(cd "$(dirname "$0")" && pwd)/$(basename "$0")
root=$(cd "$(dirname "$script")" && while [ ! -e CMakePresets.json ] && [ "$PWD" != / ]; do cd ..; done && pwd)
