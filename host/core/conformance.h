// SPDX-License-Identifier: Apache-2.0
// The classes by which an element in the namespace of the providers tells the profile that it conforms to.
#ifndef HOST_CORE_CONFORMANCE_H
#define HOST_CORE_CONFORMANCE_H

#include "cim/schema.h"
#include "core/profiles.h"

#include <vector>

namespace host
{

/** The classes, and with them those two, when there are profiles and the classes are those of the standard
 * schema, but lack them. */
cim::ClassRepository withConformanceClasses(cim::ClassRepository classes,
                                            const std::vector<Profile> &profiles);

} // namespace host

#endif
