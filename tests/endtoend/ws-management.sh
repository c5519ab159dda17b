#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The standard client wsl on all classes: it enumerates objects, endpoints and both, reads one object by its selectors,
# follows associations both ways, puts, and calls methods; and it is told what the library says when that refuses.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"
for program in wsl curl xmllint uuidgen; do
    command -v "$program" >/dev/null || {
        echo "Skipped: $program is not installed (packages wsl, curl, libxml2-utils, uuid-runtime)."
        exit 77
    }
done
desk_start

vendor=schemas.marovelton.example
work=$scratch/wsl
mkdir "$work"
export WSNOSSL=true WSDEFAULTSCHEMA=$vendor WSENDPOINT=127.0.0.1:$port

# ws ACCOUNT COMMAND...: the answer is then in response.
response=$work/response.xml
ws() {
    local user=$1
    shift
    rm -f "$response" "$work/.wslrun"
    (cd "$work" && HOME=$work WSUSER=$user WSPASS=$(<"$directory/password.$user") wsl "$@") </dev/null >"$work/printed" 2>&1 || true
    [ -s "$response" ] || printf '<nothing/>' >"$response"
}

# value XPATH: without the blanks that the client has put around it
value() { xmllint --xpath "normalize-space($1)" "$response" 2>/dev/null; }
named() { printf "//*[local-name()='%s']" "$1"; }                 # named ELEMENT
items="$(named Items)/*"

# What the answer is: nothing for a success, the reason of a fault otherwise.
fault() { value "$(named Reason)"; }

# keys: NAME=VALUE of the first endpoint in the answer, one per line; only those that are texts.
keys() {
    local first count i
    first="($(named EndpointReference))[1]/*[local-name()='ReferenceParameters']/*[local-name()='SelectorSet']/*"
    count=$(value "count($first)")
    for ((i = 1; i <= count; ++i)); do
        [ "$(value "count(($first)[$i]/*)")" = 0 ] || continue
        [ "$(value "($first)[$i]/@Name")" = __cimnamespace ] || printf '%s=%s\n' "$(value "($first)[$i]/@Name")" "$(value "($first)[$i]")"
    done
}

curl --silent --user "viewer:$(<"$directory/password.viewer")" --header 'Content-Type: application/soap+xml;charset=UTF-8' \
    --data '<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope"><s:Header/><s:Body>
        <i:Identify xmlns:i="http://schemas.dmtf.org/wbem/wsman/identity/1/wsmanidentity.xsd"/></s:Body></s:Envelope>' \
    "http://127.0.0.1:$port/wsman" >"$response"
expect 'Identify: the product' display-host "$(value "$(named ProductVendor)")"
expect 'Identify: its version' 1.0.0 "$(value "$(named ProductVersion)")"

interfaces=$(tail -n +3 /proc/net/dev | wc -l)

# class CLASS COUNT TEXTS: how many objects it has, and how many of its keys are texts.
class() {
    local class=$1 count=$2 texts=$3 selectors
    ws viewer enum "$class" -opti 100
    expect "$class: $count objects" "$count" "$(value "count($items)")"
    expect "$class: they are of the class" "$class" "$(value "local-name(${items}[1])")"
    ws viewer enum "$class" -mode objepr -opti 100
    expect "$class: $count objects with their endpoints" "$count $count" \
        "$(value "count($items/*[local-name()='$class'])") $(value "count($items/*[local-name()='EndpointReference'])")"
    ws viewer enum "$class" -mode epr -opti 100
    expect "$class: $count endpoints" "$count" "$(value "count($items)")"
    mapfile -t selectors < <(keys)
    expect "$class: $texts keys are texts" "$texts" "${#selectors[@]}"
    [ "$texts" != 0 ] || return 0
    ws viewer get "$class" "${selectors[@]}"
    if [ "$class" = ZT_Marovelton_IPVersionSettingData ]; then
        expect "$class refuses the name it gives" 'This class name does not exist (wrong InstanceID).' "$(fault)"
    else
        expect "$class is read by its selectors" "$class" "$(value "local-name($(named Body)/*)")"
    fi
    ws viewer enum "$class" -associators "${selectors[@]}" -opti 100
    expect "$class: what it is associated with, or by what, is told" '' "$(fault)"
    ws viewer enum "$class" -references "${selectors[@]}" -opti 100
    expect "$class: the other of the two is told" '' "$(fault)"
}

echo 'Who is there'
ws viewer id check
expect 'the protocol' 'http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd' "$(value "$(named ProtocolVersion)")"

echo 'Every class that is registered: one object with one key that is a text, unless this says otherwise'
declare -A objects=([VideoInput]=3 [ColorSpace]=7 [FunctionButton]=4 [IPProtocolEndpoint]=$interfaces [InputSource]=3 [ColorModel]=7
    [Button]=5 [ElementSettingData]=3 [ProvidesEndpoint]=$((2 * interfaces)) [SAPSAPDependency]=$interfaces [OrderedComponent]=2)
declare -A text_keys=([Monitor]=4 [RemoteManagementService]=4 [WSManagementService]=4 [IPProtocolEndpoint]=4 [IPNetworkConnection]=4
    [IPConfigurationService]=4)
seen=0
while read -r class kinds; do
    name=${class#ZT_Marovelton_}
    # The keys of associations are references.
    [ "$kinds" != 'instance association' ] || text_keys[$name]=0
    class "$class" "${objects[$name]-1}" "${text_keys[$name]-1}"
    unset "objects[$name]" "text_keys[$name]"
    seen=$((seen + 1))
done < <(sed -n '/^\[/{s/[][]//g;h};/^   type: /{s/^   type: //;H;g;s/\n/ /p}' "$source_dir/mof/libcmpiDisplayManagement.reg")
expect 'there are 33 of them' 33 $seen
expect 'none that is named here is missing' '' "${!objects[*]}${!text_keys[*]}"

echo 'Associations'
space=ZT_Marovelton_ColorSpace
ws viewer enum $space -references InstanceID=ZT:Marovelton_ColorSpace:3 -opti 100
first=$(value "local-name(${items}[1])")
ws viewer enum $space -associators InstanceID=ZT:Marovelton_ColorSpace:3 -opti 100
# compat: the client has exchanged the names of the two.
expect 'a colour space: the associated object, and the association' 'ZT_Marovelton_Monitor ZT_Marovelton_ColorModel' \
    "$first $(value "local-name(${items}[1])")"

echo 'A query'
ws viewer enum $space -filter "SELECT * FROM $space WHERE ColorSpaceNumber > 5" -opti 100
expect 'two colour spaces have a number above 5' 2 "$(value "count($items)")"
ws viewer enum $space -filter "SELECT nonsense" -opti 100
expect 'a query that is none' wsen:CannotProcessFilter "$(value "$(named Subcode)")"

echo 'Put and change'
ws admin put $space ColorSpaceName=Mine -filter "SELECT * FROM $space WHERE ColorSpaceNumber = 3"
expect 'the library puts nothing' wsa:ActionNotSupported "$(value "$(named Subcode)")"
expect '... and says so itself' 7 "$(value "$(named CIMStatusCode)")"
expect_property ColorSpace/3 ColorSpaceName '"Rec.709"'

active="SELECT * FROM $space WHERE ColorSpaceNumber = 1"
ws admin invoke $space SetDisplayLuminance Luminance=120 -filter "$active"
expect 'the luminance is set' 0 "$(value "$(named ReturnValue)")"
expect_property ColorSpace/1 DisplayLuminance 120
ws admin invoke $space SetDisplayLuminance Luminance=1 -filter "$active"
expect 'a luminance that is none: the fault' wsman:InvalidParameter "$(value "$(named Subcode)")"
expect '... with the text of the library' 'Invalid input value range. Valid values are between 48 and 250.' "$(fault)"
ws admin invoke $space SetDisplayLuminance Luminance=many -filter "$active"
expect 'a number that is none' 'Invalid parameter.' "$(fault)"
ws admin invoke $space Nope -filter "$active"
expect 'a method that is none' "The class $space has no method Nope." "$(fault)"

echo 'A fragment'
ws admin put $space ColorSpaceName=Mine -fragment -filter "SELECT * FROM $space WHERE ColorSpaceNumber = 3"
expect 'the library puts no fragment either' 'wsa:ActionNotSupported NOT_SUPPORTED' "$(value "$(named Subcode)") $(fault)"
echo 'TLS, and discovery'
host_stop
"$DISPLAY_HOST" certificate --certificate "$directory/certificate.pem" --key "$directory/key.pem" 127.0.0.1
host_options=(--certificate "$directory/certificate.pem" --key "$directory/key.pem" --https-port 0
    --profiles "$source_dir/mof/libcmpiDisplayManagement.profiles")
host_start
secure=$(sed -n 's,^listening on https://\(127.0.0.1:[0-9]*\)/.*,\1,p' "$directory/ready")
unset WSNOSSL
export WSENDPOINT=$secure
cp "$directory/certificate.pem" "$work/$secure.crt" # what the client gives to curl as --cacert
ws viewer enum $space -opti 100
expect 'seven colour spaces over TLS' 7 "$(value "count($items)")"
ws admin invoke $space SetDisplayLuminance Luminance=130 -filter "$active"
expect 'the luminance is set over TLS' 0 "$(value "$(named ReturnValue)")"
expect_property ColorSpace/1 DisplayLuminance 130
ws viewer enum CIM_ObjectManager -ns interop -opti 100
expect 'the brand and the version of the object manager' 'display-host 1.0.0' \
    "$(value "$(named ElementName)") $(value "$(named Version)")"
ws viewer enum CIM_Namespace -ns root/interop -opti 100
expect 'three namespaces' 3 "$(value "count($items)")"
ws viewer enum CIM_RegisteredProfile -ns interop -opti 100
expect 'the profile' 'Marovelton:DisplayManagement:1.0.0' "$(value "$(named InstanceID)")"
ws viewer enum CIM_ElementConformsToProfile -ns interop -opti 100
expect '... and the monitor that conforms to it' 1 "$(value "count($items)")"
"$DISPLAY_HOST" certificate --certificate "$work/other.pem" --key "$work/other.key" 127.0.0.1
cp "$work/other.pem" "$work/$secure.crt"
ws viewer enum $space -opti 100
expect 'a server with another certificate is not talked to' 0 "$(value "count($items)")"
rm -rf "$work"
report
