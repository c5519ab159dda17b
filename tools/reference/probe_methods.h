// SPDX-License-Identifier: Apache-2.0
// Methods: what their arguments take and what they check.
#ifndef REFERENCE_PROBE_METHODS_H
#define REFERENCE_PROBE_METHODS_H

#include "request.h"

namespace reference
{

/** Fills in what the class's method provider answers. */
void probeMethods(const TestedClass &tested, ClassFacts &facts);

/** The states of the monitor that decide what a method takes. */
struct StateOption {
    std::string when;
    std::function<void()> set;
};
struct StateGroup {
    std::string readBy; // the call of the support library that reads it
    std::vector<StateOption> options;
};
const std::vector<StateGroup> &stateGroups();

} // namespace reference

#endif
