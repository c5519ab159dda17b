# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Completion of displayctl for bash; to try it: eval "$(displayctl completion bash)"
_displayctl() {
    local line=${COMP_LINE:0:COMP_POINT} word before words
    read -ra words <<<"$line"
    [[ $line != *[[:space:]] ]] || words+=('')
    word=${words[${#words[@]} - 1]}
    mapfile -t COMPREPLY < <("${words[0]}" __complete -- "${words[@]:1}" 2>/dev/null)
    if [ "${COMPREPLY[*]-}" = ':files' ]; then
        COMPREPLY=()
        compopt -o default
        return
    fi
    [ "${#COMPREPLY[@]}" != 1 ] || [[ ${COMPREPLY[0]} != *= ]] || compopt -o nospace
    # bash breaks words at = and :, and replaces what stands behind the last of them.
    before=${word%"${word##*["=:"]}"}
    COMPREPLY=("${COMPREPLY[@]#"$before"}")
}
complete -F _displayctl displayctl
