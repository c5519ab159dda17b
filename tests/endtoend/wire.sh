# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2034,SC2154 # variables of desk.sh and of the scripts
# Requests by curl on the current desk, many at once. Sourced after desk.sh and client.sh.
#
#   request_files                       writes request.read, request.write, request.endpoints, request.large
#   send ACCOUNT REQUEST [OPTION...]    one request; prints what -w asks for, else the status
#   begin NAME ACCOUNT REQUEST URLS [OPTION...]
#                                       starts a client on one connection, request after request; each status is a line of
#                                       NAME.done; the process is in $client
#   end_clients                         ends those that were begun
#   lines FILE...                       how many there are in all

clients=()

message() { # message BODY
    printf '<?xml version="1.0" encoding="utf-8"?>\n<CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ>%s</SIMPLEREQ></MESSAGE></CIM>\n' "$1"
}
name_space='<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="cimv2"/></LOCALNAMESPACEPATH>'
enumerate() { # enumerate CLASS
    message "<IMETHODCALL NAME=\"EnumerateInstances\">$name_space<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ZT_Marovelton_$1\"/></IPARAMVALUE></IMETHODCALL>"
}
set_opacity() { # set_opacity PARAMVALUE
    message "<METHODCALL NAME=\"SetOpacity\"><LOCALINSTANCEPATH>$name_space<INSTANCENAME CLASSNAME=\"ZT_Marovelton_OSDMenuAndMessages\"><KEYBINDING NAME=\"InstanceID\"><KEYVALUE VALUETYPE=\"string\">ZT:Marovelton_OSDMenuAndMessages</KEYVALUE></KEYBINDING></INSTANCENAME></LOCALINSTANCEPATH>$1</METHODCALL>"
}

request_files() {
    enumerate ColorSpace >"$directory/request.read" # which the engine has no part in
    enumerate IPProtocolEndpoint >"$directory/request.endpoints"
    set_opacity '<PARAMVALUE NAME="Opacity"><VALUE>37.5</VALUE></PARAMVALUE>' >"$directory/request.write"
    # 284 kB that make a document of many small elements.
    set_opacity "<PARAMVALUE NAME=\"Opacity\"><VALUE.ARRAY>$(printf '<VALUE>%d</VALUE>' {1..14000})</VALUE.ARRAY></PARAMVALUE>" \
        >"$directory/request.large"
}

curl_words() { # curl_words ACCOUNT REQUEST OPTION...: the command, in $words
    words=(curl -s -o /dev/null -u "$1:$(<"$directory/password.$1")" -H 'Content-Type: application/xml'
        -H 'CIMOperation: MethodCall' -H 'Expect:' --data-binary "@$directory/request.$2" "${@:3}")
}
send() {
    local words
    curl_words "$1" "$2" -w '%{http_code}\n' "${@:3}" "http://127.0.0.1:$port/cimom"
    "${words[@]}" || true
}

begin() { # begin NAME ACCOUNT REQUEST URLS [OPTION...]
    local words
    curl_words "$2" "$3" --fail-early -w '%{http_code}\n' "${@:5}" "http://127.0.0.1:$port/cimom?[1-$4]"
    # It ends with the script, however that ends.
    setpriv --pdeathsig KILL stdbuf -oL "${words[@]}" >"$directory/$1.done" 9>&- &
    client=$!
    clients+=("$client")
}
end_clients() {
    local process
    for process in "${clients[@]}"; do
        { kill "$process" && wait "$process"; } 2>/dev/null || true
    done
    clients=()
}
lines() { cat "$@" | wc -l; }
