# SPDX-License-Identifier: Apache-2.0
# Completion of displayctl for fish; to try it: displayctl completion fish | source
function __displayctl_complete
    set -l words (commandline -opc)
    set -l found ($words[1] __complete -- $words[2..-1] (commandline -ct) 2>/dev/null)
    if test "$found" = ':files'
        __fish_complete_path (commandline -ct)
    else if test (count $found) -gt 0
        printf '%s\n' $found
    end
end
complete -c displayctl -f -a '(__displayctl_complete)'
