#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# What the programs that serve do not need while they wait, the kernel has back: when they have started, and when there was
# nothing to do for a while.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"

# code_of PROCESS FILE: the kilobytes of the code of a program or library that the process has.
code_of() {
    awk -v file="$2" '
        /^[0-9a-f]+-/ { found = $2 == "r-xp" && $NF ~ "/" file "[^/]*$" }
        found && /^Rss:/ { sum += $2 }
        END { print sum + 0 }' "/proc/$1/smaps"
}
has_none() { [ "$(code_of "$1" "$2")" = 0 ]; }

desk_start
host=${desk_host[$desk]} engine=${desk_engine[$desk]}
given_back() { # given_back WHEN
    eventually "$1 the object manager has given the library's code back" has_none "$host" libcmpiDisplayManagement
    right "$1 the object manager has given the library's code back"
    eventually "$1 the engine has given the store's code back" has_none "$engine" libsqlite3
    right "$1 the engine has given the store's code back"
}
given_back 'after the start'
expect_method viewer ColorSpace/1 SetDisplayLuminance 'Luminance="120"' 0 DisplayLuminance 250 120
expect 'a change has read the code of the library again' yes "$( (($(code_of "$host" libcmpiDisplayManagement) > 0)) && echo yes)"
expect 'and that of the store' yes "$( (($(code_of "$engine" libsqlite3) > 0)) && echo yes)"
given_back 'after a while'
expect_property ColorSpace/1 DisplayLuminance 120
report
