#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The Version of each class has been raised with its definition; and tools/class-versions finds a class in which it was not.
#
#   class_versions_test.sh SOURCE_DIR
set -eu
. "$(dirname "$0")/../packaging/check.sh"
source=$1
scratch
ask() { # ask ARGUMENT...: status and what is said
    status=0
    said=$("$source/tools/class-versions" "$@" 2>&1) || status=$?
}
ask
expect 'the classes and the table' '0 ' "$status $said"
expect 'their number' 33 "$(wc -l <"$source/tests/mof/class_versions.tsv")"

export MOF_DIR="$scratch/mof" CLASS_TABLE="$scratch/table"
mkdir "$MOF_DIR"
class() { # class VERSION TYPE
    printf '// A thing.\n   [Version ( "%s" )]\nclass ZT_Marovelton_Thing {\n   %s Size;\n};\n' "$1" "$2" >"$MOF_DIR/ZT_Marovelton_Thing.mof"
}
: >"$CLASS_TABLE"
class 1.0.9 uint8
ask
expect 'a new class is not in the table' '1 class-versions: ZT_Marovelton_Thing is not in the table as it is: tools/class-versions --renew' "$status $said"
ask --renew
expect 'a new class gets its line' '0 ' "$status $said"
expect 'its line' 'ZT_Marovelton_Thing 1.0.9' "$(awk '{ print $1, $2 }' "$CLASS_TABLE")"
before=$(cat "$CLASS_TABLE")
printf '// Another remark.\n' >>"$MOF_DIR/ZT_Marovelton_Thing.mof"
ask
expect 'a comment is no change' '0 ' "$status $said"
class 1.0.9 uint16
unraised='1 class-versions: ZT_Marovelton_Thing has changed, but its Version is 1.0.9 and was 1.0.9: raise it'
ask
expect 'a change alone is found' "$unraised" "$status $said"
ask --renew
expect 'a change alone is refused' "$unraised" "$status $said"
expect 'and the table stays' "$before" "$(cat "$CLASS_TABLE")"
class 1.0.8 uint8
ask --renew
expect 'a lower Version is refused' '1 class-versions: ZT_Marovelton_Thing has the Version 1.0.8, which is below 1.0.9' "$status $said"
class 1.0.10 uint16
ask --renew
expect 'a change with a higher Version' '0 ' "$status $said"
ask
expect 'is in the table then' '0 ' "$status $said"
mv "$MOF_DIR/ZT_Marovelton_Thing.mof" "$MOF_DIR/ZT_Marovelton_Other.mof"
ask
expect 'a class that is gone' 1 "$(echo "$said" | grep -c 'ZT_Marovelton_Thing is in the table and no class any more')"
echo 'class ZT_Marovelton_Other {};' >"$MOF_DIR/ZT_Marovelton_Other.mof"
ask
expect 'no Version' '1 class-versions: ZT_Marovelton_Other needs one Version, as in Version ( "1.0.0" )' "$status $said"
report
