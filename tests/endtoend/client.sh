# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2034,SC2154 # variables of desk.sh and of the scripts
# The standard client wbemcli on the current desk, and checks of what it answers. Sourced after desk.sh.
#
# An object is named by its class, without the prefix ZT_Marovelton_, and where the class has several instances by its
# number: Monitor, ColorSpace/3, IPProtocolEndpoint/lo.
#
#   expect WHAT EXPECTED ACTUAL
#   expect_answer WHAT EXPECTED ACCOUNT OPERATION [OPTION...] PATH [ARGUMENT]     any request
#   expect_property OBJECT PROPERTY VALUE
#   expect_method ACCOUNT OBJECT METHOD ARGUMENTS ANSWER [PROPERTY BEFORE AFTER]...
#
# An answer is what the client prints; a method's is its return value; a refusal's is "error CODE: TEXT".

# The system name of the monitor, which is the one of its keys that changes: the address until it is given a name.
system=192.168.10.20

right() {
    checks=$((checks + 1))
    printf '  right: %s\n' "$*"
}

expect() { # expect WHAT EXPECTED ACTUAL
    if [ "$2" = "$3" ]; then
        right "$1"
    else
        failed "$1"
        diff -u --label expected --label actual <(printf '%s\n' "$2") <(printf '%s\n' "$3") || true
    fi
}

# ---- paths ----

# As wbemcli takes it on its command line, and as it passes it on unchanged into the request.
key_text() {
    local text=$1
    text=${text//&/'&amp;'}
    text=${text//</'&lt;'}
    text=${text//,/'&#44;'}
    printf '%s' "$text"
}

# The keys stand in the order in which the monitor itself gives them.
path() { # path OBJECT
    local class=ZT_Marovelton_${1%%/*} number=${1#*/} name
    [ "$number" != "$1" ] || number=
    name=$(key_text "$system")
    case $1 in
    Monitor)
        printf '%s.DeviceID="ZT:Marovelton_Monitor",CreationClassName="%s",SystemName="%s",%s' \
            "$class" "$class" "$name" 'SystemCreationClassName="Linux_ComputerSystem"'
        ;;
    RemoteManagementService | WSManagementService)
        printf '%s.SystemName="%s",SystemCreationClassName="Linux_ComputerSystem",CreationClassName="%s",Name="%s-%s"' \
            "$class" "$name" "$class" "$name" "$1"
        ;;
    IPNetworkConnection | IPConfigurationService)
        printf '%s.CreationClassName="%s",Name="%s-%s",SystemName="%s",SystemCreationClassName="Linux_ComputerSystem"' \
            "$class" "$class" "$name" "$1" "$name"
        ;;
    IPProtocolEndpoint/*)
        printf '%s.SystemCreationClassName="Linux_ComputerSystem",SystemName="%s",CreationClassName="%s",Name="IPv4_%s"' \
            "$class" "$name" "$class" "$number"
        ;;
    ComputerSystem)
        printf 'Linux_ComputerSystem.CreationClassName="Linux_ComputerSystem",Name="%s"' "$(hostname)"
        ;;
    *)
        printf '%s.InstanceID="ZT:Marovelton_%s%s"' "$class" "${1%%/*}" "${number:+:$number}"
        ;;
    esac
}

# association CLASS ROLE OBJECT ROLE OBJECT: the path of an association.
association() {
    printf 'ZT_Marovelton_%s.%s=root/cimv2:%s,%s=root/cimv2:%s' "$1" "$2" "$(path "$3")" "$4" "$(path "$5")"
}

reference() { # reference OBJECT: as an argument of a method
    printf '127.0.0.1:%s/root/cimv2:%s' "$port" "$(path "$1")"
}

# ---- requests ----

namespace=root/cimv2
account_url() { printf 'http://%s:%s@127.0.0.1:%s/%s:' "$1" "$(<"$directory/password.$1")" "$port" "$namespace"; }

# ask ACCOUNT OPERATION [OPTION...] PATH [ARGUMENT]: the answer comes in $answer.
ask() {
    local url operation=$2 options=()
    url=$(account_url "$1")
    shift 2
    while [[ $1 == -* ]]; do
        case $1 in
        -nl | -dx)
            options+=("$1")
            shift
            ;;
        *)
            options+=("$1" "$2")
            shift 2
            ;;
        esac
    done
    run_client "$operation" "${options[@]}" "$url$1" "${@:2}"
}

run_client() {
    local refusal=$'^\\*\n\\* wbemcli: Cim: \\(([0-9]+)\\) CIM_ERR_[A-Z_]+: (.*)\n\\*$'
    local exception=$'^\\*\n\\* wbemcli: (.*)\n\\*$'
    answer=$(timeout "$patience" wbemcli "$@" 2>&1) || true
    if [[ $answer =~ $refusal ]]; then
        answer="error ${BASH_REMATCH[1]}: ${BASH_REMATCH[2]}"
    elif [[ $answer =~ $exception ]]; then
        answer=${BASH_REMATCH[1]}
    fi
}

expect_answer() { # expect_answer WHAT EXPECTED ACCOUNT OPERATION [OPTION...] PATH [ARGUMENT]
    local what=$1 expected=$2
    shift 2
    ask "$@"
    expect "$what" "$expected" "$answer"
}

# The paths in $answer without the host, one per line; properties stay as they are.
without_host() {
    # shellcheck disable=SC2001 # line by line
    answer=$(sed "s,^[^/=\"]*/$namespace:,," <<<"$answer")
}

# ---- instances ----

# instance OBJECT: one line Property=value for each property, in $answer.
instance() {
    ask viewer gi -nl "$(path "$1")"
    [[ $answer != *$'\n-'* ]] || answer=$(sed -n 's/^-//p' <<<"$answer")
}

# value_of PROPERTY of the instance in $answer, in $value. A text is in double quotes.
value_of() {
    value=
    [[ $'\n'$answer$'\n' == *$'\n'"$1"=* ]] || return 0
    value=$'\n'$answer$'\n'
    value=${value#*$'\n'"$1"=}
    value=${value%%$'\n'*}
}

expect_property() { # expect_property OBJECT PROPERTY VALUE
    instance "$1"
    value_of "$2"
    expect "$1 $2 is $3" "$3" "$value"
}

property_is() { # property_is OBJECT PROPERTY VALUE
    instance "$1"
    value_of "$2"
    [ "$value" = "$3" ]
}

# ---- methods ----

call() { # call ACCOUNT OBJECT METHOD ARGUMENTS
    ask "$1" cm "$(path "$2")" "$3${4:+.$4}"
    answer=${answer##*" $3: "}
    known_object=
}

# Calls a method once and checks its answer and what has become of the monitor: the properties named have the value
# before and the other one after, and no other property of the object has changed.
#
# A property of another object is OBJECT:PROPERTY; one that no class shows is setting:NAME, as desk-monitor names it.
# With renamed=NAME before the command the monitor has that system name afterwards. With later=yes the method answers
# before the engine has acted, and the effect is awaited.
declare -A called=()
# What was read last, for as long as nothing else has happened.
known_object='' known_state=''
expect_method() {
    local account=$1 object=$2 method=$3 arguments=$4 expected=$5
    shift 5
    local properties=("$@") what wrong=() effects='' state expected_state replacements=() i
    what="$object $method(${arguments//"127.0.0.1:$port/root/cimv2:"/}) answers $expected"
    called[${object%%/*}.$method]=yes

    if [ "$known_object" = "$object" ]; then
        state=$known_state
    else
        instance "$object"
        state=$answer
    fi
    [[ $state == *=* ]] || wrong+=("the object cannot be read: $state")
    for ((i = 0; i < ${#properties[@]}; i += 3)); do
        shown "${properties[i]}" "$state"
        [ "$value" = "${properties[i + 1]}" ] || wrong+=("${properties[i]} is $value before, not ${properties[i + 1]}")
    done

    call "$account" "$object" "$method" "$arguments"
    [ "$answer" = "$expected" ] || wrong+=("the answer is $answer")
    [ -z "${renamed-}" ] || system=$renamed
    if [ -n "${later-}" ]; then
        for ((i = 0; i < ${#properties[@]}; i += 3)); do
            eventually "${properties[i]} becomes ${properties[i + 2]}" shown_is "${properties[i]}" "${properties[i + 2]}"
        done
    fi

    for ((i = 0; i < ${#properties[@]}; i += 3)); do
        replacements+=(-e "s|^${properties[i]}=.*|${properties[i]}=${properties[i + 2]}|")
    done
    expected_state=$state
    [ ${#replacements[@]} = 0 ] || expected_state=$(sed "${replacements[@]}" <<<"$state")
    instance "$object"
    state=$answer
    for ((i = 0; i < ${#properties[@]}; i += 3)); do
        shown "${properties[i]}" "$state"
        effects+="; ${properties[i]} ${properties[i + 1]} -> $value"
        [ "$value" = "${properties[i + 2]}" ] || wrong+=("${properties[i]} is $value after, not ${properties[i + 2]}")
    done
    [ "$state" = "$expected_state" ] || wrong+=("the object is not as it should be:"
        "$(diff -U0 --label expected --label actual <(printf '%s\n' "$expected_state") <(printf '%s\n' "$state") || true)")
    known_object=$object known_state=$state

    if [ ${#wrong[@]} = 0 ]; then
        right "$what$effects"
    else
        failed "$what$effects"
        printf '         %s\n' "${wrong[@]}"
    fi
}

# shown PROPERTY STATE: the value of a property as expect_method names it, in $value. STATE is that of its object.
shown() {
    case $1 in
    setting:*) value=$(monitor show "${1#setting:}") ;;
    *:*)
        instance "${1%%:*}"
        value_of "${1#*:}"
        ;;
    *)
        answer=$2
        value_of "$1"
        ;;
    esac
}
shown_is() { # shown_is PROPERTY VALUE, for the object of expect_method
    instance "$object"
    shown "$1" "$answer"
    [ "$value" = "$2" ]
}

# What is set from outside is not known any more.
set_monitor() {
    monitor set "$@"
    known_object=
}
