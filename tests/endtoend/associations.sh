#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The associations: followed from both ends by every operation, enumerated, and read one by one.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"
desk_start

swap() { # swap VARIABLE VARIABLE
    local -n one=$1 another=$2
    local value=$one
    one=$another another=$value
}

lines() { [ $# = 0 ] || printf '%s\n' "$@"; }

# expect_found WHAT EXPECTED OPERATION [OPTION...] OBJECT: where an operation leads to from an object.
expect_found() {
    ask viewer "${@:3:$#-3}" "$(path "${!#}")"
    without_host
    expect "$1" "$2" "$answer"
}

# Follows an association from one object to the others by the four operations. Leaves the paths of the association
# objects in $references, and what References shows of them in $instances, for more checks.
#
# With reversed=yes before the command the class has the right reference before the left one. What it has besides the
# two references is in $details, by object. With names_fail=yes ReferenceNames is to fail. A path whose keys References
# shows in another order is in $tied_path, by object.
declare -A details=() tied_path=()
expect_tied() { # expect_tied CLASS left|right OBJECT ROLE ROLE_OF_THE_OTHERS OTHER...
    local class=ZT_Marovelton_$1 side=$2 object=$3 role=$4 other_role=$5 other first second described='' paths=()
    shift 5
    references=() instances=''
    for other in "$@"; do
        paths+=("$(path "$other")")
        first=$role=root/cimv2:$(path "$object")
        second=$other_role=root/cimv2:${tied_path[$other]-$(path "$other")}
        [ "$side" = left ] || swap first second
        references+=("$class.$first,$second")
        [ -z "${reversed-}" ] || swap first second
        instances+=${references[-1]}$'\n-'$first$'\n-'$second${details[$other]:+$'\n'${details[$other]}}$'\n\n'
        ask viewer gi -nl "$(path "$other")"
        described+=$(grep '^-' <<<"$answer")$'\n'
    done
    instances=${instances%$'\n\n'}

    expect_found "${class#*_*_}: AssociatorNames of $object: $#" "$(lines "${paths[@]}")" ain -ac "$class" "$object"
    ask viewer ai -nl -ac "$class" "$(path "$object")"
    [[ $answer == error* ]] || answer=$(sed -n '/^-/p' <<<"$answer")
    expect "${class#*_*_}: Associators of $object: $#" "${described%$'\n'}" "$answer"
    if [ -n "${names_fail-}" ]; then
        expect_found "${class#*_*_}: ReferenceNames of $object fails" 'error 1: Could not get key of instance.' \
            rin -arc "$class" "$object"
    else
        expect_found "${class#*_*_}: ReferenceNames of $object: $#" "$(lines "${references[@]}")" rin -arc "$class" "$object"
    fi
    expect_found "${class#*_*_}: References of $object: $#" "$instances" ri -nl -arc "$class" "$object"
}

# expect_enumerated CLASS COUNT: what $references and $instances say.
expect_enumerated() {
    ask viewer ein "ZT_Marovelton_$1"
    without_host
    expect "$1: EnumerateInstanceNames: $2" "$(lines "${references[@]}")" "$answer"
    ask viewer ei -nl "ZT_Marovelton_$1"
    without_host
    expect "$1: EnumerateInstances: $2" "$instances" "$answer"
}

expect_gettable() { # expect_gettable CLASS REFERENCE PROPERTIES
    ask viewer gi -nl "$2"
    without_host
    expect "$1: GetInstance" "$2"$'\n'"$3" "$answer"
}

# An association of the monitor with its components. Where the monitor is the right end, it is enumerated from the
# components, which leads to the same objects in the same order.
device_association() { # device_association CLASS left|right ROLE_OF_THE_MONITOR ROLE_OF_THE_COMPONENTS COMPONENT...
    local class=$1 monitor_side=$2 monitor_role=$3 role=$4 component side=left
    shift 4
    [ "$monitor_side" = right ] || side=right
    expect_tied "$class" "$monitor_side" Monitor "$monitor_role" "$role" "$@"
    expect_enumerated "$class" $#
    for component in "${@:1:$#-1}"; do
        expect_found "$class: AssociatorNames of $component: the monitor" "$(path Monitor)" ain -ac "ZT_Marovelton_$class" "$component"
    done
    expect_tied "$class" "$side" "${!#}" "$role" "$monitor_role" Monitor
    expect_gettable "$class" "${references[0]}" "${instances#*$'\n'}"
}

echo 'The monitor'
device_association TestPattern right Monitor TestPatternGenerator TestPatternGenerator
device_association PIPFunctionality right Monitor PictureInPicture PictureInPicture
device_association OnScreenDisplay right Monitor OSDMenuAndMessages OSDMenuAndMessages
device_association Management right Monitor DisplayManagement DisplayManagement
device_association InputSource right Monitor VideoInput VideoInput/{1..3}
device_association ImageAdjustmentModel right Monitor ImageAdjustment ImageAdjustment
device_association ColorModel right Monitor ColorSpace ColorSpace/{1..7}
device_association Button left Antecedent Dependent FunctionButton/{1..4} BezelButton
device_association SystemDevice right PartComponent GroupComponent ComputerSystem

all=(TestPatternGenerator PictureInPicture OSDMenuAndMessages DisplayManagement VideoInput/{1..3} ImageAdjustment
    ColorSpace/{1..7} FunctionButton/{1..4} BezelButton ComputerSystem)
expect_found 'without a filter everything is found: 21 objects' "$(for object in "${all[@]}"; do lines "$(path "$object")"; done)" ain Monitor
ask viewer rin "$(path Monitor)"
expect 'and 21 associations lead to it' 21 "$(wc -l <<<"$answer")"
ask viewer ai "$(path Monitor)"
expect 'Associators: 21' 21 "$(wc -l <<<"$answer")"
ask viewer ri "$(path Monitor)"
expect 'References: 21' 21 "$(wc -l <<<"$answer")"

echo 'Filters'
color_spaces=$(for object in ColorSpace/{1..7}; do lines "$(path "$object")"; done)
expect_found 'the class of the result' "$color_spaces" ain -arc ZT_Marovelton_ColorSpace Monitor
expect_found 'a superclass of it' "$color_spaces" ain -ac ZT_Marovelton_ColorModel -arc CIM_LogicalElement Monitor
expect_found 'another class' '' ain -ac ZT_Marovelton_ColorModel -arc ZT_Marovelton_BezelButton Monitor
expect_found 'the role of the source' "$color_spaces" ain -ac ZT_Marovelton_ColorModel -ar Monitor Monitor
expect_found 'in any letter case' "$color_spaces" ain -ac ZT_Marovelton_ColorModel -ar MONITOR Monitor
expect_found 'the role of the far end is not that of the source' '' ain -ac ZT_Marovelton_ColorModel -ar ColorSpace Monitor
expect_found 'the role of the result' "$color_spaces" ain -ac ZT_Marovelton_ColorModel -arr ColorSpace Monitor
expect_found 'the role of the source is not that of the result' '' ain -ac ZT_Marovelton_ColorModel -arr Monitor Monitor
expect_found 'all of them' "$color_spaces" ain -ac ZT_Marovelton_ColorModel -arc ZT_Marovelton_ColorSpace -ar Monitor -arr ColorSpace Monitor
expect_found 'a role that no association of the monitor has' '' ain -ar PartComponents Monitor
expect_found 'an association class that has nothing to do with it' '' ain -ac ZT_Marovelton_OrderedComponent Monitor
expect_found 'a superclass of the association class' "$(path ComputerSystem)" ain -ac CIM_SystemDevice Monitor
expect_found 'Associators obey them, too' '' ai -ac ZT_Marovelton_ColorModel -ar ColorSpace Monitor
expect_found 'a class that does not exist' 'error 4: The class ZT_Marovelton_Nothing of the filter does not exist.' \
    ain -ac ZT_Marovelton_Nothing Monitor
ask viewer rin -ar Monitor "$(path Monitor)"
expect 'ReferenceNames by the role Monitor: 15' 15 "$(wc -l <<<"$answer")"
ask viewer ri -ar Antecedent "$(path Monitor)"
expect 'References by the role Antecedent: 5' 5 "$(wc -l <<<"$answer")"
expect_found 'References of a component by the role of the monitor: none' '' ri -ar Monitor ColorSpace/1
expect_found 'a source that does not exist' 'error 6: Source object not found.' ain ColorSpace/8
expect_found 'ReferenceNames of it' 'error 6: Source object not found.' rin -arc ZT_Marovelton_ColorModel ColorSpace/8

echo 'The network connection and its settings'
settings=(IPAssignmentSettingData DHCPSettingData ExtendedStaticIPAssignmentSettingData)
setting_details() { # setting_details CURRENT: the setting data whose IsCurrent is 1
    local setting
    for setting in "${settings[@]}"; do
        details[$setting]=$'-IsDefault=\n-IsCurrent='$([ "$setting" = "$1" ] && echo 1 || echo 2)$'\n-IsNext=2'
    done
}
# With a static address the accumulated settings are the current ones.
setting_details IPAssignmentSettingData
expect_tied ElementSettingData left IPNetworkConnection ManagedElement SettingData "${settings[@]}"
expect_enumerated ElementSettingData 3
expect_gettable ElementSettingData "${references[1]}" "$(sed -n '9,10p' <<<"$instances")"$'\n-IsDefault=\n-IsCurrent=\n-IsNext='
details[IPNetworkConnection]=${details[IPAssignmentSettingData]}
expect_tied ElementSettingData right IPAssignmentSettingData SettingData ManagedElement IPNetworkConnection
details[IPNetworkConnection]=${details[ExtendedStaticIPAssignmentSettingData]}
expect_tied ElementSettingData right ExtendedStaticIPAssignmentSettingData SettingData ManagedElement IPNetworkConnection
monitor set ip_configuration_mode 0
setting_details DHCPSettingData
expect_tied ElementSettingData left IPNetworkConnection ManagedElement SettingData "${settings[@]}"
details[IPNetworkConnection]=${details[DHCPSettingData]}
expect_tied ElementSettingData right DHCPSettingData SettingData ManagedElement IPNetworkConnection
details=()
monitor set ip_configuration_mode 1

for setting in DHCPSettingData ExtendedStaticIPAssignmentSettingData; do
    details[$setting]=-AssignedSequence=0
done
expect_tied OrderedComponent left IPAssignmentSettingData GroupComponent PartComponent DHCPSettingData ExtendedStaticIPAssignmentSettingData
expect_enumerated OrderedComponent 2
details[IPAssignmentSettingData]=-AssignedSequence=0
expect_tied OrderedComponent right DHCPSettingData PartComponent GroupComponent IPAssignmentSettingData
details=()

expect_tied HostedAccessPoint left ComputerSystem Antecedent Dependent IPNetworkConnection
expect_enumerated HostedAccessPoint 1
expect_gettable HostedAccessPoint "${references[0]}" "${instances#*$'\n'}"
expect_tied HostedAccessPoint right IPNetworkConnection Dependent Antecedent ComputerSystem

echo 'The endpoints: of those that there are, eth0 alone is tied to the services and to the connection'
mapfile -t interfaces < <(sed -n '3,$s/^ *\([^:]*\):.*/\1/p' /proc/net/dev)
eth0=()
[[ " ${interfaces[*]} " != *' eth0 '* ]] || eth0=(IPProtocolEndpoint/eth0)
for service in RemoteManagementService WSManagementService; do
    reversed=yes names_fail=yes expect_tied ProvidesEndpoint right "$service" Antecedent Dependent "${eth0[@]}"
done
names_fail=yes expect_tied SAPSAPDependency left IPNetworkConnection Antecedent Dependent "${eth0[@]}"
if [ ${#eth0[@]} = 1 ]; then
    reversed=yes names_fail=yes expect_tied ProvidesEndpoint left "${eth0[0]}" Dependent Antecedent RemoteManagementService WSManagementService
    # The path is that of the enumerated instance, whose keys stand in the order of the class.
    tied_path[IPNetworkConnection]=$(path IPNetworkConnection | sed -E 's/\.(.*),(SystemCreationClassName="[^"]*")$/.\2,\1/')
    names_fail=yes expect_tied SAPSAPDependency right "${eth0[0]}" Dependent Antecedent IPNetworkConnection
    tied_path=()
fi
for interface in "${interfaces[@]}"; do
    if [ "$interface" != eth0 ]; then
        for class in ProvidesEndpoint SAPSAPDependency; do
            names_fail=yes expect_tied $class left "IPProtocolEndpoint/$interface" Dependent Antecedent
        done
        break
    fi
done
# An enumeration shows all of them.
references=()
for service in RemoteManagementService WSManagementService; do
    for interface in "${interfaces[@]}"; do
        references+=("$(association ProvidesEndpoint Dependent "IPProtocolEndpoint/$interface" Antecedent "$service")")
    done
done
ask viewer ein ZT_Marovelton_ProvidesEndpoint
without_host
expect "ProvidesEndpoint: EnumerateInstanceNames: ${#references[@]}" "$(lines "${references[@]}")" "$answer"
ask viewer ei ZT_Marovelton_ProvidesEndpoint
expect "ProvidesEndpoint: EnumerateInstances: ${#references[@]}" ${#references[@]} "$(wc -l <<<"$answer")"
ask viewer gi -nl "${references[0]}"
without_host
expect 'ProvidesEndpoint: GetInstance' "${references[0]}
-Antecedent=root/cimv2:$(path RemoteManagementService)
-Dependent=root/cimv2:$(path "IPProtocolEndpoint/${interfaces[0]}")" "$answer"
references=()
for interface in "${interfaces[@]}"; do
    references+=("$(association SAPSAPDependency Antecedent IPNetworkConnection Dependent "IPProtocolEndpoint/$interface")")
done
ask viewer ein ZT_Marovelton_SAPSAPDependency
without_host
expect "SAPSAPDependency: EnumerateInstanceNames: ${#references[@]}" "$(lines "${references[@]}")" "$answer"
report
