#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The registration in its three forms: all of one mind, and in the strictest form of a text file.
#
#   registration_test.sh DIRECTORY    with the three files
set -eu
here=$(dirname "$0")
. "$here/check.sh"
name=$1/libcmpiDisplayManagement
expected=$(registered)

# ---- the lines of five columns ----
expect 'the lines' "$expected" "$(cat "$name.registration")"
expect 'one line per class' 33 "$(wc -l <"$name.registration")"
expect 'the first of them' 'ZT_Marovelton_Monitor root/cimv2 ZT_Marovelton_Monitor cmpiDisplayManagement instance method' \
    "$(sed -n 1p "$name.registration")"
expect 'of classes with methods' 19 "$(grep -c ' root/cimv2 .* cmpiDisplayManagement instance method$' "$name.registration")"
expect 'of associations' 14 "$(grep -c ' root/cimv2 .* cmpiDisplayManagement instance association$' "$name.registration")"

# ---- the stanzas ----
expect 'the stanzas' "$(echo "$expected" | awk '{
    kinds = $5; for (i = 6; i <= NF; ++i) kinds = kinds " " $i
    printf "%s[%s]\n   provider: %s\n   location: %s\n   type: %s\n   namespace: %s\n   unload: never\n",
           (NR > 1 ? "\n" : ""), $1, $3, $4, kinds, $2 }')" "$(cat "$name.reg")"

# ---- the PG_ instances ----
instances=${name}_providers.mof
expect 'the module' 'instance of PG_ProviderModule
{
   Name = "cmpiDisplayManagement";
   Vendor = "Marovelton";
   Version = "1.0.0";
   InterfaceType = "CMPI";
   InterfaceVersion = "2.0.0";
   Location = "cmpiDisplayManagement";
};' "$(sed -n '1,/^};$/p' "$instances")"
# After the module, for each class a provider and its capabilities, nothing else.
expect 'the providers and their capabilities' "$(echo "$expected" | awk '{
    types = ""; for (i = 5; i <= NF; ++i)
        types = types (types == "" ? "" : ", ") ($i == "instance" ? 2 : $i == "association" ? 3 : $i == "method" ? 5 : "?")
    print "\ninstance of PG_Provider\n{"
    print "   ProviderModuleName = \"" $4 "\";\n   Name = \"" $3 "\";\n};"
    print "\ninstance of PG_ProviderCapabilities\n{"
    print "   ProviderModuleName = \"" $4 "\";\n   ProviderName = \"" $3 "\";\n   CapabilityID = \"" $1 "\";"
    print "   ClassName = \"" $1 "\";\n   Namespaces = {\"" $2 "\"};\n   ProviderType = {" types "};"
    print "   SupportedProperties = NULL;\n   SupportedMethods = NULL;\n};" }')" \
    "$(sed '1,/^};$/d' "$instances")"
expect 'a monitor provider serves instances and methods' '   ProviderType = {2, 5};' \
    "$(grep -A3 'ClassName = "ZT_Marovelton_Monitor"' "$instances" | grep ProviderType)"
expect 'an association provider serves instances and associations' '   ProviderType = {2, 3};' \
    "$(grep -A3 'ClassName = "ZT_Marovelton_Button"' "$instances" | grep ProviderType)"

# ---- as text: an object manager does not start on a blank or a carriage return at the end of a line ----
return=$(printf '\r')
tab=$(printf '\t')
for file in "$name.reg" "$name.registration" "$instances"; do
    [ -s "$file" ] || failed "$file is empty"
    ! grep -n " \$" "$file" || failed "$file: blanks at the end of a line"
    ! grep -n "$return" "$file" || failed "$file: carriage returns"
    ! grep -n "$tab" "$file" || failed "$file: tabulators"
    [ "$(tail -c 1 "$file" | od -An -tx1 | tr -d ' ')" = 0a ] || failed "$file: the last line has no end"
    [ "$(tail -c 2 "$file" | od -An -tx1 | tr -d ' ')" != 0a0a ] || failed "$file: an empty line at the end"
done

report
