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
    for tool in sh sed cat rm cp mkdir mktemp basename dirname grep tr sort awk; do
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
if [ -e "$scratch/answers/$name.\$1" ]; then cat "$scratch/answers/$name.\$1"; fi
case "\$*" in *"\${ABSENT:-nothing absent}") exit 1 ;; esac
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
    (cd / && PATH=$bin SFCB_STAGE=$scratch/stage TMPDIR=$scratch/temporary "$share/register-providers" "$@") >"$scratch/output" 2>&1 || status=$?
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
    "$(registered | cut -d' ' -f1 | LC_ALL=C sort)" \
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
expect 'PG_ instances: what is run' 'cimprovider -l
cimmof -uc -n root/cimv2 <libcmpiDisplayManagement.mof>
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

mkdir -p "$scratch/answers" "$scratch/stage/regs" "$scratch/stage/mofs/root/other"
answer() { cat >"$scratch/answers/$1"; } # answer COMMAND.ARGUMENT: what the command prints when it begins so

# ---- stanzas: a second namespace beside the first ----
cp "$forms/libcmpiDisplayManagement.reg" "$scratch/stage/regs/"
echo 'class Linux_ComputerSystem : CIM_ComputerSystem {};' >"$scratch/stage/mofs/root/other/base.mof"
commands sfcbstage sfcbunstage sfcbrepos
register --namespace root/other
expect 'a second namespace: both are in every stanza' 33 \
    "$(grep -c '^   namespace: root/other root/cimv2$' "$scratch/kept/libcmpiDisplayManagement.reg")"
cp "$scratch/kept/libcmpiDisplayManagement.reg" "$scratch/stage/regs/"
commands sfcbstage sfcbunstage sfcbrepos
register --remove
expect 'removing the first: the second is staged again' 'sfcbunstage -n root/cimv2 -r libcmpiDisplayManagement.reg libcmpiDisplayManagement.mof
sfcbstage -n root/other -r <libcmpiDisplayManagement.reg> <libcmpiDisplayManagement.mof>
sfcbrepos -f' "$(cat "$calls")"
expect 'and it alone' 33 "$(grep -c '^   namespace: root/other$' "$scratch/kept/libcmpiDisplayManagement.reg")"

# ---- stanzas: what has to be there ----
refused() { # refused WHAT MESSAGE: nothing was run that changes anything
    expect "$1: its status" 1 "$status"
    expect "$1: what it says" "register-providers: $2" "$(output)"
    expect "$1: nothing is changed" '' "$(grep -E '^(sfcb|cimmof|cimprovider -[dr])' "$calls" || true)"
}
commands sfcbstage sfcbunstage sfcbrepos
register
refused 'no such namespace' 'sfcb has nothing staged for root/cimv2: stage the schema and the computer system'"'"'s class there first'
: >"$scratch/stage/mofs/root/other/base.mof"
register --namespace root/other
refused 'no computer system' "sfcb has no class Linux_ComputerSystem in root/other, which the monitor's associations need: install its provider (of the CMPI base package) and stage it"
register --namespace root/other --no-checks
expect 'without the checks it is done' 0 "$status"
rm -r "$scratch/stage"

# ---- PG_ instances: an upgrade, and a second namespace ----
printf 'root/cimv2\nroot/other\nroot/interop\n' | answer cimcli.ns
printf 'OperatingSystemModule\ncmpiDisplayManagement\n' | answer cimprovider.-l
answer cimcli.ei <<'INSTANCES'
instance of PG_ProviderCapabilities
{
    ProviderModuleName = "OperatingSystemModule";
    Namespaces = {"root/foreign"};
};
instance of PG_ProviderCapabilities
{
    ProviderModuleName = "cmpiDisplayManagement";
    Namespaces = {"root/cimv2"};
};
INSTANCES
pegasus='cimmof cimprovider cimcli cimserver'
# shellcheck disable=SC2086
commands $pegasus
register --namespace root/other
expect 'an upgrade: the old one goes first, classes are updated, the interop namespace is found' 'cimprovider -d -m cmpiDisplayManagement
cimprovider -r -m cmpiDisplayManagement
cimmof -uc -n root/other <libcmpiDisplayManagement.mof>
cimmof -n root/interop <libcmpiDisplayManagement_providers.mof>' "$(grep -E '^(cimmof|cimprovider -[dr])' "$calls")"
expect 'a second namespace beside the first' 33 \
    "$(grep -c 'Namespaces = {"root/other", "root/cimv2"};' "$scratch/kept/libcmpiDisplayManagement_providers.mof")"
# shellcheck disable=SC2086
commands $pegasus
register --remove --namespace root/other --interop root/mine
expect 'removing one leaves the other' 'cimprovider -d -m cmpiDisplayManagement
cimprovider -r -m cmpiDisplayManagement
cimmof -n root/mine <libcmpiDisplayManagement_providers.mof>' "$(grep -E '^(cimmof|cimprovider -[dr])' "$calls")"
expect 'which is the first' 33 "$(grep -c 'Namespaces = {"root/cimv2"};' "$scratch/kept/libcmpiDisplayManagement_providers.mof")"
echo 'Warning: the class ZT_Marovelton_Monitor was not added or updated' | answer cimmof.-uc
# shellcheck disable=SC2086
commands $pegasus
register
expect 'what is left as it was is a failure' 1 "$status"
expect 'and nothing comes after it' 0 "$(grep -c '^cimmof -n' "$calls" || true)"
rm "$scratch/answers/cimmof.-uc"

# ---- PG_ instances: what has to be there ----
# shellcheck disable=SC2086
commands $pegasus
FAIL_cimserver=2
export FAIL_cimserver
register
unset FAIL_cimserver
refused 'a server that does not run' 'cimserver does not run, and registers nothing then: start it (cimserver)'
register --namespace root/none
refused 'a namespace that is not there' 'there is no namespace root/none; those there are: root/cimv2 root/other root/interop '
export ABSENT=CIM_ManagedElement
register
refused 'no schema' 'root/cimv2 does not hold the CIM schema: load it there first (cimmof -n root/cimv2 CIM_Schema.mof)'
ABSENT=Linux_ComputerSystem
register
refused 'no computer system for it' "root/cimv2 has no class Linux_ComputerSystem, which the monitor's associations need: install its provider (of the CMPI base package)"
unset ABSENT
rm -r "$scratch/answers"

# ---- one of several ----
commands sfcbstage sfcbrepos cmpi-provider-register cimmof cimprovider
register --only columns
expect 'one kind alone' 'cmpi-provider-register -d <libcmpiDisplayManagement>' "$(cat "$calls")"
commands sfcbstage sfcbrepos
register --only pegasus
expect 'one that is not there' '1 register-providers: no object manager of the kind pegasus found' "$status $(output)"
register --only something
expect 'one that nobody knows' '2 register-providers: --only takes sfcb, columns or pegasus, not something; see register-providers --help' "$status $(output)"
register --namespace "root/it's"
expect 'a namespace that is none' 2 "$status"
register --version
expect 'its version is the project'"'"'s' "register-providers (libcmpiDisplayManagement $(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt"))" "$(output)"

# ---- a dry run does nothing ----
commands sfcbstage sfcbrepos cmpi-provider-register cimmof cimprovider
register --dry-run
expect 'a dry run: its status' 0 "$status"
expect 'a dry run: what is run' 'cimprovider -l' "$(cat "$calls")"
expect 'a dry run: what it says' 'would run: sfcbstage -n root/cimv2
would run: sfcbrepos -f
would run: cmpi-provider-register -d
not checked: there is no cimcli
would run: cimmof -uc -n root/cimv2
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
expect 'an argument without its value: its status' 2 "$status"
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
