#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# display-host while its calls fail, one after the other: memory, files, sockets. host.sh [EVERY [KIND...]]: each call of
# these kinds; of EVERY allocations for a TLS connection one. The server answers or closes the connection, it serves the next request as ever, and
# what it acknowledged is stored.
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=strike.sh
. "$here/../torture/strike.sh"
every=${1:-1}
kinds=("${@:2}")
[ ${#kinds[@]} != 0 ] || kinds=(memory files full-disk descriptors sockets reset interrupted)

desk_begin
strike_begin
strike_host
# The audit log is put aside again and again.
host_options=(--audit "$scratch/audit.jsonl" --audit-size 4096 --audit-files 2)
# Wrong passwords are part of it.
host_options+=(--free-failures 1000000)
certificate=$scratch/certificate.pem
"$program" certificate --certificate "$certificate" --key "$scratch/key.pem" 127.0.0.1 >/dev/null
host_options+=(--certificate "$certificate" --key "$scratch/key.pem" --https-port 0)
desk_start
secure=(--tls "$(port_of https)" "$certificate")

# ---- requests ----

mkdir "$scratch/requests"
authorization=$(printf 'admin:%s' "$(<"$directory/password.admin")" | base64 -w0)
request() { # request NAME [PATH [TYPE [CREDENTIALS]]]: the content on standard input
    {
        printf 'POST %s HTTP/1.1\nContent-Type: %s\nAuthorization: Basic %s\n' "${2-/cimom}" \
            "${3-application/xml; charset=utf-8}" "${4-$authorization}"
        [ "${2-/cimom}" != /cimom ] || echo 'CIMOperation: MethodCall'
        echo
        cat
    } >"$scratch/requests/$1"
}
message() { # message: a call in a whole message of the protocol, the call on standard input
    printf '<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ>'
    cat
    printf '</SIMPLEREQ></MESSAGE></CIM>'
}
space='<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="cimv2"/></LOCALNAMESPACEPATH>'
message <<CALL | request read
<IMETHODCALL NAME="EnumerateInstances">$space<IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="ZT_Marovelton_Monitor"/></IPARAMVALUE></IMETHODCALL>
CALL
key() { printf '<KEYBINDING NAME="%s"><KEYVALUE VALUETYPE="string">%s</KEYVALUE></KEYBINDING>' "$1" "$2"; }
monitor_keys=$(key DeviceID ZT:Marovelton_Monitor)$(key CreationClassName ZT_Marovelton_Monitor)$(key SystemName "$system")$(key SystemCreationClassName Linux_ComputerSystem)
message <<CALL | request change
<METHODCALL NAME="SetDeploymentLocation"><LOCALINSTANCEPATH>$space<INSTANCENAME CLASSNAME="ZT_Marovelton_Monitor">$monitor_keys</INSTANCENAME></LOCALINSTANCEPATH><PARAMVALUE NAME="DeploymentLocation" PARAMTYPE="string"><VALUE>@VALUE@</VALUE></PARAMVALUE></METHODCALL>
CALL
message <<CALL | request association
<IMETHODCALL NAME="AssociatorNames">$space<IPARAMVALUE NAME="ObjectName"><INSTANCENAME CLASSNAME="ZT_Marovelton_Monitor">$monitor_keys</INSTANCENAME></IPARAMVALUE></IMETHODCALL>
CALL
value() { printf '<IPARAMVALUE NAME="%s"><VALUE>%s</VALUE></IPARAMVALUE>' "$1" "$2"; }
{
    message <<CALL
<IMETHODCALL NAME="OpenEnumerateInstances">$space<IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="ZT_Marovelton_ColorSpace"/></IPARAMVALUE>$(value OperationTimeout @SECONDS@)$(value MaxObjectCount 1)</IMETHODCALL>
CALL
    printf '\n---\n'
    message <<CALL
<IMETHODCALL NAME="PullInstancesWithPath">$space$(value EnumerationContext @CONTEXT@)$(value MaxObjectCount 1)</IMETHODCALL>
CALL
    printf '\n---\n'
    message <<CALL
<IMETHODCALL NAME="CloseEnumeration">$space$(value EnumerationContext @CONTEXT@)</IMETHODCALL>
CALL
} | request pull
soap='application/soap+xml; charset=utf-8'
request identify /wsman "$soap" <<'CALL'
<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope" xmlns:i="http://schemas.dmtf.org/wbem/wsman/identity/1/wsmanidentity.xsd"><s:Header/><s:Body><i:Identify/></s:Body></s:Envelope>
CALL
request get /wsman "$soap" <<'CALL'
<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope" xmlns:a="http://schemas.xmlsoap.org/ws/2004/08/addressing" xmlns:w="http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd"><s:Header><a:To s:mustUnderstand="true">http://127.0.0.1/wsman</a:To><w:ResourceURI s:mustUnderstand="true">http://schemas.dmtf.org/wbem/wscim/1/cim-schema/2/ZT_Marovelton_DisplayManagement</w:ResourceURI><a:ReplyTo><a:Address s:mustUnderstand="true">http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</a:Address></a:ReplyTo><a:Action s:mustUnderstand="true">http://schemas.xmlsoap.org/ws/2004/09/transfer/Get</a:Action><a:MessageID s:mustUnderstand="true">uuid:5c1f6c1e-7a1b-4f5e-9d7e-000000000001</a:MessageID><w:SelectorSet><w:Selector Name="InstanceID">ZT:Marovelton_DisplayManagement</w:Selector></w:SelectorSet></s:Header><s:Body/></s:Envelope>
CALL
printf '<CIM' | request malformed
sed "1,/^$/d" "$scratch/requests/read" | request login /cimom "application/xml; charset=utf-8" "$(printf "admin:wrong" | base64 -w0)"

# ---- every call ----

torture() { # torture NAME [OPTION...]
    if "$SERVER_TORTURE" "$page" "$port" "$kind" "${@:2}" "$scratch/requests/read" "$scratch/requests/$1"; then
        right "$1: every answer is a right one, and the server serves the next request"
    else
        failed "$1, $kind"
        is_alive "${desk_host[$desk]}" || give_up 'the server has ended'
    fi
}
for kind in "${kinds[@]}"; do
    echo "$kind"
    for name in read change association identify get malformed login pull; do
        torture "$name"
    done
    echo 'by HTTPS'
    torture read --every "$([ "$kind" = memory ] && echo "$every" || echo 1)" "${secure[@]}"
done

# What was acknowledged is in the log, too, which is whole.
if "$program" audit verify "$scratch/audit.jsonl"; then
    right 'the audit log verifies, with what has been put aside'
else
    failed 'the audit log does not verify'
fi
rm -r "$scratch/requests" "$DISPLAY_HOST" "$certificate" "$scratch/key.pem" "$scratch"/audit.jsonl*
strike_end
report
