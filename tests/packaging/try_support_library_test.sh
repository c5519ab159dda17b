#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# tools/try-support-library with a library that is wrong everywhere, with one whose engine does not run, and with one in which
# a function is missing.
#
#   try_support_library_test.sh SOURCE_DIR COMPILER
set -eu
here=$(dirname "$0")
. "$here/check.sh"
source=$1 compiler=$2
scratch
try() { # try ARGUMENT...
    status=0
    "$source/tools/try-support-library" "$@" >"$scratch/out" 2>"$scratch/err" || status=$?
}
compile() { "$compiler" -shared -fPIC -w -I "$source/include" "$@" -o "$scratch/library.so" "$here/wrong_support_library.c"; }

compile
try --seconds 2 "$scratch/library.so"
expect 'everything wrong: its status' 1 "$status"
expect 'everything wrong: every mistake is named' "WRONG  GetMoinitorInfo                writes 4 bytes beyond its 141
WRONG  GetDisplayManagementInfo       returns 1, 0 is success
WRONG  GetImageAdjustmentInfo         leaves the record as it was
WRONG  GetPIPSettingsInfo             ended the process: Aborted
WRONG  GetOSDMenuAndMessagesInfo      did not return within 2 seconds
WRONG  GetBezelButtonInfo             ended the process with 3
WRONG  GetTestPatternInfo             returns -1, 0 is success
WRONG  GetRemoteManagementServerInfo  writes 1 bytes beyond its 80
WRONG  GetColorSpaceInfoById          index 0 returns -1; takes index 7, which is none
WRONG  GetFunctionButtonInfoById      takes index 4, which is none
WRONG  GetRegisterValue               register 50: not a decimal number: 'off'
WRONG  GetMonitorStatus               ended the process: Aborted
WRONG  GetIPAddress                   the text has no end
WRONG  ParseIPV4Address               192.168.10.21 is not 192, 168, 10, 21, first octet first
WRONG  ValidateInputArgs              refuses 1 of 1 to 10
WRONG  IsAdminUser                    knows a user who is not there; fails without a text
WRONG  ValidateDisplayName            refuses Grading 1
WRONG  ValidateDeploymentDate         takes 2026-03-05, which is not DD/MM/YYYY
WRONG  UpdateDisplayName              'Trial 1' is given, '?????????????????????????' is read
WRONG  UpdateDeploymentDate           fails without a text; refuses '14/07/1970', which stands
WRONG  UpdateDeploymentLocation       writes 3 bytes beyond its 250; the error text has no end; refuses '?????????????????????????', which stands
WRONG  SpearEngineMessageQueueCreate  queue 0 gets no identifier; queue 3 gets no identifier
WRONG  SendStatusMessagetoSource      a get request is not taken
WRONG  RecvMessageFromSource          a get request is not answered
WRONG  two callers at once            100 of 100 got no reply of their own
WRONG  a reply is its caller's        a get request is not taken; a caller who asked for nothing was handed it" \
    "$(grep -E '^(right|WRONG)' "$scratch/out")"
expect 'everything wrong: their number' '26 WRONG.' "$(grep 'WRONG\.$' "$scratch/out")"
expect 'everything wrong: what to set' 1 "$(grep -c '^docs/integrator.md tells how' "$scratch/out")"

compile -DValidateInputArgs=ValidateOtherArgs
try "$scratch/library.so"
expect 'one missing: it is named, and nothing is asked' \
    'WRONG  ValidateInputArgs              is not there: what is asked of it cannot be tried
1 WRONG.' "$(head -2 "$scratch/out")"

try "$scratch/none.so"
expect 'no file' "1 try-support-library: there is no file $scratch/none.so" "$status $(cat "$scratch/err")"
echo text >"$scratch/text.so"
try "$scratch/text.so"
expect 'no library: its status' 1 "$status"
try --seconds 0 "$scratch/library.so"
expect 'no time' 2 "$status"
report
