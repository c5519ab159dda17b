#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Discovery: a client that knows nothing but the address finds brand and version, namespaces, the profile, the monitor
# that conforms to it, and the way back.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"
host_options=(--profiles "$source_dir/mof/libcmpiDisplayManagement.profiles")
desk_start

profile='CIM_RegisteredProfile.InstanceID="Marovelton:DisplayManagement:1.0.0"'

namespace=root/PG_InterOp
expect_answer 'a namespace that is not there' 'error 3: The namespace root/PG_InterOp does not exist.' viewer ein CIM_Namespace
for namespace in interop root/interop; do
    ask viewer ein CIM_Namespace
    expect "$namespace: the namespaces" 'interop root/cimv2 root/interop ' \
        "$(sed -n 's/.*,Name="\([^"]*\)"$/\1/p' <<<"$answer" | sort | tr '\n' ' ')"
    ask viewer ei -nl CIM_ObjectManager
    expect "$namespace: brand and version" '-ElementName="display-host" -Version="1.0.0" ' \
        "$(grep -E '^-(ElementName|Version)=' <<<"$answer" | tr '\n' ' ')"
    ask viewer ein CIM_RegisteredProfile
    without_host
    expect "$namespace: the profile" "$profile" "$answer"
    ask viewer ain -ac CIM_ElementConformsToProfile -arr ManagedElement "$profile"
    expect "$namespace: from the profile to the monitor" "$(path Monitor)" "${answer#*/root/cimv2:}"
done
namespace=root/cimv2
ask viewer ain -ac CIM_ElementConformsToProfile "$(path Monitor)"
expect 'from the monitor to the profile' "$profile" "${answer#*/interop:}"
ask viewer ain -ac CIM_ElementConformsToProfile "$(path ColorSpace/3)"
expect 'a colour space is no central instance' '' "$answer"
namespace=interop
ask viewer gi -nl "$profile"
expect 'the profile in detail' \
    '-OtherRegisteredOrganization="Marovelton" -RegisteredName="Display Management" -RegisteredOrganization=1 -RegisteredVersion="1.0.0" ' \
    "$(grep -E '^-(Other)?Registered' <<<"$answer" | sort | tr '\n' ' ')"
report
