#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# register-providers with the commands of object managers that only write down how they are called.
#
#   register_providers_test.sh SOURCE_DIR REGISTRATION_DIR
set -eu
here=$(dirname "$0")
. "$here/check.sh"
source=$1 forms=$2
scratch
share=$scratch/share
calls=$scratch/calls
mkdir "$share" "$scratch/temporary"
cp -r "$source/mof" "$share/mof"
cp "$forms"/* "$source/packaging/register-providers" "$share/"

# commands NAME...: a directory with these commands, and with those that the script itself needs.
commands() {
    bin=$scratch/bin
    rm -rf "$bin"
    mkdir "$bin"
    for tool in sh sed cat rm cp mkdir mktemp basename dirname; do
        ln -s "$(command -v "$tool")" "$bin/$tool"
    done
    for name in "$@"; do
        # Writes down its arguments, files of ours by their names alone, and keeps what the files hold.
        cat >"$bin/$name" <<EOF
#!/bin/sh
line=$name
for argument; do
    if [ -e "\$argument" ]; then
        cp -r "\$argument" "$scratch/kept/"
        line="\$line <\${argument##*/}>"
    else
        line="\$line \$argument"
    fi
done
echo "\$line" >>"$calls"
exit \${FAIL_$(echo "$name" | tr - _):-0}
EOF
        chmod +x "$bin/$name"
    done
    rm -rf "$calls" "$scratch/kept"
    mkdir "$scratch/kept"
    : >"$calls"
}
register() {
    status=0
    (cd / && PATH=$bin TMPDIR=$scratch/temporary "$share/register-providers" "$@") >"$scratch/output" 2>&1 || status=$?
    expect 'nothing temporary is left' '' "$(ls "$scratch/temporary")"
}
output() { cat "$scratch/output"; }

# ---- none ----
commands
register
expect 'without an object manager: its status' 1 "$status"
expect 'without an object manager: what it says' \
    'register-providers: no object manager found: there is none of sfcbstage, cmpi-provider-register, cimmof' "$(output)"

# ---- stanzas ----
commands sfcbstage sfcbunstage sfcbrepos
register
expect 'stanzas: its status' 0 "$status"
expect 'stanzas: what is run' 'sfcbstage -n root/cimv2 -r <libcmpiDisplayManagement.reg> <libcmpiDisplayManagement.mof>
sfcbrepos -f' "$(cat "$calls")"
cmp "$scratch/kept/libcmpiDisplayManagement.reg" "$forms/libcmpiDisplayManagement.reg" || failed 'the stanzas differ'
staged=$scratch/kept/libcmpiDisplayManagement.mof
expect 'every class stands once in the classes that are staged' \
    "$(cut -d' ' -f1 "$here/libcmpiDisplayManagement.registration.expected" | LC_ALL=C sort)" \
    "$(sed -n 's/^class \([A-Za-z_]*\).*/\1/p' "$staged" | LC_ALL=C sort)"
expect 'they include nothing' '' "$(grep -i '#pragma' "$staged" || true)"
expect 'they stand in the order of the list' "$(sed -n 's/^#pragma include ("\(.*\)\.mof")$/\1/p' "$source/mof/ZT_Marovelton.mof")" \
    "$(sed -n 's/^class \([A-Za-z_]*\).*/\1/p' "$staged")"
commands sfcbstage sfcbunstage sfcbrepos
register --remove
expect 'stanzas: what is run to remove them' \
    'sfcbunstage -n root/cimv2 -r libcmpiDisplayManagement.reg libcmpiDisplayManagement.mof
sfcbrepos -f' "$(cat "$calls")"

# ---- five columns ----
commands cmpi-provider-register
register
expect 'five columns: what is run' 'cmpi-provider-register -d <libcmpiDisplayManagement>' "$(cat "$calls")"
expect 'five columns: the directory' 'deploy.mof
libcmpiDisplayManagement.registration' "$(ls "$scratch/kept/libcmpiDisplayManagement")"
cmp "$scratch/kept/libcmpiDisplayManagement/libcmpiDisplayManagement.registration" \
    "$forms/libcmpiDisplayManagement.registration" || failed 'the lines differ'

# ---- PG_ instances ----
commands cimmof cimprovider
register
expect 'PG_ instances: what is run' 'cimmof -n root/cimv2 <libcmpiDisplayManagement.mof>
cimmof -n root/PG_InterOp <libcmpiDisplayManagement_providers.mof>' "$(cat "$calls")"
commands cimmof cimprovider
register --remove
expect 'PG_ instances: what is run to remove them' 'cimprovider -d -m cmpiDisplayManagement
cimprovider -r -m cmpiDisplayManagement' "$(cat "$calls")"

# ---- another namespace ----
commands sfcbstage sfcbrepos
register --namespace root/other
expect 'another namespace: what is run' 'sfcbstage -n root/other -r <libcmpiDisplayManagement.reg> <libcmpiDisplayManagement.mof>
sfcbrepos -f' "$(cat "$calls")"
expect 'another namespace: in the stanzas' 33 "$(grep -c '^   namespace: root/other$' "$scratch/kept/libcmpiDisplayManagement.reg")"
expect 'another namespace: nothing in the usual one' 0 "$(grep -c root/cimv2 "$scratch/kept/libcmpiDisplayManagement.reg" || true)"

# ---- a dry run does nothing ----
commands sfcbstage sfcbrepos cmpi-provider-register cimmof cimprovider
register --dry-run
expect 'a dry run: its status' 0 "$status"
expect 'a dry run: what is run' '' "$(cat "$calls")"
expect 'a dry run: what it says' 'would run: sfcbstage -n root/cimv2
would run: sfcbrepos -f
would run: cmpi-provider-register -d
would run: cimmof -n root/cimv2
would run: cimmof -n root/PG_InterOp' "$(sed "s| -r .*||;s| [^ ]*$scratch/temporary[^ ]*||" "$scratch/output")"

# ---- a step that fails ends it ----
commands sfcbstage sfcbrepos
FAIL_sfcbstage=3
export FAIL_sfcbstage
register
unset FAIL_sfcbstage
expect 'a failing step: its status' 3 "$status"
expect 'a failing step: nothing is run after it' 1 "$(wc -l <"$calls")"

# ---- what it is told wrongly ----
commands sfcbstage sfcbrepos
register --nonsense
expect 'an unknown argument: its status' 2 "$status"
register --namespace
expect 'an argument without its value: its status' 1 "$status"
register --dir "$scratch/temporary"
expect 'no registration there: its status' 1 "$status"
expect 'no registration there: what it says' \
    "register-providers: not there: $scratch/temporary/libcmpiDisplayManagement.reg (--dir says where the library's files are installed)" "$(output)"
rm "$share/mof/ZT_Marovelton_Button.mof"
register
expect 'a class that is missing: its status' 1 "$status"
expect 'nothing was run for any of them' '' "$(cat "$calls")"
register -h
expect 'help: its status' 0 "$status"
output >"$scratch/help"
register --help
expect 'help: its status' 0 "$status"
expect 'help: the same with both' "$(cat "$scratch/help")" "$(output)"
output | grep -q '^register-providers \[--remove\]\|  register-providers \[--remove\]' || failed 'help tells the arguments'

report
