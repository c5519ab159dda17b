# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2034,SC2154 # variables of desk.sh and of the scripts
# Requests by curl on the current desk, many at once. Sourced after desk.sh and client.sh.
#
#   request_files                       writes request.read, request.write, request.endpoints, request.large
#   request_file_luminance VALUE        writes request.luminance-VALUE, which sets that of the first preset
#   send ACCOUNT REQUEST [OPTION...]    one request; prints what -w asks for, else the status
#   begin NAME ACCOUNT REQUEST URLS [OPTION...]
#                                       starts a client on one connection, request after request; each status is a line of
#                                       NAME.done; the process is in $client
#   end_clients                         ends those that were begun
#   open_request ACCOUNT REQUEST        sends a request and does not wait for the answer, which comes from the descriptor
#                                       $socket; when it returns, all of the request is with the object manager's system
#   all_wait                            the object manager has read all that was sent, and has nothing to do
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

request_file_luminance() { # request_file_luminance VALUE
    message "<METHODCALL NAME=\"SetDisplayLuminance\"><LOCALINSTANCEPATH>$name_space<INSTANCENAME CLASSNAME=\"ZT_Marovelton_ColorSpace\"><KEYBINDING NAME=\"InstanceID\"><KEYVALUE VALUETYPE=\"string\">ZT:Marovelton_ColorSpace:1</KEYVALUE></KEYBINDING></INSTANCENAME></LOCALINSTANCEPATH><PARAMVALUE NAME=\"Luminance\"><VALUE>$1</VALUE></PARAMVALUE></METHODCALL>" \
        >"$directory/request.luminance-$1"
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

open_request() { # open_request ACCOUNT REQUEST
    exec {socket}<>"/dev/tcp/127.0.0.1/$port"
    {
        printf '%s\r\n' 'POST /cimom HTTP/1.1' 'Host: localhost' 'CIMOperation: MethodCall' 'Content-Type: application/xml' \
            'Connection: close' "Content-Length: $(wc -c <"$directory/request.$2")" \
            "Authorization: Basic $(printf '%s:%s' "$1" "$(<"$directory/password.$1")" | base64 -w0)" ''
        cat "$directory/request.$2"
    } >&"$socket"
}
# Seen ten times in a row: a thread may sleep for a moment where it waits for no turn.
all_wait() {
    local _
    for _ in {1..10}; do
        awk -v port="$(printf ':%04X' "$port")" 'substr($2, length($2) - 4) == port && $5 !~ /:00000000$/ { found = 1 }
            END { exit found }' /proc/net/tcp || return 1
        ! grep -h '^State:' "/proc/${desk_host[$desk]}"/task/*/status | grep -qv sleeping || return 1
        sleep 0.02
    done
}
lines() { cat "$@" | wc -l; }
