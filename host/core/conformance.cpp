// SPDX-License-Identifier: Apache-2.0
#include "core/conformance.h"

#include "cim/mof_reader.h"

#include <stdexcept>
#include <string_view>

namespace host
{
namespace
{

/** What the namespace of the providers needs for the way from an element to its profile. */
constexpr std::string_view conformanceMof = R"mof(
class CIM_RegisteredProfile : CIM_ManagedElement {
   [Key, Override ( "InstanceID" )] string InstanceID;
   uint16 RegisteredOrganization;
   string OtherRegisteredOrganization;
   string RegisteredName;
   string RegisteredVersion;
};
   [Association]
class CIM_ElementConformsToProfile {
   [Key] CIM_RegisteredProfile REF ConformantStandard;
   [Key] CIM_ManagedElement REF ManagedElement;
};
)mof";

} // namespace

cim::ClassRepository withConformanceClasses(cim::ClassRepository classes,
                                            const std::vector<Profile> &profiles)
{
    for (const char *name : {"Association", "Key", "Override"}) {
        if (classes.findQualifier(name) == nullptr) {
            return classes;
        }
    }
    if (profiles.empty() || classes.find("CIM_ManagedElement") == nullptr ||
        classes.find("CIM_RegisteredProfile") != nullptr ||
        classes.find("CIM_ElementConformsToProfile") != nullptr) {
        return classes;
    }
    const cim::MofResult result = cim::readMofText(classes, conformanceMof, "conformance.mof");
    if (!result.ok()) {
        throw std::logic_error(result.messages.front().format());
    }
    return classes;
}

} // namespace host
