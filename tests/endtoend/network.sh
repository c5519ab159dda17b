#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The network settings and services, changed by a client, and the endpoints of this machine.
set -euo pipefail
command -v curl >/dev/null || { echo 'Skipped: curl is not installed.'; exit 77; }
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"
desk_start

# The engine acts on these changes after the client has its answer; they are awaited.
expect_later() { # expect_later OBJECT PROPERTY VALUE
    eventually "$1 $2 becomes $3" property_is "$@"
    expect_property "$@"
}

static=ExtendedStaticIPAssignmentSettingData
expect_static() { # expect_static ADDRESS MASK GATEWAY
    expect_later $static IPAddresses "\"$1\""
    expect_property $static SubnetMasks "\"$2\""
    expect_property $static GatewayAddresses "\"$3\""
}
modify() { # modify WHAT PROPERTIES
    expect_answer "$1" '' admin mi "$(path $static)" "$2"
}

echo 'The static settings'
expect_static 192.168.10.20 255.255.255.0 192.168.10.1
modify 'all three' 'IPAddresses="10.20.30.40",SubnetMasks="255.255.0.0",GatewayAddresses="10.20.0.1"'
expect_static 10.20.30.40 255.255.0.0 10.20.0.1
# The address is the name of a monitor that was given none.
system=10.20.30.40
expect_property Monitor Name '"10.20.30.40"'
expect_property $static Name '"10.20.30.40-ExtendedStaticIPAssignmentSettingData"'
modify 'the address alone' 'IPAddresses="10.20.30.41"'
expect_static 10.20.30.41 255.255.0.0 10.20.0.1
modify 'of several elements the first' 'IPAddresses="10.20.30.42","10.20.30.99",GatewayAddresses="10.20.0.2","10.20.0.99"'
expect_static 10.20.30.42 255.255.0.0 10.20.0.2
# An address that is none is sent as four zeros, which the engine refuses: the client is not told, nothing changes.
modify 'an address that is none' 'IPAddresses="ten",SubnetMasks="255.0.0.0",GatewayAddresses="10.0.0.1"'
eventually 'the engine refuses' grep -q 'register 87 in group 4: 0.0.0.0 is not an address of a host' "$directory/engine.log"
expect_static 10.20.30.42 255.255.0.0 10.20.0.2
system=10.20.30.42
for class in DHCPSettingData IPAssignmentSettingData; do
    expect_answer "$class cannot be modified" 'error 7: NOT_SUPPORTED' admin mi "$(path $class)" 'ConfigurationName="mine"'
done

# Every property of the class and of its standard superclasses, each with a value of its type, as an object manager with the
# whole schema would have given it out: none of them is unknown here.
whole() { # whole: the instance that stands in the answer, without a gap
    awk '{ print }
        /<PROPERTY(\.ARRAY)? / {
            type = $0; sub(/.* TYPE="/, "", type); sub(/".*/, "", type)
            value = type == "boolean" ? "TRUE" : type == "datetime" ? "20260305000000.000000+000" : type == "string" ? "elsewhere" : "1"
            is_array = /<PROPERTY\.ARRAY/
            if ((getline next_line) <= 0) exit 1
            if (next_line ~ /^<\/PROPERTY/)
                print is_array ? "<VALUE.ARRAY><VALUE>" value "</VALUE></VALUE.ARRAY>" : "<VALUE>" value "</VALUE>"
            print next_line
        }'
}
cim_xml() { # cim_xml METHOD PARAMETERS: sends a request to the object manager
    curl -s --config <(printf 'user = "admin:%s"\n' "$(<"$directory/password.admin")") -H 'Content-Type: application/xml' \
        -H 'CIMOperation: MethodCall' -H "CIMMethod: $1" -H 'CIMObject: root/cimv2' \
        "http://127.0.0.1:$port/cimom" --data-binary @- <<XML
<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ>
<IMETHODCALL NAME="$1"><LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="cimv2"/></LOCALNAMESPACEPATH>$2</IMETHODCALL>
</SIMPLEREQ></MESSAGE></CIM>
XML
}
got=$(cim_xml EnumerateInstances "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ZT_Marovelton_$static\"/></IPARAMVALUE>" |
    sed -n '/<VALUE.NAMEDINSTANCE>/,/<\/VALUE.NAMEDINSTANCE>/p' | whole)
expect 'an instance has the properties of all its superclasses' \
    "InstanceID Caption Description ElementName Generation ChangeableType ConfigurationName ComponentSetting SoID SoOrgID AddressOrigin \
ProtocolIFType IPAddresses SubnetMasks GatewayAddresses IPv6SubnetPrefixLengths CreationClassName Name Status" \
    "$(sed -n 's/.*<PROPERTY[^>]* NAME="\([^"]*\)".*/\1/p' <<<"$got" | paste -sd ' ')"
[ -n "$got" ] || give_up 'there is no instance'
expect 'it is sent back whole' 0 \
    "$(cim_xml ModifyInstance "<IPARAMVALUE NAME=\"ModifiedInstance\">${got/>10.20.30.42</>10.20.30.44<}</IPARAMVALUE>" | grep -c '<ERROR' || true)"
expect_static 10.20.30.44 255.255.0.0 10.20.0.2
modify 'the former address' 'IPAddresses="10.20.30.42"'
expect_static 10.20.30.42 255.255.0.0 10.20.0.2

echo 'Static address and DHCP'
apply() { # apply SETTING_DATA [MODE]
    call admin IPConfigurationService ApplySettingToIPNetworkConnection \
        "IPNetworkConnection=$(reference IPNetworkConnection),Mode=\"${2-1}\",SettingData=$(reference "$1")"
}
mode_is() { [ "$(monitor show ip_configuration_mode)" = "$1" ]; }
# Which settings are current is told by their association to the connection.
expect_current() { # expect_current MODE SETTING_DATA
    eventually "the mode becomes $1" mode_is "$1"
    ask viewer ri -nl -arc ZT_Marovelton_ElementSettingData "$(path IPNetworkConnection)"
    expect "$2 is the current one" "$2" \
        "$(sed -n '/^-SettingData=/h;/^-IsCurrent=1$/{x;s/.*ZT:Marovelton_\([^"]*\)"$/\1/;p}' <<<"$answer")"
}
expect_current 1 IPAssignmentSettingData
apply DHCPSettingData
expect 'the DHCP settings are applied' 0 "$answer"
expect_current 0 DHCPSettingData
apply $static 99
expect 'the static settings are applied, whatever the mode' 0 "$answer"
expect_current 1 IPAssignmentSettingData
apply DHCPSettingData
expect_current 0 DHCPSettingData
modify 'a static address ends DHCP' 'IPAddresses="10.20.30.43"'
system=10.20.30.43
expect_current 1 IPAssignmentSettingData
expect_static 10.20.30.43 255.255.0.0 10.20.0.2
apply IPAssignmentSettingData
expect 'the accumulated settings cannot be applied' 'error 4: Invalid classname for SettingData' "$answer"
apply DHCPSettingData ''
expect 'a mode is needed' 'error 4: Invalid parameter. Mode Value is empty.' "$answer"
call admin IPConfigurationService ApplySettingToIPNetworkConnection "IPNetworkConnection=$(reference IPNetworkConnection),SettingData=$(reference $static)"
expect 'and its absence is told' 'error 4: Required argument Mode  missing.' "$answer"
call admin IPConfigurationService ApplySettingToIPNetworkConnection "Mode=\"1\",SettingData=$(reference $static)"
expect 'a connection is needed' 'error 4: Required argument IPNetworkConnection missing.' "$answer"
call admin IPConfigurationService ApplySettingToIPNetworkConnection \
    "IPNetworkConnection=$(reference IPNetworkConnection),Mode=\"1\",SettingData=$(reference $static/x)"
expect 'the settings must exist' 'error 4: This Input class does not exist (wrong InstanceID).' "$answer"
expect_current 1 IPAssignmentSettingData

echo 'The services'
for service in WSManagementService RemoteManagementService; do
    expect_property $service AvailableRequestedStates 2,3
    later=yes expect_method admin $service RequestStateChange 'RequestedState="3"' 0 EnabledState 2 3
    expect_method admin $service RequestStateChange 'RequestedState="3"' 0 EnabledState 3 3
    expect_method admin $service RequestStateChange 'RequestedState="4"' 'error 4: Invalid input value range. Valid values are 2 and 3'
    later=yes expect_method admin $service RequestStateChange 'RequestedState="2x"' 0 EnabledState 3 2
done
expect_method admin WSManagementService RequestStateChange '' 'error 4: Required argument RequestStateChange missing.'
expect_method admin RemoteManagementService RequestStateChange '' 'error 4: Required argument RequestedState missing.'
expect_method admin WSManagementService SetWSIdentifyEnabledState 'WSIdentifySupportEnabled="False"' 0 WSIdentifySupportEnabled TRUE FALSE
expect_method admin WSManagementService SetWSIdentifyEnabledState 'WSIdentifySupportEnabled="2"' 'error 4: Invalid parameter.'
expect_method admin WSManagementService SetWSIdentifyEnabledState 'WSIdentifySupportEnabled="1"' 0 WSIdentifySupportEnabled FALSE TRUE
later=yes expect_method admin RemoteManagementService RequestStateChange 'RequestedState="3"' 0 EnabledState 2 3
apply DHCPSettingData
expect 'without remote management no settings are applied' 'error 1: Remote management status is disabled.' "$answer"
# The static ones are, all the same.
modify 'a static address' 'IPAddresses="10.20.30.44"'
expect_later $static IPAddresses '"10.20.30.44"'
system=10.20.30.44

echo 'The connection'
expect_property IPNetworkConnection Name '"10.20.30.44-IPNetworkConnection"'
expect_property IPNetworkConnection Status '"OK"'

echo 'The endpoints of this machine'
mapfile -t interfaces < <(sed -n '3,$s/^ *\([^:]*\):.*/\1/p' /proc/net/dev)
ask viewer ein ZT_Marovelton_IPProtocolEndpoint
without_host
expect "one endpoint per interface: ${interfaces[*]}" \
    "$(for interface in "${interfaces[@]}"; do printf '%s\n' "$(path "IPProtocolEndpoint/$interface")"; done)" "$answer"
ask viewer ei -nl ZT_Marovelton_IPProtocolEndpoint
expect 'and one instance' "$(printf -- '-Name="IPv4_%s"\n' "${interfaces[@]}")" "$(grep '^-Name=' <<<"$answer")"
# Address and mask are shown where ifconfig prints them in its classic layout: "inet addr:127.0.0.1  Mask:255.0.0.0".
expect_endpoint() { # expect_endpoint INTERFACE
    local second state address mask
    second=$(/sbin/ifconfig "$1" 2>/dev/null | sed -n 2p) || true
    address=$(sed -n 's/.*inet addr:\([^ ]*\).*/\1/p' <<<"$second")
    mask=$(sed -n '/inet addr:/s/.*Mask:\(.*\)/\1/p' <<<"$second")
    state=3
    # shellcheck disable=SC2143 # as the monitor asks it: by its exit code
    ! /sbin/ifconfig 2>/dev/null | grep "$1" >/dev/null || state=2
    instance "IPProtocolEndpoint/$1"
    expect "the endpoint of $1: address ${address:-NULL}, mask ${mask:-NULL}, state $state" \
        "Caption=\"Protocol Endpoint for IP (Internet Protocol) \"
Description=\"A communication point to send and receive data. This class is dedicated to link IP intefaces to Logical Networks.\"
ElementName=\"IPv4_$1\"
Name=\"IPv4_$1\"
Status=\"OK\"
EnabledState=$state
OtherEnabledState=\"NULL\"
RequestedState=$state
EnabledDefault=2
TransitioningToState=12
SystemCreationClassName=\"Linux_ComputerSystem\"
SystemName=\"10.20.30.44\"
CreationClassName=\"ZT_Marovelton_IPProtocolEndpoint\"
NameFormat=\"IP\"
ProtocolType=2
ProtocolIFType=4096
OtherTypeDescription=\"NULL\"
IPv4Address=\"${address:-NULL}\"
IPv6Address=\"NULL\"
SubnetMask=\"${mask:-NULL}\"
IPVersionSupport=1
AddressOrigin=0" "$(grep -v '=$' <<<"$answer")"
}
for interface in "${interfaces[@]}"; do
    expect_endpoint "$interface"
done
expect 'the loopback interface is one of them' yes "$([[ " ${interfaces[*]} " == *' lo '* ]] && echo yes)"
expect_answer 'the name of an interface is compared exactly' 'error 6: IPProtocolEndpoint does not exist.' \
    viewer gi "$(path IPProtocolEndpoint/LO)"
report
